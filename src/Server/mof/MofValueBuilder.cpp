#include "MofValueBuilder.h"

#include <cfloat>
#include <cmath>
#include <locale>
#include <sstream>
#include <vector>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Char16.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>
#include "MofError.h"
#include "MofText.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const char* literalKindName(const MofLiteral& l)
{
    switch (l.kind)
    {
        case MofLiteral::Null:
            return "null";
        case MofLiteral::Integer:
            return "an integer";
        case MofLiteral::Real:
            return "a real number";
        case MofLiteral::String:
            return "a string";
        case MofLiteral::Char:
            return "a character";
        case MofLiteral::Boolean:
            return "a boolean";
        case MofLiteral::Alias:
            return "an alias";
        case MofLiteral::Array:
            return "an array";
    }
    return "a value";
}

struct IntRange
{
    CIMType type;
    bool isSigned;
    Uint64 max;  // largest positive value
};

const IntRange intRanges[] = {
    {CIMTYPE_UINT8, false, 0xFFull},
    {CIMTYPE_SINT8, true, 0x7Full},
    {CIMTYPE_UINT16, false, 0xFFFFull},
    {CIMTYPE_SINT16, true, 0x7FFFull},
    {CIMTYPE_UINT32, false, 0xFFFFFFFFull},
    {CIMTYPE_SINT32, true, 0x7FFFFFFFull},
    {CIMTYPE_UINT64, false, 0xFFFFFFFFFFFFFFFFull},
    {CIMTYPE_SINT64, true, 0x7FFFFFFFFFFFFFFFull},
};

template <class T>
CIMValue collect(const std::vector<CIMValue>& scalars)
{
    Array<T> a;
    a.reserveCapacity(static_cast<Uint32>(scalars.size()));
    for (const CIMValue& v : scalars)
    {
        T x;
        v.get(x);
        a.append(x);
    }
    return CIMValue(a);
}

CIMValue collectArray(CIMType type, const std::vector<CIMValue>& scalars)
{
    switch (type)
    {
        case CIMTYPE_BOOLEAN:
            return collect<Boolean>(scalars);
        case CIMTYPE_UINT8:
            return collect<Uint8>(scalars);
        case CIMTYPE_SINT8:
            return collect<Sint8>(scalars);
        case CIMTYPE_UINT16:
            return collect<Uint16>(scalars);
        case CIMTYPE_SINT16:
            return collect<Sint16>(scalars);
        case CIMTYPE_UINT32:
            return collect<Uint32>(scalars);
        case CIMTYPE_SINT32:
            return collect<Sint32>(scalars);
        case CIMTYPE_UINT64:
            return collect<Uint64>(scalars);
        case CIMTYPE_SINT64:
            return collect<Sint64>(scalars);
        case CIMTYPE_REAL32:
            return collect<Real32>(scalars);
        case CIMTYPE_REAL64:
            return collect<Real64>(scalars);
        case CIMTYPE_CHAR16:
            return collect<Char16>(scalars);
        case CIMTYPE_STRING:
            return collect<String>(scalars);
        case CIMTYPE_DATETIME:
            return collect<CIMDateTime>(scalars);
        case CIMTYPE_REFERENCE:
            return collect<CIMObjectPath>(scalars);
        default:
            break;
    }
    throw TypeMismatchException();
}

}  // namespace

MofValueBuilder::MofValueBuilder(const std::string& sourceName, const AliasLookup& aliases)
    : _source(sourceName), _aliases(aliases)
{
}

void MofValueBuilder::_fail(const MofLiteral& at, const std::string& what) const
{
    throw MofError(_source, at.pos.line, at.pos.column, what);
}

void MofValueBuilder::_mismatch(const MofLiteral& at, const MofValueTarget& target) const
{
    _fail(
        at, "type mismatch: " + target.what + " is " + cimTypeToString(target.type) +
                (target.isArray ? "[]" : "") + " but the value is " + literalKindName(at));
}

CIMValue MofValueBuilder::build(const MofLiteral& literal, const MofValueTarget& target) const
{
    if (target.type == CIMTYPE_OBJECT || target.type == CIMTYPE_INSTANCE)
        _fail(literal, target.what + " has a type that MOF values cannot give");
    if (literal.kind == MofLiteral::Null)
        return CIMValue(target.type, target.isArray, target.isArray ? target.arraySize : 0);

    if (!target.isArray)
    {
        if (literal.kind == MofLiteral::Array)
            _fail(
                literal, "type mismatch: " + target.what +
                             " is not an array "
                             "but the value is an array");
        return _scalar(literal, target);
    }

    if (literal.kind != MofLiteral::Array)
    {
        _fail(
            literal, "type mismatch: " + target.what +
                         " is an array; "
                         "give its value in braces, {...}");
    }
    if (target.arraySize != 0 && literal.elements.size() != target.arraySize)
    {
        _fail(
            literal, target.what + " is an array of " + std::to_string(target.arraySize) +
                         " elements but the value has " + std::to_string(literal.elements.size()));
    }
    std::vector<CIMValue> scalars;
    scalars.reserve(literal.elements.size());
    for (const MofLiteral& e : literal.elements)
    {
        if (e.kind == MofLiteral::Null)
            _fail(e, "an element of " + target.what + " is null; array elements cannot be null");
        scalars.push_back(_scalar(e, target));
    }
    return collectArray(target.type, scalars);
}

