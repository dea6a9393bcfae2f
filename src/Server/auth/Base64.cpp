#include "Base64.h"

namespace qel
{
namespace auth
{
namespace
{

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int sextet(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

}  // namespace

std::string base64Encode(const std::string& data)
{
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < data.size(); i += 3)
    {
        const unsigned v = (static_cast<unsigned char>(data[i]) << 16) |
                           (static_cast<unsigned char>(data[i + 1]) << 8) |
                           static_cast<unsigned char>(data[i + 2]);
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += kAlphabet[v & 63];
    }
    const size_t rest = data.size() - i;
    if (rest)
    {
        unsigned v = static_cast<unsigned char>(data[i]) << 16;
        if (rest == 2)
            v |= static_cast<unsigned char>(data[i + 1]) << 8;
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += rest == 2 ? kAlphabet[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

bool base64Decode(const std::string& text, std::string& out)
{
    out.clear();
    if (text.size() % 4 != 0)
        return false;
    for (size_t i = 0; i < text.size(); i += 4)
    {
        const bool last = i + 4 == text.size();
        int s[4];
        int pad = 0;
        for (int k = 0; k < 4; ++k)
        {
            const char c = text[i + k];
            if (c == '=' && last && k >= 2)
            {
                ++pad;
                s[k] = 0;
                continue;
            }
            if (pad)
                return false;  // data after padding
            s[k] = sextet(c);
            if (s[k] < 0)
                return false;
        }
        const unsigned v = (s[0] << 18) | (s[1] << 12) | (s[2] << 6) | s[3];
        out += static_cast<char>((v >> 16) & 255);
        if (pad < 2)
            out += static_cast<char>((v >> 8) & 255);
        if (pad < 1)
            out += static_cast<char>(v & 255);
    }
    return true;
}

}  // namespace auth
}  // namespace qel
