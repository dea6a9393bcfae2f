// The server's log as a service writes it: where "auto" sends it, when the access log is
// written, and what one access line holds (a line stays one line whatever a client sends).
#include <Server/core/ServerLog.h>
#include <Server/http/AccessLog.h>
#include <Server/main/LogTarget.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <gtest/gtest.h>

using namespace qel;
using namespace qel::server;
using Pegasus::LogLevel;
using Pegasus::ServerLog;

namespace
{

TEST(LogTargetTest, AutoFollowsWhereTheServerRuns)
{
    struct Case
    {
        LogTarget wanted;
        bool terminal, journal;
        LogTarget resolved;
    };
    const std::vector<Case> cases = {
        {LogTarget::Auto, true, true, LogTarget::Stderr},
        {LogTarget::Auto, true, false, LogTarget::Stderr},
        {LogTarget::Auto, false, true, LogTarget::Journal},
        {LogTarget::Auto, false, false, LogTarget::Syslog},
        {LogTarget::Journal, true, false, LogTarget::Journal},
        {LogTarget::Syslog, false, true, LogTarget::Syslog},
        {LogTarget::Stderr, false, true, LogTarget::Stderr},
    };
    for (const Case& c : cases)
    {
        LogSurroundings around;
        around.stderrIsTerminal = c.terminal;
        around.journalRunning = c.journal;
        EXPECT_EQ(resolveLogTarget(c.wanted, around), c.resolved)
            << logTargetName(c.wanted) << " terminal=" << c.terminal << " journal=" << c.journal;
    }
}

TEST(AccessLogTest, WrittenWhenOnAndInfoLinesPass)
{
    struct Case
    {
        bool on;
        LogLevel threshold;
        bool written;
    };
    const std::vector<Case> cases = {
        {true, LogLevel::Info, true},
        {true, LogLevel::Trace, true},
        {true, LogLevel::Warning, false},
        {false, LogLevel::Trace, false},
    };
    std::vector<std::string> lines;
    const ServerLog::Sink previous = ServerLog::setSink(
        [&lines](LogLevel level, const std::string& line)
        {
            if (level == LogLevel::Info)
                lines.push_back(line);
        });
    const LogLevel threshold = ServerLog::threshold();
    for (const Case& c : cases)
    {
        lines.clear();
        ServerLog::setAccessLog(c.on);
        ServerLog::setThreshold(c.threshold);
        http::writeAccessLog(http::AccessRecord());
        EXPECT_EQ(lines.size(), c.written ? 1u : 0u)
            << c.on << " " << ServerLog::levelName(c.threshold);
    }
    ServerLog::setAccessLog(false);
    ServerLog::setThreshold(threshold);
    ServerLog::setSink(previous);
}

http::AccessRecord record()
{
    http::AccessRecord r;
    // 2024-05-02T09:14:07.250Z
    r.arrived = std::chrono::system_clock::time_point(std::chrono::milliseconds(1714641247250));
    r.user = "monitor";
    r.client = "127.0.0.1";
    r.operation = "EnumerateInstances";
    r.className = "QEL_FCPort";
    r.httpStatus = 200;
    r.cimStatus = "CIM_ERR_SUCCESS";
    r.duration = std::chrono::microseconds(3412);
    return r;
}

TEST(AccessLogTest, OneLineWithEveryField)
{
    struct Case
    {
        const char* what;
        void (*change)(http::AccessRecord&);
        std::string line;
    };
    const std::string at = "access time=2024-05-02T09:14:07.250Z ";
    const std::vector<Case> cases = {
        {"a served request", [](http::AccessRecord&) {},
         at + "user=monitor client=127.0.0.1 op=EnumerateInstances class=QEL_FCPort method=- "
              "http=200 cim=CIM_ERR_SUCCESS duration=3.412ms"},
        {"refused before authentication",
         [](http::AccessRecord& r)
         {
             r.user.clear();
             r.operation.clear();
             r.className.clear();
             r.httpStatus = 401;
             r.cimStatus.clear();
             r.duration = std::chrono::microseconds(0);
         },
         at + "user=- client=127.0.0.1 op=- class=- method=- http=401 cim=- duration=0.000ms"},
        {"a failed method call",
         [](http::AccessRecord& r)
         {
             r.operation = "InvokeMethod";
             r.method = "SetOffline";
             r.cimStatus = "CIM_ERR_ACCESS_DENIED";
             r.error = "user \"monitor\" may not\nchange \\ ports";
             r.duration = std::chrono::microseconds(1234567);
         },
         at + "user=monitor client=127.0.0.1 op=InvokeMethod class=QEL_FCPort method=SetOffline "
              "http=200 cim=CIM_ERR_ACCESS_DENIED duration=1234.567ms "
              "error=\"user \\\"monitor\\\" may not\\x0achange \\\\ ports\""},
        {"client text that would break the line",
         [](http::AccessRecord& r)
         {
             r.className = "A B\nuser=admin";
             r.method = "x%\"\x7f\xc3\xa9";
         },
         at + "user=monitor client=127.0.0.1 op=EnumerateInstances class=A%20B%0Auser=admin "
              "method=x%25%22%7F%C3%A9 http=200 cim=CIM_ERR_SUCCESS duration=3.412ms"},
    };
    for (const Case& c : cases)
    {
        http::AccessRecord r = record();
        c.change(r);
        EXPECT_EQ(http::accessLine(r), c.line) << c.what;
    }
}

TEST(AccessLogTest, ClassAndMethodOfEachKindOfRequest)
{
    using cimxml::CimRequest;
    using cimxml::Operation;
    struct Case
    {
        const char* what;
        CimRequest (*make)();
        std::string operation, className, method;
    };
    const std::vector<Case> cases = {
        {"a class named",
         []
         {
             CimRequest r;
             r.operation = Operation::EnumerateInstanceNames;
             r.className = Pegasus::CIMName("QEL_FCPort");
             return r;
         },
         "EnumerateInstanceNames", "QEL_FCPort", ""},
        {"an instance path",
         []
         {
             CimRequest r;
             r.operation = Operation::GetInstance;
             r.objectName = Pegasus::CIMObjectPath("QEL_SFP.Tag=\"x\"");
             return r;
         },
         "GetInstance", "QEL_SFP", ""},
        {"an instance sent along",
         []
         {
             CimRequest r;
             r.operation = Operation::ModifyInstance;
             r.instance = Pegasus::CIMInstance(Pegasus::CIMName("QEL_FCPort"));
             return r;
         },
         "ModifyInstance", "QEL_FCPort", ""},
        {"a method call",
         []
         {
             CimRequest r;
             r.operation = Operation::InvokeMethod;
             r.methodName = "SetOffline";
             r.target = Pegasus::CIMObjectPath("QEL_FCPort.DeviceID=\"1\"");
             return r;
         },
         "InvokeMethod", "QEL_FCPort", "SetOffline"},
        {"no class at all",
         []
         {
             CimRequest r;
             r.operation = Operation::EnumerateClassNames;
             return r;
         },
         "EnumerateClassNames", "", ""},
    };
    for (const Case& c : cases)
    {
        http::AccessRecord r;
        http::describeRequest(r, c.make());
        EXPECT_EQ(r.operation, c.operation) << c.what;
        EXPECT_EQ(r.className, c.className) << c.what;
        EXPECT_EQ(r.method, c.method) << c.what;
    }
}

TEST(AccessLogTest, OutcomeOfTheAnswer)
{
    cimxml::CimResponse failed;
    failed.setError(Pegasus::CIMException(Pegasus::CIM_ERR_NOT_FOUND, "no such port"));
    const cimxml::CimResponse served;
    struct Case
    {
        const char* what;
        int status;
        bool decoded;
        const cimxml::CimResponse* result;
        std::string cim, error;
    };
    const std::vector<Case> cases = {
        {"served", 200, true, &served, "CIM_ERR_SUCCESS", ""},
        {"failed", 200, true, &failed, "CIM_ERR_NOT_FOUND", "no such port"},
        {"refused by HTTP", 401, false, &served, "", ""},
        {"bad headers after decoding", 400, true, &served, "", ""},
    };
    const auto start = std::chrono::steady_clock::time_point(std::chrono::seconds(100));
    for (const Case& c : cases)
    {
        http::AccessRecord r;
        r.started = start;
        if (c.decoded)
            r.operation = "GetInstance";
        http::HttpResponse response;
        response.status = c.status;
        http::describeOutcome(r, response, *c.result, start + std::chrono::microseconds(1500));
        EXPECT_EQ(r.httpStatus, c.status) << c.what;
        EXPECT_EQ(r.cimStatus, c.cim) << c.what;
        EXPECT_EQ(r.error, c.error) << c.what;
        EXPECT_EQ(r.duration.count(), 1500) << c.what;
    }
}

}  // namespace
