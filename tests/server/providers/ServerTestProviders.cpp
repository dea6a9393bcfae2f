// Provider module of the server tests: small providers whose behaviour the
// tests steer through ServerTestControl.h, to drive the dispatcher and the
// provider manager through every path (good answers, provider faults,
// handler misuse, nested calls, failing initialization).
//
// Knob modes understood by misbehave(): "throw-cim" (CIMObjectNotFoundException
// "gone"), "throw-traceable" (TraceableCIMException ACCESS_DENIED), "throw-pegasus"
// (TypeMismatchException), "throw-std" (std::runtime_error "boom"), "throw-int",
// "throw-badutf8" (std::runtime_error with an invalid UTF-8 byte),
// "not-supported" (CIMNotSupportedException "not here"). Enumerations also
// understand "uninit", "no-complete:<n>" and "count:<n>"; Item's also
// "fail-after:<n>" and "unsupported-after:<n>" (n delivered one at a time, then
// the "gone" or the "not here" exception) and "gated" (waits until the gate is
// open, then answers as usual).
#include "ServerTestControl.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

PEGASUS_USING_PEGASUS;

namespace
{

std::mutex stateMutex;
std::condition_variable gateChanged;  // with stateMutex
bool gateOpen = true;
std::map<std::string, std::string> knobs;
std::map<std::string, unsigned> counters;
std::string recordedCall;

std::string text(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string knob(const std::string& target)
{
    std::lock_guard<std::mutex> lock(stateMutex);
    auto it = knobs.find(target);
    return it == knobs.end() ? std::string() : it->second;
}

void bump(const std::string& name)
{
    std::lock_guard<std::mutex> lock(stateMutex);
    ++counters[name];
}

void record(const std::string& call)
{
    std::lock_guard<std::mutex> lock(stateMutex);
    recordedCall = call;
}

void passGate()
{
    bump("gate.waiting");
    std::unique_lock<std::mutex> lock(stateMutex);
    gateChanged.wait(lock, [] { return gateOpen; });
}

// Throws as the mode says; other modes are left to the caller.
void misbehave(const std::string& mode)
{
    if (mode == "throw-cim")
        throw CIMObjectNotFoundException("gone");
    if (mode == "throw-traceable")
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", "ServerTestProviders", 7);
    if (mode == "throw-pegasus")
        throw TypeMismatchException();
    if (mode == "throw-std")
        throw std::runtime_error("boom");
    if (mode == "throw-int")
        throw 42;
    if (mode == "throw-badutf8")
        throw std::runtime_error("bad \xff byte");
    if (mode == "not-supported")
        throw CIMNotSupportedException("not here");
}

// "prefix:<n>" -> n, or -1.
int modeCount(const std::string& mode, const std::string& prefix)
{
    return mode.compare(0, prefix.size(), prefix) != 0 ? -1 : std::stoi(mode.substr(prefix.size()));
}

String keyValue(const CIMObjectPath& path, const char* name)
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName() == CIMName(name))
            return keys[i].getValue();
    return String();
}

CIMObjectPath itemPath(const CIMName& className, const String& id)
{
    return CIMObjectPath(
        String(), CIMNamespaceName(), className,
        Array<CIMKeyBinding>(1, CIMKeyBinding("Id", id, CIMKeyBinding::STRING)));
}

template <class T>
T parameter(const Array<CIMParamValue>& in, const char* name)
{
    T v = T();
    for (Uint32 i = 0; i < in.size(); ++i)
        if (String::equalNoCase(in[i].getParameterName(), name) && !in[i].getValue().isNull())
            in[i].getValue().get(v);
    return v;
}

struct Item
{
    const char* id;
    const char* label;
    Uint32 count;
};

const Item items[] = {{"a", "Alpha", 1}, {"b", "Beta", 2}, {"c", "Gamma", 3}};

