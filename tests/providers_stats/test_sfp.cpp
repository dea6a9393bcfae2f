// QEL_SFP: the Tag key, instances built from SFP records, and their retrieval
// from the FC and iSCSI port lists.
#include "StatsTest.h"

#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>
#include <cstring>
#include <functional>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

// Copies text into a record field, filling it without a terminator when the
// text is as long as the field.
template <size_t N>
void setField(char (&field)[N], const std::string& text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

api_sfp_t sfpRecord(const std::string& serial)
{
    api_sfp_t sfp;
    std::memset(&sfp, 0, sizeof(sfp));
    sfp.presentFlags = API_SFP_PRESENT;
    setField(sfp.serialNumber, serial);
    return sfp;
}

// The properties of one monitor type: high alarm, low alarm, high warning,
// low warning, value; then the unit.
struct Monitor
{
    Sint32 type;
    const char* readings[5];
    const char* unit;
    bool isSigned;
};
const Monitor MONITORS[] = {
    {0, {"TempHighAlarm", "TempLowAlarm", "TempHighWarn", "TempLowWarn", "Temperature"},
        "TemperatureUnit", true},
    {1, {"VoltHighAlarm", "VoltLowAlarm", "VoltHighWarn", "VoltLowWarn", "Vcc"}, "VccUnit", true},
    {2, {"BiasHighAlarm", "BiasLowAlarm", "BiasHighWarn", "BiasLowWarn", "TxBias"},
        "TxBiasUnit", false},
    {3, {"TxPowerHighAlarm", "TxPowerLowAlarm", "TxPowerHighWarn", "TxPowerLowWarn", "TxPower"},
        "TxPowerUnit", false},
    {4, {"RxPowerHighAlarm", "RxPowerLowAlarm", "RxPowerHighWarn", "RxPowerLowWarn", "RxPower"},
        "RxPowerUnit", false},
};
const char* const UNITS[] = {"C", "V", "mA", "uW", "dBm"};

void setEntry(api_ddm_t& entry, Sint32 type, const Sint32 (&readings)[5], const char* unit)
{
    entry.monitorType = type;
    entry.highAlarm = readings[0];
    entry.lowAlarm = readings[1];
    entry.highWarn = readings[2];
    entry.lowWarn = readings[3];
    entry.value = readings[4];
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
    record.speed = 18446744073709551615ULL;
    record.disableTxPin = 0x12345;
    record.lossRxPin = 0xFFFF0008;
    record.faultTxPin = 2;
    record.qualityFlags = API_SFP_RX_POWER_LOW;
    record.state = 1;
    // Readings without the DDM flag are not published.
    setEntry(record.ddm[0], 0, {1, 2, 3, 4, 5}, "C");

    const CIMInstance instance =
        QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "PORTX", record, "h1");

    Array<Uint16> ok;
    ok.append(2);
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
        {"OperationalStatus", CIMValue(ok)},
    };
    for (const auto& e : expected)
    {
        EXPECT_EQ(valueOf(instance, e.first), e.second) << e.first;
    }
    for (const Monitor& m : MONITORS)
    {
        EXPECT_TRUE(valueOf(instance, m.unit).isNull()) << m.unit;
        for (const char* name : m.readings)
        {
            EXPECT_TRUE(valueOf(instance, name).isNull()) << name;
        }
    }

    // Host, namespace, class and the two keys in their order.
    EXPECT_EQ(instance.getPath().toString(),
        "//h1/root/qel:QEL_SFP.CreationClassName=\"QEL_SFP\",Tag=\"PORTX-SN42\"");

    // Any state but 1 (good) and 2 (degraded) is an error.
    record.state = 0;
    Array<Uint16> error;
    error.append(6);
    EXPECT_EQ(valueOf(QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "P", record, "h"),
                  "OperationalStatus"), CIMValue(error));
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
    {
        setEntry(record.ddm[4 - t], t, readings, UNITS[t]);
    }
    const CIMInstance instance =
        QEL_SFPProvider::buildInstance(cimClass("QEL_SFP"), "P", record, "h");

    EXPECT_EQ(valueOf(instance, "IsDDMAvailable"), CIMValue(Boolean(true)));
    for (const Monitor& m : MONITORS)
    {
        EXPECT_EQ(valueOf(instance, m.unit), CIMValue(String(UNITS[m.type]))) << m.unit;
        for (int r = 0; r < 5; r++)
        {
            EXPECT_EQ(valueOf(instance, m.readings[r]),
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
    std::vector<std::string> skipped;
    for (const std::string& line : traceLines(QEL_TRACE_FLOW))
    {
        if (line.find("_setDDMProperties") != std::string::npos)
        {
            skipped.push_back(line);
        }
    }
    EXPECT_EQ(skipped, (std::vector<std::string>{
        "QEL_SFPProvider::_setDDMProperties: unknown sfp monitor type 9\n",
        "QEL_SFPProvider::_setDDMProperties: unknown sfp monitor type -1\n"}));
}

// ------------------------------------------------------------------ retrieval

class SFPRetrieval : public StatsTest
{
protected:
    std::vector<std::string> enumerateTags(HandlerRecord* record = nullptr)
    {
        RecordingInstanceHandler handler;
        sfp->enumerateInstances(asViewer(), classPath("QEL_SFP"), false, false,
            CIMPropertyList(), handler);
        if (record != nullptr)
        {
            *record = handler.record;
        }
        instances = handler.instances;
        return keysOf(handler.instances, "Tag");
    }

    std::vector<std::string> enumerateNameTags()
    {
        RecordingObjectPathHandler handler;
        sfp->enumerateInstanceNames(asViewer(), classPath("QEL_SFP"), handler);
        EXPECT_EQ(handler.record.sequence(), "processing deliver[] complete");
        names = handler.paths;
        return keysOf(handler.paths, "Tag");
    }

    std::vector<CIMInstance> instances;
    std::vector<CIMObjectPath> names;
};

const std::string TAG_A = std::string(PORT_A) + "-ABC";
const std::string TAG_B = std::string(PORT_B) + "-SN-SHARED";
const std::string TAG_I = std::string(ISCSI_1) + "-SN-SHARED";
const std::string TAG_A_PADDED = TAG_A + "   ";
const std::string FC_READ = "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 1, ptr)";

// tag null: no Tag key.
CIMObjectPath sfpPath(const char* cls, const char* creationClass, const std::string* tag)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", creationClass, CIMKeyBinding::STRING));
    if (tag != nullptr)
    {
        keys.append(CIMKeyBinding("Tag", tag->c_str(), CIMKeyBinding::STRING));
    }
    return CIMObjectPath("anyhost", CIMNamespaceName("root/qel"), cls, keys);
}

TEST_F(SFPRetrieval, FCPortsFirstThenISCSIPortsEachListReleased)
{
    HandlerRecord record;
    const std::vector<std::string> all = {TAG_A, TAG_B, TAG_I};
    EXPECT_EQ(enumerateTags(&record), all);
    EXPECT_EQ(record.sequence(), "processing deliver[] complete");
    const std::vector<std::string> calls = {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"};
    EXPECT_EQ(readCalls(), calls);
    EXPECT_EQ(qelsim::counters().iscsiArraysHandedOut, 1u);

    // The records reach the instances: readings, states, the host name.
    ASSERT_EQ(instances.size(), 3u);
    EXPECT_EQ(valueOf(instances[0], "Temperature"), CIMValue(Sint16(-3)));
    EXPECT_EQ(valueOf(instances[0], "TxBias"), CIMValue(Uint16(4464)));
    Array<Uint16> degraded, error;
    degraded.append(3);
    error.append(6);
    EXPECT_EQ(valueOf(instances[1], "OperationalStatus"), CIMValue(degraded));
    EXPECT_EQ(valueOf(instances[2], "OperationalStatus"), CIMValue(error));

    qelsim::clearCallLog();
    EXPECT_EQ(enumerateNameTags(), all);
    EXPECT_EQ(readCalls(), calls);
    for (size_t i = 0; i < names.size(); i++)
    {
        EXPECT_EQ(names[i], instances[i].getPath());
        EXPECT_EQ(names[i].getHost(), HOST);
    }
    // The names' entry trace names another provider, as intended.
    const std::vector<std::string> flow = traceLines(QEL_TRACE_FLOW);
    EXPECT_NE(std::find(flow.begin(), flow.end(), "--> QEL_FCALProvider::_build_ref\n"), flow.end());
    EXPECT_NE(qelsim::leakCheck(), 1) << "iSCSI records not freed";
}

TEST_F(SFPRetrieval, GetInstanceMatchesTheWholePath)
{
    struct Case
    {
        const char* name;
        CIMObjectPath path;
        CIMStatusCode code;  // CIM_ERR_SUCCESS: found
        std::string message;
        bool reads;
    };
    const Case cases[] = {
        {"found", sfpPath("QEL_SFP", "QEL_SFP", &TAG_I), CIM_ERR_SUCCESS, "", true},
        {"class name in lower case", sfpPath("qel_sfp", "QEL_SFP", &TAG_A), CIM_ERR_SUCCESS, "", true},
        {"other creation class", sfpPath("QEL_SFP", "CIM_PhysicalConnector", &TAG_A),
            CIM_ERR_NOT_FOUND, "QEL_SFPProvider CIM Object not found." + TAG_A, true},
        {"Tag with its blanks", sfpPath("QEL_SFP", "QEL_SFP", &TAG_A_PADDED),
            CIM_ERR_NOT_FOUND, "QEL_SFPProvider CIM Object not found." + TAG_A_PADDED, true},
        {"no Tag", sfpPath("QEL_SFP", "QEL_SFP", nullptr),
            CIM_ERR_INVALID_PARAMETER, "QEL_SFPProvider Tag key not found.", false},
        {"other class", sfpPath("QEL_FCPort", "QEL_SFP", &TAG_A),
            CIM_ERR_NOT_SUPPORTED, "QEL_SFPProvider Invalid class name", false},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        RecordingInstanceHandler handler;
        try
        {
            sfp->getInstance(asViewer(), c.path, false, false, CIMPropertyList(), handler);
            EXPECT_EQ(c.code, CIM_ERR_SUCCESS);
            EXPECT_EQ(handler.record.sequence(), "processing deliver complete");
            ASSERT_EQ(handler.instances.size(), 1u);
            EXPECT_TRUE(QEL_Common::matchObjectPath(c.path, handler.instances[0].getPath()));
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), c.code);
            EXPECT_EQ(str(e.getMessage()), c.message);
            EXPECT_TRUE(handler.record.untouched());
        }
        EXPECT_EQ(readCalls().size(), c.reads ? 3u : 0u);
    }
}

