#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

class CIMQualifierRep
{
public:
    CIMQualifierRep(
        const CIMName& name_, const CIMValue& value_, const CIMFlavor& flavor_, Boolean propagated_)
        : name(name_), value(value_), flavor(flavor_), propagated(propagated_)
    {
        if (name.isNull())
            throw UninitializedObjectException();
    }

    // A copy belongs to no container yet.
    CIMQualifierRep(const CIMQualifierRep& x)
        : name(x.name), value(x.value), flavor(x.flavor), propagated(x.propagated)
    {
    }

    bool identical(const CIMQualifierRep& x) const
    {
        return this == &x || (name.equal(x.name) && value == x.value && flavor.equal(x.flavor) &&
                              propagated == x.propagated);
    }

    CIMName name;
    CIMValue value;
    CIMFlavor flavor;
    Boolean propagated;
    int ownerCount = 0;
};

// CIMQualifier

CIMQualifier::CIMQualifier() = default;
CIMQualifier::CIMQualifier(const CIMQualifier& x) = default;
CIMQualifier::~CIMQualifier() = default;
CIMQualifier& CIMQualifier::operator=(const CIMQualifier& x) = default;

CIMQualifier::CIMQualifier(
    const CIMName& name, const CIMValue& value, const CIMFlavor& flavor, Boolean propagated)
    : _rep(std::make_shared<CIMQualifierRep>(name, value, flavor, propagated))
{
}

CIMQualifier::CIMQualifier(std::shared_ptr<CIMQualifierRep> rep) : _rep(std::move(rep))
{
}

void CIMQualifier::_changeOwnerCount(int delta) const
{
    _rep->ownerCount += delta;
}

const CIMName& CIMQualifier::getName() const
{
    return checkRep(_rep).name;
}

void CIMQualifier::setName(const CIMName& name)
{
    CIMQualifierRep& rep = checkRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (rep.ownerCount != 0 && !rep.name.equal(name))
    {
        throw Exception("Attempted to change the name of a qualifier already in a "
                        "container.");
    }
    rep.name = name;
}

CIMType CIMQualifier::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMQualifier::isArray() const
{
    return checkRep(_rep).value.isArray();
}

const CIMValue& CIMQualifier::getValue() const
{
    return checkRep(_rep).value;
}

void CIMQualifier::setValue(const CIMValue& value)
{
    checkRep(_rep).value = value;
}

void CIMQualifier::setFlavor(const CIMFlavor& flavor)
{
    checkRep(_rep).flavor = flavor;
}

void CIMQualifier::unsetFlavor(const CIMFlavor& flavor)
{
    checkRep(_rep).flavor.removeFlavor(flavor);
}

const CIMFlavor& CIMQualifier::getFlavor() const
{
    return checkRep(_rep).flavor;
}

Uint32 CIMQualifier::getPropagated() const
{
    return checkRep(_rep).propagated ? 1 : 0;
}

void CIMQualifier::setPropagated(Boolean propagated)
{
    checkRep(_rep).propagated = propagated;
}

Boolean CIMQualifier::isUninitialized() const
{
    return !_rep;
}

Boolean CIMQualifier::identical(const CIMConstQualifier& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMQualifier CIMQualifier::clone() const
{
    return CIMQualifier(std::make_shared<CIMQualifierRep>(checkRep(_rep)));
}

// CIMConstQualifier

CIMConstQualifier::CIMConstQualifier() = default;
CIMConstQualifier::CIMConstQualifier(const CIMConstQualifier& x) = default;
CIMConstQualifier::~CIMConstQualifier() = default;
CIMConstQualifier& CIMConstQualifier::operator=(const CIMConstQualifier& x) = default;

CIMConstQualifier::CIMConstQualifier(const CIMQualifier& x) : _rep(x._rep)
{
}

CIMConstQualifier::CIMConstQualifier(
    const CIMName& name, const CIMValue& value, const CIMFlavor& flavor, Boolean propagated)
    : _rep(std::make_shared<CIMQualifierRep>(name, value, flavor, propagated))
{
}

CIMConstQualifier& CIMConstQualifier::operator=(const CIMQualifier& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstQualifier::getName() const
{
    return checkRep(_rep).name;
}

CIMType CIMConstQualifier::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMConstQualifier::isArray() const
{
    return checkRep(_rep).value.isArray();
}

const CIMValue& CIMConstQualifier::getValue() const
{
    return checkRep(_rep).value;
}

const CIMFlavor& CIMConstQualifier::getFlavor() const
{
    return checkRep(_rep).flavor;
}

Uint32 CIMConstQualifier::getPropagated() const
{
    return checkRep(_rep).propagated ? 1 : 0;
}

Boolean CIMConstQualifier::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstQualifier::identical(const CIMConstQualifier& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMQualifier CIMConstQualifier::clone() const
{
    return CIMQualifier(std::make_shared<CIMQualifierRep>(checkRep(_rep)));
}

PEGASUS_NAMESPACE_END
