#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMInstance.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

PEGASUS_NAMESPACE_BEGIN

namespace
{
template <class T>
struct TypeTraits;
template <>
struct TypeTraits<Boolean>
{
    static const CIMType type = CIMTYPE_BOOLEAN;
};
template <>
struct TypeTraits<Uint8>
{
    static const CIMType type = CIMTYPE_UINT8;
};
template <>
struct TypeTraits<Sint8>
{
    static const CIMType type = CIMTYPE_SINT8;
};
template <>
struct TypeTraits<Uint16>
{
    static const CIMType type = CIMTYPE_UINT16;
};
template <>
struct TypeTraits<Sint16>
{
    static const CIMType type = CIMTYPE_SINT16;
};
template <>
struct TypeTraits<Uint32>
{
    static const CIMType type = CIMTYPE_UINT32;
};
template <>
struct TypeTraits<Sint32>
{
    static const CIMType type = CIMTYPE_SINT32;
};
template <>
struct TypeTraits<Uint64>
{
    static const CIMType type = CIMTYPE_UINT64;
};
template <>
struct TypeTraits<Sint64>
{
    static const CIMType type = CIMTYPE_SINT64;
};
template <>
struct TypeTraits<Real32>
{
    static const CIMType type = CIMTYPE_REAL32;
};
template <>
struct TypeTraits<Real64>
{
    static const CIMType type = CIMTYPE_REAL64;
};
template <>
struct TypeTraits<Char16>
{
    static const CIMType type = CIMTYPE_CHAR16;
};
template <>
struct TypeTraits<String>
{
    static const CIMType type = CIMTYPE_STRING;
};
template <>
struct TypeTraits<CIMDateTime>
{
    static const CIMType type = CIMTYPE_DATETIME;
};
template <>
struct TypeTraits<CIMObjectPath>
{
    static const CIMType type = CIMTYPE_REFERENCE;
};
template <>
struct TypeTraits<CIMObject>
{
    static const CIMType type = CIMTYPE_OBJECT;
};
template <>
struct TypeTraits<CIMInstance>
{
    static const CIMType type = CIMTYPE_INSTANCE;
};

//
// Storage of each type in the payload
//

// CIMDateTime, CIMObject and CIMInstance do not fit the payload: they live in a counted box
// that copies of the value share (a value never changes once set).
template <class T>
struct Box
{
    explicit Box(const T& x) : refs(1), value(x) {}
    std::atomic<Uint32> refs;
    T value;
};

template <class T>
constexpr bool isBoxed = std::is_same_v<T, CIMDateTime> || std::is_same_v<T, CIMObject> ||
                         std::is_same_v<T, CIMInstance>;

// Everything else is constructed in place: the simple scalars, and String, CIMObjectPath and
// Array<T>, each a single counted pointer.
template <class T>
struct Slot
{
    static_assert(sizeof(T) <= sizeof(void*) && alignof(T) <= alignof(void*), "fits the payload");

