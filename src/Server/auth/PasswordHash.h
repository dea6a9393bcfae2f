// Salted one-way password hashes (libcrypt): yescrypt where available, else SHA-512.
#ifndef QEL_SERVER_AUTH_PASSWORDHASH_H
#define QEL_SERVER_AUTH_PASSWORDHASH_H

#include <string>

namespace qel
{
namespace auth
{

// A new hash of `password` with a fresh random salt. Throws std::runtime_error when
// libcrypt cannot produce one.
std::string hashPassword(const std::string& password);

// A hash of `password` made with the method, cost and salt of `model` (a stored hash):
// verifying against it takes as long as verifying against `model`. Falls back to
// hashPassword() when `model` is not a hash libcrypt can reproduce.
std::string hashLike(const std::string& password, const std::string& model);

// True when `password` hashes to `storedHash`. Unknown or damaged hashes never match.
bool verifyPassword(const std::string& password, const std::string& storedHash);

}  // namespace auth
}  // namespace qel

#endif
