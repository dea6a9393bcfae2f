//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortProvider: FC port instances, retrieval, modification and methods.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_FCPortProvider.h"
#include "QEL_FCPortList.h"
#include "QEL_PortWWN.h"
#include "QEL_ProviderFrame.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

#include <cstdio>
#include <cstring>

PEGASUS_NAMESPACE_BEGIN

// Prefix of this provider's error texts.
static const String ClassName = "QEL_FCPortProvider";

// Source name carried by the access refusals, with their fixed line numbers.
static const char SOURCE[] = "QEL_FCPortProvider";
static const Uint32 LINE_GET_INSTANCE = 103;
static const Uint32 LINE_ENUMERATE_INSTANCES = 203;
static const Uint32 LINE_ENUMERATE_INSTANCE_NAMES = 252;
static const QEL_ProviderFrame::ChangeSite MODIFY_SITE = {SOURCE, 295, 296};
static const QEL_ProviderFrame::ChangeSite METHOD_SITE = {SOURCE, 528, 529};

static const char FC_PORT_CLASS[] = "QEL_FCPort";
static const char FCAL_PORT_CLASS[] = "QEL_FCALPort";

// The configured rate that asks the port to sense its speed itself.
static const Sint32 RATE_AUTOMATIC = 3;

static bool _isFCPortClass(const CIMName& className)
{
    return className == CIMName(FC_PORT_CLASS);
}

static bool _isFCALPortClass(const CIMName& className)
{
    return className == CIMName(FCAL_PORT_CLASS);
}

// The class check of every operation and list builder. The class name follows
// the text without a blank, as the array's tools have always reported it.
static void _checkClass(const CIMName& className)
{
    if (!_isFCPortClass(className) && !_isFCALPortClass(className))
    {
        throw CIMNotSupportedException(ClassName + " Invalid class name" + className.getString());
    }
}

// Reads the ports of className (checked before) that filter selects.
static void _readPorts(QEL_FCPortList& list, const CIMName& className, Uint64 filter)
{
    if (_isFCPortClass(className))
    {
        list.readFCPorts(filter, 0);
    }
    else
    {
        list.readFCALPorts(filter);
    }
}

static Array<Uint16> _uint16s(Uint16 first)
{
    Array<Uint16> values;
    values.append(first);
    return values;
}

static Array<Uint16> _uint16s(Uint16 first, Uint16 second)
{
    Array<Uint16> values;
    values.append(first);
    values.append(second);
    return values;
}

Uint64 rate_to_bits(Sint32 rate)
{
    // Binary multiples: the array's tools count a gigabit as 2^30 bits.
    switch (rate)
    {
        case 0:
        case 1:
        case 2:
        case 4:
        case 8:
        case 10:
        case 16:
            return static_cast<Uint64>(rate) << 30;
        case 11:
            return 10485760ULL;
        case 12:
            return 104857600ULL;
        case 15:
            return 1610612736ULL;
        case 30:
            return 3221225472ULL;
        case 60:
            return 6442450944ULL;
        default:
            return 0;
    }
}

QEL_FCPortProvider::QEL_FCPortProvider()
{
}

QEL_FCPortProvider::QEL_FCPortProvider(const CIMObjectPath&)
{
}

QEL_FCPortProvider::~QEL_FCPortProvider()
{
}

void QEL_FCPortProvider::initialize(CIMOMHandle& cimom)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::initialize\n");
    _cimom = cimom;
    _hostName = QEL_Common::getSystemHostName(cimom);
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::initialize\n");
}

void QEL_FCPortProvider::terminate()
{
    delete this;
}

// ---------------------------------------------------------------- building

