#include "ServerLayout.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace qel
{
namespace server
{
namespace
{

std::string directoryOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

std::string realPath(const std::string& path)
{
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

}  // namespace

std::string ownExecutable()
{
    char path[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

ServerLayout serverLayout(const std::string& executable)
{
    ServerLayout layout;
    const std::string here = executable.empty() ? std::string() : directoryOf(executable);
    // The build folder is compared resolved, so that a build tree reached through a
    // symbolic link is still recognised.
    if (here.empty() || realPath(here) == realPath(QEL_BUILD_EXECUTABLE_DIR))
    {
        layout.schema = {QEL_BUILD_SCHEMA};
        layout.providerDirectories = {QEL_BUILD_PROVIDER_DIRS};
        layout.demoArray = QEL_BUILD_DEMO_ARRAY;
        return layout;
    }
    // The installed tree, from the executable's own folder (bin or sbin).
    const std::string data = realPath(here + "/" + QEL_INSTALL_DATA_FROM_BIN);
    layout.installed = true;
    layout.schema = {data + "/schema/root.mof"};
    layout.providerDirectories = {realPath(here + "/" + QEL_INSTALL_PROVIDERS_FROM_BIN)};
    layout.demoArray = data + "/demo-array.json";
    layout.configFile = QEL_INSTALL_CONFIG_FILE;
    return layout;
}

}  // namespace server
}  // namespace qel
