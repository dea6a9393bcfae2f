// String: a sequence of UTF-16 code units with a shared, copy-on-write
// representation; CString: a UTF-8 copy of one.
#ifndef Pegasus_String_h
#define Pegasus_String_h

#include <atomic>
#include <cstdarg>
#include <iostream>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Char16.h>

PEGASUS_NAMESPACE_BEGIN

class String;

// Implementation detail, in the header so that copying and destroying a String (the
// commonest operations of the whole object model) are inlined: a shared text buffer, a
// header followed by cap + 1 code units (the last one reserved for the terminating 0).
// Reps with the kImmortal bit set (the empty text and interned names, see
// StringIntern.h) are never counted nor freed: copies of them cost no atomic operation.
struct StringRep
{
    static const Uint32 kImmortal = 0x80000000u;

    constexpr StringRep(Uint32 refs_, Uint32 size_, Uint32 cap_)
        : refs(refs_), size(size_), cap(cap_)
    {
    }

    std::atomic<Uint32> refs;
    Uint32 size;
    Uint32 cap;

    Char16* data() { return reinterpret_cast<Char16*>(this + 1); }

    static StringRep* alloc(Uint32 cap);
    // Frees a rep whose last reference went.
    PEGASUS_COMMON_LINKAGE static void destroy(StringRep* rep);

    static bool immortal(const StringRep* rep)
    {
        return rep->refs.load(std::memory_order_relaxed) & kImmortal;
    }

    static void ref(StringRep* rep)
    {
        if (!immortal(rep))
            rep->refs.fetch_add(1, std::memory_order_relaxed);
    }

    static void unref(StringRep* rep)
    {
        if (!immortal(rep) && rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            destroy(rep);
    }
};

// The empty text every String starts as: constant-initialized, so Strings made by other
// static constructors find it ready.
struct StringRepEmpty
{
    StringRep rep;
    Uint16 terminator;
};
extern PEGASUS_COMMON_LINKAGE StringRepEmpty stringRepEmpty;

// Owns a null-terminated UTF-8 text; the default CString holds a null pointer.
class PEGASUS_COMMON_LINKAGE CString
{
public:
    CString();
    CString(const CString& cstr);
    ~CString();
    CString& operator=(const CString& cstr);
    // Valid only while this CString lives and is not reassigned.
    operator const char*() const;

private:
    explicit CString(char* cstr);
    friend class String;
    char* _rep;
};

class PEGASUS_COMMON_LINKAGE String
{
public:
    static const String EMPTY;

    String() : _rep(&stringRepEmpty.rep) {}
    String(const String& str) : _rep(str._rep) { StringRep::ref(_rep); }
    String(String&& str) noexcept : _rep(str._rep) { str._rep = &stringRepEmpty.rep; }
    // First n units of str; n > str.size() throws IndexOutOfBoundsException.
    String(const String& str, Uint32 n);
    // Null pointers throw NullPointer.
    String(const Char16* str);
    String(const Char16* str, Uint32 n);
    // UTF-8 text; invalid sequences throw Exception.
    String(const char* str);
    // The first n bytes of a UTF-8 text.
    String(const char* str, Uint32 n);
    // Concatenations.
    String(const String& s1, const String& s2);
    String(const String& s1, const char* s2);
    String(const char* s1, const String& s2);
    ~String() { StringRep::unref(_rep); }

    String& operator=(const String& str) { return assign(str); }
    String& operator=(String&& str) noexcept;
    String& operator=(const char* str);
    String& assign(const String& str)
    {
        if (_rep != str._rep)
        {
            StringRep::ref(str._rep);
            StringRep::unref(_rep);
            _rep = str._rep;
        }
        return *this;
    }
    String& assign(const Char16* str);
    String& assign(const Char16* str, Uint32 n);
    String& assign(const char* str);
    String& assign(const char* str, Uint32 n);

    void clear();
    void reserveCapacity(Uint32 capacity);
    Uint32 size() const { return _rep->size; }
    // Null-terminated; valid until this String changes.
    const Char16* getChar16Data() const { return _rep->data(); }
    CString getCString() const;

    // index == size() yields the terminating 0; index > size() throws
    // IndexOutOfBoundsException.
    Char16& operator[](Uint32 index);
    const Char16 operator[](Uint32 index) const;

    String& append(const Char16& c);
    String& append(const Char16* str, Uint32 n);
    String& append(const String& str);
    String& append(const char* str);
    String& append(const char* str, Uint32 size);

    // size == PEG_NOT_FOUND removes to the end; index + size > size() throws
    // IndexOutOfBoundsException.
    void remove(Uint32 index, Uint32 size = PEG_NOT_FOUND);
    String subString(Uint32 index, Uint32 n = PEG_NOT_FOUND) const;

    Uint32 find(Char16 c) const;
    Uint32 find(Uint32 index, Char16 c) const;
    Uint32 find(const String& s) const;
    Uint32 find(const char* s) const;
    Uint32 reverseFind(Char16 c) const;

    // Only ASCII letters change case.
    void toLower();
    void toUpper();

    PEGASUS_FORMAT(2, 3)
    void appendPrintf(const char* format, ...);

    static int compare(const String& s1, const String& s2, Uint32 n);
    static int compare(const String& s1, const String& s2);
    static int compare(const String& s1, const char* s2);
    static int compareNoCase(const String& s1, const String& s2);
    static Boolean equal(const String& s1, const String& s2);
    static Boolean equal(const String& s1, const char* s2);
    static Boolean equalNoCase(const String& s1, const String& s2);
    static Boolean equalNoCase(const String& s1, const char* s2);

private:
    friend PEGASUS_COMMON_LINKAGE String internedText(const String& text);
    friend PEGASUS_COMMON_LINKAGE bool isInterned(const String& text);

    void _unshare();
    void _reserve(Uint32 capacity);
    void _appendUtf8(const char* str, size_t n);

    StringRep* _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE String operator+(const char* s1, const String& s2);

// Units 1..0xFF are written as single bytes, others as "\x" and 4 hex digits.
PEGASUS_COMMON_LINKAGE std::ostream& operator<<(std::ostream& os, const String& str);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_String_h */
