// Response documents: what the server writes, the client reads back unchanged.
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

CimRequest request(Operation op)
{
    CimRequest r;
    r.messageId = "9";
    r.operation = op;
    r.methodName = entryOf(op).name;
    r.nameSpace = CIMNamespaceName("root/qel");
    return r;
}

CimResponse answer(const CimRequest& r)
{
    CimResponse a(r);
    return a;
}

CimResponse roundTrip(const CimRequest& r, const CimResponse& a)
{
    const std::string body = encodeResponse(a, "array.example", r.nameSpace);
    return decodeResponse(body.data(), body.size(), r);
}

CIMObjectPath portPath()
{
    return CIMObjectPath("QEL_FCPort.DeviceID=\"20110002AC00A001\",SystemName=\"S\"");
}

// An instance with a property of every kind the wire carries.
CIMInstance richInstance()
{
    CIMInstance embedded(CIMName("QEL_Inner"));
    embedded.addProperty(CIMProperty(CIMName("Text"), CIMValue(String("<inner & \"quoted\">"))));
    CIMInstance inst(CIMName("QEL_FCPort"));
    inst.addQualifier(
        CIMQualifier(CIMName("Description"), CIMValue(String("port")), CIMFlavor::TOSUBCLASS));
    inst.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String("20110002AC00A001"))));
    inst.addProperty(CIMProperty(CIMName("Enabled"), CIMValue(true)));
    inst.addProperty(CIMProperty(CIMName("Speed"), CIMValue(Uint64(18446744073709551615ull))));
    inst.addProperty(CIMProperty(CIMName("Offset"), CIMValue(Sint8(-128))));
    inst.addProperty(CIMProperty(CIMName("Ratio"), CIMValue(Real64(0.1))));
    inst.addProperty(CIMProperty(CIMName("Letter"), CIMValue(Char16(0xE9))));
    inst.addProperty(
        CIMProperty(CIMName("When"), CIMValue(CIMDateTime("20240131120000.000000+060"))));
    Array<Uint16> status;
    status.append(2);
    status.append(32768);
    inst.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(status)));
    inst.addProperty(CIMProperty(CIMName("Caption"), CIMValue(CIMTYPE_STRING, false)));
    inst.addProperty(CIMProperty(CIMName("Owner"), CIMValue(portPath()), 0, CIMName("QEL_FCPort")));
    inst.addProperty(CIMProperty(CIMName("Inner"), CIMValue(embedded)));
    inst.addProperty(CIMProperty(CIMName("Control"), CIMValue(String("tab\there\nline \x01 end"))));
    inst.setPath(portPath());
    return inst;
}

TEST(ResponseRoundTrip, InstancePropertiesOfEveryKindComeBackEqual)
{
    CimRequest r = request(Operation::GetInstance);
    r.objectName = portPath();
    CimResponse a = answer(r);
    a.instance = richInstance();
    const CimResponse back = roundTrip(r, a);
    ASSERT_FALSE(back.failed);
    const CIMInstance& got = back.instance;
    ASSERT_EQ(got.getPropertyCount(), a.instance.getPropertyCount());
    for (Uint32 i = 0; i < got.getPropertyCount(); ++i)
    {
        const CIMConstProperty sent = a.instance.getProperty(i);
        const CIMConstProperty came = got.getProperty(i);
        EXPECT_EQ(came.getName(), sent.getName());
        EXPECT_EQ(came.getType(), sent.getType()) << sent.getName().getString();
        EXPECT_TRUE(came.getValue().equal(sent.getValue()))
            << sent.getName().getString() << ": " << came.getValue().toString();
    }
    EXPECT_EQ(got.getQualifierCount(), 1u);
    EXPECT_TRUE(got.getPath().identical(CIMObjectPath("root/qel:" + portPath().toString())));
}

TEST(ResponseRoundTrip, ListsKeepOrderAndCompleteAssociationPaths)
{
    CimRequest r = request(Operation::EnumerateInstances);
    CimResponse a = answer(r);
    for (const char* id : {"2", "0", "1"})
    {
        CIMInstance inst(CIMName("QEL_FCPort"));
        inst.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(id))));
        inst.setPath(CIMObjectPath(String("QEL_FCPort.DeviceID=\"") + id + "\""));
        a.instances.append(inst);
    }
    CimResponse back = roundTrip(r, a);
    ASSERT_EQ(back.instances.size(), 3u);
    for (Uint32 i = 0; i < 3; ++i)
        EXPECT_TRUE(back.instances[i].getPath().identical(a.instances[i].getPath()));

    // Association results without host or namespace get the server's host and the request's namespace.
    CimRequest names = request(Operation::AssociatorNames);
    CimResponse an = answer(names);
    an.paths.append(portPath());
    an.paths.append(CIMObjectPath("//other.host/root/x:QEL_SFP.Tag=\"t\""));
    back = roundTrip(names, an);
    ASSERT_EQ(back.paths.size(), 2u);
    EXPECT_EQ(back.paths[0].getHost(), "array.example");
    EXPECT_EQ(back.paths[0].getNameSpace(), CIMNamespaceName("root/qel"));
    EXPECT_EQ(back.paths[1].toString(), "//other.host/root/x:QEL_SFP.Tag=\"t\"");

    CimRequest assoc = request(Operation::References);
    CimResponse ao = answer(assoc);
    CIMInstance link(CIMName("QEL_FCPortSFP"));
    link.addProperty(
        CIMProperty(CIMName("Antecedent"), CIMValue(portPath()), 0, CIMName("QEL_FCPort")));
    link.setPath(CIMObjectPath("QEL_FCPortSFP.Antecedent=\"QEL_FCPort.DeviceID=\\\"1\\\"\""));
    ao.objects.append(CIMObject(link));
    back = roundTrip(assoc, ao);
    ASSERT_EQ(back.objects.size(), 1u);
    EXPECT_TRUE(back.objects[0].isInstance());
    EXPECT_EQ(back.objects[0].getPath().getHost(), "array.example");
}

