#include "LoginThrottle.h"

#include <algorithm>

namespace qel
{
namespace auth
{

LoginThrottle::LoginThrottle(ThrottleOptions options) : _options(std::move(options))
{
}

std::chrono::seconds LoginThrottle::delayAfter(unsigned attempts) const
{
    // The wait doubles with every attempt past the free ones, up to the cap.
    const unsigned doublings = attempts - _options.freeFailures;
    std::chrono::seconds wait = _options.firstWait;
    for (unsigned i = 0; i < doublings && wait < _options.maxWait; ++i)
        wait *= 2;
    return std::min(wait, _options.maxWait);
}

LoginThrottle::Entry* LoginThrottle::findLocked(Table& table, const std::string& key, TimePoint now)
{
    auto it = table.find(key);
    if (it == table.end())
        return nullptr;
    const Entry& e = it->second;
    if (now >= e.nextAllowed && now - e.lastFailure >= _options.forgetAfter)
    {
        table.erase(it);  // quiet for long enough: forgotten
        return nullptr;
    }
    return &it->second;
}

LoginThrottle::Entry& LoginThrottle::getLocked(Table& table, const std::string& key, TimePoint now)
{
    if (Entry* e = findLocked(table, key, now))
        return *e;
    if (table.size() >= _options.maxTracked)
    {
        // Someone is spraying names or addresses: make room, oldest failure first. Each
        // such attempt costs a full verification anyway, so the scan is not the bottleneck.
        auto oldest = table.begin();
        for (auto it = table.begin(); it != table.end(); ++it)
            if (it->second.lastFailure < oldest->second.lastFailure)
                oldest = it;
        if (oldest != table.end())
            table.erase(oldest);
    }
    Entry& e = table[key];
    e.lastFailure = now;
    return e;
}

unsigned LoginThrottle::waitLocked(Table& table, const std::string& key, TimePoint now)
{
    const Entry* e = findLocked(table, key, now);
    if (e == nullptr || e->attempts < _options.freeFailures || now >= e->nextAllowed)
        return 0;
    const auto left = e->nextAllowed - now;
    // Rounded up: a client that waits what it is told is never refused again for it.
    return static_cast<unsigned>(
        (std::chrono::duration_cast<std::chrono::milliseconds>(left).count() + 999) / 1000);
}

unsigned LoginThrottle::wouldWait(const std::string& user, const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    const TimePoint now = _options.clock();
    return std::max(waitLocked(_users, user, now), waitLocked(_addresses, address, now));
}

unsigned LoginThrottle::admit(const std::string& user, const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    const TimePoint now = _options.clock();
    const unsigned wait =
        std::max(waitLocked(_users, user, now), waitLocked(_addresses, address, now));
    if (wait != 0)
        return wait;
    for (Table* table : {&_users, &_addresses})
    {
        Entry& e = getLocked(*table, table == &_users ? user : address, now);
        ++e.attempts;
        // From the last free attempt on, the next one has to wait: reserved now, so that
        // attempts arriving meanwhile find the door closed.
        if (e.attempts >= _options.freeFailures)
            e.nextAllowed = now + delayAfter(e.attempts);
    }
    return 0;
}

bool LoginThrottle::failed(const std::string& user, const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    const TimePoint now = _options.clock();
    for (Table* table : {&_users, &_addresses})
    {
        Entry& e = getLocked(*table, table == &_users ? user : address, now);
        e.lastFailure = now;
        // The wait counts from the failure, which comes a hash later than the admission.
        if (e.attempts >= _options.freeFailures)
            e.nextAllowed = std::max(e.nextAllowed, now + delayAfter(e.attempts));
    }
    // User names hold no NUL: the key cannot be made by another pair.
    const std::string pair = user + '\0' + address;
    const bool first = findLocked(_bursts, pair, now) == nullptr;
    Entry& burst = getLocked(_bursts, pair, now);
    burst.lastFailure = now;
    ++burst.attempts;
    return first;
}

void LoginThrottle::succeeded(const std::string& user, const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _users.erase(user);
    _addresses.erase(address);
    _bursts.erase(user + '\0' + address);
}

}  // namespace auth
}  // namespace qel
