#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/StringConversion.h>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cstdio>
#include <net/if.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

class CIMObjectPathRep
{
public:
    CIMObjectPathRep() : refs(1) {}
    CIMObjectPathRep(const CIMObjectPathRep& x)
        : refs(1),
          host(x.host),
          nameSpace(x.nameSpace),
          className(x.className),
          keyBindings(x.keyBindings)
    {
    }

    std::atomic<Uint32> refs;
    String host;  // with the port, if any ("myhost:5988")
    CIMNamespaceName nameSpace;
    CIMName className;
    Array<CIMKeyBinding> keyBindings;  // sorted, references normalised
};

namespace
{
//
// Representation sharing
//

CIMObjectPathRep* _emptyRep()
{
    // Holds one reference forever, so users always copy before writing.
    static CIMObjectPathRep* rep = new CIMObjectPathRep();
    return rep;
}

inline void _ref(CIMObjectPathRep* rep)
{
    rep->refs.fetch_add(1, std::memory_order_relaxed);
}

inline void _unref(CIMObjectPathRep* rep)
{
    if (rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete rep;
}

//
// Host names
//

inline bool _isAsciiDigit(Uint16 c)
{
    return c >= '0' && c <= '9';
}

inline bool _isAsciiAlpha(Uint16 c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Four dot-separated groups of 1 to 3 digits, each at most 255.
bool _isIPv4(const Char16* p, Uint32 n)
{
    Uint32 i = 0;
    for (int group = 0; group < 4; ++group)
    {
        Uint32 value = 0;
        Uint32 digits = 0;
        while (i < n && _isAsciiDigit(p[i]))
        {
            if (++digits > 3)
                return false;
            value = value * 10 + (p[i++] - '0');
        }
        if (digits == 0 || value > 255)
            return false;
        if (group < 3 && (i >= n || p[i++] != '.'))
            return false;
    }
    return i == n;
}

// Dot-separated labels of letters, digits, '-' and '_' (not starting with
// '-'); the last label may not be all digits.
bool _isHostName(const Char16* p, Uint32 n)
{
    Uint32 i = 0;
    bool numeric = true;
    for (;;)
    {
        if (i >= n || !(_isAsciiAlpha(p[i]) || _isAsciiDigit(p[i]) || p[i] == '_'))
            return false;
        numeric = true;
        while (i < n && (_isAsciiAlpha(p[i]) || _isAsciiDigit(p[i]) || p[i] == '-' || p[i] == '_'))
        {
            if (!_isAsciiDigit(p[i]))
                numeric = false;
            ++i;
        }
        if (i < n && p[i] == '.')
        {
            ++i;
            continue;
        }
        break;
    }
    return !numeric && i == n;
}

// An IPv6 address; a link-local one (fe80...) needs a known "%zone".
bool _isIPv6(const String& text)
{
    String addr(text);
    if (String::equalNoCase(addr.subString(0, 4), "fe80"))
    {
        Uint32 pct = addr.find('%');
        if (pct == PEG_NOT_FOUND)
            return false;
        CString zone = addr.subString(pct + 1).getCString();
        if (if_nametoindex(zone) == 0)
            return false;
        addr.remove(pct);
    }
    bool colon = false;
    for (Uint32 i = 0; i < addr.size(); ++i)
    {
        if (Uint16(addr[i]) > 127)
            return false;
        colon = colon || addr[i] == ':';
    }
    if (!colon)
        return false;
    unsigned char buf[16];
    return inet_pton(AF_INET6, addr.getCString(), buf) == 1;
}

// host[:port] where host is an IPv4 address, a host name or a bracketed
// IPv6 address, and port (possibly empty) is a number up to 65535.
bool _isValidHost(const String& host)
{
    const Char16* p = host.getChar16Data();
    Uint32 n = host.size();
    if (n == 0)
        return false;
    Uint32 i;
    if (p[0] == '[')
    {
        Uint32 close = host.find(']');
        if (close == PEG_NOT_FOUND || !_isIPv6(host.subString(1, close - 1)))
            return false;
        i = close + 1;
    }
    else
    {
        i = host.find(':');
        if (i == PEG_NOT_FOUND)
            i = n;
        if (!_isIPv4(p, i) && !_isHostName(p, i))
            return false;
    }
    if (i == n)
        return true;
    if (p[i] != ':')
        return false;
    Uint32 port = 0;
    for (++i; i < n; ++i)
    {
        if (!_isAsciiDigit(p[i]))
            return false;
        port = port * 10 + (p[i] - '0');
        if (port > 65535)
            return false;
    }
    return true;
}

String _localHostName()
{
    char name[256] = "";
    if (gethostname(name, sizeof(name) - 1) != 0)
        return String();
    name[sizeof(name) - 1] = '\0';
    return String(name);
}

[[noreturn]] void _throwMalformed(const String& text, const char* reason)
{
    String message(text);
    message.append(", reason:\"");
    message.append(reason);
    message.append("\"");
    throw MalformedObjectNameException(message);
}

[[noreturn]] void _throwMalformed(const String& text, const char* reason, const String& detail)
{
    String message(text);
    message.append(", reason:\"");
    message.append(reason);
    message.append(detail);
    message.append("\"");
    throw MalformedObjectNameException(message);
}

void _checkHost(const String& host)
{
    if (host.size() && !_isValidHost(host))
        _throwMalformed(host, "invalid hostname");
}

//
// Key bindings
//

void _appendEscaped(String& out, const String& value)
{
    const Char16* p = value.getChar16Data();
    Uint32 n = value.size();
    Uint32 start = 0;
    for (Uint32 i = 0; i < n; ++i)
    {
        if (p[i] == '\\' || p[i] == '"')
        {
            out.append(p + start, i - start);
            out.append(Char16('\\'));
            start = i;
        }
    }
    out.append(p + start, n - start);
}

// Reference values are stored in the text form of their own normalised
// path: inner keys sorted, booleans upper-case, leading '/' dropped.
void _normaliseReferences(Array<CIMKeyBinding>& keys)
{
    for (Uint32 i = 0, n = keys.size(); i < n; ++i)
    {
        const CIMKeyBinding& kb = keys.getData()[i];
        if (kb.getType() != CIMKeyBinding::REFERENCE)
            continue;
        String text = CIMObjectPath(kb.getValue()).toString();
        if (!String::equal(text, kb.getValue()))
            keys[i].setValue(text);
    }
}

// By name, ASCII case ignored (so digits < '_' < letters).
bool _keyBefore(const CIMKeyBinding& a, const CIMKeyBinding& b)
{
    return String::compareNoCase(a.getName().getString(), b.getName().getString()) < 0;
}

void _sortKeys(Array<CIMKeyBinding>& keys)
{
    Uint32 n = keys.size();
    if (n < 2)
        return;
    const CIMKeyBinding* d = keys.getData();
    bool sorted = true;
    for (Uint32 i = 1; i < n && sorted; ++i)
        sorted = !_keyBefore(d[i], d[i - 1]);
    if (sorted)
        return;
    const Uint32 kFew = 16;
    if (n > kFew)
    {
        CIMKeyBinding* first = &keys[0];
        std::stable_sort(first, first + n, _keyBefore);
        return;
    }
    // Paths have a few keys: their positions are sorted (stable insertion sort) and the
    // keys copied once in that order, without sorting buffer or extra copies.
    Uint32 order[kFew];
    for (Uint32 i = 0; i < n; ++i)
    {
        Uint32 j = i;
        for (; j > 0 && _keyBefore(d[i], d[order[j - 1]]); --j)
            order[j] = order[j - 1];
        order[j] = i;
    }
    Array<CIMKeyBinding> result;
    result.reserveCapacity(n);
    for (Uint32 i = 0; i < n; ++i)
        result.append(d[order[i]]);
    keys.swap(result);
}

bool _unsignedValue(const String& text, Uint64& x)
{
    return StringConversion::stringToUnsignedInteger(text.getCString(), x);
}

bool _signedValue(const String& text, Sint64& x)
{
    return StringConversion::stringToSignedInteger(text.getCString(), x);
}

// Reads key text as a value of the given integer or real type, by the
// rules of CIM-XML values; false if it does not fit.
bool _numberValue(const String& text, CIMType type, CIMValue& out)
{
    CString c = text.getCString();
    Uint64 u;
    Sint64 s;
    Real64 r;
    switch (type)
    {
        case CIMTYPE_UINT8:
        case CIMTYPE_UINT16:
        case CIMTYPE_UINT32:
        case CIMTYPE_UINT64:
            if (!StringConversion::stringToUnsignedInteger(c, u) ||
                !StringConversion::checkUintBounds(u, type))
                return false;
            if (type == CIMTYPE_UINT8)
                out.set(Uint8(u));
            else if (type == CIMTYPE_UINT16)
                out.set(Uint16(u));
            else if (type == CIMTYPE_UINT32)
                out.set(Uint32(u));
            else
                out.set(Uint64(u));
            return true;
        case CIMTYPE_SINT8:
        case CIMTYPE_SINT16:
        case CIMTYPE_SINT32:
        case CIMTYPE_SINT64:
            if (!StringConversion::stringToSignedInteger(c, s) ||
                !StringConversion::checkSintBounds(s, type))
                return false;
            if (type == CIMTYPE_SINT8)
                out.set(Sint8(s));
            else if (type == CIMTYPE_SINT16)
                out.set(Sint16(s));
            else if (type == CIMTYPE_SINT32)
                out.set(Sint32(s));
            else
                out.set(Sint64(s));
            return true;
        case CIMTYPE_REAL32:
        case CIMTYPE_REAL64:
            if (!StringConversion::stringToReal64(c, r))
                return false;
            if (type == CIMTYPE_REAL32)
                out.set(Real32(r));
            else
                out.set(r);
            return true;
        default:
            return false;
    }
}

//
// Parsing
//

class PathParser
{
public:
    explicit PathParser(const String& text)
        : _text(text), _p(text.getChar16Data()), _n(text.size()), _i(0)
    {
    }

    void parse(CIMObjectPathRep& rep)
    {
        bool gotHost = _host(rep.host);
        bool gotNamespace = _nameSpace(rep.nameSpace);
        if (gotHost && !gotNamespace)
            _fail("host specified, missing namespace");
        Uint32 dot = _findFrom(_i, '.');
        String className = _slice(_i, dot == PEG_NOT_FOUND ? _n : dot);
        if (!CIMName::legal(className))
        {
            _throwMalformed(_text, "class name ", className + String(" not a legal CIM name"));
        }
        rep.className = CIMName(className);
        if (dot == PEG_NOT_FOUND)
            return;
        _i = dot + 1;
        _keys(rep.keyBindings);
        _sortKeys(rep.keyBindings);
    }

private:
    [[noreturn]] void _fail(const char* reason) { _throwMalformed(_text, reason); }

    Uint32 _findFrom(Uint32 from, char c) const
    {
        for (Uint32 k = from; k < _n; ++k)
        {
            if (_p[k] == c)
                return k;
        }
        return PEG_NOT_FOUND;
    }

    String _slice(Uint32 from, Uint32 to) const { return String(_p + from, to - from); }

    // "//host/": the '/' ending the host is left for the namespace.
    bool _host(String& host)
    {
        if (_n < 2 || _p[0] != '/' || _p[1] != '/')
            return false;
        Uint32 slash = _findFrom(2, '/');
        if (slash == PEG_NOT_FOUND)
            _fail("missing slash after hostname");
        String name = _slice(2, slash);
        if (!_isValidHost(name))
            _fail("invalid hostname");
        host = name;
        _i = slash;
        return true;
    }

    // "namespace:" counts only when no '.' comes before the ':'.
    bool _nameSpace(CIMNamespaceName& ns)
    {
        Uint32 colon = _findFrom(_i, ':');
        if (colon == PEG_NOT_FOUND)
            return false;
        Uint32 dot = _findFrom(_i, '.');
        if (dot != PEG_NOT_FOUND && dot < colon)
            return false;
        String name = _slice(_i, colon);
        if (!CIMNamespaceName::legal(name))
            _fail("invalid namespace name");
        ns = name;
        _i = colon + 1;
        return true;
    }

    Uint32 _tokenEnd(Uint32 from) const
    {
        Uint32 comma = _findFrom(from, ',');
        return comma == PEG_NOT_FOUND ? _n : comma;
    }

    void _keys(Array<CIMKeyBinding>& keys)
    {
        while (_i < _n)
        {
            Uint32 eq = _findFrom(_i, '=');
            if (eq == PEG_NOT_FOUND)
                _fail("invalid key-value pair, missing equal sign");
            String name = _slice(_i, eq);
            if (!CIMName::legal(name))
                _throwMalformed(_text, "invalid key-value pair, invalid key name:", name);
            _i = eq + 1;

            String value;
            CIMKeyBinding::Type type;
            Uint16 first = _i < _n ? Uint16(_p[_i]) : 0;
            if (first == '"')
                type = _quoted(value);
            else if (first == 'T' || first == 't' || first == 'F' || first == 'f')
            {
                Uint32 end = _tokenEnd(_i);
                value = _slice(_i, end);
                value.toUpper();
                if (!String::equal(value, "TRUE") && !String::equal(value, "FALSE"))
                    _fail("invalid key-value pair, value should be TRUE or FALSE");
                type = CIMKeyBinding::BOOLEAN;
                _i = end;
            }
            else
            {
                Uint32 end = _tokenEnd(_i);
                value = _slice(_i, end);
                if (first == '-')
                {
                    Sint64 x;
                    if (!_signedValue(value, x))
                        _throwMalformed(
                            _text, "invalid key-value pair, invalid negative number value ", value);
                }
                else
                {
                    Uint64 x;
                    if (!_unsignedValue(value, x))
                        _throwMalformed(
                            _text, "invalid key-value pair, invalid number value ", value);
                }
                type = CIMKeyBinding::NUMERIC;
                _i = end;
            }
            keys.append(CIMKeyBinding(CIMName(name), value, type));

            if (_i < _n)
            {
                if (_p[_i] != ',')
                    _fail("invalid key-value pair, next key-value pair has to start with comma");
                ++_i;
            }
        }
    }

    // A '"'-quoted value with \\ and \" escapes. It is taken for a
    // reference when it contains '=' and reads as a path with keys; the
    // value is then stored in that path's normalised form.
    CIMKeyBinding::Type _quoted(String& value)
    {
        ++_i;
        Uint32 start = _i;
        while (_i < _n && _p[_i] != '"')
        {
            if (_p[_i] == '\\')
            {
                value.append(_p + start, _i - start);
                ++_i;
                if (_i >= _n || (_p[_i] != '\\' && _p[_i] != '"'))
                    _fail("invalid key-value pair, malformed value");
                start = _i;
            }
            ++_i;
        }
        value.append(_p + start, _i - start);
        if (_i >= _n)
            _fail("invalid key-value pair, missing quote in key value");
        ++_i;

        if (value.find('=') != PEG_NOT_FOUND)
        {
            try
            {
                CIMObjectPath path(value);
                if (path.getKeyBindings().size() > 0)
                {
                    value = path.toString();
                    return CIMKeyBinding::REFERENCE;
                }
            }
            catch (const Exception&)
            {
                // not a path: a plain string
            }
        }
        return CIMKeyBinding::STRING;
    }

    const String& _text;
    const Char16* _p;
    Uint32 _n;
    Uint32 _i;
};
}  // namespace

//
// CIMKeyBinding
//

CIMKeyBinding::CIMKeyBinding() : _type(STRING)
{
}

CIMKeyBinding::CIMKeyBinding(const CIMKeyBinding& x) = default;

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const String& value, Type type)
    : _name(name), _value(value), _type(type)
{
}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const CIMValue& value)
    : _name(name), _type(STRING)
{
    if (value.isArray())
        throw TypeMismatchException();
    switch (value.getType())
    {
        case CIMTYPE_BOOLEAN:
            _type = BOOLEAN;
            break;
        case CIMTYPE_CHAR16:
        case CIMTYPE_STRING:
        case CIMTYPE_DATETIME:
            _type = STRING;
            break;
        case CIMTYPE_REFERENCE:
            _type = REFERENCE;
            break;
        case CIMTYPE_OBJECT:
        case CIMTYPE_INSTANCE:
            // embedded objects cannot be keys
            throw TypeMismatchException();
        default:
            _type = NUMERIC;
            break;
    }
    _value = value.toString();
}

