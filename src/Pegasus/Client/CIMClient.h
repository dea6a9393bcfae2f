// CIMClient: a connection to a CIM server and the CIM operations over it.
// One thread at a time per client object. The connection itself comes from
// the transport factories of ClientTransport.h.
//
// Errors: operations before connect() (or after disconnect()) throw
// NotConnectedException; connect() on a connected client throws
// AlreadyConnectedException; a server's CIM error reply arrives as
// CIMException; CannotConnectException and ConnectionTimeoutException come
// from the connection.
//
// Pulled enumerations (DSP0200 1.4): an open... call starts one and may already return
// objects; pullInstancesWithPath() / pullInstancePaths() return the next ones until
// endOfSequence comes back true; closeEnumeration() ends one early. The
// CIMEnumerationContext passed to the open is the one to pass to the calls that follow.
#ifndef Pegasus_CIMClient_h
#define Pegasus_CIMClient_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/UintArgs.h>
#include <Pegasus/Client/CIMEnumerationContext.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class ClientTransport;
struct CIMOperationRequest;
struct CIMOperationResponse;
struct CIMOpenParameters;

class PEGASUS_CLIENT_LINKAGE CIMClient
{
public:
    CIMClient();
    ~CIMClient();

    // Milliseconds to wait for each reply; 20000 by default.
    Uint32 getTimeout() const;
    void setTimeout(Uint32 timeoutMilliseconds);

    // An empty host with a non-zero port means "localhost".
    void connect(
        const String& host, const Uint32 portNumber, const String& userName,
        const String& password);
    // The CIM server of this machine, as the calling process's user.
    void connectLocal();
    // Closes the connection; does nothing when not connected.
    void disconnect();

    CIMClass getClass(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly = true,
        Boolean includeQualifiers = true, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    CIMInstance getInstance(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        Boolean localOnly = true, Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName);

    CIMObjectPath createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);

    void modifyInstance(
        const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers = true, const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMInstance> enumerateInstances(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance = true,
        Boolean localOnly = true, Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className);

    Array<CIMObject> associators(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY,
        Boolean includeQualifiers = false, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> associatorNames(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY);

    Array<CIMObject> references(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        Boolean includeQualifiers = false, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> referenceNames(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY);

    CIMValue invokeMethod(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);

    // The pulled enumerations. filterQueryLanguage and filterQuery: "" is NULL (no
    // filter); operationTimeout: NULL is the server's default; maxObjectCount: the most
    // objects this call may return (0 on an open: none yet).
    Array<CIMInstance> openEnumerateInstances(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance = true,
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList(),
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openEnumerateInstancePaths(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMName& className,
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMInstance> openReferenceInstances(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        const Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList(),
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openReferenceInstancePaths(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMInstance> openAssociatorInstances(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY,
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList(),
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openAssociatorInstancePaths(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY,
        const String& filterQueryLanguage = String::EMPTY,
        const String& filterQuery = String::EMPTY, const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMInstance> pullInstancesWithPath(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount);

    Array<CIMObjectPath> pullInstancePaths(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount);

    void closeEnumeration(CIMEnumerationContext& enumerationContext);

    // What is left to pull, or NULL when the server cannot tell yet.
    Uint64Arg enumerationCount(CIMEnumerationContext& enumerationContext);

private:
    CIMClient(const CIMClient&) = delete;
    CIMClient& operator=(const CIMClient&) = delete;

    ClientTransport& _connection();
    CIMOperationResponse _execute(const CIMOperationRequest& request);
    // An open or a pull: `enumerationContext` follows the answer.
    CIMOperationResponse _page(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
        const CIMOperationRequest& request);
    // The namespace of an opened enumeration; CIM_ERR_INVALID_ENUMERATION_CONTEXT for
    // one never opened.
    static const CIMNamespaceName& _openedIn(const CIMEnumerationContext& enumerationContext);
    void _attach(std::unique_ptr<ClientTransport> transport, const String& target);

    std::unique_ptr<ClientTransport> _transport;
    Uint32 _timeoutMilliseconds;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMClient_h */
