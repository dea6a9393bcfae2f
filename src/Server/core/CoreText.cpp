#include "CoreText.h"

#include <Pegasus/Common/Exception.h>

namespace Pegasus
{

std::string toStd(const String& text)
{
    CString bytes = text.getCString();
    const char* p = bytes;
    return p ? std::string(p) : std::string();
}

std::string nameKey(const String& name)
{
    std::string key = toStd(name);
    for (char& c : key)
    {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return key;
}

namespace
{

// Length of the valid UTF-8 sequence starting at p, or 0.
size_t utf8SequenceLength(const unsigned char* p)
{
    unsigned char c = p[0];
    size_t n;
    unsigned int cp;
    if (c < 0x80)
        return 1;
    if ((c & 0xE0) == 0xC0)
    {
        n = 2;
        cp = c & 0x1F;
    }
    else if ((c & 0xF0) == 0xE0)
    {
        n = 3;
        cp = c & 0x0F;
    }
    else if ((c & 0xF8) == 0xF0)
    {
        n = 4;
        cp = c & 0x07;
    }
    else
        return 0;
    for (size_t i = 1; i < n; ++i)
    {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (p[i] & 0x3F);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not UTF-8.
    static const unsigned int minimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < minimum[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return n;
}

}  // namespace

String safeString(const char* bytes)
{
    if (bytes == nullptr)
        return String();
    std::string clean;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    while (*p)
    {
        size_t n = utf8SequenceLength(p);
        if (n == 0)
        {
            clean.push_back('?');
            ++p;
            continue;
        }
        clean.append(reinterpret_cast<const char*>(p), n);
        p += n;
    }
    return String(clean.c_str());
}

}  // namespace Pegasus
