#include "audit.h"

#include "records.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace qelsim
{

namespace
{

// The fixed fields may lack their terminator when a caller filled them badly.
std::string field(const char* p, size_t size)
{
    return std::string(p, strnlen(p, size));
}

std::string utcNow()
{
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    struct tm tm;
    gmtime_r(&ts.tv_sec, &tm);
    char buf[64];
    std::snprintf(
        buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", tm.tm_year + 1900, tm.tm_mon + 1,
        tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(ts.tv_nsec / 1000000));
    return buf;
}

}  // namespace

std::string auditLine(const AuditEntry& e)
{
    nlohmann::ordered_json j;
    j["time"] = utcNow();
    const api_evtparam_t* ev = e.event;
    j["user"] = ev ? field(ev->user, sizeof ev->user) : "";
    j["address"] = ev ? field(ev->addr, sizeof ev->addr) : "";
    j["method"] = ev ? field(ev->method, sizeof ev->method) : "";
    j["op"] = ev ? field(ev->inst_op, sizeof ev->inst_op) : "";
    j["param"] = ev ? field(ev->inst_param, sizeof ev->inst_param) : "";
    j["call"] = e.call;
    j["ports"] = e.ports;
    j["result"] = e.result;
    // Invalid UTF-8 from a caller's record is replaced, never a reason to lose the line.
    return j.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool appendAuditLine(
    const std::string& path, const std::string& line, bool sync, std::string* error)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
    {
        *error = path + ": cannot open the audit log: " + std::strerror(errno);
        return false;
    }
    ssize_t w = ::write(fd, line.data(), line.size());
    int err = errno;
    const bool synced = !sync || w < 0 || ::fsync(fd) == 0;
    if (!synced)
        err = errno;
    ::close(fd);
    if (w != static_cast<ssize_t>(line.size()))
    {
        *error = path + ": cannot append to the audit log: " +
                 (w < 0 ? std::strerror(err) : "short write");
        return false;
    }
    if (!synced)
    {
        *error = path + ": cannot flush the audit log: " + std::strerror(err);
        return false;
    }
    return true;
}

api_evtparam_t toolEvent(const std::string& actor, const std::string& method)
{
    api_evtparam_t ev{};
    copyText(ev.user, sizeof ev.user, actor);
    copyText(ev.addr, sizeof ev.addr, "local");
    copyText(ev.method, sizeof ev.method, method);
    return ev;
}

}  // namespace qelsim
