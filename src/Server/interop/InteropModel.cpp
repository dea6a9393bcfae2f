#include "InteropModel.h"

#include "RegisteredProfiles.h"
#include "ServerObjects.h"

#include <Server/core/CoreText.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <map>

using namespace Pegasus;

namespace qel
{
namespace interop
{

namespace
{

CIMNamespaceName interopNamespace()
{
    return CIMNamespaceName(namespaceName);
}

bool named(const CIMName& className, const char* name)
{
    return className == CIMName(name);
}

}  // namespace

const std::vector<ServedClass>& servedClasses()
{
    static const std::vector<ServedClass> classes = {
        {"CIM_ObjectManager", false},
        {"CIM_CIMXMLCommunicationMechanism", false},
        {"CIM_Namespace", false},
        {"CIM_RegisteredProfile", false},
        {"CIM_CommMechanismForManager", true},
        {"CIM_NamespaceInManager", true},
        {"CIM_ReferencedProfile", true},
        {"CIM_ElementConformsToProfile", true},
    };
    return classes;
}

InteropModel::InteropModel(
    const ServerFacts& facts, CIMOMHandle& cimom, const OperationContext& context,
    Boolean includeQualifiers, Boolean includeClassOrigin)
    : _facts(facts),
      _cimom(cimom),
      _context(context),
      _classes(*facts.repository),
      _scope{facts, _classes, includeQualifiers, includeClassOrigin}
{
}

std::vector<CIMInstance>
InteropModel::instances(const CIMName& className, const CIMObjectPath* near)
{
    if (named(className, "CIM_ObjectManager"))
        return {objectManager(_scope)};
    if (named(className, "CIM_CIMXMLCommunicationMechanism"))
        return communicationMechanisms(_scope);
    if (named(className, "CIM_Namespace"))
        return namespaces(_scope);
    if (named(className, "CIM_RegisteredProfile"))
        return profileInstances(_scope, publishedProfiles(_facts));
    std::vector<CIMInstance> result;
    for (const Link& link : links(className, near))
        result.push_back(instanceOf(link));
    return result;
}

std::vector<Link> InteropModel::links(const CIMName& assocClass, const CIMObjectPath* near)
{
    if (named(assocClass, "CIM_CommMechanismForManager"))
        return communicationLinks(_scope);
    if (named(assocClass, "CIM_NamespaceInManager"))
        return namespaceLinks(_scope);
    if (named(assocClass, "CIM_ReferencedProfile"))
        return referenceLinks(_scope, publishedProfiles(_facts));
    if (!named(assocClass, "CIM_ElementConformsToProfile"))
        throw CIMException(
            CIM_ERR_NOT_SUPPORTED,
            "The discovery provider does not serve " + assocClass.getString() + ".");

    std::vector<const ProfileEntry*> profiles = publishedProfiles(_facts);
    if (near != nullptr)
    {
        // A profile reaches its own elements only; an element of root/interop
        // can conform only to a profile whose central instance is the
        // object manager. Either way no other namespace needs reading.
        std::vector<const ProfileEntry*> kept;
        const bool isProfile = isA(*near, "CIM_RegisteredProfile");
        for (const ProfileEntry* p : profiles)
        {
            if (isProfile ? sameObject(*near, profilePath(_scope, *p)) : p->centralClass == nullptr)
                kept.push_back(p);
        }
        profiles.swap(kept);
    }
    return conformanceLinks(
        _scope, profiles,
        [this](const CIMNamespaceName& ns, const CIMName& className)
        { return _cimom.enumerateInstanceNames(_context, ns, className); });
}

CIMInstance InteropModel::instanceOf(const Link& link)
{
    return linkInstance(
        link, _classes, _facts.hostName, interopNamespace(), _scope.includeQualifiers,
        _scope.includeClassOrigin);
}

bool InteropModel::isA(const CIMObjectPath& path, const CIMName& ancestor)
{
    const CIMNamespaceName ns =
        path.getNameSpace().isNull() ? interopNamespace() : path.getNameSpace();
    return _classes.isA(ns, path.getClassName(), ancestor);
}

Array<CIMObject> InteropModel::objectsAt(
    const std::vector<const CIMObjectPath*>& paths, const CIMPropertyList& propertyList)
{
    // Each class is read once: "<namespace>:<class>" -> its objects by key.
    std::map<std::string, std::map<std::string, CIMInstance>> read;
    Array<CIMObject> result;
    for (const CIMObjectPath* path : paths)
    {
        const CIMNamespaceName ns =
            path->getNameSpace().isNull() ? interopNamespace() : path->getNameSpace();
        const CIMName className = path->getClassName();
        const std::string classKey = nameKey(ns) + ":" + nameKey(className);
        auto found = read.find(classKey);
        if (found == read.end())
        {
            std::map<std::string, CIMInstance>& byKey = read[classKey];
            if (ns == interopNamespace())
            {
                for (const CIMInstance& i : instances(className))
                    byKey.emplace(objectKey(i.getPath()), i);
            }
            else
            {
                const Array<CIMInstance> all = _cimom.enumerateInstances(
                    _context, ns, className, true, false, _scope.includeQualifiers,
                    _scope.includeClassOrigin, propertyList);
                for (Uint32 i = 0; i < all.size(); ++i)
                    byKey.emplace(objectKey(all[i].getPath()), all[i]);
            }
            found = read.find(classKey);
        }
        auto object = found->second.find(objectKey(*path));
        if (object == found->second.end())
            continue;
        CIMInstance instance = object->second;
        // The path the link named, complete, so that the object can be
        // told apart from those of root/interop.
        instance.setPath(*path);
        result.append(CIMObject(instance));
    }
    return result;
}

}  // namespace interop
}  // namespace qel
