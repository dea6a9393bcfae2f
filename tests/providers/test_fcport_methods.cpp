// The five extrinsic methods of QEL_FCPort.
#include "PegasusPrinters.h"
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>
#include <functional>
#include <initializer_list>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

const char PORT_B[] = "21230002AC001235";  // 1:2:3, PORT_OFFLINE

const std::vector<std::string> ACTION_CALLS = {"api_setPortOffline", "api_resetPort",
    "api_reloadPortFW", "api_syncFCPortDB", "api_initFCPortLoop"};

CIMObjectPath portRef(const char* deviceID)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", "QEL_NodeSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", "qel-node1", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", "QEL_FCPort", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", deviceID, CIMKeyBinding::STRING));
    return CIMObjectPath("", CIMNamespaceName("root/qel"), "QEL_FCPort", keys);
}

Array<CIMParamValue> cageName(const char* cage)
{
    Array<CIMParamValue> parameters;
    if (cage != nullptr)
    {
        parameters.append(CIMParamValue("CageName", CIMValue(String(cage))));
    }
    return parameters;
}

class FCPortMethods : public ProviderTest
{
protected:
    std::string arrayFixture() const override
    {
        // fc_ports.json with one cage the array knows.
        std::string json = fixtureText("fc_ports.json");
        const std::string ipv4 = "\"ipv4\": \"192.0.2.7\"";
        json.replace(json.find(ipv4), ipv4.size(), ipv4 + ", \"cages\": [\"cage1\"]");
        return json;
    }

    void SetUp() override
    {
        ProviderTest::SetUp();
        lpidB = std::to_string(api_findFCPortLPID(PORT_B));
        testing::internal::CaptureStdout();
        provider = dynamic_cast<QEL_FCPortProvider*>(
            host().startProvider("QEL_FCPortProvider", {"QEL_FCPort", "QEL_FCALPort"}));
        testing::internal::GetCapturedStdout();
        ASSERT_NE(provider, nullptr);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        qelsim::resetCounters();
    }

    // The delivered return value; the handler saw processing, deliver, complete.
    Sint32 invoke(const char* method, const Array<CIMParamValue>& in = Array<CIMParamValue>(),
        const OperationContext& context = asOperator(), const char* deviceID = PORT_B)
    {
        RecordingMethodHandler handler;
        try
        {
            provider->invokeMethod(context, portRef(deviceID), method, in, handler);
        }
        catch (...)
        {
            EXPECT_TRUE(handler.record.untouched()) << handler.record.sequence();
            throw;
        }
        EXPECT_EQ(handler.record.sequence(), "processing deliver complete");
        EXPECT_TRUE(handler.outParameters.empty());
        if (handler.returnValues.size() != 1)
        {
            ADD_FAILURE() << "no return value";
            return -999;
        }
        Sint32 result = -999;
        handler.returnValues[0].get(result);  // a Sint32, or this throws
        return result;
    }

    std::string action(const char* call, const char* extra = nullptr)
    {
        return std::string(call) + "(ptr, 1, [" + lpidB + "]" +
            (extra ? std::string(", ") + extra : std::string()) + ")";
    }

    CIMValue enabledState()
    {
        const Array<CIMInstance> ports = QEL_FCPortProvider::buildInstances(host().handle(),
            "QEL_FCPort", 0x21230002AC001235ULL, false, false, CIMPropertyList(), "h");
        EXPECT_EQ(ports.size(), 1u);
        return ports[0].getProperty(ports[0].findProperty("EnabledState")).getValue();
    }

    QEL_FCPortProvider* provider = nullptr;
    std::string lpidB;
};

TEST_F(FCPortMethods, EachMethodIsOneLibraryAction)
{
    struct Case
    {
        const char* method;
        Array<CIMParamValue> in;
        std::string call;
        const char* key;
    };
    const Case cases[] = {
        {"SetOffline", Array<CIMParamValue>(), action("api_setPortOffline"), "qel_fcport.setoffline"},
        {"Reset", Array<CIMParamValue>(), action("api_resetPort"), "qel_fcport.reset"},
        {"reset", Array<CIMParamValue>(), action("api_resetPort"), "qel_fcport.reset"},
        {"ReloadFirmware", cageName("cage1"), action("api_reloadPortFW"), "qel_fcport.reloadfirmware"},
        {"SyncDatabase", Array<CIMParamValue>(), action("api_syncFCPortDB"), "qel_fcport.syncdatabase"},
        {"InitializeLoop", cageName("cage1"), action("api_initFCPortLoop", "\"cage1\""),
            "qel_fcport.initializeloop"},
        {"InitializeLoop", cageName(""), action("api_initFCPortLoop", "null"),
            "qel_fcport.initializeloop"},
        {"initializeloop", Array<CIMParamValue>(), action("api_initFCPortLoop", "null"),
            "qel_fcport.initializeloop"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.method);
        qelsim::clearCallLog();
        EXPECT_EQ(invoke(c.method, c.in), 0);
        EXPECT_EQ(callsNamed(ACTION_CALLS), std::vector<std::string>{c.call});
        EXPECT_EQ(callsNamed({"api_authorizeCIMUser"}), std::vector<std::string>{
            "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"" + std::string(c.key) + "\")"});

        // The event record names the class and the method as the client spelled it.
        const std::vector<qelsim::CallRecord> log = qelsim::callLog();
        const auto acted = std::find_if(log.begin(), log.end(), [](const qelsim::CallRecord& r) {
            return std::find(ACTION_CALLS.begin(), ACTION_CALLS.end(), r.call) != ACTION_CALLS.end();
        });
        ASSERT_NE(acted, log.end());
        ASSERT_TRUE(acted->hasEvent);
        EXPECT_EQ(std::string(acted->event.method), std::string("QEL_FCPort:") + c.method);
        EXPECT_STREQ(acted->event.inst_op, "");
        EXPECT_STREQ(acted->event.user, "operator");
        EXPECT_STREQ(acted->event.addr, "192.0.2.10");
    }
}

