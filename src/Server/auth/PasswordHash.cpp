#include "PasswordHash.h"

#include <crypt.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace qel
{
namespace auth
{
namespace
{

// crypt_rn with its own work area: re-entrant, and the area is too big for a stack.
bool cryptInto(const std::string& password, const char* setting, std::string& out)
{
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const char* r = crypt_rn(password.c_str(), setting, data.get(), sizeof(crypt_data));
    if (r == nullptr || r[0] == '*')
        return false;  // "*..." marks a failure
    out = r;
    return true;
}

}  // namespace

std::string hashPassword(const std::string& password)
{
    if (password.find('\0') != std::string::npos)
        throw std::runtime_error("password contains a NUL character");
    for (const char* prefix : {"$y$", "$6$"})
    {
        char setting[CRYPT_GENSALT_OUTPUT_SIZE];
        if (crypt_gensalt_rn(prefix, 0, nullptr, 0, setting, sizeof setting) == nullptr)
            continue;
        std::string hash;
        if (cryptInto(password, setting, hash))
            return hash;
    }
    throw std::runtime_error(
        "libcrypt could not hash the password (no yescrypt or SHA-512 support)");
}

std::string hashLike(const std::string& password, const std::string& model)
{
    std::string hash;
    if (!model.empty() && model[0] == '$' && password.find('\0') == std::string::npos &&
        cryptInto(password, model.c_str(), hash))
        return hash;
    return hashPassword(password);
}

bool verifyPassword(const std::string& password, const std::string& storedHash)
{
    if (storedHash.empty() || storedHash[0] != '$' || password.find('\0') != std::string::npos)
        return false;
    std::string computed;
    if (!cryptInto(password, storedHash.c_str(), computed))
        return false;
    if (computed.size() != storedHash.size())
        return false;
    // Constant-time comparison: the time taken says nothing about how much matched.
    unsigned char diff = 0;
    for (size_t i = 0; i < computed.size(); ++i)
        diff |= static_cast<unsigned char>(computed[i] ^ storedHash[i]);
    return diff == 0;
}

}  // namespace auth
}  // namespace qel
