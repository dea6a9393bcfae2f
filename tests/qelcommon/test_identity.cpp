// The storage system's identity through the internal cache: the local client connection, the fall-back
// through the server handle, the choice of the answer, and the well-known instance paths.
#include "QEL_Common.h"
#include "QEL_InternalCacheService.h"
#include "qelcommon_test_support.h"

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

struct IdentityCase
{
    const char* method;
    bool hasFallback;
    std::function<std::string(CIMOMHandle&)> call;  // the answer as text
    const char* demoAnswer;
};

static std::string text(const String& s)
{
    return (const char*)s.getCString();
}

const std::vector<IdentityCase> IDENTITY_CASES = {
    {"GetSystemHostName", false,
     [](CIMOMHandle& h) { return text(QEL_Common::getSystemHostName(h)); }, "demo01.example.net"},
    {"GetSystemName", false, [](CIMOMHandle&) { return text(QEL_Common::getSystemName()); },
     "DEMO01"},
    {"GetSystemName", true, [](CIMOMHandle& h) { return text(QEL_Common::getSystemName(h)); },
     "DEMO01"},
    {"GetSystemID", false, [](CIMOMHandle&) { return std::to_string(QEL_Common::getSystemID()); },
     "1234567"},
    {"GetSystemType", false,
     [](CIMOMHandle&) { return std::to_string(QEL_Common::getSystemType()); }, "4"},
    {"IsQuadPortSystem", true,
     [](CIMOMHandle& h) { return std::to_string(QEL_Common::isQuadPortSystem(h)); }, "0"},
    {"GetSystemAddress", true, [](CIMOMHandle& h) { return text(QEL_Common::getSystemAddress(h)); },
     "192.168.10.20"},
};

TEST(Identity, EveryCallAsksTheInternalCacheOverItsOwnLocalConnection)
{
    loadTestArray();
    for (const IdentityCase& c : IDENTITY_CASES)
    {
        SCOPED_TRACE(c.method);
        ScriptedServer server;
        CIMOMHandle handle = server.handle();
        EXPECT_EQ(c.demoAnswer, c.call(handle));
        EXPECT_EQ(Texts{"local:" + std::string(c.method)}, server.callNames());
        const MethodCall call = server.calls().at(0);
        EXPECT_EQ("root/PG_Internal", call.nameSpace);
        EXPECT_EQ(
            "//localhost/root/PG_Internal:QEL_InternalCache.InstanceID=\"localhost-InternalCache\"",
            call.path);
        EXPECT_EQ(0u, call.inCount);
        EXPECT_EQ(1, server.connections());
        EXPECT_EQ(1, server.disconnects());
    }
    // The policy word is the service singleton's.
    const Uint32 before = QEL_Common::getPolicy();
    QEL_Common::setPolicy(0xA5A5u);
    EXPECT_EQ(0xA5A5u, QEL_InternalCacheService::getInstance()->getPolicy());
    QEL_Common::setPolicy(before);
    EXPECT_EQ(
        String("//h1/root/PG_Internal:QEL_InternalCache.InstanceID=\"S1-InternalCache\""),
        QEL_Common::buildInternalCacheObjectPath("h1", "S1").toString());
}

TEST(Identity, LocalFailureFallsBackThroughTheHandleOnlyWhereDesigned)
{
    loadTestArrayWithSystem("\"quadPort\": true");
    for (const IdentityCase& c : IDENTITY_CASES)
    {
        SCOPED_TRACE(c.method + std::string(c.hasFallback ? " (fall-back)" : ""));
        ScriptedServer server;
        server.localDown = true;
        CIMOMHandle handle = server.handle();
        if (!c.hasFallback)
        {
            EXPECT_THROW(c.call(handle), CannotConnectException);
            EXPECT_TRUE(server.calls().empty());
            continue;
        }
        EXPECT_EQ(std::string(c.method) == "IsQuadPortSystem" ? "1" : c.demoAnswer, c.call(handle));
        EXPECT_EQ(Texts{"cimom:" + std::string(c.method)}, server.callNames());
    }
    // The fall-back is tried once; its failure is the caller's.
    ScriptedServer server;
    server.methods = [](const MethodCall& call, Array<CIMParamValue>&) -> CIMValue
    { throw CIMException(CIM_ERR_FAILED, String(call.route.c_str())); };
    CIMOMHandle handle = server.handle();
    EXPECT_THROW(QEL_Common::getSystemName(handle), CIMException);
    EXPECT_EQ((Texts{"local:GetSystemName", "cimom:GetSystemName"}), server.callNames());
}

