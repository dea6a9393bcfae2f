// QEL_SFP: the Tag key, instances built from SFP records, and their retrieval from the FC and iSCSI port lists.
#include "StatsTest.h"

#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>
#include <cstring>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

// Copies text into a record field, filling it without a terminator when the text is as long as the field.
template <size_t N>
static void setField(char (&field)[N], const std::string& text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

static api_sfp_t sfpRecord(const std::string& serial)
{
    api_sfp_t sfp;
    std::memset(&sfp, 0, sizeof(sfp));
    sfp.presentFlags = API_SFP_PRESENT;
    setField(sfp.serialNumber, serial);
    return sfp;
}

// The properties of one monitor type: high alarm, low alarm, high warning, low warning, value; then the unit.
struct Monitor
{
    Sint32 type;
    const char* readings[5];
    const char* unit;
    bool isSigned;
};
const Monitor MONITORS[] = {
    {0,
     {"TempHighAlarm", "TempLowAlarm", "TempHighWarn", "TempLowWarn", "Temperature"},
     "TemperatureUnit",
     true},
    {1, {"VoltHighAlarm", "VoltLowAlarm", "VoltHighWarn", "VoltLowWarn", "Vcc"}, "VccUnit", true},
    {2,
     {"BiasHighAlarm", "BiasLowAlarm", "BiasHighWarn", "BiasLowWarn", "TxBias"},
     "TxBiasUnit",
     false},
    {3,
     {"TxPowerHighAlarm", "TxPowerLowAlarm", "TxPowerHighWarn", "TxPowerLowWarn", "TxPower"},
     "TxPowerUnit",
     false},
    {4,
     {"RxPowerHighAlarm", "RxPowerLowAlarm", "RxPowerHighWarn", "RxPowerLowWarn", "RxPower"},
     "RxPowerUnit",
     false},
};
const char* const UNITS[] = {"C", "V", "mA", "uW", "dBm"};

static void setEntry(api_ddm_t& entry, Sint32 type, const Sint32 (&readings)[5], const char* unit)
{
    entry.monitorType = type, entry.highAlarm = readings[0], entry.lowAlarm = readings[1];
    entry.highWarn = readings[2], entry.lowWarn = readings[3], entry.value = readings[4];
    setField(entry.unit, unit);
}

TEST(SFPTag, PortTextDashSerialCutAt254WithoutTrailingBlanks)
{
    const std::string port240(240, 'P');
    const std::string port250(250, 'P');
    struct Case
    {
        std::string port;
        std::string serial;
        std::string tag;
    };
    const Case cases[] = {
        {"D", "ABC   ", "D-ABC"},
        {"D", "A B\t\n ", "D-A B"},
        {"", "   ", "-"},
        {port240, std::string(31, 'S'), port240 + "-" + std::string(13, 'S')},
        // Cut first, then trimmed: the blanks left at the cut go as well.
        {port250, "   S", port250 + "-"},
        // A serial number filling its whole field, without terminator.
        {"D", std::string(32, 'X'), "D-" + std::string(32, 'X')},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(str(QEL_SFPProvider::makeUniqueTAG(c.port.c_str(), sfpRecord(c.serial))), c.tag)
            << c.port.size() << " / \"" << c.serial << "\"";
    }
}

using SFPBuilding = StatsTest;

TEST_F(SFPBuilding, InstanceCarriesTheRecordAsItStands)
{
    api_sfp_t record = sfpRecord("SN42  ");
    setField(record.manufacturer, "AVALON  ");
    setField(record.partNumber, "AO-1");
    setField(record.revision, "B ");
    setField(record.description, "8Gb SW ");
    record.speed = 18446744073709551615ULL, record.qualityFlags = API_SFP_RX_POWER_LOW,
    record.state = 1;
    record.disableTxPin = 0x12345, record.lossRxPin = 0xFFFF0008, record.faultTxPin = 2;
    // Readings without the DDM flag are not published.
    setEntry(record.ddm[0], 0, {1, 2, 3, 4, 5}, "C");

    const CIMInstance instance =
        QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "PORTX", record, "h1");

    const std::pair<const char*, CIMValue> expected[] = {
        {"Caption", CIMValue(String("8Gb SW  Small Form-factor Pluggable(SFP) Transceiver"))},
        {"CreationClassName", CIMValue(String("QEL_SFP"))},
        {"Tag", CIMValue(String("PORTX-SN42"))},
        {"ElementName", CIMValue(String("8Gb SW "))},
        {"Manufacturer", CIMValue(String("AVALON  "))},
        {"PartNumber", CIMValue(String("AO-1"))},
        {"SerialNumber", CIMValue(String("SN42  "))},
        {"Revision", CIMValue(String("B "))},
        {"Speed", CIMValue(Uint64(18446744073709551615ULL))},
        {"DisableTXPinPosition", CIMValue(Uint16(0x2345))},
        {"LossRXPinPosition", CIMValue(Uint16(8))},
        {"FaultTXPinPosition", CIMValue(Uint16(2))},
        {"IsUnqualified", CIMValue(Boolean(false))},
        {"IsRXPowerLow", CIMValue(Boolean(true))},
        {"IsDDMAvailable", CIMValue(Boolean(false))},
        {"SystemName", CIMValue(String("QEL-ARRAY-7"))},
        {"OperationalStatus", CIMValue(Array<Uint16>(1, 2))},
    };
    for (const auto& e : expected)
        EXPECT_EQ(valueOf(instance, e.first), e.second) << e.first;
    for (const Monitor& m : MONITORS)
    {
        EXPECT_TRUE(valueOf(instance, m.unit).isNull()) << m.unit;
        for (const char* name : m.readings)
            EXPECT_TRUE(valueOf(instance, name).isNull()) << name;
    }

    // Host, namespace, class and the two keys in their order.
    EXPECT_EQ(
        instance.getPath().toString(),
        "//h1/root/qel:QEL_SFP.CreationClassName=\"QEL_SFP\",Tag=\"PORTX-SN42\"");

    // Any state but 1 (good) and 2 (degraded) is an error.
    record.state = 0;
    EXPECT_EQ(
        valueOf(
            QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "P", record, "h"),
            "OperationalStatus"),
        CIMValue(Array<Uint16>(1, 6)));
}

