// CIMName (names of classes, properties, qualifiers, methods) and
// CIMNamespaceName. Both validate on construction and assignment from text,
// compare without regard to ASCII case and keep their original spelling.
#ifndef Pegasus_Name_h
#define Pegasus_Name_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMName
{
public:
    // A null name.
    CIMName();
    CIMName(const CIMName& name) = default;
    // Illegal names throw InvalidNameException.
    CIMName(const String& name);
    CIMName(const char* name);

    CIMName& operator=(const CIMName& name);
    CIMName& operator=(const String& name);
    CIMName& operator=(const char* name);

    const String& getString() const;
    Boolean isNull() const;
    void clear();
    Boolean equal(const CIMName& name) const;
    Boolean equal(const char* name) const;

    // First unit an ASCII letter, '_' or U+0080..U+FFEF; further units also
    // ASCII digits. The empty string is not legal.
    static Boolean legal(const String& name);

private:
    friend PEGASUS_COMMON_LINKAGE CIMName internedName(const CIMName& name);

    String cimName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* name1, const CIMName& name2);

class PEGASUS_COMMON_LINKAGE CIMNamespaceName
{
public:
    CIMNamespaceName();
    CIMNamespaceName(const CIMNamespaceName& name) = default;
    // Illegal names throw InvalidNamespaceNameException; one leading '/'
    // is accepted and dropped.
    CIMNamespaceName(const String& name);
    CIMNamespaceName(const char* name);

    CIMNamespaceName& operator=(const CIMNamespaceName& name);
    CIMNamespaceName& operator=(const String& name);
    CIMNamespaceName& operator=(const char* name);

    const String& getString() const;
    Boolean isNull() const;
    void clear();
    Boolean equal(const CIMNamespaceName& name) const;
    Boolean equal(const char* name) const;

    // Optional leading '/', then '/'-separated elements that are each a
    // legal CIMName.
    static Boolean legal(const String& name);

private:
    String cimNamespaceName;
};

PEGASUS_COMMON_LINKAGE Boolean
operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMNamespaceName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean
operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMNamespaceName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* name1, const CIMNamespaceName& name2);

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Name_h */
