// Response handlers of the provider test host. Each records every call a
// provider makes on it, keeps what was delivered, and notes every departure
// from the order processing -> deliver* -> complete.
#ifndef QEL_TESTS_RecordingHandlers_h
#define QEL_TESTS_RecordingHandlers_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/ResponseHandler.h>

#include <string>
#include <vector>

namespace qeltest
{

// The call log and order check shared by every recording handler.
class HandlerRecord
{
public:
    void processing();
    void delivered(const char* what);
    void complete();

    // Every call in order: "processing", "deliver", "deliver[]", "complete".
    const std::vector<std::string>& calls() const { return _calls; }
    // The calls joined by single blanks ("" when none was made).
    std::string sequence() const;
    // Departures from processing -> deliver* -> complete, one text each.
    const std::vector<std::string>& violations() const { return _violations; }
    bool untouched() const { return _calls.empty(); }

private:
    enum State { IDLE, PROCESSING, COMPLETED };
    void _violation(const std::string& text);

    State _state = IDLE;
    std::vector<std::string> _calls;
    std::vector<std::string> _violations;
};

class RecordingInstanceHandler : public Pegasus::InstanceResponseHandler
{
public:
    void processing() override { record.processing(); }
    void complete() override { record.complete(); }
    void deliver(const Pegasus::CIMInstance& instance) override;
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& instances) override;

    HandlerRecord record;
    std::vector<Pegasus::CIMInstance> instances;
};

class RecordingObjectPathHandler : public Pegasus::ObjectPathResponseHandler
{
public:
    void processing() override { record.processing(); }
    void complete() override { record.complete(); }
    void deliver(const Pegasus::CIMObjectPath& path) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& paths) override;

    HandlerRecord record;
    std::vector<Pegasus::CIMObjectPath> paths;
};

class RecordingObjectHandler : public Pegasus::ObjectResponseHandler
{
public:
    void processing() override { record.processing(); }
    void complete() override { record.complete(); }
    void deliver(const Pegasus::CIMObject& object) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& objects) override;

    HandlerRecord record;
    std::vector<Pegasus::CIMObject> objects;
};

class RecordingMethodHandler : public Pegasus::MethodResultResponseHandler
{
public:
    void processing() override { record.processing(); }
    void complete() override { record.complete(); }
    void deliverParamValue(const Pegasus::CIMParamValue& value) override;
    void deliverParamValue(const Pegasus::Array<Pegasus::CIMParamValue>& values) override;
    void deliver(const Pegasus::CIMValue& returnValue) override;

    HandlerRecord record;
    std::vector<Pegasus::CIMParamValue> outParameters;
    std::vector<Pegasus::CIMValue> returnValues;
};

// For modifyInstance and deleteInstance, which get a plain handler.
class RecordingResponseHandler : public Pegasus::ResponseHandler
{
public:
    void processing() override { record.processing(); }
    void complete() override { record.complete(); }

    HandlerRecord record;
};

} // namespace qeltest

#endif
