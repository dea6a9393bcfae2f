// QEL_FCPortLESBStatistics: the InstanceID key and its inverse, instances built from LESB records,
// retrieval, ResetSelectedStats, and the access refusals of both providers of this suite.
#include "StatsTest.h"

#include <Pegasus/Provider/ProviderException.h>

#include <cstring>
#include <functional>
#include <tuple>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

static std::string statsKey(const char* port)
{
    return std::string("ZEPHRAN:") + port + "-Stats";
}

static api_portLESB_t lesbRecord(const char* portText)
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
        {"abc", NONE},
        {"", NONE},
        {"ZEPHRAN:-Stats", NONE},
        {"zephran:FF-Stats", NONE},
        {"ZEPHRAN-FF-Stats", NONE},
    };
    for (const auto& c : cases)
        EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(c.first), c.second) << c.first;
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
    record.sampleTime = 1700000000, record.portId = lpid;
    record.linkFailures = 18446744073709551615ULL, record.lossOfSync = 18446744073709551614ULL;
    record.lossOfSignal = 9223372036854775808ULL, record.primitiveSeqErrors = 0;
    record.invalidTxWords = 1, record.crcErrors = 4294967296ULL;

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
        EXPECT_EQ(valueOf(full, e.first), e.second) << e.first;
    EXPECT_EQ(
        full.getPath(),
        CIMObjectPath(
            "//h1/root/qel:QEL_FCPortLESBStatistics.InstanceID=\"ZEPHRAN:5000000000000ABC-Stats\""));
    EXPECT_EQ(
        full.getPath(),
        QEL_FCPortStatisticsProvider::buildObjectPath("h1", "ZEPHRAN:5000000000000ABC-Stats"));

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
        EXPECT_EQ(keyValue(keyOnly.getPath(), "InstanceID"), c.second);
        for (const char* name : {"ElementName", "StatisticTime", "LinkFailures", "CRCErrors"})
            EXPECT_TRUE(valueOf(keyOnly, name).isNull()) << name;
    }
}

// ------------------------------------------------------------------ retrieval

class LESBRetrieval : public StatsTest
{
protected:
    // The InstanceIDs an enumeration delivers, checked to come in one array.
    Texts keys(Op op, std::vector<CIMInstance>* instances = nullptr)
    {
        const Answer answer = request("QEL_FCPortLESBStatistics", op);
        EXPECT_EQ(answer.sequence, "processing deliver[] complete");
        if (instances != nullptr)
            *instances = answer.instances;
        return op == ENUMERATE_INSTANCES ? keysOf(answer.instances, "InstanceID")
                                         : keysOf(answer.paths, "InstanceID");
    }

    static CIMObjectPath
    statsPath(const std::string& key, const char* cls = "QEL_FCPortLESBStatistics")
    {
        return qelPath(cls, {"InstanceID", key.c_str()}, "anyhost");
    }

    Sint32 reset(
        const std::string& key, const char* method = "ResetSelectedStats",
        const OperationContext& context = asOperator())
    {
        RecordingMethodHandler handler;
        stats->invokeMethod(context, statsPath(key), method, Array<CIMParamValue>(), handler);
        EXPECT_EQ(handler.record.sequence, "processing deliver complete");
        Sint32 result = -1;
        handler.returnValues.at(0).get(result);
        return result;
    }
};

const std::string LESB_READ_A = "api_getPortLESB(0x20110002AC001234, ptr)";

TEST_F(LESBRetrieval, EveryPortEnumeratedButNamesOnlyForRecords)
{
    std::vector<CIMInstance> instances;
    EXPECT_EQ(
        keys(ENUMERATE_INSTANCES, &instances),
        (Texts{statsKey(PORT_A), statsKey(PORT_B), statsKey(PORT_D)}));
    EXPECT_EQ(
        readCalls(), (Texts{
                         "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 0, ptr)", LESB_READ_A,
                         "api_getPortLESB(0x21230002AC001235, ptr)",
                         "api_getPortLESB(0x22320002AC001236, ptr)", "api_freeFCPorts(ptr)"}));
    ASSERT_EQ(instances.size(), 3u);
    // The first record of a port counts; a port without one has only its key.
    EXPECT_EQ(valueOf(instances[0], "LinkFailures"), CIMValue(Uint64(18446744073709551615ULL)));
    EXPECT_TRUE(valueOf(instances[1], "LinkFailures").isNull());
    EXPECT_EQ(valueOf(instances[2], "ElementName"), CIMValue(String("")));
    EXPECT_EQ(instances[0].getPath().getHost(), HOST);

    qelsim::clearCallLog();
    // One name per record: port A twice, port B not at all.
    EXPECT_EQ(
        keys(ENUMERATE_INSTANCE_NAMES),
        (Texts{statsKey(PORT_A), statsKey(PORT_A), statsKey(PORT_D)}));
    EXPECT_EQ(readCalls(), Texts{"api_getPortLESB(0xFFFFFFFFFFFFFFF6, ptr)"});
    EXPECT_EQ(qelsim::counters().lesbArraysHandedOut, 3u);
    EXPECT_NE(qelsim::leakCheck(), 1) << "LESB records not freed";
}

