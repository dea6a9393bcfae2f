#include "InstallTransports.h"

#include "CimXmlTransport.h"

#include <Pegasus/Client/ClientTransport.h>
#include <Server/xml/XmlText.h>

#include <cstdlib>

using namespace Pegasus;

namespace qel
{
namespace client
{

std::string defaultLocalSocketPath()
{
    const char* env = std::getenv("QEL_CIMXML_SOCKET");
    return env && *env ? env : kDefaultLocalSocketPath;
}

void installTcpTransport()
{
    setTcpTransportFactory(
        [](const String& host, Uint32 port, const String& user, const String& password,
           Uint32 timeoutMs) -> std::unique_ptr<ClientTransport>
        {
            return CimXmlTransport::overTcp(
                cimxml::toUtf8(host), port, cimxml::toUtf8(user), cimxml::toUtf8(password),
                timeoutMs);
        });
}

void installLocalTransport(const std::string& localSocketPath)
{
    const std::string path = localSocketPath.empty() ? defaultLocalSocketPath() : localSocketPath;
    setLocalTransportFactory(
        [path](Uint32 timeoutMs) -> std::unique_ptr<ClientTransport>
        { return CimXmlTransport::overLocalSocket(path, timeoutMs); });
}

void installCimXmlTransports(const std::string& localSocketPath)
{
    installTcpTransport();
    installLocalTransport(localSocketPath);
}

}  // namespace client
}  // namespace qel
