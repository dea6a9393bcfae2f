// Decoding requests whose lists are as long as the limits allow, with names made hard to
// tell apart (one length, first and last letter, 250 characters, differing only near the
// end): the time per element must stay the same as a list grows (linear decoding). And
// the cost of refusing a list far past its limit (the 20,000-PARAMVALUE flood).
//
//   build/release/bench/security/bench_request_limits
//
// `items_per_second`: list elements decoded (or refused) per second; linear decoding keeps
// it the same whatever the list's length.
#include <Server/xml/DecodeLimits.h>
#include <Server/xml/RequestCodec.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

using namespace qel::cimxml;

namespace
{

const std::string kNs =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH>";
const std::string kPort =
    "<INSTANCENAME CLASSNAME=\"QEL_FCPort\"><KEYBINDING NAME=\"DeviceID\"><KEYVALUE>"
    "20110002AC00A001</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string message(const std::string& call)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
           call + "</SIMPLEREQ></MESSAGE></CIM>";
}

std::string hardName(size_t i)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%06zu", i);
    return "p" + std::string(242, 'a') + digits + "z";
}

std::string shortName(size_t i)
{
    char name[24];
    std::snprintf(name, sizeof name, "Parameter%05zu", i);
    return name;
}

std::string methodCall(size_t n, std::string (*nameOf)(size_t) = hardName)
{
    std::string call = "<METHODCALL NAME=\"SetOffline\"><LOCALINSTANCEPATH>" + kNs + kPort +
                       "</LOCALINSTANCEPATH>";
    for (size_t i = 0; i < n; ++i)
        call += "<PARAMVALUE NAME=\"" + nameOf(i) +
                "\" PARAMTYPE=\"string\"><VALUE>x</VALUE></PARAMVALUE>";
    return message(call + "</METHODCALL>");
}

std::string newInstance(size_t n)
{
    std::string instance = "<INSTANCE CLASSNAME=\"QEL_FCPort\">";
    for (size_t i = 0; i < n; ++i)
        instance +=
            "<PROPERTY NAME=\"" + hardName(i) + "\" TYPE=\"uint8\"><VALUE>1</VALUE></PROPERTY>";
    return message(
        "<IMETHODCALL NAME=\"CreateInstance\">" + kNs + "<IPARAMVALUE NAME=\"NewInstance\">" +
        instance + "</INSTANCE></IPARAMVALUE></IMETHODCALL>");
}

// `refused`: 1 when the decoder refused the request (a list past its limit), else 0.
void decodeEach(benchmark::State& state, const std::string& body, size_t elements)
{
    bool refused = false;
    for (auto _ : state)
    {
        const DecodedRequest d = decodeRequest(body.data(), body.size());
        refused = d.failed;
        benchmark::DoNotOptimize(d);
    }
    state.SetItemsProcessed(static_cast<int64_t>(elements) * state.iterations());
    state.counters["bytes"] = static_cast<double>(body.size());
    state.counters["refused"] = refused ? 1 : 0;
}

void BM_DecodeMethodParameters(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    decodeEach(state, methodCall(n), n);
}
BENCHMARK(BM_DecodeMethodParameters)
    ->Arg(limits::kMaxMethodParameters / 4)
    ->Arg(limits::kMaxMethodParameters / 2)
    ->Arg(limits::kMaxMethodParameters)
    ->Unit(benchmark::kMicrosecond);

void BM_DecodeInstanceProperties(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    decodeEach(state, newInstance(n), n);
}
BENCHMARK(BM_DecodeInstanceProperties)
    ->Arg(limits::kMaxProperties / 4)
    ->Arg(limits::kMaxProperties / 2)
    ->Arg(limits::kMaxProperties)
    ->Unit(benchmark::kMicrosecond);

// The flood of bench/security/param_flood.sh: 20,000 PARAMVALUE elements (1.5 MB),
// refused once counted.
void BM_RefuseParameterFlood(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    decodeEach(state, methodCall(n, shortName), n);
}
BENCHMARK(BM_RefuseParameterFlood)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace
