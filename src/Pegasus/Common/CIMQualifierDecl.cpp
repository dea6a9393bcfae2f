#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CheckRep.h>

PEGASUS_NAMESPACE_BEGIN

class CIMQualifierDeclRep
{
public:
    CIMQualifierDeclRep(
        const CIMName& name_, const CIMValue& value_, const CIMScope& scope_,
        const CIMFlavor& flavor_, Uint32 arraySize_)
        : name(name_), value(value_), scope(scope_), flavor(flavor_), arraySize(arraySize_)
    {
        if (name.isNull())
            throw UninitializedObjectException();
        // A declaration always states both rules explicitly.
        if (flavor.hasFlavor(CIMFlavor::RESTRICTED))
            flavor.removeFlavor(CIMFlavor::TOSUBCLASS);
        else
            flavor.addFlavor(CIMFlavor::TOSUBCLASS);
        if (flavor.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
            flavor.removeFlavor(CIMFlavor::ENABLEOVERRIDE);
        else
            flavor.addFlavor(CIMFlavor::ENABLEOVERRIDE);
    }

    CIMQualifierDeclRep(const CIMQualifierDeclRep& x) = default;

    bool identical(const CIMQualifierDeclRep& x) const
    {
        return this == &x || (name.equal(x.name) && value == x.value && scope.equal(x.scope) &&
                              flavor.equal(x.flavor) && arraySize == x.arraySize);
    }

    CIMName name;
    CIMValue value;
    CIMScope scope;
    CIMFlavor flavor;
    Uint32 arraySize;
};

// CIMQualifierDecl

CIMQualifierDecl::CIMQualifierDecl() = default;
CIMQualifierDecl::CIMQualifierDecl(const CIMQualifierDecl& x) = default;
CIMQualifierDecl::~CIMQualifierDecl() = default;
CIMQualifierDecl& CIMQualifierDecl::operator=(const CIMQualifierDecl& x) = default;

CIMQualifierDecl::CIMQualifierDecl(
    const CIMName& name, const CIMValue& value, const CIMScope& scope, const CIMFlavor& flavor,
    Uint32 arraySize)
    : _rep(std::make_shared<CIMQualifierDeclRep>(name, value, scope, flavor, arraySize))
{
}

CIMQualifierDecl::CIMQualifierDecl(std::shared_ptr<CIMQualifierDeclRep> rep) : _rep(std::move(rep))
{
}

const CIMName& CIMQualifierDecl::getName() const
{
    return checkRep(_rep).name;
}

void CIMQualifierDecl::setName(const CIMName& name)
{
    CIMQualifierDeclRep& rep = checkRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    rep.name = name;
}

CIMType CIMQualifierDecl::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMQualifierDecl::isArray() const
{
    return checkRep(_rep).value.isArray();
}

const CIMValue& CIMQualifierDecl::getValue() const
{
    return checkRep(_rep).value;
}

void CIMQualifierDecl::setValue(const CIMValue& value)
{
    checkRep(_rep).value = value;
}

const CIMScope& CIMQualifierDecl::getScope() const
{
    return checkRep(_rep).scope;
}

const CIMFlavor& CIMQualifierDecl::getFlavor() const
{
    return checkRep(_rep).flavor;
}

Uint32 CIMQualifierDecl::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

Boolean CIMQualifierDecl::isUninitialized() const
{
    return !_rep;
}

Boolean CIMQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMQualifierDecl CIMQualifierDecl::clone() const
{
    return CIMQualifierDecl(std::make_shared<CIMQualifierDeclRep>(checkRep(_rep)));
}

// CIMConstQualifierDecl

CIMConstQualifierDecl::CIMConstQualifierDecl() = default;
CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMConstQualifierDecl& x) = default;
CIMConstQualifierDecl::~CIMConstQualifierDecl() = default;
CIMConstQualifierDecl& CIMConstQualifierDecl::operator=(const CIMConstQualifierDecl& x) = default;

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMQualifierDecl& x) : _rep(x._rep)
{
}

CIMConstQualifierDecl::CIMConstQualifierDecl(
    const CIMName& name, const CIMValue& value, const CIMScope& scope, const CIMFlavor& flavor,
    Uint32 arraySize)
    : _rep(std::make_shared<CIMQualifierDeclRep>(name, value, scope, flavor, arraySize))
{
}

CIMConstQualifierDecl& CIMConstQualifierDecl::operator=(const CIMQualifierDecl& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstQualifierDecl::getName() const
{
    return checkRep(_rep).name;
}

CIMType CIMConstQualifierDecl::getType() const
{
    return checkRep(_rep).value.getType();
}

Boolean CIMConstQualifierDecl::isArray() const
{
    return checkRep(_rep).value.isArray();
}

const CIMValue& CIMConstQualifierDecl::getValue() const
{
    return checkRep(_rep).value;
}

const CIMScope& CIMConstQualifierDecl::getScope() const
{
    return checkRep(_rep).scope;
}

const CIMFlavor& CIMConstQualifierDecl::getFlavor() const
{
    return checkRep(_rep).flavor;
}

Uint32 CIMConstQualifierDecl::getArraySize() const
{
    return checkRep(_rep).arraySize;
}

Boolean CIMConstQualifierDecl::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return checkRep(_rep).identical(checkRep(x._rep));
}

CIMQualifierDecl CIMConstQualifierDecl::clone() const
{
    return CIMQualifierDecl(std::make_shared<CIMQualifierDeclRep>(checkRep(_rep)));
}

PEGASUS_NAMESPACE_END
