#include "HttpMessage.h"

#include <strings.h>

namespace qel
{
namespace http
{

std::string HttpRequest::header(const std::string& name) const
{
    for (const auto& h : headers)
        if (strcasecmp(h.first.c_str(), name.c_str()) == 0)
            return h.second;
    return std::string();
}

bool HttpRequest::hasHeader(const std::string& name) const
{
    for (const auto& h : headers)
        if (strcasecmp(h.first.c_str(), name.c_str()) == 0)
            return true;
    return false;
}

HttpResponse HttpResponse::text(int status, const std::string& body)
{
    HttpResponse r;
    r.status = status;
    r.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
    r.body = body;
    if (!r.body.empty() && r.body.back() != '\n')
        r.body += '\n';
    return r;
}

}  // namespace http
}  // namespace qel
