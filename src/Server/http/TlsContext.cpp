#include "TlsContext.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace qel
{
namespace http
{
namespace
{

// TLS 1.2 suites with forward secrecy and authenticated encryption (TLS 1.3 has only such).
const char* kTls12Ciphers = "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-RSA-AES128-GCM-SHA256:"
                            "ECDHE-ECDSA-AES256-GCM-SHA384:ECDHE-RSA-AES256-GCM-SHA384:"
                            "ECDHE-ECDSA-CHACHA20-POLY1305:ECDHE-RSA-CHACHA20-POLY1305";

// OpenSSL's reason for the last failure, and the queue cleared.
std::string opensslReason()
{
    const unsigned long e = ERR_peek_last_error();
    ERR_clear_error();
    if (e == 0)
        return "unknown OpenSSL error";
    const char* reason = ERR_reason_error_string(e);
    return reason ? reason : "unknown OpenSSL error";
}

// A file the server must read: a clear error when it cannot.
void checkReadable(const std::string& what, const std::string& path)
{
    if (path.empty())
        throw TlsConfigError("no " + what + " file given");
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        throw TlsConfigError("cannot read " + what + " " + path + ": " + std::strerror(errno));
    std::fclose(f);
}

// Never prompts for a pass phrase on the terminal: encrypted keys are refused.
int noPassphrase(char*, int, int, void*)
{
    return -1;
}

// Every certificate of one PEM file; throws when the file holds none.
std::vector<X509*> readCertificates(const std::string& path)
{
    checkReadable("trusted certificate", path);
    FILE* f = std::fopen(path.c_str(), "rb");
    std::vector<X509*> certs;
    while (X509* c = PEM_read_X509(f, nullptr, nullptr, nullptr))
        certs.push_back(c);
    std::fclose(f);
    ERR_clear_error();  // the end of the file reads as an error
    if (certs.empty())
        throw TlsConfigError(
            "trusted certificate " + path + ": no PEM certificate (\"BEGIN CERTIFICATE\") in it");
    return certs;
}

// The files a trust store names: itself, or the regular files of its folder.
std::vector<std::string> trustStoreFiles(const std::string& path)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        throw TlsConfigError("cannot read trust store " + path + ": " + std::strerror(errno));
    if (!S_ISDIR(st.st_mode))
        return {path};
    DIR* dir = ::opendir(path.c_str());
    if (!dir)
        throw TlsConfigError("cannot read trust store " + path + ": " + std::strerror(errno));
    std::vector<std::string> files;
    while (dirent* e = ::readdir(dir))
    {
        const std::string file = path + "/" + e->d_name;
        struct stat fs;
        if (e->d_name[0] != '.' && ::stat(file.c_str(), &fs) == 0 && S_ISREG(fs.st_mode))
            files.push_back(file);
    }
    ::closedir(dir);
    if (files.empty())
        throw TlsConfigError("trust store " + path + " holds no file");
    return files;
}

void loadTrustStore(SSL_CTX* ctx, const std::string& path)
{
    X509_STORE* store = SSL_CTX_get_cert_store(ctx);
    STACK_OF(X509_NAME)* names = sk_X509_NAME_new_null();
    try
    {
        for (const std::string& file : trustStoreFiles(path))
        {
            for (X509* cert : readCertificates(file))
            {
                // Listed to clients as the authorities whose certificates are welcome.
                if (X509_NAME* name = X509_NAME_dup(X509_get_subject_name(cert)))
                    sk_X509_NAME_push(names, name);
                X509_STORE_add_cert(store, cert);
                X509_free(cert);
            }
        }
    }
    catch (...)
    {
        sk_X509_NAME_pop_free(names, X509_NAME_free);
        throw;
    }
    ERR_clear_error();  // adding a certificate twice is reported, and harmless
    SSL_CTX_set_client_CA_list(ctx, names);
    // Ask for a certificate and refuse a bad one at the handshake; a client without one
    // goes on, to log in with a password.
    SSL_CTX_set_verify(ctx, SSL_VERIFY_PEER | SSL_VERIFY_CLIENT_ONCE, nullptr);
    SSL_CTX_set_verify_depth(ctx, 8);
}

}  // namespace

std::shared_ptr<boost::asio::ssl::context> makeServerTlsContext(const TlsOptions& options)
{
    namespace ssl = boost::asio::ssl;
    auto context = std::make_shared<ssl::context>(ssl::context::tls_server);
    SSL_CTX* ctx = context->native_handle();
    ERR_clear_error();
    SSL_CTX_set_min_proto_version(ctx, TLS1_2_VERSION);
    SSL_CTX_set_options(
        ctx, SSL_OP_NO_COMPRESSION | SSL_OP_NO_RENEGOTIATION | SSL_OP_CIPHER_SERVER_PREFERENCE);
    if (SSL_CTX_set_cipher_list(ctx, kTls12Ciphers) != 1)
        throw TlsConfigError("cannot set the TLS 1.2 ciphers: " + opensslReason());
    SSL_CTX_set_default_passwd_cb(ctx, &noPassphrase);

    checkReadable("certificate", options.certificateFile);
    if (SSL_CTX_use_certificate_chain_file(ctx, options.certificateFile.c_str()) != 1)
        throw TlsConfigError(
            "certificate " + options.certificateFile + ": not a PEM certificate (" +
            opensslReason() + ")");
    checkReadable("key", options.keyFile);
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(nullptr, &EVP_PKEY_free);
    if (FILE* f = std::fopen(options.keyFile.c_str(), "rb"))
    {
        key.reset(PEM_read_PrivateKey(f, nullptr, &noPassphrase, nullptr));
        std::fclose(f);
    }
    if (!key)
        throw TlsConfigError(
            "key " + options.keyFile + ": not an unencrypted PEM private key (" + opensslReason() +
            ")");
    if (X509_check_private_key(SSL_CTX_get0_certificate(ctx), key.get()) != 1)
    {
        ERR_clear_error();
        throw TlsConfigError(
            "key " + options.keyFile + " does not match certificate " + options.certificateFile);
    }
    if (SSL_CTX_use_PrivateKey(ctx, key.get()) != 1)
        throw TlsConfigError("key " + options.keyFile + ": " + opensslReason());
    if (!options.trustStore.empty())
        loadTrustStore(ctx, options.trustStore);
    return context;
}

}  // namespace http
}  // namespace qel
