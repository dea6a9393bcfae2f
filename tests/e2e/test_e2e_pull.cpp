// Pulled enumerations against the real qel-cimserver on the demo array, with CIMClient over
// CIM-XML (wbemcli has no pull operations): pages give what the whole operations give, the
// server's pull options bound what a client may ask for, users keep their enumerations
// apart, enumerations that a vanished client left end with their timeout, and the server
// stops with enumerations open.
#include "Wbemcli.h"

#include <Server/clienttransport/InstallTransports.h>

#include <Pegasus/Client/CIMClient.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

using namespace e2e;
using namespace Pegasus;

namespace
{

const CIMNamespaceName kQel("root/qel");

// The server's options for this suite: pages of at most 4 objects, 2 enumerations per user,
// timeouts up to 60 seconds.
const std::vector<std::string> kPullOptions = {"--pull-max-object-count",      "4",
                                               "--pull-max-contexts-per-user", "2",
                                               "--pull-max-timeout",           "60"};

// A path without host and namespace, for comparing a pulled path with an enumerated one.
std::string local(CIMObjectPath path)
{
    path.setHost(String());
    path.setNameSpace(CIMNamespaceName());
    return std::string(path.toString().getCString());
}

// The code and description of the CIM error `call` throws; CIM_ERR_SUCCESS when none.
std::pair<CIMStatusCode, std::string> errorOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CIMException& e)
    {
        // The message is "<code name>: <description>".
        const std::string message(e.getMessage().getCString());
        const size_t colon = message.find(": ");
        return {e.getCode(), colon == std::string::npos ? message : message.substr(colon + 2)};
    }
    return {CIM_ERR_SUCCESS, ""};
}

class PullTest : public SharedServerSuite<PullTest>
{
protected:
    static void SetUpTestSuite()
    {
        qel::client::installTcpTransport();
        server = new ServerProcess({{"operator", "edit"}, {"monitor", "browse"}}, kPullOptions);
        cli = new Wbemcli(*server);
    }

    static std::unique_ptr<CIMClient> clientOf(const std::string& user)
    {
        auto client = std::make_unique<CIMClient>();
        client->connect("127.0.0.1", server->port(), user.c_str(), server->password(user).c_str());
        return client;
    }

    // Opens QEL_FCPort with nothing pulled yet.
    static void open(CIMClient& client, CIMEnumerationContext& context, Uint32Arg timeout = {})
    {
        Boolean eos = true;
        EXPECT_EQ(
            client
                .openEnumerateInstancePaths(
                    context, eos, kQel, CIMName("QEL_FCPort"), "", "", timeout, false, 0)
                .size(),
            0u);
        EXPECT_FALSE(eos);
    }
};

TEST_F(PullTest, PagesGiveWhatTheWholeOperationsGiveAndWhatWbemcliReads)
{
    auto client = clientOf("monitor");
    const Array<CIMInstance> whole = client->enumerateInstances(kQel, CIMName("QEL_FCPort"));
    const std::vector<std::string> printed = cli->as("monitor", "ein", "QEL_FCPort").paths();
    ASSERT_EQ(whole.size(), printed.size());
    ASSERT_GT(whole.size(), 4u) << "the pages must not hold the whole answer";

    for (const Uint32 page : {1u, 3u, 4u})
    {
        SCOPED_TRACE("pages of " + std::to_string(page));
        CIMEnumerationContext context;
        Boolean eos = false;
        Array<CIMInstance> paged = client->openEnumerateInstances(
            context, eos, kQel, CIMName("QEL_FCPort"), true, false, CIMPropertyList(), "", "",
            Uint32Arg(), false, page);
        while (!eos)
        {
            const Array<CIMInstance> next = client->pullInstancesWithPath(context, eos, page);
            EXPECT_LE(next.size(), page);
            paged.appendArray(next);
        }
        ASSERT_EQ(paged.size(), whole.size());
        for (Uint32 i = 0; i < whole.size(); ++i)
        {
            EXPECT_EQ(local(paged[i].getPath()), local(whole[i].getPath())) << i;
            // The same instance once its path is the enumerated one (host and namespace aside).
            CIMInstance same = paged[i].clone();
            same.setPath(whole[i].getPath());
            EXPECT_TRUE(same.identical(whole[i])) << local(whole[i].getPath());
            EXPECT_EQ(paged[i].getPath().getNameSpace(), kQel);
        }
    }

    // From a port, the associations paged equal the whole ones.
    const CIMObjectPath port = whole[0].getPath();
    const Array<CIMObject> associated = client->associators(kQel, port);
    const Array<CIMObjectPath> referenceNames = client->referenceNames(kQel, port);
    ASSERT_GT(associated.size(), 1u);
    ASSERT_GT(referenceNames.size(), 1u);
    {
        CIMEnumerationContext context;
        Boolean eos = false;
        Array<CIMInstance> paged = client->openAssociatorInstances(
            context, eos, kQel, port, CIMName(), CIMName(), "", "", false, CIMPropertyList(), "",
            "", Uint32Arg(), false, 1);
        while (!eos)
            paged.appendArray(client->pullInstancesWithPath(context, eos, 1));
        ASSERT_EQ(paged.size(), associated.size());
        for (Uint32 i = 0; i < paged.size(); ++i)
            EXPECT_EQ(local(paged[i].getPath()), local(associated[i].getPath())) << i;
    }
    {
        CIMEnumerationContext context;
        Boolean eos = false;
        Array<CIMObjectPath> paged = client->openReferenceInstancePaths(
            context, eos, kQel, port, CIMName(), "", "", "", Uint32Arg(), false, 1);
        while (!eos)
            paged.appendArray(client->pullInstancePaths(context, eos, 1));
        ASSERT_EQ(paged.size(), referenceNames.size());
        for (Uint32 i = 0; i < paged.size(); ++i)
            EXPECT_EQ(local(paged[i]), local(referenceNames[i])) << i;
    }
}

