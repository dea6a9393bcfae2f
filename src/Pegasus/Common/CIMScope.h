// Qualifier scopes: the kinds of CIM elements a qualifier may be used on.
#ifndef Pegasus_Scope_h
#define Pegasus_Scope_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMScope
{
public:
    constexpr CIMScope() : cimScope(0) {}
    constexpr CIMScope(const CIMScope& scope) = default;
    CIMScope& operator=(const CIMScope& scope) = default;

    // True when every bit of `scope` is set here.
    Boolean hasScope(const CIMScope& scope) const;
    void addScope(const CIMScope& scope);
    Boolean equal(const CIMScope& scope) const;
    CIMScope operator+(const CIMScope& scope) const;
    // Names of the set scopes, blank-separated ("CLASS PROPERTY").
    String toString() const;

    static const CIMScope NONE;
    static const CIMScope CLASS;
    static const CIMScope ASSOCIATION;
    static const CIMScope INDICATION;
    static const CIMScope PROPERTY;
    static const CIMScope REFERENCE;
    static const CIMScope METHOD;
    static const CIMScope PARAMETER;
    static const CIMScope ANY;

private:
    constexpr explicit CIMScope(Uint32 scope) : cimScope(scope) {}

    Uint32 cimScope;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Scope_h */
