// The pulled enumerations on the wire: every open, pull, close and count request survives
// the client's encoding and the server's decoding; the parameters that cannot be read are
// refused naming the parameter; answers carry instances with their paths, paths, the
// count, and the enumeration state as output parameters.
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

const CIMNamespaceName kQel("root/qel");
const CIMObjectPath kPort("QEL_FCPort.DeviceID=\"20110002AC00A001\",SystemName=\"S\"");

CIMPropertyList names(std::initializer_list<const char*> list)
{
    Array<CIMName> a;
    for (const char* n : list)
        a.append(CIMName(n));
    return CIMPropertyList(a);
}

CIMOpenParameters openWith(Uint32 maxObjectCount, Uint32Arg timeout = Uint32Arg())
{
    CIMOpenParameters open;
    open.maxObjectCount = maxObjectCount;
    open.operationTimeout = timeout;
    return open;
}

// The request as text: every field the pull operations use, given or not.
std::string fields(const CimRequest& r)
{
    return toUtf8(r.methodName) + "@" + toUtf8(r.nameSpace.getString()) +
           " present=" + r.present.to_string() + " class=" + toUtf8(r.className.getString()) +
           " object=" + toUtf8(r.objectName.toString()) +
           " assoc=" + toUtf8(r.assocClass.getString()) +
           " result=" + toUtf8(r.resultClass.getString()) + " role=" + toUtf8(r.role) +
           " resultRole=" + toUtf8(r.resultRole) + " deep=" + std::to_string(r.deepInheritance) +
           " origin=" + std::to_string(r.includeClassOrigin) +
           " list=" + toUtf8(r.propertyList.toString()) + " fql=" + toUtf8(r.filterQueryLanguage) +
           " fq=" + toUtf8(r.filterQuery) + " timeout=" + std::to_string(r.operationTimeout) +
           " coe=" + std::to_string(r.continueOnError) +
           " max=" + std::to_string(r.maxObjectCount) + " ctx=" + toUtf8(r.enumerationContext);
}

TEST(PullRequests, EveryPullOperationSurvivesEncodeAndDecode)
{
    CIMOpenParameters filtered = openWith(4294967295u, Uint32Arg(0));
    filtered.filterQueryLanguage = "DMTF:FQL";
    filtered.filterQuery = "Speed > 2 AND Name = \"<&>\"";
    filtered.continueOnError = true;
    const CimRequest requests[] = {
        CIMOperationRequest::openEnumerateInstances(
            kQel, "QEL_FCPort", false, true, names({"Speed", "DeviceID"}), filtered),
        CIMOperationRequest::openEnumerateInstances(
            kQel, "QEL_FCPort", true, false, CIMPropertyList(), openWith(0)),
        CIMOperationRequest::openEnumerateInstancePaths(kQel, "QEL_FCPort", openWith(500, 30)),
        CIMOperationRequest::openReferenceInstances(
            kQel, kPort, "QEL_FCPortSFP", "Antecedent", false, names({}), openWith(1)),
        CIMOperationRequest::openReferenceInstancePaths(kQel, kPort, CIMName(), "", openWith(2)),
        CIMOperationRequest::openAssociatorInstances(
            kQel, kPort, "QEL_FCPortSFP", "QEL_SFP", "Antecedent", "Dependent", true,
            CIMPropertyList(), openWith(3)),
        CIMOperationRequest::openAssociatorInstancePaths(
            kQel, kPort, CIMName(), "QEL_SFP", "", "", openWith(4)),
        CIMOperationRequest::pullInstancesWithPath(kQel, "0123456789abcdef", 0),
        CIMOperationRequest::pullInstancePaths(kQel, "a \"quoted\" <context>", 4294967295u),
        CIMOperationRequest::closeEnumeration(kQel, "c"),
        CIMOperationRequest::enumerationCount(kQel, ""),
    };
    for (CimRequest original : requests)
    {
        original.messageId = "5";
        SCOPED_TRACE(fields(original));
        const std::string body = encodeRequest(original);
        const DecodedRequest d = decodeRequest(body.data(), body.size());
        ASSERT_FALSE(d.failed) << body << "\n" << d.error.getMessage();
        EXPECT_EQ(fields(d.request), fields(original)) << body;
        EXPECT_EQ(d.request.operation, original.operation);
    }
}

