// qel-cimserver as a service manager runs it: a wrong configuration or a failed start ends
// in one line naming the file or setting, readiness, reload and stop are told to systemd,
// a reload keeps connections open, and every request leaves one access line.
#include "KeptAliveConnection.h"
#include "ServerProcess.h"
#include "ServiceProcess.h"
#include "WireTestSupport.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <netinet/in.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

using e2e::CommandResult;
using service::ServiceProcess;

namespace
{

class ServiceProcessTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-svc-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        _dir = pattern;
        _passwd = _dir + "/passwd";
        _monitor = addUser("monitor");
    }
    void TearDown() override { e2e::run({"/bin/rm", "-rf", _dir}); }

    std::string write(const std::string& name, const std::string& text) const
    {
        const std::string path = _dir + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    std::string addUser(const std::string& user) const
    {
        const CommandResult r =
            e2e::run({QEL_E2E_PASSWD, "-f", _passwd, "add", user, "--generate"});
        EXPECT_EQ(r.exitCode, 0) << r.output;
        return r.out.substr(0, r.out.find('\n'));
    }
    // The server with a private socket, the test's users and the simulator in memory.
    CommandResult server(std::vector<std::string> args) const
    {
        std::vector<std::string> argv = {
            "/usr/bin/env",
            "QELSIM_STATE=none",
            "QELSIM_ARRAY=" QEL_E2E_ARRAY,
            QEL_E2E_SERVER,
            "--socket",
            _dir + "/cim.socket",
            "--password-file",
            _passwd,
            "--log-target",
            "stderr"};
        argv.insert(argv.end(), args.begin(), args.end());
        return e2e::run(argv);
    }

    std::string _dir, _passwd, _monitor;
};

std::string request(const std::string& user, const std::string& password)
{
    return wiretest::cimPost(wiretest::enumerateNamesBody(), wiretest::basicAuth(user, password));
}

