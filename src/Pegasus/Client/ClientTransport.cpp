#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Client/TransportFactories.h>
#include <mutex>

PEGASUS_NAMESPACE_BEGIN

ClientTransport::~ClientTransport() = default;

namespace
{
// The installed factories; copied out under the lock so that a factory runs
// (and may block on a connect) without holding it.
std::mutex& factoryMutex()
{
    static std::mutex m;
    return m;
}

TcpTransportFactory& tcpFactory()
{
    static TcpTransportFactory f;
    return f;
}

LocalTransportFactory& localFactory()
{
    static LocalTransportFactory f;
    return f;
}
}  // namespace

TcpTransportFactory setTcpTransportFactory(TcpTransportFactory factory)
{
    std::lock_guard<std::mutex> lock(factoryMutex());
    tcpFactory().swap(factory);
    return factory;
}

LocalTransportFactory setLocalTransportFactory(LocalTransportFactory factory)
{
    std::lock_guard<std::mutex> lock(factoryMutex());
    localFactory().swap(factory);
    return factory;
}

TcpTransportFactory currentTcpTransportFactory()
{
    std::lock_guard<std::mutex> lock(factoryMutex());
    return tcpFactory();
}

LocalTransportFactory currentLocalTransportFactory()
{
    std::lock_guard<std::mutex> lock(factoryMutex());
    return localFactory();
}

PEGASUS_NAMESPACE_END
