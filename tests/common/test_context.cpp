// OperationContext and IdentityContainer, CIMPropertyList, CIMParamValue.
#include <vector>
#include <gtest/gtest.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMParamValue.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using qeltest::str;
using qeltest::thrownMessage;

namespace
{

// A second container kind, to check that kinds are kept apart.
class RoleContainer : virtual public OperationContext::Container
{
public:
    explicit RoleContainer(const String& role) : _role(role) {}
    String getName() const override { return "RoleContainer"; }
    Container* clone() const override { return new RoleContainer(_role); }
    void destroy() override { delete this; }
    String role() const { return _role; }

private:
    String _role;
};

TEST(OperationContextContainers, MissingAndDuplicateContainers)
{
    OperationContext ctx;
    EXPECT_FALSE(ctx.contains(IdentityContainer::NAME));
    EXPECT_EQ(thrownMessage<Exception>(
                  [&] { ctx.get(IdentityContainer::NAME); }),
              "object not found");
    EXPECT_EQ(thrownMessage<Exception>(
                  [&] { ctx.set(IdentityContainer("root")); }),
              "object not found");
    EXPECT_EQ(thrownMessage<Exception>(
                  [&] { ctx.remove(IdentityContainer::NAME); }),
              "object not found");

    ctx.insert(IdentityContainer("root"));
    EXPECT_EQ(thrownMessage<Exception>(
                  [&] { ctx.insert(IdentityContainer("other")); }),
              "object already exists.");
    // Names are matched exactly.
    EXPECT_FALSE(ctx.contains("identitycontainer"));

    ctx.set(IdentityContainer("admin", "10.0.0.7"));
    IdentityContainer id(ctx.get(IdentityContainer::NAME));
    EXPECT_EQ(str(id.getUserName()), "admin");
    EXPECT_EQ(str(id.getIpAddress()), "10.0.0.7");

    ctx.remove(IdentityContainer::NAME);
    EXPECT_FALSE(ctx.contains(IdentityContainer::NAME));
}

TEST(OperationContextContainers, CopiesAreIndependent)
{
    OperationContext a;
    a.insert(IdentityContainer("alice", "192.0.2.1"));
    a.insert(RoleContainer("operator"));

    OperationContext b(a);
    b.set(IdentityContainer("bob"));
    b.remove("RoleContainer");
    EXPECT_EQ(str(IdentityContainer(a.get(IdentityContainer::NAME))
                      .getUserName()),
              "alice");
    EXPECT_TRUE(a.contains("RoleContainer"));

    OperationContext c;
    c.insert(RoleContainer("viewer"));
    c = a;
    EXPECT_EQ(str(dynamic_cast<const RoleContainer&>(c.get("RoleContainer"))
                      .role()),
              "operator");
    OperationContext& alias = c;
    c = alias;  // self-assignment keeps the containers
    EXPECT_TRUE(c.contains(IdentityContainer::NAME));
    c.clear();
    EXPECT_FALSE(c.contains("RoleContainer"));
}

TEST(IdentityContainerTest, RoundTripAndKindCheck)
{
    struct
    {
        IdentityContainer given;
        const char* user;
        const char* address;
    } cases[] = {
        {IdentityContainer("root"), "root", ""},
        {IdentityContainer("", ""), "", ""},
        {IdentityContainer("svc_qel", "fe80::1%eth0"), "svc_qel",
         "fe80::1%eth0"},
    };
    for (const auto& c : cases)
    {
        OperationContext ctx;
        ctx.insert(c.given);
        IdentityContainer back(ctx.get(IdentityContainer::NAME));
        EXPECT_EQ(str(back.getUserName()), c.user);
        EXPECT_EQ(str(back.getIpAddress()), c.address);
        EXPECT_EQ(str(back.getName()), "IdentityContainer");
    }
    EXPECT_THROW(IdentityContainer{RoleContainer("x")},
                 DynamicCastFailedException);

    IdentityContainer a("a", "1.1.1.1");
    IdentityContainer b("b");
    b = a;
    EXPECT_EQ(str(b.getIpAddress()), "1.1.1.1");
}

TEST(PropertyList, NullEmptyAndNames)
{
    CIMPropertyList nullList;
    EXPECT_TRUE(nullList.isNull());
    EXPECT_EQ(nullList.size(), 0u);
    EXPECT_EQ(str(nullList.toString()), "NULL");
    EXPECT_TRUE(nullList.useThisProperty("Anything"));
    EXPECT_FALSE(nullList.contains("Anything"));

    CIMPropertyList empty{Array<CIMName>()};
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(str(empty.toString()), "EMPTY");
    EXPECT_FALSE(empty.useThisProperty("Anything"));

    Array<CIMName> names;
    names.append("DeviceID");
    names.append("Speed");
    CIMPropertyList some(names);
    EXPECT_EQ(str(some.toString()), "DeviceID, Speed");
    EXPECT_TRUE(some.contains("deviceid"));
    EXPECT_FALSE(some.contains("Device"));
    EXPECT_EQ(str(some[1].getString()), "Speed");
    EXPECT_THROW(some[2], IndexOutOfBoundsException);

    // Value semantics: changing a copy leaves the original.
    CIMPropertyList copy = some;
    copy.clear();
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(some.size(), 2u);
    copy.set(Array<CIMName>());
    EXPECT_FALSE(copy.isNull());
    EXPECT_EQ(some.getPropertyNameArray().size(), 2u);

    Array<CIMName> withNull;
    withNull.append("A");
    withNull.append(CIMName());
    EXPECT_THROW(CIMPropertyList{withNull}, UninitializedObjectException);
    EXPECT_THROW(copy.set(withNull), UninitializedObjectException);
    EXPECT_FALSE(copy.isNull()) << "a refused set changes nothing";
}

TEST(ParamValue, SharedHandleAndNameRules)
{
    EXPECT_THROW(CIMParamValue("", CIMValue(Uint16(1))),
                 UninitializedObjectException);
    CIMParamValue none;
    EXPECT_TRUE(none.isUninitialized());
    EXPECT_THROW(none.getValue(), UninitializedObjectException);
    EXPECT_THROW(none.clone(), UninitializedObjectException);

    CIMParamValue p("PortID", CIMValue(Uint32(3)), false);
    EXPECT_FALSE(p.isTyped());
    CIMParamValue shared = p;
    CIMParamValue deep = p.clone();
    CIMValue v(Uint32(9));
    shared.setValue(v);
    shared.setIsTyped(true);
    EXPECT_TRUE(p.getValue() == CIMValue(Uint32(9)));
    EXPECT_TRUE(p.isTyped());
    EXPECT_TRUE(deep.getValue() == CIMValue(Uint32(3)));
    EXPECT_FALSE(deep.isTyped());

    String empty;
    EXPECT_THROW(p.setParameterName(empty), UninitializedObjectException);
    String name("Port");
    p.setParameterName(name);
    EXPECT_EQ(str(shared.getParameterName()), "Port");
    EXPECT_EQ(str(deep.getParameterName()), "PortID");
}

}  // namespace
