// qel-cimserver: the CIM server on the simulated array, in the foreground. Its settings are
// the built-in defaults, then the configuration file, then the command line. SIGTERM or
// SIGINT stops it cleanly: requests drain, providers are terminated (the simulator keeps
// its state file), connections close. SIGHUP re-reads the password file and the HTTPS
// certificate, key and trust store.
//
// Exit codes: 0 stopped by a signal, 1 cannot start (schema, providers, password file...),
// 2 bad settings: command line, a listener that cannot be opened (address in use), an
// unreadable or mismatched certificate and key.
#include "DemoCertificate.h"
#include "DemoUsers.h"
#include "DescriptorLimit.h"
#include "HeapTuning.h"
#include "LogTarget.h"
#include "ServerCommandLine.h"
#include "ServerLayout.h"
#include "ServiceNotifier.h"
#include "WireServer.h"

#include <Server/auth/CertificateMap.h>
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
    ServerCommandLine& settings, const char* option, const char* variable, std::string& value)
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
    d.server.http.tlsPort = 5989;  // used once there is a certificate
    d.server.passwordFile = qel::auth::kDefaultPasswordFile;
    fromEnvironment(d, "password-file", "QEL_PASSWORD_FILE", d.server.passwordFile);
    d.server.certificateMap = qel::auth::kDefaultCertificateMap;
    fromEnvironment(d, "cert-map", "QEL_CERTIFICATE_MAP", d.server.certificateMap);
    d.arrayFile = layout.demoArray;
    fromEnvironment(d, "array", "QELSIM_ARRAY", d.arrayFile);
    fromEnvironment(d, "array-state", "QELSIM_STATE", d.arrayState);
    d.configFile = layout.configFile;
    return d;
}

// Where demo mode keeps the files it makes for the run.
std::string demoDirectory()
{
    const char* tmp = std::getenv("TMPDIR");
    const std::string dir =
        std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-cimserver-" + std::to_string(::getuid());
    ::mkdir(dir.c_str(), 0700);
    return dir;
}

// Users, passwords and (unless given) a certificate for the demo. Throws what went wrong.
void prepareDemo(ServerCommandLine& cmd, std::vector<DemoUser>& users)
{
    const std::string dir = demoDirectory();
    if (!cmd.given.count("password-file"))
        cmd.server.passwordFile = dir + "/passwd";
    auto& http = cmd.server.http;
    users = createDemoUsers(cmd.arrayFile, cmd.server.passwordFile);
    if (http.tlsPort >= 0 && http.tls.certificateFile.empty())
    {
        http.tls.certificateFile = dir + "/demo-cert.pem";
        http.tls.keyFile = dir + "/demo-key.pem";
        createDemoCertificate(
            http.tls.certificateFile, http.tls.keyFile, {"localhost", "127.0.0.1", "::1"});
        // Made for this machine's own clients: HTTPS stays on loopback unless told.
        if (!cmd.given.count("https-bind"))
            http.tlsBindAddress = "127.0.0.1";
    }
}

// Every connection holds a descriptor: the connection limit must fit under the limit.
void fitConnectionsToDescriptors(qel::http::HttpServerOptions& http)
{
    const size_t limit = raiseDescriptorLimit();
    if (limit == 0 || limit >= http.maxConnections + kReservedDescriptors)
        return;
    const size_t fits = limit > 2 * kReservedDescriptors ? limit - kReservedDescriptors : limit / 2;
    std::cerr << "qel-cimserver: warning: only " << limit << " open files allowed (ulimit -n): "
              << "at most " << fits << " connections instead of " << http.maxConnections << "\n";
    http.maxConnections = fits;
}

void printTour(WireServer& server, const ServerCommandLine& cmd, const std::vector<DemoUser>& users)
{
    const auto& http = cmd.server.http;
    std::string portPath;
    try
    {
        portPath = firstPortPath(server, users.front().name);
    }
    catch (const std::exception& e)
    {
        std::cout << "\n(no tour: " << e.what() << ")\n";
        return;
    }
    if (http.tlsPort >= 0)
    {
        TourEndpoint at{
            "https", "localhost", server.tlsPort(), "-cacert " + http.tls.certificateFile};
        std::cout << "\nTry, over HTTPS (wbemcli -noverify also works, without checking the "
                     "server):\n"
                  << wbemcliTour(users, at, portPath);
    }
    if (http.port >= 0)
    {
        TourEndpoint at{"http", http.bindAddress, server.tcpPort(), ""};
        std::cout << "\nOr over plain HTTP:\n" << wbemcliTour(users, at, portPath);
    }
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
        try
        {
            prepareDemo(cmd, demoUsers);
        }
        catch (const std::exception& e)
        {
            return announce.fail(e.what());
        }
    }
    fitConnectionsToDescriptors(cmd.server.http);
    tuneHeap();

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
    catch (const qel::http::TlsConfigError& e)
    {
        announce.fail(std::string("cannot start: ") + e.what());
        return 2;
    }
    catch (const qel::http::ListenerError& e)
    {
        announce.fail(std::string("cannot start: ") + e.what());
        return 2;
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
    if (http.tlsPort >= 0)
    {
        const std::string https = "listening on https://" + http.tlsBindAddress + ":" +
                                  std::to_string(server.tlsPort()) + "/cimom";
        announce.say(https);
        status += (status.empty() ? "" : ", ") + https;
    }
    if (http.port >= 0 && !isLoopbackAddress(http.bindAddress))
    {
        const std::string warning = "warning: plain HTTP listens on " + http.bindAddress +
                                    ": passwords cross the network in clear";
        std::cerr << "qel-cimserver: " << warning << "\n";
        Pegasus::ServerLog::warning(warning);
    }
    if (!http.socketPath.empty())
    {
        announce.say("local socket " + http.socketPath);
        status += (status.empty() ? "" : ", ") + std::string("local socket ") + http.socketPath;
    }
    announce.say("users from " + cmd.server.passwordFile);
    if (!demoUsers.empty())
    {
        if (http.tlsPort >= 0)
            std::cout << "qel-cimserver: HTTPS certificate " << http.tls.certificateFile << "\n";
        std::cout << "\nDemo users (passwords generated for this run):\n";
        for (const DemoUser& u : demoUsers)
            std::cout << "  " << u.name << " (" << u.role << "): " << u.password << "\n";
        printTour(server, cmd, demoUsers);
    }
    // A demo is run by hand: its output ends with how to stop it wherever it goes.
    if (::isatty(STDOUT_FILENO) || !demoUsers.empty())
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
