// String's conversions from and to UTF-8: texts that are not UTF-8 are refused with the
// runtime's description of the bad bytes.
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Describes the bad bytes as the original runtime does: up to 40 preceding
// bytes as they are, then the offending byte and up to 10 following ones
// in hex (" 0xFF").
[[noreturn]] void _throwBadUtf8(size_t index, const char* text, size_t n)
{
    size_t clear = index < 40 ? index : 40;
    size_t rest = n - index - 1;
    size_t hex = rest < 10 ? rest : 10;
    std::string detail(text + index - clear, clear);
    for (size_t j = 0; j <= hex; ++j)
    {
        char buf[8];
        snprintf(
            buf, sizeof(buf), " 0x%02X", unsigned(static_cast<unsigned char>(text[index + j])));
        detail += buf;
    }
    char head[96];
    snprintf(
        head, sizeof(head),
        "The byte sequence starting at index %u is not valid UTF-8 encoding: ", unsigned(index));
    throw Exception(String(head) + String(detail.c_str()));
}

// Decodes n bytes of UTF-8 into out (which has room for n units) and
// returns the number of units written. Surrogate code points and the
// non-characters U+xFFFE/U+xFFFF of the basic plane become U+FFFD.
size_t _decodeUtf8(Char16* out, const char* text, size_t n)
{
    const unsigned char* q = reinterpret_cast<const unsigned char*>(text);
    size_t i = 0;
    Char16* p = out;
    while (i < n)
    {
        unsigned char c = q[i];
        if (c < 0x80)
        {
            *p++ = Char16(c);
            ++i;
            continue;
        }
        size_t len = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
        if (c < 0xC2 || c > 0xF4 || len > n - i)
            _throwBadUtf8(i, text, n);
        for (size_t k = 1; k < len; ++k)
        {
            if (q[i + k] < 0x80 || q[i + k] > 0xBF)
                _throwBadUtf8(i, text, n);
        }
        unsigned char c1 = q[i + 1];
        if ((c == 0xE0 && c1 < 0xA0) || (c == 0xF0 && c1 < 0x90) || (c == 0xF4 && c1 > 0x8F))
        {
            _throwBadUtf8(i, text, n);
        }
        Uint32 cp = len == 2 ? (c & 0x1Fu) : len == 3 ? (c & 0x0Fu) : (c & 0x07u);
        for (size_t k = 1; k < len; ++k)
            cp = (cp << 6) | (q[i + k] & 0x3Fu);
        i += len;
        if (cp <= 0xFFFF)
        {
            bool surrogate = cp >= 0xD800 && cp <= 0xDFFF;
            *p++ = Char16(Uint16((surrogate || (cp & 0xFFFE) == 0xFFFE) ? 0xFFFD : cp));
        }
        else
        {
            cp -= 0x10000;
            *p++ = Char16(Uint16(0xD800 + (cp >> 10)));
            *p++ = Char16(Uint16(0xDC00 + (cp & 0x3FF)));
        }
    }
    return size_t(p - out);
}

// UTF-16 to UTF-8 into out (nullptr: only count); returns the byte count.
// A lone surrogate is encoded as its own 3-byte sequence.
size_t _encodeUtf8(char* out, const Char16* s, Uint32 n)
{
    size_t k = 0;
    for (Uint32 i = 0; i < n; ++i)
    {
        Uint32 cp = Uint16(s[i]);
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && Uint16(s[i + 1]) >= 0xDC00 &&
            Uint16(s[i + 1]) <= 0xDFFF)
        {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (Uint16(s[i + 1]) - 0xDC00);
            ++i;
        }
        if (cp < 0x80)
        {
            if (out)
                out[k] = char(cp);
            k += 1;
        }
        else if (cp < 0x800)
        {
            if (out)
            {
                out[k] = char(0xC0 | (cp >> 6));
                out[k + 1] = char(0x80 | (cp & 0x3F));
            }
            k += 2;
        }
        else if (cp < 0x10000)
        {
            if (out)
            {
                out[k] = char(0xE0 | (cp >> 12));
                out[k + 1] = char(0x80 | ((cp >> 6) & 0x3F));
                out[k + 2] = char(0x80 | (cp & 0x3F));
            }
            k += 3;
        }
        else
        {
            if (out)
            {
                out[k] = char(0xF0 | (cp >> 18));
                out[k + 1] = char(0x80 | ((cp >> 12) & 0x3F));
                out[k + 2] = char(0x80 | ((cp >> 6) & 0x3F));
                out[k + 3] = char(0x80 | (cp & 0x3F));
            }
            k += 4;
        }
    }
    return k;
}

// The count of leading bytes of str below 0x80; sixteen at a time where the processor allows.
size_t _asciiPrefix(const char* str, size_t n)
{
    size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16)
    {
        const unsigned high = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(str + i))));
        if (high != 0)
            return i + static_cast<size_t>(__builtin_ctz(high));
    }
#endif
    while (i < n && !(static_cast<unsigned char>(str[i]) & 0x80))
        ++i;
    return i;
}

// Widens n bytes below 0x80 into out; sixteen at a time where the processor allows.
void _widenAscii(Char16* out, const char* str, size_t n)
{
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; i + 16 <= n; i += 16)
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(str + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8), _mm_unpackhi_epi8(bytes, zero));
    }
#endif
    for (; i < n; ++i)
        out[i] = Char16(static_cast<unsigned char>(str[i]));
}

}  // namespace

CString String::getCString() const
{
    size_t n = _encodeUtf8(nullptr, _rep->data(), _rep->size);
    char* buf = new char[n + 1];
    _encodeUtf8(buf, _rep->data(), _rep->size);
    buf[n] = '\0';
    return CString(buf);
}

void String::_appendUtf8(const char* str, size_t n)
{
    if (n == 0)
        return;
    if (n >= 0xFFFFFFFFu - _rep->size)
        throw std::bad_alloc();
    // Nothing is allocated before the text is known to be good: a constructor that throws
    // here leaves nothing behind.
    if (_asciiPrefix(str, n) == n)
    {
        _reserve(_rep->size + Uint32(n));
        _widenAscii(_rep->data() + _rep->size, str, n);
        _rep->size += Uint32(n);
        _rep->data()[_rep->size] = 0;
        return;
    }
    // Decode first so that a bad text leaves this string unchanged.
    std::vector<Char16> units(n);
    size_t m = _decodeUtf8(units.data(), str, n);
    append(units.data(), Uint32(m));
}

PEGASUS_NAMESPACE_END
