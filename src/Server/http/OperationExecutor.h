// What the CIM front-end needs from the server core: run one decoded operation for an
// authenticated client.
#ifndef QEL_SERVER_HTTP_OPERATIONEXECUTOR_H
#define QEL_SERVER_HTTP_OPERATIONEXECUTOR_H

#include <Server/xml/Messages.h>

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
};

}  // namespace http
}  // namespace qel

#endif
