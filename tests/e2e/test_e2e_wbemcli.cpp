// The server as users meet it: qel-cimserver on the demo array, driven by wbemcli
// (and, where wbemcli cannot express a request, by CIMClient over the wire).
#include "ServerProcess.h"
#include "Wbemcli.h"

#include <Server/clienttransport/InstallTransports.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/ClientTransport.h>

#include <gtest/gtest.h>

#include <map>

using namespace e2e;

namespace
{

const char* kPortA = "QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"21110002AC00A001\","
                     "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N1\"";
const char* kPortB = "QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"20110002AC00A001\","
                     "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\"";

class WbemcliTest : public SharedServerSuite<WbemcliTest>
{
protected:
    static void SetUpTestSuite()
    {
        startServer({{"operator", "edit"}, {"monitor", "browse"}, {"admin", "super"}});
        qel::client::installTcpTransport();
    }
    static void TearDownTestSuite()
    {
        Pegasus::setTcpTransportFactory(Pegasus::TcpTransportFactory());
        SharedServerSuite::TearDownTestSuite();
    }

    static std::string as(const std::string& user)
    {
        return server->url(user, server->password(user));
    }
    static CommandResult wbemcli(std::vector<std::string> args)
    {
        args.insert(args.begin(), QEL_E2E_WBEMCLI);
        return run(args);
    }
    static std::string valueOf(const std::string& output, const std::string& property)
    {
        const std::string key = "-" + property + "=";
        const size_t at = output.find(key);
        if (at == std::string::npos)
            return "<absent>";
        return output.substr(at + key.size(), output.find('\n', at) - at - key.size());
    }

    // A CIM client over the same HTTP front-end, for what wbemcli cannot send.
    static Pegasus::CIMInstance readInstance(const std::string& path)
    {
        Pegasus::CIMClient client;
        client.connect("127.0.0.1", server->port(), "monitor", server->password("monitor").c_str());
        Pegasus::CIMInstance instance = client.getInstance(
            "root/qel", Pegasus::CIMObjectPath(path.c_str()), false, false, false);
        client.disconnect();
        return instance;
    }
    // The CIM error the server answered ("" when it accepted the change).
    static std::string modify(
        const std::string& user, const Pegasus::CIMInstance& instance,
        const Pegasus::CIMPropertyList& propertyList = Pegasus::CIMPropertyList())
    {
        Pegasus::CIMClient client;
        client.connect("127.0.0.1", server->port(), user.c_str(), server->password(user).c_str());
        std::string error;
        try
        {
            client.modifyInstance("root/qel", instance, false, propertyList);
        }
        catch (const Pegasus::CIMException& e)
        {
            error = static_cast<const char*>(e.getMessage().getCString());
        }
        client.disconnect();
        return error;
    }
    static void
    setValue(Pegasus::CIMInstance& instance, const char* name, const Pegasus::CIMValue& value)
    {
        using Pegasus::Uint32;
        const Uint32 at = instance.findProperty(Pegasus::CIMName(name));
        ASSERT_NE(at, PEG_NOT_FOUND) << name;
        instance.getProperty(at).setValue(value);
    }
    static Pegasus::CIMPropertyList names(const std::vector<const char*>& list)
    {
        Pegasus::Array<Pegasus::CIMName> result;
        for (const char* n : list)
            result.append(Pegasus::CIMName(n));
        return Pegasus::CIMPropertyList(result);
    }
};

TEST_F(WbemcliTest, ReadsOfPortsAndLoopPorts)
{
    // Every FC port record in list order but the one whose WWN is zero, which is no port.
    const char* const ports[][2] = {
        {"20110002AC00A001", "DEMO01-N0"}, {"20120002AC00A001", "DEMO01-N0"},
        {"21110002AC00A001", "DEMO01-N1"}, {"21120002AC00A001", "DEMO01-N1"},
        {"21210002AC00A001", "DEMO01-N1"}, {"20220002AC00A001", "DEMO01-N0"},
    };
    std::vector<std::string> portNames, loopNames;
    for (const auto& p : ports)
    {
        portNames.push_back(portPath(p[0], p[1]));
        loopNames.push_back(portPath(p[0], std::string(p[1]) + "-LOOP", "QEL_FCALPort"));
    }
    EXPECT_EQ(cli->as("monitor", "ein", "QEL_FCPort").paths(), portNames);
    EXPECT_EQ(cli->as("monitor", "ein", "QEL_FCALPort").paths(), loopNames);
    EXPECT_EQ(cli->as("monitor", "ei", "QEL_FCALPort").paths(), loopNames);

    const WbemcliAnswer all = cli->as("monitor", "ei", "QEL_FCPort");
    ASSERT_EQ(all.paths(), portNames) << all.result.output;
    std::map<std::string, PrintedObject> byPath;
    for (const PrintedObject& o : all.objects())
        byPath[o.path] = o;
    // Values no other test changes.
    const std::string p011 = portPath("20110002AC00A001", "DEMO01-N0");
    const std::string p012 = portPath("20120002AC00A001", "DEMO01-N0");
    const std::string p112 = portPath("21120002AC00A001", "DEMO01-N1");
    const struct
    {
        const std::string& port;
        const char* property;
        const char* value;
    } values[] = {
        {p011, "ElementName", "\"0:1:1\""}, {p011, "EnabledState", "2"},
        {p011, "OperationalStatus", "2"},   {p011, "Speed", "8589934592"},
        {p011, "PortNumber", "1"},          {p011, "PermanentAddress", "\"20110002AC00A001\""},
        {p012, "ElementName", "\"0:1:2\""}, {p012, "EnabledState", "6"},
        {p012, "OperationalStatus", "10"},  {p012, "Speed", "0"},
        {p012, "MaxSpeed", "17179869184"},  {p112, "OperationalStatus", "6"},
        {p112, "FullDuplex", "FALSE"},      {p112, "MaxSpeed", "4294967296"},
    };
    for (const auto& v : values)
        EXPECT_EQ(byPath[v.port][v.property], v.value) << v.port << " " << v.property;

    // One port by name: the same instance as in the enumeration.
    const std::vector<PrintedObject> one = cli->as("monitor", "gi", kPortB).objects();
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].properties, byPath[p011].properties);
    // A loop port by name comes back with its own class and system.
    const std::vector<PrintedObject> loop = cli->as("monitor", "gi", loopNames[3]).objects();
    ASSERT_EQ(loop.size(), 1u);
    EXPECT_EQ(loop[0]["CreationClassName"], "\"QEL_FCALPort\"");
    EXPECT_EQ(loop[0]["SystemName"], "\"DEMO01-N1-LOOP\"");
    EXPECT_EQ(loop[0]["ElementName"], "\"1:1:2\"");
}

