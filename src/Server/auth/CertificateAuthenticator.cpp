#include "CertificateAuthenticator.h"

namespace qel
{
namespace auth
{

CertificateAuthenticator::CertificateAuthenticator(std::string mapFile)
    : _map(WatchedFile<CertificateMap>::open<CertificateMapError>(
          std::move(mapFile), "certificate map",
          [](const std::string& path) { return CertificateMap::load(path, false); }))
{
}

AuthResult
CertificateAuthenticator::authenticate(const std::string& fingerprint, const std::string& subject)
{
    AuthResult result;
    std::lock_guard<std::mutex> lock(_mutex);
    _map.refresh();
    if (const CertificateMapping* m = _map.data().find(fingerprint))
    {
        result.ok = true;
        result.user = m->user;
        return result;
    }
    result.reason = "client certificate \"" + subject + "\" (sha256 " + fingerprint +
                    ") is not mapped to a user";
    return result;
}

std::string CertificateAuthenticator::lastError()
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _map.lastError();
}

}  // namespace auth
}  // namespace qel
