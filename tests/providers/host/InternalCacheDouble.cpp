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

// The answers both routes give: invokeMethod and enumerateInstanceNames by the double's scripts.
CIMOperationResponse
answer(InternalCacheDouble& cache, const char* route, const CIMOperationRequest& r)
{
    CIMOperationResponse response;
    switch (r.operation)
    {
        case CIMOperationType::EnumerateInstanceNames:
            response.paths = cache.names(route, r.className);
            return response;
        case CIMOperationType::InvokeMethod:
            response.value = cache.invoke(
                route, r.nameSpace, r.target, CIMName(r.methodName), r.inParameters,
                response.outParameters);
            return response;
        default:
            refuse(r);
    }
}

class LocalTransport : public ClientTransport
{
public:
    explicit LocalTransport(InternalCacheDouble& cache) : _cache(cache) { _cache.opened(); }
    ~LocalTransport() override { _cache.closed(); }

    void setTimeout(Uint32) override {}
    CIMOperationResponse execute(const CIMOperationRequest& request) override
    {
        return answer(_cache, "local", request);
    }

private:
    InternalCacheDouble& _cache;
};

}  // namespace

void refuse(const CIMOperationRequest& request)
{
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, "test double: no " + cimOperationFunctionName(request.operation));
}

CIMOperationResponse
CacheHandleRep::execute(const OperationContext&, const CIMOperationRequest& request)
{
    return answer(_cache, "cimom", request);
}

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
    const char* route, const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& method,
    const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
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
