// The CIM server's own log: load failures, provider errors, start and stop, and
// (when turned on) the access log of the HTTP front-end. One process-wide channel;
// lines go to standard error unless a sink is set (the journal or syslog, or a test
// that reads them back).
#ifndef QEL_Server_ServerLog_h
#define QEL_Server_ServerLog_h

#include <functional>
#include <string>

namespace Pegasus
{

enum class LogLevel
{
    Error = 1,
    Warning = 2,
    Info = 3,
    Trace = 4
};

class ServerLog
{
public:
    using Sink = std::function<void(LogLevel, const std::string&)>;

    // Lines above the threshold are dropped (default: Info).
    static void setThreshold(LogLevel level);
    static LogLevel threshold();

    // Replaces the destination; an empty sink restores standard error.
    // Returns the previous sink so a caller can put it back.
    static Sink setSink(Sink sink);

    static void write(LogLevel level, const std::string& text);

    // The access log: one info line per request (off by default: qel-cimserver turns it
    // on; the in-process servers of tests and benchmarks leave it off).
    static void setAccessLog(bool on);
    // On, and info lines pass the threshold.
    static bool accessLogEnabled();

    static void error(const std::string& text) { write(LogLevel::Error, text); }
    static void warning(const std::string& text) { write(LogLevel::Warning, text); }
    static void info(const std::string& text) { write(LogLevel::Info, text); }
    static void trace(const std::string& text) { write(LogLevel::Trace, text); }

    static const char* levelName(LogLevel level);
};

}  // namespace Pegasus

#endif
