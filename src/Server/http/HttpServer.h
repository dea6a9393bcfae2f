// HTTP/1.1 listeners (Boost.Beast) on TCP, on TLS over TCP and on a Unix domain socket:
// keep-alive, a bounded body (413), deadlines for the request head, the body and the
// keep-alive pause, 400 for malformed requests, "Expect: 100-continue", and limits on the
// connections clients may hold (ConnectionLimiter.h). Complete requests go to a
// RequestHandler; the connection waits for its answer.
#ifndef QEL_SERVER_HTTP_HTTPSERVER_H
#define QEL_SERVER_HTTP_HTTPSERVER_H

#include "HttpMessage.h"
#include "TlsContext.h"

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace qel
{
namespace http
{

class RequestHandler
{
public:
    virtual ~RequestHandler() = default;
    // Runs on an I/O thread and must not block: long work goes elsewhere. `done` must be
    // called exactly once, from any thread.
    virtual void handle(
        HttpRequest request, std::shared_ptr<ConnectionInfo> connection,
        std::function<void(HttpResponse)> done) = 0;
};

struct HttpServerOptions
{
    // Plain HTTP. Credentials cross it in clear: loopback unless told otherwise.
    std::string bindAddress = "127.0.0.1";
    int port = 5988;  // 0: a free port (see tcpPort()); negative: no HTTP listener
    // HTTPS, with the certificate and key of `tls`.
    std::string tlsBindAddress = "0.0.0.0";
    int tlsPort = -1;  // 5989 is the usual; 0: a free port (see tlsPort()); negative: none
    TlsOptions tls;
    std::string socketPath;  // "": no local listener
    size_t maxBodyBytes = 16 * 1024 * 1024;
    size_t maxHeaderBytes = 16 * 1024;
    // The TLS handshake and the request head must arrive within this time, counted from
    // the accept, or on a kept-alive connection from the request's first byte (never
    // longer than readTimeout).
    std::chrono::milliseconds headerTimeout{10000};
    // How long a kept-alive connection may stay silent between requests, and the time
    // allowed for a request body and for sending an answer.
    std::chrono::milliseconds readTimeout{30000};
    // Encoded answer held per connection at most while the client reads it, and how long
    // the client may take nothing before the answer is abandoned and the connection closed.
    size_t responseBufferBytes = 4 * 1024 * 1024;
    std::chrono::milliseconds writeTimeout{60000};
    unsigned ioThreads = 2;
    size_t maxConnections = 1024;
    // Connections from one address that have not yet delivered a whole request.
    size_t maxUnfinishedPerAddress = 32;
};

// A listener cannot be opened (address in use, bad address, socket path): the message
// names the address or path and the reason.
class ListenerError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class HttpServer
{
public:
    HttpServer(HttpServerOptions options, RequestHandler& handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Loads the TLS settings (TlsConfigError), binds the listeners (ListenerError) and
    // starts the I/O threads.
    void start();
    // Stops accepting; open connections go on.
    void stopAccepting();
    // Closes every connection and joins the I/O threads. Requests still being handled must
    // have answered (or be abandoned) before the server is destroyed.
    void stop();
    // Reads the certificate, key and trust store again; new connections use them, open
    // ones keep what they began with. On TlsConfigError the previous settings stay.
    void reloadTls();

    unsigned short tcpPort() const;
    unsigned short tlsPort() const;
    const HttpServerOptions& options() const;
    size_t openConnections() const;

    struct Impl;  // opaque; shared with the connections it serves

private:
    std::shared_ptr<Impl> _impl;
};

}  // namespace http
}  // namespace qel

#endif