TEST_F(SFPBuilding, ReadingsAreCutTo16BitsSignedOrUnsigned)
{
    // High alarm, low alarm, high warning, low warning, value.
    const Sint32 readings[5] = {70000, -3, 33000, 1, -65536};
    const Sint16 asSigned[5] = {4464, -3, -32536, 1, 0};
    const Uint16 asUnsigned[5] = {4464, 65533, 33000, 1, 0};

    api_sfp_t record = sfpRecord("S");
    record.ddmFlags = API_SFP_DDM_AVAILABLE;
    // Entries in reverse type order: the type decides, not the position.
    for (Sint32 t = 0; t < 5; t++)
        setEntry(record.ddm[4 - t], t, readings, UNITS[t]);
    const CIMInstance instance =
        QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "P", record, "h");

    EXPECT_EQ(valueOf(instance, "IsDDMAvailable"), CIMValue(Boolean(true)));
    for (const Monitor& m : MONITORS)
    {
        EXPECT_EQ(valueOf(instance, m.unit), CIMValue(String(UNITS[m.type]))) << m.unit;
        for (int r = 0; r < 5; r++)
        {
            EXPECT_EQ(
                valueOf(instance, m.readings[r]),
                m.isSigned ? CIMValue(asSigned[r]) : CIMValue(asUnsigned[r]))
                << m.readings[r];
        }
    }
}

