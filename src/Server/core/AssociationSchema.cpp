#include "AssociationSchema.h"

#include "CoreText.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMProperty.h>

namespace Pegasus
{

namespace
{

bool roleMatches(const String& wanted, const CIMName& property)
{
    return wanted.size() == 0 || String::equalNoCase(wanted, property.getString());
}

void appendOnce(std::vector<CIMName>& names, const CIMName& name)
{
    for (const CIMName& n : names)
    {
        if (n == name)
            return;
    }
    names.push_back(name);
}

}  // namespace

AssociationSchema::AssociationSchema(const ClassRepository& repository) : _repository(repository)
{
    Array<CIMNamespaceName> namespaces = repository.enumerateNamespaces();
    for (Uint32 n = 0; n < namespaces.size(); ++n)
    {
        std::vector<Association>& list = _byNamespace[nameKey(namespaces[n])];
        // Qualifiers are needed to tell association classes.
        Array<CIMClass> classes =
            repository.enumerateClasses(namespaces[n], CIMName(), true, false, true, false);
        for (Uint32 c = 0; c < classes.size(); ++c)
        {
            if (!classes[c].isAssociation())
                continue;
            Association a;
            a.name = classes[c].getClassName();
            for (Uint32 p = 0; p < classes[c].getPropertyCount(); ++p)
            {
                CIMProperty property = classes[c].getProperty(p);
                if (property.getType() == CIMTYPE_REFERENCE)
                    a.references.push_back(
                        Reference{property.getName(), property.getReferenceClassName()});
            }
            list.push_back(std::move(a));
        }
    }
}

const std::vector<AssociationSchema::Association>*
AssociationSchema::_associations(const CIMNamespaceName& ns) const
{
    auto it = _byNamespace.find(nameKey(ns));
    return it == _byNamespace.end() ? nullptr : &it->second;
}

bool AssociationSchema::_isA(
    const CIMNamespaceName& ns, const CIMName& cls, const CIMName& ancestor) const
{
    if (cls.isNull() || ancestor.isNull())
        return false;
    if (cls == ancestor)
        return true;
    try
    {
        return _repository.isSubclassOf(ns, cls, ancestor);
    }
    catch (...)
    {
        // A class the namespace does not hold is nobody's subclass.
        return false;
    }
}

std::vector<CIMName> AssociationSchema::referencingClasses(
    const CIMNamespaceName& ns, const CIMName& objectClass, const CIMName& classFilter,
    const String& role) const
{
    std::vector<CIMName> result;
    const std::vector<Association>* associations = _associations(ns);
    if (associations == nullptr)
        return result;
    for (const Association& a : *associations)
    {
        if (!classFilter.isNull() && !_isA(ns, a.name, classFilter))
            continue;
        for (const Reference& r : a.references)
        {
            if (roleMatches(role, r.property) && _isA(ns, objectClass, r.referenceClass))
            {
                appendOnce(result, a.name);
                break;
            }
        }
    }
    return result;
}

std::vector<CIMName> AssociationSchema::associatedClasses(
    const CIMNamespaceName& ns, const CIMName& objectClass, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole) const
{
    std::vector<CIMName> result;
    const std::vector<Association>* associations = _associations(ns);
    if (associations == nullptr)
        return result;
    for (const Association& a : *associations)
    {
        if (!assocClass.isNull() && !_isA(ns, a.name, assocClass))
            continue;
        for (size_t from = 0; from < a.references.size(); ++from)
        {
            const Reference& source = a.references[from];
            if (!roleMatches(role, source.property) ||
                !_isA(ns, objectClass, source.referenceClass))
                continue;
            for (size_t to = 0; to < a.references.size(); ++to)
            {
                const Reference& target = a.references[to];
                if (to == from || !roleMatches(resultRole, target.property))
                    continue;
                if (!resultClass.isNull() && !_isA(ns, target.referenceClass, resultClass))
                    continue;
                appendOnce(result, target.referenceClass);
            }
        }
    }
    return result;
}

}  // namespace Pegasus
