// Instance and class operations through the dispatcher: which providers are
// asked, with which arguments, what the client gets back, and the errors of
// requests nobody can serve.
#include "ServerFixture.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

#include <set>

using namespace Pegasus;
using namespace servertest;

namespace
{

class InstanceDispatch : public ServerTest
{
protected:
    // With CIMClient's defaults.
    Array<CIMInstance> enumerate(const char* className, bool deepInheritance = true)
    {
        return cimom().enumerateInstances(
            context, ns, className, deepInheritance, true, false, false, CIMPropertyList());
    }
};

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
        result.insert(
            text(instances[i].getProperty(instances[i].findProperty("Id")).getValue().toString()));
    return result;
}

CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> a;
    for (const char* n : names)
        a.append(n);
    return CIMPropertyList(a);
}

CIMInstance itemA(std::initializer_list<CIMProperty> properties)
{
    CIMInstance i("Test_Item");
    for (const CIMProperty& p : properties)
        i.addProperty(p);
    i.setPath(item("a"));
    return i;
}

}  // namespace

TEST_F(InstanceDispatch, GetInstanceGivesTheProviderAFullPathAndFiltersTheResult)
{
    CIMInstance a =
        cimom().getInstance(context, ns, item("a"), true, false, false, CIMPropertyList());
    EXPECT_EQ(lastCall(), "getInstance //cimhost/root/servertest:Test_Item.Id=\"a\"");
    EXPECT_EQ(text(a.getProperty(a.findProperty("Label")).getValue().toString()), "Alpha");

    const std::set<std::string> all = {"Id", "Label", "Count", "Note"};
    const struct
    {
        bool iq, ico;
        CIMPropertyList list;
        std::set<std::string> properties;
    } cases[] = {
        {false, false, CIMPropertyList(), all},
        {true, true, CIMPropertyList(), all},
        {false, false, listOf({"label", "Nope"}), {"Label"}},  // any case; unknown names ignored
        {false, false, listOf({}), {}},                        // empty list: no properties
    };
    for (const auto& c : cases)
    {
        CIMInstance got = cimom().getInstance(context, ns, item("a"), false, c.iq, c.ico, c.list);
        EXPECT_EQ(propertyNames(got), c.properties);
        for (Uint32 i = 0; i < got.getPropertyCount(); ++i)
        {
            CIMConstProperty p = static_cast<const CIMInstance&>(got).getProperty(i);
            EXPECT_EQ(p.getClassOrigin().isNull(), !c.ico) << text(p.getName().getString());
            EXPECT_TRUE(
                p.getName() != CIMName("Id") || (p.findQualifier("Key") != PEG_NOT_FOUND) == c.iq);
        }
    }
}

TEST_F(InstanceDispatch, EnumerationsAskTheProvidersOfEverySubclass)
{
    const std::set<std::string> all = {"a", "b", "c", "s1"};
    EXPECT_EQ(ids(enumerate("Test_Item")), all);
    // A class without a provider of its own is served by its subclasses'.
    EXPECT_EQ(ids(enumerate("Test_Base")), all);
    EXPECT_EQ(cimom().enumerateInstanceNames(context, ns, "Test_Base").size(), 4u);
    EXPECT_EQ(lastCall(), "enumerateInstanceNames //cimhost/root/servertest:Test_Item");

    // Without deep inheritance the subclass's own properties stay out, and
    // providers are given the requested class's property list.
    Array<CIMInstance> shallow = enumerate("Test_Item", false);
    for (Uint32 i = 0; i < shallow.size(); ++i)
        EXPECT_EQ(
            propertyNames(shallow[i]), (std::set<std::string>{"Id", "Label", "Count", "Note"}));
    EXPECT_NE(lastCall().find("pl=Id, Label, Count, Note"), std::string::npos) << lastCall();
    Array<CIMInstance> deep = enumerate("Test_Item", true);
    int extras = 0;
    for (Uint32 i = 0; i < deep.size(); ++i)
        extras += propertyNames(deep[i]).count("Extra");
    EXPECT_EQ(extras, 1);
    EXPECT_NE(lastCall().find("pl=NULL"), std::string::npos) << lastCall();
}

