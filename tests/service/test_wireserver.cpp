// The server assembly as a service needs it: a start refused when a registered provider
// module is missing, and reload() re-reading the password file while clients stay
// connected and keep being served.
#include "KeptAliveConnection.h"
#include "WireTestSupport.h"

#include <Server/core/ServerLog.h>
#include <Server/main/WireServer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

using namespace qel::server;

namespace
{

std::vector<std::string> providerDirectories()
{
    std::vector<std::string> dirs;
    std::istringstream list(QEL_TEST_PROVIDER_DIRS);
    std::string dir;
    while (std::getline(list, dir, ':'))
        dirs.push_back(dir);
    return dirs;
}

WireServerOptions serverOptions(const std::string& passwordFile)
{
    WireServerOptions o;
    o.core.mofFiles = {QEL_TEST_SCHEMA};
    o.core.defaultNamespace = "root/qel";
    o.core.providerDirectories = providerDirectories();
    o.core.workerThreads = 4;
    o.http.port = 0;
    o.http.socketPath.clear();
    o.passwordFile = passwordFile;
    return o;
}

// Lines of the server log while it lives.
class LogLines
{
public:
    LogLines()
        : _previous(Pegasus::ServerLog::setSink(
              [this](Pegasus::LogLevel, const std::string& line)
              {
                  std::lock_guard<std::mutex> lock(_mutex);
                  _text += line + "\n";
              }))
    {
    }
    ~LogLines() { Pegasus::ServerLog::setSink(_previous); }
    std::string text() const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _text;
    }

private:
    mutable std::mutex _mutex;
    std::string _text;
    Pegasus::ServerLog::Sink _previous;
};

std::string enumerate(const std::string& user, const std::string& password)
{
    return wiretest::cimPost(wiretest::enumerateNamesBody(), wiretest::basicAuth(user, password));
}

class WireServerServiceTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ::setenv("QELSIM_ARRAY", QEL_TEST_ARRAY, 1);
        ::setenv("QELSIM_STATE", "none", 1);
    }
};

TEST_F(WireServerServiceTest, RefusesToStartWithoutARegisteredModule)
{
    wiretest::TempPasswordFile passwords;
    LogLines log;  // keeps the core's start and stop lines out of the test output
    const std::vector<std::string> all = providerDirectories();
    ASSERT_EQ(all.size(), 2u) << "the two modules are built in folders of their own";
    struct Case
    {
        const char* what;
        std::vector<std::string> dirs;
        bool required;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"both modules", all, true, ""},
        {"no module",
         {passwords.dir()},
         true,
         "provider-dir: libQEL_FCPortProvider.so (provider module QEL_FCPortProviderModule) is "
         "in none of: " +
             passwords.dir()},
        {"one module short",
         {all[0]},
         true,
         "provider-dir: libQEL_InternalCacheProvider.so (provider module "
         "QEL_InternalCacheProviderModule) is in none of: " +
             all[0]},
        {"not asked to check", {passwords.dir()}, false, ""},
    };
    for (const Case& c : cases)
    {
        WireServerOptions o = serverOptions(passwords.path());
        o.core.providerDirectories = c.dirs;
        o.requireProviderModules = c.required;
        WireServer server(o);
        std::string error;
        try
        {
            server.start();
        }
        catch (const std::exception& e)
        {
            error = e.what();
        }
        EXPECT_EQ(error, c.error) << c.what;
        if (error.empty())
        {
            EXPECT_NE(server.tcpPort(), 0) << c.what;
        }
    }
}

TEST_F(WireServerServiceTest, ReloadReportsThePasswordFileAndKeepsTheOldUsersOnFailure)
{
    wiretest::TempPasswordFile passwords;
    passwords.add("alice", "wonderland");
    LogLines log;
    WireServer server(serverOptions(passwords.path()));
    EXPECT_FALSE(server.reload()) << "not running yet";
    server.start();
    KeptAliveConnection client(server.tcpPort());
    ASSERT_EQ(client.exchange(enumerate("alice", "wonderland")), "HTTP/1.1 200 OK");

    EXPECT_TRUE(server.reload());
    EXPECT_NE(log.text().find("reload: users from " + passwords.path()), std::string::npos)
        << log.text();

    passwords.add("bob", "builder");
    EXPECT_TRUE(server.reload());
    EXPECT_EQ(client.exchange(enumerate("bob", "builder")), "HTTP/1.1 200 OK");

    std::ofstream(passwords.path(), std::ios::app) << "this is not a user line\n";
    EXPECT_FALSE(server.reload());
    const std::string text = log.text();
    EXPECT_NE(text.find("reload: "), std::string::npos);
    EXPECT_NE(text.find(passwords.path()), std::string::npos);
    EXPECT_NE(text.find("; the users loaded before stay in use"), std::string::npos) << text;
    // Same connection, old users.
    EXPECT_EQ(client.exchange(enumerate("alice", "wonderland")), "HTTP/1.1 200 OK");
    EXPECT_EQ(client.exchange(enumerate("bob", "builder")), "HTTP/1.1 200 OK");
    server.stop();
    EXPECT_FALSE(server.reload()) << "stopped";
}

TEST_F(WireServerServiceTest, ReloadsWhileKeptAliveClientsAreServed)
{
    wiretest::TempPasswordFile passwords;
    passwords.add("alice", "wonderland");
    LogLines log;  // keeps the reload lines out of the test output
    WireServer server(serverOptions(passwords.path()));
    server.start();
    const unsigned short port = server.tcpPort();
    const int clients = 4, requests = 15;
    std::atomic<int> served{0};
    std::atomic<bool> done{false};
    std::vector<std::string> failures(clients);
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c)
    {
        threads.emplace_back(
            [&, c]
            {
                KeptAliveConnection client(port);
                for (int i = 0; i < requests; ++i)
                {
                    const std::string status = client.exchange(enumerate("alice", "wonderland"));
                    if (status != "HTTP/1.1 200 OK")
                    {
                        failures[c] = "request " + std::to_string(i) + ": " + status;
                        return;
                    }
                    ++served;
                }
            });
    }
    // Rewrite the file (a user added, then removed) and reload, until every client is done.
    std::thread reloader(
        [&]
        {
            for (int round = 0; !done.load(); ++round)
            {
                if (round % 2 == 0)
                    passwords.add("user" + std::to_string(round), "pw");
                server.reload();
            }
        });
    for (std::thread& t : threads)
        t.join();
    done = true;
    reloader.join();
    for (int c = 0; c < clients; ++c)
        EXPECT_EQ(failures[c], "") << "client " << c;
    EXPECT_EQ(served.load(), clients * requests);
    server.stop();
}

}  // namespace
