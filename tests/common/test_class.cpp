// CIMClass: keys, buildInstance, buildPath, methods and parameters.
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/InternalException.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using qeltest::str;
using qeltest::thrownMessage;

namespace
{

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
    cls.addProperty(keyProperty("SystemName", CIMValue(CIMTYPE_STRING, false)));
    cls.addProperty(keyProperty("DeviceID", CIMValue(CIMTYPE_STRING, false)));
    cls.addProperty(keyProperty("CreationClassName",
                                CIMValue(CIMTYPE_STRING, false)));
    CIMProperty speed("Speed", CIMValue(Uint64(0)), 0, CIMName(),
                      "CIM_NetworkPort", true);
    speed.addQualifier(CIMQualifier("Units", CIMValue(String("Bits per Second"))));
    cls.addProperty(speed);
    cls.addProperty(CIMProperty("PortType", CIMValue(CIMTYPE_UINT16, false)));
    CIMProperty notKey("ElementName", CIMValue(String("port")));
    notKey.addQualifier(CIMQualifier("Key", CIMValue(false)));
    cls.addProperty(notKey);
    return cls;
}

std::vector<std::string> propertyNames(const CIMInstance& inst)
{
    std::vector<std::string> names;
    for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
        names.push_back(str(inst.getProperty(i).getName().getString()));
    return names;
}

TEST(ClassKeys, KeyQualifiedPropertiesInClassOrder)
{
    CIMClass cls = makePortClass();
    Array<CIMName> keys;
    keys.append("stale");  // replaced, not appended to
    cls.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(str(keys[0].getString()), "SystemName");
    EXPECT_EQ(str(keys[1].getString()), "DeviceID");
    EXPECT_EQ(str(keys[2].getString()), "CreationClassName");
    EXPECT_TRUE(cls.hasKeys());
    EXPECT_FALSE(CIMClass("QEL_Keyless").hasKeys());
}

TEST(ClassProperties, AddRules)
{
    CIMClass cls = makePortClass();
    EXPECT_EQ(thrownMessage<AlreadyExistsException>([&] {
                  cls.addProperty(CIMProperty("SPEED", CIMValue(Uint64(1))));
              }),
              "already exists: property \"SPEED\"");
    // A reference needs its class named in a class definition.
    EXPECT_THROW(
        cls.addProperty(CIMProperty("Antecedent",
                                    CIMValue(CIMObjectPath("QEL_SFP")))),
        TypeMismatchException);
    EXPECT_NO_THROW(cls.addProperty(CIMProperty(
        "Antecedent", CIMValue(CIMObjectPath("QEL_SFP")), 0, "QEL_SFP")));
    EXPECT_THROW(CIMClass{CIMName()}, UninitializedObjectException);
}

TEST(ClassQualifiers, AssociationAndAbstract)
{
    struct
    {
        CIMValue value;
        bool expected;
    } cases[] = {{CIMValue(true), true},
                 {CIMValue(false), false},
                 {CIMValue(CIMTYPE_BOOLEAN, false), false},
                 {CIMValue(String("true")), false}};
    for (const auto& c : cases)
    {
        CIMClass cls("QEL_FCPortSFP");
        cls.addQualifier(CIMQualifier("association", c.value));
        cls.addQualifier(CIMQualifier("ABSTRACT", c.value));
        EXPECT_EQ(cls.isAssociation(), c.expected);
        EXPECT_EQ(cls.isAbstract(), c.expected);
    }
    EXPECT_FALSE(CIMClass("X").isAssociation());
}

struct BuildCase
{
    const char* what;
    bool includeQualifiers;
    bool includeClassOrigin;
    CIMPropertyList list;
    std::vector<std::string> expected;
};

CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> a;
    for (const char* n : names)
        a.append(n);
    return CIMPropertyList(a);
}

