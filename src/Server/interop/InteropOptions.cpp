#include "InteropOptions.h"

namespace qel
{
namespace interop
{

AuthenticationMechanism basicAuthentication()
{
    return AuthenticationMechanism{3, "Basic"};
}

AuthenticationMechanism clientCertificateAuthentication()
{
    return AuthenticationMechanism{1, "TLS client certificate"};
}

}  // namespace interop
}  // namespace qel
