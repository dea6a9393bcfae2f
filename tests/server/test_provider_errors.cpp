// What a client gets when a provider fails or misuses its response handler.
#include "ServerFixture.h"

using namespace Pegasus;
using namespace servertest;

using ProviderErrors = ServerTest;

TEST_F(ProviderErrors, EveryKindOfExceptionBecomesACIMErrorInEveryOperationAndFaultsAreLogged)
{
    const struct
    {
        const char* mode;
        CIMStatusCode code;
        const char* message;
        bool logged;  // faults that are not CIM errors are logged
    } mappings[] = {
        {"throw-cim", CIM_ERR_NOT_FOUND, "gone", false},
        {"throw-traceable", CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", false},
        {"throw-pegasus", CIM_ERR_FAILED, "type mismatch", true},
        {"throw-std", CIM_ERR_FAILED, "boom", true},
        {"throw-int", CIM_ERR_FAILED, "Unknown error.", true},
        {"throw-badutf8", CIM_ERR_FAILED, "bad ? byte", true},
    };
    Array<CIMParamValue> out;
    const CIMPropertyList all;
    CIMInstance modified("Test_Item");
    modified.setPath(item("a"));
    CIMInstance fresh("Test_Item");
    fresh.addProperty(CIMProperty("Id", CIMValue(String("z"))));
    const std::pair<std::string, std::function<void()>> operations[] = {
        {"Item.getInstance",
         [&] { cimom().getInstance(context, ns, item("a"), true, false, false, all); }},
        {"Item.enumerateInstances", [&]
         { cimom().enumerateInstances(context, ns, "Test_Item", true, true, false, false, all); }},
        {"Item.enumerateInstanceNames",
         [&] { cimom().enumerateInstanceNames(context, ns, "Test_Item"); }},
        {"Item.modifyInstance", [&] { cimom().modifyInstance(context, ns, modified, true, all); }},
        {"Item.createInstance", [&] { cimom().createInstance(context, ns, fresh); }},
        {"Item.deleteInstance", [&] { cimom().deleteInstance(context, ns, item("a")); }},
        {"Item.invokeMethod",
         [&] { cimom().invokeMethod(context, ns, item("a"), "WhoAmI", {}, out); }},
        {"Link.associators",
         [&] { cimom().associators(context, ns, item("a"), {}, {}, "", "", false, false, all); }},
        {"Link.associatorNames",
         [&] { cimom().associatorNames(context, ns, item("a"), {}, {}, "", ""); }},
        {"Link.references",
         [&] { cimom().references(context, ns, item("a"), {}, "", false, false, all); }},
        {"Link.referenceNames", [&] { cimom().referenceNames(context, ns, item("a"), {}, ""); }},
    };
    for (const auto& operation : operations)
    {
        const std::string provider =
            "ServerTestModule:" + operation.first.substr(0, operation.first.find('.'));
        for (const auto& expected : mappings)
        {
            SCOPED_TRACE(operation.first + " " + expected.mode);
            servertest::reset();
            log.reset();  // the old capture puts its predecessor back when it goes
            log = std::make_unique<LogCapture>();
            setKnob(operation.first, expected.mode);
            CIMException e = cimErrorOf(operation.second);
            EXPECT_EQ(e.getCode(), expected.code);
            EXPECT_EQ(text(e.getMessage()), expected.message);
            EXPECT_EQ(
                log->contains(
                    "provider " + provider +
                    "Provider threw a non-CIM exception: " + expected.message),
                expected.logged);
        }
        // The server keeps serving the operation once the fault is gone.
        setKnob(operation.first, "");
        EXPECT_NO_THROW(operation.second()) << operation.first;
    }
}

TEST_F(ProviderErrors, HandlerMisuseIsACIMError)
{
    Array<CIMParamValue> out;
    auto get = [&](const char* id)
    {
        return [this, id]
        { cimom().getInstance(context, ns, item(id), true, false, false, CIMPropertyList()); };
    };
    const struct
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
        const char* message;
    } cases[] = {
        {"two", get("two"), CIM_ERR_FAILED, "Too many objects delivered."},
        {"none", get("none"), CIM_ERR_FAILED, "Too few objects delivered."},
        // complete() with nothing recorded NOT_FOUND before it threw; the
        // provider swallowed the exception, the status stands.
        {"none-caught", get("none-caught"), CIM_ERR_NOT_FOUND, ""},
        // Never completed: nothing left for the response.
        {"no-complete", get("no-complete"), CIM_ERR_FAILED, "Too few objects delivered."},
        {"uninit", get("uninit"), CIM_ERR_FAILED, "The object is not initialized."},
        {"after-complete", get("after-complete"), CIM_ERR_FAILED,
         "An object was delivered after complete()."},
        {"uninit in enumeration",
         [&]
         {
             setKnob("Item.enumerateInstances", "uninit");
             cimom().enumerateInstances(
                 context, ns, "Test_Item", true, true, false, false, CIMPropertyList());
         },
         CIM_ERR_FAILED, "The object is not initialized."},
        {"uninit name",
         [&]
         {
             setKnob("Item.enumerateInstanceNames", "uninit");
             cimom().enumerateInstanceNames(context, ns, "Test_Item");
         },
         CIM_ERR_FAILED, "The object is not initialized."},
        {"null return value",
         [&] { cimom().invokeMethod(context, ns, item("a"), "NullReturn", {}, out); },
         CIM_ERR_FAILED, "The object is not initialized."},
    };
    for (const auto& c : cases)
    {
        servertest::reset();
        CIMException e = cimErrorOf(c.call);
        EXPECT_EQ(e.getCode(), c.code) << c.what;
        EXPECT_EQ(text(e.getMessage()), c.message) << c.what;
    }

    // An instance delivered without keys is named by the request.
    CIMInstance keyless =
        cimom().getInstance(context, ns, item("keyless"), true, false, false, CIMPropertyList());
    EXPECT_EQ(
        text(keyless.getPath().toString()), "//cimhost/root/servertest:Test_Item.Id=\"keyless\"");
    // No value delivered, or not completed: the client gets a null value.
    EXPECT_TRUE(cimom().invokeMethod(context, ns, item("a"), "NoReturn", {}, out).isNull());
    EXPECT_TRUE(cimom().invokeMethod(context, ns, item("a"), "NoComplete", {}, out).isNull());
}

TEST_F(ProviderErrors, EnumerationsLeaveInBatchesAndLoseTheRestWithoutComplete)
{
    // Objects leave in batches of 100.
    setKnob("SubItem.enumerateInstances", "not-supported");
    for (const auto& c :
         {std::make_pair("count:250", 250u), std::make_pair("no-complete:250", 200u),
          std::make_pair("no-complete:99", 0u), std::make_pair("no-complete:100", 100u)})
    {
        setKnob("Item.enumerateInstances", c.first);
        EXPECT_EQ(
            cimom()
                .enumerateInstances(
                    context, ns, "Test_Item", true, true, false, false, CIMPropertyList())
                .size(),
            c.second)
            << c.first;
    }
}
