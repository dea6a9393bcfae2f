#include "ClassRepository.h"

#include <mutex>
#include <unordered_map>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include "ClassFilter.h"
#include "ClassResolver.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

// CIM names compare ignoring ASCII case; the key is the lower-cased text.
std::string keyOf(const String& name)
{
    std::string k(static_cast<const char*>(name.getCString()));
    for (char& c : k)
    {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return k;
}

std::string keyOf(const CIMName& name)
{
    return keyOf(name.getString());
}

}  // namespace

struct ClassRepository::Namespace : public ResolverContext
{
    struct ClassEntry
    {
        CIMClass cls;
        std::string key;
        std::string superKey;  // empty: no superclass
    };

    CIMNamespaceName name;
    std::vector<CIMQualifierDecl> qualifiers;
    std::unordered_map<std::string, size_t> qualifierIndex;
    std::vector<ClassEntry> classes;
    std::unordered_map<std::string, size_t> classIndex;
    std::vector<CIMInstance> instances;

    const ClassEntry* entry(const CIMName& className) const
    {
        if (className.isNull())
            return 0;
        auto it = classIndex.find(keyOf(className));
        return it == classIndex.end() ? 0 : &classes[it->second];
    }

    const ClassEntry& existing(const CIMName& className, CIMStatusCode code) const
    {
        const ClassEntry* e = entry(className);
        if (!e)
            throw CIMException(code, className.isNull() ? String() : className.getString());
        return *e;
    }

    // True when the class with key `k` is `ancestor` or descends from it.
    bool descends(std::string k, const std::string& ancestor) const
    {
        while (!k.empty())
        {
            if (k == ancestor)
                return true;
            auto it = classIndex.find(k);
            if (it == classIndex.end())
                return false;
            k = classes[it->second].superKey;
        }
        return false;
    }

    bool findQualifierDecl(const CIMName& qualifierName, CIMConstQualifierDecl& decl) const override
    {
        auto it = qualifierIndex.find(keyOf(qualifierName));
        if (it == qualifierIndex.end())
            return false;
        decl = qualifiers[it->second];
        return true;
    }

    bool findClass(const CIMName& className, CIMConstClass& cls) const override
    {
        const ClassEntry* e = entry(className);
        if (!e)
            return false;
        cls = e->cls;
        return true;
    }
};

ClassRepository::ClassRepository()
{
}

ClassRepository::~ClassRepository()
{
}

ClassRepository::Namespace* ClassRepository::_find(const CIMNamespaceName& ns) const
{
    if (ns.isNull())
        return 0;
    auto it = _namespaces.find(keyOf(ns.getString()));
    return it == _namespaces.end() ? 0 : it->second.get();
}

ClassRepository::Namespace& ClassRepository::_get(const CIMNamespaceName& ns) const
{
    Namespace* n = _find(ns);
    if (!n)
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, ns.isNull() ? String() : ns.getString());
    return *n;
}

ClassRepository::Namespace& ClassRepository::_getOrCreate(const CIMNamespaceName& ns)
{
    if (ns.isNull())
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, String());
    Namespace* n = _find(ns);
    if (n)
        return *n;
    std::unique_ptr<Namespace> created(new Namespace);
    created->name = ns;
    n = created.get();
    _namespaces[keyOf(ns.getString())] = std::move(created);
    _namespaceOrder.push_back(ns);
    return *n;
}

void ClassRepository::createNamespace(const CIMNamespaceName& ns)
{
    std::unique_lock<std::shared_mutex> lock(_lock);
    _getOrCreate(ns);
}

void ClassRepository::addQualifierDecl(const CIMNamespaceName& ns, const CIMQualifierDecl& decl)
{
    std::unique_lock<std::shared_mutex> lock(_lock);
    Namespace& n = _getOrCreate(ns);
    const std::string k = keyOf(decl.getName());
    if (n.qualifierIndex.count(k))
        throw CIMException(CIM_ERR_ALREADY_EXISTS, decl.getName().getString());
    n.qualifierIndex[k] = n.qualifiers.size();
    n.qualifiers.push_back(decl.clone());
}

