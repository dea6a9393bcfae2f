//%/////////////////////////////////////////////////////////////////////////////
// QEL_AssociationFrame: request handling shared by the association providers.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_AssociationFrame.h"
#include "QEL_ProviderFrame.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_Common.h>

PEGASUS_NAMESPACE_BEGIN

// Trace texts may carry no argument; they are printed as they stand.
static void _trace(int level, const char* text)
{
    log_message(level, "%s", text);
}

static const char* _text(const String& value, CString& keep)
{
    keep = value.getCString();
    return keep;
}

static bool _named(const CIMName& name, const char* const* list)
{
    for (; *list != 0; ++list)
    {
        if (name.equal(*list))
        {
            return true;
        }
    }
    return false;
}

// One of the two role names, compared without regard to case.
static bool _isRole(const String& name, const char* role)
{
    return String::equalNoCase(name, role);
}

QEL_AssociationFrame::QEL_AssociationFrame(
    const QEL_AssociationProfile& profile, const String& messagePrefix, CIMOMHandle& cimom,
    const CIMName& associationClass, const CIMName& portClass, const CIMName& otherClass,
    const String& hostName)
    : _profile(profile),
      _messagePrefix(messagePrefix),
      _cimom(cimom),
      _associationClass(associationClass),
      _portClass(portClass),
      _otherClass(otherClass),
      _hostName(hostName)
{
}

bool QEL_AssociationFrame::_isPortEnd(const CIMObjectPath& objectName) const
{
    return objectName.getClassName() == _portClass;
}

bool QEL_AssociationFrame::_isOtherEnd(const CIMObjectPath& objectName) const
{
    return objectName.getClassName() == _otherClass;
}

void QEL_AssociationFrame::_open(
    const QEL_AssociationRequestTexts& texts, const OperationContext& context) const
{
    _trace(QEL_TRACE_FLOW, texts.entry);
    QEL_ProviderFrame::checkSession(context, _profile.sourceName, texts.line);
}

template <typename... Texts>
bool QEL_AssociationFrame::_openAssociation(
    const QEL_AssociationRequestTexts& texts, const OperationContext& context,
    const CIMObjectPath& objectName, const String& role, const String& resultRole,
    const CIMName& resultClass, const char* method, Texts... argumentTexts) const
{
    _trace(QEL_TRACE_FLOW, texts.entry);
    log_message(QEL_TRACE_FLOW, texts.arguments, argumentTexts...);
    QEL_ProviderFrame::checkSession(context, _profile.sourceName, texts.line);
    return !_invalidParms(objectName, role, resultRole, resultClass, method);
}

// ------------------------------------------------------------- parameters

Boolean QEL_AssociationFrame::_invalidParms(
    const CIMObjectPath& objectName, const String& role, const String& resultRole,
    const CIMName& resultClass, const String& method) const
{
    const CIMName& objectClass = objectName.getClassName();
    const bool fromPort = _isPortEnd(objectName);
    const bool fromOther = _isOtherEnd(objectName);
    const char* portRole = _profile.portRole;
    const char* otherRole = _profile.otherRole;

    if (role.size() != 0)
    {
        if (!_isRole(role, portRole) && !_isRole(role, otherRole))
        {
            return true;
        }
        if ((fromPort && !_isRole(role, portRole)) || (fromOther && !_isRole(role, otherRole)))
        {
            return true;
        }
    }

    if (resultRole.size() != 0)
    {
        if (!_isRole(resultRole, portRole) && !_isRole(resultRole, otherRole))
        {
            return true;
        }
        if ((fromPort && !_isRole(resultRole, otherRole)) ||
            (fromOther && !_isRole(resultRole, portRole)))
        {
            return true;
        }
    }

    if (String::equalNoCase(method, "references") || String::equalNoCase(method, "referenceNames"))
    {
        return !resultClass.isNull() && resultClass != _associationClass &&
               !resultClass.equal(_profile.parentClass);
    }

    if (String::equalNoCase(method, "associators") ||
        String::equalNoCase(method, "associatorNames"))
    {
        if (resultClass.isNull())
        {
            return false;
        }
        if (!_named(resultClass, _profile.acceptedResultClasses))
        {
            return true;
        }
        // Asking for the class one starts from never leads anywhere.
        if (resultClass == objectClass)
        {
            return true;
        }
        // The direction rules are not symmetric on purpose: from a port only
        // the far end's own line of classes is accepted.
        if ((fromPort && _named(resultClass, _profile.refusedFromPort)) ||
            (fromOther && _named(resultClass, _profile.refusedFromOther)))
        {
            return true;
        }
    }
    return false;
}

// ------------------------------------------------------------ association

CIMObjectPath QEL_AssociationFrame::_buildAssociationName(
    const CIMObjectPath& port, const CIMObjectPath& other) const
{
    return QEL_Common::buildAssocPath(
        _associationClass, CIMName(_profile.portRole), CIMName(_profile.otherRole), port, other,
        _hostName, CIMNamespaceName(QEL_NAMESPACE));
}

CIMInstance QEL_AssociationFrame::_buildAssociationInstance(
    const CIMObjectPath& port, const CIMObjectPath& other, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList) const
{
    const CIMClass associationClass = QEL_ProviderFrame::storedClass(
        _cimom, _associationClass, includeQualifiers, includeClassOrigin, propertyList);
    return QEL_Common::buildAssocInstance(
        _associationClass, CIMName(_profile.portRole), CIMName(_profile.otherRole), port, other,
        associationClass, _hostName, CIMNamespaceName(QEL_NAMESPACE));
}

