#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace qelcommontest
{

size_t TraceCapture::count(int level, const std::string& text) const
{
    const std::vector<qelsim::LogLine> lines = qelsim::capturedLog();
    return std::count_if(
        lines.begin(), lines.end(),
        [&](const qelsim::LogLine& line) { return line.level == level && line.text == text; });
}

Texts TraceCapture::texts(const char* holding) const
{
    Texts out;
    for (const auto& line : qelsim::capturedLog())
    {
        if (line.text.find(holding) != std::string::npos)
            out.push_back(line.text);
    }
    return out;
}

ScopedTimeZone::ScopedTimeZone(const char* tz)
    : _had(getenv("TZ") != nullptr), _previous(_had ? getenv("TZ") : "")
{
    setenv("TZ", tz, 1);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone()
{
    _had ? setenv("TZ", _previous.c_str(), 1) : unsetenv("TZ");
    tzset();
}

void loadTestArrayWithSystem(const std::string& systemMembers)
{
    nlohmann::json doc = nlohmann::json::parse(qelsim::demoArrayText());
    if (!systemMembers.empty())
    {
        nlohmann::json extra = nlohmann::json::parse("{" + systemMembers + "}");
        for (auto it = extra.begin(); it != extra.end(); ++it)
            doc["system"][it.key()] = it.value();
    }
    doc["log"] = {{"level", 1}, {"destination", "stderr"}};
    qelsim::Result r = qelsim::loadArrayText(doc.dump());
    ASSERT_TRUE(r.ok) << r.error;
    qelsim::clearFaults();
}

namespace
{

class ScriptedCimom : public qeltest::CacheHandleRep
{
public:
    explicit ScriptedCimom(ScriptedServer& server) : CacheHandleRep(server), _server(server) {}

    CIMOperationResponse
    execute(const OperationContext& context, const CIMOperationRequest& r) override
    {
        if (r.operation != CIMOperationType::GetClass)
            return CacheHandleRep::execute(context, r);
        const int n = ++_server.getClassCalls;
        if (r.className.equal("Missing"))
            throw CIMException(CIM_ERR_NOT_FOUND, "Missing");
        CIMOperationResponse response;
        response.cimClass = makeTestClass(r.className);
        response.cimClass.addProperty(
            CIMProperty(String("Fetch") + String(std::to_string(n).c_str()), CIMValue(Uint32(n))));
        return response;
    }

private:
    ScriptedServer& _server;
};

}  // namespace

CIMOMHandle ScriptedServer::handle()
{
    return CIMOMHandle(std::make_shared<ScriptedCimom>(*this));
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

}  // namespace qelcommontest
