// The writer's start tags are made once and then reused: every attribute they carry must
// still follow the object written, whatever was written before on the same thread. Texts are
// written straight from their UTF-16 units, plain runs several at a time: the bytes must be
// those of the string's UTF-8 form, escaped.
#include <Server/xml/CimXmlWriter.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

std::string written(const CIMInstance& instance)
{
    std::string out;
    writeInstance(out, instance);
    const std::string head = "<INSTANCE CLASSNAME=\"X\">";
    const std::string tail = "</INSTANCE>";
    EXPECT_EQ(out.compare(0, head.size(), head), 0) << out;
    return out.substr(head.size(), out.size() - head.size() - tail.size());
}

std::string writtenProperty(const CIMProperty& p)
{
    CIMInstance i("X");
    i.addProperty(p);
    return written(i);
}

TEST(WriterHeads, EveryAttributeFollowsTheProperty)
{
    // One name text shared by all the properties below, as instances share their class's.
    const CIMName speed("Speed");
    const CIMName origin("CIM_NetworkPort");
    const struct
    {
        CIMProperty property;
        const char* xml;
    } cases[] = {
        {CIMProperty(speed, CIMValue(Uint64(5))),
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>5</VALUE></PROPERTY>"},
        {CIMProperty(speed, CIMValue(Uint64(5)), 0, CIMName(), origin),
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\" CLASSORIGIN=\"CIM_NetworkPort\">"
         "<VALUE>5</VALUE></PROPERTY>"},
        {CIMProperty(speed, CIMValue(Uint64(5)), 0, CIMName(), origin, true),
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\" CLASSORIGIN=\"CIM_NetworkPort\" "
         "PROPAGATED=\"true\"><VALUE>5</VALUE></PROPERTY>"},
        {CIMProperty(speed, CIMValue(Uint32(5))),
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\"><VALUE>5</VALUE></PROPERTY>"},
        {CIMProperty(speed, CIMValue(CIMTYPE_UINT32, false)),
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\"></PROPERTY>"},
        {CIMProperty(speed, CIMValue(Array<Uint32>(1, 7))),
         "<PROPERTY.ARRAY NAME=\"Speed\" TYPE=\"uint32\"><VALUE.ARRAY><VALUE>7</VALUE>"
         "</VALUE.ARRAY></PROPERTY.ARRAY>"},
        {CIMProperty(speed, CIMValue(Array<Uint32>(2, 7)), 2),
         "<PROPERTY.ARRAY NAME=\"Speed\" TYPE=\"uint32\" ARRAYSIZE=\"2\"><VALUE.ARRAY>"
         "<VALUE>7</VALUE><VALUE>7</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"},
        {CIMProperty(speed, CIMValue(CIMObjectPath("Y.k=1")), 0, CIMName("Y")),
         "<PROPERTY.REFERENCE NAME=\"Speed\" REFERENCECLASS=\"Y\"><VALUE.REFERENCE>"
         "<INSTANCENAME CLASSNAME=\"Y\"><KEYBINDING NAME=\"k\"><KEYVALUE VALUETYPE=\"numeric\">1"
         "</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>"},
        {CIMProperty(speed, CIMValue(CIMObjectPath("Y.k=1"))),
         "<PROPERTY.REFERENCE NAME=\"Speed\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"Y\">"
         "<KEYBINDING NAME=\"k\"><KEYVALUE VALUETYPE=\"numeric\">1</KEYVALUE></KEYBINDING>"
         "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>"},
        {CIMProperty(CIMName("Speed"), CIMValue(String("a<b"))),
         "<PROPERTY NAME=\"Speed\" TYPE=\"string\"><VALUE>a&lt;b</VALUE></PROPERTY>"},
        {CIMProperty(
             CIMName("Sp\xc3\xa9"
                     "ed"),
             CIMValue(Boolean(true))),
         "<PROPERTY NAME=\"Sp\xc3\xa9"
         "ed\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></PROPERTY>"},
    };
    // Twice over: the second round finds every tag made in the first.
    for (int round = 0; round < 2; ++round)
    {
        for (const auto& c : cases)
        {
            SCOPED_TRACE(c.xml);
            EXPECT_EQ(writtenProperty(c.property), c.xml);
        }
    }
}

TEST(WriterHeads, ChangesToAPropertyShowInItsNextTag)
{
    CIMProperty p(CIMName("Speed"), CIMValue(Uint16(1)), 0, CIMName(), CIMName("A"), false);
    const std::string before = writtenProperty(p);
    EXPECT_EQ(
        before, "<PROPERTY NAME=\"Speed\" TYPE=\"uint16\" CLASSORIGIN=\"A\"><VALUE>1</VALUE>"
                "</PROPERTY>");
    CIMInstance i("X");
    i.addProperty(p);
    CIMProperty inside = i.getProperty(0);
    inside.setClassOrigin(CIMName("B"));
    inside.setPropagated(true);
    inside.setName(CIMName("SPEED"));
    EXPECT_EQ(
        written(i), "<PROPERTY NAME=\"SPEED\" TYPE=\"uint16\" CLASSORIGIN=\"B\" "
                    "PROPAGATED=\"true\"><VALUE>1</VALUE></PROPERTY>");
    inside.setClassOrigin(CIMName());
    EXPECT_EQ(
        written(i), "<PROPERTY NAME=\"SPEED\" TYPE=\"uint16\" PROPAGATED=\"true\">"
                    "<VALUE>1</VALUE></PROPERTY>");
}

TEST(WriterHeads, InstancesAlikeButForOneAttributeAtOnePlace)
{
    // The tag written last at a place is tried first: it must still be checked.
    CIMInstance a("X");
    a.addProperty(CIMProperty(CIMName("Speed"), CIMValue(Uint16(1)), 0, CIMName(), CIMName("A")));
    a.addProperty(CIMProperty(CIMName("Mode"), CIMValue(Uint16(2))));
    CIMInstance b = a.clone();
    b.getProperty(0).setClassOrigin(CIMName("B"));
    CIMInstance c = a.clone();
    c.removeProperty(0);
    const std::string mode = "<PROPERTY NAME=\"Mode\" TYPE=\"uint16\"><VALUE>2</VALUE></PROPERTY>";
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_EQ(
            written(a), "<PROPERTY NAME=\"Speed\" TYPE=\"uint16\" CLASSORIGIN=\"A\">"
                        "<VALUE>1</VALUE></PROPERTY>" +
                            mode);
        EXPECT_EQ(
            written(b), "<PROPERTY NAME=\"Speed\" TYPE=\"uint16\" CLASSORIGIN=\"B\">"
                        "<VALUE>1</VALUE></PROPERTY>" +
                            mode);
        EXPECT_EQ(written(c), mode);
    }
}

