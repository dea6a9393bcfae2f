// Project extension: how CIMClient reaches a CIM server. A transport is one
// open connection that carries CIM operations (CIM-XML over HTTP, a local
// socket, or a test double). CIMClient::connect() and connectLocal() obtain
// one from the process-wide factories installed here; without a factory
// they throw CannotConnectException.
//
// CIMClient hands every operation to execute() as a request value
// (Pegasus/Common/CIMOperationMessage.h) and reads the answer from the
// response. A transport reports a CIM error reply in the response (or throws
// it as CIMException), a lost or refused connection as CannotConnectException,
// and a reply that does not come in time as ConnectionTimeoutException. It is
// used by one thread at a time.
#ifndef Pegasus_ClientTransport_h
#define Pegasus_ClientTransport_h

#include <functional>
#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMOperationMessage.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_CLIENT_LINKAGE ClientTransport
{
public:
    virtual ~ClientTransport();

    // CIMClient::setTimeout() on a connected client; applies from the next
    // operation on. (The factory receives the timeout of the connect.)
    virtual void setTimeout(Uint32 timeoutMilliseconds) = 0;

    // Carries one operation to the server and returns its answer.
    virtual CIMOperationResponse execute(const CIMOperationRequest& request) = 0;
};

// Opens a connection to host:port for the given user; throws
// CannotConnectException when it cannot.
typedef std::function<std::unique_ptr<ClientTransport>(
    const String& host, Uint32 portNumber, const String& userName, const String& password,
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
