// CIMClient: a connection to a CIM server and the CIM operations over it.
// One thread at a time per client object. The connection itself comes from
// the transport factories of ClientTransport.h.
//
// Errors: operations before connect() (or after disconnect()) throw
// NotConnectedException; connect() on a connected client throws
// AlreadyConnectedException; a server's CIM error reply arrives as
// CIMException; CannotConnectException and ConnectionTimeoutException come
// from the connection.
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
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class ClientTransport;
struct CIMOperationRequest;
struct CIMOperationResponse;

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
        const String& host,
        const Uint32 portNumber,
        const String& userName,
        const String& password);
    // The CIM server of this machine, as the calling process's user.
    void connectLocal();
    // Closes the connection; does nothing when not connected.
    void disconnect();

    CIMClass getClass(
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean localOnly = true,
        Boolean includeQualifiers = true,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    CIMInstance getInstance(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        Boolean localOnly = true,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName);

    CIMObjectPath createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);

    void modifyInstance(
        const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance,
        Boolean includeQualifiers = true,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMInstance> enumerateInstances(
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance = true,
        Boolean localOnly = true,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className);

    Array<CIMObject> associators(
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
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(),
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY,
        const String& resultRole = String::EMPTY);

    Array<CIMObject> references(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY,
        Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> referenceNames(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY);

    CIMValue invokeMethod(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& methodName,
        const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);

private:
    CIMClient(const CIMClient&) = delete;
    CIMClient& operator=(const CIMClient&) = delete;

    ClientTransport& _connection();
    CIMOperationResponse _execute(const CIMOperationRequest& request);
    void _attach(std::unique_ptr<ClientTransport> transport, const String& target);

    std::unique_ptr<ClientTransport> _transport;
    Uint32 _timeoutMilliseconds;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMClient_h */
