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

// Every operation: its request built, run by the host, its answer unpacked
// (CIMOperationMessage.h), as CIMClient does it.
namespace
{
CIMOperationResponse
run(CIMOMHandleRep& host, const OperationContext& context, const CIMOperationRequest& request)
{
    CIMOperationResponse response = host.execute(context, request);
    response.checked();
    return response;
}
}  // namespace

CIMClass CIMOMHandle::getClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return run(_host(), context,
               CIMOperationRequest::getClass(
                   nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
                   propertyList))
        .cimClass;
}

Array<CIMClass> CIMOMHandle::enumerateClasses(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin)
{
    return run(_host(), context,
               CIMOperationRequest::enumerateClasses(
                   nameSpace, className, deepInheritance, localOnly, includeQualifiers,
                   includeClassOrigin))
        .classes;
}

Array<CIMName> CIMOMHandle::enumerateClassNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance)
{
    return run(_host(), context,
               CIMOperationRequest::enumerateClassNames(nameSpace, className, deepInheritance))
        .classNames;
}

void CIMOMHandle::createClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& newClass)
{
    run(_host(), context, CIMOperationRequest::createClass(nameSpace, newClass));
}

void CIMOMHandle::modifyClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMClass& modifiedClass)
{
    run(_host(), context, CIMOperationRequest::modifyClass(nameSpace, modifiedClass));
}

void CIMOMHandle::deleteClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    run(_host(), context, CIMOperationRequest::deleteClass(nameSpace, className));
}

CIMInstance CIMOMHandle::getInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return run(_host(), context,
               CIMOperationRequest::getInstance(
                   nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin,
                   propertyList))
        .instance;
}

Array<CIMInstance> CIMOMHandle::enumerateInstances(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return run(_host(), context,
               CIMOperationRequest::enumerateInstances(
                   nameSpace, className, deepInheritance, localOnly, includeQualifiers,
                   includeClassOrigin, propertyList))
        .instances;
}

Array<CIMObjectPath> CIMOMHandle::enumerateInstanceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return run(_host(), context, CIMOperationRequest::enumerateInstanceNames(nameSpace, className))
        .paths;
}

CIMObjectPath CIMOMHandle::createInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& newInstance)
{
    return run(_host(), context, CIMOperationRequest::createInstance(nameSpace, newInstance))
        .createdName();
}

void CIMOMHandle::modifyInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    run(_host(), context,
        CIMOperationRequest::modifyInstance(
            nameSpace, modifiedInstance, includeQualifiers, propertyList));
}

void CIMOMHandle::deleteInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    run(_host(), context, CIMOperationRequest::deleteInstance(nameSpace, instanceName));
}

Array<CIMObject> CIMOMHandle::execQuery(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const String& queryLanguage,
    const String& query)
{
    return run(_host(), context, CIMOperationRequest::execQuery(nameSpace, queryLanguage, query))
        .objects;
}

Array<CIMObject> CIMOMHandle::associators(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return run(_host(), context,
               CIMOperationRequest::associators(
                   nameSpace, objectName, assocClass, resultClass, role, resultRole,
                   includeQualifiers, includeClassOrigin, propertyList))
        .objects;
}

Array<CIMObjectPath> CIMOMHandle::associatorNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole)
{
    return run(_host(), context,
               CIMOperationRequest::associatorNames(
                   nameSpace, objectName, assocClass, resultClass, role, resultRole))
        .paths;
}

Array<CIMObject> CIMOMHandle::references(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return run(_host(), context,
               CIMOperationRequest::references(
                   nameSpace, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
                   propertyList))
        .objects;
}

Array<CIMObjectPath> CIMOMHandle::referenceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role)
{
    return run(_host(), context,
               CIMOperationRequest::referenceNames(nameSpace, objectName, resultClass, role))
        .paths;
}

CIMValue CIMOMHandle::getProperty(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    return run(_host(), context,
               CIMOperationRequest::getProperty(nameSpace, instanceName, propertyName))
        .value;
}

void CIMOMHandle::setProperty(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue)
{
    run(_host(), context,
        CIMOperationRequest::setProperty(nameSpace, instanceName, propertyName, newValue));
}

CIMValue CIMOMHandle::invokeMethod(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters)
{
    return run(_host(), context,
               CIMOperationRequest::invokeMethod(nameSpace, instanceName, methodName, inParameters))
        .methodResult(outParameters);
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
