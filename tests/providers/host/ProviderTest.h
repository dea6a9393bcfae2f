// GoogleTest fixture of every provider test: one in-process ProviderHost per
// test process, the simulated array reset per test from a JSON fixture
// (tests/providers/fixtures/), faults, counters, call log and captured trace
// cleared, and on the way out the checks every provider test shares: no FC
// port list left unreleased or released twice, every successful semaphore
// wait posted once, no list read or change made outside the semaphore.
//
// A test (or a derived fixture) starts the providers it needs with
// host().startProvider(name, {classes}); they are terminated after the test.
#ifndef QEL_TESTS_ProviderTest_h
#define QEL_TESTS_ProviderTest_h

#include "ProviderHost.h"
#include "RecordingHandlers.h"
#include "InternalCacheDouble.h"

#include <Pegasus/Common/InternalException.h>

#include <qelsim_control.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qeltest
{

// The text of a fixture file of tests/providers/fixtures/.
std::string fixtureText(const std::string& name);

// The call log reduced to the calls named (e.g. {"api_getFCPorts",
// "api_freeFCPorts"}), each as "call(arg, arg)".
std::vector<std::string> callsNamed(const std::vector<std::string>& names);

// The captured log_message lines of one level, texts only.
std::vector<std::string> traceLines(int level);

// The message of the E that call throws; a test failure and "<none>" when it
// throws nothing or another Pegasus exception.
template <typename E, typename Call>
std::string thrown(Call&& call)
{
    try
    {
        call();
    }
    catch (const E& e)
    {
        return (const char*)e.getMessage().getCString();
    }
    catch (const Pegasus::Exception& e)
    {
        ADD_FAILURE() << "other exception: " << e.getMessage();
        return "<other>";
    }
    ADD_FAILURE() << "nothing thrown";
    return "<none>";
}

// An access refusal as "<source>(<line>): <CIM_ERR_...>: <message>".
template <typename Call>
std::string refusal(Call&& call)
{
    try
    {
        call();
    }
    catch (const Pegasus::TraceableCIMException& e)
    {
        return (const char*)e.getTraceDescription().getCString();
    }
    catch (const Pegasus::Exception& e)
    {
        ADD_FAILURE() << "other exception: " << e.getMessage();
        return "<other>";
    }
    ADD_FAILURE() << "nothing thrown";
    return "<none>";
}

class ProviderTest : public ::testing::Test
{
protected:
    // The array a test starts from; a fixture file name or a JSON text.
    virtual std::string arrayFixture() const { return "fc_ports.json"; }

    void SetUp() override;
    void TearDown() override;

    ProviderHost& host() { return ProviderHost::instance(); }

    // Replaces the simulated array for the rest of the test.
    void loadArray(const std::string& jsonText);

    // Users of fc_ports.json: super, edit and browse roles, a disabled one.
    static Pegasus::OperationContext asAdmin();
    static Pegasus::OperationContext asOperator();
    static Pegasus::OperationContext asViewer();
    static Pegasus::OperationContext asUser(const char* user);
};

} // namespace qeltest

#endif
