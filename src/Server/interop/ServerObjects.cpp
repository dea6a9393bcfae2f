#include "ServerObjects.h"

#include <Server/core/CoreText.h>
#include <Server/repository/ClassRepository.h>

using namespace Pegasus;

namespace qel
{
namespace interop
{

namespace
{

// The system that hosts the server. No provider serves it; its class is the
// one the scoping system of a server has in the public schema.
const char* const systemClass = "CIM_ComputerSystem";

const char* const objectManagerClass = "CIM_ObjectManager";
const char* const mechanismClass = "CIM_CIMXMLCommunicationMechanism";
const char* const namespaceClass = "CIM_Namespace";

// CIM_EnabledLogicalElement.EnabledState and
// CIM_ManagedSystemElement.OperationalStatus of a running service.
const Uint16 enabled = 2;
const Uint16 operationalOk = 2;

// What the CIM-XML front-end speaks: the operations of DSP0200 1.2, in
// messages of PROTOCOLVERSION 1.0 and DTDVERSION 2.0 (DSP0201).
const char* const cimXmlVersion = "1.2";
const Uint16 cimXmlProtocolVersion = 1;  // the value map's "1.0"
const char* const cimXmlDescription =
    "CIM operations over HTTP (DSP0200 1.2), PROTOCOLVERSION 1.0, DTDVERSION 2.0";

// The functional profiles of DSP0200 this server answers: Basic Read,
// Basic Write, Instance Manipulation, Association Traversal.
const struct
{
    Uint16 value;
    const char* description;
} functionalProfiles[] = {
    {2, "Basic Read"},
    {3, "Basic Write"},
    {5, "Instance Manipulation"},
    {6, "Association Traversal"},
};

const Uint16 notAdvertised = 2;  // AdvertiseTypes: no SLP

String version(const ServerFacts& facts)
{
    return safeString(facts.options.version.empty() ? QEL_SERVER_VERSION : facts.options.version);
}

String objectManagerName(const ServerFacts& facts)
{
    return safeString(facts.options.productName);
}

// The system, creation class and own name every service and access point
// of the server is keyed by.
InstanceBuilder& hostedBy(const BuildScope& scope, InstanceBuilder& builder, const char* className)
{
    return builder.set("SystemCreationClassName", String(systemClass))
        .set("SystemName", scope.facts.hostName)
        .set("CreationClassName", String(className));
}

}  // namespace

CIMInstance objectManager(const BuildScope& scope)
{
    const ServerFacts& facts = scope.facts;
    InstanceBuilder b = scope.builder(objectManagerClass);
    hostedBy(scope, b, objectManagerClass)
        .set("Name", objectManagerName(facts))
        .set("ElementName", safeString(facts.options.productName))
        // "<product> <version>": the version is what follows the last blank.
        .set("Description", safeString(facts.options.productName) + " " + version(facts))
        .set("Started", CIMValue(Boolean(true)))
        .set("EnabledState", CIMValue(enabled))
        .set("OperationalStatus", CIMValue(Array<Uint16>(1, operationalOk)))
        .set("TimeOfLastStateChange", CIMValue(facts.startTime))
        .set("GatherStatisticalData", CIMValue(Boolean(false)));
    return scope.finish(b);
}

std::vector<CIMInstance> communicationMechanisms(const BuildScope& scope)
{
    std::vector<CIMInstance> result;
    if (!scope.facts.options.accessPoints)
        return result;
    Array<Uint16> profiles;
    Array<String> profileTexts;
    for (const auto& p : functionalProfiles)
    {
        profiles.append(p.value);
        profileTexts.append(p.description);
    }
    for (const AccessPoint& point : scope.facts.options.accessPoints())
    {
        Array<Uint16> authentication;
        Array<String> authenticationTexts;
        for (const AuthenticationMechanism& m : point.authentication)
        {
            authentication.append(m.value);
            authenticationTexts.append(safeString(m.description));
        }
        InstanceBuilder b = scope.builder(mechanismClass);
        hostedBy(scope, b, mechanismClass)
            .set("Name", safeString(point.name))
            .set("ElementName", String("CIM-XML"))
            .set("Description", String(cimXmlDescription))
            .set("CommunicationMechanism", CIMValue(Uint16(2)))
            .set("Version", String(cimXmlVersion))
            .set("CIMXMLProtocolVersion", CIMValue(cimXmlProtocolVersion))
            .set("CIMValidated", CIMValue(Boolean(false)))
            .set("FunctionalProfilesSupported", CIMValue(profiles))
            .set("FunctionalProfileDescriptions", CIMValue(profileTexts))
            .set("MultipleOperationsSupported", CIMValue(Boolean(false)))
            .set("AuthenticationMechanismsSupported", CIMValue(authentication))
            .set("AuthenticationMechanismDescriptions", CIMValue(authenticationTexts))
            .set("AdvertiseTypes", CIMValue(Array<Uint16>(1, notAdvertised)))
            .set("EnabledState", CIMValue(enabled))
            .set("OperationalStatus", CIMValue(Array<Uint16>(1, operationalOk)));
        result.push_back(scope.finish(b));
    }
    return result;
}

std::vector<CIMInstance> namespaces(const BuildScope& scope)
{
    std::vector<CIMInstance> result;
    const Array<CIMNamespaceName> names = scope.facts.repository->enumerateNamespaces();
    for (Uint32 i = 0; i < names.size(); ++i)
    {
        InstanceBuilder b = scope.builder(namespaceClass);
        b.set("SystemCreationClassName", String(systemClass))
            .set("SystemName", scope.facts.hostName)
            .set("ObjectManagerCreationClassName", String(objectManagerClass))
            .set("ObjectManagerName", objectManagerName(scope.facts))
            .set("CreationClassName", String(namespaceClass))
            .set("Name", names[i].getString())
            .set("ClassInfo", CIMValue(Uint16(0)))   // Unknown: ClassType says it
            .set("ClassType", CIMValue(Uint16(2)));  // CIM
        result.push_back(scope.finish(b));
    }
    return result;
}

namespace
{

std::vector<Link> fromObjectManager(
    const BuildScope& scope, const char* assocClass, const std::vector<CIMInstance>& dependents)
{
    const CIMObjectPath manager = objectManager(scope).getPath();
    std::vector<Link> links;
    links.reserve(dependents.size());
    for (const CIMInstance& d : dependents)
        links.push_back(Link{assocClass, "Antecedent", manager, "Dependent", d.getPath()});
    return links;
}

}  // namespace

std::vector<Link> communicationLinks(const BuildScope& scope)
{
    return fromObjectManager(scope, "CIM_CommMechanismForManager", communicationMechanisms(scope));
}

std::vector<Link> namespaceLinks(const BuildScope& scope)
{
    return fromObjectManager(scope, "CIM_NamespaceInManager", namespaces(scope));
}

}  // namespace interop
}  // namespace qel
