#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>

#include <Pegasus/Common/StringIntern.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
#include <ostream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

StringRepEmpty stringRepEmpty{StringRep(StringRep::kImmortal, 0, 0), 0};

namespace
{
inline Uint16 _lower(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') ? Uint16(c + ('a' - 'A')) : c;
}

inline Uint16 _upper(Uint16 c)
{
    return (c >= 'a' && c <= 'z') ? Uint16(c - ('a' - 'A')) : c;
}

inline void _checkNull(const void* p)
{
    if (!p)
        throw NullPointer();
}

inline Uint32 _lengthOf(const Char16* s)
{
    const Char16* e = s;
    while (Uint16(*e))
        ++e;
    return Uint32(e - s);
}

Uint32 _roundUp(Uint32 n)
{
    Uint32 cap = 8;
    while (cap < n && cap < 0x80000000u)
        cap <<= 1;
    return cap < n ? n : cap;
}

// Compares up to the first 0 unit of either text.
template <class Fold>
int _compareUnits(const Char16* s1, const Char16* s2, Fold fold)
{
    while (Uint16(*s1) && Uint16(*s2))
    {
        int r = int(fold(Uint16(*s1++))) - int(fold(Uint16(*s2++)));
        if (r)
            return r;
    }
    if (Uint16(*s2))
        return -1;
    if (Uint16(*s1))
        return 1;
    return 0;
}

inline Uint16 _same(Uint16 c)
{
    return c;
}
}  // namespace

StringRep* StringRep::alloc(Uint32 cap)
{
    void* mem = ::operator new(sizeof(StringRep) + (size_t(cap) + 1) * sizeof(Char16));
    StringRep* rep = new (mem) StringRep(1, 0, cap);
    new (rep->data()) Char16(0);
    return rep;
}

// Kept out of line: inlined where a String still holds the empty text, the compiler would
// see that text's static storage reach operator delete (the immortal bit keeps it away).
__attribute__((noinline)) void StringRep::destroy(StringRep* rep)
{
    rep->~StringRep();
    ::operator delete(rep);
}

//
// Interned texts
//

namespace
{
// One immortal rep per distinct text. Never destroyed: its reps are in use until the end.
struct InternPool
{
    std::mutex mutex;
    std::unordered_map<std::u16string, StringRep*> reps;  // REQUIRES: mutex held
};

InternPool& internPool()
{
    static InternPool* pool = new InternPool();
    return *pool;
}
}  // namespace

String internedText(const String& text)
{
    if (StringRep::immortal(text._rep))
        return text;
    const std::u16string key(reinterpret_cast<const char16_t*>(text.getChar16Data()), text.size());
    InternPool& pool = internPool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    StringRep* rep;
    auto found = pool.reps.find(key);
    if (found != pool.reps.end())
    {
        rep = found->second;
    }
    else
    {
        if (pool.reps.size() >= kMaxInternedTexts)
            return text;
        rep = StringRep::alloc(text.size());
        memcpy(
            static_cast<void*>(rep->data()), text.getChar16Data(),
            (size_t(text.size()) + 1) * sizeof(Char16));
        rep->size = text.size();
        rep->refs.store(StringRep::kImmortal, std::memory_order_relaxed);
        pool.reps.emplace(key, rep);
    }
    String result;
    result._rep = rep;  // immortal: nothing to count
    return result;
}

bool isInterned(const String& text)
{
    return StringRep::immortal(text._rep);
}

//
// CString
//

CString::CString() : _rep(nullptr)
{
}

CString::CString(char* cstr) : _rep(cstr)
{
}

CString::CString(const CString& cstr) : _rep(nullptr)
{
    if (cstr._rep)
    {
        size_t n = strlen(cstr._rep) + 1;
        _rep = new char[n];
        memcpy(_rep, cstr._rep, n);
    }
}

CString::~CString()
{
    delete[] _rep;
}

CString& CString::operator=(const CString& cstr)
{
    if (this != &cstr)
    {
        CString tmp(cstr);
        std::swap(_rep, tmp._rep);
    }
    return *this;
}

CString::operator const char*() const
{
    return _rep;
}

//
// String
//

const String String::EMPTY;

String::String(const String& str, Uint32 n) : _rep(&stringRepEmpty.rep)
{
    if (n > str.size())
        throw IndexOutOfBoundsException();
    append(str.getChar16Data(), n);
}

String::String(const Char16* str) : _rep(&stringRepEmpty.rep)
{
    _checkNull(str);
    append(str, _lengthOf(str));
}

