// qel-cimserver's settings: one table of options, each read from its command-line flag
// ("--name VALUE"). Adding a setting means adding one row to the table in
// ServerCommandLine.cpp; the parser and --help follow from it.
#ifndef QEL_SERVER_MAIN_SERVERCOMMANDLINE_H
#define QEL_SERVER_MAIN_SERVERCOMMANDLINE_H

#include "WireServer.h"

#include <Server/core/ServerLog.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace qel
{
namespace server
{

struct ServerCommandLine
{
    WireServerOptions server;
    Pegasus::LogLevel logLevel = Pegasus::LogLevel::Info;
    bool demo = false;  // generate users, passwords and a certificate for the simulated array
    // Plain HTTP may listen on an address other than loopback (passwords then cross the
    // network in clear).
    bool httpOnNetwork = false;
    std::string arrayFile;  // --array: the simulated array description (sets QELSIM_ARRAY)
    bool help = false;
    // Names of the options that were set (not left at their defaults).
    std::set<std::string> given;
};

class CommandLineError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// One setting of the server.
struct ServerOption
{
    const char* name;       // "port": --port on the command line
    const char* valueName;  // "N" in --help; nullptr for a switch, which takes no value
    const char* help;       // its --help text; "\n" starts a continuation line
    bool repeatable;        // each use adds a value; the first use replaces the default list
    // Reads `value` into the settings (a switch gets ""). `first` is true on the first use
    // of a repeatable option. Throws CommandLineError with what is wrong with the value,
    // without the option's name (the caller says where it came from).
    void (*apply)(ServerCommandLine& settings, const std::string& value, bool first);
};

// Every option, in --help order.
const std::vector<ServerOption>& serverOptions();
// nullptr when there is none of that name.
const ServerOption* findServerOption(const std::string& name);

// Applies one option to `settings`, recording it in settings.given; errors are prefixed with
// `where` (e.g. "--port").
void applyServerOption(
    ServerCommandLine& settings,
    const ServerOption& option,
    const std::string& value,
    const std::string& where);

// Checks the settings as a whole (combinations no single option can judge) and settles
// what follows from them: HTTPS stays off, unless asked for, without a certificate
// (--demo makes one).
void checkServerSettings(ServerCommandLine& settings);

// Defaults (schema, provider directories) come from the build; throws CommandLineError
// naming the offending option.
ServerCommandLine
parseCommandLine(const std::vector<std::string>& args, const ServerCommandLine& defaults);

std::string usageText();

// True for an IP address of this machine's loopback (127.0.0.0/8, ::1); false for any
// other, and for text that is not an address.
bool isLoopbackAddress(const std::string& address);

}  // namespace server
}  // namespace qel

#endif
