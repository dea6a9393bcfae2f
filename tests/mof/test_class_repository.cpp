// The class repository: inheritance as the resolver completes it, GetClass
// options, subclass queries, static instances and the CIM errors.
#include <gtest/gtest.h>

#include <functional>
#include <vector>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include "mof_test_support.h"

using namespace Pegasus;
using moftest::testNamespace;

namespace
{

const char* const hierarchy =
    "[Abstract, Description(\"base\")]\n"
    "class T_Base {\n"
    "  [Key, Description(\"id\")] string Id;\n"
    "  [Description(\"count\") Restricted, Units(\"Bytes\")] uint16 Count = 7;\n"
    "  string Note;\n"
    "  [Description(\"ping\")] sint32 Ping([IN, Description(\"who\")] string Who);\n"
    "};\n"
    "class T_Mid : T_Base {\n"
    "  [Override(\"Count\"), MaxLen(3)] uint16 Count = 9;\n"
    "  boolean Flag;\n"
    "};\n"
    "class T_Leaf : T_Mid {\n"
    "  uint64 Extra;\n"
    "  sint32 Ping([IN] string Who, [IN] uint8 Level);\n"
    "};\n"
    "class T_Other { [Key] string Name; };\n"
    "instance of T_Mid { Id = \"m1\"; Flag = true; };\n"
    "instance of T_Leaf { Id = \"l1\"; Extra = 5; };\n"
    "instance of T_Other { Name = \"o1\"; };\n";

class ClassRepositoryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        moftest::loadQualifiers(repo);
        moftest::compile(repo, hierarchy);
    }
    CIMClass full(const char* name)
    {
        return repo.getClass(testNamespace, name, false, true, true, CIMPropertyList());
    }
    ClassRepository repo;
};

typedef std::vector<std::string> Names;

Names names(const Array<CIMName>& a)
{
    Names out;
    for (Uint32 i = 0; i < a.size(); i++)
        out.push_back(static_cast<const char*>(a[i].getString().getCString()));
    return out;
}

Names propertyNames(const CIMClass& c)
{
    Array<CIMName> a;
    for (Uint32 i = 0; i < c.getPropertyCount(); i++)
        a.append(c.getProperty(i).getName());
    return names(a);
}

TEST_F(ClassRepositoryTest, InheritedElementsKeepOriginAndPropagation)
{
    EXPECT_EQ(propertyNames(full("T_Mid")), (Names{"Id", "Note", "Count", "Flag"}));
    EXPECT_EQ(propertyNames(full("T_Leaf")), (Names{"Id", "Note", "Count", "Flag", "Extra"}));
    struct Row
    {
        const char* cls;
        const char* property;
        const char* origin;
        bool propagated;
        Uint16 countDefault;
    };
    const Row rows[] = {
        {"T_Base", "Id", "T_Base", false, 0},
        {"T_Mid", "Id", "T_Base", true, 0},
        {"T_Leaf", "Id", "T_Base", true, 0},
        {"T_Base", "Count", "T_Base", false, 7},
        // An override keeps the origin of the property it overrides.
        {"T_Mid", "Count", "T_Base", false, 9},
        {"T_Leaf", "Count", "T_Base", true, 9},
        {"T_Leaf", "Flag", "T_Mid", true, 0},
        {"T_Leaf", "Extra", "T_Leaf", false, 0},
    };
    for (const Row& r : rows)
    {
        CIMClass c = full(r.cls);
        CIMProperty p = c.getProperty(c.findProperty(r.property));
        EXPECT_EQ(p.getClassOrigin(), CIMName(r.origin)) << r.cls << "." << r.property;
        EXPECT_EQ(p.getPropagated(), r.propagated) << r.cls << "." << r.property;
        EXPECT_TRUE(!r.countDefault || p.getValue().equal(CIMValue(r.countDefault))) << r.cls;
    }
    Array<CIMName> keys;
    full("T_Leaf").getKeyNames(keys);
    EXPECT_EQ(names(keys), (Names{"Id"}));

    // Methods: inherited ones are propagated, overrides keep the origin.
    CIMClass mid = full("T_Mid");
    CIMMethod inherited = mid.getMethod(mid.findMethod("Ping"));
    EXPECT_TRUE(inherited.getPropagated());
    EXPECT_EQ(inherited.getClassOrigin(), CIMName("T_Base"));
    CIMParameter who = inherited.getParameter(0);
    EXPECT_TRUE(who.getQualifier(who.findQualifier("Description")).getPropagated());
    CIMClass leaf = full("T_Leaf");
    CIMMethod own = leaf.getMethod(leaf.findMethod("ping"));
    EXPECT_FALSE(own.getPropagated());
    EXPECT_EQ(own.getClassOrigin(), CIMName("T_Base"));
    EXPECT_EQ(own.getParameterCount(), 2u);
    // The override's parameter takes the inherited parameter's qualifiers.
    CIMParameter leafWho = own.getParameter(own.findParameter("Who"));
    EXPECT_NE(leafWho.findQualifier("Description"), PEG_NOT_FOUND);
    EXPECT_NE(own.findQualifier("Description"), PEG_NOT_FOUND);
}

