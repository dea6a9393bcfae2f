// Demo mode: a self-signed certificate and key for HTTPS, made for the run with the
// OpenSSL API, so that someone trying the server out can use HTTPS at once (wbemcli
// -cacert FILE trusts exactly it).
#ifndef QEL_SERVER_MAIN_DEMOCERTIFICATE_H
#define QEL_SERVER_MAIN_DEMOCERTIFICATE_H

#include <string>
#include <vector>

namespace qel
{
namespace server
{

// Writes a new ECDSA P-256 key to `keyFile` (owner only) and a certificate for it to
// `certificateFile`, valid for 30 days, for the DNS names and IP addresses in `names`
// (the first is the subject's common name). Throws std::runtime_error saying what failed.
void createDemoCertificate(
    const std::string& certificateFile, const std::string& keyFile,
    const std::vector<std::string>& names);

}  // namespace server
}  // namespace qel

#endif
