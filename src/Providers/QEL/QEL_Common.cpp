// QEL_Common: typed property and parameter access, the storage system's
// identity, object-path matching and association building, value
// conversions, and the method authorization keys of the provider set.
#include "QEL_Common.h"
#include "QEL_InternalCacheService.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Client/CIMClient.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

PEGASUS_NAMESPACE_BEGIN

// UTF-8 text of a String for the printf-style traces; the temporary lives to
// the end of the full expression that contains the call.
#define QEL_CSTR(s) ((const char*)(s).getCString())

namespace
{

const char INTERNAL_NAMESPACE[] = "root/PG_Internal";
const char INTERNAL_CACHE_CLASS[] = "QEL_InternalCache";
const char ARRAY_NAMESPACE[] = "root/qel";

// Index of the property named `name`, or PEG_NOT_FOUND. A text that is no
// legal CIM name cannot name a property, so it is absent rather than an error.
Uint32 _findProperty(const CIMInstance& instance, const String& name)
{
    if (!CIMName::legal(name))
    {
        return PEG_NOT_FOUND;
    }
    return instance.findProperty(CIMName(name));
}

// The getProperty algorithm shared by every overload: 3 absent, 4 null,
// else 0 after the typed extraction (whose type mismatch passes through).
template <class T>
Uint32 _readProperty(CIMInstance& instance, const String& propertyName, T& value)
{
    Uint32 pos = _findProperty(instance, propertyName);
    if (pos == PEG_NOT_FOUND)
    {
        return QEL_PROPERTY_ABSENT;
    }
    CIMValue v = instance.getProperty(pos).getValue();
    if (v.isNull())
    {
        return QEL_PROPERTY_NULL;
    }
    v.get(value);
    return QEL_PROPERTY_FOUND;
}

// The getParameter algorithm shared by every overload. A null entry does not
// stop the walk, and a parameter that is only null ends as 3, not 4: the
// asymmetry with getProperty is intended, callers treat both as "not given".
template <class T>
Uint32 _readParameter(const Array<CIMParamValue>& paramList, const String& paramName, T& paramValue)
{
    Boolean found = false;
    Uint32 result = QEL_PROPERTY_FOUND;
    for (Uint32 i = 0; i < paramList.size(); i++)
    {
        if (!String::equalNoCase(paramList[i].getParameterName(), paramName))
        {
            continue;
        }
        CIMValue v = paramList[i].getValue();
        if (v.isNull())
        {
            result = QEL_PROPERTY_NULL;
            continue;
        }
        v.get(paramValue);
        found = true;
        result = QEL_PROPERTY_FOUND;
        break;
    }
    if (!found)
    {
        result = QEL_PROPERTY_ABSENT;
    }
    return result;
}

// Value text of the key binding named `name` (any letter case) as it stands,
// whatever its type; with several of that name the last one wins.
String _lastKeyValue(const CIMObjectPath& path, const String& name)
{
    String result;
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (String::equalNoCase(keys[i].getName().getString(), name))
        {
            result = keys[i].getValue();
        }
    }
    return result;
}

template <class T>
void _writeProperty(CIMInstance& instance, const CIMName& propertyName, const T& value)
{
    Uint32 pos = instance.findProperty(propertyName);
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(CIMValue(value));
    }
}

// Copies src into a fixed-size field, at most size - 1 characters and always
// terminated; a null src empties the field.
void _copyField(char* field, size_t size, const char* src)
{
    field[0] = '\0';
    if (src != NULL)
    {
        strncat(field, src, size - 1);
    }
}

}  // anonymous namespace

// ===========================================================================
// Property and parameter accessors
// ===========================================================================

// The CIMObjectPath reader carries the Array<String> reader's trace texts;
// kept as they are, the array's trace readers expect them.
Uint32
QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, CIMObjectPath& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(Array<String>), propertyName = %s\n",
        QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(
        4, "<--QEL_Common::getProperty(Array<String>), value = %s\n", QEL_CSTR(value.toString()));
    return rc;
}

Uint32
QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<String>& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(Array<String>), propertyName = %s\n",
        QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    for (Uint32 i = 0; i < value.size(); i++)
    {
        log_message(
            4, "<--QEL_Common::getProperty(Array<String>), value = %s\n", QEL_CSTR(value[i]));
    }
    return rc;
}

Uint32
QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<Sint32>& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(Array<Sint32>), propertyName = %s\n",
        QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(Array<Sint32>)\n");
    return rc;
}

Uint32
QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Array<Uint16>& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(Array<Uint16>), propertyName = %s\n",
        QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(Array<Uint16>)\n");
    return rc;
}

Uint32 QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint64& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(uint64), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(uint64), value = %llu\n", (unsigned long long)value);
    return rc;
}

Uint32 QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint32& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(uint32), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(uint32), value = %d\n", (int)value);
    return rc;
}

Uint32 QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint16& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(uint16), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(uint16), value = %d\n", (int)value);
    return rc;
}

Uint32 QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Uint8& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(uint8), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(uint8), value = %d\n", (int)value);
    return rc;
}

Uint32 QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, Boolean& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(Boolean), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(4, "<--QEL_Common::getProperty(Boolean), value = %d\n", (int)value);
    return rc;
}