TEST_F(PullTest, TheServersOptionsBoundWhatAClientMayAsk)
{
    auto monitor = clientOf("monitor");
    auto operatorClient = clientOf("operator");
    struct Case
    {
        const char* what;
        Uint32Arg timeout;
        Uint32 maxObjectCount;
        CIMStatusCode code;
        const char* description;  // "" when accepted
    };
    const Case cases[] = {
        {"the most objects", Uint32Arg(), 4, CIM_ERR_SUCCESS, ""},
        {"one object too many", Uint32Arg(), 5, CIM_ERR_INVALID_PARAMETER,
         "MaxObjectCount 5 is past this server's maximum of 4."},
        {"the longest timeout", Uint32Arg(60), 0, CIM_ERR_SUCCESS, ""},
        {"one second too long", Uint32Arg(61), 0, CIM_ERR_INVALID_OPERATION_TIMEOUT,
         "OperationTimeout 61 is past this server's maximum of 60 seconds."},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMEnumerationContext context;
        Boolean eos = false;
        const auto answer = errorOf(
            [&]
            {
                monitor->openEnumerateInstancePaths(
                    context, eos, kQel, CIMName("QEL_FCPort"), "", "", c.timeout, false,
                    c.maxObjectCount);
            });
        EXPECT_EQ(answer.first, c.code);
        EXPECT_EQ(answer.second, c.description);
        if (answer.first == CIM_ERR_SUCCESS)
            monitor->closeEnumeration(context);
    }

    // Two enumerations per user: the third is refused, another user's first is not, and
    // closing one makes room.
    CIMEnumerationContext first, second, third, theOperators;
    open(*monitor, first);
    open(*monitor, second);
    const auto refused = errorOf([&] { open(*monitor, third); });
    EXPECT_EQ(refused.first, CIM_ERR_SERVER_LIMITS_EXCEEDED);
    EXPECT_EQ(
        refused.second,
        "User \"monitor\" has the maximum of 2 open enumerations per user; close one or let it "
        "expire.");
    open(*operatorClient, theOperators);
    monitor->closeEnumeration(first);
    open(*monitor, third);
    for (CIMEnumerationContext* context : {&second, &third})
        monitor->closeEnumeration(*context);
    operatorClient->closeEnumeration(theOperators);
}

TEST_F(PullTest, AnotherUsersEnumerationDoesNotExistForAUser)
{
    auto monitor = clientOf("monitor");
    auto operatorClient = clientOf("operator");
    CIMEnumerationContext context;
    open(*monitor, context);
    Boolean eos = false;
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"PullInstancePaths", [&] { operatorClient->pullInstancePaths(context, eos, 1); }},
        {"EnumerationCount", [&] { operatorClient->enumerationCount(context); }},
        {"CloseEnumeration", [&] { operatorClient->closeEnumeration(context); }},
    };
    for (const auto& call : calls)
    {
        SCOPED_TRACE(call.first);
        const auto answer = errorOf(call.second);
        EXPECT_EQ(answer.first, CIM_ERR_INVALID_ENUMERATION_CONTEXT);
        EXPECT_NE(answer.second.find("names no open enumeration of this user"), std::string::npos)
            << answer.second;
    }
    // Its owner still has it whole.
    Array<CIMObjectPath> paths;
    while (!eos)
        paths.appendArray(monitor->pullInstancePaths(context, eos, 4));
    EXPECT_EQ(paths.size(), monitor->enumerateInstanceNames(kQel, CIMName("QEL_FCPort")).size());
}

TEST_F(PullTest, EnumerationsAVanishedClientLeftEndWithTheirTimeout)
{
    {
        auto vanishing = clientOf("operator");
        CIMEnumerationContext first, second;
        open(*vanishing, first, Uint32Arg(1));
        open(*vanishing, second, Uint32Arg(1));
    }  // the client and its connection are gone; the server still holds both

    // Room for the user again once the reaper ended them (about a second; the deadline
    // only bounds a hung server).
    auto client = clientOf("operator");
    CIMEnumerationContext again[2];
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    CIMStatusCode code = CIM_ERR_SERVER_LIMITS_EXCEEDED;
    while (code == CIM_ERR_SERVER_LIMITS_EXCEEDED && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        code = errorOf([&] { open(*client, again[0]); }).first;
    }
    ASSERT_EQ(code, CIM_ERR_SUCCESS);
    open(*client, again[1]);
    for (CIMEnumerationContext& context : again)
        client->closeEnumeration(context);
}

TEST(PullServer, StopsWithEnumerationsOpen)
{
    qel::client::installTcpTransport();
    ServerProcess own(std::map<std::string, std::string>{{"monitor", "browse"}});
    CIMClient client;
    client.connect("127.0.0.1", own.port(), "monitor", own.password("monitor").c_str());
    CIMEnumerationContext contexts[3];
    for (CIMEnumerationContext& context : contexts)
    {
        Boolean eos = false;
        client.openEnumerateInstances(
            context, eos, kQel, CIMName("QEL_FCPort"), true, false, CIMPropertyList(), "", "",
            Uint32Arg(300), false, 1);
        ASSERT_FALSE(eos);
    }
    EXPECT_EQ(own.stop(), 0) << own.log();
}

}  // namespace
