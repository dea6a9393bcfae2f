// CIMName and CIMNamespaceName: legality, messages of the exceptions,
// case-insensitive equality that keeps the original spelling.
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <string>

PEGASUS_USING_PEGASUS;

namespace
{
std::string utf8(const String& s) { return std::string(s.getCString()); }

template <class E, class F>
std::string failure(F f)
{
    try
    {
        f();
    }
    catch (const E& e)
    {
        return utf8(e.getMessage());
    }
    return "<no exception>";
}
}  // namespace

TEST(CIMNameRules, LegalAndIllegalNames)
{
    struct Case
    {
        const char* name;
        bool legal;
    } cases[] = {
        { "abc", true }, { "_abc", true }, { "A1_b2", true }, { "\xC3\xA9t\xC3\xA9", true },
        { "", false }, { "1abc", false }, { "a-b", false }, { "a b", false }, { "a.b", false },
        { "\xEF\xBF\xBD", false },  // U+FFFD lies above U+FFEF
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(CIMName::legal(c.name), c.legal) << c.name;
        if (c.legal)
            EXPECT_EQ(utf8(CIMName(c.name).getString()), c.name);
        else
            EXPECT_EQ(failure<InvalidNameException>([&] { CIMName n(c.name); }),
                std::string("The CIM name is not valid: ") + c.name);
    }
}

TEST(CIMNameRules, AssignmentValidatesAndKeepsOldValueOnError)
{
    CIMName n("Good");
    EXPECT_THROW(n = String("bad name"), InvalidNameException);
    EXPECT_THROW(n = "9lives", InvalidNameException);
    EXPECT_EQ(n.getString(), "Good");
    EXPECT_TRUE(CIMName().isNull());
    n.clear();
    EXPECT_TRUE(n.isNull());
}

TEST(CIMNameRules, EqualityIgnoresAsciiCaseOnly)
{
    CIMName a("QEL_FCPort");
    EXPECT_TRUE(a == CIMName("qel_fcport"));
    EXPECT_TRUE(a.equal("QEL_FCPORT"));
    EXPECT_TRUE(a == "qel_FCPort");
    EXPECT_TRUE(a != "QEL_FCPort2");
    EXPECT_EQ(a.getString(), "QEL_FCPort");
    EXPECT_FALSE(CIMName("\xC3\x89t\xC3\xA9") == CIMName("\xC3\xA9t\xC3\xA9"));
}

TEST(CIMNamespaceNameRules, LegalityAndStoredForm)
{
    struct Case
    {
        const char* name;
        const char* stored;  // nullptr: illegal
    } cases[] = {
        { "root/qel", "root/qel" }, { "/root/qel", "root/qel" }, { "root", "root" },
        { "a/_b/c1", "a/_b/c1" },
        { "", nullptr }, { "/", nullptr }, { "root/", nullptr }, { "root//x", nullptr },
        { "root/my-ns", nullptr }, { "root/1x", nullptr }, { "//root", nullptr },
    };
    for (const Case& c : cases)
    {
        if (c.stored)
        {
            EXPECT_TRUE(CIMNamespaceName::legal(c.name)) << c.name;
            EXPECT_EQ(utf8(CIMNamespaceName(c.name).getString()), c.stored);
            CIMNamespaceName assigned;
            assigned = String(c.name);
            EXPECT_EQ(utf8(assigned.getString()), c.stored);
        }
        else
        {
            EXPECT_FALSE(CIMNamespaceName::legal(c.name)) << c.name;
            EXPECT_EQ(failure<InvalidNamespaceNameException>([&] { CIMNamespaceName n(c.name); }),
                std::string("invalid CIM namespace name: ") + c.name);
        }
    }
}

TEST(CIMNamespaceNameRules, EqualityIgnoresCase)
{
    CIMNamespaceName ns("root/qel");
    EXPECT_TRUE(ns == CIMNamespaceName("ROOT/QEL"));
    EXPECT_TRUE(ns == CIMNamespaceName("/Root/Qel"));  // '/' dropped when stored
    EXPECT_FALSE(ns == "/Root/Qel");  // raw text is compared as it is
    EXPECT_FALSE(ns == "root/qel2");
    EXPECT_TRUE(CIMNamespaceName().isNull());
}
