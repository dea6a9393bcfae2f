// The request value CIMClient and CIMOMHandle hand to their host, and how they read the
// response: which parameters each operation gives (a CIM-XML transport writes only those,
// and a server takes the operation's defaults for the rest), with which values, and what a
// response turns into for the caller.
#include <functional>
#include <gtest/gtest.h>
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include "../common/test_runtime_support.h"
#include "runtime_doubles.h"

using namespace Pegasus;
using qeltest::FactoryGuard;
using qeltest::str;

namespace
{

// Keeps the last request and answers with `reply`.
struct Capture
{
    CIMOperationRequest last;
    CIMOperationResponse reply;
};

class CapturingHost : public CIMOMHandleRep
{
public:
    explicit CapturingHost(std::shared_ptr<Capture> capture) : _capture(capture) {}
    CIMOperationResponse execute(const OperationContext&, const CIMOperationRequest& r) override
    {
        _capture->last = r;
        return _capture->reply;
    }

private:
    std::shared_ptr<Capture> _capture;
};

class CapturingTransport : public ClientTransport
{
public:
    explicit CapturingTransport(std::shared_ptr<Capture> capture) : _capture(capture) {}
    void setTimeout(Uint32) override {}
    CIMOperationResponse execute(const CIMOperationRequest& r) override
    {
        _capture->last = r;
        return _capture->reply;
    }

private:
    std::shared_ptr<Capture> _capture;
};

// "<method>@<namespace>", then each given parameter as " Name=value", in the order of
// CIMOperationParameter; an extrinsic call adds its target and the number of inputs.
std::string describe(const CIMOperationRequest& r)
{
    typedef CIMOperationParameter P;
    const auto flag = [](bool b) { return std::string(b ? "1" : "0"); };
    const std::pair<P, std::function<std::string()>> params[] = {
        {P::ClassName, [&] { return str(r.className.getString()); }},
        {P::InstanceName, [&] { return str(r.objectName.toString()); }},
        {P::ObjectName, [&] { return str(r.objectName.toString()); }},
        {P::LocalOnly, [&] { return flag(r.localOnly); }},
        {P::DeepInheritance, [&] { return flag(r.deepInheritance); }},
        {P::IncludeQualifiers, [&] { return flag(r.includeQualifiers); }},
        {P::IncludeClassOrigin, [&] { return flag(r.includeClassOrigin); }},
        {P::PropertyList, [&] { return str(r.propertyList.toString()); }},
        {P::AssocClass, [&] { return str(r.assocClass.getString()); }},
        {P::ResultClass, [&] { return str(r.resultClass.getString()); }},
        {P::Role, [&] { return str(r.role); }},
        {P::ResultRole, [&] { return str(r.resultRole); }},
        {P::NewInstance, [&] { return str(r.instance.getClassName().getString()); }},
        {P::ModifiedInstance, [&] { return str(r.instance.getClassName().getString()); }},
        {P::NewClass, [&] { return str(r.cimClass.getClassName().getString()); }},
        {P::ModifiedClass, [&] { return str(r.cimClass.getClassName().getString()); }},
        {P::PropertyName, [&] { return str(r.propertyName.getString()); }},
        {P::NewValue, [&] { return str(r.newValue.toString()); }},
        {P::QueryLanguage, [&] { return str(r.queryLanguage); }},
        {P::Query, [&] { return str(r.query); }},
    };
    static const char* const names[] = {
        "ClassName",
        "InstanceName",
        "ObjectName",
        "LocalOnly",
        "DeepInheritance",
        "IncludeQualifiers",
        "IncludeClassOrigin",
        "PropertyList",
        "AssocClass",
        "ResultClass",
        "Role",
        "ResultRole",
        "NewInstance",
        "ModifiedInstance",
        "NewClass",
        "ModifiedClass",
        "PropertyName",
        "NewValue",
        "QueryLanguage",
        "Query"};
    std::string s = str(r.methodName) + "@" + str(r.nameSpace.getString());
    for (const auto& p : params)
        if (r.has(p.first))
            s += std::string(" ") + names[static_cast<size_t>(p.first)] + "=" + p.second();
    if (r.operation == CIMOperationType::InvokeMethod)
        s += " target=" + str(r.target.toString()) + " in=" + std::to_string(r.inParameters.size());
    return s;
}

CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> a;
    for (const char* n : names)
        a.append(n);
    return CIMPropertyList(a);
}

