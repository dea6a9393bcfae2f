#include "HttpClientConnection.h"

#include <Pegasus/Common/Exception.h>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <optional>
#include <strings.h>

namespace net = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;

namespace qel
{
namespace client
{
namespace
{

// Replies may be large (whole enumerations) but not unbounded.
constexpr std::uint64_t kMaxReplyBytes = 1ull << 30;
// Beast reads at most what the buffer can take without growing (never under 512 bytes,
// never over 64 KiB at once); a buffer this size lets a large reply arrive in 64 KiB
// reads instead of hundreds of small ones.
constexpr std::size_t kReadBufferBytes = 64 * 1024;

using TlsStream = beast::ssl_stream<beast::tcp_stream>;

// Stream is beast::basic_stream<Protocol>, or TlsStream over TCP.
template <class Protocol, class Stream = beast::basic_stream<Protocol>>
class BeastConnection : public HttpClientConnection
{
    static constexpr bool kTls = std::is_same_v<Stream, TlsStream>;

public:
    using Endpoint = typename Protocol::endpoint;

    // `tls` (TLS only) holds the settings every reconnection uses; `serverName` is the
    // name the server's certificate must carry ("" when not checked).
    BeastConnection(
        std::vector<Endpoint> endpoints, std::string hostHeader, std::string description,
        std::chrono::milliseconds timeout, std::shared_ptr<net::ssl::context> tls = nullptr,
        std::string serverName = std::string())
        : _endpoints(std::move(endpoints)),
          _hostHeader(std::move(hostHeader)),
          _description(std::move(description)),
          _tls(std::move(tls)),
          _serverName(std::move(serverName))
    {
        _timeout = timeout;
        open();
    }

    HttpResult post(
        const std::vector<std::pair<std::string, std::string>>& headers, const std::string& body,
        const BodyReader& reader) override
    {
        bhttp::request<bhttp::string_body> req{bhttp::verb::post, "/cimom", 11};
        req.set(bhttp::field::host, _hostHeader);
        req.set(bhttp::field::content_type, "application/xml; charset=\"utf-8\"");
        for (const auto& h : headers)
            req.set(h.first, h.second);
        req.body() = body;
        req.keep_alive(true);
        req.prepare_payload();

        for (int attempt = 0;; ++attempt)
        {
            const bool fresh = !_stream;
            if (fresh)
                open();
            bool gotAnything = false;
            beast::error_code ec;
            HttpResult result;
            try
            {
                result = exchange(req, reader, ec, gotAnything);
            }
            catch (...)
            {
                close();  // the reader gave up in the middle of a reply
                throw;
            }
            if (!ec)
                return result;
            close();
            if (ec == beast::error::timeout)
                throw Pegasus::ConnectionTimeoutException();
            if (result.status != 0)
                throw Pegasus::CIMException(
                    Pegasus::CIM_ERR_FAILED,
                    Pegasus::String(("the answer from " + _description + " was cut short after " +
                                     std::to_string(_received) +
                                     " bytes of its body: " + ec.message())
                                        .c_str()));
            // The server drops idle kept-alive connections; such a failure happens before the
            // request was read, so sending it again on a new connection is safe.
            if (!fresh && !gotAnything && attempt == 0)
                continue;
            throw Pegasus::CannotConnectException(Pegasus::String(
                ("connection to " + _description + " lost: " + ec.message()).c_str()));
        }
    }

private:
    // Runs one asynchronous operation to its end; the stream's expiry bounds it.
    template <class Start>
    beast::error_code run(Start start)
    {
        beast::error_code result;
        _ioc.restart();
        start([&result](beast::error_code ec, auto&&...) { result = ec; });
        _ioc.run();
        return result;
    }

    auto& lowest() { return beast::get_lowest_layer(*_stream); }

