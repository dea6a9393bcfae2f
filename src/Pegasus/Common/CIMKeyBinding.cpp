// CIMKeyBinding: one key of an object path, its value kept as text with a type, compared
// with values and with other keys by the rules of that type.
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/StringConversion.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Reads key text as a value of the given integer or real type, by the
// rules of CIM-XML values; false if it does not fit.
bool _numberValue(const String& text, CIMType type, CIMValue& out)
{
    CString c = text.getCString();
    Uint64 u;
    Sint64 s;
    Real64 r;
    switch (type)
    {
        case CIMTYPE_UINT8:
        case CIMTYPE_UINT16:
        case CIMTYPE_UINT32:
        case CIMTYPE_UINT64:
            if (!StringConversion::stringToUnsignedInteger(c, u) ||
                !StringConversion::checkUintBounds(u, type))
                return false;
            if (type == CIMTYPE_UINT8)
                out.set(Uint8(u));
            else if (type == CIMTYPE_UINT16)
                out.set(Uint16(u));
            else if (type == CIMTYPE_UINT32)
                out.set(Uint32(u));
            else
                out.set(Uint64(u));
            return true;
        case CIMTYPE_SINT8:
        case CIMTYPE_SINT16:
        case CIMTYPE_SINT32:
        case CIMTYPE_SINT64:
            if (!StringConversion::stringToSignedInteger(c, s) ||
                !StringConversion::checkSintBounds(s, type))
                return false;
            if (type == CIMTYPE_SINT8)
                out.set(Sint8(s));
            else if (type == CIMTYPE_SINT16)
                out.set(Sint16(s));
            else if (type == CIMTYPE_SINT32)
                out.set(Sint32(s));
            else
                out.set(Sint64(s));
            return true;
        case CIMTYPE_REAL32:
        case CIMTYPE_REAL64:
            if (!StringConversion::stringToReal64(c, r))
                return false;
            if (type == CIMTYPE_REAL32)
                out.set(Real32(r));
            else
                out.set(r);
            return true;
        default:
            return false;
    }
}

}  // namespace

//
// CIMKeyBinding
//

CIMKeyBinding::CIMKeyBinding() : _type(STRING)
{
}

CIMKeyBinding::CIMKeyBinding(const CIMKeyBinding& x) = default;

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const String& value, Type type)
    : _name(name), _value(value), _type(type)
{
}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const CIMValue& value)
    : _name(name), _type(STRING)
{
    if (value.isArray())
        throw TypeMismatchException();
    switch (value.getType())
    {
        case CIMTYPE_BOOLEAN:
            _type = BOOLEAN;
            break;
        case CIMTYPE_CHAR16:
        case CIMTYPE_STRING:
        case CIMTYPE_DATETIME:
            _type = STRING;
            break;
        case CIMTYPE_REFERENCE:
            _type = REFERENCE;
            break;
        case CIMTYPE_OBJECT:
        case CIMTYPE_INSTANCE:
            // embedded objects cannot be keys
            throw TypeMismatchException();
        default:
            _type = NUMERIC;
            break;
    }
    _value = value.toString();
}

CIMKeyBinding::~CIMKeyBinding()
{
}

CIMKeyBinding& CIMKeyBinding::operator=(const CIMKeyBinding& x) = default;

const CIMName& CIMKeyBinding::getName() const
{
    return _name;
}

void CIMKeyBinding::setName(const CIMName& name)
{
    _name = name;
}

const String& CIMKeyBinding::getValue() const
{
    return _value;
}

void CIMKeyBinding::setValue(const String& value)
{
    _value = value;
}

CIMKeyBinding::Type CIMKeyBinding::getType() const
{
    return _type;
}

void CIMKeyBinding::setType(Type type)
{
    _type = type;
}

Boolean CIMKeyBinding::equal(CIMValue value)
{
    if (value.isArray())
        return false;
    CIMValue mine;
    try
    {
        switch (value.getType())
        {
            case CIMTYPE_CHAR16:
                if (_type != STRING)
                    return false;
                mine.set(_value[0]);
                break;
            case CIMTYPE_DATETIME:
                if (_type != STRING)
                    return false;
                mine.set(CIMDateTime(_value));
                break;
            case CIMTYPE_STRING:
                if (_type != STRING)
                    return false;
                mine.set(_value);
                break;
            case CIMTYPE_REFERENCE:
                if (_type != REFERENCE)
                    return false;
                mine.set(CIMObjectPath(_value));
                break;
            case CIMTYPE_BOOLEAN:
                if (_type != BOOLEAN)
                    return false;
                if (String::equalNoCase(_value, "TRUE"))
                    mine.set(true);
                else if (String::equalNoCase(_value, "FALSE"))
                    mine.set(false);
                else
                    return false;
                break;
            case CIMTYPE_OBJECT:
            case CIMTYPE_INSTANCE:
                return false;
            default:
                if (_type != NUMERIC || !_numberValue(_value, value.getType(), mine))
                    return false;
                break;
        }
    }
    catch (const Exception&)
    {
        return false;
    }
    return value.equal(mine);
}

Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y)
{
    if (!x.getName().equal(y.getName()) || x.getType() != y.getType())
        return false;
    const String& a = x.getValue();
    const String& b = y.getValue();
    switch (x.getType())
    {
        case CIMKeyBinding::REFERENCE:
            if (String::equal(a, b))
                return true;
            try
            {
                return CIMObjectPath(a).identical(CIMObjectPath(b));
            }
            catch (const Exception&)
            {
                return false;  // texts differ and do not both read as paths
            }
        case CIMKeyBinding::BOOLEAN:
            return String::equalNoCase(a, b);
        case CIMKeyBinding::NUMERIC:
        {
            Uint64 ua, ub;
            if (StringConversion::stringToUnsignedInteger(a.getCString(), ua) &&
                StringConversion::stringToUnsignedInteger(b.getCString(), ub))
                return ua == ub;
            Sint64 sa, sb;
            if (StringConversion::stringToSignedInteger(a.getCString(), sa) &&
                StringConversion::stringToSignedInteger(b.getCString(), sb))
                return sa == sb;
            return String::equal(a, b);
        }
        default:
            return String::equal(a, b);
    }
}

PEGASUS_NAMESPACE_END
