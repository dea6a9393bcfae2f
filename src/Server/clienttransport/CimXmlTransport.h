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
        const std::string& host, unsigned port, const std::string& user,
        const std::string& password, Pegasus::Uint32 timeoutMs);
    // HTTPS: the server checked as `tls` says; with a client certificate in `tls` and an
    // empty `user`, no password is sent (the certificate is who the client is).
    static std::unique_ptr<CimXmlTransport> overTls(
        const std::string& host, unsigned port, const std::string& user,
        const std::string& password, Pegasus::Uint32 timeoutMs, const TlsClientOptions& tls);
    // As the calling process's user, identified by the server through the socket.
    static std::unique_ptr<CimXmlTransport>
    overLocalSocket(const std::string& socketPath, Pegasus::Uint32 timeoutMs);

    void setTimeout(Pegasus::Uint32 timeoutMilliseconds) override;

    // One request on the connection; HTTP errors and unusable replies are thrown as
    // CIMException, a CIM error reply comes back in the response.
    Pegasus::CIMOperationResponse execute(const Pegasus::CIMOperationRequest& request) override;

private:
    CimXmlTransport(std::unique_ptr<HttpClientConnection> connection, std::string authorization);
    std::unique_ptr<HttpClientConnection> _connection;
    std::string _authorization;  // "" on the local socket
    unsigned long _nextMessageId = 1;
};

}  // namespace client
}  // namespace qel

#endif
