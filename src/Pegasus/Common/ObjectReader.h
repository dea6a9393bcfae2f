// Internal to the host (not part of the OpenPegasus API): an instance's properties and
// values read in place. Code that reads every property of thousands of instances (the
// CIM-XML writer) would otherwise count a handle, and a copy of each text or array, up
// and down for each of them. The references stay valid while the object is not changed.
#ifndef Pegasus_ObjectReader_h
#define Pegasus_ObjectReader_h

#include <new>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObjectRep.h>
#include <Pegasus/Common/CIMPropertyRep.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

class ObjectReader
{
public:
    // An uninitialized instance throws UninitializedObjectException.
    static const NamedElementList<CIMProperty>& properties(const CIMConstInstance& instance)
    {
        return checkRep(instance._rep).properties;
    }

    static const CIMPropertyRep& rep(const CIMProperty& property) { return *property._rep; }

    // The String of a non-null string scalar, and the Array of a non-null array of simple
    // type T (both kept in the value itself, see CIMValue.h).
    static const String& stringOf(const CIMValue& value)
    {
        return *std::launder(reinterpret_cast<const String*>(value._payload));
    }

    template <class T>
    static const Array<T>& arrayOf(const CIMValue& value)
    {
        return *std::launder(reinterpret_cast<const Array<T>*>(value._payload));
    }
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ObjectReader_h */
