// One FC port provider serving many request threads at once: every request
// completes, each library call keeps its own semaphore bracket, and no list
// is lost.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>

#include <Pegasus/Common/CIMProperty.h>

#include <atomic>
#include <thread>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

using FCPortConcurrency = ProviderTest;

TEST_F(FCPortConcurrency, ConcurrentReadsChangesAndMethods)
{
    testing::internal::CaptureStdout();
    CIMProvider* started = host().startProvider("QEL_FCPortProvider", {"QEL_FCPort"});
    testing::internal::GetCapturedStdout();
    QEL_FCPortProvider* provider = dynamic_cast<QEL_FCPortProvider*>(started);
    ASSERT_NE(provider, nullptr);
    qelsim::captureLog(false);  // keep the run about the provider, not the capture
    qelsim::resetCounters();

    const CIMObjectPath port("root/qel:QEL_FCPort.SystemCreationClassName=\"QEL_NodeSystem\","
        "SystemName=\"qel-node1\",CreationClassName=\"QEL_FCPort\",DeviceID=\"21230002AC001235\"");
    const int threads = 4;
    const int rounds = 20;
    std::atomic<int> failures(0);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; t++)
    {
        workers.emplace_back([&, t] {
            const OperationContext context = asOperator();
            for (int r = 0; r < rounds; r++)
            {
                try
                {
                    RecordingInstanceHandler all;
                    provider->enumerateInstances(context, CIMObjectPath("", "root/qel",
                        "QEL_FCPort"), false, false, CIMPropertyList(), all);
                    RecordingInstanceHandler one;
                    provider->getInstance(context, port, false, false, CIMPropertyList(), one);

                    CIMInstance change("QEL_FCPort");
                    change.addProperty(CIMProperty("VCN", CIMValue(Uint16(1 + (t + r) % 2))));
                    RecordingResponseHandler changed;
                    provider->modifyInstance(context, port, change, false, CIMPropertyList(),
                        changed);

                    RecordingMethodHandler method;
                    provider->invokeMethod(context, port, "SyncDatabase",
                        Array<CIMParamValue>(), method);

                    Sint32 result = -1;
                    method.returnValues.at(0).get(result);
                    if (all.instances.size() != 3 || one.instances.size() != 1 || result != 0 ||
                        !all.record.violations().empty() || !changed.record.untouched())
                    {
                        failures++;
                    }
                }
                catch (...)
                {
                    failures++;
                }
            }
        });
    }
    for (std::thread& worker : workers)
    {
        worker.join();
    }
    EXPECT_EQ(failures.load(), 0);

    // Reads: 2 per round; changes: 2 (VCN, SyncDatabase).
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, static_cast<uint64_t>(threads * rounds * 4));
    EXPECT_EQ(c.semFailedWaits, 0u);
}

} // namespace
