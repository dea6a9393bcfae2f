// The CIM server core in one object: at start it compiles the schema into
// the class repository, reads and checks the provider registrations, builds
// the dispatcher and the CIMOMHandle providers get, installs the in-process
// local client transport (so CIMClient::connectLocal() inside this process
// reaches this server) and starts the request threads; stop undoes it in
// reverse: requests drain, providers are terminated, libraries closed.
//
// A front-end (HTTP, Unix socket) decodes a request, builds its context with
// Dispatcher::requestContext(user, client address) and runs it on the pool
// with submit(); or calls the dispatcher directly on a thread of its own.
// In process, handle() reaches the server as a provider's CIMOMHandle does.
#ifndef QEL_Server_CIMServer_h
#define QEL_Server_CIMServer_h

#include "Dispatcher.h"
#include "ProviderRegistry.h"

#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Pegasus
{

class CIMServer;
class ClassRepository;
class LocalEndpoint;
class ProviderManager;
class ServerCIMOMHandleRep;
class ThreadPool;

struct CIMServerOptions
{
    // MOF files compiled in this order (usually just schema/root.mof).
    std::vector<std::string> mofFiles;
    // Namespace of MOF that names none with #pragma namespace.
    std::string defaultNamespace = "root/cimv2";
    // Searched in order for lib<Location>.so.
    std::vector<std::string> providerDirectories;
    // Where the registration instances are.
    std::string interopNamespace = ProviderRegistry::defaultInteropNamespace;
    unsigned workerThreads = 8;
    // Requests waiting for a thread; 0: no limit.
    std::size_t maxQueuedRequests = 1024;
    // Install the in-process transport for CIMClient::connectLocal(). Only
    // one server of a process can have it.
    bool installLocalTransport = true;
    DispatcherOptions dispatcher;
    // Providers compiled into the server. Each function is called once at
    // start, before the registrations are read, and returns the provider's
    // registration; its factory runs on first use, when the server is
    // running and what it captured of the server may be asked.
    std::vector<std::function<BuiltInProvider(CIMServer&)>> builtInProviders;
};

class CIMServer
{
public:
    explicit CIMServer(CIMServerOptions options);
    ~CIMServer();

    CIMServer(const CIMServer&) = delete;
    CIMServer& operator=(const CIMServer&) = delete;

    // Throws Exception and leaves the server stopped when the schema does
    // not compile (the MOF error: "file:line:column: problem"), when a
    // registration is wrong, or when the server is already running.
    void start();
    // Idempotent. Must not be called from a request or provider thread.
    void stop();
    bool isRunning() const { return _running.load(); }

    // Valid while running.
    Dispatcher& dispatcher();
    // A handle on this server, as its providers get one.
    CIMOMHandle handle();
    const ClassRepository& repository() const;
    const ProviderRegistry& registry() const;
    ProviderManager& providers();
    // When the last start() completed.
    CIMDateTime startTime() const;

    // Runs a request on a worker thread. False when the server is not
    // running or too many requests are waiting; the caller answers the
    // client itself then (e.g. CIM_ERR_SERVER_LIMITS_EXCEEDED).
    bool submit(std::function<void()> request);

private:
    void _teardown();

    CIMServerOptions _options;
    std::atomic<bool> _running{false};
    std::mutex _poolMutex;  // submit() against stop()
    std::unique_ptr<ClassRepository> _repository;
    std::unique_ptr<ProviderRegistry> _registry;
    std::unique_ptr<ProviderManager> _providers;
    std::unique_ptr<Dispatcher> _dispatcher;
    std::shared_ptr<ServerCIMOMHandleRep> _handleRep;
    std::shared_ptr<LocalEndpoint> _local;
    bool _localInstalled = false;
    LocalTransportFactory _previousLocalFactory;
    std::unique_ptr<ThreadPool> _pool;
    CIMDateTime _startTime;  // written by start() before _running is set
};

}  // namespace Pegasus

#endif
