// Response handlers that keep what a provider delivers, for tests.
#ifndef QEL_TEST_RECORDING_HANDLERS_H
#define QEL_TEST_RECORDING_HANDLERS_H

#include <Pegasus/Common/ResponseHandler.h>

namespace qeltest
{

// Counts processing()/complete() and keeps every delivery, for all handler
// kinds at once (one ResponseHandler part thanks to virtual inheritance).
class RecordingHandler : public Pegasus::InstanceResponseHandler,
                         public Pegasus::ObjectPathResponseHandler,
                         public Pegasus::ObjectResponseHandler,
                         public Pegasus::MethodResultResponseHandler
{
public:
    void processing() override { processingCalls++; }
    void complete() override { completeCalls++; }

    void deliver(const Pegasus::CIMInstance& x) override { instances.append(x); }
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& x) override
    {
        instances.appendArray(x);
    }
    void deliver(const Pegasus::CIMObjectPath& x) override { paths.append(x); }
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& x) override
    {
        paths.appendArray(x);
    }
    void deliver(const Pegasus::CIMObject& x) override { objects.append(x); }
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& x) override
    {
        objects.appendArray(x);
    }
    void deliverParamValue(const Pegasus::CIMParamValue& x) override
    {
        outParams.append(x);
    }
    void deliverParamValue(
        const Pegasus::Array<Pegasus::CIMParamValue>& x) override
    {
        outParams.appendArray(x);
    }
    void deliver(const Pegasus::CIMValue& x) override { returnValue = x; }

    // The protected accessor, opened for checks.
    Pegasus::OperationContext context() const { return getContext(); }

    int processingCalls = 0;
    int completeCalls = 0;
    Pegasus::Array<Pegasus::CIMInstance> instances;
    Pegasus::Array<Pegasus::CIMObjectPath> paths;
    Pegasus::Array<Pegasus::CIMObject> objects;
    Pegasus::Array<Pegasus::CIMParamValue> outParams;
    Pegasus::CIMValue returnValue;
};

}  // namespace qeltest

#endif
