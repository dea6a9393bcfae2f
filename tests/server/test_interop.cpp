// The discovery namespace root/interop served by the provider inside the
// server, with the array's real modules on the simulated demo array: what
// each class publishes, how its associations are followed (down to the FC
// ports in root/qel) and filtered, and what a user the array refuses still
// sees.
#include "DiscoveryFixture.h"

#include <Server/core/ProviderRegistry.h>
#include <Server/interop/InteropFacts.h>
#include <Server/interop/InteropNamespace.h>
#include <Server/interop/RegisteredProfiles.h>
#include <Server/mof/MofCompiler.h>
#include <Server/repository/ClassRepository.h>

#include <set>

using namespace Pegasus;
using namespace servertest;

namespace
{

std::set<std::string> texts(const Array<CIMObjectPath>& paths)
{
    std::set<std::string> result;
    for (Uint32 i = 0; i < paths.size(); ++i)
        result.insert(text(paths[i].toString()));
    return result;
}

}  // namespace

TEST(InteropNamespace, TheAliasNamesTheDiscoveryNamespaceOnly)
{
    const struct
    {
        const char* requested;
        const char* resolved;
    } cases[] = {
        {"interop", "root/interop"},
        {"INTEROP", "root/interop"},
        {"/interop", "root/interop"},
        {"root/interop", "root/interop"},
        {"root/qel", "root/qel"},
        {"interop2", "interop2"},
        {"root/interop/x", "root/interop/x"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(
            text(qel::interop::resolveNamespaceAlias(CIMNamespaceName(c.requested)).getString()),
            c.resolved)
            << c.requested;
    EXPECT_TRUE(qel::interop::resolveNamespaceAlias(CIMNamespaceName()).isNull());
}

// The FC port profile is registered while a provider serves QEL_FCPort, and
// only then.
TEST(RegisteredProfiles, TheFCPortProfileFollowsThePortRegistration)
{
    ClassRepository repository;
    MofCompiler(repository).compileFile(schemaRoot());
    const ProviderRegistry withPorts = ProviderRegistry::load(repository);
    const ProviderRegistry withoutPorts =
        ProviderRegistry::load(repository, CIMNamespaceName("root/nowhere"));
    for (const auto& c :
         {std::make_pair(&withPorts, "Server FC Target Ports "),
          std::make_pair(&withoutPorts, "Server ")})
    {
        qel::interop::ServerFacts facts;
        facts.repository = &repository;
        facts.registry = c.first;
        std::string published;
        for (const qel::interop::ProfileEntry* p : qel::interop::publishedProfiles(facts))
            published += std::string(p->name) + " ";
        EXPECT_EQ(published, c.second);
    }
}

TEST_F(DiscoveryServer, EveryClassPublishesItsInstances)
{
    const Uint32 ns = namespaceCount();
    const Uint32 portCount = ports().size();
    ASSERT_EQ(
        ns, 5u);  // root/qel, root/PG_Internal, root/interop, root/PG_InterOp, root/servertest
    ASSERT_EQ(portCount, 6u);
    const struct
    {
        const char* className;
        Uint32 count;
    } cases[] = {
        {"CIM_ObjectManager", 1},
        {"CIM_ObjectManagerCommunicationMechanism", 1},  // through its subclass
        {"CIM_CIMXMLCommunicationMechanism", 1},
        {"CIM_Namespace", ns},
        {"CIM_RegisteredProfile", 2},
        {"CIM_NamespaceInManager", ns},
        {"CIM_CommMechanismForManager", 1},
        {"CIM_ReferencedProfile", 1},
        {"CIM_ElementConformsToProfile", 1 + portCount},
        {"CIM_ManagedElement", 1 + 1 + ns + 2},
        {"CIM_Dependency", ns + 1 + 1},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.className);
        const Array<CIMObjectPath> paths = names(c.className);
        const Array<CIMInstance> instances =
            calls().enumerateInstances(context, interopNs, c.className);
        ASSERT_EQ(paths.size(), c.count);
        ASSERT_EQ(instances.size(), c.count);
        for (Uint32 i = 0; i < c.count; ++i)
        {
            EXPECT_EQ(text(instances[i].getPath().toString()), text(paths[i].toString()));
            // Every name leads back to its instance.
            CIMInstance again = calls().getInstance(context, interopNs, paths[i]);
            EXPECT_EQ(text(again.getPath().toString()), text(paths[i].toString()));
            EXPECT_EQ(again.getPropertyCount(), instances[i].getPropertyCount());
        }
    }
}

TEST_F(DiscoveryServer, TheObjectManagerDescribesTheRunningServer)
{
    const CIMInstance manager = only("CIM_ObjectManager");
    const struct
    {
        const char* property;
        const char* expected;
    } cases[] = {
        {"SystemCreationClassName", "CIM_ComputerSystem"},
        {"SystemName", "cimhost"},
        {"CreationClassName", "CIM_ObjectManager"},
        {"Name", "qel-cimserver"},
        {"ElementName", "qel-cimserver"},
        {"Description", "qel-cimserver 9.8.7"},
        {"Started", "TRUE"},
        {"EnabledState", "2"},
        {"OperationalStatus", "2 "},
        {"GatherStatisticalData", "FALSE"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(value(manager, c.property), c.expected) << c.property;
    CIMDateTime started;
    manager.getProperty(manager.findProperty("TimeOfLastStateChange")).getValue().get(started);
    EXPECT_TRUE(started == server().startTime());
    EXPECT_TRUE(before <= started && started <= after);

    // Every namespace of the repository, held by that object manager.
    std::set<std::string> expected;
    const Array<CIMNamespaceName> all = server().repository().enumerateNamespaces();
    for (Uint32 i = 0; i < all.size(); ++i)
        expected.insert(text(all[i].getString()));
    std::set<std::string> published;
    const Array<CIMInstance> namespaces =
        calls().enumerateInstances(context, interopNs, "CIM_Namespace");
    for (Uint32 i = 0; i < namespaces.size(); ++i)
    {
        published.insert(value(namespaces[i], "Name"));
        EXPECT_EQ(value(namespaces[i], "ObjectManagerName"), "qel-cimserver");
        EXPECT_EQ(value(namespaces[i], "ClassType"), "2");
    }
    EXPECT_EQ(published, expected);
}

// The access points are asked for at each request: none, one, two.
TEST_F(DiscoveryServer, CommunicationMechanismsFollowTheAccessPoints)
{
    const std::vector<std::vector<qel::interop::AccessPoint>> settings = {
        {},
        {{"http://127.0.0.1:5988", {qel::interop::basicAuthentication()}}},
        {{"http://127.0.0.1:5988", {qel::interop::basicAuthentication()}},
         {"https://127.0.0.1:5989",
          {qel::interop::basicAuthentication(), qel::interop::clientCertificateAuthentication()}}},
    };
    for (const auto& points : settings)
    {
        SCOPED_TRACE(points.size());
        *accessPoints = points;
        const Array<CIMInstance> mechanisms = calls().enumerateInstances(
            context, interopNs, "CIM_ObjectManagerCommunicationMechanism");
        ASSERT_EQ(mechanisms.size(), points.size());
        EXPECT_EQ(names("CIM_CommMechanismForManager").size(), points.size());
        for (Uint32 i = 0; i < mechanisms.size(); ++i)
        {
            const CIMInstance& m = mechanisms[i];
            EXPECT_EQ(value(m, "Name"), points[i].name);
            EXPECT_EQ(value(m, "CommunicationMechanism"), "2");  // CIM-XML
            EXPECT_EQ(value(m, "Version"), "1.2");
            EXPECT_EQ(value(m, "CIMXMLProtocolVersion"), "1");
            EXPECT_EQ(value(m, "FunctionalProfilesSupported"), "2 3 5 6 ");
            EXPECT_EQ(value(m, "MultipleOperationsSupported"), "FALSE");
            EXPECT_EQ(value(m, "AdvertiseTypes"), "2 ");
        }
    }
    const CIMInstance tls =
        calls().enumerateInstances(context, interopNs, "CIM_CIMXMLCommunicationMechanism")[1];
    EXPECT_EQ(value(tls, "AuthenticationMechanismsSupported"), "3 1 ");
    EXPECT_EQ(value(tls, "AuthenticationMechanismDescriptions"), "Basic TLS client certificate ");
}

TEST_F(DiscoveryServer, ProfilesCarryTheirOrganisationNameAndVersion)
{
    const struct
    {
        const char* name;
        const char* instanceId;
    } cases[] = {
        {"Server", "QEL:SNIA:Server:1.7.0"},
        {"FC Target Ports", "QEL:SNIA:FC Target Ports:1.7.0"},
    };
    for (const auto& c : cases)
    {
        const CIMInstance p = calls().getInstance(context, interopNs, profile(c.name));
        EXPECT_EQ(value(p, "InstanceID"), c.instanceId);
        EXPECT_EQ(value(p, "RegisteredOrganization"), "11");  // SNIA
        EXPECT_EQ(value(p, "RegisteredVersion"), "1.7.0");
        EXPECT_EQ(value(p, "AdvertiseTypes"), "2 ");
    }
    // The FC port profile references the Server profile.
    const CIMInstance link = only("CIM_ReferencedProfile");
    EXPECT_EQ(value(link, "Antecedent"), text(profile("Server").toString()));
    EXPECT_EQ(value(link, "Dependent"), text(profile("FC Target Ports").toString()));
}

TEST_F(DiscoveryServer, AClientFollowsTheFCPortProfileDownToThePorts)
{
    const CIMObjectPath fc = profile("FC Target Ports");
    const Array<CIMObjectPath> conforming =
        calls().associatorNames(context, interopNs, fc, "CIM_ElementConformsToProfile");
    EXPECT_EQ(texts(conforming), texts(ports()));  // in root/qel, not the loop views

    const Array<CIMObject> objects =
        calls().associators(context, interopNs, fc, "CIM_ElementConformsToProfile");
    ASSERT_EQ(objects.size(), conforming.size());
    for (Uint32 i = 0; i < objects.size(); ++i)
    {
        ASSERT_TRUE(objects[i].isInstance());
        const CIMInstance port(objects[i]);
        EXPECT_EQ(port.getPath().getNameSpace(), qelNs);
        EXPECT_EQ(text(port.getClassName().getString()), "QEL_FCPort");
        EXPECT_NE(value(port, "PermanentAddress"), "(absent)");
        // The path leads to the same port in its own namespace.
        EXPECT_EQ(
            value(calls().getInstance(context, qelNs, port.getPath()), "DeviceID"),
            value(port, "DeviceID"));
    }
    // The links themselves name the profile and each port.
    const Array<CIMObject> links =
        calls().references(context, interopNs, fc, "CIM_ElementConformsToProfile");
    ASSERT_EQ(links.size(), conforming.size());
    std::set<std::string> elements;
    for (Uint32 i = 0; i < links.size(); ++i)
    {
        const CIMInstance link(links[i]);
        EXPECT_EQ(value(link, "ConformantStandard"), text(fc.toString()));
        elements.insert(value(link, "ManagedElement"));
    }
    EXPECT_EQ(elements, texts(ports()));

    // The Server profile leads to the object manager.
    EXPECT_EQ(
        texts(calls().associatorNames(
            context, interopNs, profile("Server"), "CIM_ElementConformsToProfile")),
        texts(Array<CIMObjectPath>(1, objectManager())));
}

// Role, result role, result class and association class narrow the answer
// as for any association.
TEST_F(DiscoveryServer, FiltersNarrowAssociationsAsForAnyOther)
{
    const Uint32 ns = namespaceCount();
    const Uint32 portCount = ports().size();
    const CIMObjectPath manager = objectManager();
    const CIMObjectPath server = profile("Server");
    const CIMObjectPath fc = profile("FC Target Ports");
    const struct
    {
        const char* what;
        CIMObjectPath object;
        const char* assocClass;
        const char* resultClass;
        const char* role;
        const char* resultRole;
        Uint32 associated;   // associatorNames
        Uint32 referencing;  // referenceNames with assocClass and role
    } cases[] = {
        {"manager, everything", manager, "", "", "", "", ns + 1 + 1, ns + 1 + 1},
        {"manager, its namespaces", manager, "CIM_NamespaceInManager", "", "", "", ns, ns},
        {"manager, by result class", manager, "", "CIM_Namespace", "", "", ns, ns + 2},
        {"manager as Antecedent", manager, "", "", "Antecedent", "Dependent", ns + 1, ns + 1},
        {"manager as Dependent", manager, "", "", "Dependent", "", 0, 0},
        {"manager as conformant", manager, "", "", "ManagedElement", "", 1, 1},
        {"server profile, everything", server, "", "", "", "", 2, 2},
        {"server profile, referenced", server, "CIM_ReferencedProfile", "", "Antecedent", "", 1, 1},
        {"server profile as Dependent", server, "CIM_ReferencedProfile", "", "Dependent", "", 0, 0},
        {"fc profile, to profiles", fc, "", "CIM_RegisteredProfile", "", "", 1, 1 + portCount},
        {"fc profile, to ports", fc, "", "CIM_FCPort", "", "", 0, 1 + portCount},
        {"fc profile, managed elements", fc, "", "CIM_ManagedElement", "", "ManagedElement",
         portCount, 1 + portCount},
        {"fc profile, wrong result role", fc, "CIM_ElementConformsToProfile", "", "",
         "ConformantStandard", 0, portCount},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const CIMName assocClass = *c.assocClass ? CIMName(c.assocClass) : CIMName();
        const CIMName resultClass = *c.resultClass ? CIMName(c.resultClass) : CIMName();
        if (resultClass == CIMName("CIM_FCPort"))
        {
            // Not a class of root/interop: the request is refused as such.
            EXPECT_EQ(
                cimErrorOf(
                    [&] {
                        calls().associatorNames(
                            context, interopNs, c.object, assocClass, resultClass);
                    })
                    .getCode(),
                CIM_ERR_INVALID_PARAMETER);
            continue;
        }
        EXPECT_EQ(
            calls()
                .associatorNames(
                    context, interopNs, c.object, assocClass, resultClass, c.role, c.resultRole)
                .size(),
            c.associated);
        EXPECT_EQ(
            calls().referenceNames(context, interopNs, c.object, assocClass, c.role).size(),
            c.referencing);
    }
}

// The conformance of the ports is read as the requesting user: a user the
// array refuses gets its refusal where the ports are needed, and the rest of
// the namespace still.
TEST_F(DiscoveryServer, AUserTheArrayRefusesStillSeesTheServer)
{
    EXPECT_EQ(
        cimErrorOf(
            [&] { calls().enumerateInstances(refused, interopNs, "CIM_ElementConformsToProfile"); })
            .getCode(),
        CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(
        cimErrorOf(
            [&]
            {
                calls().associatorNames(
                    refused, interopNs, profile("FC Target Ports"), "CIM_ElementConformsToProfile");
            })
            .getCode(),
        CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(
        calls()
            .associatorNames(refused, interopNs, profile("Server"), "CIM_ElementConformsToProfile")
            .size(),
        1u);
    EXPECT_EQ(
        calls().referenceNames(refused, interopNs, objectManager()).size(), namespaceCount() + 2);
    EXPECT_EQ(calls().enumerateInstances(refused, interopNs, "CIM_RegisteredProfile").size(), 2u);
    // The object manager's own conformance is found without the ports.
    const CIMObjectPath conformance = calls().referenceNames(
        refused, interopNs, objectManager(), "CIM_ElementConformsToProfile")[0];
    EXPECT_EQ(
        text(calls().getInstance(refused, interopNs, conformance).getPath().toString()),
        text(conformance.toString()));
}

TEST_F(DiscoveryServer, TheNamespaceOnlyTells)
{
    const CIMInstance manager = only("CIM_ObjectManager");
    const std::vector<std::function<void()>> changes = {
        [&] { calls().modifyInstance(context, interopNs, manager); },
        [&] { calls().deleteInstance(context, interopNs, manager.getPath()); },
        [&] { calls().createInstance(context, interopNs, manager); },
    };
    for (const auto& change : changes)
    {
        const CIMException e = cimErrorOf(change);
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
        EXPECT_EQ(
            text(e.getMessage()),
            "CIM_ObjectManager instances describe the server and cannot be changed.");
    }
    const CIMObjectPath missing("CIM_RegisteredProfile.InstanceID=\"QEL:SNIA:Array:1.7.0\"");
    EXPECT_EQ(
        cimErrorOf([&] { calls().getInstance(context, interopNs, missing); }).getCode(),
        CIM_ERR_NOT_FOUND);
}

// A generic client walks the associations of every object it meets: a
// port's loop view is referenced by no served association.
TEST_F(DiscoveryServer, ObjectsNoAssociationReferencesAnswerNothing)
{
    const CIMObjectPath loop = calls().enumerateInstanceNames(context, qelNs, "QEL_FCALPort")[0];
    EXPECT_EQ(calls().associators(context, qelNs, loop).size(), 0u);
    EXPECT_EQ(calls().associatorNames(context, qelNs, loop).size(), 0u);
    EXPECT_EQ(calls().references(context, qelNs, loop).size(), 0u);
    EXPECT_EQ(calls().referenceNames(context, qelNs, loop).size(), 0u);
}

// The array's port list is read only by the requests that need the ports,
// once per class of objects they return, and every list goes back.
TEST_F(DiscoveryServer, ThePortListIsReadOnlyWhereThePortsAreNeeded)
{
    const CIMObjectPath fc = profile("FC Target Ports");
    const CIMObjectPath serverProfile = profile("Server");
    const CIMObjectPath manager = objectManager();
    ports();  // the port provider is made and initialized before counting
    const struct
    {
        const char* what;
        std::function<void()> request;
        uint64_t listReads;
    } cases[] = {
        {"object manager", [&] { only("CIM_ObjectManager"); }, 0},
        {"server profile's elements",
         [&] { calls().associators(context, interopNs, serverProfile); }, 0},
        {"object manager's links", [&] { calls().references(context, interopNs, manager); }, 0},
        {"fc profile's element names", [&] { calls().associatorNames(context, interopNs, fc); }, 1},
        {"fc profile's elements", [&] { calls().associators(context, interopNs, fc); }, 2},
        {"every conformance",
         [&] { calls().enumerateInstances(context, interopNs, "CIM_ElementConformsToProfile"); },
         1},
    };
    for (const auto& c : cases)
    {
        const qelsim::Counters start = qelsim::counters();
        c.request();
        const qelsim::Counters end = qelsim::counters();
        EXPECT_EQ(end.fcListsHandedOut - start.fcListsHandedOut, c.listReads) << c.what;
        EXPECT_EQ(qelsim::outstandingFCLists(end), 0u) << c.what;
    }
}
