// The server as users meet it: qel-cimserver on the demo array, driven by wbemcli
// (and, where wbemcli cannot express a request, by CIMClient over the wire).
#include "ServerProcess.h"

#include <Server/clienttransport/InstallTransports.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/ClientTransport.h>

#include <algorithm>
#include <gtest/gtest.h>

using namespace e2e;

namespace {

const char* kPortA =
    "QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"21110002AC00A001\","
    "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N1\"";
const char* kPortB =
    "QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"20110002AC00A001\","
    "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\"";

class WbemcliTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    server = new ServerProcess({{"operator", "edit"}, {"monitor", "browse"}, {"admin", "super"}});
  }
  static void TearDownTestSuite() {
    delete server;
    server = nullptr;
  }

  static std::string as(const std::string& user) { return server->url(user, server->password(user)); }
  static CommandResult wbemcli(std::vector<std::string> args) {
    args.insert(args.begin(), QEL_E2E_WBEMCLI);
    return run(args);
  }
  static std::string valueOf(const std::string& output, const std::string& property) {
    const std::string key = "-" + property + "=";
    const size_t at = output.find(key);
    if (at == std::string::npos) return "<absent>";
    return output.substr(at + key.size(), output.find('\n', at) - at - key.size());
  }

  static ServerProcess* server;
};

ServerProcess* WbemcliTest::server = nullptr;

struct ReadCase {
  const char* what;
  const char* op;
  std::string object;  // after "<url>:"
  std::vector<std::string> mustContain;
  int lines;  // expected output lines, -1 = not checked
};

TEST_F(WbemcliTest, ReadsOfPortsAndLoopPorts) {
  const ReadCase cases[] = {
      {"port names", "ein", "QEL_FCPort", {"DeviceID=\"20110002AC00A001\"", "SystemName=\"DEMO01-N1\""}, 6},
      {"loop port names", "ein", "QEL_FCALPort", {"CreationClassName=\"QEL_FCALPort\"", "-LOOP\""}, -1},
      {"ports", "ei", "QEL_FCPort", {"PortNumber=", "Speed=8589934592", "DeviceID=\"21110002AC00A001\""}, -1},
      {"loop ports", "ei", "QEL_FCALPort", {"QEL_FCALPort"}, -1},
      {"one port", "gi", kPortB, {"ElementName=\"0:1:1\"", "DeviceID=\"20110002AC00A001\""}, 1},
  };
  for (const ReadCase& c : cases) {
    const CommandResult r = wbemcli({c.op, as("monitor") + ":" + c.object});
    EXPECT_EQ(r.exitCode, 0) << c.what << "\n" << r.output;
    for (const std::string& s : c.mustContain) EXPECT_NE(r.output.find(s), std::string::npos) << c.what << ": " << s;
    if (c.lines >= 0) {
      EXPECT_EQ(std::count(r.output.begin(), r.output.end(), '\n'), c.lines) << c.what << r.output;
    }
  }
  // A loop port by name comes back with its own class.
  const CommandResult names = wbemcli({"ein", as("monitor") + ":QEL_FCALPort"});
  const std::string first = names.output.substr(0, names.output.find('\n'));
  const CommandResult one = wbemcli({"gi", "http://monitor:" + server->password("monitor") + "@" + first});
  EXPECT_NE(one.output.find("CreationClassName=\"QEL_FCALPort\""), std::string::npos) << one.output;
}

TEST_F(WbemcliTest, PortMethodsChangeTheArrayAndNeedAnEditUser) {
  const std::string port = as("operator") + ":" + kPortA;
  const auto state = [&] { return wbemcli({"gi", "-nl", as("monitor") + ":" + kPortA}).output; };
  ASSERT_EQ(valueOf(state(), "EnabledState"), "2");

  const CommandResult refused = wbemcli({"cm", as("monitor") + ":" + kPortA, "SetOffline"});
  EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED"), std::string::npos) << refused.output;
  EXPECT_EQ(valueOf(state(), "EnabledState"), "2");

  EXPECT_NE(wbemcli({"cm", port, "SetOffline"}).output.find("SetOffline: 0"), std::string::npos);
  const std::string offline = state();
  EXPECT_EQ(valueOf(offline, "EnabledState"), "6");
  EXPECT_EQ(valueOf(offline, "OperationalStatus"), "10");

  for (const char* method : {"ReloadFirmware", "SyncDatabase", "InitializeLoop", "Reset"}) {
    const CommandResult r = wbemcli({"cm", port, method});
    EXPECT_NE(r.output.find(std::string(method) + ": 0"), std::string::npos) << method << "\n" << r.output;
  }
  EXPECT_EQ(valueOf(state(), "EnabledState"), "2");  // Reset brings the port back
}

