// CIMInstance, CIMObject and their const twins: uninitialized handles,
// sharing, property list rules, paths, filtering and conversions.
#include <functional>
#include <vector>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObject.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using namespace qeltest;

namespace
{

CIMInstance makePort()
{
    CIMInstance inst("QEL_FCPort");
    inst.addProperty(CIMProperty("DeviceID", CIMValue(String("0123456789ABCDEF"))));
    inst.addProperty(CIMProperty("Speed", CIMValue(Uint64(8000000000ULL))));
    inst.addProperty(CIMProperty("ElementName", CIMValue(String("port 0"))));
    return inst;
}

TEST(InstanceUninitialized, EveryMemberThrows)
{
    CIMInstance inst;
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"getClassName", [&] { inst.getClassName(); }},
        {"getPath", [&] { inst.getPath(); }},
        {"setPath", [&] { inst.setPath(CIMObjectPath("QEL_FCPort")); }},
        {"addQualifier", [&] { inst.addQualifier(CIMQualifier("Q", CIMValue(true))); }},
        {"addProperty", [&] { inst.addProperty(CIMProperty("P", CIMValue(true))); }},
        {"findQualifier", [&] { inst.findQualifier("Q"); }},
        {"getQualifierCount", [&] { inst.getQualifierCount(); }},
        {"findProperty", [&] { inst.findProperty("P"); }},
        {"getProperty", [&] { inst.getProperty(0); }},
        {"getProperty const", [&] { static_cast<const CIMInstance&>(inst).getProperty(0); }},
        {"removeProperty", [&] { inst.removeProperty(0); }},
        {"getPropertyCount", [&] { inst.getPropertyCount(); }},
        {"buildPath", [&] { inst.buildPath(CIMClass("QEL_FCPort")); }},
        {"clone", [&] { inst.clone(); }},
        {"identical", [&] { makePort().identical(inst); }},
        {"instanceFilter", [&] { inst.instanceFilter(true, true, CIMPropertyList()); }},
        {"const twin", [&] { CIMConstInstance(inst).getPropertyCount(); }},
        {"null class name", [] { CIMInstance{CIMName()}; }},
    };
    for (const auto& c : calls)
    {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(thrownMessage<UninitializedObjectException>(c.second), "uninitialized object");
    }
    CIMInstance copy = inst;  // copying an uninitialized handle is allowed
    EXPECT_TRUE(copy.isUninitialized());
}

TEST(InstanceHandle, SharingClonesAndIdentity)
{
    CIMInstance a = makePort();
    CIMInstance shared = a;
    CIMInstance deep = a.clone();
    EXPECT_TRUE(deep.identical(a));
    CIMConstInstance view = a;
    shared.getProperty(shared.findProperty("Speed")).setValue(CIMValue(Uint64(1)));
    shared.addProperty(CIMProperty("Extra", CIMValue(true)));
    EXPECT_EQ(view.getPropertyCount(), 4u);
    EXPECT_TRUE(a.getProperty(1).getValue() == CIMValue(Uint64(1)));
    EXPECT_EQ(deep.getPropertyCount(), 3u);
    EXPECT_TRUE(deep.getProperty(1).getValue() == CIMValue(Uint64(8000000000ULL)));

    // addProperty stores the handle itself, not a copy.
    CIMProperty p("Later", CIMValue(Uint16(1)));
    deep.addProperty(p);
    p.setValue(CIMValue(Uint16(5)));
    EXPECT_TRUE(deep.getProperty(3).getValue() == CIMValue(Uint16(5)));

    // identical() compares paths, qualifiers and properties in order.
    CIMInstance x = makePort();
    CIMInstance y = makePort();
    y.setPath(CIMObjectPath("QEL_FCPort.DeviceID=\"X\""));
    EXPECT_FALSE(x.identical(y));
    x.setPath(CIMObjectPath("qel_fcport.DeviceID=\"X\""));
    EXPECT_TRUE(x.identical(y));
    x.addQualifier(CIMQualifier("Q", CIMValue(true)));
    EXPECT_FALSE(x.identical(y));
    CIMInstance reordered("QEL_FCPort");
    for (Uint32 i : {1u, 0u, 2u})
        reordered.addProperty(makePort().getProperty(i).clone());
    EXPECT_FALSE(reordered.identical(makePort()));
}

