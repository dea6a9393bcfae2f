// A provider's way back into the server: its CIMOMHandle and local client
// connections, both answered in process on the calling thread.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>
#include <Server/core/InProcessClientTransport.h>

#include <Pegasus/Client/CIMClient.h>

using namespace Pegasus;
using namespace servertest;

namespace {

using NestedCalls = ServerTest;

std::string call(Dispatcher& d, const OperationContext& context, const char* method,
                 const Array<CIMParamValue>& in = Array<CIMParamValue>())
{
    Array<CIMParamValue> out;
    CIMValue v = d.invokeMethod(context, "root/servertest", CIMObjectPath("Test_Nested"), method, in, out);
    return text(v.toString());
}

Array<CIMParamValue> one(const char* name, const CIMValue& value)
{
    Array<CIMParamValue> in;
    in.append(CIMParamValue(name, value));
    return in;
}

}  // namespace

TEST_F(NestedCalls, ProvidersReachTheServerThroughTheirHandle)
{
    const std::string processUser = text(InProcessClientTransport::processUserName());
    struct Case
    {
        const char* method;
        Array<CIMParamValue> in;
        std::string result;
    };
    const Case cases[] = {
        {"GetLabel", one("Id", CIMValue(String("b"))), "Beta"},
        {"CountNames", {}, "4"},  // the subclass's provider answers too
        {"PropertyCount", one("ClassName", CIMValue(String("Test_SubItem"))), "5"},
        // Seven levels deep, alternating handle and local connection.
        {"Recurse", one("Depth", CIMValue(Uint32(7))), "7"},
        // A fresh context runs as the empty user, a local connection as
        // the user the process runs as.
        {"FreshWhoAmI", {}, "@"},
        {"LocalWhoAmI", {}, processUser + "@"},
        // Errors reach a local client as they would over the wire.
        {"LocalError", {}, "6 CIM_ERR_NOT_FOUND: gone"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(call(dispatcher(), context, c.method, c.in), c.result) << c.method;

    CIMInstance whoami = dispatcher().getInstance(context, ns, item("whoami"));
    EXPECT_EQ(text(whoami.getProperty(whoami.findProperty("Label")).getValue().toString()), "alice@192.0.2.7");
    CIMInstance nested = dispatcher().getInstance(context, ns, item("nested"));
    EXPECT_EQ(text(nested.getProperty(nested.findProperty("Label")).getValue().toString()), "via Alpha");
}

TEST_F(NestedCalls, LocalClientsOfTheProcessReachTheServerUntilItStops)
{
    CIMClient client;
    client.connectLocal();
    EXPECT_EQ(client.enumerateInstanceNames(ns, "Test_Item").size(), 4u);
    try
    {
        client.getInstance(ns, item("a", "Test_Nope"));
        ADD_FAILURE() << "no error";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_CLASS);
        EXPECT_EQ(text(e.getMessage()), "CIM_ERR_INVALID_CLASS: Test_Nope");
    }

    server().stop();
    // The open connection and new ones are refused, not served by a dead server.
    EXPECT_THROW(client.enumerateInstanceNames(ns, "Test_Item"), CannotConnectException);
    CIMClient late;
    EXPECT_THROW(late.connectLocal(), CannotConnectException);
}
