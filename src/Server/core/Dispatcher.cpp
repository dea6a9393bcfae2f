#include "Dispatcher.h"

#include "CoreText.h"
#include "ProviderErrors.h"
#include "ProviderManager.h"
#include "ProviderRegistry.h"
#include "ServerLog.h"

#include <Server/repository/ClassRepository.h>
#include <Server/xml/ValueText.h>

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/ResultFilter.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <unistd.h>

#include <vector>

namespace Pegasus
{

namespace
{

// This machine's name as OpenPegasus puts it into paths; a name the object
// path rules would refuse falls back to "localhost".
String machineHostName()
{
    char buffer[256] = {0};
    if (gethostname(buffer, sizeof(buffer) - 1) != 0 || buffer[0] == '\0')
        return String("localhost");
    try
    {
        String name = safeString(buffer);
        CIMObjectPath probe;
        probe.setHost(name);
        return name;
    }
    catch (...)
    {
        return String("localhost");
    }
}

CIMException notSupportedForClass(const CIMName& className)
{
    return CIMException(
        CIM_ERR_NOT_SUPPORTED,
        "No provider or repository defined for class " + className.getString() + ".");
}

// Results of several providers: OpenPegasus drops a NOT_SUPPORTED answer
// unless every provider gave one; any other error fails the request.
class FanOut
{
public:
    template <class Call>
    void run(Call&& call)
    {
        if (_error)
            return;
        try
        {
            call();
            _answered = true;
        }
        catch (const CIMException& e)
        {
            if (e.getCode() != CIM_ERR_NOT_SUPPORTED)
                _error = std::make_unique<CIMException>(e);
            else if (!_notSupported)
                _notSupported = std::make_unique<CIMException>(e);
        }
    }

    void finish() const
    {
        if (_error)
            throw *_error;
        if (!_answered && _notSupported)
            throw *_notSupported;
    }

private:
    bool _answered = false;
    std::unique_ptr<CIMException> _error;
    std::unique_ptr<CIMException> _notSupported;
};

CIMPropertyList classPropertyList(const CIMClass& cimClass)
{
    Array<CIMName> names;
    for (Uint32 i = 0; i < cimClass.getPropertyCount(); ++i)
        names.append(cimClass.getProperty(i).getName());
    return CIMPropertyList(names);
}

// The host name providers will see; one the object path rules refuse
// would make every request fail, so it stops the start instead.
String checkedHostName(const String& configured)
{
    if (configured.size() == 0)
        return machineHostName();
    try
    {
        CIMObjectPath probe;
        probe.setHost(configured);
    }
    catch (const Exception&)
    {
        throw Exception("The host name \"" + configured + "\" is not valid in object paths.");
    }
    return configured;
}

String describeType(CIMType type, Boolean isArray)
{
    return String(cimTypeToString(type)) + (isArray ? "[]" : "");
}

CIMException noSuchProperty(const CIMName& className, const CIMName& propertyName)
{
    return CIMException(
        CIM_ERR_NO_SUCH_PROPERTY,
        "Class " + className.getString() + " has no property " + propertyName.getString() + ".");
}

// A value sent as text without a type (a PARAMVALUE without PARAMTYPE,
// SetProperty's NewValue), read as the declared type; the caller has
// matched array against scalar.
CIMValue valueFromText(const CIMValue& text, CIMType type, const std::string& where)
{
    if (text.isArray())
    {
        Array<String> texts;
        text.get(texts);
        std::vector<std::string> items;
        items.reserve(texts.size());
        for (Uint32 k = 0; k < texts.size(); ++k)
            items.push_back(toStd(texts[k]));
        return qel::cimxml::parseArray(type, items, where);
    }
    String single;
    text.get(single);
    return qel::cimxml::parseScalar(type, toStd(single), where);
}

}  // namespace

Dispatcher::Dispatcher(
    const ClassRepository& repository,
    const ProviderRegistry& registry,
    ProviderManager& providers,
    DispatcherOptions options)
    : _repository(repository),
      _registry(registry),
      _providers(providers),
      _associations(repository),
      _hostName(checkedHostName(options.hostName)),
      _threshold(options.responseObjectThreshold)
{
}

OperationContext Dispatcher::requestContext(const String& userName, const String& clientAddress)
{
    OperationContext context;
    context.insert(IdentityContainer(userName, clientAddress));
    return context;
}

// ---------------------------------------------------------------------------
// Common checks and conversions

void Dispatcher::_checkNamespace(const CIMNamespaceName& nameSpace) const
{
    if (nameSpace.isNull() || !_repository.namespaceExists(nameSpace))
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, nameSpace.getString());
}

