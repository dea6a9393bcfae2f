// The control interface of the simulated array (qelsim_control.h).
#include "qelsim_control.h"

#include "sim/atomic_file.h"
#include "sim/audit.h"
#include "sim/call_log.h"
#include "sim/calls.h"
#include "sim/json_codec.h"
#include "sim/logger.h"
#include "sim/lpid.h"
#include "sim/simulator.h"
#include "sim/stats.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <limits>

// Present only when the process runs with LeakSanitizer.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace qelsim
{

namespace
{

std::string absoluteDirOf(const std::string& path)
{
    char buf[PATH_MAX];
    std::string dir = parentDirectory(path);
    return ::realpath(dir.c_str(), buf) ? std::string(buf) : dir;
}

FcPort* portByRef(Model& m, const std::string& ref)
{
    if (auto pos = parsePosition(ref))
        return m.fcPortByLpid(lpidOf(*pos));
    if (auto wwn = parseWwn(ref))
    {
        auto it = m.fcByWwn.find(*wwn);
        return it == m.fcByWwn.end() ? nullptr : &m.fcPorts[it->second];
    }
    return nullptr;
}

// A change made from outside (the tool): applied, saved and audited like a library call.
int outsideChange(
    const std::string& port, const std::string& actor, const char* method,
    const std::function<int(FcPort&)>& edit)
{
    const api_evtparam_t ev = toolEvent(actor, method);
    AuditEntry entry{&ev, method};
    int rc = Simulator::instance().change(
        [&](Model& m) -> int
        {
            FcPort* p = portByRef(m, port);
            if (!p)
                return API_ERR_NOENT;
            entry.ports = {positionText(p->pos)};
            return edit(*p);
        },
        &entry);
    Simulator::instance().audit(entry, rc);
    return rc;
}

}  // namespace

Result loadArrayText(const std::string& json, const std::string& statePath)
{
    return Simulator::instance().load(json, "<text>", "", statePath);
}

Result loadArrayFile(const std::string& path, const std::string& statePath)
{
    std::string text, err;
    if (!readWholeFile(path, &text, &err))
        return Result{false, err};
    return Simulator::instance().load(text, path, absoluteDirOf(path), statePath);
}

Result attach(const AttachOptions& options)
{
    return Simulator::instance().attach(options, false);
}

Result attachFromEnvironment()
{
    return Simulator::instance().attachFromEnvironment();
}

Result resetToArray()
{
    return Simulator::instance().reseed();
}

std::string statePath()
{
    return Simulator::instance().statePath();
}

const std::string& demoArrayText()
{
    static const std::string text = embeddedDemoArray();
    return text;
}

Result readArrayUsers(const std::string& path, std::vector<UserInfo>* users)
{
    std::string text, err;
    if (path.empty())
        text = demoArrayText();
    else if (!readWholeFile(path, &text, &err))
        return Result{false, err};
    DecodeResult r = decodeModel(text, path.empty() ? "" : absoluteDirOf(path));
    if (!r.ok)
        return Result{false, r.message(path.empty() ? kBuiltInOrigin : path)};
    users->clear();
    for (const User& u : r.model.users)
        users->push_back(UserInfo{u.name, roleName(u.role), u.enabled});
    return Result{};
}

Result injectFault(const std::string& call, int code, int64_t times)
{
    const CallInfo* info = findCall(call);
    if (!info || !info->faultable)
        return Result{false, "\"" + call + "\" is not a call that can be made to fail"};
    if (code == 0 && !info->zeroCodeFault)
        return Result{false, "code 0 is not a failure for " + call};
    if (times == 0 || times < -1)
        return Result{false, "times must be -1 (always) or at least 1"};
    int rc = Simulator::instance().change(
        [&](Model& m) -> int
        {
            // A new fault for a call replaces the one it had.
            for (size_t i = m.faults.size(); i-- > 0;)
                if (m.faults[i].call == call)
                    m.faults.erase(m.faults.begin() + static_cast<long>(i));
            m.faults.push_back(Fault{call, code, times});
            return API_OK;
        });
    if (rc != API_OK)
        return Result{
            false, "the simulated array is not available (error " + std::to_string(rc) + ")"};
    return Result{};
}

int clearFaults(const std::string& call)
{
    int removed = 0;
    Simulator::instance().change(
        [&](Model& m) -> int
        {
            removed = 0;
            for (size_t i = m.faults.size(); i-- > 0;)
            {
                if (call.empty() || m.faults[i].call == call)
                {
                    m.faults.erase(m.faults.begin() + static_cast<long>(i));
                    ++removed;
                }
            }
            return removed ? API_OK : API_ERR_NOENT;  // nothing to save when nothing was removed
        });
    return removed;
}

std::vector<FaultInfo> faults()
{
    std::vector<FaultInfo> out;
    Simulator::instance().read(
        [&](const Model& m)
        {
            for (const auto& f : m.faults)
                out.push_back(FaultInfo{f.call, f.code, f.times});
            return 0;
        });
    return out;
}

Counters counters()
{
    return stats().snapshot();
}

void resetCounters()
{
    stats().reset();
}

int leakCheck()
{
    if (!__lsan_do_recoverable_leak_check)
        return -1;
    return __lsan_do_recoverable_leak_check() ? 1 : 0;
}

std::vector<CallRecord> callLog()
{
    return CallLog::instance().entries();
}

std::vector<std::string> callTexts()
{
    std::vector<std::string> out;
    for (const auto& r : CallLog::instance().entries())
        out.push_back(r.text());
    return out;
}

void clearCallLog()
{
    CallLog::instance().clear();
}

void captureLog(bool on)
{
    Logger::instance().setCapture(on);
}

std::vector<LogLine> capturedLog()
{
    return Logger::instance().captured();
}

void clearCapturedLog()
{
    Logger::instance().clearCaptured();
}

int setPortState(const std::string& port, api_port_status_t state, const std::string& actor)
{
    if (statusFromName(statusName(state)) != state)
        return API_ERR_INVAL;  // not one of the PORT_* values
    return outsideChange(
        port, actor, "qelsim:set-state",
        [state](FcPort& p)
        {
            p.status = state;
            return static_cast<int>(API_OK);
        });
}

const char* portStateName(api_port_status_t state)
{
    return statusName(state);
}

bool parsePortState(const std::string& text, api_port_status_t* state)
{
    std::string name;
    for (char c : text)
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (name.compare(0, 5, "PORT_") != 0)
        name = "PORT_" + name;
    auto s = statusFromName(name);
    if (s && state)
        *state = *s;
    return s.has_value();
}

int bumpLesb(
    const std::string& port, const std::string& counter, uint64_t amount, const std::string& actor)
{
    static const std::pair<const char*, uint64_t Lesb::*> kCounters[] = {
        {"linkFailures", &Lesb::linkFailures},
        {"lossOfSync", &Lesb::lossOfSync},
        {"lossOfSignal", &Lesb::lossOfSignal},
        {"primitiveSeqErrors", &Lesb::primitiveSeqErrors},
        {"invalidTxWords", &Lesb::invalidTxWords},
        {"crcErrors", &Lesb::crcErrors},
    };
    uint64_t Lesb::*field = nullptr;
    for (const auto& c : kCounters)
        if (counter == c.first)
            field = c.second;
    if (!field)
        return API_ERR_INVAL;
    return outsideChange(
        port, actor, "qelsim:bump-lesb",
        [&](FcPort& p) -> int
        {
            if (p.lesb.empty())
                p.lesb.push_back(Lesb{});
            Lesb& l = p.lesb.front();
            const uint64_t room = std::numeric_limits<uint64_t>::max() - l.*field;
            l.*field += amount < room ? amount : room;  // counters stop at their maximum
            l.sampleTime = static_cast<uint64_t>(std::time(nullptr));
            return API_OK;
        });
}

}  // namespace qelsim
