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
// understand "uninit", "no-complete:<n>" and "count:<n>".
#include "ServerTestControl.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

PEGASUS_USING_PEGASUS;

namespace {

std::mutex stateMutex;
std::map<std::string, std::string> knobs;
std::map<std::string, unsigned> counters;
std::string recordedCall;

std::string text(const String& s)
{
    CString c = s.getCString();
    return std::string(static_cast<const char*>(c));
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

// Throws as the mode says; false when the mode is not a throwing one.
bool misbehave(const std::string& mode)
{
    if (mode == "throw-cim")
        throw CIMObjectNotFoundException("gone");
    if (mode == "throw-traceable")
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user",
                                    "ServerTestProviders", 7);
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
    return false;
}

// "prefix:<n>" -> n, or -1.
int modeCount(const std::string& mode, const std::string& prefix)
{
    if (mode.compare(0, prefix.size(), prefix) != 0)
        return -1;
    return std::stoi(mode.substr(prefix.size()));
}

String keyValue(const CIMObjectPath& path, const char* name)
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
    {
        if (keys[i].getName() == CIMName(name))
            return keys[i].getValue();
    }
    return String();
}

CIMObjectPath itemPath(const CIMName& className, const String& id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", id, CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), className, keys);
}

void setValue(CIMInstance& instance, const char* name, const CIMValue& value)
{
    Uint32 pos = instance.findProperty(name);
    if (pos != PEG_NOT_FOUND)
        instance.getProperty(pos).setValue(value);
}

struct Item
{
    const char* id;
    const char* label;
    Uint32 count;
};

const Item items[] = {{"a", "Alpha", 1}, {"b", "Beta", 2}, {"c", "Gamma", 3}};

std::string userAndAddress(const OperationContext& context)
{
    IdentityContainer identity(context.get(IdentityContainer::NAME));
    return text(identity.getUserName()) + "@" + text(identity.getIpAddress());
}

// Instances are built from the class definition, as the array's providers
// build theirs, so qualifiers and class origins are there to be filtered.
class ItemFactory
{
public:
    void attach(CIMOMHandle& cimom) { _cimom = cimom; }

    CIMInstance make(const CIMNamespaceName& ns, const CIMName& className, const String& id,
                     const String& label, Uint32 count)
    {
        CIMClass cls = _cimom.getClass(OperationContext(), ns, className, false, true, true, CIMPropertyList());
        CIMInstance instance = cls.buildInstance(true, true, CIMPropertyList());
        setValue(instance, "Id", CIMValue(id));
        setValue(instance, "Label", CIMValue(label));
        setValue(instance, "Count", CIMValue(count));
        CIMObjectPath path = itemPath(className, id);
        path.setNameSpace(ns);
        path.setHost("testhost");
        instance.setPath(path);
        return instance;
    }

    CIMOMHandle& cimom() { return _cimom; }

private:
    CIMOMHandle _cimom;
};

// Instance operations a test provider does not serve refuse with
// CIM_ERR_NOT_SUPPORTED; providers override the ones they serve.
class PartialInstanceProvider : public CIMInstanceProvider
{
public:
    void getInstance(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
                     const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("getInstance");
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
                            const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstances");
    }
    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&,
                                ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstanceNames");
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
                        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("modifyInstance");
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("createInstance");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("deleteInstance");
    }
};

