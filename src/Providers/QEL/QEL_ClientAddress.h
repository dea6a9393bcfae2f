// The client's network address of a request. The CIM servers that host the
// module differ in whether their identity container carries it, so this one
// function hides the difference; the build picks the implementation.
#ifndef QEL_ClientAddress_h
#define QEL_ClientAddress_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/OperationContext.h>

PEGASUS_NAMESPACE_BEGIN

// The address of the client that sent the request, or "" when the host
// does not tell it.
String QEL_getClientAddress(const OperationContext& context);

PEGASUS_NAMESPACE_END

#endif /* QEL_ClientAddress_h */
