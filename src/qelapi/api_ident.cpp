// Port identifiers, the system's identity and addresses.
#include "qelapi.h"

#include "sim/api_call.h"
#include "sim/call_log.h"
#include "sim/ipaddr.h"
#include "sim/lpid.h"
#include "sim/records.h"
#include "sim/simulator.h"

#include <arpa/inet.h>
#include <cstring>

using namespace qelsim;

uint16_t api_findFCPortLPID(const char* deviceID)
{
    int rc = runCall(
        Call::findFCPortLPID, CallArgs().str(deviceID), nullptr,
        [&]() -> int
        {
            if (!deviceID)
                return API_LPID_UNKNOWN;
            auto wwn = parseWwn(deviceID);
            if (!wwn)
                return API_LPID_UNKNOWN;
            int found = Simulator::instance().read(
                [&](const Model& m) -> int
                {
                    const FcPort* p = m.fcPortByWwn(*wwn);
                    return p ? lpidOf(p->pos) : API_LPID_UNKNOWN;
                });
            // An unreadable array is "no such port" here (LPIDs are never that small).
            return found == API_ERR_IO ? API_LPID_UNKNOWN : found;
        });
    return static_cast<uint16_t>(rc);
}

int api_getFCPortLPID(uint64_t wwn, uint16_t* lpid)
{
    return runCall(
        Call::getFCPortLPID, CallArgs().hex(wwn).ptr(lpid), nullptr,
        [&]() -> int
        {
            if (!lpid)
                return API_ERR_INVAL;
            return Simulator::instance().read(
                [&](const Model& m) -> int
                {
                    const FcPort* p = m.fcPortByWwn(wwn);
                    *lpid = p ? lpidOf(p->pos) : API_LPID_UNKNOWN;
                    return p ? API_OK : API_ERR_NOENT;
                });
        });
}

int api_getiSCSIPortLPID(char* iscsiName, uint16_t* lpid)
{
    return runCall(
        Call::getiSCSIPortLPID, CallArgs().str(iscsiName).ptr(lpid), nullptr,
        [&]() -> int
        {
            if (!iscsiName || !lpid)
                return API_ERR_INVAL;
            return Simulator::instance().read(
                [&](const Model& m) -> int
                {
                    for (const auto& p : m.iscsiPorts)
                    {
                        if (p.iscsiName == iscsiName)
                        {
                            *lpid = lpidOf(p.pos);
                            return API_OK;
                        }
                    }
                    *lpid = API_LPID_UNKNOWN;
                    return API_ERR_NOENT;
                });
        });
}

int api_convertStrLPIDtoPortID(const char* text, uint16_t* lpid)
{
    return runCall(
        Call::convertStrLPIDtoPortID, CallArgs().str(text).ptr(lpid), nullptr,
        [&]() -> int
        {
            if (!text || !lpid)
                return API_ERR_INVAL;
            auto pos = parsePosition(text);
            if (!pos)
                return API_ERR_INVAL;
            *lpid = lpidOf(*pos);
            return API_OK;
        });
}

const char* loop_text(uint16_t lpid)
{
    thread_local char buf[32];
    auto pos = positionOfLpid(lpid);
    copyText(buf, sizeof buf, pos ? positionText(*pos) : "-");
    return buf;
}

int api_getSystemDualIP(api_ipaddr_t* ip)
{
    return runCall(
        Call::getSystemDualIP, CallArgs().ptr(ip), nullptr,
        [&]() -> int
        {
            if (!ip)
                return API_ERR_INVAL;
            return Simulator::instance().read(
                [&](const Model& m) -> int
                {
                    std::memset(ip, 0, sizeof *ip);
                    if (inet_pton(AF_INET, m.system.ipv4.c_str(), &ip->ipv4_addr) != 1)
                        return API_ERR_IO;
                    ip->dual_flag = 1;
                    if (!m.system.ipv6.empty())
                    {
                        if (inet_pton(AF_INET6, m.system.ipv6.c_str(), ip->ipv6_addr) != 1)
                            return API_ERR_IO;
                        ip->dual_flag = 3;  // both families
                    }
                    return API_OK;
                });
        });
}

int validateConvertIP(const char* text, char out[46])
{
    if (!out)
        return -1;
    out[0] = '\0';
    if (!text)
        return -1;
    auto ip = canonicalIp(text);
    if (!ip)
        return -1;
    copyText(out, 46, ip->text);
    return ip->family;
}

int api_getSystemIdentity(api_sysident_t* ident)
{
    return runCall(
        Call::getSystemIdentity, CallArgs().ptr(ident), nullptr,
        [&]() -> int
        {
            if (!ident)
                return API_ERR_INVAL;
            return Simulator::instance().read(
                [&](const Model& m) -> int
                {
                    std::memset(ident, 0, sizeof *ident);
                    copyText(ident->systemName, sizeof ident->systemName, m.system.name);
                    copyText(ident->hostName, sizeof ident->hostName, m.system.hostName);
                    ident->systemID = m.system.id;
                    ident->systemType = m.system.type;
                    ident->quadPort = m.system.quadPort ? 1 : 0;
                    copyText(ident->ipv4, sizeof ident->ipv4, m.system.ipv4);
                    copyText(ident->ipv6, sizeof ident->ipv6, m.system.ipv6);
                    return API_OK;
                });
        });
}