struct BadParameter
{
    const char* what;
    std::string call;
    const char* mentions;
};

std::string message(const std::string& call)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" "
           "DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
           call + "</SIMPLEREQ></MESSAGE></CIM>";
}

std::string intrinsic(const std::string& name, const std::string& params)
{
    return "<IMETHODCALL NAME=\"" + name +
           "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
           "NAME=\"qel\"/></LOCALNAMESPACEPATH>" +
           params + "</IMETHODCALL>";
}

std::string param(const std::string& name, const std::string& value)
{
    return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
}

std::string value(const std::string& text)
{
    return "<VALUE>" + text + "</VALUE>";
}

std::string openPorts(const std::string& more)
{
    return intrinsic(
        "OpenEnumerateInstances", param("ClassName", "<CLASSNAME NAME=\"QEL_FCPort\"/>") + more);
}

std::string pull(const std::string& params)
{
    return intrinsic("PullInstancesWithPath", params);
}

const std::string kContext = param("EnumerationContext", value("c1"));

TEST(PullRequests, ParametersThatCannotBeReadAreRefusedNamingThem)
{
    const BadParameter cases[] = {
        {"negative MaxObjectCount", openPorts(param("MaxObjectCount", value("-1"))),
         "parameter MaxObjectCount must be a uint32 (0 to 4294967295), not \"-1\""},
        {"MaxObjectCount one past the largest uint32",
         pull(kContext + param("MaxObjectCount", value("4294967296"))),
         "MaxObjectCount must be a uint32"},
        {"MaxObjectCount with a sign", pull(kContext + param("MaxObjectCount", value("+5"))),
         "MaxObjectCount must be a uint32"},
        {"MaxObjectCount empty", pull(kContext + param("MaxObjectCount", value(""))),
         "MaxObjectCount must be a uint32"},
        {"MaxObjectCount not a VALUE",
         pull(kContext + param("MaxObjectCount", "<VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY>")),
         "parameter MaxObjectCount expects VALUE"},
        {"negative OperationTimeout", openPorts(param("OperationTimeout", value("-30"))),
         "parameter OperationTimeout must be a uint32"},
        {"ContinueOnError neither TRUE nor FALSE",
         openPorts(param("ContinueOnError", value("sometimes"))),
         "parameter ContinueOnError must be TRUE or FALSE"},
        {"pull without MaxObjectCount", pull(kContext),
         "missing required parameter MaxObjectCount for PullInstancesWithPath"},
        {"pull with a NULL MaxObjectCount",
         pull(kContext + "<IPARAMVALUE NAME=\"MaxObjectCount\"/>"),
         "parameter MaxObjectCount must not be NULL"},
        {"pull without EnumerationContext", pull(param("MaxObjectCount", value("1"))),
         "missing required parameter EnumerationContext"},
        {"close with a NULL EnumerationContext",
         intrinsic("CloseEnumeration", "<IPARAMVALUE NAME=\"EnumerationContext\"/>"),
         "parameter EnumerationContext must not be NULL"},
        // Two elements, within the operation's count: the repeat itself is refused.
        {"MaxObjectCount twice, once NULL",
         pull(param("MaxObjectCount", value("1")) + "<IPARAMVALUE NAME=\"MaxObjectCount\"/>"),
         "parameter MaxObjectCount given twice"},
        {"one parameter more than the operation has",
         pull(
             kContext + param("MaxObjectCount", value("1")) +
             "<IPARAMVALUE NAME=\"MaxObjectCount\"/>"),
         "more than 2 IPARAMVALUE elements in IMETHODCALL PullInstancesWithPath (limit 2)"},
        {"a class where the open needs an instance",
         intrinsic(
             "OpenReferenceInstancePaths",
             param("InstanceName", "<CLASSNAME NAME=\"QEL_FCPort\"/>")),
         "parameter InstanceName expects INSTANCENAME"},
        {"a parameter of the operations that are not pulled",
         openPorts(param("LocalOnly", value("FALSE"))),
         "unknown parameter \"LocalOnly\" for OpenEnumerateInstances"},
    };
    for (const BadParameter& c : cases)
    {
        SCOPED_TRACE(c.what);
        const std::string body = message(c.call);
        const DecodedRequest d = decodeRequest(body.data(), body.size());
        ASSERT_TRUE(d.failed);
        EXPECT_EQ(d.error.getCode(), CIM_ERR_INVALID_PARAMETER);
        EXPECT_NE(toUtf8(d.error.getMessage()).find(c.mentions), std::string::npos)
            << d.error.getMessage();
    }
}

