// modifyInstance of QEL_FCPort: which settings become which library calls,
// in which order, and every refusal.
#include "PegasusPrinters.h"
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>
#include <functional>
#include <initializer_list>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

const char PORT_A[] = "20110002AC001234";  // mode 1, mode change allowed, max 16 Gb/s

const char* const CHANGE_CALLS[] = {"api_setFCPortMode", "api_setFCPortConnType",
    "api_setFCPortClass2", "api_setFCPortVCN", "api_setFCPortIntCoal", "api_setFCPortSpeed"};

std::vector<std::string> changeCalls()
{
    return callsNamed(std::vector<std::string>(std::begin(CHANGE_CALLS), std::end(CHANGE_CALLS)));
}

CIMObjectPath portRef(const char* cls, const char* deviceID)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", "QEL_NodeSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", "qel-node0", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", cls, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", deviceID, CIMKeyBinding::STRING));
    return CIMObjectPath("", CIMNamespaceName("root/qel"), cls, keys);
}

CIMInstance settings(std::initializer_list<std::pair<const char*, CIMValue>> values)
{
    CIMInstance instance("QEL_FCPort");
    for (const auto& v : values)
    {
        instance.addProperty(CIMProperty(v.first, v.second));
    }
    return instance;
}

CIMPropertyList propertyList(std::initializer_list<const char*> names)
{
    Array<CIMName> list;
    for (const char* n : names)
    {
        list.append(n);
    }
    return CIMPropertyList(list);
}

class FCPortModification : public ProviderTest
{
protected:
    void SetUp() override
    {
        ProviderTest::SetUp();
        lpidA = std::to_string(api_findFCPortLPID(PORT_A));
        testing::internal::CaptureStdout();
        provider = dynamic_cast<QEL_FCPortProvider*>(
            host().startProvider("QEL_FCPortProvider", {"QEL_FCPort", "QEL_FCALPort"}));
        testing::internal::GetCapturedStdout();
        ASSERT_NE(provider, nullptr);
        qelsim::clearCallLog();
        qelsim::resetCounters();
    }

    // The handler is never called, whatever happens.
    void modify(const CIMInstance& instance, const CIMPropertyList& list = CIMPropertyList(),
        const OperationContext& context = asOperator(), const char* cls = "QEL_FCPort",
        const char* deviceID = PORT_A)
    {
        provider->modifyInstance(context, portRef(cls, deviceID), instance, false, list,
            handler);
    }

    // "api_setFCPortX(ptr, 1, [lpid], args)" for port A.
    std::string change(const char* call, const std::string& args)
    {
        return std::string(call) + "(ptr, 1, [" + lpidA + "], " + args + ")";
    }

    CIMValue current(const char* property)
    {
        const Array<CIMInstance> ports = QEL_FCPortProvider::buildInstances(host().handle(),
            "QEL_FCPort", 0x20110002AC001234ULL, false, false, CIMPropertyList(), "h");
        EXPECT_EQ(ports.size(), 1u);
        return ports[0].getProperty(ports[0].findProperty(property)).getValue();
    }

    void TearDown() override
    {
        EXPECT_TRUE(handler.record.untouched()) << handler.record.sequence();
        ProviderTest::TearDown();
    }

    QEL_FCPortProvider* provider = nullptr;
    RecordingResponseHandler handler;
    std::string lpidA;
};

TEST_F(FCPortModification, PropertyListSelectsTheSettings)
{
    modify(settings({{"Mode", CIMValue(Uint16(2))}, {"Class2Support", CIMValue(Uint16(3))}}),
        propertyList({"Mode", "VCN"}));  // VCN is not in the instance: skipped
    EXPECT_EQ(changeCalls(), std::vector<std::string>{change("api_setFCPortMode", "2, false")});
    EXPECT_EQ(current("Mode"), CIMValue(Uint16(2)));
    EXPECT_EQ(current("Class2Support"), CIMValue(Uint16(3)));

    // The event record names the class, the operation and the requester.
    const std::vector<qelsim::CallRecord> log = qelsim::callLog();
    const auto mode = std::find_if(log.begin(), log.end(),
        [](const qelsim::CallRecord& r) { return r.call == "api_setFCPortMode"; });
    ASSERT_NE(mode, log.end());
    ASSERT_TRUE(mode->hasEvent);
    EXPECT_STREQ(mode->event.method, "QEL_FCPort:ModifyInstance");
    // The operation text is given empty.
    EXPECT_STREQ(mode->event.inst_op, "");
    EXPECT_STREQ(mode->event.inst_param, "");
    EXPECT_STREQ(mode->event.user, "operator");
    EXPECT_STREQ(mode->event.addr, "192.0.2.10");
}

