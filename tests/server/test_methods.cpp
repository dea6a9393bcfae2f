// Extrinsic method calls: input parameters typed by the method's
// declaration before the provider sees them, and bad parameters refused.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

#include <Pegasus/Common/CIMDateTime.h>

using namespace Pegasus;
using namespace servertest;

namespace {

using MethodDispatch = ServerTest;

CIMParamValue untyped(const char* name, const char* value)
{
    return CIMParamValue(name, CIMValue(String(value)), false);
}

CIMParamValue untypedArray(const char* name, std::initializer_list<const char*> values)
{
    Array<String> a;
    for (const char* v : values)
        a.append(v);
    return CIMParamValue(name, CIMValue(a), false);
}

}  // namespace

TEST_F(MethodDispatch, ParametersReachTheProviderWithTheirDeclaredTypes)
{
    struct Case
    {
        CIMParamValue given;
        const char* received;
    };
    const Case cases[] = {
        {untyped("Small", "12"), "Small:uint16=12;"},
        {untyped("small", "0x1F"), "small:uint16=31;"},
        {untyped("Big", "-5"), "Big:sint64=-5;"},
        {untyped("Flag", "true"), "Flag:boolean=TRUE;"},
        {untyped("Ratio", "0.5"), "Ratio:real64=5.0000000000000000e-01;"},
        {untyped("When", "20240131120000.000000+000"), "When:datetime=20240131120000.000000+000;"},
        {untyped("Text", "as is"), "Text:string=as is;"},
        {untypedArray("Numbers", {"1", "2"}), "Numbers:uint32[]=1 2 ;"},
        {CIMParamValue("Small", CIMValue(Uint16(3))), "Small:uint16=3;"},
        // A null of any type becomes a null of the declared type.
        {CIMParamValue("Small", CIMValue()), "Small:uint16=null;"},
        {CIMParamValue("Other", CIMValue(item("b"))), "Other:reference=Test_Item.Id=\"b\";"},
    };
    for (const Case& c : cases)
    {
        Array<CIMParamValue> in;
        in.append(c.given);
        Array<CIMParamValue> out;
        CIMValue result = dispatcher().invokeMethod(context, ns, item("a"), "Ping", in, out);
        Sint32 count = -1;
        result.get(count);
        EXPECT_EQ(count, 1);
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(text(out[0].getParameterName()), "Echo");
        String echo;
        out[0].getValue().get(echo);
        EXPECT_EQ(text(echo), c.received);
    }
    EXPECT_EQ(lastCall(), "invokeMethod //cimhost/root/servertest:Test_Item.Id=\"a\" Ping");
}

TEST_F(MethodDispatch, BadParametersAreRefusedBeforeTheProviderIsCalled)
{
    struct Case
    {
        CIMParamValue given;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {untyped("Small", "70000"), CIM_ERR_INVALID_PARAMETER, "parameter Small of method Ping"},
        {untyped("Small", "abc"), CIM_ERR_INVALID_PARAMETER, "parameter Small of method Ping"},
        {untyped("Flag", "maybe"), CIM_ERR_INVALID_PARAMETER, "parameter Flag of method Ping"},
        {untyped("Numbers", "1"), CIM_ERR_TYPE_MISMATCH, "Parameter Numbers is declared uint32[], not string."},
        {untypedArray("Small", {"1"}), CIM_ERR_TYPE_MISMATCH, "Parameter Small is declared uint16, not string[]."},
        {CIMParamValue("Small", CIMValue(Uint32(3))), CIM_ERR_TYPE_MISMATCH,
         "Parameter Small is declared uint16, not uint32."},
        {CIMParamValue("Text", CIMValue(Uint32(3)), false), CIM_ERR_TYPE_MISMATCH,
         "Parameter Text is declared string, not uint32."},
        {untyped("Colour", "red"), CIM_ERR_INVALID_PARAMETER, "Method Ping has no parameter Colour."},
        {CIMParamValue(), CIM_ERR_INVALID_PARAMETER, "An input parameter is uninitialized."},
    };
    for (const Case& c : cases)
    {
        servertest::reset();
        Array<CIMParamValue> in;
        in.append(c.given);
        Array<CIMParamValue> out;
        CIMException e = cimErrorOf([&] { dispatcher().invokeMethod(context, ns, item("a"), "Ping", in, out); });
        EXPECT_EQ(e.getCode(), c.code) << c.message;
        EXPECT_NE(text(e.getMessage()).find(c.message), std::string::npos) << text(e.getMessage());
        EXPECT_EQ(lastCall(), "") << c.message;
    }
}

TEST_F(MethodDispatch, MethodNamesIgnoreCaseAndClassPathsAreAccepted)
{
    Array<CIMParamValue> out;
    CIMValue who = dispatcher().invokeMethod(context, ns, CIMObjectPath("Test_Item"), "whoami", {}, out);
    String s;
    who.get(s);
    EXPECT_EQ(text(s), "alice@192.0.2.7");
    EXPECT_EQ(lastCall(), "invokeMethod //cimhost/root/servertest:Test_Item whoami");
}
