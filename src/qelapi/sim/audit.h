// The audit log: one JSON object per line for every change asked of the array
// (time, user, address, method, op, param, call, ports, result). Lines are
// appended with one write each, so processes sharing the file never mix lines.
#ifndef QELSIM_AUDIT_H
#define QELSIM_AUDIT_H

#include "qelapi.h"

#include <string>
#include <vector>

namespace qelsim
{

struct AuditEntry
{
    AuditEntry(const api_evtparam_t* ev, std::string name, std::vector<std::string> positions = {})
        : event(ev), call(std::move(name)), ports(std::move(positions))
    {
    }

    const api_evtparam_t* event = nullptr;  // user, addr, method, inst_op, inst_param
    std::string call;
    std::vector<std::string> ports;  // positions of the ports concerned
    int result = 0;
    bool written = false;  // set once the line is in the log (a change writes its own)
};

// The entry's line, time stamped now, line end included.
std::string auditLine(const AuditEntry& e);

// Appends one line to path with a single write; with sync the log is flushed to
// disk before this returns. false with *error when it cannot.
bool appendAuditLine(
    const std::string& path, const std::string& line, bool sync, std::string* error);

// An event record for changes made by the qelsim tool.
api_evtparam_t toolEvent(const std::string& actor, const std::string& method);

}  // namespace qelsim

#endif
