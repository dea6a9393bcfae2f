// Project extension: how CIMClient reaches a CIM server. A transport is one
// open connection that carries CIM operations (CIM-XML over HTTP, a local
// socket, or a test double). CIMClient::connect() and connectLocal() obtain
// one from the process-wide factories installed here; without a factory
// they throw CannotConnectException.
//
// A transport reports a CIM error reply as CIMException, a lost or refused
// connection as CannotConnectException, and a reply that does not come in
// time as ConnectionTimeoutException. It is used by one thread at a time.
#ifndef Pegasus_ClientTransport_h
#define Pegasus_ClientTransport_h

#include <functional>
#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_CLIENT_LINKAGE ClientTransport
{
public:
    virtual ~ClientTransport();

    // CIMClient::setTimeout() on a connected client; applies from the next
    // operation on. (The factory receives the timeout of the connect.)
    virtual void setTimeout(Uint32 timeoutMilliseconds) = 0;

    virtual CIMClass getClass(
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual CIMInstance getInstance(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMInstance> enumerateInstances(
        const CIMNamespaceName& nameSpace,
        const CIMName& className,
        Boolean deepInheritance,
        Boolean localOnly,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className) = 0;

    virtual CIMObjectPath
    createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) = 0;

    virtual void modifyInstance(
        const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance,
        Boolean includeQualifiers,
        const CIMPropertyList& propertyList) = 0;

    virtual void
    deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName) = 0;

    virtual Array<CIMObject> associators(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass,
        const CIMName& resultClass,
        const String& role,
        const String& resultRole,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> associatorNames(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& assocClass,
        const CIMName& resultClass,
        const String& role,
        const String& resultRole) = 0;

    virtual Array<CIMObject> references(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass,
        const String& role,
        Boolean includeQualifiers,
        Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> referenceNames(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName,
        const CIMName& resultClass,
        const String& role) = 0;

    virtual CIMValue invokeMethod(
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName,
        const CIMName& methodName,
        const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) = 0;
};

// Opens a connection to host:port for the given user; throws
// CannotConnectException when it cannot.
typedef std::function<std::unique_ptr<ClientTransport>(
    const String& host,
    Uint32 portNumber,
    const String& userName,
    const String& password,
    Uint32 timeoutMilliseconds)>
    TcpTransportFactory;

// Opens a connection to the CIM server of this machine as the calling
// process's user; throws CannotConnectException when it cannot.
typedef std::function<std::unique_ptr<ClientTransport>(Uint32 timeoutMilliseconds)>
    LocalTransportFactory;

// Install (or, with an empty function, remove) the factory used by later
// connect() / connectLocal() calls in this process. Return the previous one
// so that a caller can put it back. Safe to call from any thread.
PEGASUS_CLIENT_LINKAGE TcpTransportFactory setTcpTransportFactory(TcpTransportFactory factory);
PEGASUS_CLIENT_LINKAGE LocalTransportFactory
setLocalTransportFactory(LocalTransportFactory factory);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ClientTransport_h */