String::String(const Char16* str, Uint32 n) : _rep(&stringRepEmpty.rep)
{
    _checkNull(str);
    append(str, n);
}

String::String(const char* str) : _rep(&stringRepEmpty.rep)
{
    _checkNull(str);
    _appendUtf8(str, strlen(str));
}

String::String(const char* str, Uint32 n) : _rep(&stringRepEmpty.rep)
{
    _checkNull(str);
    _appendUtf8(str, n);
}

String::String(const String& s1, const String& s2) : _rep(&stringRepEmpty.rep)
{
    _reserve(s1.size() + s2.size());
    append(s1);
    append(s2);
}

String::String(const String& s1, const char* s2) : String(s1)
{
    _checkNull(s2);
    _appendUtf8(s2, strlen(s2));
}

String::String(const char* s1, const String& s2) : String(s1)
{
    append(s2);
}

String& String::operator=(String&& str) noexcept
{
    if (this != &str)
    {
        StringRep::unref(_rep);
        _rep = str._rep;
        str._rep = &stringRepEmpty.rep;
    }
    return *this;
}

String& String::operator=(const char* str)
{
    return assign(str);
}

String& String::assign(const Char16* str)
{
    _checkNull(str);
    return assign(String(str));
}

String& String::assign(const Char16* str, Uint32 n)
{
    _checkNull(str);
    return assign(String(str, n));
}

String& String::assign(const char* str)
{
    _checkNull(str);
    return assign(String(str));
}

String& String::assign(const char* str, Uint32 n)
{
    _checkNull(str);
    return assign(String(str, n));
}

void String::clear()
{
    if (_rep->refs.load() == 1 && _rep != &stringRepEmpty.rep)
    {
        _rep->size = 0;
        _rep->data()[0] = 0;
    }
    else
    {
        StringRep::unref(_rep);
        _rep = &stringRepEmpty.rep;
    }
}

void String::reserveCapacity(Uint32 capacity)
{
    _reserve(capacity);
}

Char16& String::operator[](Uint32 index)
{
    if (index > _rep->size)
        throw IndexOutOfBoundsException();
    _unshare();
    return _rep->data()[index];
}

const Char16 String::operator[](Uint32 index) const
{
    if (index > _rep->size)
        throw IndexOutOfBoundsException();
    return _rep->data()[index];
}

String& String::append(const Char16& c)
{
    Char16 copy(c);  // c may live in this string
    _reserve(_rep->size + 1);
    _rep->data()[_rep->size++] = copy;
    _rep->data()[_rep->size] = 0;
    return *this;
}

String& String::append(const Char16* str, Uint32 n)
{
    _checkNull(str);
    if (n == 0)
        return *this;
    if (str >= _rep->data() && str <= _rep->data() + _rep->size)
    {
        // str points into this string, which may move while growing.
        std::vector<Char16> copy(str, str + n);
        return append(copy.data(), n);
    }
    _reserve(_rep->size + n);
    memcpy(static_cast<void*>(_rep->data() + _rep->size), str, n * sizeof(Char16));
    _rep->size += n;
    _rep->data()[_rep->size] = 0;
    return *this;
}

String& String::append(const String& str)
{
    String keep(str);  // str may be this string
    return append(keep.getChar16Data(), keep.size());
}

String& String::append(const char* str)
{
    _checkNull(str);
    _appendUtf8(str, strlen(str));
    return *this;
}

String& String::append(const char* str, Uint32 size)
{
    _checkNull(str);
    _appendUtf8(str, size);
    return *this;
}

void String::remove(Uint32 index, Uint32 size)
{
    Uint32 n = _rep->size;
    if (index > n)
        throw IndexOutOfBoundsException();
    if (size == PEG_NOT_FOUND)
        size = n - index;
    if (Uint64(index) + size > n)
        throw IndexOutOfBoundsException();
    if (size == 0)
        return;
    _unshare();
    Char16* d = _rep->data();
    memmove(static_cast<void*>(d + index), d + index + size, (n - index - size) * sizeof(Char16));
    _rep->size = n - size;
    d[_rep->size] = 0;
}

String String::subString(Uint32 index, Uint32 n) const
{
    if (index >= _rep->size)
        return String();
    if (n == PEG_NOT_FOUND || n > _rep->size - index)
        n = _rep->size - index;
    if (index == 0 && n == _rep->size)
        return *this;
    return String(_rep->data() + index, n);
}

