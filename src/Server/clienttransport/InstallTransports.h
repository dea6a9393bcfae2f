// Makes CIMClient::connect() and connectLocal() in this process speak CIM-XML.
#ifndef QEL_SERVER_CLIENTTRANSPORT_INSTALLTRANSPORTS_H
#define QEL_SERVER_CLIENTTRANSPORT_INSTALLTRANSPORTS_H

#include <string>

namespace qel
{
namespace client
{

// Where the server listens for local connections unless told otherwise.
constexpr const char* kDefaultLocalSocketPath = "/var/tmp/cimxml.socket";

// $QEL_CIMXML_SOCKET when set, else kDefaultLocalSocketPath.
std::string defaultLocalSocketPath();

// CIMClient::connect() over TCP with HTTP Basic credentials.
void installTcpTransport();
// CIMClient::connectLocal() over the server's Unix socket at `localSocketPath`
// ("" = defaultLocalSocketPath()).
void installLocalTransport(const std::string& localSocketPath = std::string());
// Both of the above.
void installCimXmlTransports(const std::string& localSocketPath = std::string());

}  // namespace client
}  // namespace qel

#endif
