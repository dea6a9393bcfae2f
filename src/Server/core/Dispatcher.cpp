#include "Dispatcher.h"

#include "CoreText.h"
#include "ProviderErrors.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <unistd.h>

namespace Pegasus
{

namespace
{

// This machine's name as OpenPegasus puts it into paths; a name the object
// path rules would refuse falls back to "localhost".
String machineHostName()
{
    char buffer[256] = {0};
    if (gethostname(buffer, sizeof(buffer) - 1) != 0 || buffer[0] == '\0')
        return String("localhost");
    try
    {
        String name = safeString(buffer);
        CIMObjectPath probe;
        probe.setHost(name);
        return name;
    }
    catch (...)
    {
        return String("localhost");
    }
}

// The host name providers will see; one the object path rules refuse
// would make every request fail, so it stops the start instead.
String checkedHostName(const String& configured)
{
    if (configured.size() == 0)
        return machineHostName();
    try
    {
        CIMObjectPath probe;
        probe.setHost(configured);
    }
    catch (const Exception&)
    {
        throw Exception("The host name \"" + configured + "\" is not valid in object paths.");
    }
    return configured;
}

}  // namespace

Dispatcher::Dispatcher(
    const ClassRepository& repository, const ProviderRegistry& registry, ProviderManager& providers,
    EnumerationContexts& enumerations, DispatcherOptions options)
    : _repository(repository),
      _registry(registry),
      _providers(providers),
      _enumerations(enumerations),
      _associations(repository),
      _hostName(checkedHostName(options.hostName)),
      _threshold(options.responseObjectThreshold)
{
}

OperationContext Dispatcher::requestContext(const String& userName, const String& clientAddress)
{
    OperationContext context;
    context.insert(IdentityContainer(userName, clientAddress));
    return context;
}

void Dispatcher::execute(
    const OperationContext& context, const CIMOperationRequest& request, CIMResponseSink& sink)
{
    Answer answer{sink, CIMValue(), Array<CIMParamValue>()};
    try
    {
        typedef CIMOperationType Op;
        switch (request.operation)
        {
            case Op::GetClass:
                _getClass(context, request, answer);
                break;
            case Op::EnumerateClasses:
                _enumerateClasses(context, request, answer);
                break;
            case Op::EnumerateClassNames:
                _enumerateClassNames(context, request, answer);
                break;
            case Op::GetInstance:
                _getInstance(context, request, answer);
                break;
            case Op::EnumerateInstances:
                _enumerateInstances(context, request, answer);
                break;
            case Op::EnumerateInstanceNames:
                _enumerateInstanceNames(context, request, answer);
                break;
            case Op::CreateInstance:
                _createInstance(context, request, answer);
                break;
            case Op::ModifyInstance:
                _modifyInstance(context, request, answer);
                break;
            case Op::DeleteInstance:
                _deleteInstance(context, request, answer);
                break;
            case Op::GetProperty:
                _getProperty(context, request, answer);
                break;
            case Op::SetProperty:
                _setProperty(context, request, answer);
                break;
            case Op::Associators:
                _associators(context, request, answer);
                break;
            case Op::AssociatorNames:
                _associatorNames(context, request, answer);
                break;
            case Op::References:
                _references(context, request, answer);
                break;
            case Op::ReferenceNames:
                _referenceNames(context, request, answer);
                break;
            case Op::InvokeMethod:
                _invokeMethod(context, request, answer);
                break;
            case Op::OpenEnumerateInstances:
            case Op::OpenEnumerateInstancePaths:
            case Op::OpenReferenceInstances:
            case Op::OpenReferenceInstancePaths:
            case Op::OpenAssociatorInstances:
            case Op::OpenAssociatorInstancePaths:
                _openEnumeration(context, request, answer);
                break;
            case Op::PullInstancesWithPath:
            case Op::PullInstancePaths:
                _pull(context, request, answer);
                break;
            case Op::CloseEnumeration:
                _closeEnumeration(context, request, answer);
                break;
            case Op::EnumerationCount:
                _enumerationCount(context, request, answer);
                break;
            case Op::CreateClass:
            case Op::ModifyClass:
            case Op::DeleteClass:
            case Op::ExecQuery:
                throw CIMException(
                    CIM_ERR_NOT_SUPPORTED, String(cimOperationName(request.operation)) +
                                               " is not supported by this server");
        }
    }
    catch (...)
    {
        sink.fail(currentExceptionAsCIMException());
        return;
    }
    sink.complete(answer.returnValue, answer.outParameters);
}

// ---------------------------------------------------------------------------
// Common checks and conversions

void Dispatcher::_checkNamespace(const CIMNamespaceName& nameSpace) const
{
    if (nameSpace.isNull() || !_repository.namespaceExists(nameSpace))
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, nameSpace.getString());
}

void Dispatcher::_checkInstanceClass(
    const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    _checkNamespace(nameSpace);
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no class.");
    if (!_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_INVALID_CLASS, className.getString());
}

CIMClass
Dispatcher::_instanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    _checkInstanceClass(nameSpace, className);
    return _repository.getClass(nameSpace, className, false, false, false, CIMPropertyList());
}

OperationContext Dispatcher::_providerContext(const OperationContext& context) const
{
    // Providers always find an identity, as OpenPegasus's handle makes sure;
    // a nested call made with a fresh context runs as the empty user.
    OperationContext providerContext(context);
    if (!providerContext.contains(IdentityContainer::NAME))
        providerContext.insert(IdentityContainer(String()));
    return providerContext;
}

CIMObjectPath
Dispatcher::_providerPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const
{
    CIMObjectPath p(path);
    p.setHost(_hostName);
    p.setNameSpace(nameSpace);
    return p;
}

CIMObjectPath
Dispatcher::_completedPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const
{
    CIMObjectPath p(path);
    if (p.getHost().size() == 0)
        p.setHost(_hostName);
    if (p.getNameSpace().isNull())
        p.setNameSpace(nameSpace);
    return p;
}

}  // namespace Pegasus
