#include "ProviderTest.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

std::string fixtureText(const std::string& name)
{
    const std::string path = std::string(QEL_PROVIDER_FIXTURES) + "/" + name;
    std::ifstream in(path);
    if (!in)
    {
        throw std::runtime_error("cannot read test fixture " + path);
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> callsNamed(const std::vector<std::string>& names)
{
    std::vector<std::string> texts;
    for (const qelsim::CallRecord& record : qelsim::callLog())
    {
        for (const std::string& name : names)
        {
            if (record.call == name)
            {
                texts.push_back(record.text());
                break;
            }
        }
    }
    return texts;
}

std::vector<std::string> traceLines(int level)
{
    std::vector<std::string> lines;
    for (const qelsim::LogLine& line : qelsim::capturedLog())
    {
        if (line.level == level)
        {
            lines.push_back(line.text);
        }
    }
    return lines;
}

void ProviderTest::loadArray(const std::string& jsonText)
{
    const qelsim::Result loaded = qelsim::loadArrayText(jsonText);
    ASSERT_TRUE(loaded.ok) << loaded.error;
}

void ProviderTest::SetUp()
{
    ProviderHost::instance();
    const std::string fixture = arrayFixture();
    loadArray(fixture.empty() || fixture[0] == '{' ? fixture : fixtureText(fixture));
    qelsim::clearFaults();
    InternalCacheDouble::instance().refuseLocalConnections(false);
    InternalCacheDouble::instance().clearCalls();
    qelsim::captureLog(true);
    qelsim::clearCapturedLog();
    qelsim::resetCounters();
    qelsim::clearCallLog();
}

void ProviderTest::TearDown()
{
    host().stopProviders();
    qelsim::clearFaults();
    qelsim::captureLog(false);

    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(qelsim::outstandingFCLists(c), 0u) << "FC port lists not released";
    EXPECT_EQ(c.badFrees, 0u) << "FC port lists released twice or never handed out";
    EXPECT_EQ(c.semWaits, c.semPosts) << "semaphore waits and posts unbalanced";
    EXPECT_EQ(c.semUnbalancedPosts, 0u) << "semaphore posted without a wait";
    EXPECT_EQ(c.unbracketedCalls, 0u) << "library calls made outside the semaphore";
}

OperationContext ProviderTest::asAdmin()
{
    return asUser("admin");
}

OperationContext ProviderTest::asOperator()
{
    return asUser("operator");
}

OperationContext ProviderTest::asViewer()
{
    return asUser("viewer");
}

OperationContext ProviderTest::asUser(const char* user)
{
    return ProviderHost::context(user, "192.0.2.10");
}

} // namespace qeltest
