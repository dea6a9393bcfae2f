// The frame of every library call: an injected fault answers instead of the
// call, list reads and changes made outside the semaphore are counted, and the
// call is recorded with its arguments and result.
#ifndef QELSIM_API_CALL_H
#define QELSIM_API_CALL_H

#include "call_log.h"
#include "calls.h"
#include "qelapi.h"

namespace qelsim
{

// Counts an unbracketed call and looks for an injected fault: true with *rc set
// when the fault answers instead of the call.
bool callFaulted(const CallInfo& call, int* rc);

// Runs body() unless a fault answers, and records the call. A template, so the
// frame costs no std::function and no allocation.
template <class Body>
int runCall(Call id, const CallArgs& args, const api_evtparam_t* evt, Body&& body)
{
    const CallInfo& call = callInfo(id);
    int rc = 0;
    if (!callFaulted(call, &rc))
        rc = body();
    CallLog::instance().add(call.name, args, evt, rc);
    return rc;
}

}  // namespace qelsim

#endif
