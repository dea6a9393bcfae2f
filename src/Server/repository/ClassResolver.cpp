#include "ClassResolver.h"

#include <vector>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/Exception.h>
#include "QualifierRules.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

typedef std::vector<CIMConstQualifier> QualifierVec;

template <class Element>
QualifierVec qualifiersOf(const Element& e)
{
    QualifierVec out;
    for (Uint32 i = 0, n = e.getQualifierCount(); i < n; i++)
        out.push_back(e.getQualifier(i));
    return out;
}

bool findIn(const QualifierVec& list, const CIMName& name, CIMConstQualifier& found)
{
    for (const CIMConstQualifier& q : list)
    {
        if (q.getName().equal(name))
        {
            found = q;
            return true;
        }
    }
    return false;
}

[[noreturn]] void invalid(const String& message)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER, message);
}

// The qualifiers an element ends with: those inherited with ToSubclass and
// not given again (propagated), then its own, checked and with their
// flavors resolved.
std::vector<CIMQualifier> resolveQualifiers(
    const QualifierVec& own, const QualifierVec& inherited, const CIMScope& scope,
    const String& where, const ResolverContext& context)
{
    std::vector<CIMQualifier> out;
    for (const CIMConstQualifier& iq : inherited)
    {
        CIMConstQualifier mine;
        if (iq.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS) && !findIn(own, iq.getName(), mine))
        {
            out.push_back(CIMQualifier(iq.getName(), iq.getValue(), iq.getFlavor(), true));
        }
    }
    for (const CIMConstQualifier& q : own)
    {
        CIMConstQualifierDecl decl;
        if (!context.findQualifierDecl(q.getName(), decl))
        {
            invalid(
                "qualifier " + q.getName().getString() + " of " + where +
                " is not declared in the namespace");
        }
        checkQualifierUse(decl, q, scope, where);

        CIMFlavor base = decl.getFlavor();
        CIMConstQualifier iq;
        if (findIn(inherited, q.getName(), iq) && iq.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS))
        {
            base = iq.getFlavor();
            if (iq.getFlavor().hasFlavor(CIMFlavor::DISABLEOVERRIDE) &&
                !q.getValue().equal(iq.getValue()))
            {
                invalid(
                    "qualifier " + q.getName().getString() + " of " + where +
                    " cannot take another value: the inherited one is DisableOverride");
            }
        }
        const CIMFlavor flavor = resolveFlavor(base, q.getFlavor(), q.getName(), where);
        out.push_back(CIMQualifier(q.getName(), q.getValue(), flavor, false));
    }
    return out;
}

// Qualifiers that an inherited element carries into the subclass.
template <class Element>
std::vector<CIMQualifier> handedDown(const Element& e)
{
    std::vector<CIMQualifier> out;
    for (const CIMConstQualifier& q : qualifiersOf(e))
    {
        if (q.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS))
            out.push_back(CIMQualifier(q.getName(), q.getValue(), q.getFlavor(), true));
    }
    return out;
}

template <class Element>
void addAll(Element& e, const std::vector<CIMQualifier>& qualifiers)
{
    for (const CIMQualifier& q : qualifiers)
        e.addQualifier(q);
}

bool isSameOrSubclass(
    const ResolverContext& context, const CIMName& className, const CIMName& ancestor,
    const CIMName& classBeingResolved, const CIMName& superOfClassBeingResolved)
{
    CIMName current = className;
    // Class chains are finite and acyclic; the bound only guards the loop.
    for (int depth = 0; depth < 1000 && !current.isNull(); depth++)
    {
        if (current.equal(ancestor))
            return true;
        if (current.equal(classBeingResolved))
        {
            current = superOfClassBeingResolved;
            continue;
        }
        CIMConstClass c;
        if (!context.findClass(current, c))
            return false;
        current = c.getSuperClassName();
    }
    return false;
}

bool ownBooleanQualifier(const CIMConstClass& c, const char* name)
{
    const Uint32 i = c.findQualifier(CIMName(name));
    if (i == PEG_NOT_FOUND)
        return false;
    const CIMValue& v = c.getQualifier(i).getValue();
    if (v.isNull() || v.isArray() || v.getType() != CIMTYPE_BOOLEAN)
        return false;
    Boolean b = false;
    v.get(b);
    return b;
}

}  // namespace

