// Provider lifecycle as OpenPegasus's default provider manager runs it: a
// module library is loaded on first use, PegasusCreateProvider is asked once
// per registered provider name (a provider compiled into the server is made
// by its ProviderId::create instead), initialize() is called once with the
// provider's CIMOMHandle, requests may then run concurrently, and shutdown
// calls terminate() (the provider deletes itself there) before the libraries
// are closed.
//
// A failure to load or create a provider, or an initialize() that throws,
// fails that request with CIM_ERR_FAILED and a log line; the next request
// for the provider tries again, and other providers are not affected.
#ifndef QEL_Server_ProviderManager_h
#define QEL_Server_ProviderManager_h

#include "ProviderRegistry.h"

#include <Pegasus/Provider/CIMOMHandle.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pegasus
{

class CIMProvider;
class ProviderLibrary;

class ProviderManager
{
public:
    // Gives each provider the handle its initialize() receives.
    using HandleFactory = std::function<CIMOMHandle(const ProviderId&)>;

    ProviderManager(std::vector<std::string> providerDirectories, HandleFactory handles);
    ~ProviderManager();

    ProviderManager(const ProviderManager&) = delete;
    ProviderManager& operator=(const ProviderManager&) = delete;

    class Lease;

    // The initialized provider, created on first use. The lease counts the
    // call as in flight until it is destroyed. Throws CIMException:
    // CIM_ERR_FAILED with the load failure's text, "provider initialization
    // failed", a provider called back from its own initialize(), or a
    // manager that is shutting down.
    Lease acquire(const ProviderId& id);

    // Refuses new leases, waits for calls in flight, terminates every
    // initialized provider (latest initialized first) and closes the
    // libraries. Idempotent. Must not be called from a provider call.
    void shutdown();

    bool isInitialized(const ProviderId& id) const;

private:
    enum class State
    {
        Idle,
        Initializing,
        Ready
    };

    struct Module;  // library is null for providers compiled into the server
    struct Entry
    {
        const ProviderId* id = nullptr;
        Module* module = nullptr;
        CIMOMHandle handle;
        std::mutex mutex;
        std::condition_variable changed;
        State state = State::Idle;
        std::thread::id initializer;
        CIMProvider* provider = nullptr;
        unsigned inFlight = 0;
    };

    Entry& _entry(const ProviderId& id);
    CIMProvider* _create(Entry& entry);
    void _release(Entry& entry);

    std::vector<std::string> _directories;
    HandleFactory _handles;

    mutable std::mutex _mapMutex;
    std::map<std::string, std::unique_ptr<Module>> _modules;
    std::map<std::string, std::unique_ptr<Entry>> _entries;
    std::vector<Entry*> _readyOrder;  // guarded by _mapMutex
    std::atomic<bool> _shuttingDown{false};

public:
    class Lease
    {
    public:
        Lease(Lease&& other) noexcept : _manager(other._manager), _entry(other._entry)
        {
            other._entry = nullptr;
        }
        Lease& operator=(Lease&&) = delete;
        Lease(const Lease&) = delete;
        ~Lease()
        {
            if (_entry)
                _manager->_release(*_entry);
        }

        CIMProvider* provider() const { return _entry->provider; }
        const ProviderId& id() const { return *_entry->id; }

    private:
        friend class ProviderManager;
        Lease(ProviderManager* manager, Entry* entry) : _manager(manager), _entry(entry) {}
        ProviderManager* _manager;
        Entry* _entry;
    };
};

}  // namespace Pegasus

#endif
