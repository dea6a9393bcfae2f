#include "ProviderRegistry.h"

#include "CoreText.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <set>

namespace Pegasus
{

const char* const ProviderRegistry::defaultInteropNamespace = "root/PG_InterOp";

std::string ProviderId::describe() const
{
    return toStd(moduleName) + ":" + toStd(providerName);
}

namespace
{

// Interface versions OpenPegasus accepts for C++Default modules.
const char* const acceptedInterfaceVersions[] = {"2.1.0", "2.2.0", "2.3.0",
                                                 "2.5.0", "2.6.0", "2.9.0"};

enum ProviderType : Uint16
{
    Instance = 2,
    Association = 3,
    Indication = 4,
    Method = 5,
    IndicationConsumer = 6,
    InstanceQuery = 7
};

std::string classKey(const CIMNamespaceName& ns, const CIMName& className)
{
    return nameKey(ns) + "\n" + nameKey(className);
}

// What a registration failure names: the instance or the built-in provider.
class RegistrationSubject
{
public:
    explicit RegistrationSubject(std::string what) : _what(std::move(what)) {}

    const std::string& what() const { return _what; }
    void setWhat(std::string what) { _what = std::move(what); }

    [[noreturn]] void fail(const std::string& problem) const
    {
        throw Exception(safeString("provider registration: " + _what + ": " + problem));
    }

private:
    std::string _what;
};

// Reads the properties of one registration instance; every failure names
// the instance and the property.
class InstanceFields : public RegistrationSubject
{
public:
    InstanceFields(const CIMInstance& instance, std::string what)
        : RegistrationSubject(std::move(what)), _instance(instance)
    {
    }

    // A present, non-null value, or a null CIMValue when absent or null.
    CIMValue value(const char* name) const
    {
        Uint32 pos = _instance.findProperty(CIMName(name));
        if (pos == PEG_NOT_FOUND)
            return CIMValue();
        return _instance.getProperty(pos).getValue();
    }

    String requiredString(const char* name) const
    {
        CIMValue v = value(name);
        if (v.isNull())
            fail(std::string("property ") + name + " is missing or null");
        if (v.isArray() || v.getType() != CIMTYPE_STRING)
            fail(std::string("property ") + name + " must be a string");
        String s;
        v.get(s);
        if (s.size() == 0)
            fail(std::string("property ") + name + " is empty");
        return s;
    }

    // Null when absent or null; otherwise a string array.
    bool optionalStringArray(const char* name, Array<String>& out) const
    {
        CIMValue v = value(name);
        if (v.isNull())
            return false;
        if (!v.isArray() || v.getType() != CIMTYPE_STRING)
            fail(std::string("property ") + name + " must be a string array");
        v.get(out);
        return true;
    }

    Array<String> requiredStringArray(const char* name) const
    {
        Array<String> out;
        if (!optionalStringArray(name, out) || out.size() == 0)
            fail(std::string("property ") + name + " must list at least one value");
        return out;
    }

    Array<Uint16> requiredUint16Array(const char* name) const
    {
        CIMValue v = value(name);
        if (v.isNull())
            fail(std::string("property ") + name + " is missing or null");
        if (!v.isArray() || v.getType() != CIMTYPE_UINT16)
            fail(std::string("property ") + name + " must be a uint16 array");
        Array<Uint16> out;
        v.get(out);
        if (out.size() == 0)
            fail(std::string("property ") + name + " must list at least one value");
        return out;
    }

private:
    CIMInstance _instance;
};

std::string quoted(const String& s)
{
    return "\"" + toStd(s) + "\"";
}

}  // namespace

// Builds a registry from the repository's registration instances.
class ProviderRegistryLoader
{
public:
    ProviderRegistryLoader(const ClassRepository& repository, const CIMNamespaceName& interop)
        : _repository(repository), _interop(interop)
    {
    }

    ProviderRegistry run(const std::vector<BuiltInProvider>& builtIns)
    {
        if (_repository.namespaceExists(_interop))
        {
            _readModules();
            _readProviders();
            _readCapabilities();
        }
        for (const BuiltInProvider& builtIn : builtIns)
            _addBuiltIn(builtIn);
        return std::move(_registry);
    }

private:
    struct Module
    {
        String name;
        String location;
    };

    Array<CIMInstance> _instancesOf(const char* className) const
    {
        if (!_repository.classExists(_interop, CIMName(className)))
            return Array<CIMInstance>();
        return _repository.enumerateInstances(_interop, CIMName(className));
    }

