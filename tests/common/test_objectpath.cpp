// CIMObjectPath: text form, parsing errors, key order and reference
// normalisation, identical(), host validation and hash codes.
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using namespace qeltest;

namespace
{
std::string text(const CIMObjectPath& p)
{
    return str(p.toString());
}

Array<CIMKeyBinding> keys(std::initializer_list<CIMKeyBinding> list)
{
    Array<CIMKeyBinding> a;
    for (const CIMKeyBinding& k : list)
        a.append(k);
    return a;
}
}  // namespace

TEST(ObjectPathText, ParseUnescapeAndPrintNormalisedForm)
{
    struct Case
    {
        const char* input;
        const char* printed;
    } cases[] = {
        {"QEL_FCPort.DeviceID=\"ABC\",CreationClassName=\"QEL_FCPort\",SystemName=\"x\",A_B=1,AB=2,ab=3",
         "QEL_FCPort.A_B=1,AB=2,ab=3,CreationClassName=\"QEL_FCPort\",DeviceID=\"ABC\",SystemName=\"x\""},
        {"//host/root/qel:QEL_FCPort.DeviceID=\"A\\\"B\\\\C\"",
         "//host/root/qel:QEL_FCPort.DeviceID=\"A\\\"B\\\\C\""},
        {"/root/qel:Y.k=true,a=0x10", "root/qel:Y.a=0x10,k=TRUE"},
        {"X.r=\"/root/qel:Y.k=true,a=0x10\"", "X.r=\"root/qel:Y.a=0x10,k=TRUE\""},
        {"X.", "X"},
        {"notapath", "notapath"},
        {"//h:5988/root/qel:X.k=-5,b=FaLsE", "//h:5988/root/qel:X.b=FALSE,k=-5"},
        {"//10.1.2.3:/root:X.k=1,", "//10.1.2.3:/root:X.k=1"},
        {"X.k=\"a:b.c=d\"", "X.k=\"a:b.c=d\""},
    };
    for (const Case& c : cases)
    {
        CIMObjectPath p(c.input);
        EXPECT_EQ(text(p), c.printed) << c.input;
        EXPECT_TRUE(CIMObjectPath(p.toString()).identical(p)) << c.input;
    }

    // Quoted values are unescaped; one that parses as a path is a reference.
    CIMObjectPath p("//host/root/qel:QEL_FCPort.DeviceID=\"A\\\"B\\\\C\"");
    EXPECT_EQ(str(p.getKeyBindings()[0].getValue()), "A\"B\\C");
    EXPECT_EQ(str(p.getHost()) + " " + str(p.getNameSpace().getString()), "host root/qel");
    EXPECT_EQ(
        CIMObjectPath("X.r=\"Y.a=1\"").getKeyBindings()[0].getType(), CIMKeyBinding::REFERENCE);
    EXPECT_EQ(CIMObjectPath("X.r=\"a=b\"").getKeyBindings()[0].getType(), CIMKeyBinding::STRING);
    EXPECT_EQ(CIMObjectPath("X.r=\"Y\"").getKeyBindings()[0].getType(), CIMKeyBinding::STRING);
    EXPECT_EQ(CIMObjectPath("X.n=0x1F").getKeyBindings()[0].getValue(), "0x1F");
}

