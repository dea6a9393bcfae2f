#include "ServerCIMOMHandle.h"

#include "Dispatcher.h"

#include <Pegasus/Common/CIMResponseCollector.h>
#include <Pegasus/Common/CIMStatusCode.h>

namespace Pegasus
{

Dispatcher& ServerCIMOMHandleRep::_server() const
{
    Dispatcher* d = _dispatcher.load();
    if (d == nullptr)
        throw CIMException(CIM_ERR_FAILED, "The CIM server has stopped.");
    return *d;
}

CIMOperationResponse
ServerCIMOMHandleRep::execute(const OperationContext& context, const CIMOperationRequest& request)
{
    Dispatcher& server = _server();
    CIMOperationResponse response;
    CIMResponseCollector collector(request.operation, response);
    server.execute(context, request, collector);
    return response;
}

}  // namespace Pegasus
