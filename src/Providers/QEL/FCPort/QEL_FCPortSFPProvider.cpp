//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortSFPProvider: the FC port to SFP association. The requests go
// through the shared association frame; this file gives the provider's values
// and its list builders, which read the FC port list (with SFP records) once
// per request and build both ends with the port's and the SFP's own builders.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_FCPortSFPProvider.h"
#include "QEL_ProviderFrame.h"
#include "QEL_FCPortList.h"
#include "QEL_FCPortProvider.h"
#include "QEL_SFPProvider.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

PEGASUS_NAMESPACE_BEGIN

// Prefix of this provider's error texts.
static const String ClassName = "QEL_FCPortSFPProvider";

QEL_FCPortSFPProvider::QEL_FCPortSFPProvider()
{
}

QEL_FCPortSFPProvider::~QEL_FCPortSFPProvider()
{
}

void QEL_FCPortSFPProvider::initialize(CIMOMHandle& cimom)
{
    // The stray ")" after the line end is part of the kept trace text.
    log_message(QEL_TRACE_FLOW, "--> QEL_FCPortSFPProvider::initialize(cimom)\n)");
    _cimom = cimom;
    _assocClassName = CIMName("QEL_FCPortSFP");
    _portClassName = CIMName("QEL_FCPort");
    _sfpClassName = CIMName("QEL_SFP");
    _hostName = QEL_Common::getSystemHostName(cimom);
    log_message(QEL_TRACE_FLOW, "<-- QEL_FCPortSFPProvider::initialize(cimom)\n)");
}

void QEL_FCPortSFPProvider::terminate()
{
    delete this;
}

// ------------------------------------------------------- the frame's values

// Result classes an associator request may name, and the direction rules.
static const char* const ACCEPTED_RESULT_CLASSES[] = {
    "CIM_FCPort", "QEL_FCPort", "CIM_PhysicalConnector", "QEL_SFP", 0};
static const char* const REFUSED_FROM_PORT[] = {"CIM_FCPort", 0};
static const char* const REFUSED_FROM_SFP[] = {"CIM_PhysicalConnector", 0};

// Line numbers and trace texts per request. The odd spacing, and the
// referenceNames argument line that names references without a line end,
// are intended: the array's log readers expect them as they stand.
static const QEL_AssociationProfile PROFILE = {
    "QEL_FCPortSFPProvider",
    "CIM_PortActiveConnection",
    "Dependent",
    "Antecedent",
    ACCEPTED_RESULT_CLASSES,
    REFUSED_FROM_PORT,
    REFUSED_FROM_SFP,
    false,  // an SFP sits in one port: references from it take the first only
    {115, "-->QEL_FCPortSFPProvider::associators\n",
     "QEL_FCPortSFPProvider::associators: objectName = %s; associationClass = %s; resultClass = %s \n",
     "QEL_FCPortSFPProvider::associators: invalid params: resultClass = %s \n",
     "<--QEL_FCPortSFPProvider::associators\n"},
    {194, "-->QEL_FCPortSFPProvider::associatorNames\n",
     "QEL_FCPortSFPProvider::associatorNames: objectName = %s; associationClass=%s; resultClass=%s \n",
     "QEL_FCPortSFPProvider::associatorNames: invalid params: associationClass=%s, resultClass=%s\n",
     "<--QEL_FCPortSFPProvider::associatorNames\n"},
    {264, "-->QEL_FCPortSFPProvider::references\n",
     "QEL_FCPortSFPProvider::references: objectName = %s; resultClass = %s \n",
     "QEL_FCPortSFPProvider::references: invalid params: role = %s, resultClass = %s \n",
     "<--QEL_FCPortSFPProvider::references\n"},
    {351, "-->QEL_FCPortSFPProvider::referenceNames\n",
     "QEL_FCPortSFPProvider::references: objectName = %s; resultClass = %s",
     "QEL_FCPortSFPProvider::referenceNames: invalid params: role = %s, resultClass = %s \n",
     "<--QEL_FCPortSFPProvider::referenceNames\n"},
    {431, "-->QEL_FCPortSFPProvider::getInstance()\n", 0,
     "QEL_FCPortSFPProvider::getInstance(): Invalid number of keys (%d)\n",
     "<-- QEL_FCPortSFPProvider::getInstance()\n"},
    {507, "--> QEL_FCPortSFPProvider::enumerateInstances() \n", 0, 0,
     "<-- QEL_FCPortSFPProvider::enumerateInstances()\n"},
    {542, "--> QEL_FCPortSFPProvider::enumerateInstanceNames()\n", 0, 0,
     "<-- QEL_FCPortSFPProvider::enumerateInstanceNames()\n"},
};