// What every test provider shares: its name for counters and knobs, the
// handle it was given, instances built from the class definition (as the
// array's providers build theirs, so qualifiers and class origins are there
// to be filtered), and CIM_ERR_NOT_SUPPORTED for the instance operations it
// does not override.
class TestProvider : public CIMInstanceProvider
{
public:
    explicit TestProvider(std::string name) : _name(std::move(name)) { bump(_name + ".created"); }
    void initialize(CIMOMHandle& cimom) override
    {
        bump(_name + ".initialize");
        _cimom = cimom;
    }
    void terminate() override
    {
        bump(_name + ".terminate");
        delete this;
    }
    void getInstance(
        const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("getInstance");
    }
    void enumerateInstances(
        const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstances");
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstanceNames");
    }
    void modifyInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("modifyInstance");
    }
    void createInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("createInstance");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("deleteInstance");
    }

protected:
    CIMInstance make(const CIMObjectPath& ref, const String& id, const String& label, Uint32 count)
    {
        CIMClass cls = _cimom.getClass(
            OperationContext(), ref.getNameSpace(), ref.getClassName(), false, true, true,
            CIMPropertyList());
        CIMInstance instance = cls.buildInstance(true, true, CIMPropertyList());
        const std::pair<const char*, CIMValue> values[] = {
            {"Id", id}, {"Label", label}, {"Count", count}};
        for (const auto& v : values)
            instance.getProperty(instance.findProperty(v.first)).setValue(v.second);
        CIMObjectPath path = itemPath(ref.getClassName(), id);
        path.setNameSpace(ref.getNameSpace());
        path.setHost("testhost");
        instance.setPath(path);
        return instance;
    }
    std::string misbehaveAs(const char* operation)
    {
        const std::string mode = knob(_name + "." + operation);
        misbehave(mode);
        return mode;
    }

    std::string _name;
    CIMOMHandle _cimom;
};

// Test_Item: instances a, b, c and the misbehaving keys; methods Ping,
// WhoAmI, NoReturn, NullReturn, NoComplete.
class ItemProvider : public TestProvider, public CIMMethodProvider
{
public:
    ItemProvider() : TestProvider("Item") {}

    void getInstance(
        const OperationContext& context, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        record("getInstance " + text(ref.toString()));
        misbehaveAs("getInstance");
        const std::string id = text(keyValue(ref, "Id"));
        handler.processing();
        if (id == "two")
        {
            handler.deliver(make(ref, "two", "first", 1));
            handler.deliver(make(ref, "two", "second", 2));
        }
        else if (id == "none")
        {
        }
        else if (id == "none-caught")
        {
            try
            {
                handler.complete();
            }
            catch (const CIMException&)
            {
            }
            return;
        }
        else if (id == "no-complete")
        {
            handler.deliver(make(ref, "no-complete", "x", 0));
            return;
        }
        else if (id == "uninit")
        {
            handler.deliver(CIMInstance());
        }
        else if (id == "after-complete")
        {
            handler.deliver(make(ref, "after-complete", "x", 0));
            handler.complete();
            handler.deliver(make(ref, "after-complete", "y", 0));
        }
        else if (id == "keyless")
        {
            CIMInstance instance = make(ref, "keyless", "no keys", 0);
            instance.setPath(CIMObjectPath(String(), CIMNamespaceName(), ref.getClassName()));
            handler.deliver(instance);
        }
        else if (id == "nested")
        {
            // Reads item a back through the server, with the caller's context.
            CIMInstance a = _cimom.getInstance(
                context, ref.getNameSpace(), itemPath(ref.getClassName(), "a"), false, false, false,
                CIMPropertyList());
            handler.deliver(make(
                ref, "nested",
                "via " + a.getProperty(a.findProperty("Label")).getValue().toString(), 0));
        }
        else
        {
            auto it = std::find_if(
                std::begin(items), std::end(items), [&](const Item& i) { return id == i.id; });
            if (it == std::end(items))
                throw CIMObjectNotFoundException(String(("no item " + id).c_str()));
            handler.deliver(make(ref, it->id, it->label, it->count));
        }
        handler.complete();
    }

