// An example provider module written against the OpenPegasus provider API only, built
// outside the source tree against the installed runtime (CMakeLists.txt). It serves one
// instance of QEL_Greeting (Greeting.mof).
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

PEGASUS_USING_PEGASUS;

namespace
{

const char* kClass = "QEL_Greeting";

CIMObjectPath greetingPath(const CIMNamespaceName& nameSpace)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Name", CIMValue(String("hello"))));
    return CIMObjectPath(String(), nameSpace, kClass, keys);
}

CIMInstance greeting(const CIMNamespaceName& nameSpace)
{
    CIMInstance instance(kClass);
    instance.addProperty(CIMProperty("Name", CIMValue(String("hello"))));
    instance.addProperty(
        CIMProperty("Text", CIMValue(String("Hello from a module built out of tree"))));
    instance.setPath(greetingPath(nameSpace));
    return instance;
}

class GreetingProvider : public CIMInstanceProvider
{
public:
    void initialize(CIMOMHandle&) override {}
    void terminate() override { delete this; }

    void getInstance(
        const OperationContext&, const CIMObjectPath& instanceReference, const Boolean,
        const Boolean, const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        const Array<CIMKeyBinding>& keys = instanceReference.getKeyBindings();
        if (keys.size() != 1 || !keys[0].getName().equal("Name") || keys[0].getValue() != "hello")
            throw CIMObjectNotFoundException(instanceReference.toString());
        handler.processing();
        handler.deliver(greeting(instanceReference.getNameSpace()));
        handler.complete();
    }

    void enumerateInstances(
        const OperationContext&, const CIMObjectPath& classReference, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(greeting(classReference.getNameSpace()));
        handler.complete();
    }

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(greetingPath(classReference.getNameSpace()));
        handler.complete();
    }

    void modifyInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("QEL_Greeting cannot be changed");
    }

    void createInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("QEL_Greeting cannot be created");
    }

    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("QEL_Greeting cannot be deleted");
    }
};

}  // namespace

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "QEL_GreetingProvider"))
        return new GreetingProvider();
    return 0;
}
