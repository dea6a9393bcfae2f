// When the server gives the heap's freed memory back to the system. glibc keeps what a
// request freed in the arena of the thread that freed it; after a burst of large answers
// spread over the workers' arenas the server would stay many times its idle size. Trimming
// (malloc_trim) after every request would cost small requests more than they cost, so the
// heap is trimmed once at least `dirtyBytes` of answers went out since the last trim, and
// then either at once (the answer was that large itself) or when the last request in
// flight ends (a burst of smaller ones is over).
//
// Thread safety: began() and ended() may be called from any thread; the trim runs on the
// thread whose ended() decided it, outside the lock.
#ifndef QEL_SERVER_HTTP_HEAPTRIMMER_H
#define QEL_SERVER_HTTP_HEAPTRIMMER_H

#include <cstddef>
#include <functional>
#include <mutex>

namespace qel
{
namespace http
{

class HeapTrimmer
{
public:
    using Trim = std::function<void()>;
    static constexpr size_t kDirtyBytes = 1024 * 1024;

    // `trim` gives the memory back (malloc_trim by default; tests count the calls).
    explicit HeapTrimmer(Trim trim = nullptr, size_t dirtyBytes = kDirtyBytes);

    void began();
    // The request that began has ended with an answer of `answerBytes`.
    void ended(size_t answerBytes);

private:
    const Trim _trim;
    const size_t _dirtyBytes;
    std::mutex _mutex;
    size_t _inFlight = 0;  // REQUIRES: _mutex held
    size_t _answered = 0;  // bytes answered since the last trim; REQUIRES: _mutex held
};

}  // namespace http
}  // namespace qel

#endif
