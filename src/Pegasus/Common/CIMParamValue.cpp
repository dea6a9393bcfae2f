#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

class CIMParamValueRep
{
public:
    CIMParamValueRep(const String& name_, const CIMValue& value_, Boolean typed_)
        : name(name_), value(value_), typed(typed_)
    {
        checkName(name);
    }

    static void checkName(const String& name)
    {
        if (name.size() == 0)
            throw UninitializedObjectException();
    }

    String name;
    CIMValue value;
    Boolean typed;
};

CIMParamValue::CIMParamValue() = default;
CIMParamValue::CIMParamValue(const CIMParamValue& x) = default;
CIMParamValue& CIMParamValue::operator=(const CIMParamValue& x) = default;
CIMParamValue::~CIMParamValue() = default;

CIMParamValue::CIMParamValue(String parameterName, CIMValue value, Boolean isTyped)
    : _rep(std::make_shared<CIMParamValueRep>(parameterName, value, isTyped))
{
}

CIMParamValue::CIMParamValue(std::shared_ptr<CIMParamValueRep> rep) : _rep(std::move(rep))
{
}

String CIMParamValue::getParameterName() const
{
    return checkRep(_rep).name;
}

CIMValue CIMParamValue::getValue() const
{
    return checkRep(_rep).value;
}

Boolean CIMParamValue::isTyped() const
{
    return checkRep(_rep).typed;
}

void CIMParamValue::setParameterName(String& parameterName)
{
    CIMParamValueRep& rep = checkRep(_rep);
    CIMParamValueRep::checkName(parameterName);
    rep.name = parameterName;
}

void CIMParamValue::setValue(CIMValue& value)
{
    checkRep(_rep).value = value;
}

void CIMParamValue::setIsTyped(Boolean isTyped)
{
    checkRep(_rep).typed = isTyped;
}

CIMParamValue CIMParamValue::clone() const
{
    return CIMParamValue(std::make_shared<CIMParamValueRep>(checkRep(_rep)));
}

Boolean CIMParamValue::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
