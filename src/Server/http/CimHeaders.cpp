#include "CimHeaders.h"

#include <Server/xml/HttpHeaders.h>

#include <cctype>
#include <strings.h>

namespace qel
{
namespace http
{
namespace
{

const char* kCimMapping = "http://www.dmtf.org/cim/mapping/http/v1.0";

std::string trimmed(const std::string& s)
{
    const size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return std::string();
    return s.substr(b, s.find_last_not_of(" \t") - b + 1);
}

bool equalNoCase(const std::string& a, const char* b)
{
    return strcasecmp(a.c_str(), b) == 0;
}

// The "NN-" prefix of the CIM headers of an M-POST, from its Man header; false when the
// Man header does not name the CIM mapping.
bool mpostPrefix(const HttpRequest& request, std::string& prefix)
{
    const std::string man = request.header("Man");
    const size_t semi = man.find(';');
    if (semi == std::string::npos || !equalNoCase(trimmed(man.substr(0, semi)), kCimMapping))
        return false;
    const std::string rest = trimmed(man.substr(semi + 1));
    if (rest.size() < 4 || strncasecmp(rest.c_str(), "ns=", 3) != 0)
        return false;
    const std::string ns = trimmed(rest.substr(3));
    if (ns.empty())
        return false;
    for (char c : ns)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    prefix = ns + "-";
    return true;
}

}  // namespace

HttpResponse cimErrorResponse(int status, const std::string& cimError, const std::string& detail)
{
    HttpResponse r = HttpResponse::text(status, detail);
    r.headers.emplace_back("CIMError", cimError);
    return r;
}

std::optional<HttpResponse> checkRequestLine(const HttpRequest& request)
{
    if (request.method != "POST" && request.method != "M-POST")
    {
        HttpResponse r = HttpResponse::text(405, "only POST and M-POST are accepted");
        r.headers.emplace_back("Allow", "POST, M-POST");
        return r;
    }
    const std::string path = request.target.substr(0, request.target.find('?'));
    if (path != "/cimom")
        return HttpResponse::text(404, "no CIM service at " + path + " (use /cimom)");
    return std::nullopt;
}

std::optional<HttpResponse> checkOperationHeaders(const HttpRequest& request, std::string& prefix)
{
    prefix.clear();
    if (request.method == "M-POST" && !mpostPrefix(request, prefix))
        return HttpResponse::text(
            400, std::string("M-POST needs a Man header naming ") + kCimMapping + "; ns=NN");
    auto cimHeader = [&](const char* name) { return request.header(prefix + name); };
    auto hasCimHeader = [&](const char* name) { return request.hasHeader(prefix + name); };

    if (!equalNoCase(trimmed(cimHeader("CIMOperation")), "MethodCall"))
        return cimErrorResponse(
            400, "unsupported-operation", "CIMOperation header must be MethodCall");
    if (hasCimHeader("CIMProtocolVersion"))
    {
        const std::string v = trimmed(cimHeader("CIMProtocolVersion"));
        if (v.empty() || v[0] != '1' || (v.size() > 1 && v[1] != '.'))
            return cimErrorResponse(
                501, "unsupported-protocol-version",
                "CIMProtocolVersion " + v + " is not supported");
    }
    const std::string contentType = request.header("Content-Type");
    if (!contentType.empty() && strncasecmp(contentType.c_str(), "application/xml", 15) != 0 &&
        strncasecmp(contentType.c_str(), "text/xml", 8) != 0)
        return HttpResponse::text(415, "Content-Type must be application/xml or text/xml");
    if (!hasCimHeader("CIMMethod"))
        return cimErrorResponse(400, "header-mismatch", "CIMMethod header missing");
    if (!hasCimHeader("CIMObject"))
        return cimErrorResponse(400, "header-mismatch", "CIMObject header missing");
    return std::nullopt;
}

std::optional<HttpResponse> checkHeadersMatchBody(
    const HttpRequest& request, const std::string& prefix, const cimxml::DecodedRequest& decoded)
{
    if (!cimxml::cimMethodMatches(request.header(prefix + "CIMMethod"), decoded.request))
        return cimErrorResponse(
            400, "header-mismatch", "CIMMethod header does not match the method in the body");
    if (!decoded.failed &&
        !cimxml::cimObjectMatches(request.header(prefix + "CIMObject"), decoded.request))
        return cimErrorResponse(
            400, "header-mismatch", "CIMObject header does not match the object in the body");
    return std::nullopt;
}

}  // namespace http
}  // namespace qel
