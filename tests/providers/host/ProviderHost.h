// The in-process provider test host shared by every provider test.
//
// One per test process (ProviderHost::instance()):
//  - loads the BUILT libQEL_FCPortProvider.so with dlopen() and creates
//    providers through its PegasusCreateProvider, as the CIM server does;
//  - compiles the project's MOF (schema/root.mof) into a ClassRepository;
//  - gives providers a CIMOMHandle (HostCIMOMHandleRep) whose getClass answers
//    from that repository, whose getInstance goes to the provider started for
//    the class, and whose internal cache calls reach the host's
//    InternalCacheDouble, as does the module's local client connection.
//
// Started providers are initialized with the host's handle and routed by the
// classes they serve until stopProviders() ends them through terminate().
#ifndef QEL_TESTS_ProviderHost_h
#define QEL_TESTS_ProviderHost_h

#include "InternalCacheDouble.h"

#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <initializer_list>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN
class ClassRepository;
PEGASUS_NAMESPACE_END

namespace qeltest
{

using namespace Pegasus;

class HostCIMOMHandleRep;

inline std::string str(const String& s)
{
    return (const char*)s.getCString();
}

class ProviderHost
{
public:
    typedef CIMProvider* (*CreateProviderFunction)(const String&);

    static ProviderHost& instance();

    // The module's own factory, called as the server calls it.
    CIMProvider* createProvider(const String& providerName) const;

    // Creates, initializes with the host's handle, and routes the given CIM classes to the provider.
    // Throws what the factory or initialize throws (a null factory result as std::runtime_error).
    CIMProvider*
    startProvider(const String& providerName, std::initializer_list<const char*> servedClasses);

    // Ends every started provider through terminate() and drops the routes.
    void stopProviders();

    // The provider routed for a class, or null.
    CIMProvider* providerFor(const CIMName& className) const;

    CIMOMHandle& handle() { return _handle; }
    HostCIMOMHandleRep& handleRep() { return *_rep; }
    const ClassRepository& repository() const { return *_repository; }
    InternalCacheDouble& cache() { return _cache; }

    // A request context as the server builds it: IdentityContainer with the user name and the client address.
    static OperationContext context(const String& userName, const String& clientAddress);

private:
    ProviderHost();
    ~ProviderHost() = delete;

    void* _module = nullptr;
    CreateProviderFunction _create = nullptr;
    std::unique_ptr<ClassRepository> _repository;
    InternalCacheDouble _cache;
    std::shared_ptr<HostCIMOMHandleRep> _rep;
    CIMOMHandle _handle;

    mutable std::shared_mutex _mutex;
    std::vector<std::pair<CIMName, CIMProvider*>> _routes;
    std::vector<CIMProvider*> _started;
};

// The host's handle: class definitions from its repository, getInstance routed to the provider started for the
// class (run on the calling thread; a provider that breaks the processing -> deliver -> complete order fails the
// call with CIM_ERR_FAILED), method calls to the internal cache double. getInstance calls are noted, for tests of
// one thread, as "<user> <namespace> <path>[ local][ qualifiers][ origin] properties <count>".
class HostCIMOMHandleRep : public CacheHandleRep
{
public:
    explicit HostCIMOMHandleRep(ProviderHost& host) : CacheHandleRep(host.cache()), _host(host) {}

    CIMOperationResponse
    execute(const OperationContext& context, const CIMOperationRequest& request) override;

    Texts instanceCalls;
    bool failInstances = false;  // getInstance fails with CIM_ERR_NOT_FOUND while set

private:
    CIMInstance _getInstance(const OperationContext& context, const CIMOperationRequest& request);

    ProviderHost& _host;
};

}  // namespace qeltest

#endif
