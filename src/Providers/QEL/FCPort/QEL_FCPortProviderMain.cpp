//%/////////////////////////////////////////////////////////////////////////////
// The module's entry point: the CIM server creates each provider of
// libQEL_FCPortProvider by its registered name.
//%/////////////////////////////////////////////////////////////////////////////

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "QEL_FCPortProvider.h"
#include "QEL_SFPProvider.h"
#include "QEL_FCPortSFPProvider.h"
#include "QEL_FCPortStatisticsProvider.h"
#include "QEL_FCPortElementStatisticalDataProvider.h"

#include <iostream>

PEGASUS_USING_PEGASUS;

// Names are compared without regard to case, in this order; an unknown name
// yields a null pointer and no message. Each call makes a new, independent
// provider that the caller owns and ends through terminate().
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "QEL_FCPortProvider"))
    {
        // The trailing blank is part of the line the server's log shows.
        std::cout << "Create QEL_FCPortProvider " << std::endl;
        return new QEL_FCPortProvider();
    }
    if (String::equalNoCase(providerName, "QEL_SFPProvider"))
    {
        return new QEL_SFPProvider();
    }
    if (String::equalNoCase(providerName, "QEL_FCPortSFPProvider"))
    {
        return new QEL_FCPortSFPProvider();
    }
    if (String::equalNoCase(providerName, "QEL_FCPortStatisticsProvider"))
    {
        return new QEL_FCPortStatisticsProvider();
    }
    if (String::equalNoCase(providerName, "QEL_FCPortElementStatisticalDataProvider"))
    {
        return new QEL_FCPortElementStatisticalDataProvider();
    }
    return 0;
}