TEST(OperationRequests, EachOperationGivesItsParametersAndTheClientSendsWhatTheHandleSends)
{
    const OperationContext ctx;
    const CIMNamespaceName ns("root/qel");
    const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    const CIMInstance instance("QEL_X");
    const CIMPropertyList all;
    const Array<CIMParamValue> in(2, CIMParamValue("P", CIMValue(true)));
    const std::string port = "QEL_FCPort.DeviceID=\"A\"";
    struct Case
    {
        std::string expected;
        std::function<void(CIMOMHandle&)> handle;
        std::function<void(CIMClient&)> client;  // empty where CIMClient has no such call
    };
    const Case cases[] = {
        {"GetClass@root/qel ClassName=QEL_FCPort LocalOnly=1 IncludeQualifiers=0 "
         "IncludeClassOrigin=1 PropertyList=Speed",
         [&](CIMOMHandle& h)
         { h.getClass(ctx, ns, "QEL_FCPort", true, false, true, listOf({"Speed"})); },
         [&](CIMClient& c) { c.getClass(ns, "QEL_FCPort", true, false, true, listOf({"Speed"})); }},
        // A null class name is left out.
        {"EnumerateClasses@root/qel LocalOnly=0 DeepInheritance=1 IncludeQualifiers=1 "
         "IncludeClassOrigin=0",
         [&](CIMOMHandle& h) { h.enumerateClasses(ctx, ns, CIMName(), true, false, true, false); },
         {}},
        {"EnumerateClassNames@root/qel ClassName=CIM_FCPort DeepInheritance=0",
         [&](CIMOMHandle& h) { h.enumerateClassNames(ctx, ns, "CIM_FCPort", false); },
         {}},
        {"CreateClass@root/qel NewClass=QEL_X",
         [&](CIMOMHandle& h) { h.createClass(ctx, ns, CIMClass("QEL_X")); },
         {}},
        {"ModifyClass@root/qel ModifiedClass=QEL_X",
         [&](CIMOMHandle& h) { h.modifyClass(ctx, ns, CIMClass("QEL_X")); },
         {}},
        {"DeleteClass@root/qel ClassName=QEL_X",
         [&](CIMOMHandle& h) { h.deleteClass(ctx, ns, "QEL_X"); },
         {}},
        // A NULL property list is left out.
        {"GetInstance@root/qel InstanceName=" + port +
             " LocalOnly=0 IncludeQualifiers=1 IncludeClassOrigin=0",
         [&](CIMOMHandle& h) { h.getInstance(ctx, ns, path, false, true, false, all); },
         [&](CIMClient& c) { c.getInstance(ns, path, false, true, false, all); }},
        // An empty one is given.
        {"EnumerateInstances@root/qel ClassName=QEL_FCPort LocalOnly=1 DeepInheritance=0 "
         "IncludeQualifiers=0 IncludeClassOrigin=1 PropertyList=EMPTY",
         [&](CIMOMHandle& h)
         { h.enumerateInstances(ctx, ns, "QEL_FCPort", false, true, false, true, listOf({})); },
         [&](CIMClient& c)
         { c.enumerateInstances(ns, "QEL_FCPort", false, true, false, true, listOf({})); }},
        {"EnumerateInstanceNames@root/qel ClassName=QEL_FCPort",
         [&](CIMOMHandle& h) { h.enumerateInstanceNames(ctx, ns, "QEL_FCPort"); },
         [&](CIMClient& c) { c.enumerateInstanceNames(ns, "QEL_FCPort"); }},
        {"CreateInstance@root/qel NewInstance=QEL_X",
         [&](CIMOMHandle& h) { h.createInstance(ctx, ns, instance); },
         [&](CIMClient& c) { c.createInstance(ns, instance); }},
        {"ModifyInstance@root/qel IncludeQualifiers=0 ModifiedInstance=QEL_X",
         [&](CIMOMHandle& h) { h.modifyInstance(ctx, ns, instance, false, all); },
         [&](CIMClient& c) { c.modifyInstance(ns, instance, false, all); }},
        {"DeleteInstance@root/qel InstanceName=" + port,
         [&](CIMOMHandle& h) { h.deleteInstance(ctx, ns, path); },
         [&](CIMClient& c) { c.deleteInstance(ns, path); }},
        {"ExecQuery@root/qel QueryLanguage=WQL Query=SELECT * FROM QEL_FCPort",
         [&](CIMOMHandle& h) { h.execQuery(ctx, ns, "WQL", "SELECT * FROM QEL_FCPort"); },
         {}},
        // Null classes and empty roles are left out.
        {"Associators@root/qel ObjectName=" + port +
             " IncludeQualifiers=1 IncludeClassOrigin=0 ResultClass=QEL_SFP ResultRole=Antecedent",
         [&](CIMOMHandle& h) {
             h.associators(ctx, ns, path, CIMName(), "QEL_SFP", "", "Antecedent", true, false, all);
         },
         [&](CIMClient& c)
         { c.associators(ns, path, CIMName(), "QEL_SFP", "", "Antecedent", true, false, all); }},
        {"AssociatorNames@root/qel ObjectName=" + port + " AssocClass=QEL_FCPortSFP Role=Dependent",
         [&](CIMOMHandle& h)
         { h.associatorNames(ctx, ns, path, "QEL_FCPortSFP", CIMName(), "Dependent", ""); },
         [&](CIMClient& c)
         { c.associatorNames(ns, path, "QEL_FCPortSFP", CIMName(), "Dependent", ""); }},
        {"References@root/qel ObjectName=" + port +
             " IncludeQualifiers=0 IncludeClassOrigin=1 PropertyList=InstanceID "
             "ResultClass=QEL_FCPortSFP",
         [&](CIMOMHandle& h)
         { h.references(ctx, ns, path, "QEL_FCPortSFP", "", false, true, listOf({"InstanceID"})); },
         [&](CIMClient& c)
         { c.references(ns, path, "QEL_FCPortSFP", "", false, true, listOf({"InstanceID"})); }},
        {"ReferenceNames@root/qel ObjectName=" + port + " Role=Dependent",
         [&](CIMOMHandle& h) { h.referenceNames(ctx, ns, path, CIMName(), "Dependent"); },
         [&](CIMClient& c) { c.referenceNames(ns, path, CIMName(), "Dependent"); }},
        {"GetProperty@root/qel InstanceName=" + port + " PropertyName=Speed",
         [&](CIMOMHandle& h) { h.getProperty(ctx, ns, path, "Speed"); },
         {}},
        // A null new value is the parameter left out.
        {"SetProperty@root/qel InstanceName=" + port + " PropertyName=Speed",
         [&](CIMOMHandle& h) { h.setProperty(ctx, ns, path, "Speed", CIMValue()); },
         {}},
        {"SetProperty@root/qel InstanceName=" + port + " PropertyName=Speed NewValue=2",
         [&](CIMOMHandle& h) { h.setProperty(ctx, ns, path, "Speed", CIMValue(Uint64(2))); },
         {}},
        {"Reset@root/qel target=" + port + " in=2",
         [&](CIMOMHandle& h)
         {
             Array<CIMParamValue> out;
             h.invokeMethod(ctx, ns, path, "Reset", in, out);
         },
         [&](CIMClient& c)
         {
             Array<CIMParamValue> out;
             c.invokeMethod(ns, path, "Reset", in, out);
         }},
    };
    auto capture = std::make_shared<Capture>();
    capture->reply.paths.append(path);  // createInstance wants its name
    CIMOMHandle handle(std::make_shared<CapturingHost>(capture));
    FactoryGuard guard{TcpTransportFactory(), [capture](Uint32) {
                           return std::unique_ptr<ClientTransport>(new CapturingTransport(capture));
                       }};
    CIMClient client;
    client.connectLocal();
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.expected);
        capture->last = CIMOperationRequest();
        c.handle(handle);
        EXPECT_EQ(describe(capture->last), c.expected);
        if (!c.client)
            continue;
        capture->last = CIMOperationRequest();
        c.client(client);
        EXPECT_EQ(describe(capture->last), c.expected);
    }
}

