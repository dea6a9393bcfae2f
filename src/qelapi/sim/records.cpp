#include "records.h"

#include "lpid.h"

#include <cstdlib>
#include <cstring>

namespace qelsim
{

void copyText(char* dst, size_t size, const std::string& src)
{
    size_t n = src.size() < size - 1 ? src.size() : size - 1;
    std::memcpy(dst, src.data(), n);
    dst[n] = '\0';
}

void fillSfp(const Sfp& s, api_sfp_t* out)
{
    std::memset(out, 0, sizeof *out);
    out->presentFlags = API_SFP_PRESENT;
    copyText(out->manufacturer, sizeof out->manufacturer, s.manufacturer);
    copyText(out->partNumber, sizeof out->partNumber, s.partNumber);
    copyText(out->serialNumber, sizeof out->serialNumber, s.serialNumber);
    copyText(out->revision, sizeof out->revision, s.revision);
    copyText(out->description, sizeof out->description, s.description);
    out->speed = s.speed;
    out->disableTxPin = s.disableTxPin;
    out->lossRxPin = s.lossRxPin;
    out->faultTxPin = s.faultTxPin;
    out->qualityFlags =
        (s.unqualified ? API_SFP_UNQUALIFIED : 0u) | (s.rxPowerLow ? API_SFP_RX_POWER_LOW : 0u);
    out->state = s.state;
    if (!s.hasDdm)
        return;  // the DDM entries stay zeroed
    out->ddmFlags = API_SFP_DDM_AVAILABLE;
    for (size_t i = 0; i < 5; ++i)
    {
        const Ddm& d = s.ddm[i];
        api_ddm_t& o = out->ddm[i];
        o.monitorType = d.monitorType;
        o.sensorFlags = d.sensorFlags;
        copyText(o.unit, sizeof o.unit, d.unit);
        o.value = d.value;
        o.lowAlarm = d.lowAlarm;
        o.highAlarm = d.highAlarm;
        o.lowWarn = d.lowWarn;
        o.highWarn = d.highWarn;
        o.sampleCount = d.sampleCount;
    }
}

namespace
{

void fillFcPort(const FcPort& p, int detail, bool withSfp, api_FCPort_t* out)
{
    formatPosition(p.pos, out->position, sizeof out->position);
    out->portStatus = p.status;
    formatWwn(p.wwn, out->wwnText);
    out->portWwn = p.wwn;
    out->currentRate = p.currentRate;
    copyText(out->fcSystemName, sizeof out->fcSystemName, p.fcSystemName);
    out->fcNodeWwn = p.fcNodeWwn;
    copyText(out->fcalSystemName, sizeof out->fcalSystemName, p.fcalSystemName);
    out->fcalNodeWwn = p.fcalNodeWwn;
    out->fullDuplex = p.fullDuplex ? 1 : 0;
    out->maxRate = p.maxRate;
    out->configuredRate = p.configuredRate;
    out->portId = lpidOf(p.pos);
    if (detail >= 3)
    {
        out->topology = p.topology;
        out->portKind = p.portKind;
        out->configuration = p.configuration;
        out->mode = p.mode;
        out->connectionMode = p.connectionMode;
        out->modeChangeAllowed = p.modeChangeAllowed ? 1 : 0;
        out->deviceTypeConnected = p.deviceTypeConnected;
        out->connectionType = p.connectionType;
        out->class2 = p.class2;
        out->vcn = p.vcn;
        out->interruptCoalescing = p.interruptCoalescing;
    }
    if (withSfp && p.sfp)
        fillSfp(*p.sfp, &out->sfp);
}

}  // namespace

api_FCPort_t*
makeFcPortArray(const std::vector<const FcPort*>& ports, int detail, bool withSfp, bool* nomem)
{
    *nomem = false;
    if (ports.empty())
        return nullptr;
    size_t pool = 0;
    if (detail >= 3)
        for (const FcPort* p : ports)
            if (p->connectedTo)
                pool += p->connectedTo->size() + 1;
    const size_t recordBytes = ports.size() * sizeof(api_FCPort_t);
    // Each record is zeroed just before it is filled, while it is in the cache: zeroing the
    // whole block first (calloc) wrote every byte of a list of some 1,000 ports twice over
    // memory. The texts after the records are written whole.
    auto* block = static_cast<char*>(std::malloc(recordBytes + pool));
    if (!block)
    {
        *nomem = true;
        return nullptr;
    }
    auto* recs = reinterpret_cast<api_FCPort_t*>(block);
    char* text = block + recordBytes;
    for (size_t i = 0; i < ports.size(); ++i)
    {
        std::memset(static_cast<void*>(&recs[i]), 0, sizeof recs[i]);
        fillFcPort(*ports[i], detail, withSfp, &recs[i]);
        if (detail >= 3 && ports[i]->connectedTo)
        {
            const std::string& s = *ports[i]->connectedTo;
            std::memcpy(text, s.c_str(), s.size() + 1);
            recs[i].connectedTo = text;
            text += s.size() + 1;
        }
    }
    return recs;
}

api_iSCSIPort_t* makeIscsiArray(const std::vector<IscsiPort>& ports, bool* nomem)
{
    *nomem = false;
    if (ports.empty())
        return nullptr;
    auto* recs = static_cast<api_iSCSIPort_t*>(std::calloc(ports.size(), sizeof(api_iSCSIPort_t)));
    if (!recs)
    {
        *nomem = true;
        return nullptr;
    }
    for (size_t i = 0; i < ports.size(); ++i)
    {
        const IscsiPort& p = ports[i];
        copyText(recs[i].iscsiName, sizeof recs[i].iscsiName, p.iscsiName);
        formatPosition(p.pos, recs[i].position, sizeof recs[i].position);
        recs[i].portStatus = p.status;
        recs[i].portId = lpidOf(p.pos);
        copyText(recs[i].ipAddr, sizeof recs[i].ipAddr, p.ipAddr);
        if (p.sfp)
            fillSfp(*p.sfp, &recs[i].sfp);
    }
    return recs;
}

api_portLESB_t* makeLesbArray(const std::vector<LesbRef>& records, bool* nomem)
{
    *nomem = false;
    if (records.empty())
        return nullptr;
    auto* recs = static_cast<api_portLESB_t*>(std::calloc(records.size(), sizeof(api_portLESB_t)));
    if (!recs)
    {
        *nomem = true;
        return nullptr;
    }
    for (size_t i = 0; i < records.size(); ++i)
    {
        const FcPort& p = *records[i].port;
        const Lesb& l = *records[i].lesb;
        api_portLESB_t& o = recs[i];
        formatWwn(p.wwn, o.portText);
        o.sampleTime = l.sampleTime;
        o.portId = l.portId ? *l.portId : lpidOf(p.pos);
        o.linkFailures = l.linkFailures;
        o.lossOfSync = l.lossOfSync;
        o.lossOfSignal = l.lossOfSignal;
        o.primitiveSeqErrors = l.primitiveSeqErrors;
        o.invalidTxWords = l.invalidTxWords;
        o.crcErrors = l.crcErrors;
    }
    return recs;
}

api_VV_t* makeVvArray(const std::vector<const Volume*>& vvs, bool* nomem)
{
    *nomem = false;
    if (vvs.empty())
        return nullptr;
    auto* recs = static_cast<api_VV_t*>(std::calloc(vvs.size(), sizeof(api_VV_t)));
    if (!recs)
    {
        *nomem = true;
        return nullptr;
    }
    for (size_t i = 0; i < vvs.size(); ++i)
    {
        copyText(recs[i].name, sizeof recs[i].name, vvs[i]->name);
        formatWwn(vvs[i]->wwn, recs[i].wwnText);
        recs[i].wwn = vvs[i]->wwn;
        recs[i].kind = vvs[i]->kind;
        recs[i].id = vvs[i]->id;
        recs[i].sizeMiB = vvs[i]->sizeMiB;
    }
    return recs;
}

}  // namespace qelsim
