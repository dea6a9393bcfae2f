// The server with the array's real modules (libQEL_FCPortProvider and the
// internal cache provider) on the simulated demo array: every operation
// QEL_FCPort and QEL_InternalCache support, end to end in process. What the
// providers answer in detail is tested with them; here: loading on first
// use, routing, deep inheritance and the client's identity reaching the array.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>
#include <Server/core/ProviderManager.h>

#include <Pegasus/Client/CIMClient.h>

#include <qelsim_control.h>

using namespace Pegasus;
using namespace servertest;

namespace
{

const CIMNamespaceName qel("root/qel");
const CIMNamespaceName internal("root/PG_Internal");

class ArrayServer : public ServerTest
{
protected:
    void SetUp() override
    {
        qelsim::Result loaded = qelsim::loadArrayText(qelsim::demoArrayText());
        ASSERT_TRUE(loaded.ok) << loaded.error;
        qelsim::clearFaults();
        qelsim::clearCallLog();
        ServerTest::SetUp();
        context = Dispatcher::requestContext("remoteop", "192.168.10.5");
    }

    // With CIMClient's defaults.
    Array<CIMInstance> enumerate(const char* className, bool deepInheritance = true)
    {
        return cimom().enumerateInstances(
            context, qel, className, deepInheritance, true, false, false, CIMPropertyList());
    }

    // 0:1:1, 20110002AC00A001.
    CIMObjectPath firstPort()
    {
        return cimom().enumerateInstanceNames(context, qel, "QEL_FCPort")[0];
    }

    static std::string value(const CIMInstance& instance, const char* name)
    {
        Uint32 pos = instance.findProperty(name);
        return pos == PEG_NOT_FOUND ? "(absent)"
                                    : text(instance.getProperty(pos).getValue().toString());
    }

    // The library calls made, as the simulator logged them.
    static std::vector<qelsim::CallRecord> calls(const std::string& name)
    {
        std::vector<qelsim::CallRecord> found;
        for (const qelsim::CallRecord& r : qelsim::callLog())
            if (r.call == name)
                found.push_back(r);
        return found;
    }
};

CIMInstance modeChange(const CIMObjectPath& path)
{
    CIMInstance instance("QEL_FCPort");
    instance.addProperty(CIMProperty("Mode", CIMValue(Uint16(2))));
    instance.setPath(path);
    return instance;
}

CIMPropertyList only(const char* name)
{
    return CIMPropertyList(Array<CIMName>(1, CIMName(name)));
}

}  // namespace

TEST_F(ArrayServer, EnumerationsListThePortsOfTheArray)
{
    const ProviderId* portProvider = server().registry().instanceProvider(qel, "QEL_FCPort");
    ASSERT_NE(portProvider, nullptr);
    EXPECT_FALSE(server().providers().isInitialized(*portProvider));  // loaded on first use

    Array<CIMObjectPath> names = cimom().enumerateInstanceNames(context, qel, "QEL_FCPort");
    ASSERT_EQ(names.size(), 6u);  // the record with WWN 0 is not a port
    // The host name came from the internal cache provider during initialize.
    EXPECT_EQ(
        text(names[0].toString()),
        "//demo01.example.net/root/qel:QEL_FCPort.CreationClassName=\"QEL_FCPort\","
        "DeviceID=\"20110002AC00A001\",SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\"");
    EXPECT_TRUE(server().providers().isInitialized(*portProvider));

    Array<CIMInstance> ports = enumerate("QEL_FCPort");
    ASSERT_EQ(ports.size(), 6u);
    EXPECT_EQ(value(ports[0], "PermanentAddress"), "20110002AC00A001");
    EXPECT_EQ(ports[0].getQualifierCount(), 0u);  // not asked for
    Array<CIMInstance> loop = enumerate("QEL_FCALPort");
    ASSERT_EQ(loop.size(), 6u);
    EXPECT_EQ(value(loop[0], "SystemName"), "DEMO01-N0-LOOP");

    // The parent class gathers both views; without deep inheritance only
    // its own properties come back.
    EXPECT_EQ(enumerate("CIM_FCPort").size(), 12u);
    Array<CIMInstance> shallow = enumerate("CIM_FCPort", false);
    ASSERT_EQ(shallow.size(), 12u);
    EXPECT_EQ(value(shallow[0], "NodeWWN"), "(absent)");
    EXPECT_EQ(value(shallow[0], "DeviceID"), "20110002AC00A001");

    // GetInstance with a property list, by the keys the enumeration gave.
    EXPECT_EQ(
        cimom()
            .getInstance(context, qel, names[1], false, false, false, only("Speed"))
            .getPropertyCount(),
        1u);
    // Every list handed out by the library went back.
    EXPECT_EQ(qelsim::outstandingFCLists(qelsim::counters()), 0u);
}

