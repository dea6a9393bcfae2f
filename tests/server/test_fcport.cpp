// The server with the array's real modules (libQEL_FCPortProvider and the
// internal cache provider) on the simulated array: every operation
// QEL_FCPort and QEL_InternalCache support, end to end in process.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>
#include <Server/core/ProviderManager.h>

#include <Pegasus/Client/CIMClient.h>

#include <qelsim_control.h>

#include <algorithm>
#include <cstring>

using namespace Pegasus;
using namespace servertest;

namespace {

const char* const arrayJson = R"({
  "system": { "name": "QEL-ARRAY-9", "hostName": "array9.example.com", "id": 9, "type": 2,
              "quadPort": false, "ipv4": "192.0.2.9", "cages": ["CAGE1"] },
  "log": { "level": 1, "destination": "stderr" },
  "users": [
    { "name": "admin", "role": "super" },
    { "name": "operator", "role": "edit", "addresses": ["192.0.2.50"] },
    { "name": "viewer", "role": "browse" }
  ],
  "fcPorts": [
    { "position": "0:1:1", "wwn": "20110002AC001234", "status": "PORT_OK", "currentRate": 8,
      "fcSystemName": "node0", "fcNodeWwn": "2FF70002AC001234", "fcalSystemName": "loop0",
      "fcalNodeWwn": "2FF70002AC00AAAA", "fullDuplex": true, "maxRate": 16, "configuredRate": 3,
      "topology": 2, "portKind": 1, "configuration": 1, "mode": 1, "connectionMode": 2,
      "modeChangeAllowed": true, "deviceTypeConnected": 1, "connectionType": 3, "class2": 3,
      "vcn": 2, "interruptCoalescing": 1, "connectedTo": null },
    { "position": "1:2:3", "wwn": "21230002AC001235", "status": "PORT_OFFLINE", "currentRate": 4,
      "fcSystemName": "node1", "fcNodeWwn": "2FF70002AC001235", "fcalSystemName": "loop1",
      "fcalNodeWwn": "2FF70002AC00BBBB", "fullDuplex": false, "maxRate": 8, "configuredRate": 4,
      "topology": 1, "portKind": 3, "configuration": 2, "mode": 2, "connectionMode": 1,
      "modeChangeAllowed": true, "deviceTypeConnected": 2, "connectionType": 1, "class2": 1,
      "vcn": 1, "interruptCoalescing": 2, "connectedTo": "fabric-a:port7" },
    { "position": "1:2:4", "wwn": "0000000000000000", "status": "PORT_OK", "currentRate": 8,
      "fcSystemName": "node1", "fcalSystemName": "loop1" }
  ]
})";

const CIMNamespaceName qel("root/qel");
const CIMNamespaceName internal("root/PG_Internal");

class ArrayServer : public ServerTest
{
protected:
    void SetUp() override
    {
        qelsim::Result loaded = qelsim::loadArrayText(arrayJson);
        ASSERT_TRUE(loaded.ok) << loaded.error;
        qelsim::clearFaults();
        qelsim::clearCallLog();
        ServerTest::SetUp();
        context = Dispatcher::requestContext("operator", "192.0.2.50");
    }

    CIMObjectPath port(const char* wwn, const char* className = "QEL_FCPort")
    {
        Array<CIMObjectPath> names = dispatcher().enumerateInstanceNames(context, qel, className);
        for (Uint32 i = 0; i < names.size(); ++i)
        {
            const Array<CIMKeyBinding>& keys = names[i].getKeyBindings();
            for (Uint32 k = 0; k < keys.size(); ++k)
            {
                if (keys[k].getName() == CIMName("DeviceID") && text(keys[k].getValue()) == wwn)
                    return names[i];
            }
        }
        ADD_FAILURE() << "no port " << wwn;
        return CIMObjectPath();
    }

    static std::string value(const CIMInstance& instance, const char* name)
    {
        Uint32 pos = instance.findProperty(name);
        return pos == PEG_NOT_FOUND ? "(absent)" : text(instance.getProperty(pos).getValue().toString());
    }

    // The library calls made, as the simulator logged them.
    static std::vector<std::string> calls(const std::string& prefix)
    {
        std::vector<std::string> found;
        for (const std::string& call : qelsim::callTexts())
        {
            if (call.compare(0, prefix.size(), prefix) == 0)
                found.push_back(call);
        }
        return found;
    }
};

CIMInstance modeChange(const CIMObjectPath& path, Uint16 mode)
{
    CIMInstance instance("QEL_FCPort");
    instance.addProperty(CIMProperty("Mode", CIMValue(mode)));
    instance.setPath(path);
    return instance;
}

CIMPropertyList only(const char* name)
{
    Array<CIMName> names;
    names.append(name);
    return CIMPropertyList(names);
}

}  // namespace

