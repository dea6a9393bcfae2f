// The property list of a request. A null list (the default) means "all
// properties"; a non-null list, even an empty one, names the only properties
// wanted. Value semantics.
#ifndef Pegasus_CIMPropertyList_h
#define Pegasus_CIMPropertyList_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>

PEGASUS_NAMESPACE_BEGIN

class CIMPropertyListRep;

class PEGASUS_COMMON_LINKAGE CIMPropertyList
{
public:
    CIMPropertyList();
    CIMPropertyList(const CIMPropertyList& x);
    // Non-null even when empty. A null CIMName in the array throws
    // UninitializedObjectException.
    CIMPropertyList(const Array<CIMName>& propertyNames);
    ~CIMPropertyList();

    void set(const Array<CIMName>& propertyNames);
    CIMPropertyList& operator=(const CIMPropertyList& x);
    // Back to null ("all properties").
    void clear();
    Boolean isNull() const;
    Uint32 size() const;
    // index >= size() throws IndexOutOfBoundsException.
    const CIMName& operator[](Uint32 index) const;
    Array<CIMName> getPropertyNameArray() const;
    // Case-insensitive; false for a null list.
    Boolean contains(const CIMName& name) const;
    // True for a null list, else contains(name).
    Boolean useThisProperty(const CIMName& name) const;
    // "NULL", "EMPTY", or the names joined by ", ".
    String toString() const;

private:
    std::shared_ptr<const CIMPropertyListRep> _rep;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMPropertyList_h */
