// Many threads using the library at once, as the CIM server's request threads
// do: the semaphore excludes, reads and changes stay consistent, counters add up.
#include "sim_fixture.h"

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace qelsimtest;

namespace
{

constexpr int kThreads = 8;
constexpr int kRounds = 40;

class Concurrency : public SimTest
{
};

TEST_F(Concurrency, SemaphoreLetsOneThreadAtATimeIntoTheBracket)
{
    int inside = 0;       // deliberately unsynchronised: only the semaphore protects it
    long long total = 0;  // likewise
    std::atomic<int> overlaps{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < kRounds; ++i)
                {
                    ASSERT_EQ(cim_sem_wait(), 0);
                    if (++inside != 1)
                        overlaps++;
                    api_FCPortList_t list{};
                    api_getFCPorts(API_ALL_PORTS, 3, 1, &list);
                    total += list.count;
                    --inside;
                    ASSERT_EQ(cim_sem_post(), 0);
                    api_freeFCPorts(&list);
                }
            });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(overlaps.load(), 0);
    EXPECT_EQ(total, static_cast<long long>(kThreads) * kRounds * 7);
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, static_cast<uint64_t>(kThreads * kRounds));
    EXPECT_EQ(c.semPosts, c.semWaits);
    EXPECT_EQ(c.unbracketedCalls, 0u);
    EXPECT_EQ(c.fcListsHandedOut, c.fcListsFreed);
}

TEST_F(Concurrency, ReadersAlwaysSeeWholeChangesWhileWritersChange)
{
    ScratchDir dir;
    load(qelsim::demoArrayText(), dir.file("array.state.json"));  // every change is also saved
    std::atomic<int> torn{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    // Writers flip two ports together; a reader must never see one flipped and not the other.
    for (int w = 0; w < 2; ++w)
    {
        threads.emplace_back(
            [&]
            {
                api_evtparam_t ev = event();
                uint16_t ids[2] = {lpid(kOkPort), lpid(kLockedPort)};
                for (int i = 0; i < kRounds; ++i)
                {
                    EXPECT_EQ(
                        i % 2 ? api_resetPort(&ev, 2, ids) : api_setPortOffline(&ev, 2, ids),
                        API_OK);
                }
            });
    }
    for (int r = 0; r < kThreads - 2; ++r)
    {
        threads.emplace_back(
            [&]
            {
                while (!stop.load())
                {
                    api_FCPortList_t list{};
                    if (api_getFCPorts(API_ALL_PORTS, 3, 0, &list) != API_OK)
                        continue;
                    api_port_status_t a = PORT_UNKNOWN, b = PORT_UNKNOWN;
                    for (uint32_t i = 0; i < list.count; ++i)
                    {
                        if (list.ports[i].portWwn == kOkPort)
                            a = list.ports[i].portStatus;
                        if (list.ports[i].portWwn == kLockedPort)
                            b = list.ports[i].portStatus;
                    }
                    if (a != b)
                        torn++;
                    api_freeFCPorts(&list);
                    api_portLESBList_t lesb{};
                    api_getPortLESB(API_ALL_PORTS, &lesb);
                    std::free(lesb.lesb);
                    (void)api_findFCPortLPID("20110002AC00A001");
                    (void)loop_text(lpid(kOkPort));
                }
            });
    }
    threads[0].join();
    threads[1].join();
    stop = true;
    for (size_t i = 2; i < threads.size(); ++i)
        threads[i].join();
    EXPECT_EQ(torn.load(), 0);
    EXPECT_EQ(qelsim::counters().changesSaved, static_cast<uint64_t>(2 * kRounds));
}

TEST_F(Concurrency, CountedFaultsFireExactlyTheirNumberOfTimes)
{
    ASSERT_TRUE(qelsim::injectFault("api_getISCSIPorts", 5, 25).ok);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 10; ++i)
                {
                    api_iSCSIPortList_t l{};
                    if (api_getISCSIPorts(&l) == 5)
                        failures++;
                    std::free(l.ports);
                    log_message(4, "thread trace %d\n", i);
                }
            });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(failures.load(), 25);
    EXPECT_EQ(qelsim::callLog().size(), static_cast<size_t>(kThreads * 10));
}

}  // namespace