TEST_F(SFPBuilding, UnknownMonitorTypesAreTracedAndLaterEntriesWin)
{
    api_sfp_t record = sfpRecord("S");
    record.ddmFlags = API_SFP_DDM_AVAILABLE;
    setEntry(record.ddm[0], 4, {1, 1, 1, 1, 11}, "dBm");
    setEntry(record.ddm[1], 9, {2, 2, 2, 2, 22}, "?");
    setEntry(record.ddm[2], 0, {3, 3, 3, 3, 33}, "C");
    setEntry(record.ddm[3], 0, {4, 4, 4, 4, 44}, "F");
    setEntry(record.ddm[4], -1, {5, 5, 5, 5, 55}, "?");
    const CIMInstance instance =
        QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "P", record, "h");

    EXPECT_EQ(valueOf(instance, "Temperature"), CIMValue(Sint16(44)));
    EXPECT_EQ(valueOf(instance, "TemperatureUnit"), CIMValue(String("F")));
    EXPECT_EQ(valueOf(instance, "RxPower"), CIMValue(Uint16(11)));
    EXPECT_TRUE(valueOf(instance, "Vcc").isNull());
    EXPECT_TRUE(valueOf(instance, "TxBias").isNull());
    EXPECT_EQ(
        traceLines(QEL_TRACE_FLOW, "_setDDMProperties"),
        (Texts{
            "QEL_SFPProvider::_setDDMProperties: unknown sfp monitor type 9\n",
            "QEL_SFPProvider::_setDDMProperties: unknown sfp monitor type -1\n"}));
}

// ------------------------------------------------------------------ retrieval

using SFPRetrieval = StatsTest;

const std::string TAG_A = std::string(PORT_A) + "-ABC";
const std::string TAG_B = std::string(PORT_B) + "-SN-SHARED";
const std::string TAG_I = std::string(ISCSI_1) + "-SN-SHARED";
const std::string TAG_A_PADDED = TAG_A + "   ";
const std::string FC_READ = "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 1, ptr)";

static CIMObjectPath
sfpPath(const std::string& tag, const char* cls = "QEL_SFP", const char* creationClass = "QEL_SFP")
{
    return qelPath(cls, {"CreationClassName", creationClass, "Tag", tag.c_str()}, "anyhost");
}

