#include "HttpServer.h"

#include "HttpParser.h"

#include <Server/auth/PeerCredentials.h>

#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <atomic>
#include <list>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <strings.h>

namespace net = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;

namespace qel
{
namespace http
{
namespace
{

class SessionBase
{
public:
    virtual ~SessionBase() = default;
    virtual void close() = 0;
};

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

}  // namespace

struct HttpServer::Impl : std::enable_shared_from_this<HttpServer::Impl>
{
    Impl(HttpServerOptions o, RequestHandler& h) : options(std::move(o)), handler(h) {}

    HttpServerOptions options;
    RequestHandler& handler;
    net::io_context ioc;
    // Accept completions and acceptor closes run here, one at a time, whatever thread runs them.
    net::strand<net::io_context::executor_type> acceptStrand{net::make_strand(ioc)};
    std::optional<net::executor_work_guard<net::io_context::executor_type>> work;
    std::optional<net::ip::tcp::acceptor> tcpAcceptor;
    std::optional<net::local::stream_protocol::acceptor> localAcceptor;
    std::vector<std::thread> threads;
    std::atomic<size_t> connections{0};
    unsigned short port = 0;
    std::mutex sessionsMutex;
    std::list<std::weak_ptr<SessionBase>> sessions;
    bool started = false;

    void acceptTcp();
    void acceptLocal();
    template <class Protocol>
    void startSession(typename Protocol::socket socket, std::shared_ptr<ConnectionInfo> info);
};

namespace
{

template <class Protocol>
class Session : public SessionBase, public std::enable_shared_from_this<Session<Protocol>>
{
public:
    Session(
        std::shared_ptr<HttpServer::Impl> server,
        typename Protocol::socket socket,
        std::shared_ptr<ConnectionInfo> info)
        : _server(std::move(server)), _stream(std::move(socket)), _info(std::move(info))
    {
    }

    ~Session() override { --_server->connections; }

    void run()
    {
        net::dispatch(
            _stream.get_executor(), [self = this->shared_from_this()] { self->readHeader(); });
    }

    void close() override
    {
        net::post(_stream.get_executor(), [self = this->shared_from_this()] { self->shutdown(); });
    }

private:
    const HttpServerOptions& options() const { return _server->options; }

    void readHeader()
    {
        _parser.emplace();
        limitParser(*_parser, options());
        _stream.expires_after(options().readTimeout);
        bhttp::async_read_header(
            _stream, _buffer, *_parser,
            [self = this->shared_from_this()](beast::error_code ec, size_t)
            { self->onHeader(ec); });
    }

    void onHeader(beast::error_code ec)
    {
        if (ec)
            return fail(ec);
        auto& req = _parser->get();
        auto expect = req.find(bhttp::field::expect);
        if (expect != req.end() &&
            strcasecmp(std::string(expect->value()).c_str(), "100-continue") == 0 &&
            req.version() >= 11)
        {
            // The client waits for this before it sends the body.
            auto cont =
                std::make_shared<bhttp::response<bhttp::empty_body>>(bhttp::status::continue_, 11);
            bhttp::async_write(
                _stream, *cont,
                [self = this->shared_from_this(), cont](beast::error_code wec, size_t)
                {
                    if (wec)
                        return self->shutdown();
                    self->readBody();
                });
            return;
        }
        readBody();
    }

    void readBody()
    {
        _stream.expires_after(options().readTimeout);
        bhttp::async_read(
            _stream, _buffer, *_parser,
            [self = this->shared_from_this()](beast::error_code ec, size_t) { self->onRead(ec); });
    }

    void onRead(beast::error_code ec)
    {
        if (ec)
            return fail(ec);
        _stream.expires_never();
        _keepAlive = _parser->get().keep_alive();
        HttpRequest request = takeRequest(*_parser);
        _parser.reset();
        _version = request.version;
        auto self = this->shared_from_this();
        _server->handler.handle(
            std::move(request), _info,
            [self](HttpResponse response)
            {
                net::post(
                    self->_stream.get_executor(),
                    [self, r = std::move(response)]() mutable { self->write(std::move(r)); });
            });
    }

    void fail(beast::error_code ec)
    {
        if (std::optional<HttpResponse> answer = readFailureResponse(ec))
            return write(std::move(*answer), true);
        shutdown();  // end of stream, time-out, reset: nothing to answer
    }

    void write(HttpResponse response, bool forceClose = false)
    {
        auto res = std::make_shared<bhttp::response<bhttp::string_body>>();
        res->version(_version);
        res->result(static_cast<unsigned>(response.status));
        for (const auto& h : response.headers)
            res->insert(h.first, h.second);
        res->body() = std::move(response.body);
        const bool close = forceClose || response.close || !_keepAlive;
        res->keep_alive(!close);
        res->prepare_payload();
        _stream.expires_after(options().readTimeout);
        bhttp::async_write(
            _stream, *res,
            [self = this->shared_from_this(), res, close](beast::error_code ec, size_t)
            {
                if (ec || close)
                    return self->shutdown();
                self->readHeader();
            });
    }

    void shutdown()
    {
        beast::error_code ec;
        _stream.socket().shutdown(Protocol::socket::shutdown_both, ec);
        _stream.close();
    }

