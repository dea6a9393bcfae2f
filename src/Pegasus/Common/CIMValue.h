// CIMValue: a typed, possibly null, scalar or array value of any CIM type.
// Value semantics (shared representation, copy-on-write).
#ifndef Pegasus_Value_h
#define Pegasus_Value_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

class CIMObject;
class CIMInstance;

class PEGASUS_COMMON_LINKAGE CIMValue
{
public:
    // A null boolean scalar.
    CIMValue();
    // A null value of the given type; arrays report arraySize.
    CIMValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);
    // There is deliberately no const char* constructor: CIMValue("abc")
    // selects CIMValue(Boolean), as the original overload set does.
    // CIMObject and CIMInstance values hold clones; uninitialized ones
    // throw UninitializedObjectException.
    CIMValue(Boolean x);
    CIMValue(Uint8 x);
    CIMValue(Sint8 x);
    CIMValue(Uint16 x);
    CIMValue(Sint16 x);
    CIMValue(Uint32 x);
    CIMValue(Sint32 x);
    CIMValue(Uint64 x);
    CIMValue(Sint64 x);
    CIMValue(Real32 x);
    CIMValue(Real64 x);
    CIMValue(const Char16& x);
    CIMValue(const String& x);
    CIMValue(const CIMDateTime& x);
    CIMValue(const CIMObjectPath& x);
    CIMValue(const CIMObject& x);
    CIMValue(const CIMInstance& x);
    CIMValue(const Array<Boolean>& x);
    CIMValue(const Array<Uint8>& x);
    CIMValue(const Array<Sint8>& x);
    CIMValue(const Array<Uint16>& x);
    CIMValue(const Array<Sint16>& x);
    CIMValue(const Array<Uint32>& x);
    CIMValue(const Array<Sint32>& x);
    CIMValue(const Array<Uint64>& x);
    CIMValue(const Array<Sint64>& x);
    CIMValue(const Array<Real32>& x);
    CIMValue(const Array<Real64>& x);
    CIMValue(const Array<Char16>& x);
    CIMValue(const Array<String>& x);
    CIMValue(const Array<CIMDateTime>& x);
    CIMValue(const Array<CIMObjectPath>& x);
    CIMValue(const Array<CIMObject>& x);
    CIMValue(const Array<CIMInstance>& x);
    CIMValue(const CIMValue& x);
    CIMValue(CIMValue&& x) noexcept;
    ~CIMValue();

    CIMValue& operator=(const CIMValue& x);
    CIMValue& operator=(CIMValue&& x) noexcept;
    void assign(const CIMValue& x);
    // Back to a null boolean scalar.
    void clear();

    // Same type and array-ness.
    Boolean typeCompatible(const CIMValue& x) const
    {
        return _type == x._type && _isArray == x._isArray;
    }
    Boolean isArray() const { return _isArray != 0; }
    Boolean isNull() const { return _isNull != 0; }
    Uint32 getArraySize() const { return _isArray ? _arraySize : 0; }
    CIMType getType() const { return CIMType(_type); }
    void setNullValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);

    // Replaces value and type.
    void set(Boolean x);
    void set(Uint8 x);
    void set(Sint8 x);
    void set(Uint16 x);
    void set(Sint16 x);
    void set(Uint32 x);
    void set(Sint32 x);
    void set(Uint64 x);
    void set(Sint64 x);
    void set(Real32 x);
    void set(Real64 x);
    void set(const Char16& x);
    void set(const String& x);
    void set(const CIMDateTime& x);
    void set(const CIMObjectPath& x);
    void set(const CIMObject& x);
    void set(const CIMInstance& x);
    void set(const Array<Boolean>& x);
    void set(const Array<Uint8>& x);
    void set(const Array<Sint8>& x);
    void set(const Array<Uint16>& x);
    void set(const Array<Sint16>& x);
    void set(const Array<Uint32>& x);
    void set(const Array<Sint32>& x);
    void set(const Array<Uint64>& x);
    void set(const Array<Sint64>& x);
    void set(const Array<Real32>& x);
    void set(const Array<Real64>& x);
    void set(const Array<Char16>& x);
    void set(const Array<String>& x);
    void set(const Array<CIMDateTime>& x);
    void set(const Array<CIMObjectPath>& x);
    void set(const Array<CIMObject>& x);
    void set(const Array<CIMInstance>& x);

    // A type or array-ness other than the value's throws
    // TypeMismatchException; a null value leaves x unchanged.
    void get(Boolean& x) const;
    void get(Uint8& x) const;
    void get(Sint8& x) const;
    void get(Uint16& x) const;
    void get(Sint16& x) const;
    void get(Uint32& x) const;
    void get(Sint32& x) const;
    void get(Uint64& x) const;
    void get(Sint64& x) const;
    void get(Real32& x) const;
    void get(Real64& x) const;
    void get(Char16& x) const;
    void get(String& x) const;
    void get(CIMDateTime& x) const;
    void get(CIMObjectPath& x) const;
    void get(CIMObject& x) const;
    void get(CIMInstance& x) const;
    void get(Array<Boolean>& x) const;
    void get(Array<Uint8>& x) const;
    void get(Array<Sint8>& x) const;
    void get(Array<Uint16>& x) const;
    void get(Array<Sint16>& x) const;
    void get(Array<Uint32>& x) const;
    void get(Array<Sint32>& x) const;
    void get(Array<Uint64>& x) const;
    void get(Array<Sint64>& x) const;
    void get(Array<Real32>& x) const;
    void get(Array<Real64>& x) const;
    void get(Array<Char16>& x) const;
    void get(Array<String>& x) const;
    void get(Array<CIMDateTime>& x) const;
    void get(Array<CIMObjectPath>& x) const;
    void get(Array<CIMObject>& x) const;
    void get(Array<CIMInstance>& x) const;

    Boolean equal(const CIMValue& x) const;
    // Display form: arrays as elements each followed by one blank, null as "".
    String toString() const;

private:
    friend class ObjectReader;

    // Back to a null boolean scalar.
    void _release();
    // Takes x's value; x is left a null boolean scalar.
    void _moveFrom(CIMValue& x) noexcept;

    // The value itself, without a heap allocation of its own: simple scalars as they are,
    // String, CIMObjectPath and Array<T> (each one counted pointer) constructed in place,
    // CIMDateTime, CIMObject and CIMInstance in a counted box (CIMValue.cpp).
    alignas(void*) unsigned char _payload[sizeof(void*)];
    Uint32 _arraySize;  // of an array, null ones included
    Uint8 _type;        // CIMType
    Uint8 _isArray;
    Uint8 _isNull;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMValue& x, const CIMValue& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMValue& x, const CIMValue& y);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Value_h */
