#include <Pegasus/Common/StringConversion.h>

#include <cerrno>
#include <cstdlib>

PEGASUS_NAMESPACE_BEGIN

namespace
{
inline bool _isDigit(char c)
{
    return c >= '0' && c <= '9';
}

inline int _hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
}  // namespace

Boolean
StringConversion::decimalStringToUint64(const char* text, Uint64& x, Boolean allowLeadingZeros)
{
    x = 0;
    if (!text || !*text)
        return false;
    if (*text == '0' && !allowLeadingZeros)
        return text[1] == '\0';
    const Uint64 max = ~Uint64(0);
    for (const char* p = text; *p; ++p)
    {
        if (!_isDigit(*p))
            return false;
        Uint64 digit = Uint64(*p - '0');
        if (x > max / 10 || max - 10 * x < digit)
            return false;
        x = 10 * x + digit;
    }
    return true;
}

Boolean StringConversion::hexStringToUint64(const char* text, Uint64& x)
{
    x = 0;
    if (!text || text[0] != '0' || (text[1] != 'x' && text[1] != 'X') || !text[2])
        return false;
    for (const char* p = text + 2; *p; ++p)
    {
        int v = _hexValue(*p);
        if (v < 0 || (x >> 60) != 0)
            return false;
        x = (x << 4) | Uint64(v);
    }
    return true;
}

Boolean StringConversion::stringToUnsignedInteger(const char* text, Uint64& x)
{
    return decimalStringToUint64(text, x) || hexStringToUint64(text, x);
}

Boolean StringConversion::stringToSignedInteger(const char* text, Sint64& x)
{
    x = 0;
    if (!text)
        return false;
    bool negative = *text == '-';
    if (negative || *text == '+')
        ++text;
    Uint64 u;
    if (!stringToUnsignedInteger(text, u))
        return false;
    const Uint64 limit = Uint64(1) << 63;
    if (negative)
    {
        if (u > limit)
            return false;
        x = u == limit ? Sint64(-9223372036854775807LL - 1) : -Sint64(u);
    }
    else
    {
        if (u >= limit)
            return false;
        x = Sint64(u);
    }
    return true;
}

Boolean StringConversion::stringToReal64(const char* text, Real64& x)
{
    const char* p = text;
    if (!p || !*p)
        return false;
    if (*p == '+' || *p == '-')
        ++p;
    while (_isDigit(*p))
        ++p;
    if (*p++ != '.')
        return false;
    if (!_isDigit(*p++))
        return false;
    while (_isDigit(*p))
        ++p;
    if (*p)
    {
        if (*p != 'e' && *p != 'E')
            return false;
        ++p;
        if (*p == '+' || *p == '-')
            ++p;
        if (!_isDigit(*p++))
            return false;
        while (_isDigit(*p))
            ++p;
    }
    if (*p)
        return false;
    char* end;
    errno = 0;
    x = strtod(text, &end);
    return !*end && errno != ERANGE;
}

Boolean StringConversion::checkUintBounds(Uint64 x, CIMType type)
{
    switch (type)
    {
        case CIMTYPE_UINT8:
            return x <= 0xFFu;
        case CIMTYPE_UINT16:
            return x <= 0xFFFFu;
        case CIMTYPE_UINT32:
            return x <= 0xFFFFFFFFu;
        case CIMTYPE_UINT64:
            return true;
        default:
            return false;
    }
}

Boolean StringConversion::checkSintBounds(Sint64 x, CIMType type)
{
    switch (type)
    {
        case CIMTYPE_SINT8:
            return x >= -128 && x <= 127;
        case CIMTYPE_SINT16:
            return x >= -32768 && x <= 32767;
        case CIMTYPE_SINT32:
            return x >= -2147483647LL - 1 && x <= 2147483647LL;
        case CIMTYPE_SINT64:
            return true;
        default:
            return false;
    }
}

PEGASUS_NAMESPACE_END
