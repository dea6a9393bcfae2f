#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyRep.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

// CIMProperty

CIMProperty::CIMProperty() = default;
CIMProperty::CIMProperty(const CIMProperty& x) = default;
CIMProperty::~CIMProperty() = default;
CIMProperty& CIMProperty::operator=(const CIMProperty& x) = default;

CIMProperty::CIMProperty(
    const CIMName& name, const CIMValue& value, Uint32 arraySize, const CIMName& referenceClassName,
    const CIMName& classOrigin, Boolean propagated)
    : _rep(std::make_shared<CIMPropertyRep>(
          name, value, arraySize, referenceClassName, classOrigin, propagated))
{
}

CIMProperty::CIMProperty(std::shared_ptr<CIMPropertyRep> rep) : _rep(std::move(rep))
{
}

void CIMProperty::_changeOwnerCount(int delta) const
{
    _rep->ownerCount += delta;
}

const CIMName& CIMProperty::getName() const
{
    return checkRep(_rep).name;
}

void CIMProperty::setName(const CIMName& name)
{
    CIMPropertyRep& rep = checkRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (rep.ownerCount != 0 && !rep.name.equal(name))
    {
        throw Exception("Attempted to change the name of a property already in a "
                        "container.");
    }
    rep.name = name;
}

const CIMValue& CIMProperty::getValue() const
{
    return checkRep(_rep).value;
}

CIMType CIMProperty::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMProperty::isArray() const
{
    return checkRep(_rep).value.isArray();
}

void CIMProperty::setValue(const CIMValue& value)
{
    CIMPropertyRep& rep = checkRep(_rep);
    if (!value.typeCompatible(rep.value))
        throw TypeMismatchException();
    if (rep.arraySize != 0 && rep.arraySize != value.getArraySize())
        throw TypeMismatchException();
    CIMPropertyRep::checkNoReferenceArray(value);
    rep.value = value;
}

Uint32 CIMProperty::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

const CIMName& CIMProperty::getReferenceClassName() const
{
    return checkRep(_rep).referenceClassName;
}

const CIMName& CIMProperty::getClassOrigin() const
{
    return checkRep(_rep).classOrigin;
}

void CIMProperty::setClassOrigin(const CIMName& classOrigin)
{
    checkRep(_rep).classOrigin = classOrigin;
}

Boolean CIMProperty::getPropagated() const
{
    return checkRep(_rep).propagated;
}

void CIMProperty::setPropagated(Boolean propagated)
{
    checkRep(_rep).propagated = propagated;
}

CIMProperty& CIMProperty::addQualifier(const CIMQualifier& x)
{
    checkRep(_rep).qualifiers.add(x);
    return *this;
}

Uint32 CIMProperty::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMProperty::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

CIMConstQualifier CIMProperty::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMProperty::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

Uint32 CIMProperty::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Boolean CIMProperty::identical(const CIMConstProperty& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMProperty CIMProperty::clone() const
{
    return CIMProperty(std::make_shared<CIMPropertyRep>(checkRep(_rep)));
}

Boolean CIMProperty::isUninitialized() const
{
    return !_rep;
}

// CIMConstProperty

CIMConstProperty::CIMConstProperty() = default;
CIMConstProperty::CIMConstProperty(const CIMConstProperty& x) = default;
CIMConstProperty::~CIMConstProperty() = default;
CIMConstProperty& CIMConstProperty::operator=(const CIMConstProperty& x) = default;

CIMConstProperty::CIMConstProperty(const CIMProperty& x) : _rep(x._rep)
{
}

CIMConstProperty::CIMConstProperty(
    const CIMName& name, const CIMValue& value, Uint32 arraySize, const CIMName& referenceClassName,
    const CIMName& classOrigin, Boolean propagated)
    : _rep(std::make_shared<CIMPropertyRep>(
          name, value, arraySize, referenceClassName, classOrigin, propagated))
{
}

CIMConstProperty& CIMConstProperty::operator=(const CIMProperty& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstProperty::getName() const
{
    return checkRep(_rep).name;
}

const CIMValue& CIMConstProperty::getValue() const
{
    return checkRep(_rep).value;
}

CIMType CIMConstProperty::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMConstProperty::isArray() const
{
    return checkRep(_rep).value.isArray();
}

Uint32 CIMConstProperty::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

const CIMName& CIMConstProperty::getReferenceClassName() const
{
    return checkRep(_rep).referenceClassName;
}

const CIMName& CIMConstProperty::getClassOrigin() const
{
    return checkRep(_rep).classOrigin;
}

Boolean CIMConstProperty::getPropagated() const
{
    return checkRep(_rep).propagated;
}

Uint32 CIMConstProperty::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstProperty::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstProperty::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Boolean CIMConstProperty::identical(const CIMConstProperty& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMProperty CIMConstProperty::clone() const
{
    return CIMProperty(std::make_shared<CIMPropertyRep>(checkRep(_rep)));
}

Boolean CIMConstProperty::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
