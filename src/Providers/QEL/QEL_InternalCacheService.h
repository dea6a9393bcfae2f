// QEL_InternalCacheService: the process-wide client side of the internal
// cache of the provider set. It remembers class definitions fetched through
// the server handle (per namespace, class and request flags) and holds the
// provider set's policy word. It lives in its own shared library so that
// every provider module of a process shares the one instance.
#ifndef QEL_InternalCacheService_h
#define QEL_InternalCacheService_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <atomic>
#include <cstddef>
#include <list>
#include <map>
#include <mutex>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_EXPORT QEL_InternalCacheService
{
public:
    // How many flag / property-list variants of one class are remembered;
    // the oldest variant is dropped beyond that.
    static const size_t MAX_VARIANTS_PER_CLASS = 16;

    static QEL_InternalCacheService* getInstance();

    // The class as CIMOMHandle::getClass returns it for these arguments,
    // fetched once per namespace, class and argument combination. The result
    // is the caller's own copy: changing it leaves the cache untouched.
    // Whatever getClass throws passes to the caller and nothing is remembered.
    CIMClass getStoredCIMClass(
        CIMOMHandle& cimom, const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // Forgets every remembered class (after a schema change, say).
    void clearStoredClasses();

    // How many class variants are remembered.
    size_t getStoredClassCount() const;

    Uint32 getPolicy() const;
    void setPolicy(Uint32 policy);

private:
    QEL_InternalCacheService();
    QEL_InternalCacheService(const QEL_InternalCacheService&) = delete;
    QEL_InternalCacheService& operator=(const QEL_InternalCacheService&) = delete;

    struct Variant
    {
        String flagsAndProperties;
        CIMClass cimClass;
    };

    mutable std::mutex _lock;
    // Key: lower-cased "namespace:class"; newest variant first.
    std::map<String, std::list<Variant>> _classes;
    size_t _variantCount;
    std::atomic<Uint32> _policy;
};

PEGASUS_NAMESPACE_END

#endif /* QEL_InternalCacheService_h */
