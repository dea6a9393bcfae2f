// QEL_InternalCacheService: class definitions remembered per namespace, class
// and request flags, and the provider set's policy word.
#include "QEL_InternalCacheService.h"

#include <algorithm>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace
{

String _classKey(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    String key = nameSpace.getString();
    key.append(Char16(':'));
    key.append(className.getString());
    key.toLower();
    return key;
}

// The flags and the property list in one text. Property names are compared
// without regard to case and their order does not change the class returned,
// so they are lower-cased and sorted; a null list differs from an empty one.
String _variantKey(
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    String key;
    key.append(Char16(localOnly ? 'L' : 'l'));
    key.append(Char16(includeQualifiers ? 'Q' : 'q'));
    key.append(Char16(includeClassOrigin ? 'O' : 'o'));
    if (propertyList.isNull())
    {
        key.append(Char16('*'));
        return key;
    }
    std::vector<String> names;
    for (Uint32 i = 0; i < propertyList.size(); i++)
    {
        String name = propertyList[i].getString();
        name.toLower();
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    key.append(Char16('['));
    for (size_t i = 0; i < names.size(); i++)
    {
        if (i != 0)
        {
            key.append(Char16(','));
        }
        key.append(names[i]);
    }
    key.append(Char16(']'));
    return key;
}

}  // anonymous namespace

QEL_InternalCacheService::QEL_InternalCacheService() : _variantCount(0), _policy(0)
{
}

QEL_InternalCacheService* QEL_InternalCacheService::getInstance()
{
    static QEL_InternalCacheService instance;
    return &instance;
}

CIMClass QEL_InternalCacheService::getStoredCIMClass(
    CIMOMHandle& cimom, const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    const String classKey = _classKey(nameSpace, className);
    const String variantKey =
        _variantKey(localOnly, includeQualifiers, includeClassOrigin, propertyList);
    {
        std::lock_guard<std::mutex> guard(_lock);
        auto found = _classes.find(classKey);
        if (found != _classes.end())
        {
            for (const Variant& v : found->second)
            {
                if (v.flagsAndProperties == variantKey)
                {
                    return v.cimClass.clone();
                }
            }
        }
    }

    // Fetched without the lock: the server may take a while, and concurrent
    // requests for other classes must not wait on it.
    CIMClass fetched = cimom.getClass(
        context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
    if (fetched.isUninitialized())
    {
        return fetched;
    }
    CIMClass stored = fetched.clone();

    std::lock_guard<std::mutex> guard(_lock);
    std::list<Variant>& variants = _classes[classKey];
    for (const Variant& v : variants)
    {
        if (v.flagsAndProperties == variantKey)
        {
            // Another request remembered it meanwhile; keep the first.
            return v.cimClass.clone();
        }
    }
    Variant added;
    added.flagsAndProperties = variantKey;
    added.cimClass = stored;
    variants.push_front(added);
    _variantCount++;
    if (variants.size() > MAX_VARIANTS_PER_CLASS)
    {
        variants.pop_back();
        _variantCount--;
    }
    return stored.clone();
}

void QEL_InternalCacheService::clearStoredClasses()
{
    std::lock_guard<std::mutex> guard(_lock);
    _classes.clear();
    _variantCount = 0;
}

size_t QEL_InternalCacheService::getStoredClassCount() const
{
    std::lock_guard<std::mutex> guard(_lock);
    return _variantCount;
}

Uint32 QEL_InternalCacheService::getPolicy() const
{
    return _policy.load();
}

void QEL_InternalCacheService::setPolicy(Uint32 policy)
{
    _policy.store(policy);
}

PEGASUS_NAMESPACE_END
