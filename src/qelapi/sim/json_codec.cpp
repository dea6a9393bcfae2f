#include "json_codec.h"

#include "calls.h"
#include "ipaddr.h"
#include "lpid.h"

#include <nlohmann/json.hpp>

#include <sys/socket.h>

#include <cstdio>
#include <initializer_list>
#include <limits>
#include <set>
#include <unordered_map>
#include <vector>

namespace qelsim
{

using Json = nlohmann::ordered_json;

std::string DecodeResult::message(const std::string& origin) const
{
    return origin + ": " + where + ": " + what;
}

std::string contentHash(const std::string& text)
{
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : text)
    {
        h ^= c;
        h *= 1099511628211ull;
    }
    return wwnText(h);
}

namespace
{

// Thrown inside the reader, turned into a DecodeResult at the top.
struct DecodeError
{
    std::string where;
    std::string what;
};

[[noreturn]] void fail(const std::string& where, const std::string& what)
{
    throw DecodeError{where.empty() ? std::string("/") : where, what};
}

std::string escapeToken(const std::string& key)
{
    std::string out;
    for (char c : key)
    {
        if (c == '~')
            out += "~0";
        else if (c == '/')
            out += "~1";
        else
            out += c;
    }
    return out;
}

const char* typeName(const Json& v)
{
    switch (v.type())
    {
        case Json::value_t::null:
            return "null";
        case Json::value_t::boolean:
            return "a boolean";
        case Json::value_t::string:
            return "a string";
        case Json::value_t::array:
            return "an array";
        case Json::value_t::object:
            return "an object";
        case Json::value_t::number_float:
            return "a fractional number";
        default:
            return "a number";
    }
}

[[noreturn]] void wrongType(const std::string& where, const char* expected, const Json& v)
{
    fail(where, std::string("expected ") + expected + ", found " + typeName(v));
}

// One JSON object being read: refuses fields it does not know, reads typed values.
class Obj
{
public:
    Obj(const Json& j, std::string where, std::initializer_list<const char*> allowed)
        : _j(j), _where(std::move(where))
    {
        if (!j.is_object())
            wrongType(_where, "an object", j);
        for (auto it = j.begin(); it != j.end(); ++it)
        {
            bool known = false;
            for (const char* a : allowed)
                known = known || it.key() == a;
            if (!known)
                fail(at(it.key()), "unknown field \"" + it.key() + "\"");
        }
    }

    std::string at(const std::string& key) const { return _where + "/" + escapeToken(key); }
    const std::string& where() const { return _where; }
    bool has(const char* key) const { return _j.contains(key); }
    const Json* get(const char* key) const
    {
        auto it = _j.find(key);
        return it == _j.end() ? nullptr : &*it;
    }
    const Json& need(const char* key) const
    {
        const Json* v = get(key);
        if (!v)
            fail(_where, std::string("missing field \"") + key + "\"");
        return *v;
    }

    std::string
    str(const char* key, size_t maxLen, bool required, const std::string& def = "") const
    {
        const Json* v = required ? &need(key) : get(key);
        if (!v)
            return def;
        return text(*v, at(key), maxLen);
    }
    std::optional<std::string> nullableStr(const char* key, size_t maxLen) const
    {
        const Json* v = get(key);
        if (!v || v->is_null())
            return std::nullopt;
        return text(*v, at(key), maxLen);
    }
    int64_t integer(const char* key, int64_t lo, int64_t hi, bool required, int64_t def = 0) const
    {
        const Json* v = required ? &need(key) : get(key);
        if (!v)
            return def;
        return ranged(*v, at(key), lo, hi);
    }
    int32_t i32(const char* key, bool required = false, int32_t def = 0) const
    {
        return static_cast<int32_t>(integer(
            key, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), required,
            def));
    }
    uint32_t u32(const char* key, bool required = false, uint32_t def = 0) const
    {
        return static_cast<uint32_t>(
            integer(key, 0, std::numeric_limits<uint32_t>::max(), required, def));
    }
    uint64_t u64(const char* key, bool required = false, uint64_t def = 0) const
    {
        const Json* v = required ? &need(key) : get(key);
        if (!v)
            return def;
        if (!v->is_number_integer())
            wrongType(at(key), "an integer", *v);
        if (v->is_number_unsigned())
            return v->get<uint64_t>();
        int64_t s = v->get<int64_t>();
        if (s < 0)
            fail(at(key), "must not be negative");
        return static_cast<uint64_t>(s);
    }
    bool boolean(const char* key, bool def) const
    {
        const Json* v = get(key);
        if (!v)
            return def;
        if (!v->is_boolean())
            wrongType(at(key), "a boolean", *v);
        return v->get<bool>();
    }
    uint64_t wwn(const char* key, bool required, uint64_t def = 0) const
    {
        const Json* v = required ? &need(key) : get(key);
        if (!v)
            return def;
        if (!v->is_string())
            wrongType(at(key), "a WWN text of 16 hexadecimal digits", *v);
        auto w = parseWwn(v->get<std::string>());
        if (!w)
            fail(
                at(key), "\"" + v->get<std::string>() + "\" is not a WWN of 16 hexadecimal digits");
        return *w;
    }

