// What changes a QEL_FCPort: modifyInstance (which settings become which library calls, in which order)
// and the five extrinsic methods, with every refusal on the way.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/ProviderException.h>

#include <functional>
#include <initializer_list>
#include <map>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

const char PORT_A[] = "20110002AC001234";  // 0:1:1, mode 1, mode change allowed
const char PORT_B[] = "21230002AC001235";  // 1:2:3, PORT_OFFLINE

const Texts CHANGE_CALLS = {"api_setFCPortMode", "api_setFCPortConnType", "api_setFCPortClass2",
                            "api_setFCPortVCN",  "api_setFCPortIntCoal",  "api_setFCPortSpeed"};
const Texts ACTION_CALLS = {
    "api_setPortOffline", "api_resetPort", "api_reloadPortFW", "api_syncFCPortDB",
    "api_initFCPortLoop"};

static CIMValue u16(Uint16 value)
{
    return CIMValue(value);
}

static CIMInstance settings(std::initializer_list<std::pair<const char*, CIMValue>> values)
{
    CIMInstance instance("QEL_FCPort");
    for (const auto& v : values)
        instance.addProperty(CIMProperty(v.first, v.second));
    return instance;
}

const CIMInstance MODE_2 = settings({{"Mode", u16(2)}});

static Array<CIMParamValue> cageName(const char* cage)
{
    return Array<CIMParamValue>(1, CIMParamValue("CageName", CIMValue(String(cage))));
}

class FCPortChanges : public ProviderTest
{
protected:
    void SetUp() override
    {
        ProviderTest::SetUp();
        for (const char* port : {PORT_A, PORT_B})
            lpids[port] = std::to_string(api_findFCPortLPID(port));
        provider = start<QEL_FCPortProvider>("QEL_FCPortProvider", {"QEL_FCPort", "QEL_FCALPort"});
    }

    // The handler is never called, whatever happens.
    void modify(
        const CIMInstance& instance, const CIMPropertyList& list = CIMPropertyList(),
        const OperationContext& context = asOperator(), const char* cls = "QEL_FCPort",
        const char* deviceID = PORT_A)
    {
        RecordingResponseHandler handler;
        provider->modifyInstance(
            context, portPath(deviceID, "qel-node0", cls), instance, false, list, handler);
        EXPECT_TRUE(handler.record.untouched()) << handler.record.sequence;
    }

    // The delivered return value; the handler saw processing, deliver, complete.
    Sint32 invoke(
        const char* method, const Array<CIMParamValue>& in = Array<CIMParamValue>(),
        const OperationContext& context = asOperator(), const char* deviceID = PORT_B)
    {
        RecordingMethodHandler handler;
        try
        {
            provider->invokeMethod(context, portPath(deviceID, "qel-node1"), method, in, handler);
        }
        catch (...)
        {
            EXPECT_TRUE(handler.record.untouched()) << handler.record.sequence;
            throw;
        }
        EXPECT_EQ(handler.record.sequence, "processing deliver complete");
        EXPECT_TRUE(handler.outParameters.empty());
        Sint32 result = -999;
        handler.returnValues.at(0).get(result);  // a Sint32, or this throws
        return result;
    }

    // "api_setFCPortX(ptr, 1, [lpid], args)": one port by its LPID.
    std::string call(const char* name, const char* port, const std::string& args = "")
    {
        return std::string(name) + "(ptr, 1, [" + lpids[port] + "]" +
               (args.empty() ? "" : ", " + args) + ")";
    }

    CIMValue current(const char* port, const char* property)
    {
        const Array<CIMInstance> ports = QEL_FCPortProvider::buildInstances(
            host().handle(), "QEL_FCPort", std::stoull(port, nullptr, 16), false, false,
            CIMPropertyList(), "h");
        EXPECT_EQ(ports.size(), 1u);
        return ports.size() == 1 ? valueOf(ports[0], property) : CIMValue();
    }

    QEL_FCPortProvider* provider = nullptr;
    std::map<std::string, std::string> lpids;  // read before the provider starts
};

