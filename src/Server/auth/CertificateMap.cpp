#include "CertificateMap.h"

#include "CertificateIdentity.h"
#include "PasswordFile.h"
#include "PrivateFile.h"

#include <algorithm>
#include <sstream>

namespace qel
{
namespace auth
{
namespace
{

// Notes are free text on one line.
std::string cleanNote(const std::string& note)
{
    std::string out;
    for (char c : note)
        out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    const size_t b = out.find_first_not_of(' ');
    return b == std::string::npos ? std::string()
                                  : out.substr(b, out.find_last_not_of(' ') - b + 1);
}

}  // namespace

CertificateMap CertificateMap::parse(const std::string& text, const std::string& origin)
{
    CertificateMap map;
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
        std::istringstream fields(line);
        std::string user, fingerprint, note;
        fields >> user >> fingerprint;
        std::getline(fields, note);
        if (fingerprint.empty())
            throw CertificateMapError(where + "expected: user fingerprint [note]");
        if (!PasswordFile::validUserName(user))
            throw CertificateMapError(where + "invalid user name \"" + user + "\"");
        const std::string canonical = canonicalFingerprint(fingerprint);
        if (canonical.empty())
            throw CertificateMapError(
                where + "\"" + fingerprint + "\" is not a SHA-256 fingerprint (64 hex digits)");
        if (const CertificateMapping* other = map.find(canonical))
            throw CertificateMapError(
                where + "the certificate is already mapped to \"" + other->user + "\"");
        map._byFingerprint.emplace(canonical, map._entries.size());
        map._entries.push_back({user, canonical, cleanNote(note)});
    }
    return map;
}

CertificateMap CertificateMap::load(const std::string& path, bool allowMissing)
{
    std::string text, why;
    bool missing = false;
    if (!readWholeFile(path, text, why, missing))
    {
        if (allowMissing && missing)
            return CertificateMap();
        throw CertificateMapError("cannot read certificate map " + path + ": " + why);
    }
    return parse(text, path);
}

std::string CertificateMap::format() const
{
    std::string out =
        "# CIM server client certificates: user sha256-fingerprint note (managed with "
        "qel-certmap)\n";
    for (const CertificateMapping& m : _entries)
        out += m.user + " " + m.fingerprint + (m.note.empty() ? "" : " " + m.note) + "\n";
    return out;
}

void CertificateMap::save(const std::string& path) const
{
    std::string why;
    if (!replaceFile(path, format(), why))
        throw CertificateMapError(why);
}

const CertificateMapping* CertificateMap::find(const std::string& fingerprint) const
{
    auto it = _byFingerprint.find(fingerprint);
    return it == _byFingerprint.end() ? nullptr : &_entries[it->second];
}

bool CertificateMap::add(
    const std::string& user, const std::string& fingerprint, const std::string& note)
{
    const std::string canonical = canonicalFingerprint(fingerprint);
    if (canonical.empty() || !PasswordFile::validUserName(user) || find(canonical))
        return false;
    _byFingerprint.emplace(canonical, _entries.size());
    _entries.push_back({user, canonical, cleanNote(note)});
    return true;
}

size_t CertificateMap::removeUser(const std::string& user)
{
    const size_t before = _entries.size();
    _entries.erase(
        std::remove_if(
            _entries.begin(), _entries.end(),
            [&](const CertificateMapping& m) { return m.user == user; }),
        _entries.end());
    reindex();
    return before - _entries.size();
}

void CertificateMap::reindex()
{
    _byFingerprint.clear();
    for (size_t i = 0; i < _entries.size(); ++i)
        _byFingerprint.emplace(_entries[i].fingerprint, i);
}

bool CertificateMap::removeFingerprint(const std::string& fingerprint)
{
    const std::string canonical = canonicalFingerprint(fingerprint);
    for (auto it = _entries.begin(); it != _entries.end(); ++it)
        if (it->fingerprint == canonical)
        {
            _entries.erase(it);
            reindex();
            return true;
        }
    return false;
}

}  // namespace auth
}  // namespace qel
