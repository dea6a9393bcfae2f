// CIMValue: the overload set, typed nulls, type checks of get(), equality
// and the display text.
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>

#include <gtest/gtest.h>

#include <string>

PEGASUS_USING_PEGASUS;

namespace
{
std::string text(const CIMValue& v) { return std::string(v.toString().getCString()); }
}  // namespace

TEST(ValueTyping, OverloadSetPicksTheOriginalTypes)
{
    CIMValue literal("abc");  // no const char* constructor: a pointer is a Boolean
    EXPECT_EQ(literal.getType(), CIMTYPE_BOOLEAN);
    EXPECT_EQ(text(literal), "TRUE");
    EXPECT_EQ(CIMValue(5).getType(), CIMTYPE_SINT32);
    EXPECT_EQ(CIMValue(Uint8(5)).getType(), CIMTYPE_UINT8);
    EXPECT_EQ(CIMValue(String("abc")).getType(), CIMTYPE_STRING);
    EXPECT_EQ(CIMValue(CIMObjectPath("X.k=1")).getType(), CIMTYPE_REFERENCE);
    EXPECT_EQ(CIMValue(Array<Char16>()).getType(), CIMTYPE_CHAR16);
    EXPECT_TRUE(CIMValue(Array<Char16>()).isArray());
}

TEST(ValueNull, DefaultAndTypedNulls)
{
    CIMValue v;
    EXPECT_TRUE(v.isNull());
    EXPECT_EQ(v.getType(), CIMTYPE_BOOLEAN);
    EXPECT_FALSE(v.isArray());

    CIMValue arr(CIMTYPE_UINT16, true, 4);
    EXPECT_TRUE(arr.isNull());
    EXPECT_EQ(arr.getArraySize(), 4u);
    EXPECT_EQ(CIMValue(CIMTYPE_UINT16, false, 4).getArraySize(), 0u);

    Array<Uint16> out(2, 9);
    arr.get(out);  // null: left as it was
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(text(arr), "");

    CIMValue s(String("x"));
    s.setNullValue(CIMTYPE_STRING, false);
    EXPECT_TRUE(s.isNull());
    String keep("keep");
    s.get(keep);
    EXPECT_EQ(keep, "keep");
    s.clear();
    EXPECT_EQ(s.getType(), CIMTYPE_BOOLEAN);
}

TEST(ValueAccess, WrongTypeOrShapeThrowsTypeMismatch)
{
    CIMValue v(Uint32(7));
    Uint16 narrow = 0;
    Array<Uint32> many;
    Uint32 right = 0;
    EXPECT_THROW(v.get(narrow), TypeMismatchException);
    EXPECT_THROW(v.get(many), TypeMismatchException);
    v.get(right);
    EXPECT_EQ(right, 7u);

    CIMValue nullString(CIMTYPE_STRING, false);
    Boolean b = false;
    EXPECT_THROW(nullString.get(b), TypeMismatchException);  // type checked first
    try
    {
        v.get(narrow);
    }
    catch (const TypeMismatchException& e)
    {
        EXPECT_EQ(std::string(e.getMessage().getCString()), "type mismatch");
    }

    v.set(String("now a string"));  // set() replaces type and value
    String s;
    v.get(s);
    EXPECT_EQ(s, "now a string");
    EXPECT_EQ(v.getType(), CIMTYPE_STRING);
}

TEST(ValueEquality, TypeNullnessAndContent)
{
    struct Case
    {
        CIMValue a;
        CIMValue b;
        bool same;
    } cases[] = {
        { CIMValue(Uint16(1)), CIMValue(Uint16(1)), true },
        { CIMValue(Uint16(1)), CIMValue(Uint32(1)), false },
        { CIMValue(String("a")), CIMValue(String("A")), false },
        { CIMValue(CIMTYPE_STRING, false), CIMValue(CIMTYPE_STRING, false), true },
        { CIMValue(CIMTYPE_STRING, false), CIMValue(String("")), false },
        { CIMValue(CIMTYPE_STRING, true), CIMValue(CIMTYPE_STRING, false), false },
        { CIMValue(CIMObjectPath("X.b=1,a=2")), CIMValue(CIMObjectPath("x.A=2,B=1")), true },
        { CIMValue(CIMDateTime("20240131120000.000000+060")),
          CIMValue(CIMDateTime("20240131110000.000000+000")), true },
        { CIMValue(Array<Uint8>(2, 3)), CIMValue(Array<Uint8>(2, 3)), true },
        { CIMValue(Array<Uint8>(2, 3)), CIMValue(Array<Uint8>(3, 3)), false },
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.a.equal(c.b), c.same) << text(c.a) << " vs " << text(c.b);
        EXPECT_EQ(c.a == c.b, c.same);
        EXPECT_EQ(c.a != c.b, !c.same);
    }
    EXPECT_THROW(CIMValue(CIMDateTime()).equal(CIMValue(CIMDateTime(Uint64(0), false))),
        TypeMismatchException);
}

TEST(ValueText, DisplayForms)
{
    Array<Uint32> two;
    two.append(1);
    two.append(2);
    struct Case
    {
        CIMValue v;
        const char* text;
    } cases[] = {
        { CIMValue(false), "FALSE" },
        { CIMValue(Sint8(-5)), "-5" },
        { CIMValue(Uint8(200)), "200" },
        { CIMValue(Uint64(18446744073709551615ULL)), "18446744073709551615" },
        { CIMValue(Sint64(-9223372036854775807LL - 1)), "-9223372036854775808" },
        { CIMValue(Real32(1.5)), "1.5000000000000000e+00" },
        { CIMValue(Real64(0.1)), "1.0000000000000001e-01" },
        { CIMValue(Char16(0xE9)), "\xC3\xA9" },
        { CIMValue(String("no \"quotes\" added")), "no \"quotes\" added" },
        { CIMValue(CIMDateTime()), "00000000000000.000000:000" },
        { CIMValue(CIMObjectPath("X.k=\"v\"")), "X.k=\"v\"" },
        { CIMValue(two), "1 2 " },
        { CIMValue(Array<String>()), "" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(text(c.v), c.text);
}

TEST(ValueEmbedded, InstancesAreClonedInAndOut)
{
    CIMInstance uninitialized;
    EXPECT_THROW(CIMValue v(uninitialized), UninitializedObjectException);
    Array<CIMInstance> withHole;
    withHole.append(CIMInstance(CIMName("A")));
    withHole.append(CIMInstance());
    EXPECT_THROW(CIMValue v(withHole), UninitializedObjectException);

    CIMInstance original(CIMName("QEL_X"));
    original.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("n1"))));
    CIMValue v(original);
    EXPECT_EQ(v.getType(), CIMTYPE_INSTANCE);

    original.addProperty(CIMProperty(CIMName("Later"), CIMValue(Uint8(1))));
    CIMInstance out;
    v.get(out);
    EXPECT_EQ(out.getPropertyCount(), 1u);  // stored before the change
    out.addProperty(CIMProperty(CIMName("Mine"), CIMValue(Uint8(2))));
    CIMInstance again;
    v.get(again);
    EXPECT_EQ(again.getPropertyCount(), 1u);  // each get hands out a clone

    CIMValue copy(v);
    EXPECT_TRUE(copy.equal(v));
    CIMObject obj;
    EXPECT_THROW(v.get(obj), TypeMismatchException);
}
