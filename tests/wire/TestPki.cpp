#include "TestPki.h"

#include <Server/auth/CertificateIdentity.h>

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>
#include <cstdio>
#include <stdexcept>

namespace wiretest
{
namespace
{

void require(bool ok, const char* what)
{
    if (!ok)
        throw std::runtime_error(std::string("test certificate: ") + what);
}

void addExtension(X509* cert, X509* issuer, int nid, const std::string& value)
{
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, issuer, cert, nullptr, nullptr, 0);
    X509_EXTENSION* ext = X509V3_EXT_conf_nid(nullptr, &ctx, nid, value.c_str());
    require(ext != nullptr, "extension");
    X509_add_ext(cert, ext, -1);
    X509_EXTENSION_free(ext);
}

void writePem(const std::string& path, X509* cert, EVP_PKEY* key)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    require(f != nullptr, "cannot write a file");
    const bool ok = cert ? PEM_write_X509(f, cert) == 1
                         : PEM_write_PrivateKey(f, key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
    std::fclose(f);
    require(ok, "PEM");
}

X509* makeCertificate(
    EVP_PKEY* key, const std::string& commonName, X509* issuer, int fromDays, int toDays)
{
    static long serial = 1;
    X509* cert = X509_new();
    X509_set_version(cert, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(cert), serial++);
    X509_gmtime_adj(X509_getm_notBefore(cert), fromDays * 86400L);
    X509_gmtime_adj(X509_getm_notAfter(cert), toDays * 86400L);
    X509_set_pubkey(cert, key);
    X509_NAME* name = X509_get_subject_name(cert);
    X509_NAME_add_entry_by_txt(
        name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(commonName.c_str()), -1,
        -1, 0);
    X509_set_issuer_name(cert, issuer ? X509_get_subject_name(issuer) : name);
    return cert;
}

}  // namespace

struct TestPki::Keys
{
    EVP_PKEY* caKey = nullptr;
    X509* ca = nullptr;
    ~Keys()
    {
        X509_free(ca);
        EVP_PKEY_free(caKey);
    }
};

TestPki::TestPki(const std::string& dir, const std::string& name)
    : _dir(dir), _keys(std::make_unique<Keys>())
{
    _keys->caKey = EVP_EC_gen("P-256");
    require(_keys->caKey != nullptr, "key");
    _keys->ca = makeCertificate(_keys->caKey, name + " test authority", nullptr, -1, 365);
    addExtension(_keys->ca, _keys->ca, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(_keys->ca, _keys->ca, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(_keys->ca, _keys->ca, NID_subject_key_identifier, "hash");
    require(X509_sign(_keys->ca, _keys->caKey, EVP_sha256()) > 0, "signature");
    _caFile = dir + "/" + name + "-ca.pem";
    writePem(_caFile, _keys->ca, nullptr);
    writePem(dir + "/" + name + "-ca-key.pem", nullptr, _keys->caKey);
}

TestPki::~TestPki() = default;

IssuedCertificate TestPki::issue(
    const std::string& commonName, bool server, std::vector<std::string> names, int fromDays,
    int toDays)
{
    EVP_PKEY* key = EVP_EC_gen("P-256");
    require(key != nullptr, "key");
    X509* cert = makeCertificate(key, commonName, _keys->ca, fromDays, toDays);
    addExtension(cert, _keys->ca, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(cert, _keys->ca, NID_key_usage, "critical,digitalSignature");
    addExtension(cert, _keys->ca, NID_ext_key_usage, server ? "serverAuth" : "clientAuth");
    if (!names.empty())
    {
        std::string alt;
        for (const std::string& n : names)
        {
            unsigned char buf[16];
            const bool ip =
                inet_pton(AF_INET, n.c_str(), buf) == 1 || inet_pton(AF_INET6, n.c_str(), buf) == 1;
            alt += (alt.empty() ? "" : ",") + std::string(ip ? "IP:" : "DNS:") + n;
        }
        addExtension(cert, _keys->ca, NID_subject_alt_name, alt);
    }
    require(X509_sign(cert, _keys->caKey, EVP_sha256()) > 0, "signature");
    IssuedCertificate out;
    out.certificateFile = _dir + "/" + commonName + ".pem";
    out.keyFile = _dir + "/" + commonName + "-key.pem";
    writePem(out.certificateFile, cert, nullptr);
    writePem(out.keyFile, nullptr, key);
    out.fingerprint = qel::auth::identityOf(cert).fingerprint;
    X509_free(cert);
    EVP_PKEY_free(key);
    return out;
}

}  // namespace wiretest
