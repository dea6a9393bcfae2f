#include "DispatcherExecutor.h"

#include <Server/interop/InteropNamespace.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <exception>

using namespace Pegasus;
using qel::cimxml::CimRequest;
using qel::cimxml::CimResponse;
using qel::cimxml::Operation;

namespace qel
{
namespace server
{

void DispatcherExecutor::execute(
    const CimRequest& request,
    const http::ClientIdentity& client,
    CimResponse& response)
{
    try
    {
        const OperationContext context = Dispatcher::requestContext(
            String(client.user.c_str()), String(client.clientAddress.c_str()));
        run(request, context, response);
    }
    catch (const CIMException& e)
    {
        response.setError(e);
    }
    catch (const Exception& e)
    {
        response.setError(CIMException(CIM_ERR_FAILED, e.getMessage()));
    }
    catch (const std::exception& e)
    {
        response.setError(CIMException(CIM_ERR_FAILED, String(e.what())));
    }
    catch (...)
    {
        response.setError(CIMException(CIM_ERR_FAILED, "Unknown error."));
    }
}

void DispatcherExecutor::run(const CimRequest& r, const OperationContext& ctx, CimResponse& out)
{
    Dispatcher& d = _dispatcher;
    // Clients may name the discovery namespace by its short alias.
    const CIMNamespaceName ns = interop::resolveNamespaceAlias(r.nameSpace);
    switch (r.operation)
    {
        case Operation::GetClass:
            out.cimClass = d.getClass(
                ctx, ns, r.className, r.localOnly, r.includeQualifiers, r.includeClassOrigin,
                r.propertyList);
            return;
        case Operation::EnumerateClasses:
            out.classes = d.enumerateClasses(
                ctx, ns, r.className, r.deepInheritance, r.localOnly, r.includeQualifiers,
                r.includeClassOrigin);
            return;
        case Operation::EnumerateClassNames:
            out.classNames = d.enumerateClassNames(ctx, ns, r.className, r.deepInheritance);
            return;
        case Operation::GetInstance:
            out.instance = d.getInstance(
                ctx, ns, r.objectName, r.localOnly, r.includeQualifiers, r.includeClassOrigin,
                r.propertyList);
            return;
        case Operation::EnumerateInstances:
            out.instances = d.enumerateInstances(
                ctx, ns, r.className, r.deepInheritance, r.localOnly, r.includeQualifiers,
                r.includeClassOrigin, r.propertyList);
            return;
        case Operation::EnumerateInstanceNames:
            out.paths = d.enumerateInstanceNames(ctx, ns, r.className);
            return;
        case Operation::CreateInstance:
            out.paths.append(d.createInstance(ctx, ns, r.instance));
            return;
        case Operation::ModifyInstance:
            d.modifyInstance(ctx, ns, r.instance, r.includeQualifiers, r.propertyList);
            return;
        case Operation::DeleteInstance:
            d.deleteInstance(ctx, ns, r.objectName);
            return;
        case Operation::GetProperty:
            out.value = d.getProperty(ctx, ns, r.objectName, r.propertyName);
            return;
        case Operation::SetProperty:
            d.setProperty(ctx, ns, r.objectName, r.propertyName, r.newValue);
            return;
        case Operation::Associators:
            out.objects = d.associators(
                ctx, ns, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole,
                r.includeQualifiers, r.includeClassOrigin, r.propertyList);
            return;
        case Operation::AssociatorNames:
            out.paths = d.associatorNames(
                ctx, ns, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole);
            return;
        case Operation::References:
            out.objects = d.references(
                ctx, ns, r.objectName, r.resultClass, r.role, r.includeQualifiers,
                r.includeClassOrigin, r.propertyList);
            return;
        case Operation::ReferenceNames:
            out.paths = d.referenceNames(ctx, ns, r.objectName, r.resultClass, r.role);
            return;
        case Operation::InvokeMethod:
            out.value = d.invokeMethod(
                ctx, ns, r.target, CIMName(r.methodName), r.inParameters, out.outParameters);
            return;
        case Operation::CreateClass:
        case Operation::ModifyClass:
        case Operation::DeleteClass:
        case Operation::ExecQuery:
            break;
    }
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED,
        String(cimxml::specOf(r.operation).name) + " is not supported by this server");
}

}  // namespace server
}  // namespace qel