TEST_F(ArrayServer, EnumerationsListThePortsOfTheArray)
{
    const ProviderId* portProvider = server().registry().instanceProvider(qel, "QEL_FCPort");
    ASSERT_NE(portProvider, nullptr);
    EXPECT_FALSE(server().providers().isInitialized(*portProvider));  // loaded on first use

    Array<CIMObjectPath> names = dispatcher().enumerateInstanceNames(context, qel, "QEL_FCPort");
    ASSERT_EQ(names.size(), 2u);  // the record with WWN 0 is not a port
    // The host name came from the internal cache provider during initialize.
    EXPECT_EQ(text(names[0].toString()),
              "//array9.example.com/root/qel:QEL_FCPort.CreationClassName=\"QEL_FCPort\","
              "DeviceID=\"20110002AC001234\",SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"node0\"");
    EXPECT_TRUE(server().providers().isInitialized(*portProvider));

    Array<CIMInstance> ports = dispatcher().enumerateInstances(context, qel, "QEL_FCPort");
    ASSERT_EQ(ports.size(), 2u);
    EXPECT_EQ(value(ports[0], "PermanentAddress"), "20110002AC001234");
    EXPECT_EQ(value(ports[0], "AutoSense"), "TRUE");
    EXPECT_EQ(value(ports[1], "Speed"), "4294967296");
    EXPECT_EQ(ports[0].getQualifierCount(), 0u);  // not asked for

    Array<CIMInstance> loop = dispatcher().enumerateInstances(context, qel, "QEL_FCALPort");
    ASSERT_EQ(loop.size(), 2u);
    EXPECT_EQ(value(loop[0], "MaxSpeed"), "2147483648");
    EXPECT_EQ(value(loop[0], "SystemName"), "loop0");

    // The parent class gathers both views; without deep inheritance only
    // its own properties come back.
    EXPECT_EQ(dispatcher().enumerateInstances(context, qel, "CIM_FCPort").size(), 4u);
    Array<CIMInstance> shallow = dispatcher().enumerateInstances(context, qel, "CIM_FCPort", false);
    ASSERT_EQ(shallow.size(), 4u);
    EXPECT_EQ(value(shallow[0], "NodeWWN"), "(absent)");
    EXPECT_EQ(value(shallow[0], "DeviceID"), "20110002AC001234");

    // Every list handed out by the library went back.
    EXPECT_EQ(qelsim::outstandingFCLists(qelsim::counters()), 0u);
}

TEST_F(ArrayServer, GetInstanceFindsThePortByItsKeys)
{
    CIMObjectPath second = port("21230002AC001235");
    CIMInstance instance = dispatcher().getInstance(context, qel, second);
    EXPECT_EQ(value(instance, "ElementName"), "1:2:3");
    EXPECT_EQ(value(instance, "ConnectedTo"), "fabric-a:port7");
    EXPECT_EQ(value(instance, "EnabledState"), "6");  // offline

    CIMInstance speedOnly = dispatcher().getInstance(context, qel, second, false, false, false, only("Speed"));
    EXPECT_EQ(speedOnly.getPropertyCount(), 1u);

    // The same keys with an unknown WWN: the module's own not-found error.
    Array<CIMKeyBinding> keys = second.getKeyBindings();
    for (Uint32 k = 0; k < keys.size(); ++k)
    {
        if (keys[k].getName() == CIMName("DeviceID"))
            keys[k].setValue("21230002AC00FFFF");
    }
    CIMObjectPath unknown(second);
    unknown.setKeyBindings(keys);
    EXPECT_EQ(cimErrorOf([&] { dispatcher().getInstance(context, qel, unknown); }).getCode(), CIM_ERR_NOT_FOUND);
}

TEST_F(ArrayServer, ChangesReachTheArrayWithTheClientsIdentity)
{
    CIMObjectPath first = port("20110002AC001234");
    qelsim::clearCallLog();
    dispatcher().modifyInstance(context, qel, modeChange(first, 2), false, only("Mode"));
    std::vector<qelsim::CallRecord> log = qelsim::callLog();
    auto set = std::find_if(log.begin(), log.end(),
                            [](const qelsim::CallRecord& r) { return r.call == "api_setFCPortMode"; });
    ASSERT_NE(set, log.end());
    ASSERT_TRUE(set->hasEvent);
    EXPECT_STREQ(set->event.user, "operator");
    EXPECT_STREQ(set->event.addr, "192.0.2.50");
    EXPECT_EQ(set->result, 0);

    Array<CIMParamValue> out;
    CIMValue reset = dispatcher().invokeMethod(context, qel, first, "reset", {}, out);
    EXPECT_EQ(text(reset.toString()), "0");
    EXPECT_EQ(calls("api_resetPort").size(), 1u);

    // An untyped parameter, as a CIM-XML client may send it, arrives as the
    // declared string.
    Array<CIMParamValue> in;
    in.append(CIMParamValue("CageName", CIMValue(String("CAGE1")), false));
    EXPECT_EQ(text(dispatcher().invokeMethod(context, qel, first, "InitializeLoop", in, out).toString()), "0");
    std::vector<std::string> loops = calls("api_initFCPortLoop");
    ASSERT_EQ(loops.size(), 1u);
    EXPECT_NE(loops[0].find("\"CAGE1\""), std::string::npos) << loops[0];
}

