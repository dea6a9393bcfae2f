// Instance operations through the dispatcher: which providers are asked,
// with which arguments, what the client gets back, and the errors of
// requests nobody can serve.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

#include <set>

using namespace Pegasus;
using namespace servertest;

namespace {

using InstanceDispatch = ServerTest;

std::set<std::string> propertyNames(const CIMInstance& instance)
{
    std::set<std::string> names;
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        names.insert(text(instance.getProperty(i).getName().getString()));
    return names;
}

std::set<std::string> ids(const Array<CIMInstance>& instances)
{
    std::set<std::string> result;
    for (Uint32 i = 0; i < instances.size(); ++i)
    {
        String id;
        instances[i].getProperty(instances[i].findProperty("Id")).getValue().get(id);
        result.insert(text(id));
    }
    return result;
}

CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> a;
    for (const char* n : names)
        a.append(n);
    return CIMPropertyList(a);
}

}  // namespace

TEST_F(InstanceDispatch, GetInstanceGivesTheProviderAFullPathAndFiltersTheResult)
{
    CIMInstance a = dispatcher().getInstance(context, ns, item("a"));
    EXPECT_EQ(lastCall(), "getInstance //cimhost/root/servertest:Test_Item.Id=\"a\"");
    String label;
    a.getProperty(a.findProperty("Label")).getValue().get(label);
    EXPECT_EQ(text(label), "Alpha");

    struct Case
    {
        bool iq, ico;
        CIMPropertyList list;
        std::set<std::string> properties;
    };
    const std::set<std::string> all = {"Id", "Label", "Count", "Note"};
    const Case cases[] = {
        {false, false, CIMPropertyList(), all},
        {true, true, CIMPropertyList(), all},
        {false, false, listOf({"label", "Nope"}), {"Label"}},  // any case; unknown names ignored
        {false, false, listOf({}), {}},                        // empty list: no properties
    };
    for (const Case& c : cases)
    {
        CIMInstance got = dispatcher().getInstance(context, ns, item("a"), false, c.iq, c.ico, c.list);
        EXPECT_EQ(propertyNames(got), c.properties);
        for (Uint32 i = 0; i < got.getPropertyCount(); ++i)
        {
            CIMConstProperty p = static_cast<const CIMInstance&>(got).getProperty(i);
            EXPECT_EQ(p.getClassOrigin().isNull(), !c.ico) << text(p.getName().getString());
            if (p.getName() == CIMName("Id"))
            {
                EXPECT_EQ(p.findQualifier("Key") != PEG_NOT_FOUND, c.iq);
            }
        }
    }
}

TEST_F(InstanceDispatch, EnumerationsAskTheProvidersOfEverySubclass)
{
    EXPECT_EQ(ids(dispatcher().enumerateInstances(context, ns, "Test_Item")),
              (std::set<std::string>{"a", "b", "c", "s1"}));
    // A class without a provider of its own is served by its subclasses'.
    EXPECT_EQ(ids(dispatcher().enumerateInstances(context, ns, "Test_Base")),
              (std::set<std::string>{"a", "b", "c", "s1"}));
    EXPECT_EQ(dispatcher().enumerateInstanceNames(context, ns, "Test_Base").size(), 4u);
    EXPECT_EQ(lastCall(), "enumerateInstanceNames //cimhost/root/servertest:Test_Item");

    // Without deep inheritance the subclass's own properties stay out, and
    // providers are given the requested class's property list.
    Array<CIMInstance> shallow = dispatcher().enumerateInstances(context, ns, "Test_Item", false);
    for (Uint32 i = 0; i < shallow.size(); ++i)
        EXPECT_EQ(propertyNames(shallow[i]), (std::set<std::string>{"Id", "Label", "Count", "Note"}));
    EXPECT_NE(lastCall().find("pl=Id, Label, Count, Note"), std::string::npos) << lastCall();

    Array<CIMInstance> deep = dispatcher().enumerateInstances(context, ns, "Test_Item", true);
    bool sawExtra = false;
    for (Uint32 i = 0; i < deep.size(); ++i)
        sawExtra = sawExtra || propertyNames(deep[i]).count("Extra");
    EXPECT_TRUE(sawExtra);
    EXPECT_NE(lastCall().find("pl=NULL"), std::string::npos) << lastCall();
}

