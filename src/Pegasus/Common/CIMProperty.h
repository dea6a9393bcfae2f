// A property of a class or instance: name, typed value and the class
// details (array size, reference class, class origin, propagated flag,
// qualifiers). CIMProperty is a shared handle: a copy, or the handle an
// instance's getProperty() returns, changes the same property; clone()
// copies. CIMConstProperty is the read-only twin.
#ifndef Pegasus_Property_h
#define Pegasus_Property_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMQualifier.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstProperty;
class CIMPropertyRep;

class PEGASUS_COMMON_LINKAGE CIMProperty
{
public:
    CIMProperty();
    CIMProperty(const CIMProperty& x);
    // Throws UninitializedObjectException for a null name, and
    // TypeMismatchException when arraySize is non-zero but the value is not
    // an array of that size, when the value is an array of references, or
    // when referenceClassName is given for a non-reference value.
    CIMProperty(
        const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName(), const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMProperty();
    CIMProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    // Renaming a property that sits in a class or instance throws Exception.
    void setName(const CIMName& name);
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    // The new value must have the current type and array-ness, even when the
    // current value is null; a fixed array size must match. Otherwise
    // TypeMismatchException.
    void setValue(const CIMValue& value);
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    void setClassOrigin(const CIMName& classOrigin);
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    // A qualifier name already present (ignoring case) throws
    // AlreadyExistsException.
    CIMProperty& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const;

private:
    explicit CIMProperty(std::shared_ptr<CIMPropertyRep> rep);
    void _changeOwnerCount(int delta) const;

    std::shared_ptr<CIMPropertyRep> _rep;

    friend class CIMConstProperty;
    friend class CIMObjectRep;
    friend class CIMClassRep;
    friend class ObjectReader;
    friend class ResultFilter;
    template <class H>
    friend class NamedElementList;
};

class PEGASUS_COMMON_LINKAGE CIMConstProperty
{
public:
    CIMConstProperty();
    CIMConstProperty(const CIMConstProperty& x);
    CIMConstProperty(const CIMProperty& x);
    CIMConstProperty(
        const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName(), const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMConstProperty();
    CIMConstProperty& operator=(const CIMConstProperty& x);
    CIMConstProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    Boolean getPropagated() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const;

private:
    std::shared_ptr<CIMPropertyRep> _rep;

    friend class CIMProperty;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Property_h */
