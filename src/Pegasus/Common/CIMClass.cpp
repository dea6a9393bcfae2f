#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObjectRep.h>
#include <Pegasus/Common/CIMPropertyRep.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const CIMName& keyName()
{
    static const CIMName name("Key");
    return name;
}

const CIMName& associationName()
{
    static const CIMName name("Association");
    return name;
}

const CIMName& abstractName()
{
    static const CIMName name("Abstract");
    return name;
}

// A boolean qualifier counts only when it is a non-null scalar true.
bool isTrue(const CIMValue& value)
{
    if (value.isNull() || value.isArray() || value.getType() != CIMTYPE_BOOLEAN)
        return false;
    Boolean flag = false;
    value.get(flag);
    return flag;
}

bool isKeyProperty(const CIMProperty& p)
{
    Uint32 pos = p.findQualifier(keyName());
    return pos != PEG_NOT_FOUND && isTrue(p.getQualifier(pos).getValue());
}
}  // namespace

// CIMClassRep

CIMClassRep::CIMClassRep(const CIMName& className, const CIMName& superClassName_)
    : CIMObjectRep(CIMObjectPath(String(), CIMNamespaceName(), className)),
      superClassName(superClassName_)
{
}

CIMClassRep::CIMClassRep(const CIMClassRep& x) : CIMObjectRep(x), superClassName(x.superClassName)
{
    x.methods.cloneTo(methods);
    // Most classes were made with interned names, which the clone shares; the others'
    // are interned here.
    for (Uint32 i = 0; i < properties.size(); i++)
        properties.at(i)._rep->internNames();
}

std::shared_ptr<CIMObjectRep> CIMClassRep::cloneObject() const
{
    return clone();
}

std::shared_ptr<CIMClassRep> CIMClassRep::clone() const
{
    return std::make_shared<CIMClassRep>(*this);
}

bool CIMClassRep::identical(const CIMObjectRep& x) const
{
    const CIMClassRep* other = dynamic_cast<const CIMClassRep*>(&x);
    if (!other)
        return false;
    if (this == other)
        return true;
    if (!CIMObjectRep::identical(x) || !superClassName.equal(other->superClassName) ||
        methods.size() != other->methods.size())
    {
        return false;
    }
    for (Uint32 i = 0; i < methods.size(); i++)
    {
        const CIMMethod& a = methods.at(i);
        const CIMMethod& b = other->methods.at(i);
        if (!a.identical(b) || !a.getClassOrigin().equal(b.getClassOrigin()) ||
            a.getPropagated() != b.getPropagated())
        {
            return false;
        }
    }
    return true;
}

void CIMClassRep::addProperty(const CIMProperty& x)
{
    // Same order of checks as for instances, then the class-only rule.
    if (!x.isUninitialized() && properties.find(x.getName()) == PEG_NOT_FOUND &&
        x.getType() == CIMTYPE_REFERENCE && x.getReferenceClassName().isNull())
    {
        throw TypeMismatchException();
    }
    properties.add(x);
    x._rep->internNames();
}

bool CIMClassRep::hasTrueQualifier(const CIMName& name) const
{
    Uint32 pos = qualifiers.find(name);
    return pos != PEG_NOT_FOUND && isTrue(qualifiers.at(pos).getValue());
}

void CIMClassRep::getKeyNames(Array<CIMName>& keyNames) const
{
    keyNames.clear();
    for (Uint32 i = 0; i < properties.size(); i++)
    {
        const CIMProperty& p = properties.at(i);
        if (isKeyProperty(p))
            keyNames.append(p.getName());
    }
}

bool CIMClassRep::hasKeys() const
{
    for (Uint32 i = 0; i < properties.size(); i++)
    {
        if (isKeyProperty(properties.at(i)))
            return true;
    }
    return false;
}

std::shared_ptr<CIMInstanceRep> CIMClassRep::buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    // The instance's first path names its class only: the class's own path is shared when
    // it is no more than that.
    const bool classOnly = reference.getHost().size() == 0 && reference.getNameSpace().isNull() &&
                           reference.getKeyBindings().size() == 0;
    auto inst = classOnly ? std::make_shared<CIMInstanceRep>(reference)
                          : std::make_shared<CIMInstanceRep>(getClassName());
    inst->properties.reserve(properties.size());
    if (includeQualifiers)
    {
        inst->qualifiers.reserve(qualifiers.size());
        for (Uint32 i = 0; i < qualifiers.size(); i++)
            inst->qualifiers.addDistinct(qualifiers.at(i).clone());
    }
    // The instance's properties are made in one block. The class's are valid already:
    // copies need no checks.
    const bool all = propertyList.isNull();
    inst->propertyBlock = PropertyBlock::make(properties.size());
    for (Uint32 i = 0; i < properties.size(); i++)
    {
        const CIMProperty& cp = properties.at(i);
        if (!all && !propertyList.useThisProperty(cp.getName()))
            continue;
        inst->properties.addCopyOf(
            properties, i,
            CIMProperty(
                inst->propertyBlock->emplace(*cp._rep, includeQualifiers, includeClassOrigin)));
    }
    // Every property, in the class's order: the class's name index serves the instance too.
    inst->properties.adoptIndexOf(properties);
    return inst;
}

// CIMClass

CIMClass::CIMClass() = default;
CIMClass::CIMClass(const CIMClass& x) = default;
CIMClass& CIMClass::operator=(const CIMClass& x) = default;
CIMClass::~CIMClass() = default;

