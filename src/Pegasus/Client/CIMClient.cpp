#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Client/TransportFactories.h>
#include <Pegasus/Common/CIMStatusCode.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 kDefaultTimeoutMilliseconds = 20000;

CIMOpenParameters openParameters(
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    CIMOpenParameters open;
    open.filterQueryLanguage = filterQueryLanguage;
    open.filterQuery = filterQuery;
    open.operationTimeout = operationTimeout;
    open.continueOnError = continueOnError;
    open.maxObjectCount = maxObjectCount;
    return open;
}
}  // namespace

CIMClient::CIMClient() : _timeoutMilliseconds(kDefaultTimeoutMilliseconds)
{
}

CIMClient::~CIMClient() = default;

Uint32 CIMClient::getTimeout() const
{
    return _timeoutMilliseconds;
}

void CIMClient::setTimeout(Uint32 timeoutMilliseconds)
{
    _timeoutMilliseconds = timeoutMilliseconds;
    if (_transport)
        _transport->setTimeout(timeoutMilliseconds);
}

void CIMClient::_attach(std::unique_ptr<ClientTransport> transport, const String& target)
{
    if (!transport)
    {
        throw CannotConnectException(
            "Cannot connect to " + target + ": the transport factory returned no connection");
    }
    _transport = std::move(transport);
}

void CIMClient::connect(
    const String& host, const Uint32 portNumber, const String& userName, const String& password)
{
    if (_transport)
        throw AlreadyConnectedException();
    String hostName = host;
    if (hostName.size() == 0 && portNumber != 0)
        hostName = "localhost";
    String target = hostName;
    target.appendPrintf(":%u", portNumber);

    TcpTransportFactory factory = currentTcpTransportFactory();
    if (!factory)
    {
        throw CannotConnectException(
            "Cannot connect to " + target + ": no CIM-XML transport is installed in this process");
    }
    _attach(factory(hostName, portNumber, userName, password, _timeoutMilliseconds), target);
}

void CIMClient::connectLocal()
{
    if (_transport)
        throw AlreadyConnectedException();
    const String target("the local CIM server");
    LocalTransportFactory factory = currentLocalTransportFactory();
    if (!factory)
    {
        throw CannotConnectException(
            "Cannot connect to " + target + ": no local transport is installed in this process");
    }
    _attach(factory(_timeoutMilliseconds), target);
}

void CIMClient::disconnect()
{
    _transport.reset();
}

ClientTransport& CIMClient::_connection()
{
    if (!_transport)
        throw NotConnectedException();
    return *_transport;
}

// Every operation: its request built, carried by the transport, its answer unpacked
// (CIMOperationMessage.h), as CIMOMHandle does it.
CIMOperationResponse CIMClient::_execute(const CIMOperationRequest& request)
{
    CIMOperationResponse response = _connection().execute(request);
    response.checked();
    return response;
}

CIMClass CIMClient::getClass(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _execute(CIMOperationRequest::getClass(
                        nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
                        propertyList))
        .cimClass;
}

CIMInstance CIMClient::getInstance(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _execute(CIMOperationRequest::getInstance(
                        nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin,
                        propertyList))
        .instance;
}

void CIMClient::deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    _execute(CIMOperationRequest::deleteInstance(nameSpace, instanceName));
}

CIMObjectPath
CIMClient::createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    return _execute(CIMOperationRequest::createInstance(nameSpace, newInstance)).createdName();
}

void CIMClient::modifyInstance(
    const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
    Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    _execute(CIMOperationRequest::modifyInstance(
        nameSpace, modifiedInstance, includeQualifiers, propertyList));
}

Array<CIMInstance> CIMClient::enumerateInstances(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _execute(CIMOperationRequest::enumerateInstances(
                        nameSpace, className, deepInheritance, localOnly, includeQualifiers,
                        includeClassOrigin, propertyList))
        .instances;
}

Array<CIMObjectPath>
CIMClient::enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return _execute(CIMOperationRequest::enumerateInstanceNames(nameSpace, className)).paths;
}

Array<CIMObject> CIMClient::associators(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _execute(CIMOperationRequest::associators(
                        nameSpace, objectName, assocClass, resultClass, role, resultRole,
                        includeQualifiers, includeClassOrigin, propertyList))
        .objects;
}

