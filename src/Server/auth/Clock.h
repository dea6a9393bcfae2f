// The time source of everything in authentication that depends on time (remembered
// credentials, throttling). Tests pass their own and move it forward by hand.
#ifndef QEL_SERVER_AUTH_CLOCK_H
#define QEL_SERVER_AUTH_CLOCK_H

#include <chrono>
#include <functional>

namespace qel
{
namespace auth
{

using TimePoint = std::chrono::steady_clock::time_point;
using Clock = std::function<TimePoint()>;

inline Clock steadyClock()
{
    return [] { return std::chrono::steady_clock::now(); };
}

}  // namespace auth
}  // namespace qel

#endif
