// qel-cimserver: the CIM server on the simulated array, in the foreground. Ctrl-C or
// SIGTERM stops it cleanly: requests drain, providers are terminated (the simulator keeps
// its state file), connections close.
#include "DemoUsers.h"
#include "ServerCommandLine.h"
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

ServerCommandLine buildDefaults()
{
    ServerCommandLine d;
    d.server.core.mofFiles = {QEL_DEFAULT_SCHEMA};
    d.server.core.defaultNamespace = "root/qel";
    d.server.core.providerDirectories = {QEL_DEFAULT_PROVIDER_DIRS};
    d.server.http.socketPath = qel::client::defaultLocalSocketPath();
    const char* pw = std::getenv("QEL_PASSWORD_FILE");
    d.server.passwordFile = pw && *pw ? pw : qel::auth::kDefaultPasswordFile;
    d.arrayFile = QEL_DEFAULT_ARRAY;
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
    if (cmd.demo)
    {
        if (!cmd.given.count("password-file"))
            cmd.server.passwordFile = demoPasswordFile();
        try
        {
            demoUsers = createDemoUsers(std::getenv("QELSIM_ARRAY"), cmd.server.passwordFile);
        }
        catch (const std::exception& e)
        {
            std::cerr << "qel-cimserver: " << e.what() << "\n";
            return 1;
        }
    }

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
    if (!http.socketPath.empty())
        std::cout << "qel-cimserver: local socket " << http.socketPath << "\n";
    std::cout << "qel-cimserver: users from " << cmd.server.passwordFile << "\n";
    if (!demoUsers.empty())
    {
        std::cout << "\nDemo users (passwords generated for this run):\n";
        for (const DemoUser& u : demoUsers)
            std::cout << "  " << u.name << " (" << u.role << "): " << u.password << "\n";
        if (http.port >= 0)
            std::cout << "\nTry:\n" << wbemcliTour(demoUsers, http.bindAddress, server.tcpPort());
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
