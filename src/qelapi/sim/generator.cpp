// Large arrays for benchmarks and load tests (qelsim::generateArray).
#include "qelsim_control.h"

#include "json_codec.h"
#include "lpid.h"

#include <random>

namespace qelsim
{

namespace
{

constexpr unsigned kPositions = (kMaxNode + 1) * (kMaxSlot + 1) * (kMaxPort + 1);

Position nthPosition(unsigned i)
{
    return Position{
        i / ((kMaxSlot + 1) * (kMaxPort + 1)), (i / (kMaxPort + 1)) % (kMaxSlot + 1),
        i % (kMaxPort + 1)};
}

Sfp makeSfp(std::mt19937& rng, unsigned i)
{
    Sfp s;
    s.manufacturer = "AVALON OPTICS";
    s.partNumber = "AO-SFP8-SW";
    s.serialNumber = "GEN" + std::to_string(100000 + i);
    s.revision = "A";
    s.description = "8Gb Short Wave";
    s.speed = 8500;
    s.disableTxPin = 3;
    s.lossRxPin = 8;
    s.faultTxPin = 2;
    s.state = rng() % 50 == 0 ? 2 : 1;
    s.hasDdm = rng() % 10 != 0;
    static const char* kUnits[] = {"C", "V", "mA", "uW", "uW"};
    for (int t = 0; t < 5; ++t)
    {
        Ddm& d = s.ddm[static_cast<size_t>(t)];
        d.monitorType = t;
        d.unit = kUnits[t];
        d.value = static_cast<int32_t>(rng() % 60) - (t == 0 ? 5 : 0);
        d.lowAlarm = -10;
        d.highAlarm = 90;
        d.lowWarn = -5;
        d.highWarn = 80;
    }
    return s;
}

}  // namespace

Result generateArray(const GenerateOptions& o, std::string* json)
{
    if (!json)
        return Result{false, "no output text given"};
    if (static_cast<uint64_t>(o.fcPorts) + o.iscsiPorts > kPositions)
        return Result{
            false, "at most " + std::to_string(kPositions) + " ports fit in the array (asked for " +
                       std::to_string(static_cast<uint64_t>(o.fcPorts) + o.iscsiPorts) + ")"};
    std::mt19937 rng(o.seed);
    Model m;
    m.system.name = "GEN-ARRAY-" + std::to_string(o.seed);
    m.system.hostName = "gen-array.example.net";
    m.system.id = 100000 + o.seed;
    m.system.type = 1;
    m.system.ipv4 = "192.0.2.10";
    m.system.ipv6 = "2001:db8::10";
    m.system.cages = {"cage0", "cage1"};
    m.users = {
        User{"admin", Role::Super, true, {}}, User{"operator", Role::Edit, true, {}},
        User{"monitor", Role::Browse, true, {}}};
    static const api_port_status_t kStates[] = {PORT_OK, PORT_OK, PORT_OK,      PORT_OK,
                                                PORT_OK, PORT_OK, PORT_OFFLINE, PORT_LOSS_SYNC};
    static const int32_t kRates[] = {4, 8, 16};
    for (unsigned i = 0; i < o.fcPorts; ++i)
    {
        FcPort p;
        p.pos = nthPosition(i);
        p.wwn = 0x2000000000000000ull + (static_cast<uint64_t>(o.seed) << 32) + i + 1;
        p.status = kStates[rng() % 8];
        p.maxRate = kRates[rng() % 3];
        p.currentRate = p.status == PORT_OK ? p.maxRate : 0;
        p.configuredRate = rng() % 2 ? 3 : p.maxRate;
        p.fcSystemName = p.fcalSystemName = "node" + std::to_string(p.pos.node);
        p.fcNodeWwn = p.fcalNodeWwn = 0x2FF7000000000000ull + p.pos.node;
        p.fullDuplex = true;
        p.topology = 2;
        p.portKind = 1 + static_cast<int32_t>(rng() % 3);
        p.configuration = 1;
        p.mode = 1 + static_cast<int32_t>(rng() % 2);
        p.connectionMode = 2;
        p.modeChangeAllowed = true;
        p.deviceTypeConnected = 1;
        p.connectionType = 1 + static_cast<int32_t>(rng() % 4);
        p.class2 = 1;
        p.vcn = 2;
        p.interruptCoalescing = 1;
        if (p.status == PORT_OK)
            p.connectedTo =
                "switch-" + std::to_string(p.pos.node) + "-" + std::to_string(p.pos.slot);
        if (rng() % 20 != 0)
            p.sfp = makeSfp(rng, i);
        for (unsigned k = 0; k < o.lesbPerPort; ++k)
        {
            Lesb l;
            l.sampleTime = 1700000000ull + i + k;
            l.linkFailures = rng() % 5;
            l.lossOfSync = rng() % 20;
            l.lossOfSignal = rng() % 3;
            l.crcErrors = rng() % 100;
            p.lesb.push_back(l);
        }
        m.fcPorts.push_back(std::move(p));
    }
    for (unsigned i = 0; i < o.iscsiPorts; ++i)
    {
        IscsiPort p;
        p.pos = nthPosition(o.fcPorts + i);
        p.iscsiName = "iqn.2000-05.net.example:gen." + std::to_string(i);
        p.status = PORT_OK;
        p.ipAddr = "198.51.100." + std::to_string(1 + i % 250);
        if (rng() % 10 != 0)
            p.sfp = makeSfp(rng, o.fcPorts + i);
        m.iscsiPorts.push_back(std::move(p));
    }
    for (unsigned i = 0; i < o.volumes; ++i)
        m.volumes.push_back(Volume{
            "vv" + std::to_string(i), 0x6000000000000000ull + i + 1,
            static_cast<int32_t>(1 + rng() % 4), i + 1, 1024ull * (1 + rng() % 64)});
    *json = encodeModel(m);
    return Result{};
}

}  // namespace qelsim
