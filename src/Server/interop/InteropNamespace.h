// The discovery namespace: where the object manager, its namespaces and the
// registered profiles are published, and the short name clients may use
// for it.
#ifndef QEL_Server_InteropNamespace_h
#define QEL_Server_InteropNamespace_h

#include <Pegasus/Common/CIMName.h>

namespace qel
{
namespace interop
{

extern const char* const namespaceName;   // "root/interop"
extern const char* const namespaceAlias;  // "interop"

// The namespace a client means: the alias, in any letter case, is
// root/interop; every other name comes back unchanged.
Pegasus::CIMNamespaceName resolveNamespaceAlias(const Pegasus::CIMNamespaceName& requested);

}  // namespace interop
}  // namespace qel

#endif