// Test_Item: instances a, b, c and the misbehaving keys; methods Ping,
// WhoAmI, LastCall, NoReturn, NullReturn.
class ItemProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle& cimom) override
    {
        _factory.attach(cimom);
        bump("Item.initialize");
    }

    void terminate() override
    {
        bump("Item.terminate");
        delete this;
    }

    void getInstance(const OperationContext& context, const CIMObjectPath& ref, const Boolean,
                     const Boolean, const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        record("getInstance " + text(ref.toString()));
        misbehave(knob("Item.getInstance"));
        const CIMNamespaceName ns = ref.getNameSpace();
        const CIMName cls = ref.getClassName();
        const std::string id = text(keyValue(ref, "Id"));
        misbehave(id);
        handler.processing();
        if (id == "two")
        {
            handler.deliver(_factory.make(ns, cls, "two", "first", 1));
            handler.deliver(_factory.make(ns, cls, "two", "second", 2));
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
            handler.deliver(_factory.make(ns, cls, "no-complete", "x", 0));
            return;
        }
        else if (id == "uninit")
        {
            handler.deliver(CIMInstance());
        }
        else if (id == "after-complete")
        {
            handler.deliver(_factory.make(ns, cls, "after-complete", "x", 0));
            handler.complete();
            handler.deliver(_factory.make(ns, cls, "after-complete", "y", 0));
        }
        else if (id == "keyless")
        {
            CIMInstance instance = _factory.make(ns, cls, "keyless", "no keys", 0);
            instance.setPath(CIMObjectPath(String(), CIMNamespaceName(), cls));
            handler.deliver(instance);
        }
        else if (id == "whoami")
        {
            handler.deliver(_factory.make(ns, cls, "whoami", String(userAndAddress(context).c_str()), 0));
        }
        else if (id == "nested")
        {
            // Reads item a back through the server, with the caller's context.
            CIMInstance a = _factory.cimom().getInstance(context, ns, itemPath(cls, "a"), false, false,
                                                         false, CIMPropertyList());
            String label;
            a.getProperty(a.findProperty("Label")).getValue().get(label);
            handler.deliver(_factory.make(ns, cls, "nested", "via " + label, 0));
        }
        else
        {
            bool found = false;
            for (const Item& item : items)
            {
                if (id == item.id)
                {
                    handler.deliver(_factory.make(ns, cls, item.id, item.label, item.count));
                    found = true;
                }
            }
            if (!found)
                throw CIMObjectNotFoundException(String(("no item " + id).c_str()));
        }
        handler.complete();
    }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean iq,
                            const Boolean ico, const CIMPropertyList& pl,
                            InstanceResponseHandler& handler) override
    {
        record("enumerateInstances " + text(ref.toString()) + " iq=" + (iq ? "1" : "0") +
               " ico=" + (ico ? "1" : "0") + " pl=" + text(pl.toString()));
        const std::string mode = knob("Item.enumerateInstances");
        misbehave(mode);
        const CIMNamespaceName ns = ref.getNameSpace();
        const CIMName cls = ref.getClassName();
        handler.processing();
        if (mode == "uninit")
            handler.deliver(CIMInstance());
        int pending = modeCount(mode, "no-complete:");
        if (pending >= 0)
        {
            for (int i = 0; i < pending; ++i)
                handler.deliver(_factory.make(ns, cls, String(std::to_string(i).c_str()), "bulk", 0));
            return;
        }
        int count = modeCount(mode, "count:");
        if (count >= 0)
        {
            Array<CIMInstance> bulk;
            for (int i = 0; i < count; ++i)
                bulk.append(_factory.make(ns, cls, String(std::to_string(i).c_str()), "bulk", 0));
            handler.deliver(bulk);
        }
        else
        {
            for (const Item& item : items)
                handler.deliver(_factory.make(ns, cls, item.id, item.label, item.count));
        }
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath& ref,
                                ObjectPathResponseHandler& handler) override
    {
        record("enumerateInstanceNames " + text(ref.toString()));
        const std::string mode = knob("Item.enumerateInstanceNames");
        misbehave(mode);
        handler.processing();
        if (mode == "uninit")
            handler.deliver(CIMObjectPath());
        for (const Item& item : items)
            handler.deliver(itemPath(ref.getClassName(), item.id));
        handler.complete();
    }

    void modifyInstance(const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
                        const Boolean iq, const CIMPropertyList& pl, ResponseHandler& handler) override
    {
        std::string props;
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        {
            CIMConstProperty p = instance.getProperty(i);
            props += text(p.getName().getString()) + ":" + cimTypeToString(p.getValue().getType()) +
                     (p.getValue().isNull() ? "=null" : "=" + text(p.getValue().toString())) +
                     (p.getClassOrigin().isNull() ? "" : "@origin") + (p.getPropagated() ? "@propagated" : "") +
                     ";";
        }
        record("modifyInstance " + text(ref.toString()) + " props=" + props + " iq=" + (iq ? "1" : "0") +
               " pl=" + text(pl.toString()));
        misbehave(knob("Item.modifyInstance"));
        handler.processing();
        handler.complete();
    }

    void createInstance(const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
                        ObjectPathResponseHandler& handler) override
    {
        record("createInstance " + text(ref.toString()));
        const std::string mode = knob("Item.createInstance");
        misbehave(mode);
        String id;
        Uint32 pos = instance.findProperty("Id");
        if (pos != PEG_NOT_FOUND)
            instance.getProperty(pos).getValue().get(id);
        handler.processing();
        if (mode != "no-path")
            handler.deliver(itemPath(ref.getClassName(), id));
        if (mode == "two-paths")
            handler.deliver(itemPath(ref.getClassName(), id));
        handler.complete();
    }

    void deleteInstance(const OperationContext&, const CIMObjectPath& ref, ResponseHandler& handler) override
    {
        record("deleteInstance " + text(ref.toString()));
        misbehave(knob("Item.deleteInstance"));
        handler.processing();
        handler.complete();
    }

    void invokeMethod(const OperationContext& context, const CIMObjectPath& ref, const CIMName& method,
                      const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override
    {
        record("invokeMethod " + text(ref.toString()) + " " + text(method.getString()));
        misbehave(knob("Item.invokeMethod"));
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
            handler.deliver(CIMValue(String(userAndAddress(context).c_str())));
        }
        else if (method == CIMName("NoReturn"))
        {
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
        else
        {
            throw CIMMethodNotFoundException(method.getString());
        }
        handler.complete();
    }

private:
    ItemFactory _factory;
};