    void enumerateInstances(
        const OperationContext&, const CIMObjectPath& ref, const Boolean iq, const Boolean ico,
        const CIMPropertyList& pl, InstanceResponseHandler& handler) override
    {
        record(
            "enumerateInstances " + text(ref.toString()) + " iq=" + (iq ? "1" : "0") +
            " ico=" + (ico ? "1" : "0") + " pl=" + text(pl.toString()));
        const std::string mode = misbehaveAs("enumerateInstances");
        if (mode == "gated")
            passGate();
        handler.processing();
        if (mode == "uninit")
            handler.deliver(CIMInstance());
        const int pending = modeCount(mode, "no-complete:"), count = modeCount(mode, "count:");
        const int failing = modeCount(mode, "fail-after:");
        const int unsupported = modeCount(mode, "unsupported-after:");
        Array<CIMInstance> bulk;
        for (int i = 0; i < std::max({pending, count, failing, unsupported}); ++i)
            bulk.append(make(ref, String(std::to_string(i).c_str()), "bulk", 0));
        if (pending >= 0 || failing >= 0 || unsupported >= 0)
        {  // one at a time, and never completed
            for (Uint32 i = 0; i < bulk.size(); ++i)
                handler.deliver(bulk[i]);
            if (failing >= 0)
                throw CIMObjectNotFoundException("gone");
            if (unsupported >= 0)
                throw CIMNotSupportedException("not here");
            return;
        }
        if (count >= 0)
        {
            handler.deliver(bulk);
        }
        else
        {
            for (const Item& item : items)
                handler.deliver(make(ref, item.id, item.label, item.count));
        }
        handler.complete();
        bump("Item.enumerated");
    }

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& ref,
        ObjectPathResponseHandler& handler) override
    {
        record("enumerateInstanceNames " + text(ref.toString()));
        const std::string mode = misbehaveAs("enumerateInstanceNames");
        handler.processing();
        if (mode == "uninit")
            handler.deliver(CIMObjectPath());
        for (const Item& item : items)
            handler.deliver(itemPath(ref.getClassName(), item.id));
        handler.complete();
    }

    void modifyInstance(
        const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
        const Boolean iq, const CIMPropertyList& pl, ResponseHandler& handler) override
    {
        std::string props;
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        {
            CIMConstProperty p = instance.getProperty(i);
            props += text(p.getName().getString()) + ":" + cimTypeToString(p.getValue().getType()) +
                     (p.getValue().isNull() ? "=null" : "=" + text(p.getValue().toString())) +
                     (p.getClassOrigin().isNull() ? "" : "@origin") +
                     (p.getPropagated() ? "@propagated" : "") + ";";
        }
        record(
            "modifyInstance " + text(ref.toString()) + " props=" + props +
            " iq=" + (iq ? "1" : "0") + " pl=" + text(pl.toString()));
        misbehaveAs("modifyInstance");
        handler.processing();
        handler.complete();
    }

    void createInstance(
        const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
        ObjectPathResponseHandler& handler) override
    {
        record("createInstance " + text(ref.toString()));
        const std::string mode = misbehaveAs("createInstance");
        const CIMObjectPath created = itemPath(
            ref.getClassName(),
            instance.getProperty(instance.findProperty("Id")).getValue().toString());
        handler.processing();
        if (mode != "no-path")
            handler.deliver(created);
        if (mode == "two-paths")
            handler.deliver(created);
        handler.complete();
    }

    void deleteInstance(
        const OperationContext&, const CIMObjectPath& ref, ResponseHandler& handler) override
    {
        record("deleteInstance " + text(ref.toString()));
        misbehaveAs("deleteInstance");
        handler.processing();
        handler.complete();
    }

    void invokeMethod(
        const OperationContext& context, const CIMObjectPath& ref, const CIMName& method,
        const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override
    {
        record("invokeMethod " + text(ref.toString()) + " " + text(method.getString()));
        misbehaveAs("invokeMethod");
        handler.processing();
        if (method == CIMName("Ping"))
        {
            // Echoes what the provider received: name, type and value of
            // every parameter, in order.
            std::string echo;
            for (Uint32 i = 0; i < in.size(); ++i)
            {
                CIMValue v = in[i].getValue();
                echo += text(in[i].getParameterName()) + ":" + cimTypeToString(v.getType()) +
                        (v.isArray() ? "[]" : "") + (in[i].isTyped() ? "" : "(untyped)") + "=" +
                        (v.isNull() ? "null" : text(v.toString())) + ";";
            }
            handler.deliverParamValue(CIMParamValue("Echo", CIMValue(String(echo.c_str()))));
            handler.deliver(CIMValue(Sint32(in.size())));
        }
        else if (method == CIMName("WhoAmI"))
        {
            IdentityContainer identity(context.get(IdentityContainer::NAME));
            handler.deliver(CIMValue(identity.getUserName() + "@" + identity.getIpAddress()));
        }
        else if (method == CIMName("NullReturn"))
        {
            handler.deliver(CIMValue());
        }
        else if (method == CIMName("NoComplete"))
        {
            handler.deliver(CIMValue(Uint32(5)));
            return;
        }
        else if (method != CIMName("NoReturn"))
        {
            throw CIMMethodNotFoundException(method.getString());
        }
        handler.complete();
    }
};

