// Changes of the simulated array: port settings, port actions, LESB reset,
// all-or-nothing behaviour, the audit log and the call log.
#include "sim_fixture.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <sstream>

using namespace qelsimtest;

namespace
{

class Changes : public SimTest
{
};

using Setter = std::function<int(api_evtparam_t*, int, uint16_t*, uint32_t)>;

TEST_F(Changes, EachSettingTakesItsRangeAndRefusesValuesOutsideIt)
{
    const struct
    {
        const char* name;
        Setter set;
        std::function<int32_t(const api_FCPort_t&)> read;
        uint32_t good;
        std::vector<uint32_t> bad;
    } cases[] = {
        {"mode",
         [](auto* e, int n, auto* ids, uint32_t v)
         { return api_setFCPortMode(e, n, ids, uint16_t(v), false); },
         [](const api_FCPort_t& p) { return p.mode; },
         3,
         {0, 4}},
        {"connType",
         [](auto* e, int n, auto* ids, uint32_t v)
         { return api_setFCPortConnType(e, n, ids, uint16_t(v)); },
         [](const api_FCPort_t& p) { return p.connectionType; },
         1,
         {0, 5}},
        {"class2",
         [](auto* e, int n, auto* ids, uint32_t v)
         { return api_setFCPortClass2(e, n, ids, uint16_t(v)); },
         [](const api_FCPort_t& p) { return p.class2; },
         3,
         {0, 4}},
        {"vcn",
         [](auto* e, int n, auto* ids, uint32_t v)
         { return api_setFCPortVCN(e, n, ids, uint16_t(v)); },
         [](const api_FCPort_t& p) { return p.vcn; },
         1,
         {0, 3}},
        {"intCoal",
         [](auto* e, int n, auto* ids, uint32_t v)
         { return api_setFCPortIntCoal(e, n, ids, uint16_t(v)); },
         [](const api_FCPort_t& p) { return p.interruptCoalescing; },
         2,
         {0, 3}},
        {"speed",
         api_setFCPortSpeed,
         [](const api_FCPort_t& p) { return p.configuredRate; },
         4,
         {3, 5, 32}},
    };
    api_evtparam_t ev = event();
    uint16_t id = lpid(kOkPort), unknown = API_LPID_UNKNOWN;
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        for (uint32_t v : c.bad)
        {
            const int32_t before = c.read(port(kOkPort));
            EXPECT_EQ(c.set(&ev, 1, &id, v), API_ERR_INVAL) << v;
            EXPECT_EQ(c.read(port(kOkPort)), before);
        }
        EXPECT_EQ(c.set(&ev, 1, &id, c.good), API_OK);
        EXPECT_EQ(c.read(port(kOkPort)), static_cast<int32_t>(c.good));
        EXPECT_EQ(c.set(nullptr, 1, &id, c.good), API_ERR_INVAL);
        EXPECT_EQ(c.set(&ev, 1, nullptr, c.good), API_ERR_INVAL);
        EXPECT_EQ(c.set(&ev, 0, &id, c.good), API_ERR_INVAL);
        EXPECT_EQ(c.set(&ev, -1, &id, c.good), API_ERR_INVAL);
        EXPECT_EQ(c.set(&ev, 1, &unknown, c.good), API_ERR_NOENT);
    }
}

TEST_F(Changes, ModeNeedsThePortsPermissionOrForceAndSpeedIsCappedByThePort)
{
    api_evtparam_t ev = event();
    uint16_t locked = lpid(kLockedPort);
    EXPECT_EQ(api_setFCPortMode(&ev, 1, &locked, 2, false), API_ERR_PERM);
    EXPECT_EQ(port(kLockedPort).mode, 1);
    EXPECT_EQ(api_setFCPortMode(&ev, 1, &locked, 2, true), API_OK);
    EXPECT_EQ(port(kLockedPort).mode, 2);

    uint16_t fast = lpid(kOfflinePort);  // maxRate 16
    EXPECT_EQ(api_setFCPortSpeed(&ev, 1, &fast, 0), API_OK);
    EXPECT_EQ(port(kOfflinePort).configuredRate, 3);  // 0 asks for automatic
    EXPECT_EQ(api_setFCPortSpeed(&ev, 1, &fast, 16), API_OK);
    EXPECT_EQ(port(kOfflinePort).configuredRate, 16);
    uint16_t slow = lpid(kErrorPort);  // maxRate 4
    EXPECT_EQ(api_setFCPortSpeed(&ev, 1, &slow, 8), API_ERR_INVAL);
    EXPECT_EQ(port(kErrorPort).configuredRate, 4);
}

