// Internal: the representation shared by CIMObject, CIMInstance and
// CIMClass handles (and their const twins). One rep kind per object: an
// instance rep or a class rep; CIMObject handles hold either.
#ifndef Pegasus_CIMObjectRep_h
#define Pegasus_CIMObjectRep_h

#include <memory>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/NamedElementList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstClass;
class PropertyBlock;

class CIMObjectRep
{
public:
    // The path's class name is the object's class; null throws
    // UninitializedObjectException.
    explicit CIMObjectRep(const CIMObjectPath& reference);
    // Deep copy: qualifiers and properties cloned.
    CIMObjectRep(const CIMObjectRep& x);
    CIMObjectRep& operator=(const CIMObjectRep&) = delete;
    virtual ~CIMObjectRep();

    virtual std::shared_ptr<CIMObjectRep> cloneObject() const = 0;
    virtual bool identical(const CIMObjectRep& x) const;
    virtual void addProperty(const CIMProperty& x);

    const CIMName& getClassName() const { return reference.getClassName(); }
    // A handle to hand out on the property at index (IndexOutOfBoundsException past the
    // end): an uncounted one of the list is made to share the ownership of the block.
    CIMProperty propertyHandle(Uint32 index) const;
    // Class must be non-null (UninitializedObjectException) and equal to the
    // object's class ignoring case (TypeMismatchException).
    void setPath(const CIMObjectPath& path);
    void instanceFilter(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    CIMObjectPath reference;
    // Where buildInstance made the properties, when it did: held for the uncounted handles
    // of `properties` (declared first, so that it goes after them).
    std::shared_ptr<PropertyBlock> propertyBlock;
    NamedElementList<CIMQualifier> qualifiers{"qualifier"};
    NamedElementList<CIMProperty> properties{"property"};
};

class CIMInstanceRep final : public CIMObjectRep
{
public:
    explicit CIMInstanceRep(const CIMName& className);
    // An instance of the class whose (class-only) path is given, sharing it.
    explicit CIMInstanceRep(const CIMObjectPath& classPath);
    CIMInstanceRep(const CIMInstanceRep& x) = default;

    std::shared_ptr<CIMObjectRep> cloneObject() const override;
    std::shared_ptr<CIMInstanceRep> clone() const;
    bool identical(const CIMObjectRep& x) const override;
    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;
};

class CIMClassRep final : public CIMObjectRep
{
public:
    CIMClassRep(const CIMName& className, const CIMName& superClassName);
    CIMClassRep(const CIMClassRep& x);

    std::shared_ptr<CIMObjectRep> cloneObject() const override;
    std::shared_ptr<CIMClassRep> clone() const;
    bool identical(const CIMObjectRep& x) const override;
    // Also rejects a reference property without a reference class.
    void addProperty(const CIMProperty& x) override;

    // True when the named qualifier is present with the boolean value true.
    bool hasTrueQualifier(const CIMName& name) const;
    void getKeyNames(Array<CIMName>& keyNames) const;
    bool hasKeys() const;
    std::shared_ptr<CIMInstanceRep> buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) const;

    CIMName superClassName;
    NamedElementList<CIMMethod> methods{"method"};
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMObjectRep_h */