    static std::string text(const Json& v, const std::string& where, size_t maxLen)
    {
        if (!v.is_string())
            wrongType(where, "a string", v);
        std::string s = v.get<std::string>();
        if (s.size() > maxLen)
            fail(
                where, "text of " + std::to_string(s.size()) + " characters is longer than " +
                           std::to_string(maxLen));
        if (s.find('\0') != std::string::npos)
            fail(where, "text contains a NUL character");
        return s;
    }
    static int64_t ranged(const Json& v, const std::string& where, int64_t lo, int64_t hi)
    {
        if (!v.is_number_integer())
            wrongType(where, "an integer", v);
        if (v.is_number_unsigned() && v.get<uint64_t>() > static_cast<uint64_t>(hi))
            fail(
                where, "value " + v.dump() + " is out of range " + std::to_string(lo) + ".." +
                           std::to_string(hi));
        int64_t x = v.get<int64_t>();
        if (x < lo || x > hi)
            fail(
                where, "value " + v.dump() + " is out of range " + std::to_string(lo) + ".." +
                           std::to_string(hi));
        return x;
    }

private:
    const Json& _j;
    std::string _where;
};

const Json& arrayAt(const Obj& o, const char* key, const Json& empty)
{
    const Json* v = o.get(key);
    if (!v)
        return empty;
    if (!v->is_array())
        wrongType(o.at(key), "an array", *v);
    return *v;
}

std::string resolvePath(const std::string& p, const std::string& baseDir)
{
    if (p.empty() || p[0] == '/' || baseDir.empty())
        return p;
    return baseDir + "/" + p;
}

std::string ipField(const Obj& o, const char* key, bool required, int family)
{
    std::string s = o.str(key, 45, required);
    if (s.empty())
    {
        if (required)
            fail(o.at(key), "address must not be empty");
        return s;
    }
    auto ip = canonicalIp(s);
    if (!ip || (family && ip->family != family))
        fail(
            o.at(key), "\"" + s + "\" is not a valid " +
                           (family == AF_INET    ? "IPv4"
                            : family == AF_INET6 ? "IPv6"
                                                 : "IP") +
                           " address");
    return ip->text;
}

api_port_status_t statusField(const Obj& o, const char* key)
{
    std::string s = o.str(key, 32, true);
    auto st = statusFromName(s);
    if (!st)
        fail(o.at(key), "unknown port state \"" + s + "\" (expected a name such as PORT_OK)");
    return *st;
}

Position positionField(const Obj& o, const char* key)
{
    std::string s = o.str(key, 31, true);
    auto p = parsePosition(s);
    if (!p)
        fail(
            o.at(key), "\"" + s + "\" is not a position node:slot:port (node 0.." +
                           std::to_string(kMaxNode) + ", slot 0.." + std::to_string(kMaxSlot) +
                           ", port 0.." + std::to_string(kMaxPort) + ")");
    return *p;
}

Ddm decodeDdm(const Json& j, const std::string& where)
{
    Obj o(
        j, where,
        {"monitorType", "sensorFlags", "unit", "value", "lowAlarm", "highAlarm", "lowWarn",
         "highWarn", "sampleCount"});
    Ddm d;
    d.monitorType = o.i32("monitorType", true);
    d.sensorFlags = o.u32("sensorFlags");
    d.unit = o.str("unit", 31, false);
    d.value = o.i32("value");
    d.lowAlarm = o.i32("lowAlarm");
    d.highAlarm = o.i32("highAlarm");
    d.lowWarn = o.i32("lowWarn");
    d.highWarn = o.i32("highWarn");
    d.sampleCount = o.u32("sampleCount");
    return d;
}

