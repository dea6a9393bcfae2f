// Export macro of the client library (symbols are visible by default).
#ifndef Pegasus_Client_Linkage_h
#define Pegasus_Client_Linkage_h

#include <Pegasus/Common/Config.h>

#ifndef PEGASUS_CLIENT_LINKAGE
#define PEGASUS_CLIENT_LINKAGE PEGASUS_EXPORT
#endif

#endif /* Pegasus_Client_Linkage_h */