TEST_F(SFPRetrieval, FailedReadsEmptyTheirPassOnly)
{
    struct Case
    {
        const char* name;
        const char* call;
        int code;
        int64_t times;
        std::vector<std::string> tags;
        std::vector<std::string> calls;
    };
    const Case cases[] = {
        {"FC read", "api_getFCPorts", API_ERR_IO, -1, {TAG_I},
            {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"iSCSI read", "api_getISCSIPorts", API_ERR_NOMEM, -1, {TAG_A, TAG_B},
            {FC_READ, "api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"first wait", "cim_sem_wait", API_ERR_BUSY, 1, {TAG_I},
            {"api_freeFCPorts(ptr)", "api_getISCSIPorts(ptr)"}},
        {"every wait", "cim_sem_wait", API_ERR_BUSY, -1, {}, {"api_freeFCPorts(ptr)"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        for (int names = 0; names < 2; names++)
        {
            qelsim::clearFaults();
            ASSERT_TRUE(qelsim::injectFault(c.call, c.code, c.times).ok);
            qelsim::clearCallLog();
            HandlerRecord record;
            EXPECT_EQ(names ? enumerateNameTags() : enumerateTags(&record), c.tags);
            EXPECT_EQ(readCalls(), c.calls);
        }
    }
    // With every wait failing nothing is read, so nothing is found.
    RecordingInstanceHandler handler;
    EXPECT_THROW(sfp->getInstance(asViewer(), sfpPath("QEL_SFP", "QEL_SFP", &TAG_A), false, false,
                     CIMPropertyList(), handler), CIMObjectNotFoundException);
}

TEST_F(SFPRetrieval, FailedBuildReleasesTheList)
{
    // SystemName cannot be had: the build fails, the FC list still goes back.
    InternalCacheDouble::instance().refuseLocalConnections(true);
    EXPECT_THROW(enumerateTags(), Exception);
    EXPECT_EQ(readCalls(), (std::vector<std::string>{FC_READ, "api_freeFCPorts(ptr)"}));
}

} // namespace
