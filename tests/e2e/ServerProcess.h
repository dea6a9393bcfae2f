// A qel-cimserver child process on a free loopback port with its own users, socket and
// simulator state, stopped with SIGTERM like Ctrl-C would.
#ifndef QEL_TESTS_E2E_SERVERPROCESS_H
#define QEL_TESTS_E2E_SERVERPROCESS_H

#include <map>
#include <vector>
#include <string>
#include <sys/types.h>

namespace e2e
{

struct CommandResult
{
    int exitCode = -1;
    std::string out;     // standard output
    std::string err;     // standard error
    std::string output;  // both: out followed by err
};

// Runs a program (no shell) and collects what it prints.
CommandResult run(const std::vector<std::string>& argv, const std::string& input = "");

class ServerProcess
{
public:
    // Users and their roles in the demo array: each gets a generated password.
    // `extraArgs` follow the usual options (free port, own socket and password file), e.g.
    // {"--pull-max-contexts-per-user", "2"}; with --tls-cert or --demo, pass
    // "--https-port 0" too and the HTTPS port is read as well.
    explicit ServerProcess(
        const std::map<std::string, std::string>& users,
        const std::vector<std::string>& extraArgs = {});
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    // Sends SIGTERM and waits; returns the exit status and leaves the log readable.
    int stop();

    unsigned short port() const { return _port; }
    unsigned short tlsPort() const { return _tlsPort; }  // 0: no HTTPS
    const std::string& password(const std::string& user) const { return _passwords.at(user); }
    // The server's URL for a user and namespace, up to the namespace.
    std::string
    url(const std::string& user, const std::string& password,
        const std::string& nameSpace = "root/qel") const;
    // The same over HTTPS, naming the server "localhost" as its certificate does.
    std::string httpsUrl(
        const std::string& user, const std::string& password,
        const std::string& nameSpace = "root/qel") const;
    std::string log() const;
    const std::string& dir() const { return _dir; }
    // The simulated array's live state and the audit log of its changes, private to this server.
    std::string statePath() const { return _dir + "/state.json"; }
    std::string auditLog() const;

private:
    std::string _dir;
    pid_t _pid = -1;
    unsigned short _port = 0;
    unsigned short _tlsPort = 0;
    std::map<std::string, std::string> _passwords;
};

}  // namespace e2e

#endif
