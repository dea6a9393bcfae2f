// A stand-in for the CIM server as the internal cache helpers reach it: the local client connection
// (CIMClient::connectLocal, a fake transport installed for the double's lifetime) and a server handle. Both record
// every method call and answer it by a script, by default the project's real QEL_InternalCacheProvider; instance
// name enumerations are scripted too. Used by the provider test host and by the QEL_Common suites.
#ifndef QEL_TESTS_InternalCacheDouble_h
#define QEL_TESTS_InternalCacheDouble_h

#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMOMHandleRep.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace qeltest
{

using namespace Pegasus;

typedef std::vector<std::string> Texts;

// What a script sees of one method call; route is "local" or "cimom".
struct CacheCall
{
    std::string route, nameSpace, path, method;
    Uint32 inCount;
};

class InternalCacheDouble
{
public:
    typedef std::function<CIMValue(const CacheCall&, Array<CIMParamValue>& out)> MethodScript;
    typedef std::function<Array<CIMObjectPath>(const std::string& route, const CIMName&)>
        NamesScript;

    InternalCacheDouble();   // installs the local transport factory
    ~InternalCacheDouble();  // puts the previous factory back

    MethodScript methods;                // default: the real internal cache provider
    NamesScript names;                   // default: no instances
    std::atomic<bool> localDown{false};  // connectLocal() fails while set

    std::vector<CacheCall> calls() const;
    Texts callNames() const;  // "local:GetSystemHostName", ...
    void clear();
    int connections() const { return _opened.load(); }
    int disconnects() const { return _closed.load(); }

    // For the transports and handles of the double.
    CIMValue invoke(
        const char* route, const CIMNamespaceName& nameSpace, const CIMObjectPath& path,
        const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out);
    void opened() { _opened++; }
    void closed() { _closed++; }

private:
    mutable std::mutex _lock;
    std::vector<CacheCall> _calls;
    std::atomic<int> _opened{0}, _closed{0};
    LocalTransportFactory _previous;
};

// An operation a double does not answer: it fails loudly.
[[noreturn]] void refuse(const CIMOperationRequest& request);

// A server handle whose invokeMethod and enumerateInstanceNames reach the double (route "cimom"). The
// other operations fail with CIM_ERR_NOT_SUPPORTED unless a derived handle answers them (and hands the
// rest on to this one).
class CacheHandleRep : public CIMOMHandleRep
{
public:
    explicit CacheHandleRep(InternalCacheDouble& cache) : _cache(cache) {}

    CIMOperationResponse
    execute(const OperationContext& context, const CIMOperationRequest& request) override;

private:
    InternalCacheDouble& _cache;
};

}  // namespace qeltest

#endif
