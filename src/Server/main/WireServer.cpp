#include "WireServer.h"

#include "DispatcherExecutor.h"

#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/CertificateAuthenticator.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/CoreText.h>
#include <Server/core/ProviderLibrary.h>
#include <Server/core/ServerLog.h>
#include <Server/core/ThreadPool.h>
#include <Server/http/CimHttpService.h>
#include <Server/interop/InteropRegistration.h>

#include <Pegasus/Client/ClientTransport.h>

#include <mutex>
#include <set>
#include <stdexcept>
#include <unistd.h>

namespace qel
{
namespace server
{
namespace
{

// Throws naming the first registered module whose library no provider directory holds.
void checkProviderModules(
    const Pegasus::ProviderRegistry& registry, const std::vector<std::string>& directories)
{
    std::set<std::string> checked;
    for (const auto& provider : registry.providers())
    {
        if (provider->create)
            continue;  // compiled into the server: no library to find
        const Pegasus::ProviderLibrary library(
            provider->moduleName, provider->location, directories);
        const std::string name = library.libraryName();
        if (!checked.insert(name).second)
            continue;
        bool found = false;
        std::string searched;
        for (const std::string& dir : directories)
        {
            const std::string path = dir.empty() ? name : dir + "/" + name;
            found = found || ::access(path.c_str(), F_OK) == 0;
            searched += (searched.empty() ? "" : ", ") + dir;
        }
        if (!found)
            throw std::runtime_error(
                "provider-dir: " + name + " (provider module " +
                Pegasus::toStd(provider->moduleName) + ") is in none of: " +
                (searched.empty() ? std::string("(no directory)") : searched));
    }
}

}  // namespace

struct WireServer::Parts
{
    std::unique_ptr<auth::BasicAuthenticator> authenticator;
    std::unique_ptr<DispatcherExecutor> executor;
    std::unique_ptr<Pegasus::ThreadPool> localPool;
    std::unique_ptr<http::CimHttpService> service;
    std::unique_ptr<http::HttpServer> http;
    Pegasus::LocalTransportFactory previousLocal;
    bool installedLocal = false;

    // Where clients reach the server, for the discovery provider: known once
    // the listeners run, read by request threads.
    std::mutex accessMutex;
    std::vector<interop::AccessPoint> accessPoints;  // guarded by accessMutex
};

WireServer::WireServer(WireServerOptions options) : _options(std::move(options))
{
}

WireServer::~WireServer()
{
    stop();
}

void WireServer::start()
{
    if (_parts)
        throw std::runtime_error("the server is already running");
    auto parts = std::make_unique<Parts>();
    // The password file first: a server nobody can log in to is refused before the
    // schema and providers are loaded.
    parts->authenticator = std::make_unique<auth::BasicAuthenticator>(_options.passwordFile);
    if (_options.http.tlsPort >= 0)
        http::makeServerTlsContext(_options.http.tls);  // checked now; HttpServer loads its own
    std::shared_ptr<auth::CertificateAuthenticator> certificates;
    if (_options.http.tlsPort >= 0 && !_options.http.tls.trustStore.empty())
        certificates = std::make_shared<auth::CertificateAuthenticator>(_options.certificateMap);

    Pegasus::CIMServerOptions coreOptions = _options.core;
    if (_options.localCallsOverSocket)
        coreOptions.installLocalTransport = false;
    // The parts outlive every request: the core stops before they go.
    Parts* published = parts.get();
    interop::InteropOptions discovery;
    discovery.accessPoints = [published]()
    {
        std::lock_guard<std::mutex> lock(published->accessMutex);
        return published->accessPoints;
    };
    coreOptions.builtInProviders.push_back(interop::registration(discovery));
    _core = std::make_unique<Pegasus::CIMServer>(coreOptions);
    _core->start();

    try
    {
        if (_options.requireProviderModules)
            checkProviderModules(_core->registry(), coreOptions.providerDirectories);
        parts->executor = std::make_unique<DispatcherExecutor>(_core->dispatcher());
        parts->localPool = std::make_unique<Pegasus::ThreadPool>(
            _options.localWorkers ? _options.localWorkers : 1, coreOptions.maxQueuedRequests);
        Pegasus::CIMServer* core = _core.get();
        Pegasus::ThreadPool* localPool = parts->localPool.get();
        http::CimHttpServiceOptions serviceOptions;
        serviceOptions.hostName = Pegasus::String(_core->dispatcher().hostName()).getCString();
        serviceOptions.stream.bufferBytes = _options.http.responseBufferBytes;
        serviceOptions.stream.writeTimeout = _options.http.writeTimeout;
        serviceOptions.certificates = certificates;
        parts->service = std::make_unique<http::CimHttpService>(
            serviceOptions, *parts->authenticator, *parts->executor,
            [core](std::function<void()> job) { return core->submit(std::move(job)); },
            [localPool](std::function<void()> job) { return localPool->submit(std::move(job)); });
        parts->http = std::make_unique<http::HttpServer>(_options.http, *parts->service);
        parts->http->start();
        if (_options.http.port >= 0)
        {
            std::lock_guard<std::mutex> lock(parts->accessMutex);
            const std::string& host = _options.http.bindAddress;
            parts->accessPoints.push_back(interop::AccessPoint{
                "http://" + (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" +
                    std::to_string(parts->http->tcpPort()),
                {interop::basicAuthentication()}});
        }
        if (_options.localCallsOverSocket && !_options.http.socketPath.empty())
        {
            client::installLocalTransport(_options.http.socketPath);
            parts->installedLocal = true;
        }
    }
    catch (...)
    {
        if (parts->http)
            parts->http->stop();
        if (parts->localPool)
            parts->localPool->stop();
        _core->stop();
        _core.reset();
        throw;
    }
    _parts = std::move(parts);
}

void WireServer::stop()
{
    if (!_parts)
        return;
    Parts& p = *_parts;
    p.http->stopAccepting();
    if (p.installedLocal)
        Pegasus::setLocalTransportFactory(Pegasus::LocalTransportFactory());
    // Local requests first: a core request waiting on a local one then fails fast instead
    // of waiting for a thread that will never come.
    p.localPool->stop();
    _core->stop();
    p.http->stop();
    _parts.reset();
    _core.reset();
}

bool WireServer::reload()
{
    if (!_parts)
        return false;
    bool ok = true;
    auth::BasicAuthenticator& users = *_parts->authenticator;
    users.generation();  // loads the file again when it changed on disk
    const std::string problem = users.lastError();
    if (problem.empty())
    {
        Pegasus::ServerLog::info("reload: users from " + _options.passwordFile);
    }
    else
    {
        Pegasus::ServerLog::error("reload: " + problem + "; the users loaded before stay in use");
        ok = false;
    }
    if (_options.http.tlsPort >= 0)
    {
        try
        {
            _parts->http->reloadTls();
            Pegasus::ServerLog::info(
                "reload: HTTPS certificate " + _options.http.tls.certificateFile);
        }
        catch (const http::TlsConfigError& e)
        {
            Pegasus::ServerLog::error(
                std::string("reload: ") + e.what() +
                "; the certificate loaded before stays in use");
            ok = false;
        }
    }
    return ok;
}

unsigned short WireServer::tcpPort() const
{
    return _parts ? _parts->http->tcpPort() : 0;
}

unsigned short WireServer::tlsPort() const
{
    return _parts ? _parts->http->tlsPort() : 0;
}

void WireServer::reloadTls()
{
    if (_parts && _options.http.tlsPort >= 0)
        _parts->http->reloadTls();
}

}  // namespace server
}  // namespace qel
