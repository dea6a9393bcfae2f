// The module's entry point: which names create which providers, what is
// printed, and the constructors that take an object path.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_FCPortStatisticsProvider.h>
#include <QEL_SFPProvider.h>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/ProviderException.h>

PEGASUS_USING_PEGASUS;
using qeltest::ProviderHost;

namespace
{

enum Interfaces
{
    INSTANCE = 1,
    METHOD = 2,
    ASSOCIATION = 4
};

struct FactoryCase
{
    const char* name;
    const char* expectedStdout;
    int interfaces;  // 0: no provider
};

int interfacesOf(CIMProvider* provider)
{
    return (dynamic_cast<CIMInstanceProvider*>(provider) ? INSTANCE : 0) |
        (dynamic_cast<CIMMethodProvider*>(provider) ? METHOD : 0) |
        (dynamic_cast<CIMAssociationProvider*>(provider) ? ASSOCIATION : 0);
}

class ModuleFactory : public ::testing::TestWithParam<FactoryCase>
{
};

TEST_P(ModuleFactory, CreatesByNameWithoutRegardToCase)
{
    const FactoryCase& c = GetParam();
    testing::internal::CaptureStdout();
    CIMProvider* provider = ProviderHost::instance().createProvider(c.name);
    const std::string printed = testing::internal::GetCapturedStdout();

    EXPECT_EQ(printed, c.expectedStdout);
    if (c.interfaces == 0)
    {
        EXPECT_EQ(provider, nullptr);
        return;
    }
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(interfacesOf(provider), c.interfaces);
    provider->terminate();
}

const char CREATE_LINE[] = "Create QEL_FCPortProvider \n";

INSTANTIATE_TEST_SUITE_P(Names, ModuleFactory, ::testing::Values(
    FactoryCase{"QEL_FCPortProvider", CREATE_LINE, INSTANCE | METHOD},
    FactoryCase{"qel_fcportprovider", CREATE_LINE, INSTANCE | METHOD},
    FactoryCase{"QEL_FCPORTPROVIDER", CREATE_LINE, INSTANCE | METHOD},
    FactoryCase{"QEL_SFPProvider", "", INSTANCE},
    FactoryCase{"qel_sfpPROVIDER", "", INSTANCE},
    FactoryCase{"QEL_FCPortSFPProvider", "", ASSOCIATION | INSTANCE},
    FactoryCase{"QEL_FCPortStatisticsProvider", "", INSTANCE | METHOD},
    FactoryCase{"QEL_FCPortElementStatisticalDataProvider", "", ASSOCIATION | INSTANCE},
    FactoryCase{"QEL_FCPort", "", 0},
    FactoryCase{"", "", 0},
    FactoryCase{" QEL_FCPortProvider", "", 0},
    FactoryCase{"QEL_FCPortProvider ", "", 0},
    FactoryCase{"QEL_FCPortProviderX", "", 0},
    FactoryCase{"QEL_FCPortStatistics", "", 0}));

TEST(ModuleFactoryState, EveryCallMakesAnIndependentProvider)
{
    testing::internal::CaptureStdout();
    CIMProvider* first = ProviderHost::instance().createProvider("QEL_FCPortProvider");
    CIMProvider* second = ProviderHost::instance().createProvider("QEL_FCPortProvider");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(CREATE_LINE) + CREATE_LINE);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    first->terminate();
    second->terminate();
}

TEST(ProviderConstructors, ObjectPathConstructorIsRefusedExceptForFCPorts)
{
    const CIMObjectPath path("QEL_FCPort.DeviceID=\"20110002AC001234\"");
    CIMProvider* fcPorts = new QEL_FCPortProvider(path);
    EXPECT_EQ(interfacesOf(fcPorts), INSTANCE | METHOD);
    fcPorts->terminate();

    EXPECT_EQ(qeltest::thrown<CIMNotSupportedException>([&] { new QEL_SFPProvider(path); }),
        "QEL_SFPProvider does not support constructor with object path.");
    EXPECT_EQ(qeltest::thrown<CIMNotSupportedException>(
                  [&] { new QEL_FCPortStatisticsProvider(path); }),
        "QEL_FCPortLESBStatistics does not support constructor with object path.");
}

} // namespace
