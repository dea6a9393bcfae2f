// Shared pieces of the HTTP tests: a scripted executor standing in for the core, a
// temporary password file, and a running front-end (listener + CIM service).
#ifndef QEL_TESTS_WIRE_WIRETESTSUPPORT_H
#define QEL_TESTS_WIRE_WIRETESTSUPPORT_H

#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/Clock.h>
#include <Server/core/ThreadPool.h>
#include <Server/http/CimHttpService.h>
#include <Server/http/HttpServer.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace wiretest
{

// Answers from a script instead of providers:
//  EnumerateInstanceNames -> two QEL_FCPort names; GetInstance -> an instance built from
//  the requested keys, CIM_ERR_NOT_FOUND when DeviceID is "missing"; InvokeMethod "Echo"
//  -> returns the number of inputs and echoes them plus "User" (the caller);
//  InvokeMethod "Wait" -> blocks until release(); anything else CIM_ERR_NOT_SUPPORTED.
class ScriptedExecutor : public qel::http::OperationExecutor
{
public:
    void execute(
        const qel::cimxml::CimRequest& request, const qel::http::ClientIdentity& client,
        qel::cimxml::CimResponse& response) override;
    void release();
    int waiting() const { return _waiting.load(); }

private:
    std::mutex _mutex;
    std::condition_variable _released;
    bool _open = false;
    std::atomic<int> _waiting{0};
};

// A clock the test moves by hand.
class ManualClock
{
public:
    qel::auth::Clock clock()
    {
        return [this] { return _now; };
    }
    void advance(std::chrono::milliseconds by) { _now += by; }

private:
    qel::auth::TimePoint _now = qel::auth::TimePoint() + std::chrono::hours(1);
};

// A password file in a fresh directory, removed with the object.
class TempPasswordFile
{
public:
    TempPasswordFile();
    ~TempPasswordFile();
    void add(const std::string& user, const std::string& password);
    const std::string& path() const { return _path; }
    const std::string& dir() const { return _dir; }

private:
    std::string _dir, _path;
};

std::string basicAuth(const std::string& user, const std::string& password);

// Listener on a free loopback port and a socket in the password file's directory (and,
// when options.tlsPort is not negative, HTTPS on another free loopback port); alice's
// password is "wonderland".
class FrontEnd
{
public:
    explicit FrontEnd(
        qel::http::HttpServerOptions options = qel::http::HttpServerOptions(), unsigned workers = 4,
        qel::http::CimHttpServiceOptions serviceOptions = qel::http::CimHttpServiceOptions());
    ~FrontEnd();
    unsigned short port() const { return http->tcpPort(); }
    unsigned short tlsPort() const { return http->tlsPort(); }
    std::string socketPath() const { return passwords.dir() + "/cim.socket"; }

    TempPasswordFile passwords;
    ScriptedExecutor executor;
    std::unique_ptr<qel::auth::BasicAuthenticator> authenticator;
    std::unique_ptr<Pegasus::ThreadPool> pool;
    std::unique_ptr<qel::http::CimHttpService> service;
    std::unique_ptr<qel::http::HttpServer> http;
};

// Sends raw bytes to 127.0.0.1:port and returns what comes back until the server
// closes the connection or `timeoutMs` passes.
std::string rawExchange(unsigned short port, const std::string& bytes, int timeoutMs = 5000);

// A client connection made by hand, from a chosen loopback address (127.0.0.0/8).
class RawConnection
{
public:
    RawConnection(unsigned short port, const std::string& from = "127.0.0.1");
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    void send(const std::string& bytes);
    // True once the server has closed the connection (waiting up to `timeoutMs`); data
    // it sent before is read and dropped.
    bool closedByServer(int timeoutMs);

private:
    int _fd = -1;
};

// A well-formed CIM-XML request for EnumerateInstanceNames of QEL_FCPort in root/qel.
std::string enumerateNamesBody();
std::string cimPost(
    const std::string& body, const std::string& authorization,
    const std::string& extraHeaders = "");
// A CIM-XML request as the service takes it from the HTTP front: POST /cimom calling
// `method` in root/qel.
qel::http::HttpRequest
cimRequest(const std::string& method, std::string body, const std::string& authorization);

}  // namespace wiretest

#endif
