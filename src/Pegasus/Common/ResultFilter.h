// Internal to the host (not part of the OpenPegasus API): the objects a CIMOM
// returns for those a provider delivered, filtered as instanceFilter() filters
// (qualifiers, class origins, properties outside the property list).
//
// The filter never changes what another handle sees. When the handle passed
// is the only one left on the object's state and on each of its properties
// (the provider kept none) and no qualifier has to be dropped, that state is
// filtered in place and returned, since a copy would only be thrown away;
// the handle passed then shows the filtered object. Otherwise the result is
// a filtered deep copy and the object passed is left as it was.
#ifndef Pegasus_ResultFilter_h
#define Pegasus_ResultFilter_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMObjectRep;

class PEGASUS_COMMON_LINKAGE ResultFilter
{
public:
    // An uninitialized handle throws UninitializedObjectException.
    static CIMInstance filtered(
        const CIMInstance& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

    static CIMObject filtered(
        const CIMObject& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

private:
    // The one body of both filtered() forms.
    template <class Handle>
    static Handle _filtered(
        const Handle& delivered, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

    // Whether the state behind `rep`, of which `handles` handles exist, may
    // be filtered in place.
    static bool _reusable(const CIMObjectRep& rep, long handles, Boolean includeQualifiers);
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ResultFilter_h */
