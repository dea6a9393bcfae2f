// The association classes of every namespace and what their references
// point to, read once from the repository (which does not change after
// start). Answers the two questions a CIMOM asks of the schema for
// association requests: which association classes can reference an object
// of a given class (to choose the providers), and, for class-level
// requests, which classes lie at the other ends.
#ifndef QEL_Server_AssociationSchema_h
#define QEL_Server_AssociationSchema_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

#include <map>
#include <string>
#include <vector>

namespace Pegasus
{

class ClassRepository;

class AssociationSchema
{
public:
    explicit AssociationSchema(const ClassRepository& repository);

    // Association classes having a reference property (named `role`, without
    // regard to case, unless `role` is empty) whose class is `objectClass`
    // or one of its superclasses; when `classFilter` is not null, only that
    // class and its subclasses. Each class once, in repository order.
    std::vector<CIMName> referencingClasses(
        const CIMNamespaceName& ns, const CIMName& objectClass, const CIMName& classFilter,
        const String& role) const;

    // For class-level associators: the classes referenced by the other
    // references (named `resultRole` unless empty) of those association
    // classes (restricted to `assocClass` and its subclasses), kept when
    // they are `resultClass` or one of its subclasses. Each class once.
    std::vector<CIMName> associatedClasses(
        const CIMNamespaceName& ns, const CIMName& objectClass, const CIMName& assocClass,
        const CIMName& resultClass, const String& role, const String& resultRole) const;

private:
    struct Reference
    {
        CIMName property;
        CIMName referenceClass;
    };
    struct Association
    {
        CIMName name;
        std::vector<Reference> references;
    };

    const std::vector<Association>* _associations(const CIMNamespaceName& ns) const;
    bool _isA(const CIMNamespaceName& ns, const CIMName& cls, const CIMName& ancestor) const;

    const ClassRepository& _repository;
    std::map<std::string, std::vector<Association>> _byNamespace;
};

}  // namespace Pegasus

#endif
