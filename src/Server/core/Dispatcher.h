// Executes CIM operations in process: checks the request against the class
// repository, chooses the registered providers, calls them with the
// request's OperationContext and a checking response handler, and hands on
// what they deliver, filtered as a CIMOM filters it. Every failure ends the
// answer with a CIMException with the code a client expects:
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
//   class changes, queries               CIM_ERR_NOT_SUPPORTED
//   provider's CIMException              its code and message
//   provider's other exceptions          CIM_ERR_FAILED with their text
//
// One entry point, execute(), runs any request; the answer leaves through a
// CIMResponseSink (Pegasus/Common/CIMResponseSink.h), object by object, then
// its end. The pulled enumerations keep their state in EnumerationContexts. Calls are synchronous and run on the calling thread; any number
// may run at once, and a provider may call back into the dispatcher (through
// its CIMOMHandle or a local client connection) from inside a call.
#ifndef QEL_Server_Dispatcher_h
#define QEL_Server_Dispatcher_h

#include "AssociationSchema.h"
#include "ServerResponseHandlers.h"

#include <Pegasus/Common/CIMOperationMessage.h>
#include <Pegasus/Common/CIMResponseSink.h>
#include <Pegasus/Common/OperationContext.h>

#include <memory>
#include <vector>

namespace Pegasus
{

class ClassRepository;
class EnumerationContext;
class EnumerationContexts;
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
        const ClassRepository& repository, const ProviderRegistry& registry,
        ProviderManager& providers, EnumerationContexts& enumerations,
        DispatcherOptions options = DispatcherOptions());

    // The context of a client request: who (the authenticated user) and
    // from where (the client's address, "" when unknown).
    static OperationContext requestContext(const String& userName, const String& clientAddress);

    const String& hostName() const { return _hostName; }
    const ClassRepository& repository() const { return _repository; }

    // Runs `request` for the caller `context` names and writes its answer
    // into `sink`, ending it with complete() or fail(); throws nothing.
    // What each operation answers:
    //  - class operations, from the repository;
    //  - instance operations, from the instance providers. localOnly is
    //    accepted and not honoured (deprecated; OpenPegasus ignores it too).
    //    Enumerations ask the providers of the class and of every subclass;
    //    with deepInheritance false and no property list, only the
    //    properties of the requested class are returned. Created and
    //    modified instances must carry properties the class declares
    //    (CIM_ERR_NO_SUCH_PROPERTY) with the declared types
    //    (CIM_ERR_TYPE_MISMATCH; null values take the declared type), and a
    //    modification's property list names properties of the class;
    //  - GetProperty, as OpenPegasus answers it: the value from a
    //    getInstance whose property list names only that property
    //    (CIM_ERR_NO_SUCH_PROPERTY when the class declares no such property
    //    or the provider leaves it out). SetProperty: a modifyInstance of an
    //    instance carrying only that property, with a property list naming
    //    only it; a string value of a property declared otherwise is text
    //    read as the declared type (CIM-XML sends NewValue without one;
    //    malformed text: CIM_ERR_INVALID_PARAMETER);
    //  - association operations: an object name with key bindings is an
    //    instance request, answered by the association providers registered
    //    for the association classes that can reference the object's class
    //    (none, or filters that leave none of them: an empty answer);
    //    one without keys is a class request, answered from the repository;
    //  - InvokeMethod, by the class's method provider. Input parameters must
    //    be declared by the method (CIM_ERR_INVALID_PARAMETER); untyped ones
    //    (CIM-XML PARAMVALUEs without PARAMTYPE) are converted to the
    //    declared type (malformed text: CIM_ERR_INVALID_PARAMETER), typed
    //    ones must have it (CIM_ERR_TYPE_MISMATCH);
    //  - the pulled enumerations (DispatcherPull.cpp): an open checks its
    //    parameters and its target as the operation it pages would, then runs
    //    that operation (EnumerateInstances, EnumerateInstanceNames,
    //    References, ReferenceNames, Associators, AssociatorNames) on a worker
    //    into a new enumeration context, and answers with the first
    //    MaxObjectCount objects; pulls answer the next ones. Every open and
    //    pull answers EndOfSequence and EnumerationContext as output
    //    parameters; EnumerationCount answers what is left once the
    //    enumeration is complete, NULL before.
    void execute(
        const OperationContext& context, const CIMOperationRequest& request, CIMResponseSink& sink);

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
    // The answer under way: where its objects go, and what its end carries.
    struct Answer
    {
        CIMResponseSink& sink;
        CIMValue returnValue;
        Array<CIMParamValue> outParameters;
    };

    // One per operation; the switch of execute() picks it.
    void _getClass(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _enumerateClasses(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _enumerateClassNames(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _getInstance(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _enumerateInstances(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _enumerateInstanceNames(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _createInstance(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _modifyInstance(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _deleteInstance(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _getProperty(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _setProperty(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _associators(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _associatorNames(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _references(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _referenceNames(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _invokeMethod(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _openEnumeration(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _pull(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _closeEnumeration(const OperationContext&, const CIMOperationRequest&, Answer&);
    void _enumerationCount(const OperationContext&, const CIMOperationRequest&, Answer&);

    // The checks the enumeration `request` (EnumerateInstances, ..., AssociatorNames)
    // makes before it asks a provider; throws what it would fail with.
    void _checkEnumeration(const CIMOperationRequest& request) const;
    // The next page of `context`, held by this operation, into the answer; lets go of
    // the context whatever happens.
    void _answerPage(
        const std::shared_ptr<EnumerationContext>& context, Uint32 maxObjectCount, Answer& answer);

    // The provider's instance, filtered (GetInstance, GetProperty).
    CIMInstance _fetchInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    // The checked modification handed to the provider (ModifyInstance, SetProperty).
    void _modify(
        const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList);

    void _checkNamespace(const CIMNamespaceName& nameSpace) const;
    // The checks of an instance request's namespace and class; _instanceClass also
    // fetches the class, which most requests do not need.
    void _checkInstanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    CIMClass _instanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    void _checkAssociationRequest(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole) const;
    // The class and its subclasses that have an instance provider;
    // CIM_ERR_NOT_SUPPORTED when none has.
    std::vector<InstanceTarget>
    _instanceTargets(const CIMNamespaceName& nameSpace, const CIMName& className) const;
    std::vector<AssociationTarget> _associationTargets(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& classFilter, const String& role) const;

    OperationContext _providerContext(const OperationContext& context) const;
    CIMObjectPath _providerPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const;
    CIMObjectPath
    _completedPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const;
    CIMInstance
    _checkedInstance(const CIMNamespaceName& nameSpace, const CIMInstance& instance) const;
    Array<CIMParamValue> _typedParameters(
        const CIMClass& cimClass, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters) const;
    // A provider's association object as the client gets it: filtered, with
    // host and namespace filled in where the provider left them out.
    void _deliverAssociationObject(
        const CIMObject& delivered, const CIMOperationRequest& request, Answer& answer) const;
    // The classes of a class-level association request, as objects or paths.
    void _deliverClassObjects(
        const CIMNamespaceName& nameSpace, const std::vector<CIMName>& classNames,
        const CIMOperationRequest& request, Answer& answer) const;
    void _deliverClassPaths(
        const CIMNamespaceName& nameSpace, const std::vector<CIMName>& classNames,
        Answer& answer) const;

    // Runs one provider operation through interface I; see DispatcherCalls.h.
    template <class I, class Call>
    void _call(const ProviderId& provider, const HandlerProtocol& protocol, Call&& call);
    // Asks every target's provider through interface I with a fresh list
    // handler of type H; each object that leaves a handler reaches `forward`.
    template <class I, class H, class Target, class Ask, class Forward>
    void _fanOut(const std::vector<Target>& targets, Answer& answer, Ask&& ask, Forward&& forward);

    const ClassRepository& _repository;
    const ProviderRegistry& _registry;
    ProviderManager& _providers;
    EnumerationContexts& _enumerations;
    AssociationSchema _associations;
    String _hostName;
    Uint32 _threshold;
};

}  // namespace Pegasus

#endif
