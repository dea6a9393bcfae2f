// qel-cimserver's settings: one table of options. Each option is a command-line flag
// ("--name VALUE") and a key of the configuration file ("name = VALUE"). Adding a setting
// means adding one row to the table in ServerCommandLine.cpp; the command-line parser, the
// configuration file, --help and --print-config follow from it.
#ifndef QEL_SERVER_MAIN_SERVERCOMMANDLINE_H
#define QEL_SERVER_MAIN_SERVERCOMMANDLINE_H

#include "LogTarget.h"
#include "WireServer.h"

#include <Server/core/ServerLog.h>

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace qel
{
namespace server
{

// Where a value of a setting came from.
struct SettingSource
{
    enum class Kind
    {
        Environment,  // a variable that replaces the built-in default
        File,         // a line of the configuration file
        CommandLine
    };
    Kind kind = Kind::CommandLine;
    std::string where;  // "$QEL_PASSWORD_FILE", "/etc/qel-cimserver/qel-cimserver.conf:12", ...
    std::string text;   // the value as written there
};

struct ServerCommandLine
{
    WireServerOptions server;
    Pegasus::LogLevel logLevel = Pegasus::LogLevel::Info;
    LogTarget logTarget = LogTarget::Auto;
    bool accessLog = true;  // one info line per request
    bool demo = false;      // generate users, passwords and a certificate for the simulated array
    // Plain HTTP may listen on an address other than loopback (passwords then cross the
    // network in clear).
    bool httpOnNetwork = false;
    std::string arrayFile;   // --array: the simulated array description (sets QELSIM_ARRAY)
    std::string arrayState;  // --array-state: its live state (sets QELSIM_STATE); "": default
    // The configuration file to read ("" = none). A missing file is an error only when it
    // was named on the command line.
    std::string configFile;
    bool configFileFound = false;  // the file was there and was read
    bool printConfig = false;
    bool help = false;
    // Names of the options that were set (not left at their defaults).
    std::set<std::string> given;
    // By option name, where its value (each value of a repeatable option) came from;
    // options left at their built-in default have no entry.
    std::map<std::string, std::vector<SettingSource>> sources;
};

class CommandLineError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// One setting of the server.
struct ServerOption
{
    const char* name;       // "port": --port on the command line, "port = ..." in the file
    const char* valueName;  // "N" in --help; nullptr for a switch, which takes no value
    const char* help;       // its --help text; "\n" starts a continuation line
    bool repeatable;        // each use adds a value; the first use replaces the default list
    // Reads `value` into the settings (a switch gets ""). `first` is true on the first use
    // of a repeatable option. Throws CommandLineError with what is wrong with the value,
    // without the option's name (the caller says where it came from).
    void (*apply)(ServerCommandLine& settings, const std::string& value, bool first);
    // The effective value(s), as they would be written in the configuration file (one
    // per value of a repeatable option; "yes"/"no" for a switch). Without it, --print-config
    // shows the text the value was given as.
    std::vector<std::string> (*show)(const ServerCommandLine& settings) = nullptr;
    // Only meaningful on the command line (e.g. which configuration file to read).
    bool commandLineOnly = false;
};

// Every option, in --help order.
const std::vector<ServerOption>& serverOptions();
// nullptr when there is none of that name.
const ServerOption* findServerOption(const std::string& name);

// Applies one value of `option`, recording where it came from. The first value from a
// source (command line after the file, file after the environment) replaces the list of
// a repeatable option. Errors are prefixed with the place: "--port: ..." on the command
// line, "FILE:LINE: port: ..." from the configuration file.
void applyServerOption(
    ServerCommandLine& settings, const ServerOption& option, const std::string& value,
    const SettingSource& source);

// Checks the settings as a whole (combinations no single option can judge) and settles
// what follows from them: HTTPS stays off, unless asked for, without a certificate
// (--demo makes one).
void checkServerSettings(ServerCommandLine& settings);

// The effective settings: `defaults`, then the configuration file, then the command line,
// which wins. --config is looked for first; with --help nothing is read. Throws
// CommandLineError saying which option, or which file and line, is wrong and why.
ServerCommandLine
loadServerSettings(const std::vector<std::string>& args, const ServerCommandLine& defaults);

// --print-config: every setting as a configuration line, with where it came from.
std::string settingsReport(const ServerCommandLine& settings);

// --help: the manual page of qel-cimserver; `defaults` give the paths it names.
std::string usageText(const ServerCommandLine& defaults);

// True for an IP address of this machine's loopback (127.0.0.0/8, ::1); false for any
// other, and for text that is not an address.
bool isLoopbackAddress(const std::string& address);

}  // namespace server
}  // namespace qel

#endif
