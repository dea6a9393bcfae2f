// CIMEnumerationContext: the client's side of one pulled enumeration (an Open... call of
// CIMClient and the pulls that follow it): the server's context value and the namespace
// the enumeration lives in. Opaque to the application, which passes it from the open to
// each pull and to closeEnumeration(); CIMClient keeps it up to date.
#ifndef Pegasus_CIMEnumerationContext_h
#define Pegasus_CIMEnumerationContext_h

#include <Pegasus/Client/Linkage.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_CLIENT_LINKAGE CIMEnumerationContext
{
public:
    CIMEnumerationContext();
    ~CIMEnumerationContext();

    // Forgets the enumeration; the server keeps it until it is closed or expires.
    void clear();
    // Forgets only the server's context value, keeping the namespace: the next pull
    // names no enumeration (a way to see how a server answers that).
    void clearEnumeration();

private:
    CIMEnumerationContext(const CIMEnumerationContext&) = delete;
    CIMEnumerationContext& operator=(const CIMEnumerationContext&) = delete;

    friend class CIMClient;

    String _context;              // "" once the sequence ended or was closed
    CIMNamespaceName _nameSpace;  // null until opened
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMEnumerationContext_h */
