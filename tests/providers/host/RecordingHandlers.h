// Response handlers of the provider test host: each records every call a
// provider makes on it and keeps what was delivered.
#ifndef QEL_TESTS_RecordingHandlers_h
#define QEL_TESTS_RecordingHandlers_h

#include <Pegasus/Common/ResponseHandler.h>

#include <string>
#include <vector>

namespace qeltest
{

using namespace Pegasus;

// The calls made on one handler, in order and joined by blanks:
// "processing", "deliver", "deliver[]", "deliverParamValue", "complete".
struct HandlerRecord
{
    std::string sequence;

    void note(const char* call) { sequence += (sequence.empty() ? "" : " ") + std::string(call); }
    bool untouched() const { return sequence.empty(); }
    // No call at all, or processing first, complete last, each once, deliveries between.
    bool inOrder() const
    {
        const std::string::size_type complete = sequence.find("complete");
        return sequence.empty() || (sequence.rfind("processing", 0) == 0 &&
                                    sequence.find("processing", 1) == std::string::npos &&
                                    complete + 8 == sequence.size());
    }
};

// For modifyInstance and deleteInstance, which get a plain handler.
template <class Handler = ResponseHandler>
class Recording : public Handler
{
public:
    void processing() override { record.note("processing"); }
    void complete() override { record.note("complete"); }

    HandlerRecord record;
};

// Handlers that deliver one kind of item, singly or as an array.
template <class Handler, class T>
class RecordingOf : public Recording<Handler>
{
public:
    void deliver(const T& item) override
    {
        this->record.note("deliver");
        delivered.push_back(item);
    }
    void deliver(const Array<T>& items) override
    {
        this->record.note("deliver[]");
        delivered.insert(delivered.end(), items.getData(), items.getData() + items.size());
    }

    std::vector<T> delivered;
};

typedef Recording<> RecordingResponseHandler;
typedef RecordingOf<InstanceResponseHandler, CIMInstance> RecordingInstanceHandler;
typedef RecordingOf<ObjectPathResponseHandler, CIMObjectPath> RecordingObjectPathHandler;
typedef RecordingOf<ObjectResponseHandler, CIMObject> RecordingObjectHandler;

class RecordingMethodHandler : public Recording<MethodResultResponseHandler>
{
public:
    void deliverParamValue(const CIMParamValue& value) override
    {
        record.note("deliverParamValue");
        outParameters.push_back(value);
    }
    void deliverParamValue(const Array<CIMParamValue>& values) override
    {
        record.note("deliverParamValue[]");
        outParameters.insert(
            outParameters.end(), values.getData(), values.getData() + values.size());
    }
    void deliver(const CIMValue& returnValue) override
    {
        record.note("deliver");
        returnValues.push_back(returnValue);
    }

    std::vector<CIMParamValue> outParameters;
    std::vector<CIMValue> returnValues;
};

}  // namespace qeltest

#endif