TEST(ResponseRoundTrip, MethodResultWithOutParametersAndWithout)
{
    CimRequest r = request(Operation::InvokeMethod);
    r.methodName = "GetSystemName";
    r.target = CIMObjectPath("QEL_InternalCache.InstanceID=\"localhost-InternalCache\"");
    CimResponse a = answer(r);
    a.value = CIMValue(Sint32(-3));
    a.outParameters.append(CIMParamValue("SystemName", CIMValue(String("DEMO01"))));
    a.outParameters.append(CIMParamValue("Flags", CIMValue(Array<Uint8>(2, 7))));
    a.outParameters.append(CIMParamValue("Missing", CIMValue(CIMTYPE_UINT32, false)));
    CimResponse back = roundTrip(r, a);
    EXPECT_EQ(back.value, CIMValue(Sint32(-3)));
    ASSERT_EQ(back.outParameters.size(), 3u);
    EXPECT_EQ(back.outParameters[0].getParameterName(), "SystemName");
    EXPECT_EQ(back.outParameters[0].getValue(), CIMValue(String("DEMO01")));
    EXPECT_TRUE(back.outParameters[1].getValue().equal(CIMValue(Array<Uint8>(2, 7))));
    EXPECT_TRUE(back.outParameters[2].getValue().isNull());
    EXPECT_EQ(back.outParameters[2].getValue().getType(), CIMTYPE_UINT32);

    a.value = CIMValue();
    a.outParameters.clear();
    back = roundTrip(r, a);
    EXPECT_TRUE(back.value.isNull());  // no RETURNVALUE element
}

TEST(ResponseErrors, DescriptionCarriesCodeNameAndMessageEscaped)
{
    CimRequest r = request(Operation::GetInstance);
    r.objectName = portPath();
    CimResponse a = answer(r);
    a.setError(CIMException(CIM_ERR_NOT_FOUND, "port <1> & \"2\" gone"));
    const std::string body = encodeResponse(a, "h", r.nameSpace);
    EXPECT_NE(
        body.find(
            "<ERROR CODE=\"6\" DESCRIPTION=\"CIM_ERR_NOT_FOUND: port &lt;1&gt; &amp; &quot;2&quot; gone\">"),
        std::string::npos)
        << body;
    CimResponse back = decodeResponse(body.data(), body.size(), r);
    ASSERT_TRUE(back.failed);
    EXPECT_EQ(back.error.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(back.error.getMessage(), "CIM_ERR_NOT_FOUND: port <1> & \"2\" gone");

    // A status this runtime has no name for arrives as CIM_ERR_FAILED, its number kept.
    for (const char* code : {"28", "29", "65535"})
    {
        std::string unknown = body;
        unknown.replace(unknown.find("CODE=\"6\""), 8, std::string("CODE=\"") + code + "\"");
        back = decodeResponse(unknown.data(), unknown.size(), r);
        if (std::string(code) == "28")
        {
            EXPECT_EQ(back.error.getCode(), CIM_ERR_SERVER_IS_SHUTTING_DOWN);
            continue;
        }
        EXPECT_EQ(back.error.getCode(), CIM_ERR_FAILED) << code;
        EXPECT_EQ(
            back.error.getMessage(),
            String("CIM status code ") + code + ": CIM_ERR_NOT_FOUND: port <1> & \"2\" gone");
    }

    a.setError(CIMException(CIM_ERR_FAILED));
    EXPECT_NE(
        encodeResponse(a, "h", r.nameSpace).find("DESCRIPTION=\"CIM_ERR_FAILED\""),
        std::string::npos);
}

TEST(ResponseDecoding, RepliesThatDoNotAnswerTheRequestAreRefused)
{
    CimRequest r = request(Operation::EnumerateInstanceNames);
    CimResponse a = answer(r);
    const std::string good = encodeResponse(a, "h", r.nameSpace);
    struct Case
    {
        const char* what;
        std::string body;
    };
    std::string otherId = good;
    otherId.replace(otherId.find("ID=\"9\""), 6, "ID=\"8\"");
    std::string otherName = good;
    otherName.replace(otherName.find("EnumerateInstanceNames"), 22, "EnumerateInstancesXXXX");
    const Case cases[] = {
        {"not XML", "<CIM"},
        {"no message", "<CIM/>"},
        {"another message ID", otherId},
        {"another operation", otherName},
        {"bad instance name",
         "<CIM><MESSAGE ID=\"9\"><SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstanceNames\">"
         "<IRETURNVALUE><INSTANCENAME/></IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>"},
        {"an element name that is not UTF-8",
         "<CIM><MESSAGE ID=\"9\"><SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstanceNames\">"
         "<IRETURNVALUE><N\xff\xfe/></IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>"},
    };
    for (const Case& c : cases)
        EXPECT_THROW(decodeResponse(c.body.data(), c.body.size(), r), ResponseError) << c.what;
    EXPECT_NO_THROW(decodeResponse(good.data(), good.size(), r));
}

}  // namespace
