// Reads of the simulated array through the C interface: what the records carry
// and how lists are handed out and released.
#include "sim_fixture.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace qelsimtest;

extern "C" size_t qelapi_c_record_sizes(size_t out[6]);

namespace
{

TEST(Header, CAndCppSeeTheSameRecordLayout)
{
    size_t c[6];
    ASSERT_EQ(qelapi_c_record_sizes(c), 6u);
    const size_t cpp[6] = {sizeof(api_FCPort_t),        sizeof(api_sfp_t),
                           sizeof(api_portLESB_t),      sizeof(api_iSCSIPort_t),
                           offsetof(api_FCPort_t, sfp), offsetof(api_FCPort_t, connectedTo)};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(c[i], cpp[i]) << i;
}

class Reads : public SimTest
{
};

TEST_F(Reads, SelectorsGiveEveryRecordOrOnePortAndTheListIsReleased)
{
    api_FCPortList_t list{};
    ASSERT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, &list), API_OK);
    ASSERT_EQ(list.count, 7u);
    int zero = 0;  // the record that is never published is handed out all the same
    for (uint32_t i = 0; i < list.count; ++i)
        zero += list.ports[i].portWwn == 0;
    EXPECT_EQ(zero, 1);
    // The loop view lists the same ports, transceivers filled.
    api_FCPortList_t loop{};
    ASSERT_EQ(api_getFCALPorts(API_ALL_PORTS, &loop), API_OK);
    ASSERT_EQ(loop.count, list.count);
    for (uint32_t i = 0; i < list.count; ++i)
        EXPECT_EQ(loop.ports[i].portWwn, list.ports[i].portWwn);
    EXPECT_STREQ(loop.ports[0].sfp.serialNumber, "AV8000101");
    api_freeFCPorts(&loop);
    EXPECT_STREQ(list.ports[0].position, "0:1:1");
    EXPECT_STREQ(list.ports[0].wwnText, "20110002AC00A001");
    EXPECT_EQ(qelsim::outstandingFCLists(qelsim::counters()), 1u);
    EXPECT_EQ(api_freeFCPorts(&list), API_OK);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.ports, nullptr);

    ASSERT_EQ(api_getFCPorts(kOfflinePort, 3, 0, &list), API_OK);
    ASSERT_EQ(list.count, 1u);
    EXPECT_EQ(list.ports[0].portWwn, kOfflinePort);
    EXPECT_EQ(list.ports[0].portStatus, PORT_OFFLINE);
    api_freeFCPorts(&list);
    list.count = 99;  // must be reset even on failure
    EXPECT_EQ(api_getFCPorts(0x1234, 3, 0, &list), API_ERR_NOENT);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.ports, nullptr);
    EXPECT_EQ(api_freeFCPorts(&list), API_OK);  // a zeroed list may be released
}

TEST_F(Reads, SfpFlagAndDetailDecideWhatIsFilled)
{
    api_FCPortList_t list{};
    ASSERT_EQ(api_getFCPorts(kOkPort, 3, 1, &list), API_OK);
    EXPECT_EQ(list.ports[0].sfp.presentFlags & API_SFP_PRESENT, API_SFP_PRESENT);
    EXPECT_STREQ(list.ports[0].sfp.serialNumber, "AV8000101");
    EXPECT_EQ(list.ports[0].sfp.ddmFlags & API_SFP_DDM_AVAILABLE, API_SFP_DDM_AVAILABLE);
    api_freeFCPorts(&list);

    const api_sfp_t zero{};
    ASSERT_EQ(api_getFCPorts(kOkPort, 3, 0, &list), API_OK);
    EXPECT_EQ(std::memcmp(&list.ports[0].sfp, &zero, sizeof zero), 0);
    api_freeFCPorts(&list);
    ASSERT_EQ(api_getFCPorts(kOkPort, 2, 0, &list), API_OK);
    const api_FCPort_t& p = list.ports[0];
    EXPECT_EQ(p.maxRate, 8);  // identity and rates are there below detail 3, settings are not
    EXPECT_EQ(p.mode, 0);
    EXPECT_EQ(p.connectionType, 0);
    EXPECT_EQ(p.connectedTo, nullptr);
    api_freeFCPorts(&list);
}

