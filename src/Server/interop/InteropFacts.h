// What the discovery provider publishes, as read from the running server
// core, and what every builder of one request shares.
#ifndef QEL_Server_InteropFacts_h
#define QEL_Server_InteropFacts_h

#include "InstanceBuilder.h"
#include "InteropNamespace.h"
#include "InteropOptions.h"

#include <Pegasus/Common/CIMDateTime.h>

namespace Pegasus
{
class ClassRepository;
class ProviderRegistry;
}  // namespace Pegasus

namespace qel
{
namespace interop
{

// The repository and registry belong to the server core and outlive the
// provider (the core terminates providers before it drops them).
struct ServerFacts
{
    const Pegasus::ClassRepository* repository = nullptr;
    const Pegasus::ProviderRegistry* registry = nullptr;
    Pegasus::String hostName;
    Pegasus::CIMDateTime startTime;
    InteropOptions options;
};

// One request's way of building instances of root/interop.
struct BuildScope
{
    const ServerFacts& facts;
    ClassCache& classes;
    Pegasus::Boolean includeQualifiers;
    Pegasus::Boolean includeClassOrigin;

    InstanceBuilder builder(const char* className) const
    {
        return InstanceBuilder(
            classes.get(Pegasus::CIMNamespaceName(namespaceName), className), includeQualifiers,
            includeClassOrigin);
    }
    Pegasus::CIMInstance finish(InstanceBuilder& builder) const
    {
        return builder.finish(facts.hostName, Pegasus::CIMNamespaceName(namespaceName));
    }
};

}  // namespace interop
}  // namespace qel

#endif