TEST_F(SFPRetrieval, FCPortsFirstThenISCSIPortsEachListReleased)
{
    const Texts all = {TAG_A, TAG_B, TAG_I};
    const Texts calls = {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"};
    const Answer instances = request("QEL_SFP", ENUMERATE_INSTANCES);
    EXPECT_EQ(instances.sequence, "processing deliver[] complete");
    EXPECT_EQ(keysOf(instances.instances, "Tag"), all);
    EXPECT_EQ(readCalls(), calls);
    EXPECT_EQ(qelsim::counters().iscsiArraysHandedOut, 1u);

    // The records reach the instances: readings, states, the host name.
    ASSERT_EQ(instances.instances.size(), 3u);
    EXPECT_EQ(valueOf(instances.instances[0], "Temperature"), CIMValue(Sint16(-3)));
    EXPECT_EQ(valueOf(instances.instances[0], "TxBias"), CIMValue(Uint16(4464)));
    EXPECT_EQ(valueOf(instances.instances[1], "OperationalStatus"), CIMValue(Array<Uint16>(1, 3)));
    EXPECT_EQ(valueOf(instances.instances[2], "OperationalStatus"), CIMValue(Array<Uint16>(1, 6)));

    qelsim::clearCallLog();
    const Answer names = request("QEL_SFP", ENUMERATE_INSTANCE_NAMES);
    EXPECT_EQ(names.sequence, "processing deliver[] complete");
    EXPECT_EQ(readCalls(), calls);
    ASSERT_EQ(names.paths.size(), 3u);
    for (size_t i = 0; i < names.paths.size(); i++)
    {
        EXPECT_EQ(names.paths[i], instances.instances[i].getPath());
        EXPECT_EQ(names.paths[i].getHost(), HOST);
    }
    // The names' entry trace names another provider, as intended.
    EXPECT_EQ(
        traceLines(QEL_TRACE_FLOW, "_build_ref"),
        (Texts{"--> QEL_FCALProvider::_build_ref\n", "<-- QEL_SFPProvider::_build_ref\n"}));
    EXPECT_NE(qelsim::leakCheck(), 1) << "iSCSI records not freed";
}

TEST_F(SFPRetrieval, GetInstanceMatchesTheWholePath)
{
    const std::string notFound = "CIM_ERR_NOT_FOUND: QEL_SFPProvider CIM Object not found.";
    // failure: "" when the object is found
    const struct
    {
        const char* name;
        CIMObjectPath path;
        std::string failure;
        bool reads;
    } cases[] = {
        {"found", sfpPath(TAG_I), "", true},
        {"class name in lower case", sfpPath(TAG_A, "qel_sfp"), "", true},
        {"other creation class", sfpPath(TAG_A, "QEL_SFP", "CIM_PhysicalConnector"),
         notFound + TAG_A, true},
        {"Tag with its blanks", sfpPath(TAG_A_PADDED), notFound + TAG_A_PADDED, true},
        {"no Tag", qelPath("QEL_SFP", {"CreationClassName", "QEL_SFP"}),
         "CIM_ERR_INVALID_PARAMETER: QEL_SFPProvider Tag key not found.", false},
        {"other class", sfpPath(TAG_A, "QEL_FCPort"),
         "CIM_ERR_NOT_SUPPORTED: QEL_SFPProvider Invalid class name", false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        const Answer answer = request("QEL_SFP", GET_INSTANCE, c.path);
        EXPECT_EQ(answer.failure, c.failure);
        EXPECT_EQ(answer.sequence, c.failure.empty() ? "processing deliver complete" : "");
        EXPECT_EQ(readCalls().size(), c.reads ? 3u : 0u);
        if (c.failure.empty())
        {
            ASSERT_EQ(answer.instances.size(), 1u);
            EXPECT_TRUE(QEL_Common::matchObjectPath(c.path, answer.instances[0].getPath()));
        }
    }
}

TEST_F(SFPRetrieval, FailedReadsEmptyTheirPassOnly)
{
    const struct
    {
        const char* name;
        const char* call;
        int code;
        int64_t times;
        Texts tags, calls;
    } cases[] = {
        {"FC read",
         "api_getFCPorts",
         API_ERR_IO,
         -1,
         {TAG_I},
         {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"iSCSI read",
         "api_getISCSIPorts",
         API_ERR_NOMEM,
         -1,
         {TAG_A, TAG_B},
         {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"first wait",
         "cim_sem_wait",
         API_ERR_BUSY,
         1,
         {TAG_I},
         {"api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"every wait", "cim_sem_wait", API_ERR_BUSY, -1, {}, {"api_freeFCPorts(ptr)"}},
    };
    for (const auto& c : cases)
    {
        for (Op op : {ENUMERATE_INSTANCES, ENUMERATE_INSTANCE_NAMES})
        {
            SCOPED_TRACE(std::string(c.name) + " " + OP_NAMES[op]);
            qelsim::clearFaults();
            ASSERT_TRUE(qelsim::injectFault(c.call, c.code, c.times).ok);
            qelsim::clearCallLog();
            const Answer answer = request("QEL_SFP", op);
            EXPECT_EQ(answer.sequence, "processing deliver[] complete");
            EXPECT_EQ(
                op == ENUMERATE_INSTANCES ? keysOf(answer.instances, "Tag")
                                          : keysOf(answer.paths, "Tag"),
                c.tags);
            EXPECT_EQ(readCalls(), c.calls);
        }
    }
    // With every wait failing nothing is read, so nothing is found.
    EXPECT_EQ(
        request("QEL_SFP", GET_INSTANCE, sfpPath(TAG_A)).failure,
        "CIM_ERR_NOT_FOUND: QEL_SFPProvider CIM Object not found." + TAG_A);

    // SystemName cannot be had: the build fails, the FC list still goes back.
    qelsim::clearFaults();
    cache().localDown = true;
    qelsim::clearCallLog();
    EXPECT_EQ(request("QEL_SFP", ENUMERATE_INSTANCES).failure.substr(0, 6), "other:");
    EXPECT_EQ(readCalls(), (Texts{FC_READ, "api_freeFCPorts(ptr)"}));
}
