// The request value CIMClient and CIMOMHandle hand to their host, and how they read the
// response: which parameters each operation gives (a CIM-XML transport writes only those,
// and a server takes the operation's defaults for the rest), with which values, and what a
// response turns into for the caller.
#include <functional>
#include <vector>
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
        {P::FilterQueryLanguage, [&] { return str(r.filterQueryLanguage); }},
        {P::FilterQuery, [&] { return str(r.filterQuery); }},
        {P::OperationTimeout, [&] { return std::to_string(r.operationTimeout); }},
        {P::ContinueOnError, [&] { return flag(r.continueOnError); }},
        {P::MaxObjectCount, [&] { return std::to_string(r.maxObjectCount); }},
        {P::EnumerationContext, [&] { return str(r.enumerationContext); }},
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
        "Query",
        "FilterQueryLanguage",
        "FilterQuery",
        "OperationTimeout",
        "ContinueOnError",
        "MaxObjectCount",
        "EnumerationContext"};
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

// An open's or a pull's answer: `eos`, and the context when the sequence goes on.
CIMOperationResponse pageAnswer(bool eos, const char* context)
{
    CIMOperationResponse r;
    r.methodName = "OpenEnumerateInstances";
    r.outParameters = CIMOperationResponse::enumerationState(eos, context);
    return r;
}

TEST(OperationRequests, ThePullCallsOfTheClientGiveTheirParametersAndFollowTheContext)
{
    const CIMNamespaceName ns("root/qel");
    const CIMObjectPath path("QEL_FCPort.DeviceID=\"A\"");
    const std::string port = "QEL_FCPort.DeviceID=\"A\"";
    auto capture = std::make_shared<Capture>();
    FactoryGuard guard{TcpTransportFactory(), [capture](Uint32) {
                           return std::unique_ptr<ClientTransport>(new CapturingTransport(capture));
                       }};
    CIMClient client;
    client.connectLocal();
    CIMEnumerationContext context;
    Boolean eos = true;
    // Every call is answered "go on with ctx-1".
    capture->reply = pageAnswer(false, "ctx-1");
    struct Case
    {
        std::string expected;
        std::function<void()> call;
    };
    // DSP0200's defaults are sent as such (the two flags, MaxObjectCount 0); NULLs are left out.
    const Case cases[] = {
        {"OpenEnumerateInstances@root/qel ClassName=QEL_FCPort DeepInheritance=1 "
         "IncludeClassOrigin=0 ContinueOnError=0 MaxObjectCount=0",
         [&] { client.openEnumerateInstances(context, eos, ns, "QEL_FCPort"); }},
        {"OpenEnumerateInstances@root/qel ClassName=QEL_FCPort DeepInheritance=0 "
         "IncludeClassOrigin=1 PropertyList=Speed FilterQueryLanguage=DMTF:FQL "
         "FilterQuery=Speed > 1 OperationTimeout=60 ContinueOnError=1 MaxObjectCount=500",
         [&]
         {
             client.openEnumerateInstances(
                 context, eos, ns, "QEL_FCPort", false, true, listOf({"Speed"}), "DMTF:FQL",
                 "Speed > 1", Uint32Arg(60), true, 500);
         }},
        {"OpenEnumerateInstancePaths@root/qel ClassName=QEL_FCPort OperationTimeout=0 "
         "ContinueOnError=0 MaxObjectCount=4294967295",
         [&]
         {
             client.openEnumerateInstancePaths(
                 context, eos, ns, "QEL_FCPort", "", "", Uint32Arg(0), false, 4294967295u);
         }},
        {"OpenReferenceInstances@root/qel InstanceName=" + port +
             " IncludeClassOrigin=0 PropertyList=EMPTY ResultClass=QEL_FCPortSFP Role=Dependent "
             "ContinueOnError=0 MaxObjectCount=1",
         [&]
         {
             client.openReferenceInstances(
                 context, eos, ns, path, "QEL_FCPortSFP", "Dependent", false, listOf({}), "", "",
                 Uint32Arg(), false, 1);
         }},
        {"OpenReferenceInstancePaths@root/qel InstanceName=" + port +
             " ContinueOnError=0 MaxObjectCount=0",
         [&] { client.openReferenceInstancePaths(context, eos, ns, path); }},
        {"OpenAssociatorInstances@root/qel InstanceName=" + port +
             " IncludeClassOrigin=1 AssocClass=QEL_FCPortSFP ResultClass=QEL_SFP "
             "ResultRole=Antecedent ContinueOnError=0 MaxObjectCount=0",
         [&]
         {
             client.openAssociatorInstances(
                 context, eos, ns, path, "QEL_FCPortSFP", "QEL_SFP", "", "Antecedent", true);
         }},
        {"OpenAssociatorInstancePaths@root/qel InstanceName=" + port +
             " Role=Dependent ContinueOnError=0 MaxObjectCount=0",
         [&] {
             client.openAssociatorInstancePaths(
                 context, eos, ns, path, CIMName(), CIMName(), "Dependent");
         }},
        // The calls on an open enumeration go to its namespace with the context last
        // answered.
        {"PullInstancesWithPath@root/qel MaxObjectCount=7 EnumerationContext=ctx-1",
         [&] { client.pullInstancesWithPath(context, eos, 7); }},
        {"PullInstancePaths@root/qel MaxObjectCount=0 EnumerationContext=ctx-1",
         [&] { client.pullInstancePaths(context, eos, 0); }},
        {"EnumerationCount@root/qel EnumerationContext=ctx-1",
         [&] { client.enumerationCount(context); }},
        {"CloseEnumeration@root/qel EnumerationContext=ctx-1",
         [&] { client.closeEnumeration(context); }},
        // Closing forgets the context.
        {"PullInstancePaths@root/qel MaxObjectCount=3 EnumerationContext=",
         [&] { client.pullInstancePaths(context, eos, 3); }},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.expected);
        capture->last = CIMOperationRequest();
        c.call();
        EXPECT_EQ(describe(capture->last), c.expected);
        EXPECT_FALSE(eos);
    }

    // The end of the sequence forgets the context too, and a context never opened has
    // nowhere to go.
    capture->reply = pageAnswer(false, "ctx-2");
    client.openEnumerateInstances(context, eos, ns, "QEL_FCPort");
    capture->reply = pageAnswer(true, "ignored");
    client.pullInstancesWithPath(context, eos, 1);
    EXPECT_TRUE(eos);
    client.pullInstancesWithPath(context, eos, 1);
    EXPECT_EQ(
        describe(capture->last),
        "PullInstancesWithPath@root/qel MaxObjectCount=1 EnumerationContext=");
    CIMEnumerationContext never;
    capture->last = CIMOperationRequest();
    try
    {
        client.pullInstancePaths(never, eos, 1);
        ADD_FAILURE() << "a pull on a context never opened was sent";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_ENUMERATION_CONTEXT);
    }
    EXPECT_EQ(describe(capture->last), "@") << "nothing is sent";
}

