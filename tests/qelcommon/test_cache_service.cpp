// The class cache: one fetch per namespace, class and request flags, copies
// that callers may change, nothing remembered on failure, bounded variants.
#include "QEL_Common.h"
#include "QEL_InternalCacheService.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

namespace
{

CIMPropertyList names(std::initializer_list<const char*> list)
{
    Array<CIMName> a;
    for (const char* n : list)
    {
        a.append(n);
    }
    return CIMPropertyList(a);
}

class ClassCache : public ::testing::Test
{
protected:
    void SetUp() override { service->clearStoredClasses(); }
    void TearDown() override { service->clearStoredClasses(); }

    CIMClass get(const char* ns, const char* cls, bool iq = false, bool ico = false,
        const CIMPropertyList& pl = CIMPropertyList())
    {
        return service->getStoredCIMClass(handle, context, ns, cls, false, iq, ico, pl);
    }

    QEL_InternalCacheService* service = QEL_InternalCacheService::getInstance();
    ScriptedServer server;
    CIMOMHandle handle = server.handle();
    OperationContext context;
};

} // namespace

TEST_F(ClassCache, OneFetchPerNamespaceClassAndFlags)
{
    struct Step
    {
        const char* ns;
        const char* cls;
        bool iq;
        bool ico;
        CIMPropertyList pl;
        int fetchesAfter;
    };
    const std::vector<Step> steps = {
        {"root/qel", "QEL_FCPort", false, false, CIMPropertyList(), 1},
        {"ROOT/QEL", "qel_fcport", false, false, CIMPropertyList(), 1},
        {"root/qel", "QEL_FCPort", true, false, CIMPropertyList(), 2},
        {"root/qel", "QEL_FCPort", false, true, CIMPropertyList(), 3},
        {"root/qel", "QEL_FCPort", false, false, names({}), 4},  // empty list differs from no list
        {"root/qel", "QEL_FCPort", false, false, names({"A", "b"}), 5},
        {"root/qel", "QEL_FCPort", false, false, names({"B", "a"}), 5},
        {"root/other", "QEL_FCPort", false, false, CIMPropertyList(), 6},
        {"root/qel", "QEL_SFP", false, false, CIMPropertyList(), 7},
    };
    for (const Step& s : steps)
    {
        SCOPED_TRACE(std::string(s.ns) + ":" + s.cls);
        CIMClass c = get(s.ns, s.cls, s.iq, s.ico, s.pl);
        EXPECT_TRUE(c.getClassName().equal(s.cls));
        EXPECT_EQ(s.fetchesAfter, server.getClassCalls.load());
    }
    EXPECT_EQ(7u, service->getStoredClassCount());
}

TEST_F(ClassCache, CallersGetTheirOwnCopy)
{
    CIMClass first = QEL_Common::getStoredCIMClass(handle, context, "root/qel", "QEL_FCPort", false, true, true,
        CIMPropertyList());
    const Uint32 count = first.getPropertyCount();
    first.addProperty(CIMProperty("AddedByCaller", CIMValue(Uint8(1))));
    first.removeProperty(first.findProperty("Name"));
    CIMClass second = get("root/qel", "QEL_FCPort", true, true);
    EXPECT_EQ(count, second.getPropertyCount());
    EXPECT_EQ(PEG_NOT_FOUND, second.findProperty("AddedByCaller"));
    EXPECT_NE(PEG_NOT_FOUND, second.findProperty("Name"));
    EXPECT_EQ(1, server.getClassCalls.load());
    CIMInstance skeleton = QEL_Common::buildInstanceSkeleton(second);
    EXPECT_EQ(count, skeleton.getPropertyCount());
}

TEST_F(ClassCache, FailuresPassThroughAndAreNotRemembered)
{
    for (int attempt = 1; attempt <= 2; attempt++)
    {
        try
        {
            get("root/qel", "Missing");
            ADD_FAILURE() << "no exception";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(CIM_ERR_NOT_FOUND, e.getCode());
        }
        EXPECT_EQ(attempt, server.getClassCalls.load());
    }
    EXPECT_EQ(0u, service->getStoredClassCount());
}

TEST_F(ClassCache, VariantsPerClassAreBoundedDroppingTheOldest)
{
    const size_t limit = QEL_InternalCacheService::MAX_VARIANTS_PER_CLASS;
    std::vector<std::string> props;
    for (size_t i = 0; i <= limit; i++)
    {
        props.push_back("P" + std::to_string(i));
        get("root/qel", "QEL_FCPort", false, false, names({props.back().c_str()}));
    }
    EXPECT_EQ(limit, service->getStoredClassCount());
    const int fetches = server.getClassCalls.load();
    get("root/qel", "QEL_FCPort", false, false, names({props.back().c_str()}));
    EXPECT_EQ(fetches, server.getClassCalls.load());
    get("root/qel", "QEL_FCPort", false, false, names({props.front().c_str()}));
    EXPECT_EQ(fetches + 1, server.getClassCalls.load());
}
