// Tells systemd (Type=notify) where the server is in its life: ready once it listens,
// reloading around SIGHUP, stopping on SIGTERM. Without $NOTIFY_SOCKET (not started by
// systemd) every call does nothing.
#ifndef QEL_SERVER_MAIN_SERVICENOTIFIER_H
#define QEL_SERVER_MAIN_SERVICENOTIFIER_H

#include <string>

namespace qel
{
namespace server
{

class ServiceNotifier
{
public:
    // READY=1, with a one-line STATUS for systemctl status.
    void ready(const std::string& status);
    // RELOADING=1 with the monotonic time systemd expects; ready() ends the reload.
    void reloading();
    void stopping();

private:
    void send(const std::string& state);
};

}  // namespace server
}  // namespace qel

#endif
