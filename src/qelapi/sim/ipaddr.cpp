#include "ipaddr.h"

#include <arpa/inet.h>
#include <netinet/in.h>

namespace qelsim
{

std::optional<IpText> canonicalIp(const std::string& text)
{
    unsigned char buf[sizeof(struct in6_addr)];
    char out[INET6_ADDRSTRLEN];
    if (inet_pton(AF_INET, text.c_str(), buf) == 1 && inet_ntop(AF_INET, buf, out, sizeof out))
        return IpText{AF_INET, out};
    if (inet_pton(AF_INET6, text.c_str(), buf) == 1 && inet_ntop(AF_INET6, buf, out, sizeof out))
        return IpText{AF_INET6, out};
    return std::nullopt;
}

}  // namespace qelsim
