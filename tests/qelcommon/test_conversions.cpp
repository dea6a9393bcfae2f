// Value conversions: port state, time and zone, identifiers, the event record, random strings and the RAID helpers.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cstring>
#include <tuple>

using namespace Pegasus;
using namespace qelcommontest;

TEST(PortState, OperationalStatusAndHealthStateOfEveryState)
{
    const struct
    {
        int state;
        Uint16 operational, health;
    } cases[] = {
        {PORT_CONFIG_WAIT, 10, 5},
        {PORT_ALPA_WAIT, 8, 5},
        {PORT_LOGIN_WAIT, 8, 5},
        {PORT_OK, 2, 5},
        {PORT_LOSS_SYNC, 13, 5},
        {PORT_ERROR, 6, 20},
        {PORT_XXX, 0, 0},
        {PORT_NONPARTICIPATE, 6, 20},
        {PORT_COREDUMP, 6, 25},
        {PORT_OFFLINE, 10, 10},
        {PORT_FWDEAD, 7, 30},
        {PORT_IDLE_FOR_RESET, 8, 5},
        {PORT_DHCP_IN_PROGRESS, 8, 5},
        {PORT_PENDING_RESET, 8, 5},
        {PORT_UNKNOWN, 0, 0},
        {14, 0, 0},
        {-1, 0, 0},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.state);
        EXPECT_EQ(
            c.operational,
            QEL_Common::getPortOperationalStatus(static_cast<api_port_status_t>(c.state)));
        EXPECT_EQ(
            c.health, QEL_Common::getPortHealthState(static_cast<api_port_status_t>(c.state)));
    }
}

TEST(TimeConversions, CIMDateTimeAndTimeZoneUnderSeveralZones)
{
    // 2009-03-01 19:05:09 UTC.
    const time_t t = 1235934309;
    const struct
    {
        const char* tz;
        const char* dateTime;
        const char* zone;
    } cases[] = {
        {"UTC0", "20090301190509.000000+000", "GMT-0"},
        {"XST8", "20090301110509.000000-480", "GMT-8"},
        {"EST5", "20090301140509.000000-300", "GMT-5"},
        {"IST-5:30", "20090302003509.000000+330", "GMT+5"},
        {"XST3:30", "20090301153509.000000-210", "GMT-3"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.tz);
        ScopedTimeZone zone(c.tz);
        CIMDateTime dt = QEL_Common::getCIMDateTime(t);
        EXPECT_EQ(String(c.dateTime), dt.toString());
        EXPECT_EQ(String(c.zone), QEL_Common::getTimeZone());
        EXPECT_EQ(t, QEL_Common::getDateTime(dt));  // read back as local time
    }
}

TEST(TimeConversions, FormatDateTimeRefusesWhatItCannotRead)
{
    const std::pair<const char*, int> cases[] = {
        {"00000101000000.000000+000", 0},
        {"abcd0101000000.000000+000", 0},
        {"", 0},
        {"-0010101000000.000000+000", -1},
        {"18990101000000.000000+000", -1},
        {"20240001000000.000000+000", -1},
        {"2024", -1},
        {"20240229235960.000000+000", 1},
    };
    struct tm tmval;
    for (const auto& c : cases)
    {
        memset(&tmval, 0x55, sizeof(tmval));
        EXPECT_EQ(c.second, QEL_Common::_formatDateTime(c.first, &tmval)) << c.first;
    }
    ASSERT_EQ(1, QEL_Common::_formatDateTime("20240229235960.123456-300", &tmval));
    // Seconds are not range-checked; DST is left to mktime.
    EXPECT_EQ(
        (std::vector<int>{124, 1, 29, 23, 59, 60, -1}),
        (std::vector<int>{
            tmval.tm_year, tmval.tm_mon, tmval.tm_mday, tmval.tm_hour, tmval.tm_min, tmval.tm_sec,
            tmval.tm_isdst}));
    EXPECT_EQ(0, QEL_Common::_formatDateTime(nullptr, &tmval));
    // A year of 0000 and an interval give 0 instead of an exception.
    EXPECT_EQ(0, QEL_Common::getDateTime(CIMDateTime("00000101000000.000000+000")));
    EXPECT_EQ(0, QEL_Common::getDateTime(CIMDateTime()));
}

TEST(Identifiers, InstanceIdSuffixAndLongIscsiNames)
{
    loadTestArray();
    EXPECT_EQ(
        String("StorageSetting:RAID0"),
        QEL_Common::extractFromInstanceID("ZEPHRAN:StorageSetting:RAID0"));
    EXPECT_EQ(String("x"), QEL_Common::extractFromInstanceID("pre-ZEPHRAN:x"));
    EXPECT_EQ(String(), QEL_Common::extractFromInstanceID("zephran:x"));
    // An iSCSI name reaches the library cut to 223 characters.
    qelsim::clearCallLog();
    String longName(std::string(300, 'n').c_str());
    EXPECT_EQ(API_LPID_UNKNOWN, QEL_Common::getPortLPID(longName));
    ASSERT_FALSE(qelsim::callTexts().empty());
    EXPECT_NE(
        std::string::npos, qelsim::callTexts().back().find("\"" + std::string(223, 'n') + "\""));
}

