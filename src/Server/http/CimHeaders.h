// The checks CIM-XML over HTTP makes of a request's line and headers, authentication apart,
// in the order CimHttpService applies them: each gives the response that refuses the
// request, or nothing when the request passes.
#ifndef QEL_SERVER_HTTP_CIMHEADERS_H
#define QEL_SERVER_HTTP_CIMHEADERS_H

#include "HttpMessage.h"

#include <Server/xml/RequestCodec.h>

#include <optional>
#include <string>

namespace qel
{
namespace http
{

// Method and path: 405 unless POST or M-POST, 404 unless /cimom (a query is ignored).
std::optional<HttpResponse> checkRequestLine(const HttpRequest& request);

// The CIM operation headers, once the client is authenticated: an M-POST's Man header (the
// "NN-" prefix it gives the CIM headers is set in `prefix`), CIMOperation,
// CIMProtocolVersion, Content-Type, and that CIMMethod and CIMObject are there.
std::optional<HttpResponse> checkOperationHeaders(const HttpRequest& request, std::string& prefix);

// CIMMethod, and CIMObject when the body decoded, name what the body does.
std::optional<HttpResponse> checkHeadersMatchBody(
    const HttpRequest& request, const std::string& prefix, const cimxml::DecodedRequest& decoded);

// A refusal carrying the CIMError header the CIM mapping prescribes.
HttpResponse cimErrorResponse(int status, const std::string& cimError, const std::string& detail);

}  // namespace http
}  // namespace qel

#endif