CIMInstance QEL_FCPortProvider::buildInstance(
    CIMClass portClass, const api_FCPort_t& port, const String& hostAddr)
{
    const CIMName className = portClass.getClassName();
    const bool fcView = _isFCPortClass(className);

    String systemName;
    Uint64 nodeWwn = 0;
    if (fcView)
    {
        systemName = QEL_recordText(port.fcSystemName);
        nodeWwn = port.fcNodeWwn;
    }
    else if (_isFCALPortClass(className))
    {
        systemName = QEL_recordText(port.fcalSystemName);
        nodeWwn = port.fcalNodeWwn;
    }

    CIMInstance instance = QEL_Common::buildInstanceSkeleton(portClass);

    const String position = QEL_recordText(port.position);
    const String deviceID = QEL_recordText(port.wwnText);

    QEL_Common::setPropertyValue(instance, "SystemCreationClassName", String("QEL_NodeSystem"));
    QEL_Common::setPropertyValue(instance, "SystemName", systemName);
    QEL_Common::setPropertyValue(instance, "CreationClassName", className.getString());
    QEL_Common::setPropertyValue(instance, "DeviceID", deviceID);
    QEL_Common::setPropertyValue(instance, "ElementName", position);
    QEL_Common::setPropertyValue(instance, "Name", position);

    // node:slot:port; the port number is the third.
    char positionText[sizeof(port.position) + 1];
    std::memcpy(positionText, port.position, sizeof(port.position));
    positionText[sizeof(port.position)] = '\0';
    unsigned short node = 0, slot = 0, portNumber = 0;
    sscanf(positionText, "%hu:%hu:%hu", &node, &slot, &portNumber);
    QEL_Common::setPropertyValue(instance, "PortNumber", Uint16(portNumber));

    Uint16 portType = 0;
    switch (port.connectionType)
    {
        case 1:
            portType = 11;
            break;  // NL
        case 2:
            portType = 10;
            break;  // N
        case 3:
        case 4:
            portType = 13;
            break;  // Nx
        default:
            portType = 0;
            break;  // Unknown
    }
    QEL_Common::setPropertyValue(instance, "PortType", portType);

    QEL_Common::setPropertyValue(instance, "PermanentAddress", QEL_wwnText(port.portWwn));
    QEL_Common::setPropertyValue(instance, "NodeWWN", nodeWwn);
    QEL_Common::setPropertyValue(instance, "Speed", rate_to_bits(port.currentRate));

    Uint16 usageRestriction = 0;
    Array<Uint16> discriminator;
    if (port.portKind == 3)
    {
        usageRestriction = 2;
        discriminator = _uint16s(10, 13);
    }
    else
    {
        discriminator = _uint16s(port.portKind == 1 ? 11 : 2, 13);
        if (port.mode == 1)
        {
            usageRestriction = 2;
        }
        else if (port.mode == 2)
        {
            usageRestriction = 3;
        }
    }
    QEL_Common::setPropertyValue(instance, "UsageRestriction", usageRestriction);
    QEL_Common::setPropertyValue(instance, "PortDiscriminator", discriminator);

    QEL_Common::setPropertyValue(instance, "LinkTechnology", Uint16(4));
    QEL_Common::setPropertyValue(instance, "SupportedMaximumTransmissionUnit", Uint64(2048));
    QEL_Common::setPropertyValue(instance, "SupportedFC4Types", _uint16s(8));
    QEL_Common::setPropertyValue(instance, "ActiveFC4Types", _uint16s(8));
    QEL_Common::setPropertyValue(instance, "SupportedCOS", _uint16s(3));
    // The active class of service follows the port state on purpose.
    QEL_Common::setPropertyValue(
        instance, "ActiveCOS", _uint16s(port.portStatus == PORT_OK ? 3 : 0));

    if (fcView)
    {
        QEL_Common::setPropertyValue(instance, "FullDuplex", Boolean(port.fullDuplex != 0));
        if (port.configuredRate != RATE_AUTOMATIC)
        {
            QEL_Common::setPropertyValue(
                instance, "RequestedSpeed", rate_to_bits(port.configuredRate));
        }
        QEL_Common::setPropertyValue(
            instance, "AutoSense", Boolean(port.configuredRate == RATE_AUTOMATIC));
        QEL_Common::setPropertyValue(instance, "MaxSpeed", rate_to_bits(port.maxRate));
        QEL_Common::setPropertyValue(instance, "Topology", Uint16(port.topology));
        QEL_Common::setPropertyValue(instance, "Configuration", Uint16(port.configuration));
        QEL_Common::setPropertyValue(instance, "Mode", Uint16(port.mode));
        QEL_Common::setPropertyValue(
            instance, "ModeChangeAllowed", Boolean(port.modeChangeAllowed != 0));
        QEL_Common::setPropertyValue(
            instance, "DeviceTypeConnected", Uint16(port.deviceTypeConnected));
        if (port.connectedTo != 0 && port.connectedTo[0] != '\0')
        {
            QEL_Common::setPropertyValue(instance, "ConnectedTo", String(port.connectedTo));
        }
        QEL_Common::setPropertyValue(instance, "Class2Support", Uint16(port.class2));
        QEL_Common::setPropertyValue(instance, "VCN", Uint16(port.vcn));
        QEL_Common::setPropertyValue(
            instance, "InterruptCoalescing", Uint16(port.interruptCoalescing));
        QEL_Common::setPropertyValue(instance, "ConnectionType", Uint16(port.connectionType));
    }
    else
    {
        // The loop view always reports 2 Gbit/s, whatever the record says.
        QEL_Common::setPropertyValue(instance, "MaxSpeed", Uint64(2147483648ULL));
    }

    QEL_Common::setPropertyValue(instance, "ConnectionMode", Uint16(port.connectionMode));
    QEL_Common::setPropertyValue(
        instance, "HealthState", QEL_Common::getPortHealthState(port.portStatus));
    _addOperationalStatus(port.portStatus, instance);
    QEL_Common::setPropertyValue(
        instance, "EnabledState", Uint16(port.portStatus == PORT_OFFLINE ? 6 : 2));

    instance.setPath(buildObjectPath(className, hostAddr, systemName, deviceID));
    return instance;
}

