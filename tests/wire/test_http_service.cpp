// The CIM service over HTTP: which requests reach the operation, and how every refusal
// is answered (status, CIMError header, WWW-Authenticate).
#include "WireTestSupport.h"

#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <Server/core/ServerLog.h>
#include <Server/http/HeapTrimmer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

using namespace qel::http;
using namespace wiretest;

namespace
{

struct ServiceCase
{
    const char* what;
    std::function<void(HttpRequest&, ConnectionInfo&)> change;
    int status;
    const char* cimError;      // expected CIMError header, "" for none
    const char* bodyMentions;  // "" for no check
};

std::string headerOf(const HttpResponse& r, const std::string& name)
{
    for (const auto& h : r.headers)
        if (h.first == name)
            return h.second;
    return "";
}

void dropHeader(HttpRequest& r, const std::string& name)
{
    for (auto it = r.headers.begin(); it != r.headers.end(); ++it)
        if (it->first == name)
        {
            r.headers.erase(it);
            return;
        }
}

void setHeader(HttpRequest& r, const std::string& name, const std::string& value)
{
    dropHeader(r, name);
    r.headers.emplace_back(name, value);
}

class CimHttpServiceTest : public ::testing::TestWithParam<ServiceCase>
{
protected:
    static void SetUpTestSuite() { frontEnd = new FrontEnd(); }
    static void TearDownTestSuite()
    {
        delete frontEnd;
        frontEnd = nullptr;
    }

public:
    static HttpRequest goodRequestFor(const std::string& authorization)
    {
        HttpRequest r = goodRequest();
        setHeader(r, "Authorization", authorization);
        return r;
    }

protected:
    static HttpRequest goodRequest()
    {
        return cimRequest(
            "EnumerateInstanceNames", enumerateNamesBody(), basicAuth("alice", "wonderland"));
    }

    static FrontEnd* frontEnd;
};

FrontEnd* CimHttpServiceTest::frontEnd = nullptr;

TEST_P(CimHttpServiceTest, AnswersAsTheCimMappingPrescribes)
{
    const ServiceCase& c = GetParam();
    HttpRequest request = goodRequest();
    ConnectionInfo connection;
    connection.clientAddress = "127.0.0.1";
    c.change(request, connection);
    const HttpResponse response = frontEnd->service->process(request, connection);
    EXPECT_EQ(response.status, c.status) << c.what << "\n" << response.body;
    EXPECT_EQ(headerOf(response, "CIMError"), c.cimError) << c.what;
    EXPECT_NE(response.body.find(c.bodyMentions), std::string::npos) << c.what << response.body;
    EXPECT_EQ(
        headerOf(response, "WWW-Authenticate"),
        c.status == 401 ? "Basic realm=\"qel-cimserver\"" : "");
}

using Request = HttpRequest&;
using Connection = ConnectionInfo&;

INSTANTIATE_TEST_SUITE_P(
    Requests, CimHttpServiceTest,
    ::testing::Values(
        ServiceCase{
            "good request", [](Request, Connection) {}, 200, "",
            "<INSTANCENAME CLASSNAME=\"QEL_FCPort\">"},
        ServiceCase{
            "namespace header not escaped",
            [](Request r, Connection) { setHeader(r, "CIMObject", "root/qel"); }, 200, "",
            "INSTANCENAME"},
        ServiceCase{"GET", [](Request r, Connection) { r.method = "GET"; }, 405, "", "POST"},
        ServiceCase{
            "other path", [](Request r, Connection) { r.target = "/admin"; }, 404, "", "/cimom"},
        ServiceCase{
            "no credentials", [](Request r, Connection) { dropHeader(r, "Authorization"); }, 401,
            "", ""},
        ServiceCase{
            "no CIMOperation", [](Request r, Connection) { dropHeader(r, "CIMOperation"); }, 400,
            "unsupported-operation", ""},
        ServiceCase{
            "protocol version 2",
            [](Request r, Connection) { setHeader(r, "CIMProtocolVersion", "2.0"); }, 501,
            "unsupported-protocol-version", ""},
        ServiceCase{
            "no CIMMethod", [](Request r, Connection) { dropHeader(r, "CIMMethod"); }, 400,
            "header-mismatch", ""},
        ServiceCase{
            "CIMMethod names another operation",
            [](Request r, Connection) { setHeader(r, "CIMMethod", "GetInstance"); }, 400,
            "header-mismatch", "CIMMethod"},
        ServiceCase{
            "no CIMObject", [](Request r, Connection) { dropHeader(r, "CIMObject"); }, 400,
            "header-mismatch", ""},
        ServiceCase{
            "CIMObject names another namespace",
            [](Request r, Connection) { setHeader(r, "CIMObject", "root%2Fother"); }, 400,
            "header-mismatch", "CIMObject"},
        ServiceCase{
            "malformed XML", [](Request r, Connection) { r.body = "<CIM><MESSAGE"; }, 400,
            "request-not-well-formed", "not well-formed"},
        ServiceCase{
            "wrong content type",
            [](Request r, Connection) { setHeader(r, "Content-Type", "text/plain"); }, 415, "", ""},
        ServiceCase{
            "M-POST with the CIM mapping",
            [](Request r, Connection)
            {
                r.method = "M-POST";
                for (auto& h : r.headers)
                    if (h.first.rfind("CIM", 0) == 0)
                        h.first = "73-" + h.first;
                r.headers.emplace_back("Man", "http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73");
            },
            200, "", "INSTANCENAME"},
        ServiceCase{
            "M-POST without Man", [](Request r, Connection) { r.method = "M-POST"; }, 400, "",
            "Man"},
        ServiceCase{
            "local socket user without password",
            [](Request r, Connection c)
            {
                dropHeader(r, "Authorization");
                c.transport = Transport::Local;
                c.peerUser = "localuser";
            },
            200, "", "INSTANCENAME"},
        ServiceCase{
            "local socket peer unknown",
            [](Request r, Connection c)
            {
                dropHeader(r, "Authorization");
                c.transport = Transport::Local;
                c.peerError = "peer uid 4242 has no user name";
            },
            401, "", ""}));

TEST_F(CimHttpServiceTest, UnknownOperationIsACimErrorNotAnHttpError)
{
    HttpRequest r = goodRequest();
    setHeader(r, "CIMMethod", "Teleport");
    r.body.replace(r.body.find("EnumerateInstanceNames"), 22, "Teleport");
    ConnectionInfo c;
    const HttpResponse response = frontEnd->service->process(r, c);
    EXPECT_EQ(response.status, 200);
    EXPECT_NE(
        response.body.find("<IMETHODRESPONSE NAME=\"Teleport\"><ERROR CODE=\"7\""),
        std::string::npos)
        << response.body;
}

TEST_F(CimHttpServiceTest, VerifiedCredentialsAreRememberedUntilThePasswordFileChanges)
{
    const HttpRequest r = goodRequest();
    ConnectionInfo c;
    ASSERT_EQ(frontEnd->service->process(r, c).status, 200);
    EXPECT_EQ(c.verifiedUser, "alice");
    // Same connection, same header: still accepted without a new hash check.
    EXPECT_EQ(frontEnd->service->process(r, c).status, 200);

    TempPasswordFile& pw = frontEnd->passwords;
    qel::auth::PasswordFile f = qel::auth::PasswordFile::load(pw.path(), false);
    f.set("alice", qel::auth::hashPassword("changed-password"));
    f.save(pw.path());
    EXPECT_EQ(
        frontEnd->service->process(r, c).status, 401);  // the old password no longer opens anything
    f.set("alice", qel::auth::hashPassword("wonderland"));
    f.save(pw.path());
}

}  // namespace

