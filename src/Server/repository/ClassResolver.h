// Completes a class definition against its superclass and the namespace's
// qualifier declarations: inherited properties and methods (propagated,
// keeping their class origin), overrides, and qualifiers checked against
// their declarations and handed down by flavor.
#ifndef QEL_Server_ClassResolver_h
#define QEL_Server_ClassResolver_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMQualifierDecl.h>

PEGASUS_NAMESPACE_BEGIN

// What the resolver looks up in the namespace of the class it resolves.
class ResolverContext
{
public:
    virtual ~ResolverContext() {}
    virtual bool findQualifierDecl(const CIMName& name, CIMConstQualifierDecl& decl) const = 0;
    // Resolved classes only.
    virtual bool findClass(const CIMName& name, CIMConstClass& cls) const = 0;
};

// Returns a new, resolved class; `input` is left as it was. Rules:
// - the superclass must exist (CIM_ERR_INVALID_SUPERCLASS);
// - every qualifier must be declared, of its declared type, allowed on the
//   element, and must not change the value of an inherited DisableOverride
//   qualifier (CIM_ERR_INVALID_PARAMETER);
// - a property or method redefined in the class overrides the inherited
//   one: same type (and return type), class origin of the inherited one,
//   propagated false; inherited ones not redefined come first, in the
//   superclass's order, with propagated true;
// - qualifiers reach the subclass's elements only when ToSubclass, marked
//   propagated; Restricted ones stay where they were given;
// - reference properties only in associations, naming existing classes,
//   and an override may only narrow the referenced class.
CIMClass resolveClass(const CIMConstClass& input, const ResolverContext& context);

PEGASUS_NAMESPACE_END

#endif
