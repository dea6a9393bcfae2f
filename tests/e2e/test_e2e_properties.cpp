// Single properties of FC ports with wbemcli gp and sp, through qel-cimserver on the demo
// array. The server answers them as a getInstance or a modifyInstance of that one
// property, so the port provider's own rules for changes apply to sp.
#include "Wbemcli.h"

#include <Server/auth/Base64.h>
#include <Server/clienttransport/HttpClientConnection.h>
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

using namespace e2e;

namespace
{

const std::string kPort011 = portPath("20110002AC00A001", "DEMO01-N0");
const std::string kPort022 =
    portPath("20220002AC00A001", "DEMO01-N0");  // refuses unforced mode changes
const std::string kPort121 = portPath("21210002AC00A001", "DEMO01-N1");

class PropertyTest : public SharedServerSuite<PropertyTest>
{
protected:
    static void SetUpTestSuite() { startServer({{"operator", "edit"}, {"monitor", "browse"}}); }

    static WbemcliAnswer
    get(const std::string& user, const std::string& port, const std::string& property)
    {
        return (*cli)({"gp", cli->at(user, port), property});
    }
    static WbemcliAnswer
    set(const std::string& user, const std::string& port, const std::string& assignment)
    {
        return (*cli)({"sp", cli->at(user, port), assignment});
    }
    // gp prints the value alone, without the quotes gi puts around strings.
    static std::string printed(const WbemcliAnswer& answer)
    {
        std::string out = answer.result.out;
        while (!out.empty() && out.back() == '\n')
            out.pop_back();
        return out;
    }
    static std::map<std::string, std::string> read(const std::string& port)
    {
        const std::vector<PrintedObject> found = cli->as("monitor", "gi", port).objects();
        return found.size() == 1 ? found[0].properties : std::map<std::string, std::string>();
    }
    // The properties whose printed values differ, each as "name: before -> after".
    static std::vector<std::string> changes(
        const std::map<std::string, std::string>& before,
        const std::map<std::string, std::string>& after)
    {
        std::vector<std::string> result;
        for (const auto& b : before)
        {
            const auto a = after.find(b.first);
            const std::string now = a == after.end() ? "<absent>" : a->second;
            if (now != b.second)
                result.push_back(b.first + ": " + b.second + " -> " + now);
        }
        for (const auto& a : after)
            if (before.count(a.first) == 0)
                result.push_back(a.first + ": <absent> -> " + a.second);
        return result;
    }