TEST_F(ArrayServer, RefusalsOfTheArrayAndOfTheServer)
{
    CIMObjectPath first = port("20110002AC001234");
    Array<CIMParamValue> out;
    struct Case
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {"browse role changes a port",
         [&] {
             dispatcher().modifyInstance(Dispatcher::requestContext("viewer", "192.0.2.8"), qel, modeChange(first, 2),
                                         false, only("Mode"));
         },
         CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege"},
        {"edit role from an address it may not use",
         [&] {
             dispatcher().invokeMethod(Dispatcher::requestContext("operator", "192.0.2.99"), qel, first, "Reset", {},
                                       out);
         },
         CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege"},
        {"unknown user reads",
         [&] { dispatcher().enumerateInstances(Dispatcher::requestContext("mallory", "192.0.2.8"), qel, "QEL_FCPort"); },
         CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        {"method the class does not declare",
         [&] { dispatcher().invokeMethod(context, qel, first, "Explode", {}, out); }, CIM_ERR_METHOD_NOT_FOUND,
         "Explode"},
        {"setting of the wrong type",
         [&] {
             CIMInstance bad("QEL_FCPort");
             bad.addProperty(CIMProperty("Mode", CIMValue(String("2"))));
             bad.setPath(first);
             dispatcher().modifyInstance(context, qel, bad, false, only("Mode"));
         },
         CIM_ERR_TYPE_MISMATCH, "Property Mode is declared uint16, not string."},
        {"port that does not exist",
         [&] {
             CIMObjectPath gone(first);
             Array<CIMKeyBinding> keys;
             keys.append(CIMKeyBinding("DeviceID", "0000000000000001", CIMKeyBinding::STRING));
             gone.setKeyBindings(keys);
             dispatcher().invokeMethod(context, qel, gone, "Reset", {}, out);
         },
         CIM_ERR_FAILED, "QEL_FCPortProvider::invokeMethod()  Device not found with DeviceID=0000000000000001"},
    };
    for (const Case& c : cases)
    {
        CIMException e = cimErrorOf(c.call);
        EXPECT_EQ(e.getCode(), c.code) << c.what;
        EXPECT_EQ(text(e.getMessage()), c.message) << c.what;
    }
    EXPECT_TRUE(calls("api_setFCPortMode").empty());
    EXPECT_TRUE(calls("api_resetPort").empty());
}

TEST_F(ArrayServer, InternalCacheAnswersTheIdentityMethods)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", "localhost-InternalCache", CIMKeyBinding::STRING));
    const CIMObjectPath cache(String(), CIMNamespaceName(), "QEL_InternalCache", keys);

    struct Case
    {
        const char* method;
        const char* parameter;
        const char* value;
    };
    const Case cases[] = {
        {"GetSystemName", "SystemName", "QEL-ARRAY-9"},
        {"GetSystemHostName", "SystemHostName", "array9.example.com"},
        {"GetSystemID", "SystemID", "9"},
        {"GetSystemType", "SystemType", "2"},
        {"GetSystemAddress", "SystemAddress", "192.0.2.9"},
        {"IsQuadPortSystem", "IsQuadPort", "0"},
    };
    CIMClient client;
    client.connectLocal();
    for (const Case& c : cases)
    {
        // Through the dispatcher and through a local client connection.
        Array<CIMParamValue> out;
        dispatcher().invokeMethod(context, internal, cache, c.method, {}, out);
        ASSERT_EQ(out.size(), 1u) << c.method;
        EXPECT_EQ(text(out[0].getParameterName()), c.parameter);
        EXPECT_EQ(text(out[0].getValue().toString()), c.value) << c.method;

        Array<CIMParamValue> local;
        client.invokeMethod(internal, cache, c.method, {}, local);
        ASSERT_EQ(local.size(), 1u) << c.method;
        EXPECT_EQ(text(local[0].getValue().toString()), c.value) << c.method;
    }
    EXPECT_EQ(dispatcher().enumerateInstanceNames(context, internal, "QEL_InternalCache").size(), 1u);
}
