#include "ServiceNotifier.h"

#include <systemd/sd-daemon.h>

#include <ctime>

namespace qel
{
namespace server
{

void ServiceNotifier::send(const std::string& state)
{
    // 0: keep $NOTIFY_SOCKET, which every later notification needs as well.
    sd_notify(0, state.c_str());
}

void ServiceNotifier::ready(const std::string& status)
{
    send("READY=1\nSTATUS=" + status);
}

void ServiceNotifier::reloading()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const unsigned long long usec =
        static_cast<unsigned long long>(now.tv_sec) * 1000000ull + now.tv_nsec / 1000;
    send("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(usec));
}

void ServiceNotifier::stopping()
{
    send("STOPPING=1");
}

}  // namespace server
}  // namespace qel
