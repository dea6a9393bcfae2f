// The server's TLS settings, built into an OpenSSL context: TLS 1.2 and 1.3 only, forward-
// secret AEAD ciphers, no compression, no renegotiation; the certificate chain and key
// from PEM files; and, when a trust store is named, client certificates asked for and
// verified against it (a client that sends none may still log in with a password).
#ifndef QEL_SERVER_HTTP_TLSCONTEXT_H
#define QEL_SERVER_HTTP_TLSCONTEXT_H

#include <boost/asio/ssl/context.hpp>

#include <memory>
#include <stdexcept>
#include <string>

namespace qel
{
namespace http
{

struct TlsOptions
{
    std::string certificateFile;  // PEM: the server's certificate, then any intermediates
    std::string keyFile;          // PEM: its private key (not encrypted)
    // A PEM file, or a folder of PEM files, of the authorities whose client certificates
    // are accepted; "" asks clients for no certificate.
    std::string trustStore;
};

// What is wrong with the TLS settings, naming the file and the reason.
class TlsConfigError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Throws TlsConfigError.
std::shared_ptr<boost::asio::ssl::context> makeServerTlsContext(const TlsOptions& options);

}  // namespace http
}  // namespace qel

#endif
