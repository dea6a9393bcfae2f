// Transceivers and link error counters as wbemcli users see them: qel-cimserver on the
// demo array (examples/demo-array.json), whose records the expected values come from.
#include "Wbemcli.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace e2e;

namespace
{

const std::string kSfpOfPort012 = "20120002AC00A001-ABC1234";  // serial "ABC1234   ", -3 C
const std::string kStatsOfPort022 = "ZEPHRAN:20220002AC00A001-Stats";

class SfpAndStatisticsTest : public SharedServerSuite<SfpAndStatisticsTest>
{
protected:
    static void SetUpTestSuite() { startServer({{"operator", "edit"}, {"monitor", "browse"}}); }

    static std::map<std::string, PrintedObject> byPath(const WbemcliAnswer& answer)
    {
        std::map<std::string, PrintedObject> result;
        for (const PrintedObject& o : answer.objects())
            result[o.path] = o;
        return result;
    }
    // What a method call returned: wbemcli prints "<path> <method>: <value>".
    static std::string returned(const WbemcliAnswer& answer)
    {
        const std::string& out = answer.result.out;
        const size_t at = out.rfind(": ");
        return at == std::string::npos ? "<none>" : out.substr(at + 2, out.find('\n', at) - at - 2);
    }
};

struct PropertyCase
{
    std::string object;  // path as printed, from the class name on
    const char* property;
    const char* value;  // as wbemcli prints it: strings quoted, null as nothing
};

// ------------------------------------------------------------------ QEL_SFP

TEST_F(SfpAndStatisticsTest, SfpNamesOneForEachInstalledTransceiverFcPortsFirst)
{
    const WbemcliAnswer names = cli->as("monitor", "ein", "QEL_SFP");
    ASSERT_TRUE(names.ok()) << names.result.output;
    // Port 1:1:2, the non-port record 0:2:1 and iSCSI port 1:3:1 have no transceiver; the
    // Tag drops the serial numbers' trailing blanks; the same serial on two ports gives two Tags.
    const std::vector<std::string> expected = {
        sfpPath("20110002AC00A001-AV8000101"),
        sfpPath(kSfpOfPort012),
        sfpPath("21110002AC00A001-NW55501"),
        sfpPath("21210002AC00A001-AV2009911"),
        sfpPath("20220002AC00A001-AV8000101"),
        sfpPath("iqn.2000-05.net.example:demo01.0.3.1-NW10G0042"),
    };
    EXPECT_EQ(names.paths(), expected) << names.result.out;
}

TEST_F(SfpAndStatisticsTest, SfpInstancesPublishTheTransceiverRecords)
{
    const WbemcliAnswer all = cli->as("monitor", "ei", "QEL_SFP");
    ASSERT_TRUE(all.ok()) << all.result.output;
    const std::map<std::string, PrintedObject> sfps = byPath(all);
    EXPECT_EQ(all.paths(), cli->as("monitor", "ein", "QEL_SFP").paths());

    const std::string p011 = sfpPath("20110002AC00A001-AV8000101");
    const std::string p012 = sfpPath(kSfpOfPort012);
    const std::string p111 = sfpPath("21110002AC00A001-NW55501");
    const std::string p121 = sfpPath("21210002AC00A001-AV2009911");
    const std::string iscsi = sfpPath("iqn.2000-05.net.example:demo01.0.3.1-NW10G0042");
    const PropertyCase cases[] = {
        {p011, "Caption", "\"8Gb Short Wave Small Form-factor Pluggable(SFP) Transceiver\""},
        {p011, "ElementName", "\"8Gb Short Wave\""},
        {p011, "CreationClassName", "\"QEL_SFP\""},
        {p011, "SystemName", "\"DEMO01\""},
        {p011, "Manufacturer", "\"AVALON OPTICS\""},
        {p011, "PartNumber", "\"AO-SFP8-SW\""},
        {p011, "Revision", "\"A\""},
        {p011, "Speed", "8500"},
        {p011, "DisableTXPinPosition", "3"},
        {p011, "LossRXPinPosition", "8"},
        {p011, "FaultTXPinPosition", "2"},
        {p011, "OperationalStatus", "2"},
        {p011, "IsUnqualified", "FALSE"},
        {p011, "IsDDMAvailable", "TRUE"},
        {p011, "Temperature", "35"},
        {p011, "TemperatureUnit", "\"C\""},
        {p011, "VccUnit", "\"mV\""},
        {p011, "VoltHighWarn", "3465"},
        {p011, "TxBias", "7000"},
        {p011, "BiasLowWarn", "3000"},
        {p011, "TxPowerHighAlarm", "1200"},
        {p011, "RxPower", "480"},
        {p011, "RxPowerUnit", "\"uW\""},
        // Serial with three trailing blanks: kept in SerialNumber, dropped from the Tag.
        {p012, "SerialNumber", "\"ABC1234   \""},
        {p012, "Tag", "\"20120002AC00A001-ABC1234\""},
        // Readings are signed for temperature and voltage; the entries come in reverse order.
        {p012, "Temperature", "-3"},
        {p012, "TempLowAlarm", "-5"},
        {p012, "TempLowWarn", "0"},
        {p012, "Vcc", "3290"},
        {p012, "RxPower", "12"},
        {p012, "OperationalStatus", "3"},
        {p012, "IsUnqualified", "TRUE"},
        {p012, "IsRXPowerLow", "TRUE"},
        // No diagnostics: none of the readings is set.
        {p111, "IsDDMAvailable", "FALSE"},
        {p111, "Temperature", ""},
        {p111, "TemperatureUnit", ""},
        {p111, "Vcc", ""},
        {p111, "RxPowerLowAlarm", ""},
        // State 7 is an error; 32-bit readings and pins are cut to 16 bits; the entry of
        // monitor type 7 sets nothing, so received power stays unset.
        {p121, "OperationalStatus", "6"},
        {p121, "TxBias", "4464"},
        {p121, "DisableTXPinPosition", "4467"},
        {p121, "TxPower", "0"},
        {p121, "Temperature", "41"},
        {p121, "RxPower", ""},
        {p121, "RxPowerUnit", ""},
        {iscsi, "SerialNumber", "\"NW10G0042 \""},
        {iscsi, "ElementName", "\"10Gb SR\""},
        {iscsi, "Temperature", "44"},
    };
    for (const PropertyCase& c : cases)
    {
        const auto it = sfps.find(c.object);
        ASSERT_NE(it, sfps.end()) << c.object << "\n" << all.result.out;
        EXPECT_EQ(it->second[c.property], c.value) << c.object << " " << c.property;
    }
}

struct GetCase
{
    const char* what;
    std::string object;
    std::string error;  // "" = found
};

TEST_F(SfpAndStatisticsTest, SfpGetInstanceMatchesTheWholePath)
{
    const GetCase cases[] = {
        {"by its Tag", sfpPath(kSfpOfPort012), ""},
        {"class name in lower case",
         "qel_sfp.CreationClassName=\"QEL_SFP\",Tag=\"" + kSfpOfPort012 + "\"", ""},
        {"Tag with the serial's blanks", sfpPath(kSfpOfPort012 + "   "),
         "CIM_ERR_NOT_FOUND: QEL_SFPProvider CIM Object not found." + kSfpOfPort012 + "   "},
        {"right Tag, other CreationClassName",
         "QEL_SFP.CreationClassName=\"CIM_PhysicalConnector\",Tag=\"" + kSfpOfPort012 + "\"",
         "CIM_ERR_NOT_FOUND: QEL_SFPProvider CIM Object not found." + kSfpOfPort012},
        {"port without a transceiver", sfpPath("21120002AC00A001-"),
         "CIM_ERR_NOT_FOUND: QEL_SFPProvider CIM Object not found.21120002AC00A001-"},
        {"no Tag key", "QEL_SFP.CreationClassName=\"QEL_SFP\"",
         "CIM_ERR_INVALID_PARAMETER: QEL_SFPProvider Tag key not found."},
    };
    for (const GetCase& c : cases)
    {
        const WbemcliAnswer r = cli->as("monitor", "gi", c.object);
        EXPECT_EQ(r.error(), c.error) << c.what;
        if (!c.error.empty())
            continue;
        const std::vector<PrintedObject> got = r.objects();
        ASSERT_EQ(got.size(), 1u) << c.what << "\n" << r.result.out;
        EXPECT_EQ(got[0]["Temperature"], "-3") << c.what;
        EXPECT_EQ(got[0]["SerialNumber"], "\"ABC1234   \"") << c.what;
        EXPECT_EQ(got[0]["Tag"], "\"" + kSfpOfPort012 + "\"") << c.what;
    }
}

// ------------------------------------------------------ QEL_FCPortLESBStatistics

TEST_F(SfpAndStatisticsTest, StatisticsNamesOnlyForRecordsTheArrayHolds)
{
    const WbemcliAnswer names = cli->as("monitor", "ein", "QEL_FCPortLESBStatistics");
    ASSERT_TRUE(names.ok()) << names.result.output;
    // One name per LESB record: port 0:1:1 holds two, 1:1:1 and 0:2:1 none.
    const std::vector<std::string> expected = {
        statsPath("ZEPHRAN:20110002AC00A001-Stats"), statsPath("ZEPHRAN:20110002AC00A001-Stats"),
        statsPath("ZEPHRAN:20120002AC00A001-Stats"), statsPath("ZEPHRAN:21120002AC00A001-Stats"),
        statsPath("ZEPHRAN:21210002AC00A001-Stats"), statsPath(kStatsOfPort022),
    };
    EXPECT_EQ(names.paths(), expected) << names.result.out;
}

TEST_F(SfpAndStatisticsTest, StatisticsInstancesForEveryPortFromItsFirstRecord)
{
    const WbemcliAnswer all = cli->as("monitor", "ei", "QEL_FCPortLESBStatistics");
    ASSERT_TRUE(all.ok()) << all.result.output;
    // Every FC port record in list order, those without LESB records with their key alone.
    const std::vector<std::string> expected = {
        statsPath("ZEPHRAN:20110002AC00A001-Stats"),
        statsPath("ZEPHRAN:20120002AC00A001-Stats"),
        statsPath("ZEPHRAN:21110002AC00A001-Stats"),
        statsPath("ZEPHRAN:21120002AC00A001-Stats"),
        statsPath("ZEPHRAN:21210002AC00A001-Stats"),
        statsPath("ZEPHRAN:0000000000000000-Stats"),
        statsPath(kStatsOfPort022),
    };
    EXPECT_EQ(all.paths(), expected) << all.result.out;

    const std::map<std::string, PrintedObject> stats = byPath(all);
    const std::string p011 = statsPath("ZEPHRAN:20110002AC00A001-Stats");
    const std::string p012 = statsPath("ZEPHRAN:20120002AC00A001-Stats");
    const std::string p111 = statsPath("ZEPHRAN:21110002AC00A001-Stats");
    const std::string p112 = statsPath("ZEPHRAN:21120002AC00A001-Stats");
    const std::string p121 = statsPath("ZEPHRAN:21210002AC00A001-Stats");
    const PropertyCase cases[] = {
        // The first of port 0:1:1's two records (1700000000 s), not the later one.
        {p011, "InstanceID", "\"ZEPHRAN:20110002AC00A001-Stats\""},
        {p011, "ElementName", "\"FC Port 0:1:1 LESB Statistics\""},
        {p011, "StatisticTime", "20231114221320.000000+000"},
        {p011, "LinkFailures", "1"},
        {p011, "LossOfSyncCounter", "4"},
        {p011, "LossOfSignalCounter", "2"},
        {p011, "PrimitiveSeqProtocolErrCount", "0"},
        {p011, "InvalidTransmissionWords", "17"},
        {p011, "CRCErrors", "3"},
        {p012, "LinkFailures", "9"},
        {p012, "LossOfSyncCounter", "31"},
        {p012, "LossOfSignalCounter", "12"},
        {p012, "PrimitiveSeqProtocolErrCount", "2"},
        {p012, "InvalidTransmissionWords", "140"},
        {p012, "CRCErrors", "8"},
        // Key only: nothing else is set, not even the element name.
        {p111, "InstanceID", "\"ZEPHRAN:21110002AC00A001-Stats\""},
        {p111, "ElementName", ""},
        {p111, "StatisticTime", ""},
        {p111, "LinkFailures", ""},
        {p111, "CRCErrors", ""},
        // Port identifier 0: an empty element name, the counters still published.
        {p112, "ElementName", "\"\""},
        {p112, "LinkFailures", "0"},
        {p112, "CRCErrors", "0"},
        // Counters near 2^64 pass unchanged.
        {p121, "ElementName", "\"FC Port 1:2:1 LESB Statistics\""},
        {p121, "LinkFailures", "18446744073709551615"},
        {p121, "LossOfSyncCounter", "18446744073709551614"},
        {p121, "InvalidTransmissionWords", "9223372036854775808"},
        {p121, "CRCErrors", "1"},
    };
    for (const PropertyCase& c : cases)
    {
        const auto it = stats.find(c.object);
        ASSERT_NE(it, stats.end()) << c.object;
        EXPECT_EQ(it->second[c.property], c.value) << c.object << " " << c.property;
    }
}

TEST_F(SfpAndStatisticsTest, StatisticsGetInstanceOnlyOfPortsWithRecords)
{
    const WbemcliAnswer one = cli->as("monitor", "gi", statsPath("ZEPHRAN:21210002AC00A001-Stats"));
    ASSERT_TRUE(one.ok()) << one.result.output;
    ASSERT_EQ(one.objects().size(), 1u);
    EXPECT_EQ(one.objects()[0]["LossOfSyncCounter"], "18446744073709551614");
    EXPECT_EQ(one.objects()[0]["ElementName"], "\"FC Port 1:2:1 LESB Statistics\"");

    const GetCase refused[] = {
        // Listed by ei with its key alone, yet not found: the instance built for it has another key.
        {"port without records", statsPath("ZEPHRAN:21110002AC00A001-Stats"),
         "CIM_ERR_NOT_FOUND: QEL_FCPortLESBStatistics CIM Object not found.ZEPHRAN:21110002AC00A001-Stats"},
        {"WWN in lower case", statsPath("ZEPHRAN:20120002ac00a001-Stats"),
         "CIM_ERR_NOT_FOUND: QEL_FCPortLESBStatistics CIM Object not found.ZEPHRAN:20120002ac00a001-Stats"},
        {"key that names no port", statsPath("bogus"),
         "CIM_ERR_NOT_FOUND: QEL_FCPortLESBStatistics CIM Object not found.bogus"},
    };
    for (const GetCase& c : refused)
    {
        const WbemcliAnswer r = cli->as("monitor", "gi", c.object);
        EXPECT_EQ(r.error(), c.error) << c.what;
        EXPECT_TRUE(r.objects().empty()) << c.what;
    }
}

// Port 0:2:2's counters are reset here; no other test reads them.
TEST_F(SfpAndStatisticsTest, ResetSelectedStatsByAnEditUserZeroesTheCounters)
{
    const auto counters = []
    { return cli->as("monitor", "gi", statsPath(kStatsOfPort022)).objects().at(0); };
    const char* const kCounters[] = {
        "LinkFailures",
        "LossOfSyncCounter",
        "LossOfSignalCounter",
        "PrimitiveSeqProtocolErrCount",
        "InvalidTransmissionWords",
        "CRCErrors"};
    const PrintedObject before = counters();
    ASSERT_EQ(before["LossOfSyncCounter"], "1");
    ASSERT_EQ(before["InvalidTransmissionWords"], "2");
    ASSERT_EQ(before["StatisticTime"], "20231114221820.000000+000");

    const WbemcliAnswer refused =
        cli->call("monitor", statsPath(kStatsOfPort022), "ResetSelectedStats");
    EXPECT_EQ(refused.error(), "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege");
    const PrintedObject untouched = counters();
    for (const char* name : kCounters)
        EXPECT_EQ(untouched[name], before[name]) << name;
    EXPECT_EQ(server->auditLog().find("\"ports\":[\"0:2:2\"]"), std::string::npos)
        << server->auditLog();

    const WbemcliAnswer reset =
        cli->call("operator", statsPath(kStatsOfPort022), "ResetSelectedStats");
    ASSERT_TRUE(reset.ok()) << reset.result.output;
    EXPECT_EQ(returned(reset), "0");
    const PrintedObject after = counters();
    for (const char* name : kCounters)
        EXPECT_EQ(after[name], "0") << name;
    EXPECT_NE(
        after["StatisticTime"], before["StatisticTime"]);  // the sample time moves to the reset
    EXPECT_EQ(after["ElementName"], "\"FC Port 0:2:2 LESB Statistics\"");

    const std::string audit = server->auditLog();
    EXPECT_NE(
        audit.find(
            "\"user\":\"operator\",\"address\":\"127.0.0.1\","
            "\"method\":\"QEL_FCPortLESBStatistics:ResetSelectedStats\",\"op\":\"\",\"param\":\"\","
            "\"call\":\"api_resetPortLESB\",\"ports\":[\"0:2:2\"],\"result\":0"),
        std::string::npos)
        << audit;
}

struct ResetCase
{
    const char* what;
    std::string instanceId;
    const char* method;
    const char* returns;  // "" when an error is expected
    const char* error;
};

TEST_F(SfpAndStatisticsTest, ResetSelectedStatsResultsAndRefusals)
{
    const ResetCase cases[] = {
        {"port without records", "ZEPHRAN:21110002AC00A001-Stats", "ResetSelectedStats", "0", ""},
        {"method named in lower case", "ZEPHRAN:21120002AC00A001-Stats", "resetselectedstats", "0",
         ""},
        // A failed reset is reported by its result alone.
        {"WWN of no port", "ZEPHRAN:2111000FFC00A001-Stats", "ResetSelectedStats", "4", ""},
        // The label reads DeviceID and the two blanks come from the joined parts; both intended.
        {"key that does not parse", "bogus", "ResetSelectedStats", "",
         "CIM_ERR_FAILED: QEL_FCPortLESBStatistics::invokeMethod()  Device not found with DeviceID=bogus"},
        {"method the class lacks", "ZEPHRAN:21120002AC00A001-Stats", "ResetAllStats", "",
         "CIM_ERR_METHOD_NOT_FOUND: ResetAllStats"},
    };
    for (const ResetCase& c : cases)
    {
        const WbemcliAnswer r = cli->call("operator", statsPath(c.instanceId), c.method);
        EXPECT_EQ(r.error(), c.error) << c.what << "\n" << r.result.output;
        if (*c.returns)
        {
            EXPECT_EQ(returned(r), c.returns) << c.what << "\n" << r.result.output;
        }
    }
    // A port without records is left as it was: still listed by its key alone.
    const WbemcliAnswer keyOnly = cli->as("monitor", "ei", "QEL_FCPortLESBStatistics");
    const auto stats = byPath(keyOnly);
    ASSERT_EQ(stats.count(statsPath("ZEPHRAN:21110002AC00A001-Stats")), 1u);
    EXPECT_EQ(stats.at(statsPath("ZEPHRAN:21110002AC00A001-Stats"))["LinkFailures"], "");
}

}  // namespace
