// The object manager itself and what hangs off it: the CIM-XML access
// points through which clients reach it and the namespaces it holds, with
// the associations that tie them to it.
#ifndef QEL_Server_ServerObjects_h
#define QEL_Server_ServerObjects_h

#include "AssociationLinks.h"
#include "InteropFacts.h"

#include <vector>

namespace qel
{
namespace interop
{

// CIM_ObjectManager: one instance, the server.
Pegasus::CIMInstance objectManager(const BuildScope& scope);

// CIM_CIMXMLCommunicationMechanism: one per access point the front-ends
// report.
std::vector<Pegasus::CIMInstance> communicationMechanisms(const BuildScope& scope);

// CIM_Namespace: one per namespace of the class repository, root/interop
// included.
std::vector<Pegasus::CIMInstance> namespaces(const BuildScope& scope);

// CIM_CommMechanismForManager and CIM_NamespaceInManager: the object
// manager (Antecedent) and each of them (Dependent).
std::vector<Link> communicationLinks(const BuildScope& scope);
std::vector<Link> namespaceLinks(const BuildScope& scope);

}  // namespace interop
}  // namespace qel

#endif
