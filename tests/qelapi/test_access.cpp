// Sessions, operation authorization, injected faults, the semaphore and the
// library's log output.
#include "sim_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <string>

using namespace qelsimtest;

namespace
{

class Access : public SimTest
{
};

TEST_F(Access, SessionsOpenOnlyForKnownEnabledUsers)
{
    const std::pair<const char*, int> cases[] = {{"admin", API_OK},         {"operator", API_OK},
                                                 {"monitor", API_OK},       {"guest", API_ERR_PERM},
                                                 {"nobody", API_ERR_NOENT}, {"", API_ERR_NOENT},
                                                 {"Admin", API_ERR_NOENT}};
    for (const auto& c : cases)
        EXPECT_EQ(api_qelOpenForCimserver(c.first), c.second) << c.first;
    const qelsim::Counters n = qelsim::counters();
    EXPECT_EQ(n.sessionsOpened, 3u);
    EXPECT_EQ(n.sessionsRefused, 4u);
}

TEST_F(Access, RolesGrantOperationKeys)
{
    const char* const here = "192.0.2.10";
    const struct
    {
        const char* user;
        const char* addr;
        const char* key;
        int rc;
    } cases[] = {
        {"admin", here, "qel_fcport.modifyinstance", API_AUTH_GRANTED},
        {"admin", here, "qel_replicationservice.modifyreplicasynchronization.abort ",
         API_AUTH_GRANTED},
        {"operator", here, "qel_fcport.setoffline", API_AUTH_GRANTED},
        {"operator", here, "qel_fcportlesbstatistics.resetselectedstats", API_AUTH_GRANTED},
        {"operator", here, "qel_storagesetting.modifyinstance", API_AUTH_DENIED},
        {"monitor", here, "qel_fcport.reset", API_AUTH_DENIED},
        {"guest", here, "qel_fcport.reset", API_AUTH_NOT_ALLOWED},
        {"nobody", here, "qel_fcport.reset", API_AUTH_NOT_ALLOWED},
        {"remoteop", "192.168.10.5", "qel_fcport.reset", API_AUTH_GRANTED},
        {"remoteop", "0:0::1", "qel_fcport.reset", API_AUTH_GRANTED},  // compared in canonical form
        {"remoteop", "192.168.10.6", "qel_fcport.reset", API_AUTH_NOT_ALLOWED},
        {"remoteop", "", "qel_fcport.reset", API_AUTH_NOT_ALLOWED},
        {"admin", here, "qel_fcport.explode", API_AUTH_UNKNOWN_KEY},
        {"admin", here, "QEL_FCPort.Reset", API_AUTH_UNKNOWN_KEY},  // keys are lower case
        {"nobody", here, "qel_fcport.explode", API_AUTH_UNKNOWN_KEY},
        // The key with the trailing blank is the one the array knows; kept as its tools expect.
        {"admin", here, "qel_replicationservice.modifyreplicasynchronization.abort",
         API_AUTH_UNKNOWN_KEY},
    };
    for (const auto& c : cases)
        EXPECT_EQ(api_authorizeCIMUser(c.user, c.addr, c.key), c.rc)
            << c.user << " " << c.addr << " " << c.key;
}

TEST_F(Access, ForcedResultsOverrideSessionsAndAuthorization)
{
    ASSERT_TRUE(qelsim::refuseSessions(API_ERR_PERM, 1).ok);
    EXPECT_EQ(api_qelOpenForCimserver("admin"), API_ERR_PERM);
    EXPECT_EQ(api_qelOpenForCimserver("admin"), API_OK);  // used up
    ASSERT_TRUE(qelsim::forceAuthorization(API_AUTH_GRANTED).ok);
    EXPECT_EQ(api_authorizeCIMUser("monitor", "192.0.2.10", "qel_fcport.reset"), API_AUTH_GRANTED);
    ASSERT_TRUE(qelsim::forceAuthorization(2).ok);  // replaces the previous fault
    EXPECT_EQ(api_authorizeCIMUser("admin", "192.0.2.10", "qel_fcport.reset"), 2);
    EXPECT_EQ(qelsim::faults().size(), 1u);
    EXPECT_EQ(qelsim::clearFaults("api_authorizeCIMUser"), 1);
    EXPECT_EQ(api_authorizeCIMUser("admin", "192.0.2.10", "qel_fcport.reset"), API_AUTH_GRANTED);
}

TEST_F(Access, InjectedFaultsFailTheNamedCallForTheNextCalls)
{
    ASSERT_TRUE(qelsim::injectFault("api_getFCPorts", API_ERR_IO, 2).ok);
    api_FCPortList_t list{};
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, &list), API_ERR_IO);
        EXPECT_EQ(list.count, 0u);
        EXPECT_EQ(list.ports, nullptr);
    }
    EXPECT_EQ(api_getFCALPorts(API_ALL_PORTS, &list), API_OK);  // only the named call fails
    api_freeFCPorts(&list);
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, &list), API_OK);
    api_freeFCPorts(&list);
    EXPECT_TRUE(qelsim::faults().empty());

    ASSERT_TRUE(qelsim::injectFault("api_setPortOffline", 77).ok);  // always
    api_evtparam_t ev = event();
    uint16_t id = lpid(kOkPort);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(api_setPortOffline(&ev, 1, &id), 77);
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OK);
    ASSERT_TRUE(qelsim::injectFault("api_findFCPortLPID", API_LPID_UNKNOWN).ok);
    EXPECT_EQ(api_findFCPortLPID("20110002AC00A001"), API_LPID_UNKNOWN);
}

