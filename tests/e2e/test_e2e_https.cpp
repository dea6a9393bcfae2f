// qel-cimserver over HTTPS as users meet it: the tour's reads and changes with wbemcli
// (answered as over plain HTTP), client certificates mapped with qel-certmap, the protocol
// versions and ciphers openssl s_client is offered, the settings refused at start, and
// every command --demo prints, pasted.
#include "ServerProcess.h"
#include "Wbemcli.h"

#include "../wire/TestPki.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace e2e;

namespace
{

const std::string kPort = portPath("20110002AC00A001", "DEMO01-N0");
const std::string kStats = statsPath("ZEPHRAN:20110002AC00A001-Stats");

// A folder of certificates for one suite, removed with it.
struct Pki
{
    Pki()
    {
        char tmpl[] = "/tmp/qel-e2e-pki-XXXXXX";
        dir = mkdtemp(tmpl);
        authority = std::make_unique<wiretest::TestPki>(dir, "e2e");
        server = authority->issue("server", true, {"localhost", "127.0.0.1"});
    }
    ~Pki() { std::filesystem::remove_all(dir); }
    std::string dir;
    std::unique_ptr<wiretest::TestPki> authority;
    wiretest::IssuedCertificate server;
};

class HttpsTest : public SharedServerSuite<HttpsTest>
{
protected:
    static void SetUpTestSuite()
    {
        pki = new Pki();
        operatorCert = pki->authority->issue("operator", false);
        strangerCert = pki->authority->issue("stranger", false);
        expiredCert = pki->authority->issue("expired", false, {}, -10, -1);
        map = pki->dir + "/certmap";
        for (const auto* c : {&operatorCert, &expiredCert})
        {
            const CommandResult r =
                run({QEL_E2E_CERTMAP, "-f", map, "add", "operator", c->certificateFile});
            ASSERT_EQ(r.exitCode, 0) << r.output;
        }
        startServer(
            {{"operator", "edit"}, {"monitor", "browse"}},
            {"--https-port", "0", "--https-bind", "127.0.0.1", "--tls-cert",
             pki->server.certificateFile, "--tls-key", pki->server.keyFile, "--tls-trust",
             pki->authority->caFile(), "--cert-map", map});
        https = new Wbemcli(*server, {"-cacert", pki->authority->caFile()});
    }
    static void TearDownTestSuite()
    {
        delete https;
        SharedServerSuite::TearDownTestSuite();
        delete pki;
    }
    // The host part wbemcli prints differs between the two; the rest must not.
    static std::string sameHost(std::string text)
    {
        for (const std::string& host :
             {"localhost:" + std::to_string(server->tlsPort()),
              "127.0.0.1:" + std::to_string(server->port())})
            for (size_t at = text.find(host); at != std::string::npos; at = text.find(host, at))
                text.replace(at, host.size(), "HOST");
        return text;
    }
    static WbemcliAnswer
    withCertificate(const wiretest::IssuedCertificate& c, const std::string& method)
    {
        return (*https)(
            {"cm", "-clientcert", c.certificateFile, "-clientkey", c.keyFile, https->at("", kPort),
             method});
    }

