// Many request threads read one loaded repository at once: every reader
// sees the same complete answers and none disturbs another.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include "ClassRepository.h"
#include "MofCompiler.h"
#include "../mof_test_support.h"

using namespace Pegasus;

TEST(RepositoryReaders, ConcurrentQueriesSeeTheSameSchema)
{
    ClassRepository repo;
    MofCompiler compiler(repo);
    compiler.compileFile(moftest::schemaDir() + "/root.mof");

    const Uint32 fullCount = repo.getClass("root/qel", "QEL_FCPort", false, true, true,
        CIMPropertyList()).getPropertyCount();
    const Uint32 localCount = repo.getClass("root/qel", "QEL_FCPort", true, true, true,
        CIMPropertyList()).getPropertyCount();
    const Uint32 capabilities = repo.enumerateInstances("root/PG_InterOp",
        "PG_ProviderCapabilities").size();
    ASSERT_GT(fullCount, localCount);

    std::atomic<int> mismatches(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; t++)
    {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 60; i++)
            {
                const bool localOnly = (i + t) % 2 == 0;
                CIMClass c = repo.getClass("root/qel", "QEL_FCPort", localOnly, i % 3 == 0,
                    true, CIMPropertyList());
                if (c.getPropertyCount() != (localOnly ? localCount : fullCount))
                    mismatches++;
                // Changing a copy must not reach the other readers.
                c.removeProperty(0);
                if (repo.enumerateInstances("root/PG_InterOp", "PG_ProviderCapabilities").size() !=
                    capabilities)
                    mismatches++;
                if (!repo.isSubclassOf("root/qel", "QEL_FCPortSFP", "CIM_Dependency"))
                    mismatches++;
                if (repo.enumerateClassNames("root/qel", "CIM_ManagedElement", true).size() == 0)
                    mismatches++;
            }
        });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(mismatches.load(), 0);
}
