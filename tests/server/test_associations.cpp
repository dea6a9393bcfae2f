// Association operations: the providers chosen by the association classes
// that can reference the object, the arguments they get, the completion
// and filtering of their results, and class-level requests answered from
// the schema. Which providers each filter reaches is also tested end to end
// with the array's association providers.
#include "ServerFixture.h"

#include <set>

using namespace Pegasus;
using namespace servertest;

namespace
{

// The association operations with CIMClient's defaults.
class AssociationDispatch : public ServerTest
{
protected:
    Array<CIMObject> associators(
        const CIMObjectPath& objectName, const CIMName& assocClass = CIMName(),
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        const String& resultRole = String::EMPTY, Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList())
    {
        return cimom().associators(
            context, ns, objectName, assocClass, resultClass, role, resultRole, includeQualifiers,
            includeClassOrigin, propertyList);
    }
    Array<CIMObjectPath> associatorNames(
        const CIMObjectPath& objectName, const CIMName& assocClass = CIMName(),
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        const String& resultRole = String::EMPTY)
    {
        return cimom().associatorNames(
            context, ns, objectName, assocClass, resultClass, role, resultRole);
    }
    Array<CIMObject> references(
        const CIMObjectPath& objectName, const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY)
    {
        return cimom().references(
            context, ns, objectName, resultClass, role, false, false, CIMPropertyList());
    }
    Array<CIMObjectPath> referenceNames(
        const CIMObjectPath& objectName, const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY)
    {
        return cimom().referenceNames(context, ns, objectName, resultClass, role);
    }
};

std::set<std::string> texts(const Array<CIMObjectPath>& paths)
{
    std::set<std::string> result;
    for (Uint32 i = 0; i < paths.size(); ++i)
        result.insert(text(paths[i].toString()));
    return result;
}

const std::string prefix = "//cimhost/root/servertest:";
const std::string itemA = prefix + "Test_Item.Id=\"a\"", itemB = prefix + "Test_Item.Id=\"b\"",
                  itemC = prefix + "Test_Item.Id=\"c\"";

}  // namespace

TEST_F(AssociationDispatch, ProvidersGetTheirArgumentsAndResultsAreCompletedAndFiltered)
{
    // The provider delivers paths without host and namespace.
    EXPECT_EQ(texts(associatorNames(item("b"))), (std::set<std::string>{itemA, itemC}));
    EXPECT_EQ(
        lastCall(),
        "associatorNames object=" + itemB + " assocClass=Test_Link resultClass= role= resultRole=");
    associatorNames(item("a"), "Test_Link", "Test_Base", "Left", "Right");
    EXPECT_EQ(
        lastCall(), "associatorNames object=" + itemA +
                        " assocClass=Test_Link resultClass=Test_Base role=Left resultRole=Right");
    // For references the association class travels as the result class.
    EXPECT_EQ(referenceNames(item("b"), CIMName(), "Right").size(), 1u);
    EXPECT_EQ(
        lastCall(), "referenceNames object=" + itemB +
                        " assocClass= resultClass=Test_Link role=Right resultRole=");
    Array<CIMObject> links = references(item("b"));
    EXPECT_EQ(links.size(), 2u);
    for (Uint32 i = 0; i < links.size(); ++i)
        EXPECT_EQ(text(links[i].getPath().toString()).rfind(prefix, 0), 0u);

    Array<CIMObject> all = associators(item("b"));
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(
        all[0].getQualifierCount() +
            all[0].getProperty(all[0].findProperty("Id")).getQualifierCount(),
        0u);
    Array<CIMObject> labels = associators(
        item("a"), CIMName(), CIMName(), String(), String(), true, false,
        CIMPropertyList(Array<CIMName>(1, "Label")));
    ASSERT_EQ(labels.size(), 1u);
    ASSERT_EQ(labels[0].getPropertyCount(), 1u);
    EXPECT_EQ(text(labels[0].getProperty(0).getValue().toString()), "Beta");
    EXPECT_EQ(text(labels[0].getPath().toString()), itemB);
}

TEST_F(AssociationDispatch, ChoiceOfAssociationClasses)
{
    // A subclass instance is referenced through its parent's association.
    EXPECT_EQ(associatorNames(item("s1", "Test_SubItem")).size(), 0u);
    EXPECT_EQ(references(item("a"), "Test_Link").size(), 1u);
    // An object only an association nobody serves references, and one no
    // association class references at all: every request answers nothing.
    for (const char* cls : {"Test_Unserved", "Test_Lifecycle"})
    {
        SCOPED_TRACE(cls);
        const CIMObjectPath object = item("u", cls);
        EXPECT_EQ(associators(object).size(), 0u);
        EXPECT_EQ(associatorNames(object).size(), 0u);
        EXPECT_EQ(references(object).size(), 0u);
        EXPECT_EQ(referenceNames(object).size(), 0u);
    }
    for (const auto& call :
         std::vector<std::function<void()>>{
             [&] { associators(item("a", "Test_Nope")); },
             [&] { associatorNames(item("a"), "Test_Nope"); },
             [&] { associatorNames(item("a"), CIMName(), CIMName(), "1x"); },  // no CIM name
         })
        EXPECT_EQ(cimErrorOf(call).getCode(), CIM_ERR_INVALID_PARAMETER);
}

TEST_F(AssociationDispatch, ClassLevelRequestsAreAnsweredFromTheSchema)
{
    const CIMObjectPath itemClass("Test_Item");
    EXPECT_EQ(
        texts(referenceNames(itemClass)),
        (std::set<std::string>{prefix + "Test_Link", prefix + "Test_OtherLink"}));
    EXPECT_EQ(
        texts(associatorNames(itemClass)),
        (std::set<std::string>{prefix + "Test_Item", prefix + "Test_Unserved"}));
    EXPECT_EQ(
        texts(associatorNames(itemClass, CIMName(), CIMName(), "", "Target")),
        (std::set<std::string>{prefix + "Test_Unserved"}));
    EXPECT_EQ(referenceNames(CIMObjectPath("Test_Nested")).size(), 0u);

    Array<CIMObject> classes = references(itemClass, CIMName(), "Right");
    ASSERT_EQ(classes.size(), 1u);
    EXPECT_TRUE(classes[0].isClass());
    EXPECT_EQ(text(classes[0].getClassName().getString()), "Test_Link");
}
