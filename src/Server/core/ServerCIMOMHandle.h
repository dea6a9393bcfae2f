// The CIMOMHandle the server gives its providers: every call goes back
// through the dispatcher, on the calling thread, with the context the
// provider passes (its request's context, so the caller's identity travels
// with it; a fresh context runs as the empty user, as in OpenPegasus).
// Nothing is locked across the call, so providers may nest calls freely.
#ifndef QEL_Server_ServerCIMOMHandle_h
#define QEL_Server_ServerCIMOMHandle_h

#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

#include <atomic>

namespace Pegasus
{

class Dispatcher;

class ServerCIMOMHandleRep : public CIMOMHandleRep
{
public:
    explicit ServerCIMOMHandleRep(Dispatcher& dispatcher) : _dispatcher(&dispatcher) {}

    // After the server has stopped, a handle a provider kept against the
    // rules fails with CIM_ERR_FAILED instead of reaching a dead server.
    void detach() { _dispatcher.store(nullptr); }

    // The dispatcher's whole answer, collected.
    CIMOperationResponse
    execute(const OperationContext& context, const CIMOperationRequest& request) override;

private:
    Dispatcher& _server() const;

    std::atomic<Dispatcher*> _dispatcher;
};

}  // namespace Pegasus

#endif
