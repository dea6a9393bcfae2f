#include "state_store.h"

#include "atomic_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qelsim
{

StateStore::~StateStore()
{
    close();
}

bool StateStore::open(const std::string& statePath, std::string* error)
{
    close();
    if (!makeDirectories(parentDirectory(statePath), error))
        return false;
    const std::string lockPath = statePath + ".lock";
    int fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0)
    {
        *error = lockPath + ": cannot open the lock file: " + std::strerror(errno);
        return false;
    }
    _lockFd = fd;
    _path = statePath;
    removeStaleTemporaries(statePath);
    return true;
}

void StateStore::close()
{
    if (_lockFd >= 0)
        ::close(_lockFd);
    _lockFd = -1;
    _path.clear();
}

bool StateStore::exists() const
{
    struct stat st;
    return ::stat(_path.c_str(), &st) == 0;
}

bool StateStore::Stamp::operator==(const Stamp& o) const
{
    return generation == o.generation && dev == o.dev && ino == o.ino && size == o.size &&
           mtime.tv_sec == o.mtime.tv_sec && mtime.tv_nsec == o.mtime.tv_nsec;
}

uint64_t StateStore::generation() const
{
    uint64_t g = 0;
    if (::pread(_lockFd, &g, sizeof g, 0) != static_cast<ssize_t>(sizeof g))
        return 0;
    return g;
}

StateStore::Stamp StateStore::stamp() const
{
    Stamp s;
    if (_lockFd < 0)
        return s;
    s.generation = generation();
    struct stat st;
    if (::stat(_path.c_str(), &st) == 0)
    {
        s.dev = st.st_dev;
        s.ino = st.st_ino;
        s.size = st.st_size;
        s.mtime = st.st_mtim;
    }
    return s;
}

StateStore::Lock::Lock(const StateStore& s, Mode m) : _fd(s._lockFd), _held(false)
{
    if (_fd < 0)
        return;
    int rc;
    do
    {
        rc = ::flock(_fd, m == Mode::Shared ? LOCK_SH : LOCK_EX);
    } while (rc != 0 && errno == EINTR);
    _held = rc == 0;
}

StateStore::Lock::~Lock()
{
    if (_held)
        ::flock(_fd, LOCK_UN);
}

bool StateStore::read(std::string* text, std::string* error) const
{
    return readWholeFile(_path, text, error);
}

bool StateStore::write(const std::string& text, std::string* error)
{
    if (!writeFileAtomically(_path, text, error))
        return false;
    // The state is durable now; should the generation not be written, readers
    // still notice the replaced file by its identity, so this is not a failure.
    uint64_t g = generation() + 1;
    (void)!::pwrite(_lockFd, &g, sizeof g, 0);
    return true;
}

}  // namespace qelsim
