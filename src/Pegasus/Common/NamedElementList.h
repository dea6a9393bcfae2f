// Internal: the ordered, case-insensitively named member list shared by
// classes, instances, methods and properties (for their properties,
// qualifiers, methods and parameters).
//
// Elements are shared handles. While an element sits in a list its rep's
// ownerCount is raised, which is what forbids renaming it (two members with
// names equal ignoring case would otherwise be possible).
//
// Long lists of a class, its clones and the instances built from it share a
// NameIndex of their names. A list holds one only while its names are exactly
// those indexed, in order: every change of membership drops it (renaming is
// limited to changes of case, which the index ignores).
#ifndef Pegasus_NamedElementList_h
#define Pegasus_NamedElementList_h

#include <atomic>
#include <vector>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/NameIndex.h>
#include <Pegasus/Common/NameTag.h>
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

    ~NamedElementList()
    {
        clear();
        NameIndex::release(_index.load(std::memory_order_relaxed));
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
        if (const NameIndex* index = _index.load(std::memory_order_acquire))
            return index->find(name, [&](Uint32 i) { return _items[i].getName().equal(name); });
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
        _dropIndex();
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
        _dropIndex();
        _release(_items[index]);
        _items.erase(_items.begin() + index);
        _tags.erase(_tags.begin() + index);
    }

    // Empties the list; elements with uncounted handles (use_count() 0: the properties an
    // instance made in its own block, see PropertyBlock) are dropped without their owner
    // count taken down, as for reps that go with the list.
    void dropUncounted()
    {
        _dropIndex();
        for (auto& x : _items)
        {
            if (x._rep.use_count() != 0)
                _release(x);
        }
        _items.clear();
        _tags.clear();
    }

    void clear()
    {
        _dropIndex();
        for (auto& x : _items)
            _release(x);
        _items.clear();
        _tags.clear();
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
            out._append(x.clone());
        out._setIndex(_sharedIndex());
    }

    // Takes the index of `source`, whose names this list holds in the same order (it was
    // filled from source's elements, all of them, in order).
    void adoptIndexOf(const NamedElementList& source)
    {
        if (source.size() == size())
            _setIndex(source._sharedIndex());
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
        _dropIndex();
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

    static void _release(const H& x) { x._changeOwnerCount(-1); }

    // The fingerprint stays valid while an element is contained, since
    // renaming is then limited to changes of case.
    static Uint32 _tagOf(const CIMName& name) { return nameTag(name); }

    // This list's index, made on first use when the list is long enough. Safe against
    // other readers; changes of the list are not (as for every change of a member list).
    const NameIndex* _sharedIndex() const
    {
        const NameIndex* index = _index.load(std::memory_order_acquire);
        if (index || _items.size() < NameIndex::kMinimumSize)
            return index;
        NameIndex* built = NameIndex::build(
            size(), [&](Uint32 i) -> const CIMName& { return _items[i].getName(); });
        const NameIndex* none = nullptr;
        if (_index.compare_exchange_strong(none, built, std::memory_order_acq_rel))
            return built;
        NameIndex::release(built);  // another reader made one first
        return none;
    }

    void _setIndex(const NameIndex* index)
    {
        NameIndex::retain(index);
        NameIndex::release(_index.exchange(index, std::memory_order_acq_rel));
    }

    void _dropIndex()
    {
        if (_index.load(std::memory_order_relaxed))
            NameIndex::release(_index.exchange(nullptr, std::memory_order_acq_rel));
    }

    const char* _kind;
    std::vector<H> _items;
    std::vector<Uint32> _tags;                              // _tagOf() of each element's name
    mutable std::atomic<const NameIndex*> _index{nullptr};  // one reference held
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_NamedElementList_h */