Uint32
QEL_Common::getProperty(CIMInstance& instance, const String& propertyName, CIMDateTime& value)
{
    log_message(
        4, "-->QEL_Common::getProperty(CIMDateTime), propertyName = %s\n", QEL_CSTR(propertyName));
    Uint32 rc = _readProperty(instance, propertyName, value);
    log_message(
        4, "<--QEL_Common::getProperty(CIMDateTime), value = %s\n", QEL_CSTR(value.toString()));
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Uint8& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint8), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint8), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Uint16& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint16), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint16), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Array<Uint16>& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(Array<Uint16>), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Array<Uint16>)\n");
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Uint32& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint32), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint32), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Uint64& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint64), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(
        4, "<--QEL_Common::getParameter(Uint64), paramValue = %llu\n",
        (unsigned long long)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Boolean& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Boolean), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Boolean), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    CIMDateTime& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(CIMDateTime), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(
        4, "<--QEL_Common::getParameter(CIMDateTime), paramValue = %s\n",
        QEL_CSTR(paramValue.toString()));
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    CIMObjectPath& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(CIMObjectPath), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(
        4, "<--QEL_Common::getParameter(CIMObjectPath), paramValue = %s\n",
        QEL_CSTR(paramValue.toString()));
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    String& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(String), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(String), paramValue = %s\n", QEL_CSTR(paramValue));
    return rc;
}

// The exit trace has no line end; kept as the array's trace readers expect.
Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList,
    const String& paramName,
    Array<String>& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(Array<String>), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Array<String>)");
    return rc;
}

String QEL_Common::getStringProperty(const CIMInstance& instance, const String& propertyName)
{
    log_message(
        4, "-->QEL_Common::getStringProperty(), propertyName = %s\n", QEL_CSTR(propertyName));
    if (propertyName.size() == 0 || instance.isUninitialized())
    {
        log_message(3, "\tInvalid property name.\n");
        return String();
    }
    String result;
    Uint32 pos = _findProperty(instance, propertyName);
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).getValue().get(result);
    }
    log_message(4, "<--QEL_Common::getStringProperty(), value = %s\n", QEL_CSTR(result));
    return result;
}

String QEL_Common::getStringProperty(const CIMObjectPath& objectPath, const String& propertyName)
{
    log_message(
        4, "-->QEL_Common::getStringProperty(), propertyName = %s\n", QEL_CSTR(propertyName));
    String result = _lastKeyValue(objectPath, propertyName);
    log_message(4, "<--QEL_Common::getStringProperty(), value = %s\n", QEL_CSTR(result));
    return result;
}

// Carries the getStringProperty trace texts; kept as the array's trace
// readers expect them.
CIMValue QEL_Common::getPropertyValue(const CIMInstance& instance, const String& propertyName)
{
    log_message(
        4, "-->QEL_Common::getStringProperty(), propertyName = %s\n", QEL_CSTR(propertyName));
    if (propertyName.size() == 0 || instance.isUninitialized())
    {
        log_message(3, "\tInvalid property name.\n");
        return CIMValue();
    }
    CIMValue result;
    Uint32 pos = _findProperty(instance, propertyName);
    if (pos != PEG_NOT_FOUND)
    {
        result = instance.getProperty(pos).getValue();
    }
    log_message(4, "<--QEL_Common::getStringProperty()\n");
    return result;
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const String& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const char* value)
{
    _writeProperty(instance, propertyName, String(value));
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Boolean& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint8& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint16& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint32& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint64& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(CIMInstance& instance, CIMName propertyName, const Sint16& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<String>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<Uint16>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<Sint32>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<Uint64>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<Boolean>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const Array<CIMDateTime>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const CIMObjectPath& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const CIMDateTime& value)
{
    _writeProperty(instance, propertyName, value);
}

// An embedded instance replaces the property (a typed instance value cannot
// be set on a property declared as a string holding embedded text).
void QEL_Common::setPropertyValue(
    CIMInstance& instance,
    CIMName propertyName,
    const CIMInstance& value)
{
    Uint32 pos = instance.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
    {
        return;
    }
    instance.removeProperty(pos);
    instance.addProperty(
        CIMProperty(propertyName, CIMValue(value), 0, CIMName(), CIMName(), false));
}

void QEL_Common::setPropertyValueToNull(
    CIMInstance& instance,
    CIMName propertyName,
    CIMType cimtype)
{
    CIMValue nullValue;
    nullValue.setNullValue(cimtype, false, 0);
    Uint32 pos = instance.findProperty(propertyName);
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(nullValue);
    }
}

// The leading underscore in the traces is intended.
CIMInstance QEL_Common::buildInstanceSkeleton(CIMClass& myClass)
{
    log_message(4, "-->QEL_Common::_buildInstanceSkeleton()\n");
    CIMInstance skeleton = myClass.buildInstance(true, true, CIMPropertyList());
    log_message(4, "<--QEL_Common::_buildInstanceSkeleton()\n");
    return skeleton;
}

