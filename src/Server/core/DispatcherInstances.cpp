// Instance operations, and the property operations OpenPegasus hands to the
// instance provider as a getInstance or a modifyInstance of one property.
#include "DeclaredValues.h"
#include "DispatcherCalls.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/ResultFilter.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

namespace Pegasus
{

CIMInstance Dispatcher::_fetchInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    const CIMName className = instanceName.getClassName();
    _checkInstanceClass(nameSpace, className);
    const ProviderId* provider = _registry.instanceProvider(nameSpace, className);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED);

    CIMObjectPath path = _providerPath(instanceName, nameSpace);
    GetInstanceResponseHandler handler(path);
    OperationContext providerContext = _providerContext(context);
    _call<CIMInstanceProvider>(
        *provider, handler.protocol(),
        [&](CIMInstanceProvider& p)
        {
            p.getInstance(
                providerContext, path, includeQualifiers, includeClassOrigin, propertyList,
                handler);
        });
    return ResultFilter::filtered(
        handler.takeResult(), includeQualifiers, includeClassOrigin, propertyList);
}

void Dispatcher::_getInstance(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    answer.sink.deliverInstance(_fetchInstance(
        context, r.nameSpace, r.objectName, r.includeQualifiers, r.includeClassOrigin,
        r.propertyList));
}

std::vector<Dispatcher::InstanceTarget>
Dispatcher::_instanceTargets(const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    std::vector<InstanceTarget> targets;
    Array<CIMName> classes;
    classes.append(className);
    classes.appendArray(_repository.subclassNames(nameSpace, className, true));
    for (Uint32 i = 0; i < classes.size(); ++i)
    {
        const ProviderId* provider = _registry.instanceProvider(nameSpace, classes[i]);
        if (provider)
            targets.push_back(InstanceTarget{classes[i], provider});
    }
    if (targets.empty())
        throw notSupportedForClass(className);
    return targets;
}

void Dispatcher::_enumerateInstances(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    // Without deep inheritance the properties of subclasses are left out:
    // providers get, and results keep, the requested class's properties.
    CIMPropertyList effectiveList = r.propertyList;
    if (!r.deepInheritance && r.propertyList.isNull())
        effectiveList = classPropertyList(_instanceClass(nameSpace, r.className));
    else
        _checkInstanceClass(nameSpace, r.className);

    std::vector<InstanceTarget> targets = _instanceTargets(nameSpace, r.className);

    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMInstanceProvider, InstanceListResponseHandler>(
        targets, answer,
        [&](CIMInstanceProvider& p, const InstanceTarget& target, InstanceResponseHandler& handler)
        {
            CIMObjectPath classPath =
                _providerPath(CIMObjectPath(String(), nameSpace, target.className), nameSpace);
            p.enumerateInstances(
                providerContext, classPath, r.includeQualifiers, r.includeClassOrigin,
                effectiveList, handler);
        },
        [&](const CIMInstance& delivered)
        {
            answer.sink.deliverInstance(ResultFilter::filtered(
                delivered, r.includeQualifiers, r.includeClassOrigin, effectiveList));
        });
}

void Dispatcher::_enumerateInstanceNames(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkInstanceClass(nameSpace, r.className);

    std::vector<InstanceTarget> targets = _instanceTargets(nameSpace, r.className);

    OperationContext providerContext = _providerContext(context);
    _fanOut<CIMInstanceProvider, ObjectPathListResponseHandler>(
        targets, answer,
        [&](CIMInstanceProvider& p, const InstanceTarget& target,
            ObjectPathResponseHandler& handler)
        {
            CIMObjectPath classPath =
                _providerPath(CIMObjectPath(String(), nameSpace, target.className), nameSpace);
            p.enumerateInstanceNames(providerContext, classPath, handler);
        },
        [&](const CIMObjectPath& delivered) { answer.sink.deliverPath(delivered); });
}

CIMInstance
Dispatcher::_checkedInstance(const CIMNamespaceName& nameSpace, const CIMInstance& instance) const
{
    if (instance.isUninitialized())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request carries no instance.");
    CIMClass cimClass = _instanceClass(nameSpace, instance.getClassName());

    // A copy the provider may keep, properties in the client's order. Class
    // origins and propagated flags are the server's business and are
    // cleared, as OpenPegasus clears them.
    CIMInstance copy(instance.getClassName());
    copy.setPath(instance.getPath());
    for (Uint32 q = 0; q < instance.getQualifierCount(); ++q)
        copy.addQualifier(instance.getQualifier(q).clone());
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
    {
        CIMConstProperty property = instance.getProperty(i);
        Uint32 pos = cimClass.findProperty(property.getName());
        if (pos == PEG_NOT_FOUND)
            throw noSuchProperty(cimClass.getClassName(), property.getName());
        CIMConstProperty declared = static_cast<const CIMClass&>(cimClass).getProperty(pos);
        CIMValue value = property.getValue();
        if (value.getType() != declared.getType() || value.isArray() != declared.isArray())
        {
            if (!value.isNull())
                throw CIMException(
                    CIM_ERR_TYPE_MISMATCH,
                    "Property " + property.getName().getString() + " is declared " +
                        describeType(declared.getType(), declared.isArray()) + ", not " +
                        describeType(value.getType(), value.isArray()) + ".");
            // A null value takes the declared type.
            value = CIMValue(declared.getType(), declared.isArray());
        }
        CIMProperty checked(
            property.getName(), value, 0,
            value.getType() == CIMTYPE_REFERENCE ? declared.getReferenceClassName() : CIMName());
        for (Uint32 q = 0; q < property.getQualifierCount(); ++q)
            checked.addQualifier(property.getQualifier(q).clone());
        copy.addProperty(checked);
    }
    return copy;
}

