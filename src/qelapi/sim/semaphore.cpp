#include "semaphore.h"

namespace qelsim
{

ApiSemaphore& ApiSemaphore::instance()
{
    static ApiSemaphore* s = new ApiSemaphore();
    return *s;
}

void ApiSemaphore::wait()
{
    std::unique_lock<std::mutex> lk(_mu);
    _cv.wait(lk, [this] { return !_taken.load(); });
    _taken.store(true);
}

bool ApiSemaphore::post()
{
    {
        std::lock_guard<std::mutex> g(_mu);
        if (!_taken.load())
            return false;
        _taken.store(false);
    }
    _cv.notify_one();
    return true;
}

}  // namespace qelsim
