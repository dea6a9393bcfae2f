// The pulled enumerations over CIM-XML against the whole server (the assembly qel-cimserver
// runs, in process) on a generated array of 10,000 FC ports: raw exchanges for every pull
// operation and its errors, paging that gives exactly what EnumerateInstances gives,
// CIMClient over CIM-XML and in process, and a client that vanishes mid-sequence. The
// server's enumerations run on a clock of the test's own.
#include "WireTestSupport.h"

#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/EnumerationContexts.h>
#include <Server/main/WireServer.h>
#include <Server/xml/CimXmlWriter.h>
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Client/CIMClient.h>
#include <gtest/gtest.h>
#include <qelsim_control.h>

#include <atomic>
#include <sstream>

using namespace Pegasus;
using namespace qel;

namespace
{

const unsigned kPorts = 10000;
std::atomic<long> nowSeconds{5000};

std::vector<std::string> providerDirectories()
{
    std::vector<std::string> dirs;
    std::istringstream list(QEL_TEST_PROVIDER_DIRS);
    for (std::string dir; std::getline(list, dir, ':');)
        dirs.push_back(dir);
    return dirs;
}

// The body of an HTTP response, de-chunked if it came in chunks.
std::string bodyOf(const std::string& reply)
{
    const size_t start = reply.find("\r\n\r\n");
    if (start == std::string::npos)
        return std::string();
    std::string body = reply.substr(start + 4);
    const std::string head = reply.substr(0, start);
    if (head.find("Transfer-Encoding: chunked") == std::string::npos)
        return body;
    std::string plain;
    for (size_t at = 0;;)
    {
        const size_t eol = body.find("\r\n", at);
        if (eol == std::string::npos)
            return plain;
        const size_t size = std::stoul(body.substr(at, eol - at), nullptr, 16);
        if (size == 0)
            return plain;
        plain += body.substr(eol + 2, size);
        at = eol + 2 + size + 2;
    }
}

std::string param(const std::string& name, const std::string& value)
{
    return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
}

std::string value(const std::string& text)
{
    return "<VALUE>" + text + "</VALUE>";
}

std::string className(const char* name)
{
    return std::string("<CLASSNAME NAME=\"") + name + "\"/>";
}

class WirePull : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        std::string json;
        qelsim::GenerateOptions generated;
        generated.fcPorts = kPorts;
        ASSERT_TRUE(qelsim::generateArray(generated, &json).ok);
        ASSERT_TRUE(qelsim::loadArrayText(json).ok);
        passwords = new wiretest::TempPasswordFile;
        passwords->add("admin", "admin-secret");
        passwords->add("monitor", "monitor-secret");
        server::WireServerOptions o;
        o.core.mofFiles = {QEL_TEST_SCHEMA};
        o.core.defaultNamespace = "root/qel";
        o.core.providerDirectories = providerDirectories();
        o.core.workerThreads = 4;
        o.core.enumerations.clock = []
        { return EnumerationLimits::Clock::time_point(std::chrono::seconds(nowSeconds.load())); };
        o.core.enumerations.maxContextsPerUser = 3;
        o.http.port = 0;
        o.http.socketPath.clear();
        o.passwordFile = passwords->path();
        wire = new server::WireServer(o);
        wire->start();
        client::installTcpTransport();
    }
    static void TearDownTestSuite()
    {
        wire->stop();
        delete wire;
        delete passwords;
    }
    void TearDown() override
    {
        // Every test leaves nothing open.
        wire->core().enumerations().waitUntilIdle();
        EXPECT_EQ(wire->core().enumerations().stats().open, 0u);
    }

    // One request over its own connection; the body of the answer.
    static std::string exchange(
        const std::string& method, const std::string& params, const std::string& user = "admin",
        const std::string& nameSpace = "root/qel")
    {
        std::string namespaces;
        std::istringstream parts(nameSpace);
        for (std::string part; std::getline(parts, part, '/');)
            namespaces += "<NAMESPACE NAME=\"" + part + "\"/>";
        const std::string body =
            "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" "
            "DTDVERSION=\"2.0\"><MESSAGE ID=\"11\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
            "<IMETHODCALL NAME=\"" +
            method + "\"><LOCALNAMESPACEPATH>" + namespaces + "</LOCALNAMESPACEPATH>" + params +
            "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
        const std::string request =
            "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml; "
            "charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\nCIMMethod: " +
            method + "\r\nCIMObject: " + cimxml::uriEncode(nameSpace) +
            "\r\nAuthorization: " + wiretest::basicAuth(user, user + "-secret") +
            "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
            body;
        return bodyOf(wiretest::rawExchange(wire->tcpPort(), request, 300000));
    }

    // The answer to `method`, decoded as a client reads it.
    static CIMOperationResponse
    decoded(const std::string& method, const std::string& params, const std::string& user = "admin")
    {
        const std::string body = exchange(method, params, user);
        CIMOperationRequest asked;
        asked.messageId = "11";
        asked.operation = cimxml::findIntrinsic(method.c_str())->operation;
        asked.methodName = method.c_str();
        asked.nameSpace = "root/qel";
        return cimxml::decodeResponse(body.data(), body.size(), asked);
    }

    // Opens with `open` (the open's parameters), then pulls pages of `size` until the end.
    static CIMOperationResponse pageThrough(
        const char* openMethod, const std::string& open, const char* pullMethod, Uint32 size,
        std::vector<Uint32>& pageSizes)
    {
        CIMOperationResponse all =
            decoded(openMethod, open + param("MaxObjectCount", value(std::to_string(size))));
        Boolean eos = false;
        String context = all.enumerationContext(eos);
        pageSizes.push_back(all.instances.size() + all.paths.size());
        while (!eos)
        {
            const CIMOperationResponse next = decoded(
                pullMethod, param("EnumerationContext", value(cimxml::toUtf8(context))) +
                                param("MaxObjectCount", value(std::to_string(size))));
            context = next.enumerationContext(eos);
            pageSizes.push_back(next.instances.size() + next.paths.size());
            all.instances.appendArray(next.instances);
            all.paths.appendArray(next.paths);
        }
        return all;
    }

    // The context of an open that must succeed.
    static std::string
    opened(const char* method, const std::string& params, const std::string& user = "admin")
    {
        Boolean eos = true;
        const std::string id =
            cimxml::toUtf8(decoded(method, params, user).enumerationContext(eos));
        EXPECT_FALSE(eos);
        return id;
    }

    static std::string close(const std::string& id)
    {
        return exchange("CloseEnumeration", param("EnumerationContext", value(id)));
    }

    static server::WireServer* wire;
    static wiretest::TempPasswordFile* passwords;
};

