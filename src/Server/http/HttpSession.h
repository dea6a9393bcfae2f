// One client connection of the HTTP front-end, written once for every transport: plain
// TCP, TLS over TCP and the Unix socket differ only in the stream type (and TLS in its
// handshake and close). Internal to HttpServer.cpp.
//
// Deadlines: from the accept, the TLS handshake and the first request head share one
// (headerTimeout); a kept-alive connection may then stay silent for readTimeout, and a new
// head must be complete within headerTimeout of its first byte; a body and an answer each
// get readTimeout, and each piece of a streamed answer writeTimeout. A connection that
// misses one is closed without an answer (a streamed one without its last chunk).
#ifndef QEL_SERVER_HTTP_HTTPSESSION_H
#define QEL_SERVER_HTTP_HTTPSESSION_H

#include "HttpParser.h"
#include "HttpServer.h"
#include "ResponseBodyStream.h"

#include <Server/auth/CertificateIdentity.h>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <strings.h>
#include <vector>

namespace qel
{
namespace http
{
namespace session
{

namespace net = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;

using TlsStream = beast::ssl_stream<beast::tcp_stream>;

// What a session needs from its server.
class Host
{
public:
    virtual ~Host() = default;
    virtual const HttpServerOptions& options() const = 0;
    virtual RequestHandler& handler() = 0;
    // The connection's first request has arrived in full.
    virtual void requestCompleted(uint64_t id) = 0;
    // It waits between two requests (true) or a request has begun (false).
    virtual void setIdle(uint64_t id, bool idle) = 0;
    // The session is being destroyed.
    virtual void ended(uint64_t id) = 0;
};

class SessionBase
{
public:
    virtual ~SessionBase() = default;
    // Closes the connection at once, from any thread; `then`, if given, runs once its
    // descriptor is closed.
    virtual void close(std::function<void()> then = nullptr) = 0;
};

// How long a TLS close waits for the client's close_notify before just closing.
constexpr std::chrono::seconds kTlsCloseWait{1};
// What a kept-alive connection reads at once when the next request begins.
constexpr size_t kFirstRead = 4096;

template <class Stream>
class Session : public SessionBase, public std::enable_shared_from_this<Session<Stream>>
{
    static constexpr bool kTls = std::is_same_v<Stream, TlsStream>;

public:
    // `tls` keeps the TLS settings the stream was made with alive as long as the stream.
    Session(
        std::shared_ptr<Host> host, uint64_t id, Stream stream,
        std::shared_ptr<ConnectionInfo> info, std::shared_ptr<net::ssl::context> tls = nullptr)
        : _host(std::move(host)),
          _id(id),
          _tls(std::move(tls)),
          _stream(std::move(stream)),
          _info(std::move(info))
    {
    }

    ~Session() override { _host->ended(_id); }

    void run()
    {
        net::dispatch(_stream.get_executor(), [self = this->shared_from_this()] { self->start(); });
    }

    void close(std::function<void()> then = nullptr) override
    {
        net::post(
            _stream.get_executor(),
            [self = this->shared_from_this(), then = std::move(then)]
            {
                self->closeNow();
                if (then)
                    then();
            });
    }

private:
    const HttpServerOptions& options() const { return _host->options(); }
    auto& lowest() { return beast::get_lowest_layer(_stream); }
    std::chrono::milliseconds headDeadline() const
    {
        return std::min(options().headerTimeout, options().readTimeout);
    }

    void start()
    {
        lowest().expires_after(headDeadline());
        if constexpr (kTls)
        {
            _stream.async_handshake(
                net::ssl::stream_base::server,
                [self = this->shared_from_this()](beast::error_code ec) { self->onHandshake(ec); });
        }
        else
        {
            readHeader();
        }
    }

    void onHandshake(beast::error_code ec)
    {
        // A refused client certificate, a client speaking plain HTTP or garbage, an old
        // protocol version: nothing can be answered over TLS, so just close.
        if (ec)
            return closeNow();
        if constexpr (kTls)
        {
            SSL* ssl = _stream.native_handle();
            if (X509* cert = SSL_get0_peer_certificate(ssl))
            {
                if (SSL_get_verify_result(ssl) != X509_V_OK)
                    return closeNow();
                const auth::CertificateIdentity id = auth::identityOf(cert);
                _info->certificateFingerprint = id.fingerprint;
                _info->certificateSubject = id.subject;
            }
        }
        readHeader();  // within the deadline that began at the accept
    }