TEST_F(FCPortModification, ChangesFollowAFixedOrderEachInItsOwnBracket)
{
    // Given in reverse order, names in other case, null property list.
    modify(settings({{"requestedspeed", CIMValue(Uint64(4294967296ULL))},
        {"InterruptCoalescing", CIMValue(Uint16(2))}, {"VCN", CIMValue(Uint16(1))},
        {"CLASS2SUPPORT", CIMValue(Uint16(1))}, {"ConnectionType", CIMValue(Uint16(2))},
        {"ModeChangeAllowed", CIMValue(Boolean(true))}, {"Mode", CIMValue(Uint16(3))}}));
    EXPECT_EQ(changeCalls(), (std::vector<std::string>{
        change("api_setFCPortMode", "3, true"), change("api_setFCPortConnType", "2"),
        change("api_setFCPortClass2", "1"), change("api_setFCPortVCN", "1"),
        change("api_setFCPortIntCoal", "2"), change("api_setFCPortSpeed", "4")}));
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, 6u);
    EXPECT_EQ(c.semPosts, 6u);
}

TEST_F(FCPortModification, SpeedIsShiftedToWholeGigabitsAndZeroMeansNotRequested)
{
    struct Case
    {
        Uint64 requested;
        const char* passed;
    };
    for (const Case& c : {Case{4294967296ULL, "4"}, Case{1610612736ULL, "1"},
             Case{104857600ULL, "0"}, Case{0, "0"}})
    {
        SCOPED_TRACE(c.requested);
        qelsim::clearCallLog();
        // Zero numeric settings ask for nothing; the speed is applied even as 0.
        modify(settings({{"Mode", CIMValue(Uint16(0))},
            {"ModeChangeAllowed", CIMValue(Boolean(true))}, {"VCN", CIMValue(Uint16(0))},
            {"RequestedSpeed", CIMValue(c.requested)}}));
        EXPECT_EQ(changeCalls(), std::vector<std::string>{change("api_setFCPortSpeed", c.passed)});
    }
}

TEST_F(FCPortModification, OtherPropertiesAreRefusedBeforeAnyChange)
{
    struct Case
    {
        CIMInstance instance;
        CIMPropertyList list;
        std::string message;
    };
    // What a client gets back from getInstance carries keys and more.
    const Array<CIMInstance> full = QEL_FCPortProvider::buildInstances(host().handle(),
        "QEL_FCPort", 0x20110002AC001234ULL, false, false, CIMPropertyList(), "h");
    ASSERT_EQ(full.size(), 1u);
    const String firstName = full[0].getProperty(0).getName().getString();
    qelsim::clearCallLog();

    const Case cases[] = {
        {full[0], CIMPropertyList(), "Invalid parameter: " + std::string(firstName.getCString())},
        {settings({{"Mode", CIMValue(Uint16(2))}, {"DeviceID", CIMValue(String(PORT_A))}}),
            propertyList({"Mode", "DeviceID"}), "Invalid parameter: DeviceID"},
        {settings({{"Mode", CIMValue(Uint16(2))}, {"Speed", CIMValue(Uint64(1))}}),
            CIMPropertyList(), "Invalid parameter: Speed"},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(thrown<CIMInvalidParameterException>([&] { modify(c.instance, c.list); }),
            c.message);
    }
    EXPECT_TRUE(changeCalls().empty());

    // A value of the wrong type is the object model's error, and changes nothing.
    EXPECT_THROW(modify(settings({{"Mode", CIMValue(Uint32(2))}})), Exception);
    EXPECT_TRUE(changeCalls().empty());
}

