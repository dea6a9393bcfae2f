// String: UTF-16 storage, UTF-8 conversion, ASCII-only case
// folding, comparison results and bounds, copy-on-write independence.
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using namespace qeltest;

TEST(StringUtf8, DecodesAndEncodesRoundTrip)
{
    for (const char* text :
         {"", "plain", "\xC3\xA9t\xC3\xA9", "\xE2\x82\xAC 5", "\xF0\x9F\x98\x80"})
        EXPECT_EQ(str(String(text)), text) << text;
    EXPECT_EQ(String("\xF0\x9F\x98\x80").size(), 2u);  // surrogate pair
    EXPECT_EQ(String("\xC3\xA9").size(), 1u);
}

TEST(StringUtf8, InvalidBytesNameIndexAndHexBytes)
{
    const char* prefix = "The byte sequence starting at index ";
    struct Case
    {
        const char* text;
        const char* message;
    } cases[] = {
        {"\xFF\xFE", "0 is not valid UTF-8 encoding:  0xFF 0xFE"},
        {"abc\xC3", "3 is not valid UTF-8 encoding: abc 0xC3"},
        {"a\xC0\x80z", "1 is not valid UTF-8 encoding: a 0xC0 0x80 0x7A"},
        {"\xE0\x80\x80", "0 is not valid UTF-8 encoding:  0xE0 0x80 0x80"},
        {"\xF4\x90\x80\x80", "0 is not valid UTF-8 encoding:  0xF4 0x90 0x80 0x80"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(
            thrownMessage<Exception>([&] { String s(c.text); }), prefix + std::string(c.message));

    // Failed constructions and appends leave the string as it was.
    EXPECT_THROW(String(static_cast<const char*>(nullptr)), NullPointer);
    EXPECT_THROW(String(static_cast<const Char16*>(nullptr)), NullPointer);
    String s("keep");
    EXPECT_THROW(s.append(static_cast<const char*>(nullptr)), NullPointer);
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
        {"A_B", "AB", 29, -3}, {"abc", "abc", 0, 0}, {"abc", "ABC", 32, 0}, {"ab", "abc", -1, -1},
        {"abc", "ab", 1, 1},   {"", "a", -1, -1},    {"b", "a", 1, 1},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(String::compare(c.a, c.b), c.exact) << c.a << " vs " << c.b;
        EXPECT_EQ(String::compareNoCase(c.a, c.b), c.noCase) << c.a << " vs " << c.b;
    }
    EXPECT_EQ(String::compare("abcX", "abcY", 3), 0);
    EXPECT_LT(String::compare("abcX", "abcY", 4), 0);
}

TEST(StringCase, FoldsOnlyAsciiLetters)
{
    EXPECT_FALSE(String::equalNoCase("\xC3\x89", "\xC3\xA9"));  // É vs é
    EXPECT_TRUE(String::equalNoCase("QEL_FCPort", "qel_fcport"));
    EXPECT_FALSE(String::equalNoCase("abc", "abcd"));
    EXPECT_FALSE(String::equalNoCase("[", "{"));  // not letters, 0x20 apart
    String folded("AB\xC3\x89\xC3\xA9z");         // É and é stay as they are
    folded.toLower();
    EXPECT_EQ(str(folded), "ab\xC3\x89\xC3\xA9z");
    folded.toUpper();
    EXPECT_EQ(str(folded), "AB\xC3\x89\xC3\xA9Z");
}

TEST(StringAccess, BoundsOfIndexFindSubStringRemoveAndPrintf)
{
    String s("abcabc");
    EXPECT_EQ(Uint16(s[6]), 0);  // the terminator is readable
    EXPECT_THROW(s[7], IndexOutOfBoundsException);
    EXPECT_EQ(s.find(6, 'c'), PEG_NOT_FOUND);
    EXPECT_THROW(s.find(7, 'c'), IndexOutOfBoundsException);
    EXPECT_EQ(s.find(String("ca")), 2u);
    EXPECT_EQ(s.find(String("")), PEG_NOT_FOUND);
    EXPECT_EQ(s.find(String("abcabcd")), PEG_NOT_FOUND);
    EXPECT_EQ(s.subString(6), "");
    EXPECT_EQ(s.subString(2, 100), "cabc");
    EXPECT_THROW(String(String("ab"), 3), IndexOutOfBoundsException);
    String r("abcdef");
    r.remove(4);
    r.remove(1, 2);
    EXPECT_THROW(r.remove(1, 2), IndexOutOfBoundsException);
    EXPECT_THROW(r.remove(3), IndexOutOfBoundsException);
    EXPECT_EQ(r, "ad");

    String f("n=");
    f.appendPrintf("%d/%s", 42, std::string(300, 'x').c_str());  // longer than any first guess
    EXPECT_EQ(f.size(), 2u + 3u + 300u);
    EXPECT_EQ(f.subString(0, 6), "n=42/x");
}

TEST(StringSharing, CopiesAreIndependent)
{
    String a("shared text");
    String b(a);
    b[0] = Char16('S');
    b.append(" more");
    EXPECT_EQ(a, "shared text");
    EXPECT_EQ(b, "Shared text more");
    String self("xy");
    self.append(self);
    self.append(self.getChar16Data() + 1, 2);
    EXPECT_EQ(self, "xyxyyx");
}

TEST(StringUtf8, NonAsciiByteAtEveryPlaceAroundSixteen)
{
    // Leading ASCII is found sixteen bytes at a time: a multi-byte character or a bad byte
    // at any place of texts around that width must still be decoded or refused.
    for (size_t length : {1u, 15u, 16u, 17u, 31u, 32u, 33u})
    {
        for (size_t at = 0; at < length; ++at)
        {
            SCOPED_TRACE(testing::Message() << "length " << length << " at " << at);
            std::string text(length, 'a');
            text.replace(at, 1, "\xC3\xA9");
            const String s(text.c_str());
            EXPECT_EQ(s.size(), length);
            EXPECT_EQ(Uint16(s[Uint32(at)]), 0xE9);
            EXPECT_EQ(str(s), text);

            std::string bad(length, 'a');
            bad[at] = '\xFF';
            const std::string message = thrownMessage<Exception>([&] { String b(bad.c_str()); });
            const std::string head =
                "The byte sequence starting at index " + std::to_string(at) + " is not valid";
            EXPECT_EQ(message.compare(0, head.size(), head), 0) << message;
        }
    }
}