Array<CIMObjectPath> QEL_AssociationFrame::pathsOf(const Array<CIMInstance>& instances)
{
    Array<CIMObjectPath> paths;
    paths.reserveCapacity(instances.size());
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        paths.append(instances[i].getPath());
    }
    return paths;
}

template <typename Build>
void QEL_AssociationFrame::_forEachReference(
    const CIMObjectPath& objectName, const Array<CIMObjectPath>& related, Build&& build) const
{
    if (_isPortEnd(objectName))
    {
        for (Uint32 i = 0; i < related.size(); i++)
        {
            build(objectName, related[i]);
        }
    }
    else if (_isOtherEnd(objectName))
    {
        const Uint32 count =
            _profile.everyPortFromOtherEnd ? related.size() : (related.size() == 0 ? 0 : 1);
        for (Uint32 i = 0; i < count; i++)
        {
            build(related[i], objectName);
        }
    }
}

// --------------------------------------------------------------- requests

void QEL_AssociationFrame::associators(
    Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.associators;
    CString object, association, result;
    // The association class is traced only: any association class named is
    // answered the same way.
    if (!_openAssociation(
            texts, context, objectName, role, resultRole, resultClass, "associators",
            _text(objectName.toString(), object), _text(associationClass.getString(), association),
            _text(resultClass.getString(), result)))
    {
        log_message(QEL_TRACE_FAILURE, texts.refused, (const char*)result);
        return;
    }

    const Array<CIMInstance> related = lists.relatedInstances(
        context, objectName, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < related.size(); i++)
    {
        handler.deliver(CIMObject(related[i]));
    }
    handler.complete();
    _trace(QEL_TRACE_FLOW, texts.exit);
}

void QEL_AssociationFrame::associatorNames(
    Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.associatorNames;
    CString object, association, result;
    if (!_openAssociation(
            texts, context, objectName, role, resultRole, resultClass, "associatorNames",
            _text(objectName.toString(), object), _text(associationClass.getString(), association),
            _text(resultClass.getString(), result)))
    {
        log_message(
            QEL_TRACE_FAILURE, texts.refused, (const char*)association, (const char*)result);
        return;
    }

    const Array<CIMObjectPath> related = lists.relatedInstanceNames(context, objectName);
    handler.processing();
    for (Uint32 i = 0; i < related.size(); i++)
    {
        handler.deliver(related[i]);
    }
    handler.complete();
    _trace(QEL_TRACE_FLOW, texts.exit);
}

void QEL_AssociationFrame::references(
    Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.references;
    CString object, result, roleText;
    if (!_openAssociation(
            texts, context, objectName, role, String(), resultClass, "references",
            _text(objectName.toString(), object), _text(resultClass.getString(), result)))
    {
        log_message(QEL_TRACE_FAILURE, texts.refused, _text(role, roleText), (const char*)result);
        return;
    }

    const Array<CIMObjectPath> related = lists.relatedInstanceNames(context, objectName);
    handler.processing();
    _forEachReference(
        objectName, related,
        [&](const CIMObjectPath& port, const CIMObjectPath& other)
        {
            handler.deliver(CIMObject(_buildAssociationInstance(
                port, other, includeQualifiers, includeClassOrigin, propertyList)));
        });
    handler.complete();
    _trace(QEL_TRACE_FLOW, texts.exit);
}

void QEL_AssociationFrame::referenceNames(
    Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.referenceNames;
    CString object, result, roleText;
    if (!_openAssociation(
            texts, context, objectName, role, String(), resultClass, "referenceNames",
            _text(objectName.toString(), object), _text(resultClass.getString(), result)))
    {
        log_message(QEL_TRACE_FAILURE, texts.refused, _text(role, roleText), (const char*)result);
        return;
    }

    const Array<CIMObjectPath> related = lists.relatedInstanceNames(context, objectName);
    handler.processing();
    _forEachReference(
        objectName, related,
        [&](const CIMObjectPath& port, const CIMObjectPath& other)
        { handler.deliver(_buildAssociationName(port, other)); });
    handler.complete();
    _trace(QEL_TRACE_FLOW, texts.exit);
}

void QEL_AssociationFrame::getInstance(
    Lists& lists, const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.getInstance;
    _open(texts, context);

    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != 2)
    {
        log_message(QEL_TRACE_FAILURE, texts.refused, static_cast<int>(keyCount));
        throw CIMInvalidParameterException(_messagePrefix + " Expect two keys.");
    }

    // Host ignored; namespace, class and the ends' keys compared.
    if (QEL_ProviderFrame::deliverMatch(
            instanceReference,
            lists.instances(instanceReference, includeQualifiers, includeClassOrigin, propertyList),
            handler))
    {
        _trace(QEL_TRACE_FLOW, texts.exit);
        return;
    }
    throw CIMObjectNotFoundException(_messagePrefix + " CIM Object not found.");
}

void QEL_AssociationFrame::enumerateInstances(
    Lists& lists, const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.enumerateInstances;
    _open(texts, context);

    // The class of classReference is not looked at: the provider is only
    // asked for its own association class.
    QEL_ProviderFrame::deliverAll(
        handler,
        lists.instances(CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList));
    _trace(QEL_TRACE_FLOW, texts.exit);
}

void QEL_AssociationFrame::enumerateInstanceNames(
    Lists& lists, const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler) const
{
    const QEL_AssociationRequestTexts& texts = _profile.enumerateInstanceNames;
    _open(texts, context);

    QEL_ProviderFrame::deliverAll(handler, lists.instanceNames());
    _trace(QEL_TRACE_FLOW, texts.exit);
}

PEGASUS_NAMESPACE_END
