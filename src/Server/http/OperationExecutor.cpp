#include "OperationExecutor.h"

#include <Server/xml/Operations.h>

using namespace Pegasus;

namespace qel
{
namespace http
{

void OperationExecutor::execute(
    const cimxml::CimRequest& request, const ClientIdentity& client, CIMResponseSink& sink)
{
    cimxml::CimResponse r(request);
    execute(request, client, r);
    if (r.failed)
        return sink.fail(r.error);
    try
    {
        switch (cimxml::entryOf(request.operation).result)
        {
            case cimxml::ResultKind::Class:
                sink.deliverClass(r.cimClass);
                break;
            case cimxml::ResultKind::Classes:
                for (Uint32 i = 0; i < r.classes.size(); ++i)
                    sink.deliverClass(r.classes[i]);
                break;
            case cimxml::ResultKind::ClassNames:
                for (Uint32 i = 0; i < r.classNames.size(); ++i)
                    sink.deliverClassName(r.classNames[i]);
                break;
            case cimxml::ResultKind::Instance:
                sink.deliverInstance(r.instance);
                break;
            case cimxml::ResultKind::NamedInstances:
            case cimxml::ResultKind::InstancesWithPath:
                for (Uint32 i = 0; i < r.instances.size(); ++i)
                    sink.deliverInstance(r.instances[i]);
                break;
            case cimxml::ResultKind::InstanceNames:
            case cimxml::ResultKind::CreatedName:
            case cimxml::ResultKind::ObjectPaths:
            case cimxml::ResultKind::InstancePaths:
                for (Uint32 i = 0; i < r.paths.size(); ++i)
                    sink.deliverPath(r.paths[i]);
                break;
            case cimxml::ResultKind::ObjectsWithPath:
                for (Uint32 i = 0; i < r.objects.size(); ++i)
                    sink.deliverObject(r.objects[i]);
                break;
            case cimxml::ResultKind::Nothing:
            case cimxml::ResultKind::MethodResult:
            case cimxml::ResultKind::PropertyValue:
                break;
        }
    }
    catch (const CIMException& e)
    {
        return sink.fail(e);
    }
    sink.complete(r.value, r.outParameters);
}

}  // namespace http
}  // namespace qel
