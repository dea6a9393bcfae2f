#include "InProcessClientTransport.h"

#include "CoreText.h"
#include "Dispatcher.h"
#include "ProviderErrors.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <pwd.h>
#include <unistd.h>

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
    std::shared_ptr<LocalEndpoint> endpoint,
    const String& userName)
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
    struct passwd entry;
    struct passwd* found = nullptr;
    std::vector<char> buffer(16384);
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr)
        return String();
    return safeString(found->pw_name);
}

// Errors leave as a remote server's would: CIM errors with the status name
// in front of the message, everything else as CIM_ERR_FAILED.
Dispatcher& InProcessClientTransport::server() const
{
    return _endpoint->dispatcher();
}

template <class Call>
auto InProcessClientTransport::_run(Call&& call) -> decltype(call())
{
    LocalEndpoint::Call underWay(*_endpoint);
    try
    {
        return call();
    }
    catch (...)
    {
        CIMException e = currentExceptionAsCIMException();
        String description(cimStatusCodeToString(e.getCode()));
        if (e.getMessage().size() != 0)
            description = description + ": " + e.getMessage();
        throw CIMException(e.getCode(), description);
    }
}

CIMClass InProcessClientTransport::getClass(
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _run(
        [&]
        {
            return server().getClass(
                _context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
                propertyList);
        });
}

CIMInstance InProcessClientTransport::getInstance(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _run(
        [&]
        {
            return server().getInstance(
                _context, nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin,
                propertyList);
        });
}

Array<CIMInstance> InProcessClientTransport::enumerateInstances(
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _run(
        [&]
        {
            return server().enumerateInstances(
                _context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
                includeClassOrigin, propertyList);
        });
}

Array<CIMObjectPath> InProcessClientTransport::enumerateInstanceNames(
    const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    return _run([&] { return server().enumerateInstanceNames(_context, nameSpace, className); });
}

CIMObjectPath InProcessClientTransport::createInstance(
    const CIMNamespaceName& nameSpace,
    const CIMInstance& newInstance)
{
    return _run([&] { return server().createInstance(_context, nameSpace, newInstance); });
}

void InProcessClientTransport::modifyInstance(
    const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance,
    Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    _run(
        [&]
        {
            server().modifyInstance(
                _context, nameSpace, modifiedInstance, includeQualifiers, propertyList);
        });
}

void InProcessClientTransport::deleteInstance(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    _run([&] { server().deleteInstance(_context, nameSpace, instanceName); });
}

Array<CIMObject> InProcessClientTransport::associators(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _run(
        [&]
        {
            return server().associators(
                _context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
                includeQualifiers, includeClassOrigin, propertyList);
        });
}

Array<CIMObjectPath> InProcessClientTransport::associatorNames(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    return _run(
        [&]
        {
            return server().associatorNames(
                _context, nameSpace, objectName, assocClass, resultClass, role, resultRole);
        });
}

Array<CIMObject> InProcessClientTransport::references(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _run(
        [&]
        {
            return server().references(
                _context, nameSpace, objectName, resultClass, role, includeQualifiers,
                includeClassOrigin, propertyList);
        });
}

Array<CIMObjectPath> InProcessClientTransport::referenceNames(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    return _run(
        [&]
        { return server().referenceNames(_context, nameSpace, objectName, resultClass, role); });
}

CIMValue InProcessClientTransport::invokeMethod(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    return _run(
        [&]
        {
            Array<CIMParamValue> out;
            CIMValue result = server().invokeMethod(
                _context, nameSpace, instanceName, methodName, inParameters, out);
            // The provider's objects stay the provider's.
            Array<CIMParamValue> copies;
            for (Uint32 i = 0; i < out.size(); ++i)
                copies.append(out[i].clone());
            outParameters = copies;
            return result;
        });
}

}  // namespace Pegasus
