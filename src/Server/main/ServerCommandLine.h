// qel-cimserver's command line.
#ifndef QEL_SERVER_MAIN_SERVERCOMMANDLINE_H
#define QEL_SERVER_MAIN_SERVERCOMMANDLINE_H

#include "WireServer.h"

#include <Server/core/ServerLog.h>

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
    bool demo = false;      // generate users and passwords for the simulated array's users
    std::string arrayFile;  // --array: the simulated array description (sets QELSIM_ARRAY)
    bool help = false;
};

class CommandLineError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Defaults (schema, provider directories) come from the build; throws CommandLineError
// naming the offending option.
ServerCommandLine
parseCommandLine(const std::vector<std::string>& args, const ServerCommandLine& defaults);

std::string usageText();

}  // namespace server
}  // namespace qel

#endif