TEST_F(Changes, PortActionsMoveThePortState)
{
    const struct
    {
        const char* name;
        std::function<int(api_evtparam_t*, int, uint16_t*)> act;
        uint64_t wwn;
        api_port_status_t before, after;
    } cases[] = {
        {"offline", api_setPortOffline, kOkPort, PORT_OK, PORT_OFFLINE},
        {"reset", api_resetPort, kOfflinePort, PORT_OFFLINE, PORT_OK},
        {"reload", api_reloadPortFW, kErrorPort, PORT_ERROR, PORT_OK},
        {"sync", api_syncFCPortDB, kSyncPort, PORT_LOSS_SYNC, PORT_LOSS_SYNC},
        {"initLoop",
         [](api_evtparam_t* e, int n, uint16_t* ids)
         { return api_initFCPortLoop(e, n, ids, nullptr); },
         kUnknownPort, PORT_UNKNOWN, PORT_OK},
    };
    api_evtparam_t ev = event();
    // InitializeLoop checks the cage it is given; a refusal changes nothing (the reload case sees PORT_ERROR).
    uint16_t errorPort = lpid(kErrorPort);
    EXPECT_EQ(api_initFCPortLoop(&ev, 1, &errorPort, "cage9"), API_ERR_NOENT);
    EXPECT_EQ(api_initFCPortLoop(&ev, 1, &errorPort, ""), API_ERR_INVAL);
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        uint16_t id = lpid(c.wwn);
        EXPECT_EQ(port(c.wwn).portStatus, c.before);
        EXPECT_EQ(c.act(&ev, 1, &id), API_OK);
        EXPECT_EQ(port(c.wwn).portStatus, c.after);
        EXPECT_EQ(c.act(nullptr, 1, &id), API_ERR_INVAL);
    }
    EXPECT_EQ(api_initFCPortLoop(&ev, 1, &errorPort, "cage1"), API_OK);
}

TEST_F(Changes, AChangeOfSeveralPortsIsAllOrNothing)
{
    api_evtparam_t ev = event();
    uint16_t ids[3] = {lpid(kOkPort), lpid(kLockedPort), API_LPID_UNKNOWN};
    EXPECT_EQ(api_setPortOffline(&ev, 3, ids), API_ERR_NOENT);
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OK);
    // The second port refuses the mode change: the first keeps its mode too.
    EXPECT_EQ(api_setFCPortMode(&ev, 2, ids, 2, false), API_ERR_PERM);
    EXPECT_EQ(port(kOkPort).mode, 1);
    EXPECT_EQ(api_setPortOffline(&ev, 2, ids), API_OK);
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OFFLINE);
    EXPECT_EQ(port(kLockedPort).portStatus, PORT_OFFLINE);
}

TEST_F(Changes, ResetPortLesbZeroesEveryRecordOfThatPortOnly)
{
    api_evtparam_t ev = event("operator", "QEL_FCPortLESBStatistics:ResetSelectedStats");
    const uint64_t before = static_cast<uint64_t>(std::time(nullptr));
    ASSERT_EQ(api_resetPortLESB(&ev, kOkPort), API_OK);
    api_portLESBList_t l{};
    ASSERT_EQ(api_getPortLESB(API_ALL_PORTS, &l), API_OK);
    for (uint32_t i = 0; i < 2; ++i)
    {
        const api_portLESB_t& r = l.lesb[i];
        EXPECT_EQ(
            r.linkFailures + r.lossOfSync + r.lossOfSignal + r.primitiveSeqErrors +
                r.invalidTxWords + r.crcErrors,
            0u);
        EXPECT_GE(r.sampleTime, before);
    }
    EXPECT_EQ(l.lesb[2].linkFailures, 9u);  // the next port's record is untouched
    std::free(l.lesb);
    EXPECT_EQ(api_resetPortLESB(&ev, 0x77), API_ERR_NOENT);
    EXPECT_EQ(api_resetPortLESB(&ev, API_ALL_PORTS), API_ERR_INVAL);
    EXPECT_EQ(api_resetPortLESB(nullptr, kOkPort), API_ERR_INVAL);
}

TEST_F(Changes, CallLogKeepsArgumentsAndACopyOfTheEvent)
{
    api_evtparam_t ev = event("operator", "QEL_FCPort:ModifyInstance");
    uint16_t id = lpid(kOkPort);
    qelsim::clearCallLog();
    ASSERT_EQ(api_setFCPortMode(&ev, 1, &id, 2, false), API_OK);
    ASSERT_EQ(api_initFCPortLoop(&ev, 1, &id, "cage0"), API_OK);
    ev.user[0] = 'X';  // the log holds its own copy
    const auto log = qelsim::callLog();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].text(), "api_setFCPortMode(ptr, 1, [1057], 2, false)");
    EXPECT_EQ(log[1].text(), "api_initFCPortLoop(ptr, 1, [1057], \"cage0\")");
    EXPECT_TRUE(log[0].hasEvent);
    EXPECT_STREQ(log[0].event.user, "operator");
    EXPECT_STREQ(log[0].event.method, "QEL_FCPort:ModifyInstance");
    EXPECT_LT(log[0].seq, log[1].seq);
}

