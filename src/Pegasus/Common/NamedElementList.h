// Internal: the ordered, case-insensitively named member list shared by
// classes, instances, methods and properties (for their properties,
// qualifiers, methods and parameters).
//
// Elements are shared handles. While an element sits in a list its rep's
// ownerCount is raised, which is what forbids renaming it (two members with
// names equal ignoring case would otherwise be possible).
//
// Two indexes speed up finding a name, each for its own case. Lists of a class, its
// clones and the instances built from it share a SharedNameIndex of their names, made
// once; a list holds one only while its names are exactly those indexed, in order: every
// change of membership drops it (renaming is limited to changes of case, which the index
// ignores). A list built element by element keeps its own NameIndex once it is long, so
// that a list of any length is built in linear time.
#ifndef Pegasus_NamedElementList_h
#define Pegasus_NamedElementList_h

#include <atomic>
#include <vector>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/NameIndex.h>
#include <Pegasus/Common/NameTag.h>
#include <Pegasus/Common/SharedNameIndex.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

// H is a handle class (CIMProperty, CIMQualifier, CIMMethod, CIMParameter)
// that befriends NamedElementList and has a private
// `void _changeOwnerCount(int delta) const`.
template <class H>
class NamedElementList
{
public:
    // `kind` names the element in duplicate errors: already exists: property "X".
    explicit NamedElementList(const char* kind) : _kind(kind) {}

    // Lists this long keep a NameIndex while they grow; shorter ones are searched by
    // scanning the names' tags, which is cheaper for them. So adding an element costs at
    // most this many comparisons of names.
    static constexpr Uint32 kIndexedFrom = 64;

    ~NamedElementList()
    {
        clear();
        SharedNameIndex::release(_shared.load(std::memory_order_relaxed));
    }

    NamedElementList(const NamedElementList&) = delete;
    NamedElementList& operator=(const NamedElementList&) = delete;

    Uint32 size() const { return Uint32(_items.size()); }

    // Room for n elements in all, when their number is known beforehand.
    void reserve(Uint32 n)
    {
        _items.reserve(n);
        _tags.reserve(n);
    }

    Uint32 find(const CIMName& name) const
    {
        if (const SharedNameIndex* shared = _shared.load(std::memory_order_acquire))
            return shared->find(name, [&](Uint32 i) { return _items[i].getName().equal(name); });
        if (!_index.empty())
            return _index.find(
                name.getString(),
                [this](Uint32 i) -> const String& { return _items[i].getName().getString(); });
        const Uint32 tag = _tagOf(name);
        for (size_t i = 0; i < _items.size(); i++)
        {
            if (_tags[i] == tag && _items[i].getName().equal(name))
                return Uint32(i);
        }
        return PEG_NOT_FOUND;
    }

    // Appends x itself (not a copy): later changes through x show here.
    void add(const H& x)
    {
        if (x.isUninitialized())
            throw UninitializedObjectException();
        if (find(x.getName()) != PEG_NOT_FOUND)
        {
            throw AlreadyExistsException(String(_kind) + " \"" + x.getName().getString() + "\"");
        }
        _append(x);
    }

    // For elements copied from another list of this kind, whose names are
    // known to be distinct: skips the duplicate search.
    void addDistinct(const H& x) { _append(x); }

    // Appends x, a copy of from's element at `position` (so of the same name), whose name
    // is not in this list.
    void addCopyOf(const NamedElementList& from, Uint32 position, H&& x)
    {
        _dropShared();
        _items.push_back(std::move(x));
        try
        {
            _tags.push_back(from._tags[position]);
        }
        catch (...)
        {
            _items.pop_back();
            throw;
        }
        _items.back()._changeOwnerCount(1);
        if (!_index.empty())
            _index.clear();  // as in _appendUnindexed
    }

    H& at(Uint32 index)
    {
        _checkIndex(index);
        return _items[index];
    }

    const H& at(Uint32 index) const
    {
        _checkIndex(index);
        return _items[index];
    }

    void remove(Uint32 index)
    {
        _checkIndex(index);
        _dropShared();
        _release(_items[index]);
        _items.erase(_items.begin() + index);
        _tags.erase(_tags.begin() + index);
        // Positions after it moved: find() scans until the next append rebuilds _index.
        _index.clear();
    }