// Test_SubItem: one instance, s1.
class SubItemProvider : public TestProvider
{
public:
    SubItemProvider() : TestProvider("SubItem") {}

    void enumerateInstances(
        const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        misbehaveAs("enumerateInstances");
        CIMInstance s = make(ref, "s1", "Sub", 9);
        s.getProperty(s.findProperty("Extra")).setValue(CIMValue(String("more")));
        handler.processing();
        handler.deliver(s);
        handler.complete();
    }

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& ref,
        ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(itemPath(ref.getClassName(), "s1"));
        handler.complete();
    }
};

// Test_Link: a -> b and b -> c. Far ends are read back through the server;
// paths are delivered without host and namespace, which the server fills in.
class LinkProvider : public TestProvider, public CIMAssociationProvider
{
public:
    LinkProvider() : TestProvider("Link") {}

    void associators(
        const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean iq, const Boolean ico, const CIMPropertyList& pl,
        ObjectResponseHandler& handler) override
    {
        _record("associators", objectName, associationClass, resultClass, role, resultRole);
        handler.processing();
        for (const Link& link : _links(objectName, role))
        {
            CIMInstance instance = _cimom.getInstance(
                context, objectName.getNameSpace(), link.far, false, iq, ico, pl);
            instance.setPath(link.far);
            handler.deliver(CIMObject(instance));
        }
        handler.complete();
    }

    void associatorNames(
        const OperationContext&, const CIMObjectPath& objectName, const CIMName& associationClass,
        const CIMName& resultClass, const String& role, const String& resultRole,
        ObjectPathResponseHandler& handler) override
    {
        _record("associatorNames", objectName, associationClass, resultClass, role, resultRole);
        handler.processing();
        for (const Link& link : _links(objectName, role))
            handler.deliver(link.far);
        handler.complete();
    }

    void references(
        const OperationContext&, const CIMObjectPath& objectName, const CIMName& resultClass,
        const String& role, const Boolean, const Boolean, const CIMPropertyList&,
        ObjectResponseHandler& handler) override
    {
        _record("references", objectName, CIMName(), resultClass, role, String());
        handler.processing();
        for (const Link& link : _links(objectName, role))
        {
            CIMInstance instance("Test_Link");
            instance.addProperty(CIMProperty("Left", CIMValue(link.left), 0, "Test_Item"));
            instance.addProperty(CIMProperty("Right", CIMValue(link.right), 0, "Test_Item"));
            instance.setPath(link.path());
            handler.deliver(CIMObject(instance));
        }
        handler.complete();
    }

