// Navigating between FC ports, their transceivers and their link error counters with
// wbemcli, through qel-cimserver on the demo array (examples/demo-array.json).
#include "Wbemcli.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace e2e;

namespace
{

// The providers build every path on the array's host name (system.hostName).
const std::string kArrayHost = "demo01.example.net";

const std::string kPort012 = portPath("20120002AC00A001", "DEMO01-N0");  // transceiver and counters
const std::string kPort111 =
    portPath("21110002AC00A001", "DEMO01-N1");  // transceiver, no LESB record
const std::string kPort112 = portPath("21120002AC00A001", "DEMO01-N1");  // counters, no transceiver
const std::string kSfp012 = sfpPath("20120002AC00A001-ABC1234");
const std::string kSfp111 = sfpPath("21110002AC00A001-NW55501");
const std::string kSfpIscsi = sfpPath("iqn.2000-05.net.example:demo01.0.3.1-NW10G0042");
const std::string kStats012 = statsPath("ZEPHRAN:20120002AC00A001-Stats");
const std::string kStats112 = statsPath("ZEPHRAN:21120002AC00A001-Stats");
const std::string kSfpLink012 =
    sfpLinkPath("20120002AC00A001-ABC1234", "20120002AC00A001", "DEMO01-N0");
const std::string kStatsLink012 = statsLinkPath("20120002AC00A001", "DEMO01-N0");

const char* const kSfpProvider = "QEL_FCPortSFPProvider";
const char* const kStatsProvider = "QEL_FCPortElementStatisticalDataProvider";

class AssociationTest : public SharedServerSuite<AssociationTest>
{
protected:
    static void SetUpTestSuite() { startServer({{"monitor", "browse"}}); }

