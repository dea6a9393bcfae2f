#include <Pegasus/Common/NameIndex.h>

#include <chrono>
#include <random>

PEGASUS_NAMESPACE_BEGIN

namespace
{

struct SipKey
{
    Uint64 k0;
    Uint64 k1;
};

const SipKey& processKey()
{
    static const SipKey key = []
    {
        Uint64 words[2];
        try
        {
            std::random_device random;
            for (Uint64& w : words)
                w = (Uint64(random()) << 32) ^ random();
        }
        catch (...)
        {
            // No entropy source: the clock and an address are still unknown to a peer.
            const Uint64 t = Uint64(std::chrono::steady_clock::now().time_since_epoch().count());
            words[0] = t ^ reinterpret_cast<Uint64>(&words);
            words[1] = t * 0x9E3779B97F4A7C15ull;
        }
        return SipKey{words[0], words[1]};
    }();
    return key;
}

inline Uint64 rotl(Uint64 x, int b)
{
    return (x << b) | (x >> (64 - b));
}

struct SipState
{
    explicit SipState(const SipKey& k)
        : v0(k.k0 ^ 0x736f6d6570736575ull),
          v1(k.k1 ^ 0x646f72616e646f6dull),
          v2(k.k0 ^ 0x6c7967656e657261ull),
          v3(k.k1 ^ 0x7465646279746573ull)
    {
    }

    void round()
    {
        v0 += v1;
        v1 = rotl(v1, 13);
        v1 ^= v0;
        v0 = rotl(v0, 32);
        v2 += v3;
        v3 = rotl(v3, 16);
        v3 ^= v2;
        v0 += v3;
        v3 = rotl(v3, 21);
        v3 ^= v0;
        v2 += v1;
        v1 = rotl(v1, 17);
        v1 ^= v2;
        v2 = rotl(v2, 32);
    }

    // SipHash-1-3: one compression round per word, three to finish.
    void compress(Uint64 m)
    {
        v3 ^= m;
        round();
        v0 ^= m;
    }

    Uint64 finish()
    {
        v2 ^= 0xff;
        round();
        round();
        round();
        return v0 ^ v1 ^ v2 ^ v3;
    }

    Uint64 v0, v1, v2, v3;
};

inline Uint64 folded(Char16 c)
{
    const Uint16 u = c;
    return (u >= 'A' && u <= 'Z') ? Uint64(u + ('a' - 'A')) : Uint64(u);
}

}  // namespace

Uint64 NameIndex::hash(const String& name)
{
    // The folded text as UTF-16LE bytes, four units to a word.
    SipState s(processKey());
    const Char16* p = name.getChar16Data();
    const Uint32 n = name.size();
    Uint32 i = 0;
    for (; i + 4 <= n; i += 4)
        s.compress(
            folded(p[i]) | (folded(p[i + 1]) << 16) | (folded(p[i + 2]) << 32) |
            (folded(p[i + 3]) << 48));
    Uint64 last = Uint64(2 * n) << 56;
    for (int shift = 0; i < n; ++i, shift += 16)
        last |= folded(p[i]) << shift;
    s.compress(last);
    return s.finish();
}

void NameIndex::clear()
{
    _slots.clear();
    _mask = 0;
    _count = 0;
}

void NameIndex::insert(const String& name, Uint32 position)
{
    if (2 * (_count + 1) > _slots.size())
        _grow();
    _place(Slot{Uint32(hash(name)), position + 1});
    ++_count;
}

void NameIndex::_place(Slot slot)
{
    Uint32 i = slot.hash & _mask;
    while (_slots[i].position != 0)
        i = (i + 1) & _mask;
    _slots[i] = slot;
}

void NameIndex::_grow()
{
    // Allocated first: when that throws, the index is as it was.
    std::vector<Slot> old(_slots.empty() ? 64 : 2 * _slots.size(), Slot{0, 0});
    old.swap(_slots);
    _mask = Uint32(_slots.size() - 1);
    for (const Slot& s : old)
        if (s.position != 0)
            _place(s);
}

PEGASUS_NAMESPACE_END