TEST(ClassBuildInstance, PropertySelection)
{
    const std::vector<std::string> all = {"SystemName", "DeviceID",
                                          "CreationClassName", "Speed",
                                          "PortType", "ElementName"};
    const std::vector<BuildCase> cases = {
        {"null list: all", true, true, CIMPropertyList(), all},
        {"empty list: none", true, true, listOf({}), {}},
        {"class order, any case", false, false,
         listOf({"speed", "DEVICEID", "NoSuch"}), {"DeviceID", "Speed"}},
        {"unknown only", false, true, listOf({"NoSuch"}), {}},
    };
    CIMClass cls = makePortClass();
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMInstance inst = cls.buildInstance(
            c.includeQualifiers, c.includeClassOrigin, c.list);
        EXPECT_EQ(propertyNames(inst), c.expected);
        EXPECT_EQ(str(inst.getPath().toString()), "QEL_FCPort");
        EXPECT_EQ(str(inst.getClassName().getString()), "QEL_FCPort");
    }
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
            CIMConstProperty speed =
                inst.getProperty(inst.findProperty("Speed"));
            EXPECT_EQ(speed.getQualifierCount(), iq ? 1u : 0u);
            EXPECT_EQ(str(speed.getClassOrigin().getString()),
                      ico ? "CIM_NetworkPort" : "");
            EXPECT_TRUE(speed.getPropagated());
            EXPECT_TRUE(speed.getValue() == CIMValue(Uint64(0)));

            CIMConstProperty portType =
                inst.getProperty(inst.findProperty("PortType"));
            EXPECT_TRUE(portType.getValue().isNull());
            EXPECT_EQ(portType.getType(), CIMTYPE_UINT16);
        }
    }
}

TEST(ClassBuildInstance, InstanceIsIndependentOfTheClass)
{
    CIMClass cls = makePortClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    inst.getProperty(inst.findProperty("Speed")).setValue(CIMValue(Uint64(7)));
    inst.getQualifier(0).setValue(CIMValue(String("changed")));
    CIMConstProperty classSpeed = cls.getProperty(cls.findProperty("Speed"));
    EXPECT_TRUE(classSpeed.getValue() == CIMValue(Uint64(0)));
    EXPECT_TRUE(cls.getQualifier(0).getValue() == CIMValue(String("FC port")));

    // Typed nulls from the class keep their type.
    CIMProperty portType = inst.getProperty(inst.findProperty("PortType"));
    EXPECT_THROW(portType.setValue(CIMValue(Uint32(1))), TypeMismatchException);
    EXPECT_NO_THROW(portType.setValue(CIMValue(Uint16(1))));
}

TEST(ClassBuildPath, KeysSortedWithoutHostOrNamespace)
{
    CIMClass cls = makePortClass();
    CIMInstance inst = cls.buildInstance(false, false, CIMPropertyList());
    inst.getProperty(inst.findProperty("SystemName"))
        .setValue(CIMValue(String("array\"1")));
    inst.getProperty(inst.findProperty("DeviceID"))
        .setValue(CIMValue(String("0123456789ABCDEF")));
    inst.getProperty(inst.findProperty("CreationClassName"))
        .setValue(CIMValue(String("QEL_FCPort")));
    CIMObjectPath path = inst.buildPath(cls);
    EXPECT_EQ(str(path.toString()),
              "QEL_FCPort.CreationClassName=\"QEL_FCPort\","
              "DeviceID=\"0123456789ABCDEF\",SystemName=\"array\\\"1\"");
    EXPECT_EQ(str(path.getHost()), "");
    EXPECT_TRUE(path.getNameSpace().isNull());
    EXPECT_EQ(path.getKeyBindings()[1].getType(), CIMKeyBinding::STRING);

    // Without keys in the class the path names the class only.
    EXPECT_EQ(str(inst.buildPath(CIMClass("QEL_FCPort")).toString()),
              "QEL_FCPort");
}

