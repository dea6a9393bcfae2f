// Internal: a cheap fingerprint of a CIM name that names equal ignoring
// (ASCII) case share: length, first and last unit. Name lookups compare
// fingerprints first and skip most full comparisons.
#ifndef Pegasus_NameTag_h
#define Pegasus_NameTag_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

inline Uint16 nameTagFold(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') ? Uint16(c + ('a' - 'A')) : c;
}

inline Uint32 nameTag(const CIMName& name)
{
    const String& s = name.getString();
    const Uint32 n = s.size();
    if (n == 0)
        return 0;
    const Char16* d = s.getChar16Data();
    return (n << 16) ^ (Uint32(nameTagFold(d[0])) << 8) ^ nameTagFold(d[n - 1]);
}

PEGASUS_NAMESPACE_END

#endif /* Pegasus_NameTag_h */
