#include "BasicAuthenticator.h"

#include "Base64.h"
#include "PasswordHash.h"

#include <strings.h>

namespace qel
{
namespace auth
{

bool parseBasicCredentials(
    const std::string& authorization, std::string& user, std::string& password)
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

BasicAuthenticator::Users BasicAuthenticator::loadUsers(const std::string& path)
{
    Users users;
    users.file = PasswordFile::load(path, false);
    // A hash of a random password, made like the file's first one: checking an unknown
    // user against it costs what checking a known user costs.
    const auto& entries = users.file.entries();
    users.standIn = hashLike(generatePassword(), entries.empty() ? std::string() : entries[0].hash);
    return users;
}

BasicAuthenticator::BasicAuthenticator(std::string passwordFile, AuthenticatorOptions options)
    : _remembered(options.rememberFor, std::move(options.clock)),
      _users(WatchedFile<Users>::open<PasswordFileError>(
          std::move(passwordFile), "password file", &BasicAuthenticator::loadUsers))
{
}

uint64_t BasicAuthenticator::generation()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _users.refresh();
    return _users.generation();
}

std::string BasicAuthenticator::lastError()
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _users.lastError();
}

bool BasicAuthenticator::remembers(const std::string& authorization)
{
    std::string user, password;
    if (!parseBasicCredentials(authorization, user, password))
        return false;
    return _remembered.contains(user, password, generation());
}

bool BasicAuthenticator::remembersOrTakesTurn(
    const std::string& authorization, std::shared_ptr<void>& turn)
{
    std::string user, password;
    const bool basic = parseBasicCredentials(authorization, user, password);
    std::unique_lock<std::mutex> lock(_mutex);
    _verified.wait(lock, [&] { return _underWay.count(authorization) == 0; });
    _users.refresh();
    if (basic && _remembered.contains(user, password, _users.generation()))
        return true;
    _underWay.insert(authorization);
    turn = std::shared_ptr<void>(
        this,
        [this, authorization](void*)
        {
            {
                std::lock_guard<std::mutex> g(_mutex);
                _underWay.erase(authorization);
            }
            _verified.notify_all();
        });
    return false;
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
    bool known = false;
    uint64_t generation = 0;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _users.refresh();
        const PasswordEntry* e = _users.data().file.find(user);
        known = e != nullptr;
        hash = known ? e->hash : _users.data().standIn;
        generation = _users.generation();
    }
    result.user = user;
    // Asked for unknown users too (never remembered), so both paths do the same work.
    if (_remembered.contains(user, password, generation) && known)
    {
        result.ok = true;
        result.remembered = true;
        return result;
    }
    // The slow hash runs outside the lock so that logins do not queue behind each other.
    // Unknown users are checked against the stand-in too, and refused whatever it says.
    const bool match = verifyPassword(password, hash);
    if (!known)
    {
        result.reason = "unknown user \"" + user + "\"";
        return result;
    }
    if (!match)
    {
        result.reason = "wrong password for user \"" + user + "\"";
        return result;
    }
    _remembered.remember(user, password, generation);
    result.ok = true;
    return result;
}

}  // namespace auth
}  // namespace qel
