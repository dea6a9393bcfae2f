#include "call_log.h"

#include <charconv>
#include <cstring>

namespace qelsim
{

namespace
{

std::string& threadArgs()
{
    thread_local std::string buffer;
    return buffer;
}

void appendNumber(std::string& s, long long v)
{
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    s.append(buf, static_cast<size_t>(r.ptr - buf));
}

}  // namespace

CallArgs::CallArgs() : _s(threadArgs())
{
    _s.clear();
}

CallArgs& CallArgs::num(long long v)
{
    appendNumber(_s, v);
    _s += '\0';
    return *this;
}

CallArgs& CallArgs::hex(uint64_t v)
{
    static const char kDigits[] = "0123456789ABCDEF";
    char buf[18] = {'0', 'x'};
    for (int i = 0; i < 16; ++i)
        buf[2 + i] = kDigits[(v >> (60 - 4 * i)) & 0xF];
    _s.append(buf, sizeof buf);
    _s += '\0';
    return *this;
}

CallArgs& CallArgs::ptr(const void* p)
{
    return text(p ? "ptr" : "null");
}

CallArgs& CallArgs::str(const char* s)
{
    if (!s)
        return text("null");
    _s += '"';
    _s += s;
    _s += '"';
    _s += '\0';
    return *this;
}

CallArgs& CallArgs::ids(int count, const uint16_t* ids)
{
    if (!ids)
        return text("null");
    // A count the call will refuse is not trusted for reading.
    if (count < 1 || count > kMaxPortsPerCall)
        return text("[?]");
    _s += '[';
    for (int i = 0; i < count && i < 64; ++i)
    {
        if (i)
            _s += ',';
        appendNumber(_s, ids[i]);
    }
    if (count > 64)
        _s += ",...";
    _s += ']';
    _s += '\0';
    return *this;
}

CallArgs& CallArgs::text(const char* s)
{
    _s += s;
    _s += '\0';
    return *this;
}

CallLog& CallLog::instance()
{
    static CallLog* log = new CallLog();
    return *log;
}

void CallLog::add(const char* call, const CallArgs& args, const api_evtparam_t* event, int result)
{
    std::lock_guard<std::mutex> g(_mu);
    Slot* slot;
    if (_ring.size() < kCapacity)
    {
        // All slots at once, so growing never moves them; pages are only
        // touched (and resident) as calls fill them.
        if (_ring.capacity() < kCapacity)
            _ring.reserve(kCapacity);
        slot = &_ring.emplace_back();
    }
    else
    {
        slot = &_ring[_next];
        _next = (_next + 1) % kCapacity;
    }
    if (_count < kCapacity)
        ++_count;
    slot->seq = _nextSeq++;
    slot->call = call;
    slot->args.assign(args.joined());  // reuses the slot's buffer
    slot->hasEvent = event != nullptr;
    if (event)
    {
        if (!slot->event)
            slot->event = std::make_unique<api_evtparam_t>();
        *slot->event = *event;
    }
    slot->result = result;
}

std::vector<CallRecord> CallLog::entries()
{
    std::lock_guard<std::mutex> g(_mu);
    std::vector<CallRecord> out;
    if (_count == 0)
        return out;
    out.reserve(_count);
    // The newest call sits just before `end`: the ring's end while it grows, then the slot to be reused next.
    const size_t end = _ring.size() < kCapacity ? _ring.size() : _next;
    const size_t first = (end + _ring.size() - _count) % _ring.size();
    for (size_t i = 0; i < _count; ++i)
    {
        const Slot& s = _ring[(first + i) % _ring.size()];
        CallRecord r;
        r.seq = s.seq;
        r.call = s.call;
        for (size_t at = 0; at < s.args.size();)
        {
            const size_t end = s.args.find('\0', at);
            r.args.emplace_back(s.args, at, end - at);
            at = end + 1;
        }
        r.hasEvent = s.hasEvent;
        if (s.hasEvent)
            r.event = *s.event;
        r.result = s.result;
        out.push_back(std::move(r));
    }
    return out;
}

void CallLog::clear()
{
    std::lock_guard<std::mutex> g(_mu);
    // The slots stay, with their buffers; only the count of held calls goes.
    _count = 0;
}

std::string CallRecord::text() const
{
    std::string s = call + "(";
    for (size_t i = 0; i < args.size(); ++i)
    {
        if (i)
            s += ", ";
        s += args[i];
    }
    return s + ")";
}

}  // namespace qelsim
