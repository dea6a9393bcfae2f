// The certificate map: which CIM user a client certificate logs in as. One line per
// certificate, "user fingerprint [note]", '#' comments and blank lines ignored; the
// fingerprint is the certificate's SHA-256 (CertificateIdentity.h), the note what
// qel-certmap recorded about it (its subject), for people only. A user may have several
// certificates; a certificate belongs to one user.
#ifndef QEL_SERVER_AUTH_CERTIFICATEMAP_H
#define QEL_SERVER_AUTH_CERTIFICATEMAP_H

#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace qel
{
namespace auth
{

// Where the server and qel-certmap look when no file is named.
constexpr const char* kDefaultCertificateMap = "/etc/qel-cimserver/certmap";

class CertificateMapError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct CertificateMapping
{
    std::string user;
    std::string fingerprint;  // canonical: 64 lowercase hex digits
    std::string note;
};

class CertificateMap
{
public:
    // Throws CertificateMapError naming `origin` and the line for a malformed line or a
    // certificate listed twice.
    static CertificateMap parse(const std::string& text, const std::string& origin);
    // A missing file gives an empty map only when allowMissing.
    static CertificateMap load(const std::string& path, bool allowMissing);
    // Atomically, readable by the owner only.
    void save(const std::string& path) const;
    std::string format() const;

    const CertificateMapping* find(const std::string& fingerprint) const;
    // False when the certificate is already mapped (to anyone), or the user name or
    // fingerprint is invalid.
    bool add(const std::string& user, const std::string& fingerprint, const std::string& note);
    // How many mappings were removed.
    size_t removeUser(const std::string& user);
    bool removeFingerprint(const std::string& fingerprint);
    const std::vector<CertificateMapping>& entries() const { return _entries; }

private:
    void reindex();

    std::vector<CertificateMapping> _entries;
    std::unordered_map<std::string, size_t> _byFingerprint;  // index into _entries
};

}  // namespace auth
}  // namespace qel

#endif
