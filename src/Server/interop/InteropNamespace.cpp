#include "InteropNamespace.h"

namespace qel
{
namespace interop
{

const char* const namespaceName = "root/interop";
const char* const namespaceAlias = "interop";

Pegasus::CIMNamespaceName resolveNamespaceAlias(const Pegasus::CIMNamespaceName& requested)
{
    if (!requested.isNull() && requested == Pegasus::CIMNamespaceName(namespaceAlias))
        return Pegasus::CIMNamespaceName(namespaceName);
    return requested;
}

}  // namespace interop
}  // namespace qel