TEST_F(ClassRepositoryTest, QualifiersFollowTheirFlavor)
{
    // Per row: element (property null: the class), qualifier, present?, propagated flag when present.
    struct Row
    {
        const char* cls;
        const char* property;
        const char* qualifier;
        bool present;
        bool propagated;
    };
    const Row rows[] = {
        {"T_Base", 0, "Abstract", true, false},
        {"T_Mid", 0, "Abstract", false, false},   // Restricted
        {"T_Mid", 0, "Description", true, true},  // ToSubclass
        {"T_Leaf", "Id", "Key", true, true},
        {"T_Base", "Count", "Description", true, false},
        {"T_Mid", "Count", "Description", false, false},  // given Restricted
        {"T_Mid", "Count", "Units", true, true},
        {"T_Mid", "Count", "Override", true, false},
        {"T_Leaf", "Count", "Override", false, false},  // Override is Restricted
        {"T_Leaf", "Count", "MaxLen", true, true},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(r.cls) + "." + (r.property ? r.property : "") + " " + r.qualifier);
        CIMClass c = full(r.cls);
        CIMQualifier q;
        if (r.property)
        {
            CIMProperty p = c.getProperty(c.findProperty(r.property));
            if (p.findQualifier(r.qualifier) != PEG_NOT_FOUND)
                q = p.getQualifier(p.findQualifier(r.qualifier));
        }
        else if (c.findQualifier(r.qualifier) != PEG_NOT_FOUND)
            q = c.getQualifier(c.findQualifier(r.qualifier));
        EXPECT_EQ(!q.isUninitialized(), r.present);
        EXPECT_TRUE(!r.present || q.getPropagated() == r.propagated);
    }
    EXPECT_TRUE(full("T_Base").isAbstract());
    EXPECT_FALSE(full("T_Mid").isAbstract());
}

TEST_F(ClassRepositoryTest, GetClassAppliesItsOptions)
{
    CIMClass local = repo.getClass(testNamespace, "T_Mid", true, true, true, CIMPropertyList());
    EXPECT_EQ(propertyNames(local), (Names{"Count", "Flag"}));
    EXPECT_EQ(local.getMethodCount(), 0u);
    EXPECT_EQ(local.findQualifier("Description"), PEG_NOT_FOUND);
    CIMProperty count = local.getProperty(local.findProperty("Count"));
    EXPECT_EQ(count.findQualifier("Units"), PEG_NOT_FOUND);
    EXPECT_NE(count.findQualifier("MaxLen"), PEG_NOT_FOUND);
    CIMClass bare = repo.getClass(testNamespace, "T_Leaf", false, false, false, CIMPropertyList());
    EXPECT_EQ(bare.getQualifierCount(), 0u);
    for (Uint32 i = 0; i < bare.getPropertyCount(); i++)
    {
        EXPECT_EQ(bare.getProperty(i).getQualifierCount(), 0u);
        EXPECT_TRUE(bare.getProperty(i).getClassOrigin().isNull());
    }
    CIMMethod ping = bare.getMethod(bare.findMethod("Ping"));
    EXPECT_EQ(ping.getQualifierCount(), 0u);
    EXPECT_EQ(ping.getParameter(0).getQualifierCount(), 0u);
    EXPECT_TRUE(ping.getClassOrigin().isNull());
    Array<CIMName> wanted(1, CIMName("count"));
    wanted.append("NoSuchProperty");
    EXPECT_EQ(
        propertyNames(repo.getClass(testNamespace, "T_Leaf", false, true, true, wanted)),
        (Names{"Count"}));
    EXPECT_EQ(
        repo.getClass(testNamespace, "T_Leaf", false, true, true, Array<CIMName>())
            .getPropertyCount(),
        0u);

    // Copies are fresh: changing one leaves the repository as it was.
    CIMClass copy = full("T_Leaf");
    copy.removeProperty(0);
    EXPECT_EQ(full("T_Leaf").getPropertyCount(), 5u);
}

