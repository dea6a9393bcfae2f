//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortElementStatisticalDataProvider: the FC port to LESB statistics
// association. The requests go through the shared association frame; this
// file gives the provider's values and its list builders. Statistics ends and
// all association paths are built from the library; the FC port at the far
// end of a statistics object is asked of the CIM server.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_FCPortElementStatisticalDataProvider.h"
#include "QEL_ProviderFrame.h"
#include "QEL_FCPortList.h"
#include "QEL_LESBList.h"
#include "QEL_FCPortProvider.h"
#include "QEL_FCPortStatisticsProvider.h"
#include "QEL_PortWWN.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

PEGASUS_NAMESPACE_BEGIN

// Prefix of this provider's error texts (without "Provider", by design).
static const String ClassName = "QEL_FCPortElementStatisticalData";

QEL_FCPortElementStatisticalDataProvider::QEL_FCPortElementStatisticalDataProvider()
{
}

QEL_FCPortElementStatisticalDataProvider::~QEL_FCPortElementStatisticalDataProvider()
{
}

void QEL_FCPortElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    // The stray ")" after the line end is part of the kept trace text.
    log_message(
        QEL_TRACE_FLOW, "--> QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)");
    _cimom = cimom;
    _assocClassName = CIMName("QEL_FCPortLESBElementStatisticalData");
    _statsClassName = CIMName("QEL_FCPortLESBStatistics");
    _portClassName = CIMName("QEL_FCPort");
    _hostName = QEL_Common::getSystemHostName(cimom);
    _systemName = QEL_Common::getSystemName(cimom);
    log_message(
        QEL_TRACE_FLOW, "<-- QEL_FCPortElementStatisticalDataProvider::initialize(cimom)\n)");
}

void QEL_FCPortElementStatisticalDataProvider::terminate()
{
    delete this;
}

// ------------------------------------------------------- the frame's values

// Result classes an associator request may name, and the direction rules:
// from a port only the statistics' own classes are accepted (even
// CIM_ManagedElement is refused although the statistics descend from it),
// while from a statistics object the port's whole line of classes is. The
// asymmetry is intended.
static const char* const ACCEPTED_RESULT_CLASSES[] = {
    "CIM_ManagedElement",
    "CIM_ManagedSystemElement",
    "CIM_LogicalElement",
    "CIM_EnabledLogicalElement",
    "CIM_LogicalDevice",
    "CIM_LogicalPort",
    "CIM_NetworkPort",
    "CIM_FCPort",
    "QEL_FCPort",
    "CIM_StatisticalData",
    "QEL_FCPortLESBStatistics",
    0};
static const char* const REFUSED_FROM_PORT[] = {
    "CIM_FCPort",
    "CIM_NetworkPort",
    "CIM_LogicalPort",
    "CIM_LogicalDevice",
    "CIM_EnabledLogicalElement",
    "CIM_LogicalElement",
    "CIM_ManagedSystemElement",
    "CIM_ManagedElement",
    0};
static const char* const REFUSED_FROM_STATISTICS[] = {"CIM_StatisticalData", 0};

// Line numbers and trace texts per request. The spacing differs from the SFP
// association's in places, and the referenceNames argument line names
// references without a line end: intended, the array's log readers expect
// them as they stand.
static const QEL_AssociationProfile PROFILE = {
    "QEL_FCPortElementStatisticalDataProvider",
    "CIM_ElementStatisticalData",
    "ManagedElement",
    "Stats",
    ACCEPTED_RESULT_CLASSES,
    REFUSED_FROM_PORT,
    REFUSED_FROM_STATISTICS,
    true,  // references from a statistics object take every related port
    {128, "-->QEL_FCPortElementStatisticalDataProvider::associators\n",
     "QEL_FCPortElementStatisticalDataProvider::associators: objectName = %s; associationClass=%s; resultClass=%s \n",
     "QEL_FCPortElementStatisticalDataProvider::associators: invalid params: resultClass = %s \n",
     "<--QEL_FCPortElementStatisticalDataProvider::associators\n"},
    {217, "-->QEL_FCPortElementStatisticalDataProvider::associatorNames\n",
     "QEL_FCPortElementStatisticalDataProvider::associatorNames: objectName = %s; associationClass = %s; resultClass=%s \n",
     "QEL_FCPortElementStatisticalDataProvider::associatorNames: invalid params: associationClass=%s, resultClass=%s\n",
     "<--QEL_FCPortElementStatisticalDataProvider::associatorNames\n"},
    {290, "-->QEL_FCPortElementStatisticalDataProvider::references\n",
     "QEL_FCPortElementStatisticalDataProvider::references: objectName = %s; resultClass = %s \n",
     "QEL_FCPortElementStatisticalDataProvider::references: invalid params: role = %s, resultClass = %s \n",
     "<--QEL_FCPortElementStatisticalDataProvider::references\n"},
    {384, "-->QEL_FCPortElementStatisticalDataProvider::referenceNames\n",
     "QEL_FCPortElementStatisticalDataProvider::references: objectName = %s; resultClass = %s",
     "QEL_FCPortElementStatisticalDataProvider::referenceNames: invalid params: role = %s, resultClass = %s \n",
     "<--QEL_FCPortElementStatisticalDataProvider::referenceNames\n"},
    {468, "-->QEL_FCPortElementStatisticalDataProvider::getInstance() \n", 0,
     "QEL_FCPortElementStatisticalDataProvider::getInstance(): Invalid number of keys (%d)\n",
     "<-- QEL_FCPortElementStatisticalDataProvider::getInstance()\n"},
    {547, "--> QEL_FCPortElementStatisticalDataProvider::enumerateInstances() \n", 0, 0,
     "<-- QEL_FCPortElementStatisticalDataProvider::enumerateInstances() \n"},
    {585, "--> QEL_FCPortElementStatisticalDataProvider::enumerateInstanceNames()\n", 0, 0,
     "<-- QEL_FCPortElementStatisticalDataProvider::enumerateInstanceNames()\n"},
};

