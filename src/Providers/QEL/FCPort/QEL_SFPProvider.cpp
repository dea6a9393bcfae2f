//%/////////////////////////////////////////////////////////////////////////////
// QEL_SFPProvider: SFP instances and keys, their retrieval from the FC and
// iSCSI port lists, and the refused changes.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_SFPProvider.h"
#include "QEL_FCPortList.h"
#include "QEL_ProviderFrame.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

PEGASUS_NAMESPACE_BEGIN

// Prefix of this provider's error texts.
static const String ClassName = "QEL_SFPProvider";

// Source name carried by the session refusals, with their fixed line numbers.
static const char SOURCE[] = "QEL_SFPProvider";
static const Uint32 LINE_GET_INSTANCE = 113;
static const Uint32 LINE_ENUMERATE_INSTANCES = 208;
static const Uint32 LINE_ENUMERATE_INSTANCE_NAMES = 255;

static const char SFP_CLASS[] = "QEL_SFP";

// api_getFCPorts' last argument: 1 asks the library to fill in the SFP records.
static const int WITH_SFP_RECORDS = 1;

// The Tag is formatted into this many zeroed bytes, at most one less written.
static const size_t TAG_BUFFER_SIZE = 256;

template <size_t N>
static std::string _fieldText(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

static bool _isInstalled(const api_sfp_t& sfp)
{
    return (sfp.presentFlags & API_SFP_PRESENT) != 0;
}

static Boolean _bit(Uint32 flags, Uint32 mask)
{
    return (flags & mask) != 0;
}

// The iSCSI records come as one array that the library allocated with
// malloc: they go back with free(), not with api_freeFCPorts (intended).
struct _FreeRecords
{
    void operator()(void* records) const { std::free(records); }
};

// Visits every installed transceiver as visit(portName, sfp): the FC ports
// first, read with their SFP records filled in, then the iSCSI ports. A pass
// whose read fails contributes nothing and raises nothing; each list goes
// back to the library however the visit ends.
template <typename Visit>
static void _visitInstalledSFPs(Visit&& visit)
{
    QEL_FCPortList fcPorts;
    fcPorts.readFCPorts(QEL_ALL_PORTS, WITH_SFP_RECORDS);
    for (Uint32 i = 0; i < fcPorts.size(); i++)
    {
        const api_FCPort_t& port = fcPorts[i];
        if (_isInstalled(port.sfp))
        {
            visit(_fieldText(port.wwnText).c_str(), port.sfp);
        }
    }
    fcPorts.release();

    api_iSCSIPortList_t iscsiPorts;
    std::memset(&iscsiPorts, 0, sizeof(iscsiPorts));
    const int status =
        QEL_ProviderFrame::serialized([&] { return api_getISCSIPorts(&iscsiPorts); });
    std::unique_ptr<api_iSCSIPort_t, _FreeRecords> records(iscsiPorts.ports);
    if (status == 0 && records)
    {
        for (Uint32 i = 0; i < iscsiPorts.count; i++)
        {
            const api_iSCSIPort_t& port = records.get()[i];
            if (_isInstalled(port.sfp))
            {
                visit(_fieldText(port.iscsiName).c_str(), port.sfp);
            }
        }
    }
}

static bool _isSFPClass(const CIMName& className)
{
    return className == CIMName(SFP_CLASS);
}

static void _checkClass(const CIMName& className)
{
    if (!_isSFPClass(className))
    {
        throw CIMNotSupportedException(ClassName + " Invalid class name");
    }
}

// ------------------------------------------------------------ DDM readings

namespace
{

// The properties one monitor type fills, in the order they are set.
struct MonitorProperties
{
    const char* highAlarm;
    const char* lowAlarm;
    const char* highWarn;
    const char* lowWarn;
    const char* value;
    const char* unit;
    bool isSigned;  // temperature and voltage may be negative
};

// Indexed by api_ddm_t.monitorType (DDM_TEMPERATURE .. DDM_RX_POWER).
const MonitorProperties MONITORS[] = {
    {"TempHighAlarm", "TempLowAlarm", "TempHighWarn", "TempLowWarn", "Temperature",
     "TemperatureUnit", true},
    {"VoltHighAlarm", "VoltLowAlarm", "VoltHighWarn", "VoltLowWarn", "Vcc", "VccUnit", true},
    {"BiasHighAlarm", "BiasLowAlarm", "BiasHighWarn", "BiasLowWarn", "TxBias", "TxBiasUnit", false},
    {"TxPowerHighAlarm", "TxPowerLowAlarm", "TxPowerHighWarn", "TxPowerLowWarn", "TxPower",
     "TxPowerUnit", false},
    {"RxPowerHighAlarm", "RxPowerLowAlarm", "RxPowerHighWarn", "RxPowerLowWarn", "RxPower",
     "RxPowerUnit", false},
};
const Sint32 MONITOR_TYPES = sizeof(MONITORS) / sizeof(MONITORS[0]);

// A reading as published: its low 16 bits, neither scaled nor converted.
void setReading(CIMInstance& instance, const char* name, Sint32 reading, bool isSigned)
{
    const Uint16 low = static_cast<Uint16>(static_cast<Uint32>(reading) & 0xFFFFu);
    if (isSigned)
    {
        QEL_Common::setPropertyValue(instance, name, static_cast<Sint16>(low));
    }
    else
    {
        QEL_Common::setPropertyValue(instance, name, low);
    }
}

}  // namespace

void _setDDMProperties(CIMInstance& instance, const api_ddm_t (&ddm)[5])
{
    for (const api_ddm_t& entry : ddm)
    {
        if (entry.monitorType < 0 || entry.monitorType >= MONITOR_TYPES)
        {
            log_message(
                QEL_TRACE_FLOW, "QEL_SFPProvider::_setDDMProperties: unknown sfp monitor type %d\n",
                static_cast<int>(entry.monitorType));
            continue;
        }
        const MonitorProperties& names = MONITORS[entry.monitorType];
        setReading(instance, names.highAlarm, entry.highAlarm, names.isSigned);
        setReading(instance, names.lowAlarm, entry.lowAlarm, names.isSigned);
        setReading(instance, names.highWarn, entry.highWarn, names.isSigned);
        setReading(instance, names.lowWarn, entry.lowWarn, names.isSigned);
        setReading(instance, names.value, entry.value, names.isSigned);
        QEL_Common::setPropertyValue(instance, names.unit, QEL_recordText(entry.unit));
    }
}

QEL_SFPProvider::QEL_SFPProvider()
{
}

QEL_SFPProvider::QEL_SFPProvider(const CIMObjectPath&)
{
    QEL_ProviderFrame::notSupported(ClassName, "constructor with object path");
}

QEL_SFPProvider::~QEL_SFPProvider()
{
}

void QEL_SFPProvider::initialize(CIMOMHandle& cimom)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_SFPProvider::initialize()\n");
    _cimom = cimom;
    _hostName = QEL_Common::getSystemHostName(cimom);
    log_message(QEL_TRACE_FLOW, "<--QEL_SFPProvider::initialize()\n");
}

