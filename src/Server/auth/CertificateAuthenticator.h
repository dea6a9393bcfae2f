// Who a client that presented a verified certificate is: the user the certificate map
// names for its fingerprint. The map file is re-read when it changes on disk, so
// qel-certmap takes effect without a restart.
#ifndef QEL_SERVER_AUTH_CERTIFICATEAUTHENTICATOR_H
#define QEL_SERVER_AUTH_CERTIFICATEAUTHENTICATOR_H

#include "BasicAuthenticator.h"
#include "CertificateMap.h"
#include "WatchedFile.h"

#include <mutex>
#include <string>

namespace qel
{
namespace auth
{

class CertificateAuthenticator
{
public:
    // Throws CertificateMapError when the file cannot be read or parsed.
    explicit CertificateAuthenticator(std::string mapFile);

    // The user of the certificate with this fingerprint; refused (with the subject in
    // the reason) when the map names none.
    AuthResult authenticate(const std::string& fingerprint, const std::string& subject);

    // The last reload failure ("" when the file loaded fine); the previous map stays in use.
    std::string lastError();

private:
    std::mutex _mutex;
    WatchedFile<CertificateMap> _map;  // guarded by _mutex
};

}  // namespace auth
}  // namespace qel

#endif
