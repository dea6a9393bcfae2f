// What the front-ends tell the discovery provider about how clients reach
// the server. The TCP port may be chosen by the system and TLS set up
// later, so the access points are asked for at each request.
#ifndef QEL_Server_InteropOptions_h
#define QEL_Server_InteropOptions_h

#include <Pegasus/Common/Config.h>

#include <functional>
#include <string>
#include <vector>

namespace qel
{
namespace interop
{

// One entry of CIM_ObjectManagerCommunicationMechanism's
// AuthenticationMechanismsSupported (0 Unknown, 1 Other, 2 None, 3 Basic,
// 4 Digest) with its AuthenticationMechanismDescriptions text.
struct AuthenticationMechanism
{
    Pegasus::Uint16 value;
    std::string description;
};

// HTTP Basic against the password file.
AuthenticationMechanism basicAuthentication();
// A TLS client certificate: the value map has no entry of its own, so
// "Other" with a description.
AuthenticationMechanism clientCertificateAuthentication();

// One place where CIM-XML is served: one CIM_CIMXMLCommunicationMechanism.
struct AccessPoint
{
    std::string name;  // the instance's Name key, unique per server: "http://127.0.0.1:5988"
    std::vector<AuthenticationMechanism> authentication;
};

struct InteropOptions
{
    std::string productName = "qel-cimserver";
    // "": the version this server was built as.
    std::string version;
    // Asked at each request; unset: no access point is published.
    std::function<std::vector<AccessPoint>()> accessPoints;
};

}  // namespace interop
}  // namespace qel

#endif
