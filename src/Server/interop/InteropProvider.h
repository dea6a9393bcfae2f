// The provider inside the server that publishes root/interop: the object
// manager, its CIM-XML access points and namespaces, and the registered
// management profiles with the elements that conform to them. Read-only;
// instances are built for each request from the server's facts, so nothing
// is kept between requests and nothing needs a lock.
#ifndef QEL_Server_InteropProvider_h
#define QEL_Server_InteropProvider_h

#include "InteropFacts.h"

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

namespace qel
{
namespace interop
{

class InteropProvider : public Pegasus::CIMInstanceProvider, public Pegasus::CIMAssociationProvider
{
public:
    explicit InteropProvider(ServerFacts facts);

    void initialize(Pegasus::CIMOMHandle& cimom) override;
    // Deletes the provider, as the server expects of every provider.
    void terminate() override;

    void getInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstances(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& classReference,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstanceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& classReference,
        Pegasus::ObjectPathResponseHandler& handler) override;

    // The namespace only tells what the server is: CIM_ERR_NOT_SUPPORTED.
    void modifyInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::CIMInstance& instanceObject, const Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList, Pegasus::ResponseHandler& handler) override;
    void createInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::CIMInstance& instanceObject,
        Pegasus::ObjectPathResponseHandler& handler) override;
    void deleteInstance(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        Pegasus::ResponseHandler& handler) override;

    void associators(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& associationClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::ObjectResponseHandler& handler) override;

    void associatorNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& associationClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole,
        Pegasus::ObjectPathResponseHandler& handler) override;

    // `resultClass` is the association class, as the server passes it.
    void references(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::ObjectResponseHandler& handler) override;

    void referenceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        Pegasus::ObjectPathResponseHandler& handler) override;

private:
    ServerFacts _facts;
    Pegasus::CIMOMHandle _cimom;  // set by initialize(), before any request
};

}  // namespace interop
}  // namespace qel

#endif
