#include "RecordingHandlers.h"

PEGASUS_USING_PEGASUS;

namespace qeltest
{

void HandlerRecord::_violation(const std::string& text)
{
    _violations.push_back(text);
}

void HandlerRecord::processing()
{
    _calls.push_back("processing");
    if (_state == PROCESSING)
    {
        _violation("processing() called twice");
    }
    else if (_state == COMPLETED)
    {
        _violation("processing() after complete()");
    }
    _state = PROCESSING;
}

void HandlerRecord::delivered(const char* what)
{
    _calls.push_back(what);
    if (_state == IDLE)
    {
        _violation(std::string(what) + " before processing()");
    }
    else if (_state == COMPLETED)
    {
        _violation(std::string(what) + " after complete()");
    }
}

void HandlerRecord::complete()
{
    _calls.push_back("complete");
    if (_state == IDLE)
    {
        _violation("complete() without processing()");
    }
    else if (_state == COMPLETED)
    {
        _violation("complete() called twice");
    }
    _state = COMPLETED;
}

std::string HandlerRecord::sequence() const
{
    std::string text;
    for (const std::string& call : _calls)
    {
        if (!text.empty())
        {
            text += ' ';
        }
        text += call;
    }
    return text;
}

void RecordingInstanceHandler::deliver(const CIMInstance& instance)
{
    record.delivered("deliver");
    instances.push_back(instance);
}

void RecordingInstanceHandler::deliver(const Array<CIMInstance>& list)
{
    record.delivered("deliver[]");
    for (Uint32 i = 0; i < list.size(); i++)
    {
        instances.push_back(list[i]);
    }
}

void RecordingObjectPathHandler::deliver(const CIMObjectPath& path)
{
    record.delivered("deliver");
    paths.push_back(path);
}

void RecordingObjectPathHandler::deliver(const Array<CIMObjectPath>& list)
{
    record.delivered("deliver[]");
    for (Uint32 i = 0; i < list.size(); i++)
    {
        paths.push_back(list[i]);
    }
}

void RecordingObjectHandler::deliver(const CIMObject& object)
{
    record.delivered("deliver");
    objects.push_back(object);
}

void RecordingObjectHandler::deliver(const Array<CIMObject>& list)
{
    record.delivered("deliver[]");
    for (Uint32 i = 0; i < list.size(); i++)
    {
        objects.push_back(list[i]);
    }
}

void RecordingMethodHandler::deliverParamValue(const CIMParamValue& value)
{
    record.delivered("deliverParamValue");
    outParameters.push_back(value);
}

void RecordingMethodHandler::deliverParamValue(const Array<CIMParamValue>& values)
{
    record.delivered("deliverParamValue[]");
    for (Uint32 i = 0; i < values.size(); i++)
    {
        outParameters.push_back(values[i]);
    }
}

void RecordingMethodHandler::deliver(const CIMValue& returnValue)
{
    record.delivered("deliver");
    returnValues.push_back(returnValue);
}

} // namespace qeltest
