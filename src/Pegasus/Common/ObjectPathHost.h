// Project extension, internal to the runtime (not part of the OpenPegasus API): the host
// part of an object path.
#ifndef Pegasus_ObjectPathHost_h
#define Pegasus_ObjectPathHost_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// host[:port]: an IPv4 address, a host name or a bracketed IPv6 address (a link-local one
// with a known %zone), and a port, possibly empty, up to 65535.
bool isValidObjectPathHost(const String& host);

// This machine's name ("" when it cannot be read).
String localHostName();

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ObjectPathHost_h */
