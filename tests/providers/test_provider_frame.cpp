// The frame every provider of the module shares: initialize, the refused
// operations, the authorization answers and the semaphore bracket.
#include "ProviderTest.h"

#include <QEL_ProviderFrame.h>

#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

using ProviderFrame = ProviderTest;

struct InitializeCase
{
    const char* provider;
    const char* entryTrace;  // null: none
    const char* exitTrace;   // the provider's last level-4 line
    std::vector<std::string> identityCalls;
};

TEST_F(ProviderFrame, InitializeTracesAndAsksTheIdentityOnce)
{
    const InitializeCase cases[] = {
        {"QEL_FCPortProvider", "--> QEL_FCPortProvider::initialize\n",
            "<-- QEL_FCPortProvider::initialize\n", {"local:GetSystemHostName"}},
        {"QEL_SFPProvider", "--> QEL_SFPProvider::initialize()\n",
            "<--QEL_SFPProvider::initialize()\n", {"local:GetSystemHostName"}},
        // Only an entry line, written after the members are set.
        {"QEL_FCPortStatisticsProvider", nullptr,
            "-->QEL_FCPortStatisticsProvider::initialize()\n", {"local:GetSystemHostName"}},
        {"QEL_FCPortSFPProvider", "--> QEL_FCPortSFPProvider::initialize(cimom)\n)",
            "<-- QEL_FCPortSFPProvider::initialize(cimom)\n)", {"local:GetSystemHostName"}},
        {"QEL_FCPortElementStatisticalDataProvider",
            "--> QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)",
            "<-- QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)",
            {"local:GetSystemHostName", "local:GetSystemName"}},
    };
    for (const InitializeCase& c : cases)
    {
        SCOPED_TRACE(c.provider);
        qelsim::clearCapturedLog();
        InternalCacheDouble::instance().clearCalls();
        testing::internal::CaptureStdout();
        host().startProvider(c.provider, {});
        testing::internal::GetCapturedStdout();

        const std::vector<std::string> lines = traceLines(QEL_TRACE_FLOW);
        ASSERT_FALSE(lines.empty());
        if (c.entryTrace != nullptr)
        {
            EXPECT_EQ(lines.front(), c.entryTrace);
        }
        EXPECT_EQ(lines.back(), c.exitTrace);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), c.exitTrace), 1);
        EXPECT_EQ(InternalCacheDouble::instance().calls(), c.identityCalls);
        // initialize reads nothing from the array.
        EXPECT_TRUE(callsNamed({"api_getFCPorts", "api_getFCALPorts", "cim_sem_wait"}).empty());
    }
}

TEST_F(ProviderFrame, HostNameComesOnlyFromTheLocalConnection)
{
    // No fall-back through the handle for the host name: initialize fails.
    InternalCacheDouble::instance().refuseLocalConnections(true);
    testing::internal::CaptureStdout();
    EXPECT_THROW(host().startProvider("QEL_FCPortProvider", {}), Exception);
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(InternalCacheDouble::instance().calls().empty());
}

