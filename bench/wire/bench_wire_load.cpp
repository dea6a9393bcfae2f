// The whole server under load, in one process: qel-cimserver's assembly on a generated
// array of 100, 1,000 or 10,000 FC ports, driven by CIMClient over HTTP on loopback with
// 1 and 8 concurrent clients. Reports requests per second, p50/p99 latency, the CPU time
// per request (the whole process, and the server's part: the process less the client
// threads) and the process's resident memory (server and clients together) idle and after
// the run. On a busy machine the CPU times are steadier than the wall-clock figures.
// BM_InProcess* build and encode the same answers on the same server without HTTP,
// authentication or client: the wire figures divided by these are the host's overhead.
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/Dispatcher.h>
#include <Server/main/WireServer.h>
#include <Server/xml/ResponseCodec.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMResponseCollector.h>
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <qelsim_control.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <ctime>
#include <fstream>
#include <mutex>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

using namespace Pegasus;

namespace
{

long residentKiB()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

struct Server
{
    std::unique_ptr<qel::server::WireServer> wire;
    std::string user, password, dir;
    unsigned ports = 0;
    long idleKiB = 0;
};

Server& theServer()
{
    static Server s;
    return s;
}

Server& serverFor(unsigned ports)
{
    Server& s = theServer();
    if (s.wire && s.ports == ports)
        return s;
    if (s.wire)
        s.wire->stop();
    s.wire.reset();
    std::string json;
    qelsim::GenerateOptions g;
    g.fcPorts = ports;
    if (!qelsim::generateArray(g, &json).ok || !qelsim::loadArrayText(json).ok)
        throw std::runtime_error("array");
    const auto doc = nlohmann::json::parse(json);
    s.user = "admin";
    for (const auto& u : doc["users"])
        if (u.value("role", "") == "super" && u.value("enabled", true))
        {
            s.user = u["name"].get<std::string>();
            break;
        }
    if (s.dir.empty())
    {
        char tmpl[] = "/tmp/qel-bench-XXXXXX";
        s.dir = mkdtemp(tmpl);
    }
    s.password = qel::auth::generatePassword();
    qel::auth::PasswordFile f;
    f.add(s.user, qel::auth::hashPassword(s.password));
    f.save(s.dir + "/passwd");
    qel::server::WireServerOptions o;
    o.core.mofFiles = {QEL_BENCH_SCHEMA};
    o.core.defaultNamespace = "root/qel";
    std::stringstream dirs(QEL_BENCH_PROVIDER_DIRS);
    for (std::string d; std::getline(dirs, d, ':');)
        o.core.providerDirectories.push_back(d);
    o.http.port = 0;
    o.http.socketPath = s.dir + "/cim.socket";
    o.passwordFile = s.dir + "/passwd";
    s.wire = std::make_unique<qel::server::WireServer>(o);
    s.wire->start();
    s.ports = ports;
    s.idleKiB = residentKiB();
    qel::client::installTcpTransport();
    return s;
}

double processCpuMs()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 +
           (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
}

double threadCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

// What the client threads of the current run report once their loop is over.
std::mutex latencyMutex;
std::condition_variable allReported;
int reported = 0;
std::vector<double> latencies;
double clientCpuMs = 0;
double processStartMs = 0;

template <class Call>
void drive(benchmark::State& state, Call call)
{
    Server* s = nullptr;
    if (state.thread_index() == 0)
    {
        s = &serverFor(static_cast<unsigned>(state.range(0)));
        std::lock_guard<std::mutex> lock(latencyMutex);
        latencies.clear();
        clientCpuMs = 0;
        reported = 0;
    }
    static Server* shared;
    if (state.thread_index() == 0)
        shared = s;
    CIMClient client;
    std::vector<double> mine;
    bool connected = false;
    double myCpuMs = 0;
    for (auto _ : state)
    {
        // The loop's start waits for every thread: from here on the process's CPU time is
        // this run's.
        if (myCpuMs == 0)
        {
            myCpuMs = threadCpuMs();
            if (state.thread_index() == 0)
                processStartMs = processCpuMs();
        }
        if (!connected)
        {
            client.connect(
                "127.0.0.1", shared->wire->tcpPort(), shared->user.c_str(),
                shared->password.c_str());
            connected = true;
        }
        const auto t0 = std::chrono::steady_clock::now();
        call(client);
        mine.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - t0)
                .count());
    }
    myCpuMs = threadCpuMs() - myCpuMs;
    {
        std::lock_guard<std::mutex> lock(latencyMutex);
        latencies.insert(latencies.end(), mine.begin(), mine.end());
        clientCpuMs += myCpuMs;
        ++reported;
    }
    allReported.notify_all();
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0)
    {
        // Thread 0 reports for the run once every thread has added its figures.
        std::unique_lock<std::mutex> lock(latencyMutex);
        allReported.wait(lock, [&] { return reported == state.threads(); });
        std::vector<double> all = latencies;
        std::sort(all.begin(), all.end());
        if (!all.empty())
        {
            state.counters["p50_us"] = all[all.size() / 2];
            state.counters["p99_us"] = all[std::min(all.size() - 1, all.size() * 99 / 100)];
        }
        state.counters["rss_idle_MiB"] = shared->idleKiB / 1024.0;
        state.counters["rss_MiB"] = residentKiB() / 1024.0;
        // Requests of all threads; the counters are per request.
        const double requests = static_cast<double>(state.iterations()) * state.threads();
        const double processMs = processCpuMs() - processStartMs;
        state.counters["cpu_ms"] = processMs / requests;
        state.counters["server_cpu_ms"] = (processMs - clientCpuMs) / requests;
    }
}

