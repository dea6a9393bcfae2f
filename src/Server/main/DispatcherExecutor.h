// Runs decoded CIM-XML requests on the core dispatcher, as the authenticated client.
#ifndef QEL_SERVER_MAIN_DISPATCHEREXECUTOR_H
#define QEL_SERVER_MAIN_DISPATCHEREXECUTOR_H

#include <Server/core/Dispatcher.h>
#include <Server/http/OperationExecutor.h>

namespace qel
{
namespace server
{

class DispatcherExecutor : public http::OperationExecutor
{
public:
    explicit DispatcherExecutor(Pegasus::Dispatcher& dispatcher) : _dispatcher(dispatcher) {}

    // Operations the dispatcher does not offer (class changes, queries) end in
    // CIM_ERR_NOT_SUPPORTED; exceptions become CIM errors as a CIMOM reports them.
    void execute(
        const cimxml::CimRequest& request,
        const http::ClientIdentity& client,
        cimxml::CimResponse& response) override;

private:
    void
    run(const cimxml::CimRequest& request,
        const Pegasus::OperationContext& context,
        cimxml::CimResponse& response);

    Pegasus::Dispatcher& _dispatcher;
};

}  // namespace server
}  // namespace qel

#endif
