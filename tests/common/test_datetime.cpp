// CIMDateTime: the 25-character text, parsing errors and ranges, wildcards,
// UTC normalisation in comparisons and arithmetic.
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using qeltest::str;

namespace
{
std::string text(const CIMDateTime& d)
{
    return str(d.toString());
}

// "" when the text parses, else the exception's message.
std::string parseFailure(const char* input)
{
    try
    {
        CIMDateTime d((String(input)));
        return "";
    }
    catch (const Exception& e)
    {
        return str(e.getMessage());
    }
}
}  // namespace

TEST(DateTimeText, ValidPrintBackInvalidAreNamed)
{
    const char* samples[] = {
        "20240131120000.000000+060", "20240229235959.999999-300", "00000101000000.000000+000",
        "99991231235959.999999+999", "12345678235959.123456:000", "00000000000000.000000:000",
        "2024013112****.******+000", "20240131120000.12****+000", "**************.******+000",
        "**************.******:000", "00000001******.******:000",
    };
    for (const char* s : samples)
    {
        ASSERT_EQ(parseFailure(s), "") << s;
        EXPECT_EQ(text(CIMDateTime(String(s))), s);
    }
    EXPECT_EQ(text(CIMDateTime("20240131120000.000000-000")), "20240131120000.000000+000");

    const std::string bad = "invalid datetime format",
                      range = "DateTime is out of range : illegal ";
    struct Case
    {
        const char* input;
        std::string message;
    } cases[] = {
        {"2024013112000.000000+000", bad},
        {"20240131120000.000000+0000", bad},
        {"20240131120000.000000*000", bad},
        {"20240131120000,000000+000", bad},
        {"2024013112000a.000000+000", bad},
        {"00000001000000.000000:001", bad},
        {"2024013112**00.******+000", bad},
        {"20240131120000.12*4**+000", bad},
        {"20240131120000.000000+0*0", bad},
        {"20241301000000.000000+000", range + "month number"},
        {"20240001000000.000000+000", range + "month number"},
        {"20240230000000.000000+000", range + "day number"},
        {"20230229000000.000000+000", range + "day number"},
        {"20240100000000.000000+000", range + "day number"},
        // The trailing blanks are the original texts'.
        {"20240131240000.000000+000", range + "hours number "},
        {"20240131236000.000000+000", range + "minutes number "},
        {"20240131235960.000000+000", range + "seconds number "},
        {"00000000240000.000000:000", range + "hours number "},
    };
    for (const Case& c : cases)
        EXPECT_EQ(parseFailure(c.input), c.message) << c.input;
    CIMDateTime d("20240131120000.000000+060");
    EXPECT_THROW(d.set("bad"), InvalidDateTimeFormatException);
    EXPECT_EQ(text(d), "00000000000000.000000:000");  // cleared, never half set
}

TEST(DateTimeNumeric, MicrosecondConstructorAndRanges)
{
    EXPECT_EQ(text(CIMDateTime(Uint64(0), false)), "00000101000000.000000+000");
    EXPECT_EQ(text(CIMDateTime(Uint64(3723000001ULL), true)), "00000000010203.000001:000");
    // 1970-01-01 is 719528 days after 0000-01-01.
    EXPECT_EQ(
        text(CIMDateTime(Uint64(719528) * 86400000000ULL, false)), "19700101000000.000000+000");
    EXPECT_THROW(CIMDateTime(315569520000000000ULL, false), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(8640000000000000000ULL, true), DateTimeOutOfRangeException);
    EXPECT_NO_THROW(CIMDateTime(315569520000000000ULL - 1, false));
    EXPECT_EQ(text(CIMDateTime(2024, 2, 29, 13, 5, 9, 42, 6, -300)), "20240229130509.000042-300");
    CIMDateTime wild(2024, 1, 31, 12, CIMDateTime::WILDCARD, CIMDateTime::WILDCARD, 0, 0, 0);
    EXPECT_EQ(text(wild), "2024013112****.******+000");
    EXPECT_THROW(CIMDateTime(2024, 1, 1, 0, 0, 0, 0, 6, 1000), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(1, 0, 0, 0, 1000000, 6), DateTimeOutOfRangeException);
}

TEST(DateTimeCompare, ArithmeticAndComparisonNormaliseOffsets)
{
    CIMDateTime east("20240131120000.000000+060");
    CIMDateTime utc("20240131110000.000000+000");
    EXPECT_TRUE(east == utc);
    EXPECT_TRUE(utc == CIMDateTime("20240131060000.000000-300"));
    EXPECT_TRUE(CIMDateTime("20240131110000.000001+000") > east);
    EXPECT_EQ(east.toMicroSeconds(), utc.toMicroSeconds());
    EXPECT_THROW(east == CIMDateTime(), TypeMismatchException);
    EXPECT_THROW(east < CIMDateTime(), TypeMismatchException);

    // Wildcard positions match anything.
    EXPECT_TRUE(CIMDateTime("2024013111****.******+000") == utc);
    EXPECT_FALSE(CIMDateTime("2024013112****.******+000") == utc);
    EXPECT_TRUE(
        CIMDateTime("00000000010203.******:000") == CIMDateTime("00000000010203.999999:000"));

    // The current time: a timestamp with the local offset.
    CIMDateTime now = CIMDateTime::getCurrentDateTime();
    std::string s = text(now);
    ASSERT_EQ(s.size(), 25u);
    EXPECT_TRUE(s[21] == '+' || s[21] == '-');
    EXPECT_GT(now, CIMDateTime("20200101000000.000000+000"));

    // Intervals and timestamps add up; the kinds are not mixed.
    CIMDateTime hour("00000000010000.000000:000");
    CIMDateTime t("20241231233000.000000+060");
    EXPECT_EQ(text(t + hour), "20250101003000.000000+060");
    EXPECT_EQ(text(t - hour), "20241231223000.000000+060");
    EXPECT_EQ(text(hour * 30), "00000001060000.000000:000");
    EXPECT_EQ(text(hour / 4), "00000000001500.000000:000");
    EXPECT_EQ((hour * 3) / hour, 3u);
    EXPECT_EQ(
        text(CIMDateTime("20240101000000.000000+000") - CIMDateTime("20231231000000.000000+000")),
        "00000001000000.000000:000");
    EXPECT_THROW(hour + t, TypeMismatchException);
    EXPECT_THROW(t * 2, TypeMismatchException);
    EXPECT_THROW(hour / 0, Exception);
    EXPECT_THROW(hour - (hour * 2), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime("99991231233000.000000+000") + hour, DateTimeOutOfRangeException);
}
