#include "ServerLog.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace Pegasus
{

namespace
{

std::mutex& sinkMutex()
{
    static std::mutex m;
    return m;
}

ServerLog::Sink& currentSink()
{
    static ServerLog::Sink sink;
    return sink;
}

std::atomic<int>& currentThreshold()
{
    static std::atomic<int> level{static_cast<int>(LogLevel::Info)};
    return level;
}

std::atomic<bool>& accessLogOn()
{
    static std::atomic<bool> on{false};
    return on;
}

}  // namespace

void ServerLog::setAccessLog(bool on)
{
    accessLogOn().store(on);
}

bool ServerLog::accessLogEnabled()
{
    return accessLogOn().load() && currentThreshold().load() >= static_cast<int>(LogLevel::Info);
}

void ServerLog::setThreshold(LogLevel level)
{
    currentThreshold().store(static_cast<int>(level));
}

LogLevel ServerLog::threshold()
{
    return static_cast<LogLevel>(currentThreshold().load());
}

ServerLog::Sink ServerLog::setSink(Sink sink)
{
    std::lock_guard<std::mutex> lock(sinkMutex());
    Sink previous = std::move(currentSink());
    currentSink() = std::move(sink);
    return previous;
}

const char* ServerLog::levelName(LogLevel level)
{
    switch (level)
    {
        case LogLevel::Error:
            return "error";
        case LogLevel::Warning:
            return "warning";
        case LogLevel::Info:
            return "info";
        case LogLevel::Trace:
            return "trace";
    }
    return "?";
}

void ServerLog::write(LogLevel level, const std::string& text)
{
    if (static_cast<int>(level) > currentThreshold().load())
        return;
    // Held while the sink runs so that lines of concurrent requests never
    // interleave and a sink being replaced is never called half-way.
    std::lock_guard<std::mutex> lock(sinkMutex());
    if (currentSink())
    {
        currentSink()(level, text);
        return;
    }
    std::fprintf(stderr, "qel-cimserver %s: %s\n", levelName(level), text.c_str());
}

}  // namespace Pegasus
