// Instances built from a class, and clones of classes and instances, keep their properties
// together (one block, uncounted handles in the object, a name index shared with the source). Every handle behaves as a handle on
// a property of its own: it outlives the instance, sees and makes changes, and the result
// filter never changes what a handle sees.
#include "test_runtime_support.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/ResultFilter.h>
#include <gtest/gtest.h>

#include <string>

using namespace Pegasus;
using qeltest::str;

namespace
{

// A class of n uint16 properties P0..Pn-1 (n above the size from which lists are indexed),
// each with a class origin.
CIMClass classOf(Uint32 n)
{
    CIMClass c("QEL_Built");
    for (Uint32 i = 0; i < n; ++i)
    {
        const std::string name = "P" + std::to_string(i);
        c.addProperty(CIMProperty(
            CIMName(name.c_str()), CIMValue(CIMTYPE_UINT16, false), 0, CIMName(),
            CIMName("QEL_Base")));
    }
    return c;
}

TEST(BuiltInstance, HandlesOutliveTheInstanceAndShareItsProperties)
{
    CIMProperty kept;
    CIMConstProperty keptConst;
    {
        CIMInstance inst = classOf(20).buildInstance(false, true, CIMPropertyList());
        kept = inst.getProperty(3);
        keptConst = static_cast<const CIMInstance&>(inst).getProperty(4);
        kept.setValue(CIMValue(Uint16(7)));
        Uint16 v = 0;
        inst.getProperty(3).getValue().get(v);
        EXPECT_EQ(v, 7);
        inst.getProperty(4).setValue(CIMValue(Uint16(9)));
        // A removed property lives on in the handles on it.
        inst.removeProperty(3);
        EXPECT_EQ(inst.findProperty("P3"), PEG_NOT_FOUND);
        EXPECT_EQ(inst.getPropertyCount(), 19u);
    }
    Uint16 v = 0;
    kept.getValue().get(v);
    EXPECT_EQ(v, 7);
    keptConst.getValue().get(v);
    EXPECT_EQ(v, 9);
    // Out of its instance the property may be renamed again.
    kept.setName(CIMName("Other"));
    EXPECT_EQ(str(kept.getName().getString()), "Other");
}

TEST(BuiltInstance, RenamingInsideStillLimitedToCase)
{
    CIMInstance inst = classOf(20).buildInstance(false, false, CIMPropertyList());
    CIMProperty p = inst.getProperty(0);
    EXPECT_THROW(p.setName(CIMName("Other")), Exception);
    p.setName(CIMName("p0"));
    EXPECT_EQ(inst.findProperty("P0"), 0u);
    // A handle kept while its instance goes leaves the property free to be renamed.
    CIMProperty q = inst.getProperty(1);
    inst = CIMInstance();
    q.setName(CIMName("Free"));
    EXPECT_EQ(str(q.getName().getString()), "Free");
}

TEST(BuiltInstance, FindByNameAcrossChangesOfTheList)
{
    // 15 properties are walked, 16 and more found through the class's index: both ways.
    for (Uint32 n : {15u, 16u, 40u})
    {
        SCOPED_TRACE(n);
        const CIMClass c = classOf(n);
        CIMInstance inst = c.buildInstance(false, false, CIMPropertyList());
        char buffer[8] = "P1";  // not a literal: made anew for each lookup
        EXPECT_EQ(inst.findProperty(CIMName(buffer)), 1u);
        EXPECT_EQ(inst.findProperty("p1"), 1u);
        EXPECT_EQ(inst.findProperty("P"), PEG_NOT_FOUND);
        EXPECT_EQ(inst.findProperty("P1x"), PEG_NOT_FOUND);
        const Uint32 last = n - 1;
        const std::string lastName = "P" + std::to_string(last);
        EXPECT_EQ(inst.findProperty(CIMName(lastName.c_str())), last);
        inst.removeProperty(0);
        EXPECT_EQ(inst.findProperty(CIMName(lastName.c_str())), last - 1);
        EXPECT_EQ(inst.findProperty("P0"), PEG_NOT_FOUND);
        inst.addProperty(CIMProperty(CIMName("P0"), CIMValue(Uint8(1))));
        EXPECT_EQ(inst.findProperty("P0"), n - 1);
        // The class is not changed by its instances, nor its clones by it.
        EXPECT_EQ(c.findProperty("P0"), 0u);
        CIMClass clone = c.clone();
        clone.removeProperty(0);
        EXPECT_EQ(clone.findProperty("P1"), 0u);
        EXPECT_EQ(c.findProperty("P1"), 1u);
        EXPECT_EQ(c.buildInstance(false, false, CIMPropertyList()).findProperty("P1"), 1u);
    }
}

TEST(BuiltInstance, FilteredInPlaceOnlyWhenNoHandleWasHandedOut)
{
    const CIMClass c = classOf(20);
    Array<CIMName> names;
    names.append(CIMName("P2"));
    const CIMPropertyList onlyP2(names);

    // Nobody else holds it: filtered in place.
    CIMInstance alone = c.buildInstance(false, true, CIMPropertyList());
    const CIMInstance result = ResultFilter::filtered(alone, false, false, onlyP2);
    ASSERT_EQ(result.getPropertyCount(), 1u);
    EXPECT_TRUE(result.getProperty(0).getClassOrigin().isNull());
    EXPECT_TRUE(result.identical(alone));

    // A handle on one property was handed out: the handle and the instance stay as they are.
    CIMInstance held = c.buildInstance(false, true, CIMPropertyList());
    const CIMProperty handle = held.getProperty(2);
    const CIMInstance copy = ResultFilter::filtered(held, false, false, onlyP2);
    ASSERT_EQ(copy.getPropertyCount(), 1u);
    EXPECT_TRUE(copy.getProperty(0).getClassOrigin().isNull());
    EXPECT_EQ(held.getPropertyCount(), 20u);
    EXPECT_EQ(str(handle.getClassOrigin().getString()), "QEL_Base");
    EXPECT_FALSE(copy.identical(held));
}

TEST(BuiltInstance, ClonesAndSharedPropertiesAreKeptApart)
{
    CIMInstance inst = classOf(20).buildInstance(false, true, CIMPropertyList());
    inst.getProperty(5).setValue(CIMValue(Uint16(5)));
    CIMInstance clone = inst.clone();
    clone.getProperty(5).setValue(CIMValue(Uint16(6)));
    Uint16 v = 0;
    inst.getProperty(5).getValue().get(v);
    EXPECT_EQ(v, 5);
    EXPECT_EQ(clone.findProperty("P5"), 5u);

    // A property added as it is (shared) to another instance: filtering its first instance
    // must not change it, and it keeps working there after its first instance goes.
    CIMInstance other("QEL_Other");
    other.addProperty(inst.getProperty(6));
    const CIMInstance filtered = ResultFilter::filtered(inst, false, false, CIMPropertyList());
    EXPECT_TRUE(filtered.getProperty(6).getClassOrigin().isNull());
    EXPECT_EQ(str(other.getProperty(0).getClassOrigin().getString()), "QEL_Base");
    inst = CIMInstance();
    other.getProperty(0).setValue(CIMValue(Uint16(8)));
    other.getProperty(0).getValue().get(v);
    EXPECT_EQ(v, 8);
}

TEST(BuiltInstance, ClonedClassesAreIndependentAndTheirHandlesOutliveThem)
{
    // Cloned once and again, at sizes with and without an index (16).
    for (Uint32 n : {1u, 15u, 16u, 17u, 65u})
    {
        SCOPED_TRACE(n);
        CIMClass original = classOf(n);
        original.getProperty(0).addQualifier(CIMQualifier(CIMName("Key"), CIMValue(true)));
        CIMProperty kept;
        {
            CIMClass clone = original.clone();
            CIMClass second = clone.clone();
            kept = clone.getProperty(n - 1);
            clone.getProperty(0).setValue(CIMValue(Uint16(7)));
            clone.getProperty(0).removeQualifier(0);
            second.removeProperty(0);
            EXPECT_EQ(second.getPropertyCount(), n - 1);
            EXPECT_EQ(clone.getPropertyCount(), n);
            EXPECT_TRUE(original.getProperty(0).getValue().isNull());
            EXPECT_EQ(original.getProperty(0).getQualifierCount(), 1u);
            if (n > 1)
            {
                EXPECT_EQ(
                    second.findProperty(CIMName(("P" + std::to_string(n - 1)).c_str())), n - 2);
            }
            const CIMInstance built = clone.buildInstance(true, true, CIMPropertyList());
            Uint16 v = 0;
            built.getProperty(0).getValue().get(v);
            EXPECT_EQ(v, 7);
            EXPECT_EQ(built.getProperty(0).getQualifierCount(), 0u);
        }
        // The clone is gone; its property lives on, and changes only itself.
        kept.setValue(CIMValue(Uint16(9)));
        EXPECT_EQ(str(kept.getName().getString()), "P" + std::to_string(n - 1));
        EXPECT_TRUE(original.getProperty(n - 1).getValue().isNull());
    }
}

}  // namespace
