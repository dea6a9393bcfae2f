// Provider interfaces, provider exceptions, response handlers and
// CIMOMHandle, including a provider module loaded with dlopen().
#include <dlfcn.h>
#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>
#include "../common/test_runtime_support.h"
#include "fake_host.h"
#include "recording_handlers.h"

using namespace Pegasus;
using qeltest::RecordingHandler;
using qeltest::RecordingHost;
using qeltest::str;

namespace
{

// The shape of a port provider: instance and method interfaces together.
class PortLikeProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    explicit PortLikeProvider(int* destroyed) : _destroyed(destroyed) {}
    ~PortLikeProvider() override { ++*_destroyed; }

    void initialize(CIMOMHandle& cimom) override { handle = cimom; }
    void terminate() override { delete this; }

    void getInstance(const OperationContext&, const CIMObjectPath&,
                     const Boolean, const Boolean, const CIMPropertyList&,
                     InstanceResponseHandler&) override {}
    void enumerateInstances(const OperationContext&, const CIMObjectPath&,
                            const Boolean, const Boolean,
                            const CIMPropertyList&,
                            InstanceResponseHandler&) override {}
    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&,
                                ObjectPathResponseHandler&) override {}
    void modifyInstance(const OperationContext&, const CIMObjectPath&,
                        const CIMInstance&, const Boolean,
                        const CIMPropertyList&, ResponseHandler&) override {}
    void createInstance(const OperationContext&, const CIMObjectPath&,
                        const CIMInstance&,
                        ObjectPathResponseHandler&) override {}
    void deleteInstance(const OperationContext&, const CIMObjectPath&,
                        ResponseHandler&) override {}
    void invokeMethod(const OperationContext&, const CIMObjectPath&,
                      const CIMName&, const Array<CIMParamValue>&,
                      MethodResultResponseHandler&) override {}

    CIMOMHandle handle;

private:
    int* _destroyed;
};

TEST(ProviderInterfaces, OneProviderPartReachedFromEveryInterface)
{
    int destroyed = 0;
    PortLikeProvider* concrete = new PortLikeProvider(&destroyed);
    // References: no null checks in the conversions.
    CIMInstanceProvider& asInstance = *concrete;
    CIMMethodProvider& asMethod = *concrete;
    CIMProvider& viaInstance = asInstance;
    CIMProvider& viaMethod = asMethod;
    CIMProvider& viaConcrete = *concrete;  // unambiguous: the base is virtual
    EXPECT_EQ(&viaInstance, &viaMethod);
    EXPECT_EQ(&viaConcrete, &viaInstance);

    // The server finds the interfaces from the CIMProvider pointer.
    CIMProvider* plain = &viaConcrete;
    EXPECT_EQ(dynamic_cast<CIMInstanceProvider*>(plain), &asInstance);
    EXPECT_EQ(dynamic_cast<CIMMethodProvider*>(plain), &asMethod);
    EXPECT_EQ(dynamic_cast<CIMAssociationProvider*>(plain), nullptr);

    CIMOMHandle handle;
    plain->initialize(handle);
    plain->terminate();  // deletes through the virtual destructor
    EXPECT_EQ(destroyed, 1);
}

TEST(ProviderExceptions, CodesAndMessages)
{
    struct Case
    {
        std::function<void()> raise;
        CIMStatusCode code;
    };
    const std::vector<Case> cases = {
        {[] { throw CIMOperationFailedException("m"); }, CIM_ERR_FAILED},
        {[] { throw CIMAccessDeniedException("m"); }, CIM_ERR_ACCESS_DENIED},
        {[] { throw CIMInvalidParameterException("m"); },
         CIM_ERR_INVALID_PARAMETER},
        {[] { throw CIMInvalidClassException("m"); }, CIM_ERR_INVALID_CLASS},
        {[] { throw CIMObjectNotFoundException("m"); }, CIM_ERR_NOT_FOUND},
        {[] { throw CIMNotSupportedException("m"); }, CIM_ERR_NOT_SUPPORTED},
        {[] { throw CIMObjectAlreadyExistsException("m"); },
         CIM_ERR_ALREADY_EXISTS},
        {[] { throw CIMPropertyNotFoundException("m"); },
         CIM_ERR_NO_SUCH_PROPERTY},
        {[] { throw CIMInvalidQueryException("m"); }, CIM_ERR_INVALID_QUERY},
        {[] { throw CIMMethodNotFoundException("m"); },
         CIM_ERR_METHOD_NOT_FOUND},
    };
    for (const auto& c : cases)
    {
        try
        {
            c.raise();
            ADD_FAILURE() << "nothing thrown";
        }
        catch (const CIMOperationFailedException& e)
        {
            // Every one is a CIMException carrying the text unchanged.
            const CIMException& asCim = e;
            EXPECT_EQ(asCim.getCode(), c.code);
            EXPECT_EQ(str(asCim.getMessage()), "m");
        }
    }
}

