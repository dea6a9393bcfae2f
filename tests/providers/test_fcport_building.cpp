// FC port records turned into QEL_FCPort / QEL_FCALPort instances and paths.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>

#include <cstring>
#include <functional>
#include <initializer_list>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

TEST(RateToBits, BinaryMultiplesAndZeroForUnknownCodes)
{
    const std::pair<Sint32, Uint64> cases[] = {
        {0, 0},
        {1, 1073741824ULL},
        {2, 2147483648ULL},
        {4, 4294967296ULL},
        {8, 8589934592ULL},
        {10, 10737418240ULL},
        {11, 10485760ULL},
        {12, 104857600ULL},
        {15, 1610612736ULL},
        {16, 17179869184ULL},
        {30, 3221225472ULL},
        {60, 6442450944ULL},
        // Automatic, and codes the table does not know.
        {3, 0},
        {5, 0},
        {-1, 0},
        {32, 0},
        {99, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rate_to_bits(c.first), c.second) << "rate code " << c.first;
}

// A record with every field the FC view reads set to something distinct.
static api_FCPort_t samplePort()
{
    api_FCPort_t port;
    std::memset(&port, 0, sizeof(port));
    std::strcpy(port.position, "1:2:3");
    std::strcpy(port.wwnText, "21230002AC001235");
    std::strcpy(port.fcSystemName, "qel-node1");
    std::strcpy(port.fcalSystemName, "qel-loop1");
    port.portStatus = PORT_OK;
    port.portWwn = 0x21230002AC001235ULL;
    port.fcNodeWwn = 0x2FF70002AC001235ULL;
    port.fcalNodeWwn = 0x2FF70002AC00BBBBULL;
    port.currentRate = 8, port.maxRate = 16, port.configuredRate = 4;
    port.fullDuplex = 1, port.topology = 2, port.portKind = 1, port.configuration = 5;
    port.mode = 2, port.connectionMode = 7, port.modeChangeAllowed = 1;
    port.deviceTypeConnected = 9, port.connectionType = 3, port.class2 = 1;
    port.vcn = 2, port.interruptCoalescing = 1;
    port.connectedTo = "fabric-a:port7";
    return port;
}

class FCPortBuilding : public ProviderTest
{
protected:
    CIMInstance build(const char* className, const api_FCPort_t& port)
    {
        return QEL_FCPortProvider::buildInstance(cimClass(className), port, "qelhost");
    }

    static Array<Uint16> uint16s(std::initializer_list<Uint16> values)
    {
        return Array<Uint16>(values.begin(), Uint32(values.size()));
    }
};

TEST_F(FCPortBuilding, FCViewSetsEveryProperty)
{
    const CIMInstance instance = build("QEL_FCPort", samplePort());
    const std::pair<const char*, CIMValue> expected[] = {
        {"SystemCreationClassName", CIMValue(String("QEL_NodeSystem"))},
        {"SystemName", CIMValue(String("qel-node1"))},
        {"CreationClassName", CIMValue(String("QEL_FCPort"))},
        {"DeviceID", CIMValue(String("21230002AC001235"))},
        {"ElementName", CIMValue(String("1:2:3"))},
        {"Name", CIMValue(String("1:2:3"))},
        {"PortNumber", CIMValue(Uint16(3))},
        {"PortType", CIMValue(Uint16(13))},
        {"PermanentAddress", CIMValue(String("21230002AC001235"))},
        {"NodeWWN", CIMValue(Uint64(0x2FF70002AC001235ULL))},
        {"Speed", CIMValue(Uint64(8589934592ULL))},
        {"UsageRestriction", CIMValue(Uint16(3))},
        {"PortDiscriminator", CIMValue(uint16s({11, 13}))},
        {"LinkTechnology", CIMValue(Uint16(4))},
        {"SupportedMaximumTransmissionUnit", CIMValue(Uint64(2048))},
        {"SupportedFC4Types", CIMValue(uint16s({8}))},
        {"ActiveFC4Types", CIMValue(uint16s({8}))},
        {"SupportedCOS", CIMValue(uint16s({3}))},
        {"ActiveCOS", CIMValue(uint16s({3}))},
        {"FullDuplex", CIMValue(Boolean(true))},
        {"RequestedSpeed", CIMValue(Uint64(4294967296ULL))},
        {"AutoSense", CIMValue(Boolean(false))},
        {"MaxSpeed", CIMValue(Uint64(17179869184ULL))},
        {"Topology", CIMValue(Uint16(2))},
        {"Configuration", CIMValue(Uint16(5))},
        {"Mode", CIMValue(Uint16(2))},
        {"ModeChangeAllowed", CIMValue(Boolean(true))},
        {"DeviceTypeConnected", CIMValue(Uint16(9))},
        {"ConnectedTo", CIMValue(String("fabric-a:port7"))},
        {"Class2Support", CIMValue(Uint16(1))},
        {"VCN", CIMValue(Uint16(2))},
        {"InterruptCoalescing", CIMValue(Uint16(1))},
        {"ConnectionType", CIMValue(Uint16(3))},
        {"ConnectionMode", CIMValue(Uint16(7))},
        {"HealthState", CIMValue(Uint16(5))},
        {"OperationalStatus", CIMValue(uint16s({2}))},
        {"OtherOperationalStatus", CIMValue(Uint16(3))},
        {"EnabledState", CIMValue(Uint16(2))},
    };
    for (const auto& e : expected)
        EXPECT_EQ(valueOf(instance, e.first), e.second) << e.first;

    // identical(): host, namespace, class and string-typed keys.
    EXPECT_EQ(
        instance.getPath(),
        CIMObjectPath("//qelhost/root/qel:QEL_FCPort."
                      "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"qel-node1\","
                      "CreationClassName=\"QEL_FCPort\",DeviceID=\"21230002AC001235\""));
}

TEST_F(FCPortBuilding, LoopViewHasFixedMaxSpeedAndNoFCOnlyProperties)
{
    const CIMInstance instance = build("QEL_FCALPort", samplePort());
    EXPECT_EQ(valueOf(instance, "MaxSpeed"), CIMValue(Uint64(2147483648ULL)));
    EXPECT_EQ(valueOf(instance, "SystemName"), CIMValue(String("qel-loop1")));
    EXPECT_EQ(valueOf(instance, "NodeWWN"), CIMValue(Uint64(0x2FF70002AC00BBBBULL)));
    EXPECT_EQ(valueOf(instance, "CreationClassName"), CIMValue(String("QEL_FCALPort")));
    for (const char* fcOnly :
         {"FullDuplex", "RequestedSpeed", "AutoSense", "Topology", "Configuration", "Mode",
          "ModeChangeAllowed", "DeviceTypeConnected", "ConnectedTo", "Class2Support", "VCN",
          "InterruptCoalescing", "ConnectionType"})
    {
        const Uint32 pos = instance.findProperty(fcOnly);
        if (pos != PEG_NOT_FOUND)
        {
            EXPECT_TRUE(instance.getProperty(pos).getValue().isNull()) << fcOnly;
        }
    }
    EXPECT_EQ(instance.getPath().getClassName(), CIMName("QEL_FCALPort"));
}

TEST_F(FCPortBuilding, PortStateDrivesStatusProperties)
{
    const struct
    {
        api_port_status_t status;
        Uint16 operational, health, enabled, activeCOS;
    } cases[] = {
        {PORT_OK, 2, 5, 2, 3},     {PORT_OFFLINE, 10, 10, 6, 0}, {PORT_LOSS_SYNC, 13, 5, 2, 0},
        {PORT_ERROR, 6, 20, 2, 0}, {PORT_FWDEAD, 7, 30, 2, 0},   {PORT_UNKNOWN, 0, 0, 2, 0},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(static_cast<int>(c.status));
        api_FCPort_t port = samplePort();
        port.portStatus = c.status;
        const CIMInstance instance = build("QEL_FCPort", port);
        EXPECT_EQ(valueOf(instance, "OperationalStatus"), CIMValue(uint16s({c.operational})));
        EXPECT_EQ(valueOf(instance, "HealthState"), CIMValue(c.health));
        EXPECT_EQ(valueOf(instance, "EnabledState"), CIMValue(c.enabled));
        EXPECT_EQ(valueOf(instance, "ActiveCOS"), CIMValue(uint16s({c.activeCOS})));
        // The library's own number, as a number.
        EXPECT_EQ(
            valueOf(instance, "OtherOperationalStatus"),
            CIMValue(Uint16(static_cast<Uint16>(c.status))));
    }
}

TEST_F(FCPortBuilding, ConnectionKindAndModeGiveTypeDiscriminatorAndUsage)
{
    const struct
    {
        Sint32 connectionType, portKind, mode;
        Uint16 portType, firstDiscriminator, usage;
    } cases[] = {
        {1, 1, 1, 11, 11, 2}, {2, 2, 2, 10, 2, 3}, {3, 0, 3, 13, 2, 0},
        {4, 1, 0, 13, 11, 0}, {0, 3, 2, 0, 10, 2},  // kind 3 ignores the mode
        {7, 3, 0, 0, 10, 2},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(
            testing::Message() << "connectionType " << c.connectionType << " portKind "
                               << c.portKind << " mode " << c.mode);
        api_FCPort_t port = samplePort();
        port.connectionType = c.connectionType;
        port.portKind = c.portKind;
        port.mode = c.mode;
        const CIMInstance instance = build("QEL_FCPort", port);
        EXPECT_EQ(valueOf(instance, "PortType"), CIMValue(c.portType));
        EXPECT_EQ(
            valueOf(instance, "PortDiscriminator"), CIMValue(uint16s({c.firstDiscriminator, 13})));
        EXPECT_EQ(valueOf(instance, "UsageRestriction"), CIMValue(c.usage));
    }
}

TEST_F(FCPortBuilding, RecordFieldsAtTheirEdges)
{
    const struct
    {
        const char* name;
        std::function<void(api_FCPort_t&)> change;
        const char* property;
        CIMValue expected;  // null: the property is left unset
    } cases[] = {
        {"automatic rate", [](api_FCPort_t& p) { p.configuredRate = 3; }, "RequestedSpeed",
         CIMValue()},
        {"automatic rate", [](api_FCPort_t& p) { p.configuredRate = 3; }, "AutoSense",
         CIMValue(Boolean(true))},
        {"no peer", [](api_FCPort_t& p) { p.connectedTo = nullptr; }, "ConnectedTo", CIMValue()},
        {"empty peer", [](api_FCPort_t& p) { p.connectedTo = ""; }, "ConnectedTo", CIMValue()},
        // A position filling its whole field with no terminator is not over-read.
        {"full position", [](api_FCPort_t& p) { std::memset(p.position, '7', sizeof(p.position)); },
         "Name", CIMValue(String(std::string(sizeof(api_FCPort_t::position), '7').c_str()))},
        {"short WWN", [](api_FCPort_t& p) { p.portWwn = 0xABCULL; }, "PermanentAddress",
         CIMValue(String("0000000000000ABC"))},
        {"two-digit port", [](api_FCPort_t& p) { std::strcpy(p.position, "7:0:15"); }, "PortNumber",
         CIMValue(Uint16(15))},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        api_FCPort_t port = samplePort();
        c.change(port);
        const CIMValue built = valueOf(build("QEL_FCPort", port), c.property);
        if (c.expected.isNull())
        {
            EXPECT_TRUE(built.isNull()) << built.toString();
        }
        else
        {
            EXPECT_EQ(built, c.expected);
        }
    }
}