TEST_F(WbemcliTest, PortMethodsChangeTheArrayAndNeedAnEditUser)
{
    const auto state = [&]
    { return cli->as("monitor", "gi", kPortA).objects().at(0)["EnabledState"]; };
    ASSERT_EQ(state(), "2");

    const WbemcliAnswer refused = cli->call("monitor", kPortA, "SetOffline");
    EXPECT_EQ(refused.error(), "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege");
    EXPECT_EQ(state(), "2");
    EXPECT_EQ(server->auditLog().find("\"user\":\"monitor\""), std::string::npos);

    // Each action in turn, from the state the one before left; the array audits each call.
    const struct
    {
        const char* method;
        const char* enabledState;
        const char* libraryCall;
    } steps[] = {
        {"SetOffline", "6", "api_setPortOffline"}, {"ReloadFirmware", "2", "api_reloadPortFW"},
        {"SetOffline", "6", "api_setPortOffline"}, {"InitializeLoop", "2", "api_initFCPortLoop"},
        {"SetOffline", "6", "api_setPortOffline"}, {"SyncDatabase", "6", "api_syncFCPortDB"},
        {"Reset", "2", "api_resetPort"},
    };
    for (const auto& step : steps)
    {
        const size_t audited = server->auditLog().size();
        const WbemcliAnswer r = cli->call("operator", kPortA, step.method);
        EXPECT_NE(r.result.out.find(std::string(step.method) + ": 0\n"), std::string::npos)
            << step.method << "\n"
            << r.result.output;
        EXPECT_EQ(state(), step.enabledState) << step.method;
        const std::string entry = server->auditLog().substr(audited);
        EXPECT_NE(
            entry.find(
                std::string(
                    "\"user\":\"operator\",\"address\":\"127.0.0.1\",\"method\":\"QEL_FCPort:") +
                step.method + "\",\"op\":\"\",\"param\":\"\",\"call\":\"" + step.libraryCall +
                "\",\"ports\":[\"1:1:1\"],\"result\":0"),
            std::string::npos)
            << step.method << "\n"
            << entry;
    }
}