// A listening socket on a free loopback port, held for as long as the object lives.
class BusyPort
{
public:
    BusyPort()
    {
        _fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof addr;
        ::bind(_fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
        ::listen(_fd, 1);
        ::getsockname(_fd, reinterpret_cast<sockaddr*>(&addr), &size);
        _port = ntohs(addr.sin_port);
    }
    ~BusyPort() { ::close(_fd); }
    unsigned short port() const { return _port; }

private:
    int _fd;
    unsigned short _port = 0;
};

TEST_F(ServiceProcessTest, AWrongConfigurationStopsTheStartWithOneLine)
{
    const std::string unknown = write("unknown.conf", "# the port\nport = 0\nprot = 1\n");
    const std::string bad = write("bad.conf", "port = 0\nworkers = lots\n");
    struct Case
    {
        const char* what;
        std::vector<std::string> args;
        std::string line;
    };
    const std::vector<Case> cases = {
        {"unknown key", {"--config", unknown}, unknown + ":3: unknown key \"prot\""},
        {"bad value",
         {"--config", bad},
         bad + ":2: workers: expected a number from 1 to 1024, got \"lots\""},
        {"named file missing",
         {"--config", _dir + "/none.conf"},
         _dir + "/none.conf: cannot read: No such file or directory"},
        {"a directory named", {"--config", _dir}, _dir + ": cannot read: it is a directory"},
        {"bad command line",
         {"--port", "0", "--workers", "0"},
         "--workers: expected a number from 1 to 1024, got \"0\""},
    };
    for (const Case& c : cases)
    {
        const CommandResult r = server(c.args);
        EXPECT_EQ(r.exitCode, 2) << c.what << "\n" << r.output;
        EXPECT_EQ(r.err, "qel-cimserver: " + c.line + "\n") << c.what;
        EXPECT_EQ(r.out, "") << c.what;
    }
}

TEST_F(ServiceProcessTest, AFailedStartNamesTheFileOrSetting)
{
    BusyPort busy;
    ::mkdir((_dir + "/empty").c_str(), 0700);
    struct Case
    {
        const char* what;
        std::vector<std::string> args;
        std::string line;
        int exitCode = 1;  // 2: a listener that cannot be opened
    };
    const std::vector<Case> cases = {
        {"password file missing",
         {"--port", "0", "--password-file", _dir + "/nopasswd"},
         "cannot start: cannot read password file " + _dir +
             "/nopasswd: No such file or directory"},
        {"port in use",
         {"--port", std::to_string(busy.port())},
         "cannot start: cannot listen for HTTP on 127.0.0.1:" + std::to_string(busy.port()) +
             ": Address already in use",
         2},
        {"providers folder without the module",
         {"--port", "0", "--provider-dir", _dir + "/empty"},
         "cannot start: provider-dir: libQEL_FCPortProvider.so (provider module "
         "QEL_FCPortProviderModule) is in none of: " +
             _dir + "/empty"},
    };
    for (const Case& c : cases)
    {
        const CommandResult r = server(c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.what << "\n" << r.output;
        // Besides the log's own lines ("qel-cimserver info: ..."), the one line that says why.
        std::vector<std::string> said;
        std::istringstream err(r.err);
        std::string line;
        while (std::getline(err, line))
            if (line.compare(0, 15, "qel-cimserver: ") == 0)
                said.push_back(line);
        EXPECT_EQ(said, std::vector<std::string>{"qel-cimserver: " + c.line}) << c.what;
        EXPECT_EQ(r.out, "") << c.what;
    }
}

// key -> "value # origin" lines of --print-config.
std::map<std::string, std::string> reportLines(const std::string& report)
{
    std::map<std::string, std::string> lines;
    std::istringstream in(report);
    std::string line;
    while (std::getline(in, line))
    {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t equals = line.find(" =");
        const size_t hash = line.rfind("# ");
        std::string value = line.substr(equals + 2, hash - equals - 2);
        value.erase(value.find_last_not_of(' ') + 1);
        value.erase(0, value.find_first_not_of(' '));
        lines[line.substr(0, equals)] += value + " # " + line.substr(hash + 2) + "\n";
    }
    return lines;
}

TEST_F(ServiceProcessTest, PrintConfigSaysWhereEverySettingCameFrom)
{
    const std::string conf = write("a.conf", "bind = ::1\nworkers = 3\n");
    const CommandResult r = e2e::run(
        {"/usr/bin/env", "QEL_PASSWORD_FILE=/srv/passwd", "QELSIM_ARRAY=", QEL_E2E_SERVER,
         "--config", conf, "--workers", "5", "--print-config"});
    ASSERT_EQ(r.exitCode, 0) << r.output;
    std::map<std::string, std::string> lines = reportLines(r.out);
    EXPECT_EQ(lines["bind"], "::1 # " + conf + ":1\n");
    EXPECT_EQ(lines["workers"], "5 # command line\n");
    EXPECT_EQ(lines["password-file"], "/srv/passwd # default from $QEL_PASSWORD_FILE\n");
    // Run from the build tree: the source tree's demo array and schema.
    EXPECT_EQ(lines["array"].substr(0, lines["array"].find(' ')), QEL_E2E_ARRAY);
    EXPECT_NE(lines["schema"].find("/schema/root.mof # default\n"), std::string::npos)
        << lines["schema"];
}

TEST_F(ServiceProcessTest, TellsSystemdAndReloadsWithoutDroppingConnections)
{
    ServiceProcess process(
        _dir, QEL_E2E_SERVER,
        {"--port", "0", "--socket", _dir + "/cim.socket", "--password-file", _passwd,
         "--log-target", "stderr"},
        {"QELSIM_STATE=none", "QELSIM_ARRAY=" QEL_E2E_ARRAY});
    const std::string ready = process.nextNotification();
    const std::string prefix = "READY=1\nSTATUS=listening on http://127.0.0.1:";
    ASSERT_EQ(ready.substr(0, prefix.size()), prefix) << process.log();
    const unsigned short port = static_cast<unsigned short>(std::stoi(ready.substr(prefix.size())));

    KeptAliveConnection client(port);
    ASSERT_EQ(client.exchange(request("monitor", _monitor)), "HTTP/1.1 200 OK");
    const std::string operatorPassword = addUser("operator");

    process.signal(SIGHUP);
    const std::string reloading = "RELOADING=1\nMONOTONIC_USEC=";
    EXPECT_EQ(process.nextNotification().substr(0, reloading.size()), reloading);
    EXPECT_EQ(process.nextNotification(), ready);
    EXPECT_TRUE(process.waitForLog("reload: users from " + _passwd)) << process.log();
    // The same connection, and the user added before the reload.
    EXPECT_EQ(client.exchange(request("operator", operatorPassword)), "HTTP/1.1 200 OK");
    {
        KeptAliveConnection stranger(port);
        EXPECT_EQ(stranger.exchange(request("monitor", "wrong")), "HTTP/1.1 401 Unauthorized");
    }

    process.signal(SIGTERM);
    EXPECT_EQ(process.nextNotification(), "STOPPING=1");
    EXPECT_EQ(process.wait(), 0) << process.log();

    // One access line per request, in the order they were answered.
    std::vector<std::string> access;
    std::istringstream log(process.log());
    std::string line;
    while (std::getline(log, line))
        if (line.find(" access time=") != std::string::npos)
            access.push_back(line.substr(line.find(" user=")));
    const std::string served = " client=127.0.0.1 op=EnumerateInstanceNames class=QEL_FCPort "
                               "method=- http=200 cim=CIM_ERR_SUCCESS duration=";
    ASSERT_EQ(access.size(), 3u) << process.log();
    EXPECT_EQ(access[0].substr(0, 13 + served.size()), " user=monitor" + served);
    EXPECT_EQ(access[1].substr(0, 14 + served.size()), " user=operator" + served);
    EXPECT_EQ(
        access[2].substr(0, access[2].find("duration=")),
        " user=- client=127.0.0.1 op=- class=- method=- http=401 cim=- ");
}

}  // namespace
