// QEL_FCPortLESBStatistics: the InstanceID key and its inverse, instances
// built from LESB records, retrieval, ResetSelectedStats, and the access
// refusals of both providers of this suite.
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

std::string statsKey(const char* port)
{
    return std::string("ZEPHRAN:") + port + "-Stats";
}

api_portLESB_t lesbRecord(const char* portText)
{
    api_portLESB_t record;
    std::memset(&record, 0, sizeof(record));
    std::strncpy(record.portText, portText, sizeof(record.portText) - 1);
    return record;
}

TEST(LESBKey, GetPortWWNReadsWhatTheScanReads)
{
    const Uint64 NONE = 0xFFFFFFFFFFFFFFF6ULL;
    const std::pair<const char*, Uint64> cases[] = {
        {"ZEPHRAN:00000000000000FF-Stats", 255},
        {"ZEPHRAN:20110002ac001234-Stats", 0x20110002AC001234ULL},
        // The tail is not checked; at most 16 digits are read.
        {"ZEPHRAN:1A", 26},
        {"ZEPHRAN:FF-Other", 255},
        {"ZEPHRAN:20110002AC0012345-Stats", 0x20110002AC001234ULL},
        // Nothing scans: the every-port selector.
        {"abc", NONE}, {"", NONE}, {"ZEPHRAN:-Stats", NONE}, {"zephran:FF-Stats", NONE},
        {"ZEPHRAN-FF-Stats", NONE},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(c.first), c.second) << c.first;
    }
    const String key = QEL_FCPortStatisticsProvider::makeInstanceID(lesbRecord(PORT_A));
    EXPECT_EQ(str(key), statsKey(PORT_A));
    EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(key), 0x20110002AC001234ULL);
}

using LESBBuilding = StatsTest;

TEST_F(LESBBuilding, FullInstanceCarriesCountersUnchanged)
{
    Uint16 lpid = 0;
    ASSERT_EQ(api_convertStrLPIDtoPortID("0:1:1", &lpid), 0);
    api_portLESB_t record = lesbRecord("5000000000000ABC");
    record.sampleTime = 1700000000;
    record.portId = lpid;
    record.linkFailures = 18446744073709551615ULL;
    record.lossOfSync = 18446744073709551614ULL;
    record.lossOfSignal = 9223372036854775808ULL;
    record.primitiveSeqErrors = 0;
    record.invalidTxWords = 1;
    record.crcErrors = 4294967296ULL;

    const CIMClass cls = cimClass("QEL_FCPortLESBStatistics");
    const CIMInstance full = QEL_FCPortStatisticsProvider::buildInstance(cls, record, "h1");
    const std::pair<const char*, CIMValue> expected[] = {
        {"InstanceID", CIMValue(String("ZEPHRAN:5000000000000ABC-Stats"))},
        {"ElementName", CIMValue(String("FC Port 0:1:1 LESB Statistics"))},
        {"StatisticTime", CIMValue(QEL_Common::getCIMDateTime(1700000000))},
        {"LinkFailures", CIMValue(Uint64(18446744073709551615ULL))},
        {"LossOfSyncCounter", CIMValue(Uint64(18446744073709551614ULL))},
        {"LossOfSignalCounter", CIMValue(Uint64(9223372036854775808ULL))},
        {"PrimitiveSeqProtocolErrCount", CIMValue(Uint64(0))},
        {"InvalidTransmissionWords", CIMValue(Uint64(1))},
        {"CRCErrors", CIMValue(Uint64(4294967296ULL))},
    };
    for (const auto& e : expected)
    {
        EXPECT_EQ(valueOf(full, e.first), e.second) << e.first;
    }
    const CIMObjectPath path = full.getPath();
    EXPECT_EQ(path, QEL_FCPortStatisticsProvider::buildObjectPath("h1", "ZEPHRAN:5000000000000ABC-Stats"));
    EXPECT_EQ(path.getHost(), "h1");
    EXPECT_EQ(path.getNameSpace(), CIMNamespaceName("root/qel"));
    EXPECT_EQ(path.getClassName(), CIMName("QEL_FCPortLESBStatistics"));
    EXPECT_EQ(path.getKeyBindings().size(), 1u);

    // No port identifier: the name is empty but set, the counters stay.
    record.portId = 0;
    const CIMInstance unnamed = QEL_FCPortStatisticsProvider::buildInstance(cls, record, "h1");
    EXPECT_EQ(valueOf(unnamed, "ElementName"), CIMValue(String("")));
    EXPECT_EQ(valueOf(unnamed, "LinkFailures"), CIMValue(Uint64(18446744073709551615ULL)));
}

