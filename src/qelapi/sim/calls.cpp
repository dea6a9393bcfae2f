#include "calls.h"

namespace qelsim
{

const std::vector<CallInfo>& allCalls()
{
    // In the order of enum Call.
    static const std::vector<CallInfo> kCalls = {
        {"api_qelOpenForCimserver", true, false, true},
        {"api_authorizeCIMUser", true, false, true},
        {"cim_sem_wait", true, false, false},
        {"cim_sem_post", false, false, false},
        {"api_getFCPorts", true, true, false},
        {"api_getFCALPorts", true, true, false},
        {"api_freeFCPorts", false, false, false},
        {"api_getISCSIPorts", true, true, false},
        {"api_getPortLESB", true, true, false},
        {"api_getVVs", true, true, false},
        {"api_resetPortLESB", true, false, false},
        {"api_findFCPortLPID", true, false, false},
        {"api_getFCPortLPID", true, false, false},
        {"api_getiSCSIPortLPID", true, false, false},
        {"api_convertStrLPIDtoPortID", true, false, false},
        {"api_getSystemDualIP", true, false, false},
        {"api_getSystemIdentity", true, false, false},
        {"api_setFCPortMode", true, true, false},
        {"api_setFCPortConnType", true, true, false},
        {"api_setFCPortClass2", true, true, false},
        {"api_setFCPortVCN", true, true, false},
        {"api_setFCPortIntCoal", true, true, false},
        {"api_setFCPortSpeed", true, true, false},
        {"api_setPortOffline", true, true, false},
        {"api_resetPort", true, true, false},
        {"api_reloadPortFW", true, true, false},
        {"api_syncFCPortDB", true, true, false},
        {"api_initFCPortLoop", true, true, false},
    };
    return kCalls;
}

const CallInfo& callInfo(Call c)
{
    return allCalls()[static_cast<size_t>(c)];
}

const CallInfo* findCall(std::string_view name)
{
    for (const auto& c : allCalls())
        if (name == c.name)
            return &c;
    return nullptr;
}

}  // namespace qelsim