CIMObjectPath QEL_FCPortProvider::buildObjectPath(
    const CIMName& inputClassName, const String& hostAddr, const String& systemName,
    const String& deviceID)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::buildObjectPath\n");

    Array<CIMKeyBinding> keys;
    keys.reserveCapacity(4);
    keys.append(CIMKeyBinding("SystemCreationClassName", "QEL_NodeSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    keys.append(
        CIMKeyBinding("CreationClassName", inputClassName.getString(), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", deviceID, CIMKeyBinding::STRING));
    CIMObjectPath path(hostAddr, CIMNamespaceName(QEL_NAMESPACE), inputClassName, keys);

    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::buildObjectPath\n");
    return path;
}

void QEL_FCPortProvider::_addOperationalStatus(api_port_status_t portStatus, CIMInstance& instance)
{
    QEL_Common::setPropertyValue(
        instance, "OperationalStatus", _uint16s(QEL_Common::getPortOperationalStatus(portStatus)));
    // The library's own state number, deliberately as a number (not a text).
    QEL_Common::setPropertyValue(instance, "OtherOperationalStatus", Uint16(portStatus));
}

Array<CIMInstance> QEL_FCPortProvider::buildInstances(
    CIMOMHandle& cimom, const CIMName& className, Uint64 portwwn, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList, const String& hostAddr)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::_build_instance\n");
    _checkClass(className);

    CIMClass portClass = QEL_ProviderFrame::storedClass(
        cimom, className, includeQualifiers, includeClassOrigin, propertyList);

    QEL_FCPortList list;
    _readPorts(list, className, portwwn);

    Array<CIMInstance> instances;
    instances.reserveCapacity(list.size());
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (QEL_FCPortList::isPort(list[i]))
        {
            instances.append(buildInstance(portClass, list[i], hostAddr));
        }
    }
    list.release();

    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::_build_instance\n");
    return instances;
}

