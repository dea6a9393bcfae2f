// The method authorization keys of the provider set: which operation key each
// storage-configuration and replication method asks api_authorizeCIMUser with.
#include "QEL_Common.h"
#include "QEL_Common_Internal.h"

#include <cstdlib>
#include <cstring>

PEGASUS_NAMESPACE_BEGIN

using namespace QEL_CommonInternal;

namespace
{

const char KEY_CREATE_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.createvolume";
const char KEY_GROW_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.growvolume";
const char KEY_SET_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.setvolume";
const char KEY_RETURN_TO_POOL[] = "qel_storageconfigurationservice.returntostoragepool";

// A sub-operation code and the key it is authorized with.
struct CodeKey
{
    Uint16 code;
    const char* key;
};

// The key of code in table; null when the table does not name the code.
template <size_t N>
const char* _keyOf(const CodeKey (&table)[N], Uint16 code)
{
    for (const CodeKey& entry : table)
    {
        if (entry.code == code)
        {
            return entry.key;
        }
    }
    return NULL;
}

int _authorize(const String& userName, const String& ipAddr, const String& key)
{
    return api_authorizeCIMUser(QEL_CSTR(userName), QEL_CSTR(ipAddr), QEL_CSTR(key));
}

// The first non-null value of the parameter named `name` (any letter case).
Boolean _paramValue(const Array<CIMParamValue>& params, const char* name, CIMValue& value)
{
    for (Uint32 i = 0; i < params.size(); i++)
    {
        if (String::equalNoCase(params[i].getParameterName(), name))
        {
            CIMValue v = params[i].getValue();
            if (!v.isNull())
            {
                value = v;
                return true;
            }
        }
    }
    return false;
}

Boolean _uint16Param(const Array<CIMParamValue>& params, const char* name, Uint16& value)
{
    CIMValue v;
    if (!_paramValue(params, name, v))
    {
        return false;
    }
    v.get(value);
    return true;
}

// A scalar reference parameter; a value of another type is no reference.
Boolean _referenceParam(const Array<CIMParamValue>& params, const char* name, CIMObjectPath& ref)
{
    CIMValue v;
    if (!_paramValue(params, name, v) || v.getType() != CIMTYPE_REFERENCE || v.isArray())
    {
        return false;
    }
    v.get(ref);
    return true;
}

// The path held by a reference key, or an empty path when there is none or
// it does not parse.
CIMObjectPath _referenceKey(const CIMObjectPath& path, const char* keyName)
{
    String text = _lastKeyValue(path, keyName);
    if (text.size() == 0)
    {
        return CIMObjectPath();
    }
    try
    {
        return CIMObjectPath(text);
    }
    catch (...)
    {
        return CIMObjectPath();
    }
}

// A volume WWN text (1 to 16 hex digits) as a number; false for anything
// else, including the library's every-volume selector.
Boolean _parseVolumeWWN(const String& text, Uint64& wwn)
{
    CString c = text.getCString();
    const char* s = (const char*)c;
    size_t len = strlen(s);
    if (len == 0 || len > 16)
    {
        return false;
    }
    for (size_t i = 0; i < len; i++)
    {
        char ch = s[i];
        Boolean hex =
            (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F');
        if (!hex)
        {
            return false;
        }
    }
    wwn = strtoull(s, NULL, 16);
    return wwn != API_ALL_PORTS;
}

// Asks the library for every volume in order with the key chosen for it;
// the first non-zero result ends the walk.
int _authorizeVolumes(
    const String& userName, const String& ipAddr, Array<CIMObjectPath>& volumes, String& key)
{
    int rc = 0;
    for (Uint32 i = 0; i < volumes.size() && rc == 0; i++)
    {
        rc = handleDeleteVolumeMethod(volumes[i], key);
        if (rc == 0)
        {
            rc = _authorize(userName, ipAddr, key);
        }
    }
    return rc;
}

}  // anonymous namespace

// Naming the element with neither a size nor a name is allowed without asking
// the library; intended, the method itself rejects such a request.
int authorize_CreateOrModifyElemFromStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Boolean hasName = false;
    Boolean hasSize = false;
    Boolean hasElement = false;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        String name = inParameters[i].getParameterName();
        log_message(4, "Param %s", QEL_CSTR(name));
        CIMValue v = inParameters[i].getValue();
        if (v.isNull())
        {
            continue;
        }
        if (String::equalNoCase(name, "ElementName"))
        {
            hasName = true;
        }
        else if (String::equalNoCase(name, "Size"))
        {
            hasSize = true;
        }
        else if (
            String::equalNoCase(name, "TheElement") && v.getType() == CIMTYPE_REFERENCE &&
            !v.isArray())
        {
            CIMObjectPath element;
            v.get(element);
            hasElement = !element.getClassName().isNull();
        }
    }
    if (!hasElement)
    {
        return _authorize(userName, ipAddr, KEY_CREATE_VOLUME);
    }
    int rc = 0;
    if (hasSize)
    {
        rc = _authorize(userName, ipAddr, KEY_GROW_VOLUME);
    }
    if (rc == 0 && hasName)
    {
        rc = _authorize(userName, ipAddr, KEY_SET_VOLUME);
    }
    return rc;
}

