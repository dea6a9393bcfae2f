// Value texts: every simple type parses at its limits and refuses what does not fit.
#include <Server/xml/ValueText.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>
#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

struct ScalarCase
{
    CIMType type;
    const char* text;
    bool ok;
    const char* printed;  // text written back, when ok
};

const ScalarCase kScalars[] = {
    {CIMTYPE_BOOLEAN, "TRUE", true, "TRUE"},
    {CIMTYPE_BOOLEAN, " false ", true, "FALSE"},
    {CIMTYPE_BOOLEAN, "yes", false, nullptr},
    {CIMTYPE_UINT8, "255", true, "255"},
    {CIMTYPE_UINT8, "256", false, nullptr},
    {CIMTYPE_UINT8, "-1", false, nullptr},
    {CIMTYPE_SINT8, "-128", true, "-128"},
    {CIMTYPE_SINT8, "128", false, nullptr},
    {CIMTYPE_UINT16, "0x1F", true, "31"},
    {CIMTYPE_UINT16, "0x", false, nullptr},
    {CIMTYPE_UINT32, "12abc", false, nullptr},
    {CIMTYPE_SINT32, "  -7 ", true, "-7"},
    {CIMTYPE_UINT64, "18446744073709551615", true, "18446744073709551615"},
    {CIMTYPE_UINT64, "18446744073709551616", false, nullptr},
    {CIMTYPE_SINT64, "9223372036854775808", false, nullptr},
    {CIMTYPE_SINT64, "", false, nullptr},
    {CIMTYPE_REAL64, "1.5", true, "1.5000000000000000e+00"},
    {CIMTYPE_REAL64, "0x1p3", false, nullptr},
    {CIMTYPE_REAL64, "inf", false, nullptr},
    {CIMTYPE_REAL64, "-INF", true, "-INF"},
    {CIMTYPE_REAL32, "1e39", false, nullptr},
    {CIMTYPE_CHAR16, "\xc3\xa9", true, "\xc3\xa9"},
    {CIMTYPE_CHAR16, "ab", false, nullptr},
    {CIMTYPE_STRING, " keep  spaces ", true, " keep  spaces "},
    {CIMTYPE_STRING, "\xff\xfe", false, nullptr},
    {CIMTYPE_DATETIME, "20240131120000.000000+060", true, "20240131120000.000000+060"},
    {CIMTYPE_DATETIME, "20241301000000.000000+000", false, nullptr},
};

class ScalarText : public ::testing::TestWithParam<ScalarCase>
{
};

TEST_P(ScalarText, ParsesOrRefusesAndWritesBack)
{
    const ScalarCase& c = GetParam();
    if (!c.ok)
    {
        try
        {
            parseScalar(c.type, c.text, "VALUE");
            FAIL() << "accepted \"" << c.text << "\" as " << typeAttribute(c.type);
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER);
            // The message says where and what.
            EXPECT_NE(std::string(e.getMessage().getCString()).find("VALUE"), std::string::npos);
        }
        return;
    }
    const CIMValue v = parseScalar(c.type, c.text, "VALUE");
    EXPECT_EQ(v.getType(), c.type);
    std::string out;
    appendScalarText(out, v);
    EXPECT_EQ(out, c.printed);
}

INSTANTIATE_TEST_SUITE_P(AllTypes, ScalarText, ::testing::ValuesIn(kScalars));

TEST(ArrayText, ElementsRoundTripAndOneBadElementFailsTheArray)
{
    const CIMValue v = parseArray(CIMTYPE_UINT16, {"1", "0x10", "65535"}, "VALUE.ARRAY");
    ASSERT_TRUE(v.isArray());
    std::vector<std::string> texts;
    appendArrayTexts(texts, v);
    EXPECT_EQ(texts, (std::vector<std::string>{"1", "16", "65535"}));
    EXPECT_THROW(parseArray(CIMTYPE_UINT16, {"1", "65536"}, "VALUE.ARRAY"), CIMException);
    EXPECT_EQ(parseArray(CIMTYPE_STRING, {}, "VALUE.ARRAY").getArraySize(), 0u);
}

}  // namespace
