#include "InternalCacheDouble.h"

#include "RecordingHandlers.h"

#include <QEL_InternalCacheProvider.h>

#include <Pegasus/Common/Exception.h>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

namespace
{

CIMValue askRealProvider(const CacheCall& call, Array<CIMParamValue>& out)
{
    QEL_InternalCacheProvider provider;
    RecordingMethodHandler handler;
    provider.invokeMethod(
        OperationContext(), CIMObjectPath(String(call.path.c_str())), String(call.method.c_str()),
        Array<CIMParamValue>(), handler);
    for (const CIMParamValue& p : handler.outParameters)
        out.append(p);
    return handler.returnValues.empty() ? CIMValue() : handler.returnValues.back();
}

class LocalTransport : public ClientTransport
{
public:
    explicit LocalTransport(InternalCacheDouble& cache) : _cache(cache) { _cache.opened(); }
    ~LocalTransport() override { _cache.closed(); }

    void setTimeout(Uint32) override {}
    Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName&, const CIMName& cls) override
    {
        return _cache.names("local", cls);
    }
    CIMValue invokeMethod(
        const CIMNamespaceName& ns,
        const CIMObjectPath& path,
        const CIMName& method,
        const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out) override
    {
        return _cache.invoke("local", ns, path, method, in, out);
    }
    QEL_TEST_REFUSED(
        CIMClass getClass(
            const CIMNamespaceName&,
            const CIMName&,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "getClass")
    QEL_TEST_REFUSED(
        CIMInstance getInstance(
            const CIMNamespaceName&,
            const CIMObjectPath&,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "getInstance")
    QEL_TEST_REFUSED(
        Array<CIMInstance> enumerateInstances(
            const CIMNamespaceName&,
            const CIMName&,
            Boolean,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "enumerateInstances")
    QEL_TEST_REFUSED(
        CIMObjectPath createInstance(const CIMNamespaceName&, const CIMInstance&) override,
        "createInstance")
    QEL_TEST_REFUSED(
        void modifyInstance(
            const CIMNamespaceName&,
            const CIMInstance&,
            Boolean,
            const CIMPropertyList&) override,
        "modifyInstance")
    QEL_TEST_REFUSED(
        void deleteInstance(const CIMNamespaceName&, const CIMObjectPath&) override,
        "deleteInstance")
    QEL_TEST_REFUSED(
        Array<CIMObject> associators(
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const CIMName&,
            const String&,
            const String&,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "associators")
    QEL_TEST_REFUSED(
        Array<CIMObjectPath> associatorNames(
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const CIMName&,
            const String&,
            const String&) override,
        "associatorNames")
    QEL_TEST_REFUSED(
        Array<CIMObject> references(
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const String&,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "references")
    QEL_TEST_REFUSED(
        Array<CIMObjectPath> referenceNames(
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const String&) override,
        "referenceNames")

private:
    InternalCacheDouble& _cache;
};

}  // namespace

InternalCacheDouble::InternalCacheDouble()
    : methods(askRealProvider),
      names([](const std::string&, const CIMName&) { return Array<CIMObjectPath>(); })
{
    _previous = setLocalTransportFactory(
        [this](Uint32) -> std::unique_ptr<ClientTransport>
        {
            if (localDown)
                throw CannotConnectException("local connection refused");
            return std::unique_ptr<ClientTransport>(new LocalTransport(*this));
        });
}

InternalCacheDouble::~InternalCacheDouble()
{
    setLocalTransportFactory(_previous);
}

std::vector<CacheCall> InternalCacheDouble::calls() const
{
    std::lock_guard<std::mutex> guard(_lock);
    return _calls;
}

Texts InternalCacheDouble::callNames() const
{
    Texts out;
    for (const CacheCall& c : calls())
        out.push_back(c.route + ":" + c.method);
    return out;
}

void InternalCacheDouble::clear()
{
    std::lock_guard<std::mutex> guard(_lock);
    _calls.clear();
    localDown = false;
}

CIMValue InternalCacheDouble::invoke(
    const char* route,
    const CIMNamespaceName& ns,
    const CIMObjectPath& path,
    const CIMName& method,
    const Array<CIMParamValue>& in,
    Array<CIMParamValue>& out)
{
    const CacheCall call{
        route, (const char*)ns.getString().getCString(), (const char*)path.toString().getCString(),
        (const char*)method.getString().getCString(), in.size()};
    {
        std::lock_guard<std::mutex> guard(_lock);
        _calls.push_back(call);
    }
    return methods(call, out);
}

}  // namespace qeltest
