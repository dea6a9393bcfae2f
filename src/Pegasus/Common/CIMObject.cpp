#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectRep.h>
#include <Pegasus/Common/CIMPropertyRep.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

// CIMObjectRep

CIMObjectRep::CIMObjectRep(const CIMObjectPath& reference_) : reference(reference_)
{
    if (reference.getClassName().isNull())
        throw UninitializedObjectException();
}

CIMObjectRep::CIMObjectRep(const CIMObjectRep& x) : reference(x.reference)
{
    x.qualifiers.cloneTo(qualifiers);
    // The copies of the properties are made in one block, as buildInstance makes an
    // instance's: one allocation instead of one each (classes are cloned on every request
    // that asks for one).
    const Uint32 n = x.properties.size();
    if (n == 0)
        return;
    propertyBlock = PropertyBlock::make(n);
    properties.reserve(n);
    for (Uint32 i = 0; i < n; i++)
    {
        properties.addCopyOf(
            x.properties, i, CIMProperty(propertyBlock->emplace(*x.properties.at(i)._rep)));
    }
    properties.adoptIndexOf(x.properties);
}

CIMObjectRep::~CIMObjectRep()
{
    // When nothing else holds the block, the properties made in it go with it: their owner
    // counts need not be taken down one by one.
    if (propertyBlock && propertyBlock.use_count() == 1)
        properties.dropUncounted();
}

bool CIMObjectRep::identical(const CIMObjectRep& x) const
{
    return this == &x || (reference.identical(x.reference) && qualifiers.identical(x.qualifiers) &&
                          properties.identical(x.properties));
}

CIMProperty CIMObjectRep::propertyHandle(Uint32 index) const
{
    const CIMProperty& inList = properties.at(index);
    if (inList._rep.use_count() != 0)
        return inList;
    return CIMProperty(std::shared_ptr<CIMPropertyRep>(propertyBlock, inList._rep.get()));
}

void CIMObjectRep::addProperty(const CIMProperty& x)
{
    properties.add(x);
}

void CIMObjectRep::setPath(const CIMObjectPath& path)
{
    if (path.getClassName().isNull())
        throw UninitializedObjectException();
    if (!getClassName().equal(path.getClassName()))
        throw TypeMismatchException();
    reference = path;
}

void CIMObjectRep::instanceFilter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    if (!includeQualifiers)
        qualifiers.clear();
    const bool all = propertyList.isNull();
    for (Uint32 i = 0; i < properties.size();)
    {
        CIMPropertyRep& p = *properties.at(i)._rep;
        if (!all && !propertyList.useThisProperty(p.name))
        {
            properties.remove(i);
            continue;
        }
        if (!includeClassOrigin && !p.classOrigin.isNull())
            p.classOrigin.clear();
        if (!includeQualifiers)
        {
            while (p.qualifiers.size() != 0)
                p.qualifiers.remove(0);
        }
        i++;
    }
}

// CIMObject

CIMObject::CIMObject() = default;
CIMObject::CIMObject(const CIMObject& x) = default;
CIMObject& CIMObject::operator=(const CIMObject& x) = default;
CIMObject::~CIMObject() = default;

CIMObject::CIMObject(const CIMClass& x) : _rep(x._rep)
{
}

CIMObject::CIMObject(const CIMInstance& x) : _rep(x._rep)
{
}

CIMObject::CIMObject(std::shared_ptr<CIMObjectRep> rep) : _rep(std::move(rep))
{
}

const CIMName& CIMObject::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMObject::getPath() const
{
    return checkRep(_rep).reference;
}

void CIMObject::setPath(const CIMObjectPath& path)
{
    checkRep(_rep).setPath(path);
}

CIMObject& CIMObject::addQualifier(const CIMQualifier& qualifier)
{
    checkRep(_rep).qualifiers.add(qualifier);
    return *this;
}

Uint32 CIMObject::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMObject::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

CIMConstQualifier CIMObject::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMObject::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

Uint32 CIMObject::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

CIMObject& CIMObject::addProperty(const CIMProperty& x)
{
    checkRep(_rep).addProperty(x);
    return *this;
}

Uint32 CIMObject::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMProperty CIMObject::getProperty(Uint32 index)
{
    return checkRep(_rep).propertyHandle(index);
}

CIMConstProperty CIMObject::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

void CIMObject::removeProperty(Uint32 index)
{
    checkRep(_rep).properties.remove(index);
}

Uint32 CIMObject::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

CIMObject CIMObject::clone() const
{
    return CIMObject(checkRep(_rep).cloneObject());
}

Boolean CIMObject::identical(const CIMConstObject& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMObject::isUninitialized() const
{
    return !_rep;
}

Boolean CIMObject::isClass() const
{
    return dynamic_cast<const CIMClassRep*>(_rep.get()) != nullptr;
}

Boolean CIMObject::isInstance() const
{
    return dynamic_cast<const CIMInstanceRep*>(_rep.get()) != nullptr;
}

void CIMObject::instanceFilter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    checkRep(_rep).instanceFilter(includeQualifiers, includeClassOrigin, propertyList);
}

// CIMConstObject

CIMConstObject::CIMConstObject() = default;
CIMConstObject::CIMConstObject(const CIMConstObject& x) = default;
CIMConstObject& CIMConstObject::operator=(const CIMConstObject& x) = default;
CIMConstObject::~CIMConstObject() = default;

CIMConstObject::CIMConstObject(const CIMObject& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMClass& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMInstance& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMConstClass& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMConstInstance& x) : _rep(x._rep)
{
}

const CIMName& CIMConstObject::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMConstObject::getPath() const
{
    return checkRep(_rep).reference;
}

Uint32 CIMConstObject::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstObject::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstObject::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Uint32 CIMConstObject::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstObject::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

Uint32 CIMConstObject::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

CIMObject CIMConstObject::clone() const
{
    return CIMObject(checkRep(_rep).cloneObject());
}

Boolean CIMConstObject::identical(const CIMConstObject& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMConstObject::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstObject::isClass() const
{
    return dynamic_cast<const CIMClassRep*>(_rep.get()) != nullptr;
}

Boolean CIMConstObject::isInstance() const
{
    return dynamic_cast<const CIMInstanceRep*>(_rep.get()) != nullptr;
}

PEGASUS_NAMESPACE_END
