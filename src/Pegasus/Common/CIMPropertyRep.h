// Internal: the representation behind CIMProperty and CIMConstProperty handles, and the
// block in which buildInstance makes all the properties of an instance at once.
#ifndef Pegasus_CIMPropertyRep_h
#define Pegasus_CIMPropertyRep_h

#include <memory>
#include <new>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/NamedElementList.h>
#include <Pegasus/Common/StringIntern.h>

PEGASUS_NAMESPACE_BEGIN

// A property's qualifiers, as a NamedElementList made when the first one is added: most
// properties (all of an instance's, unless qualifiers were asked for) have none, and the
// list would be the largest part of them.
class PropertyQualifiers
{
public:
    PropertyQualifiers() = default;
    PropertyQualifiers(const PropertyQualifiers&) = delete;
    PropertyQualifiers& operator=(const PropertyQualifiers&) = delete;

    Uint32 size() const { return _list ? _list->size() : 0; }
    Uint32 find(const CIMName& name) const { return _list ? _list->find(name) : PEG_NOT_FOUND; }

    // index >= size() throws IndexOutOfBoundsException, as the list does.
    CIMQualifier& at(Uint32 index) { return _existing().at(index); }
    const CIMQualifier& at(Uint32 index) const { return _existing().at(index); }
    void remove(Uint32 index) { _existing().remove(index); }

    void add(const CIMQualifier& x) { _made().add(x); }

    // Deep copy into out (emptied first).
    void cloneTo(PropertyQualifiers& out) const
    {
        if (size() == 0)
        {
            out._list.reset();
            return;
        }
        _list->cloneTo(out._made());
    }

    bool identical(const PropertyQualifiers& x) const
    {
        if (size() == 0 || x.size() == 0)
            return size() == x.size();
        return _list->identical(*x._list);
    }

private:
    NamedElementList<CIMQualifier>& _made()
    {
        if (!_list)
            _list.reset(new NamedElementList<CIMQualifier>("qualifier"));
        return *_list;
    }

    const NamedElementList<CIMQualifier>& _existing() const
    {
        if (!_list)
            throw IndexOutOfBoundsException();
        return *_list;
    }

    NamedElementList<CIMQualifier>& _existing()
    {
        if (!_list)
            throw IndexOutOfBoundsException();
        return *_list;
    }

    std::unique_ptr<NamedElementList<CIMQualifier>> _list;
};

class CIMPropertyRep
{
public:
    CIMPropertyRep(
        const CIMName& name_, const CIMValue& value_, Uint32 arraySize_,
        const CIMName& referenceClassName_, const CIMName& classOrigin_, Boolean propagated_)
        : name(name_),
          value(value_),
          referenceClassName(referenceClassName_),
          classOrigin(classOrigin_),
          arraySize(arraySize_),
          propagated(propagated_)
    {
        if (name.isNull())
            throw UninitializedObjectException();
        if (arraySize != 0 && (!value.isArray() || value.getArraySize() != arraySize))
        {
            throw TypeMismatchException();
        }
        checkNoReferenceArray(value);
        if (!referenceClassName.isNull() && value.getType() != CIMTYPE_REFERENCE)
        {
            throw TypeMismatchException();
        }
    }

    // A clone: same data, its own qualifier copies, in no container.
    CIMPropertyRep(const CIMPropertyRep& x) : CIMPropertyRep(x, true, true) {}

    // A clone of a valid property (a class's, for an instance built from it), with its
    // qualifiers and class origin or without.
    CIMPropertyRep(const CIMPropertyRep& x, bool withQualifiers, bool withClassOrigin)
        : name(x.name),
          value(x.value),
          referenceClassName(x.referenceClassName),
          classOrigin(withClassOrigin ? x.classOrigin : CIMName()),
          arraySize(x.arraySize),
          propagated(x.propagated)
    {
        if (withQualifiers)
            x.qualifiers.cloneTo(qualifiers);
    }

    // For a class's property: its names share the interned texts, since every instance
    // built from the class copies them.
    void internNames()
    {
        name = internedName(name);
        referenceClassName = internedName(referenceClassName);
        classOrigin = internedName(classOrigin);
    }

    // CIM has no arrays of references.
    static void checkNoReferenceArray(const CIMValue& v)
    {
        if (v.isArray() && v.getType() == CIMTYPE_REFERENCE)
            throw TypeMismatchException();
    }

    bool identical(const CIMPropertyRep& x) const
    {
        return this == &x || (name.equal(x.name) && value == x.value &&
                              referenceClassName.equal(x.referenceClassName) &&
                              qualifiers.identical(x.qualifiers) &&
                              classOrigin.equal(x.classOrigin) && propagated == x.propagated);
    }

    // Ordered for size: instances hold dozens of these.
    CIMName name;
    CIMValue value;
    CIMName referenceClassName;
    CIMName classOrigin;
    PropertyQualifiers qualifiers;
    Uint32 arraySize;
    int ownerCount = 0;
    Boolean propagated;
};

// Property reps made together for one instance (buildInstance): one allocation for all of
// them instead of one each, and no count per property. The instance owns the block
// (CIMObjectRep::propertyBlock) and its list holds uncounted handles on the reps; a handle
// that leaves the instance (getProperty) is made an owner of the block, so it behaves as
// a handle on a rep of its own. A property removed from its instance lives on in the block
// for as long as the block does.
class PropertyBlock
{
public:
    // Room for `capacity` reps, in the same allocation as the block.
    static std::shared_ptr<PropertyBlock> make(Uint32 capacity)
    {
        void* mem = ::operator new(sizeof(PropertyBlock) + sizeof(CIMPropertyRep) * capacity);
        PropertyBlock* block = new (mem) PropertyBlock(capacity);
        try
        {
            return std::shared_ptr<PropertyBlock>(block, [](PropertyBlock* b) { destroy(b); });
        }
        catch (...)
        {
            destroy(block);
            throw;
        }
    }

    PropertyBlock(const PropertyBlock&) = delete;
    PropertyBlock& operator=(const PropertyBlock&) = delete;

    // An uncounted handle (use_count() 0) on a new rep made in the block from `args`, for
    // the list of the instance that owns the block. The block must have room.
    template <class... Args>
    std::shared_ptr<CIMPropertyRep> emplace(Args&&... args)
    {
        if (_count == _capacity)
            throw std::bad_alloc();
        CIMPropertyRep* rep = new (_reps() + _count) CIMPropertyRep(std::forward<Args>(args)...);
        _count++;
        return std::shared_ptr<CIMPropertyRep>(std::shared_ptr<void>(), rep);
    }

private:
    explicit PropertyBlock(Uint32 capacity) : _capacity(capacity) {}

    static void destroy(PropertyBlock* b)
    {
        for (Uint32 i = 0; i < b->_count; i++)
            b->_reps()[i].~CIMPropertyRep();
        b->~PropertyBlock();
        ::operator delete(static_cast<void*>(b));
    }

    // The reps follow the block in its allocation.
    CIMPropertyRep* _reps() { return reinterpret_cast<CIMPropertyRep*>(this + 1); }

    Uint32 _count = 0;
    Uint32 _capacity;
};

static_assert(
    sizeof(PropertyBlock) % alignof(CIMPropertyRep) == 0,
    "the reps that follow a block are aligned");

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMPropertyRep_h */
