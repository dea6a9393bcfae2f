#include "audit_journal.h"

#include "audit.h"
#include "json_codec.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qelsim
{

namespace
{

constexpr off_t kLengthAt = 8;
constexpr off_t kHashAt = 16;
constexpr size_t kHashSize = 16;  // contentHash's hexadecimal digits
constexpr off_t kTextAt = 4096;
// A line names at most 4096 ports; anything longer is not a note of ours.
constexpr uint64_t kMaxText = 1u << 20;

bool writeAllAt(int fd, const char* p, size_t n, off_t at)
{
    while (n > 0)
    {
        ssize_t w = ::pwrite(fd, p, n, at);
        if (w < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        p += w;
        n -= static_cast<size_t>(w);
        at += w;
    }
    return true;
}

bool readAllAt(int fd, char* p, size_t n, off_t at)
{
    while (n > 0)
    {
        ssize_t r = ::pread(fd, p, n, at);
        if (r < 0 && errno == EINTR)
            continue;
        if (r <= 0)
            return false;
        p += r;
        n -= static_cast<size_t>(r);
        at += r;
    }
    return true;
}

// Whether the log holds line from byte `from` on (or anywhere, when it is now shorter).
bool logHoldsLine(const std::string& path, uint64_t from, const std::string& line)
{
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st;
    std::string tail;
    if (::fstat(fd, &st) == 0)
    {
        const uint64_t size = static_cast<uint64_t>(st.st_size);
        const uint64_t start =
            size >= from ? from : 0;  // a shorter log was replaced: look at all of it
        tail.resize(size - start);
        if (!readAllAt(fd, &tail[0], tail.size(), static_cast<off_t>(start)))
            tail.clear();
    }
    ::close(fd);
    // Lines start at the beginning of what was read or after a line end.
    for (size_t at = tail.find(line); at != std::string::npos; at = tail.find(line, at + 1))
        if (at == 0 || tail[at - 1] == '\n')
            return true;
    return false;
}

}  // namespace

bool notePendingAudit(int lockFd, const PendingAudit& p, std::string* error)
{
    nlohmann::json j;
    j["audit"] = p.auditPath;
    j["line"] = p.line;
    j["size"] = p.auditSize;
    j["dev"] = p.stateDev;
    j["ino"] = p.stateIno;
    const std::string text = j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    const std::string hash = contentHash(text);
    const uint64_t length = text.size();
    // The text first, its length and hash last: a note cut short by a kill never
    // matches its hash, so it reads as none.
    if (!writeAllAt(lockFd, text.data(), text.size(), kTextAt) ||
        !writeAllAt(lockFd, hash.data(), kHashSize, kHashAt) ||
        !writeAllAt(lockFd, reinterpret_cast<const char*>(&length), sizeof length, kLengthAt) ||
        ::fdatasync(lockFd) != 0)
    {
        *error = std::string("cannot note the audit line of the change in the lock file: ") +
                 std::strerror(errno);
        clearPendingAudit(lockFd);
        return false;
    }
    return true;
}

void clearPendingAudit(int lockFd)
{
    // Not flushed: a note that comes back after a crash is finished again, and
    // its line is not appended twice (see logHoldsLine).
    const uint64_t zero = 0;
    (void)!::pwrite(lockFd, &zero, sizeof zero, kLengthAt);
}

std::optional<PendingAudit> readPendingAudit(int lockFd)
{
    uint64_t length = 0;
    if (!readAllAt(lockFd, reinterpret_cast<char*>(&length), sizeof length, kLengthAt) ||
        length == 0 || length > kMaxText)
        return std::nullopt;
    std::string hash(kHashSize, '\0');
    std::string text(length, '\0');
    if (!readAllAt(lockFd, &hash[0], kHashSize, kHashAt) ||
        !readAllAt(lockFd, &text[0], text.size(), kTextAt) || contentHash(text) != hash)
        return std::nullopt;
    nlohmann::json j = nlohmann::json::parse(text, nullptr, false);
    if (!j.is_object())
        return std::nullopt;
    try
    {
        PendingAudit p;
        p.auditPath = j.at("audit").get<std::string>();
        p.line = j.at("line").get<std::string>();
        p.auditSize = j.at("size").get<uint64_t>();
        p.stateDev = j.at("dev").get<uint64_t>();
        p.stateIno = j.at("ino").get<uint64_t>();
        return p;
    }
    catch (const nlohmann::json::exception&)
    {
        return std::nullopt;
    }
}

AuditRecovery finishPendingAudit(int lockFd, const std::string& statePath, std::string* error)
{
    uint64_t length = 0;
    if (!readAllAt(lockFd, reinterpret_cast<char*>(&length), sizeof length, kLengthAt) ||
        length == 0)
        return AuditRecovery::None;
    const std::optional<PendingAudit> p = readPendingAudit(lockFd);
    if (!p)
    {
        clearPendingAudit(lockFd);  // torn: the writer died before its rename
        return AuditRecovery::NotMade;
    }
    struct stat st;
    const bool made = ::stat(statePath.c_str(), &st) == 0 &&
                      static_cast<uint64_t>(st.st_dev) == p->stateDev &&
                      static_cast<uint64_t>(st.st_ino) == p->stateIno;
    AuditRecovery outcome = AuditRecovery::NotMade;
    if (made && logHoldsLine(p->auditPath, p->auditSize, p->line))
    {
        outcome = AuditRecovery::AlreadyInLog;
    }
    else if (made)
    {
        if (!appendAuditLine(p->auditPath, p->line, true, error))
            return AuditRecovery::Failed;
        outcome = AuditRecovery::Appended;
    }
    clearPendingAudit(lockFd);
    return outcome;
}

}  // namespace qelsim