CIMClass QEL_Common::getStoredCIMClass(
    CIMOMHandle& cimom,
    const OperationContext& context,
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return QEL_InternalCacheService::getInstance()->getStoredCIMClass(
        cimom, context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

// ===========================================================================
// Storage-system identity
// ===========================================================================

namespace
{

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
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
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

// ===========================================================================
// Object-path matching and association building
// ===========================================================================

namespace
{

// One level of normalisation: a string or reference key whose text parses as
// an object path becomes a reference to that path without its host.
Array<CIMKeyBinding> _normaliseKeys(const Array<CIMKeyBinding>& keys)
{
    Array<CIMKeyBinding> result = keys;
    for (Uint32 i = 0; i < result.size(); i++)
    {
        CIMKeyBinding& kb = result[i];
        if (kb.getType() != CIMKeyBinding::STRING && kb.getType() != CIMKeyBinding::REFERENCE)
        {
            continue;
        }
        if (kb.getValue().size() == 0)
        {
            continue;
        }
        try
        {
            CIMObjectPath parsed(kb.getValue());
            CIMObjectPath hostless(
                String(), parsed.getNameSpace(), parsed.getClassName(), parsed.getKeyBindings());
            kb.setValue(hostless.toString());
            kb.setType(CIMKeyBinding::REFERENCE);
        }
        catch (...)
        {
            // Not an object path (a WWN text, say): compared as it stands.
        }
    }
    return result;
}

CIMObjectPath _comparisonPath(const CIMObjectPath& path)
{
    try
    {
        return CIMObjectPath(
            String(), path.getNameSpace(), path.getClassName(),
            _normaliseKeys(path.getKeyBindings()));
    }
    catch (...)
    {
        // The path's own bindings were accepted once; compare them unchanged.
        return CIMObjectPath(
            String(), path.getNameSpace(), path.getClassName(), path.getKeyBindings());
    }
}

// The path a reference property names, without host and namespace.
CIMObjectPath _bareReference(const CIMObjectPath& ref)
{
    return CIMObjectPath(String(), CIMNamespaceName(), ref.getClassName(), ref.getKeyBindings());
}

Boolean _roleMatches(const String& role, const CIMName& propertyName)
{
    return role.size() == 0 || String::equalNoCase(role, propertyName.getString());
}

CIMObjectPath _rehost(const CIMObjectPath& path, const String& host)
{
    CIMObjectPath copy = path;
    copy.setHost(host);
    return copy;
}

CIMObjectPath _assocPath(
    const String& host,
    const CIMNamespaceName& nameSpace,
    const CIMName& assocClass,
    const CIMName* names,
    const CIMObjectPath* ends,
    Uint32 count)
{
    Array<CIMKeyBinding> keys;
    for (Uint32 i = 0; i < count; i++)
    {
        keys.append(CIMKeyBinding(names[i], ends[i].toString(), CIMKeyBinding::REFERENCE));
    }
    return CIMObjectPath(host, nameSpace, assocClass, keys);
}

CIMInstance _assocInstance(
    const CIMClass& classSkeleton,
    const CIMName* names,
    const CIMObjectPath* ends,
    Uint32 count,
    const CIMObjectPath& path)
{
    CIMClass cls = classSkeleton;
    CIMInstance instance = QEL_Common::buildInstanceSkeleton(cls);
    for (Uint32 i = 0; i < count; i++)
    {
        QEL_Common::setPropertyValue(instance, names[i], ends[i]);
    }
    instance.setPath(path);
    return instance;
}

// Calls visit(property name, referenced path) for every non-null reference
// property of the association instance that does not name the source end.
template <class Visit>
void _forEachFarEnd(
    const CIMInstance& assocInstance,
    const CIMObjectPath& targetObjectPath,
    Visit visit)
{
    for (Uint32 i = 0; i < assocInstance.getPropertyCount(); i++)
    {
        CIMConstProperty prop = assocInstance.getProperty(i);
        if (prop.getType() != CIMTYPE_REFERENCE || prop.isArray())
        {
            continue;
        }
        CIMValue v = prop.getValue();
        if (v.isNull())
        {
            continue;
        }
        CIMObjectPath value;
        v.get(value);
        if (QEL_Common::matchObjectPath(targetObjectPath, value))
        {
            continue;
        }
        visit(prop.getName(), value);
    }
}

// Appends, for one far end, once per entry of resultClass naming its class
// (or once when resultClass is empty) if the role allows it.
template <class Append>
void _selectFarEnd(
    const CIMName& propertyName,
    const CIMObjectPath& value,
    const Array<CIMName>& resultClass,
    const String& resultRole,
    Append append)
{
    if (resultClass.size() == 0)
    {
        if (_roleMatches(resultRole, propertyName))
        {
            append(value);
        }
        return;
    }
    // A class named twice yields the end twice; intended.
    for (Uint32 j = 0; j < resultClass.size(); j++)
    {
        if (resultClass[j].equal(value.getClassName()) && _roleMatches(resultRole, propertyName))
        {
            append(value);
        }
    }
}

}  // anonymous namespace

Boolean QEL_Common::matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2)
{
    return _comparisonPath(path1).identical(_comparisonPath(path2));
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref,
    const CIMNamespaceName& nameSpace,
    const String& systemAddress)
{
    if (ref.getNameSpace().isNull())
    {
        ref.setNameSpace(nameSpace);
    }
    else if (!ref.getNameSpace().equal(nameSpace))
    {
        log_message(
            2, "The ref param %s contains the wrong name space %s\n", QEL_CSTR(ref.toString()),
            QEL_CSTR(ref.getNameSpace().getString()));
        return false;
    }
    const String host = ref.getHost();
    if (host.size() == 0)
    {
        return true;
    }
    if (String::equalNoCase(host, systemAddress))
    {
        return true;
    }
    if (host == getSystemIPAddr(1))
    {
        return true;
    }
    // Object paths bracket an IPv6 host; the validator takes the bare address.
    String address = host;
    if (address.size() > 2 && address[0] == '[' && address[address.size() - 1] == ']')
    {
        address = address.subString(1, address.size() - 2);
    }
    char canonical[46];
    memset(canonical, 0, sizeof(canonical));
    if (validateConvertIP(QEL_CSTR(address), canonical) == AF_INET6)
    {
        canonical[sizeof(canonical) - 1] = '\0';
        if (String(canonical) == getSystemIPAddr(2))
        {
            return true;
        }
    }
    log_message(2, "The ref host [%s] does not match for this host!\n", QEL_CSTR(host));
    return false;
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref,
    const CIMNamespaceName& nameSpace,
    const String& systemAddress,
    const CIMName& expectedClass)
{
    if (!verifyRefMethodParam(ref, nameSpace, systemAddress))
    {
        return false;
    }
    return ref.getClassName().equal(expectedClass);
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref,
    const CIMNamespaceName& nameSpace,
    const String& systemAddress,
    const Array<CIMName>& expectedClasses)
{
    if (!verifyRefMethodParam(ref, nameSpace, systemAddress))
    {
        return false;
    }
    return isPartOfArray(ref.getClassName(), expectedClasses);
}

Boolean QEL_Common::_isInstanceValidReference(
    const CIMObjectPath& target,
    const CIMInstance& instance,
    const String& role)
{
    if (role.size() != 0)
    {
        Uint32 pos = _findProperty(instance, role);
        if (pos == PEG_NOT_FOUND || instance.getProperty(pos).getType() != CIMTYPE_REFERENCE)
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER, String());
        }
    }
    for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
    {
        CIMConstProperty prop = instance.getProperty(i);
        if (prop.getType() != CIMTYPE_REFERENCE || prop.isArray())
        {
            continue;
        }
        CIMValue v = prop.getValue();
        if (v.isNull())
        {
            continue;
        }
        CIMObjectPath ref;
        v.get(ref);
        if (_roleMatches(role, prop.getName()) && matchObjectPath(target, _bareReference(ref)))
        {
            return true;
        }
    }
    return false;
}