void BM_EnumerateInstances(benchmark::State& state)
{
    drive(
        state,
        [](CIMClient& c) {
            benchmark::DoNotOptimize(
                c.enumerateInstances("root/qel", CIMName("QEL_FCPort")).size());
        });
}
BENCHMARK(BM_EnumerateInstances)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Threads(1)
    ->Threads(8)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void BM_GetInstance(benchmark::State& state)
{
    static CIMObjectPath target;
    static unsigned targetPorts = 0;
    if (state.thread_index() == 0 && targetPorts != state.range(0))
    {
        Server& s = serverFor(static_cast<unsigned>(state.range(0)));
        CIMClient c;
        c.connect("127.0.0.1", s.wire->tcpPort(), s.user.c_str(), s.password.c_str());
        target = c.enumerateInstanceNames("root/qel", CIMName("QEL_FCPort"))[0];
        targetPorts = static_cast<unsigned>(state.range(0));
    }
    drive(
        state, [](CIMClient& c)
        { benchmark::DoNotOptimize(c.getInstance("root/qel", target).getPropertyCount()); });
}
BENCHMARK(BM_GetInstance)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Threads(1)
    ->Threads(8)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// What the server does for one answer once the request is decoded: the dispatcher runs it
// (as DispatcherExecutor does, request built as CIMClient builds it) and the codec encodes
// the result.
void inProcess(benchmark::State& state, const CIMOperationRequest& request)
{
    Server& s = serverFor(static_cast<unsigned>(state.range(0)));
    Dispatcher& dispatcher = s.wire->core().dispatcher();
    const OperationContext context =
        Dispatcher::requestContext(String(s.user.c_str()), String("127.0.0.1"));
    size_t bytes = 0;
    for (auto _ : state)
    {
        CIMOperationResponse r;
        r.messageId = "1";
        r.operation = request.operation;
        r.methodName = request.methodName;
        CIMResponseCollector collector(request.operation, r);
        dispatcher.execute(context, request, collector);
        const std::string body =
            qel::cimxml::encodeResponse(r, dispatcher.hostName(), request.nameSpace);
        bytes = body.size();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.SetItemsProcessed(state.iterations());
}

void BM_InProcessEnumerateInstances(benchmark::State& state)
{
    inProcess(
        state, CIMOperationRequest::enumerateInstances(
                   CIMNamespaceName("root/qel"), CIMName("QEL_FCPort"), true, true, false, false,
                   CIMPropertyList()));
}
BENCHMARK(BM_InProcessEnumerateInstances)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

void BM_InProcessGetInstance(benchmark::State& state)
{
    static CIMObjectPath target;
    static unsigned targetPorts = 0;
    if (targetPorts != state.range(0))
    {
        Server& s = serverFor(static_cast<unsigned>(state.range(0)));
        const OperationContext c =
            Dispatcher::requestContext(String(s.user.c_str()), String("127.0.0.1"));
        target = s.wire->core().handle().enumerateInstanceNames(
            c, CIMNamespaceName("root/qel"), CIMName("QEL_FCPort"))[0];
        targetPorts = static_cast<unsigned>(state.range(0));
    }
    inProcess(
        state, CIMOperationRequest::getInstance(
                   CIMNamespaceName("root/qel"), target, true, false, false, CIMPropertyList()));
}
BENCHMARK(BM_InProcessGetInstance)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    ::setenv("QELSIM_STATE", "none", 1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    // Stopped here, not by the static's destructor after main: stopping restores process-wide
    // settings (the local transport) whose own statics are gone by then.
    if (theServer().wire)
        theServer().wire->stop();
    theServer().wire.reset();
    if (!theServer().dir.empty())
        std::filesystem::remove_all(theServer().dir);
    return 0;
}
