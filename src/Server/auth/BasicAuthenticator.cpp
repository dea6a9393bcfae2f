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

BasicAuthenticator::BasicAuthenticator(std::string passwordFile) : _path(std::move(passwordFile))
{
    std::lock_guard<std::mutex> lock(_mutex);
    struct stat st;
    if (::stat(_path.c_str(), &st) != 0)
        throw PasswordFileError("cannot read password file " + _path + ": " + std::strerror(errno));
    _file = PasswordFile::load(_path, false);
    _inode = st.st_ino;
    _size = st.st_size;
    _mtimeNs = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    _generation = 1;
}

void BasicAuthenticator::refreshLocked()
{
    struct stat st;
    if (::stat(_path.c_str(), &st) != 0)
    {
        _lastError = "cannot read password file " + _path + ": " + std::strerror(errno);
        return;
    }
    const int64_t mtimeNs =
        static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    if (st.st_ino == _inode && st.st_size == _size && mtimeNs == _mtimeNs)
        return;
    try
    {
        _file = PasswordFile::load(_path, false);
        _lastError.clear();
        ++_generation;
    }
    catch (const PasswordFileError& e)
    {
        _lastError = e.what();
    }
    // Remember this version either way: a broken file is reported once, not on every request.
    _inode = st.st_ino;
    _size = st.st_size;
    _mtimeNs = mtimeNs;
}

uint64_t BasicAuthenticator::generation()
{
    std::lock_guard<std::mutex> lock(_mutex);
    refreshLocked();
    return _generation;
}

std::string BasicAuthenticator::lastError()
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _lastError;
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
        std::lock_guard<std::mutex> lock(_mutex);
        refreshLocked();
        const PasswordEntry* e = _file.find(user);
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
