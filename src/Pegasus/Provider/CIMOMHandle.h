// CIMOMHandle: a provider's way back into the CIM server it runs in. A
// shared handle: copies use the same server connection. The hosting server
// builds it around its CIMOMHandleRep (see CIMOMHandleRep.h); a
// default-constructed handle is attached to nothing and every call throws
// CIMException(CIM_ERR_FAILED, "CIMOMHandle is not attached to a CIM server").
// Errors of the server come back as CIMException.
#ifndef Pegasus_CIMOMHandle_h
#define Pegasus_CIMOMHandle_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class CIMOMHandleRep;

class PEGASUS_PROVIDER_LINKAGE CIMOMHandle
{
public:
    CIMOMHandle();
    CIMOMHandle(const CIMOMHandle& handle);
    // Project extension: a handle served by the given host implementation.
    explicit CIMOMHandle(std::shared_ptr<CIMOMHandleRep> rep);
    ~CIMOMHandle();
    CIMOMHandle& operator=(const CIMOMHandle& handle);

    CIMClass getClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMClass> enumerateClasses(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin);

    Array<CIMName> enumerateClassNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance);

    void createClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMClass& newClass);

    void modifyClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMClass& modifiedClass);

    void deleteClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className);

    CIMInstance getInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMInstance> enumerateInstances(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className);

    CIMObjectPath createInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance);

    void modifyInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList);

    void deleteInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName);

    Array<CIMObject> execQuery(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const String& queryLanguage, const String& query);

    Array<CIMObject> associators(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> associatorNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole);

    Array<CIMObject> references(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> referenceNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role);

    CIMValue getProperty(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName);

    void setProperty(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue);

    CIMValue invokeMethod(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters);

    void disallowProviderUnload();
    void allowProviderUnload();
    OperationContext getResponseContext();

private:
    CIMOMHandleRep& _host() const;

    std::shared_ptr<CIMOMHandleRep> _rep;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMOMHandle_h */
