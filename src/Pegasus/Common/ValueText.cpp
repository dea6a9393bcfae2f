#include <Pegasus/Common/ValueText.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <strings.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

typedef ValueText::Origin Origin;

[[noreturn]] void invalid(const Origin& where, const std::string& what, const std::string& text)
{
    const std::string msg = where.str() + ": " + what + " \"" + text + "\"";
    throw CIMException(CIM_ERR_INVALID_PARAMETER, ValueText::messageText(msg));
}

std::string trimmed(const std::string& text)
{
    const char* ws = " \t\r\n";
    size_t b = text.find_first_not_of(ws);
    if (b == std::string::npos)
        return std::string();
    size_t e = text.find_last_not_of(ws);
    return text.substr(b, e - b + 1);
}

// Decimal or 0x-hexadecimal integer with optional sign, checked against the range of T.
template <class T>
T parseInteger(const std::string& raw, const Origin& where, const char* typeName)
{
    const std::string text = trimmed(raw);
    const auto what = [typeName] { return std::string("not a valid ") + typeName + " value"; };
    size_t i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    {
        negative = text[i] == '-';
        ++i;
    }
    int base = 10;
    if (text.size() >= i + 2 && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X'))
    {
        base = 16;
        i += 2;
    }
    if (i >= text.size())
        invalid(where, what(), raw);
    unsigned long long magnitude = 0;
    for (; i < text.size(); ++i)
    {
        const char c = text[i];
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (base == 16 && c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            invalid(where, what(), raw);
        if (magnitude > (std::numeric_limits<unsigned long long>::max() - digit) / base)
            invalid(where, std::string(typeName) + " value out of range", raw);
        magnitude = magnitude * base + digit;
    }
    if (std::numeric_limits<T>::is_signed)
    {
        const unsigned long long maxPos =
            static_cast<unsigned long long>(std::numeric_limits<T>::max());
        if (negative)
        {
            if (magnitude > maxPos + 1)
                invalid(where, std::string(typeName) + " value out of range", raw);
            if (magnitude == maxPos + 1)
                return std::numeric_limits<T>::min();
            return static_cast<T>(-static_cast<long long>(magnitude));
        }
        if (magnitude > maxPos)
            invalid(where, std::string(typeName) + " value out of range", raw);
        return static_cast<T>(magnitude);
    }
    if (negative && magnitude != 0)
        invalid(where, std::string(typeName) + " value out of range", raw);
    if (magnitude > static_cast<unsigned long long>(std::numeric_limits<T>::max()))
        invalid(where, std::string(typeName) + " value out of range", raw);
    return static_cast<T>(magnitude);
}

double parseReal(const std::string& raw, const Origin& where, const char* typeName)
{
    const std::string text = trimmed(raw);
    const auto what = [typeName] { return std::string("not a valid ") + typeName + " value"; };
    if (text == "NaN")
        return std::numeric_limits<double>::quiet_NaN();
    if (text == "INF" || text == "+INF")
        return std::numeric_limits<double>::infinity();
    if (text == "-INF")
        return -std::numeric_limits<double>::infinity();
    // strtod also takes hex floats, "inf" and "nan" spellings; only plain decimal forms pass.
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos)
        invalid(where, what(), raw);
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0')
        invalid(where, what(), raw);
    if (errno == ERANGE && std::isinf(v))
        invalid(where, std::string(typeName) + " value out of range", raw);
    return v;
}

// A String from UTF-8 text, describing the origin only when the text is not UTF-8.
String textValue(const std::string& text, const Origin& where)
{
    try
    {
        return String(text.c_str());
    }
    catch (const Exception&)
    {
        ValueText::throwNotUtf8(where.str().c_str());
    }
}

// Text -> one element of type T.
template <class T>
T parseOne(const std::string& text, const Origin& where);
template <>
Boolean parseOne(const std::string& text, const Origin& where)
{
    bool b;
    if (!ValueText::parseBoolean(text, b))
        invalid(where, "not a valid boolean value (TRUE or FALSE)", text);
    return b;
}
template <>
Uint8 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Uint8>(t, w, "uint8");
}
template <>
Sint8 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Sint8>(t, w, "sint8");
}
template <>
Uint16 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Uint16>(t, w, "uint16");
}
template <>
Sint16 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Sint16>(t, w, "sint16");
}
template <>
Uint32 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Uint32>(t, w, "uint32");
}
template <>
Sint32 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Sint32>(t, w, "sint32");
}
template <>
Uint64 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Uint64>(t, w, "uint64");
}
template <>
Sint64 parseOne(const std::string& t, const Origin& w)
{
    return parseInteger<Sint64>(t, w, "sint64");
}
template <>
Real32 parseOne(const std::string& t, const Origin& w)
{
    const double d = parseReal(t, w, "real32");
    if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max())
        invalid(w, "real32 value out of range", t);
    return static_cast<Real32>(d);
}
template <>
Real64 parseOne(const std::string& t, const Origin& w)
{
    return parseReal(t, w, "real64");
}
template <>
Char16 parseOne(const std::string& t, const Origin& w)
{
    const String s = textValue(t, w);
    if (s.size() != 1)
        invalid(w, "not a single char16 character", t);
    return s[0];
}
template <>
String parseOne(const std::string& t, const Origin& w)
{
    return textValue(t, w);
}
template <>
CIMDateTime parseOne(const std::string& t, const Origin& w)
{
    try
    {
        return CIMDateTime(String(trimmed(t).c_str()));
    }
    catch (const Exception& e)
    {
        const std::string reason = static_cast<const char*>(e.getMessage().getCString());
        invalid(w, "not a valid datetime value (" + reason + ")", t);
    }
}

