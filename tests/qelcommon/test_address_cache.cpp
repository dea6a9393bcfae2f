// getSystemIPAddr's process-wide cache, in a process of its own so that the cache starts empty.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

static size_t dualIpCalls()
{
    size_t n = 0;
    for (const std::string& call : qelsim::callTexts())
        n += call.rfind("api_getSystemDualIP(", 0) == 0 ? 1 : 0;
    return n;
}

TEST(SystemAddressCache, AskedOnlyWhileTheIPv4TextIsEmpty)
{
    loadTestArrayWithSystem("\"ipv6\": \"\"");
    qelsim::clearCallLog();
    {
        TraceCapture trace;
        EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(3));
        EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(0));
        EXPECT_EQ(2u, trace.count(2, "QEL_Common, getSystemIPAddr: Invalid IP type parameter!\n"));
        EXPECT_EQ(0u, dualIpCalls());
    }
    // A failing library leaves the cache empty, so the next call asks again.
    ASSERT_TRUE(qelsim::injectFault("api_getSystemDualIP", API_ERR_IO, 2).ok);
    EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(1));
    EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(2));
    EXPECT_EQ(2u, dualIpCalls());

    // The array has no IPv6 address yet.
    EXPECT_EQ(String("192.168.10.20"), QEL_Common::getSystemIPAddr(1));
    EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(2));
    EXPECT_EQ(3u, dualIpCalls());

    // An address added later is never seen: the IPv4 text is already known.
    loadTestArrayWithSystem("\"ipv4\": \"10.9.8.7\", \"ipv6\": \"fd00::1\"");
    qelsim::clearCallLog();
    EXPECT_EQ(String("192.168.10.20"), QEL_Common::getSystemIPAddr(1));
    EXPECT_EQ(String(), QEL_Common::getSystemIPAddr(2));
    EXPECT_EQ(0u, dualIpCalls());
}
