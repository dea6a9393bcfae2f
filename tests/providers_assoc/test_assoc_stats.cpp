// The FC port to statistics association: statistics of the first LESB record, the port end asked of the
// CIM server with the request's context, the guarded read of the port record, key errors, the
// getInstance narrowing and the release of every LESB array.
#include "AssocTest.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

const char READ_ALL[] = "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 0, ptr)";

class StatsAssociation : public AssocTest
{
protected:
    CIMAssociationProvider& provider()
    {
        return dynamic_cast<CIMAssociationProvider&>(*host().providerFor(STATS_ASSOC.assocClass));
    }
    Texts& portRequests() { return host().handleRep().instanceCalls; }
};

TEST_F(StatsAssociation, APortLeadsToTheStatisticsOfItsFirstRecordOnly)
{
    const Answer a = request(STATS_ASSOC, ASSOCIATORS, portPath(PORT_A));
    ASSERT_EQ(a.instances.size(), 1u);
    EXPECT_EQ(keyValue(a.instances[0].getPath(), "InstanceID"), STATS_A);
    EXPECT_EQ(valueOf(a.instances[0], "LinkFailures"), CIMValue(Uint64(7)));  // the second has 99
    EXPECT_EQ(request(STATS_ASSOC, REFERENCES, portPath(PORT_B)).delivered(), 1u);
    // No LESB record: no statistics, no association.
    EXPECT_EQ(
        request(STATS_ASSOC, REFERENCE_NAMES, portPath(PORT_C)).sequence, "processing complete");
    // Lower-case hexadecimal scans to the port but matches no record text.
    qelsim::clearCallLog();
    EXPECT_EQ(request(STATS_ASSOC, ASSOCIATOR_NAMES, portPath("20110002ac001234")).delivered(), 0u);
    EXPECT_EQ(callsNamed({"api_getPortLESB"}), Texts{"api_getPortLESB(0x20110002AC001234, ptr)"});
}

TEST_F(StatsAssociation, TheStatisticsPortIsAskedOfTheServerWithTheRequestsContext)
{
    RecordingObjectHandler ports;
    provider().associators(
        asOperator(), statsPath(STATS_A), CIMName(), CIMName(), "", "", true, true,
        propertyList({"Speed"}), ports);
    EXPECT_EQ(
        portRequests(),
        Texts{"operator root/qel //qelhost.example.com/root/qel:QEL_FCPort.CreationClassName="
              "\"QEL_FCPort\",DeviceID=\"20110002AC001234\",SystemCreationClassName="
              "\"QEL_NodeSystem\",SystemName=\"qel-node0\" qualifiers origin properties 1"});
    EXPECT_EQ(
        callsNamed({"api_getFCPorts"}).front(), "api_getFCPorts(0x20110002AC001234, 3, 0, ptr)");
    // What the server answered is delivered, built with the property list.
    ASSERT_EQ(ports.delivered.size(), 1u);
    const CIMInstance port(ports.delivered[0]);
    EXPECT_EQ(keyValue(port.getPath(), "DeviceID"), PORT_A);
    EXPECT_NE(port.findProperty("Speed"), PEG_NOT_FOUND);
    EXPECT_EQ(port.findProperty("PortNumber"), PEG_NOT_FOUND);

    // Names ask with both flags false; a server failure passes through.
    portRequests().clear();
    host().handleRep().failInstances = true;
    RecordingObjectPathHandler names;
    EXPECT_THROW(
        provider().associatorNames(
            asOperator(), statsPath(STATS_B), CIMName(), CIMName(), "", "", names),
        CIMException);
    EXPECT_TRUE(names.record.untouched());
    EXPECT_EQ(
        portRequests(),
        Texts{"operator root/qel //qelhost.example.com/root/qel:QEL_FCPort.CreationClassName="
              "\"QEL_FCPort\",DeviceID=\"21230002AC001235\",SystemCreationClassName="
              "\"QEL_NodeSystem\",SystemName=\"qel-node1\" properties 0"});
}

TEST_F(StatsAssociation, WithoutAPortRecordThereIsNoPortAndNoServerCall)
{
    const struct
    {
        const char* instanceID;
        const char* fault;
    } cases[] = {
        {"ZEPHRAN:00000000000000FF-Stats", nullptr},  // names no port of the array
        {STATS_A, "api_getFCPorts"},
        {STATS_A, "cim_sem_wait"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.instanceID + std::string(c.fault ? c.fault : ""));
        if (c.fault)
        {
            ASSERT_TRUE(qelsim::injectFault(c.fault, API_ERR_IO).ok);
        }
        RecordingObjectHandler ports;
        provider().associators(
            asOperator(), statsPath(c.instanceID), CIMName(), CIMName(), "", "", false, false,
            CIMPropertyList(), ports);
        EXPECT_EQ(ports.record.sequence, "processing complete");
        EXPECT_TRUE(portRequests().empty());
        qelsim::clearFaults();
    }
}

