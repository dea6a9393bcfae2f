// Concurrent requests: the class cache, the policy word, identity calls and the process-wide address
// cache and random generator (also run under ThreadSanitizer).
#include "QEL_Common.h"
#include "QEL_InternalCacheService.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

using namespace Pegasus;
using namespace qelcommontest;

const int THREADS = 6;

template <class Body>
static void runThreads(Body body)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; t++)
        threads.emplace_back(body, t);
    for (std::thread& th : threads)
        th.join();
}

TEST(Concurrency, ClassCacheServesIndependentCopiesToConcurrentRequests)
{
    QEL_InternalCacheService* service = QEL_InternalCacheService::getInstance();
    service->clearStoredClasses();
    ScriptedServer server;
    CIMOMHandle handle = server.handle();
    const char* classes[] = {"QEL_FCPort", "QEL_SFP", "QEL_FCPortSFP", "QEL_FCPortLESBStatistics"};
    std::atomic<int> wrong{0};
    runThreads(
        [&](int t)
        {
            OperationContext context;
            for (int i = 0; i < 150; i++)
            {
                const char* name = classes[(i + t) % 4];
                CIMClass c = QEL_Common::getStoredCIMClass(
                    handle, context, "root/qel", name, false, i % 2 == 0, true, CIMPropertyList());
                if (!c.getClassName().equal(name) || c.findProperty("Mine") != PEG_NOT_FOUND)
                    wrong++;
                c.addProperty(CIMProperty("Mine", CIMValue(Uint32(t))));
            }
        });
    EXPECT_EQ(0, wrong.load());
    EXPECT_EQ(8u, service->getStoredClassCount());
    // Racing first requests may each fetch, but never more than once per thread.
    EXPECT_GE(server.getClassCalls.load(), 8);
    EXPECT_LE(server.getClassCalls.load(), 8 * THREADS);
    service->clearStoredClasses();
}

TEST(Concurrency, IdentityPolicyAddressCacheAndRandomGeneratorFromManyRequests)
{
    loadTestArray();
    ScriptedServer server;
    CIMOMHandle handle = server.handle();
    const Uint32 before = QEL_Common::getPolicy();
    std::atomic<int> wrong{0};
    runThreads(
        [&](int t)
        {
            char buf[33];
            for (int i = 0; i < 20; i++)
            {
                QEL_Common::setPolicy(Uint32(t));
                QEL_Common::generate_random_string(buf, sizeof(buf));
                wrong += QEL_Common::getSystemName(handle) != "DEMO01" ||
                         QEL_Common::getSystemID() != 1234567 ||
                         QEL_Common::getPolicy() >= Uint32(THREADS) ||
                         QEL_Common::getSystemIPAddr(1) != "192.168.10.20" ||
                         QEL_Common::getSystemIPAddr(2) != "fd00:10::20" ||
                         strlen(buf) != sizeof(buf) - 1;
            }
        });
    EXPECT_EQ(0, wrong.load());
    EXPECT_EQ(THREADS * 40, server.connections());
    EXPECT_EQ(server.connections(), server.disconnects());
    QEL_Common::setPolicy(before);
}
