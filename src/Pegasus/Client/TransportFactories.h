// Internal to the client library: reading the installed transport factories.
#ifndef Pegasus_TransportFactories_h
#define Pegasus_TransportFactories_h

#include <Pegasus/Client/ClientTransport.h>

PEGASUS_NAMESPACE_BEGIN

// Copies of the installed factories (empty when none is installed).
TcpTransportFactory currentTcpTransportFactory();
LocalTransportFactory currentLocalTransportFactory();

PEGASUS_NAMESPACE_END

#endif /* Pegasus_TransportFactories_h */
