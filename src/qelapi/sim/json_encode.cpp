// The array's JSON form, written: every field present, in the order the reader takes them.
#include "json_codec.h"

#include "calls.h"
#include "ipaddr.h"
#include "lpid.h"

#include <nlohmann/json.hpp>

namespace qelsim
{

using Json = nlohmann::ordered_json;

namespace
{

Json encodeSfp(const std::optional<Sfp>& s)
{
    if (!s)
        return nullptr;
    Json j;
    j["manufacturer"] = s->manufacturer;
    j["partNumber"] = s->partNumber;
    j["serialNumber"] = s->serialNumber;
    j["revision"] = s->revision;
    j["description"] = s->description;
    j["speed"] = s->speed;
    j["disableTxPin"] = s->disableTxPin;
    j["lossRxPin"] = s->lossRxPin;
    j["faultTxPin"] = s->faultTxPin;
    j["unqualified"] = s->unqualified;
    j["rxPowerLow"] = s->rxPowerLow;
    j["state"] = s->state;
    if (!s->hasDdm)
    {
        j["ddm"] = nullptr;
    }
    else
    {
        Json arr = Json::array();
        for (const auto& d : s->ddm)
        {
            Json e;
            e["monitorType"] = d.monitorType;
            e["sensorFlags"] = d.sensorFlags;
            e["unit"] = d.unit;
            e["value"] = d.value;
            e["lowAlarm"] = d.lowAlarm;
            e["highAlarm"] = d.highAlarm;
            e["lowWarn"] = d.lowWarn;
            e["highWarn"] = d.highWarn;
            e["sampleCount"] = d.sampleCount;
            arr.push_back(std::move(e));
        }
        j["ddm"] = std::move(arr);
    }
    return j;
}

}  // namespace

std::string encodeModel(const Model& m)
{
    Json doc;
    Json sys;
    sys["name"] = m.system.name;
    sys["hostName"] = m.system.hostName;
    sys["id"] = m.system.id;
    sys["type"] = m.system.type;
    sys["quadPort"] = m.system.quadPort;
    sys["ipv4"] = m.system.ipv4;
    sys["ipv6"] = m.system.ipv6.empty() ? Json(nullptr) : Json(m.system.ipv6);
    sys["cages"] = m.system.cages;
    doc["system"] = std::move(sys);
    doc["log"] = {
        {"level", m.log.level}, {"destination", m.log.file.empty() ? "stderr" : m.log.file}};
    if (!m.auditFile.empty())
        doc["audit"] = {{"file", m.auditFile}};
    Json users = Json::array();
    for (const auto& u : m.users)
        users.push_back(
            {{"name", u.name},
             {"role", roleName(u.role)},
             {"enabled", u.enabled},
             {"addresses", u.addresses}});
    doc["users"] = std::move(users);
    Json fc = Json::array();
    for (const auto& p : m.fcPorts)
    {
        Json j;
        j["position"] = positionText(p.pos);
        j["wwn"] = wwnText(p.wwn);
        j["status"] = statusName(p.status);
        j["currentRate"] = p.currentRate;
        j["fcSystemName"] = p.fcSystemName;
        j["fcNodeWwn"] = wwnText(p.fcNodeWwn);
        j["fcalSystemName"] = p.fcalSystemName;
        j["fcalNodeWwn"] = wwnText(p.fcalNodeWwn);
        j["fullDuplex"] = p.fullDuplex;
        j["maxRate"] = p.maxRate;
        j["configuredRate"] = p.configuredRate;
        j["topology"] = p.topology;
        j["portKind"] = p.portKind;
        j["configuration"] = p.configuration;
        j["mode"] = p.mode;
        j["connectionMode"] = p.connectionMode;
        j["modeChangeAllowed"] = p.modeChangeAllowed;
        j["deviceTypeConnected"] = p.deviceTypeConnected;
        j["connectionType"] = p.connectionType;
        j["class2"] = p.class2;
        j["vcn"] = p.vcn;
        j["interruptCoalescing"] = p.interruptCoalescing;
        j["connectedTo"] = p.connectedTo ? Json(*p.connectedTo) : Json(nullptr);
        j["sfp"] = encodeSfp(p.sfp);
        Json lesb = Json::array();
        for (const auto& l : p.lesb)
        {
            Json e;
            e["sampleTime"] = l.sampleTime;
            if (l.portId)
                e["portId"] = *l.portId;
            e["linkFailures"] = l.linkFailures;
            e["lossOfSync"] = l.lossOfSync;
            e["lossOfSignal"] = l.lossOfSignal;
            e["primitiveSeqErrors"] = l.primitiveSeqErrors;
            e["invalidTxWords"] = l.invalidTxWords;
            e["crcErrors"] = l.crcErrors;
            lesb.push_back(std::move(e));
        }
        j["lesb"] = std::move(lesb);
        fc.push_back(std::move(j));
    }
    doc["fcPorts"] = std::move(fc);
    Json is = Json::array();
    for (const auto& p : m.iscsiPorts)
    {
        Json j;
        j["iscsiName"] = p.iscsiName;
        j["position"] = positionText(p.pos);
        j["status"] = statusName(p.status);
        j["ipAddr"] = p.ipAddr;
        j["sfp"] = encodeSfp(p.sfp);
        is.push_back(std::move(j));
    }
    doc["iscsiPorts"] = std::move(is);
    Json vols = Json::array();
    for (const auto& v : m.volumes)
        vols.push_back(
            {{"name", v.name},
             {"wwn", wwnText(v.wwn)},
             {"kind", v.kind},
             {"id", v.id},
             {"sizeMiB", v.sizeMiB}});
    doc["volumes"] = std::move(vols);
    Json faults = Json::array();
    for (const auto& f : m.faults)
    {
        Json j{{"call", f.call}, {"code", f.code}};
        if (f.times >= 0)
            j["times"] = f.times;
        faults.push_back(std::move(j));
    }
    doc["faults"] = std::move(faults);
    if (!m.origin.path.empty() || !m.origin.hash.empty())
        doc["origin"] = {{"path", m.origin.path}, {"hash", m.origin.hash}};
    return doc.dump(1, '\t') + "\n";
}

}  // namespace qelsim