    static const T& ref(const unsigned char* p)
    {
        return *std::launder(reinterpret_cast<const T*>(p));
    }
    static T& ref(unsigned char* p) { return *std::launder(reinterpret_cast<T*>(p)); }
    static void construct(unsigned char* p, const T& x) { new (p) T(x); }
    static void copy(unsigned char* to, const unsigned char* from) { new (to) T(ref(from)); }
    static void move(unsigned char* to, unsigned char* from) noexcept
    {
        new (to) T(std::move(ref(from)));
        ref(from).~T();
    }
    static void destroy(unsigned char* p) noexcept { ref(p).~T(); }
};

template <class T>
struct BoxSlot
{
    static Box<T>* box(const unsigned char* p)
    {
        Box<T>* b;
        std::memcpy(&b, p, sizeof b);
        return b;
    }
    static const T& ref(const unsigned char* p) { return box(p)->value; }
    static void construct(unsigned char* p, const T& x)
    {
        Box<T>* b = new Box<T>(x);
        std::memcpy(p, &b, sizeof b);
    }
    static void copy(unsigned char* to, const unsigned char* from)
    {
        box(from)->refs.fetch_add(1, std::memory_order_relaxed);
        std::memcpy(to, from, sizeof(void*));
    }
    static void move(unsigned char* to, unsigned char* from) noexcept
    {
        std::memcpy(to, from, sizeof(void*));
    }
    static void destroy(unsigned char* p) noexcept
    {
        Box<T>* b = box(p);
        if (b->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete b;
    }
};

template <class T>
using SlotOf = std::conditional_t<isBoxed<T>, BoxSlot<T>, Slot<T>>;

template <class T>
struct Tag
{
    typedef T type;
};

// Calls f(Tag<V>()) with V the stored type of a value of this type and array-ness.
template <class F>
void _visit(Uint8 type, Uint8 isArray, F&& f)
{
    switch (CIMType(type))
    {
#define PEGASUS_VALUE_CASE(tag, T)                                                                 \
    case tag:                                                                                      \
        if (isArray)                                                                               \
            f(Tag<Array<T>>());                                                                    \
        else                                                                                       \
            f(Tag<T>());                                                                           \
        return;
        PEGASUS_VALUE_CASE(CIMTYPE_BOOLEAN, Boolean)
        PEGASUS_VALUE_CASE(CIMTYPE_UINT8, Uint8)
        PEGASUS_VALUE_CASE(CIMTYPE_SINT8, Sint8)
        PEGASUS_VALUE_CASE(CIMTYPE_UINT16, Uint16)
        PEGASUS_VALUE_CASE(CIMTYPE_SINT16, Sint16)
        PEGASUS_VALUE_CASE(CIMTYPE_UINT32, Uint32)
        PEGASUS_VALUE_CASE(CIMTYPE_SINT32, Sint32)
        PEGASUS_VALUE_CASE(CIMTYPE_UINT64, Uint64)
        PEGASUS_VALUE_CASE(CIMTYPE_SINT64, Sint64)
        PEGASUS_VALUE_CASE(CIMTYPE_REAL32, Real32)
        PEGASUS_VALUE_CASE(CIMTYPE_REAL64, Real64)
        PEGASUS_VALUE_CASE(CIMTYPE_CHAR16, Char16)
        PEGASUS_VALUE_CASE(CIMTYPE_STRING, String)
        PEGASUS_VALUE_CASE(CIMTYPE_DATETIME, CIMDateTime)
        PEGASUS_VALUE_CASE(CIMTYPE_REFERENCE, CIMObjectPath)
        PEGASUS_VALUE_CASE(CIMTYPE_OBJECT, CIMObject)
        PEGASUS_VALUE_CASE(CIMTYPE_INSTANCE, CIMInstance)
#undef PEGASUS_VALUE_CASE
    }
}

// Plain bytes: copying and dropping them needs no code of the type's.
inline bool _isPlain(Uint8 type, Uint8 isArray)
{
    return !isArray && type <= CIMTYPE_CHAR16;
}

// Embedded objects are held as private copies.
template <class T>
T _cloned(const T& x)
{
    if (x.isUninitialized())
        throw UninitializedObjectException();
    return x.clone();
}

template <class T>
Array<T> _clonedArray(const Array<T>& x)
{
    Array<T> copy;
    copy.reserveCapacity(x.size());
    for (Uint32 i = 0; i < x.size(); ++i)
        copy.append(_cloned(x[i]));
    return copy;
}

//
// Equality of elements
//

template <class T>
bool _same(const T& a, const T& b)
{
    return a == b;
}
bool _same(const String& a, const String& b)
{
    return String::equal(a, b);
}
bool _same(const CIMDateTime& a, const CIMDateTime& b)
{
    return a.equal(b);
}
bool _same(const CIMObjectPath& a, const CIMObjectPath& b)
{
    return a.identical(b);
}
bool _same(const CIMObject& a, const CIMObject& b)
{
    return a.identical(b);
}
bool _same(const CIMInstance& a, const CIMInstance& b)
{
    return a.identical(b);
}

template <class T>
bool _same(const Array<T>& a, const Array<T>& b)
{
    if (a.size() != b.size())
        return false;
    for (Uint32 i = 0; i < a.size(); ++i)
    {
        if (!_same(a[i], b[i]))
            return false;
    }
    return true;
}

//
// Display text
//

void _text(String& out, Boolean x)
{
    out.append(x ? "TRUE" : "FALSE");
}

template <class T>
void _number(String& out, const char* format, T x)
{
    char buf[64];
    snprintf(buf, sizeof(buf), format, x);
    out.append(buf);
}

void _text(String& out, Uint8 x)
{
    _number(out, "%u", unsigned(x));
}
void _text(String& out, Sint8 x)
{
    _number(out, "%d", int(x));
}
void _text(String& out, Uint16 x)
{
    _number(out, "%u", unsigned(x));
}
void _text(String& out, Sint16 x)
{
    _number(out, "%d", int(x));
}
void _text(String& out, Uint32 x)
{
    _number(out, "%u", x);
}
void _text(String& out, Sint32 x)
{
    _number(out, "%d", x);
}
void _text(String& out, Uint64 x)
{
    _number(out, "%llu", x);
}
void _text(String& out, Sint64 x)
{
    _number(out, "%lld", x);
}
// Reals print with 16 digits after the point, Real32 widened first.
void _text(String& out, Real32 x)
{
    _number(out, "%.16e", double(x));
}
void _text(String& out, Real64 x)
{
    _number(out, "%.16e", x);
}
void _text(String& out, const Char16& x)
{
    out.append(x);
}
void _text(String& out, const String& x)
{
    out.append(x);
}
void _text(String& out, const CIMDateTime& x)
{
    out.append(x.toString());
}
void _text(String& out, const CIMObjectPath& x)
{
    out.append(x.toString());
}
// Embedded objects show as the path they carry.
void _text(String& out, const CIMObject& x)
{
    out.append(x.getPath().toString());
}
void _text(String& out, const CIMInstance& x)
{
    out.append(x.getPath().toString());
}

// Every element is followed by one blank, the last one included.
template <class T>
void _text(String& out, const Array<T>& a)
{
    for (Uint32 i = 0; i < a.size(); ++i)
    {
        _text(out, a[i]);
        out.append(Char16(' '));
    }
}
}  // namespace

//
// Construction
//

CIMValue::CIMValue() : _arraySize(0), _type(CIMTYPE_BOOLEAN), _isArray(0), _isNull(1)
{
}

CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize)
    : _arraySize(isArray ? arraySize : 0), _type(Uint8(type)), _isArray(isArray), _isNull(1)
{
}

