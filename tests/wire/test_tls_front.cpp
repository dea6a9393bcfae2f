// HTTPS: client certificates (mapped, unmapped, expired, from an unknown authority, none),
// what arrives on the TLS port that is not TLS, the handshake deadline, and certificates
// reloaded while the server runs.
#include "TestPki.h"
#include "WireTestSupport.h"

#include <Server/auth/CertificateMap.h>
#include <Server/clienttransport/CimXmlTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace Pegasus;
using qel::client::CimXmlTransport;
using qel::client::TlsClientOptions;
using wiretest::FrontEnd;
using wiretest::IssuedCertificate;
using wiretest::TestPki;

namespace
{

class TlsFront : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        dir = new wiretest::TempPasswordFile();
        trusted = new TestPki(dir->dir(), "trusted");
        stranger = new TestPki(dir->dir(), "stranger");
        server = new IssuedCertificate(trusted->issue("server", true, {"localhost", "127.0.0.1"}));
        alice = new IssuedCertificate(trusted->issue("alice", false));
        carol = new IssuedCertificate(trusted->issue("carol", false));
        expired = new IssuedCertificate(trusted->issue("expired", false, {}, -10, -1));
        forged = new IssuedCertificate(stranger->issue("forged", false));
        qel::auth::CertificateMap map;
        // Everyone but carol is mapped: only the trust store can refuse the others.
        for (const IssuedCertificate* c : {alice, expired, forged})
            map.add("alice", c->fingerprint, "");
        map.save(dir->dir() + "/certmap");

        qel::http::HttpServerOptions o;
        o.tlsPort = 0;
        o.tls = {server->certificateFile, server->keyFile, trusted->caFile()};
        o.headerTimeout = std::chrono::seconds(1);  // ends the stalled handshakes below
        qel::http::CimHttpServiceOptions so;
        so.certificates =
            std::make_shared<qel::auth::CertificateAuthenticator>(dir->dir() + "/certmap");
        front = new FrontEnd(o, 4, so);
    }
    static void TearDownTestSuite()
    {
        delete front;
        for (IssuedCertificate* c : {server, alice, carol, expired, forged})
            delete c;
        delete stranger;
        delete trusted;
        std::filesystem::remove_all(dir->dir());
        delete dir;
    }

    // Who the server says the caller is (the scripted Echo method answers it).
    static std::string callerWith(const IssuedCertificate* cert, const std::string& user = "")
    {
        TlsClientOptions tls;
        tls.caFile = trusted->caFile();
        if (cert)
        {
            tls.certificateFile = cert->certificateFile;
            tls.keyFile = cert->keyFile;
        }
        auto t = CimXmlTransport::overTls(
            "127.0.0.1", front->tlsPort(), user, user.empty() ? "" : "wonderland", 10000, tls);
        Array<CIMParamValue> out;
        t->execute(CIMOperationRequest::invokeMethod(
                       "root/qel", CIMObjectPath("X"), CIMName("Echo"), Array<CIMParamValue>()))
            .methodResult(out);
        String who;
        out[0].getValue().get(who);
        return std::string(who.getCString());
    }

    static inline wiretest::TempPasswordFile* dir = nullptr;
    static inline TestPki* trusted = nullptr;
    static inline TestPki* stranger = nullptr;
    static inline IssuedCertificate *server = nullptr, *alice = nullptr, *carol = nullptr,
                                    *expired = nullptr, *forged = nullptr;
    static inline FrontEnd* front = nullptr;
};

TEST_F(TlsFront, AMappedCertificateIsItsUserAndOthersAreRefused)
{
    enum Outcome
    {
        User,
        Unauthorized,
        HandshakeRefused
    };
    const struct
    {
        const char* what;
        const IssuedCertificate* cert;
        std::string user;  // Basic credentials sent too ("" for none)
        Outcome outcome;
    } cases[] = {
        {"no certificate, a password", nullptr, "alice", User},
        {"mapped certificate, no password", alice, "", User},
        {"trusted, not mapped", carol, "", Unauthorized},
        {"trusted, not mapped, with a password", carol, "alice", Unauthorized},
        {"expired", expired, "", HandshakeRefused},
        {"unknown authority", forged, "", HandshakeRefused},
        {"no certificate, no password", nullptr, "", Unauthorized},
    };
    for (const auto& c : cases)
    {
        try
        {
            const std::string who = callerWith(c.cert, c.user);
            EXPECT_EQ(c.outcome, User) << c.what;
            EXPECT_EQ(who, "alice") << c.what;
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(c.outcome, Unauthorized) << c.what << ": " << e.getMessage();
            EXPECT_EQ(e.getCode(), CIM_ERR_ACCESS_DENIED) << c.what;
        }
        catch (const CannotConnectException& e)
        {
            EXPECT_EQ(c.outcome, HandshakeRefused) << c.what << ": " << e.getMessage();
        }
    }
}