    void _readModules()
    {
        Array<CIMInstance> modules = _instancesOf("PG_ProviderModule");
        for (Uint32 i = 0; i < modules.size(); ++i)
        {
            InstanceFields f(modules[i], "PG_ProviderModule #" + std::to_string(i + 1));
            String name = f.requiredString("Name");
            f.setWhat("PG_ProviderModule " + quoted(name));

            String location = f.requiredString("Location");
            // The library is looked up as lib<Location>.so in the provider
            // directories; a path would escape them.
            if (location.find(Char16('/')) != PEG_NOT_FOUND)
                f.fail(
                    "Location " + quoted(location) +
                    " must be a library base name (no directory, no lib prefix, no .so)");

            String interfaceType = f.requiredString("InterfaceType");
            if (interfaceType != "C++Default")
                f.fail(
                    "InterfaceType " + quoted(interfaceType) +
                    " is not supported; this server loads \"C++Default\" modules only");

            String interfaceVersion = f.requiredString("InterfaceVersion");
            bool accepted = false;
            for (const char* v : acceptedInterfaceVersions)
                accepted = accepted || interfaceVersion == v;
            if (!accepted)
                f.fail(
                    "InterfaceVersion " + quoted(interfaceVersion) +
                    " is not one of 2.1.0, 2.2.0, 2.3.0, 2.5.0, 2.6.0, 2.9.0");

            if (!_modules.emplace(nameKey(name), Module{name, location}).second)
                f.fail("a provider module of this name is registered twice");
        }
    }

    void _readProviders()
    {
        Array<CIMInstance> providers = _instancesOf("PG_Provider");
        for (Uint32 i = 0; i < providers.size(); ++i)
        {
            InstanceFields f(providers[i], "PG_Provider #" + std::to_string(i + 1));
            String moduleName = f.requiredString("ProviderModuleName");
            String name = f.requiredString("Name");
            f.setWhat("PG_Provider " + quoted(name) + " of module " + quoted(moduleName));

            auto module = _modules.find(nameKey(moduleName));
            if (module == _modules.end())
                f.fail("no PG_ProviderModule named " + quoted(moduleName) + " is registered");

            std::string key = nameKey(moduleName) + "\n" + nameKey(name);
            if (_providerIndex.count(key))
                f.fail("this provider is registered twice");

            auto id = std::make_unique<ProviderId>();
            id->moduleName = module->second.name;
            id->providerName = name;
            id->location = module->second.location;
            _providerIndex[key] = id.get();
            _registry._providers.push_back(std::move(id));
        }
    }

    void _readCapabilities()
    {
        Array<CIMInstance> capabilities = _instancesOf("PG_ProviderCapabilities");
        for (Uint32 i = 0; i < capabilities.size(); ++i)
        {
            InstanceFields f(capabilities[i], "PG_ProviderCapabilities #" + std::to_string(i + 1));
            String moduleName = f.requiredString("ProviderModuleName");
            String providerName = f.requiredString("ProviderName");
            String capabilityId = f.requiredString("CapabilityID");
            f.setWhat(
                "PG_ProviderCapabilities " + quoted(capabilityId) + " of provider " +
                quoted(moduleName) + ":" + quoted(providerName));

            auto provider = _providerIndex.find(nameKey(moduleName) + "\n" + nameKey(providerName));
            if (provider == _providerIndex.end())
                f.fail(
                    "no PG_Provider " + quoted(providerName) + " is registered in module " +
                    quoted(moduleName));

            String classText = f.requiredString("ClassName");
            if (!CIMName::legal(classText))
                f.fail("ClassName " + quoted(classText) + " is not a legal CIM name");
            CIMName className(classText);

            Array<Uint16> types = f.requiredUint16Array("ProviderType");
            Array<String> namespaces = f.requiredStringArray("Namespaces");
            Array<String> methodNames;
            bool methodsListed = f.optionalStringArray("SupportedMethods", methodNames);

            for (Uint32 n = 0; n < namespaces.size(); ++n)
            {
                if (!CIMNamespaceName::legal(namespaces[n]))
                    f.fail("namespace " + quoted(namespaces[n]) + " is not a legal namespace name");
                _registerClass(
                    f, CIMNamespaceName(namespaces[n]), className,
                    std::vector<Uint16>(types.getData(), types.getData() + types.size()),
                    provider->second, methodsListed, methodNames);
            }
        }
    }

    void _addBuiltIn(const BuiltInProvider& builtIn)
    {
        RegistrationSubject f(
            "built-in provider " + quoted(builtIn.moduleName) + ":" + quoted(builtIn.providerName));
        if (builtIn.moduleName.size() == 0 || builtIn.providerName.size() == 0 || !builtIn.create)
            f.fail("a built-in provider needs a module name, a provider name and a factory");
        if (_modules.count(nameKey(builtIn.moduleName)))
            f.fail("a PG_ProviderModule of this name is registered too");
        std::string key = nameKey(builtIn.moduleName) + "\n" + nameKey(builtIn.providerName);
        if (_providerIndex.count(key))
            f.fail("this provider is registered twice");

        auto id = std::make_unique<ProviderId>();
        id->moduleName = builtIn.moduleName;
        id->providerName = builtIn.providerName;
        id->create = builtIn.create;
        _providerIndex[key] = id.get();
        const ProviderId* provider = id.get();
        _registry._providers.push_back(std::move(id));

        for (const BuiltInProvider::Capability& c : builtIn.capabilities)
            _registerClass(
                f, c.nameSpace, c.className, c.providerTypes, provider, false, Array<String>());
    }

