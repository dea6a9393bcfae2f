#include <Pegasus/Common/CIMScope.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 kClass = 1;
const Uint32 kAssociation = 2;
const Uint32 kIndication = 4;
const Uint32 kProperty = 8;
const Uint32 kReference = 16;
const Uint32 kMethod = 32;
const Uint32 kParameter = 64;
}  // namespace

const CIMScope CIMScope::NONE(0u);
const CIMScope CIMScope::CLASS(kClass);
const CIMScope CIMScope::ASSOCIATION(kAssociation);
const CIMScope CIMScope::INDICATION(kIndication);
const CIMScope CIMScope::PROPERTY(kProperty);
const CIMScope CIMScope::REFERENCE(kReference);
const CIMScope CIMScope::METHOD(kMethod);
const CIMScope CIMScope::PARAMETER(kParameter);
const CIMScope CIMScope::ANY(
    kClass | kAssociation | kIndication | kProperty | kReference | kMethod | kParameter);

Boolean CIMScope::hasScope(const CIMScope& scope) const
{
    return (cimScope & scope.cimScope) == scope.cimScope;
}

void CIMScope::addScope(const CIMScope& scope)
{
    cimScope |= scope.cimScope;
}

Boolean CIMScope::equal(const CIMScope& scope) const
{
    return cimScope == scope.cimScope;
}

CIMScope CIMScope::operator+(const CIMScope& scope) const
{
    return CIMScope(cimScope | scope.cimScope);
}

String CIMScope::toString() const
{
    static const struct
    {
        Uint32 bit;
        const char* name;
    } names[] = {
        {kClass, "CLASS"},         {kAssociation, "ASSOCIATION"}, {kIndication, "INDICATION"},
        {kProperty, "PROPERTY"},   {kReference, "REFERENCE"},     {kMethod, "METHOD"},
        {kParameter, "PARAMETER"},
    };
    String text;
    for (const auto& n : names)
    {
        if (cimScope & n.bit)
        {
            if (text.size())
                text.append(Char16(' '));
            text.append(String(n.name));
        }
    }
    return text;
}

PEGASUS_NAMESPACE_END