TEST(ResponseHandlers, OneHandlerPartAndContext)
{
    RecordingHandler h;
    InstanceResponseHandler& ih = h;
    ObjectPathResponseHandler& ph = h;
    ResponseHandler& viaInstance = ih;
    ResponseHandler& viaPath = ph;
    EXPECT_EQ(&viaInstance, &viaPath);
    viaInstance.processing();
    viaPath.complete();
    EXPECT_EQ(h.processingCalls, 1);
    EXPECT_EQ(h.completeCalls, 1);

    EXPECT_FALSE(h.context().contains(IdentityContainer::NAME));
    OperationContext ctx;
    ctx.insert(IdentityContainer("root"));
    viaPath.setContext(ctx);
    ctx.clear();  // the handler keeps its own copy
    EXPECT_TRUE(h.context().contains(IdentityContainer::NAME));
}

// Every CIMOMHandle operation, as (name, call) pairs.
std::vector<std::pair<std::string, std::function<void(CIMOMHandle&)>>>
allHandleCalls()
{
    static const OperationContext ctx;
    static const CIMNamespaceName ns("root/qel");
    static const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    static const CIMPropertyList all;
    return {
        {"getClass", [](CIMOMHandle& h) {
             h.getClass(ctx, ns, "QEL_FCPort", false, true, false, all); }},
        {"getInstance", [](CIMOMHandle& h) {
             h.getInstance(ctx, ns, path, false, false, false, all); }},
        {"enumerateInstances", [](CIMOMHandle& h) {
             h.enumerateInstances(ctx, ns, "QEL_FCPort", true, false, false,
                                  false, all); }},
        {"enumerateInstanceNames", [](CIMOMHandle& h) {
             h.enumerateInstanceNames(ctx, ns, "QEL_FCPort"); }},
        {"modifyInstance", [](CIMOMHandle& h) {
             h.modifyInstance(ctx, ns, CIMInstance("QEL_FCPort"), false, all); }},
        {"associators", [](CIMOMHandle& h) {
             h.associators(ctx, ns, path, CIMName(), CIMName(), "", "", false,
                           false, all); }},
        {"associatorNames", [](CIMOMHandle& h) {
             h.associatorNames(ctx, ns, path, CIMName(), CIMName(), "", ""); }},
        {"references", [](CIMOMHandle& h) {
             h.references(ctx, ns, path, CIMName(), "", false, false, all); }},
        {"referenceNames", [](CIMOMHandle& h) {
             h.referenceNames(ctx, ns, path, CIMName(), ""); }},
        {"invokeMethod", [](CIMOMHandle& h) {
             Array<CIMParamValue> out;
             h.invokeMethod(ctx, ns, path, "Reset",
                            Array<CIMParamValue>(), out); }},
        {"enumerateClasses", [](CIMOMHandle& h) {
             h.enumerateClasses(ctx, ns, CIMName(), true, false, true, false); }},
        {"enumerateClassNames", [](CIMOMHandle& h) {
             h.enumerateClassNames(ctx, ns, CIMName(), true); }},
        {"createClass", [](CIMOMHandle& h) {
             h.createClass(ctx, ns, CIMClass("QEL_X")); }},
        {"modifyClass", [](CIMOMHandle& h) {
             h.modifyClass(ctx, ns, CIMClass("QEL_X")); }},
        {"deleteClass", [](CIMOMHandle& h) {
             h.deleteClass(ctx, ns, "QEL_X"); }},
        {"createInstance", [](CIMOMHandle& h) {
             h.createInstance(ctx, ns, CIMInstance("QEL_X")); }},
        {"deleteInstance", [](CIMOMHandle& h) {
             h.deleteInstance(ctx, ns, path); }},
        {"execQuery", [](CIMOMHandle& h) {
             h.execQuery(ctx, ns, "WQL", "SELECT * FROM QEL_FCPort"); }},
        {"getProperty", [](CIMOMHandle& h) {
             h.getProperty(ctx, ns, path, "Speed"); }},
        {"setProperty", [](CIMOMHandle& h) {
             h.setProperty(ctx, ns, path, "Speed", CIMValue(Uint64(1))); }},
        {"disallowProviderUnload",
         [](CIMOMHandle& h) { h.disallowProviderUnload(); }},
        {"allowProviderUnload",
         [](CIMOMHandle& h) { h.allowProviderUnload(); }},
        {"getResponseContext",
         [](CIMOMHandle& h) { h.getResponseContext(); }},
    };
}

TEST(CIMOMHandleTest, DetachedHandleFailsEveryCall)
{
    CIMOMHandle detached;
    for (auto& call : allHandleCalls())
    {
        SCOPED_TRACE(call.first);
        try
        {
            call.second(detached);
            ADD_FAILURE() << "no exception";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_FAILED);
            EXPECT_EQ(str(e.getMessage()),
                      "CIMOMHandle is not attached to a CIM server");
        }
    }
}

