// A provider's way back into the server (its CIMOMHandle and local client
// connections, answered in process on the calling thread), and many requests
// at once: the request pool, providers called from several threads with
// nested calls, first use racing, and a stop that waits for the requests
// under way.
#include "ServerFixture.h"

#include <Server/core/InProcessClientTransport.h>
#include <Server/core/ThreadPool.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMResponseSink.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <thread>

using namespace Pegasus;
using namespace servertest;

namespace
{

using NestedCalls = ServerTest;
using Concurrency = ServerTest;

// Runs `request` on the server's pool and hands back its outcome.
template <class R>
std::future<R> onPool(CIMServer& server, std::function<R()> request)
{
    auto promise = std::make_shared<std::promise<R>>();
    std::future<R> result = promise->get_future();
    bool taken = server.submit(
        [promise, request]
        {
            try
            {
                promise->set_value(request());
            }
            catch (...)
            {
                promise->set_exception(std::current_exception());
            }
        });
    if (!taken)
        promise->set_exception(std::make_exception_ptr(std::runtime_error("not queued")));
    return result;
}

// A sink that holds at most `capacity` objects not yet taken, as an enumeration context
// would: a delivery waits for room, so the provider waits with it.
class BoundedSink : public CIMResponseSink
{
public:
    explicit BoundedSink(size_t capacity) : _capacity(capacity) {}

    Delivery delivery() const override { return Delivery::AsDelivered; }
    void deliverClass(const CIMClass&) override {}
    void deliverClassName(const CIMName&) override {}
    void deliverInstance(const CIMInstance& instance) override
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _room.wait(lock, [this] { return _queue.size() < _capacity; });
        _queue.push_back(
            text(instance.getProperty(instance.findProperty("Id")).getValue().toString()));
        _maxQueued = std::max(_maxQueued, _queue.size());
        _changed.notify_all();
    }
    void deliverPath(const CIMObjectPath&) override {}
    void deliverObject(const CIMObject&) override {}
    void complete(const CIMValue&, const Array<CIMParamValue>&) override { _finish("complete"); }
    void fail(const CIMException& e) override { _finish(text(e.getMessage())); }

    // The next object's id, or "" once the answer has ended and all were taken.
    std::string take()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait(lock, [this] { return !_queue.empty() || !_end.empty(); });
        if (_queue.empty())
            return "";
        std::string id = _queue.front();
        _queue.pop_front();
        _room.notify_all();
        return id;
    }
    std::string end()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _end;
    }
    size_t maxQueued()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _maxQueued;
    }

private:
    void _finish(const std::string& how)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _end = how;
        _changed.notify_all();
    }

    const size_t _capacity;
    std::mutex _mutex;  // guards everything below
    std::condition_variable _room, _changed;
    std::deque<std::string> _queue;
    size_t _maxQueued = 0;
    std::string _end;
};

std::string labelOf(const CIMInstance& instance)
{
    return text(instance.getProperty(instance.findProperty("Label")).getValue().toString());
}

}  // namespace

TEST_F(NestedCalls, ProvidersReachTheServerThroughTheirHandle)
{
    const std::string processUser = text(InProcessClientTransport::processUserName());
    Array<CIMParamValue> depth;
    depth.append(CIMParamValue("Depth", CIMValue(Uint32(7))));
    const struct
    {
        const char* method;
        Array<CIMParamValue> in;
        std::string result;
    } cases[] = {
        {"CountNames", {}, "4"},  // the subclass's provider answers too
        // Seven levels deep, alternating handle and local connection.
        {"Recurse", depth, "7"},
        // A fresh context runs as the empty user, a local connection as
        // the user the process runs as.
        {"FreshWhoAmI", {}, "@"},
        {"LocalWhoAmI", {}, processUser + "@"},
    };
    for (const auto& c : cases)
    {
        Array<CIMParamValue> out;
        CIMValue v =
            cimom().invokeMethod(context, ns, CIMObjectPath("Test_Nested"), c.method, c.in, out);
        EXPECT_EQ(text(v.toString()), c.result) << c.method;
    }
    // getInstance through the handle, with the caller's context.
    EXPECT_EQ(
        labelOf(cimom().getInstance(
            context, ns, item("nested"), true, false, false, CIMPropertyList())),
        "via Alpha");
}

TEST_F(NestedCalls, LocalClientsOfTheProcessReachTheServerUntilItStops)
{
    CIMClient client;
    client.connectLocal();
    EXPECT_EQ(client.enumerateInstanceNames(ns, "Test_Item").size(), 4u);
    // Errors reach a local client as they would over the wire.
    CIMException e = cimErrorOf([&] { client.getInstance(ns, item("a", "Test_Nope")); });
    EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_CLASS);
    EXPECT_EQ(text(e.getMessage()), "CIM_ERR_INVALID_CLASS: Test_Nope");

    server().stop();
    // The open connection and new ones are refused, not served by a dead server.
    EXPECT_THROW(client.enumerateInstanceNames(ns, "Test_Item"), CannotConnectException);
    CIMClient late;
    EXPECT_THROW(late.connectLocal(), CannotConnectException);
}

