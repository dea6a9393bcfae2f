#include "CimXmlTransport.h"

#include <Server/auth/Base64.h>
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <strings.h>

using namespace Pegasus;
using qel::cimxml::CimRequest;
using qel::cimxml::CimResponse;
using qel::cimxml::Operation;
using qel::cimxml::Param;

namespace qel
{
namespace client
{
namespace
{

// Class and keys only: the namespace travels separately and the host is the server's.
CIMObjectPath localName(const CIMObjectPath& path)
{
    CIMObjectPath p = path;
    p.setHost(String());
    p.setNameSpace(CIMNamespaceName());
    return p;
}

void mark(CimRequest& r, Param p)
{
    r.present.set(static_cast<size_t>(p));
}

void setFlags(CimRequest& r, std::initializer_list<std::pair<Param, bool>> flags)
{
    for (const auto& f : flags)
    {
        switch (f.first)
        {
            case Param::LocalOnly:
                r.localOnly = f.second;
                break;
            case Param::DeepInheritance:
                r.deepInheritance = f.second;
                break;
            case Param::IncludeQualifiers:
                r.includeQualifiers = f.second;
                break;
            case Param::IncludeClassOrigin:
                r.includeClassOrigin = f.second;
                break;
            default:
                continue;
        }
        mark(r, f.first);
    }
}

void setPropertyList(CimRequest& r, const CIMPropertyList& list)
{
    if (list.isNull())
        return;
    r.propertyList = list;
    mark(r, Param::PropertyList);
}

void setAssociationFilters(
    CimRequest& r,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    if (!assocClass.isNull())
    {
        r.assocClass = assocClass;
        mark(r, Param::AssocClass);
    }
    if (!resultClass.isNull())
    {
        r.resultClass = resultClass;
        mark(r, Param::ResultClass);
    }
    if (role.size() != 0)
    {
        r.role = role;
        mark(r, Param::Role);
    }
    if (resultRole.size() != 0)
    {
        r.resultRole = resultRole;
        mark(r, Param::ResultRole);
    }
}

std::string reasonPhrase(int status)
{
    switch (status)
    {
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 413:
            return "Payload Too Large";
        case 500:
            return "Internal Server Error";
        case 501:
            return "Not Implemented";
        case 503:
            return "Service Unavailable";
        default:
            return "HTTP error";
    }
}

}  // namespace

CimXmlTransport::CimXmlTransport(
    std::unique_ptr<HttpClientConnection> connection,
    std::string authorization)
    : _connection(std::move(connection)), _authorization(std::move(authorization))
{
}

std::unique_ptr<CimXmlTransport> CimXmlTransport::overTcp(
    const std::string& host,
    unsigned port,
    const std::string& user,
    const std::string& password,
    Uint32 timeoutMs)
{
    auto connection = HttpClientConnection::tcp(host, port, std::chrono::milliseconds(timeoutMs));
    const std::string authorization = "Basic " + auth::base64Encode(user + ":" + password);
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), authorization));
}

std::unique_ptr<CimXmlTransport> CimXmlTransport::overTls(
    const std::string& host,
    unsigned port,
    const std::string& user,
    const std::string& password,
    Uint32 timeoutMs,
    const TlsClientOptions& tls)
{
    auto connection =
        HttpClientConnection::tls(host, port, std::chrono::milliseconds(timeoutMs), tls);
    const std::string authorization =
        user.empty() ? std::string() : "Basic " + auth::base64Encode(user + ":" + password);
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), authorization));
}

std::unique_ptr<CimXmlTransport>
CimXmlTransport::overLocalSocket(const std::string& socketPath, Uint32 timeoutMs)
{
    auto connection = HttpClientConnection::local(socketPath, std::chrono::milliseconds(timeoutMs));
    return std::unique_ptr<CimXmlTransport>(
        new CimXmlTransport(std::move(connection), std::string()));
}

void CimXmlTransport::setTimeout(Uint32 timeoutMilliseconds)
{
    _connection->setTimeout(std::chrono::milliseconds(timeoutMilliseconds));
}

CimRequest CimXmlTransport::intrinsic(Operation op, const CIMNamespaceName& nameSpace)
{
    CimRequest r;
    r.operation = op;
    r.methodName = String(cimxml::specOf(op).name);
    r.nameSpace = nameSpace;
    return r;
}

CimResponse CimXmlTransport::roundTrip(CimRequest& request)
{
    request.messageId = std::to_string(_nextMessageId++);
    std::vector<std::pair<std::string, std::string>> headers{
        {"CIMProtocolVersion", "1.0"},
        {"CIMOperation", "MethodCall"},
        {"CIMMethod", cimxml::cimMethodHeader(request)},
        {"CIMObject", cimxml::cimObjectHeader(request)},
    };
    if (!_authorization.empty())
        headers.emplace_back("Authorization", _authorization);
    const HttpResult reply = _connection->post(headers, cimxml::encodeRequest(request));
    if (reply.status != 200)
    {
        std::string text =
            "HTTP " + std::to_string(reply.status) + " " + reasonPhrase(reply.status);
        const std::string cimError = reply.header("CIMError");
        if (!cimError.empty())
            text += " (CIMError: " + cimError + ")";
        if (!reply.body.empty())
            text += ": " + reply.body.substr(0, reply.body.find('\n'));
        throw CIMException(
            reply.status == 401 ? CIM_ERR_ACCESS_DENIED : CIM_ERR_FAILED, String(text.c_str()));
    }
    CimResponse response;
    try
    {
        response = cimxml::decodeResponse(reply.body.data(), reply.body.size(), request);
    }
    catch (const cimxml::ResponseError& e)
    {
        throw CIMException(CIM_ERR_FAILED, String(e.what()));
    }
    if (response.failed)
        throw response.error;
    return response;
}

