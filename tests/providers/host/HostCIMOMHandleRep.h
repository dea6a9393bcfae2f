// The CIMOMHandle behind every provider the test host starts: class
// definitions from the host's repository, instance, method and association
// requests routed to the provider the host has for the class (the association
// class for associators and references), the internal cache methods answered
// by the host's stand-in. A routed request runs on the calling thread with
// recording handlers; a provider that breaks the processing -> deliver* ->
// complete order fails the call with CIM_ERR_FAILED.
#ifndef QEL_TESTS_HostCIMOMHandleRep_h
#define QEL_TESTS_HostCIMOMHandleRep_h

#include <Pegasus/Provider/CIMOMHandleRep.h>

namespace qeltest
{

class ProviderHost;

class HostCIMOMHandleRep : public Pegasus::CIMOMHandleRep
{
public:
    explicit HostCIMOMHandleRep(ProviderHost& host) : _host(host) {}

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;

    void modifyInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& modifiedInstance,
        Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole) override;

    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role) override;

    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& methodName,
        const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

private:
    // The provider routed for className, as interface P; CIM_ERR_NOT_SUPPORTED
    // when there is none or it lacks the interface.
    template <typename P>
    P& _route(const Pegasus::CIMName& className, const char* operation);

    ProviderHost& _host;
};

} // namespace qeltest

#endif