CIMKeyBinding::~CIMKeyBinding()
{
}

CIMKeyBinding& CIMKeyBinding::operator=(const CIMKeyBinding& x) = default;

const CIMName& CIMKeyBinding::getName() const
{
    return _name;
}

void CIMKeyBinding::setName(const CIMName& name)
{
    _name = name;
}

const String& CIMKeyBinding::getValue() const
{
    return _value;
}

void CIMKeyBinding::setValue(const String& value)
{
    _value = value;
}

CIMKeyBinding::Type CIMKeyBinding::getType() const
{
    return _type;
}

void CIMKeyBinding::setType(Type type)
{
    _type = type;
}

Boolean CIMKeyBinding::equal(CIMValue value)
{
    if (value.isArray())
        return false;
    CIMValue mine;
    try
    {
        switch (value.getType())
        {
            case CIMTYPE_CHAR16:
                if (_type != STRING)
                    return false;
                mine.set(_value[0]);
                break;
            case CIMTYPE_DATETIME:
                if (_type != STRING)
                    return false;
                mine.set(CIMDateTime(_value));
                break;
            case CIMTYPE_STRING:
                if (_type != STRING)
                    return false;
                mine.set(_value);
                break;
            case CIMTYPE_REFERENCE:
                if (_type != REFERENCE)
                    return false;
                mine.set(CIMObjectPath(_value));
                break;
            case CIMTYPE_BOOLEAN:
                if (_type != BOOLEAN)
                    return false;
                if (String::equalNoCase(_value, "TRUE"))
                    mine.set(true);
                else if (String::equalNoCase(_value, "FALSE"))
                    mine.set(false);
                else
                    return false;
                break;
            case CIMTYPE_OBJECT:
            case CIMTYPE_INSTANCE:
                return false;
            default:
                if (_type != NUMERIC || !_numberValue(_value, value.getType(), mine))
                    return false;
                break;
        }
    }
    catch (const Exception&)
    {
        return false;
    }
    return value.equal(mine);
}

Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y)
{
    if (!x.getName().equal(y.getName()) || x.getType() != y.getType())
        return false;
    const String& a = x.getValue();
    const String& b = y.getValue();
    switch (x.getType())
    {
        case CIMKeyBinding::REFERENCE:
            if (String::equal(a, b))
                return true;
            try
            {
                return CIMObjectPath(a).identical(CIMObjectPath(b));
            }
            catch (const Exception&)
            {
                return false;  // texts differ and do not both read as paths
            }
        case CIMKeyBinding::BOOLEAN:
            return String::equalNoCase(a, b);
        case CIMKeyBinding::NUMERIC:
        {
            Uint64 ua, ub;
            if (_unsignedValue(a, ua) && _unsignedValue(b, ub))
                return ua == ub;
            Sint64 sa, sb;
            if (_signedValue(a, sa) && _signedValue(b, sb))
                return sa == sb;
            return String::equal(a, b);
        }
        default:
            return String::equal(a, b);
    }
}

