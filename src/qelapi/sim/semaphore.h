// The module-wide semaphore behind cim_sem_wait/cim_sem_post: binary, may be
// posted from another thread than the one that waited, as a semaphore may.
#ifndef QELSIM_SEMAPHORE_H
#define QELSIM_SEMAPHORE_H

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace qelsim
{

class ApiSemaphore
{
public:
    static ApiSemaphore& instance();
    void wait();
    // false when the semaphore was not taken (the post is refused).
    bool post();
    bool held() const { return _taken.load(); }

private:
    std::mutex _mu;
    std::condition_variable _cv;
    std::atomic<bool> _taken{false};
};

}  // namespace qelsim

#endif
