// Any bytes as what a client sends on a connection, through what the server does with a
// request head before the body is decoded: Beast's parser with the server's limits, the
// answer to a request that cannot be read, the request line and CIM header checks, the
// Basic credentials of the Authorization header with the look-up of their user, and the
// CIMMethod / CIMObject headers against an intrinsic and an extrinsic call. Passwords are
// not hashed. Every refusal must be an HTTP error, and credentials that decode must encode
// back to the same user and password.
#include <Server/auth/Base64.h>
#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/PasswordFile.h>
#include <Server/http/CimHeaders.h>
#include <Server/http/HttpParser.h>
#include <Server/xml/RequestCodec.h>

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/error.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace bhttp = boost::beast::http;
using namespace qel;

namespace
{

cimxml::DecodedRequest decoded(const std::string& call)
{
    const std::string body =
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
        "<SIMPLEREQ>" +
        call + "</SIMPLEREQ></MESSAGE></CIM>";
    return cimxml::decodeRequest(body.data(), body.size());
}

const char* kNamespace =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH>";
const char* kPort =
    "<INSTANCENAME CLASSNAME=\"QEL_FCPort\"><KEYBINDING NAME=\"DeviceID\"><KEYVALUE>"
    "20110002AC00A001</KEYVALUE></KEYBINDING></INSTANCENAME>";

void refusal(const http::HttpResponse& r)
{
    if (r.status < 400 || r.status > 599)
        __builtin_trap();
}

void checkCredentials(const http::HttpRequest& request)
{
    static const auth::PasswordFile users =
        auth::PasswordFile::parse("operator:$6$salt$hash\nmonitor:$y$j9T$salt$hash\n", "fuzz");
    std::string user, password;
    if (!auth::parseBasicCredentials(request.header("Authorization"), user, password))
        return;
    if (user.find(':') != std::string::npos)
        __builtin_trap();  // the first colon ends the user name
    const auth::PasswordEntry* entry = users.find(user);
    if (entry && entry->user != user)
        __builtin_trap();
    std::string user2, password2;
    if (!auth::parseBasicCredentials(
            "Basic " + auth::base64Encode(user + ":" + password), user2, password2) ||
        user2 != user || password2 != password)
        __builtin_trap();
}

void checkHead(const http::HttpRequest& request)
{
    static const cimxml::DecodedRequest intrinsic = decoded(
        std::string("<IMETHODCALL NAME=\"GetInstance\">") + kNamespace +
        "<IPARAMVALUE NAME=\"InstanceName\">" + kPort + "</IPARAMVALUE></IMETHODCALL>");
    static const cimxml::DecodedRequest extrinsic = decoded(
        std::string("<METHODCALL NAME=\"SetOffline\"><LOCALINSTANCEPATH>") + kNamespace + kPort +
        "</LOCALINSTANCEPATH></METHODCALL>");

    if (std::optional<http::HttpResponse> r = http::checkRequestLine(request))
        return refusal(*r);
    checkCredentials(request);
    std::string prefix;
    if (std::optional<http::HttpResponse> r = http::checkOperationHeaders(request, prefix))
        return refusal(*r);
    for (const cimxml::DecodedRequest* call : {&intrinsic, &extrinsic})
        if (std::optional<http::HttpResponse> r =
                http::checkHeadersMatchBody(request, prefix, *call))
            refusal(*r);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const http::HttpServerOptions options;  // the server's defaults
    http::RequestParser parser;
    http::limitParser(parser, options);
    boost::asio::const_buffer input(data, size);
    boost::beast::error_code ec;
    // As the server reads: whatever has arrived, until the message is complete; when the
    // bytes run out first, the peer has closed.
    while (!parser.is_done())
    {
        const size_t used = parser.put(input, ec);
        input += used;
        if (ec == bhttp::error::need_more)
            ec = {};
        if (ec)
            break;
        if (used == 0 || input.size() == 0)
        {
            if (!parser.is_done())
                parser.put_eof(ec);
            break;
        }
    }
    if (ec)
    {
        if (std::optional<http::HttpResponse> r = http::readFailureResponse(ec))
            refusal(*r);
        return 0;
    }
    if (!parser.is_done())
        return 0;
    checkHead(http::takeRequest(parser));
    return 0;
}
