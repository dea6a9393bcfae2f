// Instances as the schema declares them. Each carries every property of its
// class (null unless set), qualifiers and class origins as the request
// asks, and a full path (host, namespace, keys). A value of another type
// than the declared one, or a property the class lacks, throws: the
// schema and this code disagree, which no request can cause.
#ifndef QEL_Server_InstanceBuilder_h
#define QEL_Server_InstanceBuilder_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMValue.h>

#include <map>
#include <string>

namespace Pegasus
{
class ClassRepository;
}

namespace qel
{
namespace interop
{

// The class definitions one request needs, each read once.
class ClassCache
{
public:
    explicit ClassCache(const Pegasus::ClassRepository& repository) : _repository(repository) {}

    const Pegasus::CIMClass&
    get(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className);
    // className is ancestor or one of its subclasses in nameSpace; false for
    // a class or namespace unknown there.
    bool
    isA(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        const Pegasus::CIMName& ancestor) const;

private:
    const Pegasus::ClassRepository& _repository;
    std::map<std::string, Pegasus::CIMClass> _classes;
};

// REQUIRES: cimClass outlives the builder.
class InstanceBuilder
{
public:
    InstanceBuilder(
        const Pegasus::CIMClass& cimClass, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin);

    InstanceBuilder& set(const Pegasus::CIMName& property, const Pegasus::CIMValue& value);

    // The instance with its path: the key properties must have been set.
    Pegasus::CIMInstance
    finish(const Pegasus::String& host, const Pegasus::CIMNamespaceName& nameSpace);

private:
    const Pegasus::CIMClass& _class;
    Pegasus::CIMInstance _instance;
};

}  // namespace interop
}  // namespace qel

#endif
