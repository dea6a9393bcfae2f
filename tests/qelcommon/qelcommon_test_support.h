// Test doubles and guards shared by the QEL_Common suites: trace capture, a
// time-zone guard, a scripted local client connection and a scripted server
// handle, and the simulated array these tests load.
#ifndef QELCOMMON_TEST_SUPPORT_H
#define QELCOMMON_TEST_SUPPORT_H

#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

#include <qelsim_control.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qelcommontest
{

using namespace Pegasus;

// Keeps every log_message line written while it lives.
class TraceCapture
{
public:
    TraceCapture();
    ~TraceCapture();
    std::vector<qelsim::LogLine> lines() const;
    // Lines of exactly this level and text (line end included).
    size_t count(int level, const std::string& text) const;
    bool has(int level, const std::string& text) const { return count(level, text) > 0; }
    // Texts only, in order.
    std::vector<std::string> texts() const;
};

// Sets TZ for its lifetime and restores the previous setting.
class ScopedTimeZone
{
public:
    explicit ScopedTimeZone(const char* tz);
    ~ScopedTimeZone();

private:
    bool _had;
    std::string _previous;
};

// Loads the array the suites share (system DEMO01 with both address kinds,
// users admin and monitor, three volumes) into the simulator's memory.
void loadTestArray();
// The same array with other "system" members, e.g. "\"ipv6\": \"\"".
void loadTestArrayWithSystem(const std::string& systemMembers);

// What a scripted answer sees of one method call.
struct MethodCall
{
    std::string route;  // "local" or "cimom"
    std::string nameSpace;
    std::string path;
    std::string method;
    Uint32 inCount;
};

// Answers invokeMethod for both doubles; the default asks the real internal
// cache provider.
typedef std::function<CIMValue(const MethodCall&, Array<CIMParamValue>& out)> MethodScript;
// Answers enumerateInstanceNames for both doubles; default: no paths.
typedef std::function<Array<CIMObjectPath>(const std::string& route, const CIMName& cls)> NamesScript;

// One scripted "server" behind the local client connection and the provider
// handle. Installing it makes CIMClient::connectLocal() reach it.
class ScriptedServer
{
public:
    ScriptedServer();
    ~ScriptedServer();

    MethodScript methods;
    NamesScript names;
    // When true, connectLocal() fails with CannotConnectException.
    std::atomic<bool> localDown{false};
    // getClass answers: the class named, with one property per call so that
    // every fetch is told apart; throws CIMException NOT_FOUND for "Missing".
    std::atomic<int> getClassCalls{0};

    CIMOMHandle handle();
    std::vector<MethodCall> calls() const;
    int connections() const { return _connections.load(); }
    int disconnects() const { return _closed.load(); }

    // Used by the doubles.
    CIMValue invoke(const MethodCall& call, Array<CIMParamValue>& out);
    Array<CIMObjectPath> enumerate(const std::string& route, const CIMName& cls);
    void opened() { _connections++; }
    void closed() { _closed++; }

private:
    mutable std::mutex _lock;
    std::vector<MethodCall> _calls;
    std::atomic<int> _connections{0};
    std::atomic<int> _closed{0};
    LocalTransportFactory _previous;
};

// A class with a key "InstanceID", a string "Name" and a uint16 "Code".
CIMClass makeTestClass(const CIMName& name);

} // namespace qelcommontest

#endif