std::optional<Sfp> decodeSfp(const Obj& parent, const char* key)
{
    const Json* j = parent.get(key);
    if (!j || j->is_null())
        return std::nullopt;
    Obj o(
        *j, parent.at(key),
        {"manufacturer", "partNumber", "serialNumber", "revision", "description", "speed",
         "disableTxPin", "lossRxPin", "faultTxPin", "unqualified", "rxPowerLow", "state", "ddm"});
    Sfp s;
    s.manufacturer = o.str("manufacturer", 31, false);
    s.partNumber = o.str("partNumber", 31, false);
    s.serialNumber = o.str("serialNumber", 31, true);
    s.revision = o.str("revision", 31, false);
    s.description = o.str("description", 63, false);
    s.speed = o.u64("speed");
    s.disableTxPin = o.u32("disableTxPin");
    s.lossRxPin = o.u32("lossRxPin");
    s.faultTxPin = o.u32("faultTxPin");
    s.unqualified = o.boolean("unqualified", false);
    s.rxPowerLow = o.boolean("rxPowerLow", false);
    s.state = o.u32("state", false, 1);
    const Json* ddm = o.get("ddm");
    if (ddm && !ddm->is_null())
    {
        if (!ddm->is_array())
            wrongType(o.at("ddm"), "an array of 5 entries or null", *ddm);
        if (ddm->size() != 5)
            fail(o.at("ddm"), "expected exactly 5 entries, found " + std::to_string(ddm->size()));
        s.hasDdm = true;
        for (size_t i = 0; i < 5; ++i)
            s.ddm[i] = decodeDdm((*ddm)[i], o.at("ddm") + "/" + std::to_string(i));
    }
    return s;
}

Lesb decodeLesb(const Json& j, const std::string& where)
{
    Obj o(
        j, where,
        {"sampleTime", "portId", "linkFailures", "lossOfSync", "lossOfSignal", "primitiveSeqErrors",
         "invalidTxWords", "crcErrors"});
    Lesb l;
    l.sampleTime = o.u64("sampleTime");
    if (o.has("portId"))
        l.portId = static_cast<uint16_t>(o.integer("portId", 0, 65535, true));
    l.linkFailures = o.u64("linkFailures");
    l.lossOfSync = o.u64("lossOfSync");
    l.lossOfSignal = o.u64("lossOfSignal");
    l.primitiveSeqErrors = o.u64("primitiveSeqErrors");
    l.invalidTxWords = o.u64("invalidTxWords");
    l.crcErrors = o.u64("crcErrors");
    return l;
}

FcPort decodeFcPort(const Json& j, const std::string& where)
{
    Obj o(
        j, where,
        {"position",
         "wwn",
         "status",
         "currentRate",
         "fcSystemName",
         "fcNodeWwn",
         "fcalSystemName",
         "fcalNodeWwn",
         "fullDuplex",
         "maxRate",
         "configuredRate",
         "topology",
         "portKind",
         "configuration",
         "mode",
         "connectionMode",
         "modeChangeAllowed",
         "deviceTypeConnected",
         "connectionType",
         "class2",
         "vcn",
         "interruptCoalescing",
         "connectedTo",
         "sfp",
         "lesb"});
    FcPort p;
    p.pos = positionField(o, "position");
    p.wwn = o.wwn("wwn", true);
    p.status = statusField(o, "status");
    p.currentRate = o.i32("currentRate");
    p.fcSystemName = o.str("fcSystemName", 63, false);
    p.fcNodeWwn = o.wwn("fcNodeWwn", false);
    p.fcalSystemName = o.str("fcalSystemName", 63, false);
    p.fcalNodeWwn = o.wwn("fcalNodeWwn", false);
    p.fullDuplex = o.boolean("fullDuplex", false);
    p.maxRate = o.i32("maxRate");
    p.configuredRate = o.i32("configuredRate");
    p.topology = o.i32("topology");
    p.portKind = o.i32("portKind");
    p.configuration = o.i32("configuration");
    p.mode = o.i32("mode");
    p.connectionMode = o.i32("connectionMode");
    p.modeChangeAllowed = o.boolean("modeChangeAllowed", false);
    p.deviceTypeConnected = o.i32("deviceTypeConnected");
    p.connectionType = o.i32("connectionType");
    p.class2 = o.i32("class2");
    p.vcn = o.i32("vcn");
    p.interruptCoalescing = o.i32("interruptCoalescing");
    p.connectedTo = o.nullableStr("connectedTo", 255);
    p.sfp = decodeSfp(o, "sfp");
    static const Json kEmpty = Json::array();
    const Json& lesb = arrayAt(o, "lesb", kEmpty);
    for (size_t i = 0; i < lesb.size(); ++i)
        p.lesb.push_back(decodeLesb(lesb[i], o.at("lesb") + "/" + std::to_string(i)));
    return p;
}

