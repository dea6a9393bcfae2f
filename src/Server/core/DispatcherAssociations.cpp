// Association operations. An object name with key bindings is an instance
// request, answered by the association providers registered for the
// association classes that can reference the object's class (filters that
// leave none of them: an empty answer, as OpenPegasus gives); one without
// keys is a class request, answered from the schema.
#include "DispatcherCalls.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/ResultFilter.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>

namespace Pegasus
{

void Dispatcher::_checkAssociationRequest(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole) const
{
    _checkNamespace(nameSpace);
    if (role.size() != 0 && !CIMName::legal(role))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "role " + role);
    if (resultRole.size() != 0 && !CIMName::legal(resultRole))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "resultrole " + resultRole);
    const CIMName className = objectName.getClassName();
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no object.");
    if (!_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, className.getString());
    if (!assocClass.isNull() && !_repository.classExists(nameSpace, assocClass))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, assocClass.getString());
    if (!resultClass.isNull() && !_repository.classExists(nameSpace, resultClass))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, resultClass.getString());
}

std::vector<Dispatcher::AssociationTarget> Dispatcher::_associationTargets(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& classFilter,
    const String& role) const
{
    const CIMName className = objectName.getClassName();
    // No association served for the object, or filters that rule out every
    // one served, leave nobody to ask: an empty answer, as DSP0200 and
    // OpenPegasus (with its repository as default provider) give.
    std::vector<AssociationTarget> targets;
    for (const CIMName& assoc :
         _associations.referencingClasses(nameSpace, className, classFilter, role))
    {
        const ProviderId* provider = _registry.associationProvider(nameSpace, assoc);
        if (provider)
            targets.push_back(AssociationTarget{assoc, provider});
    }
    return targets;
}

void Dispatcher::_deliverClassObjects(
    const CIMNamespaceName& nameSpace, const std::vector<CIMName>& classNames,
    const CIMOperationRequest& r, Answer& answer) const
{
    for (const CIMName& name : classNames)
    {
        CIMClass cimClass = _repository.getClass(
            nameSpace, name, false, r.includeQualifiers, r.includeClassOrigin, r.propertyList);
        CIMObject object(cimClass);
        object.setPath(CIMObjectPath(_hostName, nameSpace, name));
        answer.sink.deliverObject(object);
    }
}

void Dispatcher::_deliverClassPaths(
    const CIMNamespaceName& nameSpace, const std::vector<CIMName>& classNames, Answer& answer) const
{
    for (const CIMName& name : classNames)
        answer.sink.deliverPath(CIMObjectPath(_hostName, nameSpace, name));
}

void Dispatcher::_deliverAssociationObject(
    const CIMObject& delivered, const CIMOperationRequest& r, Answer& answer) const
{
    CIMObject object = ResultFilter::filtered(
        delivered, r.includeQualifiers, r.includeClassOrigin, r.propertyList);
    object.setPath(_completedPath(object.getPath(), r.nameSpace));
    answer.sink.deliverObject(object);
}

void Dispatcher::_associators(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkAssociationRequest(
        nameSpace, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole);
    if (r.objectName.getKeyBindings().size() == 0)
        return _deliverClassObjects(
            nameSpace,
            _associations.associatedClasses(
                nameSpace, r.objectName.getClassName(), r.assocClass, r.resultClass, r.role,
                r.resultRole),
            r, answer);

    // As OpenPegasus does, the role does not narrow the association classes
    // here; the providers apply it.
    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, r.objectName, r.assocClass, String());
    CIMObjectPath path = _providerPath(r.objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMAssociationProvider, ObjectListResponseHandler>(
        targets, answer,
        [&](CIMAssociationProvider& p, const AssociationTarget& target,
            ObjectResponseHandler& handler)
        {
            p.associators(
                providerContext, path, target.assocClass, r.resultClass, r.role, r.resultRole,
                r.includeQualifiers, r.includeClassOrigin, r.propertyList, handler);
        },
        [&](const CIMObject& delivered) { _deliverAssociationObject(delivered, r, answer); });
}

void Dispatcher::_associatorNames(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkAssociationRequest(
        nameSpace, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole);
    if (r.objectName.getKeyBindings().size() == 0)
        return _deliverClassPaths(
            nameSpace,
            _associations.associatedClasses(
                nameSpace, r.objectName.getClassName(), r.assocClass, r.resultClass, r.role,
                r.resultRole),
            answer);

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, r.objectName, r.assocClass, String());
    CIMObjectPath path = _providerPath(r.objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMAssociationProvider, ObjectPathListResponseHandler>(
        targets, answer,
        [&](CIMAssociationProvider& p, const AssociationTarget& target,
            ObjectPathResponseHandler& handler)
        {
            p.associatorNames(
                providerContext, path, target.assocClass, r.resultClass, r.role, r.resultRole,
                handler);
        },
        [&](const CIMObjectPath& delivered)
        { answer.sink.deliverPath(_completedPath(delivered, nameSpace)); });
}

void Dispatcher::_references(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkAssociationRequest(nameSpace, r.objectName, CIMName(), r.resultClass, r.role, String());
    if (r.objectName.getKeyBindings().size() == 0)
        return _deliverClassObjects(
            nameSpace,
            _associations.referencingClasses(
                nameSpace, r.objectName.getClassName(), r.resultClass, r.role),
            r, answer);

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, r.objectName, r.resultClass, r.role);
    CIMObjectPath path = _providerPath(r.objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMAssociationProvider, ObjectListResponseHandler>(
        targets, answer,
        [&](CIMAssociationProvider& p, const AssociationTarget& target,
            ObjectResponseHandler& handler)
        {
            p.references(
                providerContext, path, target.assocClass, r.role, r.includeQualifiers,
                r.includeClassOrigin, r.propertyList, handler);
        },
        [&](const CIMObject& delivered) { _deliverAssociationObject(delivered, r, answer); });
}

void Dispatcher::_referenceNames(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkAssociationRequest(nameSpace, r.objectName, CIMName(), r.resultClass, r.role, String());
    if (r.objectName.getKeyBindings().size() == 0)
        return _deliverClassPaths(
            nameSpace,
            _associations.referencingClasses(
                nameSpace, r.objectName.getClassName(), r.resultClass, r.role),
            answer);

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, r.objectName, r.resultClass, r.role);
    CIMObjectPath path = _providerPath(r.objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMAssociationProvider, ObjectPathListResponseHandler>(
        targets, answer,
        [&](CIMAssociationProvider& p, const AssociationTarget& target,
            ObjectPathResponseHandler& handler)
        { p.referenceNames(providerContext, path, target.assocClass, r.role, handler); },
        [&](const CIMObjectPath& delivered)
        { answer.sink.deliverPath(_completedPath(delivered, nameSpace)); });
}

}  // namespace Pegasus
