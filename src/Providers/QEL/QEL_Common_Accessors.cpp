// QEL_Common: typed access to instance properties, object-path keys and
// method parameters, the property writers, and the class-based helpers.
#include "QEL_Common.h"
#include "QEL_Common_Internal.h"
#include "QEL_InternalCacheService.h"

#include <Pegasus/Common/CIMProperty.h>

PEGASUS_NAMESPACE_BEGIN

using namespace QEL_CommonInternal;

String QEL_CommonInternal::_lastKeyValue(const CIMObjectPath& path, const String& name)
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

namespace
{

// Index of the property named `name`, or PEG_NOT_FOUND. The lookup goes by a
// CIMName made of the text, so a text that is no legal CIM name lets the
// object model's InvalidNameException through. The empty name reads as
// absent without a lookup (the readers' answer to "no name"); intended.
Uint32 _findProperty(const CIMInstance& instance, const String& name)
{
    if (name.size() == 0)
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

// The opening of the single-value readers (getStringProperty of an instance,
// getPropertyValue): the entry trace, then the refusal of an empty name or an
// uninitialized instance with the notice (false). Otherwise pos is the
// property's position, or PEG_NOT_FOUND.
bool _openValueRead(const CIMInstance& instance, const String& propertyName, Uint32& pos)
{
    log_message(
        4, "-->QEL_Common::getStringProperty(), propertyName = %s\n", QEL_CSTR(propertyName));
    if (propertyName.size() == 0 || instance.isUninitialized())
    {
        log_message(3, "\tInvalid property name.\n");
        return false;
    }
    pos = _findProperty(instance, propertyName);
    return true;
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

}  // anonymous namespace

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
    const Array<CIMParamValue>& paramList, const String& paramName, Uint8& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint8), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint8), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint16& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint16), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint16), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Array<Uint16>& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(Array<Uint16>), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Array<Uint16>)\n");
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint32& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint32), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Uint32), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Uint64& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Uint64), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(
        4, "<--QEL_Common::getParameter(Uint64), paramValue = %llu\n",
        (unsigned long long)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Boolean& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(Boolean), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Boolean), paramValue = %d\n", (int)paramValue);
    return rc;
}

Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, CIMDateTime& paramValue)
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
    const Array<CIMParamValue>& paramList, const String& paramName, CIMObjectPath& paramValue)
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
    const Array<CIMParamValue>& paramList, const String& paramName, String& paramValue)
{
    log_message(4, "-->QEL_Common::getParameter(String), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(String), paramValue = %s\n", QEL_CSTR(paramValue));
    return rc;
}

// The exit trace has no line end; kept as the array's trace readers expect.
Uint32 QEL_Common::getParameter(
    const Array<CIMParamValue>& paramList, const String& paramName, Array<String>& paramValue)
{
    log_message(
        4, "-->QEL_Common::getParameter(Array<String>), paramName = %s\n", QEL_CSTR(paramName));
    Uint32 rc = _readParameter(paramList, paramName, paramValue);
    log_message(4, "<--QEL_Common::getParameter(Array<String>)");
    return rc;
}

String QEL_Common::getStringProperty(const CIMInstance& instance, const String& propertyName)
{
    Uint32 pos;
    if (!_openValueRead(instance, propertyName, pos))
    {
        return String();
    }
    String result;
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

// Carries the getStringProperty entry trace (through _openValueRead) and
// exit trace; kept as the array's trace readers expect them.
CIMValue QEL_Common::getPropertyValue(const CIMInstance& instance, const String& propertyName)
{
    Uint32 pos;
    if (!_openValueRead(instance, propertyName, pos))
    {
        return CIMValue();
    }
    CIMValue result;
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
    CIMInstance& instance, CIMName propertyName, const Array<String>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<Uint16>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<Sint32>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<Uint64>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<Boolean>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const Array<CIMDateTime>& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const CIMObjectPath& value)
{
    _writeProperty(instance, propertyName, value);
}

void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const CIMDateTime& value)
{
    _writeProperty(instance, propertyName, value);
}

// An embedded instance replaces the property (a typed instance value cannot
// be set on a property declared as a string holding embedded text).
void QEL_Common::setPropertyValue(
    CIMInstance& instance, CIMName propertyName, const CIMInstance& value)
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
    CIMInstance& instance, CIMName propertyName, CIMType cimtype)
{
    CIMValue nullValue;
    nullValue.setNullValue(cimtype, false, 0);
    _writeProperty(instance, propertyName, nullValue);
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
    CIMOMHandle& cimom, const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return QEL_InternalCacheService::getInstance()->getStoredCIMClass(
        cimom, context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

PEGASUS_NAMESPACE_END
