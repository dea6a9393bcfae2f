// QEL_InternalCacheProvider: the one QEL_InternalCache instance and its
// identity methods, answered from the array library's system identity.
#include "QEL_InternalCacheProvider.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/ProviderException.h>

#include <qelapi.h>

#include <cstdio>
#include <cstring>

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName("QEL_InternalCacheProvider");
const char CACHE_CLASS[] = "QEL_InternalCache";
const char CACHE_INSTANCE_ID[] = "localhost-InternalCache";

// Rejects requests for another class than the one served.
void _checkClass(const CIMObjectPath& path)
{
    if (!path.getClassName().equal(CACHE_CLASS))
    {
        throw CIMNotSupportedException(
            ClassName + " does not support class " + path.getClassName().getString());
    }
}

// Rejects requests that name another instance than the one served.
void _checkInstance(const CIMObjectPath& path)
{
    _checkClass(path);
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    if (keys.size() != 1 || !keys[0].getName().equal("InstanceID") ||
        keys[0].getValue() != CACHE_INSTANCE_ID)
    {
        throw CIMObjectNotFoundException(ClassName + " has no instance " + path.toString());
    }
}

// The whole answer of a request served by one object.
template <class Handler, class Object>
void _deliverOne(Handler& handler, const Object& object)
{
    handler.processing();
    handler.deliver(object);
    handler.complete();
}

[[noreturn]] void _notSupported(const char* operation)
{
    throw CIMNotSupportedException(ClassName + " does not support " + String(operation) + ".");
}

api_sysident_t _systemIdentity()
{
    api_sysident_t ident;
    memset(&ident, 0, sizeof(ident));
    int rc = api_getSystemIdentity(&ident);
    if (rc != 0)
    {
        char code[16];
        snprintf(code, sizeof(code), "%d", rc);
        throw CIMOperationFailedException(
            ClassName + " cannot read the system identity: api_getSystemIdentity returned " +
            String(code));
    }
    // The library's texts are fixed-size fields; make sure they end.
    ident.systemName[sizeof(ident.systemName) - 1] = '\0';
    ident.hostName[sizeof(ident.hostName) - 1] = '\0';
    ident.ipv4[sizeof(ident.ipv4) - 1] = '\0';
    ident.ipv6[sizeof(ident.ipv6) - 1] = '\0';
    return ident;
}

}  // anonymous namespace

QEL_InternalCacheProvider::QEL_InternalCacheProvider()
{
}

QEL_InternalCacheProvider::~QEL_InternalCacheProvider()
{
}

void QEL_InternalCacheProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void QEL_InternalCacheProvider::terminate()
{
    delete this;
}

CIMObjectPath QEL_InternalCacheProvider::buildObjectPath()
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", CACHE_INSTANCE_ID, CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), CACHE_CLASS, keys);
}

CIMInstance QEL_InternalCacheProvider::buildInstance()
{
    CIMInstance instance(CACHE_CLASS);
    instance.addProperty(CIMProperty("InstanceID", CIMValue(String(CACHE_INSTANCE_ID))));
    instance.setPath(buildObjectPath());
    return instance;
}

CIMParamValue QEL_InternalCacheProvider::answerIdentityMethod(const CIMName& methodName)
{
    if (methodName.equal("GetSystemName"))
    {
        return CIMParamValue("SystemName", CIMValue(String(_systemIdentity().systemName)));
    }
    if (methodName.equal("GetSystemHostName"))
    {
        return CIMParamValue("SystemHostName", CIMValue(String(_systemIdentity().hostName)));
    }
    if (methodName.equal("GetSystemID"))
    {
        return CIMParamValue("SystemID", CIMValue(Uint32(_systemIdentity().systemID)));
    }
    if (methodName.equal("GetSystemType"))
    {
        return CIMParamValue("SystemType", CIMValue(Sint32(_systemIdentity().systemType)));
    }
    if (methodName.equal("GetSystemAddress"))
    {
        return CIMParamValue("SystemAddress", CIMValue(String(_systemIdentity().ipv4)));
    }
    if (methodName.equal("IsQuadPortSystem"))
    {
        return CIMParamValue(
            "IsQuadPort", CIMValue(Uint8(_systemIdentity().quadPort != 0 ? 1 : 0)));
    }
    throw CIMMethodNotFoundException(
        ClassName + " does not support method " + methodName.getString());
}

void QEL_InternalCacheProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _checkInstance(instanceReference);
    _deliverOne(handler, buildInstance());
}

void QEL_InternalCacheProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _checkClass(classReference);
    _deliverOne(handler, buildInstance());
}

void QEL_InternalCacheProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    _checkClass(classReference);
    _deliverOne(handler, buildObjectPath());
}

void QEL_InternalCacheProvider::modifyInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const CIMInstance& instanceObject, const Boolean includeQualifiers,
    const CIMPropertyList& propertyList, ResponseHandler& handler)
{
    _notSupported("modifyInstance");
}

void QEL_InternalCacheProvider::createInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const CIMInstance& instanceObject, ObjectPathResponseHandler& handler)
{
    _notSupported("createInstance");
}

void QEL_InternalCacheProvider::deleteInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    ResponseHandler& handler)
{
    _notSupported("deleteInstance");
}

void QEL_InternalCacheProvider::invokeMethod(
    const OperationContext& context, const CIMObjectPath& objectReference,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    _checkInstance(objectReference);
    CIMParamValue answer = answerIdentityMethod(methodName);
    handler.processing();
    handler.deliverParamValue(answer);
    handler.deliver(CIMValue(Uint32(0)));
    handler.complete();
}

PEGASUS_NAMESPACE_END
