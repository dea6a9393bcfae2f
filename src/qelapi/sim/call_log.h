// The record of which library calls were made, with which arguments, in which
// order. Bounded, so a long-running server does not grow without end. Every
// call of the library is recorded, so recording costs no allocation once the
// ring has gone round: the slots keep their buffers.
#ifndef QELSIM_CALL_LOG_H
#define QELSIM_CALL_LOG_H

#include "qelsim_control.h"

#include <memory>
#include <mutex>

namespace qelsim
{

// The arguments of one call as text, each ended by '\0' (argument texts never
// hold one: strings are C strings). Built on the calling thread's own buffer,
// which the next CallArgs of that thread reuses; the library's calls do not
// nest, so one call's arguments are recorded before the next are built.
class CallArgs
{
public:
    CallArgs();
    CallArgs& num(long long v);
    CallArgs& hex(uint64_t v);  // 0x + 16 hex digits
    CallArgs& ptr(const void* p);
    CallArgs& str(const char* s);  // quoted, or null
    CallArgs& ids(int count, const uint16_t* ids);
    CallArgs& text(const char* s);  // as it is
    const std::string& joined() const { return _s; }

private:
    std::string& _s;
};

class CallLog
{
public:
    static constexpr size_t kCapacity = 16384;
    static CallLog& instance();

    void add(const char* call, const CallArgs& args, const api_evtparam_t* event, int result);
    std::vector<CallRecord> entries();
    void clear();

private:
    struct Slot
    {
        uint64_t seq = 0;
        const char* call = nullptr;  // a name of the call table (static)
        std::string args;            // as CallArgs::joined
        // Made for the first call with an event that the slot holds, and kept: few calls carry
        // one, and the record (about 480 bytes) would otherwise be most of every slot.
        std::unique_ptr<api_evtparam_t> event;
        bool hasEvent = false;
        int result = 0;
    };

    std::mutex _mu;
    uint64_t _nextSeq = 1;
    std::vector<Slot> _ring;  // REQUIRES: _mu held; grows to kCapacity, then reused
    size_t _next = 0;         // the slot the next call goes to once the ring is full
    size_t _count = 0;        // calls held (at most kCapacity)
};

// The most LPIDs one change call accepts.
constexpr int kMaxPortsPerCall = 4096;

}  // namespace qelsim

#endif
