// CIM-XML response documents: encoding on the server, decoding on the client.
#ifndef QEL_SERVER_XML_RESPONSECODEC_H
#define QEL_SERVER_XML_RESPONSECODEC_H

#include "Messages.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace qel
{
namespace cimxml
{

// Writes the response document. Paths of association and query results that lack a host
// or namespace are completed with `host` and `nameSpace` (the request's namespace).
std::string encodeResponse(
    const CimResponse& response, const Pegasus::String& host,
    const Pegasus::CIMNamespaceName& nameSpace);

// A response document the client cannot use (malformed, or not the answer to its request).
class ResponseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Reads the response to `request`. A CIM ERROR comes back as response.failed/error.
CimResponse decodeResponse(const char* body, size_t size, const CimRequest& request);

}  // namespace cimxml
}  // namespace qel

#endif