CIMClass::CIMClass(const CIMObject& x) : _rep(std::dynamic_pointer_cast<CIMClassRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMClass::CIMClass(const CIMName& className, const CIMName& superClassName)
    : _rep(std::make_shared<CIMClassRep>(className, superClassName))
{
}

CIMClass::CIMClass(std::shared_ptr<CIMClassRep> rep) : _rep(std::move(rep))
{
}

Boolean CIMClass::isAssociation() const
{
    return checkRep(_rep).hasTrueQualifier(associationName());
}

Boolean CIMClass::isAbstract() const
{
    return checkRep(_rep).hasTrueQualifier(abstractName());
}

const CIMName& CIMClass::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMClass::getPath() const
{
    return checkRep(_rep).reference;
}

void CIMClass::setPath(const CIMObjectPath& path)
{
    checkRep(_rep).setPath(path);
}

const CIMName& CIMClass::getSuperClassName() const
{
    return checkRep(_rep).superClassName;
}

void CIMClass::setSuperClassName(const CIMName& superClassName)
{
    checkRep(_rep).superClassName = superClassName;
}

CIMClass& CIMClass::addQualifier(const CIMQualifier& qualifier)
{
    checkRep(_rep).qualifiers.add(qualifier);
    return *this;
}

Uint32 CIMClass::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMClass::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

CIMConstQualifier CIMClass::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMClass::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

Uint32 CIMClass::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

CIMClass& CIMClass::addProperty(const CIMProperty& x)
{
    checkRep(_rep).addProperty(x);
    return *this;
}

Uint32 CIMClass::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMProperty CIMClass::getProperty(Uint32 index)
{
    return checkRep(_rep).propertyHandle(index);
}

CIMConstProperty CIMClass::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

void CIMClass::removeProperty(Uint32 index)
{
    checkRep(_rep).properties.remove(index);
}

Uint32 CIMClass::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

CIMClass& CIMClass::addMethod(const CIMMethod& x)
{
    checkRep(_rep).methods.add(x);
    return *this;
}

Uint32 CIMClass::findMethod(const CIMName& name) const
{
    return checkRep(_rep).methods.find(name);
}

CIMMethod CIMClass::getMethod(Uint32 index)
{
    return checkRep(_rep).methods.at(index);
}

CIMConstMethod CIMClass::getMethod(Uint32 index) const
{
    return checkRep(_rep).methods.at(index);
}

void CIMClass::removeMethod(Uint32 index)
{
    checkRep(_rep).methods.remove(index);
}

Uint32 CIMClass::getMethodCount() const
{
    return checkRep(_rep).methods.size();
}

void CIMClass::getKeyNames(Array<CIMName>& keyNames) const
{
    checkRep(_rep).getKeyNames(keyNames);
}

Boolean CIMClass::hasKeys() const
{
    return checkRep(_rep).hasKeys();
}

CIMClass CIMClass::clone() const
{
    return CIMClass(checkRep(_rep).clone());
}

Boolean CIMClass::identical(const CIMConstClass& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMClass::isUninitialized() const
{
    return !_rep;
}

CIMInstance CIMClass::buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) const
{
    return CIMInstance(
        checkRep(_rep).buildInstance(includeQualifiers, includeClassOrigin, propertyList));
}

// CIMConstClass

CIMConstClass::CIMConstClass() = default;
CIMConstClass::CIMConstClass(const CIMConstClass& x) = default;
CIMConstClass& CIMConstClass::operator=(const CIMConstClass& x) = default;
CIMConstClass::~CIMConstClass() = default;

CIMConstClass::CIMConstClass(const CIMClass& x) : _rep(x._rep)
{
}

CIMConstClass::CIMConstClass(const CIMObject& x)
    : _rep(std::dynamic_pointer_cast<CIMClassRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMConstClass::CIMConstClass(const CIMConstObject& x)
    : _rep(std::dynamic_pointer_cast<CIMClassRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMConstClass::CIMConstClass(const CIMName& className, const CIMName& superClassName)
    : _rep(std::make_shared<CIMClassRep>(className, superClassName))
{
}

CIMConstClass& CIMConstClass::operator=(const CIMClass& x)
{
    _rep = x._rep;
    return *this;
}

Boolean CIMConstClass::isAssociation() const
{
    return checkRep(_rep).hasTrueQualifier(associationName());
}

Boolean CIMConstClass::isAbstract() const
{
    return checkRep(_rep).hasTrueQualifier(abstractName());
}

const CIMName& CIMConstClass::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMConstClass::getPath() const
{
    return checkRep(_rep).reference;
}

const CIMName& CIMConstClass::getSuperClassName() const
{
    return checkRep(_rep).superClassName;
}

Uint32 CIMConstClass::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstClass::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstClass::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Uint32 CIMConstClass::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstClass::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

Uint32 CIMConstClass::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

Uint32 CIMConstClass::findMethod(const CIMName& name) const
{
    return checkRep(_rep).methods.find(name);
}

CIMConstMethod CIMConstClass::getMethod(Uint32 index) const
{
    return checkRep(_rep).methods.at(index);
}

Uint32 CIMConstClass::getMethodCount() const
{
    return checkRep(_rep).methods.size();
}

void CIMConstClass::getKeyNames(Array<CIMName>& keyNames) const
{
    checkRep(_rep).getKeyNames(keyNames);
}

Boolean CIMConstClass::hasKeys() const
{
    return checkRep(_rep).hasKeys();
}

CIMClass CIMConstClass::clone() const
{
    return CIMClass(checkRep(_rep).clone());
}

Boolean CIMConstClass::identical(const CIMConstClass& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMConstClass::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
