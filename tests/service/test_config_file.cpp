// The configuration file reader: every kind of mistake stops at its file and line, and
// what is right lands in the settings exactly as the same option on the command line.
#include <Server/main/ConfigFile.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace qel::server;

namespace
{

const char* kFile = "/etc/qel.conf";

// The effective values of one option after reading `text`.
std::vector<std::string> valuesAfter(const std::string& text, const std::string& key)
{
    ServerCommandLine settings;
    settings.server.core.mofFiles = {"default.mof"};
    applyConfigText(text, kFile, settings);
    return findServerOption(key)->show(settings);
}

std::string errorOf(const std::string& text)
{
    ServerCommandLine settings;
    try
    {
        applyConfigText(text, kFile, settings);
    }
    catch (const CommandLineError& e)
    {
        return e.what();
    }
    return "";
}

TEST(ConfigFileTest, EveryKindOfMistakeNamesItsLine)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"unknown key after good lines", "# c\nport = 5988\n\nprot = 1\n",
         "/etc/qel.conf:4: unknown key \"prot\""},
        {"no equals sign", "port 5988\n",
         "/etc/qel.conf:1: expected \"key = value\", got \"port 5988\""},
        {"no key", "  = 5\n", "/etc/qel.conf:1: expected \"key = value\", got \"= 5\""},
        {"number above the range", "port = 65536\n",
         "/etc/qel.conf:1: port: expected a number from 0 to 65535, got \"65536\""},
        {"number below the range", "workers = 0\n",
         "/etc/qel.conf:1: workers: expected a number from 1 to 1024, got \"0\""},
        {"not a number", "read-timeout = 30s\n",
         "/etc/qel.conf:1: read-timeout: expected a number from 1 to 86400, got \"30s\""},
        {"empty value", "log-level =\n",
         "/etc/qel.conf:1: log-level: expected error, warning, info or trace, got \"\""},
        {"word out of its list", "log-target = console\n",
         "/etc/qel.conf:1: log-target: expected auto, stderr, journal or syslog, got \"console\""},
        {"single-valued key twice", "port = 1\nbind = ::1\nport = 2\n",
         "/etc/qel.conf:3: port is already set at /etc/qel.conf:1"},
        {"switch with a word", "demo = maybe\n",
         "/etc/qel.conf:1: demo: expected yes or no, got \"maybe\""},
        {"switch without a value", "demo =\n",
         "/etc/qel.conf:1: demo: expected yes or no, got \"\""},
        {"yes/no option with a number", "access-log = 1\n",
         "/etc/qel.conf:1: access-log: expected yes or no, got \"1\""},
        {"which file to read", "config = /etc/other.conf\n",
         "/etc/qel.conf:1: config can only be given on the command line"},
        {"print and exit", "print-config = yes\n",
         "/etc/qel.conf:1: print-config can only be given on the command line"},
        {"control character",
         "port = 1\nbind = a\x01"
         "b\n",
         "/etc/qel.conf:2: control character 0x01 in the line"},
        {"NUL byte", std::string("bind = a\0b\n", 11),
         "/etc/qel.conf:1: control character 0x00 in the line"},
        {"the command-line spelling", "--port = 1\n", "/etc/qel.conf:1: unknown key \"--port\""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorOf(c.text), c.error) << c.what;
}

TEST(ConfigFileTest, ValuesLandAsOnTheCommandLine)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string key;
        std::vector<std::string> values;
    };
    const std::vector<Case> cases = {
        {"lowest port", "port = 0\n", "port", {"0"}},
        {"highest port", "port = 65535\n", "port", {"65535"}},
        {"no listener", "port = none\n", "port", {"none"}},
        {"blanks and tabs around", "\t port=7 \t\n", "port", {"7"}},
        {"comment after a blank", "port = 5988  # http\n", "port", {"5988"}},
        {"comment line", "#port = 1\n", "port", {"5988"}},
        {"'#' inside a word is kept", "bind = a#b\n", "bind", {"a#b"}},
        {"'#' starting the value is a comment", "bind =#a\n", "bind", {""}},
        {"CRLF line ends", "bind = ::1\r\nport = 1\r\n", "bind", {"::1"}},
        {"last line without a line end", "port = 1\nbind = x", "bind", {"x"}},
        {"repeatable replaces the default",
         "schema = a.mof\nschema = b.mof\n",
         "schema",
         {"a.mof", "b.mof"}},
        {"switch on", "demo = yes\n", "demo", {"yes"}},
        {"switch off", "demo = no\n", "demo", {"no"}},
        {"switch true", "demo = true\n", "demo", {"yes"}},
        {"yes/no option off", "access-log = no\n", "access-log", {"no"}},
        {"no socket", "socket = none\n", "socket", {"none"}},
        {"empty file", "", "port", {"5988"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(valuesAfter(c.text, c.key), c.values) << c.what;
}

TEST(ConfigFileTest, RecordsTheLineOfEveryValue)
{
    ServerCommandLine settings;
    applyConfigText("# header\nschema = a.mof\n\nschema = b.mof\nport = 7\n", kFile, settings);
    ASSERT_EQ(settings.sources["schema"].size(), 2u);
    EXPECT_EQ(settings.sources["schema"][0].where, "/etc/qel.conf:2");
    EXPECT_EQ(settings.sources["schema"][1].where, "/etc/qel.conf:4");
    EXPECT_EQ(settings.sources["port"].at(0).where, "/etc/qel.conf:5");
    EXPECT_EQ(settings.sources["port"].at(0).text, "7");
    EXPECT_EQ(settings.given.count("port"), 1u);
    EXPECT_EQ(settings.given.count("bind"), 0u);
}

class ConfigFileOnDiskTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-conf-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        _dir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + _dir + "'").c_str()); }

    std::string write(const std::string& name, const std::string& text)
    {
        const std::string path = _dir + "/" + name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    static std::string errorReading(const std::string& path, bool required)
    {
        ServerCommandLine settings;
        try
        {
            readConfigFile(path, required, settings);
        }
        catch (const CommandLineError& e)
        {
            return e.what();
        }
        return "";
    }

    std::string _dir;
};

TEST_F(ConfigFileOnDiskTest, FilesThatCannotBeReadAreRefusedByName)
{
    const std::string fifo = _dir + "/fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    ::mkdir((_dir + "/dir").c_str(), 0700);
    // Comment lines up to the limit exactly, then one byte more.
    std::string atLimit(kMaxConfigFileBytes, '#');
    atLimit[kMaxConfigFileBytes - 1] = '\n';
    const std::string limit = write("limit.conf", atLimit);
    const std::string over = write("over.conf", atLimit + "#");
    struct Case
    {
        const char* what;
        std::string path;
        bool required;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"missing, named", _dir + "/none.conf", true,
         _dir + "/none.conf: cannot read: No such file or directory"},
        {"missing, default", _dir + "/none.conf", false, ""},
        {"a directory", _dir + "/dir", false, _dir + "/dir: cannot read: it is a directory"},
        {"a FIFO", fifo, true, fifo + ": cannot read: not a regular file"},
        {"a path through a file", limit + "/x", false, limit + "/x: cannot read: Not a directory"},
        {"at the size limit", limit, true, ""},
        {"one byte over", over, true, over + ": cannot read: larger than 1048576 bytes"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorReading(c.path, c.required), c.error) << c.what;
}

}  // namespace
