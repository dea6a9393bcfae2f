#include "ResponseBodyStream.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <algorithm>

using namespace Pegasus;

namespace qel
{
namespace http
{

ResponseBodyStream::ResponseBodyStream(
    HttpResponse head, std::string prefix, bool trailers, ResponseStreamLimits limits, Start start)
    : _head(std::move(head)),
      _prefix(std::move(prefix)),
      _trailers(trailers),
      _limits(limits),
      _start(std::move(start))
{
}

bool ResponseBodyStream::readyLocked() const
{
    return !_queue.empty() || _ended || _abandoned;
}

void ResponseBodyStream::notifyLocked(std::unique_lock<std::mutex>& lock)
{
    if (!_ready || !readyLocked())
        return;
    std::function<void()> ready = std::move(_ready);
    _ready = nullptr;
    lock.unlock();
    ready();
    lock.lock();
}

void ResponseBodyStream::startLocked(std::unique_lock<std::mutex>& lock)
{
    _started = true;
    HttpResponse head = std::move(_head);
    head.stream = shared_from_this();
    lock.unlock();
    _start(std::move(head));
    lock.lock();
}

void ResponseBodyStream::write(std::string&& piece)
{
    std::unique_lock<std::mutex> lock(_mutex);
    if (_abandoned)
        throw CIMException(CIM_ERR_FAILED, "the client stopped taking the answer");
    _encoded += piece.size();
    _queued += piece.size();
    _queue.push_back(std::move(piece));
    if (!_started)
    {
        // A client that cannot take trailers gets nothing before the buffer is full, so
        // that a failure until then can still be an ordinary error response.
        const size_t threshold = _trailers ? _limits.startBytes : _limits.bufferBytes;
        if (!_start || _queued < threshold)
            return;
        startLocked(lock);
    }
    notifyLocked(lock);
    // Back-pressure: wait while the client is behind, as long as it keeps reading; once
    // waiting, until half the buffer is free, so that worker and connection do not take
    // turns piece by piece.
    if (_queued <= _limits.bufferBytes)
        return;
    const size_t resume = _limits.bufferBytes / 2;
    while (_queued > resume && !_abandoned)
    {
        const uint64_t progress = _progress;
        const bool moved = _drained.wait_for(
            lock, _limits.writeTimeout,
            [&] { return _progress != progress || _queued <= resume || _abandoned; });
        if (!moved)
        {
            _abandoned = true;
            notifyLocked(lock);  // the connection closes
        }
    }
    if (_abandoned)
        throw CIMException(CIM_ERR_FAILED, "the client stopped taking the answer");
}

size_t ResponseBodyStream::encodedBytes() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _encoded;
}

void ResponseBodyStream::finish(std::string&& piece)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _ended = true;
    _complete = true;
    _encoded += piece.size();
    if (!_started)
    {
        for (std::string& p : _queue)
            _whole += p;
        _whole += piece;
        _queue.clear();
        _queued = 0;
        return;
    }
    _queued += piece.size();
    _queue.push_back(std::move(piece));
    notifyLocked(lock);
}

void ResponseBodyStream::fail(const CIMException& error, std::string&& document, size_t)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _ended = true;
    if (!_started)
    {
        _queue.clear();
        _queued = 0;
        _whole = std::move(document);
        return;
    }
    if (_trailers)
        _errorTrailers = cimxml::errorTrailers(error, _prefix);
    notifyLocked(lock);
}

bool ResponseBodyStream::started() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _started;
}

void ResponseBodyStream::whenReady(std::function<void()> ready)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _ready = std::move(ready);
    notifyLocked(lock);
}

ResponseBodyStream::Next ResponseBodyStream::take()
{
    std::lock_guard<std::mutex> lock(_mutex);
    Next next;
    if (_abandoned)
    {
        next.end = true;
        return next;
    }
    if (!_queue.empty())
    {
        // Everything queued goes out as one chunk, written from the pieces as they are.
        next.pieces.reserve(_queue.size());
        for (std::string& p : _queue)
            next.pieces.push_back(std::move(p));
        _queue.clear();
        return next;
    }
    next.end = _ended;
    next.complete = _complete;
    next.trailers = _errorTrailers;
    return next;
}

void ResponseBodyStream::written(size_t bytes)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _queued -= std::min(bytes, _queued);
    ++_progress;
    _drained.notify_all();
}

void ResponseBodyStream::abandon()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _abandoned = true;
    _ready = nullptr;
    _drained.notify_all();
}

}  // namespace http
}  // namespace qel
