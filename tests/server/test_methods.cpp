// Extrinsic method calls: input parameters typed by the method's
// declaration before the provider sees them, and bad parameters refused.
#include "ServerFixture.h"

#include <Pegasus/Common/CIMDateTime.h>

using namespace Pegasus;
using namespace servertest;

namespace
{

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

TEST_F(MethodDispatch, ParametersReachTheProviderWithTheirDeclaredTypesOrAreRefused)
{
    const struct
    {
        CIMParamValue given;
        CIMStatusCode code;
        const char* text;  // the provider's echo, or the error message (a part of it)
    } cases[] = {
        {untyped("Small", "12"), CIM_ERR_SUCCESS, "Small:uint16=12;"},
        {untyped("small", "0x1F"), CIM_ERR_SUCCESS, "small:uint16=31;"},
        {untyped("Big", "-5"), CIM_ERR_SUCCESS, "Big:sint64=-5;"},
        {untyped("Flag", "true"), CIM_ERR_SUCCESS, "Flag:boolean=TRUE;"},
        {untyped("Ratio", "0.5"), CIM_ERR_SUCCESS, "Ratio:real64=5.0000000000000000e-01;"},
        {untyped("When", "20240131120000.000000+000"), CIM_ERR_SUCCESS,
         "When:datetime=20240131120000.000000+000;"},
        {untyped("Text", "as is"), CIM_ERR_SUCCESS, "Text:string=as is;"},
        {untypedArray("Numbers", {"1", "2"}), CIM_ERR_SUCCESS, "Numbers:uint32[]=1 2 ;"},
        {CIMParamValue("Small", CIMValue(Uint16(3))), CIM_ERR_SUCCESS, "Small:uint16=3;"},
        // A null of any type becomes a null of the declared type.
        {CIMParamValue("Small", CIMValue()), CIM_ERR_SUCCESS, "Small:uint16=null;"},
        {CIMParamValue("Other", CIMValue(item("b"))), CIM_ERR_SUCCESS,
         "Other:reference=Test_Item.Id=\"b\";"},
        {untyped("Small", "70000"), CIM_ERR_INVALID_PARAMETER, "parameter Small of method Ping"},
        {untyped("Small", "abc"), CIM_ERR_INVALID_PARAMETER, "parameter Small of method Ping"},
        {untyped("Flag", "maybe"), CIM_ERR_INVALID_PARAMETER, "parameter Flag of method Ping"},
        {untyped("Numbers", "1"), CIM_ERR_TYPE_MISMATCH,
         "Parameter Numbers is declared uint32[], not string."},
        {untypedArray("Small", {"1"}), CIM_ERR_TYPE_MISMATCH,
         "Parameter Small is declared uint16, not string[]."},
        {CIMParamValue("Small", CIMValue(Uint32(3))), CIM_ERR_TYPE_MISMATCH,
         "Parameter Small is declared uint16, not uint32."},
        {CIMParamValue("Text", CIMValue(Uint32(3)), false), CIM_ERR_TYPE_MISMATCH,
         "Parameter Text is declared string, not uint32."},
        {untyped("Colour", "red"), CIM_ERR_INVALID_PARAMETER,
         "Method Ping has no parameter Colour."},
        {CIMParamValue(), CIM_ERR_INVALID_PARAMETER, "An input parameter is uninitialized."},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.text);
        servertest::reset();
        Array<CIMParamValue> in, out;
        in.append(c.given);
        if (c.code != CIM_ERR_SUCCESS)
        {
            CIMException e =
                cimErrorOf([&] { cimom().invokeMethod(context, ns, item("a"), "Ping", in, out); });
            EXPECT_EQ(e.getCode(), c.code);
            EXPECT_NE(text(e.getMessage()).find(c.text), std::string::npos) << text(e.getMessage());
            EXPECT_EQ(lastCall(), "");  // refused before the provider
            continue;
        }
        EXPECT_EQ(
            cimom().invokeMethod(context, ns, item("a"), "Ping", in, out), CIMValue(Sint32(1)));
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(text(out[0].getParameterName()), "Echo");
        EXPECT_EQ(text(out[0].getValue().toString()), c.text);
        EXPECT_EQ(lastCall(), "invokeMethod //cimhost/root/servertest:Test_Item.Id=\"a\" Ping");
    }
}

TEST_F(MethodDispatch, MethodNamesIgnoreCaseAndClassPathsAreAcceptedWithTheCallersIdentity)
{
    Array<CIMParamValue> out;
    CIMValue who = cimom().invokeMethod(context, ns, CIMObjectPath("Test_Item"), "whoami", {}, out);
    EXPECT_EQ(text(who.toString()), "alice@192.0.2.7");
    EXPECT_EQ(lastCall(), "invokeMethod //cimhost/root/servertest:Test_Item whoami");
}