Array<CIMInstance> QEL_Common::filterReferenceNames(
    const Array<CIMInstance>& targetAssociationInstanceList,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    CIMObjectPath target = _bareReference(objectName);
    Array<CIMInstance> kept;
    for (Uint32 i = 0; i < targetAssociationInstanceList.size(); i++)
    {
        const CIMInstance& instance = targetAssociationInstanceList[i];
        if ((resultClass.isNull() || resultClass.equal(instance.getClassName())) &&
            _isInstanceValidReference(target, instance, role))
        {
            kept.append(instance);
        }
    }
    return kept;
}

Array<CIMObjectPath> QEL_Common::filterAssocInstanceToTargetPaths(
    const CIMInstance& assocInstance,
    const CIMObjectPath& targetObjectPath,
    const Array<CIMName>& resultClass,
    const String& resultRole)
{
    Array<CIMObjectPath> result;
    _forEachFarEnd(
        assocInstance, targetObjectPath,
        [&](const CIMName& name, const CIMObjectPath& value)
        {
            _selectFarEnd(
                name, value, resultClass, resultRole,
                [&](const CIMObjectPath& v) { result.append(v); });
        });
    return result;
}

Array<CIMInstance> QEL_Common::filterAssocInstanceToTargetInstances(
    const CIMInstance& assocInstance,
    const CIMObjectPath& targetObjectPath,
    const Array<CIMInstance>& resultInstanceList,
    const Array<CIMName>& resultClass,
    const String& resultRole)
{
    Array<CIMInstance> result;
    _forEachFarEnd(
        assocInstance, targetObjectPath,
        [&](const CIMName& name, const CIMObjectPath& value)
        {
            _selectFarEnd(
                name, value, resultClass, resultRole,
                [&](const CIMObjectPath& v)
                {
                    for (Uint32 k = 0; k < resultInstanceList.size(); k++)
                    {
                        if (matchObjectPath(v, resultInstanceList[k].getPath()))
                        {
                            result.append(resultInstanceList[k]);
                        }
                    }
                });
        });
    return result;
}

Boolean QEL_Common::isPoolPath(const CIMObjectPath& objectName, const String& instanceID)
{
    const Array<CIMKeyBinding>& keys = objectName.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (String::equalNoCase(keys[i].getValue(), instanceID))
        {
            return true;
        }
    }
    return false;
}

// Unlike buildAssocPath, the ends are used as given (no re-hosting) and the
// namespace is fixed; intended.
CIMObjectPath QEL_Common::buildDepAssocPath(
    const String& systemAddress,
    const CIMName& assocClass,
    const CIMObjectPath& antecedent,
    const CIMObjectPath& dependent)
{
    const CIMName names[2] = {"Antecedent", "Dependent"};
    const CIMObjectPath ends[2] = {antecedent, dependent};
    return _assocPath(systemAddress, ARRAY_NAMESPACE, assocClass, names, ends, 2);
}

CIMInstance QEL_Common::buildDepAssocInstance(
    const String& systemAddress,
    const CIMName& assocClass,
    const CIMObjectPath& antecedent,
    const CIMObjectPath& dependent,
    const CIMClass& classSkeleton)
{
    const CIMName names[2] = {"Antecedent", "Dependent"};
    const CIMObjectPath ends[2] = {antecedent, dependent};
    return _assocInstance(
        classSkeleton, names, ends, 2,
        buildDepAssocPath(systemAddress, assocClass, antecedent, dependent));
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    return buildAssocPath(
        assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress, hostAddress,
        hostAddress, nameSpace);
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const String& hostAddress1,
    const String& hostAddress2,
    const String& localAddress,
    const CIMNamespaceName& nameSpace)
{
    const CIMName names[2] = {assocName1, assocName2};
    const CIMObjectPath ends[2] = {
        _rehost(assocPath1, hostAddress1), _rehost(assocPath2, hostAddress2)};
    return _assocPath(localAddress, nameSpace, assocClass, names, ends, 2);
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMName& assocName3,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const CIMObjectPath& assocPath3,
    const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    const CIMName names[3] = {assocName1, assocName2, assocName3};
    const CIMObjectPath ends[3] = {
        _rehost(assocPath1, hostAddress), _rehost(assocPath2, hostAddress),
        _rehost(assocPath3, hostAddress)};
    return _assocPath(hostAddress, nameSpace, assocClass, names, ends, 3);
}

CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const CIMClass& classSkeleton,
    const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    return buildAssocInstance(
        assocClass, assocName1, assocName2, assocPath1, assocPath2, classSkeleton, hostAddress,
        hostAddress, hostAddress, nameSpace);
}

CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const CIMClass& classSkeleton,
    const String& hostAddress1,
    const String& hostAddress2,
    const String& localAddress,
    const CIMNamespaceName& nameSpace)
{
    const CIMName names[2] = {assocName1, assocName2};
    const CIMObjectPath ends[2] = {
        _rehost(assocPath1, hostAddress1), _rehost(assocPath2, hostAddress2)};
    return _assocInstance(
        classSkeleton, names, ends, 2,
        buildAssocPath(
            assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress1, hostAddress2,
            localAddress, nameSpace));
}

CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass,
    const CIMName& assocName1,
    const CIMName& assocName2,
    const CIMName& assocName3,
    const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2,
    const CIMObjectPath& assocPath3,
    const CIMClass& classSkeleton,
    const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    const CIMName names[3] = {assocName1, assocName2, assocName3};
    const CIMObjectPath ends[3] = {
        _rehost(assocPath1, hostAddress), _rehost(assocPath2, hostAddress),
        _rehost(assocPath3, hostAddress)};
    return _assocInstance(
        classSkeleton, names, ends, 3,
        buildAssocPath(
            assocClass, assocName1, assocName2, assocName3, assocPath1, assocPath2, assocPath3,
            hostAddress, nameSpace));
}

Boolean QEL_Common::isPartOfArray(const String& key, const Array<String>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (String::equal(key, list[i]))
        {
            return true;
        }
    }
    return false;
}

Boolean QEL_Common::isPartOfArray(const CIMObjectPath& path, const Array<CIMObjectPath>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (matchObjectPath(path, list[i]))
        {
            return true;
        }
    }
    return false;
}

Boolean QEL_Common::isPartOfArray(const CIMObjectPath& instPath, const Array<CIMInstance>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (matchObjectPath(instPath, list[i].getPath()))
        {
            return true;
        }
    }
    return false;
}

Boolean QEL_Common::isPartOfArray(const CIMName& name, const Array<CIMName>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (list[i].equal(name))
        {
            return true;
        }
    }
    return false;
}

// ===========================================================================
// Value conversions
// ===========================================================================

namespace
{

struct PortStateCodes
{
    api_port_status_t state;
    Uint16 operationalStatus;
    Uint16 healthState;
};

// A port that lost synchronisation is Lost Communication yet healthy, and a
// port in configuration wait is Stopped yet healthy; both intended.
const PortStateCodes PORT_STATE_CODES[] = {
    {PORT_CONFIG_WAIT, 10, 5},    {PORT_ALPA_WAIT, 8, 5},
    {PORT_LOGIN_WAIT, 8, 5},      {PORT_OK, 2, 5},
    {PORT_LOSS_SYNC, 13, 5},      {PORT_ERROR, 6, 20},
    {PORT_NONPARTICIPATE, 6, 20}, {PORT_COREDUMP, 6, 25},
    {PORT_OFFLINE, 10, 10},       {PORT_FWDEAD, 7, 30},
    {PORT_IDLE_FOR_RESET, 8, 5},  {PORT_DHCP_IN_PROGRESS, 8, 5},
    {PORT_PENDING_RESET, 8, 5},
};

const PortStateCodes* _portStateCodes(api_port_status_t state)
{
    for (size_t i = 0; i < sizeof(PORT_STATE_CODES) / sizeof(PORT_STATE_CODES[0]); i++)
    {
        if (PORT_STATE_CODES[i].state == state)
        {
            return &PORT_STATE_CODES[i];
        }
    }
    return NULL;
}

// Minutes east of UTC of the local zone at `when`, truncated toward zero.
long _localOffsetMinutes(const struct tm& local)
{
    return local.tm_gmtoff / 60;
}

// Decimal number in characters [from, from + n) of text; no range check.
int _numberAt(const char* text, size_t from, size_t n)
{
    char field[8];
    memset(field, 0, sizeof(field));
    size_t len = strlen(text);
    if (from < len)
    {
        memcpy(field, text + from, (len - from < n) ? len - from : n);
    }
    return (int)strtol(field, NULL, 10);
}

// Cached system addresses; asked of the library while the IPv4 text is empty.
struct SystemAddressCache
{
    std::mutex lock;
    String ipv4;
    String ipv6;
};

SystemAddressCache& _addressCache()
{
    static SystemAddressCache cache;
    return cache;
}

// Generator state of generate_random_string, seeded on first use.
struct RandomState
{
    std::mutex lock;
    bool seeded = false;
    struct random_data data;
    char state[256];
};

RandomState& _randomState()
{
    static RandomState rs;
    return rs;
}

const char RANDOM_ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

}  // anonymous namespace

Uint16 QEL_Common::getPortOperationalStatus(api_port_status_t portStatus)
{
    const PortStateCodes* codes = _portStateCodes(portStatus);
    return codes == NULL ? 0 : codes->operationalStatus;
}

Uint16 QEL_Common::getPortHealthState(api_port_status_t portStatus)
{
    const PortStateCodes* codes = _portStateCodes(portStatus);
    return codes == NULL ? 0 : codes->healthState;
}