//
// CIMObjectPath
//

CIMObjectPath::CIMObjectPath() : _rep(_emptyRep())
{
    _ref(_rep);
}

CIMObjectPath::CIMObjectPath(const CIMObjectPath& x) : _rep(x._rep)
{
    _ref(_rep);
}

CIMObjectPath::CIMObjectPath(CIMObjectPath&& x) noexcept : _rep(x._rep)
{
    x._rep = _emptyRep();
    _ref(x._rep);
}

CIMObjectPath::CIMObjectPath(const String& objectName) : CIMObjectPath()
{
    set(objectName);
}

CIMObjectPath::CIMObjectPath(
    const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
    const Array<CIMKeyBinding>& keyBindings)
    : CIMObjectPath()
{
    set(host, nameSpace, className, keyBindings);
}

CIMObjectPath::~CIMObjectPath()
{
    _unref(_rep);
}

CIMObjectPath& CIMObjectPath::operator=(const CIMObjectPath& x)
{
    if (_rep != x._rep)
    {
        _ref(x._rep);
        _unref(_rep);
        _rep = x._rep;
    }
    return *this;
}

CIMObjectPath& CIMObjectPath::operator=(CIMObjectPath&& x) noexcept
{
    if (this != &x)
        std::swap(_rep, x._rep);
    return *this;
}

