// CIM-XML over HTTP: checks method, path and the CIM operation headers, authenticates
// the client (Basic on TCP, peer credentials on the local socket), decodes the request,
// runs it on a worker and encodes the answer. Protocol failures become the HTTP status
// and CIMError header the CIM mapping prescribes; everything else a CIM ERROR.
#ifndef QEL_SERVER_HTTP_CIMHTTPSERVICE_H
#define QEL_SERVER_HTTP_CIMHTTPSERVICE_H

#include "AccessLog.h"
#include "HttpServer.h"
#include "OperationExecutor.h"

#include <Server/auth/BasicAuthenticator.h>
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
};

class CimHttpService : public RequestHandler
{
public:
    // Queues a job; false when the queue refuses it (full or stopping).
    using Submit = std::function<bool(std::function<void()>)>;

    CimHttpService(
        CimHttpServiceOptions options,
        auth::BasicAuthenticator& authenticator,
        OperationExecutor& executor,
        Submit tcpWorkers,
        Submit localWorkers);

    void handle(
        HttpRequest request,
        std::shared_ptr<ConnectionInfo> connection,
        std::function<void(HttpResponse)> done) override;

    // The whole exchange on the calling thread (what a worker runs); public for tests.
    HttpResponse process(const HttpRequest& request, ConnectionInfo& connection);

private:
    // As above, leaving the operation's result in `result`: a worker lets go of it only
    // once the encoded answer is on its way, so that freeing a large result (thousands of
    // instances) overlaps the sending instead of delaying it. Notes the user and what was
    // asked in `access`.
    HttpResponse process(
        const HttpRequest& request,
        ConnectionInfo& connection,
        cimxml::CimResponse& result,
        AccessRecord& access);
    bool authenticate(
        const HttpRequest& request,
        ConnectionInfo& connection,
        ClientIdentity& who,
        HttpResponse& refusal);

    CimHttpServiceOptions _options;
    auth::BasicAuthenticator& _authenticator;
    OperationExecutor& _executor;
    Submit _tcpWorkers;
    Submit _localWorkers;
};

}  // namespace http
}  // namespace qel

#endif