void Dispatcher::_checkInstanceClass(const CIMNamespaceName& nameSpace, const CIMName& className)
    const
{
    _checkNamespace(nameSpace);
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no class.");
    if (!_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_INVALID_CLASS, className.getString());
}

CIMClass
Dispatcher::_instanceClass(const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    _checkInstanceClass(nameSpace, className);
    return _repository.getClass(nameSpace, className, false, false, false, CIMPropertyList());
}

OperationContext Dispatcher::_providerContext(const OperationContext& context) const
{
    // Providers always find an identity, as OpenPegasus's handle makes sure;
    // a nested call made with a fresh context runs as the empty user.
    OperationContext providerContext(context);
    if (!providerContext.contains(IdentityContainer::NAME))
        providerContext.insert(IdentityContainer(String()));
    return providerContext;
}

CIMObjectPath
Dispatcher::_providerPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const
{
    CIMObjectPath p(path);
    p.setHost(_hostName);
    p.setNameSpace(nameSpace);
    return p;
}

CIMObjectPath
Dispatcher::_completedPath(const CIMObjectPath& path, const CIMNamespaceName& nameSpace) const
{
    CIMObjectPath p(path);
    if (p.getHost().size() == 0)
        p.setHost(_hostName);
    if (p.getNameSpace().isNull())
        p.setNameSpace(nameSpace);
    return p;
}

// Anything a provider call lets escape becomes the CIMException the client
// gets; what is not a CIM error is logged, since it is a provider fault.
template <class I, class Call>
void Dispatcher::_call(const ProviderId& provider, const HandlerProtocol& protocol, Call&& call)
{
    ProviderManager::Lease lease = _providers.acquire(provider);
    I* iface = dynamic_cast<I*>(lease.provider());
    if (iface == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "Invalid provider interface.");
    try
    {
        call(*iface);
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (...)
    {
        CIMException mapped = currentExceptionAsCIMException();
        ServerLog::warning(
            "provider " + provider.describe() +
            " threw a non-CIM exception: " + toStd(mapped.getMessage()));
        throw mapped;
    }
    if (protocol.hasStatus())
        throw protocol.status();
}

// ---------------------------------------------------------------------------
// Class operations

CIMClass Dispatcher::getClass(
    const OperationContext&,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    _checkNamespace(nameSpace);
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no class.");
    return _repository.getClass(
        nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMName> Dispatcher::enumerateClassNames(
    const OperationContext&,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance)
{
    _checkNamespace(nameSpace);
    if (!className.isNull() && !_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_INVALID_CLASS, className.getString());
    return _repository.enumerateClassNames(nameSpace, className, deepInheritance);
}

Array<CIMClass> Dispatcher::enumerateClasses(
    const OperationContext&,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin)
{
    _checkNamespace(nameSpace);
    if (!className.isNull() && !_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_INVALID_CLASS, className.getString());
    return _repository.enumerateClasses(
        nameSpace, className, deepInheritance, localOnly, includeQualifiers, includeClassOrigin);
}

// ---------------------------------------------------------------------------
// Instance operations

CIMInstance Dispatcher::getInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    Boolean,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
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

Array<CIMInstance> Dispatcher::enumerateInstances(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    // Without deep inheritance the properties of subclasses are left out:
    // providers get, and results keep, the requested class's properties.
    CIMPropertyList effectiveList = propertyList;
    if (!deepInheritance && propertyList.isNull())
        effectiveList = classPropertyList(_instanceClass(nameSpace, className));
    else
        _checkInstanceClass(nameSpace, className);

    std::vector<InstanceTarget> targets = _instanceTargets(nameSpace, className);

    OperationContext providerContext = _providerContext(context);
    Array<CIMInstance> result;
    FanOut fanOut;
    for (const InstanceTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                CIMObjectPath classPath =
                    _providerPath(CIMObjectPath(String(), nameSpace, target.className), nameSpace);
                InstanceListResponseHandler handler(_threshold);
                _call<CIMInstanceProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMInstanceProvider& p)
                    {
                        p.enumerateInstances(
                            providerContext, classPath, includeQualifiers, includeClassOrigin,
                            effectiveList, handler);
                    });
                // The handler holds the last handles on what the provider kept no
                // handle on: those instances are filtered in place, not copied.
                const Array<CIMInstance>& delivered = handler.result();
                result.reserveCapacity(result.size() + delivered.size());
                for (Uint32 i = 0; i < delivered.size(); ++i)
                    result.append(ResultFilter::filtered(
                        delivered[i], includeQualifiers, includeClassOrigin, effectiveList));
            });
    }
    fanOut.finish();
    return result;
}

