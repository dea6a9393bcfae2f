// The whole server under load, in one process: qel-cimserver's assembly on a generated
// array of 100, 1,000 or 10,000 FC ports, driven by CIMClient over HTTP on loopback with
// 1 and 8 concurrent clients. Reports requests per second, p50/p99 latency, the CPU time
// per request (the whole process, and the server's part: the process less the client
// threads) and the process's resident memory (server and clients together) idle and after
// the run. On a busy machine the CPU times are steadier than the wall-clock figures.
// BM_InProcess* build and encode the same answers on the same server without HTTP,
// authentication or client: the wire figures divided by these are the host's overhead, and
// the answers' costs as CI can follow them (EnumerateInstances of QEL_FCPort, QEL_SFP and
// QEL_FCPortLESBStatistics, GetInstance and Associators of a port).
// BM_Pull* page the same enumeration with the pull operations (pages of 500), and
// BM_IdleContexts measures what open enumerations that nobody pulls cost.
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/core/Dispatcher.h>
#include <Server/core/EnumerationContexts.h>
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
#include <dirent.h>
#include <fstream>
#include <thread>
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

// The first port of the array of `ports` ports, found once per size.
const CIMObjectPath& firstPort(unsigned ports)
{
    static CIMObjectPath target;
    static unsigned targetPorts = 0;
    if (targetPorts != ports)
    {
        Server& s = serverFor(ports);
        const OperationContext c =
            Dispatcher::requestContext(String(s.user.c_str()), String("127.0.0.1"));
        target = s.wire->core().handle().enumerateInstanceNames(
            c, CIMNamespaceName("root/qel"), CIMName("QEL_FCPort"))[0];
        targetPorts = ports;
    }
    return target;
}

// EnumerateInstances of the module's classes: QEL_FCPort, QEL_SFP, QEL_FCPortLESBStatistics.
void BM_InProcessEnumerateInstances(benchmark::State& state, const char* className)
{
    inProcess(
        state, CIMOperationRequest::enumerateInstances(
                   CIMNamespaceName("root/qel"), CIMName(className), true, true, false, false,
                   CIMPropertyList()));
}
BENCHMARK_CAPTURE(BM_InProcessEnumerateInstances, QEL_FCPort, "QEL_FCPort")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_InProcessEnumerateInstances, QEL_SFP, "QEL_SFP")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(
    BM_InProcessEnumerateInstances, QEL_FCPortLESBStatistics, "QEL_FCPortLESBStatistics")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

void BM_InProcessGetInstance(benchmark::State& state)
{
    const CIMObjectPath& target = firstPort(static_cast<unsigned>(state.range(0)));
    inProcess(
        state, CIMOperationRequest::getInstance(
                   CIMNamespaceName("root/qel"), target, true, false, false, CIMPropertyList()));
}
BENCHMARK(BM_InProcessGetInstance)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Associators of a port over both of its associations (its SFP and its counters).
void BM_InProcessAssociators(benchmark::State& state)
{
    const CIMObjectPath& target = firstPort(static_cast<unsigned>(state.range(0)));
    inProcess(
        state, CIMOperationRequest::associators(
                   CIMNamespaceName("root/qel"), target, CIMName(), CIMName(), String(), String(),
                   false, false, CIMPropertyList()));
}
BENCHMARK(BM_InProcessAssociators)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// CPU time, in ms, of this process's thread named `name` ("" when there is none).
double namedThreadCpuMs(const std::string& name)
{
    DIR* tasks = opendir("/proc/self/task");
    double ms = -1;
    while (dirent* entry = tasks ? readdir(tasks) : nullptr)
    {
        const std::string dir = std::string("/proc/self/task/") + entry->d_name;
        std::string comm;
        std::getline(std::ifstream(dir + "/comm"), comm);
        if (comm != name)
            continue;
        std::string stat;
        std::getline(std::ifstream(dir + "/stat"), stat);
        // Fields 14 and 15 (utime, stime), counted after the command's closing parenthesis.
        std::istringstream fields(stat.substr(stat.rfind(')') + 2));
        std::string field;
        double ticks = 0;
        for (int i = 3; i <= 15 && fields >> field; ++i)
            if (i >= 14)
                ticks += std::stod(field);
        ms = ticks * 1000.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
    }
    if (tasks)
        closedir(tasks);
    return ms;
}

CIMClient& pullClient(Server& s)
{
    static CIMClient client;
    static Server* connectedTo = nullptr;
    static unsigned ports = 0;
    if (connectedTo != &s || ports != s.ports)
    {
        client.disconnect();
        client.connect("127.0.0.1", s.wire->tcpPort(), s.user.c_str(), s.password.c_str());
        connectedTo = &s;
        ports = s.ports;
    }
    return client;
}

