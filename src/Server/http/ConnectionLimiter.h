// Which connections the HTTP front-end keeps when clients hold too many. A connection is
// "unfinished" from its accept until its first request has arrived in full; only those
// can be held open cheaply by someone who never sends a request. Limits:
//  - per client address, at most `maxUnfinishedPerAddress` unfinished connections: a new
//    one closes that address's oldest unfinished connection;
//  - at most `maxConnections` in all: a new one closes the oldest unfinished connection,
//    else the connection idle longest between two requests, else it is refused.
// Closing the oldest keeps a legitimate client (who sends its request at once) served
// while someone holds connections open: the held ones are always older.
//
// Bookkeeping only (no sockets): the HTTP server closes what admit() names. Not locked:
// the owner serializes calls.
#ifndef QEL_SERVER_HTTP_CONNECTIONLIMITER_H
#define QEL_SERVER_HTTP_CONNECTIONLIMITER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace qel
{
namespace http
{

struct ConnectionLimits
{
    size_t maxConnections = 1024;
    size_t maxUnfinishedPerAddress = 32;
};

class ConnectionLimiter
{
public:
    explicit ConnectionLimiter(ConnectionLimits limits) : _limits(limits) {}

    struct Admission
    {
        std::optional<uint64_t> id;   // empty: refused, close the new connection
        std::vector<uint64_t> close;  // connections to close to make room
    };
    // A connection was accepted from `address`.
    Admission admit(const std::string& address);
    // Its first request has arrived in full.
    void completed(uint64_t id);
    // It waits for the next request on a kept-alive connection (true), or that request
    // has begun to arrive (false).
    void setIdle(uint64_t id, bool idle);
    // It is gone.
    void released(uint64_t id);
    // The connection to give up when descriptors run out: the oldest unfinished one, else
    // the one idle longest. Counted as gone from now on.
    std::optional<uint64_t> reclaimOne();

    size_t counted() const { return _counted; }
    size_t unfinished(const std::string& address) const;

private:
    enum class State
    {
        Unfinished,
        Active,
        Idle,
        Closing  // named for closing; no longer counted
    };
    struct Entry
    {
        std::string address;
        State state = State::Unfinished;
        uint64_t idleSince = 0;
    };

    void leave(uint64_t id, Entry& e);  // takes the entry out of the sets of its state
    std::optional<uint64_t> evict(std::optional<uint64_t> id);

    const ConnectionLimits _limits;
    uint64_t _nextId = 1;
    uint64_t _nextIdle = 1;
    size_t _counted = 0;  // entries not Closing
    std::unordered_map<uint64_t, Entry> _entries;
    std::set<uint64_t> _unfinished;  // ids grow with age: begin() is the oldest
    std::unordered_map<std::string, std::set<uint64_t>> _unfinishedByAddress;
    std::map<uint64_t, uint64_t> _idle;  // idleSince -> id
};

}  // namespace http
}  // namespace qel

#endif
