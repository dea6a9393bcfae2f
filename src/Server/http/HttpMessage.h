// The HTTP request and response as the CIM front-end sees them, free of the HTTP
// library's types.
#ifndef QEL_SERVER_HTTP_HTTPMESSAGE_H
#define QEL_SERVER_HTTP_HTTPMESSAGE_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qel
{
namespace http
{

enum class Transport
{
    Tcp,
    Local,
    Tls  // over TCP
};

// One client connection. Requests on a connection are handled one after the other, so a
// handler may keep per-connection notes here without locking.
struct ConnectionInfo
{
    Transport transport = Transport::Tcp;
    std::string clientAddress;  // the peer's IP address ("127.0.0.1" on the local socket)
    std::string peerUser;       // local socket: the peer's login name, "" when unknown
    std::string peerError;      // local socket: why peerUser is unknown
    // TLS: the client certificate, verified against the trust store at the handshake
    // (SHA-256 fingerprint, "" when the client sent none) and its subject.
    std::string certificateFingerprint;
    std::string certificateSubject;
    // Credentials already verified on this connection (see CimHttpService).
    std::string verifiedAuthorization;
    std::string verifiedUser;
    uint64_t verifiedGeneration = 0;
};

using HeaderList = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest
{
    std::string method;  // "POST", "M-POST", ...
    std::string target;
    unsigned version = 11;  // 10 or 11
    HeaderList headers;
    std::string body;

    // Value of the first header with this name (case-insensitive); "" when absent.
    std::string header(const std::string& name) const;
    bool hasHeader(const std::string& name) const;
};

class ResponseBodyStream;

struct HttpResponse
{
    int status = 200;
    HeaderList headers;
    std::string body;
    bool close = false;  // close the connection after this response
    // Set: the body is sent in chunks as it comes from this stream (`body` is unused).
    std::shared_ptr<ResponseBodyStream> stream;
    // Read nothing more on this connection for this long after the response (a client
    // told to retry later): no thread waits, the connection just is not listened to.
    std::chrono::seconds holdOff{0};

    // A response with a plain-text body.
    static HttpResponse text(int status, const std::string& body);
};

}  // namespace http
}  // namespace qel

#endif