TEST_F(TlsFront, ATrustStoreFolderTrustsEveryAuthorityInIt)
{
    const std::string folder = dir->dir() + "/trusted.d";
    std::filesystem::create_directory(folder);
    for (const TestPki* authority : {trusted, stranger})
        std::filesystem::copy_file(
            authority->caFile(),
            folder + "/" + std::filesystem::path(authority->caFile()).filename().string());
    qel::http::HttpServerOptions o;
    o.tlsPort = 0;
    o.tls = {server->certificateFile, server->keyFile, folder};
    qel::http::CimHttpServiceOptions so;
    so.certificates =
        std::make_shared<qel::auth::CertificateAuthenticator>(dir->dir() + "/certmap");
    FrontEnd fe(o, 2, so);
    TlsClientOptions tls;
    tls.caFile = trusted->caFile();
    tls.certificateFile = forged->certificateFile;  // from the second authority
    tls.keyFile = forged->keyFile;
    auto t = CimXmlTransport::overTls("127.0.0.1", fe.tlsPort(), "", "", 10000, tls);
    EXPECT_EQ(
        t->execute(CIMOperationRequest::enumerateInstanceNames("root/qel", CIMName("QEL_FCPort")))
            .checked()
            .paths.size(),
        2u);
}

TEST_F(TlsFront, AClientThatDoesNotTrustTheServerCertificateStopsAtTheHandshake)
{
    TlsClientOptions tls;
    tls.caFile = stranger->caFile();
    EXPECT_THROW(
        CimXmlTransport::overTls("127.0.0.1", front->tlsPort(), "alice", "wonderland", 10000, tls),
        CannotConnectException);
    tls.caFile = trusted->caFile();  // trusted, but the name must match too
    EXPECT_THROW(
        CimXmlTransport::overTls("127.0.0.2", front->tlsPort(), "alice", "wonderland", 10000, tls),
        CannotConnectException);
}

TEST_F(TlsFront, WhatIsNotTlsIsDroppedWithoutAnAnswerAndOthersAreServed)
{
    const std::string clientHelloStart("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11);
    std::string noise(4096, '\0');
    for (size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<char>((i * 7919 + 13) % 251);
    const std::pair<const char*, std::string> cases[] = {
        {"plain HTTP",
         wiretest::cimPost(
             wiretest::enumerateNamesBody(), wiretest::basicAuth("alice", "wonderland"))},
        {"noise", noise},
        {"a record header promising 16 KiB, then nothing", std::string("\x16\x03\x03\x40\x00", 5)},
        {"a ClientHello cut short", clientHelloStart},
        {"a huge TLS record", std::string("\x16\x03\x03\xff\xff", 5) + noise},
    };
    for (const auto& c : cases)
    {
        // Closed well before the 60 s this waits (the head deadline ends the ones that stall).
        const std::string reply = wiretest::rawExchange(front->tlsPort(), c.second, 60000);
        EXPECT_NE(reply.rfind("HTTP/", 0), 0u) << c.first << ": answered in clear";
        EXPECT_TRUE(reply.empty() || reply[0] == '\x15') << c.first << ": not a TLS alert";
    }
    EXPECT_EQ(callerWith(alice), "alice");
}

TEST_F(TlsFront, AHandshakeMustFinishWithinTheHeadDeadline)
{
    qel::http::HttpServerOptions o;
    o.tlsPort = 0;
    o.tls = {server->certificateFile, server->keyFile, ""};
    o.headerTimeout = std::chrono::milliseconds(300);
    o.readTimeout = std::chrono::minutes(10);
    FrontEnd fe(o);
    wiretest::RawConnection silent(fe.tlsPort());
    EXPECT_TRUE(silent.closedByServer(60000));
}

TEST_F(TlsFront, ReloadedCertificatesServeNewConnectionsAndBrokenOnesAreRefused)
{
    // A front-end of its own: its certificate files are replaced under it.
    const std::string certFile = dir->dir() + "/reload.pem";
    const std::string keyFile = dir->dir() + "/reload-key.pem";
    std::filesystem::copy_file(server->certificateFile, certFile);
    std::filesystem::copy_file(server->keyFile, keyFile);
    qel::http::HttpServerOptions o;
    o.tlsPort = 0;
    o.tls = {certFile, keyFile, ""};
    FrontEnd fe(o);
    auto connects = [&](const TestPki& authority)
    {
        TlsClientOptions tls;
        tls.caFile = authority.caFile();
        try
        {
            CimXmlTransport::overTls("127.0.0.1", fe.tlsPort(), "alice", "wonderland", 10000, tls)
                ->execute(
                    CIMOperationRequest::enumerateInstanceNames("root/qel", CIMName("QEL_FCPort")))
                .checked();
            return true;
        }
        catch (const CannotConnectException&)
        {
            return false;
        }
    };
    ASSERT_TRUE(connects(*trusted));
    const IssuedCertificate renewed = stranger->issue("renewed", true, {"127.0.0.1"});
    std::filesystem::copy_file(
        renewed.certificateFile, certFile, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::copy_file(
        renewed.keyFile, keyFile, std::filesystem::copy_options::overwrite_existing);
    fe.http->reloadTls();
    EXPECT_TRUE(connects(*stranger));
    EXPECT_FALSE(connects(*trusted));

    // A key that does not fit: refused, and the certificate in use stays.
    std::filesystem::copy_file(
        alice->keyFile, keyFile, std::filesystem::copy_options::overwrite_existing);
    try
    {
        fe.http->reloadTls();
        ADD_FAILURE() << "a mismatched key was taken";
    }
    catch (const qel::http::TlsConfigError& e)
    {
        EXPECT_EQ(
            std::string(e.what()), "key " + keyFile + " does not match certificate " + certFile);
    }
    EXPECT_TRUE(connects(*stranger));
}

}  // namespace
