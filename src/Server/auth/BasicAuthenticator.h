// Checks HTTP Basic credentials against the password file. The file is re-read when it
// changes on disk, so qel-passwd takes effect without a restart.
#ifndef QEL_SERVER_AUTH_BASICAUTHENTICATOR_H
#define QEL_SERVER_AUTH_BASICAUTHENTICATOR_H

#include "PasswordFile.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <sys/types.h>

namespace qel
{
namespace auth
{

struct AuthResult
{
    bool ok = false;
    std::string user;
    std::string reason;  // why a request was refused, for the server log
};

class BasicAuthenticator
{
public:
    // Throws PasswordFileError when the file cannot be read or parsed.
    explicit BasicAuthenticator(std::string passwordFile);

    // `authorization` is the Authorization header value, e.g. "Basic dXNlcjpwdw==".
    AuthResult authenticate(const std::string& authorization);

    // Changes whenever a new version of the file has been loaded; a caller that remembers
    // a verified credential must verify again once this changes.
    uint64_t generation();

    // The last reload failure ("" when the file loaded fine); the previous list stays in use.
    std::string lastError();

private:
    void refreshLocked();

    std::string _path;
    std::mutex _mutex;
    PasswordFile _file;
    uint64_t _generation = 0;
    std::string _lastError;
    // What was loaded: a change in any of these triggers a reload.
    ino_t _inode = 0;
    off_t _size = -1;
    int64_t _mtimeNs = 0;
};

// Splits "Basic <base64>" into user and password; false when the header is not that.
bool parseBasicCredentials(
    const std::string& authorization,
    std::string& user,
    std::string& password);

}  // namespace auth
}  // namespace qel

#endif
