// enumerateInstances of QEL_SFP and QEL_FCPortLESBStatistics for arrays of
// 100, 1,000 and 10,000 FC ports made by the simulator's generator (one LESB
// record per port; about 19 ports in 20 carry a transceiver). The provider
// runs in the in-process provider host, as the CIM server would run it.
//
// Each iteration is one whole request. "items" are the instances delivered,
// so items_per_second is the throughput and per_item the cost of one
// instance, its share of the library reads included.
#include <ProviderHost.h>

#include <qelsim_control.h>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <benchmark/benchmark.h>

#include <map>
#include <stdexcept>
#include <string>

PEGASUS_USING_PEGASUS;

namespace
{

// Counts what is delivered and keeps nothing.
class CountingHandler : public InstanceResponseHandler
{
public:
    void processing() override {}
    void complete() override {}
    void deliver(const CIMInstance&) override { delivered++; }
    void deliver(const Array<CIMInstance>& instances) override { delivered += instances.size(); }

    Uint64 delivered = 0;
};

// Loads the generated array of the given size (once per size and process)
// and returns the provider serving className.
CIMInstanceProvider* providerOn(unsigned ports, const char* providerName, const char* className)
{
    static std::map<unsigned, std::string> arrays;
    std::string& json = arrays[ports];
    if (json.empty())
    {
        qelsim::GenerateOptions options;
        options.fcPorts = ports;
        options.lesbPerPort = 1;
        const qelsim::Result made = qelsim::generateArray(options, &json);
        if (!made.ok)
        {
            throw std::runtime_error(made.error);
        }
    }
    const qelsim::Result loaded = qelsim::loadArrayText(json);
    if (!loaded.ok)
    {
        throw std::runtime_error(loaded.error);
    }

    qeltest::ProviderHost& host = qeltest::ProviderHost::instance();
    host.stopProviders();
    CIMInstanceProvider* provider =
        dynamic_cast<CIMInstanceProvider*>(host.startProvider(providerName, {className}));
    if (provider == nullptr)
    {
        throw std::runtime_error(std::string("no instance provider ") + providerName);
    }
    return provider;
}

void enumerate(benchmark::State& state, const char* providerName, const char* className)
{
    const unsigned ports = static_cast<unsigned>(state.range(0));
    CIMInstanceProvider* provider = providerOn(ports, providerName, className);
    const OperationContext context = qeltest::ProviderHost::context("monitor", "192.0.2.20");
    const CIMObjectPath classPath("", CIMNamespaceName("root/qel"), className);

    Uint64 items = 0;
    for (auto _ : state)
    {
        CountingHandler handler;
        provider->enumerateInstances(context, classPath, false, false, CIMPropertyList(), handler);
        items += handler.delivered;
    }
    if (items == 0)
    {
        state.SkipWithError("nothing delivered");
        return;
    }
    state.SetItemsProcessed(static_cast<int64_t>(items));
    state.counters["per_item"] = benchmark::Counter(
        static_cast<double>(items), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["instances"] = static_cast<double>(items / state.iterations());
}

void BM_SFPEnumerateInstances(benchmark::State& state)
{
    enumerate(state, "QEL_SFPProvider", "QEL_SFP");
}

void BM_LESBEnumerateInstances(benchmark::State& state)
{
    enumerate(state, "QEL_FCPortStatisticsProvider", "QEL_FCPortLESBStatistics");
}

BENCHMARK(BM_SFPEnumerateInstances)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LESBEnumerateInstances)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
