#include "logger.h"

#include <climits>
#include <sys/time.h>
#include <time.h>

namespace qelsim
{

Logger& Logger::instance()
{
    // Never destroyed: log_message may be called from other libraries' static destructors.
    static Logger* logger = new Logger();
    return *logger;
}

void Logger::configure(const LogConfig& cfg)
{
    std::lock_guard<std::mutex> g(_mu);
    _level = cfg.level;
    admitLocked();
    if (cfg.file == _file && (_out != nullptr || cfg.file.empty()))
        return;
    if (_out)
        std::fclose(_out);
    _out = nullptr;
    _file = cfg.file;
    if (!_file.empty())
    {
        _out = std::fopen(_file.c_str(), "ae");
        if (!_out)
        {
            std::string failed = _file;
            _file.clear();
            emit(
                API_LOG_ERROR,
                "qelsim: " + failed + ": cannot open the log file; logging to standard error");
        }
    }
}

void Logger::write(int level, const std::string& text)
{
    std::lock_guard<std::mutex> g(_mu);
    if (_capture)
        _captured.push_back(LogLine{level, text});
    if (level <= _level)
        emit(level, text);
}

void Logger::admitLocked()
{
    _admitted.store(_capture ? INT_MAX : _level, std::memory_order_relaxed);
}

void Logger::emit(int level, const std::string& text)
{
    struct timeval tv;
    ::gettimeofday(&tv, nullptr);
    struct tm tm;
    ::localtime_r(&tv.tv_sec, &tm);
    char stamp[64];
    std::snprintf(
        stamp, sizeof stamp, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", tm.tm_year + 1900, tm.tm_mon + 1,
        tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(tv.tv_usec / 1000));
    // One line per call: the trailing line end is dropped, inner ones are shown as \n.
    std::string body = text;
    if (!body.empty() && body.back() == '\n')
        body.pop_back();
    std::string line = std::string(stamp) + " [" + std::to_string(level) + "] ";
    for (char c : body)
    {
        if (c == '\n')
            line += "\\n";
        else
            line += c;
    }
    line += '\n';
    FILE* f = _out ? _out : stderr;
    std::fwrite(line.data(), 1, line.size(), f);
    std::fflush(f);
}

void Logger::setCapture(bool on)
{
    std::lock_guard<std::mutex> g(_mu);
    _capture = on;
    admitLocked();
}

std::vector<LogLine> Logger::captured()
{
    std::lock_guard<std::mutex> g(_mu);
    return _captured;
}

void Logger::clearCaptured()
{
    std::lock_guard<std::mutex> g(_mu);
    _captured.clear();
}

}  // namespace qelsim