CIMObjectPath& CIMObjectPath::operator=(const String& objectName)
{
    set(objectName);
    return *this;
}

void CIMObjectPath::clear()
{
    _unref(_rep);
    _rep = _emptyRep();
    _ref(_rep);
}

void CIMObjectPath::set(
    const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
    const Array<CIMKeyBinding>& keyBindings)
{
    _checkHost(host);
    CIMObjectPathRep* rep = new CIMObjectPathRep();
    try
    {
        rep->host = host;
        rep->nameSpace = nameSpace;
        rep->className = className;
        rep->keyBindings = keyBindings;
        _normaliseReferences(rep->keyBindings);
        _sortKeys(rep->keyBindings);
    }
    catch (...)
    {
        delete rep;
        throw;
    }
    _unref(_rep);
    _rep = rep;
}

void CIMObjectPath::set(const String& objectName)
{
    CIMObjectPathRep* rep = new CIMObjectPathRep();
    try
    {
        PathParser(objectName).parse(*rep);
    }
    catch (...)
    {
        delete rep;
        throw;
    }
    _unref(_rep);
    _rep = rep;
}

const String& CIMObjectPath::getHost() const
{
    return _rep->host;
}

void CIMObjectPath::setHost(const String& host)
{
    // The local host name is accepted as it is, whatever its form.
    if (host.size() && !_isValidHost(host) && !String::equal(host, _localHostName()))
        _throwMalformed(host, "invalid hostname");
    _unshare();
    _rep->host = host;
}

