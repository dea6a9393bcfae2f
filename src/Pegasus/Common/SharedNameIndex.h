// Internal: a hash index of the names of a member list, by position, so that finding one
// of a class's dozens of properties by name costs a hash and one comparison instead of a
// walk over the list. Immutable once built; lists with the same names in the same order
// share one (a class and its clones, the instances built from it with all its properties).
//
// Counted by hand (retain/release) so that a list can read it through a plain pointer on
// every lookup.
//
// Interned names (StringIntern.h) are also found by the address of their text, which
// names made from the same literal share: no hash of the text, no comparison.
#ifndef Pegasus_SharedNameIndex_h
#define Pegasus_SharedNameIndex_h

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/NameIndex.h>
#include <Pegasus/Common/StringIntern.h>

PEGASUS_NAMESPACE_BEGIN

class SharedNameIndex
{
public:
    // Lists shorter than this are walked: an index would not pay for itself.
    static const Uint32 kMinimumSize = 16;

    // Indexes names[0..n); nameOf(i) gives the i-th name.
    template <class NameOf>
    static SharedNameIndex* build(Uint32 n, NameOf nameOf)
    {
        SharedNameIndex* index = new SharedNameIndex(n);
        for (Uint32 i = 0; i < n; i++)
        {
            const CIMName& name = nameOf(i);
            index->_insert(hashOf(name), i);
            // Only immortal texts: another text can never take the place of one.
            if (isInterned(name.getString()))
                index->_insertText(name.getString().getChar16Data(), i);
        }
        return index;
    }

    static void retain(const SharedNameIndex* index)
    {
        if (index)
            index->_refs.fetch_add(1, std::memory_order_relaxed);
    }

    static void release(const SharedNameIndex* index)
    {
        if (index && index->_refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete index;
    }

    Uint32 size() const { return _size; }

    // The position of `name`, ignoring ASCII case, or PEG_NOT_FOUND. sameAt(i) confirms a
    // candidate (hashes of different names can be equal).
    template <class SameAt>
    Uint32 find(const CIMName& name, SameAt sameAt) const
    {
        const Char16* text = name.getString().getChar16Data();
        for (Uint32 slot = _textSlotOf(text);; slot = (slot + 1) & _mask)
        {
            const TextEntry& e = _textSlots[slot];
            if (e.position == kEmpty)
                break;
            if (e.text == text)
                return e.position;
        }
        const Uint32 h = hashOf(name);
        for (Uint32 slot = h & _mask;; slot = (slot + 1) & _mask)
        {
            const Entry& e = _slots[slot];
            if (e.position == kEmpty)
                return PEG_NOT_FOUND;
            if (e.hash == h && sameAt(e.position))
                return e.position;
        }
    }

    // NameIndex's keyed hash: names of a list cloned from a peer's instance cannot be chosen
    // to collide.
    static Uint32 hashOf(const CIMName& name) { return Uint32(NameIndex::hash(name.getString())); }

private:
    static const Uint32 kEmpty = 0xFFFFFFFFu;

    struct Entry
    {
        Uint32 hash;
        Uint32 position;
    };

    struct TextEntry
    {
        const Char16* text;
        Uint32 position;
    };

    explicit SharedNameIndex(Uint32 n) : _size(n)
    {
        Uint32 capacity = 16;
        while (capacity < 2 * n)
            capacity <<= 1;
        _mask = capacity - 1;
        _slots.assign(capacity, Entry{0, kEmpty});
        _textSlots.assign(capacity, TextEntry{nullptr, kEmpty});
    }

    Uint32 _textSlotOf(const Char16* text) const
    {
        const std::uintptr_t a = reinterpret_cast<std::uintptr_t>(text);
        return static_cast<Uint32>((a * 0x9E3779B97F4A7C15ull) >> 40) & _mask;
    }

    void _insertText(const Char16* text, Uint32 position)
    {
        Uint32 slot = _textSlotOf(text);
        while (_textSlots[slot].position != kEmpty)
            slot = (slot + 1) & _mask;
        _textSlots[slot] = TextEntry{text, position};
    }

    void _insert(Uint32 h, Uint32 position)
    {
        Uint32 slot = h & _mask;
        while (_slots[slot].position != kEmpty)
            slot = (slot + 1) & _mask;
        _slots[slot] = Entry{h, position};
    }

    mutable std::atomic<Uint32> _refs{1};
    Uint32 _size;
    Uint32 _mask = 0;
    std::vector<Entry> _slots;
    std::vector<TextEntry> _textSlots;  // interned names only
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_SharedNameIndex_h */
