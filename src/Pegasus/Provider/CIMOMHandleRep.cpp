#include <Pegasus/Provider/CIMOMHandleRep.h>

PEGASUS_NAMESPACE_BEGIN

CIMOMHandleRep::~CIMOMHandleRep() = default;

void CIMOMHandleRep::notSupported(const CIMOperationRequest& request)
{
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED,
        cimOperationFunctionName(request.operation) + " is not supported through this CIMOMHandle");
}

void CIMOMHandleRep::disallowProviderUnload()
{
}

void CIMOMHandleRep::allowProviderUnload()
{
}

OperationContext CIMOMHandleRep::getResponseContext()
{
    return OperationContext();
}

PEGASUS_NAMESPACE_END
