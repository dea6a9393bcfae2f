// A qualifier attached to a class, instance, property, method or parameter.
// CIMQualifier is a shared handle (copies see each other's changes; clone()
// copies); CIMConstQualifier is its read-only twin.
#ifndef Pegasus_Qualifier_h
#define Pegasus_Qualifier_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstQualifier;
class CIMQualifierRep;
template <class H>
class NamedElementList;

class PEGASUS_COMMON_LINKAGE CIMQualifier
{
public:
    // Uninitialized: every member but isUninitialized() and assignment throws
    // UninitializedObjectException.
    CIMQualifier();
    CIMQualifier(const CIMQualifier& x);
    // A null name throws UninitializedObjectException.
    CIMQualifier(
        const CIMName& name, const CIMValue& value,
        const CIMFlavor& flavor = CIMFlavor(CIMFlavor::NONE), Boolean propagated = false);
    ~CIMQualifier();
    CIMQualifier& operator=(const CIMQualifier& x);

    const CIMName& getName() const;
    // Renaming a qualifier that sits in a container throws Exception.
    void setName(const CIMName& name);
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    // Any value is accepted; the qualifier takes its type.
    void setValue(const CIMValue& value);
    // Replaces the flavor; unsetFlavor() removes bits.
    void setFlavor(const CIMFlavor& flavor);
    void unsetFlavor(const CIMFlavor& flavor);
    const CIMFlavor& getFlavor() const;
    Uint32 getPropagated() const;
    void setPropagated(Boolean propagated);

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    explicit CIMQualifier(std::shared_ptr<CIMQualifierRep> rep);
    void _changeOwnerCount(int delta) const;

    std::shared_ptr<CIMQualifierRep> _rep;

    friend class CIMConstQualifier;
    template <class H>
    friend class NamedElementList;
};

class PEGASUS_COMMON_LINKAGE CIMConstQualifier
{
public:
    CIMConstQualifier();
    CIMConstQualifier(const CIMConstQualifier& x);
    CIMConstQualifier(const CIMQualifier& x);
    CIMConstQualifier(
        const CIMName& name, const CIMValue& value,
        const CIMFlavor& flavor = CIMFlavor(CIMFlavor::NONE), Boolean propagated = false);
    ~CIMConstQualifier();
    CIMConstQualifier& operator=(const CIMConstQualifier& x);
    CIMConstQualifier& operator=(const CIMQualifier& x);

    const CIMName& getName() const;
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    const CIMFlavor& getFlavor() const;
    Uint32 getPropagated() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    std::shared_ptr<CIMQualifierRep> _rep;

    friend class CIMQualifier;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Qualifier_h */
