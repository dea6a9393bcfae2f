// The shared state file: changes survive restarts, reach other processes, are
// never lost when two processes write, and a killed writer never tears the file.
#include "sim_fixture.h"

#include "atomic_file.h"
#include "audit.h"
#include "audit_journal.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <random>
#include <sstream>
#include <thread>
#include <csignal>
#include <filesystem>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qelsimtest;

namespace
{

class Persistence : public SimTest
{
protected:
    qelsim::AttachOptions options(const ScratchDir& dir)
    {
        qelsim::AttachOptions o;
        o.arrayPath = dir.file("array.json");
        o.statePath = dir.file("array.state.json");
        return o;
    }
    void writeDemo(const ScratchDir& dir)
    {
        writeFile(dir.file("array.json"), qelsim::demoArrayText());
    }
};

// Runs f in a child process attached to the same array; returns the child's exit status.
int inChild(const qelsim::AttachOptions& o, const std::function<int()>& f)
{
    pid_t pid = ::fork();
    if (pid == 0)
    {
        int rc = qelsim::attach(o).ok ? f() : 99;
        ::_exit(rc);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
}

TEST_F(Persistence, ChangesSurviveAReattachAndReachOtherProcessesUntilTheArrayFileChanges)
{
    ScratchDir dir;
    writeDemo(dir);
    ASSERT_TRUE(qelsim::attach(options(dir)).ok);
    api_evtparam_t ev = event();
    uint16_t id = lpid(kOkPort);
    ASSERT_EQ(api_setPortOffline(&ev, 1, &id), API_OK);
    ASSERT_TRUE(qelsim::injectFault("api_getISCSIPorts", 9, 2).ok);

    // Another process sees the change and the fault, and makes a change of its own.
    EXPECT_EQ(
        inChild(
            options(dir),
            []
            {
                api_FCPortList_t l{};
                api_getFCPorts(kOkPort, 3, 0, &l);
                int seen = l.count == 1 && l.ports[0].portStatus == PORT_OFFLINE;
                api_freeFCPorts(&l);
                api_iSCSIPortList_t is{};
                seen = seen && api_getISCSIPorts(&is) == 9;
                return seen && qelsim::setPortState("1:1:2", PORT_OK, "child") == API_OK ? 0 : 1;
            }),
        0);
    api_iSCSIPortList_t is{};
    EXPECT_EQ(api_getISCSIPorts(&is), 9);  // the fault's count is shared: one failure was left
    EXPECT_EQ(api_getISCSIPorts(&is), API_OK);
    std::free(is.ports);
    EXPECT_EQ(port(kErrorPort).portStatus, PORT_OK);  // picked up without reattaching

    ASSERT_TRUE(qelsim::attach(options(dir)).ok);  // as after a server restart
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OFFLINE);
    ASSERT_TRUE(qelsim::resetToArray().ok);
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OK);

    // An edited array file seeds the state again.
    ASSERT_EQ(qelsim::setPortState("0:1:1", PORT_ERROR, "t"), API_OK);
    std::string edited = qelsim::demoArrayText();
    edited.replace(edited.find("\"DEMO01\""), 8, "\"DEMO02\"");
    writeFile(dir.file("array.json"), edited);
    ASSERT_TRUE(qelsim::attach(options(dir)).ok);
    api_sysident_t ident{};
    ASSERT_EQ(api_getSystemIdentity(&ident), API_OK);
    EXPECT_STREQ(ident.systemName, "DEMO02");
    EXPECT_EQ(port(kOkPort).portStatus, PORT_OK);
}

TEST_F(Persistence, TwoProcessesWritingAtOnceLoseNoUpdate)
{
    ScratchDir dir;
    writeDemo(dir);
    ASSERT_TRUE(qelsim::attach(options(dir)).ok);
    constexpr int kChildren = 3, kBumps = 15;
    std::vector<pid_t> pids;
    for (int c = 0; c < kChildren; ++c)
    {
        pid_t pid = ::fork();
        if (pid == 0)
        {
            int bad = !qelsim::attach(options(dir)).ok;
            for (int i = 0; i < kBumps; ++i)
                bad |= qelsim::bumpLesb("0:2:2", "crcErrors", 1, "child") != API_OK;
            ::_exit(bad);
        }
        pids.push_back(pid);
    }
    int bad = 0;
    for (int i = 0; i < kBumps; ++i)
        bad |= qelsim::bumpLesb("0:2:2", "crcErrors", 1, "parent") != API_OK;
    for (pid_t pid : pids)
    {
        int status = 0;
        ::waitpid(pid, &status, 0);
        bad |= !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    }
    EXPECT_EQ(bad, 0);
    api_portLESBList_t l{};
    ASSERT_EQ(api_getPortLESB(kLockedPort, &l), API_OK);
    EXPECT_EQ(l.lesb[0].crcErrors, static_cast<uint64_t>((kChildren + 1) * kBumps));
    std::free(l.lesb);
}

