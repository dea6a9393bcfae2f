// The fixture of the SFP and LESB statistics provider tests: the shared provider host on the array of
// fixtures/sfp_lesb.json (two FC ports with transceivers and one without, one iSCSI port with a
// transceiver and one without, LESB records on two of the three FC ports), both providers started.
#ifndef QEL_TESTS_StatsTest_h
#define QEL_TESTS_StatsTest_h

#include "ProviderTest.h"

#include <QEL_Common.h>
#include <QEL_FCPortStatisticsProvider.h>
#include <QEL_ProviderFrame.h>
#include <QEL_SFPProvider.h>

namespace qeltest
{

const char PORT_A[] = "20110002AC001234";                   // SFP "ABC   ", two LESB records
const char PORT_B[] = "21230002AC001235";                   // SFP "SN-SHARED", no LESB record
const char PORT_D[] = "22320002AC001236";                   // no SFP, one LESB record, portId 0
const char ISCSI_1[] = "iqn.2000-05.com.example:array.p1";  // SFP "SN-SHARED"
const char HOST[] = "qelhost.example.com";
const char STATS_FIXTURE[] = QEL_STATS_FIXTURES "/sfp_lesb.json";

class StatsTest : public ProviderTest
{
protected:
    std::string arrayFixture() const override { return STATS_FIXTURE; }

    void SetUp() override
    {
        ProviderTest::SetUp();
        sfp = start<QEL_SFPProvider>("QEL_SFPProvider", {"QEL_SFP"});
        stats = start<QEL_FCPortStatisticsProvider>(
            "QEL_FCPortStatisticsProvider", {"QEL_FCPortLESBStatistics"});
    }

    // The key-list calls of the library, as "call(args)".
    static Texts readCalls()
    {
        return callsNamed(
            {"api_getFCPorts", "api_freeFCPorts", "api_getISCSIPorts", "api_getPortLESB",
             "api_resetPortLESB"});
    }

    QEL_SFPProvider* sfp = nullptr;
    QEL_FCPortStatisticsProvider* stats = nullptr;
};

}  // namespace qeltest

#endif
