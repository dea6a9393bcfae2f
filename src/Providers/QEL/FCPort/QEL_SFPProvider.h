//%/////////////////////////////////////////////////////////////////////////////
// QEL_SFPProvider: the SFP transceivers of the array's FC and iSCSI ports as
// instances of QEL_SFP.
//
// The builders (makeUniqueTAG, buildInstance, buildObjectPath and the free
// function _setDDMProperties) take everything they need as arguments, so that
// the FC port to SFP association builds the same keys and instances without a
// provider object.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_SFPProvider_h
#define QEL_SFPProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <qelapi.h>

PEGASUS_NAMESPACE_BEGIN

// Adds the readings, thresholds and units of the five DDM monitor entries to
// an SFP instance: each 32-bit reading cut to its low 16 bits, signed for
// temperature and voltage, unsigned for bias and power. Entries of an unknown
// monitor type are traced and skipped; a later entry of a type wins.
void _setDDMProperties(CIMInstance& instance, const api_ddm_t (&ddm)[5]);

class QEL_SFPProvider : public CIMInstanceProvider
{
public:
    QEL_SFPProvider();
    // Refused: CIMNotSupportedException "... does not support constructor
    // with object path.".
    QEL_SFPProvider(const CIMObjectPath& path);
    virtual ~QEL_SFPProvider();

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

    // The key Tag: portName, "-" and the serial number, cut at 254
    // characters, trailing white space removed.
    static String makeUniqueTAG(const char* portName, const api_sfp_t& sfp);

    // One transceiver as an instance of cimClass (QEL_SFP), with its path on
    // hostName. portName: the FC port's DeviceID text or the iSCSI name.
    static CIMInstance buildInstance(
        CIMClass cimClass, const char* portName, const api_sfp_t& sfp, const String& hostName);

    // Keys CreationClassName = "QEL_SFP" and Tag, in namespace root/qel.
    static CIMObjectPath buildObjectPath(const String& hostName, const String& tag);

    // Every installed transceiver, FC ports first, then iSCSI ports. Public,
    // like the builders, so that the module's tests and benchmarks can drive
    // them.
    Array<CIMInstance> _build_instances(
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

private:
    CIMOMHandle _cimom;
    String _hostName;
};

PEGASUS_NAMESPACE_END

#endif
