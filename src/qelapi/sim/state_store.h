// The shared state file of a simulated array. Every process that simulates the
// same array (the CIM server, the qelsim tool) uses one state file and its lock
// file "<state>.lock": writers hold the lock exclusively while they re-read,
// change and atomically replace the state, counting up the generation number
// kept in the lock file's first 8 bytes before the new state is renamed into
// place; readers notice a new generation (or, when changing, a replaced file)
// and re-read. So no update is lost and every reader sees the latest state.
//
// Readers look at the generation through a shared read-only mapping of the lock
// file, so a read that finds the state unchanged makes no system call.
#ifndef QELSIM_STATE_STORE_H
#define QELSIM_STATE_STORE_H

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <string>

namespace qelsim
{

class StateStore
{
public:
    StateStore() = default;
    ~StateStore();
    StateStore(const StateStore&) = delete;
    StateStore& operator=(const StateStore&) = delete;

    // Opens (creating if needed) the lock file of statePath and its folder.
    bool open(const std::string& statePath, std::string* error);
    void close();
    bool enabled() const { return _lockFd >= 0; }
    const std::string& path() const { return _path; }
    bool exists() const;

    // What identifies one version of the state file.
    struct Stamp
    {
        uint64_t generation = 0;
        dev_t dev = 0;
        ino_t ino = 0;
        off_t size = -1;
        struct timespec mtime
        {
        };
        bool operator==(const Stamp& o) const;
        bool operator!=(const Stamp& o) const { return !(*this == o); }
    };
    Stamp stamp() const;
    // Whether a writer may have replaced the state since s was taken: its
    // generation moved. Without the mapping, the whole stamp is compared.
    bool movedSince(const Stamp& s) const;

    enum class Mode
    {
        Shared,
        Exclusive
    };
    // Holds the lock file's lock for its lifetime.
    class Lock
    {
    public:
        Lock(const StateStore& s, Mode m);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        bool held() const { return _held; }

    private:
        int _fd;
        bool _held;
    };

    bool read(std::string* text, std::string* error) const;

    // REQUIRES: the exclusive lock held (for the three below).
    // Replaces the state and counts up the generation. With an audit line, the
    // line is noted in the lock file before the rename and appended to auditPath
    // after it (see audit_journal.h); *auditError then says when the append
    // failed (the change itself is made).
    bool write(
        const std::string& text, const std::string& auditPath, const std::string& auditLine,
        std::string* error, std::string* auditError);
    bool write(const std::string& text, std::string* error);
    // Finishes the audit of a change whose writer died; false with *error when
    // its line could not be appended.
    bool finishPendingAudit(std::string* error);

private:
    uint64_t generation() const;
    void mapGeneration();

    std::string _path;
    int _lockFd = -1;
    // The lock file's first page, mapped read-only; null when it could not be mapped.
    const uint64_t* _generationMap = nullptr;
};

}  // namespace qelsim

#endif