#define PEGASUS_VALUE_CONSTRUCTORS(T, Param)                                                       \
    CIMValue::CIMValue(Param x) : _arraySize(0), _type(CIMTYPE_BOOLEAN), _isArray(0), _isNull(1)   \
    {                                                                                              \
        set(x);                                                                                    \
    }                                                                                              \
    CIMValue::CIMValue(const Array<T>& x)                                                          \
        : _arraySize(0), _type(CIMTYPE_BOOLEAN), _isArray(0), _isNull(1)                           \
    {                                                                                              \
        set(x);                                                                                    \
    }
PEGASUS_VALUE_CONSTRUCTORS(Boolean, Boolean)
PEGASUS_VALUE_CONSTRUCTORS(Uint8, Uint8)
PEGASUS_VALUE_CONSTRUCTORS(Sint8, Sint8)
PEGASUS_VALUE_CONSTRUCTORS(Uint16, Uint16)
PEGASUS_VALUE_CONSTRUCTORS(Sint16, Sint16)
PEGASUS_VALUE_CONSTRUCTORS(Uint32, Uint32)
PEGASUS_VALUE_CONSTRUCTORS(Sint32, Sint32)
PEGASUS_VALUE_CONSTRUCTORS(Uint64, Uint64)
PEGASUS_VALUE_CONSTRUCTORS(Sint64, Sint64)
PEGASUS_VALUE_CONSTRUCTORS(Real32, Real32)
PEGASUS_VALUE_CONSTRUCTORS(Real64, Real64)
PEGASUS_VALUE_CONSTRUCTORS(Char16, const Char16&)
PEGASUS_VALUE_CONSTRUCTORS(String, const String&)
PEGASUS_VALUE_CONSTRUCTORS(CIMDateTime, const CIMDateTime&)
PEGASUS_VALUE_CONSTRUCTORS(CIMObjectPath, const CIMObjectPath&)
PEGASUS_VALUE_CONSTRUCTORS(CIMObject, const CIMObject&)
PEGASUS_VALUE_CONSTRUCTORS(CIMInstance, const CIMInstance&)
#undef PEGASUS_VALUE_CONSTRUCTORS