TEST(ThreadPool, BoundsItsQueueDrainsItOnStopAndSurvivesThrowingJobs)
{
    LogCapture log;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> done{0};
    ThreadPool pool(1, 2);
    ASSERT_TRUE(pool.submit(
        [&]
        {
            released.wait();
            ++done;
        }));
    while (pool.queued() != 0)  // the only worker has taken it
        std::this_thread::yield();
    EXPECT_TRUE(pool.submit([] { throw std::runtime_error("job failed"); }));
    EXPECT_TRUE(pool.submit([&] { ++done; }));
    EXPECT_FALSE(pool.submit([&] { ++done; }));  // two waiting: full
    release.set_value();
    pool.stop();
    EXPECT_EQ(done.load(), 2);
    EXPECT_FALSE(pool.submit([] {}));
    EXPECT_TRUE(log.contains("request job ended with an exception: job failed"));
}

TEST_F(Concurrency, ManyRequestsWithNestedCallsRunTogether)
{
    const int rounds = 40;
    std::vector<std::future<std::string>> results;
    for (int i = 0; i < rounds; ++i)
    {
        results.push_back(onPool<std::string>(
            server(),
            [this]
            {
                return labelOf(cimom().getInstance(
                    context, ns, item("nested"), true, false, false, CIMPropertyList()));
            }));
        results.push_back(onPool<std::string>(
            server(),
            [this]
            {
                Array<CIMParamValue> in, out;
                in.append(CIMParamValue("Depth", CIMValue(Uint32(4))));
                return text(
                    cimom()
                        .invokeMethod(context, ns, CIMObjectPath("Test_Nested"), "Recurse", in, out)
                        .toString());
            }));
        results.push_back(onPool<std::string>(
            server(),
            [this]
            {
                return std::to_string(cimom()
                                          .associators(
                                              context, ns, item("b"), CIMName(), CIMName(),
                                              String(), String(), false, false, CIMPropertyList())
                                          .size());
            }));
        results.push_back(onPool<std::string>(
            server(),
            [this]
            {
                return std::to_string(
                    cimom()
                        .enumerateInstances(
                            context, ns, "Test_Base", true, true, false, false, CIMPropertyList())
                        .size());
            }));
    }
    // Clients of the process's own threads meanwhile.
    std::vector<std::thread> clients;
    std::atomic<int> clientFailures{0};
    for (int t = 0; t < 4; ++t)
    {
        clients.emplace_back(
            [&]
            {
                CIMClient client;
                client.connectLocal();
                for (int i = 0; i < rounds; ++i)
                    if (client.enumerateInstanceNames(ns, "Test_Item").size() != 4)
                        ++clientFailures;
            });
    }
    for (std::thread& t : clients)
        t.join();
    const char* expected[] = {"via Alpha", "4", "2", "4"};
    for (size_t i = 0; i < results.size(); ++i)
        EXPECT_EQ(results[i].get(), expected[i % 4]) << i;
    EXPECT_EQ(clientFailures.load(), 0);
    EXPECT_EQ(counter("Item.initialize"), 1u);
}

TEST_F(Concurrency, ASinkThatHoldsBackHoldsTheProviderUntilItsObjectsAreTaken)
{
    setKnob("Item.enumerateInstances", "count:250");
    BoundedSink sink(3);
    std::thread request(
        [&]
        {
            server().dispatcher().execute(
                context,
                CIMOperationRequest::enumerateInstances(
                    ns, "Test_Item", true, true, false, false, CIMPropertyList()),
                sink);
        });
    std::vector<std::string> taken{sink.take()};
    // The provider is still delivering: it waits for room in the sink.
    EXPECT_EQ(counter("Item.enumerated"), 0u);
    for (std::string id = sink.take(); !id.empty(); id = sink.take())
        taken.push_back(id);
    request.join();
    EXPECT_EQ(counter("Item.enumerated"), 1u);
    ASSERT_EQ(taken.size(), 251u);  // Test_Item's 250, then Test_SubItem's
    for (size_t i = 0; i < 250; ++i)
        EXPECT_EQ(taken[i], std::to_string(i));
    EXPECT_EQ(taken.back(), "s1");
    EXPECT_EQ(sink.end(), "complete");
    EXPECT_LE(sink.maxQueued(), 3u);
}

TEST_F(Concurrency, FirstUseFromManyThreadsInitializesOnce)
{
    setKnob("Test_SlowInit.initialize", "sleep");
    std::vector<std::thread> threads;
    std::atomic<int> served{0};
    for (int t = 0; t < 12; ++t)
    {
        threads.emplace_back(
            [&]
            {
                if (cimom().enumerateInstanceNames(context, ns, "Test_SlowInit").size() == 1)
                    ++served;
            });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(served.load(), 12);
    EXPECT_EQ(counter("Test_SlowInit.created"), 1u);
    EXPECT_EQ(counter("Test_SlowInit.initialize"), 1u);
    EXPECT_EQ(counter("Test_SlowInit.served"), 12u);
}

TEST_F(Concurrency, StopWaitsForRequestsUnderWayThenTerminates)
{
    std::future<std::string> slow = onPool<std::string>(
        server(),
        [this]
        {
            Array<CIMParamValue> in, out;
            in.append(CIMParamValue("Milliseconds", CIMValue(Uint32(200))));
            return text(
                cimom()
                    .invokeMethod(context, ns, CIMObjectPath("Test_Nested"), "Sleep", in, out)
                    .toString());
        });
    while (counter("Nested.sleepStarted") == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    server().stop();
    // By the time stop() returns the request has ended and only then was
    // its provider terminated.
    EXPECT_EQ(counter("Nested.sleepEnded"), 1u);
    EXPECT_EQ(counter("Nested.terminate"), 1u);
    EXPECT_EQ(slow.get(), "0");
}
