// Where qel-cimserver's log goes: standard error, the systemd journal (native protocol,
// with each line's priority) or syslog. "auto" picks standard error when started from a
// terminal and the journal or syslog otherwise.
#ifndef QEL_SERVER_MAIN_LOGTARGET_H
#define QEL_SERVER_MAIN_LOGTARGET_H

#include <string>

namespace qel
{
namespace server
{

enum class LogTarget
{
    Auto,
    Stderr,
    Journal,
    Syslog
};

// "auto", "stderr", "journal" or "syslog"; false for anything else.
bool parseLogTarget(const std::string& text, LogTarget& target);
const char* logTargetName(LogTarget target);

// What the process finds around it when the target is chosen.
struct LogSurroundings
{
    bool stderrIsTerminal = false;
    bool stderrIsJournal = false;  // systemd connected it to the journal ($JOURNAL_STREAM)
    bool journalRunning = false;   // the journal's socket exists
};
LogSurroundings currentLogSurroundings();

// Auto: standard error on a terminal, else the journal when it runs, else syslog. The
// other targets are kept as they are.
LogTarget resolveLogTarget(LogTarget wanted, const LogSurroundings& around);

// Routes the server log (Pegasus::ServerLog) to `target`, which must be resolved.
// REQUIRES: no request running yet (called once, at start).
void installLogTarget(LogTarget target);

}  // namespace server
}  // namespace qel

#endif
