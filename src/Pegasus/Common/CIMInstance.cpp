#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObjectRep.h>
#include <Pegasus/Common/CheckRep.h>
#include <Pegasus/Common/InternalException.h>

PEGASUS_NAMESPACE_BEGIN

// CIMInstanceRep

CIMInstanceRep::CIMInstanceRep(const CIMName& className)
    : CIMObjectRep(CIMObjectPath(String(), CIMNamespaceName(), className))
{
}

CIMInstanceRep::CIMInstanceRep(const CIMObjectPath& classPath) : CIMObjectRep(classPath)
{
}

std::shared_ptr<CIMObjectRep> CIMInstanceRep::cloneObject() const
{
    return clone();
}

std::shared_ptr<CIMInstanceRep> CIMInstanceRep::clone() const
{
    return std::make_shared<CIMInstanceRep>(*this);
}

bool CIMInstanceRep::identical(const CIMObjectRep& x) const
{
    return dynamic_cast<const CIMInstanceRep*>(&x) != nullptr && CIMObjectRep::identical(x);
}

CIMObjectPath CIMInstanceRep::buildPath(const CIMConstClass& cimClass) const
{
    Array<CIMName> keyNames;
    cimClass.getKeyNames(keyNames);
    Array<CIMKeyBinding> keys;
    for (Uint32 i = 0; i < keyNames.size(); i++)
    {
        Uint32 pos = properties.find(keyNames[i]);
        if (pos == PEG_NOT_FOUND)
            throw NoSuchProperty(keyNames[i].getString());
        keys.append(CIMKeyBinding(keyNames[i], properties.at(pos).getValue()));
    }
    return CIMObjectPath(String(), CIMNamespaceName(), getClassName(), keys);
}

// CIMInstance

CIMInstance::CIMInstance() = default;
CIMInstance::CIMInstance(const CIMInstance& x) = default;
CIMInstance& CIMInstance::operator=(const CIMInstance& x) = default;
CIMInstance::~CIMInstance() = default;

CIMInstance::CIMInstance(const CIMObject& x)
    : _rep(std::dynamic_pointer_cast<CIMInstanceRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMInstance::CIMInstance(const CIMName& className)
    : _rep(std::make_shared<CIMInstanceRep>(className))
{
}

CIMInstance::CIMInstance(std::shared_ptr<CIMInstanceRep> rep) : _rep(std::move(rep))
{
}

const CIMName& CIMInstance::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMInstance::getPath() const
{
    return checkRep(_rep).reference;
}

void CIMInstance::setPath(const CIMObjectPath& path)
{
    checkRep(_rep).setPath(path);
}

CIMInstance& CIMInstance::addQualifier(const CIMQualifier& qualifier)
{
    checkRep(_rep).qualifiers.add(qualifier);
    return *this;
}

Uint32 CIMInstance::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMInstance::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

CIMConstQualifier CIMInstance::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMInstance::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

Uint32 CIMInstance::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

CIMInstance& CIMInstance::addProperty(const CIMProperty& x)
{
    checkRep(_rep).addProperty(x);
    return *this;
}

Uint32 CIMInstance::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMProperty CIMInstance::getProperty(Uint32 index)
{
    return checkRep(_rep).propertyHandle(index);
}

CIMConstProperty CIMInstance::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

void CIMInstance::removeProperty(Uint32 index)
{
    checkRep(_rep).properties.remove(index);
}

Uint32 CIMInstance::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

CIMObjectPath CIMInstance::buildPath(const CIMConstClass& cimClass) const
{
    return checkRep(_rep).buildPath(cimClass);
}

CIMInstance CIMInstance::clone() const
{
    return CIMInstance(checkRep(_rep).clone());
}

Boolean CIMInstance::identical(const CIMConstInstance& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMInstance::isUninitialized() const
{
    return !_rep;
}

void CIMInstance::instanceFilter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    checkRep(_rep).instanceFilter(includeQualifiers, includeClassOrigin, propertyList);
}

// CIMConstInstance

CIMConstInstance::CIMConstInstance() = default;
CIMConstInstance::CIMConstInstance(const CIMConstInstance& x) = default;
CIMConstInstance& CIMConstInstance::operator=(const CIMConstInstance& x) = default;
CIMConstInstance::~CIMConstInstance() = default;

CIMConstInstance::CIMConstInstance(const CIMInstance& x) : _rep(x._rep)
{
}

CIMConstInstance::CIMConstInstance(const CIMObject& x)
    : _rep(std::dynamic_pointer_cast<CIMInstanceRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMConstInstance::CIMConstInstance(const CIMConstObject& x)
    : _rep(std::dynamic_pointer_cast<CIMInstanceRep>(x._rep))
{
    if (!_rep)
        throw DynamicCastFailedException();
}

CIMConstInstance::CIMConstInstance(const CIMName& className)
    : _rep(std::make_shared<CIMInstanceRep>(className))
{
}

CIMConstInstance& CIMConstInstance::operator=(const CIMInstance& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstInstance::getClassName() const
{
    return checkRep(_rep).getClassName();
}

const CIMObjectPath& CIMConstInstance::getPath() const
{
    return checkRep(_rep).reference;
}

Uint32 CIMConstInstance::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstInstance::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstInstance::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Uint32 CIMConstInstance::findProperty(const CIMName& name) const
{
    return checkRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstInstance::getProperty(Uint32 index) const
{
    return checkRep(_rep).propertyHandle(index);
}

Uint32 CIMConstInstance::getPropertyCount() const
{
    return checkRep(_rep).properties.size();
}

CIMObjectPath CIMConstInstance::buildPath(const CIMConstClass& cimClass) const
{
    return checkRep(_rep).buildPath(cimClass);
}

CIMInstance CIMConstInstance::clone() const
{
    return CIMInstance(checkRep(_rep).clone());
}

Boolean CIMConstInstance::identical(const CIMConstInstance& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

Boolean CIMConstInstance::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