// Every FC port, with the embedded SFP records filled in; false when the
// read (or the semaphore) failed, which leaves the list empty.
static bool _readPortsWithSFPs(QEL_FCPortList& list)
{
    return list.readFCPorts(QEL_ALL_PORTS, 1) == 0;
}

static bool _sfpInstalled(const api_FCPort_t& port)
{
    return (port.sfp.presentFlags & API_SFP_PRESENT) != 0;
}

class QEL_FCPortSFPProvider::_Lists : public QEL_AssociationFrame::Lists
{
public:
    explicit _Lists(QEL_FCPortSFPProvider& provider) : _provider(provider) {}

    Array<CIMInstance> relatedInstances(
        const OperationContext&, const CIMObjectPath& objectName, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return _provider._getRelatedInstances(
            objectName, includeQualifiers, includeClassOrigin, propertyList);
    }

    Array<CIMObjectPath>
    relatedInstanceNames(const OperationContext&, const CIMObjectPath& objectName) override
    {
        return _provider._getRelatedInstanceNames(objectName);
    }

    Array<CIMInstance> instances(
        const CIMObjectPath&, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        return _provider._getInstances(includeQualifiers, includeClassOrigin, propertyList);
    }

    Array<CIMObjectPath> instanceNames() override { return _provider._getInstanceNames(); }

private:
    QEL_FCPortSFPProvider& _provider;
};

QEL_AssociationFrame QEL_FCPortSFPProvider::_frame()
{
    return QEL_AssociationFrame(
        PROFILE, ClassName, _cimom, _assocClassName, _portClassName, _sfpClassName, _hostName);
}

// ----------------------------------------------------------- list builders

Array<CIMInstance> QEL_FCPortSFPProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    const CIMName& objectClass = objectName.getClassName();
    log_message(
        QEL_TRACE_FLOW, "-->QEL_FCPortSFPProvider::_getRelatedInstances: className = %s \n",
        (const char*)objectClass.getString().getCString());

    // Any class but the port class is taken for an SFP and read by its Tag.
    const bool fromPort = objectClass == _portClassName;
    const String key = QEL_Common::getStringProperty(objectName, fromPort ? "DeviceID" : "Tag");
    if (key.size() == 0)
    {
        throw CIMInvalidParameterException(
            ClassName + (fromPort ? " DeviceID key not found." : " Tag key not found."));
    }

    Array<CIMInstance> related;
    QEL_FCPortList ports;
    const bool read = _readPortsWithSFPs(ports);
    if (read && fromPort)
    {
        CIMClass sfpClass = QEL_ProviderFrame::storedClass(
            _cimom, _sfpClassName, includeQualifiers, includeClassOrigin, propertyList);
        // Every record of the port is taken; the DeviceID is compared with
        // letter case.
        for (Uint32 i = 0; i < ports.size(); i++)
        {
            const api_FCPort_t& port = ports[i];
            if (_sfpInstalled(port) && String::equal(QEL_recordText(port.wwnText), key))
            {
                related.append(
                    QEL_SFPProvider::buildInstance(sfpClass, port.wwnText, port.sfp, _hostName));
            }
        }
    }
    else if (read && objectClass == _sfpClassName)
    {
        CIMClass portClass = QEL_ProviderFrame::storedClass(
            _cimom, _portClassName, includeQualifiers, includeClassOrigin, propertyList);
        // The Tag is made whether or not the SFP is marked installed.
        for (Uint32 i = 0; i < ports.size(); i++)
        {
            const api_FCPort_t& port = ports[i];
            if (String::equal(QEL_SFPProvider::makeUniqueTAG(port.wwnText, port.sfp), key))
            {
                related.append(QEL_FCPortProvider::buildInstance(portClass, port, _hostName));
                break;
            }
        }
    }
    ports.release();

    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortSFPProvider::_getRelatedInstances\n");
    return related;
}

