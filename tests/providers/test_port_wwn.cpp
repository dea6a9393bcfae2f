// WWN key texts: the fixed-width <cinttypes> forms give exactly what the "%016LX" forms always gave,
// for the port filter of getInstance and of the statistics association, the statistics InstanceID
// and the written WWN text.
#include <QEL_FCPortStatisticsProvider.h>
#include <QEL_PortWWN.h>
#include <QEL_ProviderFrame.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

PEGASUS_USING_PEGASUS;

const Uint64 ALL = QEL_ALL_PORTS;

// The readers as they were, to compare with.
static Uint64 oldFilter(const char* text)
{
    Uint64 wwn = ALL;
    sscanf(text, "%016LX", &wwn);
    return wwn;
}

static Uint64 oldPortWWN(const char* instanceId)
{
    unsigned long long wwn = ALL;
    sscanf(instanceId, "ZEPHRAN:%016llX-Stats", &wwn);
    return wwn;
}

TEST(PortWWN, KeyTextsReadAsTheyAlwaysWere)
{
    const struct
    {
        const char* text;
        Uint64 wwn;
    } cases[] = {
        {"20110002AC001234", 0x20110002AC001234ULL},
        {"20110002ac001234", 0x20110002AC001234ULL},
        {"20110002aC00123f", 0x20110002AC00123FULL},
        // The width: 16 digits are read, the 17th is left over.
        {"123456789ABCDEF", 0x123456789ABCDEFULL},
        {"123456789ABCDEF0", 0x123456789ABCDEF0ULL},
        {"123456789ABCDEF01", 0x123456789ABCDEF0ULL},
        {"FFFFFFFFFFFFFFFF", 0xFFFFFFFFFFFFFFFFULL},
        {"FFFFFFFFFFFFFFFFF", 0xFFFFFFFFFFFFFFFFULL},
        {"0000000000000000", 0},
        {"FFFFFFFFFFFFFFF6", ALL},
        // Leading white space is skipped and not counted; sign and "0x" are counted.
        {"  \t20110002AC001234", 0x20110002AC001234ULL},
        {"0x20110002AC001234", 0x20110002AC0012ULL},
        {"0X1f", 0x1F},
        {"-1", 0xFFFFFFFFFFFFFFFFULL},
        {"-000000000000001", 0xFFFFFFFFFFFFFFFFULL},
        {"-0000000000000001", 0},
        {"+1F", 0x1F},
        // What follows the number is not looked at.
        {"12G4", 0x12},
        {"1234-Stats", 0x1234},
        // No number: every port.
        {"", ALL},
        {"   ", ALL},
        {"XYZ", ALL},
        {"G1", ALL},
        {"-", ALL},
        {"+", ALL},
        {" -x1", ALL},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(std::string("'") + c.text + "'");
        EXPECT_EQ(QEL_scanWWN(c.text), c.wwn);
        EXPECT_EQ(QEL_scanWWN(c.text), oldFilter(c.text));
        const std::string instanceId = std::string("ZEPHRAN:") + c.text + "-Stats";
        EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(instanceId.c_str()), c.wwn);
        EXPECT_EQ(
            QEL_FCPortStatisticsProvider::getPortWWN(instanceId.c_str()),
            oldPortWWN(instanceId.c_str()));
    }
    EXPECT_EQ(QEL_scanWWN(0), ALL);
    // The InstanceID must begin with the prefix exactly.
    for (const char* id :
         {"zephran:20110002AC001234-Stats", "ZEPHRAN20110002AC001234", "ZEPHRAN:", " ZEPHRAN:1",
          "ZEPHRA"})
    {
        SCOPED_TRACE(id);
        EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(id), ALL);
        EXPECT_EQ(QEL_FCPortStatisticsProvider::getPortWWN(id), oldPortWWN(id));
    }
}

TEST(PortWWN, WrittenTextIsSixteenUpperCaseDigits)
{
    for (Uint64 wwn :
         {Uint64(0), Uint64(0x1F), Uint64(0x20110002AC001234ULL), ALL,
          Uint64(0xFFFFFFFFFFFFFFFFULL)})
    {
        char old[32];
        snprintf(old, sizeof(old), "%016LX", wwn);
        EXPECT_EQ(std::string((const char*)QEL_wwnText(wwn).getCString()), old);
        EXPECT_EQ(QEL_scanWWN(old), wwn);
    }
    EXPECT_EQ(QEL_wwnText(0x1F), String("000000000000001F"));
}
