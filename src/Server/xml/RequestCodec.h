// CIM-XML request documents: decoding on the server, encoding on the client.
#ifndef QEL_SERVER_XML_REQUESTCODEC_H
#define QEL_SERVER_XML_REQUESTCODEC_H

#include "Messages.h"

#include <cstddef>
#include <string>

namespace qel
{
namespace cimxml
{

struct DecodedRequest
{
    CimRequest request;
    // Set when the message names its operation but its content breaks the rules: the
    // request must be answered with `error` (usually CIM_ERR_INVALID_PARAMETER, or
    // CIM_ERR_NOT_SUPPORTED for an unknown intrinsic method).
    bool failed = false;
    Pegasus::CIMException error;
};

// Throws ProtocolError when the document is not XML, not a CIM message, or a message that
// cannot be answered (no ID, no method name, unsupported versions, multiple requests).
DecodedRequest decodeRequest(const char* body, size_t size);

// The whole request document for `request` (parameters marked present are written).
std::string encodeRequest(const CimRequest& request);

}  // namespace cimxml
}  // namespace qel

#endif
