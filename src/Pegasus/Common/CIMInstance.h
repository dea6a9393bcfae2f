// An instance of a CIM class: class name, object path, qualifiers and
// properties. CIMInstance is a shared handle (copies see each other's
// changes; clone() is the deep copy); CIMConstInstance is the read-only twin.
#ifndef Pegasus_Instance_h
#define Pegasus_Instance_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstInstance;
class CIMInstanceRep;
class CIMConstClass;

class PEGASUS_COMMON_LINKAGE CIMInstance
{
public:
    // Uninitialized: every member but isUninitialized() and assignment
    // throws UninitializedObjectException.
    CIMInstance();
    CIMInstance(const CIMInstance& x);
    // Shares x's state; a class or uninitialized object throws
    // DynamicCastFailedException.
    explicit CIMInstance(const CIMObject& x);
    // Path = class only; a null name throws UninitializedObjectException.
    CIMInstance(const CIMName& className);
    CIMInstance& operator=(const CIMInstance& x);
    ~CIMInstance();

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    // Stored as given; a null class throws UninitializedObjectException, a
    // class other than the instance's (ignoring case) TypeMismatchException.
    void setPath(const CIMObjectPath& path);

    CIMInstance& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    // Stores x itself (shared). A name already present ignoring case throws
    // AlreadyExistsException ("already exists: property \"NAME\"").
    CIMInstance& addProperty(const CIMProperty& x);
    // Case-insensitive; PEG_NOT_FOUND when absent.
    Uint32 findProperty(const CIMName& name) const;
    // A handle on the instance's own property. index >= count throws
    // IndexOutOfBoundsException.
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    // Key bindings from the properties named by the class's Key properties;
    // no host, null namespace. A missing key property throws NoSuchProperty.
    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;
    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const;
    // Drops qualifiers unless includeQualifiers, properties a non-null list
    // does not name, and class origins unless includeClassOrigin.
    void instanceFilter(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

private:
    explicit CIMInstance(std::shared_ptr<CIMInstanceRep> rep);

    std::shared_ptr<CIMInstanceRep> _rep;

    friend class CIMConstInstance;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMClass;
    friend class ResultFilter;
};

class PEGASUS_COMMON_LINKAGE CIMConstInstance
{
public:
    CIMConstInstance();
    CIMConstInstance(const CIMConstInstance& x);
    CIMConstInstance(const CIMInstance& x);
    explicit CIMConstInstance(const CIMObject& x);
    explicit CIMConstInstance(const CIMConstObject& x);
    CIMConstInstance(const CIMName& className);
    CIMConstInstance& operator=(const CIMConstInstance& x);
    CIMConstInstance& operator=(const CIMInstance& x);
    ~CIMConstInstance();

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;
    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const;

private:
    std::shared_ptr<CIMInstanceRep> _rep;

    friend class CIMInstance;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class ObjectReader;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Instance_h */
