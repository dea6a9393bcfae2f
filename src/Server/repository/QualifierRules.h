// How a qualifier used on an element must agree with its declaration, and
// which flavor it ends up with. Shared by the class resolver and by the MOF
// compiler (which checks early to report the qualifier's own position).
#ifndef QEL_Server_QualifierRules_h
#define QEL_Server_QualifierRules_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// "class", "association", "property", "reference", "method", "parameter".
String scopeName(const CIMScope& scope);

// Same type and array-ness as the declaration, and a scope that allows the
// element. `where` names the element ("property Speed of class CIM_X").
// Throws CIMException(CIM_ERR_INVALID_PARAMETER).
void checkQualifierUse(
    const CIMConstQualifierDecl& decl, const CIMConstQualifier& qualifier, const CIMScope& scope,
    const String& where);

// The flavor of a qualifier given with the explicit flavors `given`, over
// `base`: the flavor of the qualifier it overrides (inherited), or else of
// its declaration. Restricted/ToSubclass and DisableOverride/EnableOverride
// replace each other; EnableOverride cannot undo an inherited
// DisableOverride, and contradicting explicit flavors are refused.
// Throws CIMException(CIM_ERR_INVALID_PARAMETER).
CIMFlavor resolveFlavor(
    const CIMFlavor& base, const CIMFlavor& given, const CIMName& qualifierName,
    const String& where);

PEGASUS_NAMESPACE_END

#endif
