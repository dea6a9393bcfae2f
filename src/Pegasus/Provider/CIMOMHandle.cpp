#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

PEGASUS_NAMESPACE_BEGIN

CIMOMHandle::CIMOMHandle() = default;
CIMOMHandle::CIMOMHandle(const CIMOMHandle& handle) = default;
CIMOMHandle::~CIMOMHandle() = default;
CIMOMHandle& CIMOMHandle::operator=(const CIMOMHandle& handle) = default;

CIMOMHandle::CIMOMHandle(std::shared_ptr<CIMOMHandleRep> rep) : _rep(std::move(rep))
{
}

CIMOMHandleRep& CIMOMHandle::_host() const
{
    if (!_rep)
    {
        throw CIMException(CIM_ERR_FAILED, "CIMOMHandle is not attached to a CIM server");
    }
    return *_rep;
}

CIMClass CIMOMHandle::getClass(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _host().getClass(
        context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMClass> CIMOMHandle::enumerateClasses(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin)
{
    return _host().enumerateClasses(
        context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
        includeClassOrigin);
}

Array<CIMName> CIMOMHandle::enumerateClassNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance)
{
    return _host().enumerateClassNames(context, nameSpace, className, deepInheritance);
}

void CIMOMHandle::createClass(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMClass& newClass)
{
    _host().createClass(context, nameSpace, newClass);
}

void CIMOMHandle::modifyClass(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMClass& modifiedClass)
{
    _host().modifyClass(context, nameSpace, modifiedClass);
}

void CIMOMHandle::deleteClass(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    _host().deleteClass(context, nameSpace, className);
}

CIMInstance CIMOMHandle::getInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _host().getInstance(
        context, nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMInstance> CIMOMHandle::enumerateInstances(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _host().enumerateInstances(
        context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
        includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::enumerateInstanceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    return _host().enumerateInstanceNames(context, nameSpace, className);
}

CIMObjectPath CIMOMHandle::createInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& newInstance)
{
    return _host().createInstance(context, nameSpace, newInstance);
}

void CIMOMHandle::modifyInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance,
    Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    _host().modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void CIMOMHandle::deleteInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    _host().deleteInstance(context, nameSpace, instanceName);
}

Array<CIMObject> CIMOMHandle::execQuery(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const String& queryLanguage,
    const String& query)
{
    return _host().execQuery(context, nameSpace, queryLanguage, query);
}

Array<CIMObject> CIMOMHandle::associators(
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
    return _host().associators(
        context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::associatorNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    return _host().associatorNames(
        context, nameSpace, objectName, assocClass, resultClass, role, resultRole);
}

Array<CIMObject> CIMOMHandle::references(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _host().references(
        context, nameSpace, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
        propertyList);
}

Array<CIMObjectPath> CIMOMHandle::referenceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    return _host().referenceNames(context, nameSpace, objectName, resultClass, role);
}

CIMValue CIMOMHandle::getProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName)
{
    return _host().getProperty(context, nameSpace, instanceName, propertyName);
}

void CIMOMHandle::setProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName,
    const CIMValue& newValue)
{
    _host().setProperty(context, nameSpace, instanceName, propertyName, newValue);
}

CIMValue CIMOMHandle::invokeMethod(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    return _host().invokeMethod(
        context, nameSpace, instanceName, methodName, inParameters, outParameters);
}

void CIMOMHandle::disallowProviderUnload()
{
    _host().disallowProviderUnload();
}

void CIMOMHandle::allowProviderUnload()
{
    _host().allowProviderUnload();
}

OperationContext CIMOMHandle::getResponseContext()
{
    return _host().getResponseContext();
}

PEGASUS_NAMESPACE_END
