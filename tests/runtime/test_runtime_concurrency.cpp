// Sharing across request threads: a class definition and property list read
// by many threads at once, one CIMOMHandle host used through many copies,
// and transport factories replaced while clients connect.
#include <atomic>
#include <functional>
#include <thread>
#include <gtest/gtest.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include "../common/test_runtime_support.h"
#include "runtime_doubles.h"

using namespace Pegasus;
using qeltest::str;

namespace
{

const int kThreads = 8;
const int kRounds = 200;

void runThreads(const std::function<void(int)>& body)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++)
        threads.emplace_back(body, t);
    for (auto& th : threads)
        th.join();
}

TEST(SharedObjects, OneClassBuildsInstancesInManyThreads)
{
    CIMClass cls("QEL_FCPort");
    cls.addQualifier(CIMQualifier("Description", CIMValue(String("port"))));
    for (const char* key : {"SystemName", "DeviceID"})
    {
        CIMProperty p(key, CIMValue(CIMTYPE_STRING, false));
        p.addQualifier(CIMQualifier("Key", CIMValue(true)));
        cls.addProperty(p);
    }
    cls.addProperty(CIMProperty("Speed", CIMValue(Uint64(0))));
    Array<CIMName> names(1, CIMName("DeviceID"));
    names.append("SystemName");
    const CIMPropertyList keysOnly(names);
    std::atomic<int> wrong{0};
    runThreads(
        [&](int t)
        {
            for (int i = 0; i < kRounds; i++)
            {
                CIMInstance inst =
                    cls.buildInstance(i % 3 == 0, true, (i % 2) ? keysOnly : CIMPropertyList());
                std::string id = std::to_string(t) + "-" + std::to_string(i);
                inst.getProperty(inst.findProperty("DeviceID"))
                    .setValue(CIMValue(String(id.c_str())));
                inst.getProperty(inst.findProperty("SystemName"))
                    .setValue(CIMValue(String("array1")));
                if (str(inst.buildPath(cls).toString()) !=
                        "QEL_FCPort.DeviceID=\"" + id + "\",SystemName=\"array1\"" ||
                    inst.getPropertyCount() != ((i % 2) ? 2u : 3u))
                    wrong++;
            }
        });
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_TRUE(cls.getProperty(0).getValue().isNull());  // the shared class is untouched
}

TEST(SharedObjects, HandleCopiesUsedFromManyThreads)
{
    auto host = std::make_shared<qeltest::RecordingHost>();
    const CIMOMHandle stored(host);  // what a provider keeps after initialize
    std::atomic<int> wrong{0};
    runThreads(
        [&](int)
        {
            const OperationContext ctx;
            for (int i = 0; i < kRounds; i++)
            {
                CIMOMHandle copy = stored;
                CIMClass c = copy.getClass(
                    ctx, "root/qel", "QEL_FCPort", false, true, false, CIMPropertyList());
                if (str(c.getClassName().getString()) != "QEL_FCPort")
                    wrong++;
            }
        });
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(host->calls().size(), size_t(kThreads * kRounds));
}

TEST(SharedObjects, FactoriesReplacedWhileClientsConnect)
{
    auto log = std::make_shared<qeltest::TransportLog>();
    std::atomic<int> made{0};
    auto factory = [&made, log](Uint32)
    {
        made++;
        return std::unique_ptr<ClientTransport>(new qeltest::FakeTransport(log));
    };
    LocalTransportFactory previous = setLocalTransportFactory(factory);
    std::atomic<int> connected{0};
    runThreads(
        [&](int t)
        {
            for (int i = 0; i < kRounds; i++)
            {
                if (t == 0)
                {
                    setLocalTransportFactory(factory);
                    continue;
                }
                CIMClient client;
                client.connectLocal();
                connected++;
                client.disconnect();
            }
        });
    setLocalTransportFactory(previous);
    EXPECT_EQ(connected.load(), (kThreads - 1) * kRounds);
    EXPECT_EQ(made.load(), (kThreads - 1) * kRounds);
    EXPECT_EQ(log->closed.load(), (kThreads - 1) * kRounds);
}

}  // namespace
