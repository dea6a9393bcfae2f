// Cost of building FC port instances (buildInstances) and object paths
// (_build_ref) for 100, 1,000 and 10,000 generated ports, per port. Each
// iteration is one whole request's work: the serialised list read, the
// building and the release of the list. bytes_per_instance is the heap the
// built instances hold (the answer's array included), from glibc's mallinfo2.
#include "ProviderHost.h"

#include <QEL_FCPortProvider.h>
#include <QEL_ProviderFrame.h>

#include <qelsim_control.h>

#include <benchmark/benchmark.h>

#include <iostream>
#include <malloc.h>
#include <stdexcept>

PEGASUS_USING_PEGASUS;
using qeltest::ProviderHost;

namespace
{

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

void perPort(benchmark::State& state, unsigned ports)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * ports);
    state.counters["per_port"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * ports,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Bytes of heap in use, small chunks and mapped ones.
double heapInUse()
{
    const struct mallinfo2 m = mallinfo2();
    return static_cast<double>(m.uordblks + m.hblkhd);
}

void BM_buildInstances(benchmark::State& state, const char* className)
{
    const unsigned ports = static_cast<unsigned>(state.range(0));
    useArray(ports);
    CIMOMHandle& handle = ProviderHost::instance().handle();
    auto build = [&]
    {
        return QEL_FCPortProvider::buildInstances(
            handle, className, QEL_ALL_PORTS, false, false, CIMPropertyList(),
            "qelhost.example.com");
    };
    build();  // caches filled
    const double before = heapInUse();
    {
        const Array<CIMInstance> held = build();
        state.counters["bytes_per_instance"] = (heapInUse() - before) / held.size();
    }
    size_t built = 0;
    for (auto _ : state)
    {
        const Array<CIMInstance> instances = build();
        built = instances.size();
        benchmark::DoNotOptimize(instances.getData());
    }
    if (built != ports)
    {
        state.SkipWithError("not every port was built");
    }
    perPort(state, ports);
}

void BM_build_ref(benchmark::State& state, const char* className)
{
    const unsigned ports = static_cast<unsigned>(state.range(0));
    useArray(ports);
    static QEL_FCPortProvider* provider = nullptr;
    if (provider == nullptr)
    {
        std::cout.setstate(std::ios::failbit);  // the factory's "Create" line
        provider = dynamic_cast<QEL_FCPortProvider*>(
            ProviderHost::instance().startProvider("QEL_FCPortProvider", {}));
        std::cout.clear();
    }
    size_t built = 0;
    for (auto _ : state)
    {
        const Array<CIMObjectPath> paths = provider->_build_ref(className);
        built = paths.size();
        benchmark::DoNotOptimize(paths.getData());
    }
    if (built != ports)
    {
        state.SkipWithError("not every port was named");
    }
    perPort(state, ports);
}

BENCHMARK_CAPTURE(BM_buildInstances, QEL_FCPort, "QEL_FCPort")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_buildInstances, QEL_FCALPort, "QEL_FCALPort")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_build_ref, QEL_FCPort, "QEL_FCPort")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
