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

    // The dispatcher's answer, collected into `response`; failures become CIM errors as a
    // CIMOM reports them.
    void execute(
        const cimxml::CimRequest& request, const http::ClientIdentity& client,
        cimxml::CimResponse& response) override;
    // The dispatcher's answer as it is made (the sink's delivery says when objects come).
    void execute(
        const cimxml::CimRequest& request, const http::ClientIdentity& client,
        Pegasus::CIMResponseSink& sink) override;

private:
    Pegasus::Dispatcher& _dispatcher;
};

}  // namespace server
}  // namespace qel

#endif
