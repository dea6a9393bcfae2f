#include "DemoCertificate.h"

#include <Server/auth/PrivateFile.h>

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>
#include <memory>
#include <stdexcept>

namespace qel
{
namespace server
{
namespace
{

template <class T, void (*Free)(T*)>
using Owned = std::unique_ptr<T, std::integral_constant<decltype(Free), Free>>;

void check(bool ok, const char* what)
{
    if (ok)
        return;
    const unsigned long e = ERR_get_error();
    ERR_clear_error();
    const char* reason = e ? ERR_reason_error_string(e) : nullptr;
    throw std::runtime_error(
        std::string("cannot make the demo certificate: ") + what + (reason ? ": " : "") +
        (reason ? reason : ""));
}

void addExtension(X509* cert, int nid, const std::string& value)
{
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, cert, cert, nullptr, nullptr, 0);
    Owned<X509_EXTENSION, X509_EXTENSION_free> ext(
        X509V3_EXT_conf_nid(nullptr, &ctx, nid, value.c_str()));
    check(ext != nullptr && X509_add_ext(cert, ext.get(), -1) == 1, "extension");
}

bool isIpAddress(const std::string& name)
{
    unsigned char buf[16];
    return inet_pton(AF_INET, name.c_str(), buf) == 1 ||
           inet_pton(AF_INET6, name.c_str(), buf) == 1;
}

std::string pem(int (*write)(BIO*, void*), void* object)
{
    Owned<BIO, BIO_free_all> bio(BIO_new(BIO_s_mem()));
    check(bio && write(bio.get(), object) == 1, "PEM encoding");
    char* data = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(n));
}

void save(const std::string& path, const std::string& text)
{
    std::string why;
    if (!auth::replaceFile(path, text, why))
        throw std::runtime_error("cannot write the demo certificate: " + why);
}

}  // namespace

void createDemoCertificate(
    const std::string& certificateFile, const std::string& keyFile,
    const std::vector<std::string>& names)
{
    if (names.empty())
        throw std::invalid_argument("the demo certificate needs a name");
    Owned<EVP_PKEY, EVP_PKEY_free> key(EVP_EC_gen("P-256"));
    check(key != nullptr, "key generation");

    Owned<X509, X509_free> cert(X509_new());
    check(cert && X509_set_version(cert.get(), 2) == 1, "certificate");
    // A random serial: browsers and clients refuse two certificates of one issuer with
    // the same serial, and every run makes a new one.
    unsigned char serial[16];
    check(RAND_bytes(serial, sizeof serial) == 1, "serial number");
    serial[0] &= 0x7f;  // positive
    Owned<BIGNUM, BN_free> bn(BN_bin2bn(serial, sizeof serial, nullptr));
    check(bn && BN_to_ASN1_INTEGER(bn.get(), X509_get_serialNumber(cert.get())), "serial number");
    check(X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600) != nullptr, "validity");
    check(X509_gmtime_adj(X509_getm_notAfter(cert.get()), 30L * 24 * 3600) != nullptr, "validity");
    check(X509_set_pubkey(cert.get(), key.get()) == 1, "public key");

    X509_NAME* name = X509_get_subject_name(cert.get());
    auto addEntry = [&](const char* field, const std::string& value)
    {
        check(
            X509_NAME_add_entry_by_txt(
                name, field, MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(value.c_str()),
                -1, -1, 0) == 1,
            "subject");
    };
    addEntry("O", "qel-cimserver demo");
    addEntry("CN", names.front());
    check(X509_set_issuer_name(cert.get(), name) == 1, "issuer");  // self-signed

    std::string altNames;
    for (const std::string& n : names)
        altNames +=
            (altNames.empty() ? "" : ",") + std::string(isIpAddress(n) ? "IP:" : "DNS:") + n;
    // Its own authority, so that a client told to trust this file accepts it as the root.
    addExtension(cert.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(cert.get(), NID_key_usage, "critical,digitalSignature,keyCertSign");
    addExtension(cert.get(), NID_ext_key_usage, "serverAuth");
    addExtension(cert.get(), NID_subject_key_identifier, "hash");
    addExtension(cert.get(), NID_subject_alt_name, altNames);
    check(X509_sign(cert.get(), key.get(), EVP_sha256()) > 0, "signature");

    save(
        keyFile, pem(
                     [](BIO* b, void* k)
                     {
                         return PEM_write_bio_PrivateKey(
                             b, static_cast<EVP_PKEY*>(k), nullptr, nullptr, 0, nullptr, nullptr);
                     },
                     key.get()));
    save(
        certificateFile,
        pem([](BIO* b, void* c) { return PEM_write_bio_X509(b, static_cast<X509*>(c)); },
            cert.get()));
}

}  // namespace server
}  // namespace qel
