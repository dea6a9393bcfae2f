// getInstance, enumerateInstances and enumerateInstanceNames of QEL_FCPort and
// QEL_FCALPort on the fc_ports.json array, and the list lookups.
#include "PegasusPrinters.h"
#include "ProviderTest.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <Pegasus/Provider/ProviderException.h>

#include <functional>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{

const char PORT_A[] = "20110002AC001234";  // 0:1:1, PORT_OK
const char PORT_B[] = "21230002AC001235";  // 1:2:3, PORT_OFFLINE
const char PORT_D[] = "22320002AC001236";  // 0:3:2, PORT_LOSS_SYNC
const char ALL_PORTS[] = "0xFFFFFFFFFFFFFFF6";

CIMObjectPath portPath(const char* cls, const char* system, const char* deviceID,
    const char* host = "clienthost", const char* nameSpace = "root/qel")
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", "QEL_NodeSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", system, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", cls, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", deviceID, CIMKeyBinding::STRING));
    return CIMObjectPath(host, nameSpace ? CIMNamespaceName(nameSpace) : CIMNamespaceName(),
        cls, keys);
}

std::string deviceID(const CIMObjectPath& path)
{
    const Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 k = 0; k < keys.size(); k++)
    {
        if (keys[k].getName() == CIMName("DeviceID"))
        {
            return (const char*)keys[k].getValue().getCString();
        }
    }
    return "<none>";
}

std::vector<std::string> deviceIDs(const std::vector<CIMInstance>& instances)
{
    std::vector<std::string> ids;
    for (const CIMInstance& i : instances)
    {
        ids.push_back(deviceID(i.getPath()));
    }
    return ids;
}

// The list read and release of one request, as the call log shows them.
std::vector<std::string> readAndFree(const char* cls, const char* filter)
{
    const bool loop = CIMName(cls) == CIMName("QEL_FCALPort");
    return {std::string(loop ? "api_getFCALPorts(" : "api_getFCPorts(") + filter +
            (loop ? ", ptr)" : ", 3, 0, ptr)"), "api_freeFCPorts(ptr)"};
}

class FCPortRetrieval : public ProviderTest
{
protected:
    void SetUp() override
    {
        ProviderTest::SetUp();
        testing::internal::CaptureStdout();
        provider = dynamic_cast<QEL_FCPortProvider*>(
            host().startProvider("QEL_FCPortProvider", {"QEL_FCPort", "QEL_FCALPort"}));
        testing::internal::GetCapturedStdout();
        ASSERT_NE(provider, nullptr);
        qelsim::clearCallLog();
        qelsim::clearCapturedLog();
        qelsim::resetCounters();
    }

    void getInstance(const CIMObjectPath& path, RecordingInstanceHandler& handler,
        const OperationContext& context = asViewer())
    {
        provider->getInstance(context, path, false, false, CIMPropertyList(), handler);
    }

    void enumerate(const char* cls, RecordingInstanceHandler& handler,
        const OperationContext& context = asViewer())
    {
        provider->enumerateInstances(context, CIMObjectPath("", "root/qel", cls), false,
            false, CIMPropertyList(), handler);
    }

    void enumerateNames(const char* cls, RecordingObjectPathHandler& handler,
        const OperationContext& context = asViewer())
    {
        provider->enumerateInstanceNames(context, CIMObjectPath("", "root/qel", cls), handler);
    }

    static std::vector<std::string> listCalls()
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
    const std::vector<std::string> ports = {PORT_A, PORT_B, PORT_D};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.first);
        qelsim::clearCallLog();
        RecordingInstanceHandler instances;
        enumerate(c.first, instances);
        // The record whose portWwn is 0 never appears.
        EXPECT_EQ(instances.record.sequence(), "processing deliver deliver deliver complete");
        EXPECT_EQ(deviceIDs(instances.instances), ports);
        EXPECT_EQ(listCalls(), readAndFree(c.first, ALL_PORTS));

        RecordingObjectPathHandler names;
        enumerateNames(c.first, names);
        EXPECT_EQ(names.record.sequence(), "processing deliver deliver deliver complete");
        ASSERT_EQ(names.paths.size(), 3u);
        for (size_t i = 0; i < 3; i++)
        {
            EXPECT_EQ(names.paths[i], instances.instances[i].getPath());
            EXPECT_EQ(names.paths[i], portPath(c.first, c.second[i], ports[i].c_str(),
                "qelhost.example.com"));
        }
        if (CIMName(c.first) == CIMName("QEL_FCALPort"))
        {
            const CIMInstance& loop = instances.instances[0];
            EXPECT_EQ(loop.getProperty(loop.findProperty("MaxSpeed")).getValue(),
                CIMValue(Uint64(2147483648ULL)));
        }
    }
}

