// Where qel-cimserver finds its own files: schema, provider modules, demo array and
// configuration file. Run from its build folder, it uses the source and build trees;
// anywhere else it is installed, and finds them relative to its own executable, so that a
// DESTDIR or moved installation works as well as the packaged one.
#ifndef QEL_SERVER_MAIN_SERVERLAYOUT_H
#define QEL_SERVER_MAIN_SERVERLAYOUT_H

#include <string>
#include <vector>

namespace qel
{
namespace server
{

struct ServerLayout
{
    bool installed = false;
    std::vector<std::string> schema;  // MOF files compiled at start
    std::vector<std::string> providerDirectories;
    std::string demoArray;
    std::string configFile;  // read when present; "" in the build tree (only --config)
};

// `executable` is the server's own path (see ownExecutable()).
ServerLayout serverLayout(const std::string& executable);

// The running program's path, symbolic links resolved ("" if /proc cannot tell).
std::string ownExecutable();

}  // namespace server
}  // namespace qel

#endif
