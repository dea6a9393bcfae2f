// QEL_InternalCacheProvider: the server's internal cache service. It serves
// the one instance of QEL_InternalCache in root/PG_Internal and answers the
// storage system's identity methods from the array library.
#ifndef QEL_InternalCacheProvider_h
#define QEL_InternalCacheProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

PEGASUS_NAMESPACE_BEGIN

class QEL_InternalCacheProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    QEL_InternalCacheProvider();
    virtual ~QEL_InternalCacheProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(
        const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(
        const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);
    virtual void modifyInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        ResponseHandler& handler);

    virtual void invokeMethod(
        const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

    // The one instance's path (no host, no namespace) and the instance.
    static CIMObjectPath buildObjectPath();
    static CIMInstance buildInstance();

    // The output parameter that answers an identity method, from the array
    // library; unknown methods throw CIMMethodNotFoundException, a failed
    // library call CIMOperationFailedException.
    static CIMParamValue answerIdentityMethod(const CIMName& methodName);

private:
    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif /* QEL_InternalCacheProvider_h */
