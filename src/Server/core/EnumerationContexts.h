// The open pulled enumerations of a server: who may use each, how many there may be, when
// each expires, and the workers their requests run on.
//
//  - Ids are 128 random bits (getrandom) in hexadecimal: a client cannot guess another's.
//  - A context belongs to the user who opened it: for anyone else it does not exist. An
//    unknown, closed, expired or another user's context is CIM_ERR_INVALID_ENUMERATION_CONTEXT,
//    with the same description for all four.
//  - Open contexts are capped per user and in total: CIM_ERR_SERVER_LIMITS_EXCEEDED.
//  - One operation at a time per context: another one while it is held is
//    CIM_ERR_PULL_CANNOT_BE_ABANDONED (the one under way goes on). CloseEnumeration is the
//    exception: it ends the context at once, and a pull waiting on it gives up with
//    CIM_ERR_PULL_HAS_BEEN_ABANDONED.
//  - A context not held by an operation expires `timeout` seconds after its last
//    operation ended. Expiry and close drop what the context holds and make a provider
//    blocked in its delivery give up, so the worker is freed and nothing is left behind.
//    The reaper thread ends expired contexts at their deadline; every look-up also checks
//    the deadline, so an expired context is never served. With a clock of the limits'
//    own (tests), there is no reaper thread: reapExpired() is called by hand.
//  - Each enumeration's request runs on a worker of this table's own, never on a request
//    thread: its provider may wait in deliver() until the client pulls, which must not
//    hold up other clients. There is a worker for every context that may be open.
//
// Threading: every member may be called from any thread. The table's state is guarded by
// _mutex; a context's own state by the context (EnumerationContext.h). _mutex is never
// held while a context's lock is taken for long, nor while a provider runs.
#ifndef QEL_Server_EnumerationContexts_h
#define QEL_Server_EnumerationContexts_h

#include "EnumerationContext.h"

#include <Pegasus/Common/Exception.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pegasus
{

class ThreadPool;

struct EnumerationLimits
{
    typedef std::chrono::steady_clock Clock;

    // OperationTimeout, in seconds: when the client names none, and the most it may name.
    Uint32 defaultTimeout = 30;
    Uint32 maxTimeout = 300;
    // MaxObjectCount: the most objects one open or pull may ask for.
    Uint32 maxObjectCount = 10000;
    // Contexts open at once, of one user and of all users.
    Uint32 maxContextsPerUser = 16;
    Uint32 maxContexts = 64;
    // Objects a context keeps before its provider waits for a pull.
    Uint32 bufferedObjects = 1000;
    // The longest an open or a pull waits for the objects it asks for before it answers
    // with fewer.
    std::chrono::milliseconds pullWait{15000};
    // The clock deadlines are read from; empty: the steady clock, with the reaper thread.
    std::function<Clock::time_point()> clock;
};

class EnumerationContexts
{
public:
    typedef EnumerationLimits::Clock Clock;

    // Throws std::invalid_argument when the limits contradict each other.
    explicit EnumerationContexts(EnumerationLimits limits);
    // shutdown().
    ~EnumerationContexts();

    EnumerationContexts(const EnumerationContexts&) = delete;
    EnumerationContexts& operator=(const EnumerationContexts&) = delete;

    const EnumerationLimits& limits() const { return _limits; }

    // A new context of `user`, held by the opener until release(), and `produce` started
    // on a worker with it: the request that fills it. `timeout` is in seconds (checked
    // by the caller against the limits). CIM_ERR_SERVER_LIMITS_EXCEEDED when the user or
    // the server has its maximum open; CIM_ERR_SERVER_IS_SHUTTING_DOWN after shutdown().
    std::shared_ptr<EnumerationContext> open(
        const String& user, const CIMNamespaceName& nameSpace, EnumerationContext::Kind kind,
        Uint32 timeout, const String& host, std::function<void(EnumerationContext&)> produce);

    // The context `id` of `user`, held for an operation until release().
    std::shared_ptr<EnumerationContext> acquire(const String& id, const String& user);
    // The operation that held it is over. The context's timeout starts again, unless
    // `finished` (end of sequence, or its error): then it is closed.
    void release(const EnumerationContext& context, bool finished);

    // The context `id` of `user`, held or not (CloseEnumeration looks it up so).
    std::shared_ptr<EnumerationContext> find(const String& id, const String& user);
    // Ends the context; a pull waiting on it gives up with CIM_ERR_PULL_HAS_BEEN_ABANDONED.
    // Nothing happens if it is no longer open.
    void close(const EnumerationContext& context);

    // Ends every context whose deadline has passed and that no operation holds; how many.
    std::size_t reapExpired();

    // Ends every context (waiting pulls and blocked providers give up with
    // CIM_ERR_SERVER_IS_SHUTTING_DOWN), refuses new ones, stops the reaper and waits for
    // the enumerations' requests to return. Idempotent.
    void shutdown();

    struct Stats
    {
        std::size_t open = 0;             // contexts clients may still use
        std::size_t held = 0;             // of those, held by an operation
        std::size_t producing = 0;        // enumeration requests under way
        std::size_t bufferedObjects = 0;  // objects kept for pulls, all contexts
    };
    Stats stats() const;
    // Blocks until no enumeration request is under way (tests, benchmarks).
    void waitUntilIdle() const;

private:
    struct Entry
    {
        std::shared_ptr<EnumerationContext> context;
        Clock::time_point deadline;
        bool held = false;
    };
    typedef std::map<std::string, Entry> Table;

    Clock::time_point _now() const;
    static String _newId();
    // The entry of `id` for `user`, or the INVALID_ENUMERATION_CONTEXT error; an expired
    // entry is ended and removed on the way. REQUIRES: _mutex held.
    Table::iterator _lookUp(const String& id, const String& user, std::vector<Entry>& ended);
    // Takes the entry out of the table into `ended`; the next entry. REQUIRES: _mutex held.
    Table::iterator _remove(Table::iterator it, std::vector<Entry>& ended);
    // Ends the contexts of entries taken out of the table. REQUIRES: _mutex not held.
    static void _end(std::vector<Entry>& ended, const CIMException& reason);
    void _reaperLoop();
    void _producerDone();

    const EnumerationLimits _limits;
    std::unique_ptr<ThreadPool> _workers;

    mutable std::mutex _mutex;
    Table _table;                            // guarded by _mutex
    std::map<std::string, Uint32> _perUser;  // open contexts by user key; guarded by _mutex
    std::size_t _producing = 0;              // guarded by _mutex
    bool _stopping = false;                  // guarded by _mutex
    mutable std::condition_variable _idle;   // _producing reached 0
    std::condition_variable _reaperWake;     // the earliest deadline may have changed, or stop
    std::thread _reaper;
};

}  // namespace Pegasus

#endif
