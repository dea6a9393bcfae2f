// CIMKeyBinding: typing from values, comparison by type, equal(CIMValue).
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include <gtest/gtest.h>

#include <string>

PEGASUS_USING_PEGASUS;

TEST(KeyBindingFromValue, TypeAndTextFollowTheValue)
{
    struct Case
    {
        CIMValue value;
        CIMKeyBinding::Type type;
        const char* text;
    } cases[] = {
        {CIMValue(Sint64(-7)), CIMKeyBinding::NUMERIC, "-7"},
        {CIMValue(Real64(1.5)), CIMKeyBinding::NUMERIC, "1.5000000000000000e+00"},
        {CIMValue(true), CIMKeyBinding::BOOLEAN, "TRUE"},
        {CIMValue(CIMDateTime("20240131120000.000000+060")), CIMKeyBinding::STRING,
         "20240131120000.000000+060"},
        {CIMValue(CIMObjectPath("Y.a=1")), CIMKeyBinding::REFERENCE, "Y.a=1"},
    };
    for (const Case& c : cases)
    {
        CIMKeyBinding kb(CIMName("k"), c.value);
        EXPECT_EQ(kb.getType(), c.type) << c.text;
        EXPECT_EQ(std::string(kb.getValue().getCString()), c.text);
    }
    EXPECT_THROW(CIMKeyBinding(CIMName("k"), CIMValue(Array<Uint32>())), TypeMismatchException);
    EXPECT_THROW(
        CIMKeyBinding(CIMName("k"), CIMValue(CIMTYPE_INSTANCE, false)), TypeMismatchException);
}

TEST(KeyBindingCompare, EqualityPerTypeAndToValues)
{
    struct Case
    {
        CIMKeyBinding a;
        CIMKeyBinding b;
        bool same;
    } cases[] = {
        {{"K", "abc", CIMKeyBinding::STRING}, {"k", "abc", CIMKeyBinding::STRING}, true},
        {{"k", "abc", CIMKeyBinding::STRING}, {"k", "ABC", CIMKeyBinding::STRING}, false},
        {{"k", "true", CIMKeyBinding::BOOLEAN}, {"k", "TRUE", CIMKeyBinding::BOOLEAN}, true},
        {{"k", "10", CIMKeyBinding::NUMERIC}, {"k", "0xA", CIMKeyBinding::NUMERIC}, true},
        {{"k", "-2", CIMKeyBinding::NUMERIC}, {"k", "-0x2", CIMKeyBinding::NUMERIC}, true},
        {{"k", "1.5", CIMKeyBinding::NUMERIC}, {"k", "1.50", CIMKeyBinding::NUMERIC}, false},
        {{"k", "Y.a=1", CIMKeyBinding::STRING}, {"k", "Y.a=1", CIMKeyBinding::REFERENCE}, false},
        {{"k", "Y.a=1,b=2", CIMKeyBinding::REFERENCE},
         {"k", "y.B=2,A=1", CIMKeyBinding::REFERENCE},
         true},
        {{"k", "1bad", CIMKeyBinding::REFERENCE}, {"k", "1bad", CIMKeyBinding::REFERENCE}, true},
        {{"k", "1bad", CIMKeyBinding::REFERENCE}, {"k", "1BAD", CIMKeyBinding::REFERENCE}, false},
        {{"k", "1", CIMKeyBinding::NUMERIC}, {"j", "1", CIMKeyBinding::NUMERIC}, false},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.a == c.b, c.same) << c.a.getValue() << " vs " << c.b.getValue();
        EXPECT_EQ(c.b == c.a, c.same);
    }

    // equal(CIMValue) converts the text to the value's type.
    struct ToValue
    {
        CIMKeyBinding kb;
        CIMValue value;
        bool same;
    } toValues[] = {
        {{"k", "5", CIMKeyBinding::NUMERIC}, CIMValue(Uint16(5)), true},
        {{"k", "0x5", CIMKeyBinding::NUMERIC}, CIMValue(Uint8(5)), true},
        {{"k", "300", CIMKeyBinding::NUMERIC}, CIMValue(Uint8(44)), false},
        {{"k", "1.5", CIMKeyBinding::NUMERIC}, CIMValue(Real32(1.5)), true},
        {{"k", "5", CIMKeyBinding::STRING}, CIMValue(Uint16(5)), false},
        {{"k", "true", CIMKeyBinding::BOOLEAN}, CIMValue(true), true},
        {{"k", "yes", CIMKeyBinding::BOOLEAN}, CIMValue(true), false},
        {{"k", "x", CIMKeyBinding::STRING}, CIMValue(Char16('x')), true},
        {{"k", "bad", CIMKeyBinding::STRING}, CIMValue(CIMDateTime()), false},
        {{"k", "Y.b=2,a=1", CIMKeyBinding::REFERENCE}, CIMValue(CIMObjectPath("Y.a=1,b=2")), true},
        {{"k", "1", CIMKeyBinding::NUMERIC}, CIMValue(Array<Uint32>(1, 1)), false},
    };
    for (ToValue& c : toValues)
        EXPECT_EQ(c.kb.equal(c.value), c.same) << c.kb.getValue();
}
