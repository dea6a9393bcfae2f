#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CheckRep.h>
#include <Pegasus/Common/NamedElementList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMParameterRep
{
public:
    CIMParameterRep(
        const CIMName& name_, CIMType type_, Boolean isArray_, Uint32 arraySize_,
        const CIMName& referenceClassName_)
        : name(name_),
          type(type_),
          isArray(isArray_),
          arraySize(arraySize_),
          referenceClassName(referenceClassName_)
    {
        if (name.isNull())
            throw UninitializedObjectException();
        if (arraySize != 0 && !isArray)
            throw TypeMismatchException();
        // A reference parameter names the class it refers to; nothing else may.
        if (referenceClassName.isNull() == (type == CIMTYPE_REFERENCE))
            throw TypeMismatchException();
    }

    CIMParameterRep(const CIMParameterRep& x)
        : name(x.name),
          type(x.type),
          isArray(x.isArray),
          arraySize(x.arraySize),
          referenceClassName(x.referenceClassName)
    {
        x.qualifiers.cloneTo(qualifiers);
    }

    bool identical(const CIMParameterRep& x) const
    {
        return this == &x ||
               (name.equal(x.name) && type == x.type && isArray == x.isArray &&
                arraySize == x.arraySize && referenceClassName.equal(x.referenceClassName) &&
                qualifiers.identical(x.qualifiers));
    }

    CIMName name;
    CIMType type;
    Boolean isArray;
    Uint32 arraySize;
    CIMName referenceClassName;
    NamedElementList<CIMQualifier> qualifiers{"qualifier"};
    int ownerCount = 0;
};

// CIMParameter

CIMParameter::CIMParameter() = default;
CIMParameter::CIMParameter(const CIMParameter& x) = default;
CIMParameter::~CIMParameter() = default;
CIMParameter& CIMParameter::operator=(const CIMParameter& x) = default;

CIMParameter::CIMParameter(
    const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize,
    const CIMName& referenceClassName)
    : _rep(std::make_shared<CIMParameterRep>(name, type, isArray, arraySize, referenceClassName))
{
}

CIMParameter::CIMParameter(std::shared_ptr<CIMParameterRep> rep) : _rep(std::move(rep))
{
}

void CIMParameter::_changeOwnerCount(int delta) const
{
    _rep->ownerCount += delta;
}

const CIMName& CIMParameter::getName() const
{
    return checkRep(_rep).name;
}

void CIMParameter::setName(const CIMName& name)
{
    CIMParameterRep& rep = checkRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (rep.ownerCount != 0 && !rep.name.equal(name))
    {
        throw Exception("Attempted to change the name of a parameter already in a "
                        "container.");
    }
    rep.name = name;
}

Boolean CIMParameter::isArray() const
{
    return checkRep(_rep).isArray;
}

Uint32 CIMParameter::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

const CIMName& CIMParameter::getReferenceClassName() const
{
    return checkRep(_rep).referenceClassName;
}

CIMType CIMParameter::getType() const
{
    return checkRep(_rep).type;
}

CIMParameter& CIMParameter::addQualifier(const CIMQualifier& x)
{
    checkRep(_rep).qualifiers.add(x);
    return *this;
}

Uint32 CIMParameter::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMParameter::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMParameter::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

CIMConstQualifier CIMParameter::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMParameter::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Boolean CIMParameter::isUninitialized() const
{
    return !_rep;
}

Boolean CIMParameter::identical(const CIMConstParameter& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMParameter CIMParameter::clone() const
{
    return CIMParameter(std::make_shared<CIMParameterRep>(checkRep(_rep)));
}

// CIMConstParameter

CIMConstParameter::CIMConstParameter() = default;
CIMConstParameter::CIMConstParameter(const CIMConstParameter& x) = default;
CIMConstParameter::~CIMConstParameter() = default;
CIMConstParameter& CIMConstParameter::operator=(const CIMConstParameter& x) = default;

CIMConstParameter::CIMConstParameter(const CIMParameter& x) : _rep(x._rep)
{
}

CIMConstParameter::CIMConstParameter(
    const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize,
    const CIMName& referenceClassName)
    : _rep(std::make_shared<CIMParameterRep>(name, type, isArray, arraySize, referenceClassName))
{
}

CIMConstParameter& CIMConstParameter::operator=(const CIMParameter& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstParameter::getName() const
{
    return checkRep(_rep).name;
}

Boolean CIMConstParameter::isArray() const
{
    return checkRep(_rep).isArray;
}

Uint32 CIMConstParameter::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

const CIMName& CIMConstParameter::getReferenceClassName() const
{
    return checkRep(_rep).referenceClassName;
}

CIMType CIMConstParameter::getType() const
{
    return checkRep(_rep).type;
}

Uint32 CIMConstParameter::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstParameter::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstParameter::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Boolean CIMConstParameter::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstParameter::identical(const CIMConstParameter& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMParameter CIMConstParameter::clone() const
{
    return CIMParameter(std::make_shared<CIMParameterRep>(checkRep(_rep)));
}

PEGASUS_NAMESPACE_END
