// What a login costs. BM_Verify*: one Basic verification in process, for an unknown user,
// a known user with a wrong password and a known user with the right one (the same pair
// each time, as a client that reconnects sends it); BM_VerifyUnknownVersusWrong times the
// two refusals in turn. BM_GetInstanceNewConnection: one
// GetInstance of an FC port on a 1,000-port array, each on a new HTTP connection with
// Basic credentials, as wbemcli makes them (one connection per command): the time shown is
// the wall-clock time per request, client included.
#include "SecurityBenchServer.h"

#include <Server/auth/Base64.h>
#include <Server/auth/BasicAuthenticator.h>
#include <Server/clienttransport/CimXmlTransport.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

using namespace Pegasus;

namespace
{

// A password file with one yescrypt user, as qel-passwd writes it.
struct Users
{
    Users()
    {
        char tmpl[] = "/tmp/qel-authbench-XXXXXX";
        dir = mkdtemp(tmpl);
        qel::auth::PasswordFile f;
        f.add("alice", qel::auth::hashPassword("wonderland"));
        f.save(dir + "/passwd");
        auth = std::make_unique<qel::auth::BasicAuthenticator>(dir + "/passwd");
    }
    ~Users() { std::filesystem::remove_all(dir); }
    std::string dir;
    std::unique_ptr<qel::auth::BasicAuthenticator> auth;
};

Users& users()
{
    static Users u;
    return u;
}

void verify(benchmark::State& state, const std::string& user, const std::string& password)
{
    const std::string header = "Basic " + qel::auth::base64Encode(user + ":" + password);
    for (auto _ : state)
        benchmark::DoNotOptimize(users().auth->authenticate(header).ok);
}

void BM_VerifyUnknownUser(benchmark::State& state)
{
    verify(state, "mallory", "guess");
}
void BM_VerifyWrongPassword(benchmark::State& state)
{
    verify(state, "alice", "guess");
}
void BM_VerifyRightPasswordAgain(benchmark::State& state)
{
    verify(state, "alice", "wonderland");
}
BENCHMARK(BM_VerifyUnknownUser)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VerifyWrongPassword)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VerifyRightPasswordAgain)->Unit(benchmark::kMillisecond);

// Both refusals timed in turn, under the same load: medians of the wall-clock time of
// each (unknown_ms, wrong_ms) and unknown / wrong (ratio). A busy machine moves both alike.
void BM_VerifyUnknownVersusWrong(benchmark::State& state)
{
    const std::string unknown = "Basic " + qel::auth::base64Encode("mallory:guess");
    const std::string wrong = "Basic " + qel::auth::base64Encode("alice:guess");
    std::vector<double> unknownMs, wrongMs;
    auto timed = [](const std::string& header)
    {
        const auto t0 = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(users().auth->authenticate(header).ok);
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0)
            .count();
    };
    bool unknownFirst = true;
    for (auto _ : state)
    {
        if (unknownFirst)
            unknownMs.push_back(timed(unknown));
        wrongMs.push_back(timed(wrong));
        if (!unknownFirst)
            unknownMs.push_back(timed(unknown));
        unknownFirst = !unknownFirst;
    }
    auto median = [](std::vector<double> v)
    {
        std::sort(v.begin(), v.end());
        return v.empty() ? 0.0 : v[v.size() / 2];
    };
    state.counters["unknown_ms"] = median(unknownMs);
    state.counters["wrong_ms"] = median(wrongMs);
    state.counters["ratio"] = median(unknownMs) / median(wrongMs);
}
BENCHMARK(BM_VerifyUnknownVersusWrong)->Unit(benchmark::kMillisecond);

void BM_GetInstanceNewConnection(benchmark::State& state)
{
    const auto server = securitybench::startServer(static_cast<unsigned>(state.range(0)));
    const unsigned short port = server->wire->tcpPort();
    CIMObjectPath target;
    {
        auto t = qel::client::CimXmlTransport::overTcp(
            "127.0.0.1", port, server->user, server->password, 20000);
        target = t->execute(CIMOperationRequest::enumerateInstanceNames(
                                "root/qel", CIMName("QEL_FCPort")))
                     .checked()
                     .paths[0];
    }
    for (auto _ : state)
    {
        auto t = qel::client::CimXmlTransport::overTcp(
            "127.0.0.1", port, server->user, server->password, 20000);
        benchmark::DoNotOptimize(
            t->execute(CIMOperationRequest::getInstance(
                           "root/qel", target, false, false, false, CIMPropertyList()))
                .checked()
                .instance.getPropertyCount());
    }
}
BENCHMARK(BM_GetInstanceNewConnection)
    ->Arg(1000)
    ->Iterations(50)
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