    static inline Pki* pki = nullptr;
    static inline wiretest::IssuedCertificate operatorCert, strangerCert, expiredCert;
    static inline std::string map;
    static inline Wbemcli* https = nullptr;
};

TEST_F(HttpsTest, TheToursReadsAnswerAsOverPlainHttp)
{
    const struct
    {
        const char* op;
        std::string object;
        std::vector<std::string> options;
    } reads[] = {
        {"ein", "QEL_FCPort", {}},
        {"ei", "QEL_FCPort", {}},
        {"ei", "QEL_SFP", {}},
        {"gi", kPort, {}},
        {"gi", kStats, {}},
        {"ain", kPort, {"-ac", "QEL_FCPortSFP"}},
        {"ai", kPort, {"-ac", "QEL_FCPortLESBElementStatisticalData"}},
    };
    for (const auto& r : reads)
    {
        const WbemcliAnswer secure = https->as("monitor", r.op, r.object, r.options);
        const WbemcliAnswer plain = cli->as("monitor", r.op, r.object, r.options);
        ASSERT_TRUE(secure.ok()) << r.op << " " << r.object << "\n" << secure.result.output;
        EXPECT_FALSE(secure.objects().empty()) << r.op << " " << r.object;
        EXPECT_EQ(sameHost(secure.result.out), sameHost(plain.result.out))
            << r.op << " " << r.object;
    }
}

TEST_F(HttpsTest, TheToursChangesWorkForAnEditorAndAreRefusedToABrowser)
{
    const auto state = [&]
    { return https->as("monitor", "gi", kPort).objects().at(0)["EnabledState"]; };
    EXPECT_EQ(
        https->call("monitor", kPort, "SetOffline").error(),
        "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege");
    ASSERT_TRUE(https->call("operator", kPort, "SetOffline").ok());
    EXPECT_EQ(state(), "6");
    ASSERT_TRUE(https->call("operator", kPort, "Reset").ok());
    EXPECT_EQ(state(), "2");

    ASSERT_TRUE((*https)({"sp", https->at("operator", kPort), "InterruptCoalescing=2"}).ok());
    const WbemcliAnswer read = (*https)({"gp", https->at("monitor", kPort), "InterruptCoalescing"});
    EXPECT_EQ(read.result.out, "2\n") << read.result.output;
    ASSERT_TRUE(https->call("operator", kStats, "ResetSelectedStats").ok());
    EXPECT_EQ(https->as("monitor", "gi", kStats).objects().at(0)["CRCErrors"], "0");
}

TEST_F(HttpsTest, AMappedClientCertificateIsItsUserWithoutAPassword)
{
    const size_t audited = server->auditLog().size();
    const WbemcliAnswer mapped = withCertificate(operatorCert, "Reset");
    EXPECT_TRUE(mapped.ok()) << mapped.result.output;
    EXPECT_NE(server->auditLog().find("\"user\":\"operator\"", audited), std::string::npos);
    // Trusted but mapped to no one: refused like a missing password.
    const WbemcliAnswer unmapped = withCertificate(strangerCert, "Reset");
    EXPECT_NE(unmapped.result.err.find("Username/password required"), std::string::npos)
        << unmapped.result.output;
    EXPECT_NE(server->log().find("client certificate \"CN=stranger\""), std::string::npos);
    // Mapped but expired: the handshake fails, nothing reaches the CIM layer.
    const WbemcliAnswer expired = withCertificate(expiredCert, "Reset");
    EXPECT_FALSE(expired.ok());
    EXPECT_EQ(expired.result.err.find("Username/password required"), std::string::npos)
        << expired.result.output;
    const std::string changes = server->auditLog().substr(audited);
    EXPECT_EQ(changes.find("\"user\""), changes.rfind("\"user\"")) << "one change only:\n"
                                                                   << changes;
}

TEST_F(HttpsTest, OnlyTls12And13WithForwardSecretCiphersAndNoRenegotiation)
{
    const std::string at = "127.0.0.1:" + std::to_string(server->tlsPort());
    const struct
    {
        std::vector<std::string> options;
        const char* accepted;  // the protocol line s_client prints, or nullptr: refused
    } cases[] = {
        {{"-tls1", "-cipher", "DEFAULT@SECLEVEL=0"}, nullptr},
        {{"-tls1_1", "-cipher", "DEFAULT@SECLEVEL=0"}, nullptr},
        {{"-tls1_2"}, "New, TLSv1.2, Cipher is ECDHE-"},
        {{"-tls1_3"}, "New, TLSv1.3, Cipher is TLS_"},
        {{"-tls1_2", "-cipher", "AES128-SHA:AES256-GCM-SHA384"}, nullptr},  // no forward secrecy
        {{"-tls1_2", "-cipher", "ECDHE-RSA-AES128-SHA"}, nullptr},          // CBC
    };
    for (const auto& c : cases)
    {
        std::vector<std::string> argv{
            "/usr/bin/openssl", "s_client", "-connect", at, "-CAfile", pki->authority->caFile()};
        argv.insert(argv.end(), c.options.begin(), c.options.end());
        const CommandResult r = run(argv, "Q\n");
        const std::string what = c.options[0] + (c.options.size() > 2 ? " " + c.options[2] : "");
        if (c.accepted)
        {
            EXPECT_NE(r.out.find(c.accepted), std::string::npos) << what << "\n" << r.output;
            EXPECT_NE(r.out.find("Verify return code: 0 (ok)"), std::string::npos) << what;
            EXPECT_NE(r.out.find("Compression: NONE"), std::string::npos) << what;
        }
        else
        {
            EXPECT_NE(r.out.find("Cipher is (NONE)"), std::string::npos) << what << "\n"
                                                                         << r.output;
        }
    }
    // A client's renegotiation request is refused, and the connection goes no further.
    const CommandResult reneg =
        run({"/usr/bin/openssl", "s_client", "-connect", at, "-CAfile", pki->authority->caFile(),
             "-tls1_2"},
            "R\nPOST /cimom HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
    EXPECT_NE(reneg.output.find("RENEGOTIATING"), std::string::npos) << reneg.output;
    EXPECT_EQ(reneg.out.find("HTTP/1.1"), std::string::npos) << reneg.output;
}

// A free TCP port on loopback, held by a listening socket of the test.
struct HeldPort
{
    HeldPort()
    {
        fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t n = sizeof a;
        if (::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || ::listen(fd, 1) != 0 ||
            ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &n) != 0)
            throw std::runtime_error("cannot hold a port");
        port = std::to_string(ntohs(a.sin_port));
    }
    ~HeldPort() { ::close(fd); }
    int fd;
    std::string port;
};

TEST(ServerStart, BadNetworkSettingsAreRefusedWithExitCode2AndTheReason)
{
    Pki pki;
    const std::string d = pki.dir;
    const std::string passwd = d + "/passwd";
    ASSERT_EQ(run({QEL_E2E_PASSWD, "-f", passwd, "add", "monitor", "--generate"}).exitCode, 0);
    std::ofstream(d + "/empty.pem") << "no certificate here\n";
    const wiretest::IssuedCertificate other = pki.authority->issue("other", true);
    HeldPort held;
    const std::string cert = pki.server.certificateFile, key = pki.server.keyFile;
    const struct
    {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"--bind", "0.0.0.0"},
         "plain HTTP on 0.0.0.0 would carry passwords in clear across the network"},
        {{"--bind", "no-address"}, "--bind: not an IP address: \"no-address\""},
        {{"--tls-cert", cert}, "--tls-cert and --tls-key go together"},
        {{"--https-port", "0"}, "HTTPS needs --tls-cert and --tls-key"},
        {{"--tls-cert", d + "/none.pem", "--tls-key", key},
         "cannot read certificate " + d + "/none.pem: No such file or directory"},
        {{"--tls-cert", d + "/empty.pem", "--tls-key", key},
         "certificate " + d + "/empty.pem: not a PEM certificate"},
        {{"--tls-cert", cert, "--tls-key", cert},
         "key " + cert + ": not an unencrypted PEM private key"},
        {{"--tls-cert", cert, "--tls-key", other.keyFile},
         "key " + other.keyFile + " does not match certificate " + cert},
        {{"--tls-cert", cert, "--tls-key", key, "--tls-trust", d + "/empty.pem"},
         "trusted certificate " + d + "/empty.pem: no PEM certificate"},
        {{"--port", held.port},
         "cannot listen for HTTP on 127.0.0.1:" + held.port + ": Address already in use"},
        {{"--tls-cert", cert, "--tls-key", key, "--https-port", held.port, "--https-bind",
          "127.0.0.1"},
         "cannot listen for HTTPS on 127.0.0.1:" + held.port + ": Address already in use"},
    };
    for (const auto& c : cases)
    {
        std::vector<std::string> argv{QEL_E2E_SERVER, "--socket", d + "/s", "--password-file",
                                      passwd,         "--port",   "0"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const CommandResult r = run(argv);
        EXPECT_EQ(r.exitCode, 2) << c.args[0] << "\n" << r.output;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args[0] << "\n" << r.err;
    }
}

