// IPv4/IPv6 address texts: checked and brought to their canonical form.
#ifndef QELSIM_IPADDR_H
#define QELSIM_IPADDR_H

#include <optional>
#include <string>

namespace qelsim
{

struct IpText
{
    int family;        // AF_INET or AF_INET6
    std::string text;  // canonical form (inet_ntop)
};

std::optional<IpText> canonicalIp(const std::string& text);

}  // namespace qelsim

#endif
