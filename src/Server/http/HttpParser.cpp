#include "HttpParser.h"

#include <boost/beast/http/error.hpp>

namespace bhttp = boost::beast::http;

namespace qel
{
namespace http
{

void limitParser(RequestParser& parser, const HttpServerOptions& options)
{
    parser.body_limit(options.maxBodyBytes);
    parser.header_limit(static_cast<std::uint32_t>(options.maxHeaderBytes));
}

HttpRequest takeRequest(RequestParser& parser)
{
    bhttp::request<bhttp::string_body> msg = parser.release();
    HttpRequest request;
    request.method = std::string(msg.method_string());
    request.target = std::string(msg.target());
    request.version = msg.version();
    for (const auto& field : msg)
        request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    request.body = std::move(msg.body());
    return request;
}

std::optional<HttpResponse> readFailureResponse(const boost::beast::error_code& ec)
{
    if (ec == bhttp::error::body_limit)
        return HttpResponse::text(413, "request body too large");
    if (ec == bhttp::error::header_limit)
        return HttpResponse::text(431, "request header too large");
    if (ec.category() == bhttp::make_error_code(bhttp::error::bad_method).category() &&
        ec != bhttp::error::end_of_stream && ec != bhttp::error::partial_message)
        return HttpResponse::text(400, "malformed HTTP request: " + ec.message());
    return std::nullopt;
}

}  // namespace http
}  // namespace qel
