// What HTTPS costs. BM_EnumerateInstances: EnumerateInstances of QEL_FCPort on a 1,000-port
// array over one kept-alive connection, plain HTTP (/0) and HTTPS (/1): compare
// items_per_second, and cpu_ms (the process's CPU time per request, server and client).
// BM_TlsHandshake: TCP connect and TLS handshake, nothing else (ECDSA P-256 certificate,
// TLS 1.3, no session resumption): items_per_second is handshakes per second, client and
// server on this machine. BM_GetInstanceNewConnection: a GetInstance on a new connection
// each time, HTTP (/0) and HTTPS (/1), as wbemcli makes them.
#include "SecurityBenchServer.h"

#include <Server/clienttransport/CimXmlTransport.h>
#include <Server/main/DemoCertificate.h>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

using namespace Pegasus;
using qel::client::CimXmlTransport;

namespace
{

securitybench::BenchServer& server()
{
    static std::unique_ptr<securitybench::BenchServer> s = securitybench::startServer(
        1000,
        [](qel::server::WireServerOptions& o, const std::string& dir)
        {
            o.http.tlsPort = 0;
            o.http.tlsBindAddress = "127.0.0.1";
            o.http.tls.certificateFile = dir + "/cert.pem";
            o.http.tls.keyFile = dir + "/key.pem";
            qel::server::createDemoCertificate(
                o.http.tls.certificateFile, o.http.tls.keyFile, {"localhost", "127.0.0.1"});
        });
    return *s;
}

std::unique_ptr<CimXmlTransport> connect(bool tls)
{
    securitybench::BenchServer& s = server();
    if (!tls)
        return CimXmlTransport::overTcp("127.0.0.1", s.wire->tcpPort(), s.user, s.password, 60000);
    qel::client::TlsClientOptions options;
    options.caFile = s.wire->options().http.tls.certificateFile;
    return CimXmlTransport::overTls(
        "127.0.0.1", s.wire->tlsPort(), s.user, s.password, 60000, options);
}

// CPU time of the whole process (server and client): steadier than the wall clock on a
// busy machine.
double processCpuMs()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 +
           (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
}

void BM_EnumerateInstances(benchmark::State& state)
{
    auto t = connect(state.range(0) != 0);
    const double cpu0 = processCpuMs();
    for (auto _ : state)
        benchmark::DoNotOptimize(t->execute(CIMOperationRequest::enumerateInstances(
                                                "root/qel", CIMName("QEL_FCPort"), true, false,
                                                false, false, CIMPropertyList()))
                                     .checked()
                                     .instances.size());
    state.counters["cpu_ms"] = (processCpuMs() - cpu0) / static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnumerateInstances)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_TlsHandshake(benchmark::State& state)
{
    connect(true);  // the server and its certificate are ready before the clock runs
    const double cpu0 = processCpuMs();
    for (auto _ : state)
        benchmark::DoNotOptimize(connect(true).get());
    state.counters["cpu_ms"] = (processCpuMs() - cpu0) / static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TlsHandshake)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_GetInstanceNewConnection(benchmark::State& state)
{
    static const CIMObjectPath target = connect(false)
                                            ->execute(CIMOperationRequest::enumerateInstanceNames(
                                                "root/qel", CIMName("QEL_FCPort")))
                                            .checked()
                                            .paths[0];
    for (auto _ : state)
        benchmark::DoNotOptimize(
            connect(state.range(0) != 0)
                ->execute(CIMOperationRequest::getInstance(
                    "root/qel", target, false, false, false, CIMPropertyList()))
                .checked()
                .instance.getPropertyCount());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GetInstanceNewConnection)
    ->Arg(0)
    ->Arg(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    ::setenv("QELSIM_STATE", "none", 1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
