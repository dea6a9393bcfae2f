//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortStatisticsProvider: LESB statistics instances and keys, their
// retrieval, the counter reset, and the refused changes.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_FCPortStatisticsProvider.h"
#include "QEL_FCPortList.h"
#include "QEL_LESBList.h"
#include "QEL_PortWWN.h"
#include "QEL_ProviderFrame.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

#include <cstring>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

// Prefix of this provider's error texts: the CIM class name, not the
// provider's, as the array's clients know it.
static const String ClassName = "QEL_FCPortLESBStatistics";

// Source name carried by the access refusals, with their fixed line numbers.
static const char SOURCE[] = "QEL_FCPortStatisticsProvider";
static const Uint32 LINE_GET_INSTANCE = 101;
static const Uint32 LINE_ENUMERATE_INSTANCES = 198;
static const Uint32 LINE_ENUMERATE_INSTANCE_NAMES = 247;
static const QEL_ProviderFrame::ChangeSite METHOD_SITE = {SOURCE, 338, 339};

static const char STATISTICS_CLASS[] = "QEL_FCPortLESBStatistics";
static const char RESET_METHOD[] = "ResetSelectedStats";

// The InstanceID: this head, the port's DeviceID text and this tail.
static const char INSTANCE_ID_HEAD[] = "ZEPHRAN:";
static const char INSTANCE_ID_TAIL[] = "-Stats";

// The most characters of a port text that go into a key.
static const size_t PORT_TEXT_MAX = sizeof(api_portLESB_t::portText) - 1;

// api_getFCPorts' last argument: the statistics need no SFP records.
static const int WITHOUT_SFP_RECORDS = 0;

// ResetSelectedStats' answer for any failed reset, whatever the library said.
static const Sint32 RESET_FAILED = 4;

static void _checkClass(const CIMName& className)
{
    if (className != CIMName(STATISTICS_CLASS))
    {
        throw CIMNotSupportedException(ClassName + " Invalid class name");
    }
}

QEL_FCPortStatisticsProvider::QEL_FCPortStatisticsProvider()
{
}

QEL_FCPortStatisticsProvider::QEL_FCPortStatisticsProvider(const CIMObjectPath&)
{
    QEL_ProviderFrame::notSupported(ClassName, "constructor with object path");
}

QEL_FCPortStatisticsProvider::~QEL_FCPortStatisticsProvider()
{
}

void QEL_FCPortStatisticsProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _hostName = QEL_Common::getSystemHostName(cimom);
    // Only an entry line, written once the members are set: kept as it is.
    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortStatisticsProvider::initialize()\n");
}

void QEL_FCPortStatisticsProvider::terminate()
{
    delete this;
}

// ---------------------------------------------------------------- building

String QEL_FCPortStatisticsProvider::makeInstanceID(const api_portLESB_t& lesb)
{
    return String(INSTANCE_ID_HEAD) + QEL_recordText(lesb.portText) + INSTANCE_ID_TAIL;
}

Uint64 QEL_FCPortStatisticsProvider::getPortWWN(const String& instanceId)
{
    // Only the head must match: a text that gives no WWN behind it reads as
    // the every-port selector, and a WWN without the "-Stats" tail still
    // gives the number read. Callers rely on both.
    const CString text = instanceId.getCString();
    const size_t head = sizeof(INSTANCE_ID_HEAD) - 1;
    if (std::strncmp(text, INSTANCE_ID_HEAD, head) != 0)
    {
        return QEL_ALL_PORTS;
    }
    return QEL_scanWWN(static_cast<const char*>(text) + head);
}

