#include "DeclaredValues.h"

#include "CoreText.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/ValueText.h>

#include <vector>

namespace Pegasus
{

String describeType(CIMType type, Boolean isArray)
{
    return String(cimTypeToString(type)) + (isArray ? "[]" : "");
}

CIMException noSuchProperty(const CIMName& className, const CIMName& propertyName)
{
    return CIMException(
        CIM_ERR_NO_SUCH_PROPERTY,
        "Class " + className.getString() + " has no property " + propertyName.getString() + ".");
}

CIMPropertyList classPropertyList(const CIMClass& cimClass)
{
    Array<CIMName> names;
    for (Uint32 i = 0; i < cimClass.getPropertyCount(); ++i)
        names.append(cimClass.getProperty(i).getName());
    return CIMPropertyList(names);
}

CIMValue valueFromText(const CIMValue& text, CIMType type, const std::string& where)
{
    if (text.isArray())
    {
        Array<String> texts;
        text.get(texts);
        std::vector<std::string> items;
        items.reserve(texts.size());
        for (Uint32 k = 0; k < texts.size(); ++k)
            items.push_back(toStd(texts[k]));
        return ValueText::parseArray(type, items, where);
    }
    String single;
    text.get(single);
    return ValueText::parseScalar(type, toStd(single), where);
}

}  // namespace Pegasus
