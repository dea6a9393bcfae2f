#include "DispatcherExecutor.h"

#include <Server/core/ProviderErrors.h>
#include <Server/interop/InteropNamespace.h>

#include <Pegasus/Common/CIMResponseCollector.h>

using namespace Pegasus;

namespace qel
{
namespace server
{

void DispatcherExecutor::execute(
    const cimxml::CimRequest& request, const http::ClientIdentity& client,
    cimxml::CimResponse& response)
{
    CIMResponseCollector collector(request.operation, response);
    execute(request, client, collector);
}

void DispatcherExecutor::execute(
    const cimxml::CimRequest& request, const http::ClientIdentity& client, CIMResponseSink& sink)
{
    OperationContext context;
    try
    {
        context = Dispatcher::requestContext(
            String(client.user.c_str()), String(client.clientAddress.c_str()));
    }
    catch (...)
    {
        sink.fail(currentExceptionAsCIMException());
        return;
    }
    // Clients may name the discovery namespace by its short alias.
    const CIMNamespaceName nameSpace = interop::resolveNamespaceAlias(request.nameSpace);
    if (nameSpace == request.nameSpace)
    {
        _dispatcher.execute(context, request, sink);
        return;
    }
    cimxml::CimRequest resolved(request);
    resolved.nameSpace = nameSpace;
    _dispatcher.execute(context, resolved, sink);
}

}  // namespace server
}  // namespace qel
