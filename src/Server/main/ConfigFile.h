// The configuration file of qel-cimserver (/etc/qel-cimserver/qel-cimserver.conf when
// installed): "key = value" lines whose keys are the names of the server's options, so
// every option has a key. A repeatable option takes one line per value; a switch takes
// yes or no. '#' starts a comment at the start of a line, of a value, or after a blank.
#ifndef QEL_SERVER_MAIN_CONFIGFILE_H
#define QEL_SERVER_MAIN_CONFIGFILE_H

#include "ServerCommandLine.h"

#include <cstddef>
#include <string>

namespace qel
{
namespace server
{

// Larger files are refused unread: a configuration is a few hundred bytes.
constexpr size_t kMaxConfigFileBytes = 1024 * 1024;

// Applies every line of `text` to `settings`, recording "origin:LINE" as where each value
// came from. Throws CommandLineError "origin:LINE: what is wrong" at the first bad line
// (unknown key, bad value, a line that is not "key = value", a single-valued key given
// twice, a key that only the command line may set); `settings` may then be half-applied.
void applyConfigText(
    const std::string& text, const std::string& origin, ServerCommandLine& settings);

// Reads `path` and applies it as above, then notes in settings.configFileFound whether it
// was there. A missing file is fine unless `required`; any other failure to read it throws
// CommandLineError "path: cannot read: reason".
void readConfigFile(const std::string& path, bool required, ServerCommandLine& settings);

}  // namespace server
}  // namespace qel

#endif
