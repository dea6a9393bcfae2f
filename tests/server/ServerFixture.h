// The server tests' fixture: a CIMServer over schema/root.mof plus the test
// schema, with the test provider module (and the array's modules, when
// built) in its provider directories, and its log captured.
#ifndef QEL_Tests_ServerFixture_h
#define QEL_Tests_ServerFixture_h

#include "providers/ServerTestControl.h"

#include <Server/core/CIMServer.h>
#include <Server/core/ServerLog.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace servertest
{

// Paths of the build, given by CMake.
std::vector<std::string> providerDirectories();
std::string schemaRoot();
std::string testSchema();

// The CIMException `call` throws; a test failure if it throws nothing or
// something else.
Pegasus::CIMException cimErrorOf(const std::function<void()>& call);

std::string text(const Pegasus::String& s);

// The path of a test item, as a client names it (no host, no namespace).
Pegasus::CIMObjectPath item(const char* id, const char* className = "Test_Item");

// Lines written to the server log while it lives. The log calls its sink
// under its own lock, so the sink may point at this object until it goes.
class LogCapture
{
public:
    LogCapture()
        : _previous(Pegasus::ServerLog::setSink(
              [this](Pegasus::LogLevel, const std::string& line)
              {
                  std::lock_guard<std::mutex> lock(_mutex);
                  _lines.push_back(line);
              }))
    {
    }
    ~LogCapture() { Pegasus::ServerLog::setSink(_previous); }
    bool contains(const std::string& fragment) const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return std::any_of(
            _lines.begin(), _lines.end(),
            [&](const std::string& line) { return line.find(fragment) != std::string::npos; });
    }

private:
    mutable std::mutex _mutex;  // before _previous: the sink may run as soon as it is set
    std::vector<std::string> _lines;
    Pegasus::ServerLog::Sink _previous;
};

// The server's CIMOMHandle with the defaults a client library gives to the
// arguments a test leaves out.
class ServerCalls
{
public:
    explicit ServerCalls(Pegasus::CIMOMHandle handle) : _handle(handle) {}

    Pegasus::CIMInstance getInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, Pegasus::Boolean includeQualifiers = false,
        Pegasus::Boolean includeClassOrigin = false,
        const Pegasus::CIMPropertyList& propertyList = Pegasus::CIMPropertyList())
    {
        return _handle.getInstance(
            context, nameSpace, instanceName, true, includeQualifiers, includeClassOrigin,
            propertyList);
    }
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance = true)
    {
        return _handle.enumerateInstances(
            context, nameSpace, className, deepInheritance, true, false, false,
            Pegasus::CIMPropertyList());
    }
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className)
    {
        return _handle.enumerateInstanceNames(context, nameSpace, className);
    }
    Pegasus::CIMObjectPath createInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& instance)
    {
        return _handle.createInstance(context, nameSpace, instance);
    }
    void modifyInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& instance)
    {
        _handle.modifyInstance(context, nameSpace, instance, true, Pegasus::CIMPropertyList());
    }
    void deleteInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName)
    {
        _handle.deleteInstance(context, nameSpace, instanceName);
    }
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass = Pegasus::CIMName(),
        const Pegasus::CIMName& resultClass = Pegasus::CIMName(),
        const Pegasus::String& role = Pegasus::String(),
        const Pegasus::String& resultRole = Pegasus::String())
    {
        return _handle.associators(
            context, nameSpace, objectName, assocClass, resultClass, role, resultRole, false, false,
            Pegasus::CIMPropertyList());
    }
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass = Pegasus::CIMName(),
        const Pegasus::CIMName& resultClass = Pegasus::CIMName(),
        const Pegasus::String& role = Pegasus::String(),
        const Pegasus::String& resultRole = Pegasus::String())
    {
        return _handle.associatorNames(
            context, nameSpace, objectName, assocClass, resultClass, role, resultRole);
    }
    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass = Pegasus::CIMName(),
        const Pegasus::String& role = Pegasus::String())
    {
        return _handle.references(
            context, nameSpace, objectName, resultClass, role, false, false,
            Pegasus::CIMPropertyList());
    }
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass = Pegasus::CIMName(),
        const Pegasus::String& role = Pegasus::String())
    {
        return _handle.referenceNames(context, nameSpace, objectName, resultClass, role);
    }

private:
    Pegasus::CIMOMHandle _handle;
};

class ServerTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts with `extraMof` compiled after the standard files.
    void restart(const std::vector<std::string>& extraMof = {});

    // The server as a provider's CIMOMHandle reaches it.
    Pegasus::CIMOMHandle cimom() { return _server->handle(); }
    // The same, with defaults for the arguments a test leaves out.
    ServerCalls calls() { return ServerCalls(_server->handle()); }
    Pegasus::CIMServer& server() { return *_server; }

    static const Pegasus::CIMNamespaceName ns;
    // A request of alice from 192.0.2.7.
    Pegasus::OperationContext context;
    std::unique_ptr<LogCapture> log;
    // Providers compiled into the server, for the next restart().
    std::vector<std::function<Pegasus::BuiltInProvider(Pegasus::CIMServer&)>> builtInProviders;
    // The pulled enumerations' limits, for the next restart().
    Pegasus::EnumerationLimits enumerationLimits;

private:
    std::unique_ptr<Pegasus::CIMServer> _server;
};

}  // namespace servertest

#endif
