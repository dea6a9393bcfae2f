// Which provider serves which class: read at start from the registration
// instances that OpenPegasus users write in MOF (PG_ProviderModule,
// PG_Provider, PG_ProviderCapabilities in the interop namespace), plus the
// providers compiled into the server, and checked there, so a broken
// registration stops the server with a clear message instead of failing
// some request later.
#ifndef QEL_Server_ProviderRegistry_h
#define QEL_Server_ProviderRegistry_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Pegasus
{

class ClassRepository;
class CIMProvider;

// One registered provider: the module library it lives in and the name its
// PegasusCreateProvider is asked for.
struct ProviderId
{
    String moduleName;    // PG_ProviderModule.Name
    String providerName;  // PG_Provider.Name
    String location;      // PG_ProviderModule.Location: lib<Location>.so
    // Set for a provider compiled into the server (no library, empty
    // location): makes the provider object in place of the library's
    // PegasusCreateProvider; the object is driven and terminated alike.
    std::function<CIMProvider*()> create;

    // "Module:Provider", for messages.
    std::string describe() const;
};

// A provider compiled into the server, registered with the same checks as
// a module's registration instances.
struct BuiltInProvider
{
    struct Capability
    {
        CIMNamespaceName nameSpace;
        CIMName className;
        std::vector<Uint16> providerTypes;  // 2 instance, 3 association, 5 method
    };

    String moduleName;  // must differ from every PG_ProviderModule.Name
    String providerName;
    std::vector<Capability> capabilities;
    std::function<CIMProvider*()> create;
};

class ProviderRegistry
{
public:
    static const char* const defaultInteropNamespace;  // "root/PG_InterOp"

    // An empty registry: nothing is served.
    ProviderRegistry() = default;

    // Reads the registrations of `interop`. Every problem (missing or wrongly
    // typed property, unknown module, provider, namespace or class, an
    // unsupported interface or provider type, two providers claiming the
    // same class) throws Exception naming the instance and the problem.
    // A repository without the interop namespace has no registration
    // instances. `builtIns` are registered after them, failing alike
    // ("provider registration: built-in provider "M":"P": ...").
    static ProviderRegistry load(
        const ClassRepository& repository,
        const CIMNamespaceName& interop = CIMNamespaceName(defaultInteropNamespace),
        const std::vector<BuiltInProvider>& builtIns = std::vector<BuiltInProvider>());

    // The provider registered for exactly this class (no inheritance:
    // a subclass is served by its own registration), or nullptr.
    const ProviderId* instanceProvider(const CIMNamespaceName& ns, const CIMName& className) const;
    const ProviderId*
    associationProvider(const CIMNamespaceName& ns, const CIMName& assocClass) const;
    // A method provider whose SupportedMethods is null serves every method.
    const ProviderId* methodProvider(
        const CIMNamespaceName& ns, const CIMName& className, const CIMName& methodName) const;

    const std::vector<std::unique_ptr<ProviderId>>& providers() const { return _providers; }

private:
    struct MethodRegistration
    {
        const ProviderId* provider = nullptr;
        bool allMethods = true;
        std::vector<std::string> methods;  // name keys
    };
    struct ClassEntry
    {
        const ProviderId* instance = nullptr;
        const ProviderId* association = nullptr;
        MethodRegistration method;
    };

    const ClassEntry* _find(const CIMNamespaceName& ns, const CIMName& className) const;

    std::vector<std::unique_ptr<ProviderId>> _providers;
    std::map<std::string, ClassEntry> _classes;  // "ns\nclass" keys

    friend class ProviderRegistryLoader;
};

}  // namespace Pegasus

#endif
