//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortStatisticsProvider: each FC port's link error status block (LESB)
// counters as QEL_FCPortLESBStatistics, and their reset.
//
// The key InstanceID reads "ZEPHRAN:<port DeviceID>-Stats". The builders
// (makeInstanceID, getPortWWN, both buildInstance forms, buildObjectPath) take
// everything they need as arguments, so that the FC port to statistics
// association builds the same keys without a provider object.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_FCPortStatisticsProvider_h
#define QEL_FCPortStatisticsProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include <qelapi.h>

PEGASUS_NAMESPACE_BEGIN

class QEL_FCPortStatisticsProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    QEL_FCPortStatisticsProvider();
    // Refused: CIMNotSupportedException "... does not support constructor
    // with object path.".
    QEL_FCPortStatisticsProvider(const CIMObjectPath& path);
    virtual ~QEL_FCPortStatisticsProvider();

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

    // "ZEPHRAN:" + the record's port text + "-Stats".
    static String makeInstanceID(const api_portLESB_t& lesb);

    // The port WWN named by an InstanceID, or QEL_ALL_PORTS (-10, the
    // library's every-port selector) when the text names none.
    static Uint64 getPortWWN(const String& instanceId);

    // The counters of one LESB record as an instance of cimClass, with its
    // path on hostName.
    static CIMInstance
    buildInstance(CIMClass cimClass, const api_portLESB_t& lesb, const String& hostName);

    // An instance that carries only its key, made from portText (at most 64
    // characters of it), for a port whose counters the library did not give.
    static CIMInstance
    buildInstance(CIMClass cimClass, const char* portText, const String& hostName);

    // One string key InstanceID, in namespace root/qel.
    static CIMObjectPath buildObjectPath(const String& hostName, const String& instanceId);

    // The instance of the port instanceId names, or of every port when it is
    // empty; the paths of every LESB record. Public, like the builders, so
    // that the module's tests and benchmarks can drive them.
    Array<CIMInstance> _build_instances(
        const String& instanceId, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

private:
    CIMOMHandle _cimom;
    String _hostName;
};

PEGASUS_NAMESPACE_END

#endif
