#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ValueText.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// The entity or character reference of a byte that is not plain; at most 6 bytes.
size_t escapedByte(char* out, unsigned char c)
{
    const char* ref;
    switch (c)
    {
        case '&':
            ref = "&amp;";
            break;
        case '<':
            ref = "&lt;";
            break;
        case '>':
            ref = "&gt;";
            break;
        case '"':
            ref = "&quot;";
            break;
        case '\'':
            ref = "&apos;";
            break;
        default:
            // Control characters: "&#N;" with N below 32.
            return static_cast<size_t>(std::snprintf(out, 8, "&#%u;", static_cast<unsigned>(c)));
    }
    const size_t n = std::strlen(ref);
    std::memcpy(out, ref, n);
    return n;
}

// Bytes one unit can take: an escaped one ("&quot;"), or 3 of UTF-8 (a surrogate pair's 4
// bytes stand for 2 units).
constexpr size_t kUnitBytes = 6;

#if defined(__SSE2__)
// Eight units at d narrowed to bytes and stored at p (which has room for 8); returns how many
// of them lead as plain ASCII (every unit below 0x80, no control character, and, when
// `escape`, none of the five specials), 8 when all are. The scalar path takes the rest.
inline unsigned plainAsciiRun8(const Pegasus::Char16* d, char* p, bool escape)
{
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d));
    // Units of 0x100 and above saturate to 0xFF or 0 and so fail the checks below.
    const __m128i bytes = _mm_packus_epi16(units, units);
    // Signed: bytes of 0x80 and above are negative and count as below 0x20 too.
    __m128i bad = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
    if (escape)
    {
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('>')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')));
        bad = _mm_or_si128(bad, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\'')));
    }
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), bytes);
    const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(bad)) & 0xFFu;
    return mask == 0 ? 8u : static_cast<unsigned>(__builtin_ctz(mask));
}
#endif

// Appends the UTF-8 form of `text` as String::getCString() encodes it (a lone surrogate as
// its own 3-byte sequence) up to its first NUL, where that C string would end; escaped
// when `escape`. Straight from the UTF-16 units into the buffer, a slice at a time; runs
// of plain ASCII eight units at a time where the processor allows.
void appendUtf8Text(XmlBuffer& out, const Pegasus::String& text, bool escape)
{
    const Pegasus::Char16* d = text.getChar16Data();
    const Pegasus::Uint32 n = text.size();
    Pegasus::Uint32 i = 0;
    while (i < n)
    {
        const Pegasus::Uint32 slice =
            std::min<Pegasus::Uint32>(n - i, XmlBuffer::kRoom / kUnitBytes);
        char* const start = out.room(slice * kUnitBytes);
        char* p = start;
        const Pegasus::Uint32 end = i + slice;
        while (i < end)
        {
#if defined(__SSE2__)
            if (end - i >= 8)
            {
                const unsigned plain = plainAsciiRun8(d + i, p, escape);
                p += plain;
                i += plain;
                if (plain == 8)
                    continue;
            }
#endif
            Pegasus::Uint32 cp = Pegasus::Uint16(d[i]);
            ++i;
            if (cp < 0x80)
            {
                if (cp == 0)
                {
                    out.commit(static_cast<size_t>(p - start));
                    return;
                }
                if (!escape || isPlain(static_cast<unsigned char>(cp)))
                    *p++ = static_cast<char>(cp);
                else
                    p += escapedByte(p, static_cast<unsigned char>(cp));
                continue;
            }
            if (cp >= 0xD800 && cp <= 0xDBFF && i < n && Pegasus::Uint16(d[i]) >= 0xDC00 &&
                Pegasus::Uint16(d[i]) <= 0xDFFF)
            {
                cp = 0x10000 + ((cp - 0xD800) << 10) + (Pegasus::Uint16(d[i]) - 0xDC00);
                ++i;
            }
            if (cp < 0x800)
            {
                *p++ = static_cast<char>(0xC0 | (cp >> 6));
                *p++ = static_cast<char>(0x80 | (cp & 0x3F));
            }
            else if (cp < 0x10000)
            {
                *p++ = static_cast<char>(0xE0 | (cp >> 12));
                *p++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
                *p++ = static_cast<char>(0x80 | (cp & 0x3F));
            }
            else
            {
                *p++ = static_cast<char>(0xF0 | (cp >> 18));
                *p++ = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
                *p++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
                *p++ = static_cast<char>(0x80 | (cp & 0x3F));
            }
        }
        out.commit(static_cast<size_t>(p - start));
    }
}

// ' NAME="' in one append.
void attributeStart(XmlBuffer& out, std::string_view name)
{
    out += ' ';
    out += name;
    out += "=\"";
}

}  // namespace

void appendEscaped(XmlBuffer& out, const char* text, size_t length)
{
    // Runs of plain bytes are copied whole.
    size_t run = 0;
    for (size_t i = 0; i < length; ++i)
    {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (isPlain(c))
            continue;
        out.append(text + run, i - run);
        out.commit(escapedByte(out.room(kUnitBytes), c));
        run = i + 1;
    }
    out.append(text + run, length - run);
}

void appendEscaped(XmlBuffer& out, const Pegasus::String& text)
{
    appendUtf8Text(out, text, true);
}

void appendEscaped(std::string& out, const char* text, size_t length)
{
    XmlBuffer buffer(out);
    appendEscaped(buffer, text, length);
}

void appendEscaped(std::string& out, const std::string& text)
{
    appendEscaped(out, text.data(), text.size());
}

void appendEscaped(std::string& out, const Pegasus::String& text)
{
    XmlBuffer buffer(out);
    appendUtf8Text(buffer, text, true);
}

void appendAttribute(XmlBuffer& out, std::string_view name, const Pegasus::String& value)
{
    attributeStart(out, name);
    appendUtf8Text(out, value, true);
    out += '"';
}

void appendAttribute(XmlBuffer& out, std::string_view name, const char* value)
{
    attributeStart(out, name);
    appendEscaped(out, value, std::char_traits<char>::length(value));
    out += '"';
}

void appendUtf8(std::string& out, const Pegasus::String& text)
{
    XmlBuffer buffer(out);
    appendUtf8Text(buffer, text, false);
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
