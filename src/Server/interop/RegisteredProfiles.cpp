#include "RegisteredProfiles.h"

#include "ServerObjects.h"

#include <Server/core/CoreText.h>
#include <Server/core/ProviderRegistry.h>
#include <Server/repository/ClassRepository.h>

using namespace Pegasus;

namespace qel
{
namespace interop
{

namespace
{

const char* const profileClass = "CIM_RegisteredProfile";
const Uint16 snia = 11;
const Uint16 notAdvertised = 2;

const char* const serverProfileId = "QEL:SNIA:Server:1.7.0";

// The catalogue. Names and versions as the SMI-S 1.7.0 Common Profiles
// book gives them; instance IDs "QEL:<organization>:<name>:<version>".
const ProfileEntry catalogue[] = {
    {serverProfileId, snia, "Server", "1.7.0", nullptr, nullptr, nullptr},
    {"QEL:SNIA:FC Target Ports:1.7.0", snia, "FC Target Ports", "1.7.0", "root/qel", "QEL_FCPort",
     serverProfileId},
};

const ProfileEntry* find(const std::vector<const ProfileEntry*>& profiles, const char* instanceId)
{
    for (const ProfileEntry* p : profiles)
    {
        if (String::equal(p->instanceId, instanceId))
            return p;
    }
    return nullptr;
}

}  // namespace

CIMObjectPath profilePath(const BuildScope& scope, const ProfileEntry& profile)
{
    return CIMObjectPath(
        scope.facts.hostName, CIMNamespaceName(namespaceName), profileClass,
        Array<CIMKeyBinding>(
            1, CIMKeyBinding("InstanceID", String(profile.instanceId), CIMKeyBinding::STRING)));
}

std::vector<const ProfileEntry*> publishedProfiles(const ServerFacts& facts)
{
    std::vector<const ProfileEntry*> result;
    for (const ProfileEntry& p : catalogue)
    {
        if (p.centralClass != nullptr &&
            facts.registry->instanceProvider(p.centralNamespace, p.centralClass) == nullptr)
            continue;
        result.push_back(&p);
    }
    return result;
}

std::vector<CIMInstance>
profileInstances(const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles)
{
    std::vector<CIMInstance> result;
    for (const ProfileEntry* p : profiles)
    {
        InstanceBuilder b = scope.builder(profileClass);
        b.set("InstanceID", String(p->instanceId))
            .set("RegisteredOrganization", CIMValue(p->organization))
            .set("RegisteredName", String(p->name))
            .set("RegisteredVersion", String(p->version))
            .set("AdvertiseTypes", CIMValue(Array<Uint16>(1, notAdvertised)))
            .set("ElementName", String(p->name));
        CIMInstance instance = scope.finish(b);
        result.push_back(instance);
    }
    return result;
}

std::vector<Link>
referenceLinks(const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles)
{
    std::vector<Link> links;
    for (const ProfileEntry* p : profiles)
    {
        const ProfileEntry* referenced =
            p->references == nullptr ? nullptr : find(profiles, p->references);
        if (referenced == nullptr)
            continue;
        links.push_back(Link{
            "CIM_ReferencedProfile", "Antecedent", profilePath(scope, *referenced), "Dependent",
            profilePath(scope, *p)});
    }
    return links;
}

std::vector<Link> conformanceLinks(
    const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles,
    const CentralNames& centralNames)
{
    std::vector<Link> links;
    for (const ProfileEntry* p : profiles)
    {
        const CIMObjectPath profile = profilePath(scope, *p);
        auto link = [&](const CIMObjectPath& element)
        {
            links.push_back(Link{
                "CIM_ElementConformsToProfile", "ConformantStandard", profile, "ManagedElement",
                element});
        };
        if (p->centralClass == nullptr)
        {
            link(objectManager(scope).getPath());
            continue;
        }
        const CIMNamespaceName ns(p->centralNamespace);
        const Array<CIMObjectPath> names = centralNames(ns, p->centralClass);
        links.reserve(links.size() + names.size());
        for (Uint32 i = 0; i < names.size(); ++i)
        {
            // Paths leave complete: the element lives in another namespace.
            CIMObjectPath element(names[i]);
            if (element.getHost().size() == 0)
                element.setHost(scope.facts.hostName);
            if (element.getNameSpace().isNull())
                element.setNameSpace(ns);
            link(element);
        }
    }
    return links;
}

}  // namespace interop
}  // namespace qel
