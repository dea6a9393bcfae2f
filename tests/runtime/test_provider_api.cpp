// Provider interfaces, provider exceptions, response handlers and
// CIMOMHandle, including a provider module loaded with dlopen().
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include "../common/test_runtime_support.h"
#include "runtime_doubles.h"

using namespace Pegasus;
using qeltest::RecordingHandler;
using qeltest::str;

namespace
{

TEST(ProviderExceptions, CodesAndMessages)
{
    // Stored as the base: this compiles only while each one derives from it.
    const std::pair<CIMOperationFailedException, CIMStatusCode> cases[] = {
        {CIMOperationFailedException("m"), CIM_ERR_FAILED},
        {CIMAccessDeniedException("m"), CIM_ERR_ACCESS_DENIED},
        {CIMInvalidParameterException("m"), CIM_ERR_INVALID_PARAMETER},
        {CIMInvalidClassException("m"), CIM_ERR_INVALID_CLASS},
        {CIMObjectNotFoundException("m"), CIM_ERR_NOT_FOUND},
        {CIMNotSupportedException("m"), CIM_ERR_NOT_SUPPORTED},
        {CIMObjectAlreadyExistsException("m"), CIM_ERR_ALREADY_EXISTS},
        {CIMPropertyNotFoundException("m"), CIM_ERR_NO_SUCH_PROPERTY},
        {CIMInvalidQueryException("m"), CIM_ERR_INVALID_QUERY},
        {CIMMethodNotFoundException("m"), CIM_ERR_METHOD_NOT_FOUND},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.first.getCode(), c.second);
        EXPECT_EQ(str(c.first.getMessage()), "m");  // the text unchanged
    }
}

TEST(ResponseHandlers, OneHandlerPartAndContext)
{
    RecordingHandler h;
    ResponseHandler& viaInstance = static_cast<InstanceResponseHandler&>(h);
    ResponseHandler& viaPath = static_cast<ObjectPathResponseHandler&>(h);
    EXPECT_EQ(&viaInstance, &viaPath);
    EXPECT_FALSE(h.context().contains(IdentityContainer::NAME));
    OperationContext ctx;
    ctx.insert(IdentityContainer("root"));
    viaPath.setContext(ctx);
    ctx.clear();  // the handler keeps its own copy
    EXPECT_TRUE(h.context().contains(IdentityContainer::NAME));
}

// Every CIMOMHandle operation and what an attached handle does with it:
// 'F' forwards it to the host, 'S' accepts it silently, 'U' refuses it.
struct HandleCall
{
    const char* name;
    char kind;
    std::function<void(CIMOMHandle&)> call;
};

std::vector<HandleCall> allHandleCalls()
{
    static const OperationContext ctx;
    static const CIMNamespaceName ns("root/qel");
    static const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    static const CIMPropertyList all;
    return {
        {"getClass", 'F',
         [](CIMOMHandle& h) { h.getClass(ctx, ns, "QEL_FCPort", false, true, false, all); }},
        {"getInstance", 'F',
         [](CIMOMHandle& h) { h.getInstance(ctx, ns, path, false, false, false, all); }},
        {"enumerateInstances", 'F',
         [](CIMOMHandle& h)
         { h.enumerateInstances(ctx, ns, "QEL_FCPort", true, false, false, false, all); }},
        {"enumerateInstanceNames", 'F',
         [](CIMOMHandle& h) { h.enumerateInstanceNames(ctx, ns, "QEL_FCPort"); }},
        {"modifyInstance", 'F',
         [](CIMOMHandle& h) { h.modifyInstance(ctx, ns, CIMInstance("QEL_FCPort"), false, all); }},
        {"associators", 'F',
         [](CIMOMHandle& h)
         { h.associators(ctx, ns, path, CIMName(), CIMName(), "", "", false, false, all); }},
        {"associatorNames", 'F',
         [](CIMOMHandle& h) { h.associatorNames(ctx, ns, path, CIMName(), CIMName(), "", ""); }},
        {"references", 'F',
         [](CIMOMHandle& h) { h.references(ctx, ns, path, CIMName(), "", false, false, all); }},
        {"referenceNames", 'F',
         [](CIMOMHandle& h) { h.referenceNames(ctx, ns, path, CIMName(), ""); }},
        {"invokeMethod", 'F',
         [](CIMOMHandle& h)
         {
             Array<CIMParamValue> out;
             h.invokeMethod(ctx, ns, path, "Reset", Array<CIMParamValue>(), out);
         }},
        {"enumerateClasses", 'U',
         [](CIMOMHandle& h) { h.enumerateClasses(ctx, ns, CIMName(), true, false, true, false); }},
        {"enumerateClassNames", 'U',
         [](CIMOMHandle& h) { h.enumerateClassNames(ctx, ns, CIMName(), true); }},
        {"createClass", 'U', [](CIMOMHandle& h) { h.createClass(ctx, ns, CIMClass("QEL_X")); }},
        {"modifyClass", 'U', [](CIMOMHandle& h) { h.modifyClass(ctx, ns, CIMClass("QEL_X")); }},
        {"deleteClass", 'U', [](CIMOMHandle& h) { h.deleteClass(ctx, ns, "QEL_X"); }},
        {"createInstance", 'U',
         [](CIMOMHandle& h) { h.createInstance(ctx, ns, CIMInstance("QEL_X")); }},
        {"deleteInstance", 'U', [](CIMOMHandle& h) { h.deleteInstance(ctx, ns, path); }},
        {"execQuery", 'U',
         [](CIMOMHandle& h) { h.execQuery(ctx, ns, "WQL", "SELECT * FROM QEL_FCPort"); }},
        {"getProperty", 'U', [](CIMOMHandle& h) { h.getProperty(ctx, ns, path, "Speed"); }},
        {"setProperty", 'U',
         [](CIMOMHandle& h) { h.setProperty(ctx, ns, path, "Speed", CIMValue(Uint64(1))); }},
        {"disallowProviderUnload", 'S', [](CIMOMHandle& h) { h.disallowProviderUnload(); }},
        {"allowProviderUnload", 'S', [](CIMOMHandle& h) { h.allowProviderUnload(); }},
        {"getResponseContext", 'S', [](CIMOMHandle& h) { h.getResponseContext(); }},
    };
}

