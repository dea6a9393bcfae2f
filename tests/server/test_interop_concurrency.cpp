// The discovery provider under many requests at once: its first use racing
// (one provider object is made), nested reads of the ports from several
// threads, and every answer complete.
#include "DiscoveryFixture.h"

#include <Server/core/ProviderManager.h>
#include <Server/core/ProviderRegistry.h>
#include <Server/interop/InteropRegistration.h>

#include <atomic>
#include <thread>

using namespace Pegasus;
using namespace servertest;

TEST_F(DiscoveryServer, ManyRequestsAtOnceShareOneProvider)
{
    const Uint32 portCount = ports().size();
    const CIMObjectPath fc = profile("FC Target Ports");
    restart();  // a fresh server: the discovery provider not yet made

    const unsigned threads = 8;
    std::atomic<unsigned> ready{0};
    std::atomic<unsigned> wrong{0};
    std::vector<std::thread> workers;
    for (unsigned t = 0; t < threads; ++t)
    {
        workers.emplace_back(
            [&, t]
            {
                ++ready;
                while (ready.load() < threads)
                    std::this_thread::yield();
                for (int round = 0; round < 3; ++round)
                {
                    Uint32 got = 0, expected = 0;
                    if ((t + round) % 2 == 0)
                    {
                        got = calls()
                                  .associatorNames(
                                      context, interopNs, fc, "CIM_ElementConformsToProfile")
                                  .size();
                        expected = portCount;
                    }
                    else
                    {
                        got = calls()
                                  .enumerateInstances(
                                      context, interopNs, "CIM_ElementConformsToProfile")
                                  .size();
                        expected = portCount + 1;
                    }
                    if (got != expected)
                        ++wrong;
                }
            });
    }
    for (std::thread& w : workers)
        w.join();
    EXPECT_EQ(wrong.load(), 0u);

    const ProviderId* discovery =
        server().registry().instanceProvider(interopNs, "CIM_ObjectManager");
    ASSERT_NE(discovery, nullptr);
    EXPECT_EQ(
        discovery->describe(),
        std::string(qel::interop::providerModuleName) + ":" + qel::interop::providerName);
    EXPECT_TRUE(server().providers().isInitialized(*discovery));
    EXPECT_TRUE(
        log->contains("provider QEL_InteropProviderModule:QEL_InteropProvider initialized"));
}
