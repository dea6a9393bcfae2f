// List reads: fresh malloc'd copies of the simulated array's records.
#include "qelapi.h"

#include "sim/api_call.h"
#include "sim/call_log.h"
#include "sim/records.h"
#include "sim/simulator.h"
#include "sim/stats.h"

#include <cstdlib>
#include <mutex>
#include <unordered_set>

using namespace qelsim;

namespace
{

// FC lists handed out and not yet freed, so a double or foreign free is
// refused instead of corrupting the heap.
std::mutex liveMu;
std::unordered_set<const void*>& liveFcLists()
{
    static auto* s = new std::unordered_set<const void*>();
    return *s;
}

int readFcList(uint64_t filter, int detail, bool withSfp, api_FCPortList_t* list)
{
    return Simulator::instance().read(
        [&](const Model& m)
        {
            std::vector<const FcPort*> ports;
            if (filter == API_ALL_PORTS)
            {
                for (const auto& p : m.fcPorts)
                    ports.push_back(&p);
            }
            else
            {
                const FcPort* p = m.fcPortByWwn(filter);
                if (!p)
                    return static_cast<int>(API_ERR_NOENT);
                ports.push_back(p);
            }
            bool nomem = false;
            api_FCPort_t* recs = makeFcPortArray(ports, detail, withSfp, &nomem);
            if (nomem)
                return static_cast<int>(API_ERR_NOMEM);
            if (recs)
            {
                std::lock_guard<std::mutex> g(liveMu);
                liveFcLists().insert(recs);
                stats().fcListsHandedOut++;
            }
            list->count = static_cast<uint32_t>(ports.size());
            list->ports = recs;
            return static_cast<int>(API_OK);
        });
}

}  // namespace

int api_getFCPorts(uint64_t filter, int detail, int sfpFlag, api_FCPortList_t* list)
{
    if (list)
        *list = api_FCPortList_t{0, nullptr};
    return runCall(
        Call::getFCPorts, CallArgs().hex(filter).num(detail).num(sfpFlag).ptr(list), nullptr,
        [&]
        {
            if (!list || detail < 0 || detail > 3 || (sfpFlag != 0 && sfpFlag != 1))
                return static_cast<int>(API_ERR_INVAL);
            return readFcList(filter, detail, sfpFlag == 1, list);
        });
}

int api_getFCALPorts(uint64_t filter, api_FCPortList_t* list)
{
    if (list)
        *list = api_FCPortList_t{0, nullptr};
    return runCall(
        Call::getFCALPorts, CallArgs().hex(filter).ptr(list), nullptr,
        [&]
        {
            if (!list)
                return static_cast<int>(API_ERR_INVAL);
            return readFcList(filter, 3, true, list);
        });
}

int api_freeFCPorts(api_FCPortList_t* list)
{
    return runCall(
        Call::freeFCPorts, CallArgs().ptr(list), nullptr,
        [&]
        {
            if (!list)
                return static_cast<int>(API_ERR_INVAL);
            if (!list->ports)
            {
                list->count = 0;
                return static_cast<int>(API_OK);
            }
            {
                std::lock_guard<std::mutex> g(liveMu);
                if (liveFcLists().erase(list->ports) == 0)
                {
                    stats().badFrees++;
                    return static_cast<int>(API_ERR_INVAL);
                }
            }
            std::free(list->ports);
            stats().fcListsFreed++;
            *list = api_FCPortList_t{0, nullptr};
            return static_cast<int>(API_OK);
        });
}

int api_getISCSIPorts(api_iSCSIPortList_t* list)
{
    if (list)
        *list = api_iSCSIPortList_t{0, nullptr};
    return runCall(
        Call::getISCSIPorts, CallArgs().ptr(list), nullptr,
        [&]
        {
            if (!list)
                return static_cast<int>(API_ERR_INVAL);
            return Simulator::instance().read(
                [&](const Model& m)
                {
                    bool nomem = false;
                    api_iSCSIPort_t* recs = makeIscsiArray(m.iscsiPorts, &nomem);
                    if (nomem)
                        return static_cast<int>(API_ERR_NOMEM);
                    if (recs)
                        stats().iscsiArraysHandedOut++;
                    list->count = static_cast<uint32_t>(m.iscsiPorts.size());
                    list->ports = recs;
                    return static_cast<int>(API_OK);
                });
        });
}

int api_getPortLESB(uint64_t wwn, api_portLESBList_t* list)
{
    if (list)
        *list = api_portLESBList_t{0, nullptr};
    return runCall(
        Call::getPortLESB, CallArgs().hex(wwn).ptr(list), nullptr,
        [&]
        {
            if (!list)
                return static_cast<int>(API_ERR_INVAL);
            return Simulator::instance().read(
                [&](const Model& m)
                {
                    std::vector<LesbRef> refs;
                    auto add = [&refs](const FcPort& p)
                    {
                        for (const auto& l : p.lesb)
                            refs.push_back(LesbRef{&p, &l});
                    };
                    if (wwn == API_ALL_PORTS)
                    {
                        for (const auto& p : m.fcPorts)
                            add(p);
                    }
                    else
                    {
                        const FcPort* p = m.fcPortByWwn(wwn);
                        if (!p)
                            return static_cast<int>(API_ERR_NOENT);
                        add(*p);
                    }
                    bool nomem = false;
                    api_portLESB_t* recs = makeLesbArray(refs, &nomem);
                    if (nomem)
                        return static_cast<int>(API_ERR_NOMEM);
                    if (recs)
                        stats().lesbArraysHandedOut++;
                    list->count = static_cast<uint32_t>(refs.size());
                    list->lesb = recs;
                    return static_cast<int>(API_OK);
                });
        });
}

int api_getVVs(uint64_t filter, api_VVList_t* list)
{
    if (list)
        *list = api_VVList_t{0, nullptr};
    return runCall(
        Call::getVVs, CallArgs().hex(filter).ptr(list), nullptr,
        [&]
        {
            if (!list)
                return static_cast<int>(API_ERR_INVAL);
            return Simulator::instance().read(
                [&](const Model& m)
                {
                    std::vector<const Volume*> vvs;
                    for (const auto& v : m.volumes)
                        if (filter == API_ALL_PORTS || v.wwn == filter)
                            vvs.push_back(&v);
                    if (vvs.empty() && filter != API_ALL_PORTS)
                        return static_cast<int>(API_ERR_NOENT);
                    bool nomem = false;
                    api_VV_t* recs = makeVvArray(vvs, &nomem);
                    if (nomem)
                        return static_cast<int>(API_ERR_NOMEM);
                    if (recs)
                        stats().vvArraysHandedOut++;
                    list->count = static_cast<uint32_t>(vvs.size());
                    list->vvs = recs;
                    return static_cast<int>(API_OK);
                });
        });
}
