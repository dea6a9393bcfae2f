// Internal: where each name of a list sits, found through a hash of the name's text with
// ASCII letters folded to lower case (CIM names compare that way). Looking a name up, or
// checking a new one for a duplicate, then costs the same whatever the list's length, so
// that a list of n names is built in time linear in n.
//
// The hash is SipHash-1-3 under a key drawn at random once per process: names that a peer
// sends cannot be chosen to collide, which would turn every lookup back into a scan.
//
// The index holds positions only; the caller keeps the names and says what name sits at a
// position (nameAt). Not synchronised: const members may run concurrently, others not.
#ifndef Pegasus_NameIndex_h
#define Pegasus_NameIndex_h

#include <vector>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE NameIndex
{
public:
    // The keyed hash of `name` with ASCII letters folded: names equal ignoring ASCII case
    // hash alike.
    static Uint64 hash(const String& name);

    Uint32 size() const { return _count; }
    bool empty() const { return _count == 0; }
    void clear();

    // The position recorded for a name equal to `name` ignoring ASCII case, or
    // PEG_NOT_FOUND. nameAt(position) gives the caller's name at a position.
    template <class NameAt>
    Uint32 find(const String& name, NameAt nameAt) const
    {
        if (_count == 0)
            return PEG_NOT_FOUND;
        const Uint32 h = Uint32(hash(name));
        for (Uint32 i = h & _mask;; i = (i + 1) & _mask)
        {
            const Slot& s = _slots[i];
            if (s.position == 0)
                return PEG_NOT_FOUND;
            if (s.hash == h && String::equalNoCase(nameAt(s.position - 1), name))
                return s.position - 1;
        }
    }

    // Records `position` for `name`, which the caller has found absent.
    void insert(const String& name, Uint32 position);

private:
    struct Slot
    {
        Uint32 hash;
        Uint32 position;  // position + 1; 0 marks an empty slot
    };

    void _place(Slot slot);
    void _grow();

    std::vector<Slot> _slots;  // open addressing, linear probing, at most half full
    Uint32 _mask = 0;
    Uint32 _count = 0;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_NameIndex_h */
