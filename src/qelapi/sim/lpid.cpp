#include "lpid.h"

#include <algorithm>
#include <cstring>

namespace qelsim
{

uint16_t lpidOf(const Position& p)
{
    return static_cast<uint16_t>(((p.node + 1u) << 10) | (p.slot << 5) | p.port);
}

std::optional<Position> positionOfLpid(uint16_t lpid)
{
    const unsigned nodePlusOne = lpid >> 10;
    if (nodePlusOne == 0 || nodePlusOne - 1 > kMaxNode)
        return std::nullopt;
    return Position{nodePlusOne - 1, (lpid >> 5) & 0x1Fu, lpid & 0x1Fu};
}

void formatPosition(const Position& p, char* out, size_t size)
{
    // Three numbers of at most 10 digits and two colons.
    char buf[34];
    size_t n = 0;
    for (unsigned part : {p.node, p.slot, p.port})
    {
        if (n)
            buf[n++] = ':';
        char digits[10];
        size_t k = 0;
        do
        {
            digits[k++] = static_cast<char>('0' + part % 10);
            part /= 10;
        } while (part);
        while (k)
            buf[n++] = digits[--k];
    }
    n = std::min(n, size - 1);
    std::memcpy(out, buf, n);
    out[n] = '\0';
}

std::string positionText(const Position& p)
{
    char buf[40];
    formatPosition(p, buf, sizeof buf);
    return buf;
}

namespace
{
// Reads one canonical decimal number at text[i..]; advances i.
std::optional<unsigned> number(const std::string& text, size_t& i, unsigned max)
{
    const size_t start = i;
    unsigned v = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9')
    {
        v = v * 10 + static_cast<unsigned>(text[i] - '0');
        if (v > max)
            return std::nullopt;
        ++i;
    }
    if (i == start)
        return std::nullopt;
    if (i - start > 1 && text[start] == '0')
        return std::nullopt;
    return v;
}
}  // namespace

std::optional<Position> parsePosition(const std::string& text)
{
    size_t i = 0;
    auto node = number(text, i, kMaxNode);
    if (!node || i >= text.size() || text[i++] != ':')
        return std::nullopt;
    auto slot = number(text, i, kMaxSlot);
    if (!slot || i >= text.size() || text[i++] != ':')
        return std::nullopt;
    auto port = number(text, i, kMaxPort);
    if (!port || i != text.size())
        return std::nullopt;
    return Position{*node, *slot, *port};
}

}  // namespace qelsim
