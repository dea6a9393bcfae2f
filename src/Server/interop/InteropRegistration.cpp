#include "InteropRegistration.h"

#include "InteropModel.h"
#include "InteropNamespace.h"
#include "InteropProvider.h"

#include <Server/core/CIMServer.h>
#include <Server/core/ServerLog.h>
#include <Server/repository/ClassRepository.h>

using namespace Pegasus;

namespace qel
{
namespace interop
{

const char* const providerModuleName = "QEL_InteropProviderModule";
const char* const providerName = "QEL_InteropProvider";

namespace
{

enum ProviderType : Uint16
{
    Instance = 2,
    Association = 3
};

}  // namespace

std::function<BuiltInProvider(CIMServer&)> registration(InteropOptions options)
{
    return [options](CIMServer& server)
    {
        BuiltInProvider provider;
        provider.moduleName = providerModuleName;
        provider.providerName = providerName;
        const CIMNamespaceName ns(namespaceName);
        if (server.repository().namespaceExists(ns))
        {
            for (const ServedClass& c : servedClasses())
                provider.capabilities.push_back(BuiltInProvider::Capability{
                    ns, c.name,
                    c.association ? std::vector<Uint16>{Instance, Association}
                                  : std::vector<Uint16>{Instance}});
        }
        else
        {
            ServerLog::warning(
                std::string("the schema has no ") + namespaceName +
                " namespace: the server's discovery classes are not published");
        }
        // Made on first use: the server is running then, and what it knows
        // of itself can be read.
        CIMServer* running = &server;
        provider.create = [running, options]() -> CIMProvider*
        {
            ServerFacts facts;
            facts.repository = &running->repository();
            facts.registry = &running->registry();
            facts.hostName = running->dispatcher().hostName();
            facts.startTime = running->startTime();
            facts.options = options;
            return new InteropProvider(std::move(facts));
        };
        return provider;
    };
}

}  // namespace interop
}  // namespace qel
