// ClientTransport that speaks CIM-XML over HTTP: every CIMClient operation becomes one
// request on a kept-alive connection.
#ifndef QEL_SERVER_CLIENTTRANSPORT_CIMXMLTRANSPORT_H
#define QEL_SERVER_CLIENTTRANSPORT_CIMXMLTRANSPORT_H

#include "HttpClientConnection.h"

#include <Pegasus/Client/ClientTransport.h>
#include <Server/xml/Messages.h>

#include <memory>
#include <string>

namespace qel
{
namespace client
{

class CimXmlTransport : public Pegasus::ClientTransport
{
public:
    // Opens the connection at once (a refused one throws CannotConnectException).
    static std::unique_ptr<CimXmlTransport> overTcp(
        const std::string& host,
        unsigned port,
        const std::string& user,
        const std::string& password,
        Pegasus::Uint32 timeoutMs);
    // HTTPS: the server checked as `tls` says; with a client certificate in `tls` and an
    // empty `user`, no password is sent (the certificate is who the client is).
    static std::unique_ptr<CimXmlTransport> overTls(
        const std::string& host,
        unsigned port,
        const std::string& user,
        const std::string& password,
        Pegasus::Uint32 timeoutMs,
        const TlsClientOptions& tls);
    // As the calling process's user, identified by the server through the socket.
    static std::unique_ptr<CimXmlTransport>
    overLocalSocket(const std::string& socketPath, Pegasus::Uint32 timeoutMs);

    void setTimeout(Pegasus::Uint32 timeoutMilliseconds) override;

    Pegasus::CIMClass getClass(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className,
        Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::CIMInstance getInstance(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName,
        Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;
    Pegasus::CIMObjectPath createInstance(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& newInstance) override;
    void modifyInstance(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& modifiedInstance,
        Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList) override;
    void deleteInstance(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName) override;
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass,
        const Pegasus::String& role,
        const Pegasus::String& resultRole,
        Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass,
        const Pegasus::String& role,
        const Pegasus::String& resultRole) override;
    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass,
        const Pegasus::String& role,
        Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass,
        const Pegasus::String& role) override;
    Pegasus::CIMValue invokeMethod(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& methodName,
        const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

private:
    CimXmlTransport(std::unique_ptr<HttpClientConnection> connection, std::string authorization);
    // Sends the request and returns the successful response; CIM errors, HTTP errors and
    // unusable replies are thrown.
    cimxml::CimResponse roundTrip(cimxml::CimRequest& request);
    cimxml::CimRequest intrinsic(cimxml::Operation op, const Pegasus::CIMNamespaceName& nameSpace);

    std::unique_ptr<HttpClientConnection> _connection;
    std::string _authorization;  // "" on the local socket
    unsigned long _nextMessageId = 1;
};

}  // namespace client
}  // namespace qel

#endif
