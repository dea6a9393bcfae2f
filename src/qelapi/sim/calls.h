// The table of the library's calls as the simulator knows them: which may be
// made to fail on purpose and which belong inside the cim_sem_wait/post bracket.
#ifndef QELSIM_CALLS_H
#define QELSIM_CALLS_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace qelsim
{

struct CallInfo
{
    const char* name;
    bool faultable;      // a fault may be injected for it
    bool bracketed;      // callers hold the module-wide semaphore around it
    bool zeroCodeFault;  // a fault may force 0 (a forced grant or session)
};

// Every call, in the order of the table; the library's entry points name
// themselves with these, so no call looks its own name up.
enum class Call : uint8_t
{
    qelOpenForCimserver,
    authorizeCIMUser,
    semWait,
    semPost,
    getFCPorts,
    getFCALPorts,
    freeFCPorts,
    getISCSIPorts,
    getPortLESB,
    getVVs,
    resetPortLESB,
    findFCPortLPID,
    getFCPortLPID,
    getiSCSIPortLPID,
    convertStrLPIDtoPortID,
    getSystemDualIP,
    getSystemIdentity,
    setFCPortMode,
    setFCPortConnType,
    setFCPortClass2,
    setFCPortVCN,
    setFCPortIntCoal,
    setFCPortSpeed,
    setPortOffline,
    resetPort,
    reloadPortFW,
    syncFCPortDB,
    initFCPortLoop,
};

const CallInfo& callInfo(Call c);
const CallInfo* findCall(std::string_view name);
const std::vector<CallInfo>& allCalls();

}  // namespace qelsim

#endif