// wbemcli mi first reads the instance (GetInstance) and then sends it back whole, with the
// given values in place and no property list; it has no option to send one. The port
// provider takes only its seven settings, so such a request is refused by the name of the
// first other property, before anything is changed.
TEST_F(WbemcliTest, ModifyInstanceFromWbemcliIsRefusedWhole)
{
    const auto read = [&] { return wbemcli({"gi", "-nl", as("monitor") + ":" + kPortB}).out; };
    const std::string before = read();
    ASSERT_EQ(valueOf(before, "VCN"), "2") << before;

    const CommandResult full = wbemcli({"mi", as("operator") + ":" + kPortB, "VCN=1"});
    EXPECT_NE(
        full.err.find("CIM_ERR_INVALID_PARAMETER: Invalid parameter: Caption"), std::string::npos)
        << full.output;
    const CommandResult browse = wbemcli({"mi", as("monitor") + ":" + kPortB, "VCN=1"});
    EXPECT_NE(
        browse.err.find("CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"), std::string::npos)
        << browse.output;
    EXPECT_EQ(read(), before);
}

// The settings as a CIM client sends them: the seven properties alone, or any instance
// with a property list.
TEST_F(WbemcliTest, ModifyInstanceOfTheSevenSettings)
{
    const std::string port = portPath("21210002AC00A001", "DEMO01-N1");
    const std::string before = wbemcli({"gi", "-nl", as("monitor") + ":" + port}).out;
    ASSERT_EQ(valueOf(before, "Mode"), "3") << before;

    Pegasus::CIMInstance change(Pegasus::CIMName("QEL_FCPort"));
    change.addProperty(Pegasus::CIMProperty("Mode", Pegasus::CIMValue(Pegasus::Uint16(2))));
    change.addProperty(Pegasus::CIMProperty("ModeChangeAllowed", Pegasus::CIMValue(true)));
    change.addProperty(
        Pegasus::CIMProperty("ConnectionType", Pegasus::CIMValue(Pegasus::Uint16(4))));
    change.addProperty(
        Pegasus::CIMProperty("Class2Support", Pegasus::CIMValue(Pegasus::Uint16(3))));
    change.addProperty(Pegasus::CIMProperty("VCN", Pegasus::CIMValue(Pegasus::Uint16(2))));
    change.addProperty(
        Pegasus::CIMProperty("InterruptCoalescing", Pegasus::CIMValue(Pegasus::Uint16(2))));
    change.addProperty(
        Pegasus::CIMProperty("RequestedSpeed", Pegasus::CIMValue(Pegasus::Uint64(1073741824ull))));
    change.setPath(Pegasus::CIMObjectPath(port.c_str()));

    EXPECT_EQ(modify("monitor", change), "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege");
    EXPECT_EQ(wbemcli({"gi", "-nl", as("monitor") + ":" + port}).out, before);

    EXPECT_EQ(modify("operator", change), "");
    const std::string after = wbemcli({"gi", "-nl", as("monitor") + ":" + port}).out;
    const std::pair<const char*, const char*> expected[] = {
        {"Mode", "2"}, {"ConnectionType", "4"},      {"Class2Support", "3"},
        {"VCN", "2"},  {"InterruptCoalescing", "2"}, {"RequestedSpeed", "1073741824"},
    };
    for (const auto& e : expected)
        EXPECT_EQ(valueOf(after, e.first), e.second) << e.first << "\n" << after;
}

TEST_F(WbemcliTest, ModifyInstanceHonoursThePropertyList)
{
    // Port 0:2:2 refuses mode changes that are not forced.
    const std::string port = portPath("20220002AC00A001", "DEMO01-N0");
    const auto read = [&] { return wbemcli({"gi", "-nl", as("monitor") + ":" + port}).out; };
    ASSERT_EQ(valueOf(read(), "ModeChangeAllowed"), "FALSE");
    ASSERT_EQ(valueOf(read(), "Mode"), "1");
    ASSERT_EQ(valueOf(read(), "VCN"), "2");

    // The whole instance as read, two values changed, only VCN listed: Mode is not looked at.
    Pegasus::CIMInstance whole = readInstance(port);
    setValue(whole, "VCN", Pegasus::CIMValue(Pegasus::Uint16(1)));
    setValue(whole, "Mode", Pegasus::CIMValue(Pegasus::Uint16(2)));
    EXPECT_EQ(modify("operator", whole, names({"VCN"})), "");
    EXPECT_EQ(valueOf(read(), "VCN"), "1");
    EXPECT_EQ(valueOf(read(), "Mode"), "1");

    // Listing anything else refuses the request before any change, whatever comes first.
    setValue(whole, "VCN", Pegasus::CIMValue(Pegasus::Uint16(2)));
    EXPECT_EQ(
        modify("operator", whole, names({"VCN", "ElementName"})),
        "CIM_ERR_INVALID_PARAMETER: Invalid parameter: ElementName");
    EXPECT_EQ(valueOf(read(), "VCN"), "1");

    // Listed, the mode change reaches the array, which refuses it unless forced.
    EXPECT_EQ(
        modify("operator", whole, names({"Mode"})), "CIM_ERR_FAILED: Failed to set port mode");
    EXPECT_EQ(valueOf(read(), "Mode"), "1");
    setValue(whole, "ModeChangeAllowed", Pegasus::CIMValue(true));
    EXPECT_EQ(modify("operator", whole, names({"Mode", "ModeChangeAllowed"})), "");
    EXPECT_EQ(valueOf(read(), "Mode"), "2");
}