Array<CIMObjectPath> QEL_FCPortProvider::_build_ref(const CIMName& className)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::_build_ref\n");
    _checkClass(className);

    QEL_FCPortList list;
    _readPorts(list, className, QEL_ALL_PORTS);

    const bool fcView = _isFCPortClass(className);
    Array<CIMObjectPath> paths;
    paths.reserveCapacity(list.size());
    for (Uint32 i = 0; i < list.size(); i++)
    {
        const api_FCPort_t& port = list[i];
        if (QEL_FCPortList::isPort(port))
        {
            const String systemName =
                fcView ? QEL_recordText(port.fcSystemName) : QEL_recordText(port.fcalSystemName);
            paths.append(
                buildObjectPath(className, _hostName, systemName, QEL_recordText(port.wwnText)));
        }
    }
    list.release();

    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::_build_ref\n");
    return paths;
}

// The LPID of the port that ref's DeviceID key names; an unknown port is
// refused with the "Device not found" text of operation.
static Uint16 _portLPID(const CIMObjectPath& ref, const char* operation)
{
    const String deviceID = QEL_Common::getStringProperty(ref, "DeviceID");
    const Uint16 lpid = api_findFCPortLPID(deviceID.getCString());
    if (lpid == QEL_NO_SUCH_PORT)
    {
        QEL_ProviderFrame::deviceNotFound(ClassName, operation, "DeviceID", deviceID);
    }
    return lpid;
}

// Both lookups: the first instance whose string property propertyName equals
// wanted without regard to case.
static CIMInstance _findPortInstance(
    const Array<CIMInstance>& instances, const char* propertyName, const String& wanted)
{
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        if (String::equalNoCase(QEL_Common::getStringProperty(instances[i], propertyName), wanted))
        {
            log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::_getPortInstance\n");
            return instances[i].clone();
        }
    }
    log_message(QEL_TRACE_FAILURE, "Object not found: %s\n", (const char*)wanted.getCString());
    throw CIMObjectNotFoundException(ClassName + " CIM Object not found." + wanted);
}

CIMInstance QEL_FCPortProvider::_getPortInstance(Uint64 portWWN, Array<CIMInstance> instances)
{
    const String wwn = QEL_wwnText(portWWN);
    log_message(
        QEL_TRACE_FLOW,
        "--> QEL_FCPortProvider::_getPortInstance: +++ searching for port wwn = %s\n",
        (const char*)wwn.getCString());
    return _findPortInstance(instances, "DeviceID", wwn);
}

CIMInstance
QEL_FCPortProvider::_getPortInstance(const String& portName, Array<CIMInstance> instances)
{
    log_message(
        QEL_TRACE_FLOW, "--> QEL_FCPortProvider::_getPortInstance: +++ searching for port = %s\n",
        (const char*)portName.getCString());
    return _findPortInstance(instances, "Name", portName);
}

// ---------------------------------------------------------------- requests

void QEL_FCPortProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instRef, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::getInstance\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_GET_INSTANCE);

    const CIMName className = instRef.getClassName();
    _checkClass(className);

    String deviceID;
    if (!QEL_ProviderFrame::keyValue(instRef, "DeviceID", deviceID))
    {
        throw CIMInvalidParameterException(ClassName + " DeviceID key not found.");
    }
    // A DeviceID that does not scan leaves the filter at every port; the
    // path match below still decides.
    const Uint64 portwwn = QEL_scanWWN(deviceID.getCString());

    const Array<CIMInstance> candidates = buildInstances(
        _cimom, className, portwwn, includeQualifiers, includeClassOrigin, propertyList, _hostName);
    if (QEL_ProviderFrame::deliverMatch(instRef, candidates, handler))
    {
        log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::getInstance\n");
        return;
    }
    // The device ID follows the text without a blank, as it always has.
    throw CIMObjectNotFoundException(className.getString() + " CIM Object not found." + deviceID);
}