TEST_F(ClassRepositoryTest, ClassesAndNamespacesListInDefinitionOrder)
{
    EXPECT_EQ(
        names(repo.enumerateClassNames(testNamespace, CIMName(), false)),
        (Names{"T_Base", "T_Other"}));
    EXPECT_EQ(
        names(repo.enumerateClassNames(testNamespace, CIMName(), true)),
        (Names{"T_Base", "T_Mid", "T_Leaf", "T_Other"}));
    EXPECT_EQ(names(repo.enumerateClassNames(testNamespace, "t_base", false)), (Names{"T_Mid"}));
    EXPECT_EQ(
        names(repo.enumerateClassNames(testNamespace, "T_Base", true)), (Names{"T_Mid", "T_Leaf"}));
    EXPECT_EQ(names(repo.subclassNames(testNamespace, "T_Mid", false)), (Names{"T_Leaf"}));
    EXPECT_TRUE(repo.subclassNames(testNamespace, "T_Leaf", true).size() == 0);
    EXPECT_EQ(repo.enumerateClasses(testNamespace, "T_Base", true, true, false, false).size(), 2u);
    struct Row
    {
        const char* cls;
        const char* ancestor;
        bool expected;
    };
    const Row rows[] = {
        {"T_Leaf", "T_Base", true},  {"t_leaf", "T_BASE", true},   {"T_Leaf", "T_Leaf", true},
        {"T_Base", "T_Leaf", false}, {"T_Other", "T_Base", false}, {"T_None", "T_Base", false},
    };
    for (const Row& r : rows)
        EXPECT_EQ(repo.isSubclassOf(testNamespace, r.cls, r.ancestor), r.expected)
            << r.cls << " < " << r.ancestor;

    // Namespaces list in the order they came; their names ignore case.
    repo.createNamespace("root/second");
    repo.createNamespace("ROOT/TEST");
    Array<CIMNamespaceName> all = repo.enumerateNamespaces();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].getString() + " " + all[1].getString(), "root/test root/second");
    EXPECT_TRUE(repo.namespaceExists("Root/Second"));
    EXPECT_FALSE(repo.namespaceExists("root"));
    EXPECT_EQ(repo.enumerateClassNames("root/second", CIMName(), true).size(), 0u);
}

TEST_F(ClassRepositoryTest, StaticInstancesAreFoundByClassAndPath)
{
    EXPECT_EQ(repo.enumerateInstances(testNamespace, "T_Base").size(), 2u);
    EXPECT_EQ(repo.enumerateInstances(testNamespace, "T_Leaf").size(), 1u);
    EXPECT_EQ(repo.enumerateInstances(testNamespace, "T_Other").size(), 1u);
    CIMInstance leaf =
        repo.getInstance(testNamespace, CIMObjectPath("//h/root/test:t_leaf.Id=\"l1\""));
    CIMProperty extra = leaf.getProperty(leaf.findProperty("Extra"));
    EXPECT_TRUE(extra.getValue().equal(CIMValue(Uint64(5))));
    EXPECT_EQ(extra.getClassOrigin(), CIMName("T_Leaf"));
    EXPECT_EQ(leaf.getProperty(leaf.findProperty("Id")).getClassOrigin(), CIMName("T_Base"));

    // A copy: changing it does not change the stored instance.
    leaf.removeProperty(leaf.findProperty("Extra"));
    EXPECT_EQ(
        repo.getInstance(testNamespace, CIMObjectPath("T_Leaf.Id=\"l1\"")).getPropertyCount(), 2u);
}

