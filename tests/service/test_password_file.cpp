// The password file as the package sets it up (root:qelcim 0640): rewriting it, as root's
// qel-passwd does, keeps owner, group and mode, so that the service can still read it.
#include <Server/auth/PasswordFile.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using qel::auth::PasswordFile;

namespace
{

class PasswordFileOwnerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/qel-pwowner-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        _dir = pattern;
        _path = _dir + "/passwd";
    }
    void TearDown() override { std::system(("rm -rf '" + _dir + "'").c_str()); }

    static PasswordFile withUser(const std::string& user)
    {
        PasswordFile file;
        file.add(user, "$6$salt$hash");
        return file;
    }

    std::string _dir, _path;
};

TEST_F(PasswordFileOwnerTest, ANewFileIsTheOwnersOnly)
{
    withUser("monitor").save(_path);
    struct stat st;
    ASSERT_EQ(::stat(_path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_EQ(st.st_uid, ::geteuid());
}

TEST_F(PasswordFileOwnerTest, AReplacedFileKeepsOwnerGroupAndMode)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "giving a file to another owner needs root";
    withUser("monitor").save(_path);
    // Another owner and group than the writer's, as root:qelcim is for root.
    ASSERT_EQ(::chown(_path.c_str(), 1, 2), 0);
    ASSERT_EQ(::chmod(_path.c_str(), 0640), 0);
    withUser("operator").save(_path);
    struct stat st;
    ASSERT_EQ(::stat(_path.c_str(), &st), 0);
    EXPECT_EQ(st.st_uid, 1u);
    EXPECT_EQ(st.st_gid, 2u);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
    EXPECT_NE(PasswordFile::load(_path, false).find("operator"), nullptr);
}

}  // namespace
