// The record of which library calls were made, with which arguments, in which
// order. Bounded, so a long-running server does not grow without end.
#ifndef QELSIM_CALL_LOG_H
#define QELSIM_CALL_LOG_H

#include "qelsim_control.h"

#include <deque>
#include <mutex>

namespace qelsim
{

class CallLog
{
public:
    static constexpr size_t kCapacity = 16384;
    static CallLog& instance();

    void add(CallRecord r);
    std::vector<CallRecord> entries();
    void clear();

private:
    std::mutex _mu;
    uint64_t _nextSeq = 1;
    std::deque<CallRecord> _entries;
};

// The most LPIDs one change call accepts.
constexpr int kMaxPortsPerCall = 4096;

// Argument texts of the call log.
std::string argInt(long long v);
std::string argHex(uint64_t v);
std::string argPtr(const void* p);
std::string argStr(const char* s);
std::string argIds(int count, const uint16_t* ids);

}  // namespace qelsim

#endif
