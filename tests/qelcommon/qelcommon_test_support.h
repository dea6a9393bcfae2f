// Test doubles and guards shared by the QEL_Common suites: trace capture, a time-zone guard, the simulated array
// these tests load, and the internal cache double of the provider test host with a server handle of its own.
#ifndef QELCOMMON_TEST_SUPPORT_H
#define QELCOMMON_TEST_SUPPORT_H

#include "InternalCacheDouble.h"

#include <Pegasus/Provider/CIMOMHandle.h>

#include <qelsim_control.h>

#include <atomic>
#include <string>
#include <vector>

namespace qelcommontest
{

using namespace Pegasus;
typedef qeltest::CacheCall MethodCall;
using qeltest::Texts;

// Keeps every log_message line written while it lives.
struct TraceCapture
{
    TraceCapture()
    {
        qelsim::clearCapturedLog();
        qelsim::captureLog(true);
    }
    ~TraceCapture()
    {
        qelsim::captureLog(false);
        qelsim::clearCapturedLog();
    }
    // Lines of exactly this level and text (line end included).
    size_t count(int level, const std::string& text) const;
    bool has(int level, const std::string& text) const { return count(level, text) > 0; }
    // Texts only, in order (those holding a text, if given).
    Texts texts(const char* holding = "") const;
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

// Loads the array the suites share (system DEMO01 with both address kinds, users admin and monitor, three volumes)
// into the simulator's memory, with other "system" members if given, e.g. "\"ipv6\": \"\"".
void loadTestArrayWithSystem(const std::string& systemMembers);
inline void loadTestArray()
{
    loadTestArrayWithSystem("");
}

// The internal cache double (local connection and handle scripted, by default answered by the real
// internal cache provider) with a handle whose getClass answers the class named, with one property per
// call so that every fetch is told apart, and CIM_ERR_NOT_FOUND for "Missing".
struct ScriptedServer : qeltest::InternalCacheDouble
{
    CIMOMHandle handle();
    std::atomic<int> getClassCalls{0};
};

// A class with a key "InstanceID", a string "Name" and a uint16 "Code".
CIMClass makeTestClass(const CIMName& name);

}  // namespace qelcommontest

#endif