TEST_F(InstanceDispatch, FanOutDropsNotSupportedUnlessEveryProviderSaysIt)
{
    setKnob("SubItem.enumerateInstances", "not-supported");
    EXPECT_EQ(ids(dispatcher().enumerateInstances(context, ns, "Test_Item")),
              (std::set<std::string>{"a", "b", "c"}));

    setKnob("Item.enumerateInstances", "not-supported");
    CIMException e = cimErrorOf([&] { dispatcher().enumerateInstances(context, ns, "Test_Item"); });
    EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(text(e.getMessage()), "not here");

    // Any other error of one provider fails the whole request.
    setKnob("Item.enumerateInstances", "");
    setKnob("SubItem.enumerateInstances", "throw-cim");
    EXPECT_EQ(cimErrorOf([&] { dispatcher().enumerateInstances(context, ns, "Test_Item"); }).getCode(),
              CIM_ERR_NOT_FOUND);
}

TEST_F(InstanceDispatch, RequestsNobodyCanServeGetTheCodeAClientExpects)
{
    struct Case
    {
        const char* what;
        std::function<void(Dispatcher&, const OperationContext&)> call;
        CIMStatusCode code;
        const char* message;
    };
    const CIMNamespaceName nowhere("root/nowhere");
    Array<CIMParamValue> out;
    const Case cases[] = {
        {"unknown namespace", [&](Dispatcher& d, const OperationContext& c) { d.getInstance(c, nowhere, item("a")); },
         CIM_ERR_INVALID_NAMESPACE, "root/nowhere"},
        {"unknown class", [&](Dispatcher& d, const OperationContext& c) { d.getInstance(c, ns, item("a", "Test_Nope")); },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"class without provider",
         [&](Dispatcher& d, const OperationContext& c) { d.getInstance(c, ns, item("a", "Test_Unserved")); },
         CIM_ERR_NOT_SUPPORTED, ""},
        {"enumerate unknown class",
         [&](Dispatcher& d, const OperationContext& c) { d.enumerateInstanceNames(c, ns, "Test_Nope"); },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"enumerate class nobody serves",
         [&](Dispatcher& d, const OperationContext& c) { d.enumerateInstances(c, ns, "Test_Unserved"); },
         CIM_ERR_NOT_SUPPORTED, "No provider or repository defined for class Test_Unserved."},
        {"delete unknown class",
         [&](Dispatcher& d, const OperationContext& c) { d.deleteInstance(c, ns, item("a", "Test_Nope")); },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"get unknown class definition",
         [&](Dispatcher& d, const OperationContext& c) { d.getClass(c, ns, "Test_Nope"); }, CIM_ERR_NOT_FOUND, ""},
        {"class names below an unknown class",
         [&](Dispatcher& d, const OperationContext& c) { d.enumerateClassNames(c, ns, "Test_Nope"); },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"classes of an unknown namespace",
         [&](Dispatcher& d, const OperationContext& c) { d.enumerateClasses(c, nowhere); },
         CIM_ERR_INVALID_NAMESPACE, "root/nowhere"},
        {"method of an unknown class",
         [&](Dispatcher& d, const OperationContext& c) { d.invokeMethod(c, ns, item("a", "Test_Nope"), "Ping", {}, out); },
         CIM_ERR_NOT_FOUND, "Test_Nope"},
        {"unknown method",
         [&](Dispatcher& d, const OperationContext& c) { d.invokeMethod(c, ns, item("a"), "Pong", {}, out); },
         CIM_ERR_METHOD_NOT_FOUND, "Pong"},
        {"method nobody serves",
         [&](Dispatcher& d, const OperationContext& c) { d.invokeMethod(c, ns, item("a"), "Unserved", {}, out); },
         CIM_ERR_METHOD_NOT_AVAILABLE, "Unserved"},
    };
    for (const Case& c : cases)
    {
        CIMException e = cimErrorOf([&] { c.call(dispatcher(), context); });
        EXPECT_EQ(e.getCode(), c.code) << c.what;
        if (c.message[0])
        {
            EXPECT_NE(text(e.getMessage()).find(c.message), std::string::npos) << c.what << ": " << text(e.getMessage());
        }
    }
}