Uint32 String::find(Char16 c) const
{
    const Char16* d = _rep->data();
    for (Uint32 i = 0; i < _rep->size; ++i)
    {
        if (d[i] == c)
            return i;
    }
    return PEG_NOT_FOUND;
}

Uint32 String::find(Uint32 index, Char16 c) const
{
    if (index > _rep->size)
        throw IndexOutOfBoundsException();
    const Char16* d = _rep->data();
    for (Uint32 i = index; i < _rep->size; ++i)
    {
        if (d[i] == c)
            return i;
    }
    return PEG_NOT_FOUND;
}

Uint32 String::find(const String& s) const
{
    Uint32 n = _rep->size;
    Uint32 m = s.size();
    if (m == 0 || m > n)
        return PEG_NOT_FOUND;
    const Char16* d = _rep->data();
    const Char16* p = s.getChar16Data();
    for (Uint32 i = 0; i + m <= n; ++i)
    {
        if (d[i] == p[0] && memcmp(d + i, p, m * sizeof(Char16)) == 0)
            return i;
    }
    return PEG_NOT_FOUND;
}

Uint32 String::find(const char* s) const
{
    _checkNull(s);
    return find(String(s));
}

Uint32 String::reverseFind(Char16 c) const
{
    const Char16* d = _rep->data();
    for (Uint32 i = _rep->size; i > 0; --i)
    {
        if (d[i - 1] == c)
            return i - 1;
    }
    return PEG_NOT_FOUND;
}

void String::toLower()
{
    _unshare();
    Char16* d = _rep->data();
    for (Uint32 i = 0; i < _rep->size; ++i)
        d[i] = _lower(d[i]);
}

void String::toUpper()
{
    _unshare();
    Char16* d = _rep->data();
    for (Uint32 i = 0; i < _rep->size; ++i)
        d[i] = _upper(d[i]);
}

void String::appendPrintf(const char* format, ...)
{
    _checkNull(format);
    va_list ap;
    va_start(ap, format);
    va_list again;
    va_copy(again, ap);
    char small[256];
    int n = vsnprintf(small, sizeof(small), format, ap);
    va_end(ap);
    if (n < 0)
    {
        va_end(again);
        return;
    }
    if (size_t(n) < sizeof(small))
    {
        va_end(again);
        _appendUtf8(small, size_t(n));
        return;
    }
    std::vector<char> big(size_t(n) + 1);
    vsnprintf(big.data(), big.size(), format, again);
    va_end(again);
    _appendUtf8(big.data(), size_t(n));
}

int String::compare(const String& s1, const String& s2, Uint32 n)
{
    const Char16* p1 = s1.getChar16Data();
    const Char16* p2 = s2.getChar16Data();
    for (Uint32 i = 0; i < n; ++i)
    {
        int r = int(Uint16(p1[i])) - int(Uint16(p2[i]));
        if (r)
            return r;
        if (!Uint16(p1[i]))
            return 0;
    }
    return 0;
}

int String::compare(const String& s1, const String& s2)
{
    return _compareUnits(s1.getChar16Data(), s2.getChar16Data(), _same);
}

int String::compare(const String& s1, const char* s2)
{
    _checkNull(s2);
    return compare(s1, String(s2));
}

int String::compareNoCase(const String& s1, const String& s2)
{
    return _compareUnits(s1.getChar16Data(), s2.getChar16Data(), _lower);
}

Boolean String::equal(const String& s1, const String& s2)
{
    if (s1._rep == s2._rep)
        return true;
    return s1.size() == s2.size() &&
           memcmp(s1.getChar16Data(), s2.getChar16Data(), s1.size() * sizeof(Char16)) == 0;
}

Boolean String::equal(const String& s1, const char* s2)
{
    _checkNull(s2);
    // Pure ASCII texts are compared in place; anything else is decoded.
    const Char16* p = s1.getChar16Data();
    Uint32 n = s1.size();
    Uint32 i = 0;
    for (; s2[i] && !(static_cast<unsigned char>(s2[i]) & 0x80); ++i)
    {
        if (i >= n || Uint16(p[i]) != Uint16(static_cast<unsigned char>(s2[i])))
            return false;
    }
    if (!s2[i])
        return i == n;
    return equal(s1, String(s2));
}

Boolean String::equalNoCase(const String& s1, const String& s2)
{
    Uint32 n = s1.size();
    if (n != s2.size())
        return false;
    const Char16* p = s1.getChar16Data();
    const Char16* q = s2.getChar16Data();
    for (Uint32 i = 0; i < n; ++i)
    {
        Uint16 a = p[i];
        Uint16 b = q[i];
        if (a != b && _lower(a) != _lower(b))
            return false;
    }
    return true;
}