CIMValue MofValueBuilder::_scalar(const MofLiteral& literal, const MofValueTarget& target) const
{
    switch (literal.kind)
    {
        case MofLiteral::Integer:
            return _integer(literal, target);
        case MofLiteral::Real:
            return _real(literal, target);
        case MofLiteral::String:
            return _string(literal, target);
        case MofLiteral::Char:
            if (target.type != CIMTYPE_CHAR16)
                _mismatch(literal, target);
            return CIMValue(Char16(literal.charValue));
        case MofLiteral::Boolean:
            if (target.type != CIMTYPE_BOOLEAN)
                _mismatch(literal, target);
            return CIMValue(Boolean(literal.boolValue));
        case MofLiteral::Alias:
        {
            if (target.type != CIMTYPE_REFERENCE)
                _mismatch(literal, target);
            CIMObjectPath path;
            if (!_aliases || !_aliases(literal.text, path))
                _fail(literal, "alias " + literal.text + " is not defined by an earlier instance");
            return CIMValue(path);
        }
        default:
            break;
    }
    _mismatch(literal, target);
}

CIMValue MofValueBuilder::_integer(const MofLiteral& literal, const MofValueTarget& target) const
{
    if (target.type == CIMTYPE_REAL32 || target.type == CIMTYPE_REAL64)
    {
        if (literal.overflow)
            _fail(literal, "value " + literal.text + " of " + target.what + " is too large");
        const double magnitude = static_cast<double>(literal.magnitude);
        const double v = literal.negative ? -magnitude : magnitude;
        if (target.type == CIMTYPE_REAL32)
            return CIMValue(Real32(v));
        return CIMValue(Real64(v));
    }
    const IntRange* range = 0;
    for (const IntRange& r : intRanges)
    {
        if (r.type == target.type)
            range = &r;
    }
    if (!range)
        _mismatch(literal, target);

    const bool negative = literal.negative && literal.magnitude != 0;
    // A signed type holds one more negative value than positive ones.
    const Uint64 limit = negative ? range->max + 1 : range->max;
    if (negative && !range->isSigned)
    {
        _fail(
            literal, "value " + literal.text + " of " + target.what + " is negative but " +
                         cimTypeToString(target.type) + " is unsigned");
    }
    if (literal.overflow || literal.magnitude > limit)
    {
        _fail(
            literal, "value " + literal.text + " does not fit " + cimTypeToString(target.type) +
                         " (" + target.what + ")");
    }
    const Uint64 m = literal.magnitude;
    // Two's complement of the magnitude; in range by the check above.
    const Sint64 s = negative ? static_cast<Sint64>(~m + 1) : static_cast<Sint64>(m);
    switch (target.type)
    {
        case CIMTYPE_UINT8:
            return CIMValue(Uint8(m));
        case CIMTYPE_SINT8:
            return CIMValue(Sint8(s));
        case CIMTYPE_UINT16:
            return CIMValue(Uint16(m));
        case CIMTYPE_SINT16:
            return CIMValue(Sint16(s));
        case CIMTYPE_UINT32:
            return CIMValue(Uint32(m));
        case CIMTYPE_SINT32:
            return CIMValue(Sint32(s));
        case CIMTYPE_UINT64:
            return CIMValue(Uint64(m));
        default:
            return CIMValue(Sint64(s));
    }
}

CIMValue MofValueBuilder::_real(const MofLiteral& literal, const MofValueTarget& target) const
{
    if (target.type != CIMTYPE_REAL32 && target.type != CIMTYPE_REAL64)
        _mismatch(literal, target);
    // Read in the classic locale: MOF's decimal point is '.' whatever the
    // process's locale says.
    std::istringstream in(literal.text);
    in.imbue(std::locale::classic());
    double v = 0;
    in >> v;
    const bool consumed = in.eof() || in.peek() == std::char_traits<char>::eof();
    if (in.fail() || !consumed || !std::isfinite(v) ||
        (target.type == CIMTYPE_REAL32 && std::fabs(v) > FLT_MAX))
    {
        _fail(
            literal, "value " + literal.text + " does not fit " + cimTypeToString(target.type) +
                         " (" + target.what + ")");
    }
    if (target.type == CIMTYPE_REAL32)
        return CIMValue(Real32(v));
    return CIMValue(Real64(v));
}

CIMValue MofValueBuilder::_string(const MofLiteral& literal, const MofValueTarget& target) const
{
    const String text = mofString(literal.text);
    switch (target.type)
    {
        case CIMTYPE_STRING:
            return CIMValue(text);
        case CIMTYPE_DATETIME:
            try
            {
                return CIMValue(CIMDateTime(text));
            }
            catch (const Exception& e)
            {
                _fail(
                    literal, quoted(literal.text) + " is not a valid datetime for " + target.what +
                                 ": " + stdString(e.getMessage()));
            }
        case CIMTYPE_REFERENCE:
            try
            {
                return CIMValue(CIMObjectPath(text));
            }
            catch (const Exception& e)
            {
                _fail(
                    literal, quoted(literal.text) + " is not a valid object path for " +
                                 target.what + ": " + stdString(e.getMessage()));
            }
        default:
            break;
    }
    _mismatch(literal, target);
}

PEGASUS_NAMESPACE_END
