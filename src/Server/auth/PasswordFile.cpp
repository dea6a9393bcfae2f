#include "PasswordFile.h"

#include "PrivateFile.h"

#include <fstream>
#include <sstream>

namespace qel
{
namespace auth
{
namespace
{

bool validHash(const std::string& hash)
{
    if (hash.size() < 2 || hash[0] != '$')
        return false;
    for (char c : hash)
        if (c == ':' || c == ' ' || c == '\t' || c == '\r' || static_cast<unsigned char>(c) < 0x20)
            return false;
    return true;
}

}  // namespace

std::string generatePassword(size_t length)
{
    static const char alphabet[] = "ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz23456789";
    const size_t n = sizeof(alphabet) - 1;
    std::ifstream random("/dev/urandom", std::ios::binary);
    if (!random)
        throw PasswordFileError("cannot read /dev/urandom");
    std::string out;
    while (out.size() < length)
    {
        unsigned char byte;
        if (!random.read(reinterpret_cast<char*>(&byte), 1))
            throw PasswordFileError("cannot read /dev/urandom");
        if (byte >= 256 - 256 % n)
            continue;  // keeps every character equally likely
        out += alphabet[byte % n];
    }
    return out;
}

bool PasswordFile::validUserName(const std::string& user)
{
    if (user.empty() || user.size() > 64 || user[0] == '-')
        return false;
    for (char c : user)
    {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                        (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
        if (!ok)
            return false;
    }
    return true;
}

PasswordFile PasswordFile::parse(const std::string& text, const std::string& origin)
{
    PasswordFile file;
    std::istringstream in(text);
    std::string line;
    int number = 0;
    while (std::getline(in, line))
    {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#')
            continue;
        const std::string where = origin + ":" + std::to_string(number) + ": ";
        const size_t colon = line.find(':');
        if (colon == std::string::npos)
            throw PasswordFileError(where + "expected user:hash");
        const std::string user = line.substr(0, colon);
        const std::string hash = line.substr(colon + 1);
        if (!validUserName(user))
            throw PasswordFileError(where + "invalid user name \"" + user + "\"");
        if (!validHash(hash))
            throw PasswordFileError(where + "the hash of \"" + user + "\" is not a crypt hash");
        if (!file.add(user, hash))
            throw PasswordFileError(where + "user \"" + user + "\" is listed twice");
    }
    return file;
}

PasswordFile PasswordFile::load(const std::string& path, bool allowMissing)
{
    std::string text, why;
    bool missing = false;
    if (!readWholeFile(path, text, why, missing))
    {
        if (allowMissing && missing)
            return PasswordFile();
        throw PasswordFileError("cannot read password file " + path + ": " + why);
    }
    return parse(text, path);
}

std::string PasswordFile::format() const
{
    std::string out = "# CIM server users: user:hash (managed with qel-passwd)\n";
    for (const PasswordEntry& e : _entries)
        out += e.user + ":" + e.hash + "\n";
    return out;
}

void PasswordFile::save(const std::string& path) const
{
    std::string why;
    if (!replaceFile(path, format(), why))
        throw PasswordFileError(why);
}

const PasswordEntry* PasswordFile::find(const std::string& user) const
{
    for (const PasswordEntry& e : _entries)
        if (e.user == user)
            return &e;
    return nullptr;
}

bool PasswordFile::add(const std::string& user, const std::string& hash)
{
    if (find(user))
        return false;
    _entries.push_back({user, hash});
    return true;
}

bool PasswordFile::remove(const std::string& user)
{
    for (auto it = _entries.begin(); it != _entries.end(); ++it)
    {
        if (it->user == user)
        {
            _entries.erase(it);
            return true;
        }
    }
    return false;
}

bool PasswordFile::set(const std::string& user, const std::string& hash)
{
    for (PasswordEntry& e : _entries)
    {
        if (e.user == user)
        {
            e.hash = hash;
            return true;
        }
    }
    return false;
}

}  // namespace auth
}  // namespace qel