TEST_F(ArrayServer, ChangesReachTheArrayWithTheClientsIdentity)
{
    CIMObjectPath first = firstPort();
    cimom().modifyInstance(context, qel, modeChange(first), false, only("Mode"));
    std::vector<qelsim::CallRecord> set = calls("api_setFCPortMode");
    ASSERT_EQ(set.size(), 1u);
    ASSERT_TRUE(set[0].hasEvent);
    EXPECT_STREQ(set[0].event.user, "remoteop");
    EXPECT_STREQ(set[0].event.addr, "192.168.10.5");
    EXPECT_EQ(set[0].result, 0);

    Array<CIMParamValue> out;
    EXPECT_EQ(text(cimom().invokeMethod(context, qel, first, "reset", {}, out).toString()), "0");
    EXPECT_EQ(calls("api_resetPort").size(), 1u);

    // An untyped parameter, as a CIM-XML client may send it, arrives as the
    // declared string.
    Array<CIMParamValue> in(1, CIMParamValue("CageName", CIMValue(String("cage1")), false));
    EXPECT_EQ(
        text(cimom().invokeMethod(context, qel, first, "InitializeLoop", in, out).toString()), "0");
    std::vector<qelsim::CallRecord> loops = calls("api_initFCPortLoop");
    ASSERT_EQ(loops.size(), 1u);
    EXPECT_NE(loops[0].text().find("\"cage1\""), std::string::npos) << loops[0].text();
}

// The roles themselves are tested with the array and end to end; here: the
// address of the request reaches the array's judgement.
TEST_F(ArrayServer, AnEditUserFromAnotherAddressIsRefused)
{
    Array<CIMParamValue> out;
    const OperationContext elsewhere = Dispatcher::requestContext("remoteop", "192.0.2.99");
    CIMException e =
        cimErrorOf([&] { cimom().invokeMethod(elsewhere, qel, firstPort(), "Reset", {}, out); });
    EXPECT_EQ(e.getCode(), CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(text(e.getMessage()), "Insufficient generic privilege");
    EXPECT_TRUE(calls("api_resetPort").empty());
}

// Through a local client connection, as the module's own identity calls go.
TEST_F(ArrayServer, InternalCacheAnswersTheIdentityMethods)
{
    const CIMObjectPath cache("QEL_InternalCache.InstanceID=\"localhost-InternalCache\"");
    const struct
    {
        const char* method;
        const char* parameter;
        const char* value;
    } cases[] = {
        {"GetSystemName", "SystemName", "DEMO01"},
        {"GetSystemHostName", "SystemHostName", "demo01.example.net"},
        {"GetSystemID", "SystemID", "1234567"},
        {"GetSystemType", "SystemType", "4"},
        {"GetSystemAddress", "SystemAddress", "192.168.10.20"},
        {"IsQuadPortSystem", "IsQuadPort", "0"},
    };
    CIMClient client;
    client.connectLocal();
    for (const auto& c : cases)
    {
        Array<CIMParamValue> out;
        client.invokeMethod(internal, cache, c.method, {}, out);
        ASSERT_EQ(out.size(), 1u) << c.method;
        EXPECT_EQ(text(out[0].getParameterName()), c.parameter);
        EXPECT_EQ(text(out[0].getValue().toString()), c.value) << c.method;
    }
    EXPECT_EQ(client.enumerateInstanceNames(internal, "QEL_InternalCache").size(), 1u);
}