void QEL_SFPProvider::terminate()
{
    delete this;
}

// ---------------------------------------------------------------- building

String QEL_SFPProvider::makeUniqueTAG(const char* portName, const api_sfp_t& sfp)
{
    char tag[TAG_BUFFER_SIZE];
    std::memset(tag, 0, sizeof(tag));
    snprintf(
        tag, sizeof(tag) - 1, "%s-%.*s", portName != 0 ? portName : "",
        static_cast<int>(strnlen(sfp.serialNumber, sizeof(sfp.serialNumber))), sfp.serialNumber);

    // Only trailing blanks go (the serial numbers come padded); blanks
    // inside the text stay.
    for (size_t i = sizeof(tag); i > 0; i--)
    {
        char& last = tag[i - 1];
        if (last != '\0' && !std::isspace(static_cast<unsigned char>(last)))
        {
            break;
        }
        last = '\0';
    }
    return String(tag);
}

CIMInstance QEL_SFPProvider::buildInstance(
    CIMClass cimClass, const char* portName, const api_sfp_t& sfp, const String& hostName)
{
    const String tag = makeUniqueTAG(portName, sfp);
    CIMInstance instance = QEL_Common::buildInstanceSkeleton(cimClass);

    const String description = QEL_recordText(sfp.description);
    QEL_Common::setPropertyValue(
        instance, "Caption", description + " Small Form-factor Pluggable(SFP) Transceiver");
    QEL_Common::setPropertyValue(instance, "CreationClassName", SFP_CLASS);
    QEL_Common::setPropertyValue(instance, "Tag", tag);
    QEL_Common::setPropertyValue(instance, "ElementName", description);
    // The vendor texts as they stand, padding blanks included.
    QEL_Common::setPropertyValue(instance, "Manufacturer", QEL_recordText(sfp.manufacturer));
    QEL_Common::setPropertyValue(instance, "PartNumber", QEL_recordText(sfp.partNumber));
    QEL_Common::setPropertyValue(instance, "SerialNumber", QEL_recordText(sfp.serialNumber));
    QEL_Common::setPropertyValue(instance, "Revision", QEL_recordText(sfp.revision));
    QEL_Common::setPropertyValue(instance, "Speed", Uint64(sfp.speed));
    QEL_Common::setPropertyValue(
        instance, "DisableTXPinPosition", Uint16(sfp.disableTxPin & 0xFFFFu));
    QEL_Common::setPropertyValue(instance, "LossRXPinPosition", Uint16(sfp.lossRxPin & 0xFFFFu));
    QEL_Common::setPropertyValue(instance, "FaultTXPinPosition", Uint16(sfp.faultTxPin & 0xFFFFu));
    QEL_Common::setPropertyValue(
        instance, "IsUnqualified", _bit(sfp.qualityFlags, API_SFP_UNQUALIFIED));
    QEL_Common::setPropertyValue(
        instance, "IsRXPowerLow", _bit(sfp.qualityFlags, API_SFP_RX_POWER_LOW));
    const Boolean ddmAvailable = _bit(sfp.ddmFlags, API_SFP_DDM_AVAILABLE);
    QEL_Common::setPropertyValue(instance, "IsDDMAvailable", ddmAvailable);
    QEL_Common::setPropertyValue(instance, "SystemName", QEL_Common::getSystemName());
    // Without DDM the readings stay unset, not even null.
    if (ddmAvailable)
    {
        _setDDMProperties(instance, sfp.ddm);
    }

    Uint16 operationalStatus = 6;  // Error
    if (sfp.state == 1)
    {
        operationalStatus = 2;  // OK
    }
    else if (sfp.state == 2)
    {
        operationalStatus = 3;  // Degraded
    }
    Array<Uint16> status;
    status.append(operationalStatus);
    QEL_Common::setPropertyValue(instance, "OperationalStatus", status);

    instance.setPath(buildObjectPath(hostName, tag));
    return instance;
}