TEST_F(WbemcliTest, ModifyInstanceKeepsChangesMadeBeforeAFailure)
{
    const std::string port = portPath("20120002AC00A001", "DEMO01-N0");
    const auto read = [&] { return wbemcli({"gi", "-nl", as("monitor") + ":" + port}).out; };
    ASSERT_EQ(valueOf(read(), "ConnectionType"), "3");
    ASSERT_EQ(valueOf(read(), "VCN"), "1");

    // The connection type is set before the VCN, which the array refuses (it takes 1 or 2).
    Pegasus::CIMInstance change(Pegasus::CIMName("QEL_FCPort"));
    change.addProperty(Pegasus::CIMProperty("VCN", Pegasus::CIMValue(Pegasus::Uint16(7))));
    change.addProperty(
        Pegasus::CIMProperty("ConnectionType", Pegasus::CIMValue(Pegasus::Uint16(1))));
    change.setPath(Pegasus::CIMObjectPath(port.c_str()));
    EXPECT_EQ(modify("operator", change), "CIM_ERR_FAILED: Failed to set port VCN");
    EXPECT_EQ(valueOf(read(), "ConnectionType"), "1");
    EXPECT_EQ(valueOf(read(), "VCN"), "1");
}

struct ErrorCase
{
    const char* what;
    std::vector<std::string> args;
    const char* expected;
};

TEST_F(WbemcliTest, ErrorsReachTheClientWithTheirCodes)
{
    const std::string base = "127.0.0.1:" + std::to_string(server->port());
    const std::string monitor = as("monitor");
    const ErrorCase cases[] = {
        {"no such port",
         {"gi", monitor +
                    ":QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"20110002AC00A0FF\","
                    "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\""},
         "CIM_ERR_NOT_FOUND: QEL_FCPort CIM Object not found.20110002AC00A0FF"},
        {"malformed key",
         {"gi", monitor + ":QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"XYZ\","
                          "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\""},
         "CIM_ERR_NOT_FOUND: QEL_FCPort CIM Object not found.XYZ"},
        {"unknown method",
         {"cm", as("operator") + ":" + kPortA, "Explode"},
         "CIM_ERR_METHOD_NOT_FOUND"},
        {"unknown class", {"ein", monitor + ":QEL_NoSuchClass"}, "CIM_ERR_INVALID_CLASS"},
        {"unknown namespace",
         {"ein", "http://monitor:" + server->password("monitor") + "@" + base +
                     "/root/nowhere:QEL_FCPort"},
         "CIM_ERR_INVALID_NAMESPACE"},
        {"no credentials",
         {"ein", "http://" + base + "/root/qel:QEL_FCPort"},
         "Username/password required"},
        {"wrong password",
         {"ein", "http://monitor:wrong@" + base + "/root/qel:QEL_FCPort"},
         "Invalid username/password"},
        {"unknown user",
         {"ein", "http://nobody:x@" + base + "/root/qel:QEL_FCPort"},
         "Invalid username/password"},
    };
    for (const ErrorCase& c : cases)
    {
        const CommandResult r = wbemcli(c.args);
        EXPECT_NE(r.output.find(c.expected), std::string::npos) << c.what << "\n" << r.output;
    }
    EXPECT_NE(server->log().find("authentication failed"), std::string::npos);
}

// A server of its own, so that stopping it leaves the suite above running in any order.
TEST(ServerStopTest, StopsCleanlyOnSigterm)
{
    ServerProcess server(std::map<std::string, std::string>{{"monitor", "browse"}});
    // A request first, so that the provider module is loaded and has to be terminated.
    ASSERT_EQ(Wbemcli(server).as("monitor", "ein", "QEL_FCPort").paths().size(), 6u)
        << server.log();
    EXPECT_EQ(server.stop(), 0) << server.log();
    const std::string log = server.log();
    EXPECT_NE(log.find("terminated"), std::string::npos) << log;
    EXPECT_NE(log.find("qel-cimserver: stopped."), std::string::npos) << log;
}

}  // namespace
