// One kept-alive HTTP/1.1 connection from a CIM client to the server, over TCP, TLS or
// the local Unix socket, with a time limit on every exchange.
#ifndef QEL_SERVER_CLIENTTRANSPORT_HTTPCLIENTCONNECTION_H
#define QEL_SERVER_CLIENTTRANSPORT_HTTPCLIENTCONNECTION_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qel
{
namespace client
{

struct HttpResult
{
    int status = 0;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;  // unless it went to a body reader
    // The fields after a chunked body (where a CIM server reports a late error).
    std::vector<std::pair<std::string, std::string>> trailers;
    std::string header(const std::string& name) const;  // "" when absent
};

// Takes the body of a successful (200) reply piece by piece as it arrives. What it throws
// ends the exchange (the connection is closed) and comes out of post().
using BodyReader = std::function<void(const char* data, size_t size)>;

// How a client speaks TLS: whom it trusts and, optionally, the certificate it shows.
struct TlsClientOptions
{
    std::string caFile;           // PEM authorities the server's certificate must chain to
    bool verify = true;           // false: take any server certificate (testing only)
    std::string certificateFile;  // PEM client certificate, "" for none
    std::string keyFile;          // its key
};

// Connection failures (a refused TLS handshake among them) throw Pegasus::CannotConnectException,
// time-outs Pegasus::ConnectionTimeoutException, a reply whose body the server cut short a
// Pegasus::CIMException(CIM_ERR_FAILED) saying so.
class HttpClientConnection
{
public:
    virtual ~HttpClientConnection() = default;

    static std::unique_ptr<HttpClientConnection>
    tcp(const std::string& host, unsigned port, std::chrono::milliseconds timeout);
    // The server's certificate is checked against `tls.caFile` and `host`.
    static std::unique_ptr<HttpClientConnection>
    tls(const std::string& host, unsigned port, std::chrono::milliseconds timeout,
        const TlsClientOptions& tls);
    static std::unique_ptr<HttpClientConnection>
    local(const std::string& socketPath, std::chrono::milliseconds timeout);

    void setTimeout(std::chrono::milliseconds timeout) { _timeout = timeout; }

    // POSTs `body` to /cimom with the given extra headers and returns the reply, its body
    // given to `reader` when there is one and the reply is a 200. A kept-alive connection
    // the server has meanwhile closed is reopened once, before anything is read. The time
    // limit holds for the whole exchange.
    virtual HttpResult post(
        const std::vector<std::pair<std::string, std::string>>& headers, const std::string& body,
        const BodyReader& reader = BodyReader()) = 0;

protected:
    std::chrono::milliseconds _timeout{20000};
};

}  // namespace client
}  // namespace qel

#endif
