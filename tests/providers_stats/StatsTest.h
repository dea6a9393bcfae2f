// The fixture of the SFP and LESB statistics provider tests: the shared
// provider host on the array of fixtures/sfp_lesb.json (two FC ports with
// transceivers and one without, one iSCSI port with a transceiver and one
// without, LESB records on two of the three FC ports), both providers started.
#ifndef QEL_TESTS_StatsTest_h
#define QEL_TESTS_StatsTest_h

#include "PegasusPrinters.h"
#include "ProviderTest.h"

#include <QEL_Common.h>
#include <QEL_FCPortStatisticsProvider.h>
#include <QEL_ProviderFrame.h>
#include <QEL_SFPProvider.h>

#include <ClassRepository.h>

#include <Pegasus/Common/CIMClass.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qeltest
{

const char PORT_A[] = "20110002AC001234";  // SFP "ABC   ", two LESB records
const char PORT_B[] = "21230002AC001235";  // SFP "SN-SHARED", no LESB record
const char PORT_D[] = "22320002AC001236";  // no SFP, one LESB record, portId 0
const char ISCSI_1[] = "iqn.2000-05.com.example:array.p1";  // SFP "SN-SHARED"
const char HOST[] = "qelhost.example.com";

inline std::string statsFixtureText()
{
    std::ifstream in(QEL_STATS_FIXTURES "/sfp_lesb.json");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class StatsTest : public ProviderTest
{
protected:
    std::string arrayFixture() const override { return statsFixtureText(); }

    void SetUp() override
    {
        ProviderTest::SetUp();
        ASSERT_FALSE(statsFixtureText().empty());
        sfp = dynamic_cast<Pegasus::QEL_SFPProvider*>(
            host().startProvider("QEL_SFPProvider", {"QEL_SFP"}));
        stats = dynamic_cast<Pegasus::QEL_FCPortStatisticsProvider*>(
            host().startProvider("QEL_FCPortStatisticsProvider", {"QEL_FCPortLESBStatistics"}));
        ASSERT_NE(sfp, nullptr);
        ASSERT_NE(stats, nullptr);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        qelsim::resetCounters();
    }

    Pegasus::CIMClass cimClass(const char* name)
    {
        return host().repository().getClass(
            "root/qel", name, false, true, true, Pegasus::CIMPropertyList());
    }

    static Pegasus::CIMObjectPath classPath(const char* cls)
    {
        return Pegasus::CIMObjectPath("", Pegasus::CIMNamespaceName("root/qel"), cls);
    }

    // The key-list calls of the library, as "call(args)".
    static std::vector<std::string> readCalls()
    {
        return callsNamed({"api_getFCPorts", "api_freeFCPorts", "api_getISCSIPorts",
            "api_getPortLESB", "api_resetPortLESB"});
    }

    Pegasus::QEL_SFPProvider* sfp = nullptr;
    Pegasus::QEL_FCPortStatisticsProvider* stats = nullptr;
};

inline std::string str(const Pegasus::String& s)
{
    return (const char*)s.getCString();
}

inline Pegasus::CIMValue valueOf(const Pegasus::CIMInstance& instance, const char* name)
{
    const Pegasus::Uint32 at = instance.findProperty(name);
    return at == Pegasus::PEG_NOT_FOUND
        ? Pegasus::CIMValue() : instance.getProperty(at).getValue();
}

// The value of the first key binding of a path named name.
inline std::string keyOf(const Pegasus::CIMObjectPath& path, const char* name)
{
    const Pegasus::Array<Pegasus::CIMKeyBinding> keys = path.getKeyBindings();
    for (Pegasus::Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName() == Pegasus::CIMName(name))
        {
            return (const char*)keys[i].getValue().getCString();
        }
    }
    return "<no " + std::string(name) + ">";
}

inline Pegasus::CIMObjectPath pathOf(const Pegasus::CIMInstance& i) { return i.getPath(); }
inline Pegasus::CIMObjectPath pathOf(const Pegasus::CIMObjectPath& p) { return p; }

template <typename Objects>
std::vector<std::string> keysOf(const Objects& objects, const char* name)
{
    std::vector<std::string> keys;
    for (const auto& object : objects)
    {
        keys.push_back(keyOf(pathOf(object), name));
    }
    return keys;
}


} // namespace qeltest

#endif