IscsiPort decodeIscsiPort(const Json& j, const std::string& where)
{
    Obj o(j, where, {"iscsiName", "position", "status", "ipAddr", "sfp"});
    IscsiPort p;
    p.iscsiName = o.str("iscsiName", 223, true);
    if (p.iscsiName.empty())
        fail(o.at("iscsiName"), "iSCSI name must not be empty");
    p.pos = positionField(o, "position");
    p.status = statusField(o, "status");
    p.ipAddr = ipField(o, "ipAddr", false, 0);
    p.sfp = decodeSfp(o, "sfp");
    return p;
}

SystemIdentity decodeSystem(const Obj& top)
{
    Obj o(
        top.need("system"), top.at("system"),
        {"name", "hostName", "id", "type", "quadPort", "ipv4", "ipv6", "cages"});
    SystemIdentity s;
    s.name = o.str("name", 63, true);
    if (s.name.empty())
        fail(o.at("name"), "system name must not be empty");
    s.hostName = o.str("hostName", 255, true);
    s.id = o.u32("id");
    s.type = o.i32("type");
    s.quadPort = o.boolean("quadPort", false);
    s.ipv4 = ipField(o, "ipv4", true, AF_INET);
    const Json* v6 = o.get("ipv6");
    if (v6 && !v6->is_null())
        s.ipv6 = ipField(o, "ipv6", false, AF_INET6);
    static const Json kEmpty = Json::array();
    const Json& cages = arrayAt(o, "cages", kEmpty);
    std::set<std::string> seen;
    for (size_t i = 0; i < cages.size(); ++i)
    {
        std::string where = o.at("cages") + "/" + std::to_string(i);
        std::string c = Obj::text(cages[i], where, 31);
        if (c.empty())
            fail(where, "cage name must not be empty");
        if (!seen.insert(c).second)
            fail(where, "duplicate cage \"" + c + "\"");
        s.cages.push_back(c);
    }
    return s;
}

void decodeLog(const Obj& top, const std::string& baseDir, Model& m)
{
    const Json* j = top.get("log");
    if (!j)
        return;
    Obj o(*j, top.at("log"), {"level", "destination"});
    m.log.level = static_cast<int>(o.integer("level", 0, 4, false, API_LOG_FAILURE));
    std::string dest = o.str("destination", 4095, false, "stderr");
    if (dest.empty())
        fail(o.at("destination"), "destination must be \"stderr\" or a file path");
    m.log.file = dest == "stderr" ? std::string() : resolvePath(dest, baseDir);
}

void decodeAudit(const Obj& top, const std::string& baseDir, Model& m)
{
    const Json* j = top.get("audit");
    if (!j)
        return;
    Obj o(*j, top.at("audit"), {"file"});
    std::string f = o.str("file", 4095, true);
    if (f.empty())
        fail(o.at("file"), "audit file path must not be empty");
    m.auditFile = resolvePath(f, baseDir);
}

