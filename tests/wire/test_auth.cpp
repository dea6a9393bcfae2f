// Authentication: Basic credentials, password hashes, the password file and its reload.
#include "WireTestSupport.h"

#include <Server/auth/Base64.h>
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <gtest/gtest.h>

#include <fstream>

using namespace qel::auth;
using wiretest::basicAuth;

namespace
{

TEST(Base64, EncodesAndDecodesAtEveryPaddingLength)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"user:p\xc3\xa4ss", "dXNlcjpww6Rzcw=="}};
    for (const auto& c : cases)
    {
        EXPECT_EQ(base64Encode(c.first), c.second);
        std::string back;
        ASSERT_TRUE(base64Decode(c.second, back)) << c.second;
        EXPECT_EQ(back, c.first);
    }
    std::string out;
    for (const char* bad : {"Zg=", "Z===", "Zg==Zg==", "Zm9v!", "=Zm9"})
        EXPECT_FALSE(base64Decode(bad, out)) << bad;
}

TEST(BasicCredentials, HeaderFormsAcceptedAndRefused)
{
    const struct
    {
        std::string header;
        bool ok;
        const char* user;
        const char* password;
    } cases[] = {
        {basicAuth("alice", "s3cret"), true, "alice", "s3cret"},
        {"basic   " + base64Encode("bob:a:b") + "  ", true, "bob", "a:b"},  // password may hold ':'
        {basicAuth("carol", ""), true, "carol", ""},
        {"Basic " + base64Encode("nocolon"), false, "", ""},
        {"Bearer " + base64Encode("alice:x"), false, "", ""},
        {"Basic", false, "", ""},
        {"Basic !!!!", false, "", ""},
    };
    for (const auto& c : cases)
    {
        std::string user, password;
        EXPECT_EQ(parseBasicCredentials(c.header, user, password), c.ok) << c.header;
        if (!c.ok)
            continue;
        EXPECT_EQ(user + "/" + password, std::string(c.user) + "/" + c.password);
    }
}

TEST(PasswordHash, SaltedHashesVerifyOnlyTheRightPassword)
{
    const std::string a = hashPassword("correct horse");
    EXPECT_NE(a, hashPassword("correct horse"));  // a fresh salt every time
    EXPECT_TRUE(verifyPassword("correct horse", a));
    for (const char* wrong : {"correct horsE", ""})
        EXPECT_FALSE(verifyPassword(wrong, a)) << wrong;
    for (const char* broken : {"", "plaintext", "$y$broken"})
        EXPECT_FALSE(verifyPassword("correct horse", broken));
}

TEST(PasswordFile, MalformedLinesAreReportedWithTheirLineNumber)
{
    EXPECT_NO_THROW(PasswordFile::parse("# comment\n\nalice:$6$salt$hash\r\n", "users"));
    const std::pair<const char*, const char*> cases[] = {
        {"alice\n", "users:1: expected user:hash"},
        {"\nbad name:$6$x\n", "users:2: invalid user name"},
        {"alice:plain\n", "users:1: the hash of \"alice\" is not a crypt hash"},
        {"alice:$6$a\nalice:$6$b\n", "users:2: user \"alice\" is listed twice"},
        {"-x:$6$a\n", "invalid user name"},
    };
    for (const auto& c : cases)
    {
        try
        {
            PasswordFile::parse(c.first, "users");
            ADD_FAILURE() << "accepted: " << c.first;
        }
        catch (const PasswordFileError& e)
        {
            EXPECT_NE(std::string(e.what()).find(c.second), std::string::npos) << e.what();
        }
    }
}

TEST(Authenticator, AcceptsOnlyKnownUsersWithTheirPassword)
{
    wiretest::TempPasswordFile passwords;
    passwords.add("alice", "wonderland");
    BasicAuthenticator auth(passwords.path());
    EXPECT_TRUE(auth.authenticate(basicAuth("alice", "wonderland")).ok);
    const std::pair<std::string, const char*> refused[] = {
        {"", "no credentials"},
        {basicAuth("alice", "Wonderland"), "wrong password"},
        {basicAuth("mallory", "wonderland"), "unknown user"},
        {"Basic ###", "malformed"},
    };
    for (const auto& r : refused)
    {
        const AuthResult result = auth.authenticate(r.first);
        EXPECT_FALSE(result.ok) << r.first;
        EXPECT_NE(result.reason.find(r.second), std::string::npos) << result.reason;
    }
    EXPECT_THROW(
        BasicAuthenticator(passwords.dir() + "/none"), PasswordFileError);  // a start error
}

TEST(Authenticator, PicksUpChangesAndKeepsTheOldListWhenTheNewOneIsBroken)
{
    wiretest::TempPasswordFile passwords;
    passwords.add("alice", "wonderland");
    BasicAuthenticator auth(passwords.path());
    const uint64_t first = auth.generation();
    PasswordFile f = PasswordFile::load(passwords.path(), false);
    f.set("alice", hashPassword("looking-glass"));
    f.add("bob", hashPassword("builder"));
    f.save(passwords.path());
    EXPECT_NE(auth.generation(), first);
    EXPECT_FALSE(auth.authenticate(basicAuth("alice", "wonderland")).ok);
    EXPECT_TRUE(auth.authenticate(basicAuth("alice", "looking-glass")).ok);
    EXPECT_TRUE(auth.authenticate(basicAuth("bob", "builder")).ok);

    std::ofstream(passwords.path()) << "this line is broken and longer than before\n";
    EXPECT_TRUE(auth.authenticate(basicAuth("bob", "builder")).ok);  // old list still in use
    EXPECT_NE(auth.lastError().find("expected user:hash"), std::string::npos);
}

}  // namespace
