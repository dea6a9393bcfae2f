#include <Pegasus/Common/UintArgs.h>

PEGASUS_NAMESPACE_BEGIN

String Uint32Arg::toString()
{
    if (_null)
        return String("NULL");
    String s;
    s.appendPrintf("%u", _value);
    return s;
}

String Uint64Arg::toString()
{
    if (_null)
        return String("NULL");
    String s;
    s.appendPrintf("%llu", _value);
    return s;
}

PEGASUS_NAMESPACE_END