int authorize_ModifySynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    static const CodeKey keys[] = {
        {2, "qel_storageconfigurationservice.modifysynchronization.detach"},
        {4, "qel_storageconfigurationservice.modifysynchronization.resync"},
        {5, "qel_storageconfigurationservice.modifysynchronization.restore"},
        {12, "qel_storageconfigurationservice.modifysynchronization.startcopy"},
        {13, "qel_storageconfigurationservice.modifysynchronization.stopcopy"},
    };
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 3;
    }
    const char* key = _keyOf(keys, operation);
    return key == NULL ? 3 : _authorize(userName, ipAddr, key);
}

int authorize_CreateOrModifyStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    CIMObjectPath pool;
    if (_referenceParam(inParameters, "Pool", pool) && !pool.getClassName().isNull())
    {
        return _authorize(
            userName, ipAddr, "qel_storageconfigurationservice.createormodifystoragepool.setcpg");
    }
    return _authorize(
        userName, ipAddr, "qel_storageconfigurationservice.createormodifystoragepool.createcpg");
}

int authorize_DeleteStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    CIMObjectPath pool;
    if (!_referenceParam(inParameters, "Pool", pool) || pool.getClassName().isNull())
    {
        return 3;
    }
    if (pool.getClassName().equal("QEL_DynamicStoragePool"))
    {
        return _authorize(
            userName, ipAddr,
            "qel_storageconfigurationservice.deletestoragepool.deletedynamicstoragepool");
    }
    if (pool.getClassName().equal("QEL_DeltaReplicaStoragePool"))
    {
        return _authorize(
            userName, ipAddr,
            "qel_storageconfigurationservice.deletestoragepool.deletedeltareplicastoragepool");
    }
    return 3;
}

int authorize_DeleteStorageVolume(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Array<CIMObjectPath> volumes;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        String name = inParameters[i].getParameterName();
        log_message(4, "Param %s\n", QEL_CSTR(name));
        CIMValue v = inParameters[i].getValue();
        if (v.isNull() || v.getType() != CIMTYPE_REFERENCE)
        {
            continue;
        }
        if (String::equalNoCase(name, "TheElement") && !v.isArray())
        {
            CIMObjectPath element;
            v.get(element);
            volumes.append(element);
        }
        else if (String::equalNoCase(name, "TheElements") && v.isArray())
        {
            Array<CIMObjectPath> elements;
            v.get(elements);
            volumes.appendArray(elements);
        }
    }
    String key(KEY_RETURN_TO_POOL);
    return _authorizeVolumes(userName, ipAddr, volumes, key);
}