    void open()
    {
        if constexpr (kTls)
            _stream.emplace(_ioc, *_tls);
        else
            _stream.emplace(_ioc);
        lowest().expires_after(_timeout);
        beast::error_code ec = run(
            [&](auto handler)
            {
                lowest().async_connect(
                    _endpoints,
                    [handler](beast::error_code e, const Endpoint&) mutable { handler(e); });
            });
        if constexpr (kTls)
        {
            if (!ec)
                ec = handshake();
        }
        if (ec == beast::error::timeout)
        {
            close();
            throw Pegasus::ConnectionTimeoutException();
        }
        if (ec)
        {
            close();
            throw Pegasus::CannotConnectException(Pegasus::String(
                ("Cannot connect to " + _description + ": " + ec.message()).c_str()));
        }
        _buffer.clear();
        _buffer.reserve(kReadBufferBytes);
    }

    beast::error_code handshake()
    {
        SSL* ssl = _stream->native_handle();
        if (!_serverName.empty())
        {
            beast::error_code notIp;
            net::ip::make_address(_serverName, notIp);
            if (notIp)  // server name indication is for names, not addresses
                SSL_set_tlsext_host_name(ssl, _serverName.c_str());
            SSL_set1_host(ssl, _serverName.c_str());  // the certificate must name the host
        }
        return run(
            [&](auto handler)
            { _stream->async_handshake(net::ssl::stream_base::client, std::move(handler)); });
    }

    void close()
    {
        if (!_stream)
            return;
        beast::error_code ignored;
        lowest().socket().shutdown(Protocol::socket::shutdown_both, ignored);
        lowest().close();
        _stream.reset();
    }

    // One request and its reply; `result.status` is set once the reply's head has come.
    HttpResult exchange(
        bhttp::request<bhttp::string_body>& req, const BodyReader& reader, beast::error_code& ec,
        bool& gotAnything)
    {
        HttpResult result;
        _received = 0;
        lowest().expires_after(_timeout);
        ec = run([&](auto handler) { bhttp::async_write(*_stream, req, handler); });
        if (ec)
            return result;
        bhttp::response_parser<bhttp::buffer_body> parser;
        parser.body_limit(kMaxReplyBytes);
        lowest().expires_after(_timeout);
        const size_t before = _buffer.size();
        ec = run([&](auto handler)
                 { bhttp::async_read_header(*_stream, _buffer, parser, handler); });
        gotAnything = parser.got_some() || _buffer.size() != before;
        if (ec)
            return result;
        const auto& msg = parser.get();
        result.status = static_cast<int>(msg.result_int());
        size_t fields = 0;
        for (const auto& f : msg)
        {
            result.headers.emplace_back(std::string(f.name_string()), std::string(f.value()));
            ++fields;
        }
        const bool streamed = reader && result.status == 200;
        // The body as it comes, one buffer's worth at a time; a chunked one decoded.
        _piece.resize(kReadBufferBytes);
        while (!parser.is_done())
        {
            parser.get().body().data = _piece.data();
            parser.get().body().size = _piece.size();
            ec = run([&](auto handler) { bhttp::async_read(*_stream, _buffer, parser, handler); });
            if (ec == bhttp::error::need_buffer)
                ec = {};
            const size_t n = _piece.size() - parser.get().body().size;
            _received += n;
            if (n != 0 && streamed)
                reader(_piece.data(), n);
            else if (n != 0)
                result.body.append(_piece.data(), n);
            if (ec)
                return result;
        }
        lowest().expires_never();
        // Fields past those of the head came after the body.
        size_t index = 0;
        for (const auto& f : parser.get())
            if (index++ >= fields)
                result.trailers.emplace_back(std::string(f.name_string()), std::string(f.value()));
        if (!parser.get().keep_alive())
            close();
        return result;
    }

