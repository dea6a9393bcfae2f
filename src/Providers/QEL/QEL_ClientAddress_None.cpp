// Client address for servers whose IdentityContainer does not carry one.
// Such a deployment's host hands the address to the array library by its own
// means; the module then reports no address of its own.
#include "QEL_ClientAddress.h"

PEGASUS_NAMESPACE_BEGIN

String QEL_getClientAddress(const OperationContext& context)
{
    return String();
}

PEGASUS_NAMESPACE_END
