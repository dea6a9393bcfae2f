// The whole server in the benchmark's process (qel-cimserver's assembly) on a generated
// array, with one user whose password is made up for the run: what the security
// benchmarks measure against. Header-only; uses the server's interfaces as they stood
// before HTTPS, so that the password benchmarks build on older trees too.
#ifndef QEL_BENCH_SECURITY_SECURITYBENCHSERVER_H
#define QEL_BENCH_SECURITY_SECURITYBENCHSERVER_H

#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>
#include <Server/main/WireServer.h>

#include <Pegasus/Client/CIMClient.h>
#include <nlohmann/json.hpp>
#include <qelsim_control.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace securitybench
{

struct BenchServer
{
    std::unique_ptr<qel::server::WireServer> wire;
    std::string user, password, dir;

    ~BenchServer()
    {
        if (wire)
            wire->stop();
        if (!dir.empty())
            std::filesystem::remove_all(dir);
    }
};

// A server on `ports` generated FC ports; `adjust` may change its options before it starts
// (HTTPS, limits).
inline std::unique_ptr<BenchServer> startServer(
    unsigned ports,
    const std::function<void(qel::server::WireServerOptions&, const std::string& dir)>& adjust =
        nullptr)
{
    auto s = std::make_unique<BenchServer>();
    std::string json;
    qelsim::GenerateOptions g;
    g.fcPorts = ports;
    if (!qelsim::generateArray(g, &json).ok || !qelsim::loadArrayText(json).ok)
        throw std::runtime_error("cannot generate the array");
    s->user = "admin";
    const nlohmann::json doc = nlohmann::json::parse(json);
    for (const auto& u : doc["users"])
        if (u.value("role", "") == "super" && u.value("enabled", true))
        {
            s->user = u["name"].get<std::string>();
            break;
        }
    char tmpl[] = "/tmp/qel-secbench-XXXXXX";
    s->dir = mkdtemp(tmpl);
    s->password = qel::auth::generatePassword();
    qel::auth::PasswordFile f;
    f.add(s->user, qel::auth::hashPassword(s->password));
    f.save(s->dir + "/passwd");
    qel::server::WireServerOptions o;
    o.core.mofFiles = {QEL_BENCH_SCHEMA};
    o.core.defaultNamespace = "root/qel";
    std::stringstream dirs(QEL_BENCH_PROVIDER_DIRS);
    for (std::string d; std::getline(dirs, d, ':');)
        o.core.providerDirectories.push_back(d);
    o.http.port = 0;
    o.http.socketPath = s->dir + "/cim.socket";
    o.passwordFile = s->dir + "/passwd";
    if (adjust)
        adjust(o, s->dir);
    s->wire = std::make_unique<qel::server::WireServer>(o);
    s->wire->start();
    return s;
}

}  // namespace securitybench

#endif
