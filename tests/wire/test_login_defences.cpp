// What stands between a password guesser and the users: the throttle (free failures,
// doubling waits, the cap, who is held back and who is not), the remembered verifications
// (lifetime, file versions) and the stand-in hash that makes unknown users cost as much as
// known ones.
#include "WireTestSupport.h"

#include <Server/auth/LoginThrottle.h>
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <gtest/gtest.h>

using namespace qel::auth;
using std::chrono::milliseconds;
using std::chrono::seconds;
using wiretest::basicAuth;
using wiretest::ManualClock;

namespace
{

struct ThrottleTest : ::testing::Test
{
    ManualClock time;
    ThrottleOptions options()
    {
        ThrottleOptions o;
        o.clock = time.clock();
        return o;
    }
    // Five failures: the most that go unhindered.
    static void failFreely(LoginThrottle& t, const std::string& user, const std::string& address)
    {
        for (int i = 0; i < 5; ++i)
        {
            ASSERT_EQ(t.admit(user, address), 0u) << "attempt " << i + 1;
            t.failed(user, address);
        }
    }
};

TEST_F(ThrottleTest, FiveFreeFailuresThenWaitsDoubleUpToTheCap)
{
    LoginThrottle t(options());
    failFreely(t, "alice", "10.0.0.1");
    // Each wait is announced whole, a millisecond short of it still refuses, and once it
    // has passed exactly one attempt goes through before the next, longer wait.
    for (unsigned wait : {1u, 2u, 4u, 8u, 16u, 30u, 30u})
    {
        EXPECT_EQ(t.wouldWait("alice", "10.0.0.1"), wait);
        EXPECT_EQ(t.admit("alice", "10.0.0.1"), wait);
        time.advance(milliseconds(wait * 1000 - 1));
        EXPECT_EQ(t.admit("alice", "10.0.0.1"), 1u) << "rounded up, never 0 while held back";
        time.advance(milliseconds(1));
        EXPECT_EQ(t.admit("alice", "10.0.0.1"), 0u) << "after " << wait << " s";
        t.failed("alice", "10.0.0.1");
    }
}

TEST_F(ThrottleTest, OnlyTheGuessedUserAndTheGuessingAddressAreHeldBack)
{
    LoginThrottle t(options());
    failFreely(t, "alice", "10.0.0.1");
    const struct
    {
        const char* user;
        const char* address;
        bool held;
    } cases[] = {
        {"alice", "10.0.0.1", true}, {"alice", "10.0.0.2", true},  // the user, from anywhere
        {"bob", "10.0.0.1", true},                                 // the address, for anyone
        {"bob", "10.0.0.2", false},  {"", "10.0.0.3", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(t.wouldWait(c.user, c.address) != 0, c.held) << c.user << "@" << c.address;
}

TEST_F(ThrottleTest, SuccessAndAQuietPeriodStartAfresh)
{
    ThrottleOptions o = options();
    LoginThrottle t(o);
    failFreely(t, "alice", "10.0.0.1");
    time.advance(seconds(1));
    ASSERT_EQ(t.admit("alice", "10.0.0.1"), 0u);
    t.succeeded("alice", "10.0.0.1");
    failFreely(t, "alice", "10.0.0.1");  // five free again
    EXPECT_EQ(t.admit("alice", "10.0.0.1"), 1u);

    // Forgotten after forgetAfter without a failure, not a moment before.
    time.advance(o.forgetAfter - seconds(1));
    ASSERT_EQ(t.admit("alice", "10.0.0.1"), 0u);  // the 1 s wait is long over
    t.failed("alice", "10.0.0.1");
    time.advance(o.forgetAfter - seconds(1));
    EXPECT_EQ(t.admit("alice", "10.0.0.1"), 0u);
    t.failed("alice", "10.0.0.1");
    EXPECT_NE(t.wouldWait("alice", "10.0.0.1"), 0u) << "seventh attempt: still counted";
    time.advance(o.forgetAfter);
    failFreely(t, "alice", "10.0.0.1");
}

TEST_F(ThrottleTest, AttemptsUnderWayTakeTheirSlots)
{
    // Sixteen threads that send at once must not get more than five attempts through
    // before the first failure is known.
    LoginThrottle t(options());
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(t.admit("alice", "10.0.0.1"), 0u);
    EXPECT_EQ(t.admit("alice", "10.0.0.1"), 1u);
}

TEST_F(ThrottleTest, EachBurstOfAUserFromAnAddressIsReportedOnce)
{
    ThrottleOptions o = options();
    LoginThrottle t(o);
    auto fail = [&](const char* user, const char* address)
    {
        t.admit(user, address);
        return t.failed(user, address);
    };
    EXPECT_TRUE(fail("alice", "10.0.0.1"));
    EXPECT_FALSE(fail("alice", "10.0.0.1"));
    EXPECT_TRUE(fail("alice", "10.0.0.2"));  // another pair, another burst
    EXPECT_TRUE(fail("bob", "10.0.0.1"));
    t.succeeded("alice", "10.0.0.1");
    EXPECT_TRUE(fail("alice", "10.0.0.1"));
    time.advance(o.forgetAfter);
    EXPECT_TRUE(fail("alice", "10.0.0.1"));
}

TEST_F(ThrottleTest, SprayedNamesDisplaceTheOldestFirst)
{
    ThrottleOptions o = options();
    o.maxTracked = 3;
    LoginThrottle t(o);
    failFreely(t, "alice", "10.0.0.1");
    ASSERT_NE(t.wouldWait("alice", "10.0.0.9"), 0u);
    // Two more names fit beside alice; the third takes the place of the oldest failure.
    for (const char* user : {"u2", "u3"})
    {
        time.advance(milliseconds(1));
        t.admit(user, "10.0.0.2");
        t.failed(user, "10.0.0.2");
    }
    EXPECT_NE(t.wouldWait("alice", "10.0.0.9"), 0u);
    time.advance(milliseconds(1));
    t.admit("u4", "10.0.0.2");
    t.failed("u4", "10.0.0.2");
    EXPECT_EQ(t.wouldWait("alice", "10.0.0.9"), 0u);
}

struct RememberedTest : ::testing::Test
{
    RememberedTest()
    {
        passwords.add("alice", "wonderland");
        passwords.add("bob", "builder");
    }
    AuthenticatorOptions options()
    {
        AuthenticatorOptions o;
        o.rememberFor = seconds(120);
        o.clock = time.clock();
        return o;
    }
    ManualClock time;
    wiretest::TempPasswordFile passwords;
};

TEST_F(RememberedTest, OnlyVerifiedPairsAreRememberedAndOnlyForTheirLifetime)
{
    BasicAuthenticator auth(passwords.path(), options());
    const std::string right = basicAuth("alice", "wonderland");
    const std::string wrong = basicAuth("alice", "Wonderland");
    EXPECT_FALSE(auth.remembers(right));
    ASSERT_TRUE(auth.authenticate(right).ok);
    EXPECT_FALSE(auth.authenticate(wrong).ok);
    EXPECT_FALSE(auth.remembers(wrong));
    EXPECT_FALSE(auth.authenticate(wrong).remembered);
    EXPECT_FALSE(auth.authenticate(basicAuth("mallory", "wonderland")).ok);

    time.advance(seconds(119));
    EXPECT_TRUE(auth.remembers(right));
    const AuthResult again = auth.authenticate(right);
    EXPECT_TRUE(again.ok && again.remembered);
    time.advance(seconds(1));  // the lifetime is over: verified again, then remembered anew
    EXPECT_FALSE(auth.remembers(right));
    const AuthResult fresh = auth.authenticate(right);
    EXPECT_TRUE(fresh.ok && !fresh.remembered);
    EXPECT_TRUE(auth.remembers(right));
}

TEST_F(RememberedTest, AnyChangeOfThePasswordFileForgetsEverything)
{
    BasicAuthenticator auth(passwords.path(), options());
    const std::string alice = basicAuth("alice", "wonderland");
    ASSERT_TRUE(auth.authenticate(alice).ok);
    ASSERT_TRUE(auth.authenticate(basicAuth("bob", "builder")).ok);

    PasswordFile f = PasswordFile::load(passwords.path(), false);
    f.remove("bob");
    f.save(passwords.path());
    EXPECT_FALSE(auth.remembers(alice)) << "another user's change";
    EXPECT_FALSE(auth.authenticate(basicAuth("bob", "builder")).ok) << "removed";
    const AuthResult verified = auth.authenticate(alice);
    EXPECT_TRUE(verified.ok && !verified.remembered);

    f.set("alice", hashPassword("looking-glass"));
    f.save(passwords.path());
    EXPECT_FALSE(auth.authenticate(alice).ok) << "the old password is gone";
}

TEST(StandInHash, UnknownUsersAreCheckedAgainstAHashOfTheFilesKind)
{
    // The stand-in is made like the model: same method, cost and salt, so it costs the same.
    const std::string yescrypt = hashPassword("x");
    ASSERT_EQ(yescrypt.rfind("$y$", 0), 0u);
    const std::string sha512 = "$6$rounds=20000$abcdefgh$";
    for (const std::string& model : {yescrypt, sha512})
    {
        const std::string setting = model.substr(0, model.rfind('$') + 1);
        const std::string standIn = hashLike("random", model);
        EXPECT_EQ(standIn.substr(0, setting.size()), setting) << model;
        EXPECT_TRUE(verifyPassword("random", standIn));
    }
    // No usable model (an empty file, a damaged hash): the default kind.
    for (const std::string& model : {std::string(), std::string("$broken")})
        EXPECT_EQ(hashLike("random", model).rfind("$y$", 0), 0u) << model;
}

}  // namespace
