// OperationContext and IdentityContainer, CIMPropertyList, CIMParamValue.
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMParamValue.h>
#include "test_runtime_support.h"

using namespace Pegasus;
using namespace qeltest;

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

std::string userOf(const OperationContext& ctx)
{
    return str(IdentityContainer(ctx.get(IdentityContainer::NAME)).getUserName());
}

TEST(OperationContextContainers, MissingAndDuplicateContainers)
{
    OperationContext ctx;
    EXPECT_EQ(
        thrownMessage<Exception>([&] { ctx.get(IdentityContainer::NAME); }), "object not found");
    EXPECT_EQ(
        thrownMessage<Exception>([&] { ctx.set(IdentityContainer("root")); }), "object not found");
    EXPECT_EQ(
        thrownMessage<Exception>([&] { ctx.remove(IdentityContainer::NAME); }), "object not found");
    ctx.insert(IdentityContainer("root"));
    EXPECT_EQ(
        thrownMessage<Exception>([&] { ctx.insert(IdentityContainer("other")); }),
        "object already exists.");
    EXPECT_FALSE(ctx.contains("identitycontainer"));  // names are matched exactly
    EXPECT_THROW(IdentityContainer{RoleContainer("x")}, DynamicCastFailedException);

    // User and client address come back as given, the address empty when none was.
    ctx.set(IdentityContainer("admin", "fe80::1%eth0"));
    EXPECT_EQ(userOf(ctx), "admin");
    EXPECT_EQ(
        str(IdentityContainer(ctx.get(IdentityContainer::NAME)).getIpAddress()), "fe80::1%eth0");
    ctx.set(IdentityContainer("root"));
    EXPECT_EQ(str(IdentityContainer(ctx.get(IdentityContainer::NAME)).getIpAddress()), "");
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
    EXPECT_EQ(userOf(a), "alice");
    EXPECT_TRUE(a.contains("RoleContainer"));
    OperationContext c;
    c.insert(RoleContainer("viewer"));
    c = a;
    OperationContext& alias = c;
    c = alias;  // self-assignment keeps the containers
    EXPECT_EQ(str(dynamic_cast<const RoleContainer&>(c.get("RoleContainer")).role()), "operator");
    EXPECT_EQ(userOf(c), "alice");
}

TEST(PropertyList, NullEmptyAndNames)
{
    // A null list selects everything, an empty one nothing.
    CIMPropertyList nullList;
    EXPECT_EQ(str(nullList.toString()), "NULL");
    EXPECT_TRUE(nullList.useThisProperty("Anything"));
    EXPECT_FALSE(nullList.contains("Anything"));
    CIMPropertyList empty{Array<CIMName>()};
    EXPECT_EQ(str(empty.toString()), "EMPTY");
    EXPECT_FALSE(empty.useThisProperty("Anything"));
    Array<CIMName> names(1, CIMName("DeviceID"));
    names.append("Speed");
    CIMPropertyList some(names);
    EXPECT_EQ(str(some.toString()), "DeviceID, Speed");
    EXPECT_TRUE(some.contains("deviceid"));
    EXPECT_FALSE(some.contains("Device"));
    EXPECT_THROW(some[2], IndexOutOfBoundsException);
    CIMPropertyList copy = some;  // value semantics
    copy.clear();
    EXPECT_EQ(some.size(), 2u);
    Array<CIMName> withNull;
    withNull.append("A");
    withNull.append(CIMName());
    EXPECT_THROW(CIMPropertyList{withNull}, UninitializedObjectException);
    copy.set(Array<CIMName>());
    EXPECT_THROW(copy.set(withNull), UninitializedObjectException);
    EXPECT_FALSE(copy.isNull()) << "a refused set changes nothing";
}

TEST(ParamValue, SharedHandleAndNameRules)
{
    EXPECT_THROW(CIMParamValue("", CIMValue(Uint16(1))), UninitializedObjectException);
    EXPECT_THROW(CIMParamValue().getValue(), UninitializedObjectException);
    CIMParamValue p("PortID", CIMValue(Uint32(3)), false);
    CIMParamValue shared = p;
    CIMParamValue deep = p.clone();
    CIMValue nine(Uint32(9));  // setValue takes a non-const reference, as in the original
    shared.setValue(nine);
    EXPECT_TRUE(p.getValue() == CIMValue(Uint32(9)));
    EXPECT_TRUE(deep.getValue() == CIMValue(Uint32(3)));
    String empty;
    EXPECT_THROW(p.setParameterName(empty), UninitializedObjectException);
    EXPECT_EQ(str(shared.getParameterName()), "PortID");  // kept after the refusal
}

}  // namespace
