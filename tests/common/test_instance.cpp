// CIMInstance, CIMObject and their const twins: uninitialized handles,
// sharing, property list rules, paths, filtering and conversions.
#include <functional>
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObject.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using qeltest::str;
using qeltest::thrownMessage;

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
    const CIMInstance& cinst = inst;
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"getClassName", [&] { inst.getClassName(); }},
        {"getPath", [&] { inst.getPath(); }},
        {"setPath", [&] { inst.setPath(CIMObjectPath("QEL_FCPort")); }},
        {"addQualifier",
         [&] { inst.addQualifier(CIMQualifier("Q", CIMValue(true))); }},
        {"findQualifier", [&] { inst.findQualifier("Q"); }},
        {"getQualifierCount", [&] { inst.getQualifierCount(); }},
        {"addProperty",
         [&] { inst.addProperty(CIMProperty("P", CIMValue(true))); }},
        {"findProperty", [&] { inst.findProperty("P"); }},
        {"getProperty", [&] { inst.getProperty(0); }},
        {"getProperty const", [&] { cinst.getProperty(0); }},
        {"removeProperty", [&] { inst.removeProperty(0); }},
        {"getPropertyCount", [&] { inst.getPropertyCount(); }},
        {"buildPath", [&] { inst.buildPath(CIMClass("QEL_FCPort")); }},
        {"clone", [&] { inst.clone(); }},
        {"identical", [&] { makePort().identical(inst); }},
        {"instanceFilter",
         [&] { inst.instanceFilter(true, true, CIMPropertyList()); }},
        {"const twin", [&] { CIMConstInstance(inst).getPropertyCount(); }},
    };
    EXPECT_TRUE(inst.isUninitialized());
    for (const auto& c : calls)
    {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(thrownMessage<UninitializedObjectException>(c.second),
                  "uninitialized object");
    }
    // Copying and assigning an uninitialized handle is allowed.
    CIMInstance copy = inst;
    copy = inst;
    EXPECT_TRUE(copy.isUninitialized());
}

TEST(InstanceConstruction, NullClassNameThrows)
{
    EXPECT_THROW(CIMInstance{CIMName()}, UninitializedObjectException);
    CIMInstance inst("QEL_FCPort");
    EXPECT_EQ(str(inst.getPath().toString()), "QEL_FCPort");
    EXPECT_EQ(inst.getPropertyCount(), 0u);
}

TEST(InstanceHandle, CopiesShareClonesAreDeep)
{
    CIMInstance a = makePort();
    CIMInstance shared = a;
    CIMInstance deep = a.clone();
    EXPECT_TRUE(deep.identical(a));

    shared.getProperty(shared.findProperty("Speed"))
        .setValue(CIMValue(Uint64(1)));
    shared.addProperty(CIMProperty("Extra", CIMValue(true)));
    EXPECT_EQ(a.getPropertyCount(), 4u);
    EXPECT_TRUE(a.getProperty(1).getValue() == CIMValue(Uint64(1)));

    EXPECT_EQ(deep.getPropertyCount(), 3u);
    EXPECT_TRUE(deep.getProperty(1).getValue() ==
                CIMValue(Uint64(8000000000ULL)));
    EXPECT_FALSE(deep.identical(a));

    // A const twin sees the same state.
    CIMConstInstance view = a;
    EXPECT_EQ(view.getPropertyCount(), 4u);
}

TEST(InstanceProperties, AddStoresTheHandleItself)
{
    CIMInstance inst("QEL_FCPort");
    CIMProperty p("Speed", CIMValue(Uint16(1)));
    inst.addProperty(p);
    p.setValue(CIMValue(Uint16(5)));
    EXPECT_TRUE(inst.getProperty(0).getValue() == CIMValue(Uint16(5)));
}

TEST(InstanceProperties, DuplicateNamesIgnoringCase)
{
    CIMInstance inst = makePort();
    EXPECT_EQ(thrownMessage<AlreadyExistsException>([&] {
                  inst.addProperty(CIMProperty("deviceid", CIMValue(String())));
              }),
              "already exists: property \"deviceid\"");
    EXPECT_EQ(inst.getPropertyCount(), 3u);
    EXPECT_THROW(inst.addProperty(CIMProperty()), UninitializedObjectException);
}

TEST(InstanceProperties, FindGetRemove)
{
    CIMInstance inst = makePort();
    struct
    {
        const char* name;
        Uint32 pos;
    } finds[] = {{"DeviceID", 0}, {"DEVICEID", 0}, {"speed", 1},
                 {"elementname", 2}, {"SpeeD", 1}, {"Speed2", PEG_NOT_FOUND},
                 {"Spee", PEG_NOT_FOUND}, {"Sxeed", PEG_NOT_FOUND}};
    for (const auto& f : finds)
        EXPECT_EQ(inst.findProperty(f.name), f.pos) << f.name;

    EXPECT_THROW(inst.getProperty(3), IndexOutOfBoundsException);
    EXPECT_THROW(inst.removeProperty(3), IndexOutOfBoundsException);
    inst.removeProperty(0);
    EXPECT_EQ(inst.findProperty("Speed"), 0u);
    EXPECT_EQ(inst.findProperty("DeviceID"), PEG_NOT_FOUND);
    EXPECT_EQ(inst.getPropertyCount(), 2u);
}

TEST(InstancePath, SetPathChecksTheClass)
{
    CIMInstance inst = makePort();
    CIMObjectPath full("//array1/root/qel:qel_fcport.DeviceID=\"0123\"");
    inst.setPath(full);
    EXPECT_TRUE(inst.getPath() == full);
    EXPECT_EQ(str(inst.getPath().getHost()), "array1");

    EXPECT_EQ(thrownMessage<TypeMismatchException>([&] {
                  inst.setPath(CIMObjectPath("QEL_SFP.Tag=\"x\""));
              }),
              "type mismatch");
    EXPECT_THROW(inst.setPath(CIMObjectPath()), UninitializedObjectException);
    EXPECT_TRUE(inst.getPath() == full) << "a refused path changes nothing";
}