TEST(Identity, AnswerIsTakenOnlyFromAValuedFirstEntryOfTheExpectedName)
{
    loadTestArray();
    const std::vector<std::pair<std::vector<CIMParamValue>, const char*>> cases = {
        {{CIMParamValue("systemname", CIMValue(String("A")))}, "A"},
        {{CIMParamValue("Other", CIMValue(String("x"))),
          CIMParamValue("SystemName", CIMValue(String("B")))},
         ""},
        {{CIMParamValue("SystemName", CIMValue(CIMTYPE_STRING, false))}, ""},
        {{CIMParamValue("SystemHostName", CIMValue(String("C")))}, ""},
        {{}, ""},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.second);
        ScriptedServer server;
        server.methods = [&](const MethodCall&, Array<CIMParamValue>& out)
        {
            for (const CIMParamValue& p : c.first)
                out.append(p);
            return CIMValue(Uint32(1));  // the return value is ignored
        };
        CIMOMHandle handle = server.handle();
        EXPECT_EQ(String(c.second), QEL_Common::getSystemName(handle));
        EXPECT_EQ(0u, QEL_Common::getSystemID());
        EXPECT_EQ(0, QEL_Common::getSystemType());
    }
}

TEST(WellKnownPaths, FoundPathGetsHostAndNamespaceAndLocalFailuresAreRetried)
{
    loadTestArray();
    ScriptedServer server;
    int localFailure = 0;  // 0 none, 1 CIM error, 2 other error
    server.names = [&](const std::string& route, const CIMName& cls)
    {
        if (route == "local" && localFailure == 1)
            throw CIMException(CIM_ERR_FAILED, "enumeration refused");
        if (route == "local" && localFailure == 2)
            throw CannotConnectException("socket gone");
        Array<CIMObjectPath> paths(1, CIMObjectPath(String(), CIMNamespaceName(), cls));
        paths.append(CIMObjectPath("//other/root/qel:Second"));
        return paths;
    };
    CIMOMHandle handle = server.handle();
    TraceCapture trace;
    const String root("//demo01.example.net/root/qel:");
    EXPECT_EQ(root + "QEL_StorageSystem", QEL_Common::getSystemObjectPath(handle).toString());
    EXPECT_EQ(root + "QEL_SystemPackage", QEL_Common::getSystemPkgObjectPath(handle).toString());
    EXPECT_EQ(
        root + "QEL_StorageSystemView", QEL_Common::getSystemViewObjectPath(handle).toString());
    // The package locator writes neither entry nor exit trace.
    EXPECT_EQ(
        trace.texts("ObjectPath"),
        (Texts{
            "-->QEL_Common::getSystemObjectPath()\n", "<--QEL_Common::getSystemObjectPath()\n",
            "-->QEL_Common::getSystemViewObjectPath()\n",
            "<--QEL_Common::getSystemViewObjectPath()\n"}));

    localFailure = 1;
    EXPECT_FALSE(QEL_Common::getSystemObjectPath(handle).getClassName().isNull());
    EXPECT_TRUE(
        trace.has(2, "QEL_Common::getSystemObjectPath: enumeration refused. Trying via cimom.\n"));
    localFailure = 2;
    EXPECT_FALSE(QEL_Common::getSystemPkgObjectPath(handle).getClassName().isNull());
    EXPECT_TRUE(
        trace.has(2, "QEL_Common::getSystemPkgObjectPath: Unknown exception! Trying via cimom\n"));
}

TEST(WellKnownPaths, MissingInstanceAndFailedFallBack)
{
    loadTestArray();
    ScriptedServer server;
    CIMOMHandle handle = server.handle();
    {
        TraceCapture trace;
        EXPECT_TRUE(QEL_Common::getSystemObjectPath(handle).getClassName().isNull());
        EXPECT_TRUE(trace.has(2, "cannot get at system object path\n"));
        EXPECT_FALSE(trace.has(4, "<--QEL_Common::getSystemObjectPath()\n"));
    }
    server.names = [](const std::string& route, const CIMName&) -> Array<CIMObjectPath>
    {
        if (route == "local")
            throw CannotConnectException("down");
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, "no root/qel");
    };
    // Only the system locator lets the handle's failure through.
    EXPECT_THROW(QEL_Common::getSystemObjectPath(handle), CIMException);
    TraceCapture trace;
    EXPECT_TRUE(QEL_Common::getSystemPkgObjectPath(handle).getClassName().isNull());
    EXPECT_TRUE(QEL_Common::getSystemViewObjectPath(handle).getClassName().isNull());
    for (const char* line :
         {"QEL_Common::getSystemPkgObjectPath: no root/qel.\n",
          "cannot get at system pkg object path\n",
          "QEL_Common::getSystemViewObjectPath: no root/qel.\n",
          "cannot get at system view object path\n"})
    {
        EXPECT_TRUE(trace.has(2, line)) << line;
    }
}