void QEL_FCPortProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::enumerateInstances\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCES);

    const CIMName className = classReference.getClassName();
    _checkClass(className);

    handler.processing();
    const Array<CIMInstance> instances = buildInstances(
        _cimom, className, QEL_ALL_PORTS, includeQualifiers, includeClassOrigin, propertyList,
        _hostName);
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        handler.deliver(instances[i]);
    }
    handler.complete();
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::enumerateInstances\n");
}

void QEL_FCPortProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortProvider::enumerateInstanceNames\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCE_NAMES);

    const CIMName className = classReference.getClassName();
    _checkClass(className);

    // The names are built before processing(), unlike enumerateInstances;
    // the order is intended.
    const Array<CIMObjectPath> paths = _build_ref(className);
    handler.processing();
    for (Uint32 i = 0; i < paths.size(); i++)
    {
        handler.deliver(paths[i]);
    }
    handler.complete();
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortProvider::enumerateInstanceNames\n");
}

void QEL_FCPortProvider::modifyInstance(
    const OperationContext& context, const CIMObjectPath& objectRef,
    const CIMInstance& instanceObject, const Boolean, const CIMPropertyList& propertyList,
    ResponseHandler&)
{
    static const char OPERATION_KEY[] = "ModifyInstance";

    const QEL_ProviderFrame::Requester who = QEL_ProviderFrame::requester(context);
    const String className = objectRef.getClassName().getString();

    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortProvider::modifyInstance()\n");
    api_evtparam_t apiEvent =
        QEL_ProviderFrame::openChange(context, who, className, OPERATION_KEY, MODIFY_SITE);

    QEL_PortIdList IDs(_portLPID(objectRef, "modifyInstance"), ClassName, "modifyInstance");

    // Zero means "not requested" for the five numeric settings; a client
    // cannot set any of them to 0. The speed is applied whenever it is given.
    Uint16 mode = 0;
    Boolean forceMode = false;
    Uint16 connType = 0;
    Uint16 class2 = 0;
    Uint16 vcn = 0;
    Uint16 intCoal = 0;
    Uint64 speed = 0;
    Boolean setSpeed = false;

    CIMInstance instance(instanceObject);
    Array<String> names;
    if (propertyList.isNull())
    {
        for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
        {
            names.append(instance.getProperty(i).getName().getString());
        }
    }
    else
    {
        for (Uint32 i = 0; i < propertyList.size(); i++)
        {
            if (instance.findProperty(propertyList[i]) != PEG_NOT_FOUND)
            {
                names.append(propertyList[i].getString());
            }
        }
    }

    // The numeric settings by property name.
    const struct
    {
        const char* property;
        Uint16* value;
    } settings[] = {
        {"Mode", &mode}, {"ConnectionType", &connType},     {"Class2Support", &class2},
        {"VCN", &vcn},   {"InterruptCoalescing", &intCoal},
    };
    for (Uint32 i = 0; i < names.size(); i++)
    {
        const String& name = names[i];
        const CIMName property(name);
        Uint16* setting = 0;
        for (const auto& s : settings)
        {
            if (property == CIMName(s.property))
            {
                setting = s.value;
                break;
            }
        }
        if (setting != 0)
        {
            QEL_Common::getProperty(instance, name, *setting);
        }
        else if (property == CIMName("ModeChangeAllowed"))
        {
            QEL_Common::getProperty(instance, name, forceMode);
        }
        else if (property == CIMName("RequestedSpeed"))
        {
            QEL_Common::getProperty(instance, name, speed);
            setSpeed = true;
        }
        else
        {
            throw CIMInvalidParameterException("Invalid parameter: " + name);
        }
    }

    // One bracket per change, in this fixed order; nothing is rolled back
    // when a later change fails. These texts carry no class prefix.
    Uint16* ids = IDs.ids();
    const int count = IDs.count();
    // A requested change in its own bracket; a failure ends the request.
    const auto apply = [](bool requested, const char* failure, auto&& change)
    {
        if (requested && QEL_ProviderFrame::serialized(change) != 0)
        {
            throw CIMOperationFailedException(failure);
        }
    };
    apply(
        mode != 0, "Failed to set port mode",
        [&] { return api_setFCPortMode(&apiEvent, count, ids, mode, forceMode); });
    apply(
        connType != 0, "Failed to set port connection type",
        [&] { return api_setFCPortConnType(&apiEvent, count, ids, connType); });
    apply(
        class2 != 0, "Failed to set port class2",
        [&] { return api_setFCPortClass2(&apiEvent, count, ids, class2); });
    apply(
        vcn != 0, "Failed to set port VCN",
        [&] { return api_setFCPortVCN(&apiEvent, count, ids, vcn); });
    apply(
        intCoal != 0, "Failed to set port interrupt coalesce",
        [&] { return api_setFCPortIntCoal(&apiEvent, count, ids, intCoal); });
    // Whole gigabits per second by a plain shift: not the inverse of
    // rate_to_bits (1.5 Gbit/s gives 1, 100 Mbit/s gives 0), as intended.
    apply(
        setSpeed, "Failed to set port speed",
        [&] { return api_setFCPortSpeed(&apiEvent, count, ids, Uint32(speed >> 30)); });

    IDs.release();
    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortProvider::modifyInstance()\n");
}

