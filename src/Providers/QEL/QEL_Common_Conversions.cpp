// QEL_Common: value conversions between the array library and CIM (port
// states, times, port identifiers, system addresses, the event record) and
// the small tables of the provider set.
#include "QEL_Common.h"
#include "QEL_Common_Internal.h"

#include <Pegasus/Common/Exception.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// True, after the level-2 trace given, when there is no event record to fill.
bool _noRecord(const api_evtparam_t* eventp, const char* trace)
{
    if (eventp != NULL)
    {
        return false;
    }
    log_message(2, "%s", trace);
    return true;
}

// Copies src into a fixed-size field, at most size - 1 characters and always
// terminated; a null src empties the field.
void _copyField(char* field, size_t size, const char* src)
{
    field[0] = '\0';
    if (src != NULL)
    {
        strncat(field, src, size - 1);
    }
}

struct PortStateCodes
{
    api_port_status_t state;
    Uint16 operationalStatus;
    Uint16 healthState;
};

// A port that lost synchronisation is Lost Communication yet healthy, and a
// port in configuration wait is Stopped yet healthy; both intended.
const PortStateCodes PORT_STATE_CODES[] = {
    {PORT_CONFIG_WAIT, 10, 5},    {PORT_ALPA_WAIT, 8, 5},
    {PORT_LOGIN_WAIT, 8, 5},      {PORT_OK, 2, 5},
    {PORT_LOSS_SYNC, 13, 5},      {PORT_ERROR, 6, 20},
    {PORT_NONPARTICIPATE, 6, 20}, {PORT_COREDUMP, 6, 25},
    {PORT_OFFLINE, 10, 10},       {PORT_FWDEAD, 7, 30},
    {PORT_IDLE_FOR_RESET, 8, 5},  {PORT_DHCP_IN_PROGRESS, 8, 5},
    {PORT_PENDING_RESET, 8, 5},
};

const PortStateCodes* _portStateCodes(api_port_status_t state)
{
    for (size_t i = 0; i < sizeof(PORT_STATE_CODES) / sizeof(PORT_STATE_CODES[0]); i++)
    {
        if (PORT_STATE_CODES[i].state == state)
        {
            return &PORT_STATE_CODES[i];
        }
    }
    return NULL;
}

// Minutes east of UTC of the local zone at `when`, truncated toward zero.
long _localOffsetMinutes(const struct tm& local)
{
    return local.tm_gmtoff / 60;
}

// Decimal number in characters [from, from + n) of text; no range check.
int _numberAt(const char* text, size_t from, size_t n)
{
    char field[8];
    memset(field, 0, sizeof(field));
    size_t len = strlen(text);
    if (from < len)
    {
        memcpy(field, text + from, (len - from < n) ? len - from : n);
    }
    return (int)strtol(field, NULL, 10);
}

// Cached system addresses; asked of the library while the IPv4 text is empty.
// The lock is a choice: request threads would otherwise race on the texts.
struct SystemAddressCache
{
    std::mutex lock;
    String ipv4;
    String ipv6;
};

SystemAddressCache& _addressCache()
{
    static SystemAddressCache cache;
    return cache;
}

// Generator state of generate_random_string, seeded on first use. The lock
// is a choice: random_r on one shared state from request threads would race.
struct RandomState
{
    std::mutex lock;
    bool seeded = false;
    struct random_data data;
    char state[256];
};

RandomState& _randomState()
{
    static RandomState rs;
    return rs;
}

const char RANDOM_ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

}  // anonymous namespace

Uint16 QEL_Common::getPortOperationalStatus(api_port_status_t portStatus)
{
    const PortStateCodes* codes = _portStateCodes(portStatus);
    return codes == NULL ? 0 : codes->operationalStatus;
}

Uint16 QEL_Common::getPortHealthState(api_port_status_t portStatus)
{
    const PortStateCodes* codes = _portStateCodes(portStatus);
    return codes == NULL ? 0 : codes->healthState;
}

CIMDateTime QEL_Common::getCIMDateTime(time_t time)
{
    struct tm local;
    memset(&local, 0, sizeof(local));
    // A time the C library cannot break down has no date-time: a choice.
    if (localtime_r(&time, &local) == NULL)
    {
        char text[32];
        snprintf(text, sizeof(text), "%lld", (long long)time);
        throw DateTimeOutOfRangeException(text);
    }
    long offset = _localOffsetMinutes(local);
    char buffer[80];
    memset(buffer, 0, sizeof(buffer));
    snprintf(
        buffer, sizeof(buffer), "%04d%02d%02d%02d%02d%02d.%06d+%03ld", local.tm_year + 1900,
        local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0,
        offset < 0 ? -offset : offset);
    if (offset < 0)
    {
        buffer[21] = '-';
    }
    CIMDateTime result;
    result.clear();
    result.set(String(buffer));
    return result;
}