CIMInstance QEL_FCPortStatisticsProvider::buildInstance(
    CIMClass cimClass, const api_portLESB_t& lesb, const String& hostName)
{
    CIMInstance instance = QEL_Common::buildInstanceSkeleton(cimClass);
    QEL_Common::setPropertyValue(instance, "InstanceID", makeInstanceID(lesb));

    // A record without a port identifier still gets the property, empty.
    String elementName;
    if (lesb.portId != 0)
    {
        const char* position = loop_text(lesb.portId);
        elementName = String("FC Port ") + (position != 0 ? position : "") + " LESB Statistics";
    }
    QEL_Common::setPropertyValue(instance, "ElementName", elementName);
    QEL_Common::setPropertyValue(
        instance, "StatisticTime",
        QEL_Common::getCIMDateTime(static_cast<time_t>(lesb.sampleTime)));

    QEL_Common::setPropertyValue(instance, "LinkFailures", Uint64(lesb.linkFailures));
    QEL_Common::setPropertyValue(instance, "LossOfSyncCounter", Uint64(lesb.lossOfSync));
    QEL_Common::setPropertyValue(instance, "LossOfSignalCounter", Uint64(lesb.lossOfSignal));
    QEL_Common::setPropertyValue(
        instance, "PrimitiveSeqProtocolErrCount", Uint64(lesb.primitiveSeqErrors));
    QEL_Common::setPropertyValue(instance, "InvalidTransmissionWords", Uint64(lesb.invalidTxWords));
    QEL_Common::setPropertyValue(instance, "CRCErrors", Uint64(lesb.crcErrors));

    instance.setPath(buildObjectPath(hostName, makeInstanceID(lesb)));
    return instance;
}

CIMInstance QEL_FCPortStatisticsProvider::buildInstance(
    CIMClass cimClass, const char* portText, const String& hostName)
{
    CIMInstance instance = QEL_Common::buildInstanceSkeleton(cimClass);

    api_portLESB_t record;
    std::memset(&record, 0, sizeof(record));
    if (portText != 0)
    {
        std::memcpy(record.portText, portText, strnlen(portText, PORT_TEXT_MAX));
    }
    const String instanceId = makeInstanceID(record);
    QEL_Common::setPropertyValue(instance, "InstanceID", instanceId);

    instance.setPath(buildObjectPath(hostName, instanceId));
    return instance;
}

CIMObjectPath
QEL_FCPortStatisticsProvider::buildObjectPath(const String& hostName, const String& instanceId)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", instanceId, CIMKeyBinding::STRING));
    return CIMObjectPath(
        hostName, CIMNamespaceName(QEL_NAMESPACE), CIMName(STATISTICS_CLASS), keys);
}

Array<CIMInstance> QEL_FCPortStatisticsProvider::_build_instances(
    const String& instanceId, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortStatisticsProvider::_build_instances\n");

    // One pass per port: the port's WWN and the text of its key-only
    // instance.
    struct Pass
    {
        Uint64 wwn;
        String keyText;
    };
    std::vector<Pass> passes;

    QEL_FCPortList ports;
    bool havePasses = true;
    if (instanceId.size() != 0)
    {
        // The key-only instance of a single pass is made from the whole
        // InstanceID, so its key nests prefix and suffix twice and matches
        // nothing: intended.
        passes.push_back(Pass{getPortWWN(instanceId), instanceId});
    }
    else if (ports.readFCPorts(QEL_ALL_PORTS, WITHOUT_SFP_RECORDS) == 0)
    {
        passes.reserve(ports.size());
        for (Uint32 i = 0; i < ports.size(); i++)
        {
            passes.push_back(Pass{ports[i].portWwn, QEL_recordText(ports[i].wwnText)});
        }
    }
    else
    {
        havePasses = false;
    }

    Array<CIMInstance> instances;
    if (havePasses)
    {
        CIMClass statisticsClass = QEL_ProviderFrame::storedClass(
            _cimom, CIMName(STATISTICS_CLASS), includeQualifiers, includeClassOrigin, propertyList);

        instances.reserveCapacity(static_cast<Uint32>(passes.size()));
        for (const Pass& pass : passes)
        {
            QEL_LESBList lesb;
            if (lesb.read(pass.wwn) != 0)
            {
                continue;
            }
            // Only the first record of a port counts.
            if (lesb.size() > 0)
            {
                instances.append(buildInstance(statisticsClass, lesb[0], _hostName));
            }
            else
            {
                instances.append(
                    buildInstance(statisticsClass, pass.keyText.getCString(), _hostName));
            }
        }
    }
    ports.release();

    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortStatisticsProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> QEL_FCPortStatisticsProvider::_build_ref()
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortStatisticsProvider::_build_ref\n");

    // Names come from the LESB records only: a port without records has an
    // instance in the enumeration but no name here, as intended.
    Array<CIMObjectPath> paths;
    QEL_LESBList lesb;
    if (lesb.read(QEL_ALL_PORTS) == 0)
    {
        paths.reserveCapacity(lesb.size());
        for (Uint32 i = 0; i < lesb.size(); i++)
        {
            paths.append(buildObjectPath(_hostName, makeInstanceID(lesb[i])));
        }
    }

    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortStatisticsProvider::_build_ref\n");
    return paths;
}