template <class T>
CIMValue parseArrayAs(const std::vector<std::string>& texts, const Origin& where)
{
    Array<T> a;
    a.reserveCapacity(static_cast<Uint32>(texts.size()));
    for (const std::string& t : texts)
        a.append(parseOne<T>(t, where));
    return CIMValue(a);
}

}  // namespace

bool ValueText::parseBoolean(const std::string& text, bool& result)
{
    const std::string t = trimmed(text);
    if (strcasecmp(t.c_str(), "true") == 0)
    {
        result = true;
        return true;
    }
    if (strcasecmp(t.c_str(), "false") == 0)
    {
        result = false;
        return true;
    }
    return false;
}

String ValueText::messageText(const std::string& bytes)
{
    try
    {
        return String(bytes.c_str());
    }
    catch (const Exception&)
    {
        static const char hex[] = "0123456789ABCDEF";
        std::string escaped;
        for (unsigned char c : bytes)
        {
            if (c < 0x80)
                escaped += static_cast<char>(c);
            else
                escaped += std::string("\\x") + hex[c >> 4] + hex[c & 15];
        }
        return String(escaped.c_str());
    }
}

void ValueText::throwNotUtf8(const char* where)
{
    throw CIMException(
        CIM_ERR_INVALID_PARAMETER, String("text of ") + where + " is not valid UTF-8");
}

// clang-format off
#define PEGASUS_VALUETEXT_SIMPLE_TYPES(X) \
    X(CIMTYPE_BOOLEAN, Boolean) \
    X(CIMTYPE_UINT8, Uint8) \
    X(CIMTYPE_SINT8, Sint8) \
    X(CIMTYPE_UINT16, Uint16) \
    X(CIMTYPE_SINT16, Sint16) \
    X(CIMTYPE_UINT32, Uint32) \
    X(CIMTYPE_SINT32, Sint32) \
    X(CIMTYPE_UINT64, Uint64) \
    X(CIMTYPE_SINT64, Sint64) \
    X(CIMTYPE_REAL32, Real32) \
    X(CIMTYPE_REAL64, Real64) \
    X(CIMTYPE_CHAR16, Char16) \
    X(CIMTYPE_STRING, String) \
    X(CIMTYPE_DATETIME, CIMDateTime)
// clang-format on

CIMValue ValueText::parseScalar(CIMType type, const std::string& text, const Origin& where)
{
    switch (type)
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        return CIMValue(parseOne<T>(text, where));
        PEGASUS_VALUETEXT_SIMPLE_TYPES(X)
#undef X
        default:
            invalid(where, "a value of this type cannot be given as text", text);
    }
}

CIMValue
ValueText::parseArray(CIMType type, const std::vector<std::string>& texts, const Origin& where)
{
    switch (type)
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        return parseArrayAs<T>(texts, where);
        PEGASUS_VALUETEXT_SIMPLE_TYPES(X)
#undef X
        default:
            invalid(where, "an array of this type cannot be given as text", "");
    }
}

#undef PEGASUS_VALUETEXT_SIMPLE_TYPES

PEGASUS_NAMESPACE_END
