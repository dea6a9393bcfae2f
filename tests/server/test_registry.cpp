// Provider registrations: what the registry serves, and every broken
// registration stopping the load with a message naming the instance.
#include "ServerFixture.h"

#include <Server/core/ProviderRegistry.h>
#include <Server/mof/MofCompiler.h>
#include <Server/repository/ClassRepository.h>

using namespace Pegasus;
using namespace servertest;

namespace
{

// The schema and the test schema, plus one more MOF text in root/PG_InterOp.
std::unique_ptr<ClassRepository> repositoryWith(const std::string& registrations)
{
    auto repository = std::make_unique<ClassRepository>();
    MofCompiler compiler(*repository);
    compiler.compileFile(schemaRoot());
    compiler.compileFile(testSchema());
    if (!registrations.empty())
        compiler.compileString(
            "#pragma namespace(\"root/PG_InterOp\")\n" + registrations, "extra.mof");
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

// A capability "X1" of a provider of ServerTestModule in root/servertest.
std::string capability(
    const std::string& provider, const std::string& cls, const std::string& types,
    const std::string& extra = "")
{
    return "instance of PG_ProviderCapabilities { ProviderModuleName = \"ServerTestModule\"; ProviderName = \"" +
           provider + "\"; CapabilityID = \"X1\"; ClassName = \"" + cls +
           "\"; Namespaces = {\"root/servertest\"}; ProviderType = " + types + "; " + extra +
           "};\n";
}

}  // namespace

// Which provider serves what is proven through the dispatcher; here: names
// are looked up without regard to case.
TEST(ProviderRegistry, LooksUpClassesAndMethodsWithoutRegardToCase)
{
    auto repository = repositoryWith("");
    ProviderRegistry registry = ProviderRegistry::load(*repository);
    const ProviderId* item = registry.instanceProvider("root/servertest", "test_item");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->describe(), "ServerTestModule:ItemProvider");
    EXPECT_EQ(registry.methodProvider("root/servertest", "TEST_ITEM", "ping"), item);
}

TEST(ProviderRegistry, RefusesBrokenRegistrations)
{
    const struct
    {
        const char* what;
        std::string mof;
        const char* message;
    } cases[] = {
        {"unknown provider", capability("Ghost", "Test_Item", "{2}"),
         "PG_ProviderCapabilities \"X1\" of provider \"ServerTestModule\":\"Ghost\": no PG_Provider \"Ghost\" is "
         "registered in module \"ServerTestModule\""},
        {"provider of an unknown module",
         "instance of PG_Provider { ProviderModuleName = \"Nowhere\"; Name = \"P\"; };",
         "PG_Provider \"P\" of module \"Nowhere\": no PG_ProviderModule named \"Nowhere\" is registered"},
        {"other interface",
         "instance of PG_ProviderModule { Name = \"M1\"; Vendor = \"QEL\"; Version = \"1\"; InterfaceType = \"CMPI\"; "
         "InterfaceVersion = \"2.1.0\"; Location = \"x\"; };",
         "PG_ProviderModule \"M1\": InterfaceType \"CMPI\" is not supported"},
        {"unknown class", capability("ItemProvider", "Test_Nope", "{2}"),
         "class \"Test_Nope\" does not exist in namespace \"root/servertest\""},
        {"indication provider", capability("ItemProvider", "Test_Item", "{4}"),
         "ProviderType 4 is not supported by this server"},
        {"two instance providers", capability("LinkProvider", "Test_Item", "{2}"),
         "class \"Test_Item\" in namespace \"root/servertest\" already has the instance provider "
         "ServerTestModule:ItemProvider"},
        {"unknown supported method",
         capability("NestedProvider", "Test_Nested", "{5}", "SupportedMethods = {\"Nope\"};"),
         "SupportedMethods names \"Nope\""},
    };
    for (const auto& c : cases)
    {
        std::string message = loadError(c.mof);
        EXPECT_EQ(message.rfind("provider registration: ", 0), 0u) << c.what << ": " << message;
        EXPECT_NE(message.find(c.message), std::string::npos) << c.what << ": " << message;
    }
}

