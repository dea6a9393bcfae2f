#include "HttpServer.h"

#include "ConnectionLimiter.h"
#include "HttpSession.h"

#include <Server/auth/PeerCredentials.h>

#include <atomic>
#include <mutex>
#include <sys/stat.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <unordered_map>

namespace net = boost::asio;
namespace beast = boost::beast;

namespace qel
{
namespace http
{

using session::Session;
using session::SessionBase;
using session::TlsStream;

namespace
{

// True when something is accepting connections on the socket file.
bool socketInUse(const std::string& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", path.c_str());
    const bool used = ::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
    ::close(fd);
    return used;
}

// Accept failures that mean "no descriptor or memory for one more connection": retrying at
// once would fail again, so room is made and the retry waits a little.
bool outOfResources(const beast::error_code& ec)
{
    return ec == net::error::no_descriptors || ec == net::error::no_buffer_space ||
           ec == net::error::no_memory || ec.value() == ENFILE;
}

// The pause before accepting again when out of resources and no connection could be
// closed to make room.
constexpr std::chrono::milliseconds kRetryWhenFull{250};

// Address reported for clients of the local socket (a distinct key for the limits).
const char* kLocalAddress = "127.0.0.1";

}  // namespace

struct HttpServer::Impl : session::Host, std::enable_shared_from_this<HttpServer::Impl>
{
    Impl(HttpServerOptions o, RequestHandler& h)
        : _options(std::move(o)),
          _handler(h),
          limiter({_options.maxConnections, _options.maxUnfinishedPerAddress})
    {
    }

    const HttpServerOptions& options() const override { return _options; }
    RequestHandler& handler() override { return _handler; }
    void requestCompleted(uint64_t id) override
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        limiter.completed(id);
    }
    void setIdle(uint64_t id, bool idle) override
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        limiter.setIdle(id, idle);
    }
    void ended(uint64_t id) override
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        limiter.released(id);
        sessions.erase(id);
        --connections;
    }

    // One listening socket and its pause timer (used when accepting fails for lack of
    // resources). Accept completions and closes run on acceptStrand.
    template <class Protocol>
    struct Listener
    {
        explicit Listener(net::io_context& ioc) : retry(ioc) {}
        std::optional<typename Protocol::acceptor> acceptor;
        net::steady_timer retry;
    };

    template <class Protocol, class OnSocket>
    void accept(Listener<Protocol>& listener, OnSocket onSocket);
    // Out of descriptors with a client waiting: closes a connection to make room, then
    // accepts again. REQUIRES: running on acceptStrand.
    template <class Protocol, class OnSocket>
    void makeRoomThenAccept(Listener<Protocol>& listener, OnSocket onSocket);
    // The connection to close when descriptors ran out (null when there is none).
    std::shared_ptr<SessionBase> reclaimOne();
    template <class Stream>
    void startSession(
        Stream stream, std::shared_ptr<ConnectionInfo> info,
        std::shared_ptr<net::ssl::context> tls);
    std::shared_ptr<net::ssl::context> currentTls()
    {
        std::lock_guard<std::mutex> lock(tlsMutex);
        return tls;
    }

    const HttpServerOptions _options;
    RequestHandler& _handler;
    net::io_context ioc;
    net::strand<net::io_context::executor_type> acceptStrand{net::make_strand(ioc)};
    std::optional<net::executor_work_guard<net::io_context::executor_type>> work;
    Listener<net::ip::tcp> http{ioc};
    Listener<net::ip::tcp> https{ioc};
    Listener<net::local::stream_protocol> local{ioc};
    std::vector<std::thread> threads;
    std::atomic<size_t> connections{0};
    unsigned short httpPort = 0;
    unsigned short httpsPort = 0;
    bool started = false;

    std::mutex tlsMutex;
    std::shared_ptr<net::ssl::context> tls;  // guarded by tlsMutex; for new connections

    std::mutex sessionsMutex;
    ConnectionLimiter limiter;                                          // guarded by sessionsMutex
    std::unordered_map<uint64_t, std::weak_ptr<SessionBase>> sessions;  // guarded by sessionsMutex
};

template <class Stream>
void HttpServer::Impl::startSession(
    Stream stream, std::shared_ptr<ConnectionInfo> info,
    std::shared_ptr<net::ssl::context> tlsContext)
{
    std::vector<std::shared_ptr<SessionBase>> victims;
    std::shared_ptr<Session<Stream>> session;
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        const ConnectionLimiter::Admission a = limiter.admit(info->clientAddress);
        for (uint64_t id : a.close)
        {
            auto it = sessions.find(id);
            if (it != sessions.end())
                if (auto victim = it->second.lock())
                    victims.push_back(std::move(victim));
        }
        if (a.id)
        {
            ++connections;
            session = std::make_shared<Session<Stream>>(
                shared_from_this(), *a.id, std::move(stream), std::move(info),
                std::move(tlsContext));
            sessions.emplace(*a.id, session);
        }
    }
    // Outside the lock: a session's last reference may go here, and its end takes the lock.
    for (auto& victim : victims)
        victim->close();
    if (session)
        session->run();
    else
        beast::get_lowest_layer(stream).close();  // every connection is busy: refused
}

