// The provider test host's stand-in for the CIM server's internal cache
// service (class QEL_InternalCache in root/PG_Internal). It answers the six
// identity methods from the simulated array's identity, reached by the
// module's local client connection (a fake local transport installed for the
// whole process) and by the host's CIMOMHandle. It records which methods were
// asked and can refuse local connections, so tests can see both the local
// path and the handle fall-back.
#ifndef QEL_TESTS_InternalCacheDouble_h
#define QEL_TESTS_InternalCacheDouble_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include <mutex>
#include <string>
#include <vector>

namespace qeltest
{

class InternalCacheDouble
{
public:
    static InternalCacheDouble& instance();

    // Installs the fake local transport factory (once per process).
    void install();

    // Is this a call for the internal cache service?
    static bool addresses(
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName);

    // One identity method: its one output parameter (SystemHostName,
    // SystemName, ...) appended, return value 0.
    // CIM_ERR_NOT_FOUND for another instance, CIM_ERR_METHOD_NOT_FOUND for
    // another method.
    Pegasus::CIMValue invoke(
        const char* via,
        const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& methodName,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters);

    // While set, connectLocal() fails with CannotConnectException.
    void refuseLocalConnections(bool refuse);
    bool refusingLocalConnections();

    // "local:GetSystemHostName", "handle:GetSystemName", ... in call order.
    std::vector<std::string> calls();
    void clearCalls();

private:
    InternalCacheDouble() = default;

    std::mutex _mutex;
    bool _installed = false;
    bool _refuse = false;
    std::vector<std::string> _calls;
};

} // namespace qeltest

#endif