CIMValue::CIMValue(const CIMValue& x)
    : _arraySize(x._arraySize), _type(x._type), _isArray(x._isArray), _isNull(x._isNull)
{
    if (_isNull)
        return;
    if (_isPlain(_type, _isArray))
    {
        std::memcpy(_payload, x._payload, sizeof _payload);
        return;
    }
    _visit(
        _type, _isArray,
        [&](auto tag)
        {
            typedef typename decltype(tag)::type V;
            SlotOf<V>::copy(_payload, x._payload);
        });
}

CIMValue::CIMValue(CIMValue&& x) noexcept
    : _arraySize(0), _type(CIMTYPE_BOOLEAN), _isArray(0), _isNull(1)
{
    _moveFrom(x);
}

CIMValue::~CIMValue()
{
    _release();
}

CIMValue& CIMValue::operator=(const CIMValue& x)
{
    assign(x);
    return *this;
}

CIMValue& CIMValue::operator=(CIMValue&& x) noexcept
{
    if (this != &x)
    {
        _release();
        _moveFrom(x);
    }
    return *this;
}

void CIMValue::assign(const CIMValue& x)
{
    if (this != &x)
    {
        CIMValue copy(x);
        _release();
        _moveFrom(copy);
    }
}

void CIMValue::clear()
{
    _release();
}

void CIMValue::_release()
{
    if (!_isNull && !_isPlain(_type, _isArray))
    {
        _visit(
            _type, _isArray,
            [&](auto tag)
            {
                typedef typename decltype(tag)::type V;
                SlotOf<V>::destroy(_payload);
            });
    }
    _arraySize = 0;
    _type = CIMTYPE_BOOLEAN;
    _isArray = 0;
    _isNull = 1;
}

void CIMValue::_moveFrom(CIMValue& x) noexcept
{
    _arraySize = x._arraySize;
    _type = x._type;
    _isArray = x._isArray;
    _isNull = x._isNull;
    if (!_isNull)
    {
        if (_isPlain(_type, _isArray))
        {
            std::memcpy(_payload, x._payload, sizeof _payload);
        }
        else
        {
            _visit(
                _type, _isArray,
                [&](auto tag)
                {
                    typedef typename decltype(tag)::type V;
                    SlotOf<V>::move(_payload, x._payload);
                });
        }
    }
    x._arraySize = 0;
    x._type = CIMTYPE_BOOLEAN;
    x._isArray = 0;
    x._isNull = 1;
}

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    _release();
    _type = Uint8(type);
    _isArray = isArray;
    _arraySize = isArray ? arraySize : 0;
}

//
// Typed access
//

namespace
{
// Type and array-ness must match; true if there is a value to read.
template <class T>
bool _fetch(CIMType type, bool isArray, bool isNull, bool array)
{
    if (type != TypeTraits<T>::type || isArray != array)
        throw TypeMismatchException();
    return !isNull;
}
}  // namespace

#define PEGASUS_VALUE_SET(T, stored, size)                                                         \
    {                                                                                              \
        typedef std::decay_t<decltype(stored)> V;                                                  \
        /* Made before the old value goes: x may be part of it. */                                 \
        alignas(void*) unsigned char fresh[sizeof _payload];                                       \
        SlotOf<V>::construct(fresh, stored);                                                       \
        _release();                                                                                \
        SlotOf<V>::move(_payload, fresh);                                                          \
        _type = Uint8(TypeTraits<T>::type);                                                        \
        _isArray = std::is_same_v<V, Array<T>>;                                                    \
        _arraySize = size;                                                                         \
        _isNull = 0;                                                                               \
    }

#define PEGASUS_VALUE_ACCESS(T)                                                                    \
    void CIMValue::set(const Array<T>& x) PEGASUS_VALUE_SET(T, x, x.size()) void CIMValue::get(    \
        Array<T>& x) const                                                                         \
    {                                                                                              \
        if (_fetch<T>(getType(), _isArray, _isNull, true))                                         \
            x = SlotOf<Array<T>>::ref(_payload);                                                   \
    }
