// What a client gets when a provider fails or misuses its response handler.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

using namespace Pegasus;
using namespace servertest;

namespace {

using ProviderErrors = ServerTest;

struct Expected
{
    const char* mode;
    CIMStatusCode code;
    const char* message;
    bool logged;  // faults that are not CIM errors are logged
};

const Expected mappings[] = {
    {"throw-cim", CIM_ERR_NOT_FOUND, "gone", false},
    {"throw-traceable", CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", false},
    {"throw-pegasus", CIM_ERR_FAILED, "type mismatch", true},
    {"throw-std", CIM_ERR_FAILED, "boom", true},
    {"throw-int", CIM_ERR_FAILED, "Unknown error.", true},
    {"throw-badutf8", CIM_ERR_FAILED, "bad ? byte", true},
};

}  // namespace

TEST_F(ProviderErrors, EveryKindOfExceptionBecomesACIMErrorInEveryOperation)
{
    Array<CIMParamValue> out;
    CIMInstance modified("Test_Item");
    modified.setPath(item("a"));
    CIMInstance fresh("Test_Item");
    fresh.addProperty(CIMProperty("Id", CIMValue(String("z"))));
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"Item.getInstance", [&] { dispatcher().getInstance(context, ns, item("a")); }},
        {"Item.enumerateInstances", [&] { dispatcher().enumerateInstances(context, ns, "Test_Item"); }},
        {"Item.enumerateInstanceNames", [&] { dispatcher().enumerateInstanceNames(context, ns, "Test_Item"); }},
        {"Item.modifyInstance", [&] { dispatcher().modifyInstance(context, ns, modified); }},
        {"Item.createInstance", [&] { dispatcher().createInstance(context, ns, fresh); }},
        {"Item.deleteInstance", [&] { dispatcher().deleteInstance(context, ns, item("a")); }},
        {"Item.invokeMethod", [&] { dispatcher().invokeMethod(context, ns, item("a"), "WhoAmI", {}, out); }},
        {"Link.associators", [&] { dispatcher().associators(context, ns, item("a")); }},
        {"Link.associatorNames", [&] { dispatcher().associatorNames(context, ns, item("a")); }},
        {"Link.references", [&] { dispatcher().references(context, ns, item("a")); }},
        {"Link.referenceNames", [&] { dispatcher().referenceNames(context, ns, item("a")); }},
    };
    for (const auto& operation : operations)
    {
        for (const Expected& expected : mappings)
        {
            servertest::reset();
            setKnob(operation.first, expected.mode);
            CIMException e = cimErrorOf(operation.second);
            EXPECT_EQ(e.getCode(), expected.code) << operation.first << " " << expected.mode;
            EXPECT_EQ(text(e.getMessage()), expected.message) << operation.first << " " << expected.mode;
        }
        // The server keeps serving the operation once the fault is gone.
        setKnob(operation.first, "");
        EXPECT_NO_THROW(operation.second()) << operation.first;
    }
}

TEST_F(ProviderErrors, NonCIMFaultsAreLoggedWithTheProviderName)
{
    for (const Expected& expected : mappings)
    {
        log.reset();  // the old capture puts its predecessor back when it goes
        log = std::make_unique<LogCapture>();
        std::string id = expected.mode;
        cimErrorOf([&] { dispatcher().getInstance(context, ns, item(id.c_str())); });
        EXPECT_EQ(log->contains("provider ServerTestModule:ItemProvider threw a non-CIM exception: " +
                                std::string(expected.message)),
                  expected.logged)
            << expected.mode;
    }
}

TEST_F(ProviderErrors, GetInstanceHandlerMisuse)
{
    struct Case
    {
        const char* id;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {"two", CIM_ERR_FAILED, "Too many objects delivered."},
        {"none", CIM_ERR_FAILED, "Too few objects delivered."},
        // complete() with nothing recorded NOT_FOUND before it threw; the
        // provider swallowed the exception, the status stands.
        {"none-caught", CIM_ERR_NOT_FOUND, ""},
        // Never completed: nothing left for the response.
        {"no-complete", CIM_ERR_FAILED, "Too few objects delivered."},
        {"uninit", CIM_ERR_FAILED, "The object is not initialized."},
        {"after-complete", CIM_ERR_FAILED, "An object was delivered after complete()."},
        {"unknown-id", CIM_ERR_NOT_FOUND, "no item unknown-id"},
    };
    for (const Case& c : cases)
    {
        CIMException e = cimErrorOf([&] { dispatcher().getInstance(context, ns, item(c.id)); });
        EXPECT_EQ(e.getCode(), c.code) << c.id;
        EXPECT_EQ(text(e.getMessage()), c.message) << c.id;
    }

    // An instance delivered without keys is named by the request.
    CIMInstance keyless = dispatcher().getInstance(context, ns, item("keyless"));
    EXPECT_EQ(text(keyless.getPath().toString()), "//cimhost/root/servertest:Test_Item.Id=\"keyless\"");
}

TEST_F(ProviderErrors, EnumerationHandlerMisuse)
{
    // Objects leave in batches of 100; without complete() the rest is lost.
    struct Case
    {
        const char* mode;
        Uint32 delivered;
    };
    const Case cases[] = {{"count:250", 250}, {"no-complete:250", 200}, {"no-complete:99", 0},
                          {"no-complete:100", 100}};
    for (const Case& c : cases)
    {
        setKnob("Item.enumerateInstances", c.mode);
        setKnob("SubItem.enumerateInstances", "not-supported");
        EXPECT_EQ(dispatcher().enumerateInstances(context, ns, "Test_Item").size(), c.delivered) << c.mode;
    }

    setKnob("Item.enumerateInstances", "uninit");
    EXPECT_EQ(text(cimErrorOf([&] { dispatcher().enumerateInstances(context, ns, "Test_Item"); }).getMessage()),
              "The object is not initialized.");
    setKnob("Item.enumerateInstanceNames", "uninit");
    EXPECT_EQ(text(cimErrorOf([&] { dispatcher().enumerateInstanceNames(context, ns, "Test_Item"); }).getMessage()),
              "The object is not initialized.");
}

TEST_F(ProviderErrors, MethodResultHandlerMisuse)
{
    Array<CIMParamValue> out;
    CIMException null = cimErrorOf([&] { dispatcher().invokeMethod(context, ns, item("a"), "NullReturn", {}, out); });
    EXPECT_EQ(null.getCode(), CIM_ERR_FAILED);
    EXPECT_EQ(text(null.getMessage()), "The object is not initialized.");

    // No value delivered, or not completed: the client gets a null value.
    EXPECT_TRUE(dispatcher().invokeMethod(context, ns, item("a"), "NoReturn", {}, out).isNull());
    EXPECT_TRUE(dispatcher().invokeMethod(context, ns, item("a"), "NoComplete", {}, out).isNull());
}
