// How the server reads a request off a connection, apart from the connection itself: Beast's
// parser with the server's limits, the request it gives as the CIM front-end sees it, and
// the answer a request that cannot be read gets. HttpServer runs them on its sockets; the
// request-head fuzz target runs them on bytes.
#ifndef QEL_SERVER_HTTP_HTTPPARSER_H
#define QEL_SERVER_HTTP_HTTPPARSER_H

#include "HttpMessage.h"
#include "HttpServer.h"

#include <boost/beast/core/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <optional>

namespace qel
{
namespace http
{

using RequestParser = boost::beast::http::request_parser<boost::beast::http::string_body>;

// Sets the body and header limits of `options` on a new parser.
void limitParser(RequestParser& parser, const HttpServerOptions& options);

// The parsed message, taken out of the parser, as an HttpRequest.
HttpRequest takeRequest(RequestParser& parser);

// What to answer when reading a request failed with `ec` before the connection is closed:
// 413 for a body too large, 431 for a header too large, 400 for a malformed request, and
// nothing when the peer left or went quiet (end of stream, time-out, reset).
std::optional<HttpResponse> readFailureResponse(const boost::beast::error_code& ec);

}  // namespace http
}  // namespace qel

#endif
