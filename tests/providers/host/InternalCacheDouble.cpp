#include "InternalCacheDouble.h"

#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Common/Exception.h>

#include <qelapi.h>

#include <cstring>
#include <memory>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

namespace
{

const char CACHE_NAMESPACE[] = "root/PG_Internal";
const char CACHE_CLASS[] = "QEL_InternalCache";
const char CACHE_INSTANCE_ID[] = "localhost-InternalCache";

CIMException notServed(const char* operation)
{
    return CIMException(CIM_ERR_NOT_SUPPORTED,
        String("the provider test host's local connection serves only the "
               "internal cache methods, not ") + operation);
}

// A local connection that reaches only the internal cache service.
class LocalTransport : public ClientTransport
{
public:
    void setTimeout(Uint32) override {}

    CIMClass getClass(const CIMNamespaceName&, const CIMName&, Boolean, Boolean,
        Boolean, const CIMPropertyList&) override
    {
        throw notServed("getClass");
    }
    CIMInstance getInstance(const CIMNamespaceName&, const CIMObjectPath&,
        Boolean, Boolean, Boolean, const CIMPropertyList&) override
    {
        throw notServed("getInstance");
    }
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName&, const CIMName&,
        Boolean, Boolean, Boolean, Boolean, const CIMPropertyList&) override
    {
        throw notServed("enumerateInstances");
    }
    Array<CIMObjectPath> enumerateInstanceNames(
        const CIMNamespaceName&, const CIMName&) override
    {
        throw notServed("enumerateInstanceNames");
    }
    CIMObjectPath createInstance(const CIMNamespaceName&, const CIMInstance&) override
    {
        throw notServed("createInstance");
    }
    void modifyInstance(const CIMNamespaceName&, const CIMInstance&, Boolean,
        const CIMPropertyList&) override
    {
        throw notServed("modifyInstance");
    }
    void deleteInstance(const CIMNamespaceName&, const CIMObjectPath&) override
    {
        throw notServed("deleteInstance");
    }
    Array<CIMObject> associators(const CIMNamespaceName&, const CIMObjectPath&,
        const CIMName&, const CIMName&, const String&, const String&, Boolean,
        Boolean, const CIMPropertyList&) override
    {
        throw notServed("associators");
    }
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName&,
        const CIMObjectPath&, const CIMName&, const CIMName&, const String&,
        const String&) override
    {
        throw notServed("associatorNames");
    }
    Array<CIMObject> references(const CIMNamespaceName&, const CIMObjectPath&,
        const CIMName&, const String&, Boolean, Boolean,
        const CIMPropertyList&) override
    {
        throw notServed("references");
    }
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName&,
        const CIMObjectPath&, const CIMName&, const String&) override
    {
        throw notServed("referenceNames");
    }

    CIMValue invokeMethod(const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>&, Array<CIMParamValue>& outParameters) override
    {
        if (!InternalCacheDouble::addresses(nameSpace, instanceName))
        {
            throw notServed("invokeMethod on other classes");
        }
        return InternalCacheDouble::instance().invoke(
            "local", instanceName, methodName, outParameters);
    }
};

} // namespace

InternalCacheDouble& InternalCacheDouble::instance()
{
    static InternalCacheDouble double_;
    return double_;
}

void InternalCacheDouble::install()
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (_installed)
    {
        return;
    }
    _installed = true;
    setLocalTransportFactory([](Uint32) -> std::unique_ptr<ClientTransport> {
        if (InternalCacheDouble::instance().refusingLocalConnections())
        {
            throw CannotConnectException(
                "the provider test host refuses local connections");
        }
        return std::unique_ptr<ClientTransport>(new LocalTransport());
    });
}

bool InternalCacheDouble::addresses(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    return nameSpace == CIMNamespaceName(CACHE_NAMESPACE) &&
        instanceName.getClassName() == CIMName(CACHE_CLASS);
}

CIMValue InternalCacheDouble::invoke(
    const char* via,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    Array<CIMParamValue>& outParameters)
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _calls.push_back(std::string(via) + ":" +
            (const char*)methodName.getString().getCString());
    }

    const Array<CIMKeyBinding>& keys = instanceName.getKeyBindings();
    if (keys.size() != 1 || keys[0].getName() != CIMName("InstanceID") ||
        keys[0].getValue() != CACHE_INSTANCE_ID)
    {
        throw CIMException(CIM_ERR_NOT_FOUND,
            "no internal cache instance " + instanceName.toString());
    }

    api_sysident_t ident;
    std::memset(&ident, 0, sizeof(ident));
    if (api_getSystemIdentity(&ident) != 0)
    {
        throw CIMException(CIM_ERR_FAILED,
            "the simulated array gave no system identity");
    }

    if (methodName == CIMName("GetSystemHostName"))
    {
        outParameters.append(CIMParamValue("SystemHostName", CIMValue(String(ident.hostName))));
    }
    else if (methodName == CIMName("GetSystemName"))
    {
        outParameters.append(CIMParamValue("SystemName", CIMValue(String(ident.systemName))));
    }
    else if (methodName == CIMName("GetSystemID"))
    {
        outParameters.append(CIMParamValue("SystemID", CIMValue(Uint32(ident.systemID))));
    }
    else if (methodName == CIMName("GetSystemType"))
    {
        outParameters.append(CIMParamValue("SystemType", CIMValue(Sint32(ident.systemType))));
    }
    else if (methodName == CIMName("GetSystemAddress"))
    {
        outParameters.append(CIMParamValue("SystemAddress", CIMValue(String(ident.ipv4))));
    }
    else if (methodName == CIMName("IsQuadPortSystem"))
    {
        outParameters.append(CIMParamValue("IsQuadPort", CIMValue(Uint8(ident.quadPort))));
    }
    else
    {
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND,
            "QEL_InternalCache has no method " + methodName.getString());
    }
    return CIMValue(Uint32(0));
}

void InternalCacheDouble::refuseLocalConnections(bool refuse)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _refuse = refuse;
}

bool InternalCacheDouble::refusingLocalConnections()
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _refuse;
}

std::vector<std::string> InternalCacheDouble::calls()
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls;
}

void InternalCacheDouble::clearCalls()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _calls.clear();
}

} // namespace qeltest
