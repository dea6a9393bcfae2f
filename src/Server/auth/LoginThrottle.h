// Slows down password guessing. Failed attempts are counted per user name and per client
// address; once either has `freeFailures` failures, its further attempts are spaced out
// with waits that double from `firstWait` up to `maxWait` (1 s, 2 s, 4 s ... 30 s by
// default). An attempt that comes too early is refused at once, with the time to wait,
// and is neither verified nor counted. A successful login resets its user and address.
//
// Admission reserves the slot: attempts that arrive together (a flood of threads) cannot
// all slip through the same opening. Everything here is bookkeeping under one mutex; no
// thread ever sleeps in it.
#ifndef QEL_SERVER_AUTH_LOGINTHROTTLE_H
#define QEL_SERVER_AUTH_LOGINTHROTTLE_H

#include "Clock.h"

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>

namespace qel
{
namespace auth
{

struct ThrottleOptions
{
    unsigned freeFailures = 5;
    std::chrono::seconds firstWait{1};
    std::chrono::seconds maxWait{30};
    // A user name or address with no failure for this long starts afresh.
    std::chrono::seconds forgetAfter{900};
    // Most user names (and, apart, most addresses) followed at once; past it the entries
    // with the oldest failure are dropped first.
    size_t maxTracked = 65536;
    Clock clock = steadyClock();
};

class LoginThrottle
{
public:
    explicit LoginThrottle(ThrottleOptions options = ThrottleOptions());

    // 0 when an attempt for `user` from `address` may be verified now (and the slot is
    // taken); otherwise the whole seconds to wait, nothing recorded.
    unsigned admit(const std::string& user, const std::string& address);
    // As admit(), without taking the slot: for refusing early, before any work is queued.
    unsigned wouldWait(const std::string& user, const std::string& address);
    // An admitted attempt failed. True when it is the first failure of a burst of this user
    // from this address (the one worth a line in the log).
    bool failed(const std::string& user, const std::string& address);
    // An admitted attempt succeeded: the user and the address start afresh.
    void succeeded(const std::string& user, const std::string& address);

private:
    struct Entry
    {
        unsigned attempts = 0;  // admitted since the last success, failed or under way
        TimePoint nextAllowed{};
        TimePoint lastFailure{};
    };
    using Table = std::unordered_map<std::string, Entry>;

    // REQUIRES: _mutex held (for all of these).
    Entry* findLocked(Table& table, const std::string& key, TimePoint now);
    Entry& getLocked(Table& table, const std::string& key, TimePoint now);
    unsigned waitLocked(Table& table, const std::string& key, TimePoint now);
    std::chrono::seconds delayAfter(unsigned attempts) const;

    const ThrottleOptions _options;
    std::mutex _mutex;
    Table _users;      // guarded by _mutex
    Table _addresses;  // guarded by _mutex
    Table _bursts;     // user and address together, for the log; guarded by _mutex
};

}  // namespace auth
}  // namespace qel

#endif