TEST(AtomicSave, AKilledWriterLeavesTheOldOrTheNewStateNeverATornOne)
{
    // On a memory file system a write costs no disk wait, so nearly all of the
    // writer's time is spent writing: an unsafe writer is caught at once.
    ScratchDir dir(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "");
    const std::string path = dir.file("state.json");
    // Every version has the same size, large enough that a write takes a while.
    auto version = [](int n)
    {
        nlohmann::json j;
        j["version"] = n;
        j["padding"] = std::string(1u << 20, static_cast<char>('a' + n % 26));
        std::string text = j.dump();
        return text + std::string(8 - std::to_string(n).size(), ' ');
    };
    constexpr int kRounds = 8;
    std::vector<std::string> texts;
    for (int n = 0; n <= 2 * kRounds; ++n)
        texts.push_back(version(n));
    const size_t size = texts[0].size();
    std::string err;
    ASSERT_TRUE(qelsim::writeFileAtomically(path, texts[0], &err)) << err;
    int written = 0;
    for (int round = 0; round < kRounds; ++round)
    {
        const std::string before = readFile(path);
        pid_t pid = ::fork();
        if (pid == 0)
        {
            for (int n = 0;; ++n)
            {
                std::string e;
                qelsim::writeFileAtomically(path, texts[2 * round + 1 + n % 2], &e);
            }
        }
        // Meanwhile a reader must never find the file missing or unfinished.
        const auto until =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(20 + round * 10);
        struct stat st;
        bool unfinished = false;
        while (!unfinished && std::chrono::steady_clock::now() < until)
            unfinished = ::stat(path.c_str(), &st) != 0 || static_cast<size_t>(st.st_size) != size;
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        EXPECT_FALSE(unfinished) << "a reader saw an unfinished state file in round " << round;
        const std::string text = readFile(path);
        const bool complete =
            text == before || text == texts[2 * round + 1] || text == texts[2 * round + 2];
        ASSERT_TRUE(complete) << "torn state file in round " << round << " (" << text.size()
                              << " bytes)";
        written += text != before;
    }
    EXPECT_GT(written, 0) << "the writer never got to write; the test proved nothing";
    // The killed writers' temporaries are cleared away, the state stays.
    EXPECT_LE(qelsim::removeStaleTemporaries(path), kRounds);
    std::vector<std::string> left;
    for (const auto& e : std::filesystem::directory_iterator(dir.path()))
        left.push_back(e.path().filename());
    EXPECT_EQ(left, std::vector<std::string>{"state.json"});
    EXPECT_EQ(readFile(path).size(), size);
}

// The crcErrors count of port 0:2:2's first LESB record, as the library reads it.
uint64_t lockedPortCrcErrors()
{
    api_portLESBList_t l{};
    uint64_t n =
        api_getPortLESB(kLockedPort, &l) == API_OK && l.count > 0 ? l.lesb[0].crcErrors : 0;
    std::free(l.lesb);
    return n;
}

TEST_F(Persistence, WritersKilledAtRandomMomentsLeaveNoChangeWithoutItsAuditLine)
{
    // On a memory file system flushing costs nothing, so a writer spends its
    // time in the steps whose order matters, and the kills land among them.
    ScratchDir dir(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "");
    writeDemo(dir);
    const qelsim::AttachOptions o = options(dir);
    ASSERT_TRUE(qelsim::attach(o).ok);
    const uint64_t before = lockedPortCrcErrors();
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    constexpr int kWriters = 100;
    for (int w = 0; w < kWriters; ++w)
    {
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        pid_t pid = ::fork();
        if (pid == 0)
        {
            ::close(ready[0]);
            if (!qelsim::attach(o).ok)
                ::_exit(99);
            for (bool told = false;; told = true)
            {
                qelsim::bumpLesb("0:2:2", "crcErrors", 1, "writer");
                if (!told)
                    (void)!::write(ready[1], "", 1);
            }
        }
        ::close(ready[1]);
        char c;
        const bool started = ::read(ready[0], &c, 1) == 1;  // after the writer's first change
        ::close(ready[0]);
        // The kill's moment is what is random here; nothing waits for a result.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        ASSERT_TRUE(started) << "writer " << w << " could not attach";
    }
    // The next start finishes what the last killed writers left.
    ASSERT_TRUE(qelsim::attach(o).ok);
    const uint64_t made = lockedPortCrcErrors() - before;

    std::istringstream lines(readFile(dir.file("array.audit.jsonl")));
    uint64_t logged = 0;
    for (std::string line; std::getline(lines, line);)
    {
        const nlohmann::json entry = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(entry.is_object()) << "not a whole audit line: " << line;
        EXPECT_EQ(entry["result"], API_OK) << line;
        logged += entry["call"] == "qelsim:bump-lesb" && entry["result"] == API_OK;
    }
    EXPECT_EQ(made, logged) << "changes made and audit lines differ (seed " << seed << ")";
    EXPECT_GE(made, static_cast<uint64_t>(kWriters));  // each writer made its first change at least
}

