#include "HostCIMOMHandleRep.h"

#include "InternalCacheDouble.h"
#include "ProviderHost.h"
#include "RecordingHandlers.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include <ClassRepository.h>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

namespace
{

// The request path as the server hands it to a provider: in the request's
// namespace.
CIMObjectPath inNamespace(const CIMObjectPath& path, const CIMNamespaceName& nameSpace)
{
    CIMObjectPath result(path);
    if (result.getNameSpace().isNull())
    {
        result.setNameSpace(nameSpace);
    }
    return result;
}

CIMObjectPath classPath(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return CIMObjectPath(String(), nameSpace, className);
}

void requireOrder(const HandlerRecord& record, const char* operation)
{
    if (!record.violations().empty())
    {
        throw CIMException(CIM_ERR_FAILED,
            String("provider broke the response order in ") + operation + ": " +
            record.violations()[0].c_str());
    }
}

} // namespace

template <typename P>
P& HostCIMOMHandleRep::_route(const CIMName& className, const char* operation)
{
    CIMProvider* provider = _host.providerFor(className);
    P* routed = dynamic_cast<P*>(provider);
    if (routed == nullptr)
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            String("the provider test host has no provider for ") + operation +
            " on class " + className.getString());
    }
    return *routed;
}

CIMClass HostCIMOMHandleRep::getClass(const OperationContext&,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _host.repository().getClass(nameSpace, className, localOnly,
        includeQualifiers, includeClassOrigin, propertyList);
}

CIMInstance HostCIMOMHandleRep::getInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, Boolean,
    Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMInstanceProvider& provider =
        _route<CIMInstanceProvider>(instanceName.getClassName(), "getInstance");
    RecordingInstanceHandler handler;
    provider.getInstance(context, inNamespace(instanceName, nameSpace),
        includeQualifiers, includeClassOrigin, propertyList, handler);
    requireOrder(handler.record, "getInstance");
    if (handler.instances.size() != 1)
    {
        throw CIMException(CIM_ERR_FAILED, handler.instances.empty()
            ? "Too few objects delivered." : "Too many objects delivered.");
    }
    return handler.instances[0];
}

Array<CIMInstance> HostCIMOMHandleRep::enumerateInstances(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, Boolean, Boolean, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMInstanceProvider& provider =
        _route<CIMInstanceProvider>(className, "enumerateInstances");
    RecordingInstanceHandler handler;
    provider.enumerateInstances(context, classPath(nameSpace, className),
        includeQualifiers, includeClassOrigin, propertyList, handler);
    requireOrder(handler.record, "enumerateInstances");
    Array<CIMInstance> result;
    for (const CIMInstance& instance : handler.instances)
    {
        result.append(instance);
    }
    return result;
}

Array<CIMObjectPath> HostCIMOMHandleRep::enumerateInstanceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    CIMInstanceProvider& provider =
        _route<CIMInstanceProvider>(className, "enumerateInstanceNames");
    RecordingObjectPathHandler handler;
    provider.enumerateInstanceNames(context, classPath(nameSpace, className), handler);
    requireOrder(handler.record, "enumerateInstanceNames");
    Array<CIMObjectPath> result;
    for (const CIMObjectPath& path : handler.paths)
    {
        result.append(path);
    }
    return result;
}

void HostCIMOMHandleRep::modifyInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
    Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    const CIMObjectPath path = inNamespace(modifiedInstance.getPath(), nameSpace);
    CIMInstanceProvider& provider =
        _route<CIMInstanceProvider>(path.getClassName(), "modifyInstance");
    RecordingResponseHandler handler;
    provider.modifyInstance(context, path, modifiedInstance, includeQualifiers,
        propertyList, handler);
    requireOrder(handler.record, "modifyInstance");
}

Array<CIMObject> HostCIMOMHandleRep::associators(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMAssociationProvider& provider =
        _route<CIMAssociationProvider>(assocClass, "associators");
    RecordingObjectHandler handler;
    provider.associators(context, inNamespace(objectName, nameSpace), assocClass,
        resultClass, role, resultRole, includeQualifiers, includeClassOrigin,
        propertyList, handler);
    requireOrder(handler.record, "associators");
    Array<CIMObject> result;
    for (const CIMObject& object : handler.objects)
    {
        result.append(object);
    }
    return result;
}

Array<CIMObjectPath> HostCIMOMHandleRep::associatorNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    CIMAssociationProvider& provider =
        _route<CIMAssociationProvider>(assocClass, "associatorNames");
    RecordingObjectPathHandler handler;
    provider.associatorNames(context, inNamespace(objectName, nameSpace),
        assocClass, resultClass, role, resultRole, handler);
    requireOrder(handler.record, "associatorNames");
    Array<CIMObjectPath> result;
    for (const CIMObjectPath& path : handler.paths)
    {
        result.append(path);
    }
    return result;
}

// For references the association class is the result class, as the server
// hands it to the provider registered for it.
Array<CIMObject> HostCIMOMHandleRep::references(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMAssociationProvider& provider =
        _route<CIMAssociationProvider>(resultClass, "references");
    RecordingObjectHandler handler;
    provider.references(context, inNamespace(objectName, nameSpace), resultClass,
        role, includeQualifiers, includeClassOrigin, propertyList, handler);
    requireOrder(handler.record, "references");
    Array<CIMObject> result;
    for (const CIMObject& object : handler.objects)
    {
        result.append(object);
    }
    return result;
}

Array<CIMObjectPath> HostCIMOMHandleRep::referenceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role)
{
    CIMAssociationProvider& provider =
        _route<CIMAssociationProvider>(resultClass, "referenceNames");
    RecordingObjectPathHandler handler;
    provider.referenceNames(context, inNamespace(objectName, nameSpace),
        resultClass, role, handler);
    requireOrder(handler.record, "referenceNames");
    Array<CIMObjectPath> result;
    for (const CIMObjectPath& path : handler.paths)
    {
        result.append(path);
    }
    return result;
}

CIMValue HostCIMOMHandleRep::invokeMethod(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    if (InternalCacheDouble::addresses(nameSpace, instanceName))
    {
        return InternalCacheDouble::instance().invoke(
            "handle", instanceName, methodName, outParameters);
    }
    CIMMethodProvider& provider =
        _route<CIMMethodProvider>(instanceName.getClassName(), "invokeMethod");
    RecordingMethodHandler handler;
    provider.invokeMethod(context, inNamespace(instanceName, nameSpace), methodName,
        inParameters, handler);
    requireOrder(handler.record, "invokeMethod");
    for (const CIMParamValue& value : handler.outParameters)
    {
        outParameters.append(value);
    }
    return handler.returnValues.empty() ? CIMValue() : handler.returnValues.back();
}

} // namespace qeltest
