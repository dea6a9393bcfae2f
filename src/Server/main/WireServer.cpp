#include "WireServer.h"

#include "DispatcherExecutor.h"

#include <Server/auth/BasicAuthenticator.h>
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

WireServer::WireServer(WireServerOptions options) : options_(std::move(options))
{
}

WireServer::~WireServer()
{
    stop();
}

void WireServer::start()
{
    if (parts_)
        throw std::runtime_error("the server is already running");
    auto parts = std::make_unique<Parts>();
    // The password file first: a server nobody can log in to is refused before the
    // schema and providers are loaded.
    parts->authenticator = std::make_unique<auth::BasicAuthenticator>(options_.passwordFile);

    Pegasus::CIMServerOptions coreOptions = options_.core;
    if (options_.localCallsOverSocket)
        coreOptions.installLocalTransport = false;
    core_ = std::make_unique<Pegasus::CIMServer>(coreOptions);
    core_->start();

    try
    {
        parts->executor = std::make_unique<DispatcherExecutor>(core_->dispatcher());
        parts->localPool = std::make_unique<Pegasus::ThreadPool>(
            options_.localWorkers ? options_.localWorkers : 1, coreOptions.maxQueuedRequests);
        Pegasus::CIMServer* core = core_.get();
        Pegasus::ThreadPool* localPool = parts->localPool.get();
        http::CimHttpServiceOptions serviceOptions;
        serviceOptions.hostName = Pegasus::String(core_->dispatcher().hostName()).getCString();
        parts->service = std::make_unique<http::CimHttpService>(
            serviceOptions, *parts->authenticator, *parts->executor,
            [core](std::function<void()> job) { return core->submit(std::move(job)); },
            [localPool](std::function<void()> job) { return localPool->submit(std::move(job)); });
        parts->http = std::make_unique<http::HttpServer>(options_.http, *parts->service);
        parts->http->start();
        if (options_.localCallsOverSocket && !options_.http.socketPath.empty())
        {
            client::installLocalTransport(options_.http.socketPath);
            parts->installedLocal = true;
        }
    }
    catch (...)
    {
        if (parts->http)
            parts->http->stop();
        if (parts->localPool)
            parts->localPool->stop();
        core_->stop();
        core_.reset();
        throw;
    }
    parts_ = std::move(parts);
}

void WireServer::stop()
{
    if (!parts_)
        return;
    Parts& p = *parts_;
    p.http->stopAccepting();
    if (p.installedLocal)
        Pegasus::setLocalTransportFactory(Pegasus::LocalTransportFactory());
    // Local requests first: a core request waiting on a local one then fails fast instead
    // of waiting for a thread that will never come.
    p.localPool->stop();
    core_->stop();
    p.http->stop();
    parts_.reset();
    core_.reset();
}

unsigned short WireServer::tcpPort() const
{
    return parts_ ? parts_->http->tcpPort() : 0;
}

}  // namespace server
}  // namespace qel
