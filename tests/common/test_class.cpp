// CIMClass: keys, buildInstance, buildPath, methods and parameters.
#include <vector>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/InternalException.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using namespace qeltest;

namespace
{

typedef std::vector<std::string> Names;

CIMProperty keyProperty(const char* name, const CIMValue& value)
{
    CIMProperty p(name, value, 0, CIMName(), "CIM_LogicalDevice");
    p.addQualifier(CIMQualifier("Key", CIMValue(true), CIMFlavor::TOSUBCLASS));
    return p;
}

// A port class whose keys are declared out of alphabetical order, with one
// property carrying a default and one a false Key qualifier.
CIMClass makePortClass()
{
    CIMClass cls("QEL_FCPort", "CIM_FCPort");
    cls.addQualifier(CIMQualifier("Description", CIMValue(String("FC port"))));
    for (const char* key : {"SystemName", "DeviceID", "CreationClassName"})
        cls.addProperty(keyProperty(key, CIMValue(CIMTYPE_STRING, false)));
    CIMProperty speed("Speed", CIMValue(Uint64(0)), 0, CIMName(), "CIM_NetworkPort", true);
    speed.addQualifier(CIMQualifier("Units", CIMValue(String("Bits per Second"))));
    cls.addProperty(speed);
    cls.addProperty(CIMProperty("PortType", CIMValue(CIMTYPE_UINT16, false)));
    CIMProperty notKey("ElementName", CIMValue(String("port")));
    notKey.addQualifier(CIMQualifier("Key", CIMValue(false)));
    cls.addProperty(notKey);
    return cls;
}

template <class T>
Names propertyNames(const T& object)
{
    Names names;
    for (Uint32 i = 0; i < object.getPropertyCount(); i++)
        names.push_back(str(object.getProperty(i).getName().getString()));
    return names;
}

CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> a;
    for (const char* n : names)
        a.append(n);
    return CIMPropertyList(a);
}

TEST(ClassDefinition, KeysPropertiesAndQualifiers)
{
    CIMClass cls = makePortClass();
    Array<CIMName> keys(1, CIMName("stale"));  // replaced, not appended to
    cls.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(
        str(keys[0].getString()) + str(keys[1].getString()) + str(keys[2].getString()),
        "SystemNameDeviceIDCreationClassName");  // class order
    EXPECT_FALSE(CIMClass("QEL_Keyless").hasKeys());
    EXPECT_EQ(
        thrownMessage<AlreadyExistsException>(
            [&] { cls.addProperty(CIMProperty("SPEED", CIMValue(Uint64(1)))); }),
        "already exists: property \"SPEED\"");
    // A reference needs its class named in a class definition.
    EXPECT_THROW(
        cls.addProperty(CIMProperty("Antecedent", CIMValue(CIMObjectPath("QEL_SFP")))),
        TypeMismatchException);
    EXPECT_NO_THROW(cls.addProperty(
        CIMProperty("Antecedent", CIMValue(CIMObjectPath("QEL_SFP")), 0, "QEL_SFP")));
    CIMConstClass view = cls;  // shares
    cls.removeProperty(0);
    EXPECT_EQ(propertyNames(view).front(), "DeviceID");
    EXPECT_THROW(CIMClass{CIMName()}, UninitializedObjectException);
    EXPECT_THROW(
        CIMClass().buildInstance(true, true, CIMPropertyList()), UninitializedObjectException);

    // Association and Abstract count only when the qualifier is boolean true.
    struct
    {
        CIMValue value;
        bool expected;
    } cases[] = {
        {CIMValue(true), true},
        {CIMValue(false), false},
        {CIMValue(CIMTYPE_BOOLEAN, false), false},
        {CIMValue(String("true")), false}};
    for (const auto& c : cases)
    {
        CIMClass assoc("QEL_FCPortSFP");
        assoc.addQualifier(CIMQualifier("association", c.value));
        assoc.addQualifier(CIMQualifier("ABSTRACT", c.value));
        EXPECT_EQ(assoc.isAssociation(), c.expected);
        EXPECT_EQ(assoc.isAbstract(), c.expected);
    }
}

TEST(ClassBuildInstance, PropertySelectionAndIndependence)
{
    struct Case
    {
        const char* what;
        bool iq;
        bool ico;
        CIMPropertyList list;
        Names expected;
    };
    const std::vector<Case> cases = {
        {"null list: all",
         true,
         true,
         CIMPropertyList(),
         {"SystemName", "DeviceID", "CreationClassName", "Speed", "PortType", "ElementName"}},
        {"empty list: none", true, true, listOf({}), {}},
        {"class order, any case",
         false,
         false,
         listOf({"speed", "DEVICEID", "NoSuch"}),
         {"DeviceID", "Speed"}},
    };
    CIMClass cls = makePortClass();
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMInstance inst = cls.buildInstance(c.iq, c.ico, c.list);
        EXPECT_EQ(propertyNames(inst), c.expected);
        EXPECT_EQ(str(inst.getPath().toString()), "QEL_FCPort");
    }

    // The instance is independent of the class.
    const CIMClass before = cls.clone();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    inst.getProperty(inst.findProperty("Speed")).setValue(CIMValue(Uint64(7)));
    inst.getQualifier(0).setValue(CIMValue(String("changed")));
    inst.getProperty(inst.findProperty("Speed")).getQualifier(0).setValue(CIMValue(String("bps")));
    EXPECT_TRUE(cls.identical(before));

    // Typed nulls from the class keep their type.
    CIMProperty portType = inst.getProperty(inst.findProperty("PortType"));
    EXPECT_THROW(portType.setValue(CIMValue(Uint32(1))), TypeMismatchException);
    EXPECT_NO_THROW(portType.setValue(CIMValue(Uint16(1))));
}