TEST_F(InstanceDispatch, ModifyChecksTheInstanceAgainstItsClass)
{
    auto instance = [](std::initializer_list<CIMProperty> properties) {
        CIMInstance i("Test_Item");
        for (const CIMProperty& p : properties)
            i.addProperty(p);
        i.setPath(item("a"));
        return i;
    };

    // Typed nulls take the declared type; class origins the client sent are dropped.
    dispatcher().modifyInstance(
        context, ns,
        instance({CIMProperty("Label", CIMValue(String("new")), 0, CIMName(), "Test_Base", true),
                  CIMProperty("Count", CIMValue())}),
        false, listOf({"Label", "count"}));
    EXPECT_EQ(lastCall(), "modifyInstance //cimhost/root/servertest:Test_Item.Id=\"a\" "
                          "props=Label:string=new;Count:uint32=null; iq=0 pl=Label, count");

    struct Case
    {
        const char* what;
        CIMInstance instance;
        CIMPropertyList list;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {"undeclared property", instance({CIMProperty("Colour", CIMValue(String("red")))}), CIMPropertyList(),
         CIM_ERR_NO_SUCH_PROPERTY, "Class Test_Item has no property Colour."},
        {"wrong type", instance({CIMProperty("Count", CIMValue(String("7")))}), CIMPropertyList(),
         CIM_ERR_TYPE_MISMATCH, "Property Count is declared uint32, not string."},
        {"array for a scalar", instance({CIMProperty("Label", CIMValue(Array<String>()))}), CIMPropertyList(),
         CIM_ERR_TYPE_MISMATCH, "Property Label is declared string, not string[]."},
        {"unknown name in the property list", instance({}), listOf({"Label", "Colour"}), CIM_ERR_NO_SUCH_PROPERTY,
         "Class Test_Item has no property Colour."},
        {"instance of an unknown class", CIMInstance("Test_Nope"), CIMPropertyList(), CIM_ERR_INVALID_CLASS,
         "Test_Nope"},
    };
    for (const Case& c : cases)
    {
        servertest::reset();
        CIMException e = cimErrorOf([&] { dispatcher().modifyInstance(context, ns, c.instance, false, c.list); });
        EXPECT_EQ(e.getCode(), c.code) << c.what;
        EXPECT_EQ(text(e.getMessage()), c.message) << c.what;
        EXPECT_EQ(lastCall(), "") << c.what << ": the provider must not be called";
    }
}

TEST_F(InstanceDispatch, CreateAndDeleteReachTheProvider)
{
    CIMInstance fresh("Test_Item");
    fresh.addProperty(CIMProperty("Id", CIMValue(String("d"))));
    CIMObjectPath created = dispatcher().createInstance(context, ns, fresh);
    EXPECT_EQ(text(created.toString()), "Test_Item.Id=\"d\"");
    EXPECT_EQ(lastCall(), "createInstance //cimhost/root/servertest:Test_Item");

    dispatcher().deleteInstance(context, ns, item("d"));
    EXPECT_EQ(lastCall(), "deleteInstance //cimhost/root/servertest:Test_Item.Id=\"d\"");

    setKnob("Item.createInstance", "two-paths");
    CIMException twice = cimErrorOf([&] { dispatcher().createInstance(context, ns, fresh); });
    EXPECT_EQ(text(twice.getMessage()), "Too many objects delivered.");
    setKnob("Item.createInstance", "no-path");
    CIMException none = cimErrorOf([&] { dispatcher().createInstance(context, ns, fresh); });
    EXPECT_EQ(text(none.getMessage()), "Too few objects delivered.");
}

TEST_F(InstanceDispatch, ClassOperationsComeFromTheRepository)
{
    CIMClass sub = dispatcher().getClass(context, ns, "Test_SubItem", false, false, true);
    EXPECT_EQ(sub.getPropertyCount(), 5u);
    EXPECT_EQ(text(sub.getProperty(sub.findProperty("Id")).getClassOrigin().getString()), "Test_Base");
    EXPECT_EQ(dispatcher().getClass(context, ns, "Test_SubItem", true).getPropertyCount(), 1u);  // local only

    Array<CIMName> below = dispatcher().enumerateClassNames(context, ns, "Test_Base", true);
    std::set<std::string> names;
    for (Uint32 i = 0; i < below.size(); ++i)
        names.insert(text(below[i].getString()));
    EXPECT_TRUE(names.count("Test_Item") && names.count("Test_SubItem") && names.count("Test_Unserved"));
    EXPECT_FALSE(names.count("Test_Missing"));
    EXPECT_FALSE(names.count("Test_Base"));
    EXPECT_EQ(dispatcher().enumerateClasses(context, ns, "Test_Item", true).size(), 1u);
}
