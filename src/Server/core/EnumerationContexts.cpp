#include "EnumerationContexts.h"

#include "CoreText.h"
#include "ThreadPool.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <cerrno>
#include <pthread.h>
#include <stdexcept>
#include <sys/random.h>

namespace Pegasus
{

namespace
{

// The context value as a client sent it, shortened: it is the client's text.
String shown(const String& id)
{
    const Uint32 longest = 40;
    return id.size() <= longest ? id : id.subString(0, longest) + "...";
}

CIMException invalidContext(const String& id)
{
    return CIMException(
        CIM_ERR_INVALID_ENUMERATION_CONTEXT,
        "EnumerationContext \"" + shown(id) +
            "\" names no open enumeration of this user (unknown, closed or expired).");
}

CIMException shuttingDown()
{
    return CIMException(CIM_ERR_SERVER_IS_SHUTTING_DOWN, "The CIM server is shutting down.");
}

void check(bool holds, const char* what)
{
    if (!holds)
        throw std::invalid_argument(std::string("enumeration limits: ") + what);
}

}  // namespace

EnumerationContexts::EnumerationContexts(EnumerationLimits limits) : _limits(std::move(limits))
{
    check(_limits.defaultTimeout >= 1, "the default timeout must be at least 1 second");
    check(
        _limits.defaultTimeout <= _limits.maxTimeout,
        "the default timeout must not pass the maximum");
    check(_limits.maxObjectCount >= 1, "the maximum object count must be at least 1");
    check(_limits.maxContexts >= 1, "at least one context must be allowed");
    check(
        _limits.maxContextsPerUser >= 1 && _limits.maxContextsPerUser <= _limits.maxContexts,
        "a user's maximum must be from 1 to the server's");
    check(_limits.bufferedObjects >= 1, "a context must keep at least one object");
    _workers = std::make_unique<ThreadPool>(_limits.maxContexts, 0, true);
    if (!_limits.clock)
    {
        _reaper = std::thread([this] { _reaperLoop(); });
        // Named for top -H and the benchmarks that measure it.
        pthread_setname_np(_reaper.native_handle(), "qel-enum-reaper");
    }
}

EnumerationContexts::~EnumerationContexts()
{
    shutdown();
}

EnumerationContexts::Clock::time_point EnumerationContexts::_now() const
{
    return _limits.clock ? _limits.clock() : Clock::now();
}

String EnumerationContexts::_newId()
{
    unsigned char bytes[16];
    size_t got = 0;
    while (got < sizeof bytes)
    {
        const ssize_t n = getrandom(bytes + got, sizeof bytes - got, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            throw CIMException(CIM_ERR_FAILED, "No random bytes for an enumeration context.");
        got += static_cast<size_t>(n);
    }
    static const char hex[] = "0123456789abcdef";
    char text[2 * sizeof bytes + 1];
    for (size_t i = 0; i < sizeof bytes; ++i)
    {
        text[2 * i] = hex[bytes[i] >> 4];
        text[2 * i + 1] = hex[bytes[i] & 15];
    }
    text[2 * sizeof bytes] = '\0';
    return String(text);
}

std::shared_ptr<EnumerationContext> EnumerationContexts::open(
    const String& user, const CIMNamespaceName& nameSpace, EnumerationContext::Kind kind,
    Uint32 timeout, const String& host, std::function<void(EnumerationContext&)> produce)
{
    std::shared_ptr<EnumerationContext> context;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping)
            throw shuttingDown();
        if (_table.size() >= _limits.maxContexts)
            throw CIMException(
                CIM_ERR_SERVER_LIMITS_EXCEEDED,
                String("The server has its maximum of ") +
                    String(std::to_string(_limits.maxContexts).c_str()) +
                    " open enumerations; close one or let it expire.");
        auto mine = _perUser.find(toStd(user));
        if (mine != _perUser.end() && mine->second >= _limits.maxContextsPerUser)
            throw CIMException(
                CIM_ERR_SERVER_LIMITS_EXCEEDED,
                "User \"" + user + "\" has the maximum of " +
                    String(std::to_string(_limits.maxContextsPerUser).c_str()) +
                    " open enumerations per user; close one or let it expire.");
        String id = _newId();
        while (_table.count(toStd(id)))
            id = _newId();
        context = std::make_shared<EnumerationContext>(
            EnumerationContext::Identity{id, user, nameSpace, kind, std::chrono::seconds(timeout)},
            _limits.bufferedObjects, host);
        _table[toStd(id)] = Entry{context, _now() + std::chrono::seconds(timeout), true};
        ++_perUser[toStd(user)];
        ++_producing;
    }
    const bool started = _workers->submit(
        [this, context, produce = std::move(produce)]
        {
            try
            {
                produce(*context);
            }
            catch (...)
            {
                // The request answers into the context and throws nothing; should it
                // still, the context must not wait for an answer that never comes.
                context->fail(CIMException(CIM_ERR_FAILED, "The enumeration failed."));
            }
            _producerDone();
        });
    if (!started)
    {
        release(*context, true);
        _producerDone();
        throw shuttingDown();
    }
    return context;
}

void EnumerationContexts::_producerDone()
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (--_producing == 0)
        _idle.notify_all();
}