TEST_F(WbemcliTest, ModifyInstanceOfTheSevenSettings) {
  // wbemcli sends the whole instance without a property list: refused by name, as the
  // provider defines it; a browse user is refused before that.
  const CommandResult full = wbemcli({"mi", as("operator") + ":" + kPortB, "VCN=1"});
  EXPECT_NE(full.output.find("CIM_ERR_INVALID_PARAMETER: Invalid parameter: Caption"), std::string::npos) << full.output;
  const CommandResult browse = wbemcli({"mi", as("monitor") + ":" + kPortB, "VCN=1"});
  EXPECT_NE(browse.output.find("CIM_ERR_ACCESS_DENIED"), std::string::npos) << browse.output;

  // The seven settings alone, from a CIM client over the same HTTP front-end.
  qel::client::installTcpTransport();
  Pegasus::CIMClient client;
  client.connect("127.0.0.1", server->port(), "operator", server->password("operator").c_str());
  Pegasus::CIMObjectPath path(kPortB);
  Pegasus::CIMInstance change(Pegasus::CIMName("QEL_FCPort"));
  change.addProperty(Pegasus::CIMProperty("Mode", Pegasus::CIMValue(Pegasus::Uint16(1))));
  change.addProperty(Pegasus::CIMProperty("ModeChangeAllowed", Pegasus::CIMValue(true)));
  change.addProperty(Pegasus::CIMProperty("ConnectionType", Pegasus::CIMValue(Pegasus::Uint16(2))));
  change.addProperty(Pegasus::CIMProperty("Class2Support", Pegasus::CIMValue(Pegasus::Uint16(1))));
  change.addProperty(Pegasus::CIMProperty("VCN", Pegasus::CIMValue(Pegasus::Uint16(1))));
  change.addProperty(Pegasus::CIMProperty("InterruptCoalescing", Pegasus::CIMValue(Pegasus::Uint16(1))));
  change.addProperty(Pegasus::CIMProperty("RequestedSpeed", Pegasus::CIMValue(Pegasus::Uint64(4294967296ull))));
  change.setPath(path);
  client.modifyInstance("root/qel", change);
  const std::string after = wbemcli({"gi", "-nl", as("monitor") + ":" + kPortB}).output;
  EXPECT_EQ(valueOf(after, "VCN"), "1") << after;
  client.disconnect();
  Pegasus::setTcpTransportFactory(Pegasus::TcpTransportFactory());
}

struct ErrorCase {
  const char* what;
  std::vector<std::string> args;
  const char* expected;
};

TEST_F(WbemcliTest, ErrorsReachTheClientWithTheirCodes) {
  const std::string base = "127.0.0.1:" + std::to_string(server->port());
  const std::string monitor = as("monitor");
  const ErrorCase cases[] = {
      {"no such port",
       {"gi", monitor + ":QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"20110002AC00A0FF\","
                        "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\""},
       "CIM_ERR_NOT_FOUND"},
      {"malformed key",
       {"gi", monitor + ":QEL_FCPort.CreationClassName=\"QEL_FCPort\",DeviceID=\"XYZ\","
                        "SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"DEMO01-N0\""},
       "CIM_ERR_"},
      {"unknown method", {"cm", as("operator") + ":" + kPortA, "Explode"}, "CIM_ERR_METHOD_NOT_FOUND"},
      {"unknown class", {"ein", monitor + ":QEL_NoSuchClass"}, "CIM_ERR_INVALID_CLASS"},
      {"unknown namespace", {"ein", "http://monitor:" + server->password("monitor") + "@" + base + "/root/nowhere:QEL_FCPort"},
       "CIM_ERR_INVALID_NAMESPACE"},
      {"no credentials", {"ein", "http://" + base + "/root/qel:QEL_FCPort"}, "Username/password required"},
      {"wrong password", {"ein", "http://monitor:wrong@" + base + "/root/qel:QEL_FCPort"}, "Invalid username/password"},
      {"unknown user", {"ein", "http://nobody:x@" + base + "/root/qel:QEL_FCPort"}, "Invalid username/password"},
  };
  for (const ErrorCase& c : cases) {
    const CommandResult r = wbemcli(c.args);
    EXPECT_NE(r.output.find(c.expected), std::string::npos) << c.what << "\n" << r.output;
  }
  EXPECT_NE(server->log().find("authentication failed"), std::string::npos);
}

TEST_F(WbemcliTest, ZStopsCleanlyOnSigterm) {
  EXPECT_EQ(server->stop(), 0) << server->log();
  const std::string log = server->log();
  EXPECT_NE(log.find("terminated"), std::string::npos) << log;
  EXPECT_NE(log.find("qel-cimserver: stopped."), std::string::npos) << log;
}

}  // namespace
