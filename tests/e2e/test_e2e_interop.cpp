// Discovery with wbemcli, through qel-cimserver on the demo array: the
// classes of root/interop (also named "interop"), the object manager and
// its access point, and the way from the FC Target Ports profile down to
// the ports in root/qel.
#include "Wbemcli.h"

#include <gtest/gtest.h>

using namespace e2e;

namespace
{

const std::string kServerProfile = "CIM_RegisteredProfile.InstanceID=\"QEL:SNIA:Server:1.7.0\"";
const std::string kFcProfile =
    "CIM_RegisteredProfile.InstanceID=\"QEL:SNIA:FC Target Ports:1.7.0\"";

// The FC ports of the demo array, in port-list order.
const std::vector<std::string> kPorts = {
    portPath("20110002AC00A001", "DEMO01-N0"), portPath("20120002AC00A001", "DEMO01-N0"),
    portPath("21110002AC00A001", "DEMO01-N1"), portPath("21120002AC00A001", "DEMO01-N1"),
    portPath("21210002AC00A001", "DEMO01-N1"), portPath("20220002AC00A001", "DEMO01-N0"),
};

class InteropTest : public SharedServerSuite<InteropTest>
{
protected:
    static void SetUpTestSuite() { startServer({{"monitor", "browse"}}); }

    static WbemcliAnswer
    in(const std::string& nameSpace, const std::string& op, const std::string& object,
       const std::vector<std::string>& options = {})
    {
        return cli->as("monitor", op, object, options, nameSpace);
    }
};

TEST_F(InteropTest, TheDiscoveryClassesAnswerUnderBothNames)
{
    const struct
    {
        const char* className;
        size_t count;
    } cases[] = {
        {"CIM_ObjectManager", 1},
        {"CIM_ObjectManagerCommunicationMechanism", 1},
        {"CIM_Namespace", 4},  // root/qel, root/PG_Internal, root/interop, root/PG_InterOp
        {"CIM_RegisteredProfile", 2},
        {"CIM_NamespaceInManager", 4},
        {"CIM_CommMechanismForManager", 1},
        {"CIM_ReferencedProfile", 1},
        {"CIM_ElementConformsToProfile", 1 + kPorts.size()},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.className);
        const WbemcliAnswer names = in("root/interop", "ein", c.className);
        const WbemcliAnswer aliased = in("interop", "ein", c.className);
        const WbemcliAnswer instances = in("interop", "ei", c.className);
        for (const WbemcliAnswer* a : {&names, &aliased, &instances})
            ASSERT_TRUE(a->ok()) << a->result.output;
        EXPECT_EQ(names.paths().size(), c.count) << names.result.out;
        EXPECT_EQ(aliased.paths(), names.paths());
        EXPECT_EQ(instances.paths(), names.paths());
    }
}

TEST_F(InteropTest, TheObjectManagerAndItsAccessPointDescribeThisServer)
{
    const WbemcliAnswer manager = in("root/interop", "ei", "CIM_ObjectManager");
    ASSERT_TRUE(manager.ok()) << manager.result.output;
    ASSERT_EQ(manager.objects().size(), 1u);
    const PrintedObject m = manager.objects()[0];
    EXPECT_EQ(m["Name"], "\"qel-cimserver\"");
    EXPECT_EQ(m["Started"], "TRUE");
    EXPECT_EQ(m["EnabledState"], "2");
    EXPECT_EQ(m["Description"].rfind("\"qel-cimserver ", 0), 0u) << m["Description"];
    EXPECT_NE(m["TimeOfLastStateChange"], "");

    const WbemcliAnswer mechanism = in("root/interop", "ei", "CIM_CIMXMLCommunicationMechanism");
    ASSERT_TRUE(mechanism.ok()) << mechanism.result.output;
    ASSERT_EQ(mechanism.objects().size(), 1u);
    const PrintedObject x = mechanism.objects()[0];
    EXPECT_EQ(x["Name"], "\"http://127.0.0.1:" + std::to_string(server->port()) + "\"");
    EXPECT_EQ(x["CommunicationMechanism"], "2");
    EXPECT_EQ(x["Version"], "\"1.2\"");
    EXPECT_EQ(x["AuthenticationMechanismsSupported"], "3");
    EXPECT_EQ(x["AuthenticationMechanismDescriptions"], "\"Basic\"");

    // The object manager leads to its namespaces and its access point.
    const WbemcliAnswer held = in("interop", "ain", manager.paths()[0], {"-ar", "Antecedent"});
    ASSERT_TRUE(held.ok()) << held.result.output;
    EXPECT_EQ(held.paths().size(), 4u + 1u) << held.result.out;
}

TEST_F(InteropTest, FollowsTheFCPortProfileDownToThePorts)
{
    const WbemcliAnswer names =
        in("root/interop", "ain", kFcProfile, {"-ac", "CIM_ElementConformsToProfile"});
    ASSERT_TRUE(names.ok()) << names.result.output;
    ASSERT_EQ(names.paths(), kPorts) << names.result.out;
    for (const PrintedObject& o : names.objects())
        EXPECT_EQ(o.host, "demo01.example.net");  // the ports' own paths, in root/qel

    const WbemcliAnswer ports =
        in("root/interop", "ai", kFcProfile, {"-ac", "CIM_ElementConformsToProfile"});
    ASSERT_TRUE(ports.ok()) << ports.result.output;
    ASSERT_EQ(ports.paths(), kPorts);
    // The path each one carries leads to the same port in root/qel.
    const WbemcliAnswer first = in("root/qel", "gi", kPorts[0]);
    ASSERT_TRUE(first.ok()) << first.result.output;
    EXPECT_EQ(first.objects()[0]["PermanentAddress"], ports.objects()[0]["PermanentAddress"]);
    EXPECT_EQ(first.objects()[0]["DeviceID"], "\"20110002AC00A001\"");

    // The FC port profile references the Server profile, whose element is the
    // object manager.
    const WbemcliAnswer referenced =
        in("root/interop", "ain", kFcProfile, {"-arc", "CIM_RegisteredProfile"});
    ASSERT_TRUE(referenced.ok()) << referenced.result.output;
    EXPECT_EQ(referenced.paths(), std::vector<std::string>{kServerProfile});
    const WbemcliAnswer manager =
        in("root/interop", "ain", kServerProfile, {"-ac", "CIM_ElementConformsToProfile"});
    ASSERT_TRUE(manager.ok()) << manager.result.output;
    ASSERT_EQ(manager.paths().size(), 1u);
    EXPECT_EQ(manager.paths()[0].rfind("CIM_ObjectManager.", 0), 0u) << manager.paths()[0];
}

// A generic client walks the associations of every object it meets: a
// port's loop view is referenced by no served association.
TEST_F(InteropTest, ObjectsNoAssociationReferencesAnswerNothing)
{
    const std::string loop = portPath("20110002AC00A001", "DEMO01-N0-LOOP", "QEL_FCALPort");
    ASSERT_TRUE(in("root/qel", "gi", loop).ok());
    for (const char* op : {"ain", "ai", "rin", "ri"})
    {
        const WbemcliAnswer answer = in("root/qel", op, loop);
        EXPECT_TRUE(answer.ok()) << op << "\n" << answer.result.output;
        EXPECT_EQ(answer.result.out, "") << op;
    }
}

}  // namespace
