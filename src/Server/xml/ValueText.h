// Text forms of CIM values inside VALUE elements (booleans, numbers, char16, strings,
// datetimes). References and embedded objects are elements of their own and are handled
// by the reader and writer.
#ifndef QEL_SERVER_XML_VALUETEXT_H
#define QEL_SERVER_XML_VALUETEXT_H

#include "XmlBuffer.h"

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

#include <functional>
#include <string>
#include <vector>

namespace qel
{
namespace cimxml
{

// Where a text comes from, as error messages name it. A description that costs something
// to build (an element and its byte offset) is only made when an error is thrown: values
// are read by the thousand and almost never fail.
class TextOrigin
{
public:
    TextOrigin(const char* description) : _fixed(description) {}
    TextOrigin(const std::string& description) : _fixed(description.c_str()) {}
    explicit TextOrigin(std::function<std::string()> describe) : _describe(std::move(describe)) {}
    std::string str() const { return _describe ? _describe() : std::string(_fixed); }

private:
    const char* _fixed = nullptr;
    std::function<std::string()> _describe;
};

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
Pegasus::CIMValue
parseScalar(Pegasus::CIMType type, const std::string& text, const TextOrigin& where);
Pegasus::CIMValue
parseArray(Pegasus::CIMType type, const std::vector<std::string>& texts, const TextOrigin& where);

// Boolean text as used by VALUE and the boolean IPARAMVALUEs: TRUE/FALSE in any case,
// surrounding white space ignored.
bool parseBooleanText(const std::string& text, bool& result);

}  // namespace cimxml
}  // namespace qel

#endif
