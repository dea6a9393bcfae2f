// A CIM class definition: name, superclass, qualifiers, properties (with
// their defaults) and methods. CIMClass is a shared handle with clone();
// CIMConstClass is the read-only twin.
#ifndef Pegasus_CIMClass_h
#define Pegasus_CIMClass_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstClass;
class CIMClassRep;

class PEGASUS_COMMON_LINKAGE CIMClass
{
public:
    // Uninitialized: every member but isUninitialized() and assignment
    // throws UninitializedObjectException.
    CIMClass();
    CIMClass(const CIMClass& x);
    // Shares x's state; an instance or uninitialized object throws
    // DynamicCastFailedException.
    explicit CIMClass(const CIMObject& x);
    // A null class name throws UninitializedObjectException.
    CIMClass(const CIMName& className, const CIMName& superClassName = CIMName());
    CIMClass& operator=(const CIMClass& x);
    ~CIMClass();

    // The boolean Association / Abstract qualifier is present and true.
    Boolean isAssociation() const;
    Boolean isAbstract() const;
    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);
    const CIMName& getSuperClassName() const;
    void setSuperClassName(const CIMName& superClassName);

    CIMClass& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    // Duplicates (ignoring case) throw AlreadyExistsException; a reference
    // property without a reference class throws TypeMismatchException.
    CIMClass& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMClass& addMethod(const CIMMethod& x);
    Uint32 findMethod(const CIMName& name) const;
    CIMMethod getMethod(Uint32 index);
    CIMConstMethod getMethod(Uint32 index) const;
    void removeMethod(Uint32 index);
    Uint32 getMethodCount() const;

    // Names of the properties qualified Key (true), in class order.
    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;

    CIMClass clone() const;
    Boolean identical(const CIMConstClass& x) const;
    Boolean isUninitialized() const;

    // A new instance of this class with a class-only path. Qualifiers are
    // cloned onto the instance and its properties only if includeQualifiers.
    // Properties come in class order: all for a null propertyList, else
    // those it names (ignoring case; unknown names are ignored, an empty
    // list gives none). Each keeps its default value (a typed null when
    // there is none), array size, reference class and propagated flag;
    // class origins are kept only if includeClassOrigin.
    CIMInstance buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) const;

private:
    explicit CIMClass(std::shared_ptr<CIMClassRep> rep);

    std::shared_ptr<CIMClassRep> _rep;

    friend class CIMConstClass;
    friend class CIMObject;
    friend class CIMConstObject;
};

class PEGASUS_COMMON_LINKAGE CIMConstClass
{
public:
    CIMConstClass();
    CIMConstClass(const CIMConstClass& x);
    CIMConstClass(const CIMClass& x);
    explicit CIMConstClass(const CIMObject& x);
    explicit CIMConstClass(const CIMConstObject& x);
    CIMConstClass(const CIMName& className, const CIMName& superClassName = CIMName());
    CIMConstClass& operator=(const CIMConstClass& x);
    CIMConstClass& operator=(const CIMClass& x);
    ~CIMConstClass();

    Boolean isAssociation() const;
    Boolean isAbstract() const;
    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    const CIMName& getSuperClassName() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    Uint32 findMethod(const CIMName& name) const;
    CIMConstMethod getMethod(Uint32 index) const;
    Uint32 getMethodCount() const;

    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;

    CIMClass clone() const;
    Boolean identical(const CIMConstClass& x) const;
    Boolean isUninitialized() const;

private:
    std::shared_ptr<CIMClassRep> _rep;

    friend class CIMClass;
    friend class CIMObject;
    friend class CIMConstObject;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMClass_h */
