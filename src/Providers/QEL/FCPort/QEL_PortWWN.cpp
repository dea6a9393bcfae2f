//%/////////////////////////////////////////////////////////////////////////////
// QEL_PortWWN: WWN text written and read with the fixed-width formats of
// <cinttypes>, so the same on every platform.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_PortWWN.h"
#include "QEL_ProviderFrame.h"

#include <cinttypes>
#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

String QEL_wwnText(Uint64 wwn)
{
    char text[32];
    snprintf(text, sizeof(text), "%016" PRIX64, static_cast<uint64_t>(wwn));
    return String(text);
}

Uint64 QEL_scanWWN(const char* text)
{
    uint64_t wwn = 0;
    if (text == 0 || sscanf(text, "%16" SCNx64, &wwn) != 1)
    {
        return QEL_ALL_PORTS;
    }
    return wwn;
}

PEGASUS_NAMESPACE_END