TEST(PullRequests, NullsAndBoundariesThatAreAccepted)
{
    const struct
    {
        const char* what;
        std::string call;
        std::string expected;  // present bits of the parameters concerned, and their values
    } cases[] = {
        {"NULL OperationTimeout and filter: as if not given",
         openPorts("<IPARAMVALUE NAME=\"OperationTimeout\"/><IPARAMVALUE "
                   "NAME=\"FilterQueryLanguage\"/><IPARAMVALUE NAME=\"FilterQuery\"/>"),
         "timeout=- fql=- fq=- max=- 0 coe=0"},
        {"an empty filter is not NULL",
         openPorts(param("FilterQuery", value("")) + param("OperationTimeout", value(" 7 "))),
         "timeout=7 fql=- fq= max=- 0 coe=0"},
        {"the largest uint32, and ContinueOnError",
         openPorts(
             param("MaxObjectCount", value("4294967295")) +
             param("ContinueOnError", value("true"))),
         "timeout=- fql=- fq=- max=4294967295 4294967295 coe=1"},
        {"zero", openPorts(param("MaxObjectCount", value("0"))),
         "timeout=- fql=- fq=- max=0 0 coe=0"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const std::string body = message(c.call);
        const DecodedRequest d = decodeRequest(body.data(), body.size());
        ASSERT_FALSE(d.failed) << d.error.getMessage();
        const CimRequest& r = d.request;
        const auto given = [&](Param p, const std::string& v)
        { return r.has(p) ? v : std::string("-"); };
        EXPECT_EQ(
            "timeout=" + given(Param::OperationTimeout, std::to_string(r.operationTimeout)) +
                " fql=" + given(Param::FilterQueryLanguage, toUtf8(r.filterQueryLanguage)) +
                " fq=" + given(Param::FilterQuery, toUtf8(r.filterQuery)) +
                " max=" + given(Param::MaxObjectCount, std::to_string(r.maxObjectCount)) + " " +
                std::to_string(r.maxObjectCount) + " coe=" + std::to_string(r.continueOnError),
            c.expected);
    }
}

CimResponse roundTrip(const CimRequest& request, const CimResponse& answer, std::string& body)
{
    body = encodeResponse(answer, "array.example", request.nameSpace);
    return decodeResponse(body.data(), body.size(), request);
}

CimResponse answerTo(const CimRequest& r)
{
    CimResponse a(r);
    return a;
}

TEST(PullResponses, InstancesComeWithFullPathsAndTheStateFollowsAsOutputParameters)
{
    CimRequest open =
        CIMOperationRequest::openEnumerateInstances(kQel, "QEL_FCPort", true, false, {}, {});
    open.messageId = "3";
    CimResponse a = answerTo(open);
    for (const char* id : {"B", "A"})
    {
        CIMInstance port(CIMName("QEL_FCPort"));
        port.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(id))));
        port.setPath(CIMObjectPath(String("QEL_FCPort.DeviceID=\"") + id + "\""));
        a.instances.append(port);
    }
    a.outParameters = CIMOperationResponse::enumerationState(false, "ctx<&>");
    std::string body;
    CimResponse back = roundTrip(open, a, body);
    EXPECT_NE(
        body.find("</IRETURNVALUE><PARAMVALUE NAME=\"EndOfSequence\" PARAMTYPE=\"boolean\">"
                  "<VALUE>FALSE</VALUE></PARAMVALUE><PARAMVALUE NAME=\"EnumerationContext\" "
                  "PARAMTYPE=\"string\"><VALUE>ctx&lt;&amp;&gt;</VALUE></PARAMVALUE>"
                  "</IMETHODRESPONSE>"),
        std::string::npos)
        << body;
    ASSERT_EQ(back.instances.size(), 2u);
    // Paths without host or namespace get the server's host and the request's namespace.
    EXPECT_EQ(
        toUtf8(back.instances[0].getPath().toString()),
        "//array.example/root/qel:QEL_FCPort.DeviceID=\"B\"");
    EXPECT_EQ(toUtf8(back.instances[1].getPath().getKeyBindings()[0].getValue()), "A");
    Boolean eos = true;
    EXPECT_EQ(toUtf8(back.enumerationContext(eos)), "ctx<&>");
    EXPECT_FALSE(eos);

    // Paths, at the end of the sequence: the context goes back NULL.
    CimRequest pull = CIMOperationRequest::pullInstancePaths(kQel, "ctx", 10);
    pull.messageId = "4";
    CimResponse p = answerTo(pull);
    p.paths.append(CIMObjectPath("//other.host/root/x:QEL_FCPort.DeviceID=\"C\""));
    p.paths.append(CIMObjectPath("QEL_FCPort.DeviceID=\"D\""));
    p.outParameters = CIMOperationResponse::enumerationState(true, "ctx");
    back = roundTrip(pull, p, body);
    EXPECT_NE(
        body.find("<PARAMVALUE NAME=\"EnumerationContext\" PARAMTYPE=\"string\"></PARAMVALUE>"),
        std::string::npos)
        << body;
    ASSERT_EQ(back.paths.size(), 2u);
    EXPECT_EQ(toUtf8(back.paths[0].toString()), "//other.host/root/x:QEL_FCPort.DeviceID=\"C\"");
    EXPECT_EQ(toUtf8(back.paths[1].getHost()), "array.example");
    EXPECT_EQ(toUtf8(back.enumerationContext(eos)), "");
    EXPECT_TRUE(eos);

    // An empty page is an empty IRETURNVALUE.
    CimResponse none = answerTo(pull);
    none.outParameters = CIMOperationResponse::enumerationState(false, "ctx");
    back = roundTrip(pull, none, body);
    EXPECT_NE(body.find("<IRETURNVALUE></IRETURNVALUE><PARAMVALUE"), std::string::npos) << body;
    EXPECT_EQ(back.paths.size(), 0u);

    // The count: a number, or nothing when unknown. Closing answers nothing.
    CimRequest count = CIMOperationRequest::enumerationCount(kQel, "ctx");
    count.messageId = "5";
    for (const CIMValue& v : {CIMValue(Uint64(10000)), CIMValue(CIMTYPE_UINT64, false)})
    {
        CimResponse c = answerTo(count);
        c.value = v;
        back = roundTrip(count, c, body);
        EXPECT_EQ(toUtf8(back.enumerationCount().toString()), v.isNull() ? "NULL" : "10000");
    }
    CimRequest close = CIMOperationRequest::closeEnumeration(kQel, "ctx");
    close.messageId = "6";
    back = roundTrip(close, answerTo(close), body);
    EXPECT_NE(
        body.find("<IMETHODRESPONSE NAME=\"CloseEnumeration\"></IMETHODRESPONSE>"),
        std::string::npos)
        << body;
    EXPECT_FALSE(back.failed);
}

}  // namespace
