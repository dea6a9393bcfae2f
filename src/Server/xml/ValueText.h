// Text forms of CIM values inside VALUE elements (booleans, numbers, char16, strings,
// datetimes). References and embedded objects are elements of their own and are handled
// by the reader and writer.
#ifndef QEL_SERVER_XML_VALUETEXT_H
#define QEL_SERVER_XML_VALUETEXT_H

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

#include <string>
#include <vector>

namespace qel {
namespace cimxml {

// "uint16", "string", ... as in the TYPE attribute; nullptr for OBJECT/INSTANCE
// (they travel as embedded strings).
const char* typeAttribute(Pegasus::CIMType type);
// TYPE attribute -> CIMType; false for an unknown name.
bool parseTypeAttribute(const char* text, Pegasus::CIMType& type);

// Appends the text of element `index` of an array value (or of a scalar when index is
// ignored) for the simple types. The value must be non-null.
void appendScalarText(std::string& out, const Pegasus::CIMValue& value);
void appendArrayTexts(std::vector<std::string>& out, const Pegasus::CIMValue& value);

// Parses text into a value of a simple type. Throws CIMException(CIM_ERR_INVALID_PARAMETER)
// naming `where` and the text when it does not fit the type.
Pegasus::CIMValue parseScalar(Pegasus::CIMType type, const std::string& text, const std::string& where);
Pegasus::CIMValue parseArray(Pegasus::CIMType type, const std::vector<std::string>& texts,
                             const std::string& where);

// Boolean text as used by VALUE and the boolean IPARAMVALUEs: TRUE/FALSE in any case,
// surrounding white space ignored.
bool parseBooleanText(const std::string& text, bool& result);

}  // namespace cimxml
}  // namespace qel

#endif
