#include "model.h"

#include "lpid.h"

#include <cstdio>

namespace qelsim
{

void Model::reindex()
{
    fcByWwn.clear();
    fcByLpid.clear();
    for (size_t i = 0; i < fcPorts.size(); ++i)
    {
        fcByWwn.emplace(fcPorts[i].wwn, i);
        fcByLpid.emplace(lpidOf(fcPorts[i].pos), i);
    }
}

const FcPort* Model::fcPortByWwn(uint64_t wwn) const
{
    auto it = fcByWwn.find(wwn);
    return it == fcByWwn.end() ? nullptr : &fcPorts[it->second];
}

FcPort* Model::fcPortByLpid(uint16_t lpid)
{
    auto it = fcByLpid.find(lpid);
    return it == fcByLpid.end() ? nullptr : &fcPorts[it->second];
}

const User* Model::user(const std::string& name) const
{
    for (const auto& u : users)
        if (u.name == name)
            return &u;
    return nullptr;
}

const char* roleName(Role r)
{
    switch (r)
    {
        case Role::Browse:
            return "browse";
        case Role::Edit:
            return "edit";
        case Role::Super:
            return "super";
    }
    return "browse";
}

std::optional<Role> roleFromName(const std::string& s)
{
    if (s == "browse")
        return Role::Browse;
    if (s == "edit")
        return Role::Edit;
    if (s == "super")
        return Role::Super;
    return std::nullopt;
}

namespace
{
struct StatusEntry
{
    api_port_status_t value;
    const char* name;
};
constexpr StatusEntry kStatuses[] = {
    {PORT_CONFIG_WAIT, "PORT_CONFIG_WAIT"},
    {PORT_ALPA_WAIT, "PORT_ALPA_WAIT"},
    {PORT_LOGIN_WAIT, "PORT_LOGIN_WAIT"},
    {PORT_OK, "PORT_OK"},
    {PORT_LOSS_SYNC, "PORT_LOSS_SYNC"},
    {PORT_ERROR, "PORT_ERROR"},
    {PORT_XXX, "PORT_XXX"},
    {PORT_NONPARTICIPATE, "PORT_NONPARTICIPATE"},
    {PORT_COREDUMP, "PORT_COREDUMP"},
    {PORT_OFFLINE, "PORT_OFFLINE"},
    {PORT_FWDEAD, "PORT_FWDEAD"},
    {PORT_IDLE_FOR_RESET, "PORT_IDLE_FOR_RESET"},
    {PORT_DHCP_IN_PROGRESS, "PORT_DHCP_IN_PROGRESS"},
    {PORT_PENDING_RESET, "PORT_PENDING_RESET"},
    {PORT_UNKNOWN, "PORT_UNKNOWN"},
};
}  // namespace

const char* statusName(api_port_status_t s)
{
    for (const auto& e : kStatuses)
        if (e.value == s)
            return e.name;
    return "PORT_UNKNOWN";
}

std::optional<api_port_status_t> statusFromName(const std::string& s)
{
    for (const auto& e : kStatuses)
        if (s == e.name)
            return e.value;
    return std::nullopt;
}

void formatWwn(uint64_t wwn, char out[17])
{
    static const char kDigits[] = "0123456789ABCDEF";
    for (int i = 0; i < 16; ++i)
        out[i] = kDigits[(wwn >> (60 - 4 * i)) & 0xF];
    out[16] = '\0';
}

std::string wwnText(uint64_t wwn)
{
    char buf[17];
    formatWwn(wwn, buf);
    return std::string(buf, 16);
}

std::optional<uint64_t> parseWwn(const std::string& s)
{
    if (s.size() != 16)
        return std::nullopt;
    uint64_t v = 0;
    for (char c : s)
    {
        unsigned d;
        if (c >= '0' && c <= '9')
            d = static_cast<unsigned>(c - '0');
        else if (c >= 'a' && c <= 'f')
            d = static_cast<unsigned>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            d = static_cast<unsigned>(c - 'A' + 10);
        else
            return std::nullopt;
        v = (v << 4) | d;
    }
    return v;
}

}  // namespace qelsim
