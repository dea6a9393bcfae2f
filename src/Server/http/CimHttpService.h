// CIM-XML over HTTP: checks method, path and the CIM operation headers, authenticates
// the client (a mapped client certificate over TLS, else Basic; peer credentials on the
// local socket), decodes the request, runs it on a worker and encodes the answer. Protocol
// failures become the HTTP status and CIMError header the CIM mapping prescribes;
// everything else a CIM ERROR.
//
// Password guessing is throttled (auth::LoginThrottle): a guess that comes too early is
// answered 401 with Retry-After on the I/O thread, taking no worker. Credentials verified
// shortly before are no guess and pass whatever the throttle says, so a legitimate client
// sharing an address with a guesser (loopback, a NAT) keeps working.
#ifndef QEL_SERVER_HTTP_CIMHTTPSERVICE_H
#define QEL_SERVER_HTTP_CIMHTTPSERVICE_H

#include "AccessLog.h"
#include "HeapTrimmer.h"
#include "HttpServer.h"
#include "OperationExecutor.h"
#include "ResponseBodyStream.h"

#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/CertificateAuthenticator.h>
#include <Server/auth/LoginThrottle.h>
#include <Server/xml/Messages.h>

#include <functional>
#include <string>

namespace qel
{
namespace http
{

struct CimHttpServiceOptions
{
    std::string realm = "qel-cimserver";
    // Completes the host of association results; empty: this machine's name.
    std::string hostName;
    // How answers are streamed (see ResponseBodyStream.h).
    ResponseStreamLimits stream;
    auth::ThrottleOptions throttle;
    // Users of verified client certificates; null when the server takes none.
    std::shared_ptr<auth::CertificateAuthenticator> certificates;
};

class CimHttpService : public RequestHandler
{
public:
    // Queues a job; false when the queue refuses it (full or stopping).
    using Submit = std::function<bool(std::function<void()>)>;

    CimHttpService(
        CimHttpServiceOptions options, auth::BasicAuthenticator& authenticator,
        OperationExecutor& executor, Submit tcpWorkers, Submit localWorkers);

    void handle(
        HttpRequest request, std::shared_ptr<ConnectionInfo> connection,
        std::function<void(HttpResponse)> done) override;

    // The whole exchange on the calling thread, the answer never chunked; public for tests.
    HttpResponse process(const HttpRequest& request, ConnectionInfo& connection);

private:
    // As above, the answer encoded as the providers deliver it; once it outgrows the
    // stream's start threshold its head goes to `start` and the rest follows through the
    // stream, and the response returned then only carries that stream. How the operation
    // ended is left in `result` (status and error only), the user and what was asked in
    // `access`.
    HttpResponse process(
        const HttpRequest& request, ConnectionInfo& connection, cimxml::CimResponse& result,
        AccessRecord& access, const ResponseBodyStream::Start& start);
    bool authenticate(
        const HttpRequest& request, ConnectionInfo& connection, ClientIdentity& who,
        HttpResponse& refusal);
    bool authenticateCertificate(
        const ConnectionInfo& connection, ClientIdentity& who, HttpResponse& refusal);
    // True, with `refusal` set, when the request is a password guess the throttle holds
    // back: answered without a worker.
    bool
    throttledEarly(const HttpRequest& request, ConnectionInfo& connection, HttpResponse& refusal);
    HttpResponse unauthorized(const std::string& body) const;
    HttpResponse throttled(unsigned retryAfterSeconds) const;

    CimHttpServiceOptions _options;
    auth::BasicAuthenticator& _authenticator;
    auth::LoginThrottle _throttle;
    OperationExecutor& _executor;
    Submit _tcpWorkers;
    Submit _localWorkers;
    HeapTrimmer _heap;
};

}  // namespace http
}  // namespace qel

#endif
