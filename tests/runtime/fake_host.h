// A CIMOMHandleRep double: records which operation reached the host and
// with which namespace, and answers with simple recognisable results. Safe
// to call from several threads.
#ifndef QEL_TEST_FAKE_HOST_H
#define QEL_TEST_FAKE_HOST_H

#include <mutex>
#include <string>
#include <vector>
#include <Pegasus/Provider/CIMOMHandleRep.h>

namespace qeltest
{

class RecordingHost : public Pegasus::CIMOMHandleRep
{
public:
    // "<operation>@<namespace>" for every call, in order.
    std::vector<std::string> calls() const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _calls;
    }

    Pegasus::CIMClass getClass(const Pegasus::OperationContext&,
                               const Pegasus::CIMNamespaceName& ns,
                               const Pegasus::CIMName& cls, Pegasus::Boolean,
                               Pegasus::Boolean, Pegasus::Boolean,
                               const Pegasus::CIMPropertyList&) override
    {
        _record("getClass", ns);
        return Pegasus::CIMClass(cls);
    }
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext&,
                                     const Pegasus::CIMNamespaceName& ns,
                                     const Pegasus::CIMObjectPath& path,
                                     Pegasus::Boolean, Pegasus::Boolean,
                                     Pegasus::Boolean,
                                     const Pegasus::CIMPropertyList&) override
    {
        _record("getInstance", ns);
        return Pegasus::CIMInstance(path.getClassName());
    }
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMName&, Pegasus::Boolean, Pegasus::Boolean,
        Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override
    {
        _record("enumerateInstances", ns);
        return Pegasus::Array<Pegasus::CIMInstance>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMName& cls) override
    {
        _record("enumerateInstanceNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>(
            1, Pegasus::CIMObjectPath(cls.getString()));
    }
    void modifyInstance(const Pegasus::OperationContext&,
                        const Pegasus::CIMNamespaceName& ns,
                        const Pegasus::CIMInstance&, Pegasus::Boolean,
                        const Pegasus::CIMPropertyList&) override
    {
        _record("modifyInstance", ns);
    }
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMObjectPath&, const Pegasus::CIMName&,
        const Pegasus::CIMName&, const Pegasus::String&,
        const Pegasus::String&, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override
    {
        _record("associators", ns);
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMObjectPath&, const Pegasus::CIMName&,
        const Pegasus::CIMName&, const Pegasus::String&,
        const Pegasus::String&) override
    {
        _record("associatorNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>();
    }
    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMObjectPath&, const Pegasus::CIMName&,
        const Pegasus::String&, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override
    {
        _record("references", ns);
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMObjectPath&, const Pegasus::CIMName&,
        const Pegasus::String&) override
    {
        _record("referenceNames", ns);
        return Pegasus::Array<Pegasus::CIMObjectPath>();
    }
    // Returns the number of in-parameters; hands the method name back as
    // the out-parameter "Method".
    Pegasus::CIMValue invokeMethod(
        const Pegasus::OperationContext&, const Pegasus::CIMNamespaceName& ns,
        const Pegasus::CIMObjectPath&, const Pegasus::CIMName& method,
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
        std::string entry = std::string(op) + "@" +
            (const char*)ns.getString().getCString();
        std::lock_guard<std::mutex> lock(_mutex);
        _calls.push_back(entry);
    }

    mutable std::mutex _mutex;
    std::vector<std::string> _calls;
};

}  // namespace qeltest

#endif
