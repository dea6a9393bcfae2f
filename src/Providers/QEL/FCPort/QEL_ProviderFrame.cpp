//%/////////////////////////////////////////////////////////////////////////////
// QEL_ProviderFrame: session check, authorization, refusal texts.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_ProviderFrame.h"

#include <Pegasus/Common/CIMStatusCode.h>

// OpenPegasus's InternalException.h names these in constructors it declares
// without including their headers; declaring them first lets it compile
// on its own.
PEGASUS_NAMESPACE_BEGIN
class MessageLoaderParms;
class ContentLanguageList;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include <QEL_ClientAddress.h>
#include <QEL_Common.h>

#include <cstdlib>
#include <cstring>

PEGASUS_NAMESPACE_BEGIN

String QEL_ProviderFrame::userName(const OperationContext& context)
{
    return IdentityContainer(context.get(IdentityContainer::NAME)).getUserName();
}

QEL_ProviderFrame::Requester QEL_ProviderFrame::requester(const OperationContext& context)
{
    Requester who;
    who.userName = userName(context);
    who.clientAddress = QEL_getClientAddress(context);
    return who;
}

void QEL_ProviderFrame::checkSession(
    const OperationContext& context, const char* sourceName, Uint32 line)
{
    const String user = userName(context);
    if (api_qelOpenForCimserver(user.getCString()) != 0)
    {
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", sourceName, line);
    }
}

String QEL_ProviderFrame::operationName(const String& className, const String& operationKey)
{
    String name = className + "." + operationKey;
    name.toLower();
    return name;
}

void QEL_ProviderFrame::authorize(
    const Requester& requester, const String& className, const String& operationKey,
    const char* sourceName, Uint32 line)
{
    const String fullName = operationName(className, operationKey);
    const int rc = api_authorizeCIMUser(
        requester.userName.getCString(), requester.clientAddress.getCString(),
        fullName.getCString());
    if (rc == 0)
    {
        return;
    }
    if (rc == 1 || rc == 2)
    {
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege", sourceName, line);
    }
    // The text is kept as the array's clients know it.
    throw TraceableCIMException(
        CIM_ERR_NOT_SUPPORTED, "Does not support in generic!", sourceName, line);
}

api_evtparam_t QEL_ProviderFrame::openChange(
    const OperationContext& context, const Requester& requester, const String& className,
    const String& operationKey, const ChangeSite& site)
{
    checkSession(context, site.sourceName, site.sessionLine);
    authorize(requester, className, operationKey, site.sourceName, site.authorizeLine);
    api_evtparam_t event;
    std::memset(&event, 0, sizeof(event));
    QEL_Common::setEventParam(
        &event, className.getCString(), operationKey.getCString(), "",
        requester.userName.getCString(), requester.clientAddress.getCString());
    return event;
}

CIMClass QEL_ProviderFrame::storedClass(
    CIMOMHandle& cimom, const CIMName& className, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return QEL_Common::getStoredCIMClass(
        cimom, OperationContext(), CIMNamespaceName(QEL_NAMESPACE), className, false,
        includeQualifiers, includeClassOrigin, propertyList);
}

bool QEL_ProviderFrame::keyValue(const CIMObjectPath& path, const char* keyName, String& value)
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName() == CIMName(keyName))
        {
            value = keys[i].getValue();
            return true;
        }
    }
    return false;
}

bool QEL_ProviderFrame::deliverMatch(
    const CIMObjectPath& reference, const Array<CIMInstance>& candidates,
    InstanceResponseHandler& handler)
{
    for (Uint32 i = 0; i < candidates.size(); i++)
    {
        if (QEL_Common::matchObjectPath(reference, candidates[i].getPath()))
        {
            handler.processing();
            handler.deliver(candidates[i]);
            handler.complete();
            return true;
        }
    }
    return false;
}

void QEL_ProviderFrame::notSupported(const String& providerName, const char* what)
{
    throw CIMNotSupportedException(providerName + " does not support " + String(what) + ".");
}

void QEL_ProviderFrame::deviceNotFound(
    const String& providerName, const char* operation, const char* keyName, const String& keyValue)
{
    // Two blanks stand between "()" and "Device": the parts are joined as
    // the array's tools have always shown them.
    throw CIMOperationFailedException(
        providerName + "::" + String(operation) + "() " + " Device not found" + " with " +
        String(keyName) + "=" + keyValue);
}

void QEL_ProviderFrame::allocationFailed(const String& providerName, const char* operation)
{
    throw CIMOperationFailedException(
        providerName + "::" + String(operation) + "() " + " Failed to allocate memory");
}

QEL_PortIdList::QEL_PortIdList(Uint16 lpid, const String& providerName, const char* operation)
    : _ids(static_cast<Uint16*>(std::malloc(sizeof(Uint16))))
{
    if (_ids == 0)
    {
        QEL_ProviderFrame::allocationFailed(providerName, operation);
    }
    _ids[0] = lpid;
}

QEL_PortIdList::~QEL_PortIdList()
{
    release();
}

void QEL_PortIdList::release()
{
    std::free(_ids);
    _ids = 0;
}

PEGASUS_NAMESPACE_END
