// How the server names a client certificate: the SHA-256 fingerprint of its DER encoding,
// written as 64 lowercase hex digits. A fingerprint names exactly one certificate, so a
// mapping keyed by it cannot be claimed by another certificate, not even one issued by
// the same trusted authority with the same subject.
#ifndef QEL_SERVER_AUTH_CERTIFICATEIDENTITY_H
#define QEL_SERVER_AUTH_CERTIFICATEIDENTITY_H

#include <openssl/types.h>

#include <stdexcept>
#include <string>

namespace qel
{
namespace auth
{

struct CertificateIdentity
{
    std::string fingerprint;  // 64 lowercase hex digits
    std::string subject;      // one-line RFC 2253 form, for people
    std::string issuer;
    std::string notAfter;  // end of validity, as OpenSSL prints it
};

CertificateIdentity identityOf(X509* certificate);

// The first certificate of a PEM file. Throws std::runtime_error naming the file and
// what is wrong with it.
CertificateIdentity readCertificateFile(const std::string& path);

// A fingerprint as people write it: hex digits in either case, bytes optionally joined
// by ':' and an optional "sha256:" prefix. "" when the text is not a SHA-256 fingerprint.
std::string canonicalFingerprint(const std::string& text);

}  // namespace auth
}  // namespace qel

#endif
