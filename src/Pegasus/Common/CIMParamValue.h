// A named parameter value of a method call (in or out). Shared handle with
// clone().
#ifndef Pegasus_ParamValue_h
#define Pegasus_ParamValue_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class CIMParamValueRep;

class PEGASUS_COMMON_LINKAGE CIMParamValue
{
public:
    CIMParamValue();
    CIMParamValue(const CIMParamValue& x);
    CIMParamValue& operator=(const CIMParamValue& x);
    // An empty name throws UninitializedObjectException. isTyped is false
    // only for a value that arrived as text without a declared type.
    CIMParamValue(String parameterName, CIMValue value, Boolean isTyped = true);
    ~CIMParamValue();

    String getParameterName() const;
    CIMValue getValue() const;
    Boolean isTyped() const;
    // Non-const references, as the established interface declares them.
    void setParameterName(String& parameterName);
    void setValue(CIMValue& value);
    void setIsTyped(Boolean isTyped);

    CIMParamValue clone() const;
    Boolean isUninitialized() const;

private:
    explicit CIMParamValue(std::shared_ptr<CIMParamValueRep> rep);

    std::shared_ptr<CIMParamValueRep> _rep;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ParamValue_h */
