// QEL_Common: the storage system's identity, asked of the internal cache
// service of the same CIM server, and the well-known instances of the array.
#include "QEL_Common.h"
#include "QEL_Common_Internal.h"
#include "QEL_InternalCacheService.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Client/CIMClient.h>

PEGASUS_NAMESPACE_BEGIN

using namespace QEL_CommonInternal;

namespace
{

const char INTERNAL_NAMESPACE[] = "root/PG_Internal";
const char INTERNAL_CACHE_CLASS[] = "QEL_InternalCache";

// Invokes one identity method of the internal cache on the local connection;
// with a handle, a failure of the local call is retried once through it.
void _invokeIdentity(CIMOMHandle* cimom, const char* methodName, Array<CIMParamValue>& outParams)
{
    CIMObjectPath cachePath = QEL_Common::buildInternalCacheObjectPath("localhost", "localhost");
    Array<CIMParamValue> inParams;
    if (cimom == NULL)
    {
        QEL_Common::invokeMethod(INTERNAL_NAMESPACE, cachePath, methodName, inParams, outParams);
        return;
    }
    try
    {
        QEL_Common::invokeMethod(INTERNAL_NAMESPACE, cachePath, methodName, inParams, outParams);
    }
    catch (...)
    {
        OperationContext context;
        cimom->invokeMethod(
            context, INTERNAL_NAMESPACE, cachePath, methodName, inParams, outParams);
    }
}

// Takes the answer from the first output parameter only, and only when it has
// the expected name (any letter case) and a value; otherwise result is kept.
template <class T>
void _takeAnswer(const Array<CIMParamValue>& outParams, const char* expectedName, T& result)
{
    if (outParams.size() == 0)
    {
        return;
    }
    if (!String::equalNoCase(outParams[0].getParameterName(), expectedName))
    {
        return;
    }
    CIMValue v = outParams[0].getValue();
    if (!v.isNull())
    {
        v.get(result);
    }
}

template <class T>
T _askIdentity(CIMOMHandle* cimom, const char* methodName, const char* expectedName, T startValue)
{
    T result = startValue;
    Array<CIMParamValue> outParams;
    _invokeIdentity(cimom, methodName, outParams);
    _takeAnswer(outParams, expectedName, result);
    return result;
}

// A well-known instance of the array located by enumeration.
struct WellKnownInstance
{
    const char* className;
    const char* tracePrefix;
    const char* entryTrace;  // null: none
    const char* exitTrace;   // null: none
    const char* failureTrace;
    Boolean catchFallbackFailure;
};

CIMObjectPath _locateWellKnown(CIMOMHandle& cimom, const WellKnownInstance& wk)
{
    if (wk.entryTrace != NULL)
    {
        log_message(4, "%s", wk.entryTrace);
    }
    CIMObjectPath result;
    Array<CIMObjectPath> paths;
    Boolean tryCimom = false;
    try
    {
        paths = QEL_Common::enumerateInstanceNames(ARRAY_NAMESPACE, wk.className);
    }
    catch (const CIMException& e)
    {
        log_message(2, "%s: %s. Trying via cimom.\n", wk.tracePrefix, QEL_CSTR(e.getMessage()));
        tryCimom = true;
    }
    catch (...)
    {
        log_message(2, "%s: Unknown exception! Trying via cimom\n", wk.tracePrefix);
        tryCimom = true;
    }
    if (tryCimom)
    {
        OperationContext context;
        if (!wk.catchFallbackFailure)
        {
            paths = cimom.enumerateInstanceNames(context, ARRAY_NAMESPACE, wk.className);
        }
        else
        {
            try
            {
                paths = cimom.enumerateInstanceNames(context, ARRAY_NAMESPACE, wk.className);
            }
            catch (const CIMException& e)
            {
                log_message(2, "%s: %s.\n", wk.tracePrefix, QEL_CSTR(e.getMessage()));
                paths.clear();
            }
            catch (...)
            {
                log_message(2, "%s: Unknown exception in cimom!\n", wk.tracePrefix);
                paths.clear();
            }
        }
    }
    if (paths.size() == 0)
    {
        log_message(2, "%s", wk.failureTrace);
        return result;
    }
    result = paths[0];
    result.setHost(QEL_Common::getSystemHostName(cimom));
    result.setNameSpace(ARRAY_NAMESPACE);
    if (wk.exitTrace != NULL)
    {
        log_message(4, "%s", wk.exitTrace);
    }
    return result;
}

}  // anonymous namespace

