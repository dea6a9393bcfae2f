// The associations the discovery provider serves, as pairs of object
// paths, and the one way every association request is answered from them:
// which links reference an object in a role, and what lies at their other
// end.
#ifndef QEL_Server_AssociationLinks_h
#define QEL_Server_AssociationLinks_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include <string>
#include <vector>

namespace qel
{
namespace interop
{

class ClassCache;

// One instance of a two-ended association.
struct Link
{
    Pegasus::CIMName assocClass;
    Pegasus::CIMName firstRole;
    Pegasus::CIMObjectPath first;
    Pegasus::CIMName secondRole;
    Pegasus::CIMObjectPath second;
};

// Whether two paths name the same object: same class and keys, and the
// same namespace unless either names none. The host is not compared: a
// client may spell it otherwise than the server.
bool sameObject(const Pegasus::CIMObjectPath& a, const Pegasus::CIMObjectPath& b);

// A lookup key for an object within its namespace: its class and keys, with
// the names folded as CIM compares them. Equal for paths sameObject() finds
// equal and that give their keys in the same notation.
std::string objectKey(const Pegasus::CIMObjectPath& path);

// A step from an object through a link to the object at its other end.
struct Hop
{
    const Link* link;
    const Pegasus::CIMObjectPath* farEnd;
};

// The hops from `object` through `links` where the object plays `role` and
// the far end plays `resultRole` (each "" for any role; role names compare
// without regard to case).
std::vector<Hop> hopsFrom(
    const std::vector<Link>& links, const Pegasus::CIMObjectPath& object,
    const Pegasus::String& role, const Pegasus::String& resultRole);

// The association instance a link stands for, in `nameSpace` on `host`.
Pegasus::CIMInstance linkInstance(
    const Link& link, ClassCache& classes, const Pegasus::String& host,
    const Pegasus::CIMNamespaceName& nameSpace, Pegasus::Boolean includeQualifiers,
    Pegasus::Boolean includeClassOrigin);

}  // namespace interop
}  // namespace qel

#endif
