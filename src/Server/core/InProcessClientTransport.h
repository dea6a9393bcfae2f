// A local client connection that never leaves the process: CIMClient's
// connectLocal() inside the server reaches the dispatcher directly, on the
// calling thread, as the user the process runs as (what a local connection
// authenticates as). Results and errors look as they would after a trip
// over the wire: objects are copies, and a CIM error's message carries its
// "CIM_ERR_xxx: " prefix as CIM-XML's DESCRIPTION does. Calls do not time
// out: they are ordinary function calls.
#ifndef QEL_Server_InProcessClientTransport_h
#define QEL_Server_InProcessClientTransport_h

#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Common/OperationContext.h>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace Pegasus
{

class Dispatcher;

// What local connections lead to. Closing it (when the server stops) makes
// new connections and calls fail with CannotConnectException and waits for
// the calls under way, so no connection can outlive the dispatcher.
class LocalEndpoint
{
public:
    explicit LocalEndpoint(Dispatcher& dispatcher) : _dispatcher(dispatcher) {}

    void close();
    bool isOpen() const;
    // Only while a Call is under way.
    Dispatcher& dispatcher() const { return _dispatcher; }

    // Counts a call as under way for its lifetime.
    class Call
    {
    public:
        explicit Call(LocalEndpoint& endpoint);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        LocalEndpoint& _endpoint;
    };

private:
    Dispatcher& _dispatcher;
    mutable std::mutex _mutex;
    std::condition_variable _idle;
    unsigned _active = 0;
    bool _open = true;
};

class InProcessClientTransport : public ClientTransport
{
public:
    InProcessClientTransport(std::shared_ptr<LocalEndpoint> endpoint, const String& userName);

    // A factory for setLocalTransportFactory().
    static LocalTransportFactory factory(std::shared_ptr<LocalEndpoint> endpoint);

    // The name of the user the process runs as ("" if it has none).
    static String processUserName();

    void setTimeout(Uint32) override {}

    // The dispatcher's whole answer, collected.
    CIMOperationResponse execute(const CIMOperationRequest& request) override;

private:
    std::shared_ptr<LocalEndpoint> _endpoint;
    OperationContext _context;
};

}  // namespace Pegasus

#endif