const CIMNamespaceName& CIMObjectPath::getNameSpace() const
{
    return _rep->nameSpace;
}

void CIMObjectPath::setNameSpace(const CIMNamespaceName& nameSpace)
{
    _unshare();
    _rep->nameSpace = nameSpace;
}

const CIMName& CIMObjectPath::getClassName() const
{
    return _rep->className;
}

void CIMObjectPath::setClassName(const CIMName& className)
{
    _unshare();
    _rep->className = className;
}

const Array<CIMKeyBinding>& CIMObjectPath::getKeyBindings() const
{
    return _rep->keyBindings;
}

void CIMObjectPath::setKeyBindings(const Array<CIMKeyBinding>& keyBindings)
{
    Array<CIMKeyBinding> keys(keyBindings);
    _normaliseReferences(keys);
    _sortKeys(keys);
    _unshare();
    _rep->keyBindings.swap(keys);
}

String CIMObjectPath::toString() const
{
    String text;
    const CIMObjectPathRep& r = *_rep;
    const CIMKeyBinding* keys = r.keyBindings.getData();
    Uint32 estimate =
        r.host.size() + r.nameSpace.getString().size() + r.className.getString().size() + 8;
    for (Uint32 i = 0, n = r.keyBindings.size(); i < n; ++i)
        estimate += keys[i].getName().getString().size() + keys[i].getValue().size() + 4;
    text.reserveCapacity(estimate);
    if (r.host.size())
    {
        text.append("//");
        text.append(r.host);
        text.append(Char16('/'));
    }
    // With a host the namespace part is always written, even when empty.
    if (!r.nameSpace.isNull() || r.host.size())
    {
        text.append(r.nameSpace.getString());
        text.append(Char16(':'));
    }
    text.append(r.className.getString());
    for (Uint32 i = 0, n = r.keyBindings.size(); i < n; ++i)
    {
        text.append(Char16(i == 0 ? '.' : ','));
        text.append(keys[i].getName().getString());
        text.append(Char16('='));
        bool quoted = keys[i].getType() == CIMKeyBinding::STRING ||
                      keys[i].getType() == CIMKeyBinding::REFERENCE;
        if (quoted)
            text.append(Char16('"'));
        _appendEscaped(text, keys[i].getValue());
        if (quoted)
            text.append(Char16('"'));
    }
    return text;
}

