// GoogleTest fixture of every provider test: one in-process ProviderHost per test process, the simulated array
// reset per test from a JSON fixture, faults, counters, call log, captured trace and the internal cache double
// cleared, and on the way out the checks every provider test shares: no FC port list left unreleased or released
// twice, every successful semaphore wait posted once, no list read or change made outside the semaphore.
//
// A test (or a derived fixture) starts the providers it needs with start()
// or host().startProvider(); they are terminated after the test.
#ifndef QEL_TESTS_ProviderTest_h
#define QEL_TESTS_ProviderTest_h

#include "ProviderHost.h"
#include "RecordingHandlers.h"

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/InternalException.h>

#include <qelsim_control.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

PEGASUS_NAMESPACE_BEGIN
// How GoogleTest prints object-model values in failure messages.
inline void PrintTo(const CIMValue& value, std::ostream* os)
{
    *os << (value.isNull() ? "null " : "") << cimTypeToString(value.getType())
        << (value.isArray() ? "[] " : " ")
        << (value.isNull() ? "" : (const char*)value.toString().getCString());
}
inline void PrintTo(const CIMObjectPath& path, std::ostream* os)
{
    *os << (const char*)path.toString().getCString();
}
PEGASUS_NAMESPACE_END

namespace qeltest
{

// The text of a fixture file: a path, or a name in tests/providers/fixtures/.
std::string fixtureText(const std::string& name);

// The call log reduced to the calls named, each as "call(arg, arg)".
Texts callsNamed(const Texts& names);

// The event record passed with the first logged call named call, as
// "method|operation|parameter|user|address"; "<none>" without one.
std::string eventOf(const char* call);

// The captured log_message lines of one level (holding a text, if given), texts only.
Texts traceLines(int level, const char* holding = "");

// A path in root/qel: class and key/value pairs, string keys.
CIMObjectPath
qelPath(const char* cls, std::initializer_list<const char*> keysAndValues, const char* host = "");
// A port path as clients name it.
CIMObjectPath portPath(
    const char* deviceID, const char* system = "qel-node0", const char* cls = "QEL_FCPort",
    const char* host = "");

// A key binding's value ("" when absent), and those of a list of paths or instances.
std::string keyValue(const CIMObjectPath& path, const char* key);
inline CIMObjectPath pathOf(const CIMInstance& i)
{
    return i.getPath();
}
inline CIMObjectPath pathOf(const CIMObjectPath& p)
{
    return p;
}
template <typename Objects>
Texts keysOf(const Objects& objects, const char* key)
{
    Texts keys;
    for (const auto& object : objects)
        keys.push_back(keyValue(pathOf(object), key));
    return keys;
}

// A property list naming these properties.
inline CIMPropertyList propertyList(std::initializer_list<const char*> names)
{
    Array<CIMName> list;
    for (const char* name : names)
        list.append(name);
    return CIMPropertyList(list);
}

// A property's value; null when the instance has no such property.
CIMValue valueOf(const CIMInstance& instance, const char* name);

// How call ends, as text: "" when it returns; the message of an exception of class E; for E =
// CIMException (the default) "<CIM_ERR_...>: <message>", with "<source>(<line>): " first for a
// TraceableCIMException; "other: <message>" for any other exception.
template <typename E = CIMException, typename Call>
std::string thrown(Call&& call)
{
    try
    {
        call();
    }
    catch (const E& e)
    {
        if constexpr (!std::is_same<E, CIMException>::value)
            return str(e.getMessage());
        else if (auto traceable = dynamic_cast<const TraceableCIMException*>(&e))
            return str(traceable->getTraceDescription());
        else
            return std::string(cimStatusCodeToString(e.getCode())) + ": " + str(e.getMessage());
    }
    catch (const Exception& e)
    {
        return "other: " + str(e.getMessage());
    }
    return "";
}

// The read requests a provider answers.
enum Op
{
    ASSOCIATORS,
    ASSOCIATOR_NAMES,
    REFERENCES,
    REFERENCE_NAMES,
    GET_INSTANCE,
    ENUMERATE_INSTANCES,
    ENUMERATE_INSTANCE_NAMES
};
extern const char* const OP_NAMES[];

// The optional parts of a request; associationClass null: the routed class.
struct Request
{
    const char* associationClass = nullptr;
    const char* resultClass = nullptr;
    const char* role = "";
    const char* resultRole = "";
    CIMPropertyList propertyList;
};

// How a request ended: failure as thrown() describes it, the handler's calls ("" when untouched,
// " (out of order)" after calls that break processing -> deliver* -> complete), what was delivered.
struct Answer
{
    std::string failure, sequence;
    std::vector<CIMInstance> instances;
    std::vector<CIMObjectPath> paths;
    size_t delivered() const { return instances.size() + paths.size(); }
};

class ProviderTest : public ::testing::Test
{
protected:
    // The array a test starts from: a fixture (see fixtureText) or JSON text.
    virtual std::string arrayFixture() const { return "fc_ports.json"; }

    void SetUp() override;
    void TearDown() override;

    ProviderHost& host() { return ProviderHost::instance(); }
    InternalCacheDouble& cache() { return host().cache(); }
    // A class of root/qel as the project's MOF defines it.
    CIMClass cimClass(const char* name);

    // Starts a provider as P (its "Create" line kept off the output) and clears the call log, captured trace and
    // counters its start left, unless told to keep them.
    template <typename P = CIMProvider>
    P* start(const char* name, std::initializer_list<const char*> classes, bool clear = true)
    {
        testing::internal::CaptureStdout();
        P* provider = nullptr;
        try
        {
            provider = dynamic_cast<P*>(host().startProvider(name, classes));
        }
        catch (...)
        {
            testing::internal::GetCapturedStdout();
            throw;
        }
        testing::internal::GetCapturedStdout();
        if (provider == nullptr)
            throw std::runtime_error(std::string(name) + " is not of the expected type");
        if (clear)
        {
            qelsim::clearCallLog();
            qelsim::clearCapturedLog();
            qelsim::resetCounters();
        }
        return provider;
    }

    // One read request as the server hands it to the provider started for routedClass: the association
    // class of the association requests, the class the enumerations name. objectName: the source
    // object, or the path getInstance asks for.
    Answer request(
        const char* routedClass, Op op, const CIMObjectPath& objectName = CIMObjectPath(),
        const Request& parts = Request(), const char* user = "viewer");

    // Replaces the simulated array for the rest of the test.
    void loadArray(const std::string& jsonText);

    // Users of the fixtures: edit and browse roles; any other name
    // (admin: super role, retired: disabled, nobody: unknown).
    static OperationContext asUser(const char* user)
    {
        return ProviderHost::context(user, "192.0.2.10");
    }
    static OperationContext asOperator() { return asUser("operator"); }
    static OperationContext asViewer() { return asUser("viewer"); }
};

}  // namespace qeltest

#endif