TEST(ServerStart, PlainHttpBeyondLoopbackNeedsTheOptionAndIsWarnedAbout)
{
    ServerProcess s({{"monitor", "browse"}}, {"--bind", "0.0.0.0", "--http-on-network"});
    EXPECT_NE(
        s.log().find(
            "warning: plain HTTP listens on 0.0.0.0: passwords cross the network in clear"),
        std::string::npos)
        << s.log();
    const WbemcliAnswer a = Wbemcli(s).as("monitor", "ein", "QEL_FCPort");
    EXPECT_TRUE(a.ok()) << a.result.output;
}

TEST(DemoTour, EveryPrintedCommandWorksWhenPasted)
{
    ServerProcess demo({}, {"--demo", "--https-port", "0"});
    ASSERT_NE(demo.tlsPort(), 0) << demo.log();
    std::vector<std::string> commands;
    std::istringstream lines(demo.log());
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("  wbemcli ", 0) == 0)
            commands.push_back(line.substr(2));
    ASSERT_EQ(commands.size(), 12u) << demo.log();  // six over HTTPS, six over HTTP
    for (size_t i = 0; i < commands.size(); ++i)
    {
        const std::string& command = commands[i];
        EXPECT_EQ(command.find('<'), std::string::npos) << "a placeholder: " << command;
        EXPECT_NE(command.find(i < 6 ? "'https://" : "'http://"), std::string::npos) << command;
        // As pasted into a shell, with wbemcli found on the PATH.
        const CommandResult r = run(
            {"/bin/sh", "-c",
             "PATH=$(dirname " + std::string(QEL_E2E_WBEMCLI) + "):$PATH " + command});
        EXPECT_EQ(r.exitCode, 0) << command << "\n" << r.output;
        EXPECT_FALSE(r.out.empty()) << command;
        EXPECT_EQ(r.err, "") << command;
        const size_t method = command.rfind("' ");
        if (method != std::string::npos)  // cm ... SetOffline / Reset
        {
            EXPECT_NE(r.out.find(command.substr(method + 2) + ": 0"), std::string::npos)
                << r.output;
        }
    }
}

}  // namespace
