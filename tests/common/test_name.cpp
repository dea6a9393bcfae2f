// CIMName and CIMNamespaceName: legality, messages of the exceptions,
// case-insensitive equality that keeps the original spelling.
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using namespace qeltest;

TEST(CIMNameRules, LegalAndIllegalNames)
{
    struct Case
    {
        const char* name;
        bool legal;
    } cases[] = {
        {"abc", true},  {"_abc", true},          {"A1_b2", true}, {"\xC3\xA9t\xC3\xA9", true},
        {"", false},    {"1abc", false},         {"a-b", false},  {"a b", false},
        {"a.b", false}, {"\xEF\xBF\xBD", false},  // U+FFFD lies above U+FFEF
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(CIMName::legal(c.name), c.legal) << c.name;
        if (c.legal)
            EXPECT_EQ(str(CIMName(c.name).getString()), c.name);
        else
            EXPECT_EQ(
                thrownMessage<InvalidNameException>([&] { CIMName n(c.name); }),
                std::string("The CIM name is not valid: ") + c.name);
    }
    CIMName n("Good");
    EXPECT_THROW(n = String("bad name"), InvalidNameException);
    EXPECT_THROW(n = "9lives", InvalidNameException);
    EXPECT_EQ(n.getString(), "Good");  // kept after the failures
}

TEST(NameEquality, IgnoresAsciiCaseOnlyAndKeepsTheSpelling)
{
    CIMName a("QEL_FCPort");
    EXPECT_TRUE(a == CIMName("qel_fcport"));
    EXPECT_TRUE(a != "QEL_FCPort2");
    EXPECT_EQ(a.getString(), "QEL_FCPort");
    EXPECT_FALSE(CIMName("\xC3\x89t\xC3\xA9") == CIMName("\xC3\xA9t\xC3\xA9"));
    CIMNamespaceName ns("root/qel");
    EXPECT_TRUE(ns == CIMNamespaceName("/Root/Qel"));  // '/' dropped when stored
    EXPECT_FALSE(ns == "/Root/Qel");                   // raw text is compared as it is
    EXPECT_FALSE(ns == "root/qel2");
}

TEST(CIMNamespaceNameRules, LegalityAndStoredForm)
{
    struct Case
    {
        const char* name;
        const char* stored;
    } cases[] = {
        // stored nullptr: illegal
        {"root/qel", "root/qel"},
        {"/root/qel", "root/qel"},
        {"root", "root"},
        {"a/_b/c1", "a/_b/c1"},
        {"", nullptr},
        {"/", nullptr},
        {"root/", nullptr},
        {"root//x", nullptr},
        {"root/my-ns", nullptr},
        {"root/1x", nullptr},
        {"//root", nullptr},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(CIMNamespaceName::legal(c.name), c.stored != nullptr) << c.name;
        if (c.stored)
        {
            EXPECT_EQ(str(CIMNamespaceName(c.name).getString()), c.stored);
            CIMNamespaceName assigned;
            assigned = String(c.name);
            EXPECT_EQ(str(assigned.getString()), c.stored);
        }
        else
            EXPECT_EQ(
                thrownMessage<InvalidNamespaceNameException>([&] { CIMNamespaceName n(c.name); }),
                std::string("invalid CIM namespace name: ") + c.name);
    }
}