TEST(EventRecord, FieldsAreFilledWithinTheirLimitsAndOffsets)
{
    loadTestArray();
    api_evtparam_t evt;
    unsigned char* raw = reinterpret_cast<unsigned char*>(&evt);
    memset(&evt, 0x7F, sizeof(evt));
    const std::string longText(300, 'x');
    ASSERT_EQ(
        0, QEL_Common::setEventParam(
               &evt, std::string(200, 'C').c_str(), longText.c_str(), longText.c_str(),
               longText.c_str(), longText.c_str(), longText.c_str()));
    const struct
    {
        size_t offset, limit;
        std::string expected;
    } fields[] = {
        {4, 31, std::string(31, 'x')},          {36, 45, std::string(45, 'x')},
        {82, 127, std::string(126, 'C') + ":"}, {210, 15, std::string(15, 'x')},
        {226, 255, std::string(255, 'x')},
    };
    for (const auto& f : fields)
    {
        SCOPED_TRACE(f.offset);
        EXPECT_EQ(f.expected, std::string(reinterpret_cast<char*>(raw + f.offset)));
        EXPECT_EQ(0, raw[f.offset + f.limit]);
    }
    for (size_t i : {0u, 1u, 2u, 3u, 482u, 483u})
        EXPECT_EQ(0x7F, raw[i]) << "byte " << i << " belongs to no filled field";

    const std::tuple<const char*, const char*, const char*> methods[] = {
        {nullptr, "Reset", ":Reset"},
        {"QEL_FCPort", nullptr, "QEL_FCPort:"},
        {nullptr, nullptr, ""},
        {"QEL_FCPort", "SetOffline", "QEL_FCPort:SetOffline"}};
    for (const auto& [className, method, expected] : methods)
    {
        ASSERT_EQ(0, QEL_Common::setEventParam(&evt, className, method, nullptr, nullptr, nullptr));
        EXPECT_EQ(
            std::string(expected) + "||||", std::string(evt.method) + "|" + evt.inst_op + "|" +
                                                evt.user + "|" + evt.addr + "|" + evt.inst_param);
    }
    ASSERT_EQ(0, QEL_Common::setEventOp(&evt, "Modify"));
    EXPECT_STREQ("Modify", evt.inst_op);

    TraceCapture trace;
    EXPECT_EQ(1, QEL_Common::setEventParam(nullptr, "c", "m", "o", "u", "a"));
    EXPECT_EQ(1, QEL_Common::setEventParam(nullptr, "c", "m", "o", "u", "a", "text"));
    EXPECT_EQ(1, QEL_Common::setEventOp(nullptr, "o"));
    EXPECT_EQ(
        2u,
        trace.count(
            2,
            "setEventParam: Unable to log event data. The control block pointer (eventp) is null.\n"));
    EXPECT_TRUE(trace.has(
        2, "setEventOp: Unable to log event data. The control block pointer (eventp) is null.\n"));
}

TEST(RandomString, LengthCountsTheTerminator)
{
    char buf[32];
    memset(buf, '#', sizeof(buf));
    QEL_Common::generate_random_string(buf, 1);
    EXPECT_EQ('\0', buf[0]);
    EXPECT_EQ('#', buf[1]);
    QEL_Common::generate_random_string(buf, 17);
    EXPECT_EQ(16u, strlen(buf));
    EXPECT_EQ(16u, strspn(buf, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"));
    EXPECT_EQ('#', buf[17]);
}

TEST(RandomStringDeathTest, BadArgumentsStopTheProcessWithTheAssertionText)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    char buf[4];
    const char* expected =
        "Assertion failed: len > 0 && str != NULL\n.*Assertion point: file: \\.\\./QEL_Common, line: 5332";
    EXPECT_DEATH(QEL_Common::generate_random_string(buf, 0), expected);
    EXPECT_DEATH(QEL_Common::generate_random_string(nullptr, 4), expected);
}

TEST(SmallTables, NodePairsRaidTypesAndThreshold)
{
    const int pairs[][2] = {{-1, -1}, {0, 0}, {1, 0}, {2, 1}, {7, 3}, {8, -1}};
    for (const auto& p : pairs)
        EXPECT_EQ(p[1], QEL_Common::getNodePairIndex(p[0])) << p[0];
    // package redundancy, data redundancy -> RAID type: the first rule that holds
    const int raids[][3] = {{1, 1, 0},  {2, 2, 10}, {5, 3, 10}, {2, 1, 50},
                            {3, 1, 60}, {1, 2, 99}, {0, 0, 99}};
    for (const auto& r : raids)
        EXPECT_EQ(r[2], QEL_Common::returnRAIDType(Uint16(r[0]), Uint16(r[1])))
            << r[0] << "/" << r[1];
    loadTestArray();
    struct rlimit limit;
    ASSERT_EQ(0, getrlimit(RLIMIT_AS, &limit));
    const Uint64 megabytes = Uint64(limit.rlim_cur) / 1000000;
    TraceCapture trace;
    EXPECT_EQ(Uint32(megabytes * 3), QEL_Common::getInstanceThreshold(3));
    EXPECT_TRUE(trace.has(
        4, "soft limit = " + std::to_string(Uint32(megabytes)) + ", maxInstScale factor = 3\n"));
}