    // A printed path with its reference keys written back the way wbemcli takes them:
    // wbemcli prints a reference as <host>/<namespace><Class>.<keys>.
    static std::string local(std::string path)
    {
        const std::string onArray = kArrayHost + "/root/qel";
        for (size_t at; (at = path.find(onArray)) != std::string::npos;)
            path.erase(at, onArray.size());
        return path;
    }
    static std::vector<std::string> sortedPaths(const WbemcliAnswer& answer)
    {
        std::vector<std::string> result;
        for (const std::string& p : answer.paths())
            result.push_back(local(p));
        std::sort(result.begin(), result.end());
        return result;
    }
    static std::vector<std::string> sorted(std::vector<std::string> v)
    {
        std::sort(v.begin(), v.end());
        return v;
    }
};

// ------------------------------------------------------------ enumerations

TEST_F(AssociationTest, EnumeratesOneAssociationPerLinkedPort)
{
    // Transceivers of FC ports only (not the iSCSI port's), in port-list order.
    const std::vector<std::string> sfpLinks = {
        sfpLinkPath("20110002AC00A001-AV8000101", "20110002AC00A001", "DEMO01-N0"),
        kSfpLink012,
        sfpLinkPath("21110002AC00A001-NW55501", "21110002AC00A001", "DEMO01-N1"),
        sfpLinkPath("21210002AC00A001-AV2009911", "21210002AC00A001", "DEMO01-N1"),
        sfpLinkPath("20220002AC00A001-AV8000101", "20220002AC00A001", "DEMO01-N0"),
    };
    // Ports with at least one LESB record: not 1:1:1 nor the non-port record.
    const std::vector<std::string> statsLinks = {
        statsLinkPath("20110002AC00A001", "DEMO01-N0"),
        kStatsLink012,
        statsLinkPath("21120002AC00A001", "DEMO01-N1"),
        statsLinkPath("21210002AC00A001", "DEMO01-N1"),
        statsLinkPath("20220002AC00A001", "DEMO01-N0"),
    };
    struct
    {
        const char* className;
        const std::vector<std::string>& expected;
        const char* portRole;
        const char* otherRole;
    } const classes[] = {
        {"QEL_FCPortSFP", sfpLinks, "Dependent", "Antecedent"},
        {"QEL_FCPortLESBElementStatisticalData", statsLinks, "ManagedElement", "Stats"},
    };
    for (const auto& c : classes)
    {
        const WbemcliAnswer names = cli->as("monitor", "ein", c.className);
        ASSERT_TRUE(names.ok()) << names.result.output;
        std::vector<std::string> got;
        for (const std::string& p : names.paths())
            got.push_back(local(p));
        EXPECT_EQ(got, c.expected) << c.className << "\n" << names.result.out;

        const WbemcliAnswer all = cli->as("monitor", "ei", c.className);
        ASSERT_TRUE(all.ok()) << all.result.output;
        const std::vector<PrintedObject> instances = all.objects();
        ASSERT_EQ(instances.size(), c.expected.size()) << all.result.out;
        for (size_t i = 0; i < instances.size(); ++i)
        {
            EXPECT_EQ(local(instances[i].path), c.expected[i]) << c.className;
            // The reference properties name the same ends as the keys.
            const std::string& path = c.expected[i];
            const std::string port = local(instances[i][c.portRole]);
            const std::string other = local(instances[i][c.otherRole]);
            EXPECT_NE(path.find(std::string(c.portRole) + "=" + port), std::string::npos)
                << path << "\n"
                << port;
            EXPECT_NE(path.find(std::string(c.otherRole) + "=" + other), std::string::npos)
                << path << "\n"
                << other;
            EXPECT_EQ(port.rfind("QEL_FCPort.", 0), 0u) << port;
        }
    }
}

struct GetCase
{
    const char* what;
    std::string object;
    std::string error;  // "" = found
};

TEST_F(AssociationTest, GetInstanceOfAnAssociationPath)
{
    // wbemcli puts its own host (127.0.0.1) into the references: hosts are not compared.
    const std::string statsLinkStatsFirst =
        "QEL_FCPortLESBElementStatisticalData.Stats=" + kStats012 + ",ManagedElement=" + kPort012;
    const GetCase cases[] = {
        {"port and its transceiver", kSfpLink012, ""},
        {"port and its counters", kStatsLink012, ""},
        {"keys in the other order", statsLinkStatsFirst, ""},
        {"transceiver of another port",
         sfpLinkPath("20120002AC00A001-ABC1234", "20110002AC00A001", "DEMO01-N0"),
         "CIM_ERR_NOT_FOUND: QEL_FCPortSFPProvider CIM Object not found."},
        {"port without LESB record", statsLinkPath("21110002AC00A001", "DEMO01-N1"),
         "CIM_ERR_NOT_FOUND: QEL_FCPortElementStatisticalData CIM Object not found."},
        {"ends in another namespace",
         "QEL_FCPortSFP.Antecedent=root/other:" + kSfp012 + ",Dependent=root/other:" + kPort012,
         "CIM_ERR_NOT_FOUND: QEL_FCPortSFPProvider CIM Object not found."},
        {"one key only", "QEL_FCPortSFP.Antecedent=" + kSfp012,
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortSFPProvider Expect two keys."},
        {"one key only (counters)", "QEL_FCPortLESBElementStatisticalData.Stats=" + kStats012,
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortElementStatisticalData Expect two keys."},
    };
    for (const GetCase& c : cases)
    {
        const WbemcliAnswer r = cli->as("monitor", "gi", c.object);
        EXPECT_EQ(r.error(), c.error) << c.what << "\n" << r.result.output;
        if (!c.error.empty())
            continue;
        const std::vector<PrintedObject> got = r.objects();
        ASSERT_EQ(got.size(), 1u) << c.what << "\n" << r.result.out;
        const bool sfp = c.object.rfind("QEL_FCPortSFP.", 0) == 0;
        EXPECT_EQ(local(got[0][sfp ? "Dependent" : "ManagedElement"]), kPort012) << c.what;
        EXPECT_EQ(local(got[0][sfp ? "Antecedent" : "Stats"]), sfp ? kSfp012 : kStats012) << c.what;
    }
}

// -------------------------------------------------------------- navigation

struct NavigationCase
{
    const char* what;
    std::string object;
    std::vector<std::string> associated;  // ain / ai
    std::vector<std::string> references;  // rin / ri
};

TEST_F(AssociationTest, NavigatesFromEachEnd)
{
    const NavigationCase cases[] = {
        {"port with both", kPort012, {kSfp012, kStats012}, {kSfpLink012, kStatsLink012}},
        {"port without LESB record",
         kPort111,
         {kSfp111},
         {sfpLinkPath("21110002AC00A001-NW55501", "21110002AC00A001", "DEMO01-N1")}},
        {"port without transceiver",
         kPort112,
         {kStats112},
         {statsLinkPath("21120002AC00A001", "DEMO01-N1")}},
        {"transceiver", kSfp012, {kPort012}, {kSfpLink012}},
        {"counters", kStats012, {kPort012}, {kStatsLink012}},
        {"transceiver of an iSCSI port", kSfpIscsi, {}, {}},
        // DeviceIDs are compared with letter case.
        {"port named in lower case", portPath("20120002ac00a001", "DEMO01-N0"), {}, {}},
    };
    for (const NavigationCase& c : cases)
    {
        for (const char* op : {"ain", "ai"})
        {
            const WbemcliAnswer r = cli->as("monitor", op, c.object);
            EXPECT_TRUE(r.ok()) << c.what << " " << op << "\n" << r.result.output;
            EXPECT_EQ(sortedPaths(r), sorted(c.associated)) << c.what << " " << op << "\n"
                                                            << r.result.out;
            for (const PrintedObject& o : r.objects())
                EXPECT_EQ(o.host, kArrayHost) << c.what << " " << op;
        }
        for (const char* op : {"rin", "ri"})
        {
            const WbemcliAnswer r = cli->as("monitor", op, c.object);
            EXPECT_TRUE(r.ok()) << c.what << " " << op << "\n" << r.result.output;
            EXPECT_EQ(sortedPaths(r), sorted(c.references)) << c.what << " " << op << "\n"
                                                            << r.result.out;
        }
    }
}

TEST_F(AssociationTest, AssociatedInstancesAreTheEndsOwnInstances)
{
    // From a port: the transceiver and the counters as their own classes publish them.
    const WbemcliAnswer fromPort = cli->as("monitor", "ai", kPort012);
    ASSERT_TRUE(fromPort.ok()) << fromPort.result.output;
    for (const PrintedObject& o : fromPort.objects())
    {
        if (o.path == kSfp012)
        {
            EXPECT_EQ(o["Temperature"], "-3");
            EXPECT_EQ(o["SerialNumber"], "\"ABC1234   \"");
            EXPECT_EQ(o["OperationalStatus"], "3");
        }
        else
        {
            EXPECT_EQ(o.path, kStats012);
            EXPECT_EQ(o["LinkFailures"], "9");
            EXPECT_EQ(o["InvalidTransmissionWords"], "140");
            EXPECT_EQ(o["ElementName"], "\"FC Port 0:1:2 LESB Statistics\"");
        }
    }
    EXPECT_EQ(fromPort.objects().size(), 2u);

    // From the transceiver and from the counters: the port, as the FC port class publishes it.
    const std::vector<PrintedObject> port = cli->as("monitor", "gi", kPort012).objects();
    ASSERT_EQ(port.size(), 1u);
    for (const std::string& from : {kSfp012, kStats012})
    {
        const std::vector<PrintedObject> found = cli->as("monitor", "ai", from).objects();
        ASSERT_EQ(found.size(), 1u) << from;
        const PrintedObject& got = found[0];
        EXPECT_EQ(got["ElementName"], "\"0:1:2\"") << from;
        for (const char* property :
             {"DeviceID", "EnabledState", "OperationalStatus", "Speed", "Mode", "VCN"})
        {
            EXPECT_EQ(got[property], port[0][property]) << from << " " << property;
        }
    }

    // The references carry both ends as reference properties.
    const WbemcliAnswer refs = cli->as("monitor", "ri", kSfp012);
    ASSERT_EQ(refs.objects().size(), 1u) << refs.result.output;
    EXPECT_EQ(local(refs.objects()[0]["Antecedent"]), kSfp012);
    EXPECT_EQ(local(refs.objects()[0]["Dependent"]), kPort012);
}

// ------------------------------------------------------------------ filters

struct FilterCase
{
    std::string object;
    std::vector<std::string> options;
    std::vector<std::string> expected;
    std::vector<const char*> refusing;  // providers that turn the request away
};

// Associator requests: the providers apply role, result role and result class; the
// association class only selects which providers the server asks. A refused request
// answers nothing and no error, and the provider logs why.
TEST_F(AssociationTest, AssociatorFiltersAcceptedAndRefused)
{
    const std::vector<const char*> none;
    const std::vector<const char*> sfp = {kSfpProvider};
    const std::vector<const char*> stats = {kStatsProvider};
    const std::vector<const char*> both = {kSfpProvider, kStatsProvider};
    const FilterCase cases[] = {
        {kPort012, {"-ac", "QEL_FCPortSFP"}, {kSfp012}, none},
        {kPort012, {"-ac", "CIM_ElementStatisticalData"}, {kStats012}, none},
        {kPort012, {"-ac", "CIM_Dependency"}, {kSfp012}, none},
        {kPort012, {"-arc", "CIM_PhysicalConnector"}, {kSfp012}, stats},
        {kPort012, {"-arc", "QEL_SFP"}, {kSfp012}, stats},
        {kPort012, {"-arc", "CIM_StatisticalData"}, {kStats012}, sfp},
        {kPort012, {"-arc", "QEL_FCPortLESBStatistics"}, {kStats012}, sfp},
        {kPort012, {"-arc", "CIM_FCPort"}, {}, both},
        // From a port the counters' own ancestors are refused too; intended.
        {kPort012, {"-arc", "CIM_ManagedElement"}, {}, both},
        {kPort012, {"-ar", "Dependent"}, {kSfp012}, stats},
        {kPort012, {"-ar", "ManagedElement"}, {kStats012}, sfp},
        {kPort012, {"-ar", "Antecedent"}, {}, both},
        {kPort012, {"-ar", "Bogus"}, {}, both},
        {kPort012, {"-arr", "Antecedent"}, {kSfp012}, stats},
        {kPort012, {"-arr", "Stats"}, {kStats012}, sfp},
        {kPort012, {"-arr", "Dependent"}, {}, both},
        {kPort012, {"-ac", "QEL_FCPortSFP", "-arc", "CIM_FCPort"}, {}, sfp},
        {kSfp012, {"-ac", "CIM_PortActiveConnection"}, {kPort012}, none},
        {kSfp012, {"-arc", "CIM_FCPort"}, {kPort012}, none},
        {kSfp012, {"-arc", "QEL_FCPort"}, {kPort012}, none},
        {kSfp012, {"-arc", "CIM_PhysicalConnector"}, {}, sfp},
        {kSfp012, {"-arc", "QEL_SFP"}, {}, sfp},
        {kSfp012, {"-arc", "CIM_ManagedElement"}, {}, sfp},
        {kSfp012, {"-ar", "Antecedent"}, {kPort012}, none},
        {kSfp012, {"-ar", "Dependent"}, {}, sfp},
        {kSfp012, {"-arr", "Dependent"}, {kPort012}, none},
        {kSfp012, {"-arr", "Antecedent"}, {}, sfp},
        {kStats012, {"-ac", "QEL_FCPortLESBElementStatisticalData"}, {kPort012}, none},
        {kStats012, {"-arc", "CIM_ManagedElement"}, {kPort012}, none},
        {kStats012, {"-arc", "CIM_LogicalPort"}, {kPort012}, none},
        {kStats012, {"-arc", "QEL_FCPort"}, {kPort012}, none},
        {kStats012, {"-arc", "CIM_StatisticalData"}, {}, stats},
        {kStats012, {"-arc", "QEL_FCPortLESBStatistics"}, {}, stats},
        {kStats012, {"-ar", "Stats"}, {kPort012}, none},
        {kStats012, {"-ar", "ManagedElement"}, {}, stats},
        {kStats012, {"-arr", "ManagedElement"}, {kPort012}, none},
        {kStats012, {"-arr", "Stats"}, {}, stats},
    };
    for (const FilterCase& c : cases)
    {
        for (const char* op : {"ain", "ai"})
        {
            const std::string method = std::string(op) == "ain" ? "associatorNames" : "associators";
            std::string what = std::string(op) + " from " + c.object.substr(0, c.object.find('.'));
            for (const std::string& o : c.options)
                what += " " + o;
            const size_t mark = server->log().size();
            const WbemcliAnswer r = cli->as("monitor", op, c.object, c.options);
            EXPECT_TRUE(r.ok()) << what << "\n" << r.result.output;
            EXPECT_EQ(sortedPaths(r), sorted(c.expected)) << what << "\n" << r.result.out;
            const std::string log = logSince(*server, mark);
            for (const char* provider : {kSfpProvider, kStatsProvider})
            {
                const bool refused =
                    std::find(c.refusing.begin(), c.refusing.end(), provider) != c.refusing.end();
                const std::string line =
                    std::string(provider) + "::" + method + ": invalid params:";
                EXPECT_EQ(log.find(line) != std::string::npos, refused)
                    << what << ": " << line << "\n"
                    << log;
            }
        }
    }
}

// Reference requests: the server asks only the providers whose association class passes the
// result class and role, so each filter selects one association here.
TEST_F(AssociationTest, ReferenceFiltersSelectTheAssociation)
{
    const FilterCase cases[] = {
        {kPort012, {"-arc", "CIM_PortActiveConnection"}, {kSfpLink012}, {}},
        {kPort012, {"-arc", "QEL_FCPortLESBElementStatisticalData"}, {kStatsLink012}, {}},
        {kPort012, {"-arc", "CIM_ElementStatisticalData"}, {kStatsLink012}, {}},
        {kPort012, {"-ar", "Dependent"}, {kSfpLink012}, {}},
        {kPort012, {"-ar", "ManagedElement"}, {kStatsLink012}, {}},
        {kSfp012, {"-arc", "QEL_FCPortSFP"}, {kSfpLink012}, {}},
        {kSfp012, {"-ar", "Antecedent"}, {kSfpLink012}, {}},
        {kStats012, {"-arc", "CIM_ElementStatisticalData"}, {kStatsLink012}, {}},
        {kStats012, {"-ar", "Stats"}, {kStatsLink012}, {}},
    };
    for (const FilterCase& c : cases)
    {
        for (const char* op : {"rin", "ri"})
        {
            std::string what = std::string(op) + " from " + c.object.substr(0, c.object.find('.'));
            for (const std::string& o : c.options)
                what += " " + o;
            const WbemcliAnswer r = cli->as("monitor", op, c.object, c.options);
            EXPECT_TRUE(r.ok()) << what << "\n" << r.result.output;
            EXPECT_EQ(sortedPaths(r), sorted(c.expected)) << what << "\n" << r.result.out;
        }
    }
}

struct ErrorCase
{
    const char* what;
    const char* op;
    std::string object;
    std::vector<std::string> options;
    std::string error;
};

// When the filters leave no association class that can reference the object, the server has
// nobody to ask: an empty answer and no error, from both operations of the pair.
TEST_F(AssociationTest, FiltersThatLeaveNoAssociationAnswerNothing)
{
    struct
    {
        const char* what;
        std::vector<const char*> ops;
        std::string object;
        std::vector<std::string> options;
    } const cases[] = {
        {"association class of the other pair",
         {"ain", "ai"},
         kSfp012,
         {"-ac", "QEL_FCPortLESBElementStatisticalData"}},
        {"parent of the other pair's association",
         {"ain", "ai"},
         kStats012,
         {"-ac", "CIM_Dependency"}},
        {"result class that no association of the object has",
         {"rin", "ri"},
         kStats012,
         {"-arc", "CIM_PortActiveConnection"}},
        {"role the object never plays", {"rin", "ri"}, kStats012, {"-ar", "ManagedElement"}},
        {"role of the port in the other pair", {"rin", "ri"}, kSfp012, {"-ar", "ManagedElement"}},
    };
    for (const auto& c : cases)
    {
        for (const char* op : c.ops)
        {
            const size_t mark = server->log().size();
            const WbemcliAnswer r = cli->as("monitor", op, c.object, c.options);
            EXPECT_TRUE(r.ok()) << c.what << " " << op << "\n" << r.result.output;
            EXPECT_TRUE(r.objects().empty()) << c.what << " " << op << "\n" << r.result.out;
            // No provider was asked, so none turned the request away.
            EXPECT_EQ(logSince(*server, mark).find("invalid params"), std::string::npos)
                << c.what << " " << op;
        }
    }
}

TEST_F(AssociationTest, RequestsThatFailWithAnError)
{
    const ErrorCase cases[] = {
        {"unknown association class",
         "ain",
         kPort012,
         {"-ac", "QEL_NoSuchAssociation"},
         "CIM_ERR_INVALID_PARAMETER: QEL_NoSuchAssociation"},
        // Keys the providers cannot read.
        {"port DeviceID that is not hexadecimal",
         "ain",
         portPath("XYZ", "DEMO01-N0"),
         {},
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortElementStatisticalData DeviceID key not found."},
        {"InstanceID that names no port",
         "ai",
         statsPath("ZEPHRAN:nothex-Stats"),
         {},
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortElementStatisticalData InstanceID key not found."},
        {"transceiver without Tag",
         "rin",
         "QEL_SFP.CreationClassName=\"QEL_SFP\"",
         {},
         "CIM_ERR_INVALID_PARAMETER: QEL_FCPortSFPProvider Tag key not found."},
    };
    for (const ErrorCase& c : cases)
    {
        const WbemcliAnswer r = cli->as("monitor", c.op, c.object, c.options);
        EXPECT_EQ(r.error(), c.error) << c.what << "\n" << r.result.output;
        EXPECT_TRUE(r.objects().empty()) << c.what << "\n" << r.result.out;
    }
}

}  // namespace
