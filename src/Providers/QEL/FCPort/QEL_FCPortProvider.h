//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortProvider: the array's Fibre Channel ports as QEL_FCPort (FC view)
// and QEL_FCALPort (arbitrated-loop view), their modification and methods.
//
// The builders (buildInstance, buildObjectPath, _addOperationalStatus,
// buildInstances) take everything they need as arguments, so that the
// association providers can build port ends without a provider object.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_FCPortProvider_h
#define QEL_FCPortProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include <qelapi.h>

PEGASUS_NAMESPACE_BEGIN

// Bits per second of a library rate code, in binary multiples (a gigabit is
// 2^30 bits); unknown codes, 3 (automatic) included, give 0.
Uint64 rate_to_bits(Sint32 rate);

class QEL_FCPortProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    QEL_FCPortProvider();
    // The path is ignored: the provider is built as by the default constructor.
    QEL_FCPortProvider(const CIMObjectPath& path);
    virtual ~QEL_FCPortProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(
        const OperationContext& context, const CIMObjectPath& instRef,
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
        const OperationContext& context, const CIMObjectPath& objectRef,
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

    // One port record as an instance of portClass ("QEL_FCPort" or
    // "QEL_FCALPort"), with its path on hostAddr.
    static CIMInstance
    buildInstance(CIMClass portClass, const api_FCPort_t& port, const String& hostAddr);

    // The path of one port: four string keys SystemCreationClassName,
    // SystemName, CreationClassName, DeviceID, in namespace root/qel.
    static CIMObjectPath buildObjectPath(
        const CIMName& inputClassName, const String& hostAddr, const String& systemName,
        const String& deviceID);

    // OperationalStatus and OtherOperationalStatus of a port state.
    static void _addOperationalStatus(api_port_status_t portStatus, CIMInstance& instance);

    // The instances of the ports that portwwn selects (QEL_ALL_PORTS: all).
    static Array<CIMInstance> buildInstances(
        CIMOMHandle& cimom, const CIMName& className, Uint64 portwwn,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, const String& hostAddr);

    // The paths of all ports of className. Public, like the builders, so
    // that the module's tests and benchmarks can drive it.
    Array<CIMObjectPath> _build_ref(const CIMName& className);

    // Lookups in an instance list by DeviceID (port WWN) or by Name (port
    // position); both throw CIMObjectNotFoundException when nothing matches.
    static CIMInstance _getPortInstance(Uint64 portWWN, Array<CIMInstance> instances);
    static CIMInstance _getPortInstance(const String& portName, Array<CIMInstance> instances);

private:
    CIMOMHandle _cimom;
    String _hostName;
};

PEGASUS_NAMESPACE_END

#endif
