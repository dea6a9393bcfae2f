#include <Pegasus/Common/CIMType.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const char* const _typeNames[] = {"boolean", "uint8",    "sint8",     "uint16", "sint16",  "uint32",
                                  "sint32",  "uint64",   "sint64",    "real32", "real64",  "char16",
                                  "string",  "datetime", "reference", "object", "instance"};
}  // namespace

const char* cimTypeToString(const CIMType type)
{
    Uint32 n = Uint32(type);
    if (n < PEGASUS_ARRAY_SIZE(_typeNames))
        return _typeNames[n];
    return "unknown";
}

PEGASUS_NAMESPACE_END
