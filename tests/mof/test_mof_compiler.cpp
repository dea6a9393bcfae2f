// The MOF compiler on every construct it accepts and on the inputs it must
// refuse with a positioned message.
#include <gtest/gtest.h>

#include <random>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include "mof_test_support.h"

using namespace Pegasus;
using moftest::compile;
using moftest::testNamespace;

namespace
{

class MofCompilerTest : public ::testing::Test
{
protected:
    void SetUp() override { moftest::loadQualifiers(repo); }
    CIMClass cls(const char* name)
    {
        return repo.getClass(testNamespace, name, false, true, true, CIMPropertyList());
    }
    ClassRepository repo;
};

TEST_F(MofCompilerTest, LiteralsAreConvertedToTheDeclaredType)
{
    Array<Uint16> u16(1, 1);
    u16.append(0x10);
    u16.append(5);
    Array<String> strings(1, "a,b");
    strings.append("");
    // One property default per row: the literal is converted to the declared type.
    const struct
    {
        const char* declaration;
        const char* literal;
        CIMValue expected;
    } cases[] = {
        {"uint8 v", "255", CIMValue(Uint8(255))},
        {"sint8 v", "-128", CIMValue(Sint8(-128))},
        {"uint16 v", "0x1F", CIMValue(Uint16(31))},
        {"uint16 v", "0X1f", CIMValue(Uint16(31))},
        {"uint32 v", "101b", CIMValue(Uint32(5))},
        {"uint32 v", "017", CIMValue(Uint32(15))},
        {"sint32 v", "+7", CIMValue(Sint32(7))},
        {"sint32 v", "-0x10", CIMValue(Sint32(-16))},
        {"sint64 v", "-9223372036854775808", CIMValue(Sint64(-9223372036854775807LL - 1))},
        {"uint64 v", "18446744073709551615", CIMValue(Uint64(18446744073709551615ULL))},
        {"real64 v", "3", CIMValue(Real64(3.0))},
        {"real64 v", "-2.5e3", CIMValue(Real64(-2500.0))},
        {"real32 v", ".5", CIMValue(Real32(0.5f))},
        {"boolean v", "TRUE", CIMValue(Boolean(true))},
        {"char16 v", "'a'", CIMValue(Char16('a'))},
        {"char16 v", "'\\x263A'", CIMValue(Char16(0x263A))},
        {"string v", "\"ab\" \"cd\"", CIMValue(String("abcd"))},
        {"string v", "\"q\\\"\\\\\\t\\x41\"", CIMValue(String("q\"\\\tA"))},
        {"string v", "\"\\x00e9t\\xE9\"", CIMValue(String("\xC3\xA9t\xC3\xA9"))},
        {"datetime v", "\"20240131120000.000000+060\"",
         CIMValue(CIMDateTime("20240131120000.000000+060"))},
        {"uint16 v[]", "{1, 0x10, 101B}", CIMValue(u16)},
        {"uint16 v[3]", "{1, 0x10, 101B}", CIMValue(u16)},
        {"string v[]", "{\"a,b\", \"\"}", CIMValue(strings)},
        {"uint16 v[]", "{}", CIMValue(Array<Uint16>())},
        {"uint16 v", "null", CIMValue(CIMTYPE_UINT16, false)},
        {"string v[]", "NULL", CIMValue(CIMTYPE_STRING, true)},
    };
    int n = 0;
    for (const auto& c : cases)
    {
        const std::string className = "V" + std::to_string(n++);
        const std::string mof =
            "class " + className + " { " + c.declaration + " = " + c.literal + "; };";
        ASSERT_NO_THROW(compile(repo, mof)) << mof;
        const CIMValue got = cls(className.c_str()).getProperty(0).getValue();
        EXPECT_TRUE(got.equal(c.expected))
            << mof << "\n got " << got.toString() << " type " << cimTypeToString(got.getType());
    }
}

TEST_F(MofCompilerTest, ClassElementsKeepTheirDeclarations)
{
    compile(
        repo,
        "// line comment\n"
        "/* block\n comment */\n"
        "[Abstract, Description(\"base\")]\n"
        "class T_A\n"
        "{\n"
        "    [Key, MaxLen(16)] string Id;\n"
        "    uint8 Fixed[4];\n"
        "    [Description(\"n\") Restricted, Write] uint32 Counter = 1;\n"
        "    [Description(\"m\")]\n"
        "    sint32 Run([IN] string Who, [IN(false), OUT] uint8 Codes[],\n"
        "               [IN] T_A REF Peer, uint16 Pair[2]);\n"
        "};\n"
        "[Association] class T_Link { [Key] T_A REF Left; [Key] T_A REF Right = \"T_A.Id=\\\"x\\\"\"; };\n");
    CIMClass a = cls("T_A");
    EXPECT_TRUE(a.isAbstract());
    CIMProperty id = a.getProperty(a.findProperty("Id"));
    EXPECT_TRUE(id.getQualifier(id.findQualifier("MaxLen")).getValue().equal(CIMValue(Uint32(16))));
    CIMProperty fixed = a.getProperty(a.findProperty("Fixed"));
    EXPECT_EQ(fixed.getArraySize(), 4u);
    EXPECT_TRUE(fixed.getValue().isNull());
    CIMProperty counter = a.getProperty(a.findProperty("counter"));
    CIMFlavor flavor = counter.getQualifier(counter.findQualifier("Description")).getFlavor();
    EXPECT_TRUE(flavor.hasFlavor(CIMFlavor::RESTRICTED));
    EXPECT_FALSE(flavor.hasFlavor(CIMFlavor::TOSUBCLASS));
    EXPECT_TRUE(flavor.hasFlavor(CIMFlavor::TRANSLATABLE));  // from the declaration
    // A boolean qualifier named alone is true.
    EXPECT_TRUE(
        counter.getQualifier(counter.findQualifier("Write")).getValue().equal(CIMValue(true)));
    CIMMethod run = a.getMethod(a.findMethod("Run"));
    EXPECT_EQ(run.getType(), CIMTYPE_SINT32);
    ASSERT_EQ(run.getParameterCount(), 4u);
    CIMParameter codes = run.getParameter(1);
    EXPECT_EQ(codes.getType(), CIMTYPE_UINT8);
    EXPECT_TRUE(codes.isArray());
    EXPECT_TRUE(codes.getQualifier(codes.findQualifier("Out")).getValue().equal(CIMValue(true)));
    EXPECT_TRUE(codes.getQualifier(codes.findQualifier("In")).getValue().equal(CIMValue(false)));
    EXPECT_EQ(run.getParameter(2).getReferenceClassName(), CIMName("T_A"));
    EXPECT_EQ(run.getParameter(3).getArraySize(), 2u);
    CIMClass link = cls("T_Link");
    EXPECT_TRUE(link.isAssociation());
    CIMProperty right = link.getProperty(link.findProperty("Right"));
    EXPECT_EQ(right.getReferenceClassName(), CIMName("T_A"));
    EXPECT_EQ(right.getValue().toString(), "T_A.Id=\"x\"");
}

TEST_F(MofCompilerTest, InstancesTakeClassTypesAndAliases)
{
    compile(
        repo, "class T_Node { [Key] string Name; uint16 Weights[]; datetime Seen; };\n"
              "[Association] class T_Edge { [Key] T_Node REF From; [Key] T_Node REF To; };\n"
              "instance of T_Node as $a { Name = \"a\"; Weights = {1, 2}; };\n"
              "instance of T_Node as $B { Name = \"b\"; Seen = \"20240101000000.000000+000\"; };\n"
              "instance of T_Edge { From = $a; To = $b; };\n");
    Array<CIMInstance> nodes = repo.enumerateInstances(testNamespace, "T_Node");
    ASSERT_EQ(nodes.size(), 2u);
    CIMInstance a = nodes[0];
    EXPECT_EQ(a.getPath().toString(), "root/test:T_Node.Name=\"a\"");
    EXPECT_EQ(a.getProperty(a.findProperty("Weights")).getValue().toString(), "1 2 ");
    EXPECT_EQ(nodes[1].getProperty(nodes[1].findProperty("Seen")).getType(), CIMTYPE_DATETIME);
    Array<CIMInstance> edges = repo.enumerateInstances(testNamespace, "T_Edge");
    ASSERT_EQ(edges.size(), 1u);
    CIMObjectPath from;
    edges[0].getProperty(edges[0].findProperty("From")).getValue().get(from);
    EXPECT_EQ(from, a.getPath());
    EXPECT_EQ(edges[0].getPath().getKeyBindings().size(), 2u);
}

TEST_F(MofCompilerTest, IncludesAreRelativeAndNamespacesAreScopedToTheirFile)
{
    moftest::TempDir dir;
    std::filesystem::copy_file(
        moftest::schemaDir() + "/qualifiers.mof", dir.path() + "/qualifiers.mof");
    dir.write("sub/inner.mof", "class T_Inner { string S; };\n");
    dir.write(
        "sub/mid.mof", "#pragma namespace(\"root/y\")\n"
                       "#pragma include(\"../qualifiers.mof\")\n"
                       "#pragma include(\"inner.mof\")\n");
    const std::string main = dir.write(
        "main.mof", "#pragma locale(\"en_US\")\n"
                    "#pragma namespace(\"/root/x\")\n"
                    "#pragma include(\"qualifiers.mof\")\n"
                    "#pragma include(\"sub/mid.mof\")\n"
                    "class T_Outer { string S; };\n");
    ClassRepository r;
    MofCompiler compiler(r);
    compiler.compileFile(main);
    EXPECT_TRUE(r.classExists("root/y", "T_Inner"));
    EXPECT_FALSE(r.classExists("root/x", "T_Inner"));
    EXPECT_TRUE(r.classExists("root/x", "T_Outer"));
    EXPECT_FALSE(r.namespaceExists("root/cimv2"));
    EXPECT_EQ(compiler.counts().files, 5u);
    EXPECT_EQ(compiler.counts().classes, 2u);
}

// Each row: MOF text compiled after the qualifier declarations, and the
// "line:column: message" fragment the error must contain.
const struct
{
    const char* mof;
    const char* expected;
} badCases[] = {
    {"class A : B { };", "test.mof:1:11: unknown superclass 'B' of class 'A'"},
    {"class A { [Nope] uint8 x; };", "1:12: qualifier 'Nope' is not declared"},
    {"class A { uint8 x = 256; };", "1:21: value 256 does not fit uint8"},
    {"class A { uint8 x = -1; };", "1:21: value -1 of property 'x' is negative"},
    {"class A { uint64 x = 18446744073709551616; };",
     "1:22: value 18446744073709551616 does not fit"},
    {"class A { string s = 5; };",
     "1:22: type mismatch: property 's' is string but the value is an integer"},
    {"class A { uint8 x = 1.5; };",
     "1:21: type mismatch: property 'x' is uint8 but the value is a real"},
    {"class A { uint16 x; uint16 X; };", "1:28: property 'X' is declared twice in class 'A'"},
    {"class A { uint8 x }", "1:19: expected ';' after the property declaration, found '}'"},
    {"class A { uint8 x; }", "1:21: expected ';' after the class body, found end of file"},
    {"#pragma include(\"missing.mof\")", "1:17: cannot open included file 'missing.mof'"},
    {"class A { uint8 a[2] = {1,2,3}; };",
     "1:24: property 'a' is an array of 2 elements but the value has 3"},
    {"class A { uint8 a[] = 1; };", "1:23: type mismatch: property 'a' is an array"},
    {"class A { uint8 x = {1}; };", "1:21: type mismatch: property 'x' is not an array"},
    {"class A { uint8 a[] = {1, null}; };", "1:27: an element of property 'a' is null"},
    {"class A { [Key(3)] string k; };", "1:16: type mismatch: qualifier 'Key' is boolean"},
    {"class A { [Key] sint32 M(); };", "1:12: qualifier Key may not be used on a method"},
    {"[Key] class A { };", "1:2: qualifier Key may not be used on a class"},
    {"class A { [Key, Key] string k; };", "1:17: qualifier 'Key' is given twice"},
    {"class A { B REF r; };", "1:11: reference 'r' is only allowed in an association"},
    {"[Association] class A { B REF r; };", "1:25: unknown class 'B' in reference 'r'"},
    {"[Association] class A { A REF r[]; };", "1:32: reference 'r' cannot be an array"},
    {"class A { datetime d = \"2024\"; };", "1:24: '2024' is not a valid datetime"},
    {"class A { uint8 x = 0x; };", "1:21: malformed number '0x'"},
    {"class A { uint8 x = 019; };", "1:21: octal number '019' holds the digit 9"},
    {"class A { uint8 x = 12b; };", "1:21: binary number '12b' holds the digit 2"},
    {"class A { real32 r = 1.0e40; };", "1:22: value 1.0e40 does not fit real32"},
    {"class A { char16 c = 'ab'; };", "1:22: a character literal holds exactly one character"},
    {"class A { string s = \"\\x0\"; };", "1:23: \\x0 would put a NUL character"},
    {"class A { string s = \"\\q\"; };", "1:23: unknown escape sequence '\\q'"},
    {"class A { string s = \"\xff\"; };", "1:23: byte 0xFF is not valid UTF-8"},
    {"class A { uint8 x = 1 2; };",
     "1:23: expected ';' after the property declaration, found the number 2"},
    {"class A { unit8 x; };", "1:11: unknown data type 'unit8'"},
    {"class A as $a { };", "1:9: class aliases are not supported"},
    {"class A { sint32 M(uint8 a, uint8 A); };",
     "1:35: parameter 'A' is declared twice in method 'M' of class 'A'"},
    {"class A { sint32 M(); uint8 m(); };", "1:29: method 'm' is declared twice"},
    {"class A { };\nclass a { };", "2:7: class 'a' is already defined in namespace 'root/test'"},
    {"class A { [Key] string k; };\nclass B : A { [Key(false)] string k; };",
     "2:7: cannot add class 'B': qualifier Key of property k of class B cannot take another value"},
    {"class A { [Description(\"a\") ToSubclass Restricted] uint8 x; };",
     "1:12: qualifier Description of property 'x' of class 'A' is given both ToSubclass and Restricted"},
    {"/* never closed", "1:1: comment not closed"},
    {"#include \"x\"", "1:1: unknown directive '#include'"},
    {"#pragma frobnicate(\"x\")", "1:9: unknown pragma 'frobnicate'"},
    {"#pragma namespace(\"root//x\")", "1:19: invalid namespace name 'root//x'"},
    {"#pragma include(\"\")", "1:17: #pragma include names no file"},
    {"Qualifier Q : uint8 = 300, Scope(property);", "1:23: value 300 does not fit uint8"},
    {"Qualifier Q : boolean, Scope(nowhere);", "1:30: unknown scope 'nowhere'"},
    {"Qualifier Q : boolean, Scope(any), Flavor(ToSubclass, Restricted);",
     "1:11: qualifier 'Q' is declared both ToSubclass and Restricted"},
    {"Qualifier Key : boolean, Scope(property);", "1:11: qualifier 'Key' is already declared"},
    {"Qualifier Q : boolean Scope(any);", "1:23: expected ',' before 'scope'"},
    {"instance of A { x = 1; };", "1:13: unknown class 'A' in namespace 'root/test'"},
    {"class A { [Key] string k; };\ninstance of A { y = 1; };",
     "2:17: class 'A' has no property 'y'"},
    {"class A { [Key] string k; uint8 n; };\ninstance of A { n = 1; };",
     "2:1: cannot add the instance of 'A': key property k of class A has no value"},
    {"class A { [Key] string k; };\ninstance of A { k = \"1\"; k = \"2\"; };",
     "2:26: property 'k' is given twice"},
    {"[Abstract] class A { [Key] string k; };\ninstance of A { k = \"1\"; };",
     "2:1: cannot add the instance of 'A': class A is abstract"},
    {"class A { [Key] string k; };\n[Association] class R { [Key] A REF a; };\n"
     "instance of R { a = $nope; };",
     "3:21: alias $nope is not defined"},
    {"class A { [Key] string k; };\ninstance of A as $x { k = \"1\"; };\n"
     "instance of A as $X { k = \"2\"; };",
     "3:18: alias $X is already defined"},
    {"class A { [Key] string k; };\n[Association] class R { [Key] A REF a; };\n"
     "instance of R { a = \"A.k=\"; };",
     "3:21: 'A.k=' is not a valid object path"},
    {"[", "1:2: expected a qualifier name, found end of file"},
    {"[Description(\"x\")] qualifier Q : boolean, Scope(any);",
     "1:20: expected 'class' or 'instance' after the qualifier list"},
    {"uint8 x;", "1:1: expected a class, an instance, a qualifier declaration or #pragma"},
    {"class A { uint8 x[0]; };", "1:19: array size must be a positive 32-bit number"},
    {"class A { uint8 x = $a; };",
     "1:21: type mismatch: property 'x' is uint8 but the value is an alias"},
    {"class 1A { };", "1:7: malformed number '1A'"},
    {"class A { string s = \"a\" \n \"b; };", "2:2: string not closed"},
    {"class A { uint8 x; };\x01", "1:22: unexpected control byte 0x01"},
    {"class A { uint8 x = @; };", "1:21: unexpected character '@'"},
};

TEST_F(MofCompilerTest, BadInputIsRefusedWithItsPosition)
{
    for (const auto& c : badCases)
    {
        ClassRepository r;
        moftest::loadQualifiers(r);
        try
        {
            compile(r, c.mof);
            ADD_FAILURE() << "accepted: " << c.mof;
        }
        catch (const MofError& e)
        {
            const std::string message(static_cast<const char*>(e.getMessage().getCString()));
            EXPECT_NE(message.find(c.expected), std::string::npos)
                << "input:    " << c.mof << "\nexpected: " << c.expected
                << "\ngot:      " << message;
        }
    }
}

TEST_F(MofCompilerTest, ErrorKeepsFileLineAndColumnApart)
{
    moftest::TempDir dir;
    dir.write("bad.mof", "class A {\n\tuint8 x = 300;\n};\n");
    const std::string main = dir.write("main.mof", "#pragma include(\"bad.mof\")\n");
    MofCompiler compiler(repo, testNamespace);
    try
    {
        compiler.compileFile(main);
        FAIL() << "accepted";
    }
    catch (const MofError& e)
    {
        // An error in an included file names that file.
        EXPECT_EQ(e.file(), dir.path() + "/bad.mof");
        EXPECT_EQ(e.line(), 2u);
        EXPECT_EQ(e.column(), 12u);
        EXPECT_EQ(e.problem().find("value 300"), 0u);
    }
    EXPECT_THROW(compiler.compileFile("/nonexistent/root.mof"), MofError);
}

// Cut and damaged versions of a valid text are either accepted or refused
// with a MofError: no other exception escapes, nothing crashes.
TEST_F(MofCompilerTest, DamagedInputNeverEscapesAsAnotherError)
{
    const std::string good =
        "Qualifier Q : string[] = {\"a\"}, Scope(any), Flavor(Restricted);\n"
        "[Abstract, Q{\"b\", \"c\"}] class T_B { [Key] string Id; uint16 N[2] = {1, 0x2}; };\n"
        "class T_C : T_B { [Override(\"N\")] uint16 N[2]; real64 R = -1.5e2; char16 C = '\\x41';\n"
        "  datetime D = \"00000001020304.000005:000\";\n"
        "  sint32 M([IN] string A, [IN(false), OUT] uint8 B[]); };\n"
        "[Association] class T_R { [Key] T_C REF L; [Key] T_C REF R; };\n"
        "instance of T_C as $c { Id = \"x\" \"y\"; N = {3, 4}; };\n"
        "instance of T_R { L = $c; R = \"T_C.Id=\\\"xy\\\"\"; };\n";
    ASSERT_NO_THROW(compile(repo, good));
    auto attempt = [](const std::string& text)
    {
        ClassRepository r;
        moftest::loadQualifiers(r);
        try
        {
            compile(r, text);
        }
        catch (const MofError&)
        {
        }
        catch (...)
        {
            ADD_FAILURE() << "not a MofError; input:\n" << text;
        }
    };
    for (size_t cut = 0; cut < good.size(); cut++)
        ASSERT_NO_FATAL_FAILURE(attempt(good.substr(0, cut))) << cut;
    std::mt19937 rng(20240131);
    const char alphabet[] = "{}[]();:,=.\"'\\$#/*-+0x1bB9eE \n\xC3\xA9\xFF\x01aZ_";
    for (int round = 0; round < 1500; round++)
    {
        std::string text = good;
        for (unsigned e = 0, edits = 1 + rng() % 3; e < edits; e++)
        {
            const size_t at = rng() % text.size();
            const char c = alphabet[rng() % (sizeof(alphabet) - 1)];
            switch (rng() % 3)
            {
                case 0:
                    text[at] = c;
                    break;
                case 1:
                    text.insert(at, 1, c);
                    break;
                default:
                    text.erase(at, 1 + rng() % 4);
                    break;
            }
        }
        ASSERT_NO_FATAL_FAILURE(attempt(text)) << text;
    }
}

}  // namespace