CIMObjectPath QEL_SFPProvider::buildObjectPath(const String& hostName, const String& tag)
{
    Array<CIMKeyBinding> keys;
    keys.reserveCapacity(2);
    keys.append(CIMKeyBinding("CreationClassName", SFP_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Tag", tag, CIMKeyBinding::STRING));
    return CIMObjectPath(hostName, CIMNamespaceName(QEL_NAMESPACE), CIMName(SFP_CLASS), keys);
}

Array<CIMInstance> QEL_SFPProvider::_build_instances(
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_SFPProvider::_build_instances\n");

    CIMClass sfpClass = QEL_ProviderFrame::storedClass(
        _cimom, CIMName(SFP_CLASS), includeQualifiers, includeClassOrigin, propertyList);

    Array<CIMInstance> instances;
    _visitInstalledSFPs([&](const char* portName, const api_sfp_t& sfp)
                        { instances.append(buildInstance(sfpClass, portName, sfp, _hostName)); });

    log_message(QEL_TRACE_FLOW, "<-- QEL_SFPProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> QEL_SFPProvider::_build_ref()
{
    // The entry trace names another provider; kept as the array's tools
    // know it.
    log_message(QEL_TRACE_FLOW, "--> QEL_FCALProvider::_build_ref\n");

    Array<CIMObjectPath> paths;
    _visitInstalledSFPs(
        [&](const char* portName, const api_sfp_t& sfp)
        { paths.append(buildObjectPath(_hostName, makeUniqueTAG(portName, sfp))); });

    log_message(QEL_TRACE_FLOW, "<-- QEL_SFPProvider::_build_ref\n");
    return paths;
}

// ---------------------------------------------------------------- requests

void QEL_SFPProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_SFPProvider::getInstance\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_GET_INSTANCE);
    _checkClass(instanceReference.getClassName());

    // Only the Tag is required here; the whole path decides the match.
    String tag;
    if (!QEL_ProviderFrame::keyValue(instanceReference, "Tag", tag))
    {
        throw CIMInvalidParameterException(ClassName + " Tag key not found.");
    }

    const Array<CIMInstance> candidates =
        _build_instances(includeQualifiers, includeClassOrigin, propertyList);
    if (QEL_ProviderFrame::deliverMatch(instanceReference, candidates, handler))
    {
        log_message(QEL_TRACE_FLOW, "<-- QEL_SFPProvider::getInstance\n");
        return;
    }
    // The Tag follows the text without a blank, as the array's tools show it.
    throw CIMObjectNotFoundException(ClassName + " CIM Object not found." + tag);
}

void QEL_SFPProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_SFPProvider::enumerateInstances\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCES);
    _checkClass(classReference.getClassName());

    QEL_ProviderFrame::deliverAll(
        handler, _build_instances(includeQualifiers, includeClassOrigin, propertyList));
    log_message(QEL_TRACE_FLOW, "<-- QEL_SFPProvider::enumerateInstances\n");
}

void QEL_SFPProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_SFPProvider::enumerateInstanceNames\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCE_NAMES);
    _checkClass(classReference.getClassName());

    QEL_ProviderFrame::deliverAll(handler, _build_ref());
    log_message(QEL_TRACE_FLOW, "<-- QEL_SFPProvider::enumerateInstanceNames\n");
}

void QEL_SFPProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "modifyInstance");
}

void QEL_SFPProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "createInstance");
}

void QEL_SFPProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