TEST(ObjectPathText, BuiltPathsPrintSortedAndEscaped)
{
    CIMObjectPath p(
        "", CIMNamespaceName("root/qel"), CIMName("Cls"),
        keys(
            {CIMKeyBinding("Zed", "v\"q", CIMKeyBinding::STRING),
             CIMKeyBinding("alpha", "12", CIMKeyBinding::NUMERIC),
             CIMKeyBinding("Beta", "TRUE", CIMKeyBinding::BOOLEAN)}));
    EXPECT_EQ(text(p), "root/qel:Cls.alpha=12,Beta=TRUE,Zed=\"v\\\"q\"");
    EXPECT_EQ(text(CIMObjectPath()), "");
    EXPECT_EQ(text(CIMObjectPath("myhost", CIMNamespaceName(), CIMName("Cls"))), "//myhost/:Cls");

    // Nested references survive two levels of quoting.
    CIMObjectPath inner("root/qel:M.In=\"root/qel:Y.k=\\\"v\\\\\\\"q\\\"\"");
    CIMObjectPath outer(
        "", CIMNamespaceName(), CIMName("O"),
        keys({CIMKeyBinding("Mid", inner.toString(), CIMKeyBinding::REFERENCE)}));
    EXPECT_EQ(
        text(outer),
        "O.Mid=\"root/qel:M.In=\\\"root/qel:Y.k=\\\\\\\"v\\\\\\\\\\\\\\\"q\\\\\\\"\\\"\"");
    CIMObjectPath reparsed(outer.toString());
    EXPECT_TRUE(reparsed.identical(outer));
    EXPECT_EQ(reparsed.getKeyBindings()[0].getType(), CIMKeyBinding::REFERENCE);
}

TEST(ObjectPathText, ReferenceValuesAreNormalisedOrRejected)
{
    CIMObjectPath p;
    p.setKeyBindings(
        keys({CIMKeyBinding("r", "/root/qel:Y.k=true,a=0x10", CIMKeyBinding::REFERENCE)}));
    EXPECT_EQ(str(p.getKeyBindings()[0].getValue()), "root/qel:Y.a=0x10,k=TRUE");
    for (const char* bad : {"", "Y.k=", "1Y.a=1"})
        EXPECT_THROW(
            p.setKeyBindings(keys({CIMKeyBinding("r", bad, CIMKeyBinding::REFERENCE)})),
            MalformedObjectNameException)
            << bad;
    EXPECT_EQ(str(p.getKeyBindings()[0].getValue()), "root/qel:Y.a=0x10,k=TRUE");  // kept
    p.setKeyBindings(keys({CIMKeyBinding("r", "notapath", CIMKeyBinding::REFERENCE)}));
    EXPECT_EQ(text(p), ".r=\"notapath\"");
}

TEST(ObjectPathParse, MalformedTextsNameTheReason)
{
    struct Case
    {
        const char* input;
        const char* reason;
    } cases[] = {
        {"//hostonly", "missing slash after hostname"},
        {"//bad host/root:X", "invalid hostname"},
        {"//host.123/root:X", "invalid hostname"},
        {"//host/X.k=1", "host specified, missing namespace"},
        {"root/my-ns:X", "invalid namespace name"},
        {"", "class name  not a legal CIM name"},
        {"1X.k=1", "class name 1X not a legal CIM name"},
        {"2000000100000001", "class name 2000000100000001 not a legal CIM name"},
        {".k=1", "class name  not a legal CIM name"},
        // A ':' or a host before the class name: refused only once they were read.
        {"1X.k=\"a:b\"", "class name 1X not a legal CIM name"},
        {"root/x:1X.k=1", "class name 1X not a legal CIM name"},
        {"//h/root:1X", "class name 1X not a legal CIM name"},
        {"root:", "class name  not a legal CIM name"},
        {"X.k", "invalid key-value pair, missing equal sign"},
        {"X.k=\"a\", j=\"b\"", "invalid key-value pair, invalid key name: j"},
        {"X.=1", "invalid key-value pair, invalid key name:"},
        {"X.k=\"a\\b\"", "invalid key-value pair, malformed value"},
        {"X.k=\"abc", "invalid key-value pair, missing quote in key value"},
        {"X.k=tru", "invalid key-value pair, value should be TRUE or FALSE"},
        {"X.k=007", "invalid key-value pair, invalid number value 007"},
        {"X.k=+5", "invalid key-value pair, invalid number value +5"},
        {"X.k=1.5", "invalid key-value pair, invalid number value 1.5"},
        {"X.k=", "invalid key-value pair, invalid number value "},
        {"X.k=18446744073709551616",
         "invalid key-value pair, invalid number value 18446744073709551616"},
        {"X.k=-x", "invalid key-value pair, invalid negative number value -x"},
        {"X.k=-9223372036854775809",
         "invalid key-value pair, invalid negative number value -9223372036854775809"},
        {"X.k=\"a\"b", "invalid key-value pair, next key-value pair has to start with comma"},
    };
    for (const Case& c : cases)
    {
        std::string expected =
            std::string("malformed object name: ") + c.input + ", reason:\"" + c.reason + "\"";
        EXPECT_EQ(
            thrownMessage<MalformedObjectNameException>([&] { CIMObjectPath p(c.input); }),
            expected);
    }

    CIMObjectPath p("A.k=1");
    EXPECT_THROW(p.set("A.k=bad"), MalformedObjectNameException);
    EXPECT_THROW(p.set("1X"), MalformedObjectNameException);
    EXPECT_THROW(p = String("//h"), MalformedObjectNameException);
    EXPECT_EQ(text(p), "A.k=1");
    CIMObjectPath b(p);  // copies are independent
    b.setClassName("Y");
    b.setKeyBindings(Array<CIMKeyBinding>());
    p.clear();
    EXPECT_EQ(text(p), "");
    EXPECT_EQ(text(b), "Y");
}

