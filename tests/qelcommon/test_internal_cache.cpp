// The internal cache: the service's class cache (one fetch per namespace, class and request flags,
// nothing remembered on failure, bounded variants; copies callers may change: see the concurrency
// suite) and the provider module (its factory, its one instance, its methods' answer and refusals).
#include "QEL_Common.h"
#include "QEL_InternalCacheProvider.h"
#include "QEL_InternalCacheService.h"
#include "RecordingHandlers.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/ProviderException.h>

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;
using qeltest::RecordingMethodHandler;

extern "C" CIMProvider* PegasusCreateProvider(const String& providerName);

const char CACHE[] =
    "//localhost/root/PG_Internal:QEL_InternalCache.InstanceID=\"localhost-InternalCache\"";

static CIMPropertyList names(std::initializer_list<const char*> list)
{
    Array<CIMName> a;
    for (const char* n : list)
        a.append(n);
    return CIMPropertyList(a);
}

class ClassCache : public ::testing::Test
{
protected:
    void SetUp() override { service->clearStoredClasses(); }
    void TearDown() override { service->clearStoredClasses(); }

    CIMClass
    get(const char* ns, const char* cls, bool iq = false, bool ico = false,
        const CIMPropertyList& pl = CIMPropertyList())
    {
        return service->getStoredCIMClass(handle, context, ns, cls, false, iq, ico, pl);
    }

    QEL_InternalCacheService* service = QEL_InternalCacheService::getInstance();
    ScriptedServer server;
    CIMOMHandle handle = server.handle();
    OperationContext context;
};

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

TEST_F(ClassCache, FailuresAreNotRememberedAndVariantsPerClassAreBounded)
{
    for (int attempt = 1; attempt <= 2; attempt++)
    {
        EXPECT_THROW(get("root/qel", "Missing"), CIMException);
        EXPECT_EQ(attempt, server.getClassCalls.load());
    }
    EXPECT_EQ(0u, service->getStoredClassCount());

    // At most MAX_VARIANTS_PER_CLASS variants per class; the oldest goes first.
    const size_t limit = QEL_InternalCacheService::MAX_VARIANTS_PER_CLASS;
    Texts props;
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

TEST(InternalCacheProviderModule, FactoryAcceptsOnlyItsProviderName)
{
    for (const char* name : {"QEL_InternalCacheProvider", "qel_internalcacheprovider"})
    {
        CIMProvider* p = PegasusCreateProvider(name);
        ASSERT_NE(nullptr, dynamic_cast<CIMMethodProvider*>(p)) << name;
        p->terminate();
    }
    for (const char* name :
         {"QEL_InternalCache", "", " QEL_InternalCacheProvider", "QEL_FCPortProvider"})
        EXPECT_EQ(nullptr, PegasusCreateProvider(name)) << name;
}

TEST(InternalCacheProviderModule, ServesOneInstanceAndRefusesEverythingElse)
{
    loadTestArray();
    QEL_InternalCacheProvider provider;
    OperationContext ctx;
    qeltest::RecordingInstanceHandler instances;
    qeltest::RecordingObjectPathHandler names;
    provider.getInstance(ctx, CIMObjectPath(CACHE), false, false, CIMPropertyList(), instances);
    provider.enumerateInstanceNames(
        ctx, CIMObjectPath("root/PG_Internal:QEL_InternalCache"), names);
    ASSERT_EQ(1u, instances.delivered.size());
    ASSERT_EQ(1u, names.delivered.size());
    EXPECT_EQ(
        String("QEL_InternalCache.InstanceID=\"localhost-InternalCache\""),
        names.delivered[0].toString());
    EXPECT_EQ(names.delivered[0], instances.delivered[0].getPath());

    // The identity methods as the QEL_Common helpers use them are tested
    // there; here the name's case and a value the demo array lacks.
    loadTestArrayWithSystem("\"type\": -3");
    Array<CIMParamValue> none;
    RecordingMethodHandler type;
    provider.invokeMethod(ctx, CIMObjectPath(CACHE), "getsystemtype", none, type);
    EXPECT_EQ("processing deliverParamValue deliver complete", type.record.sequence);
    ASSERT_EQ(1u, type.outParameters.size());
    EXPECT_EQ(String("SystemType"), type.outParameters[0].getParameterName());
    EXPECT_EQ(CIMValue(Sint32(-3)), type.outParameters[0].getValue());
    EXPECT_EQ(CIMValue(Uint32(0)), type.returnValues.at(0));

    RecordingMethodHandler h;
    qeltest::RecordingResponseHandler plain;
    const CIMObjectPath cache(CACHE);
    EXPECT_THROW(
        provider.invokeMethod(ctx, cache, "GetSystemSerial", none, h), CIMMethodNotFoundException);
    const CIMObjectPath other(
        "root/PG_Internal:QEL_InternalCache.InstanceID=\"other-InternalCache\"");
    EXPECT_THROW(
        provider.invokeMethod(ctx, other, "GetSystemName", none, h), CIMObjectNotFoundException);
    EXPECT_THROW(
        provider.enumerateInstances(
            ctx, CIMObjectPath("root/PG_Internal:QEL_Other"), false, false, CIMPropertyList(),
            instances),
        CIMNotSupportedException);
    EXPECT_THROW(
        provider.deleteInstance(ctx, CIMObjectPath(CACHE), plain), CIMNotSupportedException);
    ASSERT_TRUE(qelsim::injectFault("api_getSystemIdentity", API_ERR_IO, 1).ok);
    EXPECT_THROW(
        provider.invokeMethod(ctx, cache, "GetSystemName", none, h), CIMOperationFailedException);
    EXPECT_TRUE(h.record.untouched());
}
