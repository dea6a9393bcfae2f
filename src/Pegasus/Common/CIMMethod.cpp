#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CheckRep.h>
#include <Pegasus/Common/NamedElementList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMMethodRep
{
public:
    CIMMethodRep(
        const CIMName& name_, CIMType type_, const CIMName& classOrigin_, Boolean propagated_)
        : name(name_), type(type_), classOrigin(classOrigin_), propagated(propagated_)
    {
        if (name.isNull())
            throw UninitializedObjectException();
    }

    CIMMethodRep(const CIMMethodRep& x)
        : name(x.name), type(x.type), classOrigin(x.classOrigin), propagated(x.propagated)
    {
        x.qualifiers.cloneTo(qualifiers);
        x.parameters.cloneTo(parameters);
    }

    // Class origin and propagation are compared by the owning class.
    bool identical(const CIMMethodRep& x) const
    {
        return this == &x ||
               (name.equal(x.name) && type == x.type && qualifiers.identical(x.qualifiers) &&
                parameters.identical(x.parameters));
    }

    CIMName name;
    CIMType type;
    CIMName classOrigin;
    Boolean propagated;
    NamedElementList<CIMQualifier> qualifiers{"qualifier"};
    NamedElementList<CIMParameter> parameters{"parameter"};
    int ownerCount = 0;
};

// CIMMethod

CIMMethod::CIMMethod() = default;
CIMMethod::CIMMethod(const CIMMethod& x) = default;
CIMMethod::~CIMMethod() = default;
CIMMethod& CIMMethod::operator=(const CIMMethod& x) = default;

CIMMethod::CIMMethod(
    const CIMName& name, CIMType type, const CIMName& classOrigin, Boolean propagated)
    : _rep(std::make_shared<CIMMethodRep>(name, type, classOrigin, propagated))
{
}

CIMMethod::CIMMethod(std::shared_ptr<CIMMethodRep> rep) : _rep(std::move(rep))
{
}

void CIMMethod::_changeOwnerCount(int delta) const
{
    _rep->ownerCount += delta;
}

const CIMName& CIMMethod::getName() const
{
    return checkRep(_rep).name;
}

void CIMMethod::setName(const CIMName& name)
{
    CIMMethodRep& rep = checkRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (rep.ownerCount != 0 && !rep.name.equal(name))
    {
        throw Exception("Attempted to change the name of a method already in a "
                        "container.");
    }
    rep.name = name;
}

CIMType CIMMethod::getType() const
{
    return checkRep(_rep).type;
}

void CIMMethod::setType(CIMType type)
{
    checkRep(_rep).type = type;
}

const CIMName& CIMMethod::getClassOrigin() const
{
    return checkRep(_rep).classOrigin;
}

void CIMMethod::setClassOrigin(const CIMName& classOrigin)
{
    checkRep(_rep).classOrigin = classOrigin;
}

Boolean CIMMethod::getPropagated() const
{
    return checkRep(_rep).propagated;
}

void CIMMethod::setPropagated(Boolean propagated)
{
    checkRep(_rep).propagated = propagated;
}

CIMMethod& CIMMethod::addQualifier(const CIMQualifier& x)
{
    checkRep(_rep).qualifiers.add(x);
    return *this;
}

Uint32 CIMMethod::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMMethod::getQualifier(Uint32 index)
{
    return checkRep(_rep).qualifiers.at(index);
}

CIMConstQualifier CIMMethod::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

void CIMMethod::removeQualifier(Uint32 index)
{
    checkRep(_rep).qualifiers.remove(index);
}

Uint32 CIMMethod::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

CIMMethod& CIMMethod::addParameter(const CIMParameter& x)
{
    checkRep(_rep).parameters.add(x);
    return *this;
}

Uint32 CIMMethod::findParameter(const CIMName& name) const
{
    return checkRep(_rep).parameters.find(name);
}

CIMParameter CIMMethod::getParameter(Uint32 index)
{
    return checkRep(_rep).parameters.at(index);
}

CIMConstParameter CIMMethod::getParameter(Uint32 index) const
{
    return checkRep(_rep).parameters.at(index);
}

void CIMMethod::removeParameter(Uint32 index)
{
    checkRep(_rep).parameters.remove(index);
}

Uint32 CIMMethod::getParameterCount() const
{
    return checkRep(_rep).parameters.size();
}

Boolean CIMMethod::isUninitialized() const
{
    return !_rep;
}

Boolean CIMMethod::identical(const CIMConstMethod& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMMethod CIMMethod::clone() const
{
    return CIMMethod(std::make_shared<CIMMethodRep>(checkRep(_rep)));
}

// CIMConstMethod

CIMConstMethod::CIMConstMethod() = default;
CIMConstMethod::CIMConstMethod(const CIMConstMethod& x) = default;
CIMConstMethod::~CIMConstMethod() = default;
CIMConstMethod& CIMConstMethod::operator=(const CIMConstMethod& x) = default;

CIMConstMethod::CIMConstMethod(const CIMMethod& x) : _rep(x._rep)
{
}

CIMConstMethod::CIMConstMethod(
    const CIMName& name, CIMType type, const CIMName& classOrigin, Boolean propagated)
    : _rep(std::make_shared<CIMMethodRep>(name, type, classOrigin, propagated))
{
}

CIMConstMethod& CIMConstMethod::operator=(const CIMMethod& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstMethod::getName() const
{
    return checkRep(_rep).name;
}

CIMType CIMConstMethod::getType() const
{
    return checkRep(_rep).type;
}

const CIMName& CIMConstMethod::getClassOrigin() const
{
    return checkRep(_rep).classOrigin;
}

Boolean CIMConstMethod::getPropagated() const
{
    return checkRep(_rep).propagated;
}

Uint32 CIMConstMethod::findQualifier(const CIMName& name) const
{
    return checkRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstMethod::getQualifier(Uint32 index) const
{
    return checkRep(_rep).qualifiers.at(index);
}

Uint32 CIMConstMethod::getQualifierCount() const
{
    return checkRep(_rep).qualifiers.size();
}

Uint32 CIMConstMethod::findParameter(const CIMName& name) const
{
    return checkRep(_rep).parameters.find(name);
}

CIMConstParameter CIMConstMethod::getParameter(Uint32 index) const
{
    return checkRep(_rep).parameters.at(index);
}

Uint32 CIMConstMethod::getParameterCount() const
{
    return checkRep(_rep).parameters.size();
}

Boolean CIMConstMethod::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstMethod::identical(const CIMConstMethod& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMMethod CIMConstMethod::clone() const
{
    return CIMMethod(std::make_shared<CIMMethodRep>(checkRep(_rep)));
}

PEGASUS_NAMESPACE_END
