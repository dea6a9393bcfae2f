#include "BasicAuthenticator.h"

#include "Base64.h"
#include "PasswordHash.h"

#include <cerrno>
#include <cstring>
#include <strings.h>
#include <sys/stat.h>

namespace qel
{
namespace auth
{

bool parseBasicCredentials(
    const std::string& authorization,
    std::string& user,
    std::string& password)
{
    size_t i = authorization.find_first_not_of(" \t");
    if (i == std::string::npos || authorization.size() < i + 6 ||
        strncasecmp(authorization.c_str() + i, "Basic", 5) != 0)
        return false;
    i += 5;
    if (authorization[i] != ' ' && authorization[i] != '\t')
        return false;
    i = authorization.find_first_not_of(" \t", i);
    if (i == std::string::npos)
        return false;
    size_t end = authorization.find_last_not_of(" \t");
    std::string decoded;
    if (!base64Decode(authorization.substr(i, end - i + 1), decoded))
        return false;
    const size_t colon = decoded.find(':');
    if (colon == std::string::npos)
        return false;
    user = decoded.substr(0, colon);
    password = decoded.substr(colon + 1);
    return true;
}

BasicAuthenticator::BasicAuthenticator(std::string passwordFile) : path_(std::move(passwordFile))
{
    std::lock_guard<std::mutex> lock(mutex_);
    struct stat st;
    if (::stat(path_.c_str(), &st) != 0)
        throw PasswordFileError("cannot read password file " + path_ + ": " + std::strerror(errno));
    file_ = PasswordFile::load(path_, false);
    inode_ = st.st_ino;
    size_ = st.st_size;
    mtimeNs_ = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    generation_ = 1;
}

void BasicAuthenticator::refreshLocked()
{
    struct stat st;
    if (::stat(path_.c_str(), &st) != 0)
    {
        lastError_ = "cannot read password file " + path_ + ": " + std::strerror(errno);
        return;
    }
    const int64_t mtimeNs =
        static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    if (st.st_ino == inode_ && st.st_size == size_ && mtimeNs == mtimeNs_)
        return;
    try
    {
        file_ = PasswordFile::load(path_, false);
        lastError_.clear();
        ++generation_;
    }
    catch (const PasswordFileError& e)
    {
        lastError_ = e.what();
    }
    // Remember this version either way: a broken file is reported once, not on every request.
    inode_ = st.st_ino;
    size_ = st.st_size;
    mtimeNs_ = mtimeNs;
}

uint64_t BasicAuthenticator::generation()
{
    std::lock_guard<std::mutex> lock(mutex_);
    refreshLocked();
    return generation_;
}

std::string BasicAuthenticator::lastError()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return lastError_;
}

AuthResult BasicAuthenticator::authenticate(const std::string& authorization)
{
    AuthResult result;
    std::string user, password;
    if (authorization.empty())
    {
        result.reason = "no credentials";
        return result;
    }
    if (!parseBasicCredentials(authorization, user, password))
    {
        result.reason = "malformed Basic credentials";
        return result;
    }
    std::string hash;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        refreshLocked();
        const PasswordEntry* e = file_.find(user);
        if (e)
            hash = e->hash;
    }
    result.user = user;
    if (hash.empty())
    {
        // Hash anyway so that unknown users cost as much time as wrong passwords.
        verifyPassword(password, "$6$qelunknownuser$");
        result.reason = "unknown user \"" + user + "\"";
        return result;
    }
    // The slow hash runs outside the lock so that logins do not queue behind each other.
    if (!verifyPassword(password, hash))
    {
        result.reason = "wrong password for user \"" + user + "\"";
        return result;
    }
    result.ok = true;
    return result;
}

}  // namespace auth
}  // namespace qel