TEST_F(LESBRetrieval, GetInstanceReadsOnePortAndMatchesThePath)
{
    const std::string notFound =
        "CIM_ERR_NOT_FOUND: QEL_FCPortLESBStatistics CIM Object not found.";
    // failure: "" when found; lesbRead: "" when nothing is read.
    const struct
    {
        const char* name;
        CIMObjectPath path;
        std::string failure, lesbRead;
    } cases[] = {
        {"found", statsPath(statsKey(PORT_A)), "", LESB_READ_A},
        {"class name in lower case", statsPath(statsKey(PORT_D), "qel_fcportlesbstatistics"), "",
         "api_getPortLESB(0x22320002AC001236, ptr)"},
        // Known port without records: the doubled key matches nothing.
        {"no records", statsPath(statsKey(PORT_B)), notFound + statsKey(PORT_B),
         "api_getPortLESB(0x21230002AC001235, ptr)"},
        {"unknown port", statsPath(statsKey("00000000000000FF")),
         notFound + statsKey("00000000000000FF"), "api_getPortLESB(0x00000000000000FF, ptr)"},
        // Unparsable: every port is asked, the first record's path differs.
        {"unparsable", statsPath("garbage"), notFound + "garbage",
         "api_getPortLESB(0xFFFFFFFFFFFFFFF6, ptr)"},
        {"no key", qelPath("QEL_FCPortLESBStatistics", {}),
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortLESBStatistics InstanceID key not found.", ""},
        {"other class", statsPath(statsKey(PORT_A), "QEL_SFP"),
         "CIM_ERR_NOT_SUPPORTED: QEL_FCPortLESBStatistics Invalid class name", ""},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        const Answer answer = request("QEL_FCPortLESBStatistics", GET_INSTANCE, c.path);
        EXPECT_EQ(answer.failure, c.failure);
        EXPECT_EQ(answer.sequence, c.failure.empty() ? "processing deliver complete" : "");
        if (c.failure.empty())
        {
            ASSERT_EQ(answer.instances.size(), 1u);
            EXPECT_TRUE(QEL_Common::matchObjectPath(c.path, answer.instances[0].getPath()));
        }
        // A single pass reads no port list, yet hands the unfilled one back.
        EXPECT_EQ(
            readCalls(),
            (c.lesbRead.empty() ? Texts() : Texts{c.lesbRead, "api_freeFCPorts(ptr)"}));
    }
}

TEST_F(LESBRetrieval, FailedReadsLeaveOutWhatTheyRead)
{
    const Texts allNames = {statsKey(PORT_A), statsKey(PORT_A), statsKey(PORT_D)};
    const struct
    {
        const char* call;
        int code;
        int64_t times;
        Texts instanceKeys, nameKeys;
    } cases[] = {
        {"api_getFCPorts", API_ERR_IO, -1, {}, allNames},
        // The first pass (port A) fails, the others follow; the names' read comes after the fault is spent.
        {"api_getPortLESB", API_ERR_IO, 1, {statsKey(PORT_B), statsKey(PORT_D)}, allNames},
        {"api_getPortLESB", API_ERR_NOMEM, -1, {}, {}},
        {"cim_sem_wait", API_ERR_BUSY, -1, {}, {}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.call);
        qelsim::clearFaults();
        ASSERT_TRUE(qelsim::injectFault(c.call, c.code, c.times).ok);
        EXPECT_EQ(keys(ENUMERATE_INSTANCES), c.instanceKeys);
        EXPECT_EQ(keys(ENUMERATE_INSTANCE_NAMES), c.nameKeys);
    }

    // A sample time no calendar holds makes the build throw midway; the lists still go back.
    qelsim::clearFaults();
    std::string text = fixtureText(STATS_FIXTURE);
    const std::string sample = "\"sampleTime\": 1700000200";
    text.replace(text.find(sample), sample.size(), "\"sampleTime\": 9223372036854775808");
    loadArray(text);
    qelsim::clearCallLog();
    EXPECT_EQ(
        request("QEL_FCPortLESBStatistics", ENUMERATE_INSTANCES).failure.substr(0, 6), "other:");
    EXPECT_EQ(callsNamed({"api_freeFCPorts"}).size(), 1u);
    EXPECT_NE(qelsim::leakCheck(), 1) << "LESB records not freed";
}

TEST_F(LESBRetrieval, ResetAnswersZeroOrFourWithoutTheSemaphore)
{
    EXPECT_EQ(reset(statsKey(PORT_A)), 0);
    EXPECT_EQ(
        callsNamed({"api_resetPortLESB"}), Texts{"api_resetPortLESB(ptr, 0x20110002AC001234)"});
    EXPECT_EQ(
        eventOf("api_resetPortLESB"),
        "QEL_FCPortLESBStatistics:ResetSelectedStats|||operator|192.0.2.10");
    EXPECT_EQ(qelsim::counters().semWaits, 0u);
    // The trace names another provider, as intended.
    EXPECT_EQ(
        traceLines(QEL_TRACE_FLOW).front(),
        "-->QEL_SASPortProvider::invokeMethod()\n"
        "\t className = QEL_FCPortLESBStatistics, methodName = ResetSelectedStats\n");
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE), Texts{"<--QEL_SASPortProvider::invokeMethod()\n"});

    // The counters read back as zero.
    std::vector<CIMInstance> instances;
    keys(ENUMERATE_INSTANCES, &instances);
    EXPECT_EQ(valueOf(instances.at(0), "LinkFailures"), CIMValue(Uint64(0)));

    // The method name is compared as a CIM name; any refusal answers 4.
    EXPECT_EQ(reset(statsKey(PORT_D), "resetselectedstats"), 0);
    EXPECT_EQ(reset(statsKey("00000000000000FF")), 4);
    ASSERT_TRUE(qelsim::injectFault("api_resetPortLESB", API_ERR_IO).ok);
    EXPECT_EQ(reset(statsKey(PORT_A)), 4);

    qelsim::clearFaults();
    qelsim::clearCallLog();
    // The array knows no operation key for an unknown method; a forced grant
    // lets the request reach the key and method checks.
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    const std::string deviceNotFound =
        "QEL_FCPortLESBStatistics::invokeMethod()  Device not found with DeviceID=";
    const struct
    {
        std::string key;
        const char* method;
        std::string message;
    } cases[] = {
        {"garbage", "ResetSelectedStats", deviceNotFound + "garbage"},
        {"garbage", "Frobnicate", deviceNotFound + "garbage"},
        {statsKey("FFFFFFFFFFFFFFF6"), "ResetSelectedStats",
         deviceNotFound + statsKey("FFFFFFFFFFFFFFF6")},
        {statsKey(PORT_A), "Frobnicate",
         "QEL_FCPortLESBStatistics::invokeMethod(): Invalid method Frobnicate"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrown<CIMOperationFailedException>([&] { reset(c.key, c.method); }), c.message);
    EXPECT_TRUE(callsNamed({"api_resetPortLESB"}).empty());
}

