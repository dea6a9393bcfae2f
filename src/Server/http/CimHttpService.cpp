#include "CimHttpService.h"

#include "CimHeaders.h"

#include <Server/core/ServerLog.h>
#include <Server/xml/Operations.h>
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/ResponseEncoder.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <boost/beast/http/rfc7230.hpp>

#include <algorithm>
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

// True when the client's TE header lists "trailers": it can take an error after the
// answer began.
bool acceptsTrailers(const HttpRequest& request)
{
    const std::string te = request.header("TE");
    return boost::beast::http::ext_list(te).exists("trailers");
}

// Operations whose answer is one object or none: always small, so they are answered whole,
// which spares them the streamed path's copies and hand-overs.
bool answersAtMostOneObject(cimxml::Operation operation)
{
    switch (cimxml::entryOf(operation).result)
    {
        case cimxml::ResultKind::Nothing:
        case cimxml::ResultKind::MethodResult:
        case cimxml::ResultKind::PropertyValue:
        case cimxml::ResultKind::Class:
        case cimxml::ResultKind::Instance:
        case cimxml::ResultKind::CreatedName:
            return true;
        default:
            return false;
    }
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
    CimHttpServiceOptions options, auth::BasicAuthenticator& authenticator,
    OperationExecutor& executor, Submit tcpWorkers, Submit localWorkers)
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
    HttpRequest request, std::shared_ptr<ConnectionInfo> connection,
    std::function<void(HttpResponse)> done)
{
    AccessRecord access;
    access.arrived = std::chrono::system_clock::now();
    access.started = std::chrono::steady_clock::now();
    access.client = connection->clientAddress;
    HttpResponse refusal;
    if (throttledEarly(request, *connection, refusal))
    {
        describeOutcome(access, refusal, cimxml::CimResponse(), std::chrono::steady_clock::now());
        done(std::move(refusal));
        writeAccessLog(access);
        return;
    }
    // Password hashing and the operation itself are slow: both run on a worker.
    auto job = [this, request = std::move(request), connection, done, access]() mutable
    {
        cimxml::CimResponse result;
        HttpResponse response;
        try
        {
            response = process(request, *connection, result, access, done);
        }
        catch (const std::exception& e)
        {
            ServerLog::error(std::string("request failed unexpectedly: ") + e.what());
            response = HttpResponse::text(500, "internal server error");
        }
        describeOutcome(access, response, result, std::chrono::steady_clock::now());
        const size_t answered =
            response.stream ? response.stream->encodedBytes() : response.body.size();
        if (!response.stream)  // else its head went out when the answer began
            done(std::move(response));
        _heap.ended(answered);
        writeAccessLog(access);
    };
    Submit& workers = connection->transport == Transport::Local ? _localWorkers : _tcpWorkers;
    _heap.began();
    if (!workers(job))
    {
        _heap.ended(0);
        HttpResponse busy = HttpResponse::text(503, "server busy or shutting down");
        busy.close = true;
        describeOutcome(access, busy, cimxml::CimResponse(), std::chrono::steady_clock::now());
        done(std::move(busy));
        writeAccessLog(access);
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
    const HttpRequest& request, ConnectionInfo& connection, HttpResponse& refusal)
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
    const ConnectionInfo& connection, ClientIdentity& who, HttpResponse& refusal)
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
    const HttpRequest& request, ConnectionInfo& connection, ClientIdentity& who,
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
        // A guess is anything but a pair verified shortly before (or just now, for clients
        // that came together with it); guesses are throttled.
        const std::string user = throttleName(authorization);
        std::shared_ptr<void> turn;  // held till the verification below is over
        const bool guess = !_authenticator.remembersOrTakesTurn(authorization, turn);
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
    AccessRecord access;
    return process(request, connection, result, access, nullptr);
}

HttpResponse CimHttpService::process(
    const HttpRequest& request, ConnectionInfo& connection, cimxml::CimResponse& response,
    AccessRecord& access, const ResponseBodyStream::Start& start)
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

    response = cimxml::CimResponse(cim);
    HttpResponse out;
    out.status = 200;
    out.headers.emplace_back("Content-Type", "application/xml; charset=\"utf-8\"");
    if (request.method == "M-POST")
        out.headers.emplace_back("Ext", "");
    out.headers.emplace_back(prefix + "CIMOperation", "MethodResponse");
    const String host(_options.hostName.c_str());
    if (decoded.failed || answersAtMostOneObject(cim.operation))
    {
        if (decoded.failed)
            response.setError(decoded.error);
        else
            _executor.execute(cim, who, response);
        out.body = cimxml::encodeResponse(response, host, cim.nameSpace);
        return out;
    }
    auto stream = std::make_shared<ResponseBodyStream>(
        out, prefix, acceptsTrailers(request), _options.stream, start);
    cimxml::ResponseEncoder encoder(
        cim, host, *stream, std::min(_options.stream.pieceBytes, _options.stream.startBytes));
    _executor.execute(cim, who, encoder);
    if (encoder.failed())
        response.setError(encoder.error());
    if (stream->started())
    {
        out.stream = std::move(stream);
        return out;
    }
    out.body = std::move(stream->wholeBody());
    if (out.body.empty())
        return HttpResponse::text(500, "the answer could not be encoded");
    return out;
}

}  // namespace http
}  // namespace qel
