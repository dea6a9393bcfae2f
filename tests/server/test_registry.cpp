// Provider registrations: what the registry serves, and every broken
// registration stopping the load with a message naming the instance.
#include "ServerFixture.h"

#include <Server/core/ProviderRegistry.h>
#include <Server/mof/MofCompiler.h>
#include <Server/repository/ClassRepository.h>

using namespace Pegasus;
using namespace servertest;

namespace {

// The schema and the test schema, plus one more MOF text in root/PG_InterOp.
std::unique_ptr<ClassRepository> repositoryWith(const std::string& registrations)
{
    auto repository = std::make_unique<ClassRepository>();
    MofCompiler compiler(*repository);
    compiler.compileFile(schemaRoot());
    compiler.compileFile(testSchema());
    if (!registrations.empty())
        compiler.compileString("#pragma namespace(\"root/PG_InterOp\")\n" + registrations, "extra.mof");
    return repository;
}

std::string loadError(const std::string& registrations)
{
    auto repository = repositoryWith(registrations);
    try
    {
        ProviderRegistry::load(*repository);
    }
    catch (const Exception& e)
    {
        return text(e.getMessage());
    }
    return "(loaded)";
}

std::string capability(const std::string& id, const std::string& provider, const std::string& cls,
                       const std::string& namespaces, const std::string& types,
                       const std::string& extra = "")
{
    return "instance of PG_ProviderCapabilities { ProviderModuleName = \"ServerTestModule\"; ProviderName = \"" +
           provider + "\"; CapabilityID = \"" + id + "\"; ClassName = \"" + cls + "\"; Namespaces = " +
           namespaces + "; ProviderType = " + types + "; " + extra + "};\n";
}

std::string module(const std::string& name, const std::string& type, const std::string& version,
                   const std::string& location)
{
    return "instance of PG_ProviderModule { Name = \"" + name + "\"; Vendor = \"QEL\"; Version = \"1\"; "
           "InterfaceType = \"" + type + "\"; InterfaceVersion = \"" + version + "\"; Location = \"" +
           location + "\"; };\n";
}

}  // namespace

TEST(ProviderRegistry, ServesExactlyTheRegisteredClassesAndMethods)
{
    auto repository = repositoryWith("");
    ProviderRegistry registry = ProviderRegistry::load(*repository);
    const CIMNamespaceName ns("root/servertest");

    const ProviderId* item = registry.instanceProvider(ns, "test_item");  // names ignore case
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->describe(), "ServerTestModule:ItemProvider");
    EXPECT_EQ(text(item->location), "QELServerTestProvider");

    // No inheritance: the subclass has its own provider, the parent none.
    EXPECT_EQ(registry.instanceProvider(ns, "Test_SubItem")->describe(), "ServerTestModule:SubItemProvider");
    EXPECT_EQ(registry.instanceProvider(ns, "Test_Base"), nullptr);
    EXPECT_EQ(registry.instanceProvider("root/qel", "Test_Item"), nullptr);

    // SupportedMethods limits the method provider; NULL means every method.
    EXPECT_EQ(registry.methodProvider(ns, "Test_Item", "ping"), item);
    EXPECT_EQ(registry.methodProvider(ns, "Test_Item", "Unserved"), nullptr);
    EXPECT_NE(registry.methodProvider(ns, "Test_Nested", "AnyMethodAtAll"), nullptr);

    EXPECT_NE(registry.associationProvider(ns, "Test_Link"), nullptr);
    EXPECT_EQ(registry.associationProvider(ns, "Test_Item"), nullptr);

    // The array's registrations load alongside.
    const ProviderId* port = registry.instanceProvider("root/qel", "QEL_FCPort");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->describe(), "QEL_FCPortProviderModule:QEL_FCPortProvider");
    EXPECT_NE(registry.methodProvider("root/PG_Internal", "QEL_InternalCache", "GetSystemName"), nullptr);
}

TEST(ProviderRegistry, RefusesBrokenRegistrations)
{
    struct Case
    {
        const char* what;
        std::string mof;
        const char* message;
    };
    const Case cases[] = {
        {"unknown provider", capability("X1", "Ghost", "Test_Item", "{\"root/servertest\"}", "{2}"),
         "PG_ProviderCapabilities \"X1\" of provider \"ServerTestModule\":\"Ghost\": no PG_Provider \"Ghost\" is "
         "registered in module \"ServerTestModule\""},
        {"provider of an unknown module",
         "instance of PG_Provider { ProviderModuleName = \"Nowhere\"; Name = \"P\"; };",
         "PG_Provider \"P\" of module \"Nowhere\": no PG_ProviderModule named \"Nowhere\" is registered"},
        {"other interface", module("M1", "CMPI", "2.1.0", "x"),
         "PG_ProviderModule \"M1\": InterfaceType \"CMPI\" is not supported"},
        {"unknown interface version", module("M2", "C++Default", "9.9.9", "x"),
         "InterfaceVersion \"9.9.9\" is not one of 2.1.0, 2.2.0, 2.3.0, 2.5.0, 2.6.0, 2.9.0"},
        {"location with a directory", module("M3", "C++Default", "2.1.0", "../lib/x"),
         "Location \"../lib/x\" must be a library base name"},
        {"unknown class", capability("X2", "ItemProvider", "Test_Nope", "{\"root/servertest\"}", "{2}"),
         "class \"Test_Nope\" does not exist in namespace \"root/servertest\""},
        {"unknown namespace", capability("X3", "ItemProvider", "Test_Item", "{\"root/nowhere\"}", "{2}"),
         "namespace \"root/nowhere\" does not exist"},
        {"no namespace", capability("X4", "ItemProvider", "Test_Item", "{}", "{2}"),
         "property Namespaces must list at least one value"},
        {"indication provider", capability("X5", "ItemProvider", "Test_Item", "{\"root/servertest\"}", "{4}"),
         "ProviderType 4 is not supported by this server"},
        {"not a provider type", capability("X6", "ItemProvider", "Test_Item", "{\"root/servertest\"}", "{9}"),
         "ProviderType 9 is not a provider type"},
        {"association type on a plain class",
         capability("X7", "ItemProvider", "Test_Item", "{\"root/servertest\"}", "{3}"),
         "ProviderType 3 (association) needs an association class"},
        {"two instance providers", capability("X8", "LinkProvider", "Test_Item", "{\"root/servertest\"}", "{2}"),
         "class \"Test_Item\" in namespace \"root/servertest\" already has the instance provider "
         "ServerTestModule:ItemProvider"},
        {"unknown supported method",
         capability("X9", "NestedProvider", "Test_Nested", "{\"root/servertest\"}", "{5}",
                    "SupportedMethods = {\"Nope\"};"),
         "SupportedMethods names \"Nope\""},
    };
    for (const Case& c : cases)
    {
        std::string message = loadError(c.mof);
        EXPECT_NE(message.find("provider registration: "), std::string::npos) << c.what << ": " << message;
        EXPECT_NE(message.find(c.message), std::string::npos) << c.what << ": " << message;
    }
}

TEST(ProviderRegistry, RepositoryWithoutInteropNamespaceServesNothing)
{
    ClassRepository repository;
    MofCompiler(repository).compileString(
        "#pragma namespace(\"root/x\")\nQualifier Key : boolean = false, Scope(property);\n"
        "class X { [Key] string K; };",
        "x.mof");
    ProviderRegistry registry = ProviderRegistry::load(repository);
    EXPECT_TRUE(registry.providers().empty());
    EXPECT_EQ(registry.instanceProvider("root/x", "X"), nullptr);
}
