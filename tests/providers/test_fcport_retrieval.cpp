// getInstance, enumerateInstances and enumerateInstanceNames of QEL_FCPort and
// QEL_FCALPort on the fc_ports.json array, and the list lookups.
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <Pegasus/Provider/ProviderException.h>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

const char PORT_A[] = "20110002AC001234";  // 0:1:1, PORT_OK
const char PORT_B[] = "21230002AC001235";  // 1:2:3, PORT_OFFLINE
const char PORT_D[] = "22320002AC001236";  // 0:3:2, PORT_LOSS_SYNC
const char ALL_PORTS[] = "0xFFFFFFFFFFFFFFF6";

// The list read and release of one request, as the call log shows them.
static Texts readAndFree(const CIMName& cls, const char* filter)
{
    const bool loop = cls == CIMName("QEL_FCALPort");
    return {
        std::string(loop ? "api_getFCALPorts(" : "api_getFCPorts(") + filter +
            (loop ? ", ptr)" : ", 3, 0, ptr)"),
        "api_freeFCPorts(ptr)"};
}

class FCPortRetrieval : public ProviderTest
{
protected:
    void SetUp() override
    {
        ProviderTest::SetUp();
        provider = start<QEL_FCPortProvider>("QEL_FCPortProvider", {"QEL_FCPort", "QEL_FCALPort"});
    }

    static Texts listCalls()
    {
        return callsNamed({"api_getFCPorts", "api_getFCALPorts", "api_freeFCPorts"});
    }

    QEL_FCPortProvider* provider = nullptr;
};

TEST_F(FCPortRetrieval, EnumerationsListEveryPortInLibraryOrder)
{
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"QEL_FCPort", {"qel-node0", "qel-node1", "qel-node0"}},
        {"QEL_FCALPort", {"qel-loop0", "qel-loop1", "qel-loop0"}},
    };
    const Texts ports = {PORT_A, PORT_B, PORT_D};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.first);
        qelsim::clearCallLog();
        const Answer all = request(c.first, ENUMERATE_INSTANCES);
        // The record whose portWwn is 0 never appears.
        EXPECT_EQ(all.sequence, "processing deliver deliver deliver complete");
        EXPECT_EQ(keysOf(all.instances, "DeviceID"), ports);
        EXPECT_EQ(listCalls(), readAndFree(c.first, ALL_PORTS));

        const Answer names = request(c.first, ENUMERATE_INSTANCE_NAMES);
        EXPECT_EQ(names.sequence, "processing deliver deliver deliver complete");
        ASSERT_EQ(names.paths.size(), 3u);
        for (size_t i = 0; i < 3; i++)
        {
            EXPECT_EQ(names.paths[i], all.instances[i].getPath());
            EXPECT_EQ(
                names.paths[i],
                portPath(ports[i].c_str(), c.second[i], c.first, "qelhost.example.com"));
        }
    }
}

