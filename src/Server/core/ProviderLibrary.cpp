#include "ProviderLibrary.h"

#include "CoreText.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <dlfcn.h>
#include <unistd.h>

namespace Pegasus
{

namespace
{

typedef CIMProvider* (*CreateProviderFunction)(const String&);

}  // namespace

ProviderLibrary::ProviderLibrary(
    const String& moduleName, const String& location, std::vector<std::string> directories)
    : _moduleName(moduleName), _location(location), _directories(std::move(directories))
{
}

ProviderLibrary::~ProviderLibrary()
{
    unload();
}

std::string ProviderLibrary::libraryName() const
{
    return "lib" + toStd(_location) + ".so";
}

CIMProvider* ProviderLibrary::createProvider(const String& providerName)
{
    if (_handle == nullptr)
    {
        std::string name = libraryName();
        std::string found;
        for (const std::string& dir : _directories)
        {
            std::string candidate = dir.empty() ? name : dir + "/" + name;
            if (access(candidate.c_str(), F_OK) == 0)
            {
                found = candidate;
                break;
            }
        }
        if (found.empty())
            throw Exception(safeString(
                "File \"" + name + "\" was not found for provider module \"" + toStd(_moduleName) +
                "\"."));
        _file = found;

        dlerror();
        // RTLD_LOCAL: each module keeps its own copy of the helpers compiled
        // into it; the runtime libraries they share are already global.
        _handle = dlopen(_file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (_handle == nullptr)
        {
            const char* why = dlerror();
            throw Exception(safeString(
                "ProviderLoadFailure (" + _file + ":" + toStd(providerName) +
                "):Cannot load library, error: " + (why ? why : "unknown")));
        }
    }

    dlerror();
    void* symbol = dlsym(_handle, "PegasusCreateProvider");
    if (symbol == nullptr)
    {
        unload();
        throw Exception(safeString(
            "ProviderLoadFailure (" + _file + ":" + toStd(providerName) +
            "):entry point not found."));
    }

    CreateProviderFunction create = reinterpret_cast<CreateProviderFunction>(symbol);
    CIMProvider* provider = create(providerName);
    if (provider == nullptr)
    {
        // The library stays open: other providers of the module may live.
        throw Exception(safeString(
            "ProviderLoadFailure (" + _file + ":" + toStd(providerName) +
            "):provider is not a CIMProvider."));
    }
    return provider;
}

void ProviderLibrary::unload()
{
    if (_handle != nullptr)
    {
        dlclose(_handle);
        _handle = nullptr;
    }
}

}  // namespace Pegasus