// Test_SubItem: one instance, s1.
class SubItemProvider : public PartialInstanceProvider
{
public:
    void initialize(CIMOMHandle& cimom) override { _factory.attach(cimom); }
    void terminate() override { delete this; }

    void getInstance(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
                     const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        if (keyValue(ref, "Id") != "s1")
            throw CIMObjectNotFoundException("no sub item");
        handler.processing();
        handler.deliver(_sub(ref.getNameSpace(), ref.getClassName()));
        handler.complete();
    }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
                            const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        misbehave(knob("SubItem.enumerateInstances"));
        handler.processing();
        handler.deliver(_sub(ref.getNameSpace(), ref.getClassName()));
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath& ref,
                                ObjectPathResponseHandler& handler) override
    {
        misbehave(knob("SubItem.enumerateInstanceNames"));
        handler.processing();
        handler.deliver(itemPath(ref.getClassName(), "s1"));
        handler.complete();
    }


private:
    CIMInstance _sub(const CIMNamespaceName& ns, const CIMName& cls)
    {
        CIMInstance s = _factory.make(ns, cls, "s1", "Sub", 9);
        setValue(s, "Extra", CIMValue(String("more")));
        return s;
    }

    ItemFactory _factory;
};

// Test_Link: a -> b and b -> c. Far ends are read back through the server;
// paths are delivered without host and namespace, which the server fills in.
class LinkProvider : public CIMAssociationProvider, public PartialInstanceProvider
{
public:
    void initialize(CIMOMHandle& cimom) override { _factory.attach(cimom); }
    void terminate() override { delete this; }

    void associators(const OperationContext& context, const CIMObjectPath& objectName,
                     const CIMName& associationClass, const CIMName& resultClass, const String& role,
                     const String& resultRole, const Boolean iq, const Boolean ico, const CIMPropertyList& pl,
                     ObjectResponseHandler& handler) override
    {
        _record("associators", objectName, associationClass, resultClass, role, resultRole);
        misbehave(knob("Link.associators"));
        handler.processing();
        for (const CIMObjectPath& far : _farEnds(objectName, role))
        {
            CIMInstance instance = _factory.cimom().getInstance(context, objectName.getNameSpace(), far,
                                                                false, iq, ico, pl);
            instance.setPath(far);
            handler.deliver(CIMObject(instance));
        }
        handler.complete();
    }

    void associatorNames(const OperationContext&, const CIMObjectPath& objectName,
                         const CIMName& associationClass, const CIMName& resultClass, const String& role,
                         const String& resultRole, ObjectPathResponseHandler& handler) override
    {
        _record("associatorNames", objectName, associationClass, resultClass, role, resultRole);
        misbehave(knob("Link.associatorNames"));
        handler.processing();
        for (const CIMObjectPath& far : _farEnds(objectName, role))
            handler.deliver(far);
        handler.complete();
    }

