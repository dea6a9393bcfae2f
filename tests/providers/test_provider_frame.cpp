// The module: which names its factory creates which providers from, the constructors that take an object path, and
// the frame every provider shares: initialize, the refused operations and the authorization answers.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_FCPortStatisticsProvider.h>
#include <QEL_ProviderFrame.h>
#include <QEL_SFPProvider.h>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

// The request interfaces a provider offers: "I" instance, "M" method, "A" association.
static std::string interfacesOf(CIMProvider* provider)
{
    return std::string(dynamic_cast<CIMInstanceProvider*>(provider) ? "I" : "") +
           (dynamic_cast<CIMMethodProvider*>(provider) ? "M" : "") +
           (dynamic_cast<CIMAssociationProvider*>(provider) ? "A" : "");
}

const char CREATE_LINE[] = "Create QEL_FCPortProvider \n";

TEST(ModuleFactory, CreatesByNameWithoutRegardToCase)
{
    // interfaces: "" when no provider is made
    const struct
    {
        const char* name;
        const char* printed;
        const char* interfaces;
    } cases[] = {
        {"QEL_FCPortProvider", CREATE_LINE, "IM"},
        {"qel_fcportPROVIDER", CREATE_LINE, "IM"},
        {"qel_sfpPROVIDER", "", "I"},
        {"QEL_FCPortSFPProvider", "", "IA"},
        {"QEL_FCPortStatisticsProvider", "", "IM"},
        {"QEL_FCPortElementStatisticalDataProvider", "", "IA"},
        {"QEL_FCPort", "", ""},
        {"", "", ""},
        {" QEL_FCPortProvider", "", ""},
        {"QEL_FCPortProvider ", "", ""},
        {"QEL_FCPortStatistics", "", ""},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(std::string("\"") + c.name + "\"");
        testing::internal::CaptureStdout();
        CIMProvider* provider = ProviderHost::instance().createProvider(c.name);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.printed);
        EXPECT_EQ(provider ? interfacesOf(provider) : "", c.interfaces);
        if (provider != nullptr)
            provider->terminate();
    }
}

TEST(ProviderConstructors, ObjectPathConstructorIsRefusedExceptForFCPorts)
{
    const CIMObjectPath path("QEL_FCPort.DeviceID=\"20110002AC001234\"");
    CIMProvider* fcPorts = new QEL_FCPortProvider(path);
    EXPECT_EQ(interfacesOf(fcPorts), "IM");
    fcPorts->terminate();

    EXPECT_EQ(
        thrown<CIMNotSupportedException>([&] { new QEL_SFPProvider(path); }),
        "QEL_SFPProvider does not support constructor with object path.");
    EXPECT_EQ(
        thrown<CIMNotSupportedException>([&] { new QEL_FCPortStatisticsProvider(path); }),
        "QEL_FCPortLESBStatistics does not support constructor with object path.");
}

using ProviderFrame = ProviderTest;

TEST_F(ProviderFrame, InitializeTracesAndAsksTheIdentityLocallyOnce)
{
    // entryTrace: null for none; exitTrace: the provider's last level-4 line.
    const struct
    {
        const char *provider, *entryTrace, *exitTrace;
        Texts identityCalls;
    } cases[] = {
        {"QEL_FCPortProvider",
         "--> QEL_FCPortProvider::initialize\n",
         "<-- QEL_FCPortProvider::initialize\n",
         {"local:GetSystemHostName"}},
        {"QEL_SFPProvider",
         "--> QEL_SFPProvider::initialize()\n",
         "<--QEL_SFPProvider::initialize()\n",
         {"local:GetSystemHostName"}},
        // Only an entry line, written after the members are set.
        {"QEL_FCPortStatisticsProvider",
         nullptr,
         "-->QEL_FCPortStatisticsProvider::initialize()\n",
         {"local:GetSystemHostName"}},
        {"QEL_FCPortSFPProvider",
         "--> QEL_FCPortSFPProvider::initialize(cimom)\n)",
         "<-- QEL_FCPortSFPProvider::initialize(cimom)\n)",
         {"local:GetSystemHostName"}},
        {"QEL_FCPortElementStatisticalDataProvider",
         "--> QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)",
         "<-- QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)",
         {"local:GetSystemHostName", "local:GetSystemName"}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.provider);
        qelsim::clearCapturedLog();
        cache().clear();
        start(c.provider, {}, false);
        const Texts lines = traceLines(QEL_TRACE_FLOW);
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(c.entryTrace ? lines.front() : "", c.entryTrace ? c.entryTrace : "");
        EXPECT_EQ(lines.back(), c.exitTrace);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), c.exitTrace), 1);
        EXPECT_EQ(cache().callNames(), c.identityCalls);
        // initialize reads nothing from the array.
        EXPECT_TRUE(callsNamed({"api_getFCPorts", "api_getFCALPorts", "cim_sem_wait"}).empty());
    }
    // No fall-back through the handle for the host name: initialize fails.
    cache().clear();
    cache().localDown = true;
    EXPECT_THROW(start("QEL_FCPortProvider", {}), Exception);
    EXPECT_TRUE(cache().calls().empty());
}

