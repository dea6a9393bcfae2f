#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMInstance.h>

#include <atomic>
#include <cstdio>
#include <type_traits>
#include <utility>
#include <variant>

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

typedef std::variant<
    std::monostate,
    Boolean,
    Uint8,
    Sint8,
    Uint16,
    Sint16,
    Uint32,
    Sint32,
    Uint64,
    Sint64,
    Real32,
    Real64,
    Char16,
    String,
    CIMDateTime,
    CIMObjectPath,
    CIMObject,
    CIMInstance,
    Array<Boolean>,
    Array<Uint8>,
    Array<Sint8>,
    Array<Uint16>,
    Array<Sint16>,
    Array<Uint32>,
    Array<Sint32>,
    Array<Uint64>,
    Array<Sint64>,
    Array<Real32>,
    Array<Real64>,
    Array<Char16>,
    Array<String>,
    Array<CIMDateTime>,
    Array<CIMObjectPath>,
    Array<CIMObject>,
    Array<CIMInstance>>
    Variant;
}  // namespace

// Immutable once built: set() replaces the whole representation, so copies
// share it freely.
class CIMValueRep
{
public:
    template <class V>
    CIMValueRep(CIMType t, bool array, Uint32 size, V&& v)
        : refs(1),
          type(t),
          isArray(array),
          isNull(false),
          arraySize(size),
          value(std::forward<V>(v))
    {
    }

    std::atomic<Uint32> refs;
    CIMType type;
    bool isArray;
    bool isNull;
    Uint32 arraySize;  // kept for typed null arrays
    Variant value;
};

