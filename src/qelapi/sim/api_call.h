// The frame of every library call: an injected fault answers instead of the
// call, list reads and changes made outside the semaphore are counted, and the
// call is recorded with its arguments and result.
#ifndef QELSIM_API_CALL_H
#define QELSIM_API_CALL_H

#include "qelapi.h"

#include <functional>
#include <string>
#include <vector>

namespace qelsim
{

int runCall(
    const char* name,
    std::vector<std::string> args,
    const api_evtparam_t* evt,
    const std::function<int()>& body);

}  // namespace qelsim

#endif