namespace
{

// SyncType and Mode must both be given; only SyncType chooses the key.
// Without both the library is not asked (the method rejects the request).
template <size_t N>
int _authorizeReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters,
    const CodeKey (&keysBySyncType)[N])
{
    Uint16 syncType = 0;
    Uint16 mode = 0;
    if (!_uint16Param(inParameters, "SyncType", syncType) ||
        !_uint16Param(inParameters, "Mode", mode))
    {
        return 0;
    }
    const char* key = _keyOf(keysBySyncType, syncType);
    return key == NULL ? 3 : _authorize(userName, ipAddr, key);
}

// The volume a synchronization path names by its "SyncedElement" key.
CIMObjectPath _syncedVolume(const CIMObjectPath& synchronization)
{
    return _referenceKey(synchronization, "SyncedElement");
}

}  // anonymous namespace

int authorize_CreateElementReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    static const CodeKey keys[] = {
        {7, "qel_replicationservice.createelementreplica.createsv"},
        {8, "qel_replicationservice.createelementreplica.createvvcopy"},
    };
    return _authorizeReplica(userName, ipAddr, inParameters, keys);
}

int authorize_CreateGroupReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    static const CodeKey keys[] = {
        {6, "qel_replicationservice.creategroupreplica.createmirror"},
        {7, "qel_replicationservice.creategroupreplica.creategroupsv"},
        {8, "qel_replicationservice.creategroupreplica.creategroupvvcopy"},
    };
    return _authorizeReplica(userName, ipAddr, inParameters, keys);
}

// Without an Operation the request is let through unasked (result 0); the
// abort key ends in a blank. Both are intended and kept. Operation 19 takes
// the key of the synchronized volume; when none is chosen the library is not
// asked.
int authorize_ModifyReplicaSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    static const CodeKey keys[] = {
        {2, "qel_replicationservice.modifyreplicasynchronization.abort "},
        {4, "qel_replicationservice.modifyreplicasynchronization.syncrcopy"},
        {8, "qel_replicationservice.modifyreplicasynchronization.dissolve"},
        {9, "qel_replicationservice.modifyreplicasynchronization.dissolve"},
        {10, "qel_replicationservice.modifyreplicasynchronization.setrcopygroup"},
        {11, "qel_replicationservice.modifyreplicasynchronization.setrcopygroup"},
        {14, "qel_replicationservice.modifyreplicasynchronization.resync"},
        {15, "qel_replicationservice.modifyreplicasynchronization.restore"},
        {20, "qel_replicationservice.modifyreplicasynchronization.setrcopygroup"},
        {21, "qel_replicationservice.modifyreplicasynchronization.split"},
    };
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 0;
    }
    String key;
    int rc = 0;
    if (operation == 19)
    {
        CIMObjectPath sync;
        if (_referenceParam(inParameters, "Synchronization", sync))
        {
            CIMObjectPath volume = _syncedVolume(sync);
            rc = handleDeleteVolumeMethod(volume, key);
        }
    }
    else if (const char* known = _keyOf(keys, operation))
    {
        key = known;
    }
    else
    {
        rc = 3;
    }
    if (rc == 0 && key.size() != 0)
    {
        rc = _authorize(userName, ipAddr, key);
    }
    return rc;
}