    // A kept-alive connection: wait (idle) for the first byte of the next request. With a
    // `holdOff` (a client told to retry later) the request is not begun before it is over,
    // but the connection is read meanwhile, so that a client that leaves is let go at once.
    void awaitNextRequest(std::chrono::seconds holdOff = std::chrono::seconds(0))
    {
        _held = holdOff.count() > 0;
        _arrived = _buffer.size() != 0;  // pipelined: it is already here
        if (!_held && _arrived)
            return startRequest();
        _host->setIdle(_id, true);
        if (_held)
        {
            _pause.expires_after(holdOff);
            _pause.async_wait(
                [self = this->shared_from_this()](beast::error_code ec)
                {
                    if (ec)
                        return;  // closed meanwhile
                    self->_held = false;
                    if (self->_arrived)
                        self->beginArrived();
                });
        }
        if (_arrived)
            return;
        lowest().expires_after(options().readTimeout + holdOff);
        _stream.async_read_some(
            _buffer.prepare(kFirstRead),
            [self = this->shared_from_this()](beast::error_code ec, size_t n)
            {
                self->_buffer.commit(n);
                if (ec)
                    return self->closeNow();
                self->_arrived = true;
                if (!self->_held)
                    self->beginArrived();
            });
    }

    void beginArrived()
    {
        _host->setIdle(_id, false);
        startRequest();
    }

    void startRequest()
    {
        lowest().expires_after(headDeadline());
        readHeader();
    }

    void readHeader()
    {
        _parser.emplace();
        limitParser(*_parser, options());
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
            lowest().expires_after(options().readTimeout);
            bhttp::async_write(
                _stream, *cont,
                [self = this->shared_from_this(), cont](beast::error_code wec, size_t)
                {
                    if (wec)
                        return self->closeNow();
                    self->readBody();
                });
            return;
        }
        readBody();
    }

    void readBody()
    {
        lowest().expires_after(options().readTimeout);
        bhttp::async_read(
            _stream, _buffer, *_parser,
            [self = this->shared_from_this()](beast::error_code ec, size_t) { self->onRead(ec); });
    }

    void onRead(beast::error_code ec)
    {
        if (ec)
            return fail(ec);
        lowest().expires_never();
        _host->requestCompleted(_id);
        _keepAlive = _parser->get().keep_alive();
        HttpRequest request = takeRequest(*_parser);
        _parser.reset();
        _version = request.version;
        auto self = this->shared_from_this();
        _host->handler().handle(
            std::move(request), _info,
            [self](HttpResponse response)
            {
                // At once when answered on this connection's own thread (a refusal made
                // before any work was queued); from a worker, queued to it.
                net::dispatch(
                    self->_stream.get_executor(),
                    [self, r = std::move(response)]() mutable { self->write(std::move(r)); });
            });
    }

    void fail(beast::error_code ec)
    {
        if (std::optional<HttpResponse> answer = readFailureResponse(ec))
            return write(std::move(*answer), true);
        closeNow();  // end of stream, time-out, reset: nothing to answer
    }

    void write(HttpResponse response, bool forceClose = false)
    {
        if (response.stream)
            return writeStreamed(std::move(response));
        auto res = std::make_shared<bhttp::response<bhttp::string_body>>();
        res->version(_version);
        res->result(static_cast<unsigned>(response.status));
        for (const auto& h : response.headers)
            res->insert(h.first, h.second);
        res->body() = std::move(response.body);
        const bool close = forceClose || response.close || !_keepAlive;
        res->keep_alive(!close);
        res->prepare_payload();
        lowest().expires_after(options().readTimeout);
        bhttp::async_write(
            _stream, *res,
            [self = this->shared_from_this(), res, close,
             holdOff = response.holdOff](beast::error_code ec, size_t)
            {
                if (ec)
                    return self->closeNow();
                if (close)
                    return self->finish();
                self->awaitNextRequest(holdOff);
            });
    }

