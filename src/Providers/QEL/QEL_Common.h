// QEL_Common: the helper class shared by every provider module of the array's
// provider set. It is stateless (every operation is a static member, callable
// through an object or through the class), compiled into each provider module,
// and talks only to the OpenPegasus provider API and the array library.
#ifndef QEL_Common_h
#define QEL_Common_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <qelapi.h>

#include <ctime>

PEGASUS_NAMESPACE_BEGIN

// Result codes of the getProperty / getParameter families.
enum
{
    QEL_PROPERTY_FOUND = 0,
    QEL_PROPERTY_ABSENT = 3,
    QEL_PROPERTY_NULL = 4
};

// Port identifiers converted from their text forms by getPortIDs. The array
// is allocated with new[]; the caller releases it with delete[].
struct QEL_PortIDs
{
    Uint32 count;
    Uint16* portIDs;
};

class QEL_Common
{
public:
    // ---- Property and parameter accessors ---------------------------------

    // Readers of an instance property: 0 found, 3 absent, 4 null. The out
    // argument is written only on 0.
    static Uint32
    getProperty(CIMInstance& instance, const String& propertyName, CIMObjectPath& value);
    static Uint32
    getProperty(CIMInstance& instance, const String& propertyName, Array<String>& value);
    static Uint32
    getProperty(CIMInstance& instance, const String& propertyName, Array<Sint32>& value);
    static Uint32
    getProperty(CIMInstance& instance, const String& propertyName, Array<Uint16>& value);
    static Uint32 getProperty(CIMInstance& instance, const String& propertyName, Uint64& value);
    static Uint32 getProperty(CIMInstance& instance, const String& propertyName, Uint32& value);
    static Uint32 getProperty(CIMInstance& instance, const String& propertyName, Uint16& value);
    static Uint32 getProperty(CIMInstance& instance, const String& propertyName, Uint8& value);
    static Uint32 getProperty(CIMInstance& instance, const String& propertyName, Boolean& value);
    static Uint32
    getProperty(CIMInstance& instance, const String& propertyName, CIMDateTime& value);

