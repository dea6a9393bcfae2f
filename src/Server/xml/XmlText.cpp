#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ValueText.h>

#include <cstdio>
#include <cstring>

namespace qel
{
namespace cimxml
{
namespace
{

// Bytes written as they are: everything but the five specials and the control characters
// XML 1.0 cannot carry.
inline bool isPlain(unsigned char c)
{
    if (c < 0x20)
        return c == '\t' || c == '\n' || c == '\r';
    return c != '&' && c != '<' && c != '>' && c != '"' && c != '\'';
}

void appendEscapedByte(std::string& out, unsigned char c)
{
    switch (c)
    {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
        {
            char ref[8];
            std::snprintf(ref, sizeof ref, "&#%u;", static_cast<unsigned>(c));
            out += ref;
        }
    }
}

// Appends the UTF-8 form of `text` as String::getCString() encodes it (a lone surrogate as
// its own 3-byte sequence) up to its first NUL, where that C string would end; escaped
// when `escape`. Straight from the UTF-16 units, through a small buffer: no temporary
// copy of the text and no byte-by-byte growth of `out`.
void appendUtf8Text(std::string& out, const Pegasus::String& text, bool escape)
{
    char buf[256];
    size_t used = 0;
    const Pegasus::Char16* d = text.getChar16Data();
    for (Pegasus::Uint32 i = 0, n = text.size(); i < n; ++i)
    {
        if (used > sizeof buf - 4)
        {
            out.append(buf, used);
            used = 0;
        }
        Pegasus::Uint32 cp = Pegasus::Uint16(d[i]);
        if (cp == 0)
            break;
        if (cp < 0x80)
        {
            if (escape && !isPlain(static_cast<unsigned char>(cp)))
            {
                out.append(buf, used);
                used = 0;
                appendEscapedByte(out, static_cast<unsigned char>(cp));
            }
            else
            {
                buf[used++] = static_cast<char>(cp);
            }
            continue;
        }
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && Pegasus::Uint16(d[i + 1]) >= 0xDC00 &&
            Pegasus::Uint16(d[i + 1]) <= 0xDFFF)
        {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (Pegasus::Uint16(d[i + 1]) - 0xDC00);
            ++i;
        }
        if (cp < 0x800)
        {
            buf[used++] = static_cast<char>(0xC0 | (cp >> 6));
            buf[used++] = static_cast<char>(0x80 | (cp & 0x3F));
        }
        else if (cp < 0x10000)
        {
            buf[used++] = static_cast<char>(0xE0 | (cp >> 12));
            buf[used++] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            buf[used++] = static_cast<char>(0x80 | (cp & 0x3F));
        }
        else
        {
            buf[used++] = static_cast<char>(0xF0 | (cp >> 18));
            buf[used++] = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            buf[used++] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            buf[used++] = static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    out.append(buf, used);
}

}  // namespace

void appendEscaped(std::string& out, const char* text, size_t length)
{
    // Runs of plain bytes are copied whole.
    size_t run = 0;
    for (size_t i = 0; i < length; ++i)
    {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (isPlain(c))
            continue;
        out.append(text + run, i - run);
        appendEscapedByte(out, c);
        run = i + 1;
    }
    out.append(text + run, length - run);
}

void appendEscaped(std::string& out, const std::string& text)
{
    appendEscaped(out, text.data(), text.size());
}

void appendEscaped(std::string& out, const Pegasus::String& text)
{
    appendUtf8Text(out, text, true);
}

void appendUtf8(std::string& out, const Pegasus::String& text)
{
    appendUtf8Text(out, text, false);
}

std::string toUtf8(const Pegasus::String& text)
{
    std::string out;
    appendUtf8(out, text);
    return out;
}

Pegasus::String fromUtf8(const char* text, const char* where)
{
    try
    {
        return Pegasus::String(text);
    }
    catch (const Pegasus::Exception&)
    {
        throwNotUtf8(where);
    }
}

void throwNotUtf8(const char* where)
{
    Pegasus::ValueText::throwNotUtf8(where);
}

}  // namespace cimxml
}  // namespace qel