CIMDateTime QEL_Common::getCIMDateTime(time_t time)
{
    struct tm local;
    memset(&local, 0, sizeof(local));
    if (localtime_r(&time, &local) == NULL)
    {
        char text[32];
        snprintf(text, sizeof(text), "%lld", (long long)time);
        throw DateTimeOutOfRangeException(text);
    }
    long offset = _localOffsetMinutes(local);
    char buffer[80];
    memset(buffer, 0, sizeof(buffer));
    snprintf(
        buffer, sizeof(buffer), "%04d%02d%02d%02d%02d%02d.%06d+%03ld", local.tm_year + 1900,
        local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0,
        offset < 0 ? -offset : offset);
    if (offset < 0)
    {
        buffer[21] = '-';
    }
    CIMDateTime result;
    result.clear();
    result.set(String(buffer));
    return result;
}

time_t QEL_Common::getDateTime(const CIMDateTime& cimTime)
{
    String text = cimTime.toString();
    struct tm tmval;
    if (_formatDateTime(QEL_CSTR(text), &tmval) < 1)
    {
        return 0;
    }
    time_t seconds = mktime(&tmval);
    if (seconds == (time_t)-1)
    {
        throw DateTimeOutOfRangeException(text);
    }
    return seconds;
}

// Microseconds and the UTC offset are ignored: the text is read as local time.
int QEL_Common::_formatDateTime(const char* timeString, struct tm* tmval)
{
    if (timeString == NULL || tmval == NULL)
    {
        return 0;
    }
    char text[26];
    memset(text, 0, sizeof(text));
    strncpy(text, timeString, 25);

    memset(tmval, 0, sizeof(*tmval));
    int year = _numberAt(text, 0, 4);
    if (year == 0)
    {
        return 0;
    }
    if (year < 0)
    {
        return -1;
    }
    tmval->tm_year = year - 1900;
    if (tmval->tm_year < 0)
    {
        return -1;
    }
    tmval->tm_mon = _numberAt(text, 4, 2) - 1;
    if (tmval->tm_mon < 0)
    {
        return -1;
    }
    tmval->tm_mday = _numberAt(text, 6, 2);
    tmval->tm_hour = _numberAt(text, 8, 2);
    tmval->tm_min = _numberAt(text, 10, 2);
    tmval->tm_sec = _numberAt(text, 12, 2);
    tmval->tm_isdst = -1;
    return 1;
}

// UTC gives GMT-0 while getCIMDateTime writes '+' for a zero offset; the
// asymmetry is intended.
String QEL_Common::getTimeZone()
{
    time_t now = time(NULL);
    struct tm local;
    memset(&local, 0, sizeof(local));
    localtime_r(&now, &local);
    long minutes = _localOffsetMinutes(local);
    long hours = (minutes < 0 ? -minutes : minutes) / 60;
    char buffer[32];
    snprintf(buffer, sizeof(buffer), minutes > 0 ? "GMT+%ld" : "GMT-%ld", hours);
    return String(buffer);
}

Uint16 QEL_Common::getPortLPID(Uint64 portWWN)
{
    uint16_t lpid = 0;
    api_getFCPortLPID(portWWN, &lpid);
    return lpid;
}

Uint16 QEL_Common::getPortLPID(String& iscsiName)
{
    char name[224];
    memset(name, 0, sizeof(name));
    strncpy(name, QEL_CSTR(iscsiName), sizeof(name) - 1);
    uint16_t lpid = 0;
    api_getiSCSIPortLPID(name, &lpid);
    return lpid;
}

QEL_PortIDs QEL_Common::getPortIDs(Array<String> lpids)
{
    QEL_PortIDs result;
    result.count = lpids.size();
    result.portIDs = result.count == 0 ? NULL : new Uint16[result.count]();
    for (Uint32 i = 0; i < result.count; i++)
    {
        uint16_t id = 0;
        api_convertStrLPIDtoPortID(QEL_CSTR(lpids[i]), &id);
        result.portIDs[i] = id;
    }
    return result;
}

String QEL_Common::extractFromInstanceID(const String& instanceID)
{
    static const String prefix("ZEPHRAN:");
    Uint32 pos = instanceID.find(prefix);
    if (pos == PEG_NOT_FOUND)
    {
        return String();
    }
    return instanceID.subString(pos + prefix.size());
}

// Once the IPv4 text is known, an empty IPv6 text stays empty for the life of
// the process; intended. The lock only keeps concurrent first calls apart.
String QEL_Common::getSystemIPAddr(int iptype)
{
    if (iptype != 1 && iptype != 2)
    {
        log_message(2, "QEL_Common, getSystemIPAddr: Invalid IP type parameter!\n");
        return String();
    }
    SystemAddressCache& cache = _addressCache();
    std::lock_guard<std::mutex> guard(cache.lock);
    if (cache.ipv4.size() == 0)
    {
        api_ipaddr_t addr;
        memset(&addr, 0, sizeof(addr));
        if (api_getSystemDualIP(&addr) == 0)
        {
            struct in_addr v4;
            v4.s_addr = addr.ipv4_addr;
            char text4[INET_ADDRSTRLEN];
            memset(text4, 0, sizeof(text4));
            if (inet_ntop(AF_INET, &v4, text4, sizeof(text4)) != NULL)
            {
                cache.ipv4 = String(text4);
            }
            if (addr.dual_flag > 2)
            {
                char text6[128];
                memset(text6, 0, sizeof(text6));
                if (inet_ntop(AF_INET6, addr.ipv6_addr, text6, sizeof(text6)) != NULL)
                {
                    cache.ipv6 = String(text6);
                }
            }
        }
    }
    return iptype == 1 ? cache.ipv4 : cache.ipv6;
}

