#include "ValueText.h"

#include "XmlText.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ObjectReader.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <strings.h>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

struct TypeName
{
    CIMType type;
    std::string_view name;  // a literal: also null-terminated
};

const TypeName kTypeNames[] = {
    {CIMTYPE_BOOLEAN, "boolean"}, {CIMTYPE_UINT8, "uint8"},       {CIMTYPE_SINT8, "sint8"},
    {CIMTYPE_UINT16, "uint16"},   {CIMTYPE_SINT16, "sint16"},     {CIMTYPE_UINT32, "uint32"},
    {CIMTYPE_SINT32, "sint32"},   {CIMTYPE_UINT64, "uint64"},     {CIMTYPE_SINT64, "sint64"},
    {CIMTYPE_REAL32, "real32"},   {CIMTYPE_REAL64, "real64"},     {CIMTYPE_CHAR16, "char16"},
    {CIMTYPE_STRING, "string"},   {CIMTYPE_DATETIME, "datetime"}, {CIMTYPE_REFERENCE, "reference"},
};

[[noreturn]] void invalid(const TextOrigin& where, const std::string& what, const std::string& text)
{
    std::string msg = where.str() + ": " + what + " \"" + text + "\"";
    throw CIMException(CIM_ERR_INVALID_PARAMETER, String(msg.c_str()));
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

// Decimal or 0x-hexadecimal integer with optional sign, checked against [lo, hi].
template <class T>
T parseInteger(const std::string& raw, const TextOrigin& where, const char* typeName)
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

double parseReal(const std::string& raw, const TextOrigin& where, const char* typeName)
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

template <class Out>
void appendReal(Out& out, double v)
{
    if (std::isnan(v))
    {
        out += "NaN";
        return;
    }
    if (std::isinf(v))
    {
        out += v > 0 ? "INF" : "-INF";
        return;
    }
    char buf[40];
    const int n = std::snprintf(buf, sizeof buf, "%.16e", v);
    out.append(buf, static_cast<size_t>(n));
}

// Plain decimal, as printf's %lld / %llu writes it, without printf's cost per number.
template <class Out, class T>
void appendInteger(Out& out, T v)
{
    char buf[32];
    const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, static_cast<size_t>(r.ptr - buf));
}

template <class Out>
void appendChar16(Out& out, Char16 c)
{
    Char16 units[2] = {c, Char16(0)};
    const std::string text = toUtf8(String(units, 1));
    out.append(text.data(), text.size());
}

// As fromUtf8, describing the origin only when the text is not UTF-8.
String textValue(const std::string& text, const TextOrigin& where)
{
    try
    {
        return String(text.c_str());
    }
    catch (const Exception&)
    {
        throwNotUtf8(where.str().c_str());
    }
}

// One simple-type element to text.
template <class Out>
void appendOne(Out& out, const Boolean& v)
{
    if (v)
        out.append("TRUE", 4);
    else
        out.append("FALSE", 5);
}
template <class Out>
void appendOne(Out& out, const Uint8& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Sint8& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Uint16& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Sint16& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Uint32& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Sint32& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Uint64& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Sint64& v)
{
    appendInteger(out, v);
}
template <class Out>
void appendOne(Out& out, const Real32& v)
{
    appendReal(out, v);
}
template <class Out>
void appendOne(Out& out, const Real64& v)
{
    appendReal(out, v);
}
template <class Out>
void appendOne(Out& out, const Char16& v)
{
    appendChar16(out, v);
}
template <class Out>
void appendOne(Out& out, const String& v)
{
    const std::string text = toUtf8(v);
    out.append(text.data(), text.size());
}
template <class Out>
void appendOne(Out& out, const CIMDateTime& v)
{
    const std::string text = toUtf8(v.toString());
    out.append(text.data(), text.size());
}

template <class T>
void appendScalarAs(std::string& out, const CIMValue& value)
{
    T v;
    value.get(v);
    appendOne(out, v);
}

template <class T>
void appendArrayAs(std::vector<std::string>& out, const CIMValue& value)
{
    Array<T> a;
    value.get(a);
    for (Uint32 i = 0; i < a.size(); ++i)
    {
        std::string s;
        appendOne(s, a[i]);
        out.push_back(std::move(s));
    }
}

// One element's text as it stands inside VALUE: escaped where the type's text can need it.
template <class T>
void appendElementText(XmlBuffer& out, const T& v)
{
    // Numbers and booleans: digits, signs, letters of TRUE/FALSE/NaN/INF and "e+" only.
    appendOne(out, v);
}
template <>
void appendElementText(XmlBuffer& out, const Char16& v)
{
    std::string text;
    appendChar16(text, v);
    appendEscaped(out, text.data(), text.size());
}
template <>
void appendElementText(XmlBuffer& out, const String& v)
{
    appendEscaped(out, v);
}
template <>
void appendElementText(XmlBuffer& out, const CIMDateTime& v)
{
    appendEscaped(out, v.toString());
}

// A scalar of type T as the value holds it: read in place for texts, copied otherwise.
template <class T>
struct Scalar
{
    explicit Scalar(const CIMValue& value) { value.get(v); }
    const T& get() const { return v; }
    T v;
};
template <>
struct Scalar<String>
{
    explicit Scalar(const CIMValue& value) : v(ObjectReader::stringOf(value)) {}
    const String& get() const { return v; }
    const String& v;
};

