#include "CimHttpService.h"

#include "CimHeaders.h"

#include <Server/core/ServerLog.h>
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <unistd.h>

using namespace Pegasus;

namespace qel
{
namespace http
{
namespace
{

std::string localHostName()
{
    char buf[256] = {0};
    if (::gethostname(buf, sizeof buf - 1) != 0 || buf[0] == '\0')
        return "localhost";
    return buf;
}

}  // namespace

CimHttpService::CimHttpService(
    CimHttpServiceOptions options,
    auth::BasicAuthenticator& authenticator,
    OperationExecutor& executor,
    Submit tcpWorkers,
    Submit localWorkers)
    : _options(std::move(options)),
      _authenticator(authenticator),
      _executor(executor),
      _tcpWorkers(std::move(tcpWorkers)),
      _localWorkers(std::move(localWorkers))
{
    if (_options.hostName.empty())
        _options.hostName = localHostName();
}

void CimHttpService::handle(
    HttpRequest request,
    std::shared_ptr<ConnectionInfo> connection,
    std::function<void(HttpResponse)> done)
{
    AccessRecord access;
    access.arrived = std::chrono::system_clock::now();
    access.started = std::chrono::steady_clock::now();
    access.client = connection->clientAddress;
    // Password hashing and the operation itself are slow: both run on a worker.
    auto job = [this, request = std::move(request), connection, done, access]() mutable
    {
        cimxml::CimResponse result;
        HttpResponse response;
        try
        {
            response = process(request, *connection, result, access);
        }
        catch (const std::exception& e)
        {
            ServerLog::error(std::string("request failed unexpectedly: ") + e.what());
            response = HttpResponse::text(500, "internal server error");
        }
        describeOutcome(access, response, result, std::chrono::steady_clock::now());
        done(std::move(response));
        writeAccessLog(access);
    };
    Submit& workers = connection->transport == Transport::Local ? _localWorkers : _tcpWorkers;
    if (!workers(job))
    {
        HttpResponse busy = HttpResponse::text(503, "server busy or shutting down");
        busy.close = true;
        describeOutcome(access, busy, cimxml::CimResponse(), std::chrono::steady_clock::now());
        done(std::move(busy));
        writeAccessLog(access);
    }
}

bool CimHttpService::authenticate(
    const HttpRequest& request,
    ConnectionInfo& connection,
    ClientIdentity& who,
    HttpResponse& refusal)
{
    who.clientAddress = connection.clientAddress;
    const std::string authorization = request.header("Authorization");
    if (connection.transport == Transport::Local && !connection.peerUser.empty() &&
        authorization.empty())
    {
        who.user = connection.peerUser;
        return true;
    }
    if (!authorization.empty())
    {
        // A keep-alive client repeats the same credentials: verified once per connection for
        // as long as the password file stays as it was.
        const uint64_t generation = _authenticator.generation();
        if (authorization == connection.verifiedAuthorization &&
            generation == connection.verifiedGeneration)
        {
            who.user = connection.verifiedUser;
            return true;
        }
        const auth::AuthResult result = _authenticator.authenticate(authorization);
        if (result.ok)
        {
            connection.verifiedAuthorization = authorization;
            connection.verifiedUser = result.user;
            connection.verifiedGeneration = generation;
            who.user = result.user;
            return true;
        }
        ServerLog::warning(
            "authentication failed for client " + connection.clientAddress + ": " + result.reason);
    }
    else if (connection.transport == Transport::Local)
    {
        ServerLog::warning("local client not identified: " + connection.peerError);
    }
    refusal = HttpResponse::text(401, "authentication required");
    refusal.headers.emplace_back("WWW-Authenticate", "Basic realm=\"" + _options.realm + "\"");
    return false;
}

HttpResponse CimHttpService::process(const HttpRequest& request, ConnectionInfo& connection)
{
    cimxml::CimResponse result;
    AccessRecord access;
    return process(request, connection, result, access);
}

HttpResponse CimHttpService::process(
    const HttpRequest& request,
    ConnectionInfo& connection,
    cimxml::CimResponse& response,
    AccessRecord& access)
{
    if (std::optional<HttpResponse> refused = checkRequestLine(request))
        return *refused;

    ClientIdentity who;
    HttpResponse refusal;
    if (!authenticate(request, connection, who, refusal))
        return refusal;
    access.user = who.user;

    std::string prefix;
    if (std::optional<HttpResponse> refused = checkOperationHeaders(request, prefix))
        return *refused;

    cimxml::DecodedRequest decoded;
    try
    {
        decoded = cimxml::decodeRequest(request.body.data(), request.body.size());
    }
    catch (const cimxml::ProtocolError& e)
    {
        return cimErrorResponse(e.httpStatus(), e.cimError(), e.what());
    }
    describeRequest(access, decoded.request);
    if (std::optional<HttpResponse> refused = checkHeadersMatchBody(request, prefix, decoded))
        return *refused;
    const cimxml::CimRequest& cim = decoded.request;

    response.messageId = cim.messageId;
    response.operation = cim.operation;
    response.methodName = cim.methodName;
    if (decoded.failed)
        response.setError(decoded.error);
    else
        _executor.execute(cim, who, response);

    HttpResponse out;
    out.status = 200;
    out.body = cimxml::encodeResponse(response, String(_options.hostName.c_str()), cim.nameSpace);
    out.headers.emplace_back("Content-Type", "application/xml; charset=\"utf-8\"");
    if (request.method == "M-POST")
        out.headers.emplace_back("Ext", "");
    out.headers.emplace_back(prefix + "CIMOperation", "MethodResponse");
    return out;
}

}  // namespace http
}  // namespace qel