// "<status name>: <message>" of the CIMException f throws; "" when none.
std::string failure(const std::function<void()>& f)
{
    try
    {
        f();
    }
    catch (const CIMException& e)
    {
        return std::string(cimStatusCodeToString(e.getCode())) + ": " + str(e.getMessage());
    }
    return "";
}

TEST(CIMOMHandleTest, DetachedFailsAttachedForwardsCopiesShareTheHost)
{
    auto host = std::make_shared<qeltest::RecordingHost>();
    CIMOMHandle handle(host);
    CIMOMHandle copy;
    copy = handle;
    for (auto& c : allHandleCalls())
    {
        SCOPED_TRACE(c.name);
        const size_t before = host->calls().size();
        const std::string refusal = "CIM_ERR_NOT_SUPPORTED: " + std::string(c.name) +
                                    " is not supported through this CIMOMHandle";
        EXPECT_EQ(failure([&] { c.call(copy); }), c.kind == 'U' ? refusal : "");
        ASSERT_EQ(host->calls().size(), before + (c.kind == 'F' ? 1 : 0));
        EXPECT_TRUE(c.kind != 'F' || host->calls().back() == c.name + std::string("@root/qel"));
    }

    // Results come back unchanged.
    OperationContext ctx;
    Array<CIMParamValue> in(2, CIMParamValue("X", CIMValue(true)));
    Array<CIMParamValue> out;
    EXPECT_TRUE(
        handle.invokeMethod(ctx, "root/qel", CIMObjectPath("QEL_X"), "Reset", in, out) ==
        CIMValue(Uint32(2)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(str(out[0].getParameterName()), "Method");

    // A detached handle fails every call.
    CIMOMHandle detached;
    for (auto& c : allHandleCalls())
        EXPECT_EQ(
            failure([&] { c.call(detached); }),
            "CIM_ERR_FAILED: CIMOMHandle is not attached to a CIM server")
            << c.name;
}

TEST(ProviderModule, LoadedAndDrivenAsByTheServer)
{
    std::unique_ptr<void, int (*)(void*)> module(
        dlopen(QEL_TRIVIAL_PROVIDER_PATH, RTLD_NOW), dlclose);
    ASSERT_TRUE(module) << dlerror();
    typedef CIMProvider* (*CreateFn)(const String&);
    CreateFn create = reinterpret_cast<CreateFn>(dlsym(module.get(), "PegasusCreateProvider"));
    ASSERT_NE(create, nullptr) << "entry point must have C linkage";
    EXPECT_EQ(create("QEL_Trivial"), nullptr);
    CIMProvider* provider = create("trivialPROVIDER");
    ASSERT_NE(provider, nullptr);
    // The server finds the interfaces from the CIMProvider pointer; both
    // share one CIMProvider part (a virtual base).
    CIMInstanceProvider* instances = dynamic_cast<CIMInstanceProvider*>(provider);
    CIMMethodProvider* methods = dynamic_cast<CIMMethodProvider*>(provider);
    ASSERT_NE(instances, nullptr);
    ASSERT_NE(methods, nullptr);
    EXPECT_EQ(static_cast<CIMProvider*>(instances), static_cast<CIMProvider*>(methods));
    EXPECT_EQ(dynamic_cast<CIMAssociationProvider*>(provider), nullptr);
    CIMOMHandle handle;
    provider->initialize(handle);
    OperationContext ctx;
    ctx.insert(IdentityContainer("operator1", "192.0.2.10"));
    const CIMObjectPath classRef(String(), "root/qel", "QEL_Trivial");
    RecordingHandler names;
    instances->enumerateInstanceNames(ctx, classRef, names);
    ASSERT_EQ(names.paths.size(), 1u);
    EXPECT_EQ(str(names.paths[0].toString()), "root/qel:QEL_Trivial.Name=\"only\"");
    EXPECT_EQ(names.processingCalls, 1);
    EXPECT_EQ(names.completeCalls, 1);
    EXPECT_EQ(
        failure([&]
                { instances->createInstance(ctx, classRef, CIMInstance("QEL_Trivial"), names); }),
        "CIM_ERR_NOT_SUPPORTED: TrivialProvider does not support createInstance.");
    RecordingHandler result;
    Array<CIMParamValue> in(1, CIMParamValue("text", CIMValue(String("hello"))));
    methods->invokeMethod(ctx, names.paths[0], "echo", in, result);
    EXPECT_TRUE(result.returnValue == CIMValue(Uint32(5)));
    ASSERT_EQ(result.outParams.size(), 2u);
    EXPECT_TRUE(result.outParams[0].getValue() == CIMValue(String("hello")));
    EXPECT_TRUE(result.outParams[1].getValue() == CIMValue(String("operator1")));
    provider->terminate();
}

}  // namespace