std::shared_ptr<SessionBase> HttpServer::Impl::reclaimOne()
{
    std::shared_ptr<SessionBase> victim;
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        const std::optional<uint64_t> id = limiter.reclaimOne();
        if (id)
        {
            auto it = sessions.find(*id);
            if (it != sessions.end())
                victim = it->second.lock();
        }
    }
    return victim;
}

template <class Protocol, class OnSocket>
void HttpServer::Impl::makeRoomThenAccept(Listener<Protocol>& listener, OnSocket onSocket)
{
    auto again = [self = shared_from_this(), &listener, onSocket]
    {
        if (listener.acceptor->is_open())
            self->accept(listener, onSocket);
    };
    if (auto victim = reclaimOne())
    {
        victim->close([self = shared_from_this(), again] { net::post(self->acceptStrand, again); });
        return;
    }
    listener.retry.expires_after(kRetryWhenFull);
    listener.retry.async_wait(net::bind_executor(
        acceptStrand,
        [again](beast::error_code ec)
        {
            if (!ec)
                again();
        }));
}

template <class Protocol, class OnSocket>
void HttpServer::Impl::accept(Listener<Protocol>& listener, OnSocket onSocket)
{
    listener.acceptor->async_accept(
        net::make_strand(ioc),
        net::bind_executor(
            acceptStrand,
            [self = shared_from_this(), &listener,
             onSocket](beast::error_code ec, typename Protocol::socket socket)
            {
                if (ec == net::error::operation_aborted || !listener.acceptor->is_open())
                    return;
                if (!ec)
                {
                    onSocket(std::move(socket));
                }
                else if (outOfResources(ec))
                {
                    // Accepting again at once would fail again: spinning. And the kernel
                    // takes the descriptor before it looks for a connection, so this says
                    // nothing about whether anyone waits. Wait until someone does, then close
                    // the oldest unfinished connection and accept once its descriptor is free.
                    listener.acceptor->async_wait(
                        net::socket_base::wait_read,
                        net::bind_executor(
                            self->acceptStrand,
                            [self, &listener, onSocket](beast::error_code wec)
                            {
                                if (!wec && listener.acceptor->is_open())
                                    self->makeRoomThenAccept(listener, onSocket);
                            }));
                    return;
                }
                self->accept(listener, onSocket);
            }));
}

HttpServer::HttpServer(HttpServerOptions options, RequestHandler& handler)
    : _impl(std::make_shared<Impl>(std::move(options), handler))
{
}

HttpServer::~HttpServer()
{
    stop();
}

namespace
{

// Opens, binds and listens; ListenerError naming the address on failure.
void listenTcp(
    std::optional<net::ip::tcp::acceptor>& acceptor, net::io_context& ioc, const std::string& what,
    const std::string& bindAddress, int port)
{
    beast::error_code ec;
    const auto address = net::ip::make_address(bindAddress, ec);
    if (ec)
        throw ListenerError("invalid " + what + " bind address \"" + bindAddress + "\"");
    const net::ip::tcp::endpoint endpoint(address, static_cast<unsigned short>(port));
    acceptor.emplace(ioc);
    acceptor->open(endpoint.protocol(), ec);
    if (!ec)
        acceptor->set_option(net::socket_base::reuse_address(true), ec);
    if (!ec)
        acceptor->bind(endpoint, ec);
    if (!ec)
        acceptor->listen(net::socket_base::max_listen_connections, ec);
    if (ec)
        throw ListenerError(
            "cannot listen for " + what + " on " + bindAddress + ":" + std::to_string(port) + ": " +
            ec.message());
}

}  // namespace

