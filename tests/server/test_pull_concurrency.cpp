// Pulled enumerations under concurrency: pulls racing with close and with expiry, several
// pulls on one context, a pull waiting for objects when its context is closed or the
// server stops. Whatever the interleaving, every object comes at most once and in order,
// each operation ends with one of the answers DSP0200 allows, and nothing is left behind.
#include "PullFixture.h"

#include <set>
#include <thread>

using namespace Pegasus;
using namespace servertest;

namespace
{

using PullRaces = Pull;

// Ids of the Test_Item instances of a page ("Test_Item Id=7 {...}" -> "7").
std::vector<std::string> idsOf(const std::vector<std::string>& objects)
{
    std::vector<std::string> ids;
    for (const std::string& o : objects)
        ids.push_back(o.substr(o.find("Id=") + 3, o.find(' ', o.find("Id=")) - o.find("Id=") - 3));
    return ids;
}

// Spins until `holds` (another thread's progress, not time, is awaited).
template <class Condition>
void await(Condition holds)
{
    while (!holds())
        std::this_thread::yield();
}

TEST_F(PullRaces, APullRacingWithCloseOrExpiryEndsWithOneOfItsAnswersAndLeavesNothing)
{
    setKnob("Item.enumerateInstances", "count:300");
    for (int round = 0; round < 24; ++round)
    {
        SCOPED_TRACE(round);
        const std::string id = openItems(0);
        std::vector<std::string> got;
        std::string end;
        std::atomic<size_t> pulled{0};
        std::atomic<bool> done{false};
        std::thread puller(
            [&]
            {
                std::string next = id;
                while (!next.empty())
                {
                    const CIMOperationResponse r = pullItems(next, 1 + round % 5 * 9);
                    if (r.failed)
                    {
                        end = failure(r).substr(0, failure(r).find(':'));
                        done = true;
                        return;
                    }
                    page(r, &got);
                    pulled = got.size();
                    Boolean eos = false;
                    next = text(r.enumerationContext(eos));
                    // A client does something with a page before it pulls the next.
                    for (int i = 0; i < 50; ++i)
                        std::this_thread::yield();
                }
                end = "end of sequence";
                done = true;
            });
        // Rounds close or expire at different points of the sequence.
        await([&] { return done || pulled >= static_cast<size_t>(round * 13 % 300); });
        std::string closed = "not closed";
        if (round % 2 == 0)
        {
            closed = failure(run(CIMOperationRequest::closeEnumeration(ns, id.c_str())));
            closed = closed.substr(0, closed.find(':'));
        }
        else
        {
            // Between two pulls the context is not held: the first reap then ends it.
            while (!done)
            {
                advance(25);
                contexts().reapExpired();
                std::this_thread::yield();
            }
        }
        puller.join();
        const std::set<std::string> allowed = {
            "end of sequence", "CIM_ERR_PULL_HAS_BEEN_ABANDONED",
            "CIM_ERR_INVALID_ENUMERATION_CONTEXT"};
        EXPECT_EQ(allowed.count(end), 1u) << end;
        if (round % 2 == 0)
        {
            EXPECT_TRUE(closed == "ok" || closed == "CIM_ERR_INVALID_ENUMERATION_CONTEXT")
                << closed;
        }
        // What came, came in order and once.
        const std::vector<std::string> ids = idsOf(got);
        for (size_t i = 0; i < ids.size() && i < 300; ++i)
            ASSERT_EQ(ids[i], std::to_string(i));
        contexts().waitUntilIdle();
        const EnumerationContexts::Stats left = contexts().stats();
        EXPECT_EQ(left.open, 0u);
        EXPECT_EQ(left.bufferedObjects, 0u);
    }
}

TEST_F(PullRaces, PullsOnOneContextTakeTurnsAndNeverShareAnObject)
{
    setKnob("Item.enumerateInstances", "count:500");
    const std::string id = openItems(0);
    std::mutex mutex;
    std::vector<std::string> all;
    std::atomic<int> refused{0};
    std::vector<std::thread> pullers;
    for (int t = 0; t < 4; ++t)
        pullers.emplace_back(
            [&, t]
            {
                for (;;)
                {
                    const CIMOperationResponse r = pullItems(id, 3 + t);
                    if (r.failed)
                    {
                        if (r.error.getCode() == CIM_ERR_PULL_CANNOT_BE_ABANDONED)
                        {
                            ++refused;
                            continue;
                        }
                        EXPECT_EQ(r.error.getCode(), CIM_ERR_INVALID_ENUMERATION_CONTEXT)
                            << "once the sequence ended";
                        return;
                    }
                    std::vector<std::string> mine;
                    page(r, &mine);
                    std::lock_guard<std::mutex> lock(mutex);
                    all.insert(all.end(), mine.begin(), mine.end());
                }
            });
    for (std::thread& t : pullers)
        t.join();
    // 500 items and s1: each exactly once.
    ASSERT_EQ(all.size(), 501u);
    const std::vector<std::string> ids = idsOf(all);
    EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), 501u);
    EXPECT_EQ(contexts().stats().open, 0u);
}

TEST_F(PullRaces, APullWaitingForObjectsGivesUpWhenItsContextIsClosed)
{
    closeGate();
    setKnob("Item.enumerateInstances", "gated");
    const std::string id = openItems(0);
    std::string waited;
    std::thread puller([&] { waited = failure(pullItems(id, 5)); });
    await([&] { return contexts().stats().held == 1; });
    // Meanwhile another pull is refused, and the one under way goes on.
    EXPECT_EQ(
        failure(pullItems(id, 1)),
        "CIM_ERR_PULL_CANNOT_BE_ABANDONED: EnumerationContext \"" + id +
            "\" is in use by another operation; it goes on, this one is refused.");
    EXPECT_EQ(failure(run(CIMOperationRequest::closeEnumeration(ns, id.c_str()))), "ok");
    puller.join();
    EXPECT_EQ(
        waited, "CIM_ERR_PULL_HAS_BEEN_ABANDONED: The enumeration was closed (CloseEnumeration) "
                "while this pull waited.");
    // The provider, let through now, finds its delivery refused and ends.
    openGate();
    contexts().waitUntilIdle();
    EXPECT_EQ(counter("Item.enumerated"), 0u);
}

TEST_F(PullRaces, TheServersStopEndsWaitingPullsAndBlockedProvidersAndWaitsForNoClient)
{
    // Two enumerations whose providers wait for room, one whose provider waits at the
    // gate with a pull waiting for its objects.
    setKnob("Item.enumerateInstances", "count:300");
    openItems(0);
    page(openItems(0, bob));
    await([&] { return contexts().stats().bufferedObjects == 20; });
    closeGate();
    setKnob("Item.enumerateInstances", "gated");
    const std::string gated = page(openItems(0, bob));
    std::string waited;
    std::thread puller(
        [&]
        {
            const CIMOperationResponse r =
                run(CIMOperationRequest::pullInstancesWithPath(ns, gated.c_str(), 5), bob);
            waited = failure(r);
        });
    await([&] { return contexts().stats().held == 1; });
    std::thread stopping([&] { server().stop(); });
    puller.join();
    EXPECT_EQ(waited, "CIM_ERR_SERVER_IS_SHUTTING_DOWN: The CIM server is shutting down.");
    // Only the provider at the gate can hold the stop up, until it is let through.
    openGate();
    stopping.join();
    EXPECT_FALSE(server().isRunning());
    EXPECT_EQ(counter("Item.enumerated"), 0u);
}

}  // namespace
