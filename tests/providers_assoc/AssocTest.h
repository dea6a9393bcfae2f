// Fixture of the association provider tests: the shared provider host with
// the FC port provider and both association providers started on
// fixtures/assoc_ports.json, and one call per request returning what the
// handler saw.
//
// Port A 20110002AC001234: SFP "SN-A   " (trailing blanks), two LESB records.
// Port B 21230002AC001235: no SFP, one LESB record.
// Port C 22320002AC001236: SFP "SN-C", no LESB record.
#ifndef QEL_TESTS_AssocTest_h
#define QEL_TESTS_AssocTest_h

#include "ProviderTest.h"

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>

#include <string>
#include <vector>

namespace qeltest
{

extern const char PORT_A[], PORT_B[], PORT_C[];
extern const char TAG_A[], TAG_C[], STATS_A[], STATS_B[];

// One association provider as the tests address it.
struct AssocSide
{
    const char* provider;   // name for the module's factory, source of refusals
    const char* assocClass;
    const char* prefix;     // prefix of its exception messages
    const char* otherClass; // the end that is not the FC port
    const char* otherKey;   // key property of that end
    const char* otherOfA;   // its key value for port A
};
extern const AssocSide SFP_ASSOC, STATS_ASSOC;

enum Op { ASSOCIATORS, ASSOCIATOR_NAMES, REFERENCES, REFERENCE_NAMES, GET_INSTANCE,
    ENUMERATE_INSTANCES, ENUMERATE_INSTANCE_NAMES };
extern const char* const OP_NAMES[];

struct Request
{
    const char* associationClass = nullptr; // null: the side's own class
    const char* resultClass = nullptr;
    const char* role = "";
    const char* resultRole = "";
    Pegasus::CIMPropertyList propertyList;
};

struct Answer
{
    std::string sequence; // handler calls, "" when untouched
    std::vector<Pegasus::CIMInstance> instances;
    std::vector<Pegasus::CIMObjectPath> paths;
    size_t delivered() const { return instances.size() + paths.size(); }
};

class AssocTest : public ProviderTest
{
protected:
    std::string arrayFixture() const override;
    void SetUp() override;

    // Paths in root/qel without host, as clients name them.
    static Pegasus::CIMObjectPath portPath(const char* deviceID);
    static Pegasus::CIMObjectPath sfpPath(const char* tag);
    static Pegasus::CIMObjectPath statsPath(const char* instanceID);
    static Pegasus::CIMObjectPath otherOfA(const AssocSide& side);

    // objectName: the source object, or the getInstance reference; the
    // enumerations ignore it. Requests run as "operator" unless user is given.
    Answer request(const AssocSide& side, Op op, const Pegasus::CIMObjectPath& objectName,
        const Request& parts = Request(), const char* user = "operator");
};

// A path's text form.
std::string text(const Pegasus::CIMObjectPath& path);

// A key binding's value ("" when absent), and a reference key parsed.
std::string keyValue(const Pegasus::CIMObjectPath& path, const char* key);
Pegasus::CIMObjectPath referenceKey(const Pegasus::CIMObjectPath& path, const char* key);

} // namespace qeltest

#endif
