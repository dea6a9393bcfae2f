// CIMKeyBinding and CIMObjectPath: the name of a CIM class or instance,
// [//host/][namespace:]class[.key=value,...].
#ifndef Pegasus_ObjectPath_h
#define Pegasus_ObjectPath_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class CIMObjectPath;
class CIMObjectPathRep;
class CIMValue;

class PEGASUS_COMMON_LINKAGE CIMKeyBinding
{
public:
    enum Type
    {
        BOOLEAN,
        STRING,
        NUMERIC,
        REFERENCE
    };

    // Null name, empty STRING value.
    CIMKeyBinding();
    CIMKeyBinding(const CIMKeyBinding& x);
    // Takes the value text as given, without checking it against the type.
    CIMKeyBinding(const CIMName& name, const String& value, Type type);
    // Text and type from a value: arrays and embedded objects throw
    // TypeMismatchException.
    CIMKeyBinding(const CIMName& name, const CIMValue& value);
    ~CIMKeyBinding();

    CIMKeyBinding& operator=(const CIMKeyBinding& x);

    const CIMName& getName() const;
    void setName(const CIMName& name);
    const String& getValue() const;
    void setValue(const String& value);
    Type getType() const;
    void setType(Type type);

    // True if this binding's text, read as the value's type, equals value.
    Boolean equal(CIMValue value);

private:
    CIMName _name;
    String _value;
    Type _type;

    friend class CIMObjectPath;
};

// Names equal ignoring case, same type, and values equal as that type
// (numbers by value, booleans ignoring case, references by identical()).
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y);

class PEGASUS_COMMON_LINKAGE CIMObjectPath
{
public:
    CIMObjectPath();
    CIMObjectPath(const CIMObjectPath& x);
    CIMObjectPath(CIMObjectPath&& x) noexcept;
    // Parses objectName; errors throw MalformedObjectNameException.
    CIMObjectPath(const String& objectName);
    // Key bindings are sorted by name; REFERENCE values are normalised.
    CIMObjectPath(
        const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
        const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    ~CIMObjectPath();

    CIMObjectPath& operator=(const CIMObjectPath& x);
    CIMObjectPath& operator=(CIMObjectPath&& x) noexcept;
    CIMObjectPath& operator=(const String& objectName);

    void clear();
    void
    set(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
        const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    void set(const String& objectName);

    const String& getHost() const;
    // An invalid host throws MalformedObjectNameException.
    void setHost(const String& host);
    const CIMNamespaceName& getNameSpace() const;
    void setNameSpace(const CIMNamespaceName& nameSpace);
    const CIMName& getClassName() const;
    void setClassName(const CIMName& className);
    const Array<CIMKeyBinding>& getKeyBindings() const;
    void setKeyBindings(const Array<CIMKeyBinding>& keyBindings);

    String toString() const;
    // Host, namespace and class compared ignoring case, keys as sets.
    Boolean identical(const CIMObjectPath& x) const;
    // Equal for identical paths.
    Uint32 makeHashCode() const;

private:
    String _toStringCanonical() const;
    void _unshare();

    CIMObjectPathRep* _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ObjectPath_h */
