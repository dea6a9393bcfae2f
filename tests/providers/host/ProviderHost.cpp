#include "ProviderHost.h"

#include "RecordingHandlers.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <ClassRepository.h>
#include <MofCompiler.h>

#include <dlfcn.h>

#include <mutex>
#include <stdexcept>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

ProviderHost& ProviderHost::instance()
{
    // Lives until the process ends: the module stays loaded and providers are ended by stopProviders().
    static ProviderHost* host = new ProviderHost();
    return *host;
}

ProviderHost::ProviderHost() : _repository(new ClassRepository())
{
    _module = dlopen(QEL_FCPORT_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    if (_module == nullptr)
        throw std::runtime_error(std::string("cannot load the provider module: ") + dlerror());
    _create = reinterpret_cast<CreateProviderFunction>(dlsym(_module, "PegasusCreateProvider"));
    if (_create == nullptr)
        throw std::runtime_error(QEL_FCPORT_MODULE_PATH " does not export PegasusCreateProvider");
    try
    {
        MofCompiler(*_repository).compileFile(QEL_SCHEMA_ROOT);
    }
    catch (const Exception& e)
    {
        throw std::runtime_error(
            std::string("cannot compile " QEL_SCHEMA_ROOT ": ") +
            (const char*)e.getMessage().getCString());
    }
    _rep = std::make_shared<HostCIMOMHandleRep>(*this);
    _handle = CIMOMHandle(_rep);
}

CIMProvider* ProviderHost::createProvider(const String& providerName) const
{
    return _create(providerName);
}

CIMProvider* ProviderHost::startProvider(
    const String& providerName, std::initializer_list<const char*> servedClasses)
{
    CIMProvider* provider = createProvider(providerName);
    if (provider == nullptr)
    {
        throw std::runtime_error(
            std::string("the module creates no provider named ") +
            (const char*)providerName.getCString());
    }
    try
    {
        provider->initialize(_handle);
    }
    catch (...)
    {
        provider->terminate();  // as the server does when initialize fails
        throw;
    }
    std::unique_lock<std::shared_mutex> lock(_mutex);
    _started.push_back(provider);
    for (const char* className : servedClasses)
        _routes.emplace_back(className, provider);
    return provider;
}

void ProviderHost::stopProviders()
{
    std::vector<CIMProvider*> started;
    {
        std::unique_lock<std::shared_mutex> lock(_mutex);
        started.swap(_started);
        _routes.clear();
    }
    for (CIMProvider* provider : started)
        provider->terminate();
}

CIMProvider* ProviderHost::providerFor(const CIMName& className) const
{
    if (className.isNull())
        return nullptr;
    std::shared_lock<std::shared_mutex> lock(_mutex);
    // The latest route wins; class names compare without regard to case.
    for (auto it = _routes.rbegin(); it != _routes.rend(); ++it)
        if (it->first == className)
            return it->second;
    return nullptr;
}

OperationContext ProviderHost::context(const String& userName, const String& clientAddress)
{
    OperationContext context;
    context.insert(IdentityContainer(userName, clientAddress));
    return context;
}

CIMOperationResponse
HostCIMOMHandleRep::execute(const OperationContext& context, const CIMOperationRequest& r)
{
    CIMOperationResponse response;
    switch (r.operation)
    {
        case CIMOperationType::GetClass:
            response.cimClass = _host.repository().getClass(
                r.nameSpace, r.className, r.localOnly, r.includeQualifiers, r.includeClassOrigin,
                r.propertyList);
            return response;
        case CIMOperationType::GetInstance:
            response.instance = _getInstance(context, r);
            return response;
        default:
            return CacheHandleRep::execute(context, r);
    }
}

CIMInstance
HostCIMOMHandleRep::_getInstance(const OperationContext& context, const CIMOperationRequest& r)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    const CIMObjectPath& instanceName = r.objectName;
    instanceCalls.push_back(
        str(IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()) + " " +
        str(nameSpace.getString()) + " " + str(instanceName.toString()) +
        (r.localOnly ? " local" : "") + (r.includeQualifiers ? " qualifiers" : "") +
        (r.includeClassOrigin ? " origin" : "") + " properties " +
        std::to_string(r.propertyList.size()));
    if (failInstances)
        throw CIMException(CIM_ERR_NOT_FOUND, "the provider test host fails getInstance");
    CIMInstanceProvider* provider =
        dynamic_cast<CIMInstanceProvider*>(_host.providerFor(instanceName.getClassName()));
    if (provider == nullptr)
    {
        throw CIMException(
            CIM_ERR_NOT_SUPPORTED,
            "the provider test host has no instance provider for " + instanceName.toString());
    }
    // As the server hands the request on: in the request's namespace.
    CIMObjectPath path(instanceName);
    if (path.getNameSpace().isNull())
        path.setNameSpace(nameSpace);
    RecordingInstanceHandler handler;
    provider->getInstance(
        context, path, r.includeQualifiers, r.includeClassOrigin, r.propertyList, handler);
    if (!handler.record.inOrder() || handler.delivered.size() != 1)
    {
        throw CIMException(
            CIM_ERR_FAILED, String("getInstance answered ") + handler.record.sequence.c_str() +
                                " with " + std::to_string(handler.delivered.size()).c_str() +
                                " instances");
    }
    return handler.delivered[0];
}

}  // namespace qeltest
