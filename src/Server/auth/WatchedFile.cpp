#include "WatchedFile.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace qel
{
namespace auth
{

bool FileSignature::of(const std::string& path, FileSignature& out, std::string& error)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
    {
        error = std::strerror(errno);
        return false;
    }
    out.inode = st.st_ino;
    out.size = st.st_size;
    out.mtimeNs = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    return true;
}

}  // namespace auth
}  // namespace qel