    // One class of a capability in one namespace, with every provider type.
    void _registerClass(
        const RegistrationSubject& f, const CIMNamespaceName& ns, const CIMName& className,
        const std::vector<Uint16>& types, const ProviderId* provider, bool methodsListed,
        const Array<String>& methodNames)
    {
        if (ns.isNull() || !_repository.namespaceExists(ns))
            f.fail("namespace " + quoted(ns.getString()) + " does not exist");
        if (className.isNull() || !_repository.classExists(ns, className))
            f.fail(
                "class " + quoted(className.getString()) + " does not exist in namespace " +
                quoted(ns.getString()));
        if (types.empty())
            f.fail("ProviderType lists no provider type");
        for (Uint16 type : types)
            _register(f, ns, className, type, provider, methodsListed, methodNames);
    }

    void _register(
        const RegistrationSubject& f, const CIMNamespaceName& ns, const CIMName& className,
        Uint16 type, const ProviderId* provider, bool methodsListed,
        const Array<String>& methodNames)
    {
        ProviderRegistry::ClassEntry& entry = _registry._classes[classKey(ns, className)];
        std::string where =
            "class " + quoted(className.getString()) + " in namespace " + quoted(ns.getString());
        auto claim = [&](const ProviderId*& slot, const char* kind)
        {
            if (slot != nullptr && slot != provider)
                f.fail(where + " already has the " + kind + " provider " + slot->describe());
            slot = provider;
        };
        switch (type)
        {
            case Instance:
                claim(entry.instance, "instance");
                break;
            case Association:
            {
                CIMClass cls =
                    _repository.getClass(ns, className, false, true, false, CIMPropertyList());
                if (!cls.isAssociation())
                    f.fail(
                        "ProviderType 3 (association) needs an association class, and " + where +
                        " is not one");
                claim(entry.association, "association");
                break;
            }
            case Method:
            {
                claim(entry.method.provider, "method");
                entry.method.allMethods = !methodsListed;
                entry.method.methods.clear();
                if (methodsListed)
                {
                    CIMClass cls =
                        _repository.getClass(ns, className, false, false, false, CIMPropertyList());
                    for (Uint32 m = 0; m < methodNames.size(); ++m)
                    {
                        if (!CIMName::legal(methodNames[m]) ||
                            cls.findMethod(CIMName(methodNames[m])) == PEG_NOT_FOUND)
                            f.fail(
                                "SupportedMethods names " + quoted(methodNames[m]) + ", which " +
                                where + " does not declare");
                        entry.method.methods.push_back(nameKey(methodNames[m]));
                    }
                }
                break;
            }
            case Indication:
            case IndicationConsumer:
            case InstanceQuery:
                f.fail(
                    "ProviderType " + std::to_string(type) +
                    " is not supported by this server (instance 2, association 3 and method 5 are)");
            default:
                f.fail("ProviderType " + std::to_string(type) + " is not a provider type");
        }
    }

    const ClassRepository& _repository;
    CIMNamespaceName _interop;
    ProviderRegistry _registry;
    std::map<std::string, Module> _modules;
    std::map<std::string, const ProviderId*> _providerIndex;
};

ProviderRegistry ProviderRegistry::load(
    const ClassRepository& repository, const CIMNamespaceName& interop,
    const std::vector<BuiltInProvider>& builtIns)
{
    return ProviderRegistryLoader(repository, interop).run(builtIns);
}

const ProviderRegistry::ClassEntry*
ProviderRegistry::_find(const CIMNamespaceName& ns, const CIMName& className) const
{
    if (ns.isNull() || className.isNull())
        return nullptr;
    auto it = _classes.find(classKey(ns, className));
    return it == _classes.end() ? nullptr : &it->second;
}

const ProviderId*
ProviderRegistry::instanceProvider(const CIMNamespaceName& ns, const CIMName& className) const
{
    const ClassEntry* e = _find(ns, className);
    return e ? e->instance : nullptr;
}

const ProviderId*
ProviderRegistry::associationProvider(const CIMNamespaceName& ns, const CIMName& assocClass) const
{
    const ClassEntry* e = _find(ns, assocClass);
    return e ? e->association : nullptr;
}

const ProviderId* ProviderRegistry::methodProvider(
    const CIMNamespaceName& ns, const CIMName& className, const CIMName& methodName) const
{
    const ClassEntry* e = _find(ns, className);
    if (e == nullptr || e->method.provider == nullptr)
        return nullptr;
    if (e->method.allMethods)
        return e->method.provider;
    std::string key = nameKey(methodName);
    for (const std::string& m : e->method.methods)
    {
        if (m == key)
            return e->method.provider;
    }
    return nullptr;
}

}  // namespace Pegasus