TEST_F(StatsAssociation, KeysThatNameNoPortAreRefusedBeforeTheLibraryIsRead)
{
    const struct
    {
        CIMObjectPath from;
        const char* message;
    } cases[] = {
        {statsPath(""), "QEL_FCPortElementStatisticalData InstanceID key not found."},
        {statsPath("OTHER:20110002AC001234-Stats"),
         "QEL_FCPortElementStatisticalData InstanceID key not found."},
        {statsPath("ZEPHRAN:FFFFFFFFFFFFFFF6-Stats"),
         "QEL_FCPortElementStatisticalData InstanceID key not found."},
        {portPath(""), "QEL_FCPortElementStatisticalData DeviceID key not found."},
        {portPath("not-hex"), "QEL_FCPortElementStatisticalData DeviceID key not found."},
    };
    for (const auto& c : cases)
    {
        for (Op op : {ASSOCIATORS, REFERENCE_NAMES})
        {
            qelsim::clearCallLog();
            EXPECT_EQ(
                request(STATS_ASSOC, op, c.from).failure,
                std::string("CIM_ERR_INVALID_PARAMETER: ") + c.message);
            EXPECT_TRUE(callsNamed({"api_getFCPorts", "api_getPortLESB"}).empty());
        }
    }
}

TEST_F(StatsAssociation, OneAssociationPerPortWithRecordsAndTheSameFromTheStatistics)
{
    const Answer names = request(STATS_ASSOC, ENUMERATE_INSTANCE_NAMES, CIMObjectPath());
    ASSERT_EQ(names.paths.size(), 2u);
    const char* ends[][2] = {{PORT_A, STATS_A}, {PORT_B, STATS_B}};
    for (size_t i = 0; i < 2; i++)
    {
        EXPECT_EQ(keyValue(referenceKey(names.paths[i], "ManagedElement"), "DeviceID"), ends[i][0]);
        EXPECT_EQ(keyValue(referenceKey(names.paths[i], "Stats"), "InstanceID"), ends[i][1]);
        const Answer fromStats = request(STATS_ASSOC, REFERENCE_NAMES, statsPath(ends[i][1]));
        EXPECT_EQ(fromStats.paths, std::vector<CIMObjectPath>{names.paths[i]});
    }
}

// The association with ManagedElement replaced by a string key of text.
static CIMObjectPath withManagedElement(const CIMObjectPath& association, const String& text)
{
    Array<CIMKeyBinding> keys(1, CIMKeyBinding("ManagedElement", text, CIMKeyBinding::STRING));
    keys.append(
        CIMKeyBinding("Stats", keyValue(association, "Stats").c_str(), CIMKeyBinding::REFERENCE));
    return CIMObjectPath("", association.getNameSpace(), association.getClassName(), keys);
}

TEST_F(StatsAssociation, GetInstanceNarrowsOnlyOnAStatisticsPathInManagedElement)
{
    const CIMObjectPath association =
        request(STATS_ASSOC, ENUMERATE_INSTANCE_NAMES, CIMObjectPath()).paths.at(0);
    const std::string notFound =
        "CIM_ERR_NOT_FOUND: QEL_FCPortElementStatisticalData CIM Object not found.";
    const struct
    {
        CIMObjectPath reference;
        Texts portReads;
        std::string failure;  // its start; "" when found
    } cases[] = {
        {association, {READ_ALL}, ""},
        {withManagedElement(association, ""), {READ_ALL}, notFound},
        // Text that is parsed and is no object path: the parse's exception ends the request
        // before anything is read.
        {withManagedElement(association, "no path at all"),
         {},
         "other: malformed object name: no path at all"},
        {withManagedElement(association, "QEL_FCPort.DeviceID="),
         {},
         "other: malformed object name: QEL_FCPort.DeviceID="},
        {withManagedElement(association, statsPath(STATS_B).toString()),
         {"api_getFCPorts(0x21230002AC001235, 3, 0, ptr)"},
         notFound},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(text(c.reference));
        qelsim::clearCallLog();
        const Answer answer = request(STATS_ASSOC, GET_INSTANCE, c.reference);
        EXPECT_EQ(answer.instances.size(), c.failure.empty() ? 1u : 0u);
        EXPECT_EQ(answer.failure.substr(0, c.failure.size()), c.failure);
        EXPECT_EQ(answer.failure.empty(), c.failure.empty()) << answer.failure;
        EXPECT_EQ(callsNamed({"api_getFCPorts"}), c.portReads);
    }
}

TEST_F(StatsAssociation, EveryLESBArrayIsReleasedWhateverTheOutcome)
{
    // Port A's array holds two records, port C gives none, some reads fail.
    ASSERT_TRUE(qelsim::injectFault("api_getPortLESB", API_ERR_IO, 1).ok);
    EXPECT_EQ(request(STATS_ASSOC, ENUMERATE_INSTANCES, CIMObjectPath()).delivered(), 1u);
    for (const char* port : {PORT_A, PORT_B, PORT_C})
        request(STATS_ASSOC, REFERENCES, portPath(port));
    ASSERT_TRUE(qelsim::injectFault("api_getPortLESB", API_ERR_IO, 1).ok);
    EXPECT_EQ(request(STATS_ASSOC, ASSOCIATORS, portPath(PORT_A)).delivered(), 0u);
    EXPECT_EQ(qelsim::counters().lesbArraysHandedOut, 3u);

    const int leaks = qelsim::leakCheck();
    if (leaks < 0)
    {
        GTEST_SKIP() << "no leak checker in this build";
    }
    EXPECT_EQ(leaks, 0);
}