TEST_F(Reads, DemoRecordsCarryTheirOddities)
{
    api_FCPortList_t list{};
    ASSERT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 1, &list), API_OK);
    auto byWwn = [&](uint64_t w) -> const api_FCPort_t&
    {
        for (uint32_t i = 0; i < list.count; ++i)
            if (list.ports[i].portWwn == w)
                return list.ports[i];
        ADD_FAILURE() << "no port " << std::hex << w;
        return list.ports[0];
    };
    const api_FCPort_t& ok = byWwn(kOkPort);
    ASSERT_NE(ok.connectedTo, nullptr);
    EXPECT_STREQ(ok.connectedTo, "switch-a:port4");
    EXPECT_EQ(ok.configuredRate, 3);
    EXPECT_STREQ(ok.fcalSystemName, "DEMO01-N0-LOOP");  // not the FC view's name

    const api_FCPort_t& off = byWwn(kOfflinePort);
    EXPECT_EQ(off.connectedTo, nullptr);
    EXPECT_STREQ(off.sfp.serialNumber, "ABC1234   ");
    EXPECT_EQ(off.sfp.qualityFlags, API_SFP_UNQUALIFIED | API_SFP_RX_POWER_LOW);
    EXPECT_EQ(off.sfp.ddm[4].monitorType, DDM_TEMPERATURE);
    EXPECT_EQ(off.sfp.ddm[4].value, -3);

    const api_FCPort_t& sync = byWwn(kSyncPort);
    ASSERT_NE(sync.connectedTo, nullptr);
    EXPECT_STREQ(sync.connectedTo, "");
    EXPECT_EQ(sync.sfp.presentFlags, API_SFP_PRESENT);
    EXPECT_EQ(sync.sfp.ddmFlags, 0u);

    EXPECT_EQ(byWwn(kErrorPort).sfp.presentFlags, 0u);
    EXPECT_EQ(byWwn(kUnknownPort).portStatus, PORT_UNKNOWN);
    EXPECT_EQ(byWwn(kUnknownPort).sfp.ddm[2].value, 70000);
    api_freeFCPorts(&list);
}

TEST_F(Reads, LesbRecordsFollowPortOrderWithSeveralOrNonePerPort)
{
    api_portLESBList_t all{};
    ASSERT_EQ(api_getPortLESB(API_ALL_PORTS, &all), API_OK);
    ASSERT_EQ(all.count, 6u);  // 2 + 1 + 0 + 1 + 1 + 0 + 1
    EXPECT_STREQ(all.lesb[0].portText, "20110002AC00A001");
    EXPECT_STREQ(all.lesb[1].portText, "20110002AC00A001");
    EXPECT_EQ(all.lesb[1].sampleTime, 1700000600u);
    EXPECT_EQ(all.lesb[0].portId, lpid(kOkPort));
    EXPECT_EQ(all.lesb[3].portId, 0u);  // the record that names no LPID
    EXPECT_EQ(all.lesb[4].linkFailures, UINT64_MAX);
    std::free(all.lesb);

    api_portLESBList_t none{};
    EXPECT_EQ(api_getPortLESB(kSyncPort, &none), API_OK);
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(none.lesb, nullptr);
    EXPECT_EQ(api_getPortLESB(0x99, &none), API_ERR_NOENT);
    EXPECT_EQ(qelsim::counters().lesbArraysHandedOut, 1u);  // empty lists allocate nothing
}

TEST_F(Reads, IscsiPortsAndVolumes)
{
    api_iSCSIPortList_t is{};
    ASSERT_EQ(api_getISCSIPorts(&is), API_OK);
    ASSERT_EQ(is.count, 2u);
    EXPECT_STREQ(is.ports[0].iscsiName, "iqn.2000-05.net.example:demo01.0.3.1");
    EXPECT_STREQ(is.ports[0].sfp.serialNumber, "NW10G0042 ");
    EXPECT_EQ(is.ports[1].sfp.presentFlags, 0u);
    uint16_t id = 0;
    EXPECT_EQ(api_getiSCSIPortLPID(is.ports[0].iscsiName, &id), API_OK);
    EXPECT_EQ(id, is.ports[0].portId);
    std::free(is.ports);

    api_VVList_t vv{};
    ASSERT_EQ(api_getVVs(0x60002AC00000A003ull, &vv), API_OK);
    ASSERT_EQ(vv.count, 1u);
    EXPECT_EQ(vv.vvs[0].kind, VV_KIND_VIRTUAL_COPY);
    EXPECT_STREQ(vv.vvs[0].wwnText, "60002AC00000A003");
    std::free(vv.vvs);
    EXPECT_EQ(api_getVVs(0x1, &vv), API_ERR_NOENT);
}

TEST_F(Reads, LpidsAreStableTranslateBothWaysAndRefuseWhatIsNotAPort)
{
    const uint16_t a = lpid(kOkPort);
    EXPECT_EQ(api_findFCPortLPID("20110002AC00A001"), a);
    EXPECT_EQ(api_findFCPortLPID("20110002ac00a001"), a);  // either letter case
    EXPECT_STREQ(loop_text(a), "0:1:1");
    uint16_t id = 0;
    EXPECT_EQ(api_convertStrLPIDtoPortID(loop_text(a), &id), API_OK);
    EXPECT_EQ(id, a);
    EXPECT_EQ(port(kOkPort).portId, a);
    load(qelsim::demoArrayText());  // the same port keeps its LPID across a reload
    EXPECT_EQ(lpid(kOkPort), a);
    EXPECT_STREQ(loop_text(0), "-");

    for (const char* wwn :
         {"0000000000001234", "20110002AC00A00", "20110002AC00A0011", "2011000ZAC00A001", ""})
        EXPECT_EQ(api_findFCPortLPID(wwn), API_LPID_UNKNOWN) << wwn;
    EXPECT_EQ(api_findFCPortLPID(nullptr), API_LPID_UNKNOWN);
    EXPECT_EQ(api_getFCPortLPID(0x42, &id), API_ERR_NOENT);
    EXPECT_EQ(id, API_LPID_UNKNOWN);

    id = 7;
    for (const char* t :
         {"60:0:0", "0:32:0", "0:0:32", "01:1:1", "1:1", "1:1:1:1", "a:b:c", "", "1:1:1 "})
        EXPECT_EQ(api_convertStrLPIDtoPortID(t, &id), API_ERR_INVAL) << t;
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(
        api_convertStrLPIDtoPortID("59:31:31", &id), API_OK);  // the last position of the layout
    EXPECT_NE(id, API_LPID_UNKNOWN);
}