    // Readers of a method parameter: 0 found, 3 absent or null (never 4).
    static Uint32
    getParameter(const Array<CIMParamValue>& paramList, const String& paramName, Uint8& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint16& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Array<Uint16>& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint32& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint64& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Boolean& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, CIMDateTime& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, CIMObjectPath& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, String& paramValue);
    static Uint32 getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Array<String>& paramValue);

    static String getStringProperty(const CIMInstance& instance, const String& propertyName);
    static String getStringProperty(const CIMObjectPath& objectPath, const String& propertyName);
    static CIMValue getPropertyValue(const CIMInstance& instance, const String& propertyName);

    // Writers: set the property when the instance has it, else do nothing.
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const String& value);
    // A text literal would otherwise pick the Boolean overload.
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const char* value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Boolean& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint8& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint16& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint32& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint64& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Sint16& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<String>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint16>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Sint32>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint64>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Boolean>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<CIMDateTime>& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMObjectPath& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMDateTime& value);
    static void
    setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMInstance& value);
    static void
    setPropertyValueToNull(CIMInstance& instance, CIMName propertyName, CIMType cimtype);

    static CIMInstance buildInstanceSkeleton(CIMClass& myClass);
    static CIMClass getStoredCIMClass(
        CIMOMHandle& cimom, const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // ---- Storage-system identity ------------------------------------------

    static String getSystemHostName(CIMOMHandle& cimom);
    static String getSystemName();
    static String getSystemName(CIMOMHandle& cimom);
    static Uint32 getSystemID();
    static Sint32 getSystemType();
    static Uint8 isQuadPortSystem(CIMOMHandle& cimom);
    static String getSystemAddress(CIMOMHandle& cimom);

    static CIMObjectPath getSystemObjectPath(CIMOMHandle& cimom);
    static CIMObjectPath getSystemPkgObjectPath(CIMOMHandle& cimom);
    static CIMObjectPath getSystemViewObjectPath(CIMOMHandle& cimom);

    static Uint32 getPolicy();
    static void setPolicy(Uint32 policy);

    // Local client primitives; each opens and closes its own connection and
    // lets every client exception through.
    static Array<CIMObjectPath>
    enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className);
    static CIMValue invokeMethod(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);
    static CIMObjectPath
    buildInternalCacheObjectPath(const String& hostAddr, const String& systemName);

    // ---- Object-path matching and association building --------------------

    static Boolean matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2);

    static Boolean verifyRefMethodParam(
        CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress);
    static Boolean verifyRefMethodParam(
        CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress,
        const CIMName& expectedClass);
    static Boolean verifyRefMethodParam(
        CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress,
        const Array<CIMName>& expectedClasses);

    static Boolean _isInstanceValidReference(
        const CIMObjectPath& target, const CIMInstance& instance, const String& role);
    static Array<CIMInstance> filterReferenceNames(
        const Array<CIMInstance>& targetAssociationInstanceList, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role);
    static Array<CIMObjectPath> filterAssocInstanceToTargetPaths(
        const CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath,
        const Array<CIMName>& resultClass, const String& resultRole);
    static Array<CIMInstance> filterAssocInstanceToTargetInstances(
        const CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath,
        const Array<CIMInstance>& resultInstanceList, const Array<CIMName>& resultClass,
        const String& resultRole);

    static Boolean isPoolPath(const CIMObjectPath& objectName, const String& instanceID);

    static CIMObjectPath buildDepAssocPath(
        const String& systemAddress, const CIMName& assocClass, const CIMObjectPath& antecedent,
        const CIMObjectPath& dependent);
    static CIMInstance buildDepAssocInstance(
        const String& systemAddress, const CIMName& assocClass, const CIMObjectPath& antecedent,
        const CIMObjectPath& dependent, const CIMClass& classSkeleton);

    static CIMObjectPath buildAssocPath(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2, const String& hostAddress,
        const CIMNamespaceName& nameSpace);
    static CIMObjectPath buildAssocPath(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const String& hostAddress1, const String& hostAddress2, const String& localAddress,
        const CIMNamespaceName& nameSpace);
    static CIMObjectPath buildAssocPath(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMName& assocName3, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const CIMObjectPath& assocPath3, const String& hostAddress,
        const CIMNamespaceName& nameSpace);

    static CIMInstance buildAssocInstance(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const CIMClass& classSkeleton, const String& hostAddress,
        const CIMNamespaceName& nameSpace);
    static CIMInstance buildAssocInstance(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const CIMClass& classSkeleton, const String& hostAddress1, const String& hostAddress2,
        const String& localAddress, const CIMNamespaceName& nameSpace);
    static CIMInstance buildAssocInstance(
        const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
        const CIMName& assocName3, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const CIMObjectPath& assocPath3, const CIMClass& classSkeleton, const String& hostAddress,
        const CIMNamespaceName& nameSpace);

    static Boolean isPartOfArray(const String& key, const Array<String>& list);
    static Boolean isPartOfArray(const CIMObjectPath& path, const Array<CIMObjectPath>& list);
    static Boolean isPartOfArray(const CIMObjectPath& instPath, const Array<CIMInstance>& list);
    static Boolean isPartOfArray(const CIMName& name, const Array<CIMName>& list);

    // ---- Value conversions -------------------------------------------------

    static Uint16 getPortOperationalStatus(api_port_status_t portStatus);
    static Uint16 getPortHealthState(api_port_status_t portStatus);

    static CIMDateTime getCIMDateTime(time_t time);
    static time_t getDateTime(const CIMDateTime& cimTime);
    static int _formatDateTime(const char* timeString, struct tm* tmval);
    static String getTimeZone();

    static Uint16 getPortLPID(Uint64 portWWN);
    static Uint16 getPortLPID(String& iscsiName);
    static QEL_PortIDs getPortIDs(Array<String> lpids);
    static String extractFromInstanceID(const String& instanceID);
    static String getSystemIPAddr(int iptype);
    static void generate_random_string(char* str, Uint32 len);
    static Uint32 getInstanceThreshold(Uint32 th_scale);

    static int setEventParam(
        api_evtparam_t* eventp, const char* className, const char* method, const char* op,
        const char* user, const char* addr);
    static int setEventParam(
        api_evtparam_t* eventp, const char* className, const char* method, const char* op,
        const char* user, const char* addr, const char* evtText);
    static int setEventOp(api_evtparam_t* eventp, const char* op);

    static int getNodePairIndex(int nodePosition);
    static int returnRAIDType(Uint16 packageRedundancy, Uint16 dataRedundancy);
    static Boolean isSameRAID(
        Uint16 dataRedundancy1, Uint16 packageRedundancy1, Uint16 dataRedundancy2,
        Uint16 packageRedundancy2);
    static Boolean isSameRAID(Uint16 raidType, Uint16 dataRedundancy, Uint16 packageRedundancy);
    static String getRaidTypeStr(int raidType);
};

// ---- Method authorization keys ---------------------------------------------
// Each asks api_authorizeCIMUser(userName, ipAddr, key) with the key chosen
// from the method's input parameters; 0 allowed, 3 no known sub-operation,
// otherwise the library's answer.

int authorize_CreateOrModifyElemFromStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifySynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateOrModifyStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_DeleteStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_DeleteStorageVolume(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateElementReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateGroupReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyReplicaSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyListSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ReplicationServiceCapabilitiesMethod(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyStorageSetting_Transient(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyStorageSetting_Persistent(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_AllocatedFromStoragePoolModifyInstance(
    const String& userName, const String& ipAddr, const CIMObjectPath& path);

// Chooses the key for returning one volume to its pool (0 with methodName set,
// 0 with methodName unchanged when the volume is not found or of kind 0, 3 for
// an unknown kind).
int handleDeleteVolumeMethod(CIMObjectPath& volRef, String& methodName);

PEGASUS_NAMESPACE_END

#endif /* QEL_Common_h */
