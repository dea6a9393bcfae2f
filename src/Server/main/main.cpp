// qel-cimserver: the CIM server on the simulated array, in the foreground. Ctrl-C or
// SIGTERM stops it cleanly: requests drain, providers are terminated (the simulator keeps
// its state file), connections close.
//
// Exit codes: 0 stopped by a signal, 1 cannot start (schema, providers, password file...),
// 2 bad settings: command line, a listener that cannot be opened (address in use), an
// unreadable or mismatched certificate and key.
#include "DemoCertificate.h"
#include "DemoUsers.h"
#include "DescriptorLimit.h"
#include "ServerCommandLine.h"
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

ServerCommandLine buildDefaults()
{
    ServerCommandLine d;
    d.server.core.mofFiles = {QEL_DEFAULT_SCHEMA};
    d.server.core.defaultNamespace = "root/qel";
    d.server.core.providerDirectories = {QEL_DEFAULT_PROVIDER_DIRS};
    d.server.http.socketPath = qel::client::defaultLocalSocketPath();
    d.server.http.tlsPort = 5989;  // used once there is a certificate
    const char* pw = std::getenv("QEL_PASSWORD_FILE");
    d.server.passwordFile = pw && *pw ? pw : qel::auth::kDefaultPasswordFile;
    const char* map = std::getenv("QEL_CERTIFICATE_MAP");
    d.server.certificateMap = map && *map ? map : qel::auth::kDefaultCertificateMap;
    d.arrayFile = QEL_DEFAULT_ARRAY;
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

// Users, passwords and (unless given) a certificate for the demo. False after saying why.
bool prepareDemo(ServerCommandLine& cmd, std::vector<DemoUser>& users)
{
    const std::string dir = demoDirectory();
    if (!cmd.given.count("password-file"))
        cmd.server.passwordFile = dir + "/passwd";
    auto& http = cmd.server.http;
    try
    {
        users = createDemoUsers(std::getenv("QELSIM_ARRAY"), cmd.server.passwordFile);
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
    catch (const std::exception& e)
    {
        std::cerr << "qel-cimserver: " << e.what() << "\n";
        return false;
    }
    return true;
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

}  // namespace

int main(int argc, char** argv)
{
    ServerCommandLine cmd;
    try
    {
        cmd = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc), buildDefaults());
    }
    catch (const CommandLineError& e)
    {
        std::cerr << "qel-cimserver: " << e.what() << "\n" << usageText();
        return 2;
    }
    if (cmd.help)
    {
        std::cout << usageText();
        return 0;
    }
    Pegasus::ServerLog::setThreshold(cmd.logLevel);

    // The simulated array is chosen through its environment before any provider loads.
    if (cmd.given.count("array") || !std::getenv("QELSIM_ARRAY"))
        ::setenv("QELSIM_ARRAY", cmd.arrayFile.c_str(), 1);

    std::vector<DemoUser> demoUsers;
    if (cmd.demo && !prepareDemo(cmd, demoUsers))
        return 1;
    fitConnectionsToDescriptors(cmd.server.http);

    // Signals are taken by sigwait below, never by a worker thread.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    WireServer server(cmd.server);
    try
    {
        server.start();
    }
    catch (const qel::http::TlsConfigError& e)
    {
        std::cerr << "qel-cimserver: cannot start: " << e.what() << "\n";
        return 2;
    }
    catch (const qel::http::ListenerError& e)
    {
        std::cerr << "qel-cimserver: cannot start: " << e.what() << "\n";
        return 2;
    }
    catch (const Pegasus::Exception& e)
    {
        std::cerr << "qel-cimserver: cannot start: " << e.getMessage() << "\n";
        return 1;
    }
    catch (const std::exception& e)
    {
        std::cerr << "qel-cimserver: cannot start: " << e.what() << "\n";
        return 1;
    }

    const auto& http = cmd.server.http;
    std::cout << "qel-cimserver: serving the array described by " << std::getenv("QELSIM_ARRAY")
              << "\n";
    if (http.port >= 0)
        std::cout << "qel-cimserver: listening on http://" << http.bindAddress << ":"
                  << server.tcpPort() << "/cimom\n";
    if (http.tlsPort >= 0)
        std::cout << "qel-cimserver: listening on https://" << http.tlsBindAddress << ":"
                  << server.tlsPort() << "/cimom\n";
    if (http.port >= 0 && !isLoopbackAddress(http.bindAddress))
        std::cerr << "qel-cimserver: warning: plain HTTP listens on " << http.bindAddress
                  << ": passwords cross the network in clear\n";
    if (!http.socketPath.empty())
        std::cout << "qel-cimserver: local socket " << http.socketPath << "\n";
    std::cout << "qel-cimserver: users from " << cmd.server.passwordFile << "\n";
    if (!demoUsers.empty())
    {
        if (http.tlsPort >= 0)
            std::cout << "qel-cimserver: HTTPS certificate " << http.tls.certificateFile << "\n";
        std::cout << "\nDemo users (passwords generated for this run):\n";
        for (const DemoUser& u : demoUsers)
            std::cout << "  " << u.name << " (" << u.role << "): " << u.password << "\n";
        printTour(server, cmd, demoUsers);
    }
    std::cout << "\nPress Ctrl-C to stop.\n" << std::flush;

    int signal = 0;
    sigwait(&stopSignals, &signal);
    std::cout << "\nqel-cimserver: " << (signal == SIGINT ? "interrupted" : "terminated")
              << ", stopping...\n"
              << std::flush;
    server.stop();
    std::cout << "qel-cimserver: stopped.\n";
    return 0;
}
