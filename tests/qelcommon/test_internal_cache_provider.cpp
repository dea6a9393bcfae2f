// The internal cache provider module: its factory, its one instance and the
// identity methods answered from the array library.
#include "QEL_InternalCacheProvider.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/ProviderException.h>

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

extern "C" CIMProvider* PegasusCreateProvider(const String& providerName);

namespace
{

class Collector : public InstanceResponseHandler, public ObjectPathResponseHandler, public MethodResultResponseHandler
{
public:
    void processing() override { processed++; }
    void complete() override { completed++; }
    void deliver(const CIMInstance& i) override { instances.append(i); }
    void deliver(const Array<CIMInstance>& a) override { instances.appendArray(a); }
    void deliver(const CIMObjectPath& p) override { paths.append(p); }
    void deliver(const Array<CIMObjectPath>& a) override { paths.appendArray(a); }
    void deliverParamValue(const CIMParamValue& p) override { out.append(p); }
    void deliverParamValue(const Array<CIMParamValue>& a) override { out.appendArray(a); }
    void deliver(const CIMValue& v) override { returnValue = v; }

    int processed = 0;
    int completed = 0;
    Array<CIMInstance> instances;
    Array<CIMObjectPath> paths;
    Array<CIMParamValue> out;
    CIMValue returnValue;
};

const char CACHE[] = "//localhost/root/PG_Internal:QEL_InternalCache.InstanceID=\"localhost-InternalCache\"";

} // namespace

TEST(InternalCacheProviderModule, FactoryAcceptsOnlyItsProviderName)
{
    for (const char* name : {"QEL_InternalCacheProvider", "qel_internalcacheprovider"})
    {
        CIMProvider* p = PegasusCreateProvider(name);
        ASSERT_NE(nullptr, p) << name;
        EXPECT_NE(nullptr, dynamic_cast<CIMMethodProvider*>(p));
        p->terminate();
    }
    for (const char* name : {"QEL_InternalCache", "", " QEL_InternalCacheProvider", "QEL_FCPortProvider"})
    {
        EXPECT_EQ(nullptr, PegasusCreateProvider(name)) << name;
    }
}

TEST(InternalCacheProviderModule, MethodsAnswerFromTheSystemIdentity)
{
    loadTestArrayWithSystem("\"name\": \"ARRAY7\", \"hostName\": \"array7.example.net\", \"id\": 4000000000, "
                            "\"type\": -3, \"quadPort\": true, \"ipv4\": \"10.1.2.3\"");
    struct Case
    {
        const char* method;
        const char* outName;
        CIMValue value;
    };
    const Case cases[] = {
        {"GetSystemName", "SystemName", CIMValue(String("ARRAY7"))},
        {"getsystemhostname", "SystemHostName", CIMValue(String("array7.example.net"))},
        {"GetSystemID", "SystemID", CIMValue(Uint32(4000000000u))},
        {"GetSystemType", "SystemType", CIMValue(Sint32(-3))},
        {"GetSystemAddress", "SystemAddress", CIMValue(String("10.1.2.3"))},
        {"IsQuadPortSystem", "IsQuadPort", CIMValue(Uint8(1))},
    };
    QEL_InternalCacheProvider provider;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.method);
        Collector h;
        provider.invokeMethod(OperationContext(), CIMObjectPath(CACHE), c.method, Array<CIMParamValue>(), h);
        ASSERT_EQ(1u, h.out.size());
        EXPECT_EQ(String(c.outName), h.out[0].getParameterName());
        EXPECT_EQ(c.value, h.out[0].getValue());
        EXPECT_EQ(CIMValue(Uint32(0)), h.returnValue);
        EXPECT_EQ(1, h.completed);
    }
}

TEST(InternalCacheProviderModule, ServesOneInstanceAndRefusesEverythingElse)
{
    loadTestArray();
    QEL_InternalCacheProvider provider;
    OperationContext ctx;
    Collector h;
    provider.getInstance(ctx, CIMObjectPath(CACHE), false, false, CIMPropertyList(), h);
    provider.enumerateInstanceNames(ctx, CIMObjectPath("root/PG_Internal:QEL_InternalCache"), h);
    ASSERT_EQ(1u, h.instances.size());
    ASSERT_EQ(1u, h.paths.size());
    EXPECT_EQ(String("QEL_InternalCache.InstanceID=\"localhost-InternalCache\""), h.paths[0].toString());
    EXPECT_EQ(h.paths[0], h.instances[0].getPath());

    Array<CIMParamValue> none;
    EXPECT_THROW(provider.invokeMethod(ctx, CIMObjectPath(CACHE), "GetSystemSerial", none, h),
        CIMMethodNotFoundException);
    EXPECT_THROW(provider.invokeMethod(ctx,
                     CIMObjectPath("root/PG_Internal:QEL_InternalCache.InstanceID=\"other-InternalCache\""),
                     "GetSystemName", none, h),
        CIMObjectNotFoundException);
    EXPECT_THROW(provider.enumerateInstances(ctx, CIMObjectPath("root/PG_Internal:QEL_Other"), false, false,
                     CIMPropertyList(), h),
        CIMNotSupportedException);
    EXPECT_THROW(provider.deleteInstance(ctx, CIMObjectPath(CACHE), h), CIMNotSupportedException);
    ASSERT_TRUE(qelsim::injectFault("api_getSystemIdentity", API_ERR_IO, 1).ok);
    EXPECT_THROW(provider.invokeMethod(ctx, CIMObjectPath(CACHE), "GetSystemName", none, h),
        CIMOperationFailedException);
    EXPECT_EQ(0u, h.out.size());
}
