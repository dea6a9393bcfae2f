#include "InProcessClientTransport.h"

#include "CoreText.h"
#include "Dispatcher.h"

#include <Pegasus/Common/CIMResponseCollector.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <pwd.h>
#include <unistd.h>

#include <mutex>
#include <vector>

namespace Pegasus
{

namespace
{

const char* const stoppedText = "The local CIM server has stopped.";

}  // namespace

void LocalEndpoint::close()
{
    std::unique_lock<std::mutex> lock(_mutex);
    _open = false;
    _idle.wait(lock, [this] { return _active == 0; });
}

bool LocalEndpoint::isOpen() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _open;
}

LocalEndpoint::Call::Call(LocalEndpoint& endpoint) : _endpoint(endpoint)
{
    std::lock_guard<std::mutex> lock(_endpoint._mutex);
    if (!_endpoint._open)
        throw CannotConnectException(stoppedText);
    ++_endpoint._active;
}

LocalEndpoint::Call::~Call()
{
    std::lock_guard<std::mutex> lock(_endpoint._mutex);
    if (--_endpoint._active == 0)
        _endpoint._idle.notify_all();
}

InProcessClientTransport::InProcessClientTransport(
    std::shared_ptr<LocalEndpoint> endpoint, const String& userName)
    : _endpoint(std::move(endpoint)), _context(Dispatcher::requestContext(userName, String()))
{
}

LocalTransportFactory InProcessClientTransport::factory(std::shared_ptr<LocalEndpoint> endpoint)
{
    return [endpoint](Uint32) -> std::unique_ptr<ClientTransport>
    {
        if (!endpoint->isOpen())
            throw CannotConnectException(stoppedText);
        return std::unique_ptr<ClientTransport>(
            new InProcessClientTransport(endpoint, processUserName()));
    };
}

String InProcessClientTransport::processUserName()
{
    // Providers connect once per identity call, so the user database is read once per
    // effective uid, not per connection; a failed look-up is tried again next time. The name
    // is never destroyed: threads may still connect while the process exits.
    static std::mutex lock;
    static bool known = false;  // REQUIRES: lock held, as for the two below
    static uid_t knownUid = 0;
    static String* const knownName = new String();
    const uid_t uid = geteuid();
    {
        std::lock_guard<std::mutex> hold(lock);
        if (known && knownUid == uid)
            return *knownName;
    }
    struct passwd entry;
    struct passwd* found = nullptr;
    std::vector<char> buffer(16384);
    if (getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return String();
    const String name = safeString(found->pw_name);
    std::lock_guard<std::mutex> hold(lock);
    known = true;
    knownUid = uid;
    *knownName = name;
    return name;
}

// Errors leave as a remote server's would: CIM errors with the status name
// in front of the message, everything else as CIM_ERR_FAILED.
CIMOperationResponse InProcessClientTransport::execute(const CIMOperationRequest& request)
{
    LocalEndpoint::Call underWay(*_endpoint);
    CIMOperationResponse response;
    CIMResponseCollector collector(request.operation, response);
    _endpoint->dispatcher().execute(_context, request, collector);
    if (response.failed)
    {
        const CIMException& e = response.error;
        String description(cimStatusCodeToString(e.getCode()));
        if (e.getMessage().size() != 0)
            description = description + ": " + e.getMessage();
        response.error = CIMException(e.getCode(), description);
    }
    // The provider's objects stay the provider's.
    for (Uint32 i = 0; i < response.outParameters.size(); ++i)
        response.outParameters[i] = response.outParameters[i].clone();
    return response;
}

}  // namespace Pegasus
