#include "InteropProvider.h"

#include "InteropModel.h"

#include <Server/core/CoreText.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>

#include <set>

using namespace Pegasus;

namespace qel
{
namespace interop
{

namespace
{

[[noreturn]] void readOnly(const CIMObjectPath& path)
{
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED,
        path.getClassName().getString() + " instances describe the server and cannot be changed.");
}

// The far ends of the hops from `object`, each object once, kept when their
// class is `resultClass` or one of its subclasses.
std::vector<const CIMObjectPath*> associated(
    InteropModel& model, const std::vector<Link>& links, const CIMObjectPath& object,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    std::vector<const CIMObjectPath*> result;
    std::set<std::string> seen;
    for (const Hop& hop : hopsFrom(links, object, role, resultRole))
    {
        if (!resultClass.isNull() && !model.isA(*hop.farEnd, resultClass))
            continue;
        const std::string key = nameKey(hop.farEnd->getNameSpace()) + "\n" + objectKey(*hop.farEnd);
        if (seen.insert(key).second)
            result.push_back(hop.farEnd);
    }
    return result;
}

// The object the first reference key of a path names; an empty path when
// it has none.
CIMObjectPath firstReference(const CIMObjectPath& path)
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
    {
        if (keys[i].getType() == CIMKeyBinding::REFERENCE)
            return CIMObjectPath(keys[i].getValue());
    }
    return CIMObjectPath();
}

}  // namespace

InteropProvider::InteropProvider(ServerFacts facts) : _facts(std::move(facts))
{
}

void InteropProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void InteropProvider::terminate()
{
    delete this;
}

void InteropProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList&,
    InstanceResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, includeQualifiers, includeClassOrigin);
    // An association instance is among the links of either of its ends.
    const CIMObjectPath end = firstReference(instanceReference);
    const CIMObjectPath* near = end.getClassName().isNull() ? nullptr : &end;
    handler.processing();
    for (const CIMInstance& instance : model.instances(instanceReference.getClassName(), near))
    {
        if (sameObject(instanceReference, instance.getPath()))
        {
            handler.deliver(instance);
            handler.complete();
            return;
        }
    }
    throw CIMException(CIM_ERR_NOT_FOUND);
}

void InteropProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList&,
    InstanceResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, includeQualifiers, includeClassOrigin);
    handler.processing();
    for (const CIMInstance& instance : model.instances(classReference.getClassName()))
        handler.deliver(instance);
    handler.complete();
}

void InteropProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, false, false);
    handler.processing();
    for (const CIMInstance& instance : model.instances(classReference.getClassName()))
        handler.deliver(instance.getPath());
    handler.complete();
}

void InteropProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath& instanceReference, const CIMInstance&,
    const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    readOnly(instanceReference);
}

void InteropProvider::createInstance(
    const OperationContext&, const CIMObjectPath& instanceReference, const CIMInstance&,
    ObjectPathResponseHandler&)
{
    readOnly(instanceReference);
}

void InteropProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath& instanceReference, ResponseHandler&)
{
    readOnly(instanceReference);
}

void InteropProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, includeQualifiers, includeClassOrigin);
    const std::vector<Link> links = model.links(associationClass, &objectName);
    handler.processing();
    handler.deliver(model.objectsAt(
        associated(model, links, objectName, resultClass, role, resultRole), propertyList));
    handler.complete();
}

void InteropProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, false, false);
    const std::vector<Link> links = model.links(associationClass, &objectName);
    handler.processing();
    for (const CIMObjectPath* path :
         associated(model, links, objectName, resultClass, role, resultRole))
        handler.deliver(*path);
    handler.complete();
}

void InteropProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList&, ObjectResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, includeQualifiers, includeClassOrigin);
    const std::vector<Link> links = model.links(resultClass, &objectName);
    handler.processing();
    for (const Hop& hop : hopsFrom(links, objectName, role, String()))
        handler.deliver(CIMObject(model.instanceOf(*hop.link)));
    handler.complete();
}

void InteropProvider::referenceNames(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, ObjectPathResponseHandler& handler)
{
    InteropModel model(_facts, _cimom, context, false, false);
    const std::vector<Link> links = model.links(resultClass, &objectName);
    handler.processing();
    for (const Hop& hop : hopsFrom(links, objectName, role, String()))
        handler.deliver(model.instanceOf(*hop.link).getPath());
    handler.complete();
}

}  // namespace interop
}  // namespace qel
