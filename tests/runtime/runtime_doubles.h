// Doubles of the runtime's plug-in points: a response handler that keeps what
// a provider delivers, a CIMOMHandleRep (the host behind a provider's CIMOMHandle)
// and a ClientTransport. The last two record "<operation>@<namespace>" of every
// call they answer and answer recognisably: getClass names the class asked for,
// getInstance gives an instance of the class asked for, enumerateInstanceNames
// gives one path of the class, createInstance the path of the instance's class,
// invokeMethod returns the number of in-parameters and hands the method name back
// as out-parameter "Method".
#ifndef QEL_TEST_RUNTIME_DOUBLES_H
#define QEL_TEST_RUNTIME_DOUBLES_H

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

namespace qeltest
{
using namespace Pegasus;

// One ResponseHandler part for all handler kinds (virtual inheritance).
class RecordingHandler : public InstanceResponseHandler,
                         public ObjectPathResponseHandler,
                         public MethodResultResponseHandler
{
public:
    void processing() override { processingCalls++; }
    void complete() override { completeCalls++; }
    void deliver(const CIMInstance& x) override { instances.append(x); }
    void deliver(const Array<CIMInstance>& x) override { instances.appendArray(x); }
    void deliver(const CIMObjectPath& x) override { paths.append(x); }
    void deliver(const Array<CIMObjectPath>& x) override { paths.appendArray(x); }
    void deliverParamValue(const CIMParamValue& x) override { outParams.append(x); }
    void deliverParamValue(const Array<CIMParamValue>& x) override { outParams.appendArray(x); }
    void deliver(const CIMValue& x) override { returnValue = x; }
    OperationContext context() const { return getContext(); }  // opened for checks
    int processingCalls = 0;
    int completeCalls = 0;
    Array<CIMInstance> instances;
    Array<CIMObjectPath> paths;
    Array<CIMParamValue> outParams;
    CIMValue returnValue;
};

// Thread-safe list of the calls made, in order.
class CallLog
{
public:
    void record(const char* op, const CIMNamespaceName& ns)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _calls.push_back(std::string(op) + "@" + (const char*)ns.getString().getCString());
    }

    std::vector<std::string> calls() const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _calls;
    }

private:
    mutable std::mutex _mutex;
    std::vector<std::string> _calls;
};

inline CIMValue
answerMethod(const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
{
    out.append(CIMParamValue("Method", CIMValue(method.getString())));
    return CIMValue(Uint32(in.size()));
}

// The recognisable answers of both doubles, each call recorded first.
inline CIMOperationResponse answer(CallLog& log, const CIMOperationRequest& r)
{
    log.record((const char*)cimOperationFunctionName(r.operation).getCString(), r.nameSpace);
    CIMOperationResponse response;
    switch (r.operation)
    {
        case CIMOperationType::GetClass:
            response.cimClass = CIMClass(r.className);
            break;
        case CIMOperationType::GetInstance:
            response.instance = CIMInstance(r.objectName.getClassName());
            break;
        case CIMOperationType::EnumerateInstanceNames:
            response.paths.append(CIMObjectPath(r.className.getString()));
            break;
        case CIMOperationType::CreateInstance:
            response.paths.append(CIMObjectPath(r.instance.getClassName().getString()));
            break;
        case CIMOperationType::InvokeMethod:
            response.value =
                answerMethod(CIMName(r.methodName), r.inParameters, response.outParameters);
            break;
        default:
            break;
    }
    return response;
}

// A host that answers what a provider of this project asks of its handle and
// refuses the rest as a host that leaves them out does.
class RecordingHost : public CIMOMHandleRep, public CallLog
{
public:
    CIMOperationResponse execute(const OperationContext&, const CIMOperationRequest& r) override
    {
        switch (r.operation)
        {
            case CIMOperationType::GetClass:
            case CIMOperationType::GetInstance:
            case CIMOperationType::EnumerateInstances:
            case CIMOperationType::EnumerateInstanceNames:
            case CIMOperationType::ModifyInstance:
            case CIMOperationType::Associators:
            case CIMOperationType::AssociatorNames:
            case CIMOperationType::References:
            case CIMOperationType::ReferenceNames:
            case CIMOperationType::InvokeMethod:
                return answer(*this, r);
            default:
                notSupported(r);
        }
    }
};

struct TransportLog : CallLog
{
    std::vector<Uint32> timeouts;  // written from the test's thread only
    std::atomic<int> closed{0};
};

class FakeTransport : public ClientTransport
{
public:
    explicit FakeTransport(std::shared_ptr<TransportLog> log) : _log(log) {}
    ~FakeTransport() override { _log->closed++; }
    std::unique_ptr<CIMException> failWith;  // when set, every operation throws it
    void setTimeout(Uint32 ms) override { _log->timeouts.push_back(ms); }
    CIMOperationResponse execute(const CIMOperationRequest& r) override
    {
        CIMOperationResponse response = answer(*_log, r);
        if (failWith)
            throw *failWith;
        return response;
    }

private:
    std::shared_ptr<TransportLog> _log;
};

// Installs factories for the lifetime of the guard, then puts back the
// ones installed before.
class FactoryGuard
{
public:
    FactoryGuard(TcpTransportFactory tcp, LocalTransportFactory local)
        : _tcp(setTcpTransportFactory(std::move(tcp))),
          _local(setLocalTransportFactory(std::move(local)))
    {
    }
    ~FactoryGuard()
    {
        setTcpTransportFactory(std::move(_tcp));
        setLocalTransportFactory(std::move(_local));
    }

    FactoryGuard(const FactoryGuard&) = delete;
    FactoryGuard& operator=(const FactoryGuard&) = delete;

private:
    TcpTransportFactory _tcp;
    LocalTransportFactory _local;
};

}  // namespace qeltest

#endif