TEST_F(Changes, CallLogKeepsTheLast16384CallsInOrder)
{
    constexpr int kKept = 16384;
    uint16_t id = 0;
    const auto call = [&id](int i)
    { api_convertStrLPIDtoPortID(("0:" + std::to_string(i % 32) + ":1").c_str(), &id); };
    for (int i = 0; i < kKept; ++i)
        call(i);
    auto log = qelsim::callLog();
    ASSERT_EQ(log.size(), static_cast<size_t>(kKept));
    const uint64_t first = log.front().seq;
    call(kKept);  // one more: the oldest goes
    log = qelsim::callLog();
    ASSERT_EQ(log.size(), static_cast<size_t>(kKept));
    EXPECT_EQ(log.front().seq, first + 1);
    EXPECT_EQ(log.back().seq, first + kKept);
    EXPECT_EQ(log.back().text(), "api_convertStrLPIDtoPortID(\"0:0:1\", ptr)");
    EXPECT_EQ(log[kKept - 2].text(), "api_convertStrLPIDtoPortID(\"0:31:1\", ptr)");

    qelsim::clearCallLog();
    call(1);
    ASSERT_EQ(
        qelsim::callTexts(),
        std::vector<std::string>{"api_convertStrLPIDtoPortID(\"0:1:1\", ptr)"});
}

TEST_F(Changes, EveryChangeIsAuditedWithItsResult)
{
    ScratchDir dir;
    load(qelsim::demoArrayText(), dir.file("array.state.json"));
    api_evtparam_t ev = event("operator", "QEL_FCPort:SetOffline");
    std::strcpy(ev.inst_op, "op1");
    uint16_t id = lpid(kOkPort), bad = API_LPID_UNKNOWN;
    ASSERT_EQ(api_setPortOffline(&ev, 1, &id), API_OK);
    ASSERT_EQ(api_setPortOffline(&ev, 1, &bad), API_ERR_NOENT);
    ASSERT_EQ(qelsim::setPortState("0:1:1", PORT_OK, "tester"), API_OK);

    std::istringstream lines(readFile(dir.file("array.audit.jsonl")));
    std::vector<nlohmann::json> entries;
    for (std::string line; std::getline(lines, line);)
        entries.push_back(nlohmann::json::parse(line));
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_TRUE(entries[0]["time"].is_string());
    entries[0].erase("time");
    EXPECT_EQ(
        entries[0],
        nlohmann::json::parse(R"({"user": "operator", "address": "192.0.2.10", "op": "op1",
        "method": "QEL_FCPort:SetOffline", "call": "api_setPortOffline", "param": "", "ports": ["0:1:1"], "result": 0})"));
    EXPECT_EQ(entries[1]["result"], API_ERR_NOENT);
    EXPECT_EQ(entries[2]["user"], "tester");
    EXPECT_EQ(entries[2]["method"], "qelsim:set-state");
}

TEST_F(Changes, OutsideChangesTakePositionsOrWwnsAndBumpCounters)
{
    EXPECT_EQ(qelsim::setPortState("20110002ac00a001", PORT_FWDEAD, "t"), API_OK);
    EXPECT_EQ(port(kOkPort).portStatus, PORT_FWDEAD);
    EXPECT_EQ(qelsim::setPortState("9:9:9", PORT_OK, "t"), API_ERR_NOENT);
    EXPECT_EQ(
        qelsim::setPortState("0:1:1", static_cast<api_port_status_t>(42), "t"), API_ERR_INVAL);

    EXPECT_EQ(
        qelsim::bumpLesb("1:1:1", "crcErrors", 5, "t"), API_OK);  // a port without records gets one
    EXPECT_EQ(qelsim::bumpLesb("1:2:1", "linkFailures", 10, "t"), API_OK);  // stops at the maximum
    EXPECT_EQ(qelsim::bumpLesb("1:2:1", "noSuchCounter", 1, "t"), API_ERR_INVAL);
    api_portLESBList_t l{};
    ASSERT_EQ(api_getPortLESB(kSyncPort, &l), API_OK);
    ASSERT_EQ(l.count, 1u);
    EXPECT_EQ(l.lesb[0].crcErrors, 5u);
    std::free(l.lesb);
    ASSERT_EQ(api_getPortLESB(kUnknownPort, &l), API_OK);
    EXPECT_EQ(l.lesb[0].linkFailures, UINT64_MAX);
    std::free(l.lesb);

    api_port_status_t st;
    EXPECT_TRUE(qelsim::parsePortState("offline", &st));
    EXPECT_EQ(st, PORT_OFFLINE);
    EXPECT_TRUE(qelsim::parsePortState("PORT_Loss_Sync", &st));
    EXPECT_EQ(st, PORT_LOSS_SYNC);
    EXPECT_FALSE(qelsim::parsePortState("sideways", &st));
}

}  // namespace
