// The CIMOMHandle the server gives its providers: every call goes back
// through the dispatcher, on the calling thread, with the context the
// provider passes (its request's context, so the caller's identity travels
// with it; a fresh context runs as the empty user, as in OpenPegasus).
// Nothing is locked across the call, so providers may nest calls freely.
#ifndef QEL_Server_ServerCIMOMHandle_h
#define QEL_Server_ServerCIMOMHandle_h

#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

#include <atomic>

namespace Pegasus
{

class Dispatcher;

class ServerCIMOMHandleRep : public CIMOMHandleRep
{
public:
    explicit ServerCIMOMHandleRep(Dispatcher& dispatcher) : _dispatcher(&dispatcher) {}

    // After the server has stopped, a handle a provider kept against the
    // rules fails with CIM_ERR_FAILED instead of reaching a dead server.
    void detach() { _dispatcher.store(nullptr); }

    CIMClass getClass(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;

    Array<CIMClass> enumerateClasses(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin) override;

    Array<CIMName> enumerateClassNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance) override;

    CIMInstance getInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;

    Array<CIMInstance> enumerateInstances(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;

    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className) override;

    CIMObjectPath createInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance) override;

    void modifyInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance,
        Boolean includeQualifiers,
        const CIMPropertyList& propertyList) override;

    void deleteInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName) override;

    Array<CIMObject> associators(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass,
        const CIMName& resultClass,
        const String& role,
        const String& resultRole,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;

    Array<CIMObjectPath> associatorNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass,
        const CIMName& resultClass,
        const String& role,
        const String& resultRole) override;

    Array<CIMObject> references(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass,
        const String& role,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;

    Array<CIMObjectPath> referenceNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass,
        const String& role) override;

    // As the dispatcher's getProperty and setProperty.
    CIMValue getProperty(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& propertyName) override;

    void setProperty(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& propertyName,
        const CIMValue& newValue) override;

    CIMValue invokeMethod(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& methodName,
        const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) override;

private:
    Dispatcher& _server() const;

    std::atomic<Dispatcher*> _dispatcher;
};

}  // namespace Pegasus

#endif