    // SetProperty as a CIM client sends it, for what wbemcli does not send: it reads the class
    // first and turns an unknown property away itself. The CIM error, "" when accepted.
    static std::string setOnTheWire(
        const std::string& user, const std::string& port, const char* property, const char* text)
    {
        using namespace qel::cimxml;
        CimRequest r;
        r.operation = Operation::SetProperty;
        r.methodName = Pegasus::String(entryOf(Operation::SetProperty).name);
        r.messageId = "1";
        r.nameSpace = Pegasus::CIMNamespaceName("root/qel");
        r.objectName = Pegasus::CIMObjectPath(port.c_str());
        r.propertyName = Pegasus::CIMName(property);
        r.newValue = Pegasus::CIMValue(Pegasus::String(text));
        for (Param p : {Param::InstanceName, Param::PropertyName, Param::NewValue})
            r.present.set(static_cast<size_t>(p));
        const auto connection = qel::client::HttpClientConnection::tcp(
            "127.0.0.1", server->port(), std::chrono::seconds(20));
        const qel::client::HttpResult reply = connection->post(
            {{"CIMProtocolVersion", "1.0"},
             {"CIMOperation", "MethodCall"},
             {"CIMMethod", cimMethodHeader(r)},
             {"CIMObject", cimObjectHeader(r)},
             {"Authorization",
              "Basic " + qel::auth::base64Encode(user + ":" + server->password(user))}},
            encodeRequest(r));
        if (reply.status != 200)
            return "HTTP " + std::to_string(reply.status);
        const CimResponse response = decodeResponse(reply.body.data(), reply.body.size(), r);
        return response.failed ? std::string(response.error.getMessage().getCString())
                               : std::string();
    }
};

TEST_F(PropertyTest, GetPropertyAnswersOneValueOfTheInstance)
{
    const struct
    {
        const std::string& port;
        const char* property;
        const char* value;
    } values[] = {
        {kPort011, "ElementName", "0:1:1"},
        {kPort011, "Speed", "8589934592"},
        {kPort011, "EnabledState", "2"},
        {kPort011, "FullDuplex", "TRUE"},
        {kPort011, "OperationalStatus", "2"},
        {kPort022, "Mode", "1"},
        {kPort022, "VCN", "2"},
        {kPort022, "ModeChangeAllowed", "FALSE"},
    };
    for (const auto& v : values)
    {
        const WbemcliAnswer r = get("monitor", v.port, v.property);
        EXPECT_TRUE(r.ok()) << v.property << "\n" << r.result.output;
        EXPECT_EQ(printed(r), v.value) << v.property;
    }

    const struct
    {
        const char* what;
        std::string port;
        const char* property;
        const char* error;
    } errors[] = {
        {"unknown property", kPort011, "Colour",
         "CIM_ERR_NO_SUCH_PROPERTY: Class QEL_FCPort has no property Colour."},
        {"property of the transceiver class", kPort011, "Temperature",
         "CIM_ERR_NO_SUCH_PROPERTY: Class QEL_FCPort has no property Temperature."},
        {"no such port", portPath("20110002AC00A0FF", "DEMO01-N0"), "VCN",
         "CIM_ERR_NOT_FOUND: QEL_FCPort CIM Object not found.20110002AC00A0FF"},
    };
    for (const auto& e : errors)
    {
        const WbemcliAnswer r = get("monitor", e.port, e.property);
        EXPECT_EQ(r.error(), e.error) << e.what << "\n" << r.result.output;
        EXPECT_EQ(printed(r), "") << e.what;
    }
}

// The settings one at a time, by an edit user: the array makes that one change (its audit
// log names the call) and every other value stays as it was, but what follows from it.
TEST_F(PropertyTest, SetPropertyChangesThatOneSetting)
{
    const struct
    {
        const char* property;
        const char* value;
        const char* libraryCall;
        std::vector<std::string> follows;
    } steps[] = {
        {"Mode", "2", "api_setFCPortMode", {}},
        {"VCN", "2", "api_setFCPortVCN", {}},
        {"InterruptCoalescing", "2", "api_setFCPortIntCoal", {}},
        {"ConnectionType", "4", "api_setFCPortConnType", {"PortType: 11 -> 13"}},
        {"Class2Support", "3", "api_setFCPortClass2", {}},
        {"RequestedSpeed", "1073741824", "api_setFCPortSpeed", {}},
    };
    for (const auto& step : steps)
    {
        const std::map<std::string, std::string> before = read(kPort121);
        ASSERT_EQ(before.count(step.property), 1u) << step.property;
        const std::string was = before.at(step.property);
        ASSERT_NE(was, step.value) << step.property;
        const size_t audited = server->auditLog().size();

        const WbemcliAnswer r =
            set("operator", kPort121, std::string(step.property) + "=" + step.value);
        EXPECT_TRUE(r.ok()) << step.property << "\n" << r.result.output;
        std::vector<std::string> expected = step.follows;
        expected.push_back(std::string(step.property) + ": " + was + " -> " + step.value);
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(changes(before, read(kPort121)), expected);
        EXPECT_EQ(printed(get("monitor", kPort121, step.property)), step.value) << step.property;
        const std::string entry = server->auditLog().substr(audited);
        EXPECT_NE(
            entry.find(
                std::string(
                    "\"user\":\"operator\",\"address\":\"127.0.0.1\",\"method\":\"QEL_FCPort:"
                    "ModifyInstance\",\"op\":\"\",\"param\":\"\",\"call\":\"") +
                step.libraryCall + "\",\"ports\":[\"1:2:1\"],\"result\":0}"),
            std::string::npos)
            << step.property << "\n"
            << entry;
        EXPECT_EQ(entry.find("\"call\":", entry.find("\"call\":") + 1), std::string::npos)
            << "one call only\n"
            << entry;
    }

    // Mode alone does not force the change, and this port refuses an unforced one.
    const WbemcliAnswer refused = set("operator", kPort022, "Mode=2");
    EXPECT_EQ(refused.error(), "CIM_ERR_FAILED: Failed to set port mode") << refused.result.output;
    EXPECT_EQ(printed(get("monitor", kPort022, "Mode")), "1");
}

struct RefusalCase
{
    const char* what;
    const char* user;
    const char* assignment;
    const char* error;
};

// Refusals leave the port as it was and reach no change of the array.
TEST_F(PropertyTest, SetPropertyRefusals)
{
    const RefusalCase cases[] = {
        {"browse user", "monitor", "VCN=1",
         "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {"property that is not a setting", "operator", "ElementName=x",
         "CIM_ERR_INVALID_PARAMETER: Invalid parameter: ElementName"},
        {"read-only number", "operator", "Speed=1",
         "CIM_ERR_INVALID_PARAMETER: Invalid parameter: Speed"},
        {"text that is no number", "operator", "VCN=abc",
         "CIM_ERR_INVALID_PARAMETER: property VCN of class QEL_FCPort: not a valid uint16 value \"abc\""},
        {"number beyond the type", "operator", "VCN=65536",
         "CIM_ERR_INVALID_PARAMETER: property VCN of class QEL_FCPort: uint16 value out of range \"65536\""},
    };
    const std::map<std::string, std::string> before = read(kPort011);
    ASSERT_FALSE(before.empty());
    const size_t audited = server->auditLog().size();
    for (const RefusalCase& c : cases)
    {
        const WbemcliAnswer r = set(c.user, kPort011, c.assignment);
        EXPECT_EQ(r.error(), c.error) << c.what << "\n" << r.result.output;
    }
    EXPECT_EQ(
        setOnTheWire("operator", kPort011, "Colour", "red"),
        "CIM_ERR_NO_SUCH_PROPERTY: Class QEL_FCPort has no property Colour.");
    EXPECT_EQ(read(kPort011), before);
    EXPECT_EQ(server->auditLog().substr(audited), "");

    // The same request with a setting is accepted: the refusal above was the property's.
    EXPECT_EQ(setOnTheWire("operator", kPort011, "VCN", "1"), "");
    EXPECT_EQ(printed(get("monitor", kPort011, "VCN")), "1");
}

}  // namespace