    // Empties the list; elements with uncounted handles (use_count() 0: the properties an
    // instance made in its own block, see PropertyBlock) are dropped without their owner
    // count taken down, as for reps that go with the list.
    void dropUncounted()
    {
        _dropShared();
        for (auto& x : _items)
        {
            if (x._rep.use_count() != 0)
                _release(x);
        }
        _items.clear();
        _tags.clear();
        _index.clear();
    }

    void clear()
    {
        _dropShared();
        for (auto& x : _items)
            _release(x);
        _items.clear();
        _tags.clear();
        _index.clear();
    }

    // Deep copy: every element cloned into `out`, which is emptied first.
    void cloneTo(NamedElementList& out) const
    {
        out.clear();
        if (_items.empty())
            return;
        out._items.reserve(_items.size());
        out._tags.reserve(_items.size());
        for (const auto& x : _items)
            out._appendUnindexed(x.clone());
        out._setShared(_sharedIndex());
    }

    // Takes the index of `source`, whose names this list holds in the same order (it was
    // filled from source's elements, all of them, in order).
    void adoptIndexOf(const NamedElementList& source)
    {
        if (source.size() == size())
            _setShared(source._sharedIndex());
    }

    // Same length and pairwise identical, in order.
    bool identical(const NamedElementList& other) const
    {
        if (_items.size() != other._items.size())
            return false;
        for (size_t i = 0; i < _items.size(); i++)
        {
            if (!_items[i].identical(other._items[i]))
                return false;
        }
        return true;
    }

private:
    void _checkIndex(Uint32 index) const
    {
        if (index >= _items.size())
            throw IndexOutOfBoundsException();
    }

    void _append(const H& x)
    {
        _dropShared();
        _push(x);
        _indexLast();
    }

    // For copies of a list whose names are distinct and which take its shared index: no
    // NameIndex is kept (an out-of-date one is dropped; the next _append() rebuilds it).
    void _appendUnindexed(const H& x)
    {
        _dropShared();
        if (!_index.empty())
            _index.clear();
        _push(x);
    }

    void _push(const H& x)
    {
        const Uint32 tag = _tagOf(x.getName());
        _items.push_back(x);
        try
        {
            _tags.push_back(tag);
        }
        catch (...)
        {
            _items.pop_back();
            throw;
        }
        x._changeOwnerCount(1);
    }

    // Brings _index up to date with the element just appended. The index only speeds up
    // find(): if it cannot be built it is dropped, and find() scans.
    void _indexLast()
    {
        const Uint32 n = Uint32(_items.size());
        if (n < kIndexedFrom)
            return;
        try
        {
            if (_index.size() + 1 != n)
            {
                _index.clear();
                for (Uint32 i = 0; i + 1 < n; i++)
                    _index.insert(_items[i].getName().getString(), i);
            }
            _index.insert(_items[n - 1].getName().getString(), n - 1);
        }
        catch (...)
        {
            _index.clear();
        }
    }

    static void _release(const H& x) { x._changeOwnerCount(-1); }

    // The fingerprint stays valid while an element is contained, since
    // renaming is then limited to changes of case.
    static Uint32 _tagOf(const CIMName& name) { return nameTag(name); }

    // This list's index, made on first use when the list is long enough. Safe against
    // other readers; changes of the list are not (as for every change of a member list).
    const SharedNameIndex* _sharedIndex() const
    {
        const SharedNameIndex* index = _shared.load(std::memory_order_acquire);
        if (index || _items.size() < SharedNameIndex::kMinimumSize)
            return index;
        SharedNameIndex* built = SharedNameIndex::build(
            size(), [&](Uint32 i) -> const CIMName& { return _items[i].getName(); });
        const SharedNameIndex* none = nullptr;
        if (_shared.compare_exchange_strong(none, built, std::memory_order_acq_rel))
            return built;
        SharedNameIndex::release(built);  // another reader made one first
        return none;
    }

    void _setShared(const SharedNameIndex* index)
    {
        SharedNameIndex::retain(index);
        SharedNameIndex::release(_shared.exchange(index, std::memory_order_acq_rel));
    }

    void _dropShared()
    {
        if (_shared.load(std::memory_order_relaxed))
            SharedNameIndex::release(_shared.exchange(nullptr, std::memory_order_acq_rel));
    }

    const char* _kind;
    std::vector<H> _items;
    std::vector<Uint32> _tags;  // _tagOf() of each element's name
    mutable std::atomic<const SharedNameIndex*> _shared{nullptr};  // one reference held
    // Positions by name once the list holds kIndexedFrom elements; empty below that, and
    // after a removal until the next append.
    NameIndex _index;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_NamedElementList_h */
