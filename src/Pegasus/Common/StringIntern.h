// Internal: interned texts. Names repeated by the thousand (the properties of a class,
// copied into every instance built from it, and the names providers make from literals)
// share one immortal copy of their text, which copies and destructions of a String never
// count: no atomic operation, and no cache line that threads building instances of one
// class at once would fight over.
#ifndef Pegasus_StringIntern_h
#define Pegasus_StringIntern_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Distinct texts kept at most (a bound on what names made from outside data can cost);
// beyond it texts are returned as they are.
const Uint32 kMaxInternedTexts = 65536;

// A String of the same text whose representation is the interned one.
PEGASUS_COMMON_LINKAGE String internedText(const String& text);
// Whether text's representation is immortal (interned, or the empty text).
PEGASUS_COMMON_LINKAGE bool isInterned(const String& text);
// The same name, spelled the same, with its text interned.
PEGASUS_COMMON_LINKAGE CIMName internedName(const CIMName& name);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_StringIntern_h */
