// Export macro of the common library (symbols are visible by default).
#ifndef Pegasus_Common_Linkage_h
#define Pegasus_Common_Linkage_h

#include <Pegasus/Common/Config.h>

#ifndef PEGASUS_COMMON_LINKAGE
#define PEGASUS_COMMON_LINKAGE PEGASUS_EXPORT
#endif

#endif /* Pegasus_Common_Linkage_h */
