// Association operations: the providers chosen by the association classes
// that can reference the object, the arguments they get, the completion
// and filtering of their results, and class-level requests answered from
// the schema.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

#include <set>

using namespace Pegasus;
using namespace servertest;

namespace {

using AssociationDispatch = ServerTest;

std::set<std::string> texts(const Array<CIMObjectPath>& paths)
{
    std::set<std::string> result;
    for (Uint32 i = 0; i < paths.size(); ++i)
        result.insert(text(paths[i].toString()));
    return result;
}

std::set<std::string> objectPaths(const Array<CIMObject>& objects)
{
    std::set<std::string> result;
    for (Uint32 i = 0; i < objects.size(); ++i)
        result.insert(text(objects[i].getPath().toString()));
    return result;
}

const char* const itemA = "//cimhost/root/servertest:Test_Item.Id=\"a\"";
const char* const itemB = "//cimhost/root/servertest:Test_Item.Id=\"b\"";
const char* const itemC = "//cimhost/root/servertest:Test_Item.Id=\"c\"";

}  // namespace

TEST_F(AssociationDispatch, ProvidersGetTheirAssociationClassAndResultsAreCompleted)
{
    // The provider delivers paths without host and namespace.
    EXPECT_EQ(texts(dispatcher().associatorNames(context, ns, item("b"))), (std::set<std::string>{itemA, itemC}));
    EXPECT_EQ(lastCall(), std::string("associatorNames object=") + itemB +
                              " assocClass=Test_Link resultClass= role= resultRole=");

    dispatcher().associatorNames(context, ns, item("a"), "Test_Link", "Test_Base", "Left", "Right");
    EXPECT_EQ(lastCall(), std::string("associatorNames object=") + itemA +
                              " assocClass=Test_Link resultClass=Test_Base role=Left resultRole=Right");

    // For references the association class travels as the result class.
    EXPECT_EQ(dispatcher().referenceNames(context, ns, item("b"), CIMName(), "Right").size(), 1u);
    EXPECT_EQ(lastCall(), std::string("referenceNames object=") + itemB +
                              " assocClass= resultClass=Test_Link role=Right resultRole=");

    Array<CIMObject> links = dispatcher().references(context, ns, item("b"));
    EXPECT_EQ(links.size(), 2u);
    for (Uint32 i = 0; i < links.size(); ++i)
    {
        EXPECT_EQ(text(links[i].getPath().getHost()), "cimhost");
        EXPECT_EQ(text(links[i].getPath().getNameSpace().getString()), "root/servertest");
    }
}

TEST_F(AssociationDispatch, AssociatorsReturnFilteredObjects)
{
    Array<CIMObject> all = dispatcher().associators(context, ns, item("b"));
    EXPECT_EQ(objectPaths(all), (std::set<std::string>{itemA, itemC}));
    for (Uint32 i = 0; i < all.size(); ++i)
        EXPECT_EQ(all[i].getQualifierCount() + all[i].getProperty(all[i].findProperty("Id")).getQualifierCount(), 0u);

    Array<CIMName> onlyLabel;
    onlyLabel.append("Label");
    Array<CIMObject> labels = dispatcher().associators(context, ns, item("a"), CIMName(), CIMName(), String(),
                                                       String(), true, false, CIMPropertyList(onlyLabel));
    ASSERT_EQ(labels.size(), 1u);
    ASSERT_EQ(labels[0].getPropertyCount(), 1u);
    String label;
    labels[0].getProperty(0).getValue().get(label);
    EXPECT_EQ(text(label), "Beta");
}