TEST(OperationResponses, ErrorsThrowCreatedNamesAreCheckedOutputsReplaceTheCallers)
{
    auto capture = std::make_shared<Capture>();
    CIMOMHandle handle(std::make_shared<CapturingHost>(capture));
    const OperationContext ctx;
    const CIMInstance fresh("QEL_X");
    auto created = [&] { return str(handle.createInstance(ctx, "root/qel", fresh).toString()); };

    // A CIM error in the response is thrown as it is.
    capture->reply.setError(CIMException(CIM_ERR_ACCESS_DENIED, "CIM_ERR_ACCESS_DENIED: no"));
    EXPECT_EQ(
        qeltest::thrownMessage<CIMException>([&] { created(); }), "CIM_ERR_ACCESS_DENIED: no");

    // CreateInstance answers exactly one name.
    for (Uint32 names : {0u, 1u, 2u})
    {
        SCOPED_TRACE(names);
        capture->reply = CIMOperationResponse();
        for (Uint32 i = 0; i < names; ++i)
            capture->reply.paths.append(
                CIMObjectPath(String(("QEL_X.Id=\"" + std::to_string(i) + "\"").c_str())));
        if (names == 1)
            EXPECT_EQ(created(), "QEL_X.Id=\"0\"");
        else
            EXPECT_EQ(
                qeltest::thrownMessage<CIMException>([&] { created(); }),
                "CreateInstance answered without a name");
    }

    // Output parameters replace whatever the caller's array held.
    capture->reply = CIMOperationResponse();
    capture->reply.value = CIMValue(Uint32(7));
    capture->reply.outParameters.append(CIMParamValue("Answer", CIMValue(String("x"))));
    Array<CIMParamValue> out(3, CIMParamValue("Stale", CIMValue(true)));
    EXPECT_TRUE(
        handle.invokeMethod(ctx, "root/qel", CIMObjectPath("QEL_X"), "M", {}, out) ==
        CIMValue(Uint32(7)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(str(out[0].getParameterName()), "Answer");
}

}  // namespace