time_t QEL_Common::getDateTime(const CIMDateTime& cimTime)
{
    String text = cimTime.toString();
    struct tm tmval;
    if (_formatDateTime(QEL_CSTR(text), &tmval) < 1)
    {
        return 0;
    }
    time_t seconds = mktime(&tmval);
    if (seconds == (time_t)-1)
    {
        throw DateTimeOutOfRangeException(text);
    }
    return seconds;
}

// Microseconds and the UTC offset are ignored: the text is read as local time.
int QEL_Common::_formatDateTime(const char* timeString, struct tm* tmval)
{
    // Nothing to read is refused like an unreadable text: a choice.
    if (timeString == NULL || tmval == NULL)
    {
        return 0;
    }
    char text[26];
    memset(text, 0, sizeof(text));
    strncpy(text, timeString, 25);

    memset(tmval, 0, sizeof(*tmval));
    int year = _numberAt(text, 0, 4);
    if (year == 0)
    {
        return 0;
    }
    if (year < 0)
    {
        return -1;
    }
    tmval->tm_year = year - 1900;
    if (tmval->tm_year < 0)
    {
        return -1;
    }
    tmval->tm_mon = _numberAt(text, 4, 2) - 1;
    if (tmval->tm_mon < 0)
    {
        return -1;
    }
    tmval->tm_mday = _numberAt(text, 6, 2);
    tmval->tm_hour = _numberAt(text, 8, 2);
    tmval->tm_min = _numberAt(text, 10, 2);
    tmval->tm_sec = _numberAt(text, 12, 2);
    tmval->tm_isdst = -1;
    return 1;
}

// UTC gives GMT-0 while getCIMDateTime writes '+' for a zero offset; the
// asymmetry is intended.
String QEL_Common::getTimeZone()
{
    time_t now = time(NULL);
    struct tm local;
    memset(&local, 0, sizeof(local));
    localtime_r(&now, &local);
    long minutes = _localOffsetMinutes(local);
    long hours = (minutes < 0 ? -minutes : minutes) / 60;
    char buffer[32];
    snprintf(buffer, sizeof(buffer), minutes > 0 ? "GMT+%ld" : "GMT-%ld", hours);
    return String(buffer);
}

Uint16 QEL_Common::getPortLPID(Uint64 portWWN)
{
    uint16_t lpid = 0;
    api_getFCPortLPID(portWWN, &lpid);
    return lpid;
}

Uint16 QEL_Common::getPortLPID(String& iscsiName)
{
    char name[224];
    memset(name, 0, sizeof(name));
    strncpy(name, QEL_CSTR(iscsiName), sizeof(name) - 1);
    uint16_t lpid = 0;
    api_getiSCSIPortLPID(name, &lpid);
    return lpid;
}

QEL_PortIDs QEL_Common::getPortIDs(Array<String> lpids)
{
    QEL_PortIDs result;
    result.count = lpids.size();
    // No text, no array: a choice.
    result.portIDs = result.count == 0 ? NULL : new Uint16[result.count]();
    for (Uint32 i = 0; i < result.count; i++)
    {
        uint16_t id = 0;
        api_convertStrLPIDtoPortID(QEL_CSTR(lpids[i]), &id);
        result.portIDs[i] = id;
    }
    return result;
}

String QEL_Common::extractFromInstanceID(const String& instanceID)
{
    static const String prefix("ZEPHRAN:");
    Uint32 pos = instanceID.find(prefix);
    if (pos == PEG_NOT_FOUND)
    {
        return String();
    }
    return instanceID.subString(pos + prefix.size());
}

// Once the IPv4 text is known, an empty IPv6 text stays empty for the life of
// the process; intended. The lock only keeps concurrent first calls apart.
String QEL_Common::getSystemIPAddr(int iptype)
{
    if (iptype != 1 && iptype != 2)
    {
        log_message(2, "QEL_Common, getSystemIPAddr: Invalid IP type parameter!\n");
        return String();
    }
    SystemAddressCache& cache = _addressCache();
    std::lock_guard<std::mutex> guard(cache.lock);
    if (cache.ipv4.size() == 0)
    {
        api_ipaddr_t addr;
        memset(&addr, 0, sizeof(addr));
        if (api_getSystemDualIP(&addr) == 0)
        {
            struct in_addr v4;
            v4.s_addr = addr.ipv4_addr;
            char text4[INET_ADDRSTRLEN];
            memset(text4, 0, sizeof(text4));
            if (inet_ntop(AF_INET, &v4, text4, sizeof(text4)) != NULL)
            {
                cache.ipv4 = String(text4);
            }
            if (addr.dual_flag > 2)
            {
                char text6[128];
                memset(text6, 0, sizeof(text6));
                if (inet_ntop(AF_INET6, addr.ipv6_addr, text6, sizeof(text6)) != NULL)
                {
                    cache.ipv6 = String(text6);
                }
            }
        }
    }
    return iptype == 1 ? cache.ipv4 : cache.ipv6;
}

