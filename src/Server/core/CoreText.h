// Small conversions between the runtime's String and std::string used by the
// server core (map keys, log lines, messages).
#ifndef QEL_Server_CoreText_h
#define QEL_Server_CoreText_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

#include <string>

namespace Pegasus
{

// UTF-8 text of a String.
std::string toStd(const String& text);

// Key under which names are looked up: CIM names and namespaces compare
// without regard to ASCII case, so keys fold ASCII letters only.
std::string nameKey(const String& name);
inline std::string nameKey(const CIMName& name)
{
    return nameKey(name.getString());
}
inline std::string nameKey(const CIMNamespaceName& ns)
{
    return nameKey(ns.getString());
}

// A String from bytes that may not be valid UTF-8 (texts of foreign
// exceptions, dlerror()): invalid bytes become '?', so building the message
// of an error can never fail in turn.
String safeString(const char* bytes);
inline String safeString(const std::string& bytes)
{
    return safeString(bytes.c_str());
}

}  // namespace Pegasus

#endif