TEST_F(ProviderFrame, RefusedOperationsThrowBeforeAnyCheck)
{
    struct Case
    {
        const char* provider;
        const char* operation;
        const char* prefix;
    };
    const Case cases[] = {
        {"QEL_FCPortProvider", "createInstance", "QEL_FCPortProvider"},
        {"QEL_FCPortProvider", "deleteInstance", "QEL_FCPortProvider"},
        {"QEL_SFPProvider", "createInstance", "QEL_SFPProvider"},
        {"QEL_SFPProvider", "modifyInstance", "QEL_SFPProvider"},
        {"QEL_SFPProvider", "deleteInstance", "QEL_SFPProvider"},
        {"QEL_FCPortStatisticsProvider", "createInstance", "QEL_FCPortLESBStatistics"},
        {"QEL_FCPortStatisticsProvider", "modifyInstance", "QEL_FCPortLESBStatistics"},
        {"QEL_FCPortStatisticsProvider", "deleteInstance", "QEL_FCPortLESBStatistics"},
        {"QEL_FCPortSFPProvider", "modifyInstance", "QEL_FCPortSFPProvider"},
        {"QEL_FCPortSFPProvider", "createInstance", "QEL_FCPortSFPProvider"},
        {"QEL_FCPortElementStatisticalDataProvider", "deleteInstance",
            "QEL_FCPortElementStatisticalData"},
        {"QEL_FCPortElementStatisticalDataProvider", "modifyInstance",
            "QEL_FCPortElementStatisticalData"},
    };
    const CIMObjectPath path("root/qel:QEL_FCPort.DeviceID=\"20110002AC001234\"");
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.provider) + "::" + c.operation);
        testing::internal::CaptureStdout();
        CIMInstanceProvider* provider =
            dynamic_cast<CIMInstanceProvider*>(host().startProvider(c.provider, {}));
        testing::internal::GetCapturedStdout();
        ASSERT_NE(provider, nullptr);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        // Even for a user the array does not know.
        const OperationContext context = asUser("nobody");
        const std::string op = c.operation;
        RecordingObjectPathHandler created;
        RecordingResponseHandler other;
        EXPECT_EQ(thrown<CIMNotSupportedException>([&] {
            if (op == "createInstance")
                provider->createInstance(context, path, CIMInstance("QEL_FCPort"), created);
            else if (op == "deleteInstance")
                provider->deleteInstance(context, path, other);
            else
                provider->modifyInstance(context, path, CIMInstance("QEL_FCPort"), false,
                    CIMPropertyList(), other);
        }), std::string(c.prefix) + " does not support " + op + ".");
        EXPECT_TRUE(created.record.untouched() && other.record.untouched());
        EXPECT_TRUE(qelsim::callLog().empty()) << "the library was called";
        EXPECT_TRUE(qelsim::capturedLog().empty()) << "a trace was written";
    }
}

TEST_F(ProviderFrame, AuthorizationAnswersBecomeTraceableRefusals)
{
    const std::pair<int, const char*> cases[] = {
        {1, "Src(17): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {2, "Src(17): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {3, "Src(17): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
        {22, "Src(17): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
        {-1, "Src(17): CIM_ERR_NOT_SUPPORTED: Does not support in generic!"},
    };
    const QEL_ProviderFrame::Requester who = {"operator", "192.0.2.10"};
    for (const auto& c : cases)
    {
        ASSERT_TRUE(qelsim::forceAuthorization(c.first, 1).ok);
        EXPECT_EQ(refusal([&] {
            QEL_ProviderFrame::authorize(who, "QEL_FCPort", "SetOffline", "Src", 17); }),
            c.second) << "result " << c.first;
    }
    // 0 passes; the key is lower-cased.
    qelsim::clearCallLog();
    EXPECT_NO_THROW(QEL_ProviderFrame::authorize(who, "QEL_FCPort", "SetOffline", "Src", 17));
    EXPECT_EQ(callsNamed({"api_authorizeCIMUser"}), std::vector<std::string>{
        "api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcport.setoffline\")"});
}

TEST_F(ProviderFrame, SemaphoreBracketMakesOneCallOrNone)
{
    int calls = 0;
    EXPECT_EQ(QEL_ProviderFrame::serialized([&] { ++calls; return 7; }), 7);
    EXPECT_EQ(calls, 1);

    // A failed wait: no call, no post, the wait's result is the status.
    ASSERT_TRUE(qelsim::failSemaphoreWait(API_ERR_BUSY, 1).ok);
    EXPECT_EQ(QEL_ProviderFrame::serialized([&] { ++calls; return 0; }), API_ERR_BUSY);
    EXPECT_EQ(calls, 1);

    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.semWaits, 1u);
    EXPECT_EQ(c.semPosts, 1u);
    EXPECT_EQ(c.semFailedWaits, 1u);
}

} // namespace
