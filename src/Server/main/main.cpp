// qel-cimserver: the CIM server on the simulated array, in the foreground. Its settings are
// the built-in defaults, then the configuration file, then the command line. SIGTERM or
// SIGINT stops it cleanly: requests drain, providers are terminated (the simulator keeps
// its state file), connections close. SIGHUP re-reads the password file.
#include "DemoUsers.h"
#include "LogTarget.h"
#include "ServerCommandLine.h"
#include "ServerLayout.h"
#include "ServiceNotifier.h"
#include "WireServer.h"

#include <Server/auth/PasswordFile.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/ServerLog.h>

#include <Pegasus/Common/Exception.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qel::server;

namespace
{

// A default that an environment variable replaces, recorded as such for --print-config.
void fromEnvironment(
    ServerCommandLine& settings,
    const char* option,
    const char* variable,
    std::string& value)
{
    const char* text = std::getenv(variable);
    if (text == nullptr || *text == '\0')
        return;
    value = text;
    SettingSource source;
    source.kind = SettingSource::Kind::Environment;
    source.where = std::string("$") + variable;
    source.text = text;
    settings.sources[option] = {source};
}

ServerCommandLine buildDefaults(const ServerLayout& layout)
{
    ServerCommandLine d;
    d.server.core.mofFiles = layout.schema;
    d.server.core.defaultNamespace = "root/qel";
    d.server.core.providerDirectories = layout.providerDirectories;
    d.server.requireProviderModules = true;
    d.server.http.socketPath = qel::client::kDefaultLocalSocketPath;
    fromEnvironment(d, "socket", "QEL_CIMXML_SOCKET", d.server.http.socketPath);
    d.server.passwordFile = qel::auth::kDefaultPasswordFile;
    fromEnvironment(d, "password-file", "QEL_PASSWORD_FILE", d.server.passwordFile);
    d.arrayFile = layout.demoArray;
    fromEnvironment(d, "array", "QELSIM_ARRAY", d.arrayFile);
    fromEnvironment(d, "array-state", "QELSIM_STATE", d.arrayState);
    d.configFile = layout.configFile;
    return d;
}

std::string demoPasswordFile()
{
    const char* tmp = std::getenv("TMPDIR");
    const std::string dir =
        std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-cimserver-" + std::to_string(::getuid());
    ::mkdir(dir.c_str(), 0700);
    return dir + "/passwd";
}

// The simulated array is chosen through its environment before any provider loads.
void chooseArray(const ServerCommandLine& settings)
{
    ::setenv("QELSIM_ARRAY", settings.arrayFile.c_str(), 1);
    if (settings.arrayState.empty())
        ::unsetenv("QELSIM_STATE");
    else
        ::setenv("QELSIM_STATE", settings.arrayState.c_str(), 1);
}

// What the server says about its life goes to standard output; when the log goes
// elsewhere and standard output is not kept (no terminal, no journal), to the log too.
class Announcer
{
public:
    explicit Announcer(bool toLog) : _toLog(toLog) {}
    void say(const std::string& text) const
    {
        std::cout << "qel-cimserver: " << text << "\n" << std::flush;
        if (_toLog)
            Pegasus::ServerLog::info(text);
    }
    int fail(const std::string& text) const
    {
        std::cerr << "qel-cimserver: " << text << "\n";
        if (_toLog)
            Pegasus::ServerLog::error(text);
        return 1;
    }

private:
    bool _toLog;
};

}  // namespace

int main(int argc, char** argv)
{
    const ServerCommandLine defaults = buildDefaults(serverLayout(ownExecutable()));
    ServerCommandLine cmd;
    try
    {
        cmd = loadServerSettings(std::vector<std::string>(argv + 1, argv + argc), defaults);
    }
    catch (const CommandLineError& e)
    {
        std::cerr << "qel-cimserver: " << e.what() << "\n";
        return 2;
    }
    if (cmd.help)
    {
        std::cout << usageText(defaults);
        return 0;
    }
    if (cmd.printConfig)
    {
        std::cout << settingsReport(cmd);
        return 0;
    }

    Pegasus::ServerLog::setThreshold(cmd.logLevel);
    Pegasus::ServerLog::setAccessLog(cmd.accessLog);
    const LogSurroundings around = currentLogSurroundings();
    const LogTarget target = resolveLogTarget(cmd.logTarget, around);
    installLogTarget(target);
    const Announcer announce(target != LogTarget::Stderr && !around.stderrIsJournal);

    chooseArray(cmd);
    std::vector<DemoUser> demoUsers;
    if (cmd.demo)
    {
        if (!cmd.given.count("password-file"))
            cmd.server.passwordFile = demoPasswordFile();
        try
        {
            demoUsers = createDemoUsers(cmd.arrayFile, cmd.server.passwordFile);
        }
        catch (const std::exception& e)
        {
            return announce.fail(e.what());
        }
    }

    // Signals are taken by sigwait below, never by a worker thread.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    WireServer server(cmd.server);
    try
    {
        server.start();
    }
    catch (const Pegasus::Exception& e)
    {
        return announce.fail("cannot start: " + std::string(e.getMessage().getCString()));
    }
    catch (const std::exception& e)
    {
        return announce.fail(std::string("cannot start: ") + e.what());
    }

    const auto& http = cmd.server.http;
    std::string status;
    announce.say("serving the array described by " + cmd.arrayFile);
    if (http.port >= 0)
    {
        status = "listening on http://" + http.bindAddress + ":" +
                 std::to_string(server.tcpPort()) + "/cimom";
        announce.say(status);
    }
    if (!http.socketPath.empty())
    {
        announce.say("local socket " + http.socketPath);
        status += (status.empty() ? "" : ", ") + std::string("local socket ") + http.socketPath;
    }
    announce.say("users from " + cmd.server.passwordFile);
    if (!demoUsers.empty())
    {
        std::cout << "\nDemo users (passwords generated for this run):\n";
        for (const DemoUser& u : demoUsers)
            std::cout << "  " << u.name << " (" << u.role << "): " << u.password << "\n";
        if (http.port >= 0)
            std::cout << "\nTry:\n" << wbemcliTour(demoUsers, http.bindAddress, server.tcpPort());
    }
    if (::isatty(STDOUT_FILENO))
        std::cout << "\nPress Ctrl-C to stop.\n";
    std::cout << std::flush;

    ServiceNotifier notifier;
    notifier.ready(status);
    int signal = 0;
    for (;;)
    {
        sigwait(&signals, &signal);
        if (signal != SIGHUP)
            break;
        notifier.reloading();
        server.reload();
        notifier.ready(status);
    }
    notifier.stopping();
    std::cout << "\n";
    announce.say(std::string(signal == SIGINT ? "interrupted" : "terminated") + ", stopping...");
    server.stop();
    announce.say("stopped.");
    return 0;
}
