#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/StringConversion.h>
#include <Pegasus/Common/ObjectPathHost.h>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cstdio>
#include <memory>
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

// The refusal, made apart from its throw: the message is gone before the exception flies,
// so the throwing frame has nothing to clean up (unwinding stops at every frame that has).
MalformedObjectNameException
_malformed(const String& text, const char* reason, const String& detail)
{
    String message(text);
    message.append(", reason:\"");
    message.append(reason);
    message.append(detail);
    message.append("\"");
    return MalformedObjectNameException(message);
}

[[noreturn]] void _throwMalformed(const String& text, const char* reason, const String& detail)
{
    throw _malformed(text, reason, detail);
}

[[noreturn]] void _throwMalformed(const String& text, const char* reason)
{
    throw _malformed(text, reason, String::EMPTY);
}

MalformedObjectNameException _classNameRefusal(const String& text, const Char16* name, Uint32 n)
{
    String detail(name, n);
    detail.append(" not a legal CIM name");
    return _malformed(text, "class name ", detail);
}

// For a class name of n units at name, within text.
[[noreturn]] void _throwClassNameRefusal(const String& text, const Char16* name, Uint32 n)
{
    throw _classNameRefusal(text, name, n);
}

void _checkHost(const String& host)
{
    if (host.size() && !isValidObjectPathHost(host))
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

    // Texts that are not paths are common (callers try key values as references) and most
    // are refused for their class name. When nothing before it can be refused (no host, no
    // namespace), that refusal is thrown here, before anything is made that unwinding would
    // have to clean up; parse() would throw the same.
    void refuseClassNameAtOnce() const
    {
        if ((_n >= 2 && _p[0] == '/' && _p[1] == '/') || _findFrom(0, ':') != PEG_NOT_FOUND)
            return;
        const Uint32 dot = _findFrom(0, '.');
        const Uint32 end = dot == PEG_NOT_FOUND ? _n : dot;
        if (!CIMName::legal(_slice(0, end)))
            _throwClassNameRefusal(_text, _p, end);
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
            _throwClassNameRefusal(_text, className.getChar16Data(), className.size());
        rep.className = CIMName(className);
        if (dot == PEG_NOT_FOUND)
            return;
        _i = dot + 1;
        _keys(rep.keyBindings);
        _sortKeys(rep.keyBindings);
    }

private:
    [[noreturn]] void _fail(const char* reason) const { _throwMalformed(_text, reason); }

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
        if (!isValidObjectPathHost(name))
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

// A new rep read from a path's text; throws MalformedObjectNameException, leaving nothing.
// Made part of its two callers: a refusal's unwinding has one frame fewer to cross.
__attribute__((always_inline)) inline CIMObjectPathRep* _parsedRep(const String& objectName)
{
    PathParser parser(objectName);
    parser.refuseClassNameAtOnce();
    std::unique_ptr<CIMObjectPathRep> rep(new CIMObjectPathRep());
    parser.parse(*rep);
    return rep.release();
}
}  // namespace

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

CIMObjectPath::CIMObjectPath(const String& objectName) : _rep(_parsedRep(objectName))
{
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
    std::unique_ptr<CIMObjectPathRep> rep(new CIMObjectPathRep());
    rep->host = host;
    rep->nameSpace = nameSpace;
    rep->className = className;
    rep->keyBindings = keyBindings;
    _normaliseReferences(rep->keyBindings);
    _sortKeys(rep->keyBindings);
    _unref(_rep);
    _rep = rep.release();
}

void CIMObjectPath::set(const String& objectName)
{
    CIMObjectPathRep* rep = _parsedRep(objectName);
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
    if (host.size() && !isValidObjectPathHost(host) && !String::equal(host, localHostName()))
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
