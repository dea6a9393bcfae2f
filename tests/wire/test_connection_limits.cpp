// Connections someone holds open without sending a request: the limits per address and in
// all (at N and N+1), who gives way when they are reached, and the request-head deadline.
#include "WireTestSupport.h"

#include <Server/http/ConnectionLimiter.h>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <filesystem>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using qel::http::ConnectionLimiter;
using wiretest::FrontEnd;
using wiretest::RawConnection;

namespace
{

using Ids = std::vector<uint64_t>;

uint64_t admitted(ConnectionLimiter& l, const std::string& address, const Ids& closes = {})
{
    const ConnectionLimiter::Admission a = l.admit(address);
    EXPECT_TRUE(a.id.has_value()) << address;
    EXPECT_EQ(a.close, closes) << address;
    return a.id.value_or(0);
}

TEST(ConnectionLimiter, AnAddressAtItsLimitGivesUpItsOldestUnfinishedConnection)
{
    ConnectionLimiter l({100, 3});
    const uint64_t a1 = admitted(l, "A");
    const uint64_t a2 = admitted(l, "A");
    const uint64_t a3 = admitted(l, "A");  // N: nothing closed
    const uint64_t a4 = admitted(l, "A", {a1});
    admitted(l, "B");  // another address is not concerned
    EXPECT_EQ(l.unfinished("A"), 3u);
    // A connection that delivered a request is no longer unfinished: it is kept, and
    // leaves room.
    l.completed(a2);
    admitted(l, "A");
    admitted(l, "A", {a3});
    l.released(a4);
    EXPECT_EQ(l.unfinished("A"), 2u);
    EXPECT_EQ(l.counted(), 4u);  // a2, two new ones from A, and B's
}

TEST(ConnectionLimiter, WhenFullTheOldestUnfinishedGoesThenTheLongestIdleThenNewcomersAreRefused)
{
    ConnectionLimiter l({3, 10});
    const uint64_t c1 = admitted(l, "A");
    const uint64_t c2 = admitted(l, "B");
    const uint64_t c3 = admitted(l, "C");  // N
    const uint64_t c4 = admitted(l, "D", {c1});
    for (uint64_t id : {c2, c3, c4})
        l.completed(id);
    l.setIdle(c3, true);
    l.setIdle(c2, true);
    const uint64_t c5 = admitted(l, "E", {c3});  // idle longest
    l.setIdle(c2, false);                        // c2's next request began
    l.completed(c5);
    const ConnectionLimiter::Admission refused = l.admit("F");  // all three busy
    EXPECT_FALSE(refused.id.has_value());
    EXPECT_TRUE(refused.close.empty());
    l.released(c4);
    admitted(l, "F");
    EXPECT_EQ(l.counted(), 3u);
}

TEST(ConnectionLimiter, ConnectionsNamedForClosingStopCountingAtOnce)
{
    ConnectionLimiter l({2, 1});
    const uint64_t a1 = admitted(l, "A");
    const uint64_t a2 = admitted(l, "A", {a1});
    l.released(a1);  // its close completes later: counted once only
    EXPECT_EQ(l.counted(), 1u);
    l.completed(a2);
    l.setIdle(a2, true);
    const uint64_t b1 = admitted(l, "B");
    EXPECT_EQ(l.reclaimOne(), b1) << "unfinished before idle";
    EXPECT_EQ(l.reclaimOne(), a2);
    EXPECT_EQ(l.reclaimOne(), std::nullopt);
    EXPECT_EQ(l.counted(), 0u);
}

const std::string kPartialHead = "POST /cimom HTTP/1.1\r\nHost: x\r\n";

int enumerateStatus(unsigned short port)
{
    const std::string reply = wiretest::rawExchange(
        port, wiretest::cimPost(
                  wiretest::enumerateNamesBody(), wiretest::basicAuth("alice", "wonderland"),
                  "Connection: close\r\n"));
    return reply.rfind("HTTP/1.1 ", 0) == 0 ? std::stoi(reply.substr(9, 3)) : 0;
}

void waitForConnections(const FrontEnd& fe, size_t n)
{
    for (int i = 0; i < 20000 && fe.http->openConnections() < n; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(fe.http->openConnections(), n);
}

TEST(ConnectionLimits, HeldConnectionsGiveWayToANewRequestFromTheirAddressOnly)
{
    qel::http::HttpServerOptions o;
    o.maxUnfinishedPerAddress = 3;
    FrontEnd fe(o);
    std::vector<std::unique_ptr<RawConnection>> held;
    for (const char* from : {"127.0.0.2", "127.0.0.2", "127.0.0.2", "127.0.0.3", "127.0.0.3"})
    {
        held.push_back(std::make_unique<RawConnection>(fe.port(), from));
        held.back()->send(kPartialHead);
    }
    waitForConnections(fe, 5);
    // A fourth from 127.0.0.2 closes that address's oldest; 127.0.0.3 keeps both.
    RawConnection fourth(fe.port(), "127.0.0.2");
    fourth.send(kPartialHead);
    EXPECT_TRUE(held[0]->closedByServer(10000));
    for (size_t i = 1; i < held.size(); ++i)
        EXPECT_FALSE(held[i]->closedByServer(0)) << i;
    EXPECT_EQ(enumerateStatus(fe.port()), 200);
}

TEST(ConnectionLimits, AFullServerClosesTheOldestUnfinishedConnectionForANewOne)
{
    qel::http::HttpServerOptions o;
    o.maxConnections = 4;
    FrontEnd fe(o);
    std::vector<std::unique_ptr<RawConnection>> held;
    for (const char* from : {"127.0.0.2", "127.0.0.3", "127.0.0.4", "127.0.0.5"})
    {
        held.push_back(std::make_unique<RawConnection>(fe.port(), from));
        held.back()->send(kPartialHead);
    }
    waitForConnections(fe, 4);
    EXPECT_FALSE(held[0]->closedByServer(0));    // N connections: all kept
    EXPECT_EQ(enumerateStatus(fe.port()), 200);  // N+1: served, and the oldest gave way
    EXPECT_TRUE(held[0]->closedByServer(10000));
    for (size_t i = 1; i < held.size(); ++i)
        EXPECT_FALSE(held[i]->closedByServer(0)) << i;
}

TEST(ConnectionLimits, AHeadMustArriveWithinTheHeadDeadlineWhateverTheReadTimeout)
{
    qel::http::HttpServerOptions o;
    o.headerTimeout = std::chrono::milliseconds(300);
    o.readTimeout = std::chrono::minutes(10);
    FrontEnd fe(o);
    // Without the deadline nothing would end these before the 60 s poll gives up.
    RawConnection partial(fe.port());
    partial.send(kPartialHead);
    RawConnection silent(fe.port());
    EXPECT_TRUE(partial.closedByServer(60000));
    EXPECT_TRUE(silent.closedByServer(60000));
    EXPECT_EQ(enumerateStatus(fe.port()), 200);
}

}  // namespace

namespace
{

// Makes the descriptors open in this process dense (holes filled with copies of stdin,
// returned for closing) and gives the lowest free number: the next descriptor any thread
// gets.
int nextDescriptor(std::vector<int>& fillers)
{
    std::vector<int> open;
    for (const auto& e : std::filesystem::directory_iterator("/proc/self/fd"))
        open.push_back(std::stoi(e.path().filename().string()));
    int highest = 0;
    for (int fd : open)
        if (::fcntl(fd, F_GETFD) != -1)  // not the listing's own, closed by now
            highest = std::max(highest, fd);
    for (int fd = ::dup(0); fd >= 0 && fd < highest; fd = ::dup(0))
        fillers.push_back(fd);
    const int next = ::dup(0);
    ::close(next);
    return next;
}

TEST(ConnectionLimits, OutOfDescriptorsTheOldestUnfinishedConnectionMakesRoom)
{
#ifdef __SANITIZE_ADDRESS__
    // UndefinedBehaviorSanitizer, built with it, opens a pipe to check memory it cannot
    // vouch for, and reports false errors when the process has no descriptor left. This
    // runs in the ThreadSanitizer stage and in plain builds.
    GTEST_SKIP() << "needs a build without AddressSanitizer and UndefinedBehaviorSanitizer";
#endif
    qel::http::HttpServerOptions o;
    o.headerTimeout = std::chrono::minutes(5);  // only running out may close a connection
    FrontEnd fe(o);
    std::vector<std::unique_ptr<RawConnection>> held;
    for (int i = 0; i < 3; ++i)
    {
        held.push_back(std::make_unique<RawConnection>(fe.port()));
        held.back()->send(kPartialHead);
    }
    waitForConnections(fe, 3);
    // No descriptor left from here on, but the client's, made before.
    const int client = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::vector<int> fillers;
    rlimit saved{};
    ::getrlimit(RLIMIT_NOFILE, &saved);
    rlimit none = saved;
    none.rlim_cur = static_cast<rlim_t>(nextDescriptor(fillers));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(fe.port());
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string request = wiretest::cimPost(
        wiretest::enumerateNamesBody(), wiretest::basicAuth("alice", "wonderland"),
        "Connection: close\r\n");
    std::string reply;
    if (::connect(client, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0 &&
        ::send(client, request.data(), request.size(), MSG_NOSIGNAL) ==
            static_cast<ssize_t>(request.size()))
    {
        pollfd p{client, POLLIN, 0};
        char buf[4096];
        while (::poll(&p, 1, 60000) > 0)
        {
            const ssize_t n = ::recv(client, buf, sizeof buf, 0);
            if (n <= 0)
                break;
            reply.append(buf, static_cast<size_t>(n));
        }
    }
    ::setrlimit(RLIMIT_NOFILE, &saved);
    // The accept found no descriptor: the oldest unfinished connection was closed for it.
    EXPECT_EQ(reply.rfind("HTTP/1.1 200", 0), 0u) << reply;
    EXPECT_TRUE(held[0]->closedByServer(10000));
    for (size_t i = 1; i < held.size(); ++i)
        EXPECT_FALSE(held[i]->closedByServer(0)) << i;
    ::close(client);
    for (int fd : fillers)
        ::close(fd);
}

}  // namespace
