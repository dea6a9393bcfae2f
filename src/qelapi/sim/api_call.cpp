#include "api_call.h"

#include "semaphore.h"
#include "simulator.h"
#include "stats.h"

namespace qelsim
{

bool callFaulted(const CallInfo& call, int* rc)
{
    if (call.bracketed && !ApiSemaphore::instance().held())
        stats().unbracketedCalls++;
    return call.faultable && Simulator::instance().takeFault(call.name, rc);
}

}  // namespace qelsim
