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
    lockFd_ = fd;
    path_ = statePath;
    removeStaleTemporaries(statePath);
    return true;
}

void StateStore::close()
{
    if (lockFd_ >= 0)
        ::close(lockFd_);
    lockFd_ = -1;
    path_.clear();
}

bool StateStore::exists() const
{
    struct stat st;
    return ::stat(path_.c_str(), &st) == 0;
}

bool StateStore::Stamp::operator==(const Stamp& o) const
{
    return generation == o.generation && dev == o.dev && ino == o.ino && size == o.size &&
           mtime.tv_sec == o.mtime.tv_sec && mtime.tv_nsec == o.mtime.tv_nsec;
}

uint64_t StateStore::generation() const
{
    uint64_t g = 0;
    if (::pread(lockFd_, &g, sizeof g, 0) != static_cast<ssize_t>(sizeof g))
        return 0;
    return g;
}

StateStore::Stamp StateStore::stamp() const
{
    Stamp s;
    if (lockFd_ < 0)
        return s;
    s.generation = generation();
    struct stat st;
    if (::stat(path_.c_str(), &st) == 0)
    {
        s.dev = st.st_dev;
        s.ino = st.st_ino;
        s.size = st.st_size;
        s.mtime = st.st_mtim;
    }
    return s;
}

StateStore::Lock::Lock(const StateStore& s, Mode m) : fd_(s.lockFd_), held_(false)
{
    if (fd_ < 0)
        return;
    int rc;
    do
    {
        rc = ::flock(fd_, m == Mode::Shared ? LOCK_SH : LOCK_EX);
    } while (rc != 0 && errno == EINTR);
    held_ = rc == 0;
}

StateStore::Lock::~Lock()
{
    if (held_)
        ::flock(fd_, LOCK_UN);
}

bool StateStore::read(std::string* text, std::string* error) const
{
    return readWholeFile(path_, text, error);
}

bool StateStore::write(const std::string& text, std::string* error)
{
    if (!writeFileAtomically(path_, text, error))
        return false;
    // The state is durable now; should the generation not be written, readers
    // still notice the replaced file by its identity, so this is not a failure.
    uint64_t g = generation() + 1;
    (void)!::pwrite(lockFd_, &g, sizeof g, 0);
    return true;
}

}  // namespace qelsim