TEST_F(ClassRepositoryTest, ErrorsCarryTheirCIMCode)
{
    const CIMNamespaceName ns(testNamespace);
    auto instance = [](const char* cls, const char* property, const CIMValue& value)
    {
        CIMInstance inst(cls);
        inst.addProperty(CIMProperty(property, value));
        return inst;
    };
    CIMClass narrowed("T_Bad", "T_Base");
    narrowed.addProperty(CIMProperty("Count", CIMValue(Uint32(1))));
    CIMClass refInPlainClass("T_Ref");
    refInPlainClass.addProperty(CIMProperty("R", CIMValue(CIMTYPE_REFERENCE, false), 0, "T_Other"));
    CIMInstance unknownProperty = instance("T_Other", "Name", CIMValue(String("z")));
    unknownProperty.addProperty(CIMProperty("Nope", CIMValue(String("z"))));
    const CIMInstance again = instance("T_Other", "Name", CIMValue(String("o1")));
    const CIMPropertyList all;
    const struct
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
    } rows[] = {
        {"getClass, unknown namespace",
         [&] { repo.getClass("root/nowhere", "T_Base", false, true, true, all); },
         CIM_ERR_INVALID_NAMESPACE},
        {"getClass, unknown class", [&] { repo.getClass(ns, "T_None", false, true, true, all); },
         CIM_ERR_NOT_FOUND},
        {"enumerateClassNames, unknown class",
         [&] { repo.enumerateClassNames(ns, "T_None", true); }, CIM_ERR_INVALID_CLASS},
        {"subclassNames, null class", [&] { repo.subclassNames(ns, CIMName(), true); },
         CIM_ERR_INVALID_CLASS},
        {"enumerateInstances, unknown class", [&] { repo.enumerateInstances(ns, "T_None"); },
         CIM_ERR_INVALID_CLASS},
        {"getInstance, no such instance",
         [&] { repo.getInstance(ns, CIMObjectPath("T_Other.Name=\"zz\"")); }, CIM_ERR_NOT_FOUND},
        {"getQualifier, undeclared", [&] { repo.getQualifier(ns, "Nope"); }, CIM_ERR_NOT_FOUND},
        {"classExists, unknown namespace", [&] { repo.classExists("root/nowhere", "T_Base"); },
         CIM_ERR_INVALID_NAMESPACE},
        {"addClass, missing superclass",
         [&] { repo.addClass(ns, CIMClass("T_Orphan", "T_Missing")); }, CIM_ERR_INVALID_SUPERCLASS},
        {"addClass, duplicate", [&] { repo.addClass(ns, CIMClass("t_other")); },
         CIM_ERR_ALREADY_EXISTS},
        {"addClass, override of another type", [&] { repo.addClass(ns, narrowed); },
         CIM_ERR_INVALID_PARAMETER},
        {"addClass, reference outside an association", [&] { repo.addClass(ns, refInPlainClass); },
         CIM_ERR_INVALID_PARAMETER},
        {"addQualifierDecl, duplicate",
         [&] {
             repo.addQualifierDecl(
                 ns, CIMQualifierDecl("KEY", CIMValue(false), CIMScope::PROPERTY));
         },
         CIM_ERR_ALREADY_EXISTS},
        {"addInstance, abstract class",
         [&] { repo.addInstance(ns, instance("T_Base", "Id", CIMValue(String("a")))); },
         CIM_ERR_INVALID_CLASS},
        {"addInstance, wrong type",
         [&] { repo.addInstance(ns, instance("T_Other", "Name", CIMValue(Uint8(1)))); },
         CIM_ERR_TYPE_MISMATCH},
        {"addInstance, unknown property", [&] { repo.addInstance(ns, unknownProperty); },
         CIM_ERR_NO_SUCH_PROPERTY},
        {"addInstance, same path twice", [&] { repo.addInstance(ns, again); },
         CIM_ERR_ALREADY_EXISTS},
        {"addInstance, unknown namespace", [&] { repo.addInstance("root/nowhere", again); },
         CIM_ERR_INVALID_NAMESPACE},
    };
    for (const auto& r : rows)
    {
        try
        {
            r.call();
            ADD_FAILURE() << r.what << ": accepted";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), r.code) << r.what;
        }
    }
    // A refused class leaves nothing behind.
    EXPECT_FALSE(repo.classExists(ns, "T_Bad"));
    EXPECT_FALSE(repo.classExists(ns, "T_Orphan"));
}

}  // namespace