TEST_F(ProviderFrame, RefusedOperationsThrowBeforeAnyCheck)
{
    const struct
    {
        const char* provider;
        const char* prefix;
        Texts operations;
    } cases[] = {
        {"QEL_FCPortProvider", "QEL_FCPortProvider", {"createInstance", "deleteInstance"}},
        {"QEL_SFPProvider",
         "QEL_SFPProvider",
         {"createInstance", "modifyInstance", "deleteInstance"}},
        {"QEL_FCPortStatisticsProvider",
         "QEL_FCPortLESBStatistics",
         {"createInstance", "modifyInstance", "deleteInstance"}},
        {"QEL_FCPortSFPProvider", "QEL_FCPortSFPProvider", {"modifyInstance", "createInstance"}},
        {"QEL_FCPortElementStatisticalDataProvider",
         "QEL_FCPortElementStatisticalData",
         {"deleteInstance", "modifyInstance"}},
    };
    const CIMObjectPath path("root/qel:QEL_FCPort.DeviceID=\"20110002AC001234\"");
    for (const auto& c : cases)
    {
        CIMInstanceProvider* provider = start<CIMInstanceProvider>(c.provider, {});
        for (const std::string& op : c.operations)
        {
            SCOPED_TRACE(std::string(c.provider) + "::" + op);
            // Even for a user the array does not know.
            const OperationContext context = asUser("nobody");
            RecordingObjectPathHandler created;
            RecordingResponseHandler other;
            EXPECT_EQ(
                thrown<CIMNotSupportedException>(
                    [&]
                    {
                        if (op == "createInstance")
                            provider->createInstance(
                                context, path, CIMInstance("QEL_FCPort"), created);
                        else if (op == "deleteInstance")
                            provider->deleteInstance(context, path, other);
                        else
                            provider->modifyInstance(
                                context, path, CIMInstance("QEL_FCPort"), false, CIMPropertyList(),
                                other);
                    }),
                std::string(c.prefix) + " does not support " + op + ".");
            EXPECT_TRUE(created.record.untouched() && other.record.untouched());
            EXPECT_TRUE(qelsim::callLog().empty()) << "the library was called";
            EXPECT_TRUE(qelsim::capturedLog().empty()) << "a trace was written";
        }
    }
}

TEST_F(ProviderFrame, AuthorizationAnswersBecomeTraceableRefusals)
{
    const char* const DENIED = "Src(17): CIM_ERR_ACCESS_DENIED: Insufficient generic privilege";
    const char* const UNKNOWN = "Src(17): CIM_ERR_NOT_SUPPORTED: Does not support in generic!";
    const std::pair<int, const char*> cases[] = {
        {1, DENIED}, {2, DENIED}, {3, UNKNOWN}, {22, UNKNOWN}, {-1, UNKNOWN}};
    const QEL_ProviderFrame::Requester who = {"operator", "192.0.2.10"};
    for (const auto& c : cases)
    {
        ASSERT_TRUE(qelsim::forceAuthorization(c.first, 1).ok);
        EXPECT_EQ(
            thrown([&]
                   { QEL_ProviderFrame::authorize(who, "QEL_FCPort", "SetOffline", "Src", 17); }),
            c.second)
            << "result " << c.first;
    }
    // 0 passes; the key is lower-cased.
    qelsim::clearCallLog();
    EXPECT_NO_THROW(QEL_ProviderFrame::authorize(who, "QEL_FCPort", "SetOffline", "Src", 17));
    EXPECT_EQ(
        callsNamed({"api_authorizeCIMUser"}),
        Texts{"api_authorizeCIMUser(\"operator\", \"192.0.2.10\", \"qel_fcport.setoffline\")"});
}
