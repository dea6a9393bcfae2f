#include "ProviderHost.h"

#include "HostCIMOMHandleRep.h"
#include "InternalCacheDouble.h"

#include <Pegasus/Common/Exception.h>

#include <ClassRepository.h>
#include <MofCompiler.h>

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <mutex>
#include <stdexcept>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

namespace
{

std::string routeKey(const CIMName& className)
{
    std::string key = (const char*)className.getString().getCString();
    std::transform(key.begin(), key.end(), key.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return key;
}

} // namespace

const char* ProviderHost::modulePath()
{
    return QEL_FCPORT_MODULE_PATH;
}

ProviderHost& ProviderHost::instance()
{
    // Lives until the process ends: the module stays loaded and providers
    // are ended by stopProviders().
    static ProviderHost* host = new ProviderHost();
    return *host;
}

ProviderHost::ProviderHost()
    : _repository(new ClassRepository())
{
    _module = dlopen(modulePath(), RTLD_NOW | RTLD_LOCAL);
    if (_module == nullptr)
    {
        throw std::runtime_error(std::string("cannot load the provider module: ") + dlerror());
    }
    _create = reinterpret_cast<CreateProviderFunction>(
        dlsym(_module, "PegasusCreateProvider"));
    if (_create == nullptr)
    {
        throw std::runtime_error(std::string(modulePath()) +
            " does not export PegasusCreateProvider");
    }

    try
    {
        MofCompiler compiler(*_repository);
        compiler.compileFile(QEL_SCHEMA_ROOT);
    }
    catch (const Exception& e)
    {
        throw std::runtime_error(std::string("cannot compile " QEL_SCHEMA_ROOT ": ") +
            (const char*)e.getMessage().getCString());
    }

    _handle = CIMOMHandle(std::make_shared<HostCIMOMHandleRep>(*this));
    InternalCacheDouble::instance().install();
}

CIMProvider* ProviderHost::createProvider(const String& providerName) const
{
    return _create(providerName);
}

CIMProvider* ProviderHost::startProvider(
    const String& providerName,
    std::initializer_list<const char*> servedClasses)
{
    CIMProvider* provider = createProvider(providerName);
    if (provider == nullptr)
    {
        throw std::runtime_error(std::string("the module creates no provider named ") +
            (const char*)providerName.getCString());
    }
    try
    {
        provider->initialize(_handle);
    }
    catch (...)
    {
        // As the server does when initialize fails.
        provider->terminate();
        throw;
    }

    std::unique_lock<std::shared_mutex> lock(_mutex);
    _started.push_back(provider);
    for (const char* className : servedClasses)
    {
        _routes[routeKey(CIMName(className))] = provider;
    }
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
    {
        provider->terminate();
    }
}

CIMProvider* ProviderHost::providerFor(const CIMName& className) const
{
    if (className.isNull())
    {
        return nullptr;
    }
    std::shared_lock<std::shared_mutex> lock(_mutex);
    auto it = _routes.find(routeKey(className));
    return it == _routes.end() ? nullptr : it->second;
}

OperationContext ProviderHost::context(const String& userName, const String& clientAddress)
{
    OperationContext context;
    context.insert(IdentityContainer(userName, clientAddress));
    return context;
}

} // namespace qeltest
