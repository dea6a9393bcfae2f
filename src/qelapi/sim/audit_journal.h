// The audit line of a change in flight. A writer notes it here, flushed to
// disk, before the new state is renamed into place, and clears it once the
// line is in the audit log. A writer killed in between leaves the note: the
// next holder of the state's exclusive lock (the next change, or the next
// start) appends the line when the state it records did reach the file, and
// drops it when it did not. So every change in the state file has its audit
// line, and no line is written for a change that never happened.
//
// The note lives in the state's lock file, after the generation counter that
// StateStore keeps in its first 8 bytes: at byte 8 its length and at byte 16
// the hash of its text (both 0 when no change is in flight), the text itself
// from byte 4096.
#ifndef QELSIM_AUDIT_JOURNAL_H
#define QELSIM_AUDIT_JOURNAL_H

#include <cstdint>
#include <optional>
#include <string>

namespace qelsim
{

struct PendingAudit
{
    std::string auditPath;
    std::string line;        // line end included
    uint64_t auditSize = 0;  // the log's size before the line was appended
    uint64_t stateDev = 0;   // the new state file's identity (its temporary's,
    uint64_t stateIno = 0;   // which the state file takes on when renamed)
};

// REQUIRES: the state's exclusive lock held (for all three).
bool notePendingAudit(int lockFd, const PendingAudit& p, std::string* error);
void clearPendingAudit(int lockFd);
// The note, when a whole one is there (a torn one reads as none).
std::optional<PendingAudit> readPendingAudit(int lockFd);

enum class AuditRecovery
{
    None,          // no change was in flight
    Appended,      // the change was made and its line was missing: appended now
    AlreadyInLog,  // the change was made and its line is in the log
    NotMade,       // the writer died before the state was replaced
    Failed         // the line could not be appended (*error says why); the note stays
};
// REQUIRES: the state's exclusive lock held. Finishes the change a dead writer
// left in flight, as described above, and clears its note.
AuditRecovery finishPendingAudit(int lockFd, const std::string& statePath, std::string* error);

}  // namespace qelsim

#endif
