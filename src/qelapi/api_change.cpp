// Changes: port settings, port actions and the LESB counter reset. Each one is
// all or nothing, saved before it returns, and written to the audit log.
#include "qelapi.h"

#include "sim/api_call.h"
#include "sim/call_log.h"
#include "sim/lpid.h"
#include "sim/simulator.h"

#include <algorithm>
#include <ctime>
#include <functional>

using namespace qelsim;

namespace
{

// Edits one port; the system is given for checks that concern the whole array.
using PortEdit = std::function<int(const SystemIdentity&, FcPort&)>;

std::vector<std::string> positionsOf(int count, const uint16_t* ids)
{
    std::vector<std::string> out;
    if (!ids || count < 1 || count > kMaxPortsPerCall)
        return out;
    for (int i = 0; i < count; ++i)
    {
        auto pos = positionOfLpid(ids[i]);
        out.push_back(pos ? positionText(*pos) : "LPID " + std::to_string(ids[i]));
    }
    return out;
}

// Checks the common arguments, applies edit to every port named by ids (on a
// copy of the array, so an unknown LPID or a refused value changes nothing),
// and writes the audit line. valueOk false refuses the call before any port is looked at.
int changePorts(
    Call call, const CallArgs& args, api_evtparam_t* evt, int count, const uint16_t* ids,
    bool valueOk, const PortEdit& edit)
{
    AuditEntry entry{evt, callInfo(call).name, positionsOf(count, ids)};
    int rc = runCall(
        call, args, evt,
        [&]() -> int
        {
            if (!evt || !ids || count < 1 || count > kMaxPortsPerCall || !valueOk)
                return API_ERR_INVAL;
            return Simulator::instance().change(
                [&](Model& m) -> int
                {
                    for (int i = 0; i < count; ++i)
                    {
                        FcPort* p = m.fcPortByLpid(ids[i]);
                        if (!p)
                            return API_ERR_NOENT;
                        if (int r = edit(m.system, *p))
                            return r;
                    }
                    return API_OK;
                },
                &entry);
        });
    if (evt)
        Simulator::instance().audit(entry, rc);
    return rc;
}

CallArgs portArgs(api_evtparam_t* evt, int count, const uint16_t* ids)
{
    CallArgs args;
    args.ptr(evt).num(count).ids(count, ids);
    return args;
}

// Highest speed a port takes, in whole Gb/s, from its maxRate code.
uint32_t maxGbps(int32_t maxRate)
{
    switch (maxRate)
    {
        case 1:
        case 2:
        case 4:
        case 8:
        case 10:
        case 16:
            return static_cast<uint32_t>(maxRate);
        case 15:
            return 1;
        case 30:
            return 3;
        case 60:
            return 6;
        case 11:
        case 12:
            return 0;
        default:
            return 16;  // no known limit
    }
}

int setState(api_evtparam_t* evt, Call call, int count, uint16_t* ids, api_port_status_t state)
{
    return changePorts(
        call, portArgs(evt, count, ids), evt, count, ids, true,
        [state](const SystemIdentity&, FcPort& p)
        {
            p.status = state;
            return static_cast<int>(API_OK);
        });
}

}  // namespace

int api_setFCPortMode(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t mode, bool force)
{
    return changePorts(
        Call::setFCPortMode, portArgs(evt, count, ids).num(mode).text(force ? "true" : "false"),
        evt, count, ids, mode >= 1 && mode <= 3,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            if (!p.modeChangeAllowed && !force)
                return API_ERR_PERM;
            p.mode = mode;
            return API_OK;
        });
}

int api_setFCPortConnType(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t connType)
{
    return changePorts(
        Call::setFCPortConnType, portArgs(evt, count, ids).num(connType), evt, count, ids,
        connType >= 1 && connType <= 4,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            p.connectionType = connType;
            return API_OK;
        });
}

int api_setFCPortClass2(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t class2)
{
    return changePorts(
        Call::setFCPortClass2, portArgs(evt, count, ids).num(class2), evt, count, ids,
        class2 >= 1 && class2 <= 3,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            p.class2 = class2;
            return API_OK;
        });
}

