// One open pulled enumeration: the sink the enumeration's request runs into on a worker
// of its own (AsDelivered: objects come batch by batch while the provider runs), and the
// buffer of what the client has not pulled yet.
//
// The buffer holds at most `capacity` objects; a delivery into a full buffer blocks the
// provider in its deliver() until a pull makes room (back-pressure), so the server keeps
// what is not yet pulled, never a second copy of the whole answer. Once the context ends
// (closed, expired, server stopping), what it holds is dropped at once, a delivery throws
// the reason so that the provider's call ends, and a pull waiting for objects gives up
// with that reason.
//
// Threading: one producer (the request's worker) and, at a time, one consumer (the
// operation that holds the context, see EnumerationContexts); end() may come from any
// thread. Everything below is guarded by _mutex.
#ifndef QEL_Server_EnumerationContext_h
#define QEL_Server_EnumerationContext_h

#include <Pegasus/Common/CIMResponseSink.h>
#include <Pegasus/Common/UintArgs.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

namespace Pegasus
{

class EnumerationContext : public CIMResponseSink
{
public:
    // What the enumeration returns: instances with their paths, or paths.
    enum class Kind
    {
        Instances,
        Paths
    };

    struct Identity
    {
        String id;  // the EnumerationContext value clients send back
        String user;
        CIMNamespaceName nameSpace;
        Kind kind;
        std::chrono::seconds timeout;  // between an answer and the next request
    };

    // `host` completes the paths the answer carries, as the client sees them.
    EnumerationContext(Identity identity, std::size_t capacity, const String& host);

    const Identity& identity() const { return _identity; }

    // The producer's side. Instances and paths are kept with host and namespace filled in.
    Delivery delivery() const override { return Delivery::AsDelivered; }
    void deliverClass(const CIMClass& cimClass) override;
    void deliverClassName(const CIMName& className) override;
    void deliverInstance(const CIMInstance& instance) override;
    void deliverPath(const CIMObjectPath& path) override;
    // Instances of an association request.
    void deliverObject(const CIMObject& object) override;
    void complete(const CIMValue& returnValue, const Array<CIMParamValue>& outParameters) override;
    void fail(const CIMException& error) override;

    struct Page
    {
        Array<CIMInstance> instances;
        Array<CIMObjectPath> paths;
        bool endOfSequence = false;
    };
    // The consumer's side: up to `maxObjects` objects, in the order delivered. Waits until
    // that many have come, the answer is complete, or `wait` has passed (then fewer, maybe
    // none); 0 objects never waits. endOfSequence: nothing is left to pull. Throws the
    // error the enumeration failed with, or the reason it ended while waiting.
    Page take(Uint32 maxObjects, std::chrono::milliseconds wait);

    // Objects left to pull, once the answer is complete; NULL before then.
    Uint64Arg remaining() const;
    std::size_t buffered() const;

    // Ends the context for `reason` (the first reason stays); idempotent.
    void end(const CIMException& reason);

private:
    void _push(const CIMInstance* instance, const CIMObjectPath* path);
    std::size_t _size() const { return _instances.size() + _paths.size(); }
    CIMObjectPath _completed(const CIMObjectPath& path) const;

    const Identity _identity;
    const std::size_t _capacity;
    const String _host;

    mutable std::mutex _mutex;
    // Both sides wait on it: the producer for room, the consumer for objects.
    std::condition_variable _changed;
    std::deque<CIMInstance> _instances;
    std::deque<CIMObjectPath> _paths;
    bool _complete = false;
    std::unique_ptr<CIMException> _failure;  // the enumeration's own error
    std::unique_ptr<CIMException> _ended;    // why the context ended
};

}  // namespace Pegasus

#endif