    net::io_context _ioc;
    std::vector<Endpoint> _endpoints;
    std::string _hostHeader;
    std::string _description;
    std::shared_ptr<net::ssl::context> _tls;
    std::string _serverName;
    std::optional<Stream> _stream;
    beast::flat_buffer _buffer;
    std::vector<char> _piece;  // where a reply's body is read into
    size_t _received = 0;      // body bytes of the reply being read
};

}  // namespace

std::string HttpResult::header(const std::string& name) const
{
    for (const auto& h : headers)
        if (strcasecmp(h.first.c_str(), name.c_str()) == 0)
            return h.second;
    return std::string();
}

namespace
{

std::vector<net::ip::tcp::endpoint> resolve(const std::string& host, unsigned port)
{
    const std::string description = host + ":" + std::to_string(port);
    if (port == 0 || port > 65535)
        throw Pegasus::CannotConnectException(
            Pegasus::String(("Cannot connect to " + description + ": invalid port").c_str()));
    net::io_context ioc;
    net::ip::tcp::resolver resolver(ioc);
    beast::error_code ec;
    auto results = resolver.resolve(host, std::to_string(port), ec);
    if (ec || results.empty())
        throw Pegasus::CannotConnectException(Pegasus::String(
            ("Cannot connect to " + description + ": " + (ec ? ec.message() : "no address"))
                .c_str()));
    std::vector<net::ip::tcp::endpoint> endpoints;
    for (const auto& r : results)
        endpoints.push_back(r.endpoint());
    return endpoints;
}

// TLS 1.2 or 1.3, the server checked against `options.caFile` unless told not to.
std::shared_ptr<net::ssl::context> clientTlsContext(const TlsClientOptions& options)
{
    auto context = std::make_shared<net::ssl::context>(net::ssl::context::tls_client);
    SSL_CTX* ctx = context->native_handle();
    SSL_CTX_set_min_proto_version(ctx, TLS1_2_VERSION);
    auto fail = [](const std::string& what)
    { throw Pegasus::CannotConnectException(Pegasus::String(what.c_str())); };
    if (options.verify)
    {
        if (options.caFile.empty()
                ? SSL_CTX_set_default_verify_paths(ctx) != 1
                : SSL_CTX_load_verify_locations(ctx, options.caFile.c_str(), nullptr) != 1)
            fail("cannot load the trusted certificates " + options.caFile);
        SSL_CTX_set_verify(ctx, SSL_VERIFY_PEER, nullptr);
    }
    if (!options.certificateFile.empty() &&
        (SSL_CTX_use_certificate_chain_file(ctx, options.certificateFile.c_str()) != 1 ||
         SSL_CTX_use_PrivateKey_file(ctx, options.keyFile.c_str(), SSL_FILETYPE_PEM) != 1))
        fail(
            "cannot load the client certificate " + options.certificateFile + " and key " +
            options.keyFile);
    return context;
}

}  // namespace

std::unique_ptr<HttpClientConnection>
HttpClientConnection::tcp(const std::string& host, unsigned port, std::chrono::milliseconds timeout)
{
    const std::string description = host + ":" + std::to_string(port);
    return std::make_unique<BeastConnection<net::ip::tcp>>(
        resolve(host, port), description, description, timeout);
}

std::unique_ptr<HttpClientConnection> HttpClientConnection::tls(
    const std::string& host, unsigned port, std::chrono::milliseconds timeout,
    const TlsClientOptions& tls)
{
    const std::string description = host + ":" + std::to_string(port);
    return std::make_unique<BeastConnection<net::ip::tcp, TlsStream>>(
        resolve(host, port), description, "https://" + description, timeout, clientTlsContext(tls),
        tls.verify ? host : std::string());
}

std::unique_ptr<HttpClientConnection>
HttpClientConnection::local(const std::string& socketPath, std::chrono::milliseconds timeout)
{
    std::vector<net::local::stream_protocol::endpoint> endpoints{
        net::local::stream_protocol::endpoint(socketPath)};
    return std::make_unique<BeastConnection<net::local::stream_protocol>>(
        std::move(endpoints), "localhost", "local socket " + socketPath, timeout);
}

}  // namespace client
}  // namespace qel
