#include "ServerProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace e2e
{
namespace
{

std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace

CommandResult run(const std::vector<std::string>& argv, const std::string& input)
{
    int out[2], err[2], in[2];
    if (pipe(out) != 0 || pipe(err) != 0 || pipe(in) != 0)
        throw std::runtime_error("pipe failed");
    const pid_t pid = fork();
    if (pid == 0)
    {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        close(in[1]);
        close(out[0]);
        close(err[0]);
        std::vector<char*> args;
        for (const std::string& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    if (!input.empty() && write(in[1], input.data(), input.size()) < 0)
    {
    }
    close(in[1]);
    // Both streams are drained together so that neither pipe can fill and stall the child.
    CommandResult r;
    pollfd fds[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
    std::string* sinks[2] = {&r.out, &r.err};
    int open = 2;
    while (open > 0)
    {
        if (poll(fds, 2, -1) < 0)
        {
            if (errno == EINTR)
                continue;
            break;
        }
        for (int i = 0; i < 2; ++i)
        {
            if (fds[i].fd < 0 || fds[i].revents == 0)
                continue;
            char buf[4096];
            const ssize_t n = read(fds[i].fd, buf, sizeof buf);
            if (n > 0)
            {
                sinks[i]->append(buf, static_cast<size_t>(n));
            }
            else
            {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    waitpid(pid, &status, 0);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.output = r.out + r.err;
    return r;
}

ServerProcess::ServerProcess(
    const std::map<std::string, std::string>& users, const std::vector<std::string>& extraArgs)
{
    char tmpl[] = "/tmp/qel-e2e-XXXXXX";
    if (!mkdtemp(tmpl))
        throw std::runtime_error("mkdtemp failed");
    _dir = tmpl;
    const std::string passwd = _dir + "/passwd";
    for (const auto& u : users)
    {
        const CommandResult r = run({QEL_E2E_PASSWD, "-f", passwd, "add", u.first, "--generate"});
        if (r.exitCode != 0)
            throw std::runtime_error("qel-passwd failed: " + r.output);
        _passwords[u.first] = r.out.substr(0, r.out.find('\n'));
    }
    const std::string logPath = _dir + "/server.log";
    // Built before the fork: the child only execs. Its log goes to the file too (not to the
    // journal or syslog, as it would without a terminal).
    const std::string socket = _dir + "/cim.socket";
    std::vector<std::string> args = {QEL_E2E_SERVER, "--port",       "0",
                                     "--socket",     socket,         "--password-file",
                                     passwd,         "--log-target", "stderr"};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    const std::string state = statePath();
    const pid_t parent = getpid();
    _pid = fork();
    if (_pid == 0)
    {
        // A test that dies (a failed sanitizer check aborts it) takes its server along.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(127);
        const int fd = open(logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(fd, 1);
        dup2(fd, 2);
        setenv("QELSIM_ARRAY", QEL_E2E_ARRAY, 1);
        setenv("QELSIM_STATE", state.c_str(), 1);
        setenv("TMPDIR", _dir.c_str(), 1);  // where --demo keeps its files
        execv(QEL_E2E_SERVER, argv.data());
        _exit(127);
    }
    // The server prints its ports once it listens, then where its users come from;
    // sanitizer builds take a while to load.
    auto portAfter = [](const std::string& text, const std::string& scheme) -> unsigned short
    {
        const size_t at = text.find("listening on " + scheme + "://");
        const size_t end = at == std::string::npos ? at : text.find("/cimom", at);
        if (end == std::string::npos)
            return 0;
        return static_cast<unsigned short>(std::stoi(text.substr(text.rfind(':', end) + 1)));
    };
    for (int i = 0; i < 1200 && _port == 0; ++i)
    {
        const std::string text = readFile(logPath);
        // The last line of a start; a demo then prints its users and tour, and how to stop.
        const bool demo =
            std::find(extraArgs.begin(), extraArgs.end(), "--demo") != extraArgs.end();
        if (text.find(demo ? "Press Ctrl-C to stop." : "qel-cimserver: users from ") !=
            std::string::npos)
        {
            _port = portAfter(text, "http");
            _tlsPort = portAfter(text, "https");
            break;
        }
        int status;
        if (waitpid(_pid, &status, WNOHANG) == _pid)
        {
            _pid = -1;
            throw std::runtime_error("qel-cimserver exited at start:\n" + text);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    if (_port == 0)
        throw std::runtime_error("qel-cimserver did not start:\n" + readFile(logPath));
}

ServerProcess::~ServerProcess()
{
    stop();
    run({"/bin/rm", "-rf", _dir});
}

int ServerProcess::stop()
{
    if (_pid <= 0)
        return -1;
    kill(_pid, SIGTERM);
    int status = 0;
    waitpid(_pid, &status, 0);
    _pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ServerProcess::url(
    const std::string& user, const std::string& password, const std::string& nameSpace) const
{
    std::string auth = user.empty() ? "" : user + ":" + password + "@";
    return "http://" + auth + "127.0.0.1:" + std::to_string(_port) + "/" + nameSpace;
}

std::string ServerProcess::httpsUrl(
    const std::string& user, const std::string& password, const std::string& nameSpace) const
{
    std::string auth = user.empty() ? "" : user + ":" + password + "@";
    return "https://" + auth + "localhost:" + std::to_string(_tlsPort) + "/" + nameSpace;
}

std::string ServerProcess::log() const
{
    return readFile(_dir + "/server.log");
}

// The simulator keeps the audit log next to its state file.
std::string ServerProcess::auditLog() const
{
    return readFile(statePath() + ".audit.jsonl");
}

}  // namespace e2e