TEST_F(InstanceDispatch, FanOutDropsNotSupportedUnlessEveryProviderSaysIt)
{
    setKnob("SubItem.enumerateInstances", "not-supported");
    EXPECT_EQ(ids(enumerate("Test_Item")), (std::set<std::string>{"a", "b", "c"}));
    setKnob("Item.enumerateInstances", "not-supported");
    CIMException e = cimErrorOf([&] { enumerate("Test_Item"); });
    EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(text(e.getMessage()), "not here");

    // Any other error of one provider fails the whole request.
    setKnob("Item.enumerateInstances", "");
    setKnob("SubItem.enumerateInstances", "throw-cim");
    EXPECT_EQ(cimErrorOf([&] { enumerate("Test_Item"); }).getCode(), CIM_ERR_NOT_FOUND);
}

TEST_F(InstanceDispatch, ModifyTypesWhatTheClientSentByTheClass)
{
    // Typed nulls take the declared type; class origins the client sent are dropped.
    cimom().modifyInstance(
        context, ns,
        itemA(
            {CIMProperty("Label", CIMValue(String("new")), 0, CIMName(), "Test_Base", true),
             CIMProperty("Count", CIMValue())}),
        false, listOf({"Label", "count"}));
    EXPECT_EQ(
        lastCall(), "modifyInstance //cimhost/root/servertest:Test_Item.Id=\"a\" "
                    "props=Label:string=new;Count:uint32=null; iq=0 pl=Label, count");
}

TEST_F(InstanceDispatch, BadRequestsGetTheCodeAClientExpectsAndReachNoProvider)
{
    const CIMNamespaceName nowhere("root/nowhere");
    Array<CIMParamValue> out;
    CIMOMHandle d = cimom();
    auto modify = [&](const CIMInstance& instance, const CIMPropertyList& list = CIMPropertyList())
    {
        return [&d, this, instance, list] { d.modifyInstance(context, ns, instance, false, list); };
    };
    const struct
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
        const char* message;
    } cases[] = {
        {"unknown namespace",
         [&] { d.getInstance(context, nowhere, item("a"), true, false, false, CIMPropertyList()); },
         CIM_ERR_INVALID_NAMESPACE, "root/nowhere"},
        {"unknown class",
         [&] {
             d.getInstance(
                 context, ns, item("a", "Test_Nope"), true, false, false, CIMPropertyList());
         },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"class without provider",
         [&] {
             d.getInstance(
                 context, ns, item("a", "Test_Unserved"), true, false, false, CIMPropertyList());
         },
         CIM_ERR_NOT_SUPPORTED, ""},
        {"enumerate class nobody serves", [&] { enumerate("Test_Unserved"); },
         CIM_ERR_NOT_SUPPORTED, "No provider or repository defined for class Test_Unserved."},
        {"delete unknown class", [&] { d.deleteInstance(context, ns, item("a", "Test_Nope")); },
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
        {"get unknown class definition",
         [&] { d.getClass(context, ns, "Test_Nope", true, true, false, CIMPropertyList()); },
         CIM_ERR_NOT_FOUND, ""},
        {"class names below an unknown class",
         [&] { d.enumerateClassNames(context, ns, "Test_Nope", false); }, CIM_ERR_INVALID_CLASS,
         "Test_Nope"},
        {"classes of an unknown namespace",
         [&] { d.enumerateClasses(context, nowhere, CIMName(), false, true, true, false); },
         CIM_ERR_INVALID_NAMESPACE, "root/nowhere"},
        {"method of an unknown class",
         [&] { d.invokeMethod(context, ns, item("a", "Test_Nope"), "Ping", {}, out); },
         CIM_ERR_NOT_FOUND, "Test_Nope"},
        {"unknown method", [&] { d.invokeMethod(context, ns, item("a"), "Pong", {}, out); },
         CIM_ERR_METHOD_NOT_FOUND, "Pong"},
        {"method nobody serves",
         [&] { d.invokeMethod(context, ns, item("a"), "Unserved", {}, out); },
         CIM_ERR_METHOD_NOT_AVAILABLE, "Unserved"},
        {"modify: undeclared property",
         modify(itemA({CIMProperty("Colour", CIMValue(String("red")))})), CIM_ERR_NO_SUCH_PROPERTY,
         "Class Test_Item has no property Colour."},
        {"modify: wrong type", modify(itemA({CIMProperty("Count", CIMValue(String("7")))})),
         CIM_ERR_TYPE_MISMATCH, "Property Count is declared uint32, not string."},
        {"modify: array for a scalar",
         modify(itemA({CIMProperty("Label", CIMValue(Array<String>()))})), CIM_ERR_TYPE_MISMATCH,
         "Property Label is declared string, not string[]."},
        {"modify: unknown name in the property list",
         modify(itemA({}), listOf({"Label", "Colour"})), CIM_ERR_NO_SUCH_PROPERTY,
         "Class Test_Item has no property Colour."},
        {"modify: instance of an unknown class", modify(CIMInstance("Test_Nope")),
         CIM_ERR_INVALID_CLASS, "Test_Nope"},
    };
    for (const auto& c : cases)
    {
        servertest::reset();
        CIMException e = cimErrorOf(c.call);
        EXPECT_EQ(e.getCode(), c.code) << c.what;
        EXPECT_NE(text(e.getMessage()).find(c.message), std::string::npos)
            << c.what << ": " << text(e.getMessage());
        EXPECT_EQ(lastCall(), "") << c.what << ": no provider may be called";
    }
}

