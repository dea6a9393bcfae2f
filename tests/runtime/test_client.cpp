// CIMClient over installed transport factories: connection states,
// defaults, timeouts and error pass-through.
#include <functional>
#include <gtest/gtest.h>
#include <Pegasus/Client/CIMClient.h>
#include "../common/test_runtime_support.h"
#include "runtime_doubles.h"

using namespace Pegasus;
using qeltest::FactoryGuard;
using qeltest::FakeTransport;
using qeltest::str;
using qeltest::thrownMessage;
using qeltest::TransportLog;

namespace
{

// Factories that make FakeTransports writing to one log, and remember the
// arguments of the last connection.
struct FakeServer
{
    std::shared_ptr<TransportLog> log = std::make_shared<TransportLog>();
    std::string host, user, password;
    Uint32 port = 0, timeout = 0;
    int localConnects = 0;
    FactoryGuard guard{
        [this](const String& h, Uint32 p, const String& u, const String& pw, Uint32 t)
        {
            host = str(h);
            port = p;
            user = str(u);
            password = str(pw);
            timeout = t;
            return std::unique_ptr<ClientTransport>(new FakeTransport(log));
        },
        [this](Uint32 t)
        {
            localConnects++;
            timeout = t;
            return std::unique_ptr<ClientTransport>(new FakeTransport(log));
        }};
};

// Every operation of the client, as (name, call) pairs.
std::vector<std::pair<std::string, std::function<void(CIMClient&)>>> allClientCalls()
{
    static const CIMNamespaceName ns("root/qel");
    static const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    return {
        {"getClass", [](CIMClient& c) { c.getClass(ns, "QEL_FCPort"); }},
        {"getInstance", [](CIMClient& c) { c.getInstance(ns, path); }},
        {"enumerateInstances", [](CIMClient& c) { c.enumerateInstances(ns, "QEL_FCPort"); }},
        {"enumerateInstanceNames",
         [](CIMClient& c) { c.enumerateInstanceNames(ns, "QEL_FCPort"); }},
        {"createInstance", [](CIMClient& c) { c.createInstance(ns, CIMInstance("QEL_X")); }},
        {"modifyInstance", [](CIMClient& c) { c.modifyInstance(ns, CIMInstance("QEL_X")); }},
        {"deleteInstance", [](CIMClient& c) { c.deleteInstance(ns, path); }},
        {"associators", [](CIMClient& c) { c.associators(ns, path); }},
        {"associatorNames", [](CIMClient& c) { c.associatorNames(ns, path); }},
        {"references", [](CIMClient& c) { c.references(ns, path); }},
        {"referenceNames", [](CIMClient& c) { c.referenceNames(ns, path); }},
        {"invokeMethod",
         [](CIMClient& c)
         {
             Array<CIMParamValue> out;
             c.invokeMethod(ns, path, "Reset", Array<CIMParamValue>(), out);
         }},
    };
}

TEST(ClientConnect, MissingOrFailingTransportsLeaveTheClientDisconnected)
{
    {
        FactoryGuard none{TcpTransportFactory(), LocalTransportFactory()};
        CIMClient client;
        EXPECT_EQ(
            thrownMessage<CannotConnectException>([&]
                                                  { client.connect("array1", 5988, "u", "p"); }),
            "Cannot connect to array1:5988: no CIM-XML transport is installed in this process");
        EXPECT_EQ(
            thrownMessage<CannotConnectException>([&] { client.connectLocal(); }),
            "Cannot connect to the local CIM server: no local transport is installed in this process");
    }
    FactoryGuard failing{
        [](const String& host, Uint32, const String&, const String&,
           Uint32) -> std::unique_ptr<ClientTransport>
        { throw CannotConnectException("connection refused by " + host); },
        [](Uint32) { return std::unique_ptr<ClientTransport>(); }};
    CIMClient client;
    EXPECT_EQ(
        thrownMessage<CannotConnectException>([&] { client.connect("array1", 5988, "", ""); }),
        "connection refused by array1");
    EXPECT_EQ(
        thrownMessage<CannotConnectException>([&] { client.connectLocal(); }),
        "Cannot connect to the local CIM server: the transport factory returned no connection");
    EXPECT_THROW(client.getInstance("root/qel", CIMObjectPath("X")), NotConnectedException);
}

TEST(ClientConnect, StateRulesFactoryArgumentsAndHostDefault)
{
    FakeServer server;
    CIMClient client;
    client.disconnect();  // nothing to close: no error
    // Installing hands back the factory installed before; putting it back restores it.
    setLocalTransportFactory(setLocalTransportFactory(LocalTransportFactory()));
    client.connectLocal();
    EXPECT_EQ(server.localConnects, 1);
    EXPECT_EQ(server.timeout, 20000u);  // the default
    EXPECT_EQ(
        thrownMessage<AlreadyConnectedException>([&] { client.connect("h", 1, "", ""); }),
        "already connected");
    EXPECT_THROW(client.connectLocal(), AlreadyConnectedException);
    client.setTimeout(300);
    EXPECT_EQ(server.log->timeouts, std::vector<Uint32>{300});
    client.disconnect();
    EXPECT_EQ(server.log->closed, 1);
    client.setTimeout(400);  // not connected: only remembered
    EXPECT_EQ(server.log->timeouts.size(), 1u);
    client.connect("h", 1, "", "");  // reconnecting after disconnect is fine
    EXPECT_EQ(server.timeout, 400u);

    // The factory gets the arguments; with a port, an empty host means localhost.
    struct
    {
        const char* host;
        Uint32 port;
        const char* expected;
    } cases[] = {
        {"array1", 5989, "array1:5989 admin/secret 1500"},
        {"", 5988, "localhost:5988 admin/secret 1500"},
        {"", 0, ":0 admin/secret 1500"}};
    for (const auto& c : cases)
    {
        FakeServer server;
        CIMClient client;
        client.setTimeout(1500);
        client.connect(c.host, c.port, "admin", "secret");
        EXPECT_EQ(
            server.host + ":" + std::to_string(server.port) + " " + server.user + "/" +
                server.password + " " + std::to_string(server.timeout),
            c.expected);
    }
}

TEST(ClientOperations, EveryOperationNeedsAConnectionAndReachesTheTransport)
{
    FakeServer server;
    CIMClient client;
    for (auto& call : allClientCalls())
    {
        SCOPED_TRACE(call.first);
        EXPECT_EQ(
            thrownMessage<NotConnectedException>([&] { call.second(client); }), "not connected");
    }
    EXPECT_TRUE(server.log->calls().empty());
    client.connectLocal();
    for (auto& call : allClientCalls())
    {
        SCOPED_TRACE(call.first);
        call.second(client);
        ASSERT_FALSE(server.log->calls().empty());
        EXPECT_EQ(server.log->calls().back(), call.first + "@root/qel");
    }
    EXPECT_EQ(server.log->calls().size(), allClientCalls().size());
}

TEST(ClientOperations, ResultsAndCIMErrorsPassThrough)
{
    auto log = std::make_shared<TransportLog>();
    FactoryGuard guard{
        TcpTransportFactory(), [log](Uint32)
        {
            auto t = std::unique_ptr<FakeTransport>(new FakeTransport(log));
            t->failWith.reset(
                new CIMException(CIM_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND: no such port"));
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
    CIMValue rv = client.invokeMethod("root/qel", CIMObjectPath("QEL_X"), "GetSystemName", in, out);
    EXPECT_TRUE(rv == CIMValue(Uint32(3)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_TRUE(out[0].getValue() == CIMValue(String("GetSystemName")));
}

}  // namespace
