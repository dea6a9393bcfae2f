// Client address taken from the request's identity container, for servers
// whose IdentityContainer carries it.
#include "QEL_ClientAddress.h"

PEGASUS_NAMESPACE_BEGIN

String QEL_getClientAddress(const OperationContext& context)
{
    return IdentityContainer(context.get(IdentityContainer::NAME)).getIpAddress();
}

PEGASUS_NAMESPACE_END
