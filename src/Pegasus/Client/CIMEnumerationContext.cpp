#include <Pegasus/Client/CIMEnumerationContext.h>

PEGASUS_NAMESPACE_BEGIN

CIMEnumerationContext::CIMEnumerationContext() = default;

CIMEnumerationContext::~CIMEnumerationContext() = default;

void CIMEnumerationContext::clear()
{
    _context.clear();
    _nameSpace = CIMNamespaceName();
}

void CIMEnumerationContext::clearEnumeration()
{
    _context.clear();
}

PEGASUS_NAMESPACE_END