Array<CIMObjectPath>
QEL_FCPortSFPProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName)
{
    log_message(
        QEL_TRACE_FLOW, "-->QEL_FCPortSFPProvider::_getRelatedInstanceNames: className = %s \n",
        (const char*)objectName.getClassName().getString().getCString());
    // The names cost a full build of the related instances; kept so.
    const Array<CIMObjectPath> names = QEL_AssociationFrame::pathsOf(
        _getRelatedInstances(objectName, false, false, CIMPropertyList()));
    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortSFPProvider::_getRelatedInstanceNames\n");
    return names;
}

Array<CIMInstance> QEL_FCPortSFPProvider::_getInstances(
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortSFPProvider::_getInstances\n");

    Array<CIMInstance> associations;
    QEL_FCPortList ports;
    const bool read = _readPortsWithSFPs(ports);
    if (read)
    {
        const QEL_AssociationFrame frame = _frame();
        for (Uint32 i = 0; i < ports.size(); i++)
        {
            const api_FCPort_t& port = ports[i];
            if (!_sfpInstalled(port))
            {
                continue;
            }
            // Both ends are built as paths only; neither end is fetched.
            const String tag = QEL_SFPProvider::makeUniqueTAG(port.wwnText, port.sfp);
            const CIMObjectPath portPath = QEL_FCPortProvider::buildObjectPath(
                _portClassName, _hostName, QEL_recordText(port.fcSystemName),
                QEL_recordText(port.wwnText));
            const CIMObjectPath sfpPath = QEL_SFPProvider::buildObjectPath(_hostName, tag);
            associations.append(frame._buildAssociationInstance(
                portPath, sfpPath, includeQualifiers, includeClassOrigin, propertyList));
        }
    }
    ports.release();

    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortSFPProvider::_getInstances\n");
    return associations;
}

Array<CIMObjectPath> QEL_FCPortSFPProvider::_getInstanceNames()
{
    log_message(QEL_TRACE_FLOW, "-->QEL_FCPortSFPProvider::_getInstanceNames\n");
    const Array<CIMObjectPath> names =
        QEL_AssociationFrame::pathsOf(_getInstances(false, false, CIMPropertyList()));
    log_message(QEL_TRACE_FLOW, "<--QEL_FCPortSFPProvider::_getInstanceNames\n");
    return names;
}

// ---------------------------------------------------------------- requests

void QEL_FCPortSFPProvider::associators(
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

void QEL_FCPortSFPProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().associatorNames(
        lists, context, objectName, associationClass, resultClass, role, resultRole, handler);
}

void QEL_FCPortSFPProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().references(
        lists, context, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
        propertyList, handler);
}

void QEL_FCPortSFPProvider::referenceNames(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().referenceNames(lists, context, objectName, resultClass, role, handler);
}

void QEL_FCPortSFPProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().getInstance(
        lists, context, instanceReference, includeQualifiers, includeClassOrigin, propertyList,
        handler);
}

void QEL_FCPortSFPProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().enumerateInstances(
        lists, context, classReference, includeQualifiers, includeClassOrigin, propertyList,
        handler);
}

void QEL_FCPortSFPProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    _Lists lists(*this);
    _frame().enumerateInstanceNames(lists, context, classReference, handler);
}

void QEL_FCPortSFPProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "modifyInstance");
}

void QEL_FCPortSFPProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "createInstance");
}

void QEL_FCPortSFPProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    QEL_ProviderFrame::notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