    void referenceNames(
        const OperationContext&, const CIMObjectPath& objectName, const CIMName& resultClass,
        const String& role, ObjectPathResponseHandler& handler) override
    {
        _record("referenceNames", objectName, CIMName(), resultClass, role, String());
        handler.processing();
        for (const Link& link : _links(objectName, role))
            handler.deliver(link.path());
        handler.complete();
    }

private:
    struct Link
    {
        CIMObjectPath left, right, far;
        CIMObjectPath path() const
        {
            Array<CIMKeyBinding> keys;
            keys.append(CIMKeyBinding("Left", CIMValue(left)));
            keys.append(CIMKeyBinding("Right", CIMValue(right)));
            return CIMObjectPath(String(), CIMNamespaceName(), "Test_Link", keys);
        }
    };

    void _record(
        const char* op, const CIMObjectPath& objectName, const CIMName& assocClass,
        const CIMName& resultClass, const String& role, const String& resultRole)
    {
        record(
            std::string(op) + " object=" + text(objectName.toString()) + " assocClass=" +
            text(assocClass.getString()) + " resultClass=" + text(resultClass.getString()) +
            " role=" + text(role) + " resultRole=" + text(resultRole));
        misbehaveAs(op);
    }

    static std::vector<Link> _links(const CIMObjectPath& objectName, const String& role)
    {
        static const char* const pairs[][2] = {{"a", "b"}, {"b", "c"}};
        std::vector<Link> result;
        const String id = keyValue(objectName, "Id");
        for (const auto& pair : pairs)
        {
            const CIMObjectPath left = itemPath("Test_Item", pair[0]),
                                right = itemPath("Test_Item", pair[1]);
            if (id == pair[0] && (role.size() == 0 || String::equalNoCase(role, "Left")))
                result.push_back(Link{left, right, right});
            if (id == pair[1] && (role.size() == 0 || String::equalNoCase(role, "Right")))
                result.push_back(Link{left, right, left});
        }
        return result;
    }
};

// Test_Nested: methods that call back into the server, through the
// CIMOMHandle and through a local client connection.
class NestedProvider : public TestProvider, public CIMMethodProvider
{
public:
    NestedProvider() : TestProvider("Nested") {}

    void invokeMethod(
        const OperationContext& context, const CIMObjectPath& ref, const CIMName& method,
        const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override
    {
        const CIMNamespaceName ns = ref.getNameSpace();
        const CIMObjectPath nested(String(), CIMNamespaceName(), "Test_Nested");
        Array<CIMParamValue> out;
        CIMValue result;
        if (method == CIMName("CountNames"))
        {
            result =
                CIMValue(Uint32(_cimom.enumerateInstanceNames(context, ns, "Test_Item").size()));
        }
        else if (method == CIMName("LocalWhoAmI"))
        {
            CIMClient client;
            client.connectLocal();
            result = client.invokeMethod(
                ns, itemPath("Test_Item", "a"), "WhoAmI", Array<CIMParamValue>(), out);
            client.disconnect();
        }
        else if (method == CIMName("FreshWhoAmI"))
        {
            result = _cimom.invokeMethod(
                OperationContext(), ns, itemPath("Test_Item", "a"), "WhoAmI",
                Array<CIMParamValue>(), out);
        }
        else if (method == CIMName("Recurse"))
        {
            // Alternates between the handle and a local connection on the
            // way down; every level runs on this thread.
            const Uint32 depth = parameter<Uint32>(in, "Depth");
            Uint32 reached = 0;
            if (depth > 0)
            {
                Array<CIMParamValue> args(1, CIMParamValue("Depth", CIMValue(Uint32(depth - 1))));
                CIMClient client;
                if (depth % 2 == 0)
                    client.connectLocal();
                CIMValue below =
                    depth % 2 ? _cimom.invokeMethod(context, ns, nested, "Recurse", args, out)
                              : client.invokeMethod(ns, nested, "Recurse", args, out);
                below.get(reached);
                ++reached;
            }
            result = CIMValue(reached);
        }
        else if (method == CIMName("Sleep"))
        {
            bump("Nested.sleepStarted");
            std::this_thread::sleep_for(
                std::chrono::milliseconds(parameter<Uint32>(in, "Milliseconds")));
            bump("Nested.sleepEnded");
            result = CIMValue(Uint32(0));
        }
        else
        {
            throw CIMMethodNotFoundException(method.getString());
        }
        handler.processing();
        handler.deliver(result);
        handler.complete();
    }
};

// A provider with nothing but a counted, optionally failing, slow or
// re-entering initialize(): Test_InitFail, Test_SlowInit, Test_SelfCall.
class LifecycleProvider : public TestProvider
{
public:
    using TestProvider::TestProvider;