TEST_F(LESBRetrieval, RefusalsCarrySourceAndLine)
{
    const std::string SESSION = "): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user";
    // An unknown user and a disabled one, for every read.
    const std::tuple<const char*, Op, const char*, int> reads[] = {
        {"QEL_SFP", GET_INSTANCE, "nobody", 113},
        {"QEL_SFP", ENUMERATE_INSTANCES, "retired", 208},
        {"QEL_SFP", ENUMERATE_INSTANCE_NAMES, "nobody", 255},
        {"QEL_FCPortLESBStatistics", GET_INSTANCE, "nobody", 101},
        {"QEL_FCPortLESBStatistics", ENUMERATE_INSTANCES, "nobody", 198},
        {"QEL_FCPortLESBStatistics", ENUMERATE_INSTANCE_NAMES, "retired", 247}};
    for (const auto& [cls, op, user, line] : reads)
    {
        SCOPED_TRACE(std::string(cls) + " " + OP_NAMES[op]);
        qelsim::clearCallLog();
        const Answer answer = request(cls, op, qelPath(cls, {}), Request(), user);
        const std::string source =
            std::string(cls) == "QEL_SFP" ? "QEL_SFPProvider(" : "QEL_FCPortStatisticsProvider(";
        EXPECT_EQ(answer.failure, source + std::to_string(line) + SESSION);
        EXPECT_EQ(answer.sequence, "");
        EXPECT_TRUE(readCalls().empty());
    }

    const std::string DENIED = "): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege";
    const struct
    {
        const char* user;
        std::function<void()> arrange;
        std::string refusal;
    } resets[] = {
        {"admin", [] { qelsim::refuseSessions(); }, "338" + SESSION},
        {"viewer", [] {}, "339" + DENIED},
        {"admin", [] { qelsim::forceAuthorization(2); }, "339" + DENIED},
        {"admin", [] { qelsim::forceAuthorization(3); },
         "339): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
    };
    for (const auto& c : resets)
    {
        SCOPED_TRACE(c.refusal);
        qelsim::clearFaults();
        c.arrange();
        qelsim::clearCallLog();
        EXPECT_EQ(
            thrown([&] { reset(statsKey(PORT_A), "ResetSelectedStats", asUser(c.user)); }),
            "QEL_FCPortStatisticsProvider(" + c.refusal);
        EXPECT_TRUE(readCalls().empty());
    }
}