TEST_F(Access, FaultRequestsThatMakeNoSenseAreRefused)
{
    struct Case
    {
        const char* call;
        int code;
        int64_t times;
    } cases[] = {{"api_noSuchCall", 5, -1}, {"api_freeFCPorts", 5, -1}, {"cim_sem_post", 5, -1},
                 {"api_getFCPorts", 0, -1}, {"api_getFCPorts", 5, 0},   {"api_getFCPorts", 5, -2}};
    for (const Case& c : cases)
    {
        const qelsim::Result r = qelsim::injectFault(c.call, c.code, c.times);
        EXPECT_FALSE(r.ok) << c.call;
        EXPECT_FALSE(r.error.empty());
    }
    EXPECT_TRUE(qelsim::faults().empty());
}

TEST_F(Access, SemaphoreCountsWaitsPostsAndFailures)
{
    ASSERT_EQ(cim_sem_wait(), 0);
    api_FCPortList_t list{};
    api_getFCPorts(API_ALL_PORTS, 3, 0, &list);  // inside the bracket
    ASSERT_EQ(cim_sem_post(), 0);
    api_freeFCPorts(&list);
    EXPECT_EQ(cim_sem_post(), API_ERR_INVAL);  // nothing to give back
    ASSERT_TRUE(qelsim::failSemaphoreWait(API_ERR_BUSY, 1).ok);
    EXPECT_EQ(cim_sem_wait(), API_ERR_BUSY);
    api_getPortLESB(kSyncPort, nullptr);  // outside the bracket
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, 1u);
    EXPECT_EQ(c.semPosts, 1u);
    EXPECT_EQ(c.semUnbalancedPosts, 1u);
    EXPECT_EQ(c.semFailedWaits, 1u);
    EXPECT_EQ(c.unbracketedCalls, 1u);
    EXPECT_EQ(
        qelsim::callTexts(), (std::vector<std::string>{
                                 "cim_sem_wait()", "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 0, ptr)",
                                 "cim_sem_post()", "api_freeFCPorts(ptr)", "cim_sem_post()",
                                 "cim_sem_wait()", "api_getPortLESB(0x21110002AC00A001, null)"}));
}

TEST_F(Access, LogKeepsLinesAtOrBelowTheThresholdOneLinePerCall)
{
    // A relative destination is taken from the array file's folder.
    ScratchDir dir;
    std::string text = qelsim::demoArrayText();
    const std::string stderrLog = "\"log\": {\"level\": 3, \"destination\": \"stderr\"}";
    text.replace(
        text.find(stderrLog), stderrLog.size(),
        "\"log\": {\"level\": 3, \"destination\": \"trace.log\"}");
    writeFile(dir.file("array.json"), text);
    ASSERT_TRUE(qelsim::loadArrayFile(dir.file("array.json")).ok);
    const std::string logFile = dir.file("trace.log");
    qelsim::captureLog(true);
    log_message(4, "-->QEL_Common::getProperty(uint16), propertyName = %s\n", "Mode");
    log_message(3, "\tInvalid property name.\n");
    log_message(2, "--> QEL_FCPortSFPProvider::initialize(cimom)\n)");
    const std::string out = readFile(logFile);
    EXPECT_EQ(out.find("getProperty"), std::string::npos);
    EXPECT_NE(out.find("] \tInvalid property name.\n"), std::string::npos);
    EXPECT_NE(
        out.find("initialize(cimom)\\n)\n"),
        std::string::npos);  // the inner line end is shown, not broken
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
    const auto captured = qelsim::capturedLog();
    ASSERT_EQ(captured.size(), 3u);  // captured whatever the threshold
    EXPECT_EQ(captured[0].level, 4);
    EXPECT_EQ(captured[0].text, "-->QEL_Common::getProperty(uint16), propertyName = Mode\n");
}

TEST_F(Access, TracesAboveTheThresholdAreNeverFormatted)
{
    // The demo array keeps levels up to 3. Formatting the level-4 line would read
    // the string at address 1 and crash; a line at the threshold is formatted.
    const char* unreadable = reinterpret_cast<const char*>(1);
    log_message(4, "-->QEL_Common::setProperty(uint16), propertyName = %s\n", unreadable);
    qelsim::captureLog(true);
    log_message(3, "\tInvalid property name %s.\n", "a b");
    ASSERT_EQ(qelsim::capturedLog().size(), 1u);
    EXPECT_EQ(qelsim::capturedLog()[0].text, "\tInvalid property name a b.\n");
}

TEST(Panic, StopsTheProcessWithTheMessage)
{
    EXPECT_DEATH(
        qel_panic("Assertion point: file: %s, line: %d\n", "../QEL_Common", 5332),
        "Assertion point: file: ../QEL_Common, line: 5332");
}

}  // namespace