TEST(WriterHeads, KeyBindingsOfEachKind)
{
    const CIMObjectPath path("X.b=TRUE,n=-5,r=\"Y.k=\\\"v\\\"\",s=\"a&b\"");
    std::string out;
    writeInstanceName(out, path);
    EXPECT_EQ(
        out, "<INSTANCENAME CLASSNAME=\"X\">"
             "<KEYBINDING NAME=\"b\"><KEYVALUE VALUETYPE=\"boolean\">TRUE</KEYVALUE></KEYBINDING>"
             "<KEYBINDING NAME=\"n\"><KEYVALUE VALUETYPE=\"numeric\">-5</KEYVALUE></KEYBINDING>"
             "<KEYBINDING NAME=\"r\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"Y\"><KEYBINDING "
             "NAME=\"k\"><KEYVALUE VALUETYPE=\"string\">v</KEYVALUE></KEYBINDING></INSTANCENAME>"
             "</VALUE.REFERENCE></KEYBINDING>"
             "<KEYBINDING NAME=\"s\"><KEYVALUE VALUETYPE=\"string\">a&amp;b</KEYVALUE></KEYBINDING>"
             "</INSTANCENAME>");
}

}  // namespace

namespace
{

// The reference: the bytes getCString() gives (up to the first NUL), escaped byte by byte.
std::string escapedBytes(const String& text)
{
    const CString bytes = text.getCString();
    std::string out;
    appendEscaped(out, bytes, std::strlen(bytes));
    return out;
}

TEST(WriterText, OneOddUnitAtEveryPlaceOfRunsAroundEightUnits)
{
    // Runs of plain ASCII are written several units at a time: an odd unit anywhere in a run
    // of any length around that width must come out as the unit-by-unit path writes it.
    const std::vector<std::vector<Uint16>> odd = {
        {'&'},    {'<'},    {'>'},    {'"'},    {'\''},           {'\t'},   {'\n'},
        {0x01},   {0x1F},   {0x7F},   {0x80},   {0xE9},           {0xFF},   {0x100},
        {0x20AC}, {0x7FFF}, {0x8000}, {0xFFFD}, {0xD83D, 0xDE00}, {0xD83D}, {0xDE00},
        {0},
    };
    for (Uint32 length : {1u, 7u, 8u, 9u, 15u, 16u, 17u, 24u, 200u})
    {
        for (Uint32 at = 0; at < length; ++at)
        {
            for (const std::vector<Uint16>& unit : odd)
            {
                std::vector<Char16> units(length, Char16('a'));
                units[at] = Char16(unit[0]);
                if (unit.size() == 2)
                    units.insert(units.begin() + at + 1, Char16(unit[1]));
                const String text(units.data(), Uint32(units.size()));
                SCOPED_TRACE(
                    testing::Message() << "length " << length << ", unit " << std::hex << unit[0]
                                       << " at " << std::dec << at);
                std::string escaped;
                appendEscaped(escaped, text);
                EXPECT_EQ(escaped, escapedBytes(text));
                EXPECT_EQ(toUtf8(text), std::string(text.getCString()));
            }
        }
    }
}

TEST(WriterText, LongTextsAcrossTheBufferSlices)
{
    // Beyond a slice of the buffer (1024 bytes) and its whole (8192), with a special or
    // a 4-byte character straddling each place.
    for (Uint32 length : {170u, 171u, 1023u, 1024u, 1025u, 8191u, 8192u, 8193u, 20000u})
    {
        std::vector<Char16> units(length, Char16('x'));
        for (Uint32 at = 7; at + 1 < length; at += 169)
        {
            units[at] = Char16('&');
            units[at + 1] = Char16(0xD83D);
            if (at + 2 < length)
                units[at + 2] = Char16(0xDE00);
        }
        const String text(units.data(), length);
        SCOPED_TRACE(length);
        std::string escaped;
        appendEscaped(escaped, text);
        EXPECT_EQ(escaped, escapedBytes(text));
    }
}

}  // namespace