TEST(ObjectPathIdentity, IdenticalIgnoresCaseAndKeyOrder)
{
    struct Case
    {
        const char* a;
        const char* b;
        bool same;
    } cases[] = {
        {"//H/root/QEL:cls.b=\"x\",a=\"y\"", "//h/ROOT/qel:CLS.A=\"y\",B=\"x\"", true},
        {"//h/root/qel:X.k=1", "root/qel:X.k=1", false},
        {"X.k=1", "root/qel:X.k=1", false},
        {"X.k=\"abc\"", "X.k=\"ABC\"", false},
        {"X.k=10", "X.k=0xA", true},
        {"X.k=-1", "X.k=-0x1", true},
        {"X.k=1", "X.k=1,j=2", false},
        {"X.k=1", "Y.k=1", false},
        {"X.r=\"Y.a=1,b=2\"", "X.r=\"Y.b=2,a=1\"", true},
        {"X.r=\"//H/root:Y.a=1\"", "X.r=\"//h/ROOT:y.A=1\"", true},
        {"X.k=\"1\"", "X.k=1", false},
    };
    for (const Case& c : cases)
    {
        CIMObjectPath a(c.a), b(c.b);
        EXPECT_EQ(a.identical(b), c.same) << c.a << " vs " << c.b;
        EXPECT_EQ(b == a, c.same) << c.b << " vs " << c.a;
        EXPECT_EQ(a != b, !c.same);
        EXPECT_TRUE(!c.same || a.makeHashCode() == b.makeHashCode()) << c.a;
    }
    EXPECT_NE(CIMObjectPath("X.k=\"x\"").makeHashCode(), CIMObjectPath("X.k=\"y\"").makeHashCode());
}

TEST(ObjectPathHost, ValidAndInvalidHosts)
{
    const char* valid[] = {
        "host",  "host.example.com",   "my_host", "h-1.x", "10.0.0.1", "10.0.0.1:5988", "host:",
        "[::1]", "[2001:db8::1]:5989", "9host"};
    const char* invalid[] = {"host.123",  "1.2.3",      "256.1.1.1", "::1",       "host name",
                             "-host",     "host:70000", "host:12a",  "[1.2.3.4]", "[fe80::1]",
                             "host..com", "host.",      "[::1",      "[::1]x"};
    for (const char* h : valid)
    {
        CIMObjectPath p;
        EXPECT_NO_THROW(p.setHost(h)) << h;
        EXPECT_NO_THROW(CIMObjectPath(String("//") + h + "/root:X")) << h;
    }
    for (const char* h : invalid)
    {
        CIMObjectPath p("X");
        EXPECT_EQ(
            thrownMessage<MalformedObjectNameException>([&] { p.setHost(h); }),
            std::string("malformed object name: ") + h + ", reason:\"invalid hostname\"");
        EXPECT_THROW(p.set(h, CIMNamespaceName("root"), CIMName("X")), MalformedObjectNameException)
            << h;
        EXPECT_EQ(text(p), "X");
    }
}
