#include "CimHttpService.h"

#include <Server/core/ServerLog.h>
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <cctype>
#include <strings.h>
#include <unistd.h>

using namespace Pegasus;

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

HttpResponse cimError(int status, const std::string& cimError, const std::string& detail)
{
    HttpResponse r = HttpResponse::text(status, detail);
    r.headers.emplace_back("CIMError", cimError);
    return r;
}

std::string localHostName()
{
    char buf[256] = {0};
    if (::gethostname(buf, sizeof buf - 1) != 0 || buf[0] == '\0')
        return "localhost";
    return buf;
}

// The user name an attempt is counted under: the one in the credentials, or "" (never a
// valid name) for credentials that are not Basic at all.
std::string throttleName(const std::string& authorization)
{
    std::string user, password;
    return qel::auth::parseBasicCredentials(authorization, user, password) ? user : std::string();
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
      _throttle(_options.throttle),
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
    HttpResponse refusal;
    if (throttledEarly(request, *connection, refusal))
        return done(std::move(refusal));
    // Password hashing and the operation itself are slow: both run on a worker.
    auto job = [this, request = std::move(request), connection, done]()
    {
        cimxml::CimResponse result;
        HttpResponse response;
        try
        {
            response = process(request, *connection, result);
        }
        catch (const std::exception& e)
        {
            ServerLog::error(std::string("request failed unexpectedly: ") + e.what());
            response = HttpResponse::text(500, "internal server error");
        }
        done(std::move(response));
    };
    Submit& workers = connection->transport == Transport::Local ? _localWorkers : _tcpWorkers;
    if (!workers(job))
    {
        HttpResponse busy = HttpResponse::text(503, "server busy or shutting down");
        busy.close = true;
        done(std::move(busy));
    }
}

HttpResponse CimHttpService::unauthorized(const std::string& body) const
{
    HttpResponse r = HttpResponse::text(401, body);
    r.headers.emplace_back("WWW-Authenticate", "Basic realm=\"" + _options.realm + "\"");
    return r;
}

HttpResponse CimHttpService::throttled(unsigned retryAfterSeconds) const
{
    HttpResponse r = unauthorized(
        "too many failed logins: retry in " + std::to_string(retryAfterSeconds) + " s");
    r.headers.emplace_back("Retry-After", std::to_string(retryAfterSeconds));
    // A guesser that keeps its connection gets no earlier try on it than it was told.
    r.holdOff = std::chrono::seconds(retryAfterSeconds);
    return r;
}

bool CimHttpService::throttledEarly(
    const HttpRequest& request,
    ConnectionInfo& connection,
    HttpResponse& refusal)
{
    if (!connection.certificateFingerprint.empty())
        return false;
    const std::string authorization = request.header("Authorization");
    if (authorization.empty() || authorization == connection.verifiedAuthorization)
        return false;
    const unsigned wait =
        _throttle.wouldWait(throttleName(authorization), connection.clientAddress);
    // Asked only when throttled: a remembered pair is no guess.
    if (wait == 0 || _authenticator.remembers(authorization))
        return false;
    refusal = throttled(wait);
    return true;
}

bool CimHttpService::authenticateCertificate(
    const ConnectionInfo& connection,
    ClientIdentity& who,
    HttpResponse& refusal)
{
    // Verified against the trust store at the handshake; the map says whose it is. A
    // certificate that names nobody is refused, password or not: its holder meant it.
    auth::AuthResult result;
    if (_options.certificates)
        result = _options.certificates->authenticate(
            connection.certificateFingerprint, connection.certificateSubject);
    else
        result.reason = "client certificates are not accepted";
    if (result.ok)
    {
        who.user = result.user;
        return true;
    }
    ServerLog::warning(
        "authentication failed for client " + connection.clientAddress + ": " + result.reason);
    refusal = unauthorized("client certificate not accepted");
    return false;
}

bool CimHttpService::authenticate(
    const HttpRequest& request,
    ConnectionInfo& connection,
    ClientIdentity& who,
    HttpResponse& refusal)
{
    who.clientAddress = connection.clientAddress;
    if (!connection.certificateFingerprint.empty())
        return authenticateCertificate(connection, who, refusal);
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
        // A guess is anything but a pair verified shortly before; guesses are throttled.
        const std::string user = throttleName(authorization);
        const bool guess = !_authenticator.remembers(authorization);
        if (guess)
        {
            if (const unsigned wait = _throttle.admit(user, connection.clientAddress))
            {
                refusal = throttled(wait);
                return false;
            }
        }
        const auth::AuthResult result = _authenticator.authenticate(authorization);
        if (result.ok)
        {
            if (guess)
                _throttle.succeeded(user, connection.clientAddress);
            connection.verifiedAuthorization = authorization;
            connection.verifiedUser = result.user;
            connection.verifiedGeneration = generation;
            who.user = result.user;
            return true;
        }
        // Logged once per burst of one user name from one address; the rest only counted.
        if (!guess || _throttle.failed(user, connection.clientAddress))
            ServerLog::warning(
                "authentication failed for client " + connection.clientAddress + ": " +
                result.reason + (guess ? " (further failures of this burst are not logged)" : ""));
    }
    else if (connection.transport == Transport::Local)
    {
        ServerLog::warning("local client not identified: " + connection.peerError);
    }
    refusal = unauthorized("authentication required");
    return false;
}

