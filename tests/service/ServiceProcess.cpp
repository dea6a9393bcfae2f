#include "ServiceProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace service
{

ServiceProcess::ServiceProcess(
    const std::string& dir, const std::string& program, const std::vector<std::string>& args,
    const std::vector<std::string>& environment)
    : _logPath(dir + "/service.log"), _notifyPath(dir + "/notify")
{
    _notifyFd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (_notifyPath.size() >= sizeof addr.sun_path)
        throw std::runtime_error("notification socket path too long: " + _notifyPath);
    _notifyPath.copy(addr.sun_path, _notifyPath.size());
    ::unlink(_notifyPath.c_str());
    if (::bind(_notifyFd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
        throw std::runtime_error("cannot bind " + _notifyPath);

    const pid_t parent = ::getpid();
    _pid = ::fork();
    if (_pid == 0)
    {
        // A test that dies takes its server along.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent)
            ::_exit(127);
        const int fd = ::open(_logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(fd, 1);
        ::dup2(fd, 2);
        ::setenv("NOTIFY_SOCKET", _notifyPath.c_str(), 1);
        for (const std::string& variable : environment)
            ::putenv(const_cast<char*>(variable.c_str()));
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(program.c_str()));
        for (const std::string& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
}

ServiceProcess::~ServiceProcess()
{
    if (_pid > 0)
    {
        ::kill(_pid, SIGKILL);
        ::waitpid(_pid, nullptr, 0);
    }
    ::close(_notifyFd);
    ::unlink(_notifyPath.c_str());
}

std::string ServiceProcess::nextNotification(int seconds)
{
    pollfd p{_notifyFd, POLLIN, 0};
    if (::poll(&p, 1, seconds * 1000) <= 0)
        return "";
    char buf[4096];
    const ssize_t n = ::recv(_notifyFd, buf, sizeof buf, 0);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

bool ServiceProcess::waitForLog(const std::string& text, int seconds)
{
    // The child writes its log on its own schedule: looked at ten times a second.
    for (int i = 0; i < seconds * 10; ++i)
    {
        if (log().find(text) != std::string::npos)
            return true;
        int status;
        if (_pid > 0 && ::waitpid(_pid, &status, WNOHANG) == _pid)
        {
            _pid = -1;
            _status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return log().find(text) != std::string::npos;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

void ServiceProcess::signal(int number)
{
    if (_pid > 0)
        ::kill(_pid, number);
}

int ServiceProcess::wait()
{
    if (_pid <= 0)
        return _status;
    int status = 0;
    ::waitpid(_pid, &status, 0);
    _pid = -1;
    _status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return _status;
}

std::string ServiceProcess::log() const
{
    std::ifstream in(_logPath);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace service
