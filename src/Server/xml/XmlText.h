// Text helpers for writing CIM-XML: escaping and Pegasus String <-> UTF-8.
#ifndef QEL_SERVER_XML_XMLTEXT_H
#define QEL_SERVER_XML_XMLTEXT_H

#include "XmlBuffer.h"

#include <Pegasus/Common/String.h>

#include <string>
#include <string_view>

namespace qel
{
namespace cimxml
{

// Appends text with the five XML special characters replaced by entity references.
// Control characters other than TAB, LF and CR cannot appear in XML 1.0, so they are
// written as character references a reader can still round-trip.
// Pegasus Strings are written as UTF-8 up to their first NUL (as getCString() ends there).
void appendEscaped(XmlBuffer& out, const char* text, size_t length);
void appendEscaped(XmlBuffer& out, const Pegasus::String& text);
void appendEscaped(std::string& out, const char* text, size_t length);
void appendEscaped(std::string& out, const std::string& text);
void appendEscaped(std::string& out, const Pegasus::String& text);

// ' NAME="value"' with the value escaped. Attribute names are literals: as string_views their
// lengths are known when compiled.
void appendAttribute(XmlBuffer& out, std::string_view name, const Pegasus::String& value);
void appendAttribute(XmlBuffer& out, std::string_view name, const char* value);

// The UTF-8 form of text as String::getCString() gives it, up to its first NUL.
void appendUtf8(std::string& out, const Pegasus::String& text);
std::string toUtf8(const Pegasus::String& text);
// Throws CIMException(CIM_ERR_INVALID_PARAMETER) naming `where` when the bytes are not UTF-8.
Pegasus::String fromUtf8(const char* text, const char* where);
// The error fromUtf8 throws, for callers that describe the place only when it fails.
[[noreturn]] void throwNotUtf8(const char* where);

}  // namespace cimxml
}  // namespace qel

#endif
