// Authentication: Basic credentials, password hashes, the password file and its reload.
#include <Server/auth/Base64.h>
#include <Server/auth/BasicAuthenticator.h>
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <unistd.h>

using namespace qel::auth;

namespace {

TEST(Base64, EncodesAndDecodesAtEveryPaddingLength) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"user:p\xc3\xa4ss", "dXNlcjpww6Rzcw=="}};
  for (const auto& c : cases) {
    EXPECT_EQ(base64Encode(c.first), c.second);
    std::string back;
    ASSERT_TRUE(base64Decode(c.second, back)) << c.second;
    EXPECT_EQ(back, c.first);
  }
  std::string out;
  for (const char* bad : {"Zg=", "Z===", "Zg==Zg==", "Zm9v!", "=Zm9"}) EXPECT_FALSE(base64Decode(bad, out)) << bad;
}

TEST(BasicCredentials, HeaderFormsAcceptedAndRefused) {
  struct Case {
    std::string header;
    bool ok;
    const char* user;
    const char* password;
  };
  const Case cases[] = {
      {"Basic " + base64Encode("alice:s3cret"), true, "alice", "s3cret"},
      {"basic   " + base64Encode("bob:a:b") + "  ", true, "bob", "a:b"},  // password may hold ':'
      {"Basic " + base64Encode("carol:"), true, "carol", ""},
      {"Basic " + base64Encode("nocolon"), false, "", ""},
      {"Bearer " + base64Encode("alice:x"), false, "", ""},
      {"Basic", false, "", ""},
      {"Basic !!!!", false, "", ""},
  };
  for (const Case& c : cases) {
    std::string user, password;
    EXPECT_EQ(parseBasicCredentials(c.header, user, password), c.ok) << c.header;
    if (c.ok) {
      EXPECT_EQ(user, c.user);
      EXPECT_EQ(password, c.password);
    }
  }
}

TEST(PasswordHash, SaltedHashesVerifyOnlyTheRightPassword) {
  const std::string a = hashPassword("correct horse");
  const std::string b = hashPassword("correct horse");
  EXPECT_NE(a, b);  // a fresh salt every time
  EXPECT_EQ(a[0], '$');
  EXPECT_TRUE(verifyPassword("correct horse", a));
  EXPECT_TRUE(verifyPassword("correct horse", b));
  EXPECT_FALSE(verifyPassword("correct horsE", a));
  EXPECT_FALSE(verifyPassword("", a));
  EXPECT_FALSE(verifyPassword("correct horse", ""));
  EXPECT_FALSE(verifyPassword("correct horse", "plaintext"));
  EXPECT_FALSE(verifyPassword("correct horse", "$y$broken"));
}

TEST(PasswordFile, MalformedLinesAreReportedWithTheirLineNumber) {
  struct Case {
    const char* text;
    const char* message;  // "" = accepted
  };
  const Case cases[] = {
      {"# comment\n\nalice:$6$salt$hash\r\n", ""},
      {"alice\n", "users:1: expected user:hash"},
      {"\nbad name:$6$x\n", "users:2: invalid user name"},
      {"alice:plain\n", "users:1: the hash of \"alice\" is not a crypt hash"},
      {"alice:$6$a\nalice:$6$b\n", "users:2: user \"alice\" is listed twice"},
      {"-x:$6$a\n", "invalid user name"},
  };
  for (const Case& c : cases) {
    if (!*c.message) {
      EXPECT_NO_THROW(PasswordFile::parse(c.text, "users")) << c.text;
      continue;
    }
    try {
      PasswordFile::parse(c.text, "users");
      ADD_FAILURE() << "accepted: " << c.text;
    } catch (const PasswordFileError& e) {
      EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
    }
  }
}

class AuthenticatorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/qel-auth-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    path_ = dir_ + "/passwd";
    PasswordFile f;
    f.add("alice", hashPassword("wonderland"));
    f.save(path_);
  }
  void TearDown() override {
    ::unlink(path_.c_str());
    ::rmdir(dir_.c_str());
  }
  std::string basic(const std::string& user, const std::string& pw) { return "Basic " + base64Encode(user + ":" + pw); }
  std::string dir_, path_;
};

TEST_F(AuthenticatorTest, AcceptsOnlyKnownUsersWithTheirPassword) {
  BasicAuthenticator auth(path_);
  EXPECT_TRUE(auth.authenticate(basic("alice", "wonderland")).ok);
  const std::pair<std::string, const char*> refused[] = {
      {"", "no credentials"},
      {basic("alice", "Wonderland"), "wrong password"},
      {basic("mallory", "wonderland"), "unknown user"},
      {"Basic ###", "malformed"},
  };
  for (const auto& r : refused) {
    const AuthResult result = auth.authenticate(r.first);
    EXPECT_FALSE(result.ok) << r.first;
    EXPECT_NE(result.reason.find(r.second), std::string::npos) << result.reason;
  }
}

TEST_F(AuthenticatorTest, PicksUpChangesAndKeepsTheOldListWhenTheNewOneIsBroken) {
  BasicAuthenticator auth(path_);
  const uint64_t first = auth.generation();
  PasswordFile f = PasswordFile::load(path_, false);
  f.set("alice", hashPassword("looking-glass"));
  f.add("bob", hashPassword("builder"));
  f.save(path_);
  EXPECT_NE(auth.generation(), first);
  EXPECT_FALSE(auth.authenticate(basic("alice", "wonderland")).ok);
  EXPECT_TRUE(auth.authenticate(basic("alice", "looking-glass")).ok);
  EXPECT_TRUE(auth.authenticate(basic("bob", "builder")).ok);

  std::ofstream(path_) << "this line is broken and longer than before\n";
  EXPECT_TRUE(auth.authenticate(basic("bob", "builder")).ok);  // old list still in use
  EXPECT_NE(auth.lastError().find("expected user:hash"), std::string::npos);
}

TEST_F(AuthenticatorTest, MissingFileIsAStartError) {
  EXPECT_THROW(BasicAuthenticator(dir_ + "/none"), PasswordFileError);
}

}  // namespace