int api_setFCPortVCN(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t vcn)
{
    return changePorts(
        Call::setFCPortVCN, portArgs(evt, count, ids).num(vcn), evt, count, ids,
        vcn >= 1 && vcn <= 2,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            p.vcn = vcn;
            return API_OK;
        });
}

int api_setFCPortIntCoal(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t intCoal)
{
    return changePorts(
        Call::setFCPortIntCoal, portArgs(evt, count, ids).num(intCoal), evt, count, ids,
        intCoal >= 1 && intCoal <= 2,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            p.interruptCoalescing = intCoal;
            return API_OK;
        });
}

int api_setFCPortSpeed(api_evtparam_t* evt, int count, uint16_t* ids, uint32_t gbps)
{
    static const uint32_t kSpeeds[] = {0, 1, 2, 4, 8, 10, 16};
    const bool known = std::find(std::begin(kSpeeds), std::end(kSpeeds), gbps) != std::end(kSpeeds);
    return changePorts(
        Call::setFCPortSpeed, portArgs(evt, count, ids).num(gbps), evt, count, ids, known,
        [&](const SystemIdentity&, FcPort& p) -> int
        {
            if (gbps == 0)
            {
                p.configuredRate = 3;  // automatic
                return API_OK;
            }
            if (gbps > maxGbps(p.maxRate))
                return API_ERR_INVAL;
            p.configuredRate = static_cast<int32_t>(gbps);
            return API_OK;
        });
}

int api_setPortOffline(api_evtparam_t* evt, int count, uint16_t* ids)
{
    return setState(evt, Call::setPortOffline, count, ids, PORT_OFFLINE);
}

int api_resetPort(api_evtparam_t* evt, int count, uint16_t* ids)
{
    return setState(evt, Call::resetPort, count, ids, PORT_OK);
}

int api_reloadPortFW(api_evtparam_t* evt, int count, uint16_t* ids)
{
    return setState(evt, Call::reloadPortFW, count, ids, PORT_OK);
}

int api_syncFCPortDB(api_evtparam_t* evt, int count, uint16_t* ids)
{
    // The name-server database is not simulated; the ports must exist and the request is audited.
    return changePorts(
        Call::syncFCPortDB, portArgs(evt, count, ids), evt, count, ids, true,
        [](const SystemIdentity&, FcPort&) { return static_cast<int>(API_OK); });
}

int api_initFCPortLoop(api_evtparam_t* evt, int count, uint16_t* ids, const char* cage)
{
    const std::string cageName = cage ? cage : "";
    // A null cage means every cage; an empty name is a caller's mistake.
    return changePorts(
        Call::initFCPortLoop, portArgs(evt, count, ids).str(cage), evt, count, ids,
        !cage || !cageName.empty(),
        [&](const SystemIdentity& sys, FcPort& p) -> int
        {
            if (cage && std::find(sys.cages.begin(), sys.cages.end(), cageName) == sys.cages.end())
                return API_ERR_NOENT;
            p.status = PORT_OK;
            return API_OK;
        });
}

int api_resetPortLESB(api_evtparam_t* evt, uint64_t wwn)
{
    AuditEntry entry{evt, "api_resetPortLESB"};
    int rc = runCall(
        Call::resetPortLESB, CallArgs().ptr(evt).hex(wwn), evt,
        [&]() -> int
        {
            if (!evt || wwn == API_ALL_PORTS)
                return API_ERR_INVAL;
            return Simulator::instance().change(
                [&](Model& m) -> int
                {
                    auto it = m.fcByWwn.find(wwn);
                    if (it == m.fcByWwn.end())
                        return API_ERR_NOENT;
                    FcPort& p = m.fcPorts[it->second];
                    entry.ports = {positionText(p.pos)};
                    const uint64_t now = static_cast<uint64_t>(std::time(nullptr));
                    for (Lesb& l : p.lesb)
                    {
                        l = Lesb{now, l.portId, 0, 0, 0, 0, 0, 0};
                    }
                    return API_OK;
                },
                &entry);
        });
    if (evt)
        Simulator::instance().audit(entry, rc);
    return rc;
}