TEST_F(FCPortChanges, SettingsFollowAFixedOrderEachInItsOwnBracket)
{
    modify(
        settings({{"Mode", u16(2)}, {"Class2Support", u16(3)}}),
        propertyList({"Mode", "VCN"}));  // no VCN
    EXPECT_EQ(callsNamed(CHANGE_CALLS), Texts{call("api_setFCPortMode", PORT_A, "2, false")});
    EXPECT_EQ(current(PORT_A, "Mode"), u16(2));
    EXPECT_EQ(current(PORT_A, "Class2Support"), u16(3));
    // The event record names the class, the operation and the requester; the operation text is given empty.
    EXPECT_EQ(eventOf("api_setFCPortMode"), "QEL_FCPort:ModifyInstance|||operator|192.0.2.10");

    // Given in reverse order, names in other case, null property list.
    qelsim::clearCallLog();
    qelsim::resetCounters();
    modify(settings(
        {{"requestedspeed", CIMValue(Uint64(4294967296ULL))},
         {"InterruptCoalescing", u16(2)},
         {"VCN", u16(1)},
         {"CLASS2SUPPORT", u16(1)},
         {"ConnectionType", u16(2)},
         {"ModeChangeAllowed", CIMValue(Boolean(true))},
         {"Mode", u16(3)}}));
    EXPECT_EQ(
        callsNamed(CHANGE_CALLS),
        (Texts{
            call("api_setFCPortMode", PORT_A, "3, true"),
            call("api_setFCPortConnType", PORT_A, "2"), call("api_setFCPortClass2", PORT_A, "1"),
            call("api_setFCPortVCN", PORT_A, "1"), call("api_setFCPortIntCoal", PORT_A, "2"),
            call("api_setFCPortSpeed", PORT_A, "4")}));
    EXPECT_EQ(qelsim::counters().semWaits, 6u);

    // The speed goes in whole gigabits (shifted, not rounded); zero numeric
    // settings ask for nothing, but the speed is applied even as 0.
    for (const auto& c :
         {std::make_pair(Uint64(1610612736ULL), "1"), std::make_pair(Uint64(104857600ULL), "0"),
          std::make_pair(Uint64(0), "0")})
    {
        SCOPED_TRACE(c.first);
        qelsim::clearCallLog();
        modify(settings(
            {{"Mode", u16(0)},
             {"ModeChangeAllowed", CIMValue(Boolean(true))},
             {"VCN", u16(0)},
             {"RequestedSpeed", CIMValue(c.first)}}));
        EXPECT_EQ(callsNamed(CHANGE_CALLS), Texts{call("api_setFCPortSpeed", PORT_A, c.second)});
    }
}

TEST_F(FCPortChanges, OtherPropertiesAreRefusedBeforeAnyChange)
{
    // What a client gets back from getInstance carries keys and more.
    const Array<CIMInstance> full = QEL_FCPortProvider::buildInstances(
        host().handle(), "QEL_FCPort", 0x20110002AC001234ULL, false, false, CIMPropertyList(), "h");
    ASSERT_EQ(full.size(), 1u);
    const struct
    {
        CIMInstance instance;
        CIMPropertyList list;
        std::string message;
    } cases[] = {
        {full[0], CIMPropertyList(),
         "Invalid parameter: " + str(full[0].getProperty(0).getName().getString())},
        {settings({{"Mode", u16(2)}, {"DeviceID", CIMValue(String(PORT_A))}}),
         propertyList({"Mode", "DeviceID"}), "Invalid parameter: DeviceID"},
        {settings({{"Mode", u16(2)}, {"Speed", CIMValue(Uint64(1))}}), CIMPropertyList(),
         "Invalid parameter: Speed"},
    };
    qelsim::clearCallLog();
    for (const auto& c : cases)
        EXPECT_EQ(
            thrown<CIMInvalidParameterException>([&] { modify(c.instance, c.list); }), c.message);
    // A value of the wrong type is the object model's error, and changes nothing.
    EXPECT_THROW(modify(settings({{"Mode", CIMValue(Uint32(2))}})), Exception);
    EXPECT_TRUE(callsNamed(CHANGE_CALLS).empty());
}