void HttpServer::start()
{
    Impl& s = *_impl;
    if (s.started)
        throw std::runtime_error("HTTP server already started");
    try
    {
        if (s._options.tlsPort >= 0)
            s.tls = makeServerTlsContext(s._options.tls);
        if (s._options.port >= 0)
        {
            listenTcp(s.http.acceptor, s.ioc, "HTTP", s._options.bindAddress, s._options.port);
            s.httpPort = s.http.acceptor->local_endpoint().port();
        }
        if (s._options.tlsPort >= 0)
        {
            listenTcp(
                s.https.acceptor, s.ioc, "HTTPS", s._options.tlsBindAddress, s._options.tlsPort);
            s.httpsPort = s.https.acceptor->local_endpoint().port();
        }
        if (!s._options.socketPath.empty())
        {
            const std::string& path = s._options.socketPath;
            if (path.size() >= sizeof(sockaddr_un{}.sun_path))
                throw ListenerError("local socket path too long: " + path);
            if (socketInUse(path))
                throw ListenerError("another server is listening on the local socket " + path);
            ::unlink(path.c_str());  // a stale file left by a server that died
            beast::error_code ec;
            s.local.acceptor.emplace(s.ioc);
            const net::local::stream_protocol::endpoint endpoint(path);
            s.local.acceptor->open(endpoint.protocol(), ec);
            if (!ec)
                s.local.acceptor->bind(endpoint, ec);
            if (!ec)
                s.local.acceptor->listen(net::socket_base::max_listen_connections, ec);
            if (ec)
                throw ListenerError("cannot listen on local socket " + path + ": " + ec.message());
            // Anyone on this machine may connect; the peer's user name is what identifies them.
            ::chmod(path.c_str(), 0666);
        }
    }
    catch (...)
    {
        s.http.acceptor.reset();
        s.https.acceptor.reset();
        s.local.acceptor.reset();
        s.tls.reset();
        throw;
    }
    s.work.emplace(s.ioc.get_executor());
    s.started = true;
    auto self = _impl;
    auto tcpInfo = [](net::ip::tcp::socket& socket, Transport transport)
    {
        auto info = std::make_shared<ConnectionInfo>();
        info->transport = transport;
        beast::error_code ec;
        const auto peer = socket.remote_endpoint(ec);
        if (!ec)
            info->clientAddress = peer.address().to_string();
        socket.set_option(net::ip::tcp::no_delay(true), ec);
        return info;
    };
    if (s.http.acceptor)
        s.accept(
            s.http,
            [self, tcpInfo](net::ip::tcp::socket socket)
            {
                auto info = tcpInfo(socket, Transport::Tcp);
                self->startSession(beast::tcp_stream(std::move(socket)), std::move(info), nullptr);
            });
    if (s.https.acceptor)
        s.accept(
            s.https,
            [self, tcpInfo](net::ip::tcp::socket socket)
            {
                auto info = tcpInfo(socket, Transport::Tls);
                auto context = self->currentTls();
                TlsStream stream(std::move(socket), *context);
                self->startSession(std::move(stream), std::move(info), std::move(context));
            });
    if (s.local.acceptor)
        s.accept(
            s.local,
            [self](net::local::stream_protocol::socket socket)
            {
                auto info = std::make_shared<ConnectionInfo>();
                info->transport = Transport::Local;
                info->clientAddress = kLocalAddress;
                qel::auth::peerUserName(socket.native_handle(), info->peerUser, info->peerError);
                self->startSession(
                    beast::basic_stream<net::local::stream_protocol>(std::move(socket)),
                    std::move(info), nullptr);
            });
    const unsigned n = s._options.ioThreads ? s._options.ioThreads : 1;
    for (unsigned i = 0; i < n; ++i)
        s.threads.emplace_back([&ioc = s.ioc] { ioc.run(); });
}

void HttpServer::reloadTls()
{
    Impl& s = *_impl;
    auto fresh = makeServerTlsContext(s._options.tls);
    std::lock_guard<std::mutex> lock(s.tlsMutex);
    s.tls = std::move(fresh);
}

void HttpServer::stopAccepting()
{
    std::shared_ptr<Impl> s = _impl;
    if (!s->started)
        return;
    net::post(
        s->acceptStrand,
        [s]
        {
            beast::error_code ec;
            for (auto* l : {&s->http, &s->https})
                if (l->acceptor)
                {
                    l->acceptor->close(ec);
                    l->retry.cancel();
                }
            if (s->local.acceptor)
            {
                s->local.acceptor->close(ec);
                s->local.retry.cancel();
                ::unlink(s->_options.socketPath.c_str());
            }
        });
}

void HttpServer::stop()
{
    std::shared_ptr<Impl> s = _impl;
    if (!s->started)
        return;
    stopAccepting();
    std::vector<std::shared_ptr<SessionBase>> open;
    {
        std::lock_guard<std::mutex> lock(s->sessionsMutex);
        for (auto& entry : s->sessions)
            if (auto session = entry.second.lock())
                open.push_back(std::move(session));
    }
    for (auto& session : open)
        session->close();
    open.clear();
    s->work.reset();
    s->ioc.stop();
    for (std::thread& t : s->threads)
        if (t.joinable())
            t.join();
    s->threads.clear();
    s->started = false;
    // Handlers still queued hold sessions that refer back to the server; drop them now.
    s->ioc.restart();
    s->ioc.poll();
    s->http.acceptor.reset();
    s->https.acceptor.reset();
    s->local.acceptor.reset();
}

unsigned short HttpServer::tcpPort() const
{
    return _impl->httpPort;
}
unsigned short HttpServer::tlsPort() const
{
    return _impl->httpsPort;
}
const HttpServerOptions& HttpServer::options() const
{
    return _impl->_options;
}
size_t HttpServer::openConnections() const
{
    return _impl->connections.load();
}

}  // namespace http
}  // namespace qel
