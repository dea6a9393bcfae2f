// The CIM operation headers of CIM-XML over HTTP: values a client sends and the checks a
// server makes of them against the decoded body.
#ifndef QEL_SERVER_XML_HTTPHEADERS_H
#define QEL_SERVER_XML_HTTPHEADERS_H

#include "Messages.h"

#include <Pegasus/Common/Exception.h>

#include <string>
#include <utility>
#include <vector>

namespace qel
{
namespace cimxml
{

// %XX-escapes every byte outside the URI unreserved set (so "/" becomes %2F).
std::string uriEncode(const std::string& text);
// Reverses %XX escapes; false when an escape is malformed.
bool uriDecode(const std::string& text, std::string& out);

// CIMMethod header value: the intrinsic operation or extrinsic method name.
std::string cimMethodHeader(const CimRequest& request);
// CIMObject header value: the namespace for intrinsic calls, "namespace:path" of the
// target for extrinsic ones, URI-escaped.
std::string cimObjectHeader(const CimRequest& request);

// True when the received CIMMethod / CIMObject header values name what the body does.
bool cimMethodMatches(const std::string& header, const CimRequest& request);
bool cimObjectMatches(const std::string& header, const CimRequest& request);

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

// A CIM error found after a chunked answer began, as DSP0200's trailers report it (each
// name after `prefix`, the "NN-" of an M-POST): CIMStatusCode (the number),
// CIMStatusCodeDescription (the ERROR element's description, %XX-escaped) and CIMError
// (the whole ERROR element with its CIM_Error instances, %XX-escaped; left out when that
// would make an unreasonably long field).
HeaderFields errorTrailers(const Pegasus::CIMException& error, const std::string& prefix = "");
// The names the Trailer header announces.
std::string errorTrailerNames(const std::string& prefix = "");
// The error the trailers of a reply report: true with `error` set when CIMStatusCode is
// there and not 0. The CIMError trailer, when it can be read, gives the exception whole;
// else code and description do.
bool errorFromTrailers(const HeaderFields& trailers, Pegasus::CIMException& error);

}  // namespace cimxml
}  // namespace qel

#endif
