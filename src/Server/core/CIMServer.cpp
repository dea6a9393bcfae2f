#include "CIMServer.h"

#include "InProcessClientTransport.h"
#include "ProviderManager.h"
#include "ServerCIMOMHandle.h"
#include "ServerLog.h"
#include "ThreadPool.h"

#include <Server/mof/MofCompiler.h>
#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/Exception.h>

namespace Pegasus
{

CIMServer::CIMServer(CIMServerOptions options) : _options(std::move(options))
{
}

CIMServer::~CIMServer()
{
    stop();
}

void CIMServer::start()
{
    if (_running)
        throw Exception("The CIM server is already running.");
    try
    {
        _repository = std::make_unique<ClassRepository>();
        MofCompiler compiler(*_repository, CIMNamespaceName(_options.defaultNamespace.c_str()));
        for (const std::string& file : _options.mofFiles)
            compiler.compileFile(file);

        std::vector<BuiltInProvider> builtIns;
        for (const auto& registration : _options.builtInProviders)
            builtIns.push_back(registration(*this));
        _registry = std::make_unique<ProviderRegistry>(ProviderRegistry::load(
            *_repository, CIMNamespaceName(_options.interopNamespace.c_str()), builtIns));

        // Handles are made when a provider is first used, by then the
        // dispatcher behind them exists.
        _providers = std::make_unique<ProviderManager>(
            _options.providerDirectories, [this](const ProviderId&)
            { return CIMOMHandle(std::shared_ptr<CIMOMHandleRep>(_handleRep)); });
        _dispatcher = std::make_unique<Dispatcher>(
            *_repository, *_registry, *_providers, _options.dispatcher);
        _handleRep = std::make_shared<ServerCIMOMHandleRep>(*_dispatcher);

        if (_options.installLocalTransport)
        {
            _local = std::make_shared<LocalEndpoint>(*_dispatcher);
            _previousLocalFactory =
                setLocalTransportFactory(InProcessClientTransport::factory(_local));
            _localInstalled = true;
        }

        std::lock_guard<std::mutex> lock(_poolMutex);
        _pool = std::make_unique<ThreadPool>(_options.workerThreads, _options.maxQueuedRequests);
    }
    catch (...)
    {
        _teardown();
        throw;
    }
    _startTime = CIMDateTime::getCurrentDateTime();
    _running.store(true);
    ServerLog::info(
        "CIM server core started: " + std::to_string(_registry->providers().size()) +
        " registered providers");
}

void CIMServer::stop()
{
    if (!_running.exchange(false))
        return;
    _teardown();
    ServerLog::info("CIM server core stopped");
}

void CIMServer::_teardown()
{
    // Requests first (the queued ones still run), then local connections,
    // then the providers, then what they relied on.
    std::unique_ptr<ThreadPool> pool;
    {
        std::lock_guard<std::mutex> lock(_poolMutex);
        pool = std::move(_pool);
    }
    if (pool)
        pool->stop();
    pool.reset();
    if (_local)
        _local->close();
    if (_localInstalled)
    {
        setLocalTransportFactory(_previousLocalFactory);
        _previousLocalFactory = LocalTransportFactory();
        _localInstalled = false;
    }
    if (_providers)
        _providers->shutdown();
    if (_handleRep)
        _handleRep->detach();
    _dispatcher.reset();
    _providers.reset();
    _handleRep.reset();
    _local.reset();
    _registry.reset();
    _repository.reset();
}

Dispatcher& CIMServer::dispatcher()
{
    if (!_dispatcher)
        throw Exception("The CIM server is not running.");
    return *_dispatcher;
}

CIMOMHandle CIMServer::handle()
{
    if (!_handleRep)
        throw Exception("The CIM server is not running.");
    return CIMOMHandle(std::shared_ptr<CIMOMHandleRep>(_handleRep));
}

const ClassRepository& CIMServer::repository() const
{
    if (!_repository)
        throw Exception("The CIM server is not running.");
    return *_repository;
}

const ProviderRegistry& CIMServer::registry() const
{
    if (!_registry)
        throw Exception("The CIM server is not running.");
    return *_registry;
}

ProviderManager& CIMServer::providers()
{
    if (!_providers)
        throw Exception("The CIM server is not running.");
    return *_providers;
}

CIMDateTime CIMServer::startTime() const
{
    if (!_running.load())
        throw Exception("The CIM server is not running.");
    return _startTime;
}

bool CIMServer::submit(std::function<void()> request)
{
    std::lock_guard<std::mutex> lock(_poolMutex);
    if (!_pool)
        return false;
    return _pool->submit(std::move(request));
}

}  // namespace Pegasus
