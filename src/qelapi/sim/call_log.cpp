#include "call_log.h"

#include <cstdio>

namespace qelsim
{

CallLog& CallLog::instance()
{
    static CallLog* log = new CallLog();
    return *log;
}

void CallLog::add(CallRecord r)
{
    std::lock_guard<std::mutex> g(_mu);
    r.seq = _nextSeq++;
    _entries.push_back(std::move(r));
    if (_entries.size() > kCapacity)
        _entries.pop_front();
}

std::vector<CallRecord> CallLog::entries()
{
    std::lock_guard<std::mutex> g(_mu);
    return {_entries.begin(), _entries.end()};
}

void CallLog::clear()
{
    std::lock_guard<std::mutex> g(_mu);
    _entries.clear();
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

std::string argInt(long long v)
{
    return std::to_string(v);
}

std::string argHex(uint64_t v)
{
    char buf[24];
    std::snprintf(buf, sizeof buf, "0x%016llX", static_cast<unsigned long long>(v));
    return buf;
}

std::string argPtr(const void* p)
{
    return p ? "ptr" : "null";
}

std::string argStr(const char* s)
{
    return s ? "\"" + std::string(s) + "\"" : "null";
}

std::string argIds(int count, const uint16_t* ids)
{
    if (!ids)
        return "null";
    // A count the call will refuse is not trusted for reading.
    if (count < 1 || count > kMaxPortsPerCall)
        return "[?]";
    std::string s = "[";
    for (int i = 0; i < count && i < 64; ++i)
    {
        if (i)
            s += ",";
        s += std::to_string(ids[i]);
    }
    if (count > 64)
        s += ",...";
    return s + "]";
}

}  // namespace qelsim
