// The in-process provider test host shared by every provider test.
//
// One per test process (ProviderHost::instance()):
//  - loads the BUILT libQEL_FCPortProvider.so with dlopen() and creates
//    providers through its PegasusCreateProvider, as the CIM server does;
//  - compiles the project's MOF (schema/root.mof) into a ClassRepository;
//  - gives providers a CIMOMHandle (HostCIMOMHandleRep) whose getClass answers
//    from that repository and whose instance, method and association calls go
//    to the providers the test started for the class concerned;
//  - installs a fake local client transport that answers the internal cache
//    methods (GetSystemHostName ...) from the simulated array's identity.
//
// Started providers are initialized with the host's handle and routed by the
// classes they serve until stopProviders() ends them through terminate().
#ifndef QEL_TESTS_ProviderHost_h
#define QEL_TESTS_ProviderHost_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <initializer_list>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN
class ClassRepository;
PEGASUS_NAMESPACE_END

namespace qeltest
{

class ProviderHost
{
public:
    typedef Pegasus::CIMProvider* (*CreateProviderFunction)(const Pegasus::String&);

    static ProviderHost& instance();

    // The module's own factory, called as the server calls it.
    Pegasus::CIMProvider* createProvider(const Pegasus::String& providerName) const;

    // Creates, initializes with the host's handle, and routes the given CIM
    // classes to the provider. Throws what the factory or initialize throws
    // (a null factory result as std::runtime_error).
    Pegasus::CIMProvider* startProvider(
        const Pegasus::String& providerName,
        std::initializer_list<const char*> servedClasses);

    // Ends every started provider through terminate() and drops the routes.
    void stopProviders();

    // The provider routed for a class, or null.
    Pegasus::CIMProvider* providerFor(const Pegasus::CIMName& className) const;

    Pegasus::CIMOMHandle& handle() { return _handle; }
    const Pegasus::ClassRepository& repository() const { return *_repository; }

    // A request context as the server builds it: IdentityContainer with the
    // user name and the client address.
    static Pegasus::OperationContext context(
        const Pegasus::String& userName,
        const Pegasus::String& clientAddress);

    // The module file the host loaded.
    static const char* modulePath();

private:
    ProviderHost();
    ~ProviderHost() = delete;

    void* _module = nullptr;
    CreateProviderFunction _create = nullptr;
    std::unique_ptr<Pegasus::ClassRepository> _repository;
    Pegasus::CIMOMHandle _handle;

    mutable std::shared_mutex _mutex;
    std::map<std::string, Pegasus::CIMProvider*> _routes; // lower-cased class
    std::vector<Pegasus::CIMProvider*> _started;
};

} // namespace qeltest

#endif
