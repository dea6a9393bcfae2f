// Qualifier flavors: propagation and override rules, kept as a bit set.
#ifndef Pegasus_Flavor_h
#define Pegasus_Flavor_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMFlavor
{
public:
    constexpr CIMFlavor() : cimFlavor(0) {}
    constexpr CIMFlavor(const CIMFlavor& flavor) = default;
    CIMFlavor& operator=(const CIMFlavor& flavor) = default;

    void addFlavor(const CIMFlavor& flavor);
    void removeFlavor(const CIMFlavor& flavor);
    // True when every bit of `flavor` is set here.
    Boolean hasFlavor(const CIMFlavor& flavor) const;
    Boolean equal(const CIMFlavor& flavor) const;
    CIMFlavor operator+(const CIMFlavor& flavor) const;
    // Names of the set flavors, blank-separated ("OVERRIDABLE TOSUBCLASS").
    String toString() const;

    static const CIMFlavor NONE;
    static const CIMFlavor OVERRIDABLE;
    static const CIMFlavor ENABLEOVERRIDE;
    static const CIMFlavor DISABLEOVERRIDE;
    static const CIMFlavor TOSUBCLASS;
    static const CIMFlavor RESTRICTED;
    static const CIMFlavor TOINSTANCE;
    static const CIMFlavor TRANSLATABLE;
    static const CIMFlavor DEFAULTS;
    static const CIMFlavor TOSUBELEMENTS;

private:
    constexpr explicit CIMFlavor(Uint32 flavor) : cimFlavor(flavor) {}

    Uint32 cimFlavor;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Flavor_h */
