// Text forms of CIM values inside VALUE elements (booleans, numbers, char16, strings,
// datetimes). References and embedded objects are elements of their own and are handled
// by the reader and writer. Reading a text is the runtime's (Pegasus/Common/ValueText.h),
// shared with the server's dispatcher; the codec uses it under the names below.
#ifndef QEL_SERVER_XML_VALUETEXT_H
#define QEL_SERVER_XML_VALUETEXT_H

#include "XmlBuffer.h"

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/ValueText.h>

#include <string>
#include <vector>

namespace qel
{
namespace cimxml
{

using TextOrigin = Pegasus::ValueText::Origin;

// "uint16", "string", ... as in the TYPE attribute; nullptr for OBJECT/INSTANCE
// (they travel as embedded strings).
const char* typeAttribute(Pegasus::CIMType type);
// TYPE attribute -> CIMType; false for an unknown name.
bool parseTypeAttribute(const char* text, Pegasus::CIMType& type);

// Appends the text of element `index` of an array value (or of a scalar when index is
// ignored) for the simple types. The value must be non-null.
void appendScalarText(std::string& out, const Pegasus::CIMValue& value);
void appendArrayTexts(std::vector<std::string>& out, const Pegasus::CIMValue& value);
// The VALUE element (or VALUE.ARRAY of VALUE elements) of a non-null value of a simple
// type, its texts escaped, written straight into `out`.
void appendValueElements(XmlBuffer& out, const Pegasus::CIMValue& value);

// Parses text into a value of a simple type. Throws CIMException(CIM_ERR_INVALID_PARAMETER)
// naming `where` and the text when it does not fit the type.
inline Pegasus::CIMValue
parseScalar(Pegasus::CIMType type, const std::string& text, const TextOrigin& where)
{
    return Pegasus::ValueText::parseScalar(type, text, where);
}
inline Pegasus::CIMValue
parseArray(Pegasus::CIMType type, const std::vector<std::string>& texts, const TextOrigin& where)
{
    return Pegasus::ValueText::parseArray(type, texts, where);
}

// Boolean text as used by VALUE and the boolean IPARAMVALUEs: TRUE/FALSE in any case,
// surrounding white space ignored.
inline bool parseBooleanText(const std::string& text, bool& result)
{
    return Pegasus::ValueText::parseBoolean(text, result);
}

}  // namespace cimxml
}  // namespace qel

#endif
