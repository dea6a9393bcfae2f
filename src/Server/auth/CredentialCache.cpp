#include "CredentialCache.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <stdexcept>

namespace qel
{
namespace auth
{

CredentialCache::CredentialCache(std::chrono::seconds lifetime, Clock clock)
    : _lifetime(lifetime), _clock(std::move(clock))
{
    if (RAND_bytes(_key.data(), static_cast<int>(_key.size())) != 1)
        throw std::runtime_error("cannot draw a random key for remembered credentials");
}

CredentialCache::Digest
CredentialCache::digestOf(const std::string& user, const std::string& password) const
{
    // User names hold no NUL, so the separator keeps ("ab", "c") apart from ("a", "bc").
    std::string message;
    message.reserve(user.size() + 1 + password.size());
    message.append(user).push_back('\0');
    message.append(password);
    Digest d{};
    unsigned int length = 0;
    HMAC(
        EVP_sha256(), _key.data(), static_cast<int>(_key.size()),
        reinterpret_cast<const unsigned char*>(message.data()), message.size(), d.data(), &length);
    OPENSSL_cleanse(message.data(), message.size());
    return d;
}

bool CredentialCache::sameGenerationLocked(uint64_t generation)
{
    if (generation > _generation)
    {
        _entries.clear();
        _generation = generation;
    }
    return generation == _generation;
}

bool CredentialCache::contains(
    const std::string& user, const std::string& password, uint64_t generation)
{
    const Digest d = digestOf(user, password);
    std::lock_guard<std::mutex> lock(_mutex);
    if (!sameGenerationLocked(generation))
        return false;
    auto it = _entries.find(user);
    if (it == _entries.end())
        return false;
    if (_clock() >= it->second.expires)
    {
        _entries.erase(it);
        return false;
    }
    return CRYPTO_memcmp(d.data(), it->second.digest.data(), d.size()) == 0;
}

void CredentialCache::remember(
    const std::string& user, const std::string& password, uint64_t generation)
{
    const Digest d = digestOf(user, password);
    std::lock_guard<std::mutex> lock(_mutex);
    if (!sameGenerationLocked(generation))
        return;
    _entries[user] = Entry{d, _clock() + _lifetime};
}

}  // namespace auth
}  // namespace qel