namespace
{
inline void _unref(CIMValueRep* rep)
{
    if (rep && rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete rep;
}

inline void _replace(CIMValueRep*& rep, CIMValueRep* by)
{
    _unref(rep);
    rep = by;
}

template <class T>
struct ElementOf
{
    typedef T type;
};
template <class T>
struct ElementOf<Array<T>>
{
    typedef T type;
};

template <class V>
CIMValueRep* _makeRep(bool array, Uint32 size, const V& v)
{
    return new CIMValueRep(
        TypeTraits<typename ElementOf<V>::type>::type, array, size,
        Variant(std::in_place_type<V>, v));
}

CIMValueRep* _makeNull(CIMType type, bool array, Uint32 size)
{
    CIMValueRep* rep = new CIMValueRep(type, array, array ? size : 0, Variant());
    rep->isNull = true;
    return rep;
}

// Type and array-ness must match; true if there is a value to read.
template <class T>
bool _fetch(const CIMValueRep* rep, bool array)
{
    CIMType type = rep ? rep->type : CIMTYPE_BOOLEAN;
    bool isArray = rep ? rep->isArray : false;
    if (type != TypeTraits<T>::type || isArray != array)
        throw TypeMismatchException();
    return rep && !rep->isNull;
}

template <class T>
const T& _scalar(const CIMValueRep* rep)
{
    return std::get<T>(rep->value);
}

template <class T>
const Array<T>& _array(const CIMValueRep* rep)
{
    return std::get<Array<T>>(rep->value);
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

CIMValue::CIMValue() : _rep(nullptr)
{
}

CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize)
    : _rep(_makeNull(type, isArray, arraySize))
{
}

CIMValue::CIMValue(Boolean x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Boolean>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Uint8 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Uint8>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Sint8 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Sint8>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Uint16 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Uint16>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Sint16 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Sint16>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Uint32 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Uint32>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Sint32 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Sint32>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Uint64 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Uint64>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Sint64 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Sint64>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Real32 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Real32>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(Real64 x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Real64>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Char16& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<Char16>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const String& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<String>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const CIMDateTime& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<CIMDateTime>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const CIMObjectPath& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<CIMObjectPath>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const CIMObject& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<CIMObject>& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const CIMInstance& x) : _rep(nullptr)
{
    set(x);
}
CIMValue::CIMValue(const Array<CIMInstance>& x) : _rep(nullptr)
{
    set(x);
}

CIMValue::CIMValue(const CIMValue& x) : _rep(x._rep)
{
    if (_rep)
        _rep->refs.fetch_add(1, std::memory_order_relaxed);
}

CIMValue::CIMValue(CIMValue&& x) noexcept : _rep(x._rep)
{
    x._rep = nullptr;
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
        _rep = x._rep;
        x._rep = nullptr;
    }
    return *this;
}

void CIMValue::assign(const CIMValue& x)
{
    if (_rep != x._rep)
    {
        if (x._rep)
            x._rep->refs.fetch_add(1, std::memory_order_relaxed);
        _release();
        _rep = x._rep;
    }
}

void CIMValue::clear()
{
    _release();
}

void CIMValue::_release()
{
    _unref(_rep);
    _rep = nullptr;
}

//
// Inspection
//

Boolean CIMValue::typeCompatible(const CIMValue& x) const
{
    return getType() == x.getType() && isArray() == x.isArray();
}

Boolean CIMValue::isArray() const
{
    return _rep && _rep->isArray;
}

Boolean CIMValue::isNull() const
{
    return !_rep || _rep->isNull;
}

Uint32 CIMValue::getArraySize() const
{
    return _rep && _rep->isArray ? _rep->arraySize : 0;
}

CIMType CIMValue::getType() const
{
    return _rep ? _rep->type : CIMTYPE_BOOLEAN;
}

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    _replace(_rep, _makeNull(type, isArray, arraySize));
}

//
// Typed access
//

void CIMValue::set(Boolean x)
{
    _replace(_rep, _makeRep<Boolean>(false, 0, x));
}
void CIMValue::set(const Array<Boolean>& x)
{
    _replace(_rep, _makeRep<Array<Boolean>>(true, x.size(), x));
}
void CIMValue::set(Uint8 x)
{
    _replace(_rep, _makeRep<Uint8>(false, 0, x));
}
void CIMValue::set(const Array<Uint8>& x)
{
    _replace(_rep, _makeRep<Array<Uint8>>(true, x.size(), x));
}
void CIMValue::set(Sint8 x)
{
    _replace(_rep, _makeRep<Sint8>(false, 0, x));
}
void CIMValue::set(const Array<Sint8>& x)
{
    _replace(_rep, _makeRep<Array<Sint8>>(true, x.size(), x));
}
void CIMValue::set(Uint16 x)
{
    _replace(_rep, _makeRep<Uint16>(false, 0, x));
}
void CIMValue::set(const Array<Uint16>& x)
{
    _replace(_rep, _makeRep<Array<Uint16>>(true, x.size(), x));
}
void CIMValue::set(Sint16 x)
{
    _replace(_rep, _makeRep<Sint16>(false, 0, x));
}
void CIMValue::set(const Array<Sint16>& x)
{
    _replace(_rep, _makeRep<Array<Sint16>>(true, x.size(), x));
}
void CIMValue::set(Uint32 x)
{
    _replace(_rep, _makeRep<Uint32>(false, 0, x));
}
void CIMValue::set(const Array<Uint32>& x)
{
    _replace(_rep, _makeRep<Array<Uint32>>(true, x.size(), x));
}
void CIMValue::set(Sint32 x)
{
    _replace(_rep, _makeRep<Sint32>(false, 0, x));
}
void CIMValue::set(const Array<Sint32>& x)
{
    _replace(_rep, _makeRep<Array<Sint32>>(true, x.size(), x));
}
void CIMValue::set(Uint64 x)
{
    _replace(_rep, _makeRep<Uint64>(false, 0, x));
}
void CIMValue::set(const Array<Uint64>& x)
{
    _replace(_rep, _makeRep<Array<Uint64>>(true, x.size(), x));
}
void CIMValue::set(Sint64 x)
{
    _replace(_rep, _makeRep<Sint64>(false, 0, x));
}
void CIMValue::set(const Array<Sint64>& x)
{
    _replace(_rep, _makeRep<Array<Sint64>>(true, x.size(), x));
}
void CIMValue::set(Real32 x)
{
    _replace(_rep, _makeRep<Real32>(false, 0, x));
}
void CIMValue::set(const Array<Real32>& x)
{
    _replace(_rep, _makeRep<Array<Real32>>(true, x.size(), x));
}
void CIMValue::set(Real64 x)
{
    _replace(_rep, _makeRep<Real64>(false, 0, x));
}
void CIMValue::set(const Array<Real64>& x)
{
    _replace(_rep, _makeRep<Array<Real64>>(true, x.size(), x));
}
void CIMValue::set(const Char16& x)
{
    _replace(_rep, _makeRep<Char16>(false, 0, x));
}
void CIMValue::set(const Array<Char16>& x)
{
    _replace(_rep, _makeRep<Array<Char16>>(true, x.size(), x));
}
void CIMValue::set(const String& x)
{
    _replace(_rep, _makeRep<String>(false, 0, x));
}
void CIMValue::set(const Array<String>& x)
{
    _replace(_rep, _makeRep<Array<String>>(true, x.size(), x));
}
void CIMValue::set(const CIMDateTime& x)
{
    _replace(_rep, _makeRep<CIMDateTime>(false, 0, x));
}
void CIMValue::set(const Array<CIMDateTime>& x)
{
    _replace(_rep, _makeRep<Array<CIMDateTime>>(true, x.size(), x));
}
void CIMValue::set(const CIMObjectPath& x)
{
    _replace(_rep, _makeRep<CIMObjectPath>(false, 0, x));
}
void CIMValue::set(const Array<CIMObjectPath>& x)
{
    _replace(_rep, _makeRep<Array<CIMObjectPath>>(true, x.size(), x));
}
void CIMValue::set(const CIMObject& x)
{
    _replace(_rep, _makeRep<CIMObject>(false, 0, _cloned(x)));
}
void CIMValue::set(const Array<CIMObject>& x)
{
    _replace(_rep, _makeRep<Array<CIMObject>>(true, x.size(), _clonedArray(x)));
}
void CIMValue::set(const CIMInstance& x)
{
    _replace(_rep, _makeRep<CIMInstance>(false, 0, _cloned(x)));
}
void CIMValue::set(const Array<CIMInstance>& x)
{
    _replace(_rep, _makeRep<Array<CIMInstance>>(true, x.size(), _clonedArray(x)));
}

void CIMValue::get(Boolean& x) const
{
    if (_fetch<Boolean>(_rep, false))
        x = _scalar<Boolean>(_rep);
}
void CIMValue::get(Array<Boolean>& x) const
{
    if (_fetch<Boolean>(_rep, true))
        x = _array<Boolean>(_rep);
}
void CIMValue::get(Uint8& x) const
{
    if (_fetch<Uint8>(_rep, false))
        x = _scalar<Uint8>(_rep);
}
void CIMValue::get(Array<Uint8>& x) const
{
    if (_fetch<Uint8>(_rep, true))
        x = _array<Uint8>(_rep);
}
void CIMValue::get(Sint8& x) const
{
    if (_fetch<Sint8>(_rep, false))
        x = _scalar<Sint8>(_rep);
}
void CIMValue::get(Array<Sint8>& x) const
{
    if (_fetch<Sint8>(_rep, true))
        x = _array<Sint8>(_rep);
}
void CIMValue::get(Uint16& x) const
{
    if (_fetch<Uint16>(_rep, false))
        x = _scalar<Uint16>(_rep);
}
void CIMValue::get(Array<Uint16>& x) const
{
    if (_fetch<Uint16>(_rep, true))
        x = _array<Uint16>(_rep);
}
void CIMValue::get(Sint16& x) const
{
    if (_fetch<Sint16>(_rep, false))
        x = _scalar<Sint16>(_rep);
}
void CIMValue::get(Array<Sint16>& x) const
{
    if (_fetch<Sint16>(_rep, true))
        x = _array<Sint16>(_rep);
}
void CIMValue::get(Uint32& x) const
{
    if (_fetch<Uint32>(_rep, false))
        x = _scalar<Uint32>(_rep);
}
void CIMValue::get(Array<Uint32>& x) const
{
    if (_fetch<Uint32>(_rep, true))
        x = _array<Uint32>(_rep);
}
void CIMValue::get(Sint32& x) const
{
    if (_fetch<Sint32>(_rep, false))
        x = _scalar<Sint32>(_rep);
}
void CIMValue::get(Array<Sint32>& x) const
{
    if (_fetch<Sint32>(_rep, true))
        x = _array<Sint32>(_rep);
}
void CIMValue::get(Uint64& x) const
{
    if (_fetch<Uint64>(_rep, false))
        x = _scalar<Uint64>(_rep);
}
void CIMValue::get(Array<Uint64>& x) const
{
    if (_fetch<Uint64>(_rep, true))
        x = _array<Uint64>(_rep);
}
void CIMValue::get(Sint64& x) const
{
    if (_fetch<Sint64>(_rep, false))
        x = _scalar<Sint64>(_rep);
}
void CIMValue::get(Array<Sint64>& x) const
{
    if (_fetch<Sint64>(_rep, true))
        x = _array<Sint64>(_rep);
}
void CIMValue::get(Real32& x) const
{
    if (_fetch<Real32>(_rep, false))
        x = _scalar<Real32>(_rep);
}
void CIMValue::get(Array<Real32>& x) const
{
    if (_fetch<Real32>(_rep, true))
        x = _array<Real32>(_rep);
}
void CIMValue::get(Real64& x) const
{
    if (_fetch<Real64>(_rep, false))
        x = _scalar<Real64>(_rep);
}
void CIMValue::get(Array<Real64>& x) const
{
    if (_fetch<Real64>(_rep, true))
        x = _array<Real64>(_rep);
}
void CIMValue::get(Char16& x) const
{
    if (_fetch<Char16>(_rep, false))
        x = _scalar<Char16>(_rep);
}
void CIMValue::get(Array<Char16>& x) const
{
    if (_fetch<Char16>(_rep, true))
        x = _array<Char16>(_rep);
}
void CIMValue::get(String& x) const
{
    if (_fetch<String>(_rep, false))
        x = _scalar<String>(_rep);
}
void CIMValue::get(Array<String>& x) const
{
    if (_fetch<String>(_rep, true))
        x = _array<String>(_rep);
}
void CIMValue::get(CIMDateTime& x) const
{
    if (_fetch<CIMDateTime>(_rep, false))
        x = _scalar<CIMDateTime>(_rep);
}
void CIMValue::get(Array<CIMDateTime>& x) const
{
    if (_fetch<CIMDateTime>(_rep, true))
        x = _array<CIMDateTime>(_rep);
}
void CIMValue::get(CIMObjectPath& x) const
{
    if (_fetch<CIMObjectPath>(_rep, false))
        x = _scalar<CIMObjectPath>(_rep);
}
void CIMValue::get(Array<CIMObjectPath>& x) const
{
    if (_fetch<CIMObjectPath>(_rep, true))
        x = _array<CIMObjectPath>(_rep);
}
void CIMValue::get(CIMObject& x) const
{
    if (_fetch<CIMObject>(_rep, false))
        x = _scalar<CIMObject>(_rep).clone();
}
void CIMValue::get(Array<CIMObject>& x) const
{
    if (_fetch<CIMObject>(_rep, true))
        x = _clonedArray(_array<CIMObject>(_rep));
}
void CIMValue::get(CIMInstance& x) const
{
    if (_fetch<CIMInstance>(_rep, false))
        x = _scalar<CIMInstance>(_rep).clone();
}
void CIMValue::get(Array<CIMInstance>& x) const
{
    if (_fetch<CIMInstance>(_rep, true))
        x = _clonedArray(_array<CIMInstance>(_rep));
}

//
// Comparison and text
//

Boolean CIMValue::equal(const CIMValue& x) const
{
    if (!typeCompatible(x) || isNull() != x.isNull())
        return false;
    if (isNull() || _rep == x._rep)
        return true;
    return std::visit(
        [&x](const auto& mine) -> bool
        {
            typedef std::decay_t<decltype(mine)> V;
            if constexpr (std::is_same_v<V, std::monostate>)
                return true;
            else
                return _same(mine, std::get<V>(x._rep->value));
        },
        _rep->value);
}

String CIMValue::toString() const
{
    String out;
    if (isNull())
        return out;
    std::visit(
        [&out](const auto& v)
        {
            typedef std::decay_t<decltype(v)> V;
            if constexpr (!std::is_same_v<V, std::monostate>)
                _text(out, v);
        },
        _rep->value);
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
