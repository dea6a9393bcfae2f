#include "qelcommon_test_support.h"

#include "QEL_InternalCacheProvider.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ResponseHandler.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <ctime>

namespace qelcommontest
{

TraceCapture::TraceCapture()
{
    qelsim::clearCapturedLog();
    qelsim::captureLog(true);
}

TraceCapture::~TraceCapture()
{
    qelsim::captureLog(false);
    qelsim::clearCapturedLog();
}

std::vector<qelsim::LogLine> TraceCapture::lines() const
{
    return qelsim::capturedLog();
}

size_t TraceCapture::count(int level, const std::string& text) const
{
    size_t n = 0;
    for (const auto& line : lines())
    {
        if (line.level == level && line.text == text)
        {
            n++;
        }
    }
    return n;
}

std::vector<std::string> TraceCapture::texts() const
{
    std::vector<std::string> out;
    for (const auto& line : lines())
    {
        out.push_back(line.text);
    }
    return out;
}

ScopedTimeZone::ScopedTimeZone(const char* tz)
{
    const char* previous = getenv("TZ");
    _had = previous != nullptr;
    _previous = previous ? previous : "";
    setenv("TZ", tz, 1);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone()
{
    if (_had)
    {
        setenv("TZ", _previous.c_str(), 1);
    }
    else
    {
        unsetenv("TZ");
    }
    tzset();
}

void loadTestArrayWithSystem(const std::string& systemMembers)
{
    nlohmann::json doc = nlohmann::json::parse(qelsim::demoArrayText());
    if (!systemMembers.empty())
    {
        nlohmann::json extra = nlohmann::json::parse("{" + systemMembers + "}");
        for (auto it = extra.begin(); it != extra.end(); ++it)
        {
            doc["system"][it.key()] = it.value();
        }
    }
    doc["log"] = {{"level", 1}, {"destination", "stderr"}};
    qelsim::Result r = qelsim::loadArrayText(doc.dump());
    ASSERT_TRUE(r.ok) << r.error;
    qelsim::clearFaults();
}

void loadTestArray()
{
    loadTestArrayWithSystem("");
}

namespace
{

// Collects what a provider's invokeMethod delivers.
class CollectingMethodHandler : public MethodResultResponseHandler
{
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue& p) override { out.append(p); }
    void deliverParamValue(const Array<CIMParamValue>& ps) override { out.appendArray(ps); }
    void deliver(const CIMValue& v) override { returnValue = v; }
    Array<CIMParamValue> out;
    CIMValue returnValue;
};

CIMValue askRealProvider(const MethodCall& call, Array<CIMParamValue>& out)
{
    QEL_InternalCacheProvider provider;
    CollectingMethodHandler handler;
    OperationContext context;
    provider.invokeMethod(context, CIMObjectPath(String(call.path.c_str())), String(call.method.c_str()),
        Array<CIMParamValue>(), handler);
    out = handler.out;
    return handler.returnValue;
}

// The operations the helpers never use fail loudly.
#define QEL_UNUSED_OP(signature, name) \
    signature override { throw CIMException(CIM_ERR_NOT_SUPPORTED, name); }

MethodCall describe(const char* route, const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& method,
    const Array<CIMParamValue>& in)
{
    return MethodCall{route, (const char*)ns.getString().getCString(), (const char*)path.toString().getCString(),
        (const char*)method.getString().getCString(), in.size()};
}

class ScriptedTransport : public ClientTransport
{
public:
    explicit ScriptedTransport(ScriptedServer* server) : _server(server) { _server->opened(); }
    ~ScriptedTransport() override { _server->closed(); }

    void setTimeout(Uint32) override {}
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName&, const CIMName& cls) override
    {
        return _server->enumerate("local", cls);
    }
    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        return _server->invoke(describe("local", ns, path, method, in), out);
    }
    QEL_UNUSED_OP(CIMClass getClass(const CIMNamespaceName&, const CIMName&, Boolean, Boolean, Boolean,
                      const CIMPropertyList&), "getClass")
    QEL_UNUSED_OP(CIMInstance getInstance(const CIMNamespaceName&, const CIMObjectPath&, Boolean, Boolean, Boolean,
                      const CIMPropertyList&), "getInstance")
    QEL_UNUSED_OP(Array<CIMInstance> enumerateInstances(const CIMNamespaceName&, const CIMName&, Boolean, Boolean,
                      Boolean, Boolean, const CIMPropertyList&), "enumerateInstances")
    QEL_UNUSED_OP(CIMObjectPath createInstance(const CIMNamespaceName&, const CIMInstance&), "createInstance")
    QEL_UNUSED_OP(void modifyInstance(const CIMNamespaceName&, const CIMInstance&, Boolean, const CIMPropertyList&),
        "modifyInstance")
    QEL_UNUSED_OP(void deleteInstance(const CIMNamespaceName&, const CIMObjectPath&), "deleteInstance")
    QEL_UNUSED_OP(Array<CIMObject> associators(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                      const CIMName&, const String&, const String&, Boolean, Boolean, const CIMPropertyList&),
        "associators")
    QEL_UNUSED_OP(Array<CIMObjectPath> associatorNames(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                      const CIMName&, const String&, const String&), "associatorNames")
    QEL_UNUSED_OP(Array<CIMObject> references(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                      const String&, Boolean, Boolean, const CIMPropertyList&), "references")
    QEL_UNUSED_OP(Array<CIMObjectPath> referenceNames(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                      const String&), "referenceNames")

private:
    ScriptedServer* _server;
};