// The time to the first page of 500 ports: the open alone (manual time). The enumeration
// is closed after each, and its provider has returned before the next one starts.
void BM_PullFirstPage(benchmark::State& state)
{
    Server& s = serverFor(static_cast<unsigned>(state.range(0)));
    CIMClient& client = pullClient(s);
    for (auto _ : state)
    {
        CIMEnumerationContext context;
        Boolean eos = false;
        const auto t0 = std::chrono::steady_clock::now();
        const Array<CIMInstance> page = client.openEnumerateInstances(
            context, eos, "root/qel", CIMName("QEL_FCPort"), true, false, CIMPropertyList(), "", "",
            Uint32Arg(), false, 500);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
        benchmark::DoNotOptimize(page.size());
        if (!eos)
            client.closeEnumeration(context);
        s.wire->core().enumerations().waitUntilIdle();
    }
}
BENCHMARK(BM_PullFirstPage)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

// The whole set in pages of 500: the open and every pull until the end of the sequence,
// with the CPU time per set of the whole process and of the server alone.
void BM_PullWholeSet(benchmark::State& state)
{
    Server& s = serverFor(static_cast<unsigned>(state.range(0)));
    CIMClient& client = pullClient(s);
    const double process0 = processCpuMs(), client0 = threadCpuMs();
    size_t pages = 0, objects = 0;
    for (auto _ : state)
    {
        CIMEnumerationContext context;
        Boolean eos = false;
        Array<CIMInstance> page = client.openEnumerateInstances(
            context, eos, "root/qel", CIMName("QEL_FCPort"), true, false, CIMPropertyList(), "", "",
            Uint32Arg(), false, 500);
        objects = page.size();
        for (pages = 1; !eos; ++pages)
            objects += client.pullInstancesWithPath(context, eos, 500).size();
    }
    const double processMs = processCpuMs() - process0, clientMs = threadCpuMs() - client0;
    state.counters["pages"] = static_cast<double>(pages);
    state.counters["objects"] = static_cast<double>(objects);
    state.counters["cpu_ms"] = processMs / static_cast<double>(state.iterations());
    state.counters["server_cpu_ms"] =
        (processMs - clientMs) / static_cast<double>(state.iterations());
    state.counters["rss_MiB"] = residentKiB() / 1024.0;
}
BENCHMARK(BM_PullWholeSet)->Arg(1000)->Arg(10000)->UseRealTime()->Unit(benchmark::kMillisecond);

// Open enumerations that nobody pulls: 16 (one user's maximum) opened with MaxObjectCount
// 0, waited for until their providers have filled what a context keeps (all of it for 100
// ports, the 1,000 a context keeps for 10,000) and wait. Reports the resident memory each
// costs and the reaper thread's CPU time while they wait for 3 seconds; then the same
// number, opened with OperationTimeout 1, and the reaper's CPU time until it has ended
// them all.
void BM_IdleContexts(benchmark::State& state)
{
    Server& s = serverFor(static_cast<unsigned>(state.range(0)));
    CIMClient& client = pullClient(s);
    EnumerationContexts& contexts = s.wire->core().enumerations();
    const unsigned count = contexts.limits().maxContextsPerUser;
    const size_t kept = std::min<size_t>(s.ports, contexts.limits().bufferedObjects);
    // With `filled`, returns once every provider has filled what its context keeps.
    const auto openAll = [&](Uint32 timeout, bool filled)
    {
        std::vector<std::unique_ptr<CIMEnumerationContext>> opened;
        for (unsigned i = 0; i < count; ++i)
        {
            opened.push_back(std::make_unique<CIMEnumerationContext>());
            Boolean eos = false;
            client.openEnumerateInstances(
                *opened.back(), eos, "root/qel", CIMName("QEL_FCPort"), true, false,
                CIMPropertyList(), "", "", Uint32Arg(timeout), false, 0);
        }
        while (filled && contexts.stats().bufferedObjects < count * kept)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return opened;
    };
    for (auto _ : state)
    {
        const long before = residentKiB();
        std::vector<std::unique_ptr<CIMEnumerationContext>> idle = openAll(300, true);
        const long held = residentKiB();
        const double idle0 = namedThreadCpuMs("qel-enum-reaper");
        std::this_thread::sleep_for(std::chrono::seconds(3));
        const double idle1 = namedThreadCpuMs("qel-enum-reaper");
        for (auto& context : idle)
            client.closeEnumeration(*context);
        contexts.waitUntilIdle();

        // These may expire before their providers have filled them (10,000 ports take
        // longer than a second to build 16 times over): the reaper ends them either way.
        openAll(1, false);
        const double expiring0 = namedThreadCpuMs("qel-enum-reaper");
        while (contexts.stats().open != 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        contexts.waitUntilIdle();
        const double expiring1 = namedThreadCpuMs("qel-enum-reaper");
        state.counters["contexts"] = count;
        state.counters["KiB_per_context"] = static_cast<double>(held - before) / count;
        state.counters["reaper_ms_idle_3s"] = idle1 - idle0;
        state.counters["reaper_ms_ending_all"] = expiring1 - expiring0;
    }
}
BENCHMARK(BM_IdleContexts)->Arg(100)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);

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
