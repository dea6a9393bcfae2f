// Nullable unsigned integers for the arguments of the pull operations (OperationTimeout,
// EnumerationCount's answer): a value, or NULL. Plain values; copies are independent.
#ifndef Pegasus_UintArgs_h
#define Pegasus_UintArgs_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE Uint32Arg
{
public:
    // NULL.
    Uint32Arg() = default;
    Uint32Arg(Uint32 x) : _value(x), _null(false) {}

    // The value; 0 when NULL (test isNull() first).
    const Uint32& getValue() const { return _value; }
    void setValue(Uint32 x)
    {
        _value = x;
        _null = false;
    }
    Boolean isNull() const { return _null; }
    // NULL, and the value back to 0.
    void setNullValue()
    {
        _value = 0;
        _null = true;
    }
    // The number, or "NULL".
    String toString();
    Boolean equal(const Uint32Arg& x) const { return _null == x._null && _value == x._value; }

private:
    Uint32 _value = 0;
    bool _null = true;
};

class PEGASUS_COMMON_LINKAGE Uint64Arg
{
public:
    Uint64Arg() = default;
    Uint64Arg(Uint64 x) : _value(x), _null(false) {}

    const Uint64& getValue() const { return _value; }
    void setValue(Uint64 x)
    {
        _value = x;
        _null = false;
    }
    Boolean isNull() const { return _null; }
    void setNullValue()
    {
        _value = 0;
        _null = true;
    }
    String toString();
    Boolean equal(const Uint64Arg& x) const { return _null == x._null && _value == x._value; }

private:
    Uint64 _value = 0;
    bool _null = true;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_UintArgs_h */
