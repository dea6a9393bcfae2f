// The discovery provider's registration with the server core: a provider
// compiled into the server, serving its classes in root/interop like any
// registered provider.
#ifndef QEL_Server_InteropRegistration_h
#define QEL_Server_InteropRegistration_h

#include "InteropOptions.h"

#include <Server/core/ProviderRegistry.h>

#include <functional>

namespace Pegasus
{
class CIMServer;
}

namespace qel
{
namespace interop
{

extern const char* const providerModuleName;  // "QEL_InteropProviderModule"
extern const char* const providerName;        // "QEL_InteropProvider"

// For CIMServerOptions::builtInProviders. A schema without root/interop
// registers no class (and the log says so): discovery is then not
// published, and the server runs as before.
std::function<Pegasus::BuiltInProvider(Pegasus::CIMServer&)> registration(InteropOptions options);

}  // namespace interop
}  // namespace qel

#endif
