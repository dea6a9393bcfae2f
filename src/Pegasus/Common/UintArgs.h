// Nullable unsigned integers for the arguments of the pull operations (OperationTimeout,
// EnumerationCount's answer): a value, or NULL. Plain values; copies are independent.
#ifndef Pegasus_UintArgs_h
#define Pegasus_UintArgs_h

#include <string>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The one body of Uint32Arg and Uint64Arg; `Self` is the class made from it.
template <class T, class Self>
class NullableUintArg
{
public:
    // NULL.
    NullableUintArg() = default;
    NullableUintArg(T x) : _value(x), _null(false) {}

    // The value; 0 when NULL (test isNull() first).
    const T& getValue() const { return _value; }
    void setValue(T x)
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
    String toString() { return String(_null ? "NULL" : std::to_string(_value).c_str()); }
    Boolean equal(const Self& x) const
    {
        const NullableUintArg& other = x;
        return _null == other._null && _value == other._value;
    }

private:
    T _value = 0;
    bool _null = true;
};

class PEGASUS_COMMON_LINKAGE Uint32Arg : public NullableUintArg<Uint32, Uint32Arg>
{
public:
    using NullableUintArg::NullableUintArg;
};

class PEGASUS_COMMON_LINKAGE Uint64Arg : public NullableUintArg<Uint64, Uint64Arg>
{
public:
    using NullableUintArg::NullableUintArg;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_UintArgs_h */
