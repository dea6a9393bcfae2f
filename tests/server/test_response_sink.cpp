// What the dispatcher writes into a response sink: objects once a provider has returned or
// as each batch leaves its handler, the one end, the collecting sink's answer, and a sink
// that stops a request.
#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

#include <Pegasus/Common/CIMResponseCollector.h>

using namespace Pegasus;
using namespace servertest;

namespace
{

using ResponseSink = ServerTest;

// Notes the ids of the instances it gets and how the answer ended; may refuse objects.
class RecordingSink : public CIMResponseSink
{
public:
    explicit RecordingSink(Delivery delivery) : _delivery(delivery) {}

    Delivery delivery() const override { return _delivery; }
    void deliverClass(const CIMClass&) override { ids.push_back("class"); }
    void deliverClassName(const CIMName&) override { ids.push_back("class name"); }
    void deliverInstance(const CIMInstance& instance) override
    {
        ids.push_back(
            text(instance.getProperty(instance.findProperty("Id")).getValue().toString()));
        if (refuseWith)
            throw *refuseWith;
    }
    void deliverPath(const CIMObjectPath&) override { ids.push_back("path"); }
    void deliverObject(const CIMObject&) override { ids.push_back("object"); }
    void complete(const CIMValue&, const Array<CIMParamValue>&) override { end += "complete;"; }
    void fail(const CIMException& e) override
    {
        end += std::string("fail ") + cimStatusCodeToString(e.getCode()) + " " +
               text(e.getMessage()) + ";";
    }

    std::vector<std::string> ids;
    std::string end;
    std::unique_ptr<CIMException> refuseWith;

private:
    Delivery _delivery;
};

// EnumerateInstances of Test_Item, as CIMClient asks it by default.
CIMOperationRequest enumerateItems()
{
    return CIMOperationRequest::enumerateInstances(
        "root/servertest", "Test_Item", true, true, false, false, CIMPropertyList());
}

}  // namespace

TEST_F(ResponseSink, ObjectsComeOnceTheProviderReturnedOrBatchByBatchWhileItRuns)
{
    typedef CIMResponseSink::Delivery D;
    const std::string gone = "fail CIM_ERR_NOT_FOUND gone;";
    const struct
    {
        const char* itemMode;  // Test_Item's provider; Test_SubItem's answers "s1"
        D delivery;
        size_t objects;
        std::string last;  // id of the last object
        std::string end;
    } cases[] = {
        {"count:250", D::PerProvider, 251, "s1", "complete;"},
        {"count:250", D::AsDelivered, 251, "s1", "complete;"},
        // A provider that fails has given nothing, or the batches that left its handler.
        {"fail-after:200", D::PerProvider, 0, "", gone},
        {"fail-after:99", D::AsDelivered, 0, "", gone},
        {"fail-after:100", D::AsDelivered, 100, "99", gone},
        {"fail-after:199", D::AsDelivered, 100, "99", gone},
        {"fail-after:200", D::AsDelivered, 200, "199", gone},
        // NOT_SUPPORTED after delivering, while another provider answers: left out, but
        // its batches already came.
        {"unsupported-after:150", D::PerProvider, 1, "s1", "complete;"},
        {"unsupported-after:150", D::AsDelivered, 101, "s1", "complete;"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(
            std::string(c.itemMode) + (c.delivery == D::AsDelivered ? " as delivered" : ""));
        servertest::reset();
        setKnob("Item.enumerateInstances", c.itemMode);
        RecordingSink sink(c.delivery);
        server().dispatcher().execute(context, enumerateItems(), sink);
        ASSERT_EQ(sink.ids.size(), c.objects);
        EXPECT_EQ(sink.ids.empty() ? "" : sink.ids.back(), c.last);
        EXPECT_EQ(sink.end, c.end);
    }
}

TEST_F(ResponseSink, TheCollectorKeepsAnAnswerWholeOrOnlyItsError)
{
    CIMOperationResponse answer;
    CIMResponseCollector whole(CIMOperationType::EnumerateInstances, answer);
    server().dispatcher().execute(context, enumerateItems(), whole);
    EXPECT_FALSE(answer.failed);
    EXPECT_EQ(answer.instances.size(), 4u);

    // The first provider's objects had come when the second one failed.
    setKnob("SubItem.enumerateInstances", "throw-cim");
    CIMOperationResponse failed;
    CIMResponseCollector collector(CIMOperationType::EnumerateInstances, failed);
    server().dispatcher().execute(context, enumerateItems(), collector);
    EXPECT_TRUE(failed.failed);
    EXPECT_EQ(failed.error.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(failed.instances.size(), 0u);
}

TEST_F(ResponseSink, ASinkThatThrowsEndsTheRequestWithItsError)
{
    for (CIMResponseSink::Delivery delivery :
         {CIMResponseSink::Delivery::PerProvider, CIMResponseSink::Delivery::AsDelivered})
    {
        setKnob("Item.enumerateInstances", "count:250");
        RecordingSink sink(delivery);
        sink.refuseWith.reset(new CIMException(CIM_ERR_FAILED, "client gone"));
        server().dispatcher().execute(context, enumerateItems(), sink);
        EXPECT_EQ(sink.ids.size(), 1u);
        EXPECT_EQ(sink.end, "fail CIM_ERR_FAILED client gone;");
    }
}
