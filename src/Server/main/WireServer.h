// The whole CIM server as a client sees it: the core (schema, providers, dispatcher)
// behind the HTTP and local-socket front-ends with authentication. qel-cimserver runs
// one; tests and benchmarks start one in process.
#ifndef QEL_SERVER_MAIN_WIRESERVER_H
#define QEL_SERVER_MAIN_WIRESERVER_H

#include <Server/core/CIMServer.h>
#include <Server/http/HttpServer.h>

#include <memory>
#include <string>

namespace qel
{
namespace server
{

struct WireServerOptions
{
    Pegasus::CIMServerOptions core;
    http::HttpServerOptions http;
    std::string passwordFile;
    // Users of client certificates (qel-certmap); read when http.tls.trustStore is set.
    std::string certificateMap;
    // Threads for requests on the local socket, kept apart from the core's pool so that a
    // request holding every core thread can still be answered when it calls back locally.
    unsigned localWorkers = 8;
    // Route this process's own CIMClient::connectLocal() calls through the Unix socket
    // (as an out-of-process client would) instead of the core's in-process transport.
    bool localCallsOverSocket = false;
    // Refuse to start when a registered provider module's library is in none of the
    // provider directories (instead of failing the first request that needs it).
    bool requireProviderModules = false;
};

class WireServer
{
public:
    explicit WireServer(WireServerOptions options);
    ~WireServer();
    WireServer(const WireServer&) = delete;
    WireServer& operator=(const WireServer&) = delete;

    // Starts the core, then the listeners. Throws (Pegasus::Exception or std::exception with
    // a message saying what failed: http::TlsConfigError for the certificate, key or trust
    // store, checked before the core starts; http::ListenerError for an address in use)
    // and leaves everything stopped on failure.
    void start();
    // Reads the TLS certificate, key and trust store again (e.g. on SIGHUP): new
    // connections use them. Throws http::TlsConfigError and keeps the previous ones when
    // they are unusable. (The password file and certificate map are re-read on change.)
    void reloadTls();
    // Stops accepting, drains requests, terminates the providers, closes connections.
    void stop();
    // Re-reads what an administrator may change while the server runs, without dropping a
    // connection: the password file and the HTTPS certificate, key and trust store. What
    // cannot be loaded is logged as an error and its previous version stays in use. False
    // when anything failed (or the server is stopped).
    // REQUIRES: not called concurrently with start() or stop() (requests may run).
    bool reload();

    unsigned short tcpPort() const;
    unsigned short tlsPort() const;
    const WireServerOptions& options() const { return _options; }
    Pegasus::CIMServer& core() { return *_core; }

private:
    struct Parts;
    WireServerOptions _options;
    std::unique_ptr<Pegasus::CIMServer> _core;
    std::unique_ptr<Parts> _parts;
};

}  // namespace server
}  // namespace qel

#endif
