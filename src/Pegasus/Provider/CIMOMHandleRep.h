// Project extension: the implementation behind a CIMOMHandle. The hosting
// server (or a provider test host) derives from this class and passes an
// instance to CIMOMHandle's constructor; providers never see it.
//
// CIMOMHandle hands every operation to execute() as a request value
// (Pegasus/Common/CIMOperationMessage.h), with the context the provider
// passed, and reads the answer from the response: a CIM error may come back
// in the response or be thrown as CIMException.
//
// Providers may call their handle from several request threads at once, so
// implementations must be safe for concurrent calls.
#ifndef Pegasus_CIMOMHandleRep_h
#define Pegasus_CIMOMHandleRep_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMOperationMessage.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_PROVIDER_LINKAGE CIMOMHandleRep
{
public:
    virtual ~CIMOMHandleRep();

    // Runs one operation for a provider.
    virtual CIMOperationResponse
    execute(const OperationContext& context, const CIMOperationRequest& request) = 0;

    // Unload control. A host that never unloads providers keeps these
    // defaults, which do nothing.
    virtual void disallowProviderUnload();
    virtual void allowProviderUnload();

    // The context of the last response; empty by default.
    virtual OperationContext getResponseContext();

protected:
    // The answer to an operation a host leaves out: CIMException
    // CIM_ERR_NOT_SUPPORTED "<function> is not supported through this
    // CIMOMHandle", naming the CIMOMHandle function ("getProperty").
    [[noreturn]] static void notSupported(const CIMOperationRequest& request);
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMOMHandleRep_h */