// ---------------------------------------------------------------- requests

void QEL_FCPortStatisticsProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortStatisticsProvider::getInstance\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_GET_INSTANCE);
    _checkClass(instanceReference.getClassName());

    String instanceId;
    if (!QEL_ProviderFrame::keyValue(instanceReference, "InstanceID", instanceId))
    {
        throw CIMInvalidParameterException(ClassName + " InstanceID key not found.");
    }

    const Array<CIMInstance> candidates =
        _build_instances(instanceId, includeQualifiers, includeClassOrigin, propertyList);
    if (QEL_ProviderFrame::deliverMatch(instanceReference, candidates, handler))
    {
        log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortStatisticsProvider::getInstance\n");
        return;
    }
    // The key follows the text without a blank, as the array's tools show it.
    throw CIMObjectNotFoundException(ClassName + " CIM Object not found." + instanceId);
}

void QEL_FCPortStatisticsProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortStatisticsProvider::enumerateInstances\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCES);
    _checkClass(classReference.getClassName());

    QEL_ProviderFrame::deliverAll(
        handler, _build_instances(String(), includeQualifiers, includeClassOrigin, propertyList));
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortStatisticsProvider::enumerateInstances\n");
}

void QEL_FCPortStatisticsProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortStatisticsProvider::enumerateInstanceNames\n");
    QEL_ProviderFrame::checkSession(context, SOURCE, LINE_ENUMERATE_INSTANCE_NAMES);
    _checkClass(classReference.getClassName());

    QEL_ProviderFrame::deliverAll(handler, _build_ref());
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortStatisticsProvider::enumerateInstanceNames\n");
}

void QEL_FCPortStatisticsProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "modifyInstance");
}

void QEL_FCPortStatisticsProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "createInstance");
}

void QEL_FCPortStatisticsProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "deleteInstance");
}

void QEL_FCPortStatisticsProvider::invokeMethod(
    const OperationContext& context, const CIMObjectPath& objectReference,
    const CIMName& methodName, const Array<CIMParamValue>&, MethodResultResponseHandler& handler)
{
    const QEL_ProviderFrame::Requester who = QEL_ProviderFrame::requester(context);
    const String className = objectReference.getClassName().getString();
    const String method = methodName.getString();

    // Both method traces name another provider, and the exit trace is
    // written at the failure level: kept as the array's tools expect them.
    log_message(
        QEL_TRACE_FLOW,
        "-->QEL_SASPortProvider::invokeMethod()\n\t className = %s, methodName = %s\n",
        (const char*)className.getCString(), (const char*)method.getCString());

    api_evtparam_t apiEvent =
        QEL_ProviderFrame::openChange(context, who, className, method, METHOD_SITE);

    // The key is judged before the method name, so an unknown method on a
    // bad key reports the key. The label reads DeviceID although the key is
    // InstanceID: intended.
    const String instanceId = QEL_Common::getStringProperty(objectReference, "InstanceID");
    const Uint64 wwn = getPortWWN(instanceId);
    if (wwn == QEL_ALL_PORTS)
    {
        QEL_ProviderFrame::deviceNotFound(ClassName, "invokeMethod", "DeviceID", instanceId);
    }
    if (methodName != CIMName(RESET_METHOD))
    {
        throw CIMOperationFailedException(
            ClassName + "::invokeMethod(): " + "Invalid method " + method);
    }

    // The only library change of the module made without the semaphore, and
    // every refusal answers 4 whatever the library's code: both intended.
    const Sint32 result = api_resetPortLESB(&apiEvent, wwn) == 0 ? 0 : RESET_FAILED;

    handler.processing();
    handler.deliver(CIMValue(result));
    handler.complete();
    log_message(QEL_TRACE_FAILURE, "<--QEL_SASPortProvider::invokeMethod()\n");
}

PEGASUS_NAMESPACE_END