TEST_F(LESBBuilding, KeyOnlyInstanceCarriesNothingElse)
{
    const std::string text70(70, 'A');
    const std::pair<const char*, std::string> cases[] = {
        {PORT_B, statsKey(PORT_B)},
        {text70.c_str(), statsKey(text70.substr(0, 64).c_str())},
        {nullptr, "ZEPHRAN:-Stats"},
    };
    for (const auto& c : cases)
    {
        const CIMInstance keyOnly = QEL_FCPortStatisticsProvider::buildInstance(
            cimClass("QEL_FCPortLESBStatistics"), c.first, "h1");
        EXPECT_EQ(valueOf(keyOnly, "InstanceID"), CIMValue(String(c.second.c_str())));
        EXPECT_EQ(keyOf(keyOnly.getPath(), "InstanceID"), c.second);
        for (const char* name : {"ElementName", "StatisticTime", "LinkFailures", "CRCErrors"})
        {
            EXPECT_TRUE(valueOf(keyOnly, name).isNull()) << name;
        }
    }
}

// ------------------------------------------------------------------ retrieval

class LESBRetrieval : public StatsTest
{
protected:
    std::vector<std::string> enumerateKeys(std::vector<CIMInstance>* out = nullptr)
    {
        RecordingInstanceHandler handler;
        stats->enumerateInstances(asViewer(), classPath("QEL_FCPortLESBStatistics"), false, false,
            CIMPropertyList(), handler);
        EXPECT_EQ(handler.record.sequence(), "processing deliver[] complete");
        if (out != nullptr)
        {
            *out = handler.instances;
        }
        return keysOf(handler.instances, "InstanceID");
    }

    std::vector<std::string> enumerateNameKeys()
    {
        RecordingObjectPathHandler handler;
        stats->enumerateInstanceNames(asViewer(), classPath("QEL_FCPortLESBStatistics"), handler);
        EXPECT_EQ(handler.record.sequence(), "processing deliver[] complete");
        return keysOf(handler.paths, "InstanceID");
    }

    static CIMObjectPath statsPath(const std::string& key, const char* cls = "QEL_FCPortLESBStatistics")
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("InstanceID", key.c_str(), CIMKeyBinding::STRING));
        return CIMObjectPath("anyhost", CIMNamespaceName("root/qel"), cls, keys);
    }

    Sint32 reset(const std::string& key, const char* method = "ResetSelectedStats",
        const OperationContext& context = asOperator())
    {
        RecordingMethodHandler handler;
        stats->invokeMethod(context, statsPath(key), method, Array<CIMParamValue>(), handler);
        EXPECT_EQ(handler.record.sequence(), "processing deliver complete");
        Sint32 result = -1;
        handler.returnValues.at(0).get(result);
        return result;
    }
};

const std::string LESB_READ_A = "api_getPortLESB(0x20110002AC001234, ptr)";

