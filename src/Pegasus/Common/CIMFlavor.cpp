#include <Pegasus/Common/CIMFlavor.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
// Bit values as exchanged with other CIM implementations; OVERRIDABLE and
// ENABLEOVERRIDE are the same bit, TOSUBELEMENTS is TOSUBCLASS.
const Uint32 kOverridable = 1;
const Uint32 kToSubclass = 2;
const Uint32 kToInstance = 4;
const Uint32 kTranslatable = 8;
const Uint32 kDisableOverride = 16;
const Uint32 kRestricted = 32;
}  // namespace

const CIMFlavor CIMFlavor::NONE(0u);
const CIMFlavor CIMFlavor::OVERRIDABLE(kOverridable);
const CIMFlavor CIMFlavor::ENABLEOVERRIDE(kOverridable);
const CIMFlavor CIMFlavor::DISABLEOVERRIDE(kDisableOverride);
const CIMFlavor CIMFlavor::TOSUBCLASS(kToSubclass);
const CIMFlavor CIMFlavor::RESTRICTED(kRestricted);
const CIMFlavor CIMFlavor::TOINSTANCE(kToInstance);
const CIMFlavor CIMFlavor::TRANSLATABLE(kTranslatable);
const CIMFlavor CIMFlavor::DEFAULTS(kOverridable | kToSubclass);
const CIMFlavor CIMFlavor::TOSUBELEMENTS(kToSubclass);

void CIMFlavor::addFlavor(const CIMFlavor& flavor)
{
    cimFlavor |= flavor.cimFlavor;
}

void CIMFlavor::removeFlavor(const CIMFlavor& flavor)
{
    cimFlavor &= ~flavor.cimFlavor;
}

Boolean CIMFlavor::hasFlavor(const CIMFlavor& flavor) const
{
    return (cimFlavor & flavor.cimFlavor) == flavor.cimFlavor;
}

Boolean CIMFlavor::equal(const CIMFlavor& flavor) const
{
    return cimFlavor == flavor.cimFlavor;
}

CIMFlavor CIMFlavor::operator+(const CIMFlavor& flavor) const
{
    return CIMFlavor(cimFlavor | flavor.cimFlavor);
}

String CIMFlavor::toString() const
{
    static const struct
    {
        Uint32 bit;
        const char* name;
    } names[] = {
        {kOverridable, "OVERRIDABLE"},         {kToSubclass, "TOSUBCLASS"},
        {kToInstance, "TOINSTANCE"},           {kTranslatable, "TRANSLATABLE"},
        {kDisableOverride, "DISABLEOVERRIDE"}, {kRestricted, "RESTRICTED"},
    };
    String text;
    for (const auto& n : names)
    {
        if (cimFlavor & n.bit)
        {
            if (text.size())
                text.append(Char16(' '));
            text.append(String(n.name));
        }
    }
    return text;
}

PEGASUS_NAMESPACE_END