EnumerationContexts::Table::iterator
EnumerationContexts::_lookUp(const String& id, const String& user, std::vector<Entry>& ended)
{
    Table::iterator it = _table.find(toStd(id));
    if (it == _table.end() || it->second.context->identity().user != user)
        return _table.end();
    if (!it->second.held && it->second.deadline <= _now())
    {
        _remove(it, ended);
        return _table.end();
    }
    return it;
}

EnumerationContexts::Table::iterator
EnumerationContexts::_remove(Table::iterator it, std::vector<Entry>& ended)
{
    ended.push_back(it->second);
    const std::string user = toStd(it->second.context->identity().user);
    if (--_perUser[user] == 0)
        _perUser.erase(user);
    return _table.erase(it);
}

void EnumerationContexts::_end(std::vector<Entry>& ended, const CIMException& reason)
{
    for (Entry& entry : ended)
        entry.context->end(reason);
    ended.clear();
}

std::shared_ptr<EnumerationContext>
EnumerationContexts::acquire(const String& id, const String& user)
{
    std::vector<Entry> ended;
    std::shared_ptr<EnumerationContext> context;
    std::unique_ptr<CIMException> refusal;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        Table::iterator it = _lookUp(id, user, ended);
        if (_stopping)
            refusal = std::make_unique<CIMException>(shuttingDown());
        else if (it == _table.end())
            refusal = std::make_unique<CIMException>(invalidContext(id));
        else if (it->second.held)
            refusal = std::make_unique<CIMException>(
                CIM_ERR_PULL_CANNOT_BE_ABANDONED,
                "EnumerationContext \"" + shown(id) +
                    "\" is in use by another operation; it goes on, this one is refused.");
        else
        {
            it->second.held = true;
            context = it->second.context;
        }
    }
    _end(ended, invalidContext(id));
    if (refusal)
        throw *refusal;
    return context;
}

std::shared_ptr<EnumerationContext> EnumerationContexts::find(const String& id, const String& user)
{
    std::vector<Entry> ended;
    std::shared_ptr<EnumerationContext> context;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        Table::iterator it = _lookUp(id, user, ended);
        if (it != _table.end())
            context = it->second.context;
    }
    _end(ended, invalidContext(id));
    if (!context)
        throw invalidContext(id);
    return context;
}

void EnumerationContexts::release(const EnumerationContext& context, bool finished)
{
    std::vector<Entry> ended;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        const std::string key = toStd(context.identity().id);
        Table::iterator it = _table.find(key);
        if (it == _table.end() || it->second.context.get() != &context)
            return;
        if (finished)
        {
            _remove(it, ended);
        }
        else
        {
            it->second.held = false;
            it->second.deadline = _now() + context.identity().timeout;
            _reaperWake.notify_all();
        }
    }
    _end(ended, CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT, "The enumeration has ended."));
}

void EnumerationContexts::close(const EnumerationContext& context)
{
    std::vector<Entry> ended;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        Table::iterator it = _table.find(toStd(context.identity().id));
        if (it == _table.end() || it->second.context.get() != &context)
            return;
        _remove(it, ended);
    }
    _end(
        ended, CIMException(
                   CIM_ERR_PULL_HAS_BEEN_ABANDONED,
                   "The enumeration was closed (CloseEnumeration) while this pull waited."));
}

std::size_t EnumerationContexts::reapExpired()
{
    std::vector<Entry> ended;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        const Clock::time_point now = _now();
        for (Table::iterator it = _table.begin(); it != _table.end();)
        {
            if (it->second.held || it->second.deadline > now)
                ++it;
            else
                it = _remove(it, ended);
        }
    }
    const std::size_t count = ended.size();
    _end(ended, CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT, "The enumeration expired."));
    return count;
}

void EnumerationContexts::_reaperLoop()
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_stopping)
    {
        bool any = false;
        Clock::time_point earliest = Clock::time_point::max();
        for (const auto& entry : _table)
        {
            if (!entry.second.held && entry.second.deadline < earliest)
            {
                earliest = entry.second.deadline;
                any = true;
            }
        }
        if (!any)
            _reaperWake.wait(lock);
        else if (_reaperWake.wait_until(lock, earliest) == std::cv_status::timeout)
        {
            lock.unlock();
            reapExpired();
            lock.lock();
        }
    }
}

void EnumerationContexts::shutdown()
{
    std::vector<Entry> ended;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
        for (auto& entry : _table)
            ended.push_back(entry.second);
        _table.clear();
        _perUser.clear();
        _reaperWake.notify_all();
    }
    _end(ended, shuttingDown());
    if (_reaper.joinable())
        _reaper.join();
    _workers->stop();
}

EnumerationContexts::Stats EnumerationContexts::stats() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    Stats s;
    s.open = _table.size();
    s.producing = _producing;
    for (const auto& entry : _table)
    {
        s.held += entry.second.held ? 1 : 0;
        s.bufferedObjects += entry.second.context->buffered();
    }
    return s;
}

void EnumerationContexts::waitUntilIdle() const
{
    std::unique_lock<std::mutex> lock(_mutex);
    _idle.wait(lock, [this] { return _producing == 0; });
}

}  // namespace Pegasus
