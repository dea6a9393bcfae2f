#include "ClassFilter.h"

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Removes every qualifier, or only the propagated ones.
template <class Element>
void stripQualifiers(Element e, bool propagatedOnly)
{
    for (Uint32 i = e.getQualifierCount(); i > 0; i--)
    {
        if (!propagatedOnly || e.getQualifier(i - 1).getPropagated())
            e.removeQualifier(i - 1);
    }
}

void stripMethodQualifiers(CIMMethod m, bool propagatedOnly)
{
    stripQualifiers(m, propagatedOnly);
    for (Uint32 j = 0, n = m.getParameterCount(); j < n; j++)
        stripQualifiers(m.getParameter(j), propagatedOnly);
}

}  // namespace

CIMClass filterClass(
    const CIMConstClass& resolved, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMClass c = resolved.clone();

    if (localOnly)
    {
        stripQualifiers(c, true);
        for (Uint32 i = c.getPropertyCount(); i > 0; i--)
        {
            if (c.getProperty(i - 1).getPropagated())
                c.removeProperty(i - 1);
            else
                stripQualifiers(c.getProperty(i - 1), true);
        }
        for (Uint32 i = c.getMethodCount(); i > 0; i--)
        {
            if (c.getMethod(i - 1).getPropagated())
                c.removeMethod(i - 1);
            else
                stripMethodQualifiers(c.getMethod(i - 1), true);
        }
    }

    if (!propertyList.isNull())
    {
        for (Uint32 i = c.getPropertyCount(); i > 0; i--)
        {
            if (!propertyList.contains(c.getProperty(i - 1).getName()))
                c.removeProperty(i - 1);
        }
    }

    if (!includeQualifiers)
    {
        stripQualifiers(c, false);
        for (Uint32 i = 0, n = c.getPropertyCount(); i < n; i++)
            stripQualifiers(c.getProperty(i), false);
        for (Uint32 i = 0, n = c.getMethodCount(); i < n; i++)
            stripMethodQualifiers(c.getMethod(i), false);
    }

    if (!includeClassOrigin)
    {
        for (Uint32 i = 0, n = c.getPropertyCount(); i < n; i++)
            c.getProperty(i).setClassOrigin(CIMName());
        for (Uint32 i = 0, n = c.getMethodCount(); i < n; i++)
            c.getMethod(i).setClassOrigin(CIMName());
    }
    return c;
}

PEGASUS_NAMESPACE_END