void ClassRepository::addClass(const CIMNamespaceName& ns, const CIMClass& cls)
{
    std::unique_lock<std::shared_mutex> lock(_lock);
    Namespace& n = _getOrCreate(ns);
    if (n.entry(cls.getClassName()))
        throw CIMException(CIM_ERR_ALREADY_EXISTS, cls.getClassName().getString());

    Namespace::ClassEntry e;
    e.cls = resolveClass(cls, n);
    e.key = keyOf(cls.getClassName());
    if (!cls.getSuperClassName().isNull())
        e.superKey = keyOf(cls.getSuperClassName());
    n.classIndex[e.key] = n.classes.size();
    n.classes.push_back(e);
}

CIMObjectPath ClassRepository::addInstance(const CIMNamespaceName& ns, const CIMInstance& inst)
{
    std::unique_lock<std::shared_mutex> lock(_lock);
    Namespace& n = _get(ns);
    const CIMConstClass cls = n.existing(inst.getClassName(), CIM_ERR_INVALID_CLASS).cls;
    const String className = cls.getClassName().getString();
    if (cls.isAbstract())
        throw CIMException(CIM_ERR_INVALID_CLASS, "class " + className + " is abstract");

    CIMInstance out(cls.getClassName());
    for (Uint32 i = 0, count = inst.getQualifierCount(); i < count; i++)
        out.addQualifier(inst.getQualifier(i).clone());
    for (Uint32 i = 0, count = inst.getPropertyCount(); i < count; i++)
    {
        const CIMConstProperty p = inst.getProperty(i);
        const Uint32 ci = cls.findProperty(p.getName());
        if (ci == PEG_NOT_FOUND)
        {
            throw CIMException(
                CIM_ERR_NO_SUCH_PROPERTY,
                "class " + className + " has no property " + p.getName().getString());
        }
        const CIMConstProperty cp = cls.getProperty(ci);
        if (cp.getType() != p.getType() || cp.isArray() != p.isArray())
        {
            throw CIMException(
                CIM_ERR_TYPE_MISMATCH, "property " + cp.getName().getString() + " of class " +
                                           className + " is " + cimTypeToString(cp.getType()) +
                                           (cp.isArray() ? "[]" : "") + " but the value is " +
                                           cimTypeToString(p.getType()) +
                                           (p.isArray() ? "[]" : ""));
        }
        if (out.findProperty(p.getName()) != PEG_NOT_FOUND)
        {
            throw CIMException(
                CIM_ERR_INVALID_PARAMETER,
                "property " + cp.getName().getString() + " is given twice");
        }
        CIMProperty np(
            cp.getName(), p.getValue(), 0, cp.getReferenceClassName(), cp.getClassOrigin(), false);
        for (Uint32 q = 0, qn = p.getQualifierCount(); q < qn; q++)
            np.addQualifier(p.getQualifier(q).clone());
        out.addProperty(np);
    }

    Array<CIMName> keys;
    cls.getKeyNames(keys);
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        const Uint32 pi = out.findProperty(keys[i]);
        if (pi == PEG_NOT_FOUND || out.getProperty(pi).getValue().isNull())
        {
            throw CIMException(
                CIM_ERR_INVALID_PARAMETER,
                "key property " + keys[i].getString() + " of class " + className + " has no value");
        }
    }
    CIMObjectPath path = out.buildPath(cls);
    path.setNameSpace(n.name);
    for (const CIMInstance& existing : n.instances)
    {
        if (existing.getPath() == path)
            throw CIMException(CIM_ERR_ALREADY_EXISTS, path.toString());
    }
    out.setPath(path);
    n.instances.push_back(out);
    return path;
}

Boolean ClassRepository::namespaceExists(const CIMNamespaceName& ns) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    return _find(ns) != 0;
}

Array<CIMNamespaceName> ClassRepository::enumerateNamespaces() const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    Array<CIMNamespaceName> out;
    for (const CIMNamespaceName& ns : _namespaceOrder)
        out.append(ns);
    return out;
}

