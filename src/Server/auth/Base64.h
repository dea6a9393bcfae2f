// Base64 (RFC 4648, with padding) for HTTP Basic credentials.
#ifndef QEL_SERVER_AUTH_BASE64_H
#define QEL_SERVER_AUTH_BASE64_H

#include <string>

namespace qel
{
namespace auth
{

std::string base64Encode(const std::string& data);
// False for characters outside the alphabet, bad padding or a length not a multiple of 4.
bool base64Decode(const std::string& text, std::string& out);

}  // namespace auth
}  // namespace qel

#endif
