// The pulled enumerations in the server core: what the opens and pulls answer, page by
// page, against the operations they page; the errors, in DSP0200's order, each naming its
// parameter; contexts apart per user, capped, expiring on the server's clock (a clock of
// the test's own: nothing sleeps); back-pressure on the provider and what a context frees.
#include "PullFixture.h"

using namespace Pegasus;
using namespace servertest;

namespace
{

TEST_F(Pull, EveryOpenPagesWhatItsOperationAnswersWhateverThePageSize)
{
    const CIMObjectPath a = item("a"), b = item("b");
    const struct
    {
        const char* what;
        CIMOperationRequest open;
        CIMOperationRequest paged;
    } cases[] = {
        {"instances, subclasses included",
         CIMOperationRequest::openEnumerateInstances(ns, "Test_Item", true, false, {}, {}),
         CIMOperationRequest::enumerateInstances(ns, "Test_Item", true, false, false, false, {})},
        {"instances of the class's own properties, class origins",
         CIMOperationRequest::openEnumerateInstances(ns, "Test_Base", false, true, {}, {}),
         CIMOperationRequest::enumerateInstances(ns, "Test_Base", false, false, false, true, {})},
        {"instance paths", CIMOperationRequest::openEnumerateInstancePaths(ns, "Test_Item", {}),
         CIMOperationRequest::enumerateInstanceNames(ns, "Test_Item")},
        {"references",
         CIMOperationRequest::openReferenceInstances(ns, b, CIMName(), "", false, {}, {}),
         CIMOperationRequest::references(ns, b, CIMName(), "", false, false, {})},
        {"reference paths, by role",
         CIMOperationRequest::openReferenceInstancePaths(ns, b, "Test_Link", "Left", {}),
         CIMOperationRequest::referenceNames(ns, b, "Test_Link", "Left")},
        {"associators",
         CIMOperationRequest::openAssociatorInstances(
             ns, b, CIMName(), CIMName(), "", "", false, {}, {}),
         CIMOperationRequest::associators(ns, b, CIMName(), CIMName(), "", "", false, false, {})},
        {"associator paths",
         CIMOperationRequest::openAssociatorInstancePaths(
             ns, a, "Test_Link", "Test_Item", "", "", {}),
         CIMOperationRequest::associatorNames(ns, a, "Test_Link", "Test_Item", "", "")},
    };
    for (const auto& c : cases)
    {
        const std::vector<std::string> whole = objectsOf(run(c.paged));
        ASSERT_FALSE(whole.empty()) << c.what;
        const Uint32 n = static_cast<Uint32>(whole.size());
        for (Uint32 size : {1u, n - 1, n, n + 1})
        {
            if (size == 0)
                continue;
            SCOPED_TRACE(std::string(c.what) + ", pages of " + std::to_string(size));
            CIMOperationRequest open = c.open;
            open.maxObjectCount = size;
            std::vector<std::string> got;
            std::string id = page(run(open), &got);
            const bool paths = open.operation == CIMOperationType::OpenEnumerateInstancePaths ||
                               open.operation == CIMOperationType::OpenReferenceInstancePaths ||
                               open.operation == CIMOperationType::OpenAssociatorInstancePaths;
            for (int pulls = 0; !id.empty() && pulls <= 10; ++pulls)
            {
                const size_t before = got.size();
                id = page(
                    run(paths ? CIMOperationRequest::pullInstancePaths(ns, id.c_str(), size)
                              : CIMOperationRequest::pullInstancesWithPath(ns, id.c_str(), size)),
                    &got);
                EXPECT_LE(got.size() - before, size);
            }
            EXPECT_EQ(id, "") << "the sequence ends";
            EXPECT_EQ(got, whole);
        }
    }
    EXPECT_EQ(contexts().stats().open, 0u);
}

TEST_F(Pull, OpenErrorsComeInTheOrderDsp0200ListsThemAndNameTheParameter)
{
    const CIMOperationRequest good =
        CIMOperationRequest::openEnumerateInstances(ns, "Test_Item", true, false, {}, openWith(1));
    const struct
    {
        const char* what;
        std::function<void(CIMOperationRequest&)> change;
        std::string expected;
    } cases[] = {
        {"unknown namespace, and everything else wrong too",
         [](CIMOperationRequest& r)
         {
             r.nameSpace = "root/nowhere";
             r.operationTimeout = 0;
             r.give(CIMOperationParameter::OperationTimeout);
             r.continueOnError = true;
             r.className = "Test_Nothing";
         },
         "CIM_ERR_INVALID_NAMESPACE: root/nowhere"},
        {"OperationTimeout 0, and ContinueOnError",
         [](CIMOperationRequest& r)
         {
             r.operationTimeout = 0;
             r.give(CIMOperationParameter::OperationTimeout);
             r.continueOnError = true;
         },
         "CIM_ERR_INVALID_OPERATION_TIMEOUT: OperationTimeout 0 (never expire) is not allowed: "
         "give 1 to 60 seconds, or NULL for the server's 20."},
        {"OperationTimeout one past the maximum",
         [](CIMOperationRequest& r)
         {
             r.operationTimeout = 61;
             r.give(CIMOperationParameter::OperationTimeout);
         },
         "CIM_ERR_INVALID_OPERATION_TIMEOUT: OperationTimeout 61 is past this server's maximum "
         "of 60 seconds."},
        {"OperationTimeout at the maximum",
         [](CIMOperationRequest& r)
         {
             r.operationTimeout = 60;
             r.give(CIMOperationParameter::OperationTimeout);
         },
         "ok"},
        {"ContinueOnError, and MaxObjectCount past the maximum",
         [](CIMOperationRequest& r)
         {
             r.continueOnError = true;
             r.maxObjectCount = 1001;
         },
         "CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED: ContinueOnError: this server ends an "
         "enumeration at its first error; give FALSE."},
        {"MaxObjectCount one past the maximum, and an unknown class",
         [](CIMOperationRequest& r)
         {
             r.maxObjectCount = 1001;
             r.className = "Test_Nothing";
         },
         "CIM_ERR_INVALID_PARAMETER: MaxObjectCount 1001 is past this server's maximum of 1000."},
        {"MaxObjectCount at the maximum", [](CIMOperationRequest& r) { r.maxObjectCount = 1000; },
         "ok"},
        {"unknown class, and a filter",
         [](CIMOperationRequest& r)
         {
             r.className = "Test_Nothing";
             r.filterQuery = "x";
             r.give(CIMOperationParameter::FilterQuery);
         },
         "CIM_ERR_INVALID_CLASS: Test_Nothing"},
        {"a class nobody serves", [](CIMOperationRequest& r) { r.className = "Test_Unserved"; },
         "CIM_ERR_NOT_SUPPORTED: No provider or repository defined for class Test_Unserved."},
        {"a filter query language alone",
         [](CIMOperationRequest& r)
         {
             r.filterQueryLanguage = "DMTF:FQL";
             r.give(CIMOperationParameter::FilterQueryLanguage);
         },
         "CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED: FilterQueryLanguage and FilterQuery: this "
         "server does not filter enumerations; leave both NULL."},
        {"an association open from a class",
         [](CIMOperationRequest& r)
         {
             r = CIMOperationRequest::openAssociatorInstancePaths(
                 ns, CIMObjectPath("Test_Item"), CIMName(), CIMName(), "", "", openWith(1));
         },
         "CIM_ERR_INVALID_PARAMETER: InstanceName Test_Item has no keys: the open operations "
         "start from an instance, not a class."},
        {"an association open with a bad role",
         [](CIMOperationRequest& r)
         {
             r = CIMOperationRequest::openReferenceInstances(
                 ns, item("a"), CIMName(), "no role", false, {}, openWith(1));
         },
         "CIM_ERR_INVALID_PARAMETER: role no role"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMOperationRequest r = good;
        c.change(r);
        const CIMOperationResponse answer = run(r);
        EXPECT_EQ(failure(answer), c.expected);
        if (!answer.failed)
            run(CIMOperationRequest::closeEnumeration(ns, page(answer).c_str()));
        EXPECT_EQ(contexts().stats().open, 0u) << "a refused open leaves nothing open";
    }
}

TEST_F(Pull, ABadPullIsRefusedNamingWhatIsWrongAndTheContextStaysUsable)
{
    const std::string items = openItems();
    const std::string paths =
        page(run(CIMOperationRequest::openEnumerateInstancePaths(ns, "Test_Item", {})));
    const std::string unknown = "EnumerationContext \"0000\" names no open enumeration of this "
                                "user (unknown, closed or expired).";
    const struct
    {
        const char* what;
        CIMOperationRequest request;
        const OperationContext* who;
        std::string expected;
    } cases[] = {
        {"an unknown context", CIMOperationRequest::pullInstancesWithPath(ns, "0000", 1), &context,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: " + unknown},
        {"a long unknown context is shown shortened",
         CIMOperationRequest::closeEnumeration(ns, String(std::string(100, 'x').c_str())), &context,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + std::string(40, 'x') +
             "...\" names no open enumeration of this user (unknown, closed or expired)."},
        {"paths from an instance enumeration",
         CIMOperationRequest::pullInstancePaths(ns, items.c_str(), 1), &context,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
             "\" enumerates instances: pull it with PullInstancesWithPath, not "
             "PullInstancePaths."},
        {"instances from a path enumeration",
         CIMOperationRequest::pullInstancesWithPath(ns, paths.c_str(), 1), &context,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + paths +
             "\" enumerates instance paths: pull it with PullInstancePaths, not "
             "PullInstancesWithPath."},
        {"another namespace",
         CIMOperationRequest::pullInstancesWithPath("root/qel", items.c_str(), 1), &context,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
             "\" was opened in namespace root/servertest, not root/qel."},
        {"MaxObjectCount one past the maximum",
         CIMOperationRequest::pullInstancesWithPath(ns, items.c_str(), 1001), &context,
         "CIM_ERR_INVALID_PARAMETER: MaxObjectCount 1001 is past this server's maximum of 1000."},
        // Another user's contexts do not exist for him: the same answer as an unknown one.
        {"another user's pull", CIMOperationRequest::pullInstancesWithPath(ns, items.c_str(), 1),
         &bob,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
             "\" names no open enumeration of this user (unknown, closed or expired)."},
        {"another user's count", CIMOperationRequest::enumerationCount(ns, items.c_str()), &bob,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
             "\" names no open enumeration of this user (unknown, closed or expired)."},
        {"another user's close", CIMOperationRequest::closeEnumeration(ns, items.c_str()), &bob,
         "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
             "\" names no open enumeration of this user (unknown, closed or expired)."},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(failure(run(c.request, *c.who)), c.expected);
    }
    // Both enumerations go on as if nothing had happened.
    std::vector<std::string> got;
    std::string id = items;
    while (!id.empty())
        id = page(pullItems(id, 3), &got);
    EXPECT_EQ(got.size(), 4u);
    EXPECT_EQ(failure(run(CIMOperationRequest::closeEnumeration(ns, paths.c_str()))), "ok");
    // Ended and closed contexts are gone.
    EXPECT_EQ(
        failure(pullItems(items, 1)),
        "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + items +
            "\" names no open enumeration of this user (unknown, closed or expired).");
    EXPECT_EQ(
        failure(run(CIMOperationRequest::pullInstancePaths(ns, paths.c_str(), 1))),
        "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + paths +
            "\" names no open enumeration of this user (unknown, closed or expired).");
}

TEST_F(Pull, ContextsAreUnguessableAndCappedPerUserAndInTotal)
{
    const std::string first = openItems(), second = openItems();
    EXPECT_EQ(first.size(), 32u);
    EXPECT_EQ(first.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(first, second);
    // alice has her 2; bob may open the server's third, then nobody may open more.
    EXPECT_EQ(
        failure(openItems(0, context)), "CIM_ERR_SERVER_LIMITS_EXCEEDED: User \"alice\" has the "
                                        "maximum of 2 open enumerations per user; close one or "
                                        "let it expire.");
    const std::string bobs = page(openItems(0, bob));
    EXPECT_EQ(
        failure(openItems(0, bob)), "CIM_ERR_SERVER_LIMITS_EXCEEDED: The server has its maximum "
                                    "of 3 open enumerations; close one or let it expire.");
    // An enumeration that ends, or is closed, makes room.
    std::string id = first;
    while (!id.empty())
        id = page(pullItems(id, 10));
    const std::string third = page(openItems(0, bob));
    EXPECT_EQ(failure(run(CIMOperationRequest::closeEnumeration(ns, bobs.c_str()), bob)), "ok");
    EXPECT_EQ(failure(openItems(0, context)), "ok");
    EXPECT_EQ(contexts().stats().open, 3u);
}

TEST_F(Pull, AContextExpiresItsTimeoutAfterItsLastOperationAndFreesWhatItHeld)
{
    setKnob("Item.enumerateInstances", "count:250");
    CIMOpenParameters tenSeconds = openWith(0);
    tenSeconds.operationTimeout = Uint32Arg(10);
    const std::string timed = page(run(
        CIMOperationRequest::openEnumerateInstances(ns, "Test_Item", true, false, {}, tenSeconds)));
    const std::string byDefault = openItems();
    // Each pull starts the timeout again.
    advance(9);
    EXPECT_EQ(contexts().reapExpired(), 0u);
    page(pullItems(timed, 5));
    advance(9);
    EXPECT_EQ(contexts().reapExpired(), 0u);
    EXPECT_EQ(contexts().stats().open, 2u);
    // Ten seconds after the last pull: expired, not served even before the reaper came.
    advance(1);
    EXPECT_EQ(
        failure(pullItems(timed, 5)),
        "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + timed +
            "\" names no open enumeration of this user (unknown, closed or expired).");
    // The provider, waiting for room in the buffer, gave up: nothing is held any more.
    EXPECT_EQ(contexts().stats().open, 1u);
    // The server's default of 20 seconds for the other one.
    advance(1);
    EXPECT_EQ(contexts().reapExpired(), 1u);
    contexts().waitUntilIdle();
    const EnumerationContexts::Stats left = contexts().stats();
    EXPECT_EQ(left.open, 0u);
    EXPECT_EQ(left.producing, 0u);
    EXPECT_EQ(left.bufferedObjects, 0u);
    EXPECT_EQ(counter("Item.enumerated"), 0u) << "no provider call completed";
    EXPECT_EQ(
        failure(pullItems(byDefault, 1)),
        "CIM_ERR_INVALID_ENUMERATION_CONTEXT: EnumerationContext \"" + byDefault +
            "\" names no open enumeration of this user (unknown, closed or expired).");
}

TEST_F(Pull, TheProviderWaitsWhileTheBufferIsFullAndGivesUpWhenTheContextCloses)
{
    // 250 items (and s1): the provider cannot get ahead of the client by more than the
    // buffer's 10 objects.
    setKnob("Item.enumerateInstances", "count:250");
    const std::string id = openItems(0);
    std::vector<std::string> got;
    for (int i = 0; i < 20; ++i)
    {
        page(pullItems(id, 10), &got);
        EXPECT_LE(contexts().stats().bufferedObjects, 10u);
    }
    ASSERT_EQ(got.size(), 200u);
    EXPECT_EQ(got.back().rfind("Test_Item Id=199 {", 0), 0u) << got.back();
    EXPECT_EQ(counter("Item.enumerated"), 0u) << "the provider is still delivering";
    EXPECT_EQ(failure(run(CIMOperationRequest::closeEnumeration(ns, id.c_str()))), "ok");
    contexts().waitUntilIdle();
    EXPECT_EQ(counter("Item.enumerated"), 0u) << "its delivery threw: it never completed";
    EXPECT_EQ(contexts().stats().bufferedObjects, 0u);
}

TEST_F(Pull, AProviderErrorEndsTheEnumerationAfterWhatWasPulled)
{
    setKnob("Item.enumerateInstances", "fail-after:150");
    std::string id = openItems(0);
    std::vector<std::string> got;
    CIMOperationResponse r;
    for (int pulls = 0; pulls < 30; ++pulls)
    {
        r = pullItems(id, 7);
        if (r.failed)
            break;
        page(r, &got);
    }
    EXPECT_EQ(failure(r), "CIM_ERR_NOT_FOUND: gone");
    // Only whole batches of the provider's handler (100) ever left it.
    EXPECT_LE(got.size(), 100u);
    EXPECT_EQ(contexts().stats().open, 0u);
    EXPECT_EQ(failure(pullItems(id, 1)).substr(0, 35), "CIM_ERR_INVALID_ENUMERATION_CONTEXT");
}

TEST_F(Pull, TheCountIsKnownOnceTheAnswerIsCompleteAndNullBefore)
{
    closeGate();
    setKnob("Item.enumerateInstances", "gated");
    const std::string id = openItems(0);
    const auto count = [&]
    {
        const CIMOperationResponse r = run(CIMOperationRequest::enumerationCount(ns, id.c_str()));
        return r.failed ? failure(r) : text(r.enumerationCount().toString());
    };
    EXPECT_EQ(count(), "NULL");
    openGate();
    contexts().waitUntilIdle();
    EXPECT_EQ(count(), "4");
    page(pullItems(id, 3));
    EXPECT_EQ(count(), "1");
    // A count also starts the timeout again.
    advance(15);
    EXPECT_EQ(count(), "1");
    advance(15);
    EXPECT_EQ(contexts().reapExpired(), 0u);
}

}  // namespace
