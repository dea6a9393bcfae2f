#include "state_store.h"

#include "atomic_file.h"
#include "audit.h"
#include "audit_journal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
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
    mapGeneration();
    removeStaleTemporaries(statePath);
    return true;
}

void StateStore::mapGeneration()
{
    // A new lock file is grown to hold the counter (zero: no change yet) so that
    // reading it through the mapping never touches a page past the file's end.
    // Only growing: a writer's counter that is already there is kept.
    struct stat st;
    if (::fstat(_lockFd, &st) != 0)
        return;
    if (st.st_size < static_cast<off_t>(sizeof(uint64_t)) &&
        (::ftruncate(_lockFd, sizeof(uint64_t)) != 0 || ::fstat(_lockFd, &st) != 0 ||
         st.st_size < static_cast<off_t>(sizeof(uint64_t))))
        return;
    void* p = ::mmap(nullptr, sizeof(uint64_t), PROT_READ, MAP_SHARED, _lockFd, 0);
    if (p != MAP_FAILED)
        _generationMap = static_cast<const uint64_t*>(p);
}

void StateStore::close()
{
    if (_generationMap)
        ::munmap(const_cast<uint64_t*>(_generationMap), sizeof(uint64_t));
    _generationMap = nullptr;
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
    if (_generationMap)
        return __atomic_load_n(_generationMap, __ATOMIC_ACQUIRE);
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

bool StateStore::movedSince(const Stamp& s) const
{
    // Every writer counts the generation up before it replaces the file, so the
    // counter alone tells; the file's identity is checked too where there is no counter to map.
    if (_generationMap)
        return generation() != s.generation;
    return stamp() != s;
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

bool StateStore::write(
    const std::string& text, const std::string& auditPath, const std::string& auditLine,
    std::string* error, std::string* auditError)
{
    // The order is what keeps readers and the audit log right if the writer is
    // killed at any point:
    //  1. the new state in a temporary file, flushed;
    //  2. its audit line noted in the lock file, flushed: from here on the line
    //     cannot be lost, whatever happens to this process;
    //  3. the generation counted up: readers that see it wait for our lock, so
    //     they read the state once it is in place;
    //  4. the temporary renamed over the state (the change is made) and the
    //     folder flushed;
    //  5. the line appended to the audit log, flushed, and the note cleared.
    // A kill before 4 leaves the old state and a note that the next writer drops;
    // a kill after it, a note whose line the next writer appends unless it is
    // in the log already.
    Replacement r;
    if (!prepareReplacement(_path, text, &r, error))
        return false;
    const bool audited = !auditLine.empty();
    if (audited)
    {
        PendingAudit p;
        p.auditPath = auditPath;
        p.line = auditLine;
        struct stat st;
        p.auditSize = ::stat(auditPath.c_str(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
        p.stateDev = static_cast<uint64_t>(r.dev);
        p.stateIno = static_cast<uint64_t>(r.ino);
        if (!notePendingAudit(_lockFd, p, error))
        {
            discardReplacement(&r);
            return false;
        }
    }
    // Should the counter not be written, a writer still notices the replaced
    // file by its identity (stamp), so this is not a failure.
    const uint64_t g = generation() + 1;
    (void)!::pwrite(_lockFd, &g, sizeof g, 0);
    if (!commitReplacement(&r, _path, error))
    {
        if (audited)
            clearPendingAudit(_lockFd);
        return false;
    }
    if (audited)
    {
        if (!appendAuditLine(auditPath, auditLine, true, auditError))
            return true;  // the note stays: the next writer tries again
        clearPendingAudit(_lockFd);
    }
    return true;
}

bool StateStore::write(const std::string& text, std::string* error)
{
    std::string unused;
    return write(text, "", "", error, &unused);
}

bool StateStore::finishPendingAudit(std::string* error)
{
    return qelsim::finishPendingAudit(_lockFd, _path, error) != AuditRecovery::Failed;
}

}  // namespace qelsim