TEST_F(LESBRetrieval, EveryPortEnumeratedButNamesOnlyForRecords)
{
    std::vector<CIMInstance> instances;
    EXPECT_EQ(enumerateKeys(&instances), (std::vector<std::string>{
        statsKey(PORT_A), statsKey(PORT_B), statsKey(PORT_D)}));
    EXPECT_EQ(readCalls(), (std::vector<std::string>{
        "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 0, ptr)", LESB_READ_A,
        "api_getPortLESB(0x21230002AC001235, ptr)", "api_getPortLESB(0x22320002AC001236, ptr)",
        "api_freeFCPorts(ptr)"}));
    ASSERT_EQ(instances.size(), 3u);
    // The first record of a port counts; a port without one has only its key.
    EXPECT_EQ(valueOf(instances[0], "LinkFailures"), CIMValue(Uint64(18446744073709551615ULL)));
    EXPECT_TRUE(valueOf(instances[1], "LinkFailures").isNull());
    EXPECT_EQ(valueOf(instances[2], "ElementName"), CIMValue(String("")));
    EXPECT_EQ(instances[0].getPath().getHost(), HOST);

    qelsim::clearCallLog();
    // One name per record: port A twice, port B not at all.
    EXPECT_EQ(enumerateNameKeys(), (std::vector<std::string>{
        statsKey(PORT_A), statsKey(PORT_A), statsKey(PORT_D)}));
    EXPECT_EQ(readCalls(), std::vector<std::string>{"api_getPortLESB(0xFFFFFFFFFFFFFFF6, ptr)"});
    EXPECT_EQ(qelsim::counters().lesbArraysHandedOut, 3u);
    EXPECT_NE(qelsim::leakCheck(), 1) << "LESB records not freed";
}

TEST_F(LESBRetrieval, GetInstanceReadsOnePortAndMatchesThePath)
{
    struct Case
    {
        const char* name;
        CIMObjectPath path;
        CIMStatusCode code;  // CIM_ERR_SUCCESS: found
        std::string message;
        std::string lesbRead;  // "" when nothing is read
    };
    const std::string notFound = "QEL_FCPortLESBStatistics CIM Object not found.";
    const Case cases[] = {
        {"found", statsPath(statsKey(PORT_A)), CIM_ERR_SUCCESS, "", LESB_READ_A},
        {"class name in lower case", statsPath(statsKey(PORT_D), "qel_fcportlesbstatistics"),
            CIM_ERR_SUCCESS, "", "api_getPortLESB(0x22320002AC001236, ptr)"},
        // Known port without records: the doubled key matches nothing.
        {"no records", statsPath(statsKey(PORT_B)), CIM_ERR_NOT_FOUND,
            notFound + statsKey(PORT_B), "api_getPortLESB(0x21230002AC001235, ptr)"},
        {"unknown port", statsPath(statsKey("00000000000000FF")), CIM_ERR_NOT_FOUND,
            notFound + statsKey("00000000000000FF"), "api_getPortLESB(0x00000000000000FF, ptr)"},
        // Unparsable: every port is asked, the first record's path differs.
        {"unparsable", statsPath("garbage"), CIM_ERR_NOT_FOUND, notFound + "garbage",
            "api_getPortLESB(0xFFFFFFFFFFFFFFF6, ptr)"},
        {"no key", CIMObjectPath("", CIMNamespaceName("root/qel"), "QEL_FCPortLESBStatistics"),
            CIM_ERR_INVALID_PARAMETER, "QEL_FCPortLESBStatistics InstanceID key not found.", ""},
        {"other class", statsPath(statsKey(PORT_A), "QEL_SFP"), CIM_ERR_NOT_SUPPORTED,
            "QEL_FCPortLESBStatistics Invalid class name", ""},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        RecordingInstanceHandler handler;
        try
        {
            stats->getInstance(asViewer(), c.path, false, false, CIMPropertyList(), handler);
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
        // A single pass reads no port list, yet hands the unfilled one back.
        std::vector<std::string> calls;
        if (!c.lesbRead.empty())
        {
            calls = {c.lesbRead, "api_freeFCPorts(ptr)"};
        }
        EXPECT_EQ(readCalls(), calls);
    }
}

TEST_F(LESBRetrieval, FailedReadsLeaveOutWhatTheyRead)
{
    struct Case
    {
        const char* call;
        int code;
        int64_t times;
        std::vector<std::string> instanceKeys;
        std::vector<std::string> nameKeys;
    };
    const std::vector<std::string> allNames = {statsKey(PORT_A), statsKey(PORT_A), statsKey(PORT_D)};
    const Case cases[] = {
        {"api_getFCPorts", API_ERR_IO, -1, {}, allNames},
        // The first pass (port A) fails, the others follow; the names'
        // read comes after the fault is spent.
        {"api_getPortLESB", API_ERR_IO, 1, {statsKey(PORT_B), statsKey(PORT_D)}, allNames},
        {"api_getPortLESB", API_ERR_NOMEM, -1, {}, {}},
        {"cim_sem_wait", API_ERR_BUSY, -1, {}, {}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.call);
        qelsim::clearFaults();
        ASSERT_TRUE(qelsim::injectFault(c.call, c.code, c.times).ok);
        EXPECT_EQ(enumerateKeys(), c.instanceKeys);
        EXPECT_EQ(enumerateNameKeys(), c.nameKeys);
    }
}

TEST_F(LESBRetrieval, FailedBuildReleasesTheLists)
{
    // A sample time no calendar holds makes the build throw midway.
    std::string text = statsFixtureText();
    const std::string sample = "\"sampleTime\": 1700000200";
    text.replace(text.find(sample), sample.size(), "\"sampleTime\": 9223372036854775808");
    loadArray(text);
    EXPECT_THROW(enumerateKeys(), Exception);
    EXPECT_EQ(callsNamed({"api_freeFCPorts"}).size(), 1u);
    EXPECT_NE(qelsim::leakCheck(), 1) << "LESB records not freed";
}

TEST_F(LESBRetrieval, ResetAnswersZeroOrFourWithoutTheSemaphore)
{
    EXPECT_EQ(reset(statsKey(PORT_A)), 0);
    const std::vector<qelsim::CallRecord> log = qelsim::callLog();
    const auto call = std::find_if(log.begin(), log.end(),
        [](const qelsim::CallRecord& r) { return r.call == "api_resetPortLESB"; });
    ASSERT_NE(call, log.end());
    EXPECT_EQ(call->text(), "api_resetPortLESB(ptr, 0x20110002AC001234)");
    EXPECT_STREQ(call->event.method, "QEL_FCPortLESBStatistics:ResetSelectedStats");
    EXPECT_STREQ(call->event.user, "operator");
    EXPECT_STREQ(call->event.addr, "192.0.2.10");
    EXPECT_EQ(qelsim::counters().semWaits, 0u);
    EXPECT_EQ(traceLines(QEL_TRACE_FLOW).front(), "-->QEL_SASPortProvider::invokeMethod()\n"
        "\t className = QEL_FCPortLESBStatistics, methodName = ResetSelectedStats\n");
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE),
        std::vector<std::string>{"<--QEL_SASPortProvider::invokeMethod()\n"});

    // The counters read back as zero.
    std::vector<CIMInstance> instances;
    enumerateKeys(&instances);
    EXPECT_EQ(valueOf(instances.at(0), "LinkFailures"), CIMValue(Uint64(0)));

    // The method name is compared as a CIM name; any refusal answers 4.
    EXPECT_EQ(reset(statsKey(PORT_D), "resetselectedstats"), 0);
    EXPECT_EQ(reset(statsKey("00000000000000FF")), 4);
    ASSERT_TRUE(qelsim::injectFault("api_resetPortLESB", API_ERR_IO).ok);
    EXPECT_EQ(reset(statsKey(PORT_A)), 4);
}