server::WireServer* WirePull::wire = nullptr;
wiretest::TempPasswordFile* WirePull::passwords = nullptr;

std::string xmlOf(const CIMInstance& instance)
{
    std::string out;
    cimxml::writeInstanceName(out, instance.getPath());
    cimxml::writeInstance(out, instance);
    return out;
}

TEST_F(WirePull, PagingTenThousandPortsInPagesOf500GivesWhatEnumerateInstancesGives)
{
    const CIMOperationResponse whole =
        decoded("EnumerateInstances", param("ClassName", className("QEL_FCPort")));
    ASSERT_FALSE(whole.failed) << whole.error.getMessage();
    ASSERT_EQ(whole.instances.size(), kPorts);
    std::vector<Uint32> sizes;
    const CIMOperationResponse paged = pageThrough(
        "OpenEnumerateInstances", param("ClassName", className("QEL_FCPort")),
        "PullInstancesWithPath", 500, sizes);
    ASSERT_EQ(paged.instances.size(), kPorts);
    for (Uint32 i = 0; i < kPorts; ++i)
    {
        ASSERT_EQ(xmlOf(paged.instances[i]), xmlOf(whole.instances[i])) << "instance " << i;
        ASSERT_EQ(
            cimxml::toUtf8(paged.instances[i].getPath().getNameSpace().getString()), "root/qel");
    }
    for (Uint32 size : sizes)
        EXPECT_LE(size, 500u);
    EXPECT_GE(sizes.size(), kPorts / 500);

    const CIMOperationResponse names =
        decoded("EnumerateInstanceNames", param("ClassName", className("QEL_FCPort")));
    sizes.clear();
    const CIMOperationResponse pagedNames = pageThrough(
        "OpenEnumerateInstancePaths", param("ClassName", className("QEL_FCPort")),
        "PullInstancePaths", 500, sizes);
    ASSERT_EQ(pagedNames.paths.size(), names.paths.size());
    for (Uint32 i = 0; i < names.paths.size(); ++i)
    {
        CIMObjectPath local = pagedNames.paths[i];
        local.setHost(String());
        local.setNameSpace(CIMNamespaceName());
        ASSERT_TRUE(local.identical(names.paths[i])) << i;
    }
}