void QEL_FCPortProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "createInstance");
}

void QEL_FCPortProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "deleteInstance");
}

void QEL_FCPortProvider::invokeMethod(
    const OperationContext& context, const CIMObjectPath& objectReference,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    const QEL_ProviderFrame::Requester who = QEL_ProviderFrame::requester(context);
    const String className = objectReference.getClassName().getString();
    const String method = methodName.getString();

    // Both method traces are written at the failure level, as the array's
    // tools expect to find them.
    log_message(
        QEL_TRACE_FAILURE,
        "-->QEL_FCPortProvider::invokeMethod()\n\t className = %s, methodName = %s\n",
        (const char*)className.getCString(), (const char*)method.getCString());

    // The event record is filled before the port is looked up: an unknown
    // port still counts as an attempted operation.
    api_evtparam_t apiEvent =
        QEL_ProviderFrame::openChange(context, who, className, method, METHOD_SITE);

    QEL_PortIdList IDs(_portLPID(objectReference, "invokeMethod"), ClassName, "invokeMethod");
    Uint16* ids = IDs.ids();
    const int count = IDs.count();

    // An unknown method name is answered with 0 and no library call: kept
    // so on purpose.
    Sint32 result = 0;
    if (methodName == CIMName("SetOffline"))
    {
        result = QEL_ProviderFrame::serialized(
            [&] { return api_setPortOffline(&apiEvent, count, ids); });
    }
    else if (methodName == CIMName("Reset"))
    {
        result =
            QEL_ProviderFrame::serialized([&] { return api_resetPort(&apiEvent, count, ids); });
    }
    else if (methodName == CIMName("ReloadFirmware"))
    {
        result =
            QEL_ProviderFrame::serialized([&] { return api_reloadPortFW(&apiEvent, count, ids); });
    }
    else if (methodName == CIMName("SyncDatabase"))
    {
        result =
            QEL_ProviderFrame::serialized([&] { return api_syncFCPortDB(&apiEvent, count, ids); });
    }
    else if (methodName == CIMName("InitializeLoop"))
    {
        String cageName;
        QEL_Common::getParameter(inParameters, "CageName", cageName);
        const CString cage = cageName.getCString();
        const char* cageArg = cageName.size() == 0 ? 0 : (const char*)cage;
        result = QEL_ProviderFrame::serialized(
            [&] { return api_initFCPortLoop(&apiEvent, count, ids, cageArg); });
    }
    IDs.release();

    handler.processing();
    handler.deliver(CIMValue(result));
    handler.complete();
    log_message(QEL_TRACE_FAILURE, "<--QEL_FCPortProvider::invokeMethod()\n");
}

PEGASUS_NAMESPACE_END