    void references(const OperationContext&, const CIMObjectPath& objectName, const CIMName& resultClass,
                    const String& role, const Boolean, const Boolean, const CIMPropertyList&,
                    ObjectResponseHandler& handler) override
    {
        _record("references", objectName, CIMName(), resultClass, role, String());
        misbehave(knob("Link.references"));
        handler.processing();
        for (const Link& link : _links(objectName, role))
        {
            CIMInstance instance("Test_Link");
            instance.addProperty(CIMProperty("Left", CIMValue(link.left), 0, "Test_Item"));
            instance.addProperty(CIMProperty("Right", CIMValue(link.right), 0, "Test_Item"));
            instance.setPath(_linkPath(link));
            handler.deliver(CIMObject(instance));
        }
        handler.complete();
    }

    void referenceNames(const OperationContext&, const CIMObjectPath& objectName, const CIMName& resultClass,
                        const String& role, ObjectPathResponseHandler& handler) override
    {
        _record("referenceNames", objectName, CIMName(), resultClass, role, String());
        misbehave(knob("Link.referenceNames"));
        handler.processing();
        for (const Link& link : _links(objectName, role))
            handler.deliver(_linkPath(link));
        handler.complete();
    }

private:
    struct Link
    {
        CIMObjectPath left;
        CIMObjectPath right;
    };

    static void _record(const char* op, const CIMObjectPath& objectName, const CIMName& assocClass,
                        const CIMName& resultClass, const String& role, const String& resultRole)
    {
        record(std::string(op) + " object=" + text(objectName.toString()) +
               " assocClass=" + text(assocClass.getString()) + " resultClass=" + text(resultClass.getString()) +
               " role=" + text(role) + " resultRole=" + text(resultRole));
    }

    static std::vector<Link> _links(const CIMObjectPath& objectName, const String& role)
    {
        static const char* const pairs[][2] = {{"a", "b"}, {"b", "c"}};
        std::vector<Link> result;
        String id = keyValue(objectName, "Id");
        for (const auto& pair : pairs)
        {
            bool isLeft = id == pair[0] && (role.size() == 0 || String::equalNoCase(role, "Left"));
            bool isRight = id == pair[1] && (role.size() == 0 || String::equalNoCase(role, "Right"));
            if (isLeft || isRight)
                result.push_back(Link{itemPath("Test_Item", pair[0]), itemPath("Test_Item", pair[1])});
        }
        return result;
    }

    static std::vector<CIMObjectPath> _farEnds(const CIMObjectPath& objectName, const String& role)
    {
        std::vector<CIMObjectPath> result;
        String id = keyValue(objectName, "Id");
        for (const Link& link : _links(objectName, role))
            result.push_back(keyValue(link.left, "Id") == id ? link.right : link.left);
        return result;
    }

    static CIMObjectPath _linkPath(const Link& link)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Left", CIMValue(link.left)));
        keys.append(CIMKeyBinding("Right", CIMValue(link.right)));
        return CIMObjectPath(String(), CIMNamespaceName(), "Test_Link", keys);
    }

    ItemFactory _factory;
};

CIMObjectPath nestedPath()
{
    return CIMObjectPath(String(), CIMNamespaceName(), "Test_Nested");
}

String stringParameter(const Array<CIMParamValue>& in, const char* name)
{
    for (Uint32 i = 0; i < in.size(); ++i)
    {
        if (String::equalNoCase(in[i].getParameterName(), name) && !in[i].getValue().isNull())
        {
            String s;
            in[i].getValue().get(s);
            return s;
        }
    }
    return String();
}

Uint32 uint32Parameter(const Array<CIMParamValue>& in, const char* name)
{
    for (Uint32 i = 0; i < in.size(); ++i)
    {
        if (String::equalNoCase(in[i].getParameterName(), name) && !in[i].getValue().isNull())
        {
            Uint32 v = 0;
            in[i].getValue().get(v);
            return v;
        }
    }
    return 0;
}

