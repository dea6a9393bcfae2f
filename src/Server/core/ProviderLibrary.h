// One provider module library, opened with dlopen on first use. Its entry
// point PegasusCreateProvider makes provider objects by registered name.
#ifndef QEL_Server_ProviderLibrary_h
#define QEL_Server_ProviderLibrary_h

#include <Pegasus/Common/String.h>

#include <string>
#include <vector>

namespace Pegasus
{

class CIMProvider;

class ProviderLibrary
{
public:
    // `moduleName` and `location` as registered (PG_ProviderModule Name and
    // Location); the file is lib<location>.so in the first of `directories`
    // that holds it.
    ProviderLibrary(
        const String& moduleName, const String& location, std::vector<std::string> directories);
    ~ProviderLibrary();

    ProviderLibrary(const ProviderLibrary&) = delete;
    ProviderLibrary& operator=(const ProviderLibrary&) = delete;

    // Loads the library if needed and asks its entry point for the named
    // provider. Failures throw Exception with OpenPegasus's texts:
    //   File "libX.so" was not found for provider module "M".
    //   ProviderLoadFailure (<file>:<provider>):Cannot load library, error: <dlerror>
    //   ProviderLoadFailure (<file>:<provider>):entry point not found.
    //   ProviderLoadFailure (<file>:<provider>):provider is not a CIMProvider.
    // An exception of the entry point itself passes through unchanged.
    // Not thread-safe: the provider manager serialises calls per module.
    CIMProvider* createProvider(const String& providerName);

    // Closes the library. Every provider made by it must have been terminated.
    void unload();

    bool isLoaded() const { return _handle != nullptr; }
    // The file found (empty before the first successful search).
    const std::string& fileName() const { return _file; }
    // lib<location>.so
    std::string libraryName() const;

private:
    String _moduleName;
    String _location;
    std::vector<std::string> _directories;
    std::string _file;
    void* _handle = nullptr;
};

}  // namespace Pegasus

#endif