namespace
{

BuiltInProvider builtIn(
    const char* module, const char* ns, const char* cls, std::vector<Uint16> types,
    const char* provider = "BuiltIn")
{
    BuiltInProvider b;
    b.moduleName = module;
    b.providerName = provider;
    b.capabilities.push_back(BuiltInProvider::Capability{ns, cls, std::move(types)});
    b.create = []() -> CIMProvider* { return nullptr; };
    return b;
}

}  // namespace

// A provider compiled into the server is registered after the MOF
// registrations and checked as they are.
TEST(ProviderRegistry, RegistersBuiltInProvidersWithTheSameChecks)
{
    auto repository = repositoryWith("");
    ProviderRegistry registry = ProviderRegistry::load(
        *repository, CIMNamespaceName(ProviderRegistry::defaultInteropNamespace),
        {builtIn("InsideModule", "root/servertest", "Test_Lifecycle", {2, 5})});
    const ProviderId* inside = registry.instanceProvider("root/servertest", "test_lifecycle");
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(inside->describe(), "InsideModule:BuiltIn");
    EXPECT_TRUE(static_cast<bool>(inside->create));
    EXPECT_EQ(inside->location.size(), 0u);
    EXPECT_EQ(registry.methodProvider("root/servertest", "Test_Lifecycle", "anything"), inside);
    // MOF-registered providers are still there, with no factory.
    const ProviderId* item = registry.instanceProvider("root/servertest", "Test_Item");
    ASSERT_NE(item, nullptr);
    EXPECT_FALSE(static_cast<bool>(item->create));

    BuiltInProvider unnamed = builtIn("InsideModule", "root/servertest", "Test_Lifecycle", {2});
    unnamed.create = nullptr;
    const struct
    {
        const char* what;
        std::vector<BuiltInProvider> builtIns;
        const char* message;
    } cases[] = {
        {"unknown namespace",
         {builtIn("M", "root/nowhere", "Test_Item", {2})},
         "built-in provider \"M\":\"BuiltIn\": namespace \"root/nowhere\" does not exist"},
        {"unknown class",
         {builtIn("M", "root/servertest", "Test_Nope", {2})},
         "class \"Test_Nope\" does not exist in namespace \"root/servertest\""},
        {"no provider type",
         {builtIn("M", "root/servertest", "Test_Lifecycle", {})},
         "ProviderType lists no provider type"},
        {"association of a plain class",
         {builtIn("M", "root/servertest", "Test_Lifecycle", {3})},
         "ProviderType 3 (association) needs an association class"},
        {"class a module serves",
         {builtIn("M", "root/servertest", "Test_Item", {2})},
         "class \"Test_Item\" in namespace \"root/servertest\" already has the instance provider "
         "ServerTestModule:ItemProvider"},
        {"name of a registered module",
         {builtIn("ServerTestModule", "root/servertest", "Test_Lifecycle", {2})},
         "a PG_ProviderModule of this name is registered too"},
        {"the same provider twice",
         {builtIn("M", "root/servertest", "Test_Lifecycle", {2}),
          builtIn("M", "root/servertest", "Test_Nested", {5})},
         "built-in provider \"M\":\"BuiltIn\": this provider is registered twice"},
        {"no factory", {unnamed}, "needs a module name, a provider name and a factory"},
    };
    for (const auto& c : cases)
    {
        std::string message = "(loaded)";
        try
        {
            ProviderRegistry::load(
                *repository, CIMNamespaceName(ProviderRegistry::defaultInteropNamespace),
                c.builtIns);
        }
        catch (const Exception& e)
        {
            message = text(e.getMessage());
        }
        EXPECT_EQ(message.rfind("provider registration: built-in provider ", 0), 0u)
            << c.what << ": " << message;
        EXPECT_NE(message.find(c.message), std::string::npos) << c.what << ": " << message;
    }
}