// Host, namespace, class and key names lower-cased, booleans lower-cased,
// numbers in decimal and references in this same form; then toString().
String CIMObjectPath::_toStringCanonical() const
{
    CIMObjectPath ref(*this);
    ref._unshare();
    CIMObjectPathRep& r = *ref._rep;
    r.host.toLower();
    if (!r.nameSpace.isNull())
    {
        String ns = r.nameSpace.getString();
        ns.toLower();
        r.nameSpace = CIMNamespaceName(ns);
    }
    if (!r.className.isNull())
    {
        String cls = r.className.getString();
        cls.toLower();
        r.className = CIMName(cls);
    }
    for (Uint32 i = 0, n = r.keyBindings.size(); i < n; ++i)
    {
        CIMKeyBinding& kb = r.keyBindings[i];
        if (!kb._name.isNull())
        {
            String name = kb._name.getString();
            name.toLower();
            kb._name = CIMName(name);
        }
        switch (kb._type)
        {
            case CIMKeyBinding::REFERENCE:
                try
                {
                    kb._value = CIMObjectPath(kb._value)._toStringCanonical();
                }
                catch (const Exception&)
                {
                    // kept as it is
                }
                break;
            case CIMKeyBinding::BOOLEAN:
                kb._value.toLower();
                break;
            case CIMKeyBinding::NUMERIC:
            {
                Uint64 u;
                Sint64 s;
                char buf[32];
                if (_unsignedValue(kb._value, u))
                {
                    snprintf(buf, sizeof(buf), "%llu", u);
                    kb._value = String(buf);
                }
                else if (_signedValue(kb._value, s))
                {
                    snprintf(buf, sizeof(buf), "%lld", s);
                    kb._value = String(buf);
                }
                break;
            }
            default:
                break;
        }
    }
    return ref.toString();
}

