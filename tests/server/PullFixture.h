// The server with small limits for the pulled enumerations and a clock of the test's own,
// and what the tests of the pulled enumerations share: running a request as a user,
// reading an open's or a pull's answer, objects as text.
#ifndef QEL_Tests_PullFixture_h
#define QEL_Tests_PullFixture_h

#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>
#include <Server/core/EnumerationContexts.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMResponseCollector.h>

#include <atomic>
#include <string>
#include <vector>

namespace servertest
{

typedef Pegasus::EnumerationLimits::Clock Clock;

inline Pegasus::CIMOpenParameters openWith(Pegasus::Uint32 maxObjectCount)
{
    Pegasus::CIMOpenParameters open;
    open.maxObjectCount = maxObjectCount;
    return open;
}

// Class and keys: the pulls complete host and namespace, the operations they page may not.
inline std::string keyOf(const Pegasus::CIMObjectPath& path)
{
    std::string s = text(path.getClassName().getString());
    for (Pegasus::Uint32 i = 0; i < path.getKeyBindings().size(); ++i)
        s += " " + text(path.getKeyBindings()[i].getName().getString()) + "=" +
             text(path.getKeyBindings()[i].getValue());
    return s;
}

inline std::string describe(const Pegasus::CIMInstance& instance)
{
    std::string s = keyOf(instance.getPath()) + " {";
    for (Pegasus::Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        s += text(instance.getProperty(i).getName().getString()) + "=" +
             text(instance.getProperty(i).getValue().toString()) + ";";
    return s + "}";
}

// Every object of an answer as text, in order.
inline std::vector<std::string> objectsOf(const Pegasus::CIMOperationResponse& r)
{
    std::vector<std::string> out;
    for (Pegasus::Uint32 i = 0; i < r.instances.size(); ++i)
        out.push_back(describe(r.instances[i]));
    for (Pegasus::Uint32 i = 0; i < r.objects.size(); ++i)
        out.push_back(describe(Pegasus::CIMInstance(r.objects[i])));
    for (Pegasus::Uint32 i = 0; i < r.paths.size(); ++i)
        out.push_back(keyOf(r.paths[i]));
    return out;
}

class Pull : public ServerTest
{
protected:
    void SetUp() override
    {
        enumerationLimits.clock = [this] { return Clock::time_point(std::chrono::seconds(_now)); };
        enumerationLimits.defaultTimeout = 20;
        enumerationLimits.maxTimeout = 60;
        enumerationLimits.maxObjectCount = 1000;
        enumerationLimits.maxContextsPerUser = 2;
        enumerationLimits.maxContexts = 3;
        enumerationLimits.bufferedObjects = 10;
        ServerTest::SetUp();
        bob = Pegasus::Dispatcher::requestContext("bob", "192.0.2.8");
    }

    // A provider left at the gate would hold up the server's stop.
    void TearDown() override
    {
        openGate();
        ServerTest::TearDown();
    }

    void advance(int seconds) { _now += seconds; }

    Pegasus::CIMOperationResponse
    run(const Pegasus::CIMOperationRequest& request, const Pegasus::OperationContext& who)
    {
        Pegasus::CIMOperationResponse response;
        Pegasus::CIMResponseCollector collector(request.operation, response);
        server().dispatcher().execute(who, request, collector);
        return response;
    }
    Pegasus::CIMOperationResponse run(const Pegasus::CIMOperationRequest& request)
    {
        return run(request, context);
    }

    // An open or a pull that must succeed: its objects, and the context ("" at the end).
    std::string
    page(const Pegasus::CIMOperationResponse& r, std::vector<std::string>* objects = nullptr)
    {
        EXPECT_FALSE(r.failed) << text(r.error.getMessage());
        if (r.failed)
            return std::string();
        if (objects)
        {
            const std::vector<std::string> more = objectsOf(r);
            objects->insert(objects->end(), more.begin(), more.end());
        }
        Pegasus::Boolean eos = false;
        return text(r.enumerationContext(eos));
    }

    Pegasus::CIMOperationResponse
    openItems(Pegasus::Uint32 maxObjectCount, const Pegasus::OperationContext& who)
    {
        return run(
            Pegasus::CIMOperationRequest::openEnumerateInstances(
                ns, "Test_Item", true, false, Pegasus::CIMPropertyList(), openWith(maxObjectCount)),
            who);
    }
    std::string openItems(Pegasus::Uint32 maxObjectCount = 0)
    {
        return page(openItems(maxObjectCount, context));
    }

    Pegasus::CIMOperationResponse pullItems(const std::string& id, Pegasus::Uint32 maxObjectCount)
    {
        return run(
            Pegasus::CIMOperationRequest::pullInstancesWithPath(ns, id.c_str(), maxObjectCount));
    }

    Pegasus::EnumerationContexts& contexts() { return server().enumerations(); }

    Pegasus::OperationContext bob;

private:
    std::atomic<long> _now{1000};
};

// The code and message of a failed answer; "ok" for one that did not fail.
inline std::string failure(const Pegasus::CIMOperationResponse& r)
{
    if (!r.failed)
        return "ok";
    return std::string(Pegasus::cimStatusCodeToString(r.error.getCode())) + ": " +
           text(r.error.getMessage());
}

}  // namespace servertest

#endif
