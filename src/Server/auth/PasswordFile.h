// The server's password file: one "user:hash" line per CIM user, '#' comments and blank
// lines ignored. Hashes are libcrypt strings; no clear-text password is ever stored.
#ifndef QEL_SERVER_AUTH_PASSWORDFILE_H
#define QEL_SERVER_AUTH_PASSWORDFILE_H

#include <stdexcept>
#include <string>
#include <vector>

namespace qel
{
namespace auth
{

// Where the server and qel-passwd look when no file is named.
constexpr const char* kDefaultPasswordFile = "/etc/qel-cimserver/passwd";

// A random password of `length` letters and digits (from /dev/urandom).
std::string generatePassword(size_t length = 16);

class PasswordFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct PasswordEntry
{
    std::string user;
    std::string hash;
};

class PasswordFile
{
public:
    // 1 to 64 characters from letters, digits, '.', '_' and '-', not starting with '-'.
    static bool validUserName(const std::string& user);

    // Throws PasswordFileError naming `origin` and the line for a malformed line or a user
    // listed twice.
    static PasswordFile parse(const std::string& text, const std::string& origin);
    // Reads and parses `path`; a missing file gives an empty list only when allowMissing.
    static PasswordFile load(const std::string& path, bool allowMissing);
    // Writes the file atomically (temporary file + rename): a new file is readable by its
    // owner only; a replaced one keeps its owner, group and permissions.
    void save(const std::string& path) const;

    std::string format() const;
    const PasswordEntry* find(const std::string& user) const;
    // False when the user already exists / does not exist.
    bool add(const std::string& user, const std::string& hash);
    bool remove(const std::string& user);
    bool set(const std::string& user, const std::string& hash);
    const std::vector<PasswordEntry>& entries() const { return _entries; }

private:
    std::vector<PasswordEntry> _entries;
};

}  // namespace auth
}  // namespace qel

#endif