class ScriptedCimom : public CIMOMHandleRep
{
public:
    explicit ScriptedCimom(ScriptedServer* server) : _server(server) {}

    CIMClass getClass(const OperationContext&, const CIMNamespaceName&, const CIMName& cls, Boolean, Boolean,
        Boolean, const CIMPropertyList&) override
    {
        int n = ++_server->getClassCalls;
        if (cls.equal("Missing"))
        {
            throw CIMException(CIM_ERR_NOT_FOUND, "Missing");
        }
        CIMClass c = makeTestClass(cls);
        c.addProperty(CIMProperty(String("Fetch") + String(std::to_string(n).c_str()), CIMValue(Uint32(n))));
        return c;
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext&, const CIMNamespaceName&,
        const CIMName& cls) override
    {
        return _server->enumerate("cimom", cls);
    }
    CIMValue invokeMethod(const OperationContext&, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        return _server->invoke(describe("cimom", ns, path, method, in), out);
    }
    QEL_UNUSED_OP(CIMInstance getInstance(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&,
                      Boolean, Boolean, Boolean, const CIMPropertyList&), "getInstance")
    QEL_UNUSED_OP(Array<CIMInstance> enumerateInstances(const OperationContext&, const CIMNamespaceName&,
                      const CIMName&, Boolean, Boolean, Boolean, Boolean, const CIMPropertyList&),
        "enumerateInstances")
    QEL_UNUSED_OP(void modifyInstance(const OperationContext&, const CIMNamespaceName&, const CIMInstance&, Boolean,
                      const CIMPropertyList&), "modifyInstance")
    QEL_UNUSED_OP(Array<CIMObject> associators(const OperationContext&, const CIMNamespaceName&,
                      const CIMObjectPath&, const CIMName&, const CIMName&, const String&, const String&, Boolean,
                      Boolean, const CIMPropertyList&), "associators")
    QEL_UNUSED_OP(Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                      const CIMObjectPath&, const CIMName&, const CIMName&, const String&, const String&),
        "associatorNames")
    QEL_UNUSED_OP(Array<CIMObject> references(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&,
                      const CIMName&, const String&, Boolean, Boolean, const CIMPropertyList&), "references")
    QEL_UNUSED_OP(Array<CIMObjectPath> referenceNames(const OperationContext&, const CIMNamespaceName&,
                      const CIMObjectPath&, const CIMName&, const String&), "referenceNames")

private:
    ScriptedServer* _server;
};

} // namespace

ScriptedServer::ScriptedServer()
{
    methods = askRealProvider;
    names = [](const std::string&, const CIMName&) { return Array<CIMObjectPath>(); };
    _previous = setLocalTransportFactory([this](Uint32) -> std::unique_ptr<ClientTransport> {
        if (localDown)
        {
            throw CannotConnectException("local connection refused");
        }
        return std::unique_ptr<ClientTransport>(new ScriptedTransport(this));
    });
}

ScriptedServer::~ScriptedServer()
{
    setLocalTransportFactory(_previous);
}

CIMOMHandle ScriptedServer::handle()
{
    return CIMOMHandle(std::make_shared<ScriptedCimom>(this));
}

std::vector<MethodCall> ScriptedServer::calls() const
{
    std::lock_guard<std::mutex> guard(_lock);
    return _calls;
}

CIMValue ScriptedServer::invoke(const MethodCall& call, Array<CIMParamValue>& out)
{
    {
        std::lock_guard<std::mutex> guard(_lock);
        _calls.push_back(call);
    }
    return methods(call, out);
}

Array<CIMObjectPath> ScriptedServer::enumerate(const std::string& route, const CIMName& cls)
{
    return names(route, cls);
}

CIMClass makeTestClass(const CIMName& name)
{
    CIMClass c(name);
    CIMProperty id("InstanceID", CIMValue(String()));
    id.addQualifier(CIMQualifier("Key", CIMValue(true)));
    c.addProperty(id);
    c.addProperty(CIMProperty("Name", CIMValue(String("default"))));
    c.addProperty(CIMProperty("Code", CIMValue(CIMTYPE_UINT16, false)));
    return c;
}

} // namespace qelcommontest
