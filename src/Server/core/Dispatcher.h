// Executes CIM operations in process: checks the request against the class
// repository, chooses the registered providers, calls them with the
// request's OperationContext and a checking response handler, and returns
// what they deliver, filtered as a CIMOM filters it. Every failure leaves as
// a CIMException with the code a client expects:
//   unknown namespace                    CIM_ERR_INVALID_NAMESPACE
//   unknown class (instance operations)  CIM_ERR_INVALID_CLASS
//   unknown class (GetClass)             CIM_ERR_NOT_FOUND
//   unknown class (InvokeMethod)         CIM_ERR_NOT_FOUND
//   unknown class (association object)   CIM_ERR_INVALID_PARAMETER
//   unknown property                     CIM_ERR_NO_SUCH_PROPERTY
//   unknown method                       CIM_ERR_METHOD_NOT_FOUND
//   no provider for the operation        CIM_ERR_NOT_SUPPORTED
//                                        (InvokeMethod: CIM_ERR_METHOD_NOT_AVAILABLE;
//                                        associations of an object no served
//                                        association references: an empty answer)
//   provider's CIMException              its code and message
//   provider's other exceptions          CIM_ERR_FAILED with their text
//
// Calls are synchronous and run on the calling thread; any number may run
// at once, and a provider may call back into the dispatcher (through its
// CIMOMHandle or a local client connection) from inside a call.
#ifndef QEL_Server_Dispatcher_h
#define QEL_Server_Dispatcher_h

#include "AssociationSchema.h"
#include "ServerResponseHandlers.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>

#include <vector>

namespace Pegasus
{

class ClassRepository;
class ProviderManager;
class ProviderRegistry;
struct ProviderId;

struct DispatcherOptions
{
    // Host name put into the object paths handed to providers (OpenPegasus
    // gives them the server's host name); empty: this machine's name. One
    // that is not valid in an object path makes the constructor throw.
    String hostName;
    // Delivered objects kept back before they leave in one batch.
    Uint32 responseObjectThreshold = defaultResponseObjectThreshold;
};

class Dispatcher
{
public:
    Dispatcher(
        const ClassRepository& repository,
        const ProviderRegistry& registry,
        ProviderManager& providers,
        DispatcherOptions options = DispatcherOptions());

    // The context of a client request: who (the authenticated user) and
    // from where (the client's address, "" when unknown).
    static OperationContext requestContext(const String& userName, const String& clientAddress);

    const String& hostName() const { return _hostName; }
    const ClassRepository& repository() const { return _repository; }

    // Class operations: answered from the repository.
    CIMClass getClass(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean localOnly = true,
        Boolean includeQualifiers = true,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMName> enumerateClassNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className = CIMName(),
        Boolean deepInheritance = false);

    Array<CIMClass> enumerateClasses(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className = CIMName(),
        Boolean deepInheritance = false,
        Boolean localOnly = true,
        Boolean includeQualifiers = true,
        Boolean includeClassOrigin = false);

    // Instance operations. localOnly is accepted and not honoured for
    // instances (deprecated; OpenPegasus ignores it too).
    CIMInstance getInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        Boolean localOnly = true,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    // The providers of the class and of every subclass are asked. With
    // deepInheritance false and no property list, only the properties of
    // the requested class are returned.
    Array<CIMInstance> enumerateInstances(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance = true,
        Boolean localOnly = true,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMName& className);

    // The instance's properties must be declared by its class
    // (CIM_ERR_NO_SUCH_PROPERTY) with the declared type
    // (CIM_ERR_TYPE_MISMATCH); null values take the declared type.
    CIMObjectPath createInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance);

