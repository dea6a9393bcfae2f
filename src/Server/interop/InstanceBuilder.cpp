#include "InstanceBuilder.h"

#include <Server/core/CoreText.h>
#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>

using namespace Pegasus;

namespace qel
{
namespace interop
{

const CIMClass& ClassCache::get(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    const std::string key = nameKey(nameSpace) + ":" + nameKey(className);
    auto it = _classes.find(key);
    if (it == _classes.end())
        it = _classes
                 .emplace(
                     key, _repository.getClass(
                              nameSpace, className, false, true, true, CIMPropertyList()))
                 .first;
    return it->second;
}

bool ClassCache::isA(
    const CIMNamespaceName& nameSpace, const CIMName& className, const CIMName& ancestor) const
{
    if (className == ancestor)
        return _repository.namespaceExists(nameSpace) &&
               _repository.classExists(nameSpace, className);
    try
    {
        return _repository.isSubclassOf(nameSpace, className, ancestor);
    }
    catch (...)
    {
        // A class or namespace not held here is nobody's subclass.
        return false;
    }
}

InstanceBuilder::InstanceBuilder(
    const CIMClass& cimClass, Boolean includeQualifiers, Boolean includeClassOrigin)
    : _class(cimClass),
      _instance(cimClass.buildInstance(includeQualifiers, includeClassOrigin, CIMPropertyList()))
{
}

InstanceBuilder& InstanceBuilder::set(const CIMName& property, const CIMValue& value)
{
    const Uint32 pos = _instance.findProperty(property);
    if (pos == PEG_NOT_FOUND)
        throw Exception(
            "Class " + _class.getClassName().getString() + " has no property " +
            property.getString() + ".");
    _instance.getProperty(pos).setValue(value);
    return *this;
}

CIMInstance InstanceBuilder::finish(const String& host, const CIMNamespaceName& nameSpace)
{
    CIMObjectPath path = _instance.buildPath(_class);
    path.setHost(host);
    path.setNameSpace(nameSpace);
    _instance.setPath(path);
    return _instance;
}

}  // namespace interop
}  // namespace qel
