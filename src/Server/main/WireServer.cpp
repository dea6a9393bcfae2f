#include "WireServer.h"

#include "DispatcherExecutor.h"

#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/CertificateAuthenticator.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/ThreadPool.h>
#include <Server/http/CimHttpService.h>

#include <Pegasus/Client/ClientTransport.h>

namespace qel
{
namespace server
{

struct WireServer::Parts
{
    std::unique_ptr<auth::BasicAuthenticator> authenticator;
    std::unique_ptr<DispatcherExecutor> executor;
    std::unique_ptr<Pegasus::ThreadPool> localPool;
    std::unique_ptr<http::CimHttpService> service;
    std::unique_ptr<http::HttpServer> http;
    Pegasus::LocalTransportFactory previousLocal;
    bool installedLocal = false;
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
    _core = std::make_unique<Pegasus::CIMServer>(coreOptions);
    _core->start();

    try
    {
        parts->executor = std::make_unique<DispatcherExecutor>(_core->dispatcher());
        parts->localPool = std::make_unique<Pegasus::ThreadPool>(
            _options.localWorkers ? _options.localWorkers : 1, coreOptions.maxQueuedRequests);
        Pegasus::CIMServer* core = _core.get();
        Pegasus::ThreadPool* localPool = parts->localPool.get();
        http::CimHttpServiceOptions serviceOptions;
        serviceOptions.hostName = Pegasus::String(_core->dispatcher().hostName()).getCString();
        serviceOptions.certificates = certificates;
        parts->service = std::make_unique<http::CimHttpService>(
            serviceOptions, *parts->authenticator, *parts->executor,
            [core](std::function<void()> job) { return core->submit(std::move(job)); },
            [localPool](std::function<void()> job) { return localPool->submit(std::move(job)); });
        parts->http = std::make_unique<http::HttpServer>(_options.http, *parts->service);
        parts->http->start();
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