// Without an Operation the request is let through unasked (result 0); kept.
// Operation 19 without a target group deletes the synchronized volumes: each
// one is authorized with its own key, starting from the empty key, so a
// volume that is not found is asked with it and refused by the library; a
// choice (docs/module-choices.md).
int authorize_ModifyListSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    static const CodeKey keys[] = {
        {2, "qel_replicationservice.modifylistsynchronization.abort"},
        {8, "qel_replicationservice.modifylistsynchronization.dissolve"},
        {9, "qel_replicationservice.modifylistsynchronization.dissolve"},
        {14, "qel_replicationservice.modifylistsynchronization.resync"},
        {15, "qel_replicationservice.modifylistsynchronization.restore"},
    };
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 0;
    }
    if (operation != 19)
    {
        const char* key = _keyOf(keys, operation);
        return key == NULL ? 3 : _authorize(userName, ipAddr, key);
    }
    CIMValue group;
    if (_paramValue(inParameters, "TargetGroup", group))
    {
        return _authorize(userName, ipAddr, "qel_replicationservice.deletegroup");
    }
    Array<CIMObjectPath> volumes;
    CIMValue syncs;
    if (_paramValue(inParameters, "Synchronization", syncs) &&
        syncs.getType() == CIMTYPE_REFERENCE && syncs.isArray())
    {
        Array<CIMObjectPath> refs;
        syncs.get(refs);
        for (Uint32 i = 0; i < refs.size(); i++)
        {
            volumes.append(_syncedVolume(refs[i]));
        }
    }
    String volumeKey;
    return _authorizeVolumes(userName, ipAddr, volumes, volumeKey);
}

int authorize_ReplicationServiceCapabilitiesMethod(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, "qel_replicationservicecapabilities");
}

int authorize_ModifyStorageSetting_Transient(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, KEY_SET_VOLUME);
}

int authorize_ModifyStorageSetting_Persistent(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, "qel_storagesetting.modifyinstance");
}

int authorize_AllocatedFromStoragePoolModifyInstance(
    const String& userName, const String& ipAddr, const CIMObjectPath& path)
{
    CIMName antecedent = _referenceKey(path, "Antecedent").getClassName();
    CIMName dependent = _referenceKey(path, "Dependent").getClassName();
    if (!dependent.isNull() && dependent.equal("QEL_DynamicStoragePool"))
    {
        return _authorize(userName, ipAddr, "qel_allocatedfromstoragepool.modifyinstance.setcpg");
    }
    if (!antecedent.isNull() && antecedent.equal("QEL_DynamicStoragePool") && !dependent.isNull() &&
        (dependent.equal("QEL_StorageVolume") || dependent.equal("QEL_DeltaReplicaStoragePool")))
    {
        return _authorize(userName, ipAddr, "qel_allocatedfromstoragepool.modifyinstance.setvv");
    }
    return 3;
}

int handleDeleteVolumeMethod(CIMObjectPath& volRef, String& methodName)
{
    api_VVList_t list;
    list.count = 0;
    list.vvs = NULL;
    Uint64 wwn = 0;
    if (!volRef.getClassName().isNull() && _parseVolumeWWN(_lastKeyValue(volRef, "DeviceID"), wwn))
    {
        if (cim_sem_wait() == 0)
        {
            api_getVVs(wwn, &list);
            cim_sem_post();
        }
    }
    if (list.count == 0 || list.vvs == NULL)
    {
        free(list.vvs);
        log_message(2, "Cannot find the volume referenced to in %s\n", QEL_CSTR(volRef.toString()));
        return 0;
    }
    int kind = list.vvs[0].kind;
    free(list.vvs);
    switch (kind)
    {
        case VV_KIND_INVALID:
            log_message(2, "TheElement parameter is invalid\n");
            return 0;
        case VV_KIND_BASE:
            methodName = "qel_storageconfigurationservice.returntostoragepool.basevv";
            return 0;
        case VV_KIND_PHYSICAL_COPY:
            methodName = "qel_storageconfigurationservice.returntostoragepool.physcopyvv";
            return 0;
        case VV_KIND_VIRTUAL_COPY:
            methodName = "qel_storageconfigurationservice.returntostoragepool.virtcopyvv";
            return 0;
        case VV_KIND_OTHER:
            methodName = KEY_RETURN_TO_POOL;
            return 0;
        default:
            return 3;
    }
}

PEGASUS_NAMESPACE_END