TEST(OperationResponses, AnOpenOrAPullTellsItsEndAndContextAndACountMayBeUnknown)
{
    const CIMParamValue untypedTrue("EndOfSequence", CIMValue(String("true")), false);
    const CIMParamValue untypedFalse("EndOfSequence", CIMValue(String("FALSE")), false);
    const CIMParamValue context("EnumerationContext", CIMValue(String("c9")), false);
    const CIMParamValue nullContext("EnumerationContext", CIMValue(CIMTYPE_STRING, false));
    const CIMParamValue oddFlag("EndOfSequence", CIMValue(String("maybe")), false);
    const CIMParamValue numberFlag("EndOfSequence", CIMValue(Uint32(1)));
    const char* const noEos = "OpenEnumerateInstances answered without EndOfSequence";
    const char* const noContext = "OpenEnumerateInstances answered without EnumerationContext";
    struct Case
    {
        const char* what;
        std::vector<CIMParamValue> out;
        std::string expected;  // "eos|context", or the error's message
    };
    const Array<CIMParamValue> ours = CIMOperationResponse::enumerationState(false, "c7");
    const Case cases[] = {
        {"our own answer, going on", {ours[0], ours[1]}, "0|c7"},
        {"untyped, as other servers send it", {untypedFalse, context}, "0|c9"},
        {"untyped end, NULL context", {untypedTrue, nullContext}, "1|"},
        {"end without any context", {untypedTrue}, "1|"},
        {"no EndOfSequence", {context}, noEos},
        {"no parameter at all", {}, noEos},
        {"EndOfSequence neither TRUE nor FALSE",
         {oddFlag, context},
         "OpenEnumerateInstances answered with an EndOfSequence that is not TRUE or FALSE"},
        {"EndOfSequence a number",
         {numberFlag, context},
         "OpenEnumerateInstances answered with an EndOfSequence that is not a boolean"},
        {"going on without a context", {untypedFalse}, noContext},
        {"going on with a NULL context", {untypedFalse, nullContext}, noContext},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMOperationResponse r;
        r.methodName = "OpenEnumerateInstances";
        for (const CIMParamValue& p : c.out)
            r.outParameters.append(p);
        std::string got;
        try
        {
            Boolean eos = false;
            const String next = r.enumerationContext(eos);
            got = std::string(eos ? "1" : "0") + "|" + str(next);
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_FAILED);
            got = str(e.getMessage());
        }
        EXPECT_EQ(got, c.expected);
    }

    // EnumerationCount: typed, untyped decimal text, NULL, or not a number.
    const struct
    {
        CIMValue value;
        std::string expected;
    } counts[] = {
        {CIMValue(Uint64(18446744073709551615ull)), "18446744073709551615"},
        {CIMValue(String("42")), "42"},
        {CIMValue(), "NULL"},
        {CIMValue(CIMTYPE_UINT64, false), "NULL"},
        {CIMValue(String("-1")), "error"},
        {CIMValue(String("18446744073709551616")), "error"},
        {CIMValue(String("")), "error"},
        {CIMValue(String("4x")), "error"},
    };
    for (const auto& c : counts)
    {
        SCOPED_TRACE(c.expected);
        CIMOperationResponse r;
        r.methodName = "EnumerationCount";
        r.value = c.value;
        std::string got;
        try
        {
            got = str(r.enumerationCount().toString());
        }
        catch (const CIMException& e)
        {
            got = "error";
            EXPECT_EQ(
                str(e.getMessage()),
                "EnumerationCount answered with a count that is not an unsigned number");
        }
        EXPECT_EQ(got, c.expected);
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
