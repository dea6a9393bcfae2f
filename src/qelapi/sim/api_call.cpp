#include "api_call.h"

#include "call_log.h"
#include "calls.h"
#include "semaphore.h"
#include "simulator.h"
#include "stats.h"

namespace qelsim
{

int runCall(
    const char* name,
    std::vector<std::string> args,
    const api_evtparam_t* evt,
    const std::function<int()>& body)
{
    const CallInfo* info = findCall(name);
    if (info && info->bracketed && !ApiSemaphore::instance().held())
        stats().unbracketedCalls++;
    int rc = 0;
    bool faulted = info && info->faultable && Simulator::instance().takeFault(name, &rc);
    if (!faulted)
        rc = body();
    CallRecord r;
    r.call = name;
    r.args = std::move(args);
    if (evt)
    {
        r.hasEvent = true;
        r.event = *evt;
    }
    r.result = rc;
    CallLog::instance().add(std::move(r));
    return rc;
}

}  // namespace qelsim