CIMClass resolveClass(const CIMConstClass& input, const ResolverContext& context)
{
    const CIMName className = input.getClassName();
    const CIMName superName = input.getSuperClassName();
    const String classText = className.getString();
    const String where = "class " + classText;

    CIMConstClass super;
    const bool hasSuper = !superName.isNull();
    if (hasSuper && !context.findClass(superName, super))
        throw CIMException(CIM_ERR_INVALID_SUPERCLASS, superName.getString());

    const bool association =
        ownBooleanQualifier(input, "Association") || (hasSuper && super.isAssociation());

    CIMClass out(className, superName);
    addAll(
        out, resolveQualifiers(
                 qualifiersOf(input), hasSuper ? qualifiersOf(super) : QualifierVec(),
                 association ? CIMScope::ASSOCIATION : CIMScope::CLASS, where, context));

    // Properties: the inherited ones that are not redefined, then our own.
    if (hasSuper)
    {
        for (Uint32 i = 0, n = super.getPropertyCount(); i < n; i++)
        {
            const CIMConstProperty sp = super.getProperty(i);
            if (input.findProperty(sp.getName()) != PEG_NOT_FOUND)
                continue;
            CIMProperty p(
                sp.getName(), sp.getValue(), sp.getArraySize(), sp.getReferenceClassName(),
                sp.getClassOrigin(), true);
            addAll(p, handedDown(sp));
            out.addProperty(p);
        }
    }
    for (Uint32 i = 0, n = input.getPropertyCount(); i < n; i++)
    {
        const CIMConstProperty p = input.getProperty(i);
        const String pwhere = "property " + p.getName().getString() + " of " + where;
        const bool isRef = p.getType() == CIMTYPE_REFERENCE;
        if (isRef && !association)
            invalid(pwhere + " is a reference, but the class is not an association");
        if (isRef)
        {
            CIMConstClass target;
            const CIMName refClass = p.getReferenceClassName();
            if (!refClass.equal(className) && !context.findClass(refClass, target))
                invalid(pwhere + " refers to the unknown class " + refClass.getString());
        }

        QualifierVec inheritedQualifiers;
        CIMName origin = className;
        const Uint32 si = hasSuper ? super.findProperty(p.getName()) : PEG_NOT_FOUND;
        if (si != PEG_NOT_FOUND)
        {
            const CIMConstProperty sp = super.getProperty(si);
            if (sp.getType() != p.getType() || sp.isArray() != p.isArray())
            {
                invalid(
                    pwhere + " is " + cimTypeToString(p.getType()) + (p.isArray() ? "[]" : "") +
                    " but the inherited property is " + cimTypeToString(sp.getType()) +
                    (sp.isArray() ? "[]" : ""));
            }
            if (isRef && !isSameOrSubclass(
                             context, p.getReferenceClassName(), sp.getReferenceClassName(),
                             className, superName))
            {
                invalid(
                    pwhere + " refers to " + p.getReferenceClassName().getString() +
                    ", which is not " + sp.getReferenceClassName().getString() +
                    " or one of its subclasses");
            }
            inheritedQualifiers = qualifiersOf(sp);
            origin = sp.getClassOrigin();
        }
        CIMProperty np(
            p.getName(), p.getValue(), p.getArraySize(), p.getReferenceClassName(), origin, false);
        addAll(
            np, resolveQualifiers(
                    qualifiersOf(p), inheritedQualifiers,
                    isRef ? CIMScope::REFERENCE : CIMScope::PROPERTY, pwhere, context));
        out.addProperty(np);
    }

    // Methods, in the same way; parameters of an override take the
    // qualifiers of the inherited parameter of the same name.
    if (hasSuper)
    {
        for (Uint32 i = 0, n = super.getMethodCount(); i < n; i++)
        {
            const CIMConstMethod sm = super.getMethod(i);
            if (input.findMethod(sm.getName()) != PEG_NOT_FOUND)
                continue;
            CIMMethod m(sm.getName(), sm.getType(), sm.getClassOrigin(), true);
            addAll(m, handedDown(sm));
            for (Uint32 j = 0, pn = sm.getParameterCount(); j < pn; j++)
            {
                const CIMConstParameter sp = sm.getParameter(j);
                CIMParameter p(
                    sp.getName(), sp.getType(), sp.isArray(), sp.getArraySize(),
                    sp.getReferenceClassName());
                addAll(p, handedDown(sp));
                m.addParameter(p);
            }
            out.addMethod(m);
        }
    }
    for (Uint32 i = 0, n = input.getMethodCount(); i < n; i++)
    {
        const CIMConstMethod m = input.getMethod(i);
        const String mwhere = "method " + m.getName().getString() + " of " + where;
        CIMConstMethod sm;
        bool overrides = false;
        const Uint32 si = hasSuper ? super.findMethod(m.getName()) : PEG_NOT_FOUND;
        if (si != PEG_NOT_FOUND)
        {
            sm = super.getMethod(si);
            overrides = true;
            if (sm.getType() != m.getType())
            {
                invalid(
                    mwhere + " returns " + cimTypeToString(m.getType()) +
                    " but the inherited method returns " + cimTypeToString(sm.getType()));
            }
        }
        CIMMethod nm(m.getName(), m.getType(), overrides ? sm.getClassOrigin() : className, false);
        addAll(
            nm, resolveQualifiers(
                    qualifiersOf(m), overrides ? qualifiersOf(sm) : QualifierVec(),
                    CIMScope::METHOD, mwhere, context));
        for (Uint32 j = 0, pn = m.getParameterCount(); j < pn; j++)
        {
            const CIMConstParameter p = m.getParameter(j);
            const String awhere = "parameter " + p.getName().getString() + " of " + mwhere;
            if (p.getType() == CIMTYPE_REFERENCE)
            {
                CIMConstClass target;
                const CIMName refClass = p.getReferenceClassName();
                if (!refClass.equal(className) && !context.findClass(refClass, target))
                    invalid(awhere + " refers to the unknown class " + refClass.getString());
            }
            QualifierVec inheritedQualifiers;
            const Uint32 pi = overrides ? sm.findParameter(p.getName()) : PEG_NOT_FOUND;
            if (pi != PEG_NOT_FOUND)
                inheritedQualifiers = qualifiersOf(sm.getParameter(pi));
            CIMParameter np(
                p.getName(), p.getType(), p.isArray(), p.getArraySize(), p.getReferenceClassName());
            addAll(
                np,
                resolveQualifiers(
                    qualifiersOf(p), inheritedQualifiers, CIMScope::PARAMETER, awhere, context));
            nm.addParameter(np);
        }
        out.addMethod(nm);
    }
    return out;
}

PEGASUS_NAMESPACE_END
