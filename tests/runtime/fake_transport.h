// A ClientTransport double: records the operations it carries and answers
// from a small script, for client tests.
#ifndef QEL_TEST_FAKE_TRANSPORT_H
#define QEL_TEST_FAKE_TRANSPORT_H

#include <memory>
#include <string>
#include <vector>
#include <Pegasus/Client/ClientTransport.h>

namespace qeltest
{

struct TransportLog
{
    std::vector<std::string> calls;
    std::vector<Pegasus::Uint32> timeouts;
    int closed = 0;
};

class FakeTransport : public Pegasus::ClientTransport
{
public:
    explicit FakeTransport(std::shared_ptr<TransportLog> log) : _log(log) {}
    ~FakeTransport() override { _log->closed++; }

    // When set, every operation throws it (after recording the call).
    std::unique_ptr<Pegasus::CIMException> failWith;

    void setTimeout(Pegasus::Uint32 ms) override { _log->timeouts.push_back(ms); }

    Pegasus::CIMClass getClass(const Pegasus::CIMNamespaceName& ns,
                               const Pegasus::CIMName& cls, Pegasus::Boolean,
                               Pegasus::Boolean, Pegasus::Boolean,
                               const Pegasus::CIMPropertyList&) override
    {
        _record("getClass", ns);
        return Pegasus::CIMClass(cls);
    }
    Pegasus::CIMInstance getInstance(const Pegasus::CIMNamespaceName& ns,
                                     const Pegasus::CIMObjectPath& path,
                                     Pegasus::Boolean, Pegasus::Boolean,
                                     Pegasus::Boolean,
                                     const Pegasus::CIMPropertyList&) override
    {
        _record("getInstance", ns);
        Pegasus::CIMInstance inst(path.getClassName());
        inst.setPath(path);
        return inst;
    }
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMName&,
        Pegasus::Boolean, Pegasus::Boolean, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override
    {
        _record("enumerateInstances", ns);
        return Pegasus::Array<Pegasus::CIMInstance>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMName& cls) override
    {
        _record("enumerateInstanceNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>(
            1, Pegasus::CIMObjectPath(cls.getString()));
    }
    Pegasus::CIMObjectPath createInstance(
        const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMInstance& inst) override
    {
        _record("createInstance", ns);
        return Pegasus::CIMObjectPath(inst.getClassName().getString());
    }
    void modifyInstance(const Pegasus::CIMNamespaceName& ns,
                        const Pegasus::CIMInstance&, Pegasus::Boolean,
                        const Pegasus::CIMPropertyList&) override
    {
        _record("modifyInstance", ns);
    }
    void deleteInstance(const Pegasus::CIMNamespaceName& ns,
                        const Pegasus::CIMObjectPath&) override
    {
        _record("deleteInstance", ns);
    }
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&, const Pegasus::CIMName&,
        const Pegasus::String&, const Pegasus::String&, Pegasus::Boolean,
        Pegasus::Boolean, const Pegasus::CIMPropertyList&) override
    {
        _record("associators", ns);
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&, const Pegasus::CIMName&,
        const Pegasus::String&, const Pegasus::String&) override
    {
        _record("associatorNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>();
    }
    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&, const Pegasus::String&, Pegasus::Boolean,
        Pegasus::Boolean, const Pegasus::CIMPropertyList&) override
    {
        _record("references", ns);
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&, const Pegasus::String&) override
    {
        _record("referenceNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>();
    }
    Pegasus::CIMValue invokeMethod(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName& method,
        const Pegasus::Array<Pegasus::CIMParamValue>& in,
        Pegasus::Array<Pegasus::CIMParamValue>& out) override
    {
        _record("invokeMethod", ns);
        out.append(Pegasus::CIMParamValue(
            "Method", Pegasus::CIMValue(method.getString())));
        return Pegasus::CIMValue(Pegasus::Uint32(in.size()));
    }

private:
    void _record(const char* op, const Pegasus::CIMNamespaceName& ns)
    {
        _log->calls.push_back(
            std::string(op) + "@" + (const char*)ns.getString().getCString());
        if (failWith)
            throw *failWith;
    }

    std::shared_ptr<TransportLog> _log;
};

// Installs factories for the lifetime of the guard and puts back the ones
// that were installed before.
class FactoryGuard
{
public:
    FactoryGuard(Pegasus::TcpTransportFactory tcp,
                 Pegasus::LocalTransportFactory local)
        : _tcp(Pegasus::setTcpTransportFactory(std::move(tcp))),
          _local(Pegasus::setLocalTransportFactory(std::move(local)))
    {
    }
    ~FactoryGuard()
    {
        Pegasus::setTcpTransportFactory(std::move(_tcp));
        Pegasus::setLocalTransportFactory(std::move(_local));
    }
    FactoryGuard(const FactoryGuard&) = delete;
    FactoryGuard& operator=(const FactoryGuard&) = delete;

private:
    Pegasus::TcpTransportFactory _tcp;
    Pegasus::LocalTransportFactory _local;
};

}  // namespace qeltest

#endif