// The port that the InstanceID key of the path written in text names, for
// the narrowing of getInstance. A port path has no InstanceID, so a
// well-formed association reference keeps every port (the path match decides
// afterwards). Only an empty text is not parsed; a text that is no object
// path ends the request with the parse's own exception.
static Uint64 _narrowingFilter(const String& text)
{
    if (text.size() == 0)
    {
        return QEL_ALL_PORTS;
    }
    const CIMObjectPath path(text);
    return QEL_FCPortStatisticsProvider::getPortWWN(
        QEL_Common::getStringProperty(path, "InstanceID"));
}

class QEL_FCPortElementStatisticalDataProvider::_Lists : public QEL_AssociationFrame::Lists
{
public:
    explicit _Lists(QEL_FCPortElementStatisticalDataProvider& provider) : _provider(provider) {}

    Array<CIMInstance> relatedInstances(
        const OperationContext& context, const CIMObjectPath& objectName,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        return _provider._getRelatedInstances(
            objectName, context, includeQualifiers, includeClassOrigin, propertyList);
    }

    Array<CIMObjectPath>
    relatedInstanceNames(const OperationContext& context, const CIMObjectPath& objectName) override
    {
        return _provider._getRelatedInstanceNames(objectName, context);
    }

    Array<CIMInstance> instances(
        const CIMObjectPath& objectName, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return _provider._getInstances(
            objectName, includeQualifiers, includeClassOrigin, propertyList);
    }

    Array<CIMObjectPath> instanceNames() override { return _provider._getInstanceNames(); }

private:
    QEL_FCPortElementStatisticalDataProvider& _provider;
};

QEL_AssociationFrame QEL_FCPortElementStatisticalDataProvider::_frame()
{
    return QEL_AssociationFrame(
        PROFILE, ClassName, _cimom, _assocClassName, _portClassName, _statsClassName, _hostName);
}

// ----------------------------------------------------------- list builders

Array<CIMInstance> QEL_FCPortElementStatisticalDataProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Uint64 filter = QEL_ALL_PORTS;
    const CIMName& objectClass = objectName.getClassName();
    log_message(
        QEL_TRACE_FLOW,
        "-->QEL_FCPortElementStatisticalDataProvider::_getRelatedInstances: className = %s \n",
        (const char*)objectClass.getString().getCString());

    // A statistics object names its port through its InstanceID; any other
    // object is read as a port by its DeviceID.
    const bool fromStatistics = objectClass == _statsClassName;
    String key;
    if (fromStatistics)
    {
        key = QEL_Common::getStringProperty(objectName, "InstanceID");
        filter = QEL_FCPortStatisticsProvider::getPortWWN(key);
    }
    else
    {
        key = QEL_Common::getStringProperty(objectName, "DeviceID");
        filter = QEL_scanWWN(key.getCString());
    }
    if (key.size() == 0 || filter == QEL_ALL_PORTS)
    {
        throw CIMInvalidParameterException(
            ClassName +
            (fromStatistics ? " InstanceID key not found." : " DeviceID key not found."));
    }

    Array<CIMInstance> related;
    if (fromStatistics)
    {
        // The port end is the FC port provider's instance, asked of the CIM
        // server on behalf of the requester. Only a record the library did
        // hand out is read: a failed or empty read gives nothing.
        QEL_FCPortList ports;
        ports.readFCPorts(filter, 0);
        if (ports.size() > 0)
        {
            const api_FCPort_t& port = ports[0];
            const CIMObjectPath portPath = QEL_FCPortProvider::buildObjectPath(
                _portClassName, _hostName, QEL_recordText(port.fcSystemName),
                QEL_recordText(port.wwnText));
            related.append(_cimom.getInstance(
                context, CIMNamespaceName(QEL_NAMESPACE), portPath, false, includeQualifiers,
                includeClassOrigin, propertyList));
        }
        ports.release();
    }
    else if (objectClass == _portClassName)
    {
        CIMClass statsClass = QEL_ProviderFrame::storedClass(
            _cimom, _statsClassName, includeQualifiers, includeClassOrigin, propertyList);
        QEL_LESBList records;
        records.read(filter);
        // The first record of the port; the DeviceID is compared with letter
        // case.
        for (Uint32 i = 0; i < records.size(); i++)
        {
            if (String::equal(QEL_recordText(records[i].portText), key))
            {
                related.append(
                    QEL_FCPortStatisticsProvider::buildInstance(statsClass, records[i], _hostName));
                break;
            }
        }
    }

    log_message(
        QEL_TRACE_FLOW, "<--QEL_FCPortElementStatisticalDataProvider::_getRelatedInstances\n");
    return related;
}