// Test_Nested: methods that call back into the server, through the
// CIMOMHandle and through a local client connection.
class NestedProvider : public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle& cimom) override { _cimom = cimom; }
    void terminate() override
    {
        bump("Nested.terminate");
        delete this;
    }

    void invokeMethod(const OperationContext& context, const CIMObjectPath& ref, const CIMName& method,
                      const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override
    {
        const CIMNamespaceName ns = ref.getNameSpace();
        CIMValue result;
        if (method == CIMName("GetLabel"))
        {
            CIMInstance item = _cimom.getInstance(context, ns, itemPath("Test_Item", stringParameter(in, "Id")),
                                                  false, false, false, CIMPropertyList());
            result = item.getProperty(item.findProperty("Label")).getValue();
        }
        else if (method == CIMName("CountNames"))
        {
            result = CIMValue(Uint32(_cimom.enumerateInstanceNames(context, ns, "Test_Item").size()));
        }
        else if (method == CIMName("PropertyCount"))
        {
            CIMClass cls = _cimom.getClass(OperationContext(), ns, CIMName(stringParameter(in, "ClassName")),
                                           false, false, false, CIMPropertyList());
            result = CIMValue(Uint32(cls.getPropertyCount()));
        }
        else if (method == CIMName("LocalWhoAmI"))
        {
            CIMClient client;
            client.connectLocal();
            Array<CIMParamValue> out;
            result = client.invokeMethod(ns, itemPath("Test_Item", "a"), "WhoAmI", Array<CIMParamValue>(), out);
            client.disconnect();
        }
        else if (method == CIMName("FreshWhoAmI"))
        {
            Array<CIMParamValue> out;
            result = _cimom.invokeMethod(OperationContext(), ns, itemPath("Test_Item", "a"), "WhoAmI",
                                         Array<CIMParamValue>(), out);
        }
        else if (method == CIMName("LocalError"))
        {
            // What a local client sees of a provider's error.
            CIMClient client;
            client.connectLocal();
            try
            {
                client.getInstance(ns, itemPath("Test_Item", "throw-cim"));
                result = CIMValue(String("no error"));
            }
            catch (const CIMException& e)
            {
                result = CIMValue(String((std::to_string(e.getCode()) + " " + text(e.getMessage())).c_str()));
            }
            client.disconnect();
        }
        else if (method == CIMName("Recurse"))
        {
            // Alternates between the handle and a local connection on the
            // way down; every level runs on this thread.
            Uint32 depth = uint32Parameter(in, "Depth");
            Uint32 reached = 0;
            if (depth > 0)
            {
                Array<CIMParamValue> args;
                args.append(CIMParamValue("Depth", CIMValue(Uint32(depth - 1))));
                Array<CIMParamValue> out;
                CIMValue below;
                if (depth % 2)
                {
                    below = _cimom.invokeMethod(context, ns, nestedPath(), "Recurse", args, out);
                }
                else
                {
                    CIMClient client;
                    client.connectLocal();
                    below = client.invokeMethod(ns, nestedPath(), "Recurse", args, out);
                }
                below.get(reached);
                ++reached;
            }
            result = CIMValue(reached);
        }
        else if (method == CIMName("Sleep"))
        {
            bump("Nested.sleepStarted");
            std::this_thread::sleep_for(std::chrono::milliseconds(uint32Parameter(in, "Milliseconds")));
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

private:
    CIMOMHandle _cimom;
};

// A provider with nothing but a counted, optionally failing or slow,
// initialize(): Test_InitFail and Test_SlowInit.
class LifecycleProvider : public PartialInstanceProvider
{
public:
    explicit LifecycleProvider(std::string name) : _name(std::move(name)) { bump(_name + ".created"); }

    void initialize(CIMOMHandle& cimom) override
    {
        bump(_name + ".initialize");
        const std::string mode = knob(_name + ".initialize");
        if (mode == "sleep")
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (mode == "fail")
            throw std::runtime_error("cannot reach the array");
        if (mode == "self-call")
        {
            // A call into its own class during initialize().
            try
            {
                cimom.enumerateInstanceNames(OperationContext(), "root/servertest", CIMName(_name.c_str()));
            }
            catch (const CIMException& e)
            {
                record(text(e.getMessage()));
                throw;
            }
        }
    }

    void terminate() override
    {
        bump(_name + ".terminate");
        delete this;
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath& ref,
                                ObjectPathResponseHandler& handler) override
    {
        bump(_name + ".served");
        handler.processing();
        handler.deliver(itemPath(ref.getClassName(), "one"));
        handler.complete();
    }

private:
    std::string _name;
};

// Registered as an instance provider but implements methods only.
class MethodOnlyProvider : public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle&) override {}
    void terminate() override { delete this; }
    void invokeMethod(const OperationContext&, const CIMObjectPath&, const CIMName&,
                      const Array<CIMParamValue>&, MethodResultResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(CIMValue(Uint32(0)));
        handler.complete();
    }
};

}  // namespace

namespace servertest {

void reset()
{
    std::lock_guard<std::mutex> lock(stateMutex);
    knobs.clear();
    counters.clear();
    recordedCall.clear();
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
