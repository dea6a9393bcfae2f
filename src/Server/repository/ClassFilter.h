// GetClass and EnumerateClasses options applied to a resolved class, as a
// CIMOM applies them.
#ifndef QEL_Server_ClassFilter_h
#define QEL_Server_ClassFilter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

// A fresh copy of `resolved` with:
// - localOnly: only what the class defines or overrides itself (elements
//   and qualifiers marked propagated are dropped);
// - a non-null propertyList: only the properties it names (case-insensitive;
//   unknown names ignored; an empty list keeps none);
// - includeQualifiers false: no qualifiers on the class, its properties,
//   methods and parameters;
// - includeClassOrigin false: class origins of properties and methods cleared.
CIMClass filterClass(
    const CIMConstClass& resolved, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList);

PEGASUS_NAMESPACE_END

#endif