    // As createInstance; names in a non-null propertyList must be
    // properties of the class (CIM_ERR_NO_SUCH_PROPERTY).
    void modifyInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance,
        Boolean includeQualifiers = true,
        const CIMPropertyList& propertyList = CIMPropertyList());

    void deleteInstance(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName);

    // Property operations, answered by the instance provider as OpenPegasus
    // answers them. getProperty: the value from a getInstance whose property
    // list names only that property; CIM_ERR_NO_SUCH_PROPERTY when the class
    // declares no such property or the provider leaves it out.
    CIMValue getProperty(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& propertyName);

    // A modifyInstance of an instance that carries only that property, with
    // a property list naming only it. A string value of a property declared
    // otherwise is text read as the declared type (CIM-XML sends NewValue
    // without one; malformed text: CIM_ERR_INVALID_PARAMETER); anything
    // else is checked as modifyInstance checks it.
    void setProperty(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& propertyName,
        const CIMValue& newValue);

    // Association operations. An objectName with key bindings is an
    // instance request, answered by the association providers registered
    // for the association classes that can reference the object's class
    // (none, or filters that leave none of them: an empty answer);
    // one without keys is a class request, answered from the repository.
    Array<CIMObject> associators(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(),
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY,
        const String& resultRole = String::EMPTY,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> associatorNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(),
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY,
        const String& resultRole = String::EMPTY);

    Array<CIMObject> references(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> referenceNames(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY);

    // Extrinsic method of the class's method provider. Input parameters
    // must be declared by the method (CIM_ERR_INVALID_PARAMETER); untyped
    // ones (CIM-XML PARAMVALUEs without PARAMTYPE) are converted to the
    // declared type (malformed text: CIM_ERR_INVALID_PARAMETER), typed ones
    // must have it (CIM_ERR_TYPE_MISMATCH).
    CIMValue invokeMethod(
        const OperationContext& context,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& methodName,
        const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);

private:
    struct InstanceTarget
    {
        CIMName className;
        const ProviderId* provider;
    };
    struct AssociationTarget
    {
        CIMName assocClass;
        const ProviderId* provider;
    };

    void _checkNamespace(const CIMNamespaceName& nameSpace) const;
    // The checks of an instance request's namespace and class; _instanceClass also
    // fetches the class, which most requests do not need.
    void _checkInstanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    CIMClass _instanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    void _checkAssociationRequest(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass,
        const CIMName& resultClass,
        const String& role,
        const String& resultRole) const;
    // The class and its subclasses that have an instance provider;
    // CIM_ERR_NOT_SUPPORTED when none has.
    std::vector<InstanceTarget>
    _instanceTargets(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    std::vector<AssociationTarget> _associationTargets(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& classFilter,
        const String& role) const;

    OperationContext _providerContext(const OperationContext& context) const;
    CIMObjectPath _providerPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const;
    CIMObjectPath
    _completedPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const;
    CIMInstance
    _checkedInstance(const CIMNamespaceName& nameSpace, const CIMInstance& instance) const;
    Array<CIMParamValue> _typedParameters(
        const CIMClass& cimClass,
        const CIMName& methodName,
        const Array<CIMParamValue>& inParameters) const;
    // Copies of a provider's association results, filtered, with host and
    // namespace filled in where the provider left them out.
    void _appendObjects(
        Array<CIMObject>& result,
        const Array<CIMObject>& delivered,
        const CIMNamespaceName& nameSpace,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) const;
    Array<CIMObject> _classObjects(
        const CIMNamespaceName& nameSpace,
        const std::vector<CIMName>& classNames,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) const;
    Array<CIMObjectPath>
    _classPaths(const CIMNamespaceName& nameSpace, const std::vector<CIMName>& classNames) const;

    // Runs one provider operation through interface I; see Dispatcher.cpp.
    template <class I, class Call>
    void _call(const ProviderId& provider, const HandlerProtocol& protocol, Call&& call);

    const ClassRepository& _repository;
    const ProviderRegistry& _registry;
    ProviderManager& _providers;
    AssociationSchema _associations;
    String _hostName;
    Uint32 _threshold;
};

}  // namespace Pegasus

#endif
