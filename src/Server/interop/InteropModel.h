// What one request sees of root/interop: the instances of each class the
// discovery provider serves and the links of each association, built on
// demand from the server's facts and never kept, so every answer shows the
// server as it is now.
#ifndef QEL_Server_InteropModel_h
#define QEL_Server_InteropModel_h

#include "AssociationLinks.h"
#include "InteropFacts.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <vector>

namespace qel
{
namespace interop
{

// A class the discovery provider serves in root/interop.
struct ServedClass
{
    const char* name;
    bool association;
};
const std::vector<ServedClass>& servedClasses();

class InteropModel
{
public:
    // `cimom` reaches the rest of the server as the request's user
    // (`context`): central instances in other namespaces are read there.
    InteropModel(
        const ServerFacts& facts, Pegasus::CIMOMHandle& cimom,
        const Pegasus::OperationContext& context, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin);

    // The instances of exactly this class (one of servedClasses(), else
    // CIM_ERR_NOT_SUPPORTED); `near` as for links().
    std::vector<Pegasus::CIMInstance>
    instances(const Pegasus::CIMName& className, const Pegasus::CIMObjectPath* near = nullptr);

    // The links of exactly this association class. With `near`, links that
    // cannot reference it may be left out (so that a request about the
    // object manager does not read every port of the array).
    std::vector<Link>
    links(const Pegasus::CIMName& assocClass, const Pegasus::CIMObjectPath* near = nullptr);

    // The association instance of a link.
    Pegasus::CIMInstance instanceOf(const Link& link);

    // The objects at these paths, in their order; a path naming nothing
    // (an element gone since its link was read) is left out. Objects of
    // other namespaces are read there with the property list.
    Pegasus::Array<Pegasus::CIMObject> objectsAt(
        const std::vector<const Pegasus::CIMObjectPath*>& paths,
        const Pegasus::CIMPropertyList& propertyList);

    // The path's class is `ancestor` or one of its subclasses, in the path's
    // namespace (root/interop when it names none).
    bool isA(const Pegasus::CIMObjectPath& path, const Pegasus::CIMName& ancestor);

private:
    const ServerFacts& _facts;
    Pegasus::CIMOMHandle& _cimom;
    const Pegasus::OperationContext& _context;
    ClassCache _classes;
    BuildScope _scope;
};

}  // namespace interop
}  // namespace qel

#endif