Array<CIMObjectPath> Dispatcher::enumerateInstanceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className)
{
    _checkInstanceClass(nameSpace, className);

    std::vector<InstanceTarget> targets = _instanceTargets(nameSpace, className);

    OperationContext providerContext = _providerContext(context);
    Array<CIMObjectPath> result;
    FanOut fanOut;
    for (const InstanceTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                CIMObjectPath classPath =
                    _providerPath(CIMObjectPath(String(), nameSpace, target.className), nameSpace);
                ObjectPathListResponseHandler handler(_threshold);
                _call<CIMInstanceProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMInstanceProvider& p)
                    { p.enumerateInstanceNames(providerContext, classPath, handler); });
                result.appendArray(handler.result());
            });
    }
    fanOut.finish();
    return result;
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

CIMObjectPath Dispatcher::createInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& newInstance)
{
    CIMInstance instance = _checkedInstance(nameSpace, newInstance);
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
    return handler.result();
}

void Dispatcher::modifyInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance,
    Boolean includeQualifiers,
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

void Dispatcher::deleteInstance(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    const CIMName className = instanceName.getClassName();
    _checkInstanceClass(nameSpace, className);
    const ProviderId* provider = _registry.instanceProvider(nameSpace, className);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_NOT_SUPPORTED);

    CIMObjectPath path = _providerPath(instanceName, nameSpace);
    OperationStatusHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMInstanceProvider>(
        *provider, handler.protocol(),
        [&](CIMInstanceProvider& p) { p.deleteInstance(providerContext, path, handler); });
}

// ---------------------------------------------------------------------------
// Property operations: OpenPegasus hands them to the instance provider as a
// getInstance or a modifyInstance of that one property.

CIMValue Dispatcher::getProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName)
{
    const CIMName className = instanceName.getClassName();
    if (propertyName.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no property.");
    if (_instanceClass(nameSpace, className).findProperty(propertyName) == PEG_NOT_FOUND)
        throw noSuchProperty(className, propertyName);

    CIMInstance instance = getInstance(
        context, nameSpace, instanceName, false, false, false,
        CIMPropertyList(Array<CIMName>(1, propertyName)));
    const Uint32 pos = instance.findProperty(propertyName);
    // A provider may leave a declared property out; OpenPegasus then answers so.
    if (pos == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY, propertyName.getString());
    return instance.getProperty(pos).getValue();
}

void Dispatcher::setProperty(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& propertyName,
    const CIMValue& newValue)
{
    const CIMName className = instanceName.getClassName();
    if (propertyName.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no property.");
    CIMClass cimClass = _instanceClass(nameSpace, className);
    const Uint32 pos = cimClass.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
        throw noSuchProperty(className, propertyName);

    CIMConstProperty declared = static_cast<const CIMClass&>(cimClass).getProperty(pos);
    CIMValue value = newValue;
    if (!value.isNull() && value.getType() == CIMTYPE_STRING &&
        declared.getType() != CIMTYPE_STRING && value.isArray() == declared.isArray())
        value = valueFromText(
            value, declared.getType(),
            "property " + toStd(propertyName.getString()) + " of class " +
                toStd(className.getString()));

    CIMInstance instance(className);
    instance.setPath(instanceName);
    instance.addProperty(CIMProperty(propertyName, value));
    modifyInstance(
        context, nameSpace, instance, false, CIMPropertyList(Array<CIMName>(1, propertyName)));
}

// ---------------------------------------------------------------------------
// Association operations

void Dispatcher::_checkAssociationRequest(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole) const
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
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& classFilter,
    const String& role) const
{
    const CIMName className = objectName.getClassName();
    auto served = [&](const CIMName& filter, const String& byRole)
    {
        std::vector<AssociationTarget> found;
        for (const CIMName& assoc :
             _associations.referencingClasses(nameSpace, className, filter, byRole))
        {
            const ProviderId* provider = _registry.associationProvider(nameSpace, assoc);
            if (provider)
                found.push_back(AssociationTarget{assoc, provider});
        }
        return found;
    };
    // No association served for the object, or filters that rule out every
    // one served, leave nobody to ask: an empty answer, as DSP0200 and
    // OpenPegasus (with its repository as default provider) give.
    return served(classFilter, role);
}

Array<CIMObject> Dispatcher::_classObjects(
    const CIMNamespaceName& nameSpace,
    const std::vector<CIMName>& classNames,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    Array<CIMObject> result;
    for (const CIMName& name : classNames)
    {
        CIMClass cimClass = _repository.getClass(
            nameSpace, name, false, includeQualifiers, includeClassOrigin, propertyList);
        CIMObject object(cimClass);
        object.setPath(CIMObjectPath(_hostName, nameSpace, name));
        result.append(object);
    }
    return result;
}

Array<CIMObjectPath> Dispatcher::_classPaths(
    const CIMNamespaceName& nameSpace,
    const std::vector<CIMName>& classNames) const
{
    Array<CIMObjectPath> result;
    for (const CIMName& name : classNames)
        result.append(CIMObjectPath(_hostName, nameSpace, name));
    return result;
}

void Dispatcher::_appendObjects(
    Array<CIMObject>& result,
    const Array<CIMObject>& delivered,
    const CIMNamespaceName& nameSpace,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    for (Uint32 i = 0; i < delivered.size(); ++i)
    {
        CIMObject object = ResultFilter::filtered(
            delivered[i], includeQualifiers, includeClassOrigin, propertyList);
        object.setPath(_completedPath(object.getPath(), nameSpace));
        result.append(object);
    }
}

Array<CIMObject> Dispatcher::associators(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    _checkAssociationRequest(nameSpace, objectName, assocClass, resultClass, role, resultRole);
    if (objectName.getKeyBindings().size() == 0)
        return _classObjects(
            nameSpace,
            _associations.associatedClasses(
                nameSpace, objectName.getClassName(), assocClass, resultClass, role, resultRole),
            includeQualifiers, includeClassOrigin, propertyList);

    // As OpenPegasus does, the role does not narrow the association classes
    // here; the providers apply it.
    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, objectName, assocClass, String());
    CIMObjectPath path = _providerPath(objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    Array<CIMObject> result;
    FanOut fanOut;
    for (const AssociationTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                ObjectListResponseHandler handler(_threshold);
                _call<CIMAssociationProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMAssociationProvider& p)
                    {
                        p.associators(
                            providerContext, path, target.assocClass, resultClass, role, resultRole,
                            includeQualifiers, includeClassOrigin, propertyList, handler);
                    });
                _appendObjects(
                    result, handler.result(), nameSpace, includeQualifiers, includeClassOrigin,
                    propertyList);
            });
    }
    fanOut.finish();
    return result;
}

