// OperationContext: the named containers that travel with a request (who
// asks, from where, in which languages). Copies are independent: copying a
// context clones its containers.
#ifndef Pegasus_OperationContext_h
#define Pegasus_OperationContext_h

#include <memory>
#include <vector>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE OperationContext
{
public:
    class PEGASUS_COMMON_LINKAGE Container
    {
    public:
        virtual ~Container();
        // The kind of container; one container per name in a context.
        virtual String getName() const = 0;
        virtual Container* clone() const = 0;
        // Releases an object made by clone().
        virtual void destroy() = 0;
    };

    OperationContext();
    OperationContext(const OperationContext& context);
    virtual ~OperationContext();
    OperationContext& operator=(const OperationContext& context);

    void clear();
    // No container of that name throws Exception("object not found").
    const Container& get(const String& containerName) const;
    Boolean contains(const String& containerName) const;
    // Replaces the container of the same name; none throws
    // Exception("object not found").
    void set(const Container& container);
    // One of the same name already present throws
    // Exception("object already exists.").
    void insert(const Container& container);
    // No container of that name throws Exception("object not found").
    void remove(const String& containerName);

private:
    struct Destroy
    {
        void operator()(Container* c) const { c->destroy(); }
    };
    typedef std::unique_ptr<Container, Destroy> Holder;

    std::vector<Holder>::const_iterator _find(const String& name) const;

    std::vector<Holder> _containers;
};

// The user on whose behalf a request runs, and the address the request came
// from. The address is this runtime's addition: "" when the server does not
// know it.
class PEGASUS_COMMON_LINKAGE IdentityContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;

    // Copies another IdentityContainer seen as a Container; any other kind
    // throws DynamicCastFailedException. Idiom:
    // IdentityContainer(context.get(IdentityContainer::NAME)).getUserName().
    IdentityContainer(const OperationContext::Container& container);
    IdentityContainer(const IdentityContainer& container);
    IdentityContainer(const String& userName);
    IdentityContainer(const String& userName, const String& ipAddress);
    virtual ~IdentityContainer();
    IdentityContainer& operator=(const IdentityContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    String getUserName() const;
    String getIpAddress() const;

    IdentityContainer() = delete;

private:
    String _userName;
    String _ipAddress;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_OperationContext_h */