// len counts the terminator: the text has len - 1 characters. The source
// name and line of the assertion message are kept as the array's tools expect.
void QEL_Common::generate_random_string(char* str, Uint32 len)
{
    if (len == 0 || str == NULL)
    {
        qel_print_no_evt("Assertion failed: %s\n", "len > 0 && str != NULL");
        qel_panic("Assertion point: file: %s, line: %d\n", "../QEL_Common", 5332);
    }
    RandomState& rs = _randomState();
    std::lock_guard<std::mutex> guard(rs.lock);
    if (!rs.seeded)
    {
        memset(&rs.data, 0, sizeof(rs.data));
        memset(rs.state, 0, sizeof(rs.state));
        initstate_r((unsigned int)time(NULL), rs.state, sizeof(rs.state), &rs.data);
        rs.seeded = true;
    }
    const Uint32 alphabetSize = sizeof(RANDOM_ALPHABET) - 1;
    for (Uint32 i = 0; i + 1 < len; i++)
    {
        int32_t draw = 0;
        random_r(&rs.data, &draw);
        str[i] = RANDOM_ALPHABET[(Uint32)draw % alphabetSize];
    }
    str[len - 1] = '\0';
}

Uint32 QEL_Common::getInstanceThreshold(Uint32 th_scale)
{
    struct rlimit limit;
    limit.rlim_cur = RLIM_INFINITY;
    limit.rlim_max = RLIM_INFINITY;
    getrlimit(RLIMIT_AS, &limit);
    Uint64 megabytes = (Uint64)limit.rlim_cur / 1000000;
    log_message(
        4, "soft limit = %u, maxInstScale factor = %u\n", (unsigned)megabytes, (unsigned)th_scale);
    return (Uint32)(megabytes * th_scale);
}

// A missing class name still yields a leading colon before the method;
// intended, the audit log readers expect it.
int QEL_Common::setEventParam(
    api_evtparam_t* eventp,
    const char* className,
    const char* method,
    const char* op,
    const char* user,
    const char* addr)
{
    if (eventp == NULL)
    {
        log_message(
            2,
            "setEventParam: Unable to log event data. The control block pointer (eventp) is null.\n");
        return 1;
    }
    eventp->inst_param[0] = '\0';

    eventp->method[0] = '\0';
    if (className != NULL)
    {
        strncat(eventp->method, className, sizeof(eventp->method) - 2);
        strcat(eventp->method, ":");
    }
    else if (method != NULL)
    {
        strcat(eventp->method, ":");
    }
    if (method != NULL)
    {
        size_t used = strlen(eventp->method);
        strncat(eventp->method, method, sizeof(eventp->method) - 1 - used);
    }

    _copyField(eventp->inst_op, sizeof(eventp->inst_op), op);
    _copyField(eventp->user, sizeof(eventp->user), user);
    _copyField(eventp->addr, sizeof(eventp->addr), addr);
    return 0;
}

// A null record is refused with the six-argument form's trace and result
// instead of being written through.
int QEL_Common::setEventParam(
    api_evtparam_t* eventp,
    const char* className,
    const char* method,
    const char* op,
    const char* user,
    const char* addr,
    const char* evtText)
{
    int rc = setEventParam(eventp, className, method, op, user, addr);
    if (rc != 0)
    {
        return rc;
    }
    _copyField(eventp->inst_param, sizeof(eventp->inst_param), evtText);
    return 0;
}

int QEL_Common::setEventOp(api_evtparam_t* eventp, const char* op)
{
    if (eventp == NULL)
    {
        log_message(
            2,
            "setEventOp: Unable to log event data. The control block pointer (eventp) is null.\n");
        return 1;
    }
    _copyField(eventp->inst_op, sizeof(eventp->inst_op), op);
    return 0;
}

int QEL_Common::getNodePairIndex(int nodePosition)
{
    if (nodePosition < 0 || nodePosition > 7)
    {
        return -1;
    }
    return nodePosition / 2;
}

int QEL_Common::returnRAIDType(Uint16 packageRedundancy, Uint16 dataRedundancy)
{
    if (packageRedundancy == 1 && dataRedundancy == 1)
    {
        return 0;
    }
    if (packageRedundancy >= 2 && dataRedundancy >= 2)
    {
        return 10;
    }
    if (packageRedundancy == 2 && dataRedundancy == 1)
    {
        return 50;
    }
    if (packageRedundancy >= 3 && dataRedundancy == 1)
    {
        return 60;
    }
    return 99;
}

Boolean QEL_Common::isSameRAID(
    Uint16 dataRedundancy1,
    Uint16 packageRedundancy1,
    Uint16 dataRedundancy2,
    Uint16 packageRedundancy2)
{
    return returnRAIDType(packageRedundancy1, dataRedundancy1) ==
           returnRAIDType(packageRedundancy2, dataRedundancy2);
}

Boolean QEL_Common::isSameRAID(Uint16 raidType, Uint16 dataRedundancy, Uint16 packageRedundancy)
{
    return returnRAIDType(packageRedundancy, dataRedundancy) == raidType;
}

String QEL_Common::getRaidTypeStr(int raidType)
{
    switch (raidType)
    {
        case 0:
            return String("RAID0");
        case 10:
            return String("RAID10");
        case 50:
            return String("RAID50");
        case 60:
            return String("RAID60");
        default:
            return String();
    }
}

// ===========================================================================
// Method authorization keys
// ===========================================================================