Boolean CIMObjectPath::identical(const CIMObjectPath& x) const
{
    if (_rep == x._rep)
        return true;
    const CIMObjectPathRep& a = *_rep;
    const CIMObjectPathRep& b = *x._rep;
    Uint32 n = a.keyBindings.size();
    if (n != b.keyBindings.size() || !String::equalNoCase(a.host, b.host) ||
        !a.className.equal(b.className) || !a.nameSpace.equal(b.nameSpace))
    {
        return false;
    }
    const CIMKeyBinding* ka = a.keyBindings.getData();
    const CIMKeyBinding* kb = b.keyBindings.getData();
    for (Uint32 i = 0; i < n; ++i)
    {
        if (!(ka[i] == kb[i]))
            return false;
    }
    return true;
}

Uint32 CIMObjectPath::makeHashCode() const
{
    String text = _toStringCanonical();
    const Char16* p = text.getChar16Data();
    Uint32 h = 0;
    for (Uint32 i = 0, n = text.size(); i < n; ++i)
        h = 5 * h + Uint16(p[i]);
    return h;
}

void CIMObjectPath::_unshare()
{
    if (_rep->refs.load(std::memory_order_acquire) != 1)
    {
        CIMObjectPathRep* rep = new CIMObjectPathRep(*_rep);
        _unref(_rep);
        _rep = rep;
    }
}

Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return x.identical(y);
}

Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return !x.identical(y);
}

PEGASUS_NAMESPACE_END