Array<CIMObjectPath> QEL_FCPortElementStatisticalDataProvider::_getRelatedInstanceNames(
    const CIMObjectPath& objectName, const OperationContext& context)
{
    log_message(
        QEL_TRACE_FLOW,
        "-->QEL_FCPortElementStatisticalDataProvider::_getRelatedInstanceNames: className = %s \n",
        (const char*)objectName.getClassName().getString().getCString());
    const Array<CIMObjectPath> names = QEL_AssociationFrame::pathsOf(
        _getRelatedInstances(objectName, context, false, false, CIMPropertyList()));
    log_message(
        QEL_TRACE_FLOW, "<--QEL_FCPortElementStatisticalDataProvider::_getRelatedInstanceNames\n");
    return names;
}

Array<CIMInstance> QEL_FCPortElementStatisticalDataProvider::_getInstances(
    const CIMObjectPath& objectName, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortElementStatisticalDataProvider::_getInstances\n");
    Uint64 filter = QEL_ALL_PORTS;
    if (!objectName.getClassName().isNull())
    {
        filter = _narrowingFilter(QEL_Common::getStringProperty(objectName, "ManagedElement"));
    }

    Array<CIMInstance> associations;
    QEL_FCPortList ports;
    if (ports.readFCPorts(filter, 0) == 0)
    {
        const QEL_AssociationFrame frame = _frame();
        for (Uint32 i = 0; i < ports.size(); i++)
        {
            const api_FCPort_t& port = ports[i];
            QEL_LESBList records;
            if (records.read(port.portWwn) != 0 || records.size() == 0)
            {
                continue;
            }
            // Only the first record of a port is associated; both ends are
            // built as paths only.
            const String instanceId = QEL_FCPortStatisticsProvider::makeInstanceID(records[0]);
            const CIMObjectPath portPath = QEL_FCPortProvider::buildObjectPath(
                _portClassName, _hostName, QEL_recordText(port.fcSystemName),
                QEL_recordText(port.wwnText));
            const CIMObjectPath statsPath =
                QEL_FCPortStatisticsProvider::buildObjectPath(_hostName, instanceId);
            associations.append(frame._buildAssociationInstance(
                portPath, statsPath, includeQualifiers, includeClassOrigin, propertyList));
        }
    }
    ports.release();

    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortElementStatisticalDataProvider::_getInstances\n");
    return associations;
}

Array<CIMObjectPath> QEL_FCPortElementStatisticalDataProvider::_getInstanceNames()
{
    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortElementStatisticalDataProvider::_getInstanceNames\n");
    const Array<CIMObjectPath> names = QEL_AssociationFrame::pathsOf(
        _getInstances(CIMObjectPath(), false, false, CIMPropertyList()));
    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortElementStatisticalDataProvider::_getInstanceNames\n");
    return names;
}

// ---------------------------------------------------------------- requests

void QEL_FCPortElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().associators(
        lists, context, objectName, associationClass, resultClass, role, resultRole,
        includeQualifiers, includeClassOrigin, propertyList, handler);
}

void QEL_FCPortElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().associatorNames(
        lists, context, objectName, associationClass, resultClass, role, resultRole, handler);
}

void QEL_FCPortElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().references(
        lists, context, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
        propertyList, handler);
}

void QEL_FCPortElementStatisticalDataProvider::referenceNames(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().referenceNames(lists, context, objectName, resultClass, role, handler);
}

void QEL_FCPortElementStatisticalDataProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().getInstance(
        lists, context, instanceReference, includeQualifiers, includeClassOrigin, propertyList,
        handler);
}

void QEL_FCPortElementStatisticalDataProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().enumerateInstances(
        lists, context, classReference, includeQualifiers, includeClassOrigin, propertyList,
        handler);
}

void QEL_FCPortElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().enumerateInstanceNames(lists, context, classReference, handler);
}

void QEL_FCPortElementStatisticalDataProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "modifyInstance");
}

void QEL_FCPortElementStatisticalDataProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "createInstance");
}

void QEL_FCPortElementStatisticalDataProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