TEST_F(LESBRetrieval, ResetRefusesBadKeysBeforeUnknownMethods)
{
    // The array knows no operation key for an unknown method; a forced grant
    // lets the request reach the key and method checks.
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    const std::string deviceNotFound =
        "QEL_FCPortLESBStatistics::invokeMethod()  Device not found with DeviceID=";
    const std::pair<std::pair<std::string, const char*>, std::string> cases[] = {
        {{"garbage", "ResetSelectedStats"}, deviceNotFound + "garbage"},
        {{"garbage", "Frobnicate"}, deviceNotFound + "garbage"},
        {{statsKey("FFFFFFFFFFFFFFF6"), "ResetSelectedStats"},
            deviceNotFound + statsKey("FFFFFFFFFFFFFFF6")},
        {{statsKey(PORT_A), "Frobnicate"},
            "QEL_FCPortLESBStatistics::invokeMethod(): Invalid method Frobnicate"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.second);
        try
        {
            reset(c.first.first, c.first.second);
            ADD_FAILURE() << "accepted";
        }
        catch (const CIMOperationFailedException& e)
        {
            EXPECT_EQ(str(e.getMessage()), c.second);
        }
    }
    EXPECT_TRUE(callsNamed({"api_resetPortLESB"}).empty());
}

TEST_F(LESBRetrieval, RefusalsCarrySourceAndLine)
{
    const CIMObjectPath sfpClass = classPath("QEL_SFP");
    const CIMObjectPath statsClass = classPath("QEL_FCPortLESBStatistics");
    struct Case
    {
        const char* name;
        const char* user;
        std::function<void()> arrange;
        std::function<void(const OperationContext&)> call;
        const char* source;
        Uint32 line;
        CIMStatusCode code;
        const char* message;
    };
    const char* const SESSION = "Insufficient privilege for the user";
    RecordingInstanceHandler ih;
    RecordingObjectPathHandler ph;
    const auto none = [] {};
    const auto invoke = [&](const OperationContext& ctx) { reset(statsKey(PORT_A), "ResetSelectedStats", ctx); };
    const Case cases[] = {
        {"SFP getInstance", "nobody", none, [&](const OperationContext& ctx) {
             sfp->getInstance(ctx, sfpClass, false, false, CIMPropertyList(), ih); },
            "QEL_SFPProvider", 113, CIM_ERR_ACCESS_DENIED, SESSION},
        {"SFP enumerateInstances", "retired", none, [&](const OperationContext& ctx) {
             sfp->enumerateInstances(ctx, sfpClass, false, false, CIMPropertyList(), ih); },
            "QEL_SFPProvider", 208, CIM_ERR_ACCESS_DENIED, SESSION},
        {"SFP enumerateInstanceNames", "nobody", none, [&](const OperationContext& ctx) {
             sfp->enumerateInstanceNames(ctx, sfpClass, ph); },
            "QEL_SFPProvider", 255, CIM_ERR_ACCESS_DENIED, SESSION},
        {"statistics getInstance", "nobody", none, [&](const OperationContext& ctx) {
             stats->getInstance(ctx, statsClass, false, false, CIMPropertyList(), ih); },
            "QEL_FCPortStatisticsProvider", 101, CIM_ERR_ACCESS_DENIED, SESSION},
        {"statistics enumerateInstances", "nobody", none, [&](const OperationContext& ctx) {
             stats->enumerateInstances(ctx, statsClass, false, false, CIMPropertyList(), ih); },
            "QEL_FCPortStatisticsProvider", 198, CIM_ERR_ACCESS_DENIED, SESSION},
        {"statistics enumerateInstanceNames", "nobody", none, [&](const OperationContext& ctx) {
             stats->enumerateInstanceNames(ctx, statsClass, ph); },
            "QEL_FCPortStatisticsProvider", 247, CIM_ERR_ACCESS_DENIED, SESSION},
        {"reset, session", "admin", [] { qelsim::refuseSessions(); }, invoke,
            "QEL_FCPortStatisticsProvider", 338, CIM_ERR_ACCESS_DENIED, SESSION},
        {"reset, browse user", "viewer", none, invoke,
            "QEL_FCPortStatisticsProvider", 339, CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege"},
        {"reset, forced 2", "admin", [] { qelsim::forceAuthorization(2); }, invoke,
            "QEL_FCPortStatisticsProvider", 339, CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege"},
        {"reset, forced 3", "admin", [] { qelsim::forceAuthorization(3); }, invoke,
            "QEL_FCPortStatisticsProvider", 339, CIM_ERR_NOT_SUPPORTED, "Does not support in generic!"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearFaults();
        c.arrange();
        qelsim::clearCallLog();
        try
        {
            c.call(asUser(c.user));
            ADD_FAILURE() << "accepted";
        }
        catch (const TraceableCIMException& e)
        {
            EXPECT_EQ(e.getCode(), c.code);
            EXPECT_EQ(str(e.getMessage()), c.message);
            EXPECT_EQ(e.getFile(), c.source);
            EXPECT_EQ(e.getLine(), c.line);
        }
        EXPECT_TRUE(readCalls().empty());
    }
    EXPECT_TRUE(ih.record.untouched());
    EXPECT_TRUE(ph.record.untouched());
}

} // namespace