TEST_F(WirePull, EveryPullOperationAndItsErrorsOverCimXml)
{
    const CIMOperationResponse ports =
        decoded("EnumerateInstanceNames", param("ClassName", className("QEL_FCPort")));
    std::string port;
    cimxml::writeInstanceName(port, ports.paths[0]);
    const std::string eosTrue =
        "<PARAMVALUE NAME=\"EndOfSequence\" PARAMTYPE=\"boolean\"><VALUE>TRUE</VALUE></PARAMVALUE>"
        "<PARAMVALUE NAME=\"EnumerationContext\" PARAMTYPE=\"string\"></PARAMVALUE>";
    const std::string instances =
        opened("OpenEnumerateInstances", param("ClassName", className("QEL_FCPort")));
    const std::string paths =
        opened("OpenEnumerateInstancePaths", param("ClassName", className("QEL_FCPort")));
    const struct
    {
        const char* what;
        std::string method, params, user;
        std::vector<std::string> fragments;
    } cases[] = {
        {"the port's transceiver",
         "OpenAssociatorInstances",
         param("InstanceName", port) + param("AssocClass", className("QEL_FCPortSFP")) +
             param("MaxObjectCount", value("10")),
         "admin",
         {"<IRETURNVALUE><VALUE.INSTANCEWITHPATH><INSTANCEPATH><NAMESPACEPATH><HOST>",
          "<INSTANCE CLASSNAME=\"QEL_SFP\">",
          "</VALUE.INSTANCEWITHPATH></IRETURNVALUE>" + eosTrue}},
        {"its path",
         "OpenAssociatorInstancePaths",
         param("InstanceName", port) + param("ResultClass", className("QEL_SFP")) +
             param("MaxObjectCount", value("10")),
         "admin",
         {"<IRETURNVALUE><INSTANCEPATH><NAMESPACEPATH>", "<INSTANCENAME CLASSNAME=\"QEL_SFP\">",
          "</INSTANCEPATH></IRETURNVALUE>" + eosTrue}},
        {"the associations",
         "OpenReferenceInstances",
         param("InstanceName", port) + param("ResultClass", className("QEL_FCPortSFP")) +
             param("MaxObjectCount", value("10")),
         "admin",
         {"<INSTANCE CLASSNAME=\"QEL_FCPortSFP\">", eosTrue}},
        {"their paths",
         "OpenReferenceInstancePaths",
         param("InstanceName", port) + param("Role", value("Dependent")) +
             param("MaxObjectCount", value("10")),
         "admin",
         {"<INSTANCENAME CLASSNAME=\"QEL_FCPortSFP\">", eosTrue}},
        {"nothing yet",
         "EnumerationCount",
         param("EnumerationContext", value(instances)),
         "admin",
         {"<IMETHODRESPONSE NAME=\"EnumerationCount\"><IRETURNVALUE></IRETURNVALUE>"
          "</IMETHODRESPONSE>"}},
        {"a negative MaxObjectCount",
         "PullInstancesWithPath",
         param("EnumerationContext", value(instances)) + param("MaxObjectCount", value("-1")),
         "admin",
         {"<ERROR CODE=\"4\" DESCRIPTION=\"CIM_ERR_INVALID_PARAMETER: ",
          "parameter MaxObjectCount must be a uint32 (0 to 4294967295), not &quot;-1&quot;"}},
        {"MaxObjectCount past the server's maximum",
         "PullInstancesWithPath",
         param("EnumerationContext", value(instances)) + param("MaxObjectCount", value("10001")),
         "admin",
         {"<ERROR CODE=\"4\" DESCRIPTION=\"CIM_ERR_INVALID_PARAMETER: MaxObjectCount 10001 is "
          "past this server&apos;s maximum of 10000.\""}},
        {"an OperationTimeout past the maximum",
         "OpenEnumerateInstancePaths",
         param("ClassName", className("QEL_FCPort")) + param("OperationTimeout", value("301")),
         "admin",
         {"<ERROR CODE=\"22\" DESCRIPTION=\"CIM_ERR_INVALID_OPERATION_TIMEOUT: OperationTimeout "
          "301 is past this server&apos;s maximum of 300 seconds.\""}},
        {"continuation on error",
         "OpenEnumerateInstancePaths",
         param("ClassName", className("QEL_FCPort")) + param("ContinueOnError", value("TRUE")),
         "admin",
         {"<ERROR CODE=\"26\" DESCRIPTION=\"CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED: "}},
        {"a filter",
         "OpenEnumerateInstances",
         param("ClassName", className("QEL_FCPort")) +
             param("FilterQueryLanguage", value("DMTF:FQL")) +
             param("FilterQuery", value("Speed &gt; 1")),
         "admin",
         {"<ERROR CODE=\"25\" DESCRIPTION=\"CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED: "}},
        {"paths from an instance enumeration",
         "PullInstancePaths",
         param("EnumerationContext", value(instances)) + param("MaxObjectCount", value("1")),
         "admin",
         {"<ERROR CODE=\"21\" DESCRIPTION=\"CIM_ERR_INVALID_ENUMERATION_CONTEXT: "
          "EnumerationContext &quot;" +
          instances + "&quot; enumerates instances: pull it with PullInstancesWithPath"}},
        {"another user's context",
         "PullInstancePaths",
         param("EnumerationContext", value(paths)) + param("MaxObjectCount", value("1")),
         "monitor",
         {"<ERROR CODE=\"21\" DESCRIPTION=\"CIM_ERR_INVALID_ENUMERATION_CONTEXT: "
          "EnumerationContext &quot;" +
          paths + "&quot; names no open enumeration of this user"}},
        {"a context made up",
         "CloseEnumeration",
         param("EnumerationContext", value("00112233445566778899aabbccddeeff")),
         "admin",
         {"<ERROR CODE=\"21\" "}},
        {"one open too many",
         "OpenEnumerateInstancePaths",
         param("ClassName", className("QEL_FCPort")),
         "admin",
         {"<ERROR CODE=\"27\" DESCRIPTION=\"CIM_ERR_SERVER_LIMITS_EXCEEDED: User &quot;admin&quot; "
          "has the maximum of 3 open enumerations per user"}},
    };
    std::string third;
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        if (std::string(c.what) == "one open too many")
            third = opened("OpenEnumerateInstancePaths", param("ClassName", className("QEL_SFP")));
        const std::string answer = exchange(c.method, c.params, c.user);
        for (const std::string& f : c.fragments)
            EXPECT_NE(answer.find(f), std::string::npos) << f << "\nin\n" << answer;
    }
    for (const std::string& id : {instances, paths, third})
        EXPECT_NE(
            close(id).find("<IMETHODRESPONSE NAME=\"CloseEnumeration\"></IMETHODRESPONSE>"),
            std::string::npos);
}

