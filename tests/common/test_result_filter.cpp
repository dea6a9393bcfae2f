// ResultFilter: what the CIMOM returns for a delivered instance. It may reuse the
// delivered state only when nobody else holds it; a provider's handle never changes.
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/ResultFilter.h>
#include <gtest/gtest.h>

using namespace Pegasus;

namespace
{

CIMInstance makeDelivered(bool withQualifier = false)
{
    CIMInstance inst("QEL_FCPort");
    if (withQualifier)
        inst.addQualifier(CIMQualifier("Description", CIMValue(String("a port"))));
    inst.addProperty(CIMProperty(
        "DeviceID", CIMValue(String("20110002AC00A001")), 0, CIMName(),
        CIMName("CIM_LogicalDevice"), true));
    inst.addProperty(CIMProperty(
        "Speed", CIMValue(Uint64(8589934592ULL)), 0, CIMName(), CIMName("CIM_LogicalPort"), true));
    return inst;
}

CIMPropertyList only(const char* name)
{
    Array<CIMName> names;
    names.append(CIMName(name));
    return CIMPropertyList(names);
}

void expectFiltered(const CIMInstance& result)
{
    ASSERT_EQ(result.getPropertyCount(), 1u);
    EXPECT_EQ(result.getProperty(0).getName(), CIMName("DeviceID"));
    EXPECT_TRUE(result.getProperty(0).getClassOrigin().isNull());
    EXPECT_EQ(result.getQualifierCount(), 0u);
}

void expectUntouched(const CIMInstance& kept)
{
    ASSERT_EQ(kept.getPropertyCount(), 2u);
    EXPECT_EQ(kept.getProperty(0).getClassOrigin(), CIMName("CIM_LogicalDevice"));
}

TEST(ResultFilter, FiltersAnInstanceNobodyElseHolds)
{
    expectFiltered(ResultFilter::filtered(makeDelivered(), false, false, only("DeviceID")));
    expectFiltered(ResultFilter::filtered(makeDelivered(true), false, false, only("DeviceID")));
    // With everything asked for, nothing is dropped.
    const CIMInstance all =
        ResultFilter::filtered(makeDelivered(true), true, true, CIMPropertyList());
    EXPECT_EQ(all.getPropertyCount(), 2u);
    EXPECT_EQ(all.getQualifierCount(), 1u);
    EXPECT_EQ(all.getProperty(1).getClassOrigin(), CIMName("CIM_LogicalPort"));
}

TEST(ResultFilter, NeverChangesWhatAProviderStillHolds)
{
    // The provider keeps the instance itself; the CIMOM filters the handle it was handed.
    CIMInstance kept = makeDelivered();
    CIMInstance handedOver = kept;
    expectFiltered(ResultFilter::filtered(handedOver, false, false, only("DeviceID")));
    expectUntouched(kept);

    // The provider keeps only one of its properties.
    CIMProperty keptProperty;
    auto deliver = [&keptProperty]
    {
        CIMInstance delivered = makeDelivered();
        keptProperty = delivered.getProperty(0);
        return delivered;
    };
    const CIMInstance result = ResultFilter::filtered(deliver(), false, false, only("DeviceID"));
    expectFiltered(result);
    EXPECT_EQ(keptProperty.getClassOrigin(), CIMName("CIM_LogicalDevice"));

    // Objects follow the same rule.
    CIMObject object(makeDelivered());
    CIMObject objectHandedOver = object;
    const CIMObject filteredObject =
        ResultFilter::filtered(objectHandedOver, false, false, only("Speed"));
    EXPECT_EQ(filteredObject.getPropertyCount(), 1u);
    EXPECT_EQ(object.getPropertyCount(), 2u);
}

TEST(ResultFilter, UninitializedHandleThrows)
{
    EXPECT_THROW(
        ResultFilter::filtered(CIMInstance(), true, true, CIMPropertyList()),
        UninitializedObjectException);
}

}  // namespace