namespace
{

struct LogCapture
{
    LogCapture()
    {
        previous = Pegasus::ServerLog::setSink(
            [this](Pegasus::LogLevel level, const std::string& text)
            {
                std::lock_guard<std::mutex> lock(mutex);
                if (level == Pegasus::LogLevel::Warning)
                    warnings.push_back(text);
            });
    }
    ~LogCapture() { Pegasus::ServerLog::setSink(previous); }
    size_t count(const std::string& what)
    {
        std::lock_guard<std::mutex> lock(mutex);
        size_t n = 0;
        for (const std::string& w : warnings)
            n += w.find(what) != std::string::npos;
        return n;
    }
    Pegasus::ServerLog::Sink previous;
    std::mutex mutex;
    std::vector<std::string> warnings;
};

TEST(LoginThrottling, GuessesWaitTheirTurnRememberedUsersDoNotAndNoWorkerIsTaken)
{
    wiretest::ManualClock time;
    CimHttpServiceOptions so;
    so.throttle.clock = time.clock();
    FrontEnd fe(HttpServerOptions(), 2, so);
    fe.passwords.add("bob", "builder");
    LogCapture log;
    auto attempt = [&](const std::string& user, const std::string& password,
                       const std::string& from = "127.0.0.1")
    {
        HttpRequest r = CimHttpServiceTest::goodRequestFor(basicAuth(user, password));
        ConnectionInfo c;  // a new connection each time, as wbemcli makes them
        c.clientAddress = from;
        return fe.service->process(r, c);
    };
    ASSERT_EQ(attempt("alice", "wonderland").status, 200);  // verified: remembered
    for (int i = 1; i <= 5; ++i)
    {
        const HttpResponse r = attempt("alice", "guess");
        EXPECT_EQ(r.status, 401) << i;
        EXPECT_EQ(headerOf(r, "Retry-After"), "") << i;
        EXPECT_EQ(r.holdOff.count(), 0) << i;
    }
    const HttpResponse held = attempt("alice", "guess");
    EXPECT_EQ(held.status, 401);
    EXPECT_EQ(headerOf(held, "Retry-After"), "1");
    EXPECT_EQ(headerOf(held, "WWW-Authenticate"), "Basic realm=\"qel-cimserver\"");
    EXPECT_EQ(held.holdOff, std::chrono::seconds(1)) << "its connection is not read till then";
    EXPECT_EQ(attempt("alice", "wonderland").status, 200) << "a remembered pair is no guess";
    EXPECT_EQ(headerOf(attempt("bob", "builder"), "Retry-After"), "1") << "same address";
    EXPECT_EQ(attempt("bob", "builder", "10.0.0.9").status, 200) << "another address";
    EXPECT_EQ(headerOf(attempt("alice", "guess", "10.0.0.9"), "Retry-After"), "1") << "same user";

    // With every worker stuck, a held-back guess is still answered: on the I/O thread.
    std::string waitRequest = wiretest::cimPost(
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"5\" PROTOCOLVERSION=\"1.0\">"
        "<SIMPLEREQ><METHODCALL NAME=\"Wait\"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE "
        "NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH><CLASSNAME NAME=\"X\"/>"
        "</LOCALCLASSPATH></METHODCALL></SIMPLEREQ></MESSAGE></CIM>",
        basicAuth("alice", "wonderland"));
    waitRequest.replace(waitRequest.find("EnumerateInstanceNames"), 22, "Wait");
    waitRequest.replace(waitRequest.find("root%2Fqel"), 10, "root%2Fqel%3AX");
    std::vector<std::unique_ptr<wiretest::RawConnection>> stuck;
    for (int i = 0; i < 2; ++i)
    {
        stuck.push_back(std::make_unique<wiretest::RawConnection>(fe.port()));
        stuck.back()->send(waitRequest);
    }
    while (fe.executor.waiting() < 2)
        std::this_thread::yield();
    const std::string reply = wiretest::rawExchange(
        fe.port(),
        wiretest::cimPost(
            wiretest::enumerateNamesBody(), basicAuth("alice", "guess"), "Connection: close\r\n"));
    EXPECT_EQ(reply.rfind("HTTP/1.1 401", 0), 0u) << reply;
    EXPECT_NE(reply.find("Retry-After: 1"), std::string::npos) << reply;
    fe.executor.release();

    time.advance(std::chrono::seconds(1));
    const HttpResponse verified = attempt("alice", "guess");  // its turn: verified, failed
    EXPECT_EQ(verified.status, 401);
    EXPECT_EQ(headerOf(verified, "Retry-After"), "");
    EXPECT_EQ(headerOf(attempt("alice", "guess"), "Retry-After"), "2");
    // Six failures of alice verified, all from 127.0.0.1: one burst, one line.
    EXPECT_EQ(log.count("for user \"alice\""), 1u);
}

// Clients that log in at once with the same right password (a management application
// opening its connections) are one attempt, not a burst of guesses to throttle.
TEST(LoginThrottling, ClientsLoggingInTogetherWithOnePasswordAreAllLetIn)
{
    FrontEnd fe(HttpServerOptions(), 2);
    const HttpRequest r = CimHttpServiceTest::goodRequestFor(basicAuth("alice", "wonderland"));
    const int clients = 12;  // more than the free attempts
    std::vector<int> status(clients);
    std::vector<std::thread> threads;
    for (int i = 0; i < clients; ++i)
        threads.emplace_back(
            [&, i]
            {
                ConnectionInfo c;
                c.clientAddress = "127.0.0.1";
                status[i] = fe.service->process(r, c).status;
            });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(std::count(status.begin(), status.end(), 200), clients);
}

// Freed memory goes back to the system once enough was answered and nothing is in flight
// for the quiet period; never while a request runs, and not for a few small answers.
TEST(HeapTrimmer, TrimsOnceTheServerIsQuietAfterEnoughWasAnswered)
{
    using std::chrono::hours;
    using std::chrono::milliseconds;
    const size_t dirty = 1000;
    struct Case
    {
        const char* name;
        milliseconds quiet;
        std::vector<long> steps;  // -1: a request begins; n >= 0: one ends, answering n bytes
        int trims;                // once the trimmer has stopped
    };
    const Case cases[] = {
        {"below the threshold", milliseconds(0), {-1, 600, -1, 399}, 0},
        {"still in flight", milliseconds(0), {-1, -1, 5000}, 0},
        {"a request begun within the quiet period", hours(1), {-1, 1000, -1}, 0},
        {"quiet after enough answers, once", milliseconds(0), {-1, 600, -1, 400}, 1},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        std::mutex m;
        std::condition_variable trimmed;
        int trims = 0;
        {
            HeapTrimmer heap(
                [&]
                {
                    std::lock_guard<std::mutex> g(m);
                    ++trims;
                    trimmed.notify_all();
                },
                c.quiet, dirty);
            for (long s : c.steps)
            {
                if (s < 0)
                    heap.began();
                else
                    heap.ended(static_cast<size_t>(s));
            }
            if (c.trims > 0)
            {
                std::unique_lock<std::mutex> lock(m);
                trimmed.wait_for(lock, std::chrono::seconds(30), [&] { return trims > 0; });
            }
        }
        EXPECT_EQ(trims, c.trims);
    }
}

}  // namespace
