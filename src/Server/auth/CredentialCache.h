// Remembers which user name and password pairs were verified recently, so that a client
// that reconnects with the same credentials (wbemcli opens a connection per command) is
// not made to pay the slow password hash again.
//
// Only a keyed digest is kept: HMAC-SHA-256 under a key drawn at random when the cache is
// made, of user and password. Nothing stored lets anyone recover a password or test a
// guess without that key, which never leaves the process. An entry lives for `lifetime`
// and belongs to one version (generation) of the password file: a newer version forgets
// everything, so a changed password or a removed user is never answered from here.
#ifndef QEL_SERVER_AUTH_CREDENTIALCACHE_H
#define QEL_SERVER_AUTH_CREDENTIALCACHE_H

#include "Clock.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

namespace qel
{
namespace auth
{

class CredentialCache
{
public:
    // Throws std::runtime_error when no random key can be drawn.
    CredentialCache(std::chrono::seconds lifetime, Clock clock);

    // True when this pair was remembered for this generation of the password file and has
    // not expired.
    bool contains(const std::string& user, const std::string& password, uint64_t generation);
    // Remembers a pair just verified against `generation` of the file; ignored when the
    // cache has already seen a newer generation (the verification raced a reload).
    void remember(const std::string& user, const std::string& password, uint64_t generation);

private:
    using Digest = std::array<unsigned char, 32>;
    struct Entry
    {
        Digest digest;
        TimePoint expires;
    };

    Digest digestOf(const std::string& user, const std::string& password) const;
    // Forgets everything when `generation` is newer. REQUIRES: _mutex held.
    bool sameGenerationLocked(uint64_t generation);

    const std::chrono::seconds _lifetime;
    const Clock _clock;
    std::array<unsigned char, 32> _key;
    std::mutex _mutex;
    uint64_t _generation = 0;                         // guarded by _mutex
    std::unordered_map<std::string, Entry> _entries;  // by user; guarded by _mutex
};

}  // namespace auth
}  // namespace qel

#endif
