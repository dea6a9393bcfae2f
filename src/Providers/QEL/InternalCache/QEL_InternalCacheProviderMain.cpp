// Entry point of the internal cache provider module.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "QEL_InternalCacheProvider.h"

PEGASUS_USING_PEGASUS;

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "QEL_InternalCacheProvider"))
    {
        return new QEL_InternalCacheProvider();
    }
    return 0;
}
