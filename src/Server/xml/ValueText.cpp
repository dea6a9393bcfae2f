#include "ValueText.h"

#include "XmlText.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ObjectReader.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

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
    char text[26];
    v.toChars(text);
    out.append(text, 25);
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
    // Numbers and booleans: digits, signs, letters of TRUE/FALSE/NaN/INF and "e+" only;
    // date-times: digits, '.', '+', '-', ':' and '*'. Nothing to escape.
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

}  // namespace cimxml
}  // namespace qel
