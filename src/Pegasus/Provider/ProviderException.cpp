#include <Pegasus/Provider/ProviderException.h>

PEGASUS_NAMESPACE_BEGIN

CIMOperationFailedException::CIMOperationFailedException(const String& message)
    : CIMException(CIM_ERR_FAILED, message)
{
}

CIMOperationFailedException::CIMOperationFailedException(
    const CIMStatusCode code, const String& message)
    : CIMException(code, message)
{
}

#define PEGASUS_PROVIDER_EXCEPTION_CTOR(NAME, CODE)                                                \
    NAME::NAME(const String& message) : CIMOperationFailedException(CODE, message)                 \
    {                                                                                              \
    }

PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMAccessDeniedException, CIM_ERR_ACCESS_DENIED)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMInvalidParameterException, CIM_ERR_INVALID_PARAMETER)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMInvalidClassException, CIM_ERR_INVALID_CLASS)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMObjectNotFoundException, CIM_ERR_NOT_FOUND)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMNotSupportedException, CIM_ERR_NOT_SUPPORTED)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMObjectAlreadyExistsException, CIM_ERR_ALREADY_EXISTS)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMPropertyNotFoundException, CIM_ERR_NO_SUCH_PROPERTY)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMInvalidQueryException, CIM_ERR_INVALID_QUERY)
PEGASUS_PROVIDER_EXCEPTION_CTOR(CIMMethodNotFoundException, CIM_ERR_METHOD_NOT_FOUND)

#undef PEGASUS_PROVIDER_EXCEPTION_CTOR

PEGASUS_NAMESPACE_END
