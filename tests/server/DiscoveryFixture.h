// The server with the discovery provider and the array's real modules on
// the simulated demo array, for the tests of root/interop.
#ifndef QEL_Tests_DiscoveryFixture_h
#define QEL_Tests_DiscoveryFixture_h

#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>
#include <Server/interop/InteropRegistration.h>
#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>

#include <qelsim_control.h>

#include <memory>
#include <string>
#include <vector>

namespace servertest
{

inline const Pegasus::CIMNamespaceName interopNs("root/interop");
inline const Pegasus::CIMNamespaceName qelNs("root/qel");

// A property's value as text; "(absent)" when the instance lacks it.
inline std::string value(const Pegasus::CIMInstance& instance, const char* name)
{
    using Pegasus::Uint32;  // PEG_NOT_FOUND names it
    const Uint32 pos = instance.findProperty(name);
    return pos == PEG_NOT_FOUND ? "(absent)"
                                : text(instance.getProperty(pos).getValue().toString());
}

// Requests are made as monitor (a browse user of the array); `refused` is
// alice, whom the array does not know. The access points the discovery
// provider publishes are the ones in `accessPoints` at each request.
class DiscoveryServer : public ServerTest
{
protected:
    void SetUp() override
    {
        qelsim::Result loaded = qelsim::loadArrayText(qelsim::demoArrayText());
        ASSERT_TRUE(loaded.ok) << loaded.error;
        qelsim::clearFaults();
        accessPoints = std::make_shared<std::vector<qel::interop::AccessPoint>>();
        accessPoints->push_back({"http://127.0.0.1:5988", {qel::interop::basicAuthentication()}});
        qel::interop::InteropOptions options;
        options.version = "9.8.7";
        options.accessPoints = [points = accessPoints] { return *points; };
        builtInProviders = {qel::interop::registration(options)};
        before = Pegasus::CIMDateTime::getCurrentDateTime();
        ServerTest::SetUp();
        after = Pegasus::CIMDateTime::getCurrentDateTime();
        refused = context;
        context = Pegasus::Dispatcher::requestContext("monitor", "192.0.2.7");
    }

    Pegasus::Array<Pegasus::CIMObjectPath> names(const char* className)
    {
        return calls().enumerateInstanceNames(context, interopNs, className);
    }
    Pegasus::CIMInstance only(const char* className)
    {
        Pegasus::Array<Pegasus::CIMInstance> all =
            calls().enumerateInstances(context, interopNs, className);
        EXPECT_EQ(all.size(), 1u) << className;
        return all.size() ? all[0] : Pegasus::CIMInstance(className);
    }
    // The registered profile of this RegisteredName.
    Pegasus::CIMObjectPath profile(const std::string& name)
    {
        const Pegasus::Array<Pegasus::CIMInstance> all =
            calls().enumerateInstances(context, interopNs, "CIM_RegisteredProfile");
        for (Pegasus::Uint32 i = 0; i < all.size(); ++i)
        {
            if (value(all[i], "RegisteredName") == name)
                return all[i].getPath();
        }
        ADD_FAILURE() << "no registered profile " << name;
        return Pegasus::CIMObjectPath();
    }
    Pegasus::CIMObjectPath objectManager() { return names("CIM_ObjectManager")[0]; }
    Pegasus::Uint32 namespaceCount() { return server().repository().enumerateNamespaces().size(); }
    Pegasus::Array<Pegasus::CIMObjectPath> ports()
    {
        return calls().enumerateInstanceNames(context, qelNs, "QEL_FCPort");
    }

    std::shared_ptr<std::vector<qel::interop::AccessPoint>> accessPoints;
    Pegasus::CIMDateTime before, after;
    Pegasus::OperationContext refused;
};

}  // namespace servertest

#endif
