#include "HeapTrimmer.h"

#include <malloc.h>

namespace qel
{
namespace http
{

HeapTrimmer::HeapTrimmer(Trim trim, std::chrono::milliseconds quiet, size_t dirtyBytes)
    : _trim(trim ? std::move(trim) : [] { ::malloc_trim(0); }),
      _quiet(quiet),
      _dirtyBytes(dirtyBytes),
      _thread([this] { run(); })
{
}

HeapTrimmer::~HeapTrimmer()
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stop = true;
    }
    _changed.notify_all();
    _thread.join();
}

void HeapTrimmer::began()
{
    std::lock_guard<std::mutex> lock(_mutex);
    ++_inFlight;
    ++_begun;
}

void HeapTrimmer::ended(size_t answerBytes)
{
    bool due;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        --_inFlight;
        _answered += answerBytes;
        due = _inFlight == 0 && _answered >= _dirtyBytes;
    }
    if (due)
        _changed.notify_all();
}

void HeapTrimmer::run()
{
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;)
    {
        _changed.wait(lock, [&] { return _stop || (_inFlight == 0 && _answered >= _dirtyBytes); });
        if (_stop)
            return;
        // Quiet for the whole period: no request begun meanwhile.
        const uint64_t begun = _begun;
        if (_changed.wait_for(lock, _quiet, [&] { return _stop || _begun != begun; }))
            continue;
        _answered = 0;
        lock.unlock();
        _trim();
        lock.lock();
    }
}

}  // namespace http
}  // namespace qel
