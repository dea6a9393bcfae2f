// Gives the heap's freed memory back to the system once the server is quiet. glibc keeps
// what a request freed in the arena of the thread that freed it; after a burst of large
// answers spread over the workers' arenas the server would stay many times its idle size.
// Trimming (malloc_trim) between requests would cost each of them the page faults of
// touching that memory again, so the heap is trimmed only when nothing has been in flight
// for `quiet` and at least `dirtyBytes` of answers went out since the last trim.
//
// Thread safety: began() and ended() may be called from any thread. The trim runs on the
// trimmer's own thread.
#ifndef QEL_SERVER_HTTP_HEAPTRIMMER_H
#define QEL_SERVER_HTTP_HEAPTRIMMER_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace qel
{
namespace http
{

class HeapTrimmer
{
public:
    using Trim = std::function<void()>;
    static constexpr std::chrono::milliseconds kQuiet{1000};
    static constexpr size_t kDirtyBytes = 1024 * 1024;

    // `trim` gives the memory back (malloc_trim by default; tests count the calls).
    explicit HeapTrimmer(
        Trim trim = nullptr, std::chrono::milliseconds quiet = kQuiet,
        size_t dirtyBytes = kDirtyBytes);
    ~HeapTrimmer();  // stops the thread; a trim under way is finished first

    HeapTrimmer(const HeapTrimmer&) = delete;
    HeapTrimmer& operator=(const HeapTrimmer&) = delete;

    void began();
    // A request that began has ended with an answer of `answerBytes`.
    void ended(size_t answerBytes);

private:
    void run();

    const Trim _trim;
    const std::chrono::milliseconds _quiet;
    const size_t _dirtyBytes;
    std::mutex _mutex;
    std::condition_variable _changed;
    size_t _inFlight = 0;  // REQUIRES: _mutex held
    size_t _answered = 0;  // bytes answered since the last trim; REQUIRES: _mutex held
    uint64_t _begun = 0;   // requests begun so far: one restarts the quiet; REQUIRES: _mutex held
    bool _stop = false;    // REQUIRES: _mutex held
    std::thread _thread;   // last: starts once the rest is made
};

}  // namespace http
}  // namespace qel

#endif
