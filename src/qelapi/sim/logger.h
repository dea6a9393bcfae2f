// Destination of log_message: lines at or below the array's level threshold go
// to standard error or to a file, one line per call, whole lines even when
// threads write at once. Tests may also capture every line, whatever its level.
#ifndef QELSIM_LOGGER_H
#define QELSIM_LOGGER_H

#include "model.h"
#include "qelsim_control.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace qelsim
{

class Logger
{
public:
    static Logger& instance();

    // Takes the threshold and destination; a file that cannot be opened leaves
    // standard error as the destination and says so there.
    void configure(const LogConfig& cfg);
    void write(int level, const std::string& text);
    // Whether a line of this level is kept or captured, so that callers format
    // only lines someone will see. Takes no lock: traces below the threshold
    // cost one load.
    bool wants(int level) const { return level <= _admitted.load(std::memory_order_relaxed); }

    void setCapture(bool on);
    std::vector<LogLine> captured();
    void clearCaptured();

private:
    Logger() = default;
    void emit(int level, const std::string& text);  // REQUIRES: _mu held
    void admitLocked();                             // REQUIRES: _mu held

    // The highest level wanted: the threshold, or every level while capturing.
    // Written under _mu, read without it.
    std::atomic<int> _admitted{API_LOG_FAILURE};
    std::mutex _mu;
    int _level = API_LOG_FAILURE;
    std::string _file;
    FILE* _out = nullptr;  // null: standard error
    bool _capture = false;
    std::vector<LogLine> _captured;
};

}  // namespace qelsim

#endif
