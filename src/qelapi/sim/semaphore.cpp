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
    std::unique_lock<std::mutex> lk(mu_);
    cv_.wait(lk, [this] { return !taken_.load(); });
    taken_.store(true);
}

bool ApiSemaphore::post()
{
    {
        std::lock_guard<std::mutex> g(mu_);
        if (!taken_.load())
            return false;
        taken_.store(false);
    }
    cv_.notify_one();
    return true;
}

}  // namespace qelsim