TEST_F(Reads, SystemAddressesAndIdentity)
{
    api_ipaddr_t ip{};
    ASSERT_EQ(api_getSystemDualIP(&ip), API_OK);
    EXPECT_GT(ip.dual_flag, 2);
    char text[64];
    EXPECT_STREQ(inet_ntop(AF_INET, &ip.ipv4_addr, text, sizeof text), "192.168.10.20");
    EXPECT_STREQ(inet_ntop(AF_INET6, ip.ipv6_addr, text, sizeof text), "fd00:10::20");

    api_sysident_t id{};
    ASSERT_EQ(api_getSystemIdentity(&id), API_OK);
    EXPECT_EQ(
        std::string(id.systemName) + " " + id.hostName + " " + std::to_string(id.systemID) + " " +
            std::to_string(id.systemType) + " " + std::to_string(id.quadPort),
        "DEMO01 demo01.example.net 1234567 4 0");

    std::string noV6 = qelsim::demoArrayText();
    noV6.replace(noV6.find("\"fd00:10::20\""), 13, "null");
    load(noV6);
    ASSERT_EQ(api_getSystemDualIP(&ip), API_OK);
    EXPECT_LE(ip.dual_flag, 2);
}

TEST_F(Reads, ValidateConvertIpGivesFamilyAndCanonicalText)
{
    const struct
    {
        const char* in;
        int family;
        const char* out;
    } cases[] = {
        {"10.0.0.1", 2, "10.0.0.1"},
        {"FD00:0:0::1", 10, "fd00::1"},
        {"::ffff:10.0.0.1", 10, "::ffff:10.0.0.1"},
        {"10.0.0.256", -1, ""},
        {"10.0.0", -1, ""},
        {"", -1, ""},
        {"fe80::1%eth0", -1, ""}};
    for (const auto& c : cases)
    {
        char out[46] = "garbage";
        EXPECT_EQ(validateConvertIP(c.in, out), c.family) << c.in;
        EXPECT_STREQ(out, c.out) << c.in;
    }
    char out[46];
    EXPECT_EQ(validateConvertIP(nullptr, out), -1);
    EXPECT_EQ(validateConvertIP("10.0.0.1", nullptr), -1);
}

TEST_F(Reads, NullAndOutOfRangeArgumentsGiveErrorsNotCrashes)
{
    api_FCPortList_t list{};
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 4, 0, &list), API_ERR_INVAL);
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, -1, 0, &list), API_ERR_INVAL);
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 2, &list), API_ERR_INVAL);
    EXPECT_EQ(list.ports, nullptr);
    EXPECT_EQ(api_getFCALPorts(API_ALL_PORTS, nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_freeFCPorts(nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getISCSIPorts(nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getPortLESB(API_ALL_PORTS, nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getVVs(API_ALL_PORTS, nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getFCPortLPID(kOkPort, nullptr), API_ERR_INVAL);
    uint16_t id;
    EXPECT_EQ(api_getiSCSIPortLPID(nullptr, &id), API_ERR_INVAL);
    EXPECT_EQ(api_convertStrLPIDtoPortID(nullptr, &id), API_ERR_INVAL);
    EXPECT_EQ(api_getSystemDualIP(nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_getSystemIdentity(nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_qelOpenForCimserver(nullptr), API_ERR_INVAL);
    EXPECT_EQ(api_authorizeCIMUser("admin", nullptr, "qel_fcport.reset"), API_ERR_INVAL);
}

TEST_F(Reads, ReleasingAListTwiceOrAForeignListIsRefused)
{
    api_FCPortList_t list{};
    ASSERT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, &list), API_OK);
    api_FCPortList_t copy = list;
    EXPECT_EQ(api_freeFCPorts(&list), API_OK);
    EXPECT_EQ(api_freeFCPorts(&copy), API_ERR_INVAL);
    api_FCPort_t mine[1] = {};
    api_FCPortList_t foreign{1, mine};
    EXPECT_EQ(api_freeFCPorts(&foreign), API_ERR_INVAL);
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(c.badFrees, 2u);
    EXPECT_EQ(c.fcListsFreed, 1u);
}

}  // namespace
