// A set of worker threads running queued requests. Requests are independent
// jobs; a provider's nested calls never come back through the pool (they run
// on the calling thread), so a full pool cannot block them. The threads are
// started at once, or, on demand, one whenever a job would otherwise wait,
// up to the set's size.
#ifndef QEL_Server_ThreadPool_h
#define QEL_Server_ThreadPool_h

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Pegasus
{

class ThreadPool
{
public:
    // maxQueued = 0: the queue is unbounded.
    explicit ThreadPool(std::size_t threads, std::size_t maxQueued = 0, bool onDemand = false);
    ~ThreadPool();

    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    // Queues a job. False (job not taken) once stop() has begun or while the
    // queue holds maxQueued jobs. A job that throws is logged and forgotten.
    bool submit(std::function<void()> job);

    // Refuses new jobs, runs the ones already queued, joins the workers.
    // Safe to call more than once; must not be called from a worker.
    void stop();

    std::size_t threadCount() const;
    std::size_t queued() const;

private:
    void _run();
    // REQUIRES: _mutex held, not stopping.
    void _startWorker();

    mutable std::mutex _mutex;
    std::condition_variable _wake;
    std::deque<std::function<void()>> _jobs;  // guarded by _mutex
    // Grows under _mutex until stop() begins, then stays as it is.
    std::vector<std::thread> _workers;
    std::size_t _maxThreads;
    std::size_t _maxQueued;
    std::size_t _idle = 0;  // workers waiting for a job; guarded by _mutex
    bool _stopping = false;
};

}  // namespace Pegasus

#endif
