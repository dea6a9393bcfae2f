// One FC port provider serving many request threads at once: every request completes, each library call
// keeps its own semaphore bracket, and no list is lost.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>

#include <Pegasus/Common/CIMProperty.h>

#include <atomic>
#include <thread>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

using FCPortConcurrency = ProviderTest;

TEST_F(FCPortConcurrency, ConcurrentReadsChangesAndMethods)
{
    QEL_FCPortProvider* provider = start<QEL_FCPortProvider>("QEL_FCPortProvider", {"QEL_FCPort"});
    qelsim::captureLog(false);  // keep the run about the provider, not the capture
    const CIMObjectPath port = portPath("21230002AC001235", "qel-node1");
    const int threads = 4;
    const int rounds = 20;
    std::atomic<int> failures(0);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; t++)
    {
        workers.emplace_back(
            [&, t]
            {
                const OperationContext context = asOperator();
                for (int r = 0; r < rounds; r++)
                {
                    const Answer all = request(
                        "QEL_FCPort", ENUMERATE_INSTANCES, CIMObjectPath(), Request(), "operator");
                    const Answer one =
                        request("QEL_FCPort", GET_INSTANCE, port, Request(), "operator");
                    CIMInstance change("QEL_FCPort");
                    change.addProperty(CIMProperty("VCN", CIMValue(Uint16(1 + (t + r) % 2))));
                    RecordingResponseHandler changed;
                    RecordingMethodHandler method;
                    const std::string failure = thrown(
                        [&]
                        {
                            provider->modifyInstance(
                                context, port, change, false, CIMPropertyList(), changed);
                            provider->invokeMethod(
                                context, port, "SyncDatabase", Array<CIMParamValue>(), method);
                        });
                    failures += !failure.empty() || all.instances.size() != 3 ||
                                one.instances.size() != 1 ||
                                all.sequence != "processing deliver deliver deliver complete" ||
                                !changed.record.untouched() || method.returnValues.size() != 1 ||
                                method.returnValues[0] != CIMValue(Sint32(0));
                }
            });
    }
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_EQ(failures.load(), 0);

    // Reads: 2 per round; changes: 2 (VCN, SyncDatabase).
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, static_cast<uint64_t>(threads * rounds * 4));
    EXPECT_EQ(c.semFailedWaits, 0u);
}