TEST_F(InstanceDispatch, CreateAndDeleteReachTheProvider)
{
    CIMInstance fresh("Test_Item");
    fresh.addProperty(CIMProperty("Id", CIMValue(String("d"))));
    EXPECT_EQ(text(cimom().createInstance(context, ns, fresh).toString()), "Test_Item.Id=\"d\"");
    EXPECT_EQ(lastCall(), "createInstance //cimhost/root/servertest:Test_Item");
    cimom().deleteInstance(context, ns, item("d"));
    EXPECT_EQ(lastCall(), "deleteInstance //cimhost/root/servertest:Test_Item.Id=\"d\"");

    setKnob("Item.createInstance", "two-paths");
    EXPECT_EQ(
        text(cimErrorOf([&] { cimom().createInstance(context, ns, fresh); }).getMessage()),
        "Too many objects delivered.");
    setKnob("Item.createInstance", "no-path");
    EXPECT_EQ(
        text(cimErrorOf([&] { cimom().createInstance(context, ns, fresh); }).getMessage()),
        "Too few objects delivered.");
}

// The repository's own rules are tested with it; here: the options get there.
TEST_F(InstanceDispatch, ClassOperationsPassTheirOptionsToTheRepository)
{
    CIMClass sub =
        cimom().getClass(context, ns, "Test_SubItem", false, false, true, CIMPropertyList());
    EXPECT_EQ(sub.getPropertyCount(), 5u);
    EXPECT_EQ(
        text(sub.getProperty(sub.findProperty("Id")).getClassOrigin().getString()), "Test_Base");
    EXPECT_EQ(
        cimom()
            .getClass(context, ns, "Test_SubItem", true, true, false, CIMPropertyList())
            .getPropertyCount(),
        1u);  // local only
    EXPECT_EQ(cimom().enumerateClassNames(context, ns, "Test_Base", true).size(), 3u);
    EXPECT_EQ(
        cimom().enumerateClasses(context, ns, "Test_Base", false, true, true, false).size(), 2u);
}
