// In-process cost of the CIM-XML codec for FC-port-sized instances: building the
// instances and encoding an EnumerateInstances response, and the client's decoding.
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <benchmark/benchmark.h>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

// About the size of a QEL_FCPort: keys, strings, integers, arrays and nulls.
CIMInstance portInstance(unsigned i)
{
    char wwn[17];
    std::snprintf(wwn, sizeof wwn, "2011%012X", i);
    CIMInstance inst(CIMName("QEL_FCPort"));
    inst.addProperty(CIMProperty("CreationClassName", CIMValue(String("QEL_FCPort"))));
    inst.addProperty(CIMProperty("DeviceID", CIMValue(String(wwn))));
    inst.addProperty(CIMProperty("SystemCreationClassName", CIMValue(String("QEL_NodeSystem"))));
    inst.addProperty(CIMProperty("SystemName", CIMValue(String("DEMO01-N0"))));
    inst.addProperty(CIMProperty("ElementName", CIMValue(String("0:1:1"))));
    inst.addProperty(CIMProperty("OperationalStatus", CIMValue(Array<Uint16>(1, 2))));
    inst.addProperty(CIMProperty("Speed", CIMValue(Uint64(8589934592ull))));
    inst.addProperty(CIMProperty("MaxSpeed", CIMValue(Uint64(8589934592ull))));
    inst.addProperty(CIMProperty("PortNumber", CIMValue(Uint16(i % 4))));
    inst.addProperty(
        CIMProperty("TimeOfLastStateChange", CIMValue(CIMDateTime("20240131120000.000000+000"))));
    for (int k = 0; k < 40; ++k)
    {
        const std::string name = "Setting" + std::to_string(k);
        inst.addProperty(CIMProperty(
            CIMName(name.c_str()), k % 3 ? CIMValue(Uint16(k)) : CIMValue(CIMTYPE_STRING, false)));
    }
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", "QEL_FCPort", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", wwn, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemCreationClassName", "QEL_NodeSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", "DEMO01-N0", CIMKeyBinding::STRING));
    inst.setPath(CIMObjectPath(String(), CIMNamespaceName(), CIMName("QEL_FCPort"), keys));
    return inst;
}

CimResponse enumeration(unsigned n)
{
    CimResponse r;
    r.messageId = "1";
    r.operation = Operation::EnumerateInstances;
    r.methodName = "EnumerateInstances";
    for (unsigned i = 0; i < n; ++i)
        r.instances.append(portInstance(i));
    return r;
}

void BM_BuildAndEncodeEnumeration(benchmark::State& state)
{
    const unsigned n = static_cast<unsigned>(state.range(0));
    size_t bytes = 0;
    for (auto _ : state)
    {
        const std::string body =
            encodeResponse(enumeration(n), "array", CIMNamespaceName("root/qel"));
        bytes = body.size();
        benchmark::DoNotOptimize(body.data());
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_BuildAndEncodeEnumeration)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

void BM_DecodeEnumeration(benchmark::State& state)
{
    const unsigned n = static_cast<unsigned>(state.range(0));
    const std::string body = encodeResponse(enumeration(n), "array", CIMNamespaceName("root/qel"));
    CimRequest request;
    request.messageId = "1";
    request.operation = Operation::EnumerateInstances;
    request.methodName = "EnumerateInstances";
    for (auto _ : state)
        benchmark::DoNotOptimize(
            decodeResponse(body.data(), body.size(), request).instances.size());
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_DecodeEnumeration)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_BuildAndEncodeGetInstance(benchmark::State& state)
{
    for (auto _ : state)
    {
        CimResponse r;
        r.messageId = "1";
        r.operation = Operation::GetInstance;
        r.methodName = "GetInstance";
        r.instance = portInstance(7);
        benchmark::DoNotOptimize(encodeResponse(r, "array", CIMNamespaceName("root/qel")).size());
    }
}
BENCHMARK(BM_BuildAndEncodeGetInstance)->Unit(benchmark::kMicrosecond);

}  // namespace
