#include "CimXmlTransport.h"

#include <Server/auth/Base64.h>
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/ResponseDecoder.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <strings.h>

using namespace Pegasus;
using qel::cimxml::CimRequest;
using qel::cimxml::CimResponse;
using qel::cimxml::Operation;

namespace qel
{
namespace client
{
namespace
{

// Class and keys only.
CIMObjectPath localName(const CIMObjectPath& path)
{
    CIMObjectPath p = path;
    p.setHost(String());
    p.setNameSpace(CIMNamespaceName());
    return p;
}

std::string reasonPhrase(int status)
{
    switch (status)
    {
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 413:
            return "Payload Too Large";
        case 500:
            return "Internal Server Error";
        case 501:
            return "Not Implemented";
        case 503:
            return "Service Unavailable";
        default:
            return "HTTP error";
    }
}

}  // namespace

CimXmlTransport::CimXmlTransport(
    std::unique_ptr<HttpClientConnection> connection, std::string authorization)
    : _connection(std::move(connection)), _authorization(std::move(authorization))
{
}

std::unique_ptr<CimXmlTransport> CimXmlTransport::overTcp(
    const std::string& host, unsigned port, const std::string& user, const std::string& password,
    Uint32 timeoutMs)
{
    auto connection = HttpClientConnection::tcp(host, port, std::chrono::milliseconds(timeoutMs));
    const std::string authorization = "Basic " + auth::base64Encode(user + ":" + password);
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), authorization));
}

std::unique_ptr<CimXmlTransport> CimXmlTransport::overTls(
    const std::string& host, unsigned port, const std::string& user, const std::string& password,
    Uint32 timeoutMs, const TlsClientOptions& tls)
{
    auto connection =
        HttpClientConnection::tls(host, port, std::chrono::milliseconds(timeoutMs), tls);
    const std::string authorization =
        user.empty() ? std::string() : "Basic " + auth::base64Encode(user + ":" + password);
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), authorization));
}

std::unique_ptr<CimXmlTransport>
CimXmlTransport::overLocalSocket(const std::string& socketPath, Uint32 timeoutMs)
{
    auto connection = HttpClientConnection::local(socketPath, std::chrono::milliseconds(timeoutMs));
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), std::string()));
}

void CimXmlTransport::setTimeout(Uint32 timeoutMilliseconds)
{
    _connection->setTimeout(std::chrono::milliseconds(timeoutMilliseconds));
}

CimResponse CimXmlTransport::execute(const CimRequest& request)
{
    // Paths travel as class and keys: the namespace travels separately and the host is the
    // server's.
    CimRequest wire = request;
    wire.objectName = localName(request.objectName);
    wire.target = localName(request.target);
    if (request.operation == Operation::ModifyInstance)
    {
        wire.instance = request.instance.clone();
        wire.instance.setPath(localName(request.instance.getPath()));
    }
    wire.messageId = std::to_string(_nextMessageId++);
    std::vector<std::pair<std::string, std::string>> headers{
        {"CIMProtocolVersion", "1.0"},
        {"CIMOperation", "MethodCall"},
        {"CIMMethod", cimxml::cimMethodHeader(wire)},
        {"CIMObject", cimxml::cimObjectHeader(wire)},
        // Large answers come in chunks; an error found after the first one comes in the
        // trailers.
        {"TE", "trailers"},
        {"Connection", "TE"},
    };
    if (!_authorization.empty())
        headers.emplace_back("Authorization", _authorization);
    // The answer's objects are decoded as its body arrives.
    cimxml::ResponseDecoder decoder(wire);
    HttpResult reply;
    try
    {
        reply = _connection->post(
            headers, cimxml::encodeRequest(wire),
            [&decoder](const char* data, size_t size) { decoder.feed(data, size); });
    }
    catch (const cimxml::ResponseError& e)
    {
        throw CIMException(CIM_ERR_FAILED, String(e.what()));
    }
    if (reply.status != 200)
    {
        std::string text =
            "HTTP " + std::to_string(reply.status) + " " + reasonPhrase(reply.status);
        const std::string cimError = reply.header("CIMError");
        if (!cimError.empty())
            text += " (CIMError: " + cimError + ")";
        if (!reply.body.empty())
            text += ": " + reply.body.substr(0, reply.body.find('\n'));
        throw CIMException(
            reply.status == 401 ? CIM_ERR_ACCESS_DENIED : CIM_ERR_FAILED, String(text.c_str()));
    }
    CIMException late;
    if (cimxml::errorFromTrailers(reply.trailers, late))
    {
        CimResponse failed(wire);
        failed.setError(late);
        return failed;
    }
    try
    {
        return decoder.finish();
    }
    catch (const cimxml::ResponseError& e)
    {
        throw CIMException(CIM_ERR_FAILED, String(e.what()));
    }
}

}  // namespace client
}  // namespace qel
