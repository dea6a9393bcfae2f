// Fixture of the association provider tests: the shared provider host with the FC port provider and
// both association providers started on fixtures/assoc_ports.json, and one call per request returning
// what the handler saw.
//
// Port A 20110002AC001234: SFP "SN-A   " (trailing blanks), two LESB records.
// Port B 21230002AC001235: no SFP, one LESB record.
// Port C 22320002AC001236: SFP "SN-C", no LESB record.
#ifndef QEL_TESTS_AssocTest_h
#define QEL_TESTS_AssocTest_h

#include "ProviderTest.h"

namespace qeltest
{

inline const char PORT_A[] = "20110002AC001234", PORT_B[] = "21230002AC001235",
                  PORT_C[] = "22320002AC001236";
inline const char TAG_A[] = "20110002AC001234-SN-A", TAG_C[] = "22320002AC001236-SN-C";
inline const char STATS_A[] = "ZEPHRAN:20110002AC001234-Stats",
                  STATS_B[] = "ZEPHRAN:21230002AC001235-Stats";

// One association provider as the tests address it.
struct AssocSide
{
    const char* provider;  // name for the module's factory, source of refusals
    const char* assocClass;
    const char* prefix;    // prefix of its exception messages
    const char* otherOfA;  // the key of port A's other end
};
inline const AssocSide SFP_ASSOC = {
    "QEL_FCPortSFPProvider", "QEL_FCPortSFP", "QEL_FCPortSFPProvider", TAG_A};
inline const AssocSide STATS_ASSOC = {
    "QEL_FCPortElementStatisticalDataProvider", "QEL_FCPortLESBElementStatisticalData",
    "QEL_FCPortElementStatisticalData", STATS_A};

class AssocTest : public ProviderTest
{
protected:
    std::string arrayFixture() const override { return QEL_ASSOC_FIXTURES "/assoc_ports.json"; }

    void SetUp() override
    {
        ProviderTest::SetUp();
        start("QEL_FCPortProvider", {"QEL_FCPort"});
        start(SFP_ASSOC.provider, {SFP_ASSOC.assocClass});
        start(STATS_ASSOC.provider, {STATS_ASSOC.assocClass});
    }

    // Paths in root/qel without host, as clients name them (ports: portPath).
    static CIMObjectPath sfpPath(const char* tag)
    {
        return qelPath("QEL_SFP", {"CreationClassName", "QEL_SFP", "Tag", tag});
    }
    static CIMObjectPath statsPath(const char* instanceID)
    {
        return qelPath("QEL_FCPortLESBStatistics", {"InstanceID", instanceID});
    }
    static CIMObjectPath otherOfA(const AssocSide& side)
    {
        return &side == &SFP_ASSOC ? sfpPath(side.otherOfA) : statsPath(side.otherOfA);
    }

    // A request to one association provider, as "operator" unless user is given.
    Answer request(
        const AssocSide& side, Op op, const CIMObjectPath& objectName,
        const Request& parts = Request(), const char* user = "operator")
    {
        return ProviderTest::request(side.assocClass, op, objectName, parts, user);
    }
};

// A path's text form, and a reference key of a path parsed.
inline std::string text(const CIMObjectPath& path)
{
    return str(path.toString());
}
inline CIMObjectPath referenceKey(const CIMObjectPath& path, const char* key)
{
    return CIMObjectPath(String(keyValue(path, key).c_str()));
}

}  // namespace qeltest

#endif
