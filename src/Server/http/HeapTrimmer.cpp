#include "HeapTrimmer.h"

#include <malloc.h>

namespace qel
{
namespace http
{

HeapTrimmer::HeapTrimmer(Trim trim, size_t dirtyBytes)
    : _trim(trim ? std::move(trim) : [] { ::malloc_trim(0); }), _dirtyBytes(dirtyBytes)
{
}

void HeapTrimmer::began()
{
    std::lock_guard<std::mutex> lock(_mutex);
    ++_inFlight;
}

void HeapTrimmer::ended(size_t answerBytes)
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        --_inFlight;
        _answered += answerBytes;
        if (_answered < _dirtyBytes || (answerBytes < _dirtyBytes && _inFlight != 0))
            return;
        _answered = 0;
    }
    _trim();
}

}  // namespace http
}  // namespace qel