    void initialize(CIMOMHandle& cimom) override
    {
        TestProvider::initialize(cimom);
        const std::string mode = knob(_name + ".initialize");
        if (mode == "sleep")
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (mode == "fail")
            throw std::runtime_error("cannot reach the array");
        if (mode == "self-call")  // a call into its own class during initialize()
            cimom.enumerateInstanceNames(
                OperationContext(), "root/servertest", CIMName(_name.c_str()));
    }

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& ref,
        ObjectPathResponseHandler& handler) override
    {
        bump(_name + ".served");
        handler.processing();
        handler.deliver(itemPath(ref.getClassName(), "one"));
        handler.complete();
    }
};

// Registered as an instance provider but implements methods only.
class MethodOnlyProvider : public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle&) override {}
    void terminate() override { delete this; }
    void invokeMethod(
        const OperationContext&, const CIMObjectPath&, const CIMName&, const Array<CIMParamValue>&,
        MethodResultResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(CIMValue(Uint32(0)));
        handler.complete();
    }
};

}  // namespace

namespace servertest
{

void reset()
{
    std::lock_guard<std::mutex> lock(stateMutex);
    knobs.clear();
    counters.clear();
    recordedCall.clear();
    gateOpen = true;
    gateChanged.notify_all();
}

void closeGate()
{
    std::lock_guard<std::mutex> lock(stateMutex);
    gateOpen = false;
}

void openGate()
{
    std::lock_guard<std::mutex> lock(stateMutex);
    gateOpen = true;
    gateChanged.notify_all();
}

void setKnob(const std::string& target, const std::string& mode)
{
    std::lock_guard<std::mutex> lock(stateMutex);
    knobs[target] = mode;
}

unsigned counter(const std::string& name)
{
    std::lock_guard<std::mutex> lock(stateMutex);
    auto it = counters.find(name);
    return it == counters.end() ? 0 : it->second;
}

std::string lastCall()
{
    std::lock_guard<std::mutex> lock(stateMutex);
    return recordedCall;
}

}  // namespace servertest

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& name)
{
    if (String::equalNoCase(name, "ItemProvider"))
        return new ItemProvider;
    if (String::equalNoCase(name, "SubItemProvider"))
        return new SubItemProvider;
    if (String::equalNoCase(name, "LinkProvider"))
        return new LinkProvider;
    if (String::equalNoCase(name, "NestedProvider"))
        return new NestedProvider;
    if (String::equalNoCase(name, "InitFailProvider"))
        return new LifecycleProvider("Test_InitFail");
    if (String::equalNoCase(name, "SlowInitProvider"))
        return new LifecycleProvider("Test_SlowInit");
    if (String::equalNoCase(name, "SelfCallProvider"))
        return new LifecycleProvider("Test_SelfCall");
    if (String::equalNoCase(name, "MethodOnlyProvider"))
        return new MethodOnlyProvider;
    // Any other name, "RefusedProvider" among them, is not this module's.
    return nullptr;
}