TEST(CIMOMHandleTest, AttachedHandleForwardsAndCopiesShareTheHost)
{
    auto host = std::make_shared<RecordingHost>();
    CIMOMHandle handle(host);
    CIMOMHandle copy;
    copy = handle;
    const std::vector<std::string> forwarded = {
        "getClass", "getInstance", "enumerateInstances",
        "enumerateInstanceNames", "modifyInstance", "associators",
        "associatorNames", "references", "referenceNames", "invokeMethod"};
    for (auto& call : allHandleCalls())
    {
        SCOPED_TRACE(call.first);
        bool isForwarded = std::find(forwarded.begin(), forwarded.end(),
                                     call.first) != forwarded.end();
        bool hostDefaultsSilently = call.first == "disallowProviderUnload" ||
            call.first == "allowProviderUnload" ||
            call.first == "getResponseContext";
        size_t before = host->calls().size();
        if (isForwarded || hostDefaultsSilently)
        {
            EXPECT_NO_THROW(call.second(copy));
            EXPECT_EQ(host->calls().size(), before + (isForwarded ? 1 : 0));
            if (isForwarded)
            {
                EXPECT_EQ(host->calls().back(), call.first + "@root/qel");
            }
            continue;
        }
        try
        {
            call.second(copy);
            ADD_FAILURE() << "no exception";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
            EXPECT_EQ(str(e.getMessage()),
                      call.first + " is not supported through this CIMOMHandle");
        }
    }

    // Results come back unchanged.
    OperationContext ctx;
    Array<CIMParamValue> in(2, CIMParamValue("X", CIMValue(true)));
    Array<CIMParamValue> out;
    CIMValue rv = handle.invokeMethod(ctx, "root/qel", CIMObjectPath("QEL_X"),
                                      "Reset", in, out);
    EXPECT_TRUE(rv == CIMValue(Uint32(2)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(str(out[0].getParameterName()), "Method");
    EXPECT_EQ(str(handle.getClass(ctx, "root/qel", "QEL_FCPort", false, true,
                                  false, CIMPropertyList())
                      .getClassName()
                      .getString()),
              "QEL_FCPort");
}

// The module handle is closed again at the end of the test.
struct Module
{
    void* handle;
    explicit Module(const char* path) : handle(dlopen(path, RTLD_NOW)) {}
    ~Module()
    {
        if (handle)
            dlclose(handle);
    }
};

TEST(ProviderModule, LoadedAndDrivenAsByTheServer)
{
    Module module(QEL_TRIVIAL_PROVIDER_PATH);
    ASSERT_NE(module.handle, nullptr) << dlerror();
    typedef CIMProvider* (*CreateFn)(const String&);
    CreateFn create =
        reinterpret_cast<CreateFn>(dlsym(module.handle, "PegasusCreateProvider"));
    ASSERT_NE(create, nullptr) << "entry point must have C linkage";

    EXPECT_EQ(create("QEL_Trivial"), nullptr);
    EXPECT_EQ(create(""), nullptr);
    CIMProvider* provider = create("trivialPROVIDER");
    ASSERT_NE(provider, nullptr);
    CIMInstanceProvider* instances = dynamic_cast<CIMInstanceProvider*>(provider);
    CIMMethodProvider* methods = dynamic_cast<CIMMethodProvider*>(provider);
    ASSERT_NE(instances, nullptr);
    ASSERT_NE(methods, nullptr);
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

    RecordingHandler one;
    instances->getInstance(ctx, names.paths[0], false, false, CIMPropertyList(),
                           one);
    ASSERT_EQ(one.instances.size(), 1u);
    EXPECT_EQ(one.instances[0].getPropertyCount(), 1u);

    RecordingHandler missing;
    EXPECT_THROW(instances->getInstance(
                     ctx, CIMObjectPath("root/qel:QEL_Trivial.Name=\"other\""),
                     false, false, CIMPropertyList(), missing),
                 CIMObjectNotFoundException);

    RecordingHandler created;
    try
    {
        instances->createInstance(ctx, classRef, CIMInstance("QEL_Trivial"),
                                  created);
        ADD_FAILURE() << "createInstance must be refused";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
        EXPECT_EQ(str(e.getMessage()),
                  "TrivialProvider does not support createInstance.");
    }

    RecordingHandler result;
    Array<CIMParamValue> in;
    in.append(CIMParamValue("text", CIMValue(String("hello"))));
    methods->invokeMethod(ctx, names.paths[0], "echo", in, result);
    EXPECT_TRUE(result.returnValue == CIMValue(Uint32(5)));
    ASSERT_EQ(result.outParams.size(), 2u);
    EXPECT_TRUE(result.outParams[0].getValue() == CIMValue(String("hello")));
    EXPECT_TRUE(result.outParams[1].getValue() == CIMValue(String("operator1")));

    provider->terminate();
}

}  // namespace
