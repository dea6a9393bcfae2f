#include "LogTarget.h"

#include <Server/core/ServerLog.h>

#include <systemd/sd-journal.h>

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace qel
{
namespace server
{
namespace
{

const char* kIdentifier = "qel-cimserver";
const char* kJournalSocket = "/run/systemd/journal/socket";

int syslogPriority(Pegasus::LogLevel level)
{
    switch (level)
    {
        case Pegasus::LogLevel::Error:
            return LOG_ERR;
        case Pegasus::LogLevel::Warning:
            return LOG_WARNING;
        case Pegasus::LogLevel::Info:
            return LOG_INFO;
        case Pegasus::LogLevel::Trace:
            return LOG_DEBUG;
    }
    return LOG_INFO;
}

void toJournal(Pegasus::LogLevel level, const std::string& text)
{
    const int rc = sd_journal_send(
        "MESSAGE=%s", text.c_str(), "PRIORITY=%d", syslogPriority(level), "SYSLOG_IDENTIFIER=%s",
        kIdentifier, nullptr);
    // The journal went away (restarted, or a container without it): the line is not lost.
    if (rc < 0)
        std::fprintf(
            stderr, "%s %s: %s\n", kIdentifier, Pegasus::ServerLog::levelName(level), text.c_str());
}

void toSyslog(Pegasus::LogLevel level, const std::string& text)
{
    ::syslog(syslogPriority(level), "%s", text.c_str());
}

}  // namespace

bool parseLogTarget(const std::string& text, LogTarget& target)
{
    for (LogTarget t : {LogTarget::Auto, LogTarget::Stderr, LogTarget::Journal, LogTarget::Syslog})
    {
        if (text == logTargetName(t))
        {
            target = t;
            return true;
        }
    }
    return false;
}

const char* logTargetName(LogTarget target)
{
    switch (target)
    {
        case LogTarget::Auto:
            return "auto";
        case LogTarget::Stderr:
            return "stderr";
        case LogTarget::Journal:
            return "journal";
        case LogTarget::Syslog:
            return "syslog";
    }
    return "?";
}

LogSurroundings currentLogSurroundings()
{
    LogSurroundings around;
    around.stderrIsTerminal = ::isatty(STDERR_FILENO) == 1;
    struct stat st;
    // "DEVICE:INODE" of the stream systemd connected to the journal.
    const char* stream = std::getenv("JOURNAL_STREAM");
    unsigned long long device = 0, inode = 0;
    if (stream && std::sscanf(stream, "%llu:%llu", &device, &inode) == 2 &&
        ::fstat(STDERR_FILENO, &st) == 0)
        around.stderrIsJournal = st.st_dev == device && st.st_ino == inode;
    around.journalRunning = ::stat(kJournalSocket, &st) == 0 && S_ISSOCK(st.st_mode);
    return around;
}

LogTarget resolveLogTarget(LogTarget wanted, const LogSurroundings& around)
{
    if (wanted != LogTarget::Auto)
        return wanted;
    if (around.stderrIsTerminal)
        return LogTarget::Stderr;
    return around.journalRunning ? LogTarget::Journal : LogTarget::Syslog;
}

void installLogTarget(LogTarget target)
{
    switch (target)
    {
        case LogTarget::Journal:
            Pegasus::ServerLog::setSink(toJournal);
            return;
        case LogTarget::Syslog:
            ::openlog(kIdentifier, LOG_PID | LOG_NDELAY, LOG_DAEMON);
            Pegasus::ServerLog::setSink(toSyslog);
            return;
        case LogTarget::Auto:
        case LogTarget::Stderr:
            Pegasus::ServerLog::setSink(Pegasus::ServerLog::Sink());
            return;
    }
}

}  // namespace server
}  // namespace qel