Array<CIMObjectPath> Dispatcher::associatorNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    _checkAssociationRequest(nameSpace, objectName, assocClass, resultClass, role, resultRole);
    if (objectName.getKeyBindings().size() == 0)
        return _classPaths(
            nameSpace,
            _associations.associatedClasses(
                nameSpace, objectName.getClassName(), assocClass, resultClass, role, resultRole));

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, objectName, assocClass, String());
    CIMObjectPath path = _providerPath(objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    Array<CIMObjectPath> result;
    FanOut fanOut;
    for (const AssociationTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                ObjectPathListResponseHandler handler(_threshold);
                _call<CIMAssociationProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMAssociationProvider& p)
                    {
                        p.associatorNames(
                            providerContext, path, target.assocClass, resultClass, role, resultRole,
                            handler);
                    });
                const Array<CIMObjectPath>& delivered = handler.result();
                for (Uint32 i = 0; i < delivered.size(); ++i)
                    result.append(_completedPath(delivered[i], nameSpace));
            });
    }
    fanOut.finish();
    return result;
}

Array<CIMObject> Dispatcher::references(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    _checkAssociationRequest(nameSpace, objectName, CIMName(), resultClass, role, String());
    if (objectName.getKeyBindings().size() == 0)
        return _classObjects(
            nameSpace,
            _associations.referencingClasses(
                nameSpace, objectName.getClassName(), resultClass, role),
            includeQualifiers, includeClassOrigin, propertyList);

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, objectName, resultClass, role);
    CIMObjectPath path = _providerPath(objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    Array<CIMObject> result;
    FanOut fanOut;
    for (const AssociationTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                ObjectListResponseHandler handler(_threshold);
                _call<CIMAssociationProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMAssociationProvider& p)
                    {
                        p.references(
                            providerContext, path, target.assocClass, role, includeQualifiers,
                            includeClassOrigin, propertyList, handler);
                    });
                _appendObjects(
                    result, handler.result(), nameSpace, includeQualifiers, includeClassOrigin,
                    propertyList);
            });
    }
    fanOut.finish();
    return result;
}