TEST_F(FCPortModification, UnknownDeviceIsNotFoundBeforeAnyChange)
{
    EXPECT_EQ(thrown<CIMOperationFailedException>([&] {
        modify(settings({{"Mode", CIMValue(Uint16(2))}}), CIMPropertyList(), asOperator(),
            "QEL_FCPort", "0000000000000BAD"); }),
        "QEL_FCPortProvider::modifyInstance()  Device not found with DeviceID=0000000000000BAD");
    EXPECT_EQ(callsNamed({"api_findFCPortLPID"}),
        std::vector<std::string>{"api_findFCPortLPID(\"0000000000000BAD\")"});
    EXPECT_TRUE(changeCalls().empty());
}

TEST_F(FCPortModification, AccessRefusalsCarryTheirLines)
{
    struct Case
    {
        std::function<void()> arrange;
        const char* user;
        const char* refusal;
    };
    const Case cases[] = {
        {[] { qelsim::refuseSessions(); }, "operator",
            "QEL_FCPortProvider(295): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user"},
        {[] {}, "viewer",  // the browse role
            "QEL_FCPortProvider(296): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {[] { qelsim::forceAuthorization(2); }, "admin",
            "QEL_FCPortProvider(296): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {[] { qelsim::forceAuthorization(3); }, "admin",
            "QEL_FCPortProvider(296): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.refusal);
        qelsim::clearFaults();
        c.arrange();
        qelsim::clearCallLog();
        EXPECT_EQ(refusal([&] { modify(settings({{"Mode", CIMValue(Uint16(2))}}),
            CIMPropertyList(), asUser(c.user)); }), c.refusal);
        EXPECT_TRUE(callsNamed({"api_findFCPortLPID"}).empty());
        EXPECT_TRUE(changeCalls().empty());
    }

    // The key is the request's class, lower-cased.
    qelsim::clearFaults();
    qelsim::clearCallLog();
    modify(settings({{"VCN", CIMValue(Uint16(1))}}), CIMPropertyList(), asOperator(),
        "QEL_FCALPort");
    EXPECT_EQ(callsNamed({"api_authorizeCIMUser"}), std::vector<std::string>{
        "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcalport.modifyinstance\")"});
}

TEST_F(FCPortModification, FailedChangeStopsTheRestAndKeepsEarlierOnes)
{
    struct Case
    {
        const char* failing;
        const char* message;
        size_t callsMade;  // change calls that reached the library
    };
    const Case cases[] = {
        {"api_setFCPortMode", "Failed to set port mode", 1},
        {"api_setFCPortConnType", "Failed to set port connection type", 2},
        {"api_setFCPortClass2", "Failed to set port class2", 3},
        {"api_setFCPortVCN", "Failed to set port VCN", 4},
        {"api_setFCPortIntCoal", "Failed to set port interrupt coalesce", 5},
        {"api_setFCPortSpeed", "Failed to set port speed", 6},
        // A failed wait counts as the call's failure; the call is not made.
        {"cim_sem_wait", "Failed to set port mode", 0},
    };
    const CIMInstance all = settings({{"Mode", CIMValue(Uint16(2))},
        {"ConnectionType", CIMValue(Uint16(1))}, {"Class2Support", CIMValue(Uint16(2))},
        {"VCN", CIMValue(Uint16(2))}, {"InterruptCoalescing", CIMValue(Uint16(2))},
        {"RequestedSpeed", CIMValue(Uint64(8589934592ULL))}});
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.failing);
        loadArray(fixtureText("fc_ports.json"));
        ASSERT_TRUE(qelsim::injectFault(c.failing, API_ERR_IO, 1).ok);
        qelsim::clearCallLog();
        EXPECT_EQ(thrown<CIMOperationFailedException>([&] { modify(all); }), c.message);
        EXPECT_EQ(changeCalls().size(), c.callsMade);
        // Nothing is rolled back: with the third call failing, mode and
        // connection type stay changed.
        if (std::string(c.failing) == "api_setFCPortClass2")
        {
            EXPECT_EQ(current("Mode"), CIMValue(Uint16(2)));
            EXPECT_EQ(current("ConnectionType"), CIMValue(Uint16(1)));
            EXPECT_EQ(current("Class2Support"), CIMValue(Uint16(3)));
        }
        qelsim::clearFaults();
    }
}

} // namespace
