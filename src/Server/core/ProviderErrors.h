// How anything a provider throws reaches the client, as OpenPegasus reports
// it: a CIMException keeps its code and message; any other runtime Exception
// becomes CIM_ERR_FAILED with its message; a std::exception CIM_ERR_FAILED
// with what(); anything else CIM_ERR_FAILED "Unknown error.".
#ifndef QEL_Server_ProviderErrors_h
#define QEL_Server_ProviderErrors_h

#include <Pegasus/Common/Exception.h>

#include <string>

namespace Pegasus
{

// Call only inside a catch block: maps the exception being handled.
CIMException currentExceptionAsCIMException();

// Text of the exception being handled, for log lines.
std::string currentExceptionText();

// Runs `call` and rethrows whatever escapes it as the mapped CIMException.
template <class Call>
void mapProviderExceptions(Call&& call)
{
    try
    {
        call();
    }
    catch (...)
    {
        throw currentExceptionAsCIMException();
    }
}

}  // namespace Pegasus

#endif
