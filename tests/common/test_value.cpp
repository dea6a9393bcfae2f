// CIMValue: the overload set, typed nulls, type checks of get(), equality
// and the display text.
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using namespace qeltest;

TEST(ValueAccess, TypesNullsAndTypeMismatch)
{
    EXPECT_TRUE(CIMValue().isNull());
    EXPECT_EQ(CIMValue().getType(), CIMTYPE_BOOLEAN);
    CIMValue arr(CIMTYPE_UINT16, true, 4);
    EXPECT_TRUE(arr.isNull());
    EXPECT_EQ(arr.getArraySize(), 4u);
    EXPECT_EQ(CIMValue(CIMTYPE_UINT16, false, 4).getArraySize(), 0u);
    Array<Uint16> out(2, 9);
    arr.get(out);  // null: left as it was
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(str(arr.toString()), "");
    CIMValue nulled(String("x"));
    nulled.setNullValue(CIMTYPE_STRING, false);
    String keep("keep");
    nulled.get(keep);
    EXPECT_EQ(keep, "keep");

    // get() checks type and shape; set() replaces both.
    CIMValue v(Uint32(7));
    Uint16 narrow = 0;
    Array<Uint32> many;
    Uint32 right = 0;
    EXPECT_EQ(thrownMessage<TypeMismatchException>([&] { v.get(narrow); }), "type mismatch");
    EXPECT_THROW(v.get(many), TypeMismatchException);
    v.get(right);
    EXPECT_EQ(right, 7u);
    Boolean b = false;
    EXPECT_THROW(
        CIMValue(CIMTYPE_STRING, false).get(b), TypeMismatchException);  // type checked first
    v.set(String("now a string"));  // set() replaces type and value
    String s;
    v.get(s);
    EXPECT_EQ(s, "now a string");

    // The overload set picks the original's types.
    CIMValue literal("abc");  // no const char* constructor: a pointer is a Boolean
    EXPECT_EQ(literal.getType(), CIMTYPE_BOOLEAN);
    EXPECT_EQ(str(literal.toString()), "TRUE");
    EXPECT_EQ(CIMValue(5).getType(), CIMTYPE_SINT32);
    EXPECT_EQ(CIMValue(Uint8(5)).getType(), CIMTYPE_UINT8);
    EXPECT_EQ(CIMValue(CIMObjectPath("X.k=1")).getType(), CIMTYPE_REFERENCE);
    EXPECT_EQ(CIMValue(Array<Char16>()).getType(), CIMTYPE_CHAR16);
    EXPECT_TRUE(CIMValue(Array<Char16>()).isArray());
}

TEST(ValueEquality, TypeNullnessAndContent)
{
    struct Case
    {
        CIMValue a;
        CIMValue b;
        bool same;
    } cases[] = {
        {CIMValue(Uint16(1)), CIMValue(Uint16(1)), true},
        {CIMValue(Uint16(1)), CIMValue(Uint32(1)), false},
        {CIMValue(String("a")), CIMValue(String("A")), false},
        {CIMValue(CIMTYPE_STRING, false), CIMValue(CIMTYPE_STRING, false), true},
        {CIMValue(CIMTYPE_STRING, false), CIMValue(String("")), false},
        {CIMValue(CIMTYPE_STRING, true), CIMValue(CIMTYPE_STRING, false), false},
        {CIMValue(CIMObjectPath("X.b=1,a=2")), CIMValue(CIMObjectPath("x.A=2,B=1")), true},
        {CIMValue(CIMDateTime("20240131120000.000000+060")),
         CIMValue(CIMDateTime("20240131110000.000000+000")), true},
        {CIMValue(Array<Uint8>(2, 3)), CIMValue(Array<Uint8>(2, 3)), true},
        {CIMValue(Array<Uint8>(2, 3)), CIMValue(Array<Uint8>(3, 3)), false},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.a == c.b, c.same) << str(c.a.toString()) << " vs " << str(c.b.toString());
        EXPECT_EQ(c.a != c.b, !c.same);
    }
    EXPECT_THROW(
        CIMValue(CIMDateTime()).equal(CIMValue(CIMDateTime(Uint64(0), false))),
        TypeMismatchException);
}

TEST(ValueText, DisplayForms)
{
    Array<Uint32> two(1, 1);
    two.append(2);
    struct Case
    {
        CIMValue v;
        const char* text;
    } cases[] = {
        {CIMValue(false), "FALSE"},
        {CIMValue(Uint64(18446744073709551615ULL)), "18446744073709551615"},
        {CIMValue(Sint64(-9223372036854775807LL - 1)), "-9223372036854775808"},
        {CIMValue(Real32(1.5)), "1.5000000000000000e+00"},
        {CIMValue(Real64(0.1)), "1.0000000000000001e-01"},
        {CIMValue(Char16(0xE9)), "\xC3\xA9"},
        {CIMValue(String("no \"quotes\" added")), "no \"quotes\" added"},
        {CIMValue(CIMDateTime()), "00000000000000.000000:000"},
        {CIMValue(CIMObjectPath("X.k=\"v\"")), "X.k=\"v\""},
        {CIMValue(two), "1 2 "},
        {CIMValue(Array<String>()), ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(str(c.v.toString()), c.text);
}

TEST(ValueEmbedded, InstancesAreClonedInAndOut)
{
    EXPECT_THROW(CIMValue{CIMInstance()}, UninitializedObjectException);
    Array<CIMInstance> withHole;
    withHole.append(CIMInstance(CIMName("A")));
    withHole.append(CIMInstance());
    EXPECT_THROW(CIMValue v(withHole), UninitializedObjectException);
    CIMInstance original(CIMName("QEL_X"));
    CIMValue v(original);
    EXPECT_EQ(v.getType(), CIMTYPE_INSTANCE);
    original.addProperty(CIMProperty(CIMName("Later"), CIMValue(Uint8(1))));
    CIMInstance out, again;
    v.get(out);
    out.addProperty(CIMProperty(CIMName("Mine"), CIMValue(Uint8(2))));
    v.get(again);
    EXPECT_EQ(
        out.getPropertyCount() + again.getPropertyCount(),
        1u);  // stored as a clone, handed out as one
    CIMObject obj;
    EXPECT_THROW(v.get(obj), TypeMismatchException);
}
