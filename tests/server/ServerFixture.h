// The server tests' fixture: a CIMServer over schema/root.mof plus the test
// schema, with the test provider module (and the array's modules, when
// built) in its provider directories, and its log captured.
#ifndef QEL_Tests_ServerFixture_h
#define QEL_Tests_ServerFixture_h

#include "providers/ServerTestControl.h"

#include <Server/core/CIMServer.h>
#include <Server/core/ServerLog.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace servertest {

// Paths of the build, given by CMake.
std::vector<std::string> providerDirectories();
std::string schemaRoot();
std::string testSchema();

// The CIMException `call` throws; a test failure if it throws nothing or
// something else.
Pegasus::CIMException cimErrorOf(const std::function<void()>& call);

std::string text(const Pegasus::String& s);

// Lines written to the server log while it lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    std::vector<std::string> lines() const;
    bool contains(const std::string& fragment) const;

private:
    mutable std::shared_ptr<std::mutex> _mutex;
    std::shared_ptr<std::vector<std::string>> _lines;
    Pegasus::ServerLog::Sink _previous;
};

class ServerTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts with `extraMof` compiled after the standard files.
    void restart(const std::vector<std::string>& extraMof = {});

    Pegasus::Dispatcher& dispatcher() { return _server->dispatcher(); }
    Pegasus::CIMServer& server() { return *_server; }

    static const Pegasus::CIMNamespaceName ns;
    // A request of alice from 192.0.2.7.
    Pegasus::OperationContext context;

    static Pegasus::CIMObjectPath item(const char* id, const char* className = "Test_Item");

    std::unique_ptr<LogCapture> log;

private:
    std::unique_ptr<Pegasus::CIMServer> _server;
};

}  // namespace servertest

#endif
