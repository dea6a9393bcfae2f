// HTTP/1.1 listener on TCP and on a Unix domain socket (Boost.Beast): keep-alive, a
// bounded body (413), read time-outs, 400 for malformed requests, "Expect: 100-continue".
// Complete requests go to a RequestHandler; the connection waits for its answer.
#ifndef QEL_SERVER_HTTP_HTTPSERVER_H
#define QEL_SERVER_HTTP_HTTPSERVER_H

#include "HttpMessage.h"

#include <chrono>
#include <functional>
#include <memory>
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
        HttpRequest request,
        std::shared_ptr<ConnectionInfo> connection,
        std::function<void(HttpResponse)> done) = 0;
};

struct HttpServerOptions
{
    std::string bindAddress = "127.0.0.1";
    int port = 5988;         // 0: a free port (see tcpPort()); negative: no TCP listener
    std::string socketPath;  // "": no local listener
    size_t maxBodyBytes = 16 * 1024 * 1024;
    size_t maxHeaderBytes = 16 * 1024;
    // A request (or the next one on a kept-alive connection) must arrive within this time.
    std::chrono::milliseconds readTimeout{30000};
    // Encoded answer held per connection at most while the client reads it, and how long
    // the client may take nothing before the answer is abandoned and the connection closed.
    size_t responseBufferBytes = 4 * 1024 * 1024;
    std::chrono::milliseconds writeTimeout{60000};
    unsigned ioThreads = 2;
    size_t maxConnections = 1024;
};

class HttpServer
{
public:
    HttpServer(HttpServerOptions options, RequestHandler& handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Binds the listeners and starts the I/O threads. Throws std::runtime_error naming the
    // address or socket path when a listener cannot be opened.
    void start();
    // Stops accepting; open connections go on.
    void stopAccepting();
    // Closes every connection and joins the I/O threads. Requests still being handled must
    // have answered (or be abandoned) before the server is destroyed.
    void stop();

    unsigned short tcpPort() const;
    const HttpServerOptions& options() const;
    size_t openConnections() const;

    struct Impl;  // opaque; shared with the connections it serves

private:
    std::shared_ptr<Impl> _impl;
};

}  // namespace http
}  // namespace qel

#endif