TEST_F(FCPortRetrieval, GetInstanceAsksForThePortAndMatchesThePath)
{
    const std::string notFound = "QEL_FCPort CIM Object not found.";
    // notFound: the message, "" when the port is found
    const struct
    {
        const char* name;
        CIMObjectPath path;
        const char* filter;
        std::string notFound;
    } cases[] = {
        {"FC view", portPath(PORT_B, "qel-node1", "QEL_FCPort", "clienthost"), "0x21230002AC001235",
         ""},
        {"loop view", portPath(PORT_A, "qel-loop0", "QEL_FCALPort"), "0x20110002AC001234", ""},
        {"class in other case", portPath(PORT_D, "qel-node0", "qel_fcport"), "0x22320002AC001236",
         ""},
        // The scan reads either case, but key values compare with case.
        {"lower case", portPath("21230002ac001235", "qel-node1"), "0x21230002AC001235",
         notFound + "21230002ac001235"},
        // Not hexadecimal: every port is read, none matches.
        {"not hexadecimal", portPath("XYZ", "qel-node1"), ALL_PORTS, notFound + "XYZ"},
        {"other system", portPath(PORT_B), "0x21230002AC001235", notFound + PORT_B},
        {"no namespace",
         CIMObjectPath(
             "", CIMNamespaceName(), "QEL_FCPort", portPath(PORT_B, "qel-node1").getKeyBindings()),
         "0x21230002AC001235", notFound + PORT_B},
        {"record that is no port", portPath("0000000000000000", "qel-node1"), "0x0000000000000000",
         notFound + "0000000000000000"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        RecordingInstanceHandler handler;
        EXPECT_EQ(
            thrown<CIMObjectNotFoundException>(
                [&] {
                    provider->getInstance(
                        asViewer(), c.path, false, false, CIMPropertyList(), handler);
                }),
            c.notFound);
        EXPECT_EQ(listCalls(), readAndFree(c.path.getClassName(), c.filter));
        if (!c.notFound.empty())
        {
            EXPECT_TRUE(handler.record.untouched());
            continue;
        }
        EXPECT_EQ(handler.record.sequence, "processing deliver complete");
        EXPECT_EQ(keysOf(handler.delivered, "DeviceID"), Texts{keyValue(c.path, "DeviceID")});
        const Texts lines = traceLines(QEL_TRACE_FLOW);
        ASSERT_GE(lines.size(), 4u);
        EXPECT_EQ(lines[0], "--> QEL_FCPortProvider::getInstance\n");
        EXPECT_EQ(lines[1], "--> QEL_FCPortProvider::_build_instance\n");
        EXPECT_EQ(lines[lines.size() - 2], "<-- QEL_FCPortProvider::_build_instance\n");
        EXPECT_EQ(lines.back(), "<-- QEL_FCPortProvider::getInstance\n");
    }
}

TEST_F(FCPortRetrieval, MalformedRequestsAreRefusedBeforeReading)
{
    const std::string wrongClass = "QEL_FCPortProvider Invalid class nameCIM_FCPort";
    // The enumerations name the class they are routed for.
    start("QEL_FCPortProvider", {"CIM_FCPort"});
    for (Op op : {GET_INSTANCE, ENUMERATE_INSTANCES, ENUMERATE_INSTANCE_NAMES})
    {
        SCOPED_TRACE(OP_NAMES[op]);
        const Answer answer =
            request("CIM_FCPort", op, portPath(PORT_A, "qel-node0", "CIM_FCPort"));
        EXPECT_EQ(answer.failure, "CIM_ERR_NOT_SUPPORTED: " + wrongClass);
        EXPECT_EQ(answer.sequence, "");
    }
    EXPECT_EQ(
        thrown<CIMNotSupportedException>(
            [&]
            {
                QEL_FCPortProvider::buildInstances(
                    host().handle(), "CIM_FCPort", QEL_ALL_PORTS, false, false, CIMPropertyList(),
                    "h");
            }),
        wrongClass);
    EXPECT_EQ(
        thrown<CIMNotSupportedException>([&] { provider->_build_ref("CIM_FCPort"); }), wrongClass);
    RecordingInstanceHandler handler;
    EXPECT_EQ(
        thrown<CIMInvalidParameterException>(
            [&]
            {
                provider->getInstance(
                    asViewer(), CIMObjectPath("clienthost", "root/qel", "QEL_FCPort"), false, false,
                    CIMPropertyList(), handler);
            }),
        "QEL_FCPortProvider DeviceID key not found.");
    EXPECT_TRUE(handler.record.untouched());
    EXPECT_TRUE(listCalls().empty());
}

TEST_F(FCPortRetrieval, RefusedSessionEndsEveryReadWithItsLine)
{
    const std::pair<Op, int> lines[] = {
        {GET_INSTANCE, 103}, {ENUMERATE_INSTANCES, 203}, {ENUMERATE_INSTANCE_NAMES, 252}};
    // An unknown user, a disabled one, and a refusal the library forces.
    for (const std::string user : {"nobody", "retired", "admin"})
    {
        for (const auto& c : lines)
        {
            SCOPED_TRACE(user + " " + OP_NAMES[c.first]);
            if (user == "admin")
            {
                ASSERT_TRUE(qelsim::refuseSessions(API_ERR_PERM, 1).ok);
            }
            qelsim::clearCallLog();
            // The class is wrong too: the session is checked first.
            const Answer answer = request(
                "QEL_FCPort", c.first, portPath(PORT_A, "x", "CIM_Foo"), Request(), user.c_str());
            EXPECT_EQ(
                answer.failure,
                "QEL_FCPortProvider(" + std::to_string(c.second) +
                    "): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
            EXPECT_EQ(answer.sequence, "");
            EXPECT_EQ(
                callsNamed({"api_qelOpenForCimserver"}),
                Texts{"api_qelOpenForCimserver(\"" + user + "\")"});
            EXPECT_TRUE(listCalls().empty());
        }
    }
}

TEST_F(FCPortRetrieval, FailedReadsGiveEmptyResults)
{
    for (const char* failing : {"cim_sem_wait", "api_getFCPorts"})
    {
        SCOPED_TRACE(failing);
        ASSERT_TRUE(qelsim::injectFault(failing, API_ERR_BUSY).ok);
        qelsim::clearCallLog();
        qelsim::resetCounters();
        EXPECT_EQ(request("QEL_FCPort", ENUMERATE_INSTANCES).sequence, "processing complete");
        EXPECT_EQ(request("QEL_FCPort", ENUMERATE_INSTANCE_NAMES).sequence, "processing complete");
        EXPECT_EQ(
            request("QEL_FCPort", GET_INSTANCE, portPath(PORT_B, "qel-node1")).failure,
            "CIM_ERR_NOT_FOUND: QEL_FCPort CIM Object not found." + std::string(PORT_B));

        // Every list is released, also the one that was never filled; no read is made without the semaphore.
        const qelsim::Counters c = qelsim::counters();
        const bool semaphore = std::string(failing) == "cim_sem_wait";
        EXPECT_EQ(callsNamed({"api_freeFCPorts"}).size(), 3u);
        EXPECT_EQ(callsNamed({"api_getFCPorts"}).size(), semaphore ? 0u : 3u);
        EXPECT_EQ(c.semFailedWaits, semaphore ? 3u : 0u);
        EXPECT_EQ(c.semPosts, semaphore ? 0u : 3u);
        qelsim::clearFaults();
    }

    loadArray(R"({"system": {"name": "E", "hostName": "e", "ipv4": "192.0.2.1"},
                  "users": [{"name": "viewer", "role": "browse"}]})");
    EXPECT_EQ(request("QEL_FCALPort", ENUMERATE_INSTANCE_NAMES).sequence, "processing complete");
}

TEST_F(FCPortRetrieval, PortLookupsInAnInstanceList)
{
    Array<CIMInstance> list;
    for (const CIMInstance& i : request("QEL_FCPort", ENUMERATE_INSTANCES).instances)
        list.append(i);
    EXPECT_EQ(
        keyValue(
            QEL_FCPortProvider::_getPortInstance(0x21230002AC001235ULL, list).getPath(),
            "DeviceID"),
        PORT_B);
    EXPECT_EQ(
        keyValue(QEL_FCPortProvider::_getPortInstance(String("0:3:2"), list).getPath(), "DeviceID"),
        PORT_D);

    qelsim::clearCapturedLog();
    EXPECT_EQ(
        thrown<CIMObjectNotFoundException>(
            [&] { QEL_FCPortProvider::_getPortInstance(0xABCULL, list); }),
        "QEL_FCPortProvider CIM Object not found.0000000000000ABC");
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE), Texts{"Object not found: 0000000000000ABC\n"});
    EXPECT_EQ(
        thrown<CIMObjectNotFoundException>(
            [&] { QEL_FCPortProvider::_getPortInstance(String("9:9:9"), list); }),
        "QEL_FCPortProvider CIM Object not found.9:9:9");
}
