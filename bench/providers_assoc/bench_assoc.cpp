// Cost of the association requests on generated arrays of 100, 1,000 and
// 10,000 FC ports, through the module as the server loads it (provider test
// host, classes from the project's MOF): associators and references from one
// port, and enumerateInstances of both association classes. Each iteration is
// one whole request: session check, list reads under the semaphore, building,
// delivery to a handler that only counts.
#include "ProviderHost.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <qelsim_control.h>

#include <benchmark/benchmark.h>

#include <iostream>
#include <stdexcept>
#include <string>

PEGASUS_USING_PEGASUS;
using qeltest::ProviderHost;

namespace
{

struct Association
{
    const char* provider;
    const char* assocClass;
    const char* portRole;
};
const Association SFP = {"QEL_FCPortSFPProvider", "QEL_FCPortSFP", "Dependent"};
const Association STATS = {
    "QEL_FCPortElementStatisticalDataProvider", "QEL_FCPortLESBElementStatisticalData",
    "ManagedElement"};

class CountingObjects : public ObjectResponseHandler
{
public:
    void processing() override {}
    void complete() override {}
    void deliver(const CIMObject&) override { ++count; }
    void deliver(const Array<CIMObject>& objects) override { count += objects.size(); }
    size_t count = 0;
};

class CountingInstances : public InstanceResponseHandler
{
public:
    void processing() override {}
    void complete() override {}
    void deliver(const CIMInstance&) override { ++count; }
    void deliver(const Array<CIMInstance>& instances) override { count += instances.size(); }
    size_t count = 0;
};

OperationContext requestContext()
{
    return ProviderHost::context("admin", "192.0.2.10");
}

// The providers, started once: the FC port provider answers the port end of
// a statistics object.
CIMProvider& provider(const Association& association)
{
    static bool started = false;
    ProviderHost& host = ProviderHost::instance();
    if (!started)
    {
        std::cout.setstate(std::ios::failbit);  // the factory's "Create" line
        host.startProvider("QEL_FCPortProvider", {"QEL_FCPort"});
        std::cout.clear();
        host.startProvider(SFP.provider, {SFP.assocClass});
        host.startProvider(STATS.provider, {STATS.assocClass});
        started = true;
    }
    return *host.providerFor(association.assocClass);
}

// Loads a generated array of `ports` FC ports (once per size in a row).
void useArray(unsigned ports)
{
    static unsigned loaded = 0;
    if (loaded == ports)
    {
        return;
    }
    qelsim::GenerateOptions options;
    options.fcPorts = ports;
    std::string json;
    qelsim::Result r = qelsim::generateArray(options, &json);
    if (r.ok)
    {
        r = qelsim::loadArrayText(json);
    }
    if (!r.ok)
    {
        throw std::runtime_error("cannot generate the array: " + r.error);
    }
    loaded = ports;
}

// The port end of the association in the middle of the list.
CIMObjectPath middlePort(const Association& association)
{
    struct Names : public ObjectPathResponseHandler
    {
        void processing() override {}
        void complete() override {}
        void deliver(const CIMObjectPath& path) override { paths.append(path); }
        void deliver(const Array<CIMObjectPath>& more) override { paths.appendArray(more); }
        Array<CIMObjectPath> paths;
    } names;
    dynamic_cast<CIMInstanceProvider&>(provider(association))
        .enumerateInstanceNames(
            requestContext(),
            CIMObjectPath("", CIMNamespaceName("root/qel"), association.assocClass), names);
    if (names.paths.size() == 0)
    {
        throw std::runtime_error("the generated array has no association");
    }
    const Array<CIMKeyBinding> keys = names.paths[names.paths.size() / 2].getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName() == CIMName(association.portRole))
        {
            return CIMObjectPath(keys[i].getValue());
        }
    }
    throw std::runtime_error("no port end in the association path");
}

void BM_associatorsFromPort(benchmark::State& state, const Association* association)
{
    useArray(static_cast<unsigned>(state.range(0)));
    CIMAssociationProvider& assoc = dynamic_cast<CIMAssociationProvider&>(provider(*association));
    const CIMObjectPath port = middlePort(*association);
    const OperationContext context = requestContext();
    size_t delivered = 0;
    for (auto _ : state)
    {
        CountingObjects handler;
        assoc.associators(
            context, port, association->assocClass, CIMName(), "", "", false, false,
            CIMPropertyList(), handler);
        delivered = handler.count;
    }
    if (delivered != 1)
    {
        state.SkipWithError("the port's far end was not delivered");
    }
}

void BM_referencesFromPort(benchmark::State& state, const Association* association)
{
    useArray(static_cast<unsigned>(state.range(0)));
    CIMAssociationProvider& assoc = dynamic_cast<CIMAssociationProvider&>(provider(*association));
    const CIMObjectPath port = middlePort(*association);
    const OperationContext context = requestContext();
    size_t delivered = 0;
    for (auto _ : state)
    {
        CountingObjects handler;
        assoc.references(context, port, CIMName(), "", false, false, CIMPropertyList(), handler);
        delivered = handler.count;
    }
    if (delivered != 1)
    {
        state.SkipWithError("the port's association was not delivered");
    }
}

void BM_enumerateInstances(benchmark::State& state, const Association* association)
{
    const unsigned ports = static_cast<unsigned>(state.range(0));
    useArray(ports);
    CIMInstanceProvider& instances = dynamic_cast<CIMInstanceProvider&>(provider(*association));
    const CIMObjectPath classPath("", CIMNamespaceName("root/qel"), association->assocClass);
    const OperationContext context = requestContext();
    size_t delivered = 0;
    for (auto _ : state)
    {
        CountingInstances handler;
        instances.enumerateInstances(context, classPath, false, false, CIMPropertyList(), handler);
        delivered = handler.count;
    }
    if (delivered == 0)
    {
        state.SkipWithError("no association was delivered");
    }
    state.counters["associations"] = static_cast<double>(delivered);
    state.counters["per_port"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * ports,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

#define QEL_PORT_COUNTS(unit) ->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::unit)

BENCHMARK_CAPTURE(BM_associatorsFromPort, QEL_FCPortSFP, &SFP) QEL_PORT_COUNTS(kMicrosecond);
BENCHMARK_CAPTURE(BM_associatorsFromPort, QEL_FCPortLESBElementStatisticalData, &STATS)
QEL_PORT_COUNTS(kMicrosecond);
BENCHMARK_CAPTURE(BM_referencesFromPort, QEL_FCPortSFP, &SFP) QEL_PORT_COUNTS(kMicrosecond);
BENCHMARK_CAPTURE(BM_referencesFromPort, QEL_FCPortLESBElementStatisticalData, &STATS)
QEL_PORT_COUNTS(kMicrosecond);
BENCHMARK_CAPTURE(BM_enumerateInstances, QEL_FCPortSFP, &SFP) QEL_PORT_COUNTS(kMillisecond);
BENCHMARK_CAPTURE(BM_enumerateInstances, QEL_FCPortLESBElementStatisticalData, &STATS)
QEL_PORT_COUNTS(kMillisecond);

}  // namespace

BENCHMARK_MAIN();
