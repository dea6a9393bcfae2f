// The response handlers the server gives providers. They check that a
// provider uses them as OpenPegasus's handlers require and collect what it
// delivers:
//   - delivering an uninitialized instance, object or parameter, a path
//     without class or a null return value throws CIM_ERR_FAILED
//     "The object is not initialized.";
//   - getInstance and createInstance take exactly one object: a second
//     throws CIM_ERR_FAILED "Too many objects delivered.", complete() with
//     none throws CIM_ERR_FAILED "Too few objects delivered." (getInstance
//     also records CIM_ERR_NOT_FOUND, which is what the client gets if the
//     provider catches that exception and returns);
//   - objects leave for the response in batches of `threshold` and at
//     complete(); what is still pending when the provider returns without
//     complete() is dropped, as OpenPegasus drops it. What leaves goes to the
//     handler's outlet at once, or, without one, stays in result() until the
//     provider has returned;
//   - delivering after complete() throws CIM_ERR_FAILED; a second
//     complete() changes nothing; processing() is optional.
#ifndef QEL_Server_ServerResponseHandlers_h
#define QEL_Server_ServerResponseHandlers_h

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ResponseHandler.h>

#include <functional>
#include <memory>

namespace Pegasus
{

// Objects kept back before they leave in one batch.
const Uint32 defaultResponseObjectThreshold = 100;

// State every server handler shares.
class HandlerProtocol
{
public:
    void processing() { _processing = true; }
    // Throws if complete() has already been called.
    void checkOpen() const;
    void markComplete() { _complete = true; }
    bool completed() const { return _complete; }

    // A status the handler set itself (the getInstance NOT_FOUND case).
    void setStatus(const CIMException& status);
    bool hasStatus() const { return _status != nullptr; }
    const CIMException& status() const { return *_status; }

    [[noreturn]] static void notInitialized();

private:
    bool _processing = false;
    bool _complete = false;
    std::unique_ptr<CIMException> _status;
};

// Where the objects of a batch go as it leaves, one by one and in order, on
// the thread that delivers them.
template <class T>
using DeliveryOutlet = std::function<void(const T&)>;

// Objects delivered so far: kept back until `threshold` accumulate or the
// provider completes, then handed to the outlet, or kept in sent() when
// there is none.
template <class T>
class DeliveryBatch
{
public:
    DeliveryBatch(Uint32 threshold, DeliveryOutlet<T> outlet)
        : _threshold(threshold ? threshold : 1), _outlet(std::move(outlet))
    {
    }
    void add(const T& object)
    {
        _pending.append(object);
        if (_pending.size() >= _threshold)
            flush();
    }
    void flush()
    {
        if (!_outlet)
        {
            _sent.appendArray(_pending);
            _pending.clear();
            return;
        }
        // Taken out first: an outlet that throws leaves nothing to be sent twice.
        Array<T> leaving;
        leaving.swap(_pending);
        for (Uint32 i = 0; i < leaving.size(); ++i)
            _outlet(leaving[i]);
    }
    Uint32 pendingCount() const { return _pending.size(); }
    const Array<T>& sent() const { return _sent; }

private:
    Uint32 _threshold;
    DeliveryOutlet<T> _outlet;
    Array<T> _pending;
    Array<T> _sent;
};

// getInstance: exactly one instance. One without keys in its path gets the
// requested name as its path.
class GetInstanceResponseHandler : public InstanceResponseHandler
{
public:
    explicit GetInstanceResponseHandler(const CIMObjectPath& requestedName);

    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliver(const CIMInstance& instance) override;
    void deliver(const Array<CIMInstance>& instances) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    // The instance, once the provider has completed; throws the
    // CIM_ERR_FAILED "Too few objects delivered." otherwise.
    CIMInstance result() const;
    // As result(), once, the handler letting go of its own handle on the
    // instance: what the provider no longer holds can then be filtered
    // without a copy.
    CIMInstance takeResult();

private:
    CIMObjectPath _requestedName;
    HandlerProtocol _protocol;
    CIMInstance _instance;
    bool _delivered = false;
};

// enumerateInstances.
class InstanceListResponseHandler : public InstanceResponseHandler
{
public:
    typedef CIMInstance Object;

    explicit InstanceListResponseHandler(
        Uint32 threshold = defaultResponseObjectThreshold,
        DeliveryOutlet<CIMInstance> outlet = DeliveryOutlet<CIMInstance>())
        : _batch(threshold, std::move(outlet))
    {
    }

    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliver(const CIMInstance& instance) override;
    void deliver(const Array<CIMInstance>& instances) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    const Array<CIMInstance>& result() const { return _batch.sent(); }

private:
    HandlerProtocol _protocol;
    DeliveryBatch<CIMInstance> _batch;
};

// enumerateInstanceNames, associatorNames, referenceNames.
class ObjectPathListResponseHandler : public ObjectPathResponseHandler
{
public:
    typedef CIMObjectPath Object;

    explicit ObjectPathListResponseHandler(
        Uint32 threshold = defaultResponseObjectThreshold,
        DeliveryOutlet<CIMObjectPath> outlet = DeliveryOutlet<CIMObjectPath>())
        : _batch(threshold, std::move(outlet))
    {
    }

    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliver(const CIMObjectPath& path) override;
    void deliver(const Array<CIMObjectPath>& paths) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    const Array<CIMObjectPath>& result() const { return _batch.sent(); }

private:
    HandlerProtocol _protocol;
    DeliveryBatch<CIMObjectPath> _batch;
};

// createInstance: exactly one path.
class CreateInstanceResponseHandler : public ObjectPathResponseHandler
{
public:
    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliver(const CIMObjectPath& path) override;
    void deliver(const Array<CIMObjectPath>& paths) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    CIMObjectPath result() const;

private:
    HandlerProtocol _protocol;
    CIMObjectPath _path;
    bool _delivered = false;
};

// associators, references.
class ObjectListResponseHandler : public ObjectResponseHandler
{
public:
    typedef CIMObject Object;

    explicit ObjectListResponseHandler(
        Uint32 threshold = defaultResponseObjectThreshold,
        DeliveryOutlet<CIMObject> outlet = DeliveryOutlet<CIMObject>())
        : _batch(threshold, std::move(outlet))
    {
    }

    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliver(const CIMObject& object) override;
    void deliver(const Array<CIMObject>& objects) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    const Array<CIMObject>& result() const { return _batch.sent(); }

private:
    HandlerProtocol _protocol;
    DeliveryBatch<CIMObject> _batch;
};

// invokeMethod: the last return value wins; output parameters in order.
// Nothing is returned unless the provider completes.
class MethodResultHandler : public MethodResultResponseHandler
{
public:
    void processing() override { _protocol.processing(); }
    void complete() override;
    void deliverParamValue(const CIMParamValue& value) override;
    void deliverParamValue(const Array<CIMParamValue>& values) override;
    void deliver(const CIMValue& returnValue) override;

    const HandlerProtocol& protocol() const { return _protocol; }
    CIMValue returnValue() const;
    Array<CIMParamValue> outParameters() const;

private:
    HandlerProtocol _protocol;
    CIMValue _returnValue;
    Array<CIMParamValue> _outParameters;
};

// modifyInstance, deleteInstance: nothing to deliver.
class OperationStatusHandler : public ResponseHandler
{
public:
    void processing() override { _protocol.processing(); }
    void complete() override { _protocol.markComplete(); }
    const HandlerProtocol& protocol() const { return _protocol; }

private:
    HandlerProtocol _protocol;
};

}  // namespace Pegasus

#endif
