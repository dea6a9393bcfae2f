#include "ThreadPool.h"

#include "ServerLog.h"

#include <Pegasus/Common/Exception.h>

#include <exception>
#include <stdexcept>

namespace Pegasus
{

ThreadPool::ThreadPool(std::size_t threads, std::size_t maxQueued, bool onDemand)
    : _maxThreads(threads), _maxQueued(maxQueued)
{
    if (threads == 0)
        throw std::invalid_argument("ThreadPool: at least one worker thread is needed");
    _workers.reserve(threads);
    std::lock_guard<std::mutex> lock(_mutex);
    for (std::size_t i = 0; !onDemand && i < threads; ++i)
        _startWorker();
}

void ThreadPool::_startWorker()
{
    _workers.emplace_back([this] { _run(); });
}

ThreadPool::~ThreadPool()
{
    stop();
}

bool ThreadPool::submit(std::function<void()> job)
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping || (_maxQueued != 0 && _jobs.size() >= _maxQueued))
            return false;
        _jobs.push_back(std::move(job));
        if (_jobs.size() > _idle && _workers.size() < _maxThreads)
            _startWorker();
    }
    _wake.notify_one();
    return true;
}

std::size_t ThreadPool::threadCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _workers.size();
}

std::size_t ThreadPool::queued() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _jobs.size();
}

void ThreadPool::stop()
{
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
    }
    _wake.notify_all();
    for (std::thread& worker : _workers)
    {
        if (worker.joinable())
            worker.join();
    }
}

void ThreadPool::_run()
{
    for (;;)
    {
        std::function<void()> job;
        {
            std::unique_lock<std::mutex> lock(_mutex);
            ++_idle;
            _wake.wait(lock, [this] { return _stopping || !_jobs.empty(); });
            --_idle;
            if (_jobs.empty())
                return;  // stopping and drained
            job = std::move(_jobs.front());
            _jobs.pop_front();
        }
        try
        {
            job();
        }
        catch (const Exception& e)
        {
            ServerLog::error(
                std::string("request job ended with an exception: ") +
                (const char*)e.getMessage().getCString());
        }
        catch (const std::exception& e)
        {
            ServerLog::error(std::string("request job ended with an exception: ") + e.what());
        }
        catch (...)
        {
            ServerLog::error("request job ended with an unknown exception");
        }
    }
}

}  // namespace Pegasus
