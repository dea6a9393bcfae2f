// The server's settings as a whole: built-in defaults, then the configuration file, then
// the command line; --print-config and --help generated from the option table.
#include <Server/main/ConfigFile.h>
#include <Server/main/ServerCommandLine.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

using namespace qel::server;

namespace
{

class SettingsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-settings-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        _dir = pattern;
        _defaults.server.core.mofFiles = {"/usr/share/qel/root.mof"};
        _defaults.server.core.providerDirectories = {"/usr/lib/qel/providers"};
        _defaults.server.passwordFile = "/etc/qel/passwd";
        _defaults.configFile = _dir + "/default.conf";  // absent unless a test writes it
    }
    void TearDown() override { std::system(("rm -rf '" + _dir + "'").c_str()); }

    std::string write(const std::string& name, const std::string& text)
    {
        const std::string path = _dir + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    ServerCommandLine load(const std::vector<std::string>& args) const
    {
        return loadServerSettings(args, _defaults);
    }
    std::string errorLoading(const std::vector<std::string>& args) const
    {
        try
        {
            load(args);
        }
        catch (const CommandLineError& e)
        {
            return e.what();
        }
        return "";
    }
    static std::vector<std::string> shown(const ServerCommandLine& s, const char* option)
    {
        return findServerOption(option)->show(s);
    }

    std::string _dir;
    ServerCommandLine _defaults;
};

TEST_F(SettingsTest, TheCommandLineWinsOverTheFile)
{
    const std::string conf = write(
        "a.conf", "port = 1\nbind = 10.0.0.1\nhttp-on-network = yes\nschema = a.mof\n"
                  "schema = b.mof\nworkers = 3\n");
    const ServerCommandLine s =
        load({"--port", "2", "--config", conf, "--schema", "c.mof", "--log-level", "trace"});
    EXPECT_EQ(shown(s, "port"), std::vector<std::string>{"2"});
    EXPECT_EQ(shown(s, "bind"), std::vector<std::string>{"10.0.0.1"});
    // The first value on the command line replaces the file's list, not adds to it.
    EXPECT_EQ(shown(s, "schema"), std::vector<std::string>{"c.mof"});
    EXPECT_EQ(shown(s, "workers"), std::vector<std::string>{"3"});
    EXPECT_EQ(shown(s, "log-level"), std::vector<std::string>{"trace"});
    EXPECT_EQ(shown(s, "provider-dir"), std::vector<std::string>{"/usr/lib/qel/providers"});
    EXPECT_EQ(s.sources.at("port").at(0).where, "command line");
    EXPECT_EQ(s.sources.at("bind").at(0).where, conf + ":2");
    EXPECT_TRUE(s.httpOnNetwork);
    EXPECT_TRUE(s.configFileFound);
}

TEST_F(SettingsTest, WhichFileIsRead)
{
    write("default.conf", "port = 11\n");
    const std::string named = write("named.conf", "port = 22\n");
    struct Case
    {
        const char* what;
        std::vector<std::string> args;
        std::string port;
        bool found;
    };
    const std::vector<Case> cases = {
        {"the default file", {}, "11", true},
        {"a named file instead", {"--config", named}, "22", true},
        {"the last one named", {"--config", _dir + "/default.conf", "--config", named}, "22", true},
        {"none at all", {"--config", "none"}, "5988", false},
    };
    for (const Case& c : cases)
    {
        const ServerCommandLine s = load(c.args);
        EXPECT_EQ(shown(s, "port"), std::vector<std::string>{c.port}) << c.what;
        EXPECT_EQ(s.configFileFound, c.found) << c.what;
    }
    ::unlink((_dir + "/default.conf").c_str());
    EXPECT_FALSE(load({}).configFileFound) << "a missing default file is fine";
}

TEST_F(SettingsTest, MistakesSayWhereTheyAre)
{
    const std::string bad = write("bad.conf", "port = 1\nworkers = many\n");
    const std::string deaf = write("deaf.conf", "port = none\nsocket = none\n");
    struct Case
    {
        const char* what;
        std::vector<std::string> args;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"bad value in the file",
         {"--config", bad},
         bad + ":2: workers: expected a number from 1 to 1024, got \"many\""},
        {"bad value on the command line",
         {"--workers", "many"},
         "--workers: expected a number from 1 to 1024, got \"many\""},
        {"unknown option", {"--prot", "1"}, "unknown option \"--prot\""},
        {"option without its value", {"--port"}, "--port needs a value"},
        {"named file missing",
         {"--config", _dir + "/nope.conf"},
         _dir + "/nope.conf: cannot read: No such file or directory"},
        {"combination from the file",
         {"--config", deaf},
         "with port none and socket none no client could reach the server"},
        {"combination file and command line",
         {"--config", deaf, "--local-calls", "socket", "--port", "1"},
         "local-calls socket needs the local socket (socket is none)"},
        {"default timeout past the maximum",
         {"--pull-max-timeout", "60", "--pull-timeout", "61"},
         "pull-timeout (61) must not pass pull-max-timeout (60)"},
        {"one user's enumerations past all users'",
         {"--pull-max-contexts", "4", "--pull-max-contexts-per-user", "5"},
         "pull-max-contexts-per-user (5) must not pass pull-max-contexts (4)"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorLoading(c.args), c.error) << c.what;
    // Help is always reachable, whatever the file says.
    EXPECT_TRUE(load({"--config", bad, "--help"}).help);
}

