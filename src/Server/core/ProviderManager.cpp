#include "ProviderManager.h"

#include "CoreText.h"
#include "ProviderErrors.h"
#include "ProviderLibrary.h"
#include "ServerLog.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <algorithm>

namespace Pegasus
{

struct ProviderManager::Module
{
    std::mutex mutex;  // serialises loading and creation within the module
    std::unique_ptr<ProviderLibrary> library;
};

ProviderManager::ProviderManager(
    std::vector<std::string> providerDirectories, HandleFactory handles)
    : _directories(std::move(providerDirectories)), _handles(std::move(handles))
{
}

ProviderManager::~ProviderManager()
{
    shutdown();
}

ProviderManager::Entry& ProviderManager::_entry(const ProviderId& id)
{
    std::lock_guard<std::mutex> lock(_mapMutex);
    std::string key = nameKey(id.moduleName) + "\n" + nameKey(id.providerName);
    std::unique_ptr<Entry>& entry = _entries[key];
    if (!entry)
    {
        std::unique_ptr<Module>& module = _modules[nameKey(id.moduleName)];
        if (!module)
        {
            module = std::make_unique<Module>();
            // A provider compiled into the server has no library to load.
            if (!id.create)
                module->library =
                    std::make_unique<ProviderLibrary>(id.moduleName, id.location, _directories);
        }
        entry = std::make_unique<Entry>();
        entry->id = &id;
        entry->module = module.get();
        entry->handle = _handles ? _handles(id) : CIMOMHandle();
    }
    return *entry;
}

CIMProvider* ProviderManager::_create(Entry& entry)
{
    std::lock_guard<std::mutex> lock(entry.module->mutex);
    if (!entry.id->create)
        return entry.module->library->createProvider(entry.id->providerName);
    CIMProvider* provider = entry.id->create();
    if (provider == nullptr)
        throw Exception(
            safeString("built-in provider " + entry.id->describe() + " was not created."));
    return provider;
}

ProviderManager::Lease ProviderManager::acquire(const ProviderId& id)
{
    Entry& entry = _entry(id);
    std::unique_lock<std::mutex> lock(entry.mutex);
    for (;;)
    {
        if (_shuttingDown.load())
            throw CIMException(
                CIM_ERR_FAILED, safeString(
                                    "The CIM server is stopping; provider " + id.describe() +
                                    " takes no more requests."));
        if (entry.state == State::Ready)
        {
            ++entry.inFlight;
            return Lease(this, &entry);
        }
        if (entry.state == State::Initializing)
        {
            // A call made by the provider's own initialize() would wait for
            // itself; refuse it instead.
            if (entry.initializer == std::this_thread::get_id())
                throw CIMException(
                    CIM_ERR_FAILED, safeString(
                                        "Provider " + id.describe() +
                                        " was called back during its own initialization."));
            entry.changed.wait(lock);
            continue;
        }
        entry.state = State::Initializing;
        entry.initializer = std::this_thread::get_id();
        break;
    }
    lock.unlock();

    // Back to Idle on failure so that the next request tries again.
    auto giveUp = [&entry]()
    {
        std::lock_guard<std::mutex> relock(entry.mutex);
        entry.state = State::Idle;
        entry.initializer = std::thread::id();
        entry.changed.notify_all();
    };

    CIMProvider* provider = nullptr;
    try
    {
        provider = _create(entry);
    }
    catch (...)
    {
        CIMException failure = currentExceptionAsCIMException();
        ServerLog::error(
            "cannot create provider " + id.describe() + ": " + toStd(failure.getMessage()));
        giveUp();
        throw failure;
    }

    try
    {
        CIMOMHandle handle = entry.handle;
        provider->initialize(handle);
    }
    catch (...)
    {
        ServerLog::error(
            "initialization of provider " + id.describe() + " failed: " + currentExceptionText());
        // As OpenPegasus does: the failed provider is terminated, which
        // deletes it; a later request creates a new one.
        try
        {
            provider->terminate();
        }
        catch (...)
        {
            ServerLog::error(
                "terminate of provider " + id.describe() +
                " after its failed initialization threw: " + currentExceptionText());
        }
        giveUp();
        throw CIMException(CIM_ERR_FAILED, "provider initialization failed");
    }

    {
        std::lock_guard<std::mutex> mapLock(_mapMutex);
        _readyOrder.push_back(&entry);
    }
    lock.lock();
    entry.provider = provider;
    entry.state = State::Ready;
    entry.initializer = std::thread::id();
    ++entry.inFlight;
    entry.changed.notify_all();
    ServerLog::info("provider " + id.describe() + " initialized");
    return Lease(this, &entry);
}

void ProviderManager::_release(Entry& entry)
{
    std::lock_guard<std::mutex> lock(entry.mutex);
    if (--entry.inFlight == 0)
        entry.changed.notify_all();
}

bool ProviderManager::isInitialized(const ProviderId& id) const
{
    std::lock_guard<std::mutex> lock(_mapMutex);
    auto it = _entries.find(nameKey(id.moduleName) + "\n" + nameKey(id.providerName));
    if (it == _entries.end())
        return false;
    std::lock_guard<std::mutex> entryLock(it->second->mutex);
    return it->second->state == State::Ready;
}

void ProviderManager::shutdown()
{
    if (_shuttingDown.exchange(true))
        return;

    std::vector<Entry*> order;
    {
        std::lock_guard<std::mutex> lock(_mapMutex);
        order.assign(_readyOrder.rbegin(), _readyOrder.rend());
        // Entries that were never ready still have to be waited for.
        for (auto& e : _entries)
        {
            if (std::find(order.begin(), order.end(), e.second.get()) == order.end())
                order.push_back(e.second.get());
        }
    }

    for (Entry* entry : order)
    {
        CIMProvider* provider = nullptr;
        {
            std::unique_lock<std::mutex> lock(entry->mutex);
            entry->changed.wait(
                lock,
                [entry] { return entry->state != State::Initializing && entry->inFlight == 0; });
            if (entry->state == State::Ready)
            {
                provider = entry->provider;
                entry->provider = nullptr;
                entry->state = State::Idle;
            }
        }
        if (provider == nullptr)
            continue;
        try
        {
            provider->terminate();  // deletes the provider
            ServerLog::info("provider " + entry->id->describe() + " terminated");
        }
        catch (...)
        {
            ServerLog::error(
                "terminate of provider " + entry->id->describe() +
                " threw: " + currentExceptionText());
        }
    }

    std::lock_guard<std::mutex> lock(_mapMutex);
    for (auto& m : _modules)
    {
        std::lock_guard<std::mutex> moduleLock(m.second->mutex);
        if (m.second->library)
            m.second->library->unload();
    }
}

}  // namespace Pegasus
