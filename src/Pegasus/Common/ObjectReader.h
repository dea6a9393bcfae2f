// Internal to the host (not part of the OpenPegasus API): an instance's properties read
// in place. Code that reads every property of thousands of instances (the CIM-XML writer)
// would otherwise count a handle up and down for each of them. The references stay valid
// while the instance is not changed.
#ifndef Pegasus_ObjectReader_h
#define Pegasus_ObjectReader_h

#include <Pegasus/Common/CIMInstance.h>
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
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ObjectReader_h */