void decodeUsers(const Obj& top, Model& m)
{
    static const Json kEmpty = Json::array();
    const Json& users = arrayAt(top, "users", kEmpty);
    for (size_t i = 0; i < users.size(); ++i)
    {
        Obj o(
            users[i], top.at("users") + "/" + std::to_string(i),
            {"name", "role", "enabled", "addresses"});
        User u;
        u.name = o.str("name", 31, true);
        if (u.name.empty())
            fail(o.at("name"), "user name must not be empty");
        if (m.user(u.name))
            fail(o.at("name"), "duplicate user \"" + u.name + "\"");
        std::string role = o.str("role", 16, true);
        auto r = roleFromName(role);
        if (!r)
            fail(o.at("role"), "unknown role \"" + role + "\" (expected browse, edit or super)");
        u.role = *r;
        u.enabled = o.boolean("enabled", true);
        const Json& addrs = arrayAt(o, "addresses", kEmpty);
        for (size_t k = 0; k < addrs.size(); ++k)
        {
            std::string where = o.at("addresses") + "/" + std::to_string(k);
            std::string a = Obj::text(addrs[k], where, 45);
            auto ip = canonicalIp(a);
            if (!ip)
                fail(where, "\"" + a + "\" is not a valid IP address");
            u.addresses.push_back(ip->text);
        }
        m.users.push_back(std::move(u));
    }
}

void decodeVolumes(const Obj& top, Model& m)
{
    static const Json kEmpty = Json::array();
    const Json& vols = arrayAt(top, "volumes", kEmpty);
    std::unordered_map<uint64_t, size_t> seen;
    for (size_t i = 0; i < vols.size(); ++i)
    {
        Obj o(
            vols[i], top.at("volumes") + "/" + std::to_string(i),
            {"name", "wwn", "kind", "id", "sizeMiB"});
        Volume v;
        v.name = o.str("name", 31, true);
        v.wwn = o.wwn("wwn", true);
        if (v.wwn == API_ALL_PORTS)
            fail(o.at("wwn"), "the WWN FFFFFFFFFFFFFFF6 is reserved as the selector of all");
        auto [it, fresh] = seen.emplace(v.wwn, i);
        if (!fresh)
            fail(
                o.at("wwn"), "duplicate WWN " + wwnText(v.wwn) + " (also at /volumes/" +
                                 std::to_string(it->second) + "/wwn)");
        v.kind = o.i32("kind", true);
        v.id = o.u32("id");
        v.sizeMiB = o.u64("sizeMiB");
        m.volumes.push_back(std::move(v));
    }
}

void decodeFaults(const Obj& top, Model& m)
{
    static const Json kEmpty = Json::array();
    const Json& faults = arrayAt(top, "faults", kEmpty);
    for (size_t i = 0; i < faults.size(); ++i)
    {
        Obj o(faults[i], top.at("faults") + "/" + std::to_string(i), {"call", "code", "times"});
        Fault f;
        f.call = o.str("call", 64, true);
        const CallInfo* ci = findCall(f.call);
        if (!ci || !ci->faultable)
            fail(o.at("call"), "\"" + f.call + "\" is not a call that can be made to fail");
        f.code = static_cast<int>(o.i32("code", true));
        if (f.code == 0 && !ci->zeroCodeFault)
            fail(o.at("code"), "code 0 is not a failure for " + f.call);
        if (o.has("times"))
            f.times = o.integer("times", 1, std::numeric_limits<int64_t>::max(), true);
        m.faults.push_back(std::move(f));
    }
}

// Ports: WWNs unique among FC ports, positions unique among all ports.
void decodePorts(const Obj& top, Model& m)
{
    static const Json kEmpty = Json::array();
    std::unordered_map<uint64_t, size_t> wwns;
    std::unordered_map<uint16_t, std::string> positions;
    auto claimPosition = [&](const Position& p, const std::string& where)
    {
        auto [it, fresh] = positions.emplace(lpidOf(p), where);
        if (!fresh)
            fail(where, "duplicate position " + positionText(p) + " (also at " + it->second + ")");
    };
    const Json& fc = arrayAt(top, "fcPorts", kEmpty);
    for (size_t i = 0; i < fc.size(); ++i)
    {
        std::string where = top.at("fcPorts") + "/" + std::to_string(i);
        FcPort p = decodeFcPort(fc[i], where);
        if (p.wwn == API_ALL_PORTS)
            fail(
                where + "/wwn",
                "the WWN FFFFFFFFFFFFFFF6 is reserved as the selector of all ports");
        auto [it, fresh] = wwns.emplace(p.wwn, i);
        if (!fresh)
            fail(
                where + "/wwn", "duplicate WWN " + wwnText(p.wwn) + " (also at /fcPorts/" +
                                    std::to_string(it->second) + "/wwn)");
        claimPosition(p.pos, where + "/position");
        m.fcPorts.push_back(std::move(p));
    }
    const Json& is = arrayAt(top, "iscsiPorts", kEmpty);
    std::set<std::string> names;
    for (size_t i = 0; i < is.size(); ++i)
    {
        std::string where = top.at("iscsiPorts") + "/" + std::to_string(i);
        IscsiPort p = decodeIscsiPort(is[i], where);
        if (!names.insert(p.iscsiName).second)
            fail(where + "/iscsiName", "duplicate iSCSI name \"" + p.iscsiName + "\"");
        claimPosition(p.pos, where + "/position");
        m.iscsiPorts.push_back(std::move(p));
    }
}