#define PEGASUS_SCALAR_ACCESS(T, Param)                                                            \
    void CIMValue::set(Param x) PEGASUS_VALUE_SET(T, x, 0) void CIMValue::get(T& x) const          \
    {                                                                                              \
        if (_fetch<T>(getType(), _isArray, _isNull, false))                                        \
            x = SlotOf<T>::ref(_payload);                                                          \
    }                                                                                              \
    PEGASUS_VALUE_ACCESS(T)

PEGASUS_SCALAR_ACCESS(Boolean, Boolean)
PEGASUS_SCALAR_ACCESS(Uint8, Uint8)
PEGASUS_SCALAR_ACCESS(Sint8, Sint8)
PEGASUS_SCALAR_ACCESS(Uint16, Uint16)
PEGASUS_SCALAR_ACCESS(Sint16, Sint16)
PEGASUS_SCALAR_ACCESS(Uint32, Uint32)
PEGASUS_SCALAR_ACCESS(Sint32, Sint32)
PEGASUS_SCALAR_ACCESS(Uint64, Uint64)
PEGASUS_SCALAR_ACCESS(Sint64, Sint64)
PEGASUS_SCALAR_ACCESS(Real32, Real32)
PEGASUS_SCALAR_ACCESS(Real64, Real64)
PEGASUS_SCALAR_ACCESS(Char16, const Char16&)
PEGASUS_SCALAR_ACCESS(String, const String&)
PEGASUS_SCALAR_ACCESS(CIMDateTime, const CIMDateTime&)
PEGASUS_SCALAR_ACCESS(CIMObjectPath, const CIMObjectPath&)
#undef PEGASUS_SCALAR_ACCESS
#undef PEGASUS_VALUE_ACCESS

// Embedded objects go in and come out as clones.
void CIMValue::set(const CIMObject& x) PEGASUS_VALUE_SET(
    CIMObject, _cloned(x), 0) void CIMValue::set(const Array<CIMObject>& x)
    PEGASUS_VALUE_SET(CIMObject, _clonedArray(x), x.size()) void CIMValue::set(const CIMInstance& x)
        PEGASUS_VALUE_SET(CIMInstance, _cloned(x), 0) void CIMValue::set(
            const Array<CIMInstance>& x) PEGASUS_VALUE_SET(CIMInstance, _clonedArray(x), x.size())
#undef PEGASUS_VALUE_SET

            void CIMValue::get(CIMObject& x) const
{
    if (_fetch<CIMObject>(getType(), _isArray, _isNull, false))
        x = SlotOf<CIMObject>::ref(_payload).clone();
}
void CIMValue::get(Array<CIMObject>& x) const
{
    if (_fetch<CIMObject>(getType(), _isArray, _isNull, true))
        x = _clonedArray(SlotOf<Array<CIMObject>>::ref(_payload));
}
void CIMValue::get(CIMInstance& x) const
{
    if (_fetch<CIMInstance>(getType(), _isArray, _isNull, false))
        x = SlotOf<CIMInstance>::ref(_payload).clone();
}
void CIMValue::get(Array<CIMInstance>& x) const
{
    if (_fetch<CIMInstance>(getType(), _isArray, _isNull, true))
        x = _clonedArray(SlotOf<Array<CIMInstance>>::ref(_payload));
}

//
// Comparison and text
//

Boolean CIMValue::equal(const CIMValue& x) const
{
    if (!typeCompatible(x) || isNull() != x.isNull())
        return false;
    if (isNull())
        return true;
    bool same = false;
    _visit(
        _type, _isArray,
        [&](auto tag)
        {
            typedef typename decltype(tag)::type V;
            same = _same(SlotOf<V>::ref(_payload), SlotOf<V>::ref(x._payload));
        });
    return same;
}

String CIMValue::toString() const
{
    String out;
    if (isNull())
        return out;
    _visit(
        _type, _isArray,
        [&](auto tag)
        {
            typedef typename decltype(tag)::type V;
            _text(out, SlotOf<V>::ref(_payload));
        });
    return out;
}

Boolean operator==(const CIMValue& x, const CIMValue& y)
{
    return x.equal(y);
}

Boolean operator!=(const CIMValue& x, const CIMValue& y)
{
    return !x.equal(y);
}

PEGASUS_NAMESPACE_END
