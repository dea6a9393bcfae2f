#include "ServerCIMOMHandle.h"

#include "Dispatcher.h"

#include <Pegasus/Common/CIMStatusCode.h>

namespace Pegasus
{

Dispatcher& ServerCIMOMHandleRep::_server() const
{
    Dispatcher* d = _dispatcher.load();
    if (d == nullptr)
        throw CIMException(CIM_ERR_FAILED, "The CIM server has stopped.");
    return *d;
}

CIMClass ServerCIMOMHandleRep::getClass(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _server().getClass(
        context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMClass> ServerCIMOMHandleRep::enumerateClasses(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin)
{
    return _server().enumerateClasses(
        context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
        includeClassOrigin);
}

Array<CIMName> ServerCIMOMHandleRep::enumerateClassNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance)
{
    return _server().enumerateClassNames(context, nameSpace, className, deepInheritance);
}

CIMInstance ServerCIMOMHandleRep::getInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _server().getInstance(
        context, nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMInstance> ServerCIMOMHandleRep::enumerateInstances(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _server().enumerateInstances(
        context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
        includeClassOrigin, propertyList);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::enumerateInstanceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    return _server().enumerateInstanceNames(context, nameSpace, className);
}

CIMObjectPath ServerCIMOMHandleRep::createInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& newInstance)
{
    return _server().createInstance(context, nameSpace, newInstance);
}

void ServerCIMOMHandleRep::modifyInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance,
    Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    _server().modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void ServerCIMOMHandleRep::deleteInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    _server().deleteInstance(context, nameSpace, instanceName);
}

Array<CIMObject> ServerCIMOMHandleRep::associators(
    const OperationContext& context,
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
    return _server().associators(
        context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::associatorNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    return _server().associatorNames(
        context, nameSpace, objectName, assocClass, resultClass, role, resultRole);
}

Array<CIMObject> ServerCIMOMHandleRep::references(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _server().references(
        context, nameSpace, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::referenceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    return _server().referenceNames(context, nameSpace, objectName, resultClass, role);
}

CIMValue ServerCIMOMHandleRep::getProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName)
{
    return _server().getProperty(context, nameSpace, instanceName, propertyName);
}

void ServerCIMOMHandleRep::setProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName,
    const CIMValue& newValue)
{
    _server().setProperty(context, nameSpace, instanceName, propertyName, newValue);
}

CIMValue ServerCIMOMHandleRep::invokeMethod(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    return _server().invokeMethod(
        context, nameSpace, instanceName, methodName, inParameters, outParameters);
}

}  // namespace Pegasus
