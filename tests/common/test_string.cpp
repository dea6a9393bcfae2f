// String and CString: UTF-16 storage, UTF-8 conversion, ASCII-only case
// folding, comparison results and bounds, copy-on-write independence.
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

PEGASUS_USING_PEGASUS;

namespace
{
std::string utf8(const String& s)
{
    CString c = s.getCString();
    return std::string(static_cast<const char*>(c));
}

std::string messageOf(const char* text)
{
    try
    {
        String s(text);
    }
    catch (const Exception& e)
    {
        return utf8(e.getMessage());
    }
    return "<no exception>";
}
}  // namespace

TEST(StringUtf8, DecodesAndEncodesRoundTrip)
{
    const char* samples[] = { "", "plain", "\xC3\xA9t\xC3\xA9", "\xE2\x82\xAC 5",
                              "\xF0\x9F\x98\x80" };
    for (const char* text : samples)
        EXPECT_EQ(utf8(String(text)), text) << text;
    EXPECT_EQ(String("\xF0\x9F\x98\x80").size(), 2u);  // surrogate pair
    EXPECT_EQ(String("\xC3\xA9").size(), 1u);
}

TEST(StringUtf8, InvalidBytesNameIndexAndHexBytes)
{
    struct Case
    {
        const char* text;
        const char* message;
    } cases[] = {
        { "\xFF\xFE", "The byte sequence starting at index 0 is not valid UTF-8 encoding:  0xFF 0xFE" },
        { "abc\xC3", "The byte sequence starting at index 3 is not valid UTF-8 encoding: abc 0xC3" },
        { "a\xC0\x80z", "The byte sequence starting at index 1 is not valid UTF-8 encoding: a 0xC0 0x80 0x7A" },
        { "\xE0\x80\x80", "The byte sequence starting at index 0 is not valid UTF-8 encoding:  0xE0 0x80 0x80" },
        { "\xF4\x90\x80\x80", "The byte sequence starting at index 0 is not valid UTF-8 encoding:  0xF4 0x90 0x80 0x80" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(messageOf(c.text), c.message);
}

TEST(StringUtf8, NullPointersThrowNullPointer)
{
    EXPECT_THROW(String(static_cast<const char*>(nullptr)), NullPointer);
    EXPECT_THROW(String(static_cast<const Char16*>(nullptr)), NullPointer);
    String s("x");
    EXPECT_THROW(s.append(static_cast<const char*>(nullptr)), NullPointer);
    EXPECT_EQ(s, "x");  // unchanged after the failure
}

TEST(StringUtf8, FailedAppendLeavesStringUnchanged)
{
    String s("keep");
    EXPECT_THROW(s.append("ok\xFF"), Exception);
    EXPECT_EQ(s, "keep");
}

TEST(StringCompare, DifferenceOfFirstDifferingUnits)
{
    struct Case
    {
        const char* a;
        const char* b;
        int exact;
        int noCase;
    } cases[] = {
        { "A_B", "AB", 29, -3 },
        { "abc", "abc", 0, 0 },
        { "abc", "ABC", 32, 0 },
        { "ab", "abc", -1, -1 },
        { "abc", "ab", 1, 1 },
        { "", "a", -1, -1 },
        { "b", "a", 1, 1 },
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(String::compare(c.a, c.b), c.exact) << c.a << " vs " << c.b;
        EXPECT_EQ(String::compareNoCase(c.a, c.b), c.noCase) << c.a << " vs " << c.b;
    }
    EXPECT_EQ(String::compare("abcX", "abcY", 3), 0);
    EXPECT_LT(String::compare("abcX", "abcY", 4), 0);
    EXPECT_TRUE(String("a") < String("b"));
    EXPECT_TRUE(String("b") >= "a");
}

TEST(StringCase, FoldsOnlyAsciiLetters)
{
    EXPECT_FALSE(String::equalNoCase("\xC3\x89", "\xC3\xA9"));  // É vs é
    EXPECT_TRUE(String::equalNoCase("QEL_FCPort", "qel_fcport"));
    EXPECT_FALSE(String::equalNoCase("abc", "abcd"));
    EXPECT_FALSE(String::equalNoCase("[", "{"));  // not letters, 0x20 apart

    String lower("ABC\xC3\x89z");
    lower.toLower();
    EXPECT_EQ(utf8(lower), "abc\xC3\x89z");
    String upper("abc\xC3\xA9Z");
    upper.toUpper();
    EXPECT_EQ(utf8(upper), "ABC\xC3\xA9Z");
}

TEST(StringAccess, BoundsOfIndexFindSubStringRemove)
{
    String s("abcabc");
    EXPECT_EQ(Uint16(s[6]), 0);  // the terminator is readable
    EXPECT_THROW(s[7], IndexOutOfBoundsException);

    EXPECT_EQ(s.find('c'), 2u);
    EXPECT_EQ(s.find(3, 'c'), 5u);
    EXPECT_EQ(s.find(6, 'c'), PEG_NOT_FOUND);
    EXPECT_THROW(s.find(7, 'c'), IndexOutOfBoundsException);
    EXPECT_EQ(s.find(String("ca")), 2u);
    EXPECT_EQ(s.find(String("")), PEG_NOT_FOUND);
    EXPECT_EQ(s.find(String("abcabcd")), PEG_NOT_FOUND);
    EXPECT_EQ(s.reverseFind('a'), 3u);
    EXPECT_EQ(s.reverseFind('z'), PEG_NOT_FOUND);

    EXPECT_EQ(s.subString(4), "bc");
    EXPECT_EQ(s.subString(1, 2), "bc");
    EXPECT_EQ(s.subString(6), "");
    EXPECT_EQ(s.subString(2, 100), "cabc");

    String r("abcdef");
    r.remove(4);
    EXPECT_EQ(r, "abcd");
    r.remove(1, 2);
    EXPECT_EQ(r, "ad");
    EXPECT_THROW(r.remove(1, 2), IndexOutOfBoundsException);
    EXPECT_THROW(r.remove(3), IndexOutOfBoundsException);
    EXPECT_EQ(r, "ad");

    EXPECT_THROW(String(String("ab"), 3), IndexOutOfBoundsException);
    EXPECT_EQ(String(String("abc"), 2), "ab");
}

TEST(StringSharing, CopiesAreIndependent)
{
    String a("shared text");
    String b(a);
    b[0] = Char16('S');
    b.append(" more");
    EXPECT_EQ(a, "shared text");
    EXPECT_EQ(b, "Shared text more");

    String c = a;
    c.toUpper();
    EXPECT_EQ(a, "shared text");

    String self("xy");
    self.append(self);
    self.append(self.getChar16Data() + 1, 2);
    EXPECT_EQ(self, "xyxyyx");
}

TEST(StringFormat, AppendPrintfAndStreamOutput)
{
    String s("n=");
    s.appendPrintf("%d/%s", 42, std::string(300, 'x').c_str());
    EXPECT_EQ(s.size(), 2u + 3u + 300u);
    EXPECT_EQ(s.subString(0, 6), "n=42/x");

    std::ostringstream os;
    Char16 units[] = { Char16('a'), Char16(0xE9), Char16(0x20AC), Char16(0) };
    os << String(units, 3);
    EXPECT_EQ(os.str(), std::string("a\xE9\\x20AC"));
}

TEST(CStringCopy, DefaultIsNullAndCopiesAreDeep)
{
    CString empty;
    EXPECT_EQ(static_cast<const char*>(empty), nullptr);
    CString a = String("abc").getCString();
    CString b(a);
    EXPECT_NE(static_cast<const char*>(a), static_cast<const char*>(b));
    EXPECT_STREQ(b, "abc");
    b = empty;
    EXPECT_EQ(static_cast<const char*>(b), nullptr);
}
