// Costs of the object-model operations every provider request repeats:
// parsing, printing and comparing object paths, and building an instance
// from a class definition.
#include <string>
#include <benchmark/benchmark.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

using namespace Pegasus;

namespace
{

// A port path with its four keys, and an association path whose two keys
// are references to other paths.
const char* const kPortPath =
    "//array1/root/qel:QEL_FCPort.CreationClassName=\"QEL_FCPort\","
    "DeviceID=\"2100001B329A0C4E\",SystemCreationClassName=\"QEL_NodeSystem\","
    "SystemName=\"node-a\"";
const char* const kPortPathOtherSpelling =
    "//ARRAY1/root/QEL:qel_fcport.systemname=\"node-a\","
    "devICEid=\"2100001B329A0C4E\",SystemCreationClassName=\"QEL_NodeSystem\","
    "CreationClassName=\"QEL_FCPort\"";
const char* const kAssocPath =
    "//array1/root/qel:QEL_FCPortSFP.Antecedent=\"//array1/root/qel:QEL_SFP."
    "Tag=\\\"0:1:2-ABC123\\\"\",Dependent=\"//array1/root/qel:QEL_FCPort."
    "CreationClassName=\\\"QEL_FCPort\\\",DeviceID=\\\"2100001B329A0C4E\\\","
    "SystemCreationClassName=\\\"QEL_NodeSystem\\\",SystemName=\\\"node-a\\\"\"";
const char* const kAssocPathOtherOrder =
    "//array1/root/qel:QEL_FCPortSFP.Dependent=\"//array1/root/qel:QEL_FCPort."
    "SystemName=\\\"node-a\\\",DeviceID=\\\"2100001B329A0C4E\\\","
    "SystemCreationClassName=\\\"QEL_NodeSystem\\\","
    "CreationClassName=\\\"QEL_FCPort\\\"\",Antecedent=\"//array1/root/qel:"
    "QEL_SFP.Tag=\\\"0:1:2-ABC123\\\"\"";

void BM_PathParse(benchmark::State& state, const char* text)
{
    const String s(text);
    for (auto _ : state)
    {
        CIMObjectPath p(s);
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK_CAPTURE(BM_PathParse, port_4_keys, kPortPath);
BENCHMARK_CAPTURE(BM_PathParse, association_2_refs, kAssocPath);

void BM_PathToString(benchmark::State& state, const char* text)
{
    const CIMObjectPath p{String(text)};
    for (auto _ : state)
    {
        String s = p.toString();
        benchmark::DoNotOptimize(s);
    }
}
BENCHMARK_CAPTURE(BM_PathToString, port_4_keys, kPortPath);
BENCHMARK_CAPTURE(BM_PathToString, association_2_refs, kAssocPath);

void BM_PathIdentical(benchmark::State& state, const char* a, const char* b)
{
    const CIMObjectPath x{String(a)};
    const CIMObjectPath y{String(b)};
    if (!x.identical(y))
    {
        state.SkipWithError("paths are expected to be identical");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(x.identical(y));
}
BENCHMARK_CAPTURE(BM_PathIdentical, port_4_keys, kPortPath, kPortPathOtherSpelling);
BENCHMARK_CAPTURE(BM_PathIdentical, association_2_refs, kAssocPath, kAssocPathOtherOrder);

const int kPropertyCount = 30;

std::string propertyName(int i)
{
    return "Property" + std::to_string(i);
}

// 30 properties of mixed types (string, uint16, uint64, boolean), the first
// two of them keys, each with a default.
CIMClass makeWideClass()
{
    CIMClass cls("QEL_Wide");
    for (int i = 0; i < kPropertyCount; i++)
    {
        String name(propertyName(i).c_str());
        CIMValue def;
        switch (i % 4)
        {
            case 0:
                def = CIMValue(String(""));
                break;
            case 1:
                def = CIMValue(Uint16(0));
                break;
            case 2:
                def = CIMValue(Uint64(0));
                break;
            default:
                def = CIMValue(false);
                break;
        }
        CIMProperty p(name, def);
        if (i < 2)
            p.addQualifier(CIMQualifier("Key", CIMValue(true)));
        cls.addProperty(p);
    }
    return cls;
}

void BM_BuildInstance30(benchmark::State& state)
{
    const CIMClass cls = makeWideClass();
    CIMValue values[4] = {
        CIMValue(String("value")), CIMValue(Uint16(7)), CIMValue(Uint64(8589934592ULL)),
        CIMValue(true)};
    Array<CIMName> names;
    for (int i = 0; i < kPropertyCount; i++)
        names.append(CIMName(propertyName(i).c_str()));
    for (auto _ : state)
    {
        CIMInstance inst = cls.buildInstance(false, false, CIMPropertyList());
        for (int i = 0; i < kPropertyCount; i++)
        {
            inst.getProperty(inst.findProperty(names[i])).setValue(values[i % 4]);
        }
        benchmark::DoNotOptimize(inst);
    }
}
BENCHMARK(BM_BuildInstance30);

}  // namespace

BENCHMARK_MAIN();
