#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

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
class RecentNames
{
public:
    const String* find(const char* text, size_t length, size_t hash) const
    {
        const Slot* set = _setOf(hash);
        for (size_t way = 0; way < kWays; ++way)
        {
            const Slot& s = set[way];
            if (s.text.size() == length && std::memcmp(s.text.data(), text, length) == 0)
                return &s.name;
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
    struct Slot
    {
        std::string text;
        String name;
    };

    Slot* _setOf(size_t hash) { return &_slots[(hash % kSets) * kWays]; }
    const Slot* _setOf(size_t hash) const { return &_slots[(hash % kSets) * kWays]; }

    Slot _slots[kSets * kWays];
};

// On the heap, made on a thread's first use: threads that never make a name
// from a C string carry nothing.
RecentNames& recentNames()
{
    thread_local std::unique_ptr<RecentNames> names;
    if (!names)
        names.reset(new RecentNames());
    return *names;
}
}  // namespace

CIMName::CIMName(const char* name)
{
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
    recentNames().remember(name, length, hash, cimName);
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
    return String::equalNoCase(cimName, name.cimName);
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

CIMNamespaceName::CIMNamespaceName(const char* name)
    : cimNamespaceName(_checkedNamespace(String(name)))
{
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
