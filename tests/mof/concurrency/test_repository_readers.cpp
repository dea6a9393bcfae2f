// Many request threads read one loaded repository at once: every reader
// sees the same complete answers and none disturbs another.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>
#include "../mof_test_support.h"

using namespace Pegasus;

TEST(RepositoryReaders, ConcurrentQueriesSeeTheSameSchema)
{
    ClassRepository repo;
    MofCompiler(repo).compileFile(moftest::schemaDir() + "/root.mof");
    auto properties = [&](bool localOnly)
    {
        return repo.getClass("root/qel", "QEL_FCPort", localOnly, true, true, CIMPropertyList())
            .getPropertyCount();
    };
    const Uint32 fullCount = properties(false);
    const Uint32 localCount = properties(true);
    const Uint32 capabilities =
        repo.enumerateInstances("root/PG_InterOp", "PG_ProviderCapabilities").size();
    ASSERT_GT(fullCount, localCount);
    std::atomic<int> mismatches(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; t++)
    {
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < 60; i++)
                {
                    const bool localOnly = (i + t) % 2 == 0;
                    CIMClass c = repo.getClass(
                        "root/qel", "QEL_FCPort", localOnly, i % 3 == 0, true, CIMPropertyList());
                    if (c.getPropertyCount() != (localOnly ? localCount : fullCount))
                        mismatches++;
                    c.removeProperty(0);  // changing a copy must not reach the other readers
                    if (repo.enumerateInstances("root/PG_InterOp", "PG_ProviderCapabilities")
                                .size() != capabilities ||
                        !repo.isSubclassOf("root/qel", "QEL_FCPortSFP", "CIM_Dependency") ||
                        repo.enumerateClassNames("root/qel", "CIM_ManagedElement", true).size() ==
                            0)
                        mismatches++;
                }
            });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(mismatches.load(), 0);
}
