#include "DispatcherExecutor.h"

#include <Server/core/ProviderErrors.h>

#include <Pegasus/Common/CIMResponseCollector.h>

using namespace Pegasus;

namespace qel
{
namespace server
{

void DispatcherExecutor::execute(
    const cimxml::CimRequest& request,
    const http::ClientIdentity& client,
    cimxml::CimResponse& response)
{
    OperationContext context;
    try
    {
        context = Dispatcher::requestContext(
            String(client.user.c_str()), String(client.clientAddress.c_str()));
    }
    catch (...)
    {
        response.setError(currentExceptionAsCIMException());
        return;
    }
    CIMResponseCollector collector(request.operation, response);
    _dispatcher.execute(context, request, collector);
}

}  // namespace server
}  // namespace qel