TEST_F(FCPortChanges, FailedSettingStopsTheRestAndKeepsEarlierOnes)
{
    // callsMade: change calls that reached the library
    const struct
    {
        const char* failing;
        const char* message;
        size_t callsMade;
    } cases[] = {
        {"api_setFCPortMode", "Failed to set port mode", 1},
        {"api_setFCPortConnType", "Failed to set port connection type", 2},
        {"api_setFCPortClass2", "Failed to set port class2", 3},
        {"api_setFCPortVCN", "Failed to set port VCN", 4},
        {"api_setFCPortIntCoal", "Failed to set port interrupt coalesce", 5},
        {"api_setFCPortSpeed", "Failed to set port speed", 6},
        // A failed wait counts as the call's failure; the call is not made.
        {"cim_sem_wait", "Failed to set port mode", 0},
    };
    const CIMInstance all = settings(
        {{"Mode", u16(2)},
         {"ConnectionType", u16(1)},
         {"Class2Support", u16(2)},
         {"VCN", u16(2)},
         {"InterruptCoalescing", u16(2)},
         {"RequestedSpeed", CIMValue(Uint64(8589934592ULL))}});
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.failing);
        loadArray(fixtureText("fc_ports.json"));
        ASSERT_TRUE(qelsim::injectFault(c.failing, API_ERR_IO, 1).ok);
        qelsim::clearCallLog();
        EXPECT_EQ(thrown<CIMOperationFailedException>([&] { modify(all); }), c.message);
        EXPECT_EQ(callsNamed(CHANGE_CALLS).size(), c.callsMade);
        // Nothing is rolled back: with the third call failing, mode and connection type stay changed.
        if (std::string(c.failing) == "api_setFCPortClass2")
        {
            EXPECT_EQ(current(PORT_A, "Mode"), u16(2));
            EXPECT_EQ(current(PORT_A, "ConnectionType"), u16(1));
            EXPECT_EQ(current(PORT_A, "Class2Support"), u16(3));
        }
        qelsim::clearFaults();
    }
}

TEST_F(FCPortChanges, EachMethodIsOneLibraryAction)
{
    const struct
    {
        const char* method;
        Array<CIMParamValue> in;
        std::string call;
        const char* key;
    } cases[] = {
        {"SetOffline", {}, call("api_setPortOffline", PORT_B), "qel_fcport.setoffline"},
        {"Reset", {}, call("api_resetPort", PORT_B), "qel_fcport.reset"},
        {"reset", {}, call("api_resetPort", PORT_B), "qel_fcport.reset"},
        {"ReloadFirmware", cageName("cage1"), call("api_reloadPortFW", PORT_B),
         "qel_fcport.reloadfirmware"},
        {"SyncDatabase", {}, call("api_syncFCPortDB", PORT_B), "qel_fcport.syncdatabase"},
        {"InitializeLoop", cageName("cage1"), call("api_initFCPortLoop", PORT_B, "\"cage1\""),
         "qel_fcport.initializeloop"},
        {"InitializeLoop", cageName(""), call("api_initFCPortLoop", PORT_B, "null"),
         "qel_fcport.initializeloop"},
        {"initializeloop",
         {},
         call("api_initFCPortLoop", PORT_B, "null"),
         "qel_fcport.initializeloop"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.method);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        EXPECT_EQ(invoke(c.method, c.in), 0);
        EXPECT_EQ(callsNamed(ACTION_CALLS), Texts{c.call});
        EXPECT_EQ(
            callsNamed({"api_authorizeCIMUser"}),
            Texts{
                "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"" + std::string(c.key) +
                "\")"});
        // The event record names the method as the client spelled it.
        EXPECT_EQ(
            eventOf(c.call.substr(0, c.call.find('(')).c_str()),
            "QEL_FCPort:" + std::string(c.method) + "|||operator|192.0.2.10");
        // Traced at the failure level.
        EXPECT_EQ(
            traceLines(QEL_TRACE_FAILURE),
            (Texts{
                "-->QEL_FCPortProvider::invokeMethod()\n\t className = "
                "QEL_FCPort, methodName = " +
                    std::string(c.method) + "\n",
                "<--QEL_FCPortProvider::invokeMethod()\n"}));
    }
}

