#include "ServerResponseHandlers.h"

#include <Pegasus/Common/CIMStatusCode.h>

namespace Pegasus
{

namespace
{

const char* const tooMany = "Too many objects delivered.";
const char* const tooFew = "Too few objects delivered.";

}  // namespace

void HandlerProtocol::checkOpen() const
{
    if (_complete)
        throw CIMException(CIM_ERR_FAILED, "An object was delivered after complete().");
}

void HandlerProtocol::setStatus(const CIMException& status)
{
    _status = std::make_unique<CIMException>(status);
}

void HandlerProtocol::notInitialized()
{
    throw CIMException(CIM_ERR_FAILED, "The object is not initialized.");
}

// GetInstanceResponseHandler

GetInstanceResponseHandler::GetInstanceResponseHandler(const CIMObjectPath& requestedName)
    : _requestedName(requestedName)
{
}

void GetInstanceResponseHandler::deliver(const CIMInstance& instance)
{
    _protocol.checkOpen();
    if (instance.isUninitialized())
        HandlerProtocol::notInitialized();
    if (_delivered)
        throw CIMException(CIM_ERR_FAILED, tooMany);
    _instance = instance;
    _delivered = true;
}

void GetInstanceResponseHandler::deliver(const Array<CIMInstance>& instances)
{
    for (Uint32 i = 0; i < instances.size(); ++i)
        deliver(instances[i]);
}

void GetInstanceResponseHandler::complete()
{
    if (_protocol.completed())
        return;
    if (!_delivered)
    {
        // The provider claims success without an instance: the client sees
        // NOT_FOUND if the provider swallows the exception below.
        _protocol.setStatus(CIMException(CIM_ERR_NOT_FOUND));
        throw CIMException(CIM_ERR_FAILED, tooFew);
    }
    _protocol.markComplete();
}

CIMInstance GetInstanceResponseHandler::takeResult()
{
    CIMInstance taken = result();
    _instance = CIMInstance();
    return taken;
}

CIMInstance GetInstanceResponseHandler::result() const
{
    if (!_protocol.completed() || !_delivered)
        throw CIMException(CIM_ERR_FAILED, tooFew);
    if (_instance.getPath().getKeyBindings().size() == 0)
    {
        CIMInstance named = _instance.clone();
        named.setPath(_requestedName);
        return named;
    }
    return _instance;
}

// InstanceListResponseHandler

void InstanceListResponseHandler::deliver(const CIMInstance& instance)
{
    _protocol.checkOpen();
    if (instance.isUninitialized())
        HandlerProtocol::notInitialized();
    _batch.add(instance);
}

void InstanceListResponseHandler::deliver(const Array<CIMInstance>& instances)
{
    for (Uint32 i = 0; i < instances.size(); ++i)
        deliver(instances[i]);
}

void InstanceListResponseHandler::complete()
{
    if (_protocol.completed())
        return;
    _batch.flush();
    _protocol.markComplete();
}

// ObjectPathListResponseHandler

void ObjectPathListResponseHandler::deliver(const CIMObjectPath& path)
{
    _protocol.checkOpen();
    if (path.getClassName().isNull())
        HandlerProtocol::notInitialized();
    _batch.add(path);
}

void ObjectPathListResponseHandler::deliver(const Array<CIMObjectPath>& paths)
{
    for (Uint32 i = 0; i < paths.size(); ++i)
        deliver(paths[i]);
}

void ObjectPathListResponseHandler::complete()
{
    if (_protocol.completed())
        return;
    _batch.flush();
    _protocol.markComplete();
}

// CreateInstanceResponseHandler

void CreateInstanceResponseHandler::deliver(const CIMObjectPath& path)
{
    _protocol.checkOpen();
    if (path.getClassName().isNull())
        HandlerProtocol::notInitialized();
    if (_delivered)
        throw CIMException(CIM_ERR_FAILED, tooMany);
    _path = path;
    _delivered = true;
}

void CreateInstanceResponseHandler::deliver(const Array<CIMObjectPath>& paths)
{
    for (Uint32 i = 0; i < paths.size(); ++i)
        deliver(paths[i]);
}

void CreateInstanceResponseHandler::complete()
{
    if (_protocol.completed())
        return;
    if (!_delivered)
        throw CIMException(CIM_ERR_FAILED, tooFew);
    _protocol.markComplete();
}

CIMObjectPath CreateInstanceResponseHandler::result() const
{
    if (!_protocol.completed() || !_delivered)
        throw CIMException(CIM_ERR_FAILED, tooFew);
    return _path;
}

// ObjectListResponseHandler

void ObjectListResponseHandler::deliver(const CIMObject& object)
{
    _protocol.checkOpen();
    if (object.isUninitialized())
        HandlerProtocol::notInitialized();
    _batch.add(object);
}

void ObjectListResponseHandler::deliver(const Array<CIMObject>& objects)
{
    for (Uint32 i = 0; i < objects.size(); ++i)
        deliver(objects[i]);
}

void ObjectListResponseHandler::complete()
{
    if (_protocol.completed())
        return;
    _batch.flush();
    _protocol.markComplete();
}

// MethodResultHandler

void MethodResultHandler::deliverParamValue(const CIMParamValue& value)
{
    _protocol.checkOpen();
    if (value.isUninitialized())
        HandlerProtocol::notInitialized();
    _outParameters.append(value);
}

void MethodResultHandler::deliverParamValue(const Array<CIMParamValue>& values)
{
    for (Uint32 i = 0; i < values.size(); ++i)
        deliverParamValue(values[i]);
}

void MethodResultHandler::deliver(const CIMValue& returnValue)
{
    _protocol.checkOpen();
    if (returnValue.isNull())
        HandlerProtocol::notInitialized();
    _returnValue = returnValue;
}

void MethodResultHandler::complete()
{
    _protocol.markComplete();
}

CIMValue MethodResultHandler::returnValue() const
{
    return _protocol.completed() ? _returnValue : CIMValue();
}

Array<CIMParamValue> MethodResultHandler::outParameters() const
{
    return _protocol.completed() ? _outParameters : Array<CIMParamValue>();
}

}  // namespace Pegasus
