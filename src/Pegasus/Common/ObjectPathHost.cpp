// Host names as object paths carry them (checked on every parse and setHost).
#include <Pegasus/Common/ObjectPathHost.h>

#include <arpa/inet.h>
#include <net/if.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

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

}  // namespace

bool isValidObjectPathHost(const String& host)
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

String localHostName()
{
    char name[256] = "";
    if (gethostname(name, sizeof(name) - 1) != 0)
        return String();
    name[sizeof(name) - 1] = '\0';
    return String(name);
}

PEGASUS_NAMESPACE_END
