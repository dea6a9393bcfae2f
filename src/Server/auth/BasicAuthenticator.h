// Checks HTTP Basic credentials against the password file. The file is re-read when it
// changes on disk, so qel-passwd takes effect without a restart.
//
// Verification leaks nothing about which user names exist: an unknown user is checked
// against a stand-in hash of the same method and cost as the file's, so it takes as long
// as a wrong password. A pair verified correct is remembered for a short while (see
// CredentialCache), so a client reconnecting with it pays no hash; wrong passwords and
// unknown users always pay the full verification.
#ifndef QEL_SERVER_AUTH_BASICAUTHENTICATOR_H
#define QEL_SERVER_AUTH_BASICAUTHENTICATOR_H

#include "Clock.h"
#include "CredentialCache.h"
#include "PasswordFile.h"
#include "WatchedFile.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <memory>
#include <string>
#include <unordered_set>

namespace qel
{
namespace auth
{

struct AuthResult
{
    bool ok = false;
    std::string user;
    std::string reason;       // why a request was refused, for the server log
    bool remembered = false;  // accepted as a pair verified shortly before (no hash)
};

struct AuthenticatorOptions
{
    // How long a verified pair is remembered.
    std::chrono::seconds rememberFor{120};
    Clock clock = steadyClock();
};

class BasicAuthenticator
{
public:
    // Throws PasswordFileError when the file cannot be read or parsed.
    explicit BasicAuthenticator(
        std::string passwordFile, AuthenticatorOptions options = AuthenticatorOptions());

    // `authorization` is the Authorization header value, e.g. "Basic dXNlcjpwdw==".
    // Verification only: throttling is the caller's (LoginThrottle).
    AuthResult authenticate(const std::string& authorization);

    // True when these exact credentials were verified correct shortly before, against
    // the current password file: cheap (no hash), so a caller may ask before deciding
    // whether an attempt is a guess.
    bool remembers(const std::string& authorization);

    // As remembers(), once no other worker has its turn with these same credentials. When
    // they are not remembered the caller gets the turn (`turn` set): until it lets go of it,
    // other workers asking for the same credentials wait, so clients that log in together
    // with one password pay one hash and are one attempt, not a burst of guesses. May block
    // for as long as a verification takes: for workers only.
    bool remembersOrTakesTurn(const std::string& authorization, std::shared_ptr<void>& turn);

    // Changes whenever a new version of the file has been loaded; a caller that remembers
    // a verified credential must verify again once this changes.
    uint64_t generation();

    // The last reload failure ("" when the file loaded fine); the previous list stays in use.
    std::string lastError();

private:
    struct Users
    {
        PasswordFile file;
        std::string standIn;  // hash checked for unknown users
    };
    static Users loadUsers(const std::string& path);

    CredentialCache _remembered;
    std::mutex _mutex;
    WatchedFile<Users> _users;  // guarded by _mutex
    // Credentials whose turn is taken (remembersOrTakesTurn); guarded by _mutex.
    std::unordered_set<std::string> _underWay;
    std::condition_variable _verified;  // a turn ended
};

// Splits "Basic <base64>" into user and password; false when the header is not that.
bool parseBasicCredentials(
    const std::string& authorization, std::string& user, std::string& password);

}  // namespace auth
}  // namespace qel

#endif
