// Sessions, authorization, the module-wide semaphore and the library's output.
#include "qelapi.h"

#include "sim/access.h"
#include "sim/api_call.h"
#include "sim/call_log.h"
#include "sim/logger.h"
#include "sim/semaphore.h"
#include "sim/simulator.h"
#include "sim/stats.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace qelsim;

namespace
{

std::string vformat(const char* fmt, va_list ap)
{
    va_list copy;
    va_copy(copy, ap);
    char small[512];
    int n = std::vsnprintf(small, sizeof small, fmt, copy);
    va_end(copy);
    if (n < 0)
        return std::string("(bad format) ") + fmt;
    if (static_cast<size_t>(n) < sizeof small)
        return std::string(small, static_cast<size_t>(n));
    std::string out(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(&out[0], out.size(), fmt, ap);
    out.resize(static_cast<size_t>(n));
    return out;
}

}  // namespace

int api_qelOpenForCimserver(const char* user)
{
    int rc = runCall(
        Call::qelOpenForCimserver, CallArgs().str(user), nullptr,
        [&]
        {
            if (!user)
                return static_cast<int>(API_ERR_INVAL);
            return Simulator::instance().read([&](const Model& m) { return openSession(m, user); });
        });
    (rc == API_OK ? stats().sessionsOpened : stats().sessionsRefused)++;
    return rc;
}

int api_authorizeCIMUser(const char* user, const char* addr, const char* key)
{
    return runCall(
        Call::authorizeCIMUser, CallArgs().str(user).str(addr).str(key), nullptr,
        [&]
        {
            if (!user || !addr || !key)
                return static_cast<int>(API_ERR_INVAL);
            return Simulator::instance().read([&](const Model& m)
                                              { return authorize(m, user, addr, key); });
        });
}

int cim_sem_wait(void)
{
    int rc = runCall(
        Call::semWait, CallArgs(), nullptr,
        []
        {
            ApiSemaphore::instance().wait();
            return static_cast<int>(API_OK);
        });
    (rc == API_OK ? stats().semWaits : stats().semFailedWaits)++;
    return rc;
}

int cim_sem_post(void)
{
    return runCall(
        Call::semPost, CallArgs(), nullptr,
        []
        {
            if (!ApiSemaphore::instance().post())
            {
                stats().semUnbalancedPosts++;
                return static_cast<int>(API_ERR_INVAL);
            }
            stats().semPosts++;
            return static_cast<int>(API_OK);
        });
}

void log_message(int level, const char* fmt, ...)
{
    if (!fmt)
        return;
    // The array's own log settings apply from the first line on.
    Simulator::instance().ensureAttached();
    Logger& log = Logger::instance();
    if (!log.wants(level))
        return;
    va_list ap;
    va_start(ap, fmt);
    std::string text = vformat(fmt, ap);
    va_end(ap);
    log.write(level, text);
}

void qel_print_no_evt(const char* fmt, ...)
{
    if (!fmt)
        return;
    va_list ap;
    va_start(ap, fmt);
    std::string text = vformat(fmt, ap);
    va_end(ap);
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

void qel_panic(const char* fmt, ...)
{
    std::string text = "(no message)\n";
    if (fmt)
    {
        va_list ap;
        va_start(ap, fmt);
        text = vformat(fmt, ap);
        va_end(ap);
    }
    std::fputs(("qel_panic: " + text).c_str(), stderr);
    std::fflush(stderr);
    std::abort();
}
