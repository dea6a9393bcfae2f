//%/////////////////////////////////////////////////////////////////////////////
// QEL_PortWWN: a port's world-wide name as a number and as key text.
//
// The text form is 16 upper-case hexadecimal digits, zero-filled. Key texts
// are read back the way the array's tools have always read them: leading
// white space skipped, then at most 16 characters (an optional sign and "0x"
// count among them) taken as a hexadecimal number of either letter case;
// whatever follows is not looked at. A text that gives no number names no
// port, which reads as QEL_ALL_PORTS, the library's every-port selector.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_PortWWN_h
#define QEL_PortWWN_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// "%016" PRIX64 of wwn.
String QEL_wwnText(Uint64 wwn);

// The WWN at the start of text ("%16" SCNx64), or QEL_ALL_PORTS when none
// can be read (also for a null text).
Uint64 QEL_scanWWN(const char* text);

PEGASUS_NAMESPACE_END

#endif