    std::shared_ptr<HttpServer::Impl> _server;
    beast::basic_stream<Protocol> _stream;
    std::shared_ptr<ConnectionInfo> _info;
    beast::flat_buffer _buffer;
    std::optional<RequestParser> _parser;
    bool _keepAlive = true;
    unsigned _version = 11;
};

}  // namespace

template <class Protocol>
void HttpServer::Impl::startSession(
    typename Protocol::socket socket,
    std::shared_ptr<ConnectionInfo> info)
{
    if (++connections > options.maxConnections)
    {
        --connections;
        beast::error_code ec;
        socket.close(ec);  // over the limit: refuse rather than queue without bound
        return;
    }
    auto session =
        std::make_shared<Session<Protocol>>(shared_from_this(), std::move(socket), std::move(info));
    {
        std::lock_guard<std::mutex> lock(sessionsMutex);
        for (auto it = sessions.begin(); it != sessions.end();)
            it = it->expired() ? sessions.erase(it) : std::next(it);
        sessions.push_back(session);
    }
    session->run();
}

void HttpServer::Impl::acceptTcp()
{
    tcpAcceptor->async_accept(
        net::make_strand(ioc),
        net::bind_executor(
            acceptStrand,
            [self = shared_from_this()](beast::error_code ec, net::ip::tcp::socket socket)
            {
                if (ec == net::error::operation_aborted || !self->tcpAcceptor->is_open())
                    return;
                if (!ec)
                {
                    auto info = std::make_shared<ConnectionInfo>();
                    info->transport = Transport::Tcp;
                    beast::error_code addrEc;
                    const auto peer = socket.remote_endpoint(addrEc);
                    if (!addrEc)
                        info->clientAddress = peer.address().to_string();
                    socket.set_option(net::ip::tcp::no_delay(true), addrEc);
                    self->startSession<net::ip::tcp>(std::move(socket), std::move(info));
                }
                self->acceptTcp();
            }));
}

void HttpServer::Impl::acceptLocal()
{
    localAcceptor->async_accept(
        net::make_strand(ioc),
        net::bind_executor(
            acceptStrand,
            [self = shared_from_this()](
                beast::error_code ec, net::local::stream_protocol::socket socket)
            {
                if (ec == net::error::operation_aborted || !self->localAcceptor->is_open())
                    return;
                if (!ec)
                {
                    auto info = std::make_shared<ConnectionInfo>();
                    info->transport = Transport::Local;
                    info->clientAddress = "127.0.0.1";
                    qel::auth::peerUserName(
                        socket.native_handle(), info->peerUser, info->peerError);
                    self->startSession<net::local::stream_protocol>(
                        std::move(socket), std::move(info));
                }
                self->acceptLocal();
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

void HttpServer::start()
{
    Impl& s = *_impl;
    if (s.started)
        throw std::runtime_error("HTTP server already started");
    if (s.options.port >= 0)
    {
        beast::error_code ec;
        const auto address = net::ip::make_address(s.options.bindAddress, ec);
        if (ec)
            throw std::runtime_error("invalid bind address \"" + s.options.bindAddress + "\"");
        const net::ip::tcp::endpoint endpoint(address, static_cast<unsigned short>(s.options.port));
        s.tcpAcceptor.emplace(s.ioc);
        s.tcpAcceptor->open(endpoint.protocol(), ec);
        if (!ec)
            s.tcpAcceptor->set_option(net::socket_base::reuse_address(true), ec);
        if (!ec)
            s.tcpAcceptor->bind(endpoint, ec);
        if (!ec)
            s.tcpAcceptor->listen(net::socket_base::max_listen_connections, ec);
        if (ec)
            throw std::runtime_error(
                "cannot listen on " + s.options.bindAddress + ":" + std::to_string(s.options.port) +
                ": " + ec.message());
        s.port = s.tcpAcceptor->local_endpoint().port();
    }
    if (!s.options.socketPath.empty())
    {
        const std::string& path = s.options.socketPath;
        if (path.size() >= sizeof(sockaddr_un{}.sun_path))
            throw std::runtime_error("local socket path too long: " + path);
        if (socketInUse(path))
            throw std::runtime_error("another server is listening on the local socket " + path);
        ::unlink(path.c_str());  // a stale file left by a server that died
        beast::error_code ec;
        s.localAcceptor.emplace(s.ioc);
        const net::local::stream_protocol::endpoint endpoint(path);
        s.localAcceptor->open(endpoint.protocol(), ec);
        if (!ec)
            s.localAcceptor->bind(endpoint, ec);
        if (!ec)
            s.localAcceptor->listen(net::socket_base::max_listen_connections, ec);
        if (ec)
            throw std::runtime_error("cannot listen on local socket " + path + ": " + ec.message());
        // Anyone on this machine may connect; the peer's user name is what identifies them.
        ::chmod(path.c_str(), 0666);
    }
    s.work.emplace(s.ioc.get_executor());
    s.started = true;
    if (s.tcpAcceptor)
        s.acceptTcp();
    if (s.localAcceptor)
        s.acceptLocal();
    const unsigned n = s.options.ioThreads ? s.options.ioThreads : 1;
    for (unsigned i = 0; i < n; ++i)
        s.threads.emplace_back([&ioc = s.ioc] { ioc.run(); });
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
            if (s->tcpAcceptor)
                s->tcpAcceptor->close(ec);
            if (s->localAcceptor)
            {
                s->localAcceptor->close(ec);
                ::unlink(s->options.socketPath.c_str());
            }
        });
}

void HttpServer::stop()
{
    std::shared_ptr<Impl> s = _impl;
    if (!s->started)
        return;
    stopAccepting();
    {
        std::lock_guard<std::mutex> lock(s->sessionsMutex);
        for (auto& weak : s->sessions)
            if (auto session = weak.lock())
                session->close();
        s->sessions.clear();
    }
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
    s->tcpAcceptor.reset();
    s->localAcceptor.reset();
}

unsigned short HttpServer::tcpPort() const
{
    return _impl->port;
}
const HttpServerOptions& HttpServer::options() const
{
    return _impl->options;
}
size_t HttpServer::openConnections() const
{
    return _impl->connections.load();
}

}  // namespace http
}  // namespace qel
