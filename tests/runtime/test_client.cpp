// CIMClient over installed transport factories: connection states,
// defaults, timeouts and error pass-through.
#include <functional>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/ClientTransport.h>
#include "../common/test_runtime_support.h"
#include "fake_transport.h"

using namespace Pegasus;
using qeltest::FactoryGuard;
using qeltest::FakeTransport;
using qeltest::TransportLog;
using qeltest::str;
using qeltest::thrownMessage;

namespace
{

struct ConnectRecord
{
    std::string host;
    Uint32 port = 0;
    std::string user;
    std::string password;
    Uint32 timeout = 0;
    int localConnects = 0;
};

// Factories that make FakeTransports writing to one log.
struct FakeServer
{
    std::shared_ptr<TransportLog> log = std::make_shared<TransportLog>();
    ConnectRecord last;
    FactoryGuard guard{
        [this](const String& host, Uint32 port, const String& user,
               const String& password, Uint32 timeout) {
            last.host = str(host);
            last.port = port;
            last.user = str(user);
            last.password = str(password);
            last.timeout = timeout;
            return std::unique_ptr<ClientTransport>(new FakeTransport(log));
        },
        [this](Uint32 timeout) {
            last.localConnects++;
            last.timeout = timeout;
            return std::unique_ptr<ClientTransport>(new FakeTransport(log));
        }};
};

// Every operation of the client, as (name, call) pairs.
std::vector<std::pair<std::string, std::function<void(CIMClient&)>>>
allClientCalls()
{
    static const CIMNamespaceName ns("root/qel");
    static const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    return {
        {"getClass", [](CIMClient& c) { c.getClass(ns, "QEL_FCPort"); }},
        {"getInstance", [](CIMClient& c) { c.getInstance(ns, path); }},
        {"enumerateInstances",
         [](CIMClient& c) { c.enumerateInstances(ns, "QEL_FCPort"); }},
        {"enumerateInstanceNames",
         [](CIMClient& c) { c.enumerateInstanceNames(ns, "QEL_FCPort"); }},
        {"createInstance",
         [](CIMClient& c) { c.createInstance(ns, CIMInstance("QEL_X")); }},
        {"modifyInstance",
         [](CIMClient& c) { c.modifyInstance(ns, CIMInstance("QEL_X")); }},
        {"deleteInstance", [](CIMClient& c) { c.deleteInstance(ns, path); }},
        {"associators", [](CIMClient& c) { c.associators(ns, path); }},
        {"associatorNames", [](CIMClient& c) { c.associatorNames(ns, path); }},
        {"references", [](CIMClient& c) { c.references(ns, path); }},
        {"referenceNames", [](CIMClient& c) { c.referenceNames(ns, path); }},
        {"invokeMethod",
         [](CIMClient& c) {
             Array<CIMParamValue> out;
             c.invokeMethod(ns, path, "Reset", Array<CIMParamValue>(), out);
         }},
    };
}

TEST(ClientConnect, WithoutTransportsConnectingFails)
{
    FactoryGuard none{TcpTransportFactory(), LocalTransportFactory()};
    CIMClient client;
    EXPECT_EQ(thrownMessage<CannotConnectException>(
                  [&] { client.connect("array1", 5988, "u", "p"); }),
              "Cannot connect to array1:5988: no CIM-XML transport is "
              "installed in this process");
    EXPECT_EQ(thrownMessage<CannotConnectException>(
                  [&] { client.connectLocal(); }),
              "Cannot connect to the local CIM server: no local transport is "
              "installed in this process");
    EXPECT_THROW(client.enumerateInstanceNames("root/qel", "QEL_FCPort"),
                 NotConnectedException);
}

TEST(ClientConnect, FactoryArgumentsAndHostDefault)
{
    struct
    {
        const char* host;
        Uint32 port;
        const char* expectedHost;
    } cases[] = {{"array1", 5989, "array1"},
                 {"", 5988, "localhost"},
                 {"", 0, ""}};
    for (const auto& c : cases)
    {
        FakeServer server;
        CIMClient client;
        client.setTimeout(1500);
        client.connect(c.host, c.port, "admin", "secret");
        EXPECT_EQ(server.last.host, c.expectedHost);
        EXPECT_EQ(server.last.port, c.port);
        EXPECT_EQ(server.last.user, "admin");
        EXPECT_EQ(server.last.password, "secret");
        EXPECT_EQ(server.last.timeout, 1500u);
    }
}

TEST(ClientConnect, StateRules)
{
    FakeServer server;
    CIMClient client;
    EXPECT_EQ(client.getTimeout(), 20000u);
    client.disconnect();  // nothing to close: no error

    client.connectLocal();
    EXPECT_EQ(server.last.localConnects, 1);
    EXPECT_EQ(server.last.timeout, 20000u);
    EXPECT_EQ(thrownMessage<AlreadyConnectedException>(
                  [&] { client.connect("h", 1, "", ""); }),
              "already connected");
    EXPECT_THROW(client.connectLocal(), AlreadyConnectedException);

    client.setTimeout(300);
    EXPECT_EQ(server.log->timeouts, std::vector<Uint32>{300});

    client.disconnect();
    EXPECT_EQ(server.log->closed, 1);
    EXPECT_EQ(thrownMessage<NotConnectedException>(
                  [&] { client.getClass("root/qel", "QEL_FCPort"); }),
              "not connected");
    client.setTimeout(400);  // not connected: only remembered
    EXPECT_EQ(server.log->timeouts.size(), 1u);

    client.connect("h", 1, "", "");  // reconnecting after disconnect is fine
    EXPECT_EQ(server.last.timeout, 400u);
}

TEST(ClientConnect, FailedConnectLeavesClientDisconnected)
{
    FactoryGuard failing{
        [](const String& host, Uint32, const String&, const String&,
           Uint32) -> std::unique_ptr<ClientTransport> {
            throw CannotConnectException("connection refused by " + host);
        },
        [](Uint32) { return std::unique_ptr<ClientTransport>(); }};
    CIMClient client;
    EXPECT_EQ(thrownMessage<CannotConnectException>(
                  [&] { client.connect("array1", 5988, "", ""); }),
              "connection refused by array1");
    EXPECT_EQ(thrownMessage<CannotConnectException>(
                  [&] { client.connectLocal(); }),
              "Cannot connect to the local CIM server: the transport factory "
              "returned no connection");
    EXPECT_THROW(client.getInstance("root/qel", CIMObjectPath("X")),
                 NotConnectedException);
}

TEST(ClientOperations, EveryOperationNeedsAConnectionAndReachesTheTransport)
{
    FakeServer server;
    CIMClient client;
    for (auto& call : allClientCalls())
    {
        SCOPED_TRACE(call.first);
        EXPECT_THROW(call.second(client), NotConnectedException);
    }
    EXPECT_TRUE(server.log->calls.empty());

    client.connectLocal();
    for (auto& call : allClientCalls())
    {
        SCOPED_TRACE(call.first);
        call.second(client);
        ASSERT_FALSE(server.log->calls.empty());
        EXPECT_EQ(server.log->calls.back(), call.first + "@root/qel");
    }
    EXPECT_EQ(server.log->calls.size(), allClientCalls().size());
}

TEST(ClientOperations, ResultsAndCIMErrorsPassThrough)
{
    auto log = std::make_shared<TransportLog>();
    FactoryGuard guard{
        TcpTransportFactory(), [log](Uint32) {
            auto t = std::unique_ptr<FakeTransport>(new FakeTransport(log));
            t->failWith.reset(new CIMException(
                CIM_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND: no such port"));
            return std::unique_ptr<ClientTransport>(std::move(t));
        }};
    CIMClient failing;
    failing.connectLocal();
    try
    {
        failing.getInstance("root/qel", CIMObjectPath("QEL_FCPort.DeviceID=\"A\""));
        ADD_FAILURE() << "no exception";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(str(e.getMessage()), "CIM_ERR_NOT_FOUND: no such port");
    }

    FakeServer server;
    CIMClient client;
    client.connect("array1", 5988, "", "");
    Array<CIMParamValue> in(3, CIMParamValue("P", CIMValue(true)));
    Array<CIMParamValue> out;
    CIMValue rv = client.invokeMethod("root/qel", CIMObjectPath("QEL_X"),
                                      "GetSystemName", in, out);
    EXPECT_TRUE(rv == CIMValue(Uint32(3)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_TRUE(out[0].getValue() == CIMValue(String("GetSystemName")));
    Array<CIMObjectPath> names =
        client.enumerateInstanceNames("root/qel", "QEL_InternalCache");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(str(names[0].toString()), "QEL_InternalCache");
}

TEST(ClientFactories, InstallReturnsThePreviousFactory)
{
    int calls = 0;
    LocalTransportFactory mine = [&calls](Uint32) {
        calls++;
        return std::unique_ptr<ClientTransport>(
            new FakeTransport(std::make_shared<TransportLog>()));
    };
    LocalTransportFactory before = setLocalTransportFactory(mine);
    LocalTransportFactory returned = setLocalTransportFactory(before);
    ASSERT_TRUE(static_cast<bool>(returned));
    returned(1);
    EXPECT_EQ(calls, 1);
}

}  // namespace