TEST_F(WirePull, TheClientPullApiOverCimXmlAndInProcess)
{
    const CIMNamespaceName interop("root/interop");
    CIMClient remote;
    remote.connect("127.0.0.1", wire->tcpPort(), "admin", "admin-secret");
    CIMClient local;
    local.connectLocal();
    for (CIMClient* client : {&remote, &local})
    {
        SCOPED_TRACE(client == &remote ? "over CIM-XML" : "in process");
        const Array<CIMInstance> whole = client->enumerateInstances(interop, "CIM_Namespace");
        ASSERT_GE(whole.size(), 3u);
        CIMEnumerationContext context;
        Boolean eos = true;
        Array<CIMInstance> paged = client->openEnumerateInstances(
            context, eos, interop, "CIM_Namespace", true, false, CIMPropertyList(), "", "",
            Uint32Arg(30), false, 1);
        EXPECT_EQ(paged.size(), 1u);
        EXPECT_FALSE(eos);
        while (!eos)
        {
            if (paged.size() == 2)
            {
                // Known once the answer is complete: what is left to pull.
                wire->core().enumerations().waitUntilIdle();
                EXPECT_EQ(
                    client->enumerationCount(context).getValue(), whole.size() - paged.size());
            }
            paged.appendArray(client->pullInstancesWithPath(context, eos, 1));
        }
        ASSERT_EQ(paged.size(), whole.size());
        for (Uint32 i = 0; i < whole.size(); ++i)
        {
            EXPECT_EQ(xmlOf(paged[i]), xmlOf(whole[i])) << i;
            EXPECT_EQ(paged[i].getPath().getNameSpace(), interop);
        }
        // A closed enumeration is gone; the server's error comes as the exception.
        Array<CIMObjectPath> first =
            client->openEnumerateInstancePaths(context, eos, interop, "CIM_Namespace");
        EXPECT_EQ(first.size(), 0u);
        client->closeEnumeration(context);
        try
        {
            client->pullInstancePaths(context, eos, 1);
            ADD_FAILURE() << "a closed enumeration answered";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_ENUMERATION_CONTEXT);
        }
    }
}

TEST_F(WirePull, AClientThatVanishesMidSequenceLeavesNothingBehind)
{
    EnumerationContexts& contexts = wire->core().enumerations();
    // Opens, takes a first page, and goes: its connection is closed after each answer.
    const std::string id = opened(
        "OpenEnumerateInstances", param("ClassName", className("QEL_FCPort")) +
                                      param("OperationTimeout", value("5")) +
                                      param("MaxObjectCount", value("3")));
    EXPECT_EQ(contexts.stats().open, 1u);
    nowSeconds += 4;
    EXPECT_EQ(contexts.reapExpired(), 0u);
    nowSeconds += 1;
    EXPECT_EQ(contexts.reapExpired(), 1u);
    contexts.waitUntilIdle();
    EXPECT_EQ(contexts.stats().bufferedObjects, 0u);
    EXPECT_NE(close(id).find("<ERROR CODE=\"21\" "), std::string::npos);
}

}  // namespace