TEST_F(AssociationDispatch, ChoiceOfAssociationClasses)
{
    struct Case
    {
        const char* what;
        std::function<Uint32()> call;
        CIMStatusCode code;  // CIM_ERR_SUCCESS: `count` results
        Uint32 count;
    };
    const CIMObjectPath unservedObject = item("u", "Test_Unserved");
    const Case cases[] = {
        {"a subclass instance is referenced through its parent's association",
         [&] { return dispatcher().associatorNames(context, ns, item("s1", "Test_SubItem")).size(); },
         CIM_ERR_SUCCESS, 0},
        {"association class given: only it and its subclasses",
         [&] { return dispatcher().associatorNames(context, ns, item("a"), "Test_OtherLink").size(); },
         CIM_ERR_NOT_SUPPORTED, 0},
        {"role narrows references to the classes with that reference",
         [&] { return dispatcher().referenceNames(context, ns, item("a"), CIMName(), "Target").size(); },
         CIM_ERR_NOT_SUPPORTED, 0},
        {"result class narrows references",
         [&] { return dispatcher().references(context, ns, item("a"), "Test_Link").size(); }, CIM_ERR_SUCCESS, 1},
        {"only an association nobody serves references the object",
         [&] { return dispatcher().associators(context, ns, unservedObject).size(); }, CIM_ERR_NOT_SUPPORTED, 0},
        {"unknown object class",
         [&] { return dispatcher().associators(context, ns, item("a", "Test_Nope")).size(); },
         CIM_ERR_INVALID_PARAMETER, 0},
        {"unknown association class",
         [&] { return dispatcher().associatorNames(context, ns, item("a"), "Test_Nope").size(); },
         CIM_ERR_INVALID_PARAMETER, 0},
        {"unknown result class",
         [&] { return dispatcher().referenceNames(context, ns, item("a"), "Test_Nope").size(); },
         CIM_ERR_INVALID_PARAMETER, 0},
        {"role that is no CIM name",
         [&] { return dispatcher().associatorNames(context, ns, item("a"), CIMName(), CIMName(), "1x").size(); },
         CIM_ERR_INVALID_PARAMETER, 0},
        {"result role that is no CIM name",
         [&] {
             return dispatcher().associatorNames(context, ns, item("a"), CIMName(), CIMName(), "", "a-b").size();
         },
         CIM_ERR_INVALID_PARAMETER, 0},
    };
    for (const Case& c : cases)
    {
        if (c.code == CIM_ERR_SUCCESS)
            EXPECT_EQ(c.call(), c.count) << c.what;
        else
            EXPECT_EQ(cimErrorOf([&] { c.call(); }).getCode(), c.code) << c.what;
    }
}

TEST_F(AssociationDispatch, ClassLevelRequestsAreAnsweredFromTheSchema)
{
    const CIMObjectPath itemClass("Test_Item");
    const std::string prefix = "//cimhost/root/servertest:";
    struct Case
    {
        const char* what;
        std::function<Array<CIMObjectPath>()> call;
        std::set<std::string> expected;
    };
    const Case cases[] = {
        {"reference names", [&] { return dispatcher().referenceNames(context, ns, itemClass); },
         {prefix + "Test_Link", prefix + "Test_OtherLink"}},
        {"reference names by role", [&] { return dispatcher().referenceNames(context, ns, itemClass, CIMName(), "Left"); },
         {prefix + "Test_Link"}},
        {"associator names", [&] { return dispatcher().associatorNames(context, ns, itemClass); },
         {prefix + "Test_Item", prefix + "Test_Unserved"}},
        {"associator names by result role",
         [&] { return dispatcher().associatorNames(context, ns, itemClass, CIMName(), CIMName(), "", "Target"); },
         {prefix + "Test_Unserved"}},
        {"associator names by result class",
         [&] { return dispatcher().associatorNames(context, ns, itemClass, CIMName(), "Test_Unserved"); },
         {prefix + "Test_Unserved"}},
        {"associator names by association class",
         [&] { return dispatcher().associatorNames(context, ns, itemClass, "Test_Link"); }, {prefix + "Test_Item"}},
        {"a class nothing references",
         [&] { return dispatcher().referenceNames(context, ns, CIMObjectPath("Test_Nested")); }, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(texts(c.call()), c.expected) << c.what;

    Array<CIMObject> classes = dispatcher().references(context, ns, itemClass, CIMName(), "Right");
    ASSERT_EQ(classes.size(), 1u);
    EXPECT_TRUE(classes[0].isClass());
    EXPECT_EQ(text(classes[0].getClassName().getString()), "Test_Link");
}
