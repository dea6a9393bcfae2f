// What the QEL_Common source files share among themselves. Not part of the
// class's face (QEL_Common.h): providers never include it.
#ifndef QEL_Common_Internal_h
#define QEL_Common_Internal_h

#include "QEL_Common.h"

PEGASUS_NAMESPACE_BEGIN

// UTF-8 text of a String for the printf-style traces; the temporary lives to
// the end of the full expression that contains the call.
#define QEL_CSTR(s) ((const char*)(s).getCString())

namespace QEL_CommonInternal
{

// The namespace of the array's classes.
const char ARRAY_NAMESPACE[] = "root/qel";

// Value text of the key binding named `name` (any letter case) as it stands,
// whatever its type; with several of that name the last one wins.
String _lastKeyValue(const CIMObjectPath& path, const String& name);

}  // namespace QEL_CommonInternal

PEGASUS_NAMESPACE_END

#endif /* QEL_Common_Internal_h */
