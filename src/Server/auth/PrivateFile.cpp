#include "PrivateFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace qel
{
namespace auth
{

bool readWholeFile(const std::string& path, std::string& text, std::string& error, bool& missing)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        missing = errno == ENOENT;
        error = std::strerror(errno);
        return false;
    }
    missing = false;
    std::ostringstream s;
    s << in.rdbuf();
    text = s.str();
    return true;
}

bool replaceFile(const std::string& path, const std::string& text, std::string& error)
{
    const std::string tmp = path + ".tmp." + std::to_string(getpid());
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
    {
        error = "cannot write " + tmp + ": " + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    while (done < text.size())
    {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            error = "cannot write " + tmp + ": " + std::strerror(errno);
            ::close(fd);
            ::unlink(tmp.c_str());
            return false;
        }
        done += static_cast<size_t>(n);
    }
    // A replaced file keeps its owner, group and permissions: the service's group must
    // still read the file after root changed it with qel-passwd or qel-certmap.
    struct stat previous;
    if (::stat(path.c_str(), &previous) == 0)
    {
        if (::fchown(fd, previous.st_uid, previous.st_gid) != 0)
        {
            // Not allowed to give it away (not root): the file stays the writer's own.
        }
        ::fchmod(fd, previous.st_mode & 0777);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0)
    {
        error = "cannot write " + tmp + ": " + std::strerror(errno);
        ::unlink(tmp.c_str());
        return false;
    }
    if (::rename(tmp.c_str(), path.c_str()) != 0)
    {
        error = "cannot replace " + path + ": " + std::strerror(errno);
        ::unlink(tmp.c_str());
        return false;
    }
    return true;
}

}  // namespace auth
}  // namespace qel
