//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortSFPProvider: the association QEL_FCPortSFP between an FC port and
// the SFP transceiver plugged into it.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_FCPortSFPProvider_h
#define QEL_FCPortSFPProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "QEL_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class QEL_FCPortSFPProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    QEL_FCPortSFPProvider();
    virtual ~QEL_FCPortSFPProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void associators(
        const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler);

    virtual void associatorNames(
        const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, ObjectPathResponseHandler& handler);

    virtual void references(
        const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        ObjectResponseHandler& handler);

    virtual void referenceNames(
        const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler);

    virtual void getInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);

    virtual void enumerateInstances(
        const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);

    virtual void enumerateInstanceNames(
        const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    virtual void modifyInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);

    virtual void createInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);

    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        ResponseHandler& handler);

private:
    // The list builders below as the association frame calls them.
    class _Lists;

    // The shared request frame, bound to this provider's members.
    QEL_AssociationFrame _frame();

    // The SFPs of an FC port, or the FC port of an SFP (the first whose Tag
    // matches), built from one read of the port list.
    Array<CIMInstance> _getRelatedInstances(
        const CIMObjectPath& objectName, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // The paths of what _getRelatedInstances builds, in the same order.
    Array<CIMObjectPath> _getRelatedInstanceNames(const CIMObjectPath& objectName);

    // One association per FC port with an installed transceiver.
    Array<CIMInstance> _getInstances(
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

    // The paths of what _getInstances builds, in the same order.
    Array<CIMObjectPath> _getInstanceNames();

    CIMOMHandle _cimom;
    CIMName _assocClassName;
    CIMName _portClassName;
    CIMName _sfpClassName;
    String _hostName;
};

PEGASUS_NAMESPACE_END

#endif
