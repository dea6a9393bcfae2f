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

#include <cstdlib>

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
    const OperationContext& context,
    const char* sourceName,
    Uint32 line)
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
    const Requester& requester,
    const String& className,
    const String& operationKey,
    const char* sourceName,
    Uint32 line)
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

void QEL_ProviderFrame::notSupported(const String& providerName, const char* what)
{
    throw CIMNotSupportedException(providerName + " does not support " + String(what) + ".");
}

void QEL_ProviderFrame::deviceNotFound(
    const String& providerName,
    const char* operation,
    const char* keyName,
    const String& keyValue)
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
