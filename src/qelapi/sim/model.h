// The simulated array's state: what the JSON file describes and what the
// change calls alter. Plain values; the Simulator owns the one live copy.
#ifndef QELSIM_MODEL_H
#define QELSIM_MODEL_H

#include "qelapi.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace qelsim
{

struct Position
{
    unsigned node = 0;
    unsigned slot = 0;
    unsigned port = 0;
    bool operator==(const Position& o) const
    {
        return node == o.node && slot == o.slot && port == o.port;
    }
};

struct Ddm
{
    int32_t monitorType = 0;
    uint32_t sensorFlags = 0;
    std::string unit;
    int32_t value = 0;
    int32_t lowAlarm = 0;
    int32_t highAlarm = 0;
    int32_t lowWarn = 0;
    int32_t highWarn = 0;
    uint32_t sampleCount = 0;
};

struct Sfp
{
    std::string manufacturer;
    std::string partNumber;
    std::string serialNumber;
    std::string revision;
    std::string description;
    uint64_t speed = 0;
    uint32_t disableTxPin = 0;
    uint32_t lossRxPin = 0;
    uint32_t faultTxPin = 0;
    bool unqualified = false;
    bool rxPowerLow = false;
    uint32_t state = 1;
    bool hasDdm = false;  // false: the transceiver offers no DDM
    std::array<Ddm, 5> ddm{};
};

struct Lesb
{
    uint64_t sampleTime = 0;
    std::optional<uint16_t> portId;  // unset: the port's LPID
    uint64_t linkFailures = 0;
    uint64_t lossOfSync = 0;
    uint64_t lossOfSignal = 0;
    uint64_t primitiveSeqErrors = 0;
    uint64_t invalidTxWords = 0;
    uint64_t crcErrors = 0;
};

struct FcPort
{
    Position pos;
    api_port_status_t status = PORT_UNKNOWN;
    uint64_t wwn = 0;
    int32_t currentRate = 0;
    std::string fcSystemName;
    uint64_t fcNodeWwn = 0;
    std::string fcalSystemName;
    uint64_t fcalNodeWwn = 0;
    bool fullDuplex = false;
    int32_t maxRate = 0;
    int32_t configuredRate = 0;
    int32_t topology = 0;
    int32_t portKind = 0;
    int32_t configuration = 0;
    int32_t mode = 0;
    int32_t connectionMode = 0;
    bool modeChangeAllowed = false;
    int32_t deviceTypeConnected = 0;
    int32_t connectionType = 0;
    int32_t class2 = 0;
    int32_t vcn = 0;
    int32_t interruptCoalescing = 0;
    std::optional<std::string> connectedTo;  // unset: the record's pointer is null
    std::optional<Sfp> sfp;                  // unset: no transceiver
    std::vector<Lesb> lesb;
};

struct IscsiPort
{
    std::string iscsiName;
    Position pos;
    api_port_status_t status = PORT_UNKNOWN;
    std::string ipAddr;
    std::optional<Sfp> sfp;
};

struct Volume
{
    std::string name;
    uint64_t wwn = 0;
    int32_t kind = VV_KIND_BASE;
    uint32_t id = 0;
    uint64_t sizeMiB = 0;
};

enum class Role
{
    Browse,
    Edit,
    Super
};

struct User
{
    std::string name;
    Role role = Role::Browse;
    bool enabled = true;
    std::vector<std::string> addresses;  // empty: any address
};

struct Fault
{
    std::string call;
    int code = 0;
    int64_t times = -1;  // -1: always; otherwise the calls still to fail (>= 1)
};

struct LogConfig
{
    int level = API_LOG_FAILURE;
    std::string file;  // empty: standard error
};

struct SystemIdentity
{
    std::string name;
    std::string hostName;
    uint32_t id = 0;
    int32_t type = 0;
    bool quadPort = false;
    std::string ipv4;
    std::string ipv6;  // empty: none
    std::vector<std::string> cages;
};

// Where a state file's contents came from, so a changed array file re-seeds it.
struct Origin
{
    std::string path;
    std::string hash;
};

struct Model
{
    SystemIdentity system;
    LogConfig log;
    std::string auditFile;
    std::vector<User> users;
    std::vector<FcPort> fcPorts;
    std::vector<IscsiPort> iscsiPorts;
    std::vector<Volume> volumes;
    std::vector<Fault> faults;
    Origin origin;

    // Lookups; rebuilt by reindex() whenever ports are added or removed.
    std::unordered_map<uint64_t, size_t> fcByWwn;
    std::unordered_map<uint16_t, size_t> fcByLpid;

    void reindex();
    const FcPort* fcPortByWwn(uint64_t wwn) const;
    FcPort* fcPortByLpid(uint16_t lpid);
    const User* user(const std::string& name) const;
};

const char* roleName(Role r);
std::optional<Role> roleFromName(const std::string& s);

// Port state names as the JSON file spells them ("PORT_OK").
const char* statusName(api_port_status_t s);
std::optional<api_port_status_t> statusFromName(const std::string& s);

// WWN text: 16 upper-case hexadecimal digits.
std::string wwnText(uint64_t wwn);
// The same into out[0..16], terminated; no allocation (records are filled per port).
void formatWwn(uint64_t wwn, char out[17]);
// Parses exactly 16 hexadecimal digits of either case.
std::optional<uint64_t> parseWwn(const std::string& s);

}  // namespace qelsim

#endif