CIMClass ClassRepository::getClass(
    const CIMNamespaceName& ns, const CIMName& className, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    return filterClass(
        n.existing(className, CIM_ERR_NOT_FOUND).cls, localOnly, includeQualifiers,
        includeClassOrigin, propertyList);
}

Boolean ClassRepository::classExists(const CIMNamespaceName& ns, const CIMName& className) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    return _get(ns).entry(className) != 0;
}

Array<CIMName> ClassRepository::enumerateClassNames(
    const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    Array<CIMName> out;
    if (className.isNull())
    {
        for (const Namespace::ClassEntry& e : n.classes)
        {
            if (deepInheritance || e.superKey.empty())
                out.append(e.cls.getClassName());
        }
        return out;
    }
    const std::string k = n.existing(className, CIM_ERR_INVALID_CLASS).key;
    for (const Namespace::ClassEntry& e : n.classes)
    {
        if (e.key == k)
            continue;
        if (deepInheritance ? n.descends(e.superKey, k) : e.superKey == k)
            out.append(e.cls.getClassName());
    }
    return out;
}

Array<CIMClass> ClassRepository::enumerateClasses(
    const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin) const
{
    const Array<CIMName> names = enumerateClassNames(ns, className, deepInheritance);
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    Array<CIMClass> out;
    for (Uint32 i = 0; i < names.size(); i++)
    {
        out.append(filterClass(
            n.existing(names[i], CIM_ERR_NOT_FOUND).cls, localOnly, includeQualifiers,
            includeClassOrigin, CIMPropertyList()));
    }
    return out;
}

Array<CIMName> ClassRepository::subclassNames(
    const CIMNamespaceName& ns, const CIMName& className, Boolean deep) const
{
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_CLASS, String());
    return enumerateClassNames(ns, className, deep);
}

Boolean ClassRepository::isSubclassOf(
    const CIMNamespaceName& ns, const CIMName& className, const CIMName& ancestor) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    const Namespace::ClassEntry* e = n.entry(className);
    if (!e || ancestor.isNull())
        return false;
    return n.descends(e->key, keyOf(ancestor));
}

Array<CIMInstance>
ClassRepository::enumerateInstances(const CIMNamespaceName& ns, const CIMName& className) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    const std::string k = n.existing(className, CIM_ERR_INVALID_CLASS).key;
    Array<CIMInstance> out;
    for (const CIMInstance& inst : n.instances)
    {
        if (n.descends(keyOf(inst.getClassName()), k))
            out.append(inst.clone());
    }
    return out;
}

CIMInstance
ClassRepository::getInstance(const CIMNamespaceName& ns, const CIMObjectPath& path) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    n.existing(path.getClassName(), CIM_ERR_INVALID_CLASS);
    const CIMObjectPath wanted(String(), n.name, path.getClassName(), path.getKeyBindings());
    for (const CIMInstance& inst : n.instances)
    {
        if (inst.getPath() == wanted)
            return inst.clone();
    }
    throw CIMException(CIM_ERR_NOT_FOUND, path.toString());
}

CIMQualifierDecl
ClassRepository::getQualifier(const CIMNamespaceName& ns, const CIMName& name) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    auto it = n.qualifierIndex.find(keyOf(name));
    if (it == n.qualifierIndex.end())
        throw CIMException(CIM_ERR_NOT_FOUND, name.getString());
    return n.qualifiers[it->second].clone();
}

Boolean ClassRepository::findQualifier(
    const CIMNamespaceName& ns, const CIMName& name, CIMQualifierDecl& decl) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace* n = _find(ns);
    if (!n)
        return false;
    auto it = n->qualifierIndex.find(keyOf(name));
    if (it == n->qualifierIndex.end())
        return false;
    decl = n->qualifiers[it->second].clone();
    return true;
}

Array<CIMQualifierDecl> ClassRepository::enumerateQualifiers(const CIMNamespaceName& ns) const
{
    std::shared_lock<std::shared_mutex> lock(_lock);
    const Namespace& n = _get(ns);
    Array<CIMQualifierDecl> out;
    for (const CIMQualifierDecl& d : n.qualifiers)
        out.append(d.clone());
    return out;
}

PEGASUS_NAMESPACE_END