TEST_F(FCPortChanges, ActionsChangeThePortStateAndAnswerTheLibraryStatus)
{
    EXPECT_EQ(current(PORT_B, "EnabledState"), u16(6));
    EXPECT_EQ(invoke("Reset"), 0);
    EXPECT_EQ(current(PORT_B, "EnabledState"), u16(2));
    EXPECT_EQ(invoke("SetOffline"), 0);
    EXPECT_EQ(current(PORT_B, "EnabledState"), u16(6));

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

TEST_F(FCPortChanges, UnknownMethodAnswersZeroAndUnknownDeviceIsNotFound)
{
    // The array knows no key for it: refused as not supported.
    EXPECT_THROW(invoke("Frobnicate"), TraceableCIMException);

    // Once authorized under its own key, it answers 0 without a library action.
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    qelsim::clearCallLog();
    qelsim::clearCapturedLog();
    EXPECT_EQ(invoke("Frobnicate"), 0);
    EXPECT_EQ(
        callsNamed({"api_authorizeCIMUser"}),
        Texts{"api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcport.frobnicate\")"});
    EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
    EXPECT_EQ(qelsim::counters().semWaits, 0u);
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE).size(), 2u) << "only the entry and exit lines";

    // A device the array does not know is refused before any change.
    qelsim::clearFaults();
    qelsim::clearCallLog();
    EXPECT_EQ(
        thrown<CIMOperationFailedException>(
            [&]
            { modify(MODE_2, CIMPropertyList(), asOperator(), "QEL_FCPort", "0000000000000BAD"); }),
        "QEL_FCPortProvider::modifyInstance()  Device not found with DeviceID=0000000000000BAD");
    EXPECT_EQ(
        thrown<CIMOperationFailedException>(
            [&] { invoke("Reset", Array<CIMParamValue>(), asOperator(), "00000000DEADBEEF"); }),
        "QEL_FCPortProvider::invokeMethod()  Device not found with DeviceID=00000000DEADBEEF");
    EXPECT_EQ(
        callsNamed({"api_findFCPortLPID"}), (Texts{
                                                "api_findFCPortLPID(\"0000000000000BAD\")",
                                                "api_findFCPortLPID(\"00000000DEADBEEF\")"}));
    EXPECT_TRUE(callsNamed(CHANGE_CALLS).empty());
    EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
}

TEST_F(FCPortChanges, AccessRefusalsCarryTheirLines)
{
    const char* const SESSION = "CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user";
    const char* const DENIED = "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege";
    const char* const UNKNOWN = "CIM_ERR_NOT_SUPPORTED: Does not support in generic!";
    // session: refused at the session line, else at the authorization line.
    const struct
    {
        std::function<void()> arrange;
        const char* user;
        bool session;
        const char* refusal;
    } cases[] = {
        {[] { qelsim::refuseSessions(); }, "admin", true, SESSION},
        {[] {}, "nobody", true, SESSION},
        {[] {}, "viewer", false, DENIED},  // the browse role
        {[] { qelsim::forceAuthorization(2); }, "admin", false, DENIED},
        {[] { qelsim::forceAuthorization(3); }, "admin", false, UNKNOWN},
    };
    // Session and authorization lines of modifyInstance, then of the methods.
    const std::pair<const char*, std::pair<int, int>> operations[] = {
        {"modifyInstance", {295, 296}}, {"SetOffline", {528, 529}},
        {"Reset", {528, 529}},          {"ReloadFirmware", {528, 529}},
        {"SyncDatabase", {528, 529}},   {"InitializeLoop", {528, 529}}};
    for (const auto& op : operations)
    {
        for (const auto& c : cases)
        {
            SCOPED_TRACE(std::string(op.first) + " as " + c.user + ": " + c.refusal);
            qelsim::clearFaults();
            c.arrange();
            qelsim::clearCallLog();
            const int line = c.session ? op.second.first : op.second.second;
            EXPECT_EQ(
                thrown(
                    [&]
                    {
                        if (std::string(op.first) == "modifyInstance")
                            modify(MODE_2, CIMPropertyList(), asUser(c.user));
                        else
                            invoke(op.first, Array<CIMParamValue>(), asUser(c.user));
                    }),
                "QEL_FCPortProvider(" + std::to_string(line) + "): " + c.refusal);
            EXPECT_TRUE(callsNamed({"api_findFCPortLPID"}).empty());
            EXPECT_TRUE(callsNamed(CHANGE_CALLS).empty());
            EXPECT_TRUE(callsNamed(ACTION_CALLS).empty());
        }
    }

    // The key is the request's class, lower-cased.
    qelsim::clearFaults();
    qelsim::clearCallLog();
    modify(settings({{"VCN", u16(1)}}), CIMPropertyList(), asOperator(), "QEL_FCALPort");
    EXPECT_EQ(
        callsNamed({"api_authorizeCIMUser"}),
        Texts{
            "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcalport.modifyinstance\")"});
}