// The value must be non-null and of type T (the caller switched on its type).
template <class T>
void appendValueAs(XmlBuffer& out, const CIMValue& value)
{
    if (!value.isArray())
    {
        out += "<VALUE>";
        appendElementText(out, Scalar<T>(value).get());
        out += "</VALUE>";
        return;
    }
    const Array<T>& a = ObjectReader::arrayOf<T>(value);
    out += "<VALUE.ARRAY>";
    for (Uint32 i = 0; i < a.size(); ++i)
    {
        out += "<VALUE>";
        appendElementText(out, a[i]);
        out += "</VALUE>";
    }
    out += "</VALUE.ARRAY>";
}

// Text -> one element of type T.
template <class T>
T parseOne(const std::string& text, const TextOrigin& where);
template <>
Boolean parseOne(const std::string& text, const TextOrigin& where)
{
    bool b;
    if (!parseBooleanText(text, b))
        invalid(where, "not a valid boolean value (TRUE or FALSE)", text);
    return b;
}
template <>
Uint8 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Uint8>(t, w, "uint8");
}
template <>
Sint8 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Sint8>(t, w, "sint8");
}
template <>
Uint16 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Uint16>(t, w, "uint16");
}
template <>
Sint16 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Sint16>(t, w, "sint16");
}
template <>
Uint32 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Uint32>(t, w, "uint32");
}
template <>
Sint32 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Sint32>(t, w, "sint32");
}
template <>
Uint64 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Uint64>(t, w, "uint64");
}
template <>
Sint64 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseInteger<Sint64>(t, w, "sint64");
}
template <>
Real32 parseOne(const std::string& t, const TextOrigin& w)
{
    const double d = parseReal(t, w, "real32");
    if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max())
        invalid(w, "real32 value out of range", t);
    return static_cast<Real32>(d);
}
template <>
Real64 parseOne(const std::string& t, const TextOrigin& w)
{
    return parseReal(t, w, "real64");
}
template <>
Char16 parseOne(const std::string& t, const TextOrigin& w)
{
    const String s = textValue(t, w);
    if (s.size() != 1)
        invalid(w, "not a single char16 character", t);
    return s[0];
}
template <>
String parseOne(const std::string& t, const TextOrigin& w)
{
    return textValue(t, w);
}
template <>
CIMDateTime parseOne(const std::string& t, const TextOrigin& w)
{
    try
    {
        return CIMDateTime(String(trimmed(t).c_str()));
    }
    catch (const Exception& e)
    {
        invalid(w, "not a valid datetime value (" + toUtf8(e.getMessage()) + ")", t);
    }
}

template <class T>
CIMValue parseArrayAs(const std::vector<std::string>& texts, const TextOrigin& where)
{
    Array<T> a;
    a.reserveCapacity(static_cast<Uint32>(texts.size()));
    for (const std::string& t : texts)
        a.append(parseOne<T>(t, where));
    return CIMValue(a);
}

}  // namespace

const char* typeAttribute(CIMType type)
{
    for (const TypeName& t : kTypeNames)
        if (t.type == type)
            return t.name.data();
    return nullptr;
}

bool parseTypeAttribute(const char* text, CIMType& type)
{
    // Read for every property: length and last letter tell the names apart, so at most one
    // full comparison is made.
    const std::string_view given(text);
    if (given.empty())
        return false;
    for (const TypeName& t : kTypeNames)
    {
        if (t.name.size() == given.size() && t.name.back() == given.back() && t.name == given)
        {
            type = t.type;
            return true;
        }
    }
    return false;
}

bool parseBooleanText(const std::string& text, bool& result)
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

// clang-format off
#define QEL_CIMXML_SIMPLE_TYPES(X) \
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

void appendScalarText(std::string& out, const CIMValue& value)
{
    switch (value.getType())
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        appendScalarAs<T>(out, value);                                                             \
        return;
        QEL_CIMXML_SIMPLE_TYPES(X)
#undef X
        default:
            throw CIMException(CIM_ERR_FAILED, "value of a non-simple type written as text");
    }
}

void appendArrayTexts(std::vector<std::string>& out, const CIMValue& value)
{
    switch (value.getType())
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        appendArrayAs<T>(out, value);                                                              \
        return;
        QEL_CIMXML_SIMPLE_TYPES(X)
#undef X
        default:
            throw CIMException(CIM_ERR_FAILED, "array of a non-simple type written as text");
    }
}

void appendValueElements(XmlBuffer& out, const CIMValue& value)
{
    switch (value.getType())
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        appendValueAs<T>(out, value);                                                              \
        return;
        QEL_CIMXML_SIMPLE_TYPES(X)
#undef X
        default:
            throw CIMException(CIM_ERR_FAILED, "value of a non-simple type written as text");
    }
}

CIMValue parseScalar(CIMType type, const std::string& text, const TextOrigin& where)
{
    switch (type)
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        return CIMValue(parseOne<T>(text, where));
        QEL_CIMXML_SIMPLE_TYPES(X)
#undef X
        default:
            invalid(where, "a value of this type cannot be given as text", text);
    }
}

CIMValue parseArray(CIMType type, const std::vector<std::string>& texts, const TextOrigin& where)
{
    switch (type)
    {
#define X(tag, T)                                                                                  \
    case tag:                                                                                      \
        return parseArrayAs<T>(texts, where);
        QEL_CIMXML_SIMPLE_TYPES(X)
#undef X
        default:
            invalid(where, "an array of this type cannot be given as text", "");
    }
}

}  // namespace cimxml
}  // namespace qel