// A writer killed at each step of a change: what the next holder of the lock
// finds, and what it leaves in the audit log.
TEST(AuditJournal, TheNextWriterFinishesOrDropsAChangeLeftInFlight)
{
    enum class KilledAt
    {
        WhileNoting,    // the note is torn
        BeforeRename,   // noted, state not replaced
        AfterRename,    // the change is made, its line not yet appended
        AfterAppend,    // the line is in the log, the note not yet cleared
        LogUnwritable,  // as AfterRename, but the log cannot be written
    };
    using qelsim::AuditRecovery;
    const struct
    {
        KilledAt step;
        AuditRecovery outcome;
        int lines;  // lines of the change in the log afterwards
        bool noteLeft;
    } cases[] = {
        {KilledAt::WhileNoting, AuditRecovery::NotMade, 0, false},
        {KilledAt::BeforeRename, AuditRecovery::NotMade, 0, false},
        {KilledAt::AfterRename, AuditRecovery::Appended, 1, false},
        {KilledAt::AfterAppend, AuditRecovery::AlreadyInLog, 1, false},
        {KilledAt::LogUnwritable, AuditRecovery::Failed, 0, true},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(static_cast<int>(c.step));
        ScratchDir dir;
        const std::string state = dir.file("s.state.json");
        const std::string log = c.step == KilledAt::LogUnwritable ? dir.file("no/such/folder.jsonl")
                                                                  : dir.file("s.audit.jsonl");
        std::string err;
        ASSERT_TRUE(qelsim::writeFileAtomically(state, "{\"v\": 1}", &err)) << err;
        const std::string earlier = "{\"line\": \"earlier\"}\n";
        const std::string line = "{\"line\": \"the change\"}\n";
        if (c.step != KilledAt::LogUnwritable)
        {
            ASSERT_TRUE(qelsim::appendAuditLine(log, earlier, false, &err)) << err;
        }
        const int lockFd = ::open((state + ".lock").c_str(), O_RDWR | O_CREAT, 0600);
        ASSERT_GE(lockFd, 0);

        // The steps of a change, up to the kill.
        qelsim::Replacement r;
        ASSERT_TRUE(qelsim::prepareReplacement(state, "{\"v\": 2}", &r, &err)) << err;
        qelsim::PendingAudit note;
        note.auditPath = log;
        note.line = line;
        note.auditSize = readFile(log).size();
        note.stateDev = r.dev;
        note.stateIno = r.ino;
        ASSERT_TRUE(qelsim::notePendingAudit(lockFd, note, &err)) << err;
        if (c.step == KilledAt::WhileNoting)
        {
            ASSERT_EQ(::pwrite(lockFd, "#", 1, 4100), 1);  // the text no longer matches its hash
        }
        if (c.step >= KilledAt::AfterRename)
        {
            ASSERT_TRUE(qelsim::commitReplacement(&r, state, &err)) << err;
        }
        if (c.step == KilledAt::AfterAppend)
        {
            ASSERT_TRUE(qelsim::appendAuditLine(log, line, true, &err)) << err;
        }

        err.clear();
        EXPECT_EQ(qelsim::finishPendingAudit(lockFd, state, &err), c.outcome);
        EXPECT_EQ(err.empty(), c.outcome != AuditRecovery::Failed) << err;
        const std::string after = readFile(log);
        size_t count = 0;
        for (size_t at = after.find(line); at != std::string::npos; at = after.find(line, at + 1))
            ++count;
        EXPECT_EQ(count, static_cast<size_t>(c.lines));
        if (c.step != KilledAt::LogUnwritable)
        {
            EXPECT_EQ(after.compare(0, earlier.size(), earlier), 0) << "an earlier line was lost";
        }
        EXPECT_EQ(qelsim::readPendingAudit(lockFd).has_value(), c.noteLeft);
        // Nothing is left to do the second time.
        if (!c.noteLeft)
        {
            EXPECT_EQ(qelsim::finishPendingAudit(lockFd, state, &err), AuditRecovery::None);
        }
        qelsim::discardReplacement(&r);
        ::close(lockFd);
    }
}

TEST_F(Persistence, ADamagedStateFileIsReportedNotOverwritten)
{
    ScratchDir dir;
    writeDemo(dir);
    ASSERT_TRUE(qelsim::attach(options(dir)).ok);
    writeFile(dir.file("array.state.json"), "{ \"system\": ");
    const qelsim::Result r = qelsim::attach(options(dir));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find(dir.file("array.state.json") + ": line 1"), std::string::npos)
        << r.error;
    EXPECT_NE(r.error.find("qelsim reset"), std::string::npos);
    EXPECT_EQ(readFile(dir.file("array.state.json")), "{ \"system\": ");
}

}  // namespace