Array<CIMObjectPath> Dispatcher::referenceNames(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    _checkAssociationRequest(nameSpace, objectName, CIMName(), resultClass, role, String());
    if (objectName.getKeyBindings().size() == 0)
        return _classPaths(
            nameSpace, _associations.referencingClasses(
                           nameSpace, objectName.getClassName(), resultClass, role));

    std::vector<AssociationTarget> targets =
        _associationTargets(nameSpace, objectName, resultClass, role);
    CIMObjectPath path = _providerPath(objectName, nameSpace);
    OperationContext providerContext = _providerContext(context);
    Array<CIMObjectPath> result;
    FanOut fanOut;
    for (const AssociationTarget& target : targets)
    {
        fanOut.run(
            [&]
            {
                ObjectPathListResponseHandler handler(_threshold);
                _call<CIMAssociationProvider>(
                    *target.provider, handler.protocol(),
                    [&](CIMAssociationProvider& p)
                    { p.referenceNames(providerContext, path, target.assocClass, role, handler); });
                const Array<CIMObjectPath>& delivered = handler.result();
                for (Uint32 i = 0; i < delivered.size(); ++i)
                    result.append(_completedPath(delivered[i], nameSpace));
            });
    }
    fanOut.finish();
    return result;
}

// ---------------------------------------------------------------------------
// Extrinsic methods

Array<CIMParamValue> Dispatcher::_typedParameters(
    const CIMClass& cimClass,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters) const
{
    Uint32 methodPos = cimClass.findMethod(methodName);
    CIMConstMethod method = cimClass.getMethod(methodPos);
    Array<CIMParamValue> typed;
    for (Uint32 i = 0; i < inParameters.size(); ++i)
    {
        const CIMParamValue& given = inParameters[i];
        if (given.isUninitialized())
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "An input parameter is uninitialized.");
        String name = given.getParameterName();
        Uint32 pos = CIMName::legal(name) ? method.findParameter(CIMName(name)) : PEG_NOT_FOUND;
        if (pos == PEG_NOT_FOUND)
            throw CIMException(
                CIM_ERR_INVALID_PARAMETER,
                "Method " + methodName.getString() + " has no parameter " + name + ".");
        CIMConstParameter declared = method.getParameter(pos);
        CIMType type = declared.getType();
        Boolean isArray = declared.isArray();
        CIMValue value = given.getValue();

        CIMValue result;
        if (value.isNull())
        {
            result.setNullValue(type, isArray);
        }
        else if (value.isArray() != isArray)
        {
            throw CIMException(
                CIM_ERR_TYPE_MISMATCH, "Parameter " + name + " is declared " +
                                           describeType(type, isArray) + ", not " +
                                           describeType(value.getType(), value.isArray()) + ".");
        }
        else if (value.getType() == type)
        {
            result = value;
        }
        else if (!given.isTyped() && value.getType() == CIMTYPE_STRING)
        {
            result = valueFromText(
                value, type,
                "parameter " + toStd(name) + " of method " + toStd(methodName.getString()));
        }
        else
        {
            throw CIMException(
                CIM_ERR_TYPE_MISMATCH, "Parameter " + name + " is declared " +
                                           describeType(type, isArray) + ", not " +
                                           describeType(value.getType(), value.isArray()) + ".");
        }
        typed.append(CIMParamValue(name, result, true));
    }
    return typed;
}

CIMValue Dispatcher::invokeMethod(
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    _checkNamespace(nameSpace);
    const CIMName className = instanceName.getClassName();
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no object.");
    // OpenPegasus answers an unknown class of an extrinsic call with NOT_FOUND.
    if (!_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_NOT_FOUND, className.getString());
    if (methodName.isNull())
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, String());
    CIMClass cimClass =
        _repository.getClass(nameSpace, className, false, false, false, CIMPropertyList());
    if (cimClass.findMethod(methodName) == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, methodName.getString());

    Array<CIMParamValue> parameters = _typedParameters(cimClass, methodName, inParameters);

    const ProviderId* provider = _registry.methodProvider(nameSpace, className, methodName);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_METHOD_NOT_AVAILABLE, methodName.getString());

    CIMObjectPath path = _providerPath(instanceName, nameSpace);
    MethodResultHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMMethodProvider>(
        *provider, handler.protocol(),
        [&](CIMMethodProvider& p)
        { p.invokeMethod(providerContext, path, methodName, parameters, handler); });
    outParameters = handler.outParameters();
    return handler.returnValue();
}

}  // namespace Pegasus
