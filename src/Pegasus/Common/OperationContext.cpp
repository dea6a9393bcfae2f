#include <Pegasus/Common/OperationContext.h>

PEGASUS_NAMESPACE_BEGIN

// OperationContext

OperationContext::Container::~Container() = default;

OperationContext::OperationContext() = default;

OperationContext::OperationContext(const OperationContext& context)
{
    *this = context;
}

OperationContext::~OperationContext() = default;

OperationContext& OperationContext::operator=(const OperationContext& context)
{
    if (this == &context)
        return *this;
    std::vector<Holder> copies;
    copies.reserve(context._containers.size());
    for (const Holder& c : context._containers)
        copies.emplace_back(c->clone());
    _containers.swap(copies);
    return *this;
}

void OperationContext::clear()
{
    _containers.clear();
}

std::vector<OperationContext::Holder>::const_iterator
OperationContext::_find(const String& name) const
{
    for (auto it = _containers.begin(); it != _containers.end(); ++it)
    {
        if ((*it)->getName() == name)
            return it;
    }
    return _containers.end();
}

const OperationContext::Container& OperationContext::get(const String& containerName) const
{
    auto it = _find(containerName);
    if (it == _containers.end())
        throw Exception("object not found");
    return **it;
}

Boolean OperationContext::contains(const String& containerName) const
{
    return _find(containerName) != _containers.end();
}

void OperationContext::set(const Container& container)
{
    auto it = _find(container.getName());
    if (it == _containers.end())
        throw Exception("object not found");
    Holder copy(container.clone());
    // The replacement goes to the end, as a remove followed by an insert.
    _containers.erase(it);
    _containers.push_back(std::move(copy));
}

void OperationContext::insert(const Container& container)
{
    if (_find(container.getName()) != _containers.end())
        throw Exception("object already exists.");
    _containers.emplace_back(container.clone());
}

void OperationContext::remove(const String& containerName)
{
    auto it = _find(containerName);
    if (it == _containers.end())
        throw Exception("object not found");
    _containers.erase(it);
}

// IdentityContainer

const String IdentityContainer::NAME = "IdentityContainer";

IdentityContainer::IdentityContainer(const OperationContext::Container& container)
{
    const IdentityContainer* p = dynamic_cast<const IdentityContainer*>(&container);
    if (!p)
        throw DynamicCastFailedException();
    _userName = p->_userName;
    _ipAddress = p->_ipAddress;
}

IdentityContainer::IdentityContainer(const IdentityContainer& container)
    : OperationContext::Container(),
      _userName(container._userName),
      _ipAddress(container._ipAddress)
{
}

IdentityContainer::IdentityContainer(const String& userName) : _userName(userName)
{
}

IdentityContainer::IdentityContainer(const String& userName, const String& ipAddress)
    : _userName(userName), _ipAddress(ipAddress)
{
}

IdentityContainer::~IdentityContainer() = default;

IdentityContainer& IdentityContainer::operator=(const IdentityContainer& container)
{
    _userName = container._userName;
    _ipAddress = container._ipAddress;
    return *this;
}

String IdentityContainer::getName() const
{
    return NAME;
}

OperationContext::Container* IdentityContainer::clone() const
{
    return new IdentityContainer(*this);
}

void IdentityContainer::destroy()
{
    delete this;
}

String IdentityContainer::getUserName() const
{
    return _userName;
}

String IdentityContainer::getIpAddress() const
{
    return _ipAddress;
}

PEGASUS_NAMESPACE_END