namespace
{

const char KEY_CREATE_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.createvolume";
const char KEY_GROW_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.growvolume";
const char KEY_SET_VOLUME[] =
    "qel_storageconfigurationservice.createormodifyelementfromstoragepool.setvolume";
const char KEY_RETURN_TO_POOL[] = "qel_storageconfigurationservice.returntostoragepool";

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
    const String& userName,
    const String& ipAddr,
    Array<CIMObjectPath>& volumes,
    String& key)
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
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
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
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 3;
    }
    const char* key = NULL;
    switch (operation)
    {
        case 2:
            key = "qel_storageconfigurationservice.modifysynchronization.detach";
            break;
        case 4:
            key = "qel_storageconfigurationservice.modifysynchronization.resync";
            break;
        case 5:
            key = "qel_storageconfigurationservice.modifysynchronization.restore";
            break;
        case 12:
            key = "qel_storageconfigurationservice.modifysynchronization.startcopy";
            break;
        case 13:
            key = "qel_storageconfigurationservice.modifysynchronization.stopcopy";
            break;
        default:
            return 3;
    }
    return _authorize(userName, ipAddr, key);
}

int authorize_CreateOrModifyStoragePool(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
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
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
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
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
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
int _authorizeReplica(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters,
    const char* const* keysBySyncType,
    Uint16 firstSyncType,
    Uint16 lastSyncType)
{
    Uint16 syncType = 0;
    Uint16 mode = 0;
    if (!_uint16Param(inParameters, "SyncType", syncType) ||
        !_uint16Param(inParameters, "Mode", mode))
    {
        return 0;
    }
    if (syncType < firstSyncType || syncType > lastSyncType ||
        keysBySyncType[syncType - firstSyncType] == NULL)
    {
        return 3;
    }
    return _authorize(userName, ipAddr, keysBySyncType[syncType - firstSyncType]);
}

}  // anonymous namespace

int authorize_CreateElementReplica(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    static const char* const keys[] = {
        "qel_replicationservice.createelementreplica.createsv",      // 7
        "qel_replicationservice.createelementreplica.createvvcopy",  // 8
    };
    return _authorizeReplica(userName, ipAddr, inParameters, keys, 7, 8);
}

int authorize_CreateGroupReplica(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    static const char* const keys[] = {
        "qel_replicationservice.creategroupreplica.createmirror",       // 6
        "qel_replicationservice.creategroupreplica.creategroupsv",      // 7
        "qel_replicationservice.creategroupreplica.creategroupvvcopy",  // 8
    };
    return _authorizeReplica(userName, ipAddr, inParameters, keys, 6, 8);
}

// Without an Operation the request is let through unasked (result 0); the
// abort key ends in a blank. Both are intended and kept.
int authorize_ModifyReplicaSynchronization(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 0;
    }
    String key;
    int rc = 0;
    switch (operation)
    {
        case 2:
            key = "qel_replicationservice.modifyreplicasynchronization.abort ";
            break;
        case 4:
            key = "qel_replicationservice.modifyreplicasynchronization.syncrcopy";
            break;
        case 8:
        case 9:
            key = "qel_replicationservice.modifyreplicasynchronization.dissolve";
            break;
        case 10:
        case 11:
        case 20:
            key = "qel_replicationservice.modifyreplicasynchronization.setrcopygroup";
            break;
        case 14:
            key = "qel_replicationservice.modifyreplicasynchronization.resync";
            break;
        case 15:
            key = "qel_replicationservice.modifyreplicasynchronization.restore";
            break;
        case 21:
            key = "qel_replicationservice.modifyreplicasynchronization.split";
            break;
        case 19:
        {
            CIMObjectPath sync;
            if (_referenceParam(inParameters, "Synchronization", sync))
            {
                CIMObjectPath volume = _referenceKey(sync, "SyncedElement");
                rc = handleDeleteVolumeMethod(volume, key);
            }
            break;
        }
        default:
            rc = 3;
            break;
    }
    if (rc == 0 && key.size() != 0)
    {
        rc = _authorize(userName, ipAddr, key);
    }
    return rc;
}

// Without an Operation the request is let through unasked (result 0); kept.
// Operation 19 without a target group deletes the synchronized volumes: each
// one is authorized with its own key.
int authorize_ModifyListSynchronization(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    Uint16 operation = 0;
    if (!_uint16Param(inParameters, "Operation", operation))
    {
        return 0;
    }
    const char* key = NULL;
    switch (operation)
    {
        case 2:
            key = "qel_replicationservice.modifylistsynchronization.abort";
            break;
        case 8:
        case 9:
            key = "qel_replicationservice.modifylistsynchronization.dissolve";
            break;
        case 14:
            key = "qel_replicationservice.modifylistsynchronization.resync";
            break;
        case 15:
            key = "qel_replicationservice.modifylistsynchronization.restore";
            break;
        case 19:
        {
            CIMValue group;
            if (_paramValue(inParameters, "TargetGroup", group))
            {
                key = "qel_replicationservice.deletegroup";
                break;
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
                    volumes.append(_referenceKey(refs[i], "SyncedElement"));
                }
            }
            String volumeKey;
            return _authorizeVolumes(userName, ipAddr, volumes, volumeKey);
        }
        default:
            return 3;
    }
    return _authorize(userName, ipAddr, key);
}

int authorize_ReplicationServiceCapabilitiesMethod(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, "qel_replicationservicecapabilities");
}

int authorize_ModifyStorageSetting_Transient(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, KEY_SET_VOLUME);
}

int authorize_ModifyStorageSetting_Persistent(
    const String& userName,
    const String& ipAddr,
    const Array<CIMParamValue>& inParameters)
{
    return _authorize(userName, ipAddr, "qel_storagesetting.modifyinstance");
}

int authorize_AllocatedFromStoragePoolModifyInstance(
    const String& userName,
    const String& ipAddr,
    const CIMObjectPath& path)
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
