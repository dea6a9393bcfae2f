// The whole server under load, in one process: qel-cimserver's assembly on a generated
// array of 100, 1,000 or 10,000 FC ports, driven by CIMClient over HTTP on loopback with
// 1 and 8 concurrent clients. Reports requests per second, p50/p99 latency and the
// process's resident memory (server and clients together) idle and after the run.
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>
#include <Server/clienttransport/InstallTransports.h>
#include <Server/main/WireServer.h>

#include <Pegasus/Client/CIMClient.h>
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <qelsim_control.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <mutex>
#include <sstream>
#include <unistd.h>

using namespace Pegasus;

namespace {

long residentKiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  return -1;
}

struct Server {
  std::unique_ptr<qel::server::WireServer> wire;
  std::string user, password, dir;
  unsigned ports = 0;
  long idleKiB = 0;
};

Server& serverFor(unsigned ports) {
  static Server s;
  if (s.wire && s.ports == ports) return s;
  if (s.wire) s.wire->stop();
  s.wire.reset();
  std::string json;
  qelsim::GenerateOptions g;
  g.fcPorts = ports;
  if (!qelsim::generateArray(g, &json).ok || !qelsim::loadArrayText(json).ok) throw std::runtime_error("array");
  const auto doc = nlohmann::json::parse(json);
  s.user = "admin";
  for (const auto& u : doc["users"])
    if (u.value("role", "") == "super" && u.value("enabled", true)) {
      s.user = u["name"].get<std::string>();
      break;
    }
  if (s.dir.empty()) {
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
  for (std::string d; std::getline(dirs, d, ':');) o.core.providerDirectories.push_back(d);
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

std::mutex latencyMutex;
std::vector<double> latencies;

template <class Call>
void drive(benchmark::State& state, Call call) {
  Server* s = nullptr;
  if (state.thread_index() == 0) {
    s = &serverFor(static_cast<unsigned>(state.range(0)));
    std::lock_guard<std::mutex> lock(latencyMutex);
    latencies.clear();
  }
  static Server* shared;
  if (state.thread_index() == 0) shared = s;
  CIMClient client;
  std::vector<double> mine;
  bool connected = false;
  for (auto _ : state) {
    if (!connected) {
      client.connect("127.0.0.1", shared->wire->tcpPort(), shared->user.c_str(), shared->password.c_str());
      connected = true;
    }
    const auto t0 = std::chrono::steady_clock::now();
    call(client);
    mine.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - t0).count());
  }
  {
    std::lock_guard<std::mutex> lock(latencyMutex);
    latencies.insert(latencies.end(), mine.begin(), mine.end());
  }
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) {
    // Percentiles over the first thread's view once all threads have added theirs is not
    // guaranteed; every thread adds its own, and thread 0 reports what it sees last.
    std::lock_guard<std::mutex> lock(latencyMutex);
    std::vector<double> all = latencies;
    std::sort(all.begin(), all.end());
    if (!all.empty()) {
      state.counters["p50_us"] = all[all.size() / 2];
      state.counters["p99_us"] = all[std::min(all.size() - 1, all.size() * 99 / 100)];
    }
    state.counters["rss_idle_MiB"] = shared->idleKiB / 1024.0;
    state.counters["rss_MiB"] = residentKiB() / 1024.0;
  }
}

void BM_EnumerateInstances(benchmark::State& state) {
  drive(state, [](CIMClient& c) {
    benchmark::DoNotOptimize(c.enumerateInstances("root/qel", CIMName("QEL_FCPort")).size());
  });
}
BENCHMARK(BM_EnumerateInstances)->Arg(100)->Arg(1000)->Arg(10000)->Threads(1)->Threads(8)->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void BM_GetInstance(benchmark::State& state) {
  static CIMObjectPath target;
  static unsigned targetPorts = 0;
  if (state.thread_index() == 0 && targetPorts != state.range(0)) {
    Server& s = serverFor(static_cast<unsigned>(state.range(0)));
    CIMClient c;
    c.connect("127.0.0.1", s.wire->tcpPort(), s.user.c_str(), s.password.c_str());
    target = c.enumerateInstanceNames("root/qel", CIMName("QEL_FCPort"))[0];
    targetPorts = static_cast<unsigned>(state.range(0));
  }
  drive(state, [](CIMClient& c) { benchmark::DoNotOptimize(c.getInstance("root/qel", target).getPropertyCount()); });
}
BENCHMARK(BM_GetInstance)->Arg(100)->Arg(1000)->Arg(10000)->Threads(1)->Threads(8)->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  ::setenv("QELSIM_STATE", "none", 1);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