CIMClass CimXmlTransport::getClass(
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::GetClass, nameSpace);
    r.className = className;
    mark(r, Param::ClassName);
    setFlags(
        r, {{Param::LocalOnly, localOnly},
            {Param::IncludeQualifiers, includeQualifiers},
            {Param::IncludeClassOrigin, includeClassOrigin}});
    setPropertyList(r, propertyList);
    return roundTrip(r).cimClass;
}

CIMInstance CimXmlTransport::getInstance(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::GetInstance, nameSpace);
    r.objectName = localName(instanceName);
    mark(r, Param::InstanceName);
    setFlags(
        r, {{Param::LocalOnly, localOnly},
            {Param::IncludeQualifiers, includeQualifiers},
            {Param::IncludeClassOrigin, includeClassOrigin}});
    setPropertyList(r, propertyList);
    return roundTrip(r).instance;
}

Array<CIMInstance> CimXmlTransport::enumerateInstances(
    const CIMNamespaceName& nameSpace,
    const CIMName& className,
    Boolean deepInheritance,
    Boolean localOnly,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::EnumerateInstances, nameSpace);
    r.className = className;
    mark(r, Param::ClassName);
    setFlags(
        r, {{Param::DeepInheritance, deepInheritance},
            {Param::LocalOnly, localOnly},
            {Param::IncludeQualifiers, includeQualifiers},
            {Param::IncludeClassOrigin, includeClassOrigin}});
    setPropertyList(r, propertyList);
    return roundTrip(r).instances;
}

Array<CIMObjectPath>
CimXmlTransport::enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    CimRequest r = intrinsic(Operation::EnumerateInstanceNames, nameSpace);
    r.className = className;
    mark(r, Param::ClassName);
    return roundTrip(r).paths;
}

CIMObjectPath
CimXmlTransport::createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    CimRequest r = intrinsic(Operation::CreateInstance, nameSpace);
    r.instance = newInstance;
    mark(r, Param::NewInstance);
    const CimResponse response = roundTrip(r);
    if (response.paths.size() != 1)
        throw CIMException(CIM_ERR_FAILED, "CreateInstance answered without a name");
    return response.paths[0];
}

void CimXmlTransport::modifyInstance(
    const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance,
    Boolean includeQualifiers,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::ModifyInstance, nameSpace);
    r.instance = modifiedInstance.clone();
    r.instance.setPath(localName(modifiedInstance.getPath()));
    mark(r, Param::ModifiedInstance);
    setFlags(r, {{Param::IncludeQualifiers, includeQualifiers}});
    setPropertyList(r, propertyList);
    roundTrip(r);
}

void CimXmlTransport::deleteInstance(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName)
{
    CimRequest r = intrinsic(Operation::DeleteInstance, nameSpace);
    r.objectName = localName(instanceName);
    mark(r, Param::InstanceName);
    roundTrip(r);
}

Array<CIMObject> CimXmlTransport::associators(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::Associators, nameSpace);
    r.objectName = localName(objectName);
    mark(r, Param::ObjectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    setFlags(
        r, {{Param::IncludeQualifiers, includeQualifiers},
            {Param::IncludeClassOrigin, includeClassOrigin}});
    setPropertyList(r, propertyList);
    return roundTrip(r).objects;
}

Array<CIMObjectPath> CimXmlTransport::associatorNames(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& assocClass,
    const CIMName& resultClass,
    const String& role,
    const String& resultRole)
{
    CimRequest r = intrinsic(Operation::AssociatorNames, nameSpace);
    r.objectName = localName(objectName);
    mark(r, Param::ObjectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    return roundTrip(r).paths;
}

Array<CIMObject> CimXmlTransport::references(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role,
    Boolean includeQualifiers,
    Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CimRequest r = intrinsic(Operation::References, nameSpace);
    r.objectName = localName(objectName);
    mark(r, Param::ObjectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    setFlags(
        r, {{Param::IncludeQualifiers, includeQualifiers},
            {Param::IncludeClassOrigin, includeClassOrigin}});
    setPropertyList(r, propertyList);
    return roundTrip(r).objects;
}

Array<CIMObjectPath> CimXmlTransport::referenceNames(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName,
    const CIMName& resultClass,
    const String& role)
{
    CimRequest r = intrinsic(Operation::ReferenceNames, nameSpace);
    r.objectName = localName(objectName);
    mark(r, Param::ObjectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    return roundTrip(r).paths;
}

CIMValue CimXmlTransport::invokeMethod(
    const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName,
    const CIMName& methodName,
    const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    CimRequest r;
    r.operation = Operation::InvokeMethod;
    r.methodName = methodName.getString();
    r.nameSpace = nameSpace;
    r.target = localName(instanceName);
    r.inParameters = inParameters;
    CimResponse response = roundTrip(r);
    for (Uint32 i = 0; i < response.outParameters.size(); ++i)
        outParameters.append(response.outParameters[i]);
    return response.value;
}

}  // namespace client
}  // namespace qel
