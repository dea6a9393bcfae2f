// One CIM operation request and its response, independent of the wire form.
#ifndef QEL_SERVER_XML_MESSAGES_H
#define QEL_SERVER_XML_MESSAGES_H

#include "Operations.h"

#include <Pegasus/Common/CIMOperationMessage.h>

namespace qel
{
namespace cimxml
{

// The request and response values are the runtime's (CIMOperationMessage.h), shared with
// CIMClient, CIMOMHandle and the server's dispatcher.
using CimRequest = Pegasus::CIMOperationRequest;
using CimResponse = Pegasus::CIMOperationResponse;

// Sets every boolean parameter of the request's operation to the operation's default.
void applyDefaults(CimRequest& request);

}  // namespace cimxml
}  // namespace qel

#endif
