// Export macro of the provider library (symbols are visible by default).
#ifndef Pegasus_Provider_Linkage_h
#define Pegasus_Provider_Linkage_h

#include <Pegasus/Common/Config.h>

#ifndef PEGASUS_PROVIDER_LINKAGE
#define PEGASUS_PROVIDER_LINKAGE PEGASUS_EXPORT
#endif

#endif /* Pegasus_Provider_Linkage_h */
