#include "CertificateIdentity.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <strings.h>

namespace qel
{
namespace auth
{
namespace
{

std::string nameText(const X509_NAME* name)
{
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    if (!bio || X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_RFC2253) < 0)
        return std::string();
    char* data = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &data);
    return n > 0 ? std::string(data, static_cast<size_t>(n)) : std::string();
}

std::string timeText(const ASN1_TIME* t)
{
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    if (!bio || t == nullptr || ASN1_TIME_print(bio.get(), t) != 1)
        return std::string();
    char* data = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &data);
    return n > 0 ? std::string(data, static_cast<size_t>(n)) : std::string();
}

std::string hex(const unsigned char* bytes, size_t n)
{
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(2 * n);
    for (size_t i = 0; i < n; ++i)
    {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}

}  // namespace

CertificateIdentity identityOf(X509* certificate)
{
    CertificateIdentity id;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (X509_digest(certificate, EVP_sha256(), digest, &length) == 1)
        id.fingerprint = hex(digest, length);
    id.subject = nameText(X509_get_subject_name(certificate));
    id.issuer = nameText(X509_get_issuer_name(certificate));
    id.notAfter = timeText(X509_get0_notAfter(certificate));
    return id;
}

CertificateIdentity readCertificateFile(const std::string& path)
{
    std::unique_ptr<FILE, decltype(&std::fclose)> file(
        std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file)
        throw std::runtime_error("cannot read certificate " + path + ": " + std::strerror(errno));
    std::unique_ptr<X509, decltype(&X509_free)> cert(
        PEM_read_X509(file.get(), nullptr, nullptr, nullptr), &X509_free);
    if (!cert)
    {
        ERR_clear_error();
        throw std::runtime_error(path + ": no PEM certificate (\"BEGIN CERTIFICATE\") in the file");
    }
    return identityOf(cert.get());
}

std::string canonicalFingerprint(const std::string& text)
{
    std::string s = text;
    if (s.size() > 7 && strncasecmp(s.c_str(), "sha256:", 7) == 0)
        s = s.substr(7);
    std::string out;
    for (size_t i = 0; i < s.size(); ++i)
    {
        const char c = s[i];
        if (c == ':')
        {
            // Only between two-digit groups.
            if (out.empty() || out.size() % 2 != 0 || i + 1 == s.size() || s[i + 1] == ':')
                return std::string();
            continue;
        }
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return std::string();
        out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return out.size() == 64 ? out : std::string();
}

}  // namespace auth
}  // namespace qel
