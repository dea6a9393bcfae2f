// CIMProperty, CIMQualifier, CIMQualifierDecl, CIMFlavor and CIMScope:
// construction rules, value type rules, shared-handle semantics.
#include <functional>
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMInstance.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using qeltest::str;
using qeltest::thrownMessage;

namespace
{

struct CtorCase
{
    const char* what;
    std::function<void()> build;
};

TEST(PropertyConstruction, RejectsInconsistentDeclarations)
{
    const CIMObjectPath ref("QEL_FCPort.DeviceID=\"A\"");
    const std::vector<CtorCase> cases = {
        {"fixed size on a scalar",
         [] { CIMProperty("P", CIMValue(Uint16(1)), 2); }},
        {"fixed size differs from the array",
         [] { CIMProperty("P", CIMValue(Array<Uint16>(3)), 2); }},
        {"array of references",
         [&] { CIMProperty("P", CIMValue(Array<CIMObjectPath>(1, ref))); }},
        {"reference class on a string",
         [] { CIMProperty("P", CIMValue(String("x")), 0, "QEL_FCPort"); }},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(thrownMessage<TypeMismatchException>(c.build), "type mismatch");
    }
    EXPECT_EQ(thrownMessage<UninitializedObjectException>(
                  [] { CIMProperty(CIMName(), CIMValue(Uint16(1))); }),
              "uninitialized object");
}

TEST(PropertyConstruction, AcceptsMatchingDeclarations)
{
    CIMProperty fixed("P", CIMValue(Array<Uint16>(2)), 2);
    EXPECT_EQ(fixed.getArraySize(), 2u);
    EXPECT_TRUE(fixed.isArray());

    CIMProperty ref("R", CIMValue(CIMObjectPath("QEL_SFP.Tag=\"t\"")), 0,
                    "QEL_SFP", "QEL_FCPortSFP", true);
    EXPECT_EQ(ref.getType(), CIMTYPE_REFERENCE);
    EXPECT_EQ(str(ref.getReferenceClassName().getString()), "QEL_SFP");
    EXPECT_EQ(str(ref.getClassOrigin().getString()), "QEL_FCPortSFP");
    EXPECT_TRUE(ref.getPropagated());
}

struct SetValueCase
{
    const char* what;
    CIMValue initial;
    Uint32 arraySize;
    CIMValue next;
    bool accepted;
};

TEST(PropertySetValue, KeepsTypeAndArrayness)
{
    const std::vector<SetValueCase> cases = {
        {"same type", CIMValue(Uint16(1)), 0, CIMValue(Uint16(7)), true},
        {"typed null accepts its type", CIMValue(CIMTYPE_UINT16, false), 0,
         CIMValue(Uint16(7)), true},
        {"typed null rejects a wider type", CIMValue(CIMTYPE_UINT16, false), 0,
         CIMValue(Uint32(7)), false},
        {"null of the same type", CIMValue(Uint16(1)), 0,
         CIMValue(CIMTYPE_UINT16, false), true},
        {"string into uint16", CIMValue(Uint16(1)), 0, CIMValue(String("1")),
         false},
        {"array into scalar", CIMValue(Uint16(1)), 0,
         CIMValue(Array<Uint16>(1)), false},
        {"scalar into array", CIMValue(Array<Uint16>(1)), 0,
         CIMValue(Uint16(1)), false},
        {"fixed size kept", CIMValue(Array<Uint16>(2)), 2,
         CIMValue(Array<Uint16>(2, 9)), true},
        {"fixed size violated", CIMValue(Array<Uint16>(2)), 2,
         CIMValue(Array<Uint16>(3)), false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMProperty p("P", c.initial, c.arraySize);
        if (c.accepted)
        {
            EXPECT_NO_THROW(p.setValue(c.next));
            EXPECT_TRUE(p.getValue() == c.next);
        }
        else
        {
            EXPECT_THROW(p.setValue(c.next), TypeMismatchException);
            EXPECT_TRUE(p.getValue() == c.initial) << "value must be kept";
        }
    }
}

TEST(PropertyHandle, CopiesShareAndClonesDoNot)
{
    CIMProperty p("Speed", CIMValue(Uint16(1)));
    CIMProperty copy = p;
    CIMProperty deep = p.clone();
    copy.setValue(CIMValue(Uint16(2)));
    EXPECT_TRUE(p.getValue() == CIMValue(Uint16(2)));
    EXPECT_TRUE(deep.getValue() == CIMValue(Uint16(1)));
    EXPECT_FALSE(p.identical(deep));
    deep.setValue(CIMValue(Uint16(2)));
    EXPECT_TRUE(p.identical(deep));

    // The clone has its own qualifiers, too.
    p.addQualifier(CIMQualifier("Key", CIMValue(true)));
    EXPECT_EQ(deep.getQualifierCount(), 0u);
}

TEST(PropertyHandle, UninitializedThrows)
{
    CIMProperty p;
    CIMConstProperty cp;
    EXPECT_TRUE(p.isUninitialized());
    EXPECT_TRUE(cp.isUninitialized());
    EXPECT_THROW(p.getName(), UninitializedObjectException);
    EXPECT_THROW(p.setValue(CIMValue(Uint16(1))), UninitializedObjectException);
    EXPECT_THROW(p.clone(), UninitializedObjectException);
    EXPECT_THROW(cp.getValue(), UninitializedObjectException);
    CIMProperty ok("P", CIMValue(Uint16(1)));
    EXPECT_THROW(ok.identical(cp), UninitializedObjectException);
}

TEST(PropertyHandle, RenameForbiddenWhileInAContainer)
{
    CIMProperty p("Speed", CIMValue(Uint16(1)));
    CIMInstance inst("QEL_FCPort");
    inst.addProperty(p);
    // Same name in another case is no rename.
    EXPECT_NO_THROW(p.setName("SPEED"));
    EXPECT_EQ(thrownMessage<Exception>([&] { p.setName("Other"); }),
              "Attempted to change the name of a property already in a "
              "container.");
    inst.removeProperty(0);
    EXPECT_NO_THROW(p.setName("Other"));
    EXPECT_EQ(str(p.getName().getString()), "Other");
}

TEST(PropertyQualifiers, DuplicatesAndBounds)
{
    CIMProperty p("DeviceID", CIMValue(String("X")));
    p.addQualifier(CIMQualifier("Key", CIMValue(true)))
        .addQualifier(CIMQualifier("MaxLen", CIMValue(Uint32(16))));
    EXPECT_EQ(p.getQualifierCount(), 2u);
    EXPECT_EQ(p.findQualifier("KEY"), 0u);
    EXPECT_EQ(p.findQualifier("maxlen"), 1u);
    EXPECT_EQ(p.findQualifier("Description"), PEG_NOT_FOUND);
    EXPECT_EQ(thrownMessage<AlreadyExistsException>([&] {
                  p.addQualifier(CIMQualifier("key", CIMValue(false)));
              }),
              "already exists: qualifier \"key\"");
    EXPECT_THROW(p.getQualifier(2), IndexOutOfBoundsException);
    EXPECT_THROW(p.removeQualifier(2), IndexOutOfBoundsException);
    p.removeQualifier(0);
    EXPECT_EQ(str(p.getQualifier(0).getName().getString()), "MaxLen");
}

TEST(Qualifier, HandleSemanticsAndIdentity)
{
    EXPECT_THROW(CIMQualifier(CIMName(), CIMValue(true)),
                 UninitializedObjectException);
    CIMQualifier q("Key", CIMValue(true), CIMFlavor::TOSUBCLASS);
    CIMQualifier shared = q;
    shared.setValue(CIMValue(false));
    EXPECT_TRUE(q.getValue() == CIMValue(false));

    CIMQualifier other = q.clone();
    EXPECT_TRUE(q.identical(other));
    other.unsetFlavor(CIMFlavor::TOSUBCLASS);
    EXPECT_FALSE(q.identical(other));
    other.setFlavor(CIMFlavor::TOSUBCLASS);  // replaces the flavor
    EXPECT_TRUE(q.identical(other));
    other.setPropagated(true);
    EXPECT_FALSE(q.identical(other));
    EXPECT_EQ(other.getPropagated(), 1u);
}

TEST(QualifierDecl, FlavorIsCompleted)
{
    struct Case
    {
        CIMFlavor given;
        const char* expected;
    } cases[] = {
        {CIMFlavor::NONE, "OVERRIDABLE TOSUBCLASS"},
        {CIMFlavor::DEFAULTS, "OVERRIDABLE TOSUBCLASS"},
        {CIMFlavor::RESTRICTED, "OVERRIDABLE RESTRICTED"},
        {CIMFlavor::DISABLEOVERRIDE, "TOSUBCLASS DISABLEOVERRIDE"},
        {CIMFlavor::RESTRICTED + CIMFlavor::TOSUBCLASS +
             CIMFlavor::DISABLEOVERRIDE + CIMFlavor::TRANSLATABLE,
         "TRANSLATABLE DISABLEOVERRIDE RESTRICTED"},
    };
    for (const auto& c : cases)
    {
        CIMQualifierDecl d("Key", CIMValue(false), CIMScope::PROPERTY, c.given);
        EXPECT_EQ(str(d.getFlavor().toString()), c.expected);
    }
}

TEST(QualifierDecl, AccessorsAndClone)
{
    EXPECT_THROW(CIMQualifierDecl(CIMName(), CIMValue(false), CIMScope::ANY),
                 UninitializedObjectException);
    CIMQualifierDecl d("ValueMap", CIMValue(Array<String>()),
                       CIMScope::PROPERTY + CIMScope::METHOD,
                       CIMFlavor::DEFAULTS, 4);
    EXPECT_TRUE(d.isArray());
    EXPECT_EQ(d.getType(), CIMTYPE_STRING);
    EXPECT_EQ(d.getArraySize(), 4u);
    EXPECT_EQ(str(d.getScope().toString()), "PROPERTY METHOD");
    CIMQualifierDecl c = d.clone();
    EXPECT_TRUE(c.identical(d));
    c.setName("Values");
    EXPECT_FALSE(c.identical(d));
    EXPECT_EQ(str(d.getName().getString()), "ValueMap");
    EXPECT_THROW(CIMQualifierDecl().getScope(), UninitializedObjectException);
}

TEST(FlavorAndScope, BitSetOperations)
{
    CIMFlavor f;
    EXPECT_EQ(str(f.toString()), "");
    f.addFlavor(CIMFlavor::DEFAULTS);
    EXPECT_TRUE(f.hasFlavor(CIMFlavor::OVERRIDABLE));
    EXPECT_TRUE(f.hasFlavor(CIMFlavor::ENABLEOVERRIDE));  // same bit
    EXPECT_TRUE(f.hasFlavor(CIMFlavor::TOSUBELEMENTS));
    EXPECT_FALSE(f.hasFlavor(CIMFlavor::DEFAULTS + CIMFlavor::RESTRICTED));
    f.removeFlavor(CIMFlavor::OVERRIDABLE);
    EXPECT_TRUE(f.equal(CIMFlavor::TOSUBCLASS));

    CIMScope s = CIMScope::CLASS + CIMScope::ASSOCIATION;
    EXPECT_TRUE(s.hasScope(CIMScope::CLASS));
    EXPECT_FALSE(s.hasScope(CIMScope::PROPERTY));
    s.addScope(CIMScope::PARAMETER);
    EXPECT_EQ(str(s.toString()), "CLASS ASSOCIATION PARAMETER");
    EXPECT_EQ(str(CIMScope::ANY.toString()),
              "CLASS ASSOCIATION INDICATION PROPERTY REFERENCE METHOD "
              "PARAMETER");
    EXPECT_TRUE(CIMScope::NONE.equal(CIMScope()));
}

}  // namespace
