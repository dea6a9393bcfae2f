#include "ConnectionLimiter.h"

namespace qel
{
namespace http
{

size_t ConnectionLimiter::unfinished(const std::string& address) const
{
    auto it = _unfinishedByAddress.find(address);
    return it == _unfinishedByAddress.end() ? 0 : it->second.size();
}

void ConnectionLimiter::leave(uint64_t id, Entry& e)
{
    if (e.state == State::Unfinished)
    {
        _unfinished.erase(id);
        auto it = _unfinishedByAddress.find(e.address);
        if (it != _unfinishedByAddress.end())
        {
            it->second.erase(id);
            if (it->second.empty())
                _unfinishedByAddress.erase(it);
        }
    }
    else if (e.state == State::Idle)
    {
        _idle.erase(e.idleSince);
    }
}

std::optional<uint64_t> ConnectionLimiter::evict(std::optional<uint64_t> id)
{
    if (!id)
        return id;
    Entry& e = _entries.at(*id);
    leave(*id, e);
    e.state = State::Closing;
    --_counted;
    return id;
}

ConnectionLimiter::Admission ConnectionLimiter::admit(const std::string& address)
{
    Admission a;
    auto mine = _unfinishedByAddress.find(address);
    if (mine != _unfinishedByAddress.end() &&
        mine->second.size() >= _limits.maxUnfinishedPerAddress)
        a.close.push_back(*evict(*mine->second.begin()));
    if (_counted >= _limits.maxConnections)
    {
        const std::optional<uint64_t> victim = reclaimOne();
        if (!victim)
            return a;  // everyone is busy with a request: refuse the newcomer
        a.close.push_back(*victim);
    }
    const uint64_t id = _nextId++;
    _entries.emplace(id, Entry{address, State::Unfinished, 0});
    _unfinished.insert(id);
    _unfinishedByAddress[address].insert(id);
    ++_counted;
    a.id = id;
    return a;
}

std::optional<uint64_t> ConnectionLimiter::reclaimOne()
{
    if (!_unfinished.empty())
        return evict(*_unfinished.begin());
    if (!_idle.empty())
        return evict(_idle.begin()->second);
    return std::nullopt;
}

void ConnectionLimiter::completed(uint64_t id)
{
    auto it = _entries.find(id);
    if (it == _entries.end() || it->second.state != State::Unfinished)
        return;
    leave(id, it->second);
    it->second.state = State::Active;
}

void ConnectionLimiter::setIdle(uint64_t id, bool idle)
{
    auto it = _entries.find(id);
    if (it == _entries.end())
        return;
    Entry& e = it->second;
    if (idle && e.state == State::Active)
    {
        e.state = State::Idle;
        e.idleSince = _nextIdle++;
        _idle.emplace(e.idleSince, id);
    }
    else if (!idle && e.state == State::Idle)
    {
        leave(id, e);
        e.state = State::Active;
    }
}

void ConnectionLimiter::released(uint64_t id)
{
    auto it = _entries.find(id);
    if (it == _entries.end())
        return;
    if (it->second.state != State::Closing)
    {
        leave(id, it->second);
        --_counted;
    }
    _entries.erase(it);
}

}  // namespace http
}  // namespace qel