Array<CIMObjectPath> CIMClient::associatorNames(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    return _execute(CIMOperationRequest::associatorNames(
                        nameSpace, objectName, assocClass, resultClass, role, resultRole))
        .paths;
}

Array<CIMObject> CIMClient::references(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _execute(CIMOperationRequest::references(
                        nameSpace, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList))
        .objects;
}

Array<CIMObjectPath> CIMClient::referenceNames(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role)
{
    return _execute(CIMOperationRequest::referenceNames(nameSpace, objectName, resultClass, role))
        .paths;
}

CIMValue CIMClient::invokeMethod(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters)
{
    return _execute(
               CIMOperationRequest::invokeMethod(nameSpace, instanceName, methodName, inParameters))
        .methodResult(outParameters);
}

CIMOperationResponse CIMClient::_page(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMOperationRequest& request)
{
    CIMOperationResponse response = _execute(request);
    Boolean ended = false;
    const String next = response.enumerationContext(ended);
    enumerationContext._nameSpace = request.nameSpace;
    enumerationContext._context = next;
    endOfSequence = ended;
    return response;
}

const CIMNamespaceName& CIMClient::_openedIn(const CIMEnumerationContext& enumerationContext)
{
    if (enumerationContext._nameSpace.isNull())
        throw CIMException(
            CIM_ERR_INVALID_ENUMERATION_CONTEXT, "The enumeration context was never opened.");
    return enumerationContext._nameSpace;
}

Array<CIMInstance> CIMClient::openEnumerateInstances(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openEnumerateInstances(
                   nameSpace, className, deepInheritance, includeClassOrigin, propertyList,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .instances;
}

Array<CIMObjectPath> CIMClient::openEnumerateInstancePaths(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMName& className, const String& filterQueryLanguage,
    const String& filterQuery, const Uint32Arg& operationTimeout, Boolean continueOnError,
    Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openEnumerateInstancePaths(
                   nameSpace, className,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .paths;
}

Array<CIMInstance> CIMClient::openReferenceInstances(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openReferenceInstances(
                   nameSpace, objectName, resultClass, role, includeClassOrigin, propertyList,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .instances;
}

Array<CIMObjectPath> CIMClient::openReferenceInstancePaths(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const String& filterQueryLanguage, const String& filterQuery,
    const Uint32Arg& operationTimeout, Boolean continueOnError, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openReferenceInstancePaths(
                   nameSpace, objectName, resultClass, role,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .paths;
}

Array<CIMInstance> CIMClient::openAssociatorInstances(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openAssociatorInstances(
                   nameSpace, objectName, assocClass, resultClass, role, resultRole,
                   includeClassOrigin, propertyList,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .instances;
}

Array<CIMObjectPath> CIMClient::openAssociatorInstancePaths(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::openAssociatorInstancePaths(
                   nameSpace, objectName, assocClass, resultClass, role, resultRole,
                   openParameters(
                       filterQueryLanguage, filterQuery, operationTimeout, continueOnError,
                       maxObjectCount)))
        .paths;
}

Array<CIMInstance> CIMClient::pullInstancesWithPath(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::pullInstancesWithPath(
                   _openedIn(enumerationContext), enumerationContext._context, maxObjectCount))
        .instances;
}

Array<CIMObjectPath> CIMClient::pullInstancePaths(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount)
{
    return _page(
               enumerationContext, endOfSequence,
               CIMOperationRequest::pullInstancePaths(
                   _openedIn(enumerationContext), enumerationContext._context, maxObjectCount))
        .paths;
}

void CIMClient::closeEnumeration(CIMEnumerationContext& enumerationContext)
{
    _execute(CIMOperationRequest::closeEnumeration(
        _openedIn(enumerationContext), enumerationContext._context));
    enumerationContext._context.clear();
}

Uint64Arg CIMClient::enumerationCount(CIMEnumerationContext& enumerationContext)
{
    return _execute(CIMOperationRequest::enumerationCount(
                        _openedIn(enumerationContext), enumerationContext._context))
        .enumerationCount();
}

PEGASUS_NAMESPACE_END
