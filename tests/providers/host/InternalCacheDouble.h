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
        const char* route,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& path,
        const CIMName& method,
        const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out);
    void opened() { _opened++; }
    void closed() { _closed++; }

private:
    mutable std::mutex _lock;
    std::vector<CacheCall> _calls;
    std::atomic<int> _opened{0}, _closed{0};
    LocalTransportFactory _previous;
};

// An operation a double does not answer: it fails loudly.
#define QEL_TEST_REFUSED(signature, name)                                                          \
    signature                                                                                      \
    {                                                                                              \
        throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "test double: no " name);      \
    }

// A server handle whose invokeMethod and enumerateInstanceNames reach the double (route "cimom"). The
// other operations fail with CIM_ERR_NOT_SUPPORTED unless a derived handle answers them.
class CacheHandleRep : public CIMOMHandleRep
{
public:
    explicit CacheHandleRep(InternalCacheDouble& cache) : _cache(cache) {}

    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext&,
        const CIMNamespaceName&,
        const CIMName& className) override
    {
        return _cache.names("cimom", className);
    }
    CIMValue invokeMethod(
        const OperationContext&,
        const CIMNamespaceName& nameSpace,
        const CIMObjectPath& path,
        const CIMName& method,
        const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out) override
    {
        return _cache.invoke("cimom", nameSpace, path, method, in, out);
    }
    QEL_TEST_REFUSED(
        CIMClass getClass(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMName&,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "getClass")
    QEL_TEST_REFUSED(
        CIMInstance getInstance(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMObjectPath&,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "getInstance")
    QEL_TEST_REFUSED(
        Array<CIMInstance> enumerateInstances(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMName&,
            Boolean,
            Boolean,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "enumerateInstances")
    QEL_TEST_REFUSED(
        void modifyInstance(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMInstance&,
            Boolean,
            const CIMPropertyList&) override,
        "modifyInstance")
    QEL_TEST_REFUSED(
        Array<CIMObject> associators(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const CIMName&,
            const String&,
            const String&,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "associators")
    QEL_TEST_REFUSED(
        Array<CIMObjectPath> associatorNames(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const CIMName&,
            const String&,
            const String&) override,
        "associatorNames")
    QEL_TEST_REFUSED(
        Array<CIMObject> references(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const String&,
            Boolean,
            Boolean,
            const CIMPropertyList&) override,
        "references")
    QEL_TEST_REFUSED(
        Array<CIMObjectPath> referenceNames(
            const OperationContext&,
            const CIMNamespaceName&,
            const CIMObjectPath&,
            const CIMName&,
            const String&) override,
        "referenceNames")

private:
    InternalCacheDouble& _cache;
};

}  // namespace qeltest

#endif