TEST(InstanceProperties, FindRemoveDuplicatesAndPath)
{
    CIMInstance inst = makePort();
    EXPECT_EQ(
        thrownMessage<AlreadyExistsException>(
            [&] { inst.addProperty(CIMProperty("deviceid", CIMValue(String()))); }),
        "already exists: property \"deviceid\"");
    EXPECT_THROW(inst.addProperty(CIMProperty()), UninitializedObjectException);
    EXPECT_EQ(inst.getPropertyCount(), 3u);
    EXPECT_EQ(inst.findProperty("elementNAME"), 2u);
    EXPECT_EQ(inst.findProperty("Spee"), PEG_NOT_FOUND);
    EXPECT_EQ(inst.findProperty("Speed2"), PEG_NOT_FOUND);
    EXPECT_THROW(inst.getProperty(3), IndexOutOfBoundsException);
    EXPECT_THROW(inst.removeProperty(3), IndexOutOfBoundsException);
    inst.removeProperty(0);
    EXPECT_EQ(inst.findProperty("Speed"), 0u);
    EXPECT_EQ(inst.findProperty("DeviceID"), PEG_NOT_FOUND);

    // setPath checks the class; a refused path changes nothing.
    EXPECT_EQ(str(inst.getPath().toString()), "QEL_FCPort");
    CIMObjectPath full("//array1/root/qel:qel_fcport.DeviceID=\"0123\"");
    inst.setPath(full);
    EXPECT_EQ(
        thrownMessage<TypeMismatchException>([&]
                                             { inst.setPath(CIMObjectPath("QEL_SFP.Tag=\"x\"")); }),
        "type mismatch");
    EXPECT_THROW(inst.setPath(CIMObjectPath()), UninitializedObjectException);
    EXPECT_TRUE(inst.getPath() == full);
}

TEST(InstanceFilter, QualifiersPropertiesAndClassOrigin)
{
    auto build = []
    {
        CIMInstance inst("QEL_FCPort");
        inst.addQualifier(CIMQualifier("Description", CIMValue(String("d"))));
        CIMProperty id("DeviceID", CIMValue(String("A")), 0, CIMName(), "CIM_LogicalDevice");
        id.addQualifier(CIMQualifier("Key", CIMValue(true)));
        inst.addProperty(id);
        inst.addProperty(
            CIMProperty("Speed", CIMValue(Uint16(1)), 0, CIMName(), "CIM_NetworkPort"));
        return inst;
    };
    CIMInstance all = build();
    all.instanceFilter(true, true, CIMPropertyList());
    EXPECT_TRUE(all.identical(build()));
    CIMInstance bare = build();
    bare.instanceFilter(false, false, CIMPropertyList());
    EXPECT_EQ(bare.getQualifierCount(), 0u);
    EXPECT_EQ(bare.getProperty(0).getQualifierCount(), 0u);
    EXPECT_TRUE(bare.getProperty(0).getClassOrigin().isNull());
    EXPECT_TRUE(bare.getProperty(1).getClassOrigin().isNull());
    Array<CIMName> names(1, CIMName("speed"));
    names.append("NoSuchProperty");
    CIMInstance some = build();
    some.instanceFilter(true, true, CIMPropertyList(names));
    ASSERT_EQ(some.getPropertyCount(), 1u);
    EXPECT_EQ(str(some.getProperty(0).getName().getString()), "Speed");
    CIMInstance none = build();
    none.instanceFilter(true, true, CIMPropertyList(Array<CIMName>()));
    EXPECT_EQ(none.getPropertyCount(), 0u);
}

TEST(ObjectConversions, InstanceAndClassRoundTrips)
{
    CIMInstance inst = makePort();
    CIMObject obj = inst;  // shares, and so does the instance made back from it
    CIMInstance(obj).removeProperty(2);
    EXPECT_EQ(inst.getPropertyCount(), 2u);
    EXPECT_TRUE(obj.isInstance() && !obj.isClass() && !CIMObject().isInstance());

    CIMClass cls("QEL_FCPort");
    CIMObject clsObj = cls;
    EXPECT_THROW(CIMInstance{clsObj}, DynamicCastFailedException);
    EXPECT_THROW(CIMClass{obj}, DynamicCastFailedException);
    EXPECT_THROW(CIMInstance{CIMObject()}, DynamicCastFailedException);
    EXPECT_THROW(CIMConstInstance{CIMConstObject(cls)}, DynamicCastFailedException);
    EXPECT_NO_THROW(CIMConstClass{CIMConstObject(cls)});
    // An instance is never identical to a class of the same name.
    EXPECT_FALSE(CIMObject(CIMInstance("QEL_FCPort")).identical(clsObj));

    // clone() of an object keeps its kind and is independent.
    CIMObject copy = obj.clone();
    copy.removeProperty(0);
    EXPECT_EQ(CIMInstance(copy).getPropertyCount(), 1u);
    EXPECT_EQ(obj.getPropertyCount(), 2u);
}

}  // namespace
