// The CIM operation headers of CIM-XML over HTTP: values a client sends and the checks a
// server makes of them against the decoded body.
#ifndef QEL_SERVER_XML_HTTPHEADERS_H
#define QEL_SERVER_XML_HTTPHEADERS_H

#include "Messages.h"

#include <string>

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

}  // namespace cimxml
}  // namespace qel

#endif