// Takes a handle it never uses: no fall-back, by design of this version.
String QEL_Common::getSystemHostName(CIMOMHandle& cimom)
{
    return _askIdentity<String>(NULL, "GetSystemHostName", "SystemHostName", String());
}

String QEL_Common::getSystemName()
{
    return _askIdentity<String>(NULL, "GetSystemName", "SystemName", String());
}

String QEL_Common::getSystemName(CIMOMHandle& cimom)
{
    return _askIdentity<String>(&cimom, "GetSystemName", "SystemName", String());
}

// 0 when no answer comes, for the three numeric answers: a choice.
Uint32 QEL_Common::getSystemID()
{
    return _askIdentity<Uint32>(NULL, "GetSystemID", "SystemID", 0);
}

Sint32 QEL_Common::getSystemType()
{
    return _askIdentity<Sint32>(NULL, "GetSystemType", "SystemType", 0);
}

Uint8 QEL_Common::isQuadPortSystem(CIMOMHandle& cimom)
{
    return _askIdentity<Uint8>(&cimom, "IsQuadPortSystem", "IsQuadPort", 0);
}

String QEL_Common::getSystemAddress(CIMOMHandle& cimom)
{
    return _askIdentity<String>(&cimom, "GetSystemAddress", "SystemAddress", String());
}

// The three locators differ in their traces and in whether a failure of the
// handle's enumeration is caught; the package variant writes no entry or exit
// trace. Both differences are intended.
CIMObjectPath QEL_Common::getSystemObjectPath(CIMOMHandle& cimom)
{
    static const WellKnownInstance wk = {
        "QEL_StorageSystem",
        "QEL_Common::getSystemObjectPath",
        "-->QEL_Common::getSystemObjectPath()\n",
        "<--QEL_Common::getSystemObjectPath()\n",
        "cannot get at system object path\n",
        false};
    return _locateWellKnown(cimom, wk);
}

CIMObjectPath QEL_Common::getSystemPkgObjectPath(CIMOMHandle& cimom)
{
    static const WellKnownInstance wk = {
        "QEL_SystemPackage",
        "QEL_Common::getSystemPkgObjectPath",
        NULL,
        NULL,
        "cannot get at system pkg object path\n",
        true};
    return _locateWellKnown(cimom, wk);
}

CIMObjectPath QEL_Common::getSystemViewObjectPath(CIMOMHandle& cimom)
{
    static const WellKnownInstance wk = {
        "QEL_StorageSystemView",
        "QEL_Common::getSystemViewObjectPath",
        "-->QEL_Common::getSystemViewObjectPath()\n",
        "<--QEL_Common::getSystemViewObjectPath()\n",
        "cannot get at system view object path\n",
        true};
    return _locateWellKnown(cimom, wk);
}

Uint32 QEL_Common::getPolicy()
{
    return QEL_InternalCacheService::getInstance()->getPolicy();
}

void QEL_Common::setPolicy(Uint32 policy)
{
    QEL_InternalCacheService::getInstance()->setPolicy(policy);
}

Array<CIMObjectPath>
QEL_Common::enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    log_message(4, "-->QEL_Common::enumerateInstanceNames()\n");
    CIMClient client;
    client.connectLocal();
    Array<CIMObjectPath> paths = client.enumerateInstanceNames(nameSpace, className);
    client.disconnect();
    log_message(4, "<--QEL_Common::enumerateInstanceNames()\n");
    return paths;
}

CIMValue QEL_Common::invokeMethod(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters)
{
    log_message(4, "-->QEL_Common::invokeMethod()\n");
    CIMClient client;
    client.connectLocal();
    CIMValue returnValue =
        client.invokeMethod(nameSpace, instanceName, methodName, inParameters, outParameters);
    client.disconnect();
    log_message(4, "<--QEL_Common::invokeMethod()\n");
    return returnValue;
}

CIMObjectPath
QEL_Common::buildInternalCacheObjectPath(const String& hostAddr, const String& systemName)
{
    Array<CIMKeyBinding> keys;
    keys.append(
        CIMKeyBinding("InstanceID", systemName + String("-InternalCache"), CIMKeyBinding::STRING));
    return CIMObjectPath(hostAddr, INTERNAL_NAMESPACE, INTERNAL_CACHE_CLASS, keys);
}

PEGASUS_NAMESPACE_END