TEST(InstanceFilter, QualifiersPropertiesAndClassOrigin)
{
    auto build = [] {
        CIMInstance inst("QEL_FCPort");
        inst.addQualifier(CIMQualifier("Description", CIMValue(String("d"))));
        CIMProperty id("DeviceID", CIMValue(String("A")), 0, CIMName(),
                       "CIM_LogicalDevice");
        id.addQualifier(CIMQualifier("Key", CIMValue(true)));
        inst.addProperty(id);
        inst.addProperty(CIMProperty("Speed", CIMValue(Uint16(1)), 0,
                                     CIMName(), "CIM_NetworkPort"));
        return inst;
    };

    CIMInstance all = build();
    all.instanceFilter(true, true, CIMPropertyList());
    EXPECT_EQ(all.getQualifierCount(), 1u);
    EXPECT_EQ(all.getPropertyCount(), 2u);
    EXPECT_EQ(all.getProperty(0).getQualifierCount(), 1u);
    EXPECT_EQ(str(all.getProperty(1).getClassOrigin().getString()),
              "CIM_NetworkPort");

    CIMInstance bare = build();
    bare.instanceFilter(false, false, CIMPropertyList());
    EXPECT_EQ(bare.getQualifierCount(), 0u);
    EXPECT_EQ(bare.getProperty(0).getQualifierCount(), 0u);
    EXPECT_TRUE(bare.getProperty(0).getClassOrigin().isNull());
    EXPECT_TRUE(bare.getProperty(1).getClassOrigin().isNull());

    Array<CIMName> names;
    names.append("speed");
    names.append("NoSuchProperty");
    CIMInstance some = build();
    some.instanceFilter(true, true, CIMPropertyList(names));
    ASSERT_EQ(some.getPropertyCount(), 1u);
    EXPECT_EQ(str(some.getProperty(0).getName().getString()), "Speed");

    CIMInstance none = build();
    none.instanceFilter(true, true, CIMPropertyList(Array<CIMName>()));
    EXPECT_EQ(none.getPropertyCount(), 0u);
}

TEST(InstanceIdentity, ComparesPathQualifiersAndProperties)
{
    CIMInstance a = makePort();
    CIMInstance b = makePort();
    EXPECT_TRUE(a.identical(b));
    b.setPath(CIMObjectPath("QEL_FCPort.DeviceID=\"X\""));
    EXPECT_FALSE(a.identical(b));
    a.setPath(CIMObjectPath("qel_fcport.DeviceID=\"X\""));
    EXPECT_TRUE(a.identical(b));
    a.addQualifier(CIMQualifier("Q", CIMValue(true)));
    EXPECT_FALSE(a.identical(b));

    // Property order matters.
    CIMInstance c("QEL_FCPort");
    c.addProperty(CIMProperty("Speed", CIMValue(Uint64(8000000000ULL))));
    c.addProperty(CIMProperty("DeviceID", CIMValue(String("0123456789ABCDEF"))));
    c.addProperty(CIMProperty("ElementName", CIMValue(String("port 0"))));
    EXPECT_FALSE(c.identical(makePort()));
}

TEST(ObjectConversions, InstanceAndClassRoundTrips)
{
    CIMInstance inst = makePort();
    CIMObject obj = inst;  // shares
    EXPECT_TRUE(obj.isInstance());
    EXPECT_FALSE(obj.isClass());
    obj.addProperty(CIMProperty("Added", CIMValue(true)));
    EXPECT_EQ(inst.getPropertyCount(), 4u);

    CIMInstance back(obj);
    back.removeProperty(3);
    EXPECT_EQ(inst.getPropertyCount(), 3u);

    CIMClass cls("QEL_FCPort");
    CIMObject clsObj = cls;
    EXPECT_TRUE(clsObj.isClass());
    EXPECT_THROW(CIMInstance{clsObj}, DynamicCastFailedException);
    EXPECT_THROW(CIMClass{obj}, DynamicCastFailedException);
    EXPECT_THROW(CIMInstance{CIMObject()}, DynamicCastFailedException);
    EXPECT_THROW(CIMConstInstance{CIMConstObject(cls)},
                 DynamicCastFailedException);
    EXPECT_NO_THROW(CIMConstClass{CIMConstObject(cls)});

    // An instance is never identical to a class of the same name.
    EXPECT_FALSE(CIMObject(CIMInstance("QEL_FCPort")).identical(clsObj));

    CIMObject uninit;
    EXPECT_FALSE(uninit.isClass());
    EXPECT_FALSE(uninit.isInstance());
    EXPECT_THROW(uninit.clone(), UninitializedObjectException);

    // clone() of an object keeps its kind and is independent.
    CIMObject copy = obj.clone();
    EXPECT_TRUE(copy.isInstance());
    EXPECT_TRUE(copy.identical(obj));
    copy.removeProperty(0);
    EXPECT_EQ(obj.getPropertyCount(), 3u);
}

TEST(InstanceInValue, StoredAndReturnedAsClones)
{
    CIMInstance inst = makePort();
    CIMValue v(inst);
    inst.removeProperty(0);
    CIMInstance out;
    v.get(out);
    EXPECT_EQ(out.getPropertyCount(), 3u);
    EXPECT_THROW(CIMValue{CIMInstance()}, UninitializedObjectException);
}

}  // namespace
