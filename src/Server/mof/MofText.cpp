#include "MofText.h"

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

size_t utf8SequenceLength(const std::string& text, size_t pos)
{
    const size_t n = text.size();
    const unsigned char c = static_cast<unsigned char>(text[pos]);
    if (c < 0x80)
        return 1;
    size_t len;
    Uint32 cp;
    if (c >= 0xC2 && c <= 0xDF)
    {
        len = 2;
        cp = c & 0x1F;
    }
    else if (c >= 0xE0 && c <= 0xEF)
    {
        len = 3;
        cp = c & 0x0F;
    }
    else
        return 0;
    if (pos + len > n)
        return 0;
    for (size_t i = 1; i < len; i++)
    {
        const unsigned char cc = static_cast<unsigned char>(text[pos + i]);
        if ((cc & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (cc & 0x3F);
    }
    // Overlong three-byte forms and UTF-16 surrogates are not characters.
    if (len == 3 && (cp < 0x800 || (cp >= 0xD800 && cp <= 0xDFFF)))
        return 0;
    return len;
}

bool isValidMofUtf8(const std::string& text, size_t* badOffset)
{
    size_t i = 0;
    while (i < text.size())
    {
        const size_t len = utf8SequenceLength(text, i);
        if (len == 0)
        {
            if (badOffset)
                *badOffset = i;
            return false;
        }
        i += len;
    }
    return true;
}

void appendUtf8(std::string& out, Uint32 cp)
{
    if (cp < 0x80)
    {
        out += static_cast<char>(cp);
    }
    else if (cp < 0x800)
    {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xE0 | ((cp >> 12) & 0x0F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

String mofString(const std::string& utf8)
{
    std::string clean;
    clean.reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size())
    {
        const size_t len = utf8SequenceLength(utf8, i);
        if (len == 0 || utf8[i] == '\0')
        {
            clean += '?';
            i++;
        }
        else
        {
            clean.append(utf8, i, len);
            i += len;
        }
    }
    return String(clean.c_str());
}

std::string stdString(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string quoted(const std::string& text)
{
    std::string out = "'";
    size_t i = 0;
    size_t shown = 0;
    while (i < text.size())
    {
        if (shown == 40)
        {
            out += "...";
            break;
        }
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const size_t len = utf8SequenceLength(text, i);
        if (len == 0 || c < 0x20 || c == 0x7F)
        {
            char buf[8];
            std::snprintf(buf, sizeof(buf), "\\x%02X", c);
            out += buf;
            i++;
        }
        else
        {
            out.append(text, i, len);
            i += len;
        }
        shown++;
    }
    out += "'";
    return out;
}

std::string lowerAscii(const std::string& text)
{
    std::string out(text);
    for (char& c : out)
    {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

bool equalNoCaseAscii(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && lowerAscii(a) == lowerAscii(b);
}

PEGASUS_NAMESPACE_END