TEST(ClassBuildInstance, QualifiersOriginsAndDefaults)
{
    CIMClass cls = makePortClass();
    for (bool iq : {false, true})
    {
        for (bool ico : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "iq=" << iq << " ico=" << ico);
            CIMInstance inst = cls.buildInstance(iq, ico, CIMPropertyList());
            EXPECT_EQ(inst.getQualifierCount(), iq ? 1u : 0u);
            CIMConstProperty speed = inst.getProperty(inst.findProperty("Speed"));
            EXPECT_EQ(speed.getQualifierCount(), iq ? 1u : 0u);
            EXPECT_EQ(str(speed.getClassOrigin().getString()), ico ? "CIM_NetworkPort" : "");
            EXPECT_TRUE(speed.getPropagated());
            EXPECT_TRUE(speed.getValue() == CIMValue(Uint64(0)));
            EXPECT_TRUE(inst.getProperty(inst.findProperty("PortType")).getValue().isNull());
        }
    }
}

TEST(ClassBuildPath, KeysSortedWithoutHostOrNamespace)
{
    CIMClass cls = makePortClass();
    CIMInstance inst = cls.buildInstance(false, false, CIMPropertyList());
    inst.getProperty(0).setValue(CIMValue(String("array\"1")));
    inst.getProperty(1).setValue(CIMValue(String("0123456789ABCDEF")));
    inst.getProperty(2).setValue(CIMValue(String("QEL_FCPort")));
    CIMObjectPath path = inst.buildPath(cls);
    EXPECT_EQ(
        str(path.toString()), "QEL_FCPort.CreationClassName=\"QEL_FCPort\","
                              "DeviceID=\"0123456789ABCDEF\",SystemName=\"array\\\"1\"");
    EXPECT_TRUE(path.getNameSpace().isNull());
    // Without keys in the class the path names the class only.
    EXPECT_EQ(str(inst.buildPath(CIMClass("QEL_FCPort")).toString()), "QEL_FCPort");
    CIMInstance partial = cls.buildInstance(false, false, listOf({"DeviceID"}));
    EXPECT_THROW(partial.buildPath(cls), NoSuchProperty);

    // Numeric and boolean keys get their binding types.
    CIMClass numeric("QEL_Numbered");
    numeric.addProperty(keyProperty("Index", CIMValue(Uint16(0))));
    numeric.addProperty(keyProperty("Primary", CIMValue(false)));
    CIMInstance n = numeric.buildInstance(false, false, CIMPropertyList());
    n.getProperty(0).setValue(CIMValue(Uint16(5)));
    EXPECT_EQ(str(n.buildPath(numeric).toString()), "QEL_Numbered.Index=5,Primary=FALSE");
}

TEST(ClassMethods, ParametersAndDuplicates)
{
    CIMMethod reset("Reset", CIMTYPE_UINT32);
    reset.addParameter(CIMParameter("Force", CIMTYPE_BOOLEAN))
        .addParameter(CIMParameter("Ports", CIMTYPE_STRING, true, 4));
    EXPECT_EQ(
        thrownMessage<AlreadyExistsException>(
            [&] { reset.addParameter(CIMParameter("force", CIMTYPE_UINT8)); }),
        "already exists: parameter \"force\"");
    EXPECT_EQ(reset.findParameter("PORTS"), 1u);
    CIMClass cls = makePortClass();
    cls.addMethod(reset);
    EXPECT_EQ(
        thrownMessage<AlreadyExistsException>(
            [&] { cls.addMethod(CIMMethod("RESET", CIMTYPE_SINT32)); }),
        "already exists: method \"RESET\"");
    EXPECT_EQ(cls.findMethod("reset"), 0u);
    CIMClass copy = cls.clone();
    EXPECT_TRUE(copy.identical(cls));
    copy.getMethod(0).setPropagated(true);
    EXPECT_FALSE(copy.identical(cls)) << "method propagation is compared";
    EXPECT_FALSE(cls.getMethod(0).getPropagated());
    EXPECT_THROW(reset.setName("Other"), Exception) << "method is in a class";

    struct
    {
        const char* what;
        CIMType type;
        bool isArray;
        Uint32 size;
        const char* ref;
        bool ok;
    } params[] = {
        {"sized array", CIMTYPE_UINT16, true, 3, nullptr, true},
        {"size on scalar", CIMTYPE_UINT16, false, 3, nullptr, false},
        {"reference without class", CIMTYPE_REFERENCE, false, 0, nullptr, false},
        {"class on non-reference", CIMTYPE_STRING, false, 0, "QEL_FCPort", false},
    };
    for (const auto& c : params)
    {
        SCOPED_TRACE(c.what);
        auto make = [&]
        { CIMParameter("P", c.type, c.isArray, c.size, c.ref ? CIMName(c.ref) : CIMName()); };
        if (c.ok)
            EXPECT_NO_THROW(make());
        else
            EXPECT_THROW(make(), TypeMismatchException);
    }
}

}  // namespace
