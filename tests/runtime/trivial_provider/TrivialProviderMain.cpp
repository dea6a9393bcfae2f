// A provider module in the plain OpenPegasus style: one instance-and-method
// provider for the class QEL_Trivial, created by name through the exported
// entry point. It names one fixed instance and echoes a method's input so
// that the tests can check the whole path from dlopen() to delivered results.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

PEGASUS_USING_PEGASUS;
PEGASUS_USING_STD;

namespace
{

class TrivialProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    TrivialProvider() {}
    virtual ~TrivialProvider() {}

    virtual void initialize(CIMOMHandle& cimom) { _cimom = cimom; }
    virtual void terminate() { delete this; }

    virtual void getInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
    {
        throw CIMNotSupportedException("TrivialProvider does not support getInstance.");
    }

    virtual void enumerateInstances(
        const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
    {
        throw CIMNotSupportedException("TrivialProvider does not support enumerateInstances.");
    }

    virtual void enumerateInstanceNames(
        const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Name", CIMValue(String("only"))));
        handler.processing();
        handler.deliver(CIMObjectPath(String(), CIMNamespaceName("root/qel"), "QEL_Trivial", keys));
        handler.complete();
    }

    virtual void modifyInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler)
    {
        throw CIMNotSupportedException("TrivialProvider does not support modifyInstance.");
    }

    virtual void createInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler)
    {
        throw CIMNotSupportedException("TrivialProvider does not support createInstance.");
    }

    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference,
        ResponseHandler& handler)
    {
        throw CIMNotSupportedException("TrivialProvider does not support deleteInstance.");
    }

    // Echo(Text): returns the text's length and hands the text back as the
    // out parameter Echoed; the caller's user name goes to Caller.
    virtual void invokeMethod(
        const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler)
    {
        if (!methodName.equal("Echo"))
            throw CIMMethodNotFoundException(methodName.getString());
        String text;
        for (Uint32 i = 0; i < inParameters.size(); i++)
        {
            if (String::equalNoCase(inParameters[i].getParameterName(), "Text"))
                inParameters[i].getValue().get(text);
        }
        IdentityContainer id(context.get(IdentityContainer::NAME));
        handler.processing();
        handler.deliverParamValue(CIMParamValue("Echoed", CIMValue(text)));
        handler.deliverParamValue(CIMParamValue("Caller", CIMValue(id.getUserName())));
        handler.deliver(CIMValue(Uint32(text.size())));
        handler.complete();
    }

private:
    CIMOMHandle _cimom;
};

}  // namespace

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "TrivialProvider"))
        return new TrivialProvider();
    return 0;
}
