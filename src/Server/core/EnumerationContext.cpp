#include "EnumerationContext.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <algorithm>

namespace Pegasus
{

EnumerationContext::EnumerationContext(Identity identity, std::size_t capacity, const String& host)
    : _identity(std::move(identity)), _capacity(std::max<std::size_t>(capacity, 1)), _host(host)
{
}

CIMObjectPath EnumerationContext::_completed(const CIMObjectPath& path) const
{
    CIMObjectPath p(path);
    if (p.getHost().size() == 0)
        p.setHost(_host);
    if (p.getNameSpace().isNull())
        p.setNameSpace(_identity.nameSpace);
    return p;
}

// The open operations refuse class-level requests, so classes never come.
void EnumerationContext::deliverClass(const CIMClass&)
{
    throw CIMException(CIM_ERR_FAILED, "An enumeration of instances got a class.");
}

void EnumerationContext::deliverClassName(const CIMName&)
{
    throw CIMException(CIM_ERR_FAILED, "An enumeration of instances got a class name.");
}

void EnumerationContext::deliverInstance(const CIMInstance& instance)
{
    _push(&instance, nullptr);
}

void EnumerationContext::deliverPath(const CIMObjectPath& path)
{
    _push(nullptr, &path);
}

void EnumerationContext::deliverObject(const CIMObject& object)
{
    if (!object.isInstance())
        deliverClass(CIMClass());
    const CIMInstance instance(object);
    _push(&instance, nullptr);
}

void EnumerationContext::_push(const CIMInstance* instance, const CIMObjectPath* path)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _changed.wait(lock, [this] { return _ended || _size() < _capacity; });
    if (_ended)
        throw *_ended;
    if (instance)
    {
        // The delivered object is this answer's own (the dispatcher filtered it into a
        // copy, or the provider let go of it): its path may be completed in place.
        CIMInstance kept(*instance);
        kept.setPath(_completed(instance->getPath()));
        _instances.push_back(kept);
    }
    else
    {
        _paths.push_back(_completed(*path));
    }
    _changed.notify_all();
}

void EnumerationContext::complete(const CIMValue&, const Array<CIMParamValue>&)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _complete = true;
    _changed.notify_all();
}

void EnumerationContext::fail(const CIMException& error)
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (!_ended)
        _failure = std::make_unique<CIMException>(error);
    _complete = true;
    _changed.notify_all();
}

EnumerationContext::Page EnumerationContext::take(Uint32 maxObjects, std::chrono::milliseconds wait)
{
    const auto until = std::chrono::steady_clock::now() + wait;
    Page page;
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;)
    {
        if (_ended)
            throw *_ended;
        // Without continuation on error, the enumeration ends with its error.
        if (_failure)
            throw *_failure;
        Uint32 taken = page.instances.size() + page.paths.size();
        const std::size_t before = _size();
        for (; taken < maxObjects && !_instances.empty(); ++taken)
        {
            page.instances.append(_instances.front());
            _instances.pop_front();
        }
        for (; taken < maxObjects && !_paths.empty(); ++taken)
        {
            page.paths.append(_paths.front());
            _paths.pop_front();
        }
        if (_size() < before)
            _changed.notify_all();  // room for a provider waiting in deliver()
        if (taken == maxObjects || _complete)
            break;
        if (_changed.wait_until(lock, until) == std::cv_status::timeout)
            break;
    }
    page.endOfSequence = _complete && _size() == 0;
    return page;
}

Uint64Arg EnumerationContext::remaining() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (!_complete || _failure || _ended)
        return Uint64Arg();
    return Uint64Arg(_size());
}

std::size_t EnumerationContext::buffered() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _size();
}

void EnumerationContext::end(const CIMException& reason)
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (!_ended)
        _ended = std::make_unique<CIMException>(reason);
    _instances.clear();
    _paths.clear();
    _changed.notify_all();
}

}  // namespace Pegasus
