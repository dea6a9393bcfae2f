// What the CIM front-end needs from the server core: run one decoded operation for an
// authenticated client.
#ifndef QEL_SERVER_HTTP_OPERATIONEXECUTOR_H
#define QEL_SERVER_HTTP_OPERATIONEXECUTOR_H

#include <Server/xml/Messages.h>

#include <Pegasus/Common/CIMResponseSink.h>

#include <string>

namespace qel
{
namespace http
{

struct ClientIdentity
{
    std::string user;
    std::string clientAddress;
};

class OperationExecutor
{
public:
    virtual ~OperationExecutor() = default;
    // Fills `response` with the results, or with the CIM error the operation ended in.
    // Must not throw.
    virtual void execute(
        const cimxml::CimRequest& request, const ClientIdentity& client,
        cimxml::CimResponse& response) = 0;
    // Runs the operation with its answer going to `sink` as it is made; exactly one of
    // sink.complete() and sink.fail() ends it. What the sink throws while taking an object
    // ends the operation as a failure. This one runs the operation whole, then hands its
    // result to the sink; executors that can deliver as they go override it.
    virtual void execute(
        const cimxml::CimRequest& request, const ClientIdentity& client,
        Pegasus::CIMResponseSink& sink);
};

}  // namespace http
}  // namespace qel

#endif
