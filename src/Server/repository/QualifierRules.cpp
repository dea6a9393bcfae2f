#include "QualifierRules.h"

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

String scopeName(const CIMScope& scope)
{
    if (scope.equal(CIMScope::CLASS))
        return "class";
    if (scope.equal(CIMScope::ASSOCIATION))
        return "association";
    if (scope.equal(CIMScope::INDICATION))
        return "indication";
    if (scope.equal(CIMScope::PROPERTY))
        return "property";
    if (scope.equal(CIMScope::REFERENCE))
        return "reference";
    if (scope.equal(CIMScope::METHOD))
        return "method";
    if (scope.equal(CIMScope::PARAMETER))
        return "parameter";
    return scope.toString();
}

static String typeText(CIMType type, Boolean isArray)
{
    String s(cimTypeToString(type));
    if (isArray)
        s.append("[]");
    return s;
}

void checkQualifierUse(
    const CIMConstQualifierDecl& decl, const CIMConstQualifier& qualifier, const CIMScope& scope,
    const String& where)
{
    const String name = qualifier.getName().getString();
    if (qualifier.getType() != decl.getType() || qualifier.isArray() != decl.isArray())
    {
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "qualifier " + name + " of " + where + " is " +
                                           typeText(qualifier.getType(), qualifier.isArray()) +
                                           " but its declaration says " +
                                           typeText(decl.getType(), decl.isArray()));
    }
    if (!decl.getScope().hasScope(scope))
    {
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "qualifier " + name + " may not be used on a " +
                                           scopeName(scope) + " (" + where + "); its scope is " +
                                           decl.getScope().toString());
    }
}

CIMFlavor resolveFlavor(
    const CIMFlavor& base, const CIMFlavor& given, const CIMName& qualifierName,
    const String& where)
{
    const String name = qualifierName.getString();
    if (given.hasFlavor(CIMFlavor::TOSUBCLASS) && given.hasFlavor(CIMFlavor::RESTRICTED))
    {
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER,
            "qualifier " + name + " of " + where + " is given both ToSubclass and Restricted");
    }
    if (given.hasFlavor(CIMFlavor::ENABLEOVERRIDE) && given.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
    {
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "qualifier " + name + " of " + where +
                                           " is given both EnableOverride and DisableOverride");
    }
    if (given.hasFlavor(CIMFlavor::ENABLEOVERRIDE) && base.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
    {
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "qualifier " + name + " of " + where +
                                           " cannot be made EnableOverride: it is DisableOverride");
    }

    CIMFlavor f = base;
    if (given.hasFlavor(CIMFlavor::RESTRICTED))
    {
        f.removeFlavor(CIMFlavor::TOSUBCLASS);
        f.addFlavor(CIMFlavor::RESTRICTED);
    }
    if (given.hasFlavor(CIMFlavor::TOSUBCLASS))
    {
        f.removeFlavor(CIMFlavor::RESTRICTED);
        f.addFlavor(CIMFlavor::TOSUBCLASS);
    }
    if (given.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
    {
        f.removeFlavor(CIMFlavor::ENABLEOVERRIDE);
        f.addFlavor(CIMFlavor::DISABLEOVERRIDE);
    }
    if (given.hasFlavor(CIMFlavor::ENABLEOVERRIDE))
        f.addFlavor(CIMFlavor::ENABLEOVERRIDE);
    if (given.hasFlavor(CIMFlavor::TRANSLATABLE))
        f.addFlavor(CIMFlavor::TRANSLATABLE);
    return f;
}

PEGASUS_NAMESPACE_END