TEST_F(SettingsTest, PrintConfigShowsEachValueWithItsOrigin)
{
    const std::string conf = write("a.conf", "# c\nschema = a.mof\nschema = b.mof\nbind = ::1\n");
    ServerCommandLine defaults = _defaults;
    SettingSource environment;
    environment.kind = SettingSource::Kind::Environment;
    environment.where = "$QEL_PASSWORD_FILE";
    environment.text = "/srv/passwd";
    defaults.server.passwordFile = "/srv/passwd";
    defaults.sources["password-file"] = {environment};
    const ServerCommandLine s =
        loadServerSettings({"--config", conf, "--port", "7", "--demo"}, defaults);
    const std::string report = settingsReport(s);
    std::vector<std::string> expected = {
        "# configuration file: " + conf,
        "port = 7                                # command line",
        "bind = ::1                              # " + conf + ":4",
        "schema = a.mof                          # " + conf + ":2",
        "schema = b.mof                          # " + conf + ":3",
        "provider-dir = /usr/lib/qel/providers   # default",
        "password-file = /srv/passwd             # default from $QEL_PASSWORD_FILE",
        "demo = yes                              # command line",
        "workers = 8                             # default",
    };
    for (const std::string& line : expected)
        EXPECT_NE(report.find(line + "\n"), std::string::npos) << line << "\n" << report;
    EXPECT_EQ(report.find("config ="), std::string::npos) << "command-line-only options";
    EXPECT_EQ(report.find("print-config"), std::string::npos);
}

TEST_F(SettingsTest, PrintConfigOutputIsAConfigurationFile)
{
    // Every option away from its default, then the report read back as a file.
    const std::string conf = write(
        "all.conf",
        "port = none\nbind = ::1\nsocket = /run/x.sock\nschema = a.mof\nschema = b.mof\n"
        "provider-dir = /p1\nprovider-dir = /p2\npassword-file = /pw\narray = /a.json\n"
        "array-state = none\ndemo = yes\nworkers = 3\nmax-body = 2048\nread-timeout = 9\n"
        "response-buffer = 131072\nwrite-timeout = 7\n"
        "local-calls = socket\nlog-level = warning\nlog-target = syslog\naccess-log = no\n"
        "pull-timeout = 20\npull-max-timeout = 120\npull-max-object-count = 900\n"
        "pull-max-contexts = 12\npull-max-contexts-per-user = 3\n"
        "http-on-network = yes\nhttps-port = 5990\nhttps-bind = 127.0.0.1\ntls-cert = /c.pem\n"
        "tls-key = /k.pem\ntls-trust = /t.pem\ncert-map = /m\nheader-timeout = 5\n"
        "max-connections = 100\nmax-pending-per-address = 4\n");
    const ServerCommandLine first = load({"--config", conf});
    const std::string report = settingsReport(first);
    const ServerCommandLine again = load({"--config", write("again.conf", report)});
    for (const ServerOption& o : serverOptions())
    {
        if (o.commandLineOnly)
            continue;
        EXPECT_EQ(o.show(again), o.show(first)) << o.name;
        EXPECT_NE(o.show(first), o.show(_defaults)) << o.name << " kept its default";
    }
}

TEST_F(SettingsTest, HelpDocumentsEveryOptionAndTheFiles)
{
    const std::string help = usageText(_defaults);
    for (const ServerOption& o : serverOptions())
        EXPECT_NE(help.find(std::string("  --") + o.name + " "), std::string::npos) << o.name;
    for (const char* section :
         {"NAME\n", "SYNOPSIS\n", "DESCRIPTION\n", "OPTIONS\n", "CONFIGURATION FILE\n", "SIGNALS\n",
          "ENVIRONMENT\n", "FILES\n", "EXIT STATUS\n", "SEE ALSO\n"})
        EXPECT_NE(help.find(section), std::string::npos) << section;
    EXPECT_NE(help.find(_defaults.configFile), std::string::npos);
    EXPECT_NE(help.find("/usr/lib/qel/providers"), std::string::npos);
    std::istringstream lines(help);
    std::string line;
    while (std::getline(lines, line))
        EXPECT_LE(line.size(), 100u) << line;
}

}  // namespace
