// CIMObject: a class or an instance seen through one interface. Converts
// implicitly from CIMClass and CIMInstance and shares their state; convert
// back with the explicit CIMClass(obj) / CIMInstance(obj) constructors.
// CIMConstObject is the read-only twin.
#ifndef Pegasus_Object_h
#define Pegasus_Object_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstObject;
class CIMObjectRep;
class CIMClass;
class CIMConstClass;
class CIMInstance;
class CIMConstInstance;

class PEGASUS_COMMON_LINKAGE CIMObject
{
public:
    // Uninitialized: every member but isUninitialized(), isClass(),
    // isInstance() and assignment throws UninitializedObjectException.
    CIMObject();
    CIMObject(const CIMObject& x);
    CIMObject(const CIMClass& x);
    CIMObject(const CIMInstance& x);
    CIMObject& operator=(const CIMObject& x);
    ~CIMObject();

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);

    CIMObject& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    CIMObject& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMObject clone() const;
    Boolean identical(const CIMConstObject& x) const;
    Boolean isUninitialized() const;
    Boolean isClass() const;
    Boolean isInstance() const;
    void instanceFilter(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

private:
    explicit CIMObject(std::shared_ptr<CIMObjectRep> rep);

    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMConstObject;
    friend class CIMClass;
    friend class CIMConstClass;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class ResultFilter;
};

class PEGASUS_COMMON_LINKAGE CIMConstObject
{
public:
    CIMConstObject();
    CIMConstObject(const CIMConstObject& x);
    CIMConstObject(const CIMObject& x);
    CIMConstObject(const CIMClass& x);
    CIMConstObject(const CIMInstance& x);
    CIMConstObject(const CIMConstClass& x);
    CIMConstObject(const CIMConstInstance& x);
    CIMConstObject& operator=(const CIMConstObject& x);
    ~CIMConstObject();

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    CIMObject clone() const;
    Boolean identical(const CIMConstObject& x) const;
    Boolean isUninitialized() const;
    Boolean isClass() const;
    Boolean isInstance() const;

private:
    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMObject;
    friend class CIMClass;
    friend class CIMConstClass;
    friend class CIMInstance;
    friend class CIMConstInstance;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Object_h */
