// CIMProperty, CIMQualifier, CIMQualifierDecl, CIMFlavor and CIMScope:
// construction rules, value type rules, shared-handle semantics.
#include <functional>
#include <vector>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMInstance.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using namespace qeltest;

namespace
{

TEST(PropertyConstruction, RejectsInconsistentDeclarations)
{
    const CIMObjectPath ref("QEL_FCPort.DeviceID=\"A\"");
    const std::vector<std::pair<const char*, std::function<void()>>> cases = {
        {"fixed size on a scalar", [] { CIMProperty("P", CIMValue(Uint16(1)), 2); }},
        {"fixed size differs from the array",
         [] { CIMProperty("P", CIMValue(Array<Uint16>(3)), 2); }},
        {"array of references", [&] { CIMProperty("P", CIMValue(Array<CIMObjectPath>(1, ref))); }},
        {"reference class on a string",
         [] { CIMProperty("P", CIMValue(String("x")), 0, "QEL_FCPort"); }},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(thrownMessage<TypeMismatchException>(c.second), "type mismatch");
    }
    EXPECT_THROW(CIMProperty(CIMName(), CIMValue(Uint16(1))), UninitializedObjectException);
    CIMProperty r(
        "R", CIMValue(CIMObjectPath("QEL_SFP.Tag=\"t\"")), 0, "QEL_SFP", "QEL_FCPortSFP", true);
    EXPECT_EQ(str(r.getReferenceClassName().getString()), "QEL_SFP");
    EXPECT_EQ(str(r.getClassOrigin().getString()), "QEL_FCPortSFP");
    EXPECT_TRUE(r.getPropagated());
}

TEST(PropertySetValue, KeepsTypeAndArrayness)
{
    struct Case
    {
        const char* what;
        CIMValue initial;
        Uint32 arraySize;
        CIMValue next;
        bool accepted;
    };
    const std::vector<Case> cases = {
        {"same type", CIMValue(Uint16(1)), 0, CIMValue(Uint16(7)), true},
        {"typed null accepts its type", CIMValue(CIMTYPE_UINT16, false), 0, CIMValue(Uint16(7)),
         true},
        {"typed null rejects a wider type", CIMValue(CIMTYPE_UINT16, false), 0, CIMValue(Uint32(7)),
         false},
        {"null of the same type", CIMValue(Uint16(1)), 0, CIMValue(CIMTYPE_UINT16, false), true},
        {"string into uint16", CIMValue(Uint16(1)), 0, CIMValue(String("1")), false},
        {"array into scalar", CIMValue(Uint16(1)), 0, CIMValue(Array<Uint16>(1)), false},
        {"scalar into array", CIMValue(Array<Uint16>(1)), 0, CIMValue(Uint16(1)), false},
        {"fixed size kept", CIMValue(Array<Uint16>(2)), 2, CIMValue(Array<Uint16>(2, 9)), true},
        {"fixed size violated", CIMValue(Array<Uint16>(2)), 2, CIMValue(Array<Uint16>(3)), false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMProperty p("P", c.initial, c.arraySize);
        if (c.accepted)
            EXPECT_NO_THROW(p.setValue(c.next));
        else
            EXPECT_THROW(p.setValue(c.next), TypeMismatchException);
        EXPECT_TRUE(p.getValue() == (c.accepted ? c.next : c.initial));
    }
}

TEST(PropertyHandle, SharingAndRenames)
{
    CIMProperty p("Speed", CIMValue(Uint16(1)));
    CIMProperty copy = p;
    CIMProperty deep = p.clone();
    copy.setValue(CIMValue(Uint16(2)));
    EXPECT_TRUE(p.getValue() == CIMValue(Uint16(2)));
    EXPECT_FALSE(p.identical(deep));
    deep.setValue(CIMValue(Uint16(2)));
    EXPECT_TRUE(p.identical(deep));
    p.addQualifier(CIMQualifier("Key", CIMValue(true)));
    EXPECT_EQ(deep.getQualifierCount(), 0u);  // the clone has its own qualifiers
    CIMProperty none;
    EXPECT_THROW(none.getName(), UninitializedObjectException);
    EXPECT_THROW(none.setValue(CIMValue(Uint16(1))), UninitializedObjectException);
    EXPECT_THROW(CIMConstProperty().getValue(), UninitializedObjectException);
    EXPECT_THROW(p.identical(CIMConstProperty()), UninitializedObjectException);

    // No rename while in a container; the same name in another case is no rename.
    CIMInstance inst("QEL_FCPort");
    inst.addProperty(copy);
    EXPECT_NO_THROW(p.setName("SPEED"));
    EXPECT_EQ(
        thrownMessage<Exception>([&] { p.setName("Other"); }),
        "Attempted to change the name of a property already in a container.");
    inst.removeProperty(0);
    p.setName("Other");
    EXPECT_EQ(str(p.getName().getString()), "Other");
}

TEST(Qualifier, HandlesDuplicatesIdentityAndDeclarations)
{
    EXPECT_THROW(CIMQualifier(CIMName(), CIMValue(true)), UninitializedObjectException);
    CIMQualifier q("Key", CIMValue(true), CIMFlavor::TOSUBCLASS);
    CIMQualifier shared = q;
    shared.setValue(CIMValue(false));
    EXPECT_TRUE(q.getValue() == CIMValue(false));
    CIMQualifier other = q.clone();
    other.unsetFlavor(CIMFlavor::TOSUBCLASS);
    EXPECT_FALSE(q.identical(other));
    other.setFlavor(CIMFlavor::TOSUBCLASS);  // replaces the flavor
    EXPECT_TRUE(q.identical(other));
    other.setPropagated(true);  // propagation is compared
    EXPECT_FALSE(q.identical(other));

    // A property's qualifiers: found in any case, never twice, bounds checked.
    CIMProperty p("DeviceID", CIMValue(String("X")));
    p.addQualifier(CIMQualifier("Key", CIMValue(true)))
        .addQualifier(CIMQualifier("MaxLen", CIMValue(Uint32(16))));
    EXPECT_EQ(p.findQualifier("maxlen"), 1u);
    EXPECT_EQ(
        thrownMessage<AlreadyExistsException>(
            [&] { p.addQualifier(CIMQualifier("key", CIMValue(false))); }),
        "already exists: qualifier \"key\"");
    EXPECT_THROW(p.getQualifier(2), IndexOutOfBoundsException);
    EXPECT_THROW(p.removeQualifier(2), IndexOutOfBoundsException);
    p.removeQualifier(0);
    EXPECT_EQ(str(p.getQualifier(0).getName().getString()), "MaxLen");

    // A declaration completes its flavor with the defaults.
    struct Case
    {
        CIMFlavor given;
        const char* expected;
    } cases[] = {
        {CIMFlavor::NONE, "OVERRIDABLE TOSUBCLASS"},
        {CIMFlavor::RESTRICTED, "OVERRIDABLE RESTRICTED"},
        {CIMFlavor::DISABLEOVERRIDE, "TOSUBCLASS DISABLEOVERRIDE"},
        {CIMFlavor::RESTRICTED + CIMFlavor::TOSUBCLASS + CIMFlavor::DISABLEOVERRIDE +
             CIMFlavor::TRANSLATABLE,
         "TRANSLATABLE DISABLEOVERRIDE RESTRICTED"},
    };
    for (const auto& c : cases)
    {
        CIMQualifierDecl d("Key", CIMValue(false), CIMScope::PROPERTY, c.given);
        EXPECT_EQ(str(d.getFlavor().toString()), c.expected);
    }
    EXPECT_THROW(
        CIMQualifierDecl(CIMName(), CIMValue(false), CIMScope::ANY), UninitializedObjectException);
    CIMQualifierDecl d(
        "ValueMap", CIMValue(Array<String>()), CIMScope::PROPERTY + CIMScope::METHOD);
    EXPECT_EQ(str(d.getScope().toString()), "PROPERTY METHOD");
    EXPECT_EQ(
        str(CIMScope::ANY.toString()),
        "CLASS ASSOCIATION INDICATION PROPERTY REFERENCE METHOD PARAMETER");
}

}  // namespace
