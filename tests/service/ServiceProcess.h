// qel-cimserver started the way a service manager starts it: arguments and environment of
// the test's choosing, both output streams in a log file, and a notification socket
// ($NOTIFY_SOCKET) that collects what it tells systemd.
#ifndef QEL_TESTS_SERVICE_SERVICEPROCESS_H
#define QEL_TESTS_SERVICE_SERVICEPROCESS_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace service
{

class ServiceProcess
{
public:
    // Starts `program args...` with `environment` ("NAME=value") added to the test's own.
    ServiceProcess(
        const std::string& dir, const std::string& program, const std::vector<std::string>& args,
        const std::vector<std::string>& environment = {});
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    // The next notification (e.g. "READY=1\nSTATUS=..."), "" if none came in `seconds`.
    std::string nextNotification(int seconds = 120);
    // Waits until the log holds `text`; false if the process ended first.
    bool waitForLog(const std::string& text, int seconds = 120);
    void signal(int number);
    // Waits for the end; the exit status, or 128 + the signal that ended it.
    int wait();
    std::string log() const;

private:
    std::string _logPath;
    std::string _notifyPath;
    int _notifyFd = -1;
    pid_t _pid = -1;
    int _status = -1;  // once it ended
};

}  // namespace service

#endif