Boolean String::equalNoCase(const String& s1, const char* s2)
{
    _checkNull(s2);
    // Pure ASCII texts are compared in place; anything else is decoded.
    const Char16* p = s1.getChar16Data();
    Uint32 n = s1.size();
    Uint32 i = 0;
    for (; s2[i] && !(static_cast<unsigned char>(s2[i]) & 0x80); ++i)
    {
        Uint16 a = i < n ? Uint16(p[i]) : 0;
        Uint16 b = Uint16(static_cast<unsigned char>(s2[i]));
        if (i >= n || (a != b && _lower(a) != _lower(b)))
            return false;
    }
    if (!s2[i])
        return i == n;
    return equalNoCase(s1, String(s2));
}

void String::_unshare()
{
    if (_rep == &stringRepEmpty.rep || _rep->refs.load() != 1)
    {
        StringRep* rep = StringRep::alloc(_rep->size);
        memcpy(static_cast<void*>(rep->data()), _rep->data(), (_rep->size + 1) * sizeof(Char16));
        rep->size = _rep->size;
        StringRep::unref(_rep);
        _rep = rep;
    }
}

void String::_reserve(Uint32 capacity)
{
    bool shared = _rep == &stringRepEmpty.rep || _rep->refs.load() != 1;
    if (!shared && capacity <= _rep->cap)
        return;
    Uint32 cap = capacity < _rep->size ? _rep->size : capacity;
    StringRep* rep = StringRep::alloc(_roundUp(cap));
    memcpy(static_cast<void*>(rep->data()), _rep->data(), (_rep->size + 1) * sizeof(Char16));
    rep->size = _rep->size;
    StringRep::unref(_rep);
    _rep = rep;
}

//
// Free operators
//

Boolean operator==(const String& s1, const String& s2)
{
    return String::equal(s1, s2);
}
Boolean operator==(const String& s1, const char* s2)
{
    return String::equal(s1, s2);
}
Boolean operator==(const char* s1, const String& s2)
{
    return String::equal(s2, s1);
}
Boolean operator!=(const String& s1, const String& s2)
{
    return !String::equal(s1, s2);
}
Boolean operator!=(const String& s1, const char* s2)
{
    return !String::equal(s1, s2);
}
Boolean operator!=(const char* s1, const String& s2)
{
    return !String::equal(s2, s1);
}
Boolean operator<(const String& s1, const String& s2)
{
    return String::compare(s1, s2) < 0;
}
Boolean operator<(const String& s1, const char* s2)
{
    return String::compare(s1, s2) < 0;
}
Boolean operator<(const char* s1, const String& s2)
{
    return String::compare(s2, s1) > 0;
}
Boolean operator>(const String& s1, const String& s2)
{
    return String::compare(s1, s2) > 0;
}
Boolean operator>(const String& s1, const char* s2)
{
    return String::compare(s1, s2) > 0;
}
Boolean operator>(const char* s1, const String& s2)
{
    return String::compare(s2, s1) < 0;
}
Boolean operator<=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) <= 0;
}
Boolean operator<=(const String& s1, const char* s2)
{
    return String::compare(s1, s2) <= 0;
}
Boolean operator<=(const char* s1, const String& s2)
{
    return String::compare(s2, s1) >= 0;
}
Boolean operator>=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) >= 0;
}
Boolean operator>=(const String& s1, const char* s2)
{
    return String::compare(s1, s2) >= 0;
}
Boolean operator>=(const char* s1, const String& s2)
{
    return String::compare(s2, s1) <= 0;
}

String operator+(const String& s1, const String& s2)
{
    return String(s1, s2);
}
String operator+(const String& s1, const char* s2)
{
    return String(s1, s2);
}
String operator+(const char* s1, const String& s2)
{
    return String(s1, s2);
}

std::ostream& operator<<(std::ostream& os, const String& str)
{
    const Char16* d = str.getChar16Data();
    for (Uint32 i = 0, n = str.size(); i < n; ++i)
    {
        Uint16 code = d[i];
        if (code > 0 && !(code & 0xFF00))
            os << char(code);
        else
        {
            char buf[8];
            snprintf(buf, sizeof(buf), "\\x%04X", unsigned(code));
            os << buf;
        }
    }
    return os;
}

PEGASUS_NAMESPACE_END
