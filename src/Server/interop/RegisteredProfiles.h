// The management profiles the server registers (DSP1033): which ones are
// published, their CIM_RegisteredProfile instances, how they reference one
// another (CIM_ReferencedProfile) and the elements that conform to them
// (CIM_ElementConformsToProfile). docs/schema.md says where every value
// comes from and why the FC port profile is tied to the ports themselves.
#ifndef QEL_Server_RegisteredProfiles_h
#define QEL_Server_RegisteredProfiles_h

#include "AssociationLinks.h"
#include "InteropFacts.h"

#include <functional>
#include <vector>

namespace qel
{
namespace interop
{

struct ProfileEntry
{
    const char* instanceId;
    Pegasus::Uint16 organization;  // RegisteredOrganization value map: 11 SNIA
    const char* name;
    const char* version;
    // Where the central instances are: every instance of this class that a
    // provider of that namespace serves. Null: the object manager is the
    // central instance.
    const char* centralNamespace;
    const char* centralClass;
    // The instance ID of the profile this one references (null: none).
    const char* references;
};

// The profiles published now: those whose central class has an instance
// provider, in catalogue order.
std::vector<const ProfileEntry*> publishedProfiles(const ServerFacts& facts);

// The path of a profile's CIM_RegisteredProfile instance.
Pegasus::CIMObjectPath profilePath(const BuildScope& scope, const ProfileEntry& profile);

std::vector<Pegasus::CIMInstance>
profileInstances(const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles);

// CIM_ReferencedProfile: the referenced profile is the Antecedent, the
// one that references it the Dependent.
std::vector<Link>
referenceLinks(const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles);

// The names of every instance of a class in a namespace, as the request's
// user may see them.
using CentralNames = std::function<Pegasus::Array<Pegasus::CIMObjectPath>(
    const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className)>;

// CIM_ElementConformsToProfile of these profiles: ConformantStandard the
// profile, ManagedElement each central instance.
std::vector<Link> conformanceLinks(
    const BuildScope& scope, const std::vector<const ProfileEntry*>& profiles,
    const CentralNames& centralNames);

}  // namespace interop
}  // namespace qel

#endif