HttpResponse CimHttpService::process(const HttpRequest& request, ConnectionInfo& connection)
{
    cimxml::CimResponse result;
    return process(request, connection, result);
}

HttpResponse CimHttpService::process(
    const HttpRequest& request,
    ConnectionInfo& connection,
    cimxml::CimResponse& response)
{
    const bool mpost = request.method == "M-POST";
    if (request.method != "POST" && !mpost)
    {
        HttpResponse r = HttpResponse::text(405, "only POST and M-POST are accepted");
        r.headers.emplace_back("Allow", "POST, M-POST");
        return r;
    }
    const std::string path = request.target.substr(0, request.target.find('?'));
    if (path != "/cimom")
        return HttpResponse::text(404, "no CIM service at " + path + " (use /cimom)");

    ClientIdentity who;
    HttpResponse refusal;
    if (!authenticate(request, connection, who, refusal))
        return refusal;

    std::string prefix;
    if (mpost && !mpostPrefix(request, prefix))
        return HttpResponse::text(
            400, std::string("M-POST needs a Man header naming ") + kCimMapping + "; ns=NN");
    auto cimHeader = [&](const char* name) { return request.header(prefix + name); };
    auto hasCimHeader = [&](const char* name) { return request.hasHeader(prefix + name); };

    if (!equalNoCase(trimmed(cimHeader("CIMOperation")), "MethodCall"))
        return cimError(400, "unsupported-operation", "CIMOperation header must be MethodCall");
    if (hasCimHeader("CIMProtocolVersion"))
    {
        const std::string v = trimmed(cimHeader("CIMProtocolVersion"));
        if (v.empty() || v[0] != '1' || (v.size() > 1 && v[1] != '.'))
            return cimError(
                501, "unsupported-protocol-version",
                "CIMProtocolVersion " + v + " is not supported");
    }
    const std::string contentType = request.header("Content-Type");
    if (!contentType.empty() && strncasecmp(contentType.c_str(), "application/xml", 15) != 0 &&
        strncasecmp(contentType.c_str(), "text/xml", 8) != 0)
        return HttpResponse::text(415, "Content-Type must be application/xml or text/xml");
    if (!hasCimHeader("CIMMethod"))
        return cimError(400, "header-mismatch", "CIMMethod header missing");
    if (!hasCimHeader("CIMObject"))
        return cimError(400, "header-mismatch", "CIMObject header missing");

    cimxml::DecodedRequest decoded;
    try
    {
        decoded = cimxml::decodeRequest(request.body.data(), request.body.size());
    }
    catch (const cimxml::ProtocolError& e)
    {
        return cimError(e.httpStatus(), e.cimError(), e.what());
    }
    const cimxml::CimRequest& cim = decoded.request;
    if (!cimxml::cimMethodMatches(cimHeader("CIMMethod"), cim))
        return cimError(
            400, "header-mismatch", "CIMMethod header does not match the method in the body");
    if (!decoded.failed && !cimxml::cimObjectMatches(cimHeader("CIMObject"), cim))
        return cimError(
            400, "header-mismatch", "CIMObject header does not match the object in the body");

    response.messageId = cim.messageId;
    response.operation = cim.operation;
    response.methodName = cim.methodName;
    if (decoded.failed)
        response.setError(decoded.error);
    else
        _executor.execute(cim, who, response);
    if (response.failed && response.error.getCode() != CIM_ERR_NOT_FOUND)
        ServerLog::info(
            who.user + "@" + who.clientAddress + " " + cimxml::toUtf8(cim.methodName) + ": " +
            cimStatusCodeToString(response.error.getCode()) + " " +
            cimxml::toUtf8(response.error.getMessage()));

    HttpResponse out;
    out.status = 200;
    out.body = cimxml::encodeResponse(response, String(_options.hostName.c_str()), cim.nameSpace);
    out.headers.emplace_back("Content-Type", "application/xml; charset=\"utf-8\"");
    if (mpost)
        out.headers.emplace_back("Ext", "");
    out.headers.emplace_back(prefix + "CIMOperation", "MethodResponse");
    return out;
}

}  // namespace http
}  // namespace qel