void decodeOrigin(const Obj& top, Model& m)
{
    const Json* j = top.get("origin");
    if (!j)
        return;
    Obj o(*j, top.at("origin"), {"path", "hash"});
    m.origin.path = o.str("path", 4095, false);
    m.origin.hash = o.str("hash", 64, false);
}

// Refuses an object that names a field twice, which the parser would otherwise
// settle silently; the JSON pointer is tracked along the parse events.
class DuplicateKeyCheck
{
public:
    bool operator()(int, Json::parse_event_t ev, Json& parsed)
    {
        switch (ev)
        {
            case Json::parse_event_t::object_start:
                _frames.push_back(Frame{false, 0, {}, {}});
                break;
            case Json::parse_event_t::array_start:
                _frames.push_back(Frame{true, 0, {}, {}});
                break;
            case Json::parse_event_t::key:
            {
                std::string key = parsed.get<std::string>();
                if (!_frames.back().keys.insert(key).second)
                    fail(
                        pointer() + "/" + escapeToken(key), "field \"" + key + "\" is given twice");
                _frames.back().key = key;
                break;
            }
            case Json::parse_event_t::object_end:
            case Json::parse_event_t::array_end:
                _frames.pop_back();
                completed();
                break;
            case Json::parse_event_t::value:
                completed();
                break;
        }
        return true;
    }

private:
    struct Frame
    {
        bool array;
        size_t index;
        std::set<std::string> keys;
        std::string key;
    };
    void completed()
    {
        if (!_frames.empty() && _frames.back().array)
            _frames.back().index++;
    }
    // The pointer of the innermost open object.
    std::string pointer() const
    {
        std::string p;
        for (size_t i = 0; i + 1 < _frames.size(); ++i)
            p += "/" + (_frames[i].array ? std::to_string(_frames[i].index)
                                         : escapeToken(_frames[i].key));
        return p;
    }
    std::vector<Frame> _frames;
};

std::string lineAndColumn(const std::string& text, size_t byte)
{
    size_t line = 1, col = 1;
    for (size_t i = 0; i + 1 < byte && i < text.size(); ++i)
    {
        if (text[i] == '\n')
        {
            ++line;
            col = 1;
        }
        else
        {
            ++col;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(col);
}

}  // namespace

DecodeResult decodeModel(const std::string& text, const std::string& baseDir)
{
    DecodeResult r;
    Json doc;
    try
    {
        doc = Json::parse(text, DuplicateKeyCheck());
    }
    catch (const DecodeError& e)
    {
        r.where = e.where;
        r.what = e.what;
        return r;
    }
    catch (const nlohmann::json::parse_error& e)
    {
        r.where = lineAndColumn(text, e.byte);
        std::string what = e.what();
        // nlohmann prefixes its own location; keep only the description.
        auto pos = what.find(": syntax error");
        r.what = pos == std::string::npos ? what : "syntax error" + what.substr(pos + 14);
        if (text.find_first_not_of(" \t\r\n") == std::string::npos)
            r.what = "the file is empty";
        return r;
    }
    try
    {
        Obj top(
            doc, "",
            {"system", "log", "audit", "users", "fcPorts", "iscsiPorts", "volumes", "faults",
             "origin"});
        r.model.system = decodeSystem(top);
        decodeLog(top, baseDir, r.model);
        decodeAudit(top, baseDir, r.model);
        decodeUsers(top, r.model);
        decodePorts(top, r.model);
        decodeVolumes(top, r.model);
        decodeFaults(top, r.model);
        decodeOrigin(top, r.model);
        r.model.reindex();
        r.ok = true;
    }
    catch (const DecodeError& e)
    {
        r.where = e.where;
        r.what = e.what;
        r.model = Model{};
    }
    return r;
}

}  // namespace qelsim