    // A streamed answer: the head with chunked transfer coding, then each piece as a chunk
    // as the worker encodes it, then the last chunk (with the error trailers of a failed
    // answer). Each write has the write timeout; a failed one abandons the answer.
    void writeStreamed(HttpResponse response)
    {
        _body = response.stream;
        auto res = std::make_shared<bhttp::response<bhttp::empty_body>>();
        res->version(_version);
        res->result(static_cast<unsigned>(response.status));
        for (const auto& h : response.headers)
            res->insert(h.first, h.second);
        if (_body->trailersAllowed())
            res->set(bhttp::field::trailer, _body->trailerNames());
        _keepAlive = _keepAlive && !response.close;
        res->keep_alive(_keepAlive);
        res->chunked(true);
        auto serializer = std::make_shared<bhttp::response_serializer<bhttp::empty_body>>(*res);
        lowest().expires_after(options().writeTimeout);
        bhttp::async_write_header(
            _stream, *serializer,
            [self = this->shared_from_this(), res, serializer](beast::error_code ec, size_t)
            {
                if (ec)
                    return self->endStreamed(false);
                self->awaitPiece();
            });
    }

    void awaitPiece()
    {
        _body->whenReady(
            [self = this->shared_from_this()]
            { net::post(self->_stream.get_executor(), [self] { self->writePiece(); }); });
    }

    void writePiece()
    {
        if (!_body)
            return;  // closed meanwhile
        auto next = std::make_shared<ResponseBodyStream::Next>(_body->take());
        lowest().expires_after(options().writeTimeout);
        if (!next->end)
        {
            auto buffers = std::make_shared<std::vector<net::const_buffer>>();
            size_t bytes = 0;
            for (const std::string& p : next->pieces)
            {
                buffers->push_back(net::buffer(p));
                bytes += p.size();
            }
            net::async_write(
                _stream, bhttp::make_chunk(*buffers),
                [self = this->shared_from_this(), next, buffers,
                 bytes](beast::error_code ec, size_t)
                {
                    if (ec || !self->_body)
                        return self->endStreamed(false);
                    self->_body->written(bytes);
                    self->awaitPiece();
                });
            return;
        }
        if (!next->complete && next->trailers.empty())
            return endStreamed(false);  // cut short: the missing last chunk tells the client
        auto last = std::make_shared<std::string>("0\r\n");
        for (const auto& t : next->trailers)
            *last += t.first + ": " + t.second + "\r\n";
        *last += "\r\n";
        net::async_write(
            _stream, net::buffer(*last),
            [self = this->shared_from_this(), last](beast::error_code ec, size_t)
            { self->endStreamed(!ec); });
    }

    // After a streamed answer: the next request when its last chunk went out on a kept-alive
    // connection, else the connection closes (the worker may still be encoding).
    void endStreamed(bool whole)
    {
        if (!_body)
            return;  // closed meanwhile
        _body->abandon();
        _body.reset();
        if (!whole)
            return closeNow();
        if (!_keepAlive)
            return finish();
        awaitNextRequest();
    }

    // The orderly end after a last answer: TLS says goodbye first.
    void finish()
    {
        if constexpr (kTls)
        {
            lowest().expires_after(kTlsCloseWait);
            _stream.async_shutdown([self = this->shared_from_this()](beast::error_code)
                                   { self->closeNow(); });
        }
        else
        {
            closeNow();
        }
    }

    void closeNow()
    {
        _pause.cancel();
        if (_body)
        {
            _body->abandon();  // a worker waiting to hand on more stops
            _body.reset();
        }
        beast::error_code ec;
        lowest().socket().shutdown(net::socket_base::shutdown_both, ec);
        lowest().close();
    }

    std::shared_ptr<Host> _host;
    const uint64_t _id;
    std::shared_ptr<net::ssl::context> _tls;  // declared before the stream that uses it
    Stream _stream;
    std::shared_ptr<ConnectionInfo> _info;
    beast::flat_buffer _buffer;
    std::optional<RequestParser> _parser;
    net::steady_timer _pause{_stream.get_executor()};
    bool _held = false;     // told to retry later: the next request waits for _pause
    bool _arrived = false;  // the next request has begun arriving
    bool _keepAlive = true;
    unsigned _version = 11;
    std::shared_ptr<ResponseBodyStream> _body;  // the streamed answer being sent
};

}  // namespace session
}  // namespace http
}  // namespace qel

#endif