void Dispatcher::_createInstance(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    CIMInstance instance = _checkedInstance(nameSpace, r.instance);
    const CIMName className = instance.getClassName();
    const ProviderId* provider = _registry.instanceProvider(nameSpace, className);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED);

    CIMObjectPath path = _providerPath(
        CIMObjectPath(String(), nameSpace, className, instance.getPath().getKeyBindings()),
        nameSpace);
    CreateInstanceResponseHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMInstanceProvider>(
        *provider, handler.protocol(),
        [&](CIMInstanceProvider& p)
        { p.createInstance(providerContext, path, instance, handler); });
    answer.sink.deliverPath(handler.result());
}

void Dispatcher::_modify(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    CIMInstance instance = _checkedInstance(nameSpace, modifiedInstance);
    const CIMName className = instance.getClassName();
    if (!propertyList.isNull())
    {
        CIMClass cimClass =
            _repository.getClass(nameSpace, className, false, false, false, CIMPropertyList());
        for (Uint32 i = 0; i < propertyList.size(); ++i)
        {
            if (cimClass.findProperty(propertyList[i]) == PEG_NOT_FOUND)
                throw noSuchProperty(className, propertyList[i]);
        }
    }
    const ProviderId* provider = _registry.instanceProvider(nameSpace, className);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED);

    CIMObjectPath path = _providerPath(
        CIMObjectPath(String(), nameSpace, className, instance.getPath().getKeyBindings()),
        nameSpace);
    OperationStatusHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMInstanceProvider>(
        *provider, handler.protocol(),
        [&](CIMInstanceProvider& p) {
            p.modifyInstance(
                providerContext, path, instance, includeQualifiers, propertyList, handler);
        });
}

void Dispatcher::_modifyInstance(
    const OperationContext& context, const CIMOperationRequest& r, Answer&)
{
    _modify(context, r.nameSpace, r.instance, r.includeQualifiers, r.propertyList);
}

void Dispatcher::_deleteInstance(
    const OperationContext& context, const CIMOperationRequest& r, Answer&)
{
    const CIMName className = r.objectName.getClassName();
    _checkInstanceClass(r.nameSpace, className);
    const ProviderId* provider = _registry.instanceProvider(r.nameSpace, className);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED);

    CIMObjectPath path = _providerPath(r.objectName, r.nameSpace);
    OperationStatusHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMInstanceProvider>(
        *provider, handler.protocol(),
        [&](CIMInstanceProvider& p) { p.deleteInstance(providerContext, path, handler); });
}

void Dispatcher::_getProperty(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMName className = r.objectName.getClassName();
    const CIMName& propertyName = r.propertyName;
    if (propertyName.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no property.");
    if (_instanceClass(r.nameSpace, className).findProperty(propertyName) == PEG_NOT_FOUND)
        throw noSuchProperty(className, propertyName);

    CIMInstance instance = _fetchInstance(
        context, r.nameSpace, r.objectName, false, false,
        CIMPropertyList(Array<CIMName>(1, propertyName)));
    const Uint32 pos = instance.findProperty(propertyName);
    // A provider may leave a declared property out; OpenPegasus then answers so.
    if (pos == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY, propertyName.getString());
    answer.returnValue = instance.getProperty(pos).getValue();
}

void Dispatcher::_setProperty(
    const OperationContext& context, const CIMOperationRequest& r, Answer&)
{
    const CIMName className = r.objectName.getClassName();
    const CIMName& propertyName = r.propertyName;
    if (propertyName.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no property.");
    CIMClass cimClass = _instanceClass(r.nameSpace, className);
    const Uint32 pos = cimClass.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
        throw noSuchProperty(className, propertyName);

    CIMConstProperty declared = static_cast<const CIMClass&>(cimClass).getProperty(pos);
    CIMValue value = r.newValue;
    if (!value.isNull() && value.getType() == CIMTYPE_STRING &&
        declared.getType() != CIMTYPE_STRING && value.isArray() == declared.isArray())
        value = valueFromText(
            value, declared.getType(),
            "property " + toStd(propertyName.getString()) + " of class " +
                toStd(className.getString()));

    CIMInstance instance(className);
    instance.setPath(r.objectName);
    instance.addProperty(CIMProperty(propertyName, value));
    _modify(
        context, r.nameSpace, instance, false, CIMPropertyList(Array<CIMName>(1, propertyName)));
}

}  // namespace Pegasus
