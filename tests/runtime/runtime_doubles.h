// Doubles of the runtime's plug-in points: a response handler that keeps what
// a provider delivers, a CIMOMHandleRep (the host behind a provider's CIMOMHandle)
// and a ClientTransport. The last two record "<operation>@<namespace>" of every
// call and answer recognisably: getClass names the class asked for,
// enumerateInstanceNames gives one path of the class, invokeMethod returns the
// number of in-parameters and hands the method name back as out-parameter "Method".
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

class RecordingHost : public CIMOMHandleRep, public CallLog
{
public:
    CIMClass getClass(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMName& cls,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("getClass", ns);
        return CIMClass(cls);
    }
    CIMInstance getInstance(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath& path,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("getInstance", ns);
        return CIMInstance(path.getClassName());
    }
    Array<CIMInstance> enumerateInstances(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMName&,
        Boolean,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("enumerateInstances", ns);
        return {};
    }
    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMName& cls) override
    {
        record("enumerateInstanceNames", ns);
        return Array<CIMObjectPath>(1, CIMObjectPath(cls.getString()));
    }
    void modifyInstance(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMInstance&,
        Boolean,
        const CIMPropertyList&) override
    {
        record("modifyInstance", ns);
    }
    Array<CIMObject> associators(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const CIMName&,
        const String&,
        const String&,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("associators", ns);
        return {};
    }
    Array<CIMObjectPath> associatorNames(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const CIMName&,
        const String&,
        const String&) override
    {
        record("associatorNames", ns);
        return {};
    }
    Array<CIMObject> references(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const String&,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("references", ns);
        return {};
    }
    Array<CIMObjectPath> referenceNames(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const String&) override
    {
        record("referenceNames", ns);
        return {};
    }
    CIMValue invokeMethod(
        const OperationContext&,
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName& method,
        const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out) override
    {
        record("invokeMethod", ns);
        return answerMethod(method, in, out);
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
    CIMClass getClass(
        const CIMNamespaceName& ns,
        const CIMName& cls,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("getClass", ns);
        return CIMClass(cls);
    }
    CIMInstance getInstance(
        const CIMNamespaceName& ns,
        const CIMObjectPath& path,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("getInstance", ns);
        return CIMInstance(path.getClassName());
    }
    Array<CIMInstance> enumerateInstances(
        const CIMNamespaceName& ns,
        const CIMName&,
        Boolean,
        Boolean,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("enumerateInstances", ns);
        return {};
    }
    Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& cls) override
    {
        record("enumerateInstanceNames", ns);
        return Array<CIMObjectPath>(1, CIMObjectPath(cls.getString()));
    }
    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& inst) override
    {
        record("createInstance", ns);
        return CIMObjectPath(inst.getClassName().getString());
    }
    void
    modifyInstance(const CIMNamespaceName& ns, const CIMInstance&, Boolean, const CIMPropertyList&)
        override
    {
        record("modifyInstance", ns);
    }
    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath&) override
    {
        record("deleteInstance", ns);
    }
    Array<CIMObject> associators(
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const CIMName&,
        const String&,
        const String&,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("associators", ns);
        return {};
    }
    Array<CIMObjectPath> associatorNames(
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const CIMName&,
        const String&,
        const String&) override
    {
        record("associatorNames", ns);
        return {};
    }
    Array<CIMObject> references(
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName&,
        const String&,
        Boolean,
        Boolean,
        const CIMPropertyList&) override
    {
        record("references", ns);
        return {};
    }
    Array<CIMObjectPath>
    referenceNames(const CIMNamespaceName& ns, const CIMObjectPath&, const CIMName&, const String&)
        override
    {
        record("referenceNames", ns);
        return {};
    }
    CIMValue invokeMethod(
        const CIMNamespaceName& ns,
        const CIMObjectPath&,
        const CIMName& method,
        const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out) override
    {
        record("invokeMethod", ns);
        return answerMethod(method, in, out);
    }

private:
    void record(const char* op, const CIMNamespaceName& ns)
    {
        _log->record(op, ns);
        if (failWith)
            throw *failWith;
    }

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
