// Client certificates as users: fingerprints as people write them, the map file (its
// errors, the tool that manages it) and the server's view of it, re-read on change.
#include "TestPki.h"
#include "WireTestSupport.h"

#include <Server/auth/CertificateAuthenticator.h>
#include <Server/auth/CertificateIdentity.h>
#include <Server/auth/CertificateMap.h>

#include <gtest/gtest.h>

#include <fstream>

using namespace qel::auth;

namespace
{

const std::string kHex = "00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff";

std::string withColons(const std::string& hex)
{
    std::string out;
    for (size_t i = 0; i < hex.size(); i += 2)
        out += (i ? ":" : "") + hex.substr(i, 2);
    return out;
}

TEST(Fingerprint, WrittenAnyUsualWayOrRefused)
{
    std::string upper = kHex;
    for (char& c : upper)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const std::pair<std::string, bool> cases[] = {
        {kHex, true},
        {upper, true},
        {withColons(upper), true},  // as openssl x509 -fingerprint prints it
        {"sha256:" + kHex, true},
        {"SHA256:" + withColons(kHex), true},
        {kHex.substr(0, 62), false},  // 31 bytes
        {kHex + "00", false},         // 33 bytes
        {kHex.substr(0, 63) + "g", false},
        {":" + withColons(kHex), false},
        {withColons(kHex) + ":", false},
        {kHex.substr(0, 2) + "::" + kHex.substr(2), false},
        {kHex.substr(0, 3) + ":" + kHex.substr(3), false},  // not between bytes
        {"", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(canonicalFingerprint(c.first), c.second ? kHex : "") << c.first;
}

TEST(CertificateMapFile, MalformedLinesAreReportedWithTheirLineNumber)
{
    const CertificateMap ok = CertificateMap::parse(
        "# comment\n\nalice " + kHex +
            " CN=alice, O=Example\r\nbob SHA256:" + withColons(std::string(64, 'A')) + "\n",
        "map");
    ASSERT_EQ(ok.entries().size(), 2u);
    EXPECT_EQ(ok.find(kHex)->note, "CN=alice, O=Example");
    EXPECT_EQ(ok.find(std::string(64, 'a'))->user, "bob");

    const std::pair<std::string, const char*> cases[] = {
        {"alice\n", "map:1: expected: user fingerprint [note]"},
        {"\nbad/name " + kHex + "\n", "map:2: invalid user name \"bad/name\""},
        {"alice 1234\n", "map:1: \"1234\" is not a SHA-256 fingerprint"},
        {"alice " + kHex + "\nbob " + withColons(kHex) + "\n",
         "map:2: the certificate is already mapped to \"alice\""},
    };
    for (const auto& c : cases)
    {
        try
        {
            CertificateMap::parse(c.first, "map");
            ADD_FAILURE() << "accepted: " << c.first;
        }
        catch (const CertificateMapError& e)
        {
            EXPECT_NE(std::string(e.what()).find(c.second), std::string::npos) << e.what();
        }
    }
}

TEST(CertificateMapFile, SavedMapsReadBackAndOneUserMayHaveSeveralCertificates)
{
    wiretest::TempPasswordFile dir;
    const std::string path = dir.dir() + "/certmap";
    CertificateMap map;
    ASSERT_TRUE(map.add("alice", kHex, "CN=alice\nsecond line"));
    ASSERT_TRUE(map.add("alice", std::string(64, 'b'), ""));
    EXPECT_FALSE(map.add("bob", withColons(kHex), "")) << "one certificate, one user";
    EXPECT_FALSE(map.add("bob", "12", ""));
    EXPECT_FALSE(map.add("-bob", std::string(64, 'c'), ""));
    map.save(path);
    CertificateMap back = CertificateMap::load(path, false);
    ASSERT_EQ(back.entries().size(), 2u);
    EXPECT_EQ(back.find(kHex)->note, "CN=alice second line");
    EXPECT_TRUE(back.removeFingerprint("SHA256:" + withColons(kHex)));
    EXPECT_EQ(back.removeUser("alice"), 1u);
    EXPECT_EQ(back.removeUser("alice"), 0u);
    EXPECT_EQ(CertificateMap::load(dir.dir() + "/none", true).entries().size(), 0u);
    EXPECT_THROW(CertificateMap::load(dir.dir() + "/none", false), CertificateMapError);
}

TEST(CertificateAuthenticator, NamesTheMappedUserAndFollowsTheFile)
{
    wiretest::TempPasswordFile dir;
    wiretest::TestPki pki(dir.dir(), "test");
    const wiretest::IssuedCertificate alice = pki.issue("alice", false);
    const std::string path = dir.dir() + "/certmap";
    EXPECT_THROW(CertificateAuthenticator{path}, CertificateMapError);  // a start error

    CertificateMap map;
    map.add("alice", alice.fingerprint, readCertificateFile(alice.certificateFile).subject);
    map.save(path);
    CertificateAuthenticator auth(path);
    AuthResult r = auth.authenticate(alice.fingerprint, "CN=alice");
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.user, "alice");
    r = auth.authenticate(kHex, "CN=stranger");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(
        r.reason.find("\"CN=stranger\" (sha256 " + kHex + ") is not mapped"), std::string::npos)
        << r.reason;

    map.removeUser("alice");
    map.add("bob", kHex, "");
    map.save(path);
    EXPECT_FALSE(auth.authenticate(alice.fingerprint, "CN=alice").ok);
    EXPECT_EQ(auth.authenticate(kHex, "").user, "bob");
    std::ofstream(path) << "broken line, and longer than the previous file was\n";
    EXPECT_EQ(auth.authenticate(kHex, "").user, "bob") << "the previous map stays in use";
    EXPECT_NE(auth.lastError().find("is not a SHA-256 fingerprint"), std::string::npos);
}

}  // namespace
