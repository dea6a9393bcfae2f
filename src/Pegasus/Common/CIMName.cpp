#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/StringIntern.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace
{
inline bool _isAlphaUnder(Uint16 c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

inline bool _isWide(Uint16 c)
{
    return c >= 0x0080 && c <= 0xFFEF;
}

inline bool _isFirst(Uint16 c)
{
    return c < 128 ? _isAlphaUnder(c) : _isWide(c);
}

inline bool _isNext(Uint16 c)
{
    return c < 128 ? (_isAlphaUnder(c) || (c >= '0' && c <= '9')) : _isWide(c);
}

// Length of the legal name element starting at p[i] (0 if none), stopping
// before end or a '/' when slashEnds.
Uint32 _element(const Char16* p, Uint32 i, Uint32 end, bool slashEnds)
{
    if (i >= end || !_isFirst(p[i]))
        return 0;
    Uint32 j = i + 1;
    for (; j < end; ++j)
    {
        Uint16 c = p[j];
        if (slashEnds && c == '/')
            break;
        if (!_isNext(c))
            return 0;
    }
    return j - i;
}

// Validates a namespace name and drops its leading '/'.
String _checkedNamespace(const String& name)
{
    if (!CIMNamespaceName::legal(name))
        throw InvalidNamespaceNameException(name);
    return name.size() && name[0] == '/' ? name.subString(1) : name;
}
}  // namespace

//
// CIMName
//

CIMName::CIMName()
{
}

CIMName::CIMName(const String& name) : cimName(name)
{
    if (!legal(cimName))
        throw InvalidNameException(name);
}

namespace
{
// Names made from C strings, as providers make one for every property they
// set, from the same few literals: each thread keeps the checked text of
// recent ones, so that making such a name again shares the String made
// before instead of decoding, allocating and checking the text anew.
//
// A literal is passed at the same address every time: the text seen last at
// an address is looked at first, and only a different text there is hashed.
class RecentNames
{
public:
    const String* find(const char* text)
    {
        const Recent& r = _recent[(reinterpret_cast<std::uintptr_t>(text) >> 3) % kRecent];
        if (r.text != text || !r.slot)
            return nullptr;
        // The same address may hold another text now, shorter ones too: the
        // comparison stops at the first difference or end, terminators included.
        const std::string& known = r.slot->text;
        if (std::strncmp(text, known.c_str(), known.size() + 1) != 0)
            return nullptr;
        return &r.slot->name;
    }

    const String* find(const char* text, size_t length, size_t hash)
    {
        Slot* set = _setOf(hash);
        for (size_t way = 0; way < kWays; ++way)
        {
            Slot& s = set[way];
            if (s.text.size() == length && std::memcmp(s.text.data(), text, length) == 0)
            {
                _seen(text, &s);
                return &s.name;
            }
        }
        return nullptr;
    }

    // Into a free way of the text's set, else over the one the hash picks.
    void remember(const char* text, size_t length, size_t hash, const String& name)
    {
        Slot* set = _setOf(hash);
        Slot* s = &set[(hash >> 16) % kWays];
        for (size_t way = 0; way < kWays; ++way)
        {
            if (set[way].text.empty())
            {
                s = &set[way];
                break;
            }
        }
        s->text.assign(text, length);
        s->name = name;
        _seen(text, s);
    }

    static size_t hashOf(const char* text, size_t length)
    {
        size_t h = 2166136261u;
        for (size_t i = 0; i < length; ++i)
            h = (h ^ static_cast<unsigned char>(text[i])) * 16777619u;
        return h;
    }

private:
    // Room for the property names of a few classes; two ways per set, so
    // that two names of one class that hash alike do not evict each other.
    static const size_t kSets = 256;
    static const size_t kWays = 2;
    static const size_t kRecent = 512;
    struct Slot
    {
        std::string text;
        String name;
    };
    // The slot the text at an address was found in last (a slot's text is
    // compared again on every use: it may have been replaced since).
    struct Recent
    {
        const char* text = nullptr;
        const Slot* slot = nullptr;
    };

    void _seen(const char* text, const Slot* slot)
    {
        Recent& r = _recent[(reinterpret_cast<std::uintptr_t>(text) >> 3) % kRecent];
        r.text = text;
        r.slot = slot;
    }

    Slot* _setOf(size_t hash) { return &_slots[(hash % kSets) * kWays]; }

    Slot _slots[kSets * kWays];
    Recent _recent[kRecent];
};

// On the heap, made on a thread's first use: threads that never make a name
// from a C string carry nothing. The library is loaded with the program, so
// its thread-local pointer can live in the static TLS block (no lookup call).
struct RecentNamesOwner
{
    ~RecentNamesOwner() { delete names; }
    RecentNames* names = nullptr;
};

RecentNames& recentNames()
{
    static thread_local RecentNamesOwner owner __attribute__((tls_model("initial-exec")));
    if (!owner.names)
        owner.names = new RecentNames();
    return *owner.names;
}
}  // namespace

CIMName::CIMName(const char* name)
{
    if (name)
    {
        if (const String* known = recentNames().find(name))
        {
            cimName = *known;
            return;
        }
    }
    // A null or empty text is refused below, as it always was.
    const size_t length = name ? std::strlen(name) : 0;
    const size_t hash = RecentNames::hashOf(name, length);
    if (length != 0)
    {
        if (const String* known = recentNames().find(name, length, hash))
        {
            cimName = *known;
            return;
        }
    }
    cimName = String(name);
    if (!legal(cimName))
        throw InvalidNameException(cimName);
    cimName = internedText(cimName);
    recentNames().remember(name, length, hash, cimName);
}

CIMName internedName(const CIMName& name)
{
    if (isInterned(name.cimName))
        return name;
    CIMName result;
    result.cimName = internedText(name.cimName);
    return result;
}

CIMName& CIMName::operator=(const CIMName& name)
{
    cimName = name.cimName;
    return *this;
}

CIMName& CIMName::operator=(const String& name)
{
    if (!legal(name))
        throw InvalidNameException(name);
    cimName = name;
    return *this;
}

CIMName& CIMName::operator=(const char* name)
{
    return *this = String(name);
}

const String& CIMName::getString() const
{
    return cimName;
}

Boolean CIMName::isNull() const
{
    return cimName.size() == 0;
}

void CIMName::clear()
{
    cimName.clear();
}

Boolean CIMName::equal(const CIMName& name) const
{
    // One text (interned names share theirs) is one name.
    return cimName.getChar16Data() == name.cimName.getChar16Data() ||
           String::equalNoCase(cimName, name.cimName);
}

Boolean CIMName::equal(const char* name) const
{
    return String::equalNoCase(cimName, name);
}

Boolean CIMName::legal(const String& name)
{
    Uint32 n = name.size();
    return n != 0 && _element(name.getChar16Data(), 0, n, false) == n;
}

Boolean operator==(const CIMName& name1, const CIMName& name2)
{
    return name1.equal(name2);
}
Boolean operator==(const CIMName& name1, const char* name2)
{
    return name1.equal(name2);
}
Boolean operator==(const char* name1, const CIMName& name2)
{
    return name2.equal(name1);
}
Boolean operator!=(const CIMName& name1, const CIMName& name2)
{
    return !name1.equal(name2);
}
Boolean operator!=(const CIMName& name1, const char* name2)
{
    return !name1.equal(name2);
}
Boolean operator!=(const char* name1, const CIMName& name2)
{
    return !name2.equal(name1);
}

//
// CIMNamespaceName
//

CIMNamespaceName::CIMNamespaceName()
{
}

CIMNamespaceName::CIMNamespaceName(const String& name) : cimNamespaceName(_checkedNamespace(name))
{
}

namespace
{
// Namespace names from C strings, as providers make one for every object path they build
// (CIMNamespaceName("root/qel")): each thread keeps the checked, interned text of the last
// few, by the address of their text (compared again on every use).
class RecentNamespaces
{
public:
    const String* find(const char* text) const
    {
        const Slot& s = _slots[_slotOf(text)];
        if (s.text != text || std::strncmp(text, s.known.c_str(), s.known.size() + 1) != 0)
            return nullptr;
        return &s.name;
    }

    void remember(const char* text, const String& name)
    {
        Slot& s = _slots[_slotOf(text)];
        s.text = text;
        s.known = text;
        s.name = name;
    }

private:
    static const size_t kSlots = 16;
    struct Slot
    {
        const char* text = nullptr;
        std::string known;
        String name;
    };

    static size_t _slotOf(const char* text)
    {
        return (reinterpret_cast<std::uintptr_t>(text) >> 3) % kSlots;
    }

    Slot _slots[kSlots];
};

RecentNamespaces& recentNamespaces()
{
    static thread_local RecentNamespaces namespaces __attribute__((tls_model("initial-exec")));
    return namespaces;
}
}  // namespace

CIMNamespaceName::CIMNamespaceName(const char* name)
{
    if (name)
    {
        if (const String* known = recentNamespaces().find(name))
        {
            cimNamespaceName = *known;
            return;
        }
    }
    cimNamespaceName = internedText(_checkedNamespace(String(name)));
    recentNamespaces().remember(name, cimNamespaceName);
}

CIMNamespaceName& CIMNamespaceName::operator=(const CIMNamespaceName& name)
{
    cimNamespaceName = name.cimNamespaceName;
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(const String& name)
{
    cimNamespaceName = _checkedNamespace(name);
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(const char* name)
{
    return *this = String(name);
}

const String& CIMNamespaceName::getString() const
{
    return cimNamespaceName;
}

Boolean CIMNamespaceName::isNull() const
{
    return cimNamespaceName.size() == 0;
}

void CIMNamespaceName::clear()
{
    cimNamespaceName.clear();
}

Boolean CIMNamespaceName::equal(const CIMNamespaceName& name) const
{
    return String::equalNoCase(cimNamespaceName, name.cimNamespaceName);
}

Boolean CIMNamespaceName::equal(const char* name) const
{
    return String::equalNoCase(cimNamespaceName, name);
}

Boolean CIMNamespaceName::legal(const String& name)
{
    const Char16* p = name.getChar16Data();
    Uint32 n = name.size();
    Uint32 i = (n && p[0] == '/') ? 1 : 0;
    for (;;)
    {
        Uint32 len = _element(p, i, n, true);
        if (len == 0)
            return false;
        i += len;
        if (i == n)
            return true;
        ++i;  // the '/' before the next element
    }
}

Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return name1.equal(name2);
}
Boolean operator==(const CIMNamespaceName& name1, const char* name2)
{
    return name1.equal(name2);
}
Boolean operator==(const char* name1, const CIMNamespaceName& name2)
{
    return name2.equal(name1);
}
Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return !name1.equal(name2);
}
Boolean operator!=(const CIMNamespaceName& name1, const char* name2)
{
    return !name1.equal(name2);
}
Boolean operator!=(const char* name1, const CIMNamespaceName& name2)
{
    return !name2.equal(name1);
}

PEGASUS_NAMESPACE_END
