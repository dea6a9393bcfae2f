// The server's class repository: per namespace, qualifier declarations,
// resolved class definitions and the static instances that MOF declares
// (provider registrations among them). Loaded once at start, then read by
// many request threads at the same time.
#ifndef QEL_Server_ClassRepository_h
#define QEL_Server_ClassRepository_h

#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifierDecl.h>

PEGASUS_NAMESPACE_BEGIN

class ClassRepository
{
public:
    ClassRepository();
    ~ClassRepository();
    ClassRepository(const ClassRepository&) = delete;
    ClassRepository& operator=(const ClassRepository&) = delete;

    // Loading. A namespace comes into being with its first qualifier
    // declaration or class (or createNamespace). Errors: CIMException.

    void createNamespace(const CIMNamespaceName& ns);

    // CIM_ERR_ALREADY_EXISTS when the namespace declares it already.
    void addQualifierDecl(const CIMNamespaceName& ns, const CIMQualifierDecl& decl);

    // Resolves the class (see ClassResolver.h) and stores a copy.
    // CIM_ERR_ALREADY_EXISTS, CIM_ERR_INVALID_SUPERCLASS, or
    // CIM_ERR_INVALID_PARAMETER for a definition that breaks a rule.
    void addClass(const CIMNamespaceName& ns, const CIMClass& cls);

    // Stores a copy of a static instance and returns its path (namespace
    // set, no host). Every property must be one of the class's, of its
    // type; properties get the class's spelling and class origin; the
    // keys must have values. CIM_ERR_INVALID_NAMESPACE,
    // CIM_ERR_INVALID_CLASS (unknown or abstract
    // class), CIM_ERR_NO_SUCH_PROPERTY, CIM_ERR_TYPE_MISMATCH,
    // CIM_ERR_INVALID_PARAMETER (key missing or null),
    // CIM_ERR_ALREADY_EXISTS (same path twice).
    CIMObjectPath addInstance(const CIMNamespaceName& ns, const CIMInstance& inst);

    // Queries; safe from many threads at once. Unknown namespace:
    // CIM_ERR_INVALID_NAMESPACE.

    Boolean namespaceExists(const CIMNamespaceName& ns) const;
    // In the order they came into being.
    Array<CIMNamespaceName> enumerateNamespaces() const;

    // A fresh copy, filtered as ClassFilter.h says. Unknown class:
    // CIM_ERR_NOT_FOUND.
    CIMClass getClass(
        const CIMNamespaceName& ns, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) const;

    Boolean classExists(const CIMNamespaceName& ns, const CIMName& className) const;

    // className null: the classes without superclass (deepInheritance
    // false) or every class (true). Otherwise its direct subclasses, or
    // all its descendants. Always in definition order, so a superclass
    // comes before its subclasses. Unknown class: CIM_ERR_INVALID_CLASS.
    Array<CIMName> enumerateClassNames(
        const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance) const;

    // The classes enumerateClassNames names, each filtered like getClass
    // with a null property list.
    Array<CIMClass> enumerateClasses(
        const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin) const;

    // Direct subclasses (deep false) or all descendants, without the class
    // itself, in definition order. Unknown class: CIM_ERR_INVALID_CLASS.
    Array<CIMName>
    subclassNames(const CIMNamespaceName& ns, const CIMName& className, Boolean deep) const;

    // True when className is ancestor or descends from it; false when
    // className is not a class of the namespace.
    Boolean isSubclassOf(
        const CIMNamespaceName& ns, const CIMName& className, const CIMName& ancestor) const;

    // Static instances of the class and of its subclasses, copies, in the
    // order they were added. Unknown class: CIM_ERR_INVALID_CLASS.
    Array<CIMInstance>
    enumerateInstances(const CIMNamespaceName& ns, const CIMName& className) const;

    // The static instance with this path (host and namespace of `path`
    // are not compared). CIM_ERR_INVALID_CLASS, CIM_ERR_NOT_FOUND.
    CIMInstance getInstance(const CIMNamespaceName& ns, const CIMObjectPath& path) const;

    // Unknown qualifier: CIM_ERR_NOT_FOUND.
    CIMQualifierDecl getQualifier(const CIMNamespaceName& ns, const CIMName& name) const;
    // Non-throwing lookup for the compiler; false also for an unknown namespace.
    Boolean
    findQualifier(const CIMNamespaceName& ns, const CIMName& name, CIMQualifierDecl& decl) const;
    Array<CIMQualifierDecl> enumerateQualifiers(const CIMNamespaceName& ns) const;

private:
    struct Namespace;

    Namespace* _find(const CIMNamespaceName& ns) const;
    Namespace& _get(const CIMNamespaceName& ns) const;
    Namespace& _getOrCreate(const CIMNamespaceName& ns);

    mutable std::shared_mutex _lock;
    std::map<std::string, std::unique_ptr<Namespace>> _namespaces;
    std::vector<CIMNamespaceName> _namespaceOrder;
};

PEGASUS_NAMESPACE_END

#endif
