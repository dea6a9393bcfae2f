#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <cstdio>
#include <cstring>

namespace qel {
namespace cimxml {

void appendEscaped(std::string& out, const char* text, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default:
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') {
          char ref[8];
          std::snprintf(ref, sizeof ref, "&#%u;", static_cast<unsigned>(c));
          out += ref;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
}

void appendEscaped(std::string& out, const std::string& text) {
  appendEscaped(out, text.data(), text.size());
}

void appendEscaped(std::string& out, const Pegasus::String& text) {
  Pegasus::CString utf8 = text.getCString();
  const char* p = utf8;
  appendEscaped(out, p, std::strlen(p));
}

std::string toUtf8(const Pegasus::String& text) {
  Pegasus::CString utf8 = text.getCString();
  return std::string(static_cast<const char*>(utf8));
}

Pegasus::String fromUtf8(const char* text, const char* where) {
  try {
    return Pegasus::String(text);
  } catch (const Pegasus::Exception&) {
    throw Pegasus::CIMException(Pegasus::CIM_ERR_INVALID_PARAMETER,
                                Pegasus::String("text of ") + where + " is not valid UTF-8");
  }
}

}  // namespace cimxml
}  // namespace qel