TEST_F(FCPortMethods, ActionsChangeThePortState)
{
    EXPECT_EQ(enabledState(), CIMValue(Uint16(6)));
    EXPECT_EQ(invoke("Reset"), 0);
    EXPECT_EQ(enabledState(), CIMValue(Uint16(2)));
    EXPECT_EQ(invoke("SetOffline"), 0);
    EXPECT_EQ(enabledState(), CIMValue(Uint16(6)));
}

TEST_F(FCPortMethods, LibraryStatusIsTheReturnValue)
{
    // A status the library gives back, and an unknown cage.
    ASSERT_TRUE(qelsim::injectFault("api_resetPort", API_ERR_IO, 1).ok);
    EXPECT_EQ(invoke("Reset"), API_ERR_IO);
    EXPECT_EQ(invoke("InitializeLoop", cageName("cage9")), API_ERR_NOENT);

    // A failed wait: no action, no post, the wait's result is returned.
    qelsim::clearCallLog();
    qelsim::resetCounters();
    ASSERT_TRUE(qelsim::failSemaphoreWait(API_ERR_BUSY, 1).ok);
    EXPECT_EQ(invoke("SyncDatabase"), API_ERR_BUSY);
    EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
    EXPECT_EQ(qelsim::counters().semPosts, 0u);
}

TEST_F(FCPortMethods, UnknownMethodSilentlyReturnsZero)
{
    // The array knows no key for it: refused as not supported.
    EXPECT_THROW(invoke("Frobnicate"), TraceableCIMException);

    // Once authorized under its own key, it answers 0 without a library action.
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    qelsim::clearCallLog();
    qelsim::clearCapturedLog();
    EXPECT_EQ(invoke("Frobnicate"), 0);
    EXPECT_EQ(callsNamed({"api_authorizeCIMUser"}), std::vector<std::string>{
        "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcport.frobnicate\")"});
    EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
    EXPECT_EQ(qelsim::counters().semWaits, 0u);
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE).size(), 2u) << "only the entry and exit lines";
}

TEST_F(FCPortMethods, UnknownDeviceIsNotFound)
{
    EXPECT_EQ(thrown<CIMOperationFailedException>([&] {
        invoke("Reset", Array<CIMParamValue>(), asOperator(), "00000000DEADBEEF"); }),
        "QEL_FCPortProvider::invokeMethod()  Device not found with DeviceID=00000000DEADBEEF");
    EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
}

TEST_F(FCPortMethods, AccessRefusalsCarryTheirLines)
{
    struct Case
    {
        std::function<void()> arrange;
        const char* user;
        const char* refusal;
    };
    const Case cases[] = {
        {[] { qelsim::refuseSessions(); }, "admin",
            "QEL_FCPortProvider(528): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user"},
        {[] {}, "nobody",
            "QEL_FCPortProvider(528): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user"},
        {[] {}, "viewer",  // the browse role
            "QEL_FCPortProvider(529): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {[] { qelsim::forceAuthorization(2); }, "admin",
            "QEL_FCPortProvider(529): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {[] { qelsim::forceAuthorization(3); }, "admin",
            "QEL_FCPortProvider(529): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
    };
    for (const char* method : {"SetOffline", "Reset", "ReloadFirmware", "SyncDatabase",
             "InitializeLoop"})
    {
        for (const Case& c : cases)
        {
            SCOPED_TRACE(std::string(method) + " as " + c.user + ": " + c.refusal);
            qelsim::clearFaults();
            c.arrange();
            qelsim::clearCallLog();
            EXPECT_EQ(refusal([&] { invoke(method, Array<CIMParamValue>(), asUser(c.user)); }),
                c.refusal);
            EXPECT_TRUE(callsNamed({"api_findFCPortLPID"}).empty());
            EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
        }
    }
}

TEST_F(FCPortMethods, TracesAtTheFailureLevel)
{
    invoke("Reset");
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE), (std::vector<std::string>{
        "-->QEL_FCPortProvider::invokeMethod()\n\t className = QEL_FCPort, methodName = Reset\n",
        "<--QEL_FCPortProvider::invokeMethod()\n"}));
}

} // namespace