TEST_F(FCPortRetrieval, GetInstanceAsksForThePortAndMatchesThePath)
{
    struct Case
    {
        const char* name;
        CIMObjectPath path;
        const char* filter;
        const char* notFound;  // null: found
    };
    const Case cases[] = {
        {"FC view", portPath("QEL_FCPort", "qel-node1", PORT_B), "0x21230002AC001235", nullptr},
        {"loop view", portPath("QEL_FCALPort", "qel-loop0", PORT_A), "0x20110002AC001234", nullptr},
        {"class in other case, other host", portPath("qel_fcport", "qel-node0", PORT_D, "far"),
            "0x22320002AC001236", nullptr},
        // The scan reads either case, but key values compare with case.
        {"lower case", portPath("QEL_FCPort", "qel-node1", "21230002ac001235"),
            "0x21230002AC001235", "QEL_FCPort CIM Object not found.21230002ac001235"},
        // Not hexadecimal: every port is read, none matches.
        {"not hexadecimal", portPath("QEL_FCPort", "qel-node1", "XYZ"), ALL_PORTS,
            "QEL_FCPort CIM Object not found.XYZ"},
        {"other system", portPath("QEL_FCPort", "qel-node0", PORT_B), "0x21230002AC001235",
            "QEL_FCPort CIM Object not found.21230002AC001235"},
        {"no namespace", portPath("QEL_FCPort", "qel-node1", PORT_B, "", nullptr),
            "0x21230002AC001235", "QEL_FCPort CIM Object not found.21230002AC001235"},
        {"record that is no port", portPath("QEL_FCPort", "qel-node1", "0000000000000000"),
            "0x0000000000000000", "QEL_FCPort CIM Object not found.0000000000000000"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        qelsim::clearCallLog();
        RecordingInstanceHandler handler;
        if (c.notFound == nullptr)
        {
            getInstance(c.path, handler);
            EXPECT_EQ(handler.record.sequence(), "processing deliver complete");
            EXPECT_EQ(deviceIDs(handler.instances), std::vector<std::string>{deviceID(c.path)});
        }
        else
        {
            EXPECT_EQ(thrown<CIMObjectNotFoundException>([&] { getInstance(c.path, handler); }),
                c.notFound);
            EXPECT_TRUE(handler.record.untouched());
        }
        EXPECT_EQ(listCalls(), readAndFree(
            (const char*)c.path.getClassName().getString().getCString(), c.filter));
    }
}

TEST_F(FCPortRetrieval, MalformedRequestsAreRefusedBeforeReading)
{
    RecordingInstanceHandler instances;
    RecordingObjectPathHandler names;
    const std::function<void()> wrongClass[] = {
        [&] { getInstance(portPath("CIM_FCPort", "qel-node0", PORT_A), instances); },
        [&] { enumerate("CIM_FCPort", instances); },
        [&] { enumerateNames("CIM_FCPort", names); },
        [&] { QEL_FCPortProvider::buildInstances(host().handle(), "CIM_FCPort", QEL_ALL_PORTS,
                  false, false, CIMPropertyList(), "h"); },
        [&] { provider->_build_ref("CIM_FCPort"); },
    };
    for (const auto& call : wrongClass)
    {
        EXPECT_EQ(thrown<CIMNotSupportedException>(call),
            "QEL_FCPortProvider Invalid class nameCIM_FCPort");
    }
    EXPECT_EQ(thrown<CIMInvalidParameterException>([&] {
        getInstance(CIMObjectPath("clienthost", "root/qel", "QEL_FCPort"), instances); }),
        "QEL_FCPortProvider DeviceID key not found.");
    EXPECT_TRUE(instances.record.untouched());
    EXPECT_TRUE(names.record.untouched());
    EXPECT_TRUE(listCalls().empty());
}

TEST_F(FCPortRetrieval, RefusedSessionEndsEveryReadWithItsLine)
{
    // The class is wrong too: the session is checked first.
    RecordingInstanceHandler instances;
    RecordingObjectPathHandler names;
    const std::pair<Uint32, std::function<void(const OperationContext&)>> cases[] = {
        {103, [&](const OperationContext& ctx) {
             getInstance(portPath("CIM_Foo", "x", PORT_A), instances, ctx); }},
        {203, [&](const OperationContext& ctx) { enumerate("CIM_Foo", instances, ctx); }},
        {252, [&](const OperationContext& ctx) { enumerateNames("CIM_Foo", names, ctx); }},
    };
    // An unknown user, a disabled one, and a refusal the library forces.
    for (const std::string user : {"nobody", "retired", "admin"})
    {
        for (const auto& c : cases)
        {
            SCOPED_TRACE(user + " at line " + std::to_string(c.first));
            if (user == "admin")
            {
                ASSERT_TRUE(qelsim::refuseSessions(API_ERR_PERM, 1).ok);
            }
            qelsim::clearCallLog();
            EXPECT_EQ(refusal([&] { c.second(asUser(user.c_str())); }),
                "QEL_FCPortProvider(" + std::to_string(c.first) +
                "): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
            EXPECT_EQ(callsNamed({"api_qelOpenForCimserver"}), std::vector<std::string>{
                "api_qelOpenForCimserver(\"" + user + "\")"});
            EXPECT_TRUE(listCalls().empty());
        }
    }
    EXPECT_TRUE(instances.record.untouched());
    EXPECT_TRUE(names.record.untouched());
}

TEST_F(FCPortRetrieval, FailedReadsGiveEmptyResults)
{
    for (const char* failing : {"cim_sem_wait", "api_getFCPorts"})
    {
        SCOPED_TRACE(failing);
        ASSERT_TRUE(qelsim::injectFault(failing, API_ERR_BUSY).ok);
        qelsim::clearCallLog();
        qelsim::resetCounters();

        RecordingInstanceHandler instances;
        enumerate("QEL_FCPort", instances);
        EXPECT_EQ(instances.record.sequence(), "processing complete");
        RecordingObjectPathHandler names;
        enumerateNames("QEL_FCPort", names);
        EXPECT_EQ(names.record.sequence(), "processing complete");
        RecordingInstanceHandler one;
        EXPECT_THROW(getInstance(portPath("QEL_FCPort", "qel-node1", PORT_B), one),
            CIMObjectNotFoundException);

        // Every list is released, also the one that was never filled; no
        // read is made without the semaphore.
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
    RecordingObjectPathHandler none;
    enumerateNames("QEL_FCALPort", none);
    EXPECT_EQ(none.record.sequence(), "processing complete");
}

TEST_F(FCPortRetrieval, ReadsTraceEntryAndExit)
{
    RecordingInstanceHandler handler;
    getInstance(portPath("QEL_FCPort", "qel-node1", PORT_B), handler);
    const std::vector<std::string> lines = traceLines(QEL_TRACE_FLOW);
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[0], "--> QEL_FCPortProvider::getInstance\n");
    EXPECT_EQ(lines[1], "--> QEL_FCPortProvider::_build_instance\n");
    EXPECT_EQ(lines[lines.size() - 2], "<-- QEL_FCPortProvider::_build_instance\n");
    EXPECT_EQ(lines.back(), "<-- QEL_FCPortProvider::getInstance\n");
}

TEST_F(FCPortRetrieval, PortLookupsInAnInstanceList)
{
    RecordingInstanceHandler handler;
    enumerate("QEL_FCPort", handler);
    Array<CIMInstance> list;
    for (const CIMInstance& i : handler.instances)
    {
        list.append(i);
    }
    EXPECT_EQ(deviceID(QEL_FCPortProvider::_getPortInstance(0x21230002AC001235ULL, list)
        .getPath()), PORT_B);
    EXPECT_EQ(deviceID(QEL_FCPortProvider::_getPortInstance(String("0:3:2"), list)
        .getPath()), PORT_D);

    qelsim::clearCapturedLog();
    EXPECT_EQ(thrown<CIMObjectNotFoundException>(
        [&] { QEL_FCPortProvider::_getPortInstance(0xABCULL, list); }),
        "QEL_FCPortProvider CIM Object not found.0000000000000ABC");
    EXPECT_EQ(traceLines(QEL_TRACE_FAILURE),
        std::vector<std::string>{"Object not found: 0000000000000ABC\n"});
    EXPECT_EQ(thrown<CIMObjectNotFoundException>(
        [&] { QEL_FCPortProvider::_getPortInstance(String("9:9:9"), list); }),
        "QEL_FCPortProvider CIM Object not found.9:9:9");
}

} // namespace