TEST(ClassBuildPath, MissingKeyPropertyThrows)
{
    CIMClass cls = makePortClass();
    CIMInstance inst = cls.buildInstance(false, false, listOf({"DeviceID"}));
    EXPECT_THROW(inst.buildPath(cls), NoSuchProperty);

    // Numeric and boolean keys get their binding types.
    CIMClass numeric("QEL_Numbered");
    numeric.addProperty(keyProperty("Index", CIMValue(Uint16(0))));
    numeric.addProperty(keyProperty("Primary", CIMValue(false)));
    CIMInstance n = numeric.buildInstance(false, false, CIMPropertyList());
    n.getProperty(0).setValue(CIMValue(Uint16(5)));
    EXPECT_EQ(str(n.buildPath(numeric).toString()),
              "QEL_Numbered.Index=5,Primary=FALSE");
}

TEST(ClassMethods, ParametersAndDuplicates)
{
    CIMMethod reset("Reset", CIMTYPE_UINT32);
    reset.addParameter(CIMParameter("Force", CIMTYPE_BOOLEAN))
        .addParameter(CIMParameter("Ports", CIMTYPE_STRING, true, 4));
    EXPECT_EQ(thrownMessage<AlreadyExistsException>([&] {
                  reset.addParameter(CIMParameter("force", CIMTYPE_UINT8));
              }),
              "already exists: parameter \"force\"");
    EXPECT_EQ(reset.findParameter("PORTS"), 1u);
    EXPECT_EQ(reset.getParameter(1).getArraySize(), 4u);

    CIMClass cls = makePortClass();
    cls.addMethod(reset);
    EXPECT_EQ(thrownMessage<AlreadyExistsException>([&] {
                  cls.addMethod(CIMMethod("RESET", CIMTYPE_SINT32));
              }),
              "already exists: method \"RESET\"");
    EXPECT_EQ(cls.findMethod("reset"), 0u);
    EXPECT_THROW(cls.getMethod(1), IndexOutOfBoundsException);

    CIMClass copy = cls.clone();
    EXPECT_TRUE(copy.identical(cls));
    copy.getMethod(0).setPropagated(true);
    EXPECT_FALSE(copy.identical(cls)) << "method propagation is compared";
    EXPECT_FALSE(cls.getMethod(0).getPropagated());
    EXPECT_THROW(reset.setName("Other"), Exception) << "method is in a class";
}

TEST(ClassMethods, ParameterDeclarationRules)
{
    struct
    {
        const char* what;
        CIMType type;
        bool isArray;
        Uint32 size;
        const char* refClass;
        bool ok;
    } cases[] = {
        {"plain", CIMTYPE_UINT16, false, 0, nullptr, true},
        {"sized array", CIMTYPE_UINT16, true, 3, nullptr, true},
        {"size on scalar", CIMTYPE_UINT16, false, 3, nullptr, false},
        {"reference with class", CIMTYPE_REFERENCE, false, 0, "QEL_FCPort",
         true},
        {"reference without class", CIMTYPE_REFERENCE, false, 0, nullptr,
         false},
        {"class on non-reference", CIMTYPE_STRING, false, 0, "QEL_FCPort",
         false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMName ref = c.refClass ? CIMName(c.refClass) : CIMName();
        if (c.ok)
            EXPECT_NO_THROW(CIMParameter("P", c.type, c.isArray, c.size, ref));
        else
            EXPECT_THROW(CIMParameter("P", c.type, c.isArray, c.size, ref),
                         TypeMismatchException);
    }
}

TEST(ClassHandle, SharedAndUninitialized)
{
    CIMClass cls = makePortClass();
    CIMConstClass view = cls;
    cls.removeProperty(0);
    EXPECT_EQ(view.getPropertyCount(), 5u);
    cls.setSuperClassName("CIM_NetworkPort");
    EXPECT_EQ(str(view.getSuperClassName().getString()), "CIM_NetworkPort");

    CIMClass none;
    EXPECT_THROW(none.buildInstance(true, true, CIMPropertyList()),
                 UninitializedObjectException);
    Array<CIMName> keys;
    EXPECT_THROW(none.getKeyNames(keys), UninitializedObjectException);
    EXPECT_THROW(CIMConstClass().isAssociation(), UninitializedObjectException);
}

}  // namespace
