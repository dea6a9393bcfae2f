// CIMClient over the CIM-XML transport: operations, CIM errors, HTTP errors, connection
// failures and time-outs, and the local socket.
#include "WireTestSupport.h"

#include <Server/auth/PeerCredentials.h>
#include <Server/clienttransport/CimXmlTransport.h>
#include <Server/clienttransport/InstallTransports.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <gtest/gtest.h>

#include <thread>
#include <unistd.h>

using namespace Pegasus;
using namespace wiretest;
using qel::client::CimXmlTransport;

namespace
{

const CIMNamespaceName kNs("root/qel");

// A CIMClient on the front-end's TCP port, through CimXmlTransport::overTcp; the TCP factory
// installed before is put back when the guard goes.
class TcpClient
{
public:
    TcpClient(FrontEnd& fe, const char* user, const char* password)
    {
        _previous = setTcpTransportFactory(TcpTransportFactory());
        qel::client::installTcpTransport();
        client.setTimeout(10000);
        client.connect("127.0.0.1", fe.port(), user, password);
    }
    ~TcpClient() { setTcpTransportFactory(_previous); }
    CIMClient* operator->() { return &client; }

    CIMClient client;

private:
    TcpTransportFactory _previous;
};

TEST(ClientTransport, OperationsAndTypedParametersCrossTheWire)
{
    FrontEnd fe;
    TcpClient t(fe, "alice", "wonderland");
    const Array<CIMObjectPath> names = t->enumerateInstanceNames(kNs, CIMName("QEL_FCPort"));
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[1].toString(), "QEL_FCPort.DeviceID=\"20120002AC00A001\"");

    const CIMInstance inst = t->getInstance(kNs, names[0], false, false, false, CIMPropertyList());
    EXPECT_EQ(inst.getClassName(), CIMName("QEL_FCPort"));
    ASSERT_NE(inst.findProperty("DeviceID"), PEG_NOT_FOUND);

    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Count", CIMValue(Uint16(3))));
    in.append(CIMParamValue("Port", CIMValue(names[0])));
    in.append(CIMParamValue("When", CIMValue(CIMDateTime("20240131120000.000000+000"))));
    const CIMValue rv = t->invokeMethod(kNs, CIMObjectPath("QEL_FCPort"), CIMName("Echo"), in, out);
    EXPECT_EQ(rv, CIMValue(Uint32(3)));
    ASSERT_EQ(out.size(), 4u);
    for (Uint32 i = 0; i < 3; ++i)
        EXPECT_TRUE(out[i].getValue().equal(in[i].getValue())) << i;
    EXPECT_EQ(out[3].getValue(), CIMValue(String("alice")));
}

TEST(ClientTransport, ServerErrorsArriveAsCimExceptions)
{
    FrontEnd fe;
    TcpClient t(fe, "alice", "wonderland");
    struct Case
    {
        std::function<void()> call;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {[&]
         {
             t->getInstance(
                 kNs, CIMObjectPath("QEL_FCPort.DeviceID=\"missing\""), false, false, false,
                 CIMPropertyList());
         },
         CIM_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND: no such port"},
        {[&] { t->deleteInstance(kNs, CIMObjectPath("QEL_FCPort.DeviceID=\"1\"")); },
         CIM_ERR_NOT_SUPPORTED, "CIM_ERR_NOT_SUPPORTED: not scripted"},
        {[&]
         {
             TcpClient wrong(fe, "alice", "nope");
             wrong->enumerateInstanceNames(kNs, CIMName("QEL_FCPort"));
         },
         CIM_ERR_ACCESS_DENIED, "HTTP 401 Unauthorized"},
    };
    for (const Case& c : cases)
    {
        try
        {
            c.call();
            ADD_FAILURE() << "no error for " << c.message;
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), c.code);
            EXPECT_EQ(std::string(e.getMessage().getCString()).rfind(c.message, 0), 0u)
                << e.getMessage();
        }
    }
}

TEST(ClientTransport, RefusedConnectionsSilentServersAndClosedKeptAliveConnections)
{
    qel::http::HttpServerOptions o;
    o.readTimeout = std::chrono::milliseconds(100);  // idle connections are closed soon
    FrontEnd fe(o);
    {
        FrontEnd other;  // a port that was in use and is free again
        const unsigned short freed = other.port();
        other.http->stop();
        EXPECT_THROW(
            CimXmlTransport::overTcp("127.0.0.1", freed, "alice", "wonderland", 2000),
            CannotConnectException);
    }
    EXPECT_THROW(
        CimXmlTransport::overLocalSocket(fe.passwords.dir() + "/nothing.socket", 2000),
        CannotConnectException);

    TcpClient t(fe, "alice", "wonderland");
    t->setTimeout(300);
    Array<CIMParamValue> out;
    EXPECT_THROW(
        t->invokeMethod(kNs, CIMObjectPath("X"), CIMName("Wait"), Array<CIMParamValue>(), out),
        ConnectionTimeoutException);
    fe.executor.release();
    t->setTimeout(10000);
    EXPECT_EQ(
        t->enumerateInstanceNames(kNs, CIMName("QEL_FCPort")).size(), 2u);  // a new connection
    while (fe.http->openConnections() != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(
        t->enumerateInstanceNames(kNs, CIMName("QEL_FCPort")).size(),
        2u);  // reopened after the server closed it
}

TEST(ClientTransport, CimClientUsesTheInstalledFactoriesForConnectAndConnectLocal)
{
    FrontEnd fe;
    qel::client::installCimXmlTransports(fe.socketPath());
    CIMClient client;
    client.connect("127.0.0.1", fe.port(), "alice", "wonderland");
    EXPECT_EQ(client.enumerateInstanceNames(kNs, CIMName("QEL_FCPort")).size(), 2u);
    client.disconnect();

    client.connectLocal();
    Array<CIMParamValue> out;
    client.invokeMethod(kNs, CIMObjectPath("X"), CIMName("Echo"), Array<CIMParamValue>(), out);
    ASSERT_EQ(out.size(), 1u);
    std::string processUser;
    ASSERT_TRUE(
        qel::auth::userNameOf(::getuid(), processUser));  // the peer, identified without a password
    EXPECT_EQ(out[0].getValue(), CIMValue(String(processUser.c_str())));
    client.disconnect();
    setTcpTransportFactory(TcpTransportFactory());
    setLocalTransportFactory(LocalTransportFactory());
}

}  // namespace
