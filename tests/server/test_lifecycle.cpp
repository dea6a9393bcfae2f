// Provider lifecycle: modules loaded on first use, providers that cannot be
// loaded or initialized, terminate on stop, and a server that refuses to
// start on a broken schema or registration.
#include "ServerFixture.h"

#include <Server/core/ProviderManager.h>

#include <fstream>

using namespace Pegasus;
using namespace servertest;

namespace
{

class ProviderLifecycle : public ServerTest
{
protected:
    CIMInstance getItem(const char* id)
    {
        return cimom().getInstance(context, ns, item(id), true, false, false, CIMPropertyList());
    }
};

std::string writeTempMof(const std::string& name, const std::string& content)
{
    std::string path = ::testing::TempDir() + name;
    std::ofstream(path) << content;
    return path;
}

}  // namespace

TEST_F(ProviderLifecycle, ProvidersThatCannotBeUsedFailTheirRequestsOnly)
{
    setKnob("Test_InitFail.initialize", "fail");
    setKnob("Test_SelfCall.initialize", "self-call");  // refused, not deadlocked
    const std::string dir = providerDirectories()[0];
    const struct
    {
        const char* className;
        CIMStatusCode code;
        std::string message;
        std::string logLine;
    } cases[] = {
        {"Test_Missing", CIM_ERR_FAILED,
         "File \"libQELServerTestMissing.so\" was not found for provider module \"ServerTestMissingModule\".",
         "cannot create provider ServerTestMissingModule:MissingProvider"},
        {"Test_NoEntry", CIM_ERR_FAILED,
         "ProviderLoadFailure (" + dir +
             "/libQELServerTestNoEntry.so:NoEntryProvider):entry point not found.",
         "cannot create provider ServerTestNoEntryModule:NoEntryProvider"},
        {"Test_Refused", CIM_ERR_FAILED,
         "ProviderLoadFailure (" + dir +
             "/libQELServerTestProvider.so:RefusedProvider):provider is not a CIMProvider.",
         "cannot create provider ServerTestModule:RefusedProvider"},
        {"Test_InitFail", CIM_ERR_FAILED, "provider initialization failed",
         "initialization of provider ServerTestModule:InitFailProvider failed: cannot reach the array"},
        {"Test_SelfCall", CIM_ERR_FAILED, "provider initialization failed",
         "Provider ServerTestModule:SelfCallProvider was called back during its own initialization."},
        {"Test_WrongInterface", CIM_ERR_NOT_SUPPORTED, "Invalid provider interface.", ""},
    };
    for (const auto& c : cases)
    {
        // Twice: a failure is not remembered, the next request tries again.
        for (int attempt = 0; attempt < 2; ++attempt)
        {
            CIMException e =
                cimErrorOf([&] { cimom().enumerateInstanceNames(context, ns, c.className); });
            EXPECT_EQ(e.getCode(), c.code) << c.className;
            EXPECT_EQ(text(e.getMessage()), c.message) << c.className;
        }
        EXPECT_TRUE(c.logLine.empty() || log->contains(c.logLine)) << c.logLine;
        // Everything else is still served.
        EXPECT_EQ(getItem("b").getPropertyCount(), 4u) << c.className;
    }

    // The failed initializations were each followed by terminate().
    EXPECT_EQ(counter("Test_InitFail.initialize"), 2u);
    EXPECT_EQ(counter("Test_InitFail.terminate"), 2u);
    setKnob("Test_InitFail.initialize", "");
    EXPECT_EQ(cimom().enumerateInstanceNames(context, ns, "Test_InitFail").size(), 1u);
    EXPECT_EQ(counter("Test_InitFail.created"), 3u);
}

// Once-only initialize and terminate after the last request: the concurrency tests.
TEST_F(ProviderLifecycle, StopTerminatesWhatWasMadeAndANewStartLoadsAfresh)
{
    const ProviderId* itemProvider = server().registry().instanceProvider(ns, "Test_Item");
    EXPECT_FALSE(server().providers().isInitialized(*itemProvider));
    getItem("a");
    EXPECT_TRUE(server().providers().isInitialized(*itemProvider));
    server().stop();
    EXPECT_EQ(counter("Item.terminate"), 1u);
    EXPECT_EQ(counter("Nested.terminate"), 0u);  // never used, never made
    EXPECT_TRUE(log->contains("provider ServerTestModule:ItemProvider terminated"));
    EXPECT_THROW(server().dispatcher(), Exception);

    restart();
    getItem("a");
    EXPECT_EQ(counter("Item.initialize"), 2u);
}

TEST_F(ProviderLifecycle, BrokenSchemaOrRegistrationStopsTheStart)
{
    const std::string bad = writeTempMof("bad.mof", "class Broken {\n  string x\n};\n");
    const struct
    {
        const char* what;
        std::string mof;
        std::string message;
    } cases[] = {
        {"malformed MOF", bad, bad + ":3:1: "},
        {"broken registration",
         writeTempMof(
             "badreg.mof",
             "#pragma namespace(\"root/PG_InterOp\")\n"
             "instance of PG_Provider { ProviderModuleName = \"NoModule\"; Name = \"P\"; };\n"),
         "provider registration: PG_Provider \"P\" of module \"NoModule\": no PG_ProviderModule named \"NoModule\""},
    };
    for (const auto& c : cases)
    {
        try
        {
            restart({c.mof});
            ADD_FAILURE() << c.what << ": the server started";
        }
        catch (const Exception& e)
        {
            EXPECT_EQ(text(e.getMessage()).rfind(c.message, 0), 0u)
                << c.what << ": " << text(e.getMessage());
        }
        EXPECT_FALSE(server().isRunning()) << c.what;
        EXPECT_FALSE(server().submit([] {})) << c.what;
    }
}
