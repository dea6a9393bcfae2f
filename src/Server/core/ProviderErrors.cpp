#include "ProviderErrors.h"

#include "CoreText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <exception>

namespace Pegasus
{

CIMException currentExceptionAsCIMException()
{
    try
    {
        throw;
    }
    catch (const CIMException& e)
    {
        return e;
    }
    catch (const Exception& e)
    {
        return CIMException(CIM_ERR_FAILED, e.getMessage());
    }
    catch (const std::exception& e)
    {
        return CIMException(CIM_ERR_FAILED, safeString(e.what()));
    }
    catch (...)
    {
        return CIMException(CIM_ERR_FAILED, "Unknown error.");
    }
}

std::string currentExceptionText()
{
    try
    {
        throw;
    }
    catch (const CIMException& e)
    {
        return std::string(cimStatusCodeToString(e.getCode())) + ": " + toStd(e.getMessage());
    }
    catch (const Exception& e)
    {
        return toStd(e.getMessage());
    }
    catch (const std::exception& e)
    {
        return e.what();
    }
    catch (...)
    {
        return "unknown exception";
    }
}

}  // namespace Pegasus