// len counts the terminator: the text has len - 1 characters. The source
// name and line of the assertion message are kept as the array's tools expect.
void QEL_Common::generate_random_string(char* str, Uint32 len)
{
    if (len == 0 || str == NULL)
    {
        qel_print_no_evt("Assertion failed: %s\n", "len > 0 && str != NULL");
        qel_panic("Assertion point: file: %s, line: %d\n", "../QEL_Common", 5332);
    }
    RandomState& rs = _randomState();
    std::lock_guard<std::mutex> guard(rs.lock);
    if (!rs.seeded)
    {
        memset(&rs.data, 0, sizeof(rs.data));
        memset(rs.state, 0, sizeof(rs.state));
        initstate_r((unsigned int)time(NULL), rs.state, sizeof(rs.state), &rs.data);
        rs.seeded = true;
    }
    const Uint32 alphabetSize = sizeof(RANDOM_ALPHABET) - 1;
    for (Uint32 i = 0; i + 1 < len; i++)
    {
        int32_t draw = 0;
        random_r(&rs.data, &draw);
        str[i] = RANDOM_ALPHABET[(Uint32)draw % alphabetSize];
    }
    str[len - 1] = '\0';
}

Uint32 QEL_Common::getInstanceThreshold(Uint32 th_scale)
{
    struct rlimit limit;
    limit.rlim_cur = RLIM_INFINITY;
    limit.rlim_max = RLIM_INFINITY;
    getrlimit(RLIMIT_AS, &limit);
    Uint64 megabytes = (Uint64)limit.rlim_cur / 1000000;
    log_message(
        4, "soft limit = %u, maxInstScale factor = %u\n", (unsigned)megabytes, (unsigned)th_scale);
    return (Uint32)(megabytes * th_scale);
}

// A missing class name still yields a leading colon before the method;
// intended, the audit log readers expect it.
int QEL_Common::setEventParam(
    api_evtparam_t* eventp, const char* className, const char* method, const char* op,
    const char* user, const char* addr)
{
    if (_noRecord(
            eventp,
            "setEventParam: Unable to log event data. The control block pointer (eventp) is null.\n"))
    {
        return 1;
    }
    eventp->inst_param[0] = '\0';

    eventp->method[0] = '\0';
    if (className != NULL)
    {
        strncat(eventp->method, className, sizeof(eventp->method) - 2);
        strcat(eventp->method, ":");
    }
    else if (method != NULL)
    {
        strcat(eventp->method, ":");
    }
    if (method != NULL)
    {
        size_t used = strlen(eventp->method);
        strncat(eventp->method, method, sizeof(eventp->method) - 1 - used);
    }

    _copyField(eventp->inst_op, sizeof(eventp->inst_op), op);
    _copyField(eventp->user, sizeof(eventp->user), user);
    _copyField(eventp->addr, sizeof(eventp->addr), addr);
    return 0;
}

// A null record is refused with the six-argument form's trace and result
// instead of being written through.
int QEL_Common::setEventParam(
    api_evtparam_t* eventp, const char* className, const char* method, const char* op,
    const char* user, const char* addr, const char* evtText)
{
    int rc = setEventParam(eventp, className, method, op, user, addr);
    if (rc != 0)
    {
        return rc;
    }
    _copyField(eventp->inst_param, sizeof(eventp->inst_param), evtText);
    return 0;
}

int QEL_Common::setEventOp(api_evtparam_t* eventp, const char* op)
{
    if (_noRecord(
            eventp,
            "setEventOp: Unable to log event data. The control block pointer (eventp) is null.\n"))
    {
        return 1;
    }
    _copyField(eventp->inst_op, sizeof(eventp->inst_op), op);
    return 0;
}

int QEL_Common::getNodePairIndex(int nodePosition)
{
    if (nodePosition < 0 || nodePosition > 7)
    {
        return -1;
    }
    return nodePosition / 2;
}

int QEL_Common::returnRAIDType(Uint16 packageRedundancy, Uint16 dataRedundancy)
{
    if (packageRedundancy == 1 && dataRedundancy == 1)
    {
        return 0;
    }
    if (packageRedundancy >= 2 && dataRedundancy >= 2)
    {
        return 10;
    }
    if (packageRedundancy == 2 && dataRedundancy == 1)
    {
        return 50;
    }
    if (packageRedundancy >= 3 && dataRedundancy == 1)
    {
        return 60;
    }
    return 99;
}

Boolean QEL_Common::isSameRAID(
    Uint16 dataRedundancy1, Uint16 packageRedundancy1, Uint16 dataRedundancy2,
    Uint16 packageRedundancy2)
{
    return returnRAIDType(packageRedundancy1, dataRedundancy1) ==
           returnRAIDType(packageRedundancy2, dataRedundancy2);
}

Boolean QEL_Common::isSameRAID(Uint16 raidType, Uint16 dataRedundancy, Uint16 packageRedundancy)
{
    return returnRAIDType(packageRedundancy, dataRedundancy) == raidType;
}

String QEL_Common::getRaidTypeStr(int raidType)
{
    switch (raidType)
    {
        case 0:
            return String("RAID0");
        case 10:
            return String("RAID10");
        case 50:
            return String("RAID50");
        case 60:
            return String("RAID60");
        default:
            return String();
    }
}

PEGASUS_NAMESPACE_END
