// Request documents: what the server accepts, what it answers with an HTTP error, and
// what becomes a CIM error; and that the client's encoding decodes to the same request.
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/XmlText.h>

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

const char* kNs =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH>";
const char* kPort =
    "<INSTANCENAME CLASSNAME=\"QEL_FCPort\"><KEYBINDING NAME=\"DeviceID\"><KEYVALUE VALUETYPE=\"string\">"
    "20110002AC00A001</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string message(
    const std::string& call, const std::string& envelope = "CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"")
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM " + envelope +
           "><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" + call +
           "</SIMPLEREQ></MESSAGE></CIM>";
}

std::string intrinsic(const std::string& name, const std::string& params)
{
    return "<IMETHODCALL NAME=\"" + name + "\">" + kNs + params + "</IMETHODCALL>";
}

std::string param(const std::string& name, const std::string& value)
{
    return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
}

DecodedRequest decode(const std::string& body)
{
    return decodeRequest(body.data(), body.size());
}

// Documents that cannot be answered as a CIM message.
struct ProtocolCase
{
    const char* what;
    std::string body;
    int status;
    const char* cimError;
};

class RequestProtocolErrors : public ::testing::TestWithParam<ProtocolCase>
{
};

TEST_P(RequestProtocolErrors, AnsweredWithHttpStatusAndCimErrorHeader)
{
    const ProtocolCase& c = GetParam();
    try
    {
        decode(c.body);
        FAIL() << c.what << ": accepted";
    }
    catch (const ProtocolError& e)
    {
        EXPECT_EQ(e.httpStatus(), c.status) << c.what;
        EXPECT_EQ(e.cimError(), c.cimError) << c.what;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Envelope, RequestProtocolErrors,
    ::testing::Values(
        ProtocolCase{"not XML", "<CIM><MESSAGE>", 400, "request-not-well-formed"},
        ProtocolCase{
            "entity declaration",
            "<?xml version=\"1.0\"?><!DOCTYPE CIM [<!ENTITY x \"boom\">]>" +
                message(intrinsic(
                            "EnumerateInstanceNames",
                            param("ClassName", "<CLASSNAME NAME=\"A\"/>")))
                    .substr(38),
            400, "request-not-well-formed"},
        ProtocolCase{"wrong root", "<FOO/>", 400, "request-not-valid"},
        ProtocolCase{
            "CIM version 3",
            message(intrinsic("GetClass", ""), "CIMVERSION=\"3.0\" DTDVERSION=\"2.0\""), 501,
            "unsupported-cim-version"},
        ProtocolCase{
            "DTD version 1",
            message(intrinsic("GetClass", ""), "CIMVERSION=\"2.0\" DTDVERSION=\"1.1\""), 501,
            "unsupported-dtd-version"},
        ProtocolCase{
            "multiple requests",
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
            "<MULTIREQ/></MESSAGE></CIM>",
            501, "multiple-requests-unsupported"},
        ProtocolCase{
            "no message ID",
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
                intrinsic("GetClass", "") + "</SIMPLEREQ></MESSAGE></CIM>",
            400, "request-not-valid"},
        ProtocolCase{
            "protocol version 2",
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"2.0\"><SIMPLEREQ>" +
                intrinsic("GetClass", "") + "</SIMPLEREQ></MESSAGE></CIM>",
            501, "unsupported-protocol-version"},
        ProtocolCase{
            "call without name", message("<IMETHODCALL>" + std::string(kNs) + "</IMETHODCALL>"),
            400, "request-not-valid"}));

// Messages that name their operation but break its rules: answered with a CIM ERROR.
struct CimErrorCase
{
    const char* what;
    std::string call;
    CIMStatusCode code;
    const char* mentions;
};

class RequestCimErrors : public ::testing::TestWithParam<CimErrorCase>
{
};

TEST_P(RequestCimErrors, AnsweredWithCimErrorNamingTheProblem)
{
    const CimErrorCase& c = GetParam();
    const DecodedRequest d = decode(message(c.call));
    ASSERT_TRUE(d.failed) << c.what;
    EXPECT_EQ(d.error.getCode(), c.code) << c.what << ": " << d.error.getMessage();
    EXPECT_NE(toUtf8(d.error.getMessage()).find(c.mentions), std::string::npos)
        << c.what << ": " << d.error.getMessage();
    EXPECT_EQ(d.request.messageId, "7");
}

INSTANTIATE_TEST_SUITE_P(
    Parameters, RequestCimErrors,
    ::testing::Values(
        CimErrorCase{
            "unknown intrinsic method", intrinsic("FlyAway", ""), CIM_ERR_NOT_SUPPORTED, "FlyAway"},
        CimErrorCase{
            "missing namespace", "<IMETHODCALL NAME=\"GetClass\"></IMETHODCALL>",
            CIM_ERR_INVALID_PARAMETER, "LOCALNAMESPACEPATH"},
        CimErrorCase{
            "unknown parameter",
            intrinsic("GetInstance", param("InstanceName", kPort) + param("Colour", "")),
            CIM_ERR_INVALID_PARAMETER, "Colour"},
        CimErrorCase{
            "duplicate parameter",
            intrinsic("GetInstance", param("InstanceName", kPort) + param("InstanceName", kPort)),
            CIM_ERR_INVALID_PARAMETER, "twice"},
        CimErrorCase{
            "missing required parameter", intrinsic("GetInstance", ""), CIM_ERR_INVALID_PARAMETER,
            "InstanceName"},
        CimErrorCase{
            "boolean not TRUE/FALSE",
            intrinsic(
                "GetInstance",
                param("InstanceName", kPort) + param("LocalOnly", "<VALUE>yes</VALUE>")),
            CIM_ERR_INVALID_PARAMETER, "LocalOnly"},
        CimErrorCase{
            "illegal class name",
            intrinsic("EnumerateInstanceNames", param("ClassName", "<CLASSNAME NAME=\"a-b\"/>")),
            CIM_ERR_INVALID_PARAMETER, "a-b"},
        CimErrorCase{
            "bad key value type",
            intrinsic(
                "GetInstance", param(
                                   "InstanceName",
                                   "<INSTANCENAME CLASSNAME=\"X\"><KEYBINDING NAME=\"k\"><KEYVALUE "
                                   "VALUETYPE=\"date\">1</KEYVALUE></KEYBINDING></INSTANCENAME>")),
            CIM_ERR_INVALID_PARAMETER, "VALUETYPE"},
        CimErrorCase{
            "property value of the wrong type",
            intrinsic(
                "ModifyInstance",
                param(
                    "ModifiedInstance", std::string("<VALUE.NAMEDINSTANCE>") + kPort +
                                            "<INSTANCE CLASSNAME=\"QEL_FCPort\"><PROPERTY "
                                            "NAME=\"Speed\" TYPE=\"uint64\"><VALUE>fast</VALUE>"
                                            "</PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE>")),
            CIM_ERR_INVALID_PARAMETER, "uint64"},
        CimErrorCase{
            "duplicate property",
            intrinsic(
                "CreateInstance",
                param(
                    "NewInstance",
                    "<INSTANCE CLASSNAME=\"X\"><PROPERTY NAME=\"a\" TYPE=\"string\"/>"
                    "<PROPERTY NAME=\"A\" TYPE=\"string\"/></INSTANCE>")),
            CIM_ERR_INVALID_PARAMETER, "already exists"},
        CimErrorCase{
            "extrinsic call without target", "<METHODCALL NAME=\"Reset\"></METHODCALL>",
            CIM_ERR_INVALID_PARAMETER, "LOCALINSTANCEPATH"},
        CimErrorCase{
            "duplicate method parameter",
            std::string("<METHODCALL NAME=\"Reset\"><LOCALINSTANCEPATH>") + kNs + kPort +
                "</LOCALINSTANCEPATH><PARAMVALUE NAME=\"a\"/><PARAMVALUE NAME=\"A\"/></METHODCALL>",
            CIM_ERR_INVALID_PARAMETER, "twice"},
        CimErrorCase{
            "references nested without end",
            []
            {
                std::string ref = "<CLASSNAME NAME=\"Z\"/>";
                for (int i = 0; i < 40; ++i)
                    ref = "<INSTANCENAME CLASSNAME=\"X\"><KEYBINDING NAME=\"r\"><VALUE.REFERENCE>" +
                          ref + "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
                return intrinsic("GetInstance", param("InstanceName", ref));
            }(),
            CIM_ERR_INVALID_PARAMETER, "nested too deeply"}));

TEST(RequestDecoding, WbemcliStyleEnumerateInstancesWithDefaultsAndNames)
{
    // Parameter names match without regard to case; absent booleans take the defaults.
    const DecodedRequest d = decode(message(intrinsic(
        "EnumerateInstances",
        param("classname", "<CLASSNAME NAME=\"QEL_FCPort\"/>") +
            param(
                "PropertyList",
                "<VALUE.ARRAY><VALUE>Speed</VALUE><VALUE>Name</VALUE></VALUE.ARRAY>") +
            param("IncludeQualifiers", "<VALUE>true</VALUE>"))));
    ASSERT_FALSE(d.failed) << d.error.getMessage();
    const CimRequest& r = d.request;
    EXPECT_EQ(r.operation, Operation::EnumerateInstances);
    EXPECT_EQ(r.nameSpace, CIMNamespaceName("root/qel"));
    EXPECT_EQ(r.className, CIMName("QEL_FCPort"));
    EXPECT_TRUE(r.localOnly);
    EXPECT_TRUE(r.deepInheritance);
    EXPECT_TRUE(r.includeQualifiers);
    EXPECT_FALSE(r.includeClassOrigin);
    ASSERT_EQ(r.propertyList.size(), 2u);
    EXPECT_EQ(r.propertyList[1], CIMName("Name"));
}

TEST(RequestDecoding, ExtrinsicCallKeepsUntypedAndTypedParameters)
{
    const DecodedRequest d = decode(message(
        std::string("<METHODCALL NAME=\"ResetSelectedStats\"><LOCALINSTANCEPATH>") + kNs + kPort +
        "</LOCALINSTANCEPATH><PARAMVALUE NAME=\"Elements\"><VALUE.ARRAY><VALUE>1"
        "</VALUE><VALUE>2</VALUE></VALUE.ARRAY></PARAMVALUE><PARAMVALUE "
        "NAME=\"Force\" PARAMTYPE=\"boolean\"><VALUE>TRUE</VALUE></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Nothing\" PARAMTYPE=\"uint16\"/></METHODCALL>"));
    ASSERT_FALSE(d.failed) << d.error.getMessage();
    const CimRequest& r = d.request;
    EXPECT_EQ(r.operation, Operation::InvokeMethod);
    EXPECT_EQ(r.methodName, "ResetSelectedStats");
    EXPECT_EQ(r.target.toString(), "QEL_FCPort.DeviceID=\"20110002AC00A001\"");
    ASSERT_EQ(r.inParameters.size(), 3u);
    EXPECT_FALSE(r.inParameters[0].isTyped());
    EXPECT_EQ(r.inParameters[0].getValue().getType(), CIMTYPE_STRING);
    EXPECT_TRUE(r.inParameters[0].getValue().isArray());
    EXPECT_TRUE(r.inParameters[1].isTyped());
    EXPECT_EQ(r.inParameters[1].getValue(), CIMValue(true));
    EXPECT_TRUE(r.inParameters[2].getValue().isNull());
    EXPECT_EQ(r.inParameters[2].getValue().getType(), CIMTYPE_UINT16);
}

// The client's encoding decodes to the request it came from (method calls: the client transport's tests).
CimRequest base(Operation op)
{
    CimRequest r;
    r.messageId = "42";
    r.operation = op;
    r.methodName = entryOf(op).name;
    r.nameSpace = CIMNamespaceName("root/qel");
    return r;
}

void set(CimRequest& r, Param p)
{
    r.present.set(static_cast<size_t>(p));
}

TEST(RequestRoundTrip, IntrinsicOperationsSurviveEncodeAndDecode)
{
    const CIMObjectPath port("QEL_FCPort.DeviceID=\"20110002AC00A001\",SystemName=\"S\"");
    std::vector<CimRequest> requests;
    {
        CimRequest r = base(Operation::GetInstance);
        r.objectName = port;
        r.includeClassOrigin = true;
        r.propertyList = CIMPropertyList(Array<CIMName>());
        for (Param p : {Param::InstanceName, Param::IncludeClassOrigin, Param::PropertyList})
            set(r, p);
        requests.push_back(r);
    }
    {
        CimRequest r = base(Operation::Associators);
        r.objectName = port;
        r.assocClass = CIMName("QEL_FCPortSFP");
        r.role = "Antecedent";
        for (Param p : {Param::ObjectName, Param::AssocClass, Param::Role})
            set(r, p);
        requests.push_back(r);
    }
    {
        CimRequest r = base(Operation::ModifyInstance);
        CIMInstance inst(CIMName("QEL_FCPort"));
        inst.addProperty(CIMProperty(CIMName("Speed"), CIMValue(Uint64(8))));
        inst.addProperty(
            CIMProperty(CIMName("Names"), CIMValue(Array<String>(2, String("a<&>\"b")))));
        inst.setPath(port);
        r.instance = inst;
        set(r, Param::ModifiedInstance);
        requests.push_back(r);
    }
    for (const CimRequest& original : requests)
    {
        const std::string body = encodeRequest(original);
        const DecodedRequest d = decodeRequest(body.data(), body.size());
        ASSERT_FALSE(d.failed) << body << "\n" << d.error.getMessage();
        const CimRequest& r = d.request;
        EXPECT_EQ(r.messageId, "42");
        EXPECT_EQ(r.operation, original.operation);
        EXPECT_EQ(r.methodName, original.methodName);
        EXPECT_EQ(r.present, original.present) << body;
        EXPECT_EQ(r.includeClassOrigin, original.includeClassOrigin);
        EXPECT_EQ(r.propertyList.isNull(), original.propertyList.isNull());
        EXPECT_EQ(r.role, original.role);
        if (original.operation == Operation::ModifyInstance)
        {
            EXPECT_TRUE(r.instance.getPath().identical(port));
            EXPECT_TRUE(r.instance.identical(original.instance)) << body;
        }
        else
        {
            EXPECT_TRUE(r.objectName.identical(port));
        }
    }
}

}  // namespace
