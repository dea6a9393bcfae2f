//%/////////////////////////////////////////////////////////////////////////////
// QEL_ProviderFrame: the request frame shared by every provider of this module.
//
// Every provider class of libQEL_FCPortProvider goes through these helpers, so
// that access control, the serialisation of library calls and the common
// refusal texts exist once:
//
//   Trace levels      QEL_TRACE_FAILURE (2), QEL_TRACE_NOTICE (3),
//                     QEL_TRACE_FLOW (4) for log_message(level, format, ...).
//                     Trace texts are written by each provider itself and
//                     end with "\n" (or deliberately not, where kept so).
//
//   Requester         QEL_ProviderFrame::requester(context): the user name and
//                     the client address from the request's IdentityContainer.
//
//   Session check     QEL_ProviderFrame::checkSession(context, source, line):
//                     opens the caller's library session; a refusal throws
//                     TraceableCIMException(CIM_ERR_ACCESS_DENIED,
//                     "Insufficient privilege for the user", source, line).
//                     Call it first in every read or change, right after the
//                     entry trace.
//
//   Authorization     QEL_ProviderFrame::authorize(requester, className,
//                     operationKey, source, line): asks the library about the
//                     lower-cased "<class>.<operationKey>"; 1 or 2 throw
//                     ACCESS_DENIED "Insufficient generic privilege", any
//                     other non-zero NOT_SUPPORTED "Does not support in
//                     generic!" (TraceableCIMException with source and line).
//                     Only operations that change the array call it.
//
//   Serialised call   QEL_ProviderFrame::serialized([&] { return api_x(...); }):
//                     one cim_sem_wait, one library call, one cim_sem_post.
//                     A failed wait makes no call and is never posted; its
//                     result is the status. This is the only way a list read
//                     or a change reaches the library.
//
//   Class definition  QEL_ProviderFrame::storedClass(cimom, className, flags,
//                     propertyList): the class a request builds from, through
//                     the process-wide class cache (root/qel, never
//                     local-only).
//
//   Answers           keyValue() reads a getInstance key; deliverMatch()
//                     answers getInstance with the candidate whose path names
//                     the requested object; deliverAll() answers a list at
//                     once (processing, one deliver, complete).
//
//   Changes           QEL_ProviderFrame::openChange(...): session check,
//                     authorization and the event record, in that order,
//                     after a change's entry trace; ChangeSite names the
//                     source and lines its refusals carry.
//
//   Port identifiers  QEL_PortIdList: the one-element LPID array handed to the
//                     library's port actions; freed on every way out.
//
//   Refusal texts     notSupported(), deviceNotFound(), allocationFailed():
//                     the CIM exceptions with the module's message forms.
//
// Everything here uses only the public OpenPegasus provider API, qelapi.h
// and QEL_Common.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_ProviderFrame_h
#define QEL_ProviderFrame_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <qelapi.h>

#include <cstring>

PEGASUS_NAMESPACE_BEGIN

// log_message levels used by the module.
enum QEL_TraceLevel
{
    QEL_TRACE_FAILURE = 2,
    QEL_TRACE_NOTICE = 3,
    QEL_TRACE_FLOW = 4
};

// The namespace of every class the module serves.
const char QEL_NAMESPACE[] = "root/qel";

// The library's selector for "every port" (-10 as an unsigned 64-bit number).
const Uint64 QEL_ALL_PORTS = 0xFFFFFFFFFFFFFFF6ULL;

// The library's LPID answer for a DeviceID it does not know.
const Uint16 QEL_NO_SUCH_PORT = 65532;

class QEL_ProviderFrame
{
public:
    // Who sent the request, as the CIM server put it in the context.
    struct Requester
    {
        String userName;
        String clientAddress;
    };

    static String userName(const OperationContext& context);
    static Requester requester(const OperationContext& context);

    // Opens the requesting user's library session (nothing is cached: every
    // request opens again and the session is never closed by the module).
    static void checkSession(const OperationContext& context, const char* sourceName, Uint32 line);

    // Authorizes "<className>.<operationKey>" (lower-cased) for the requester.
    static void authorize(
        const Requester& requester, const String& className, const String& operationKey,
        const char* sourceName, Uint32 line);

    // The lower-cased operation key handed to api_authorizeCIMUser.
    static String operationName(const String& className, const String& operationKey);

    // Where a change's access refusals point: the source name and the fixed
    // lines of its session check and of its authorization.
    struct ChangeSite
    {
        const char* sourceName;
        Uint32 sessionLine;
        Uint32 authorizeLine;
    };

    // What every change (modifyInstance, invokeMethod) does after its entry
    // trace, in this order: the session check, the authorization of
    // "<className>.<operationKey>", and the event record the library
    // attaches to the change (class name, operation key, an empty operation
    // text, user name, client address), which it returns.
    static api_evtparam_t openChange(
        const OperationContext& context, const Requester& requester, const String& className,
        const String& operationKey, const ChangeSite& site);

    // The class definition a request builds its instances from, through the
    // process-wide class cache: namespace root/qel, never local-only, the
    // request's flags and property list, a fresh operation context.
    static CIMClass storedClass(
        CIMOMHandle& cimom, const CIMName& className, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // The value of the first key binding named keyName (compared as CIM
    // names); false, with value untouched, when there is none.
    static bool keyValue(const CIMObjectPath& path, const char* keyName, String& value);

    // getInstance's answer: the first candidate whose path names the same
    // object as reference (QEL_Common::matchObjectPath: host ignored) is
    // delivered between processing and complete. False, with the handler
    // untouched, when none does.
    static bool deliverMatch(
        const CIMObjectPath& reference, const Array<CIMInstance>& candidates,
        InstanceResponseHandler& handler);

    // A whole answer at once: processing, one deliver of the list, complete.
    template <typename Handler, typename List>
    static void deliverAll(Handler& handler, const List& list)
    {
        handler.processing();
        handler.deliver(list);
        handler.complete();
    }

    // One library call inside one semaphore bracket; returns the call's
    // status, or the failed wait's result when the call was not made.
    template <typename Call>
    static int serialized(Call&& call)
    {
        const int semrc = cim_sem_wait();
        if (semrc != 0)
        {
            return semrc;
        }
        _SemaphoreRelease release;
        return call();
    }

    // CIMNotSupportedException(providerName + " does not support " +
    // what + ".") - the unsupported operations and constructors.
    [[noreturn]] static void notSupported(const String& providerName, const char* what);

    // CIMOperationFailedException(providerName + "::<op>() " +
    // " Device not found" + " with " + keyName + "=" + keyValue).
    [[noreturn]] static void deviceNotFound(
        const String& providerName, const char* operation, const char* keyName,
        const String& keyValue);

    // CIMOperationFailedException(providerName + "::<op>() " +
    // " Failed to allocate memory").
    [[noreturn]] static void allocationFailed(const String& providerName, const char* operation);

private:
    // Posts the semaphore when the bracketed call leaves, however it leaves.
    struct _SemaphoreRelease
    {
        _SemaphoreRelease() = default;
        _SemaphoreRelease(const _SemaphoreRelease&) = delete;
        _SemaphoreRelease& operator=(const _SemaphoreRelease&) = delete;
        ~_SemaphoreRelease() { cim_sem_post(); }
    };
};

// The port identifier array of one port action: a single LPID in memory the
// module allocates per request and releases on every way out.
class QEL_PortIdList
{
public:
    // Throws the "Failed to allocate memory" refusal for providerName and
    // operation when no memory can be had.
    QEL_PortIdList(Uint16 lpid, const String& providerName, const char* operation);
    ~QEL_PortIdList();

    QEL_PortIdList(const QEL_PortIdList&) = delete;
    QEL_PortIdList& operator=(const QEL_PortIdList&) = delete;

    int count() const { return 1; }
    Uint16* ids() { return _ids; }

    // Releases the array before the end of the scope (the operations free it
    // before they answer); safe to call more than once.
    void release();

private:
    Uint16* _ids;
};

// A NUL-terminated text field of a library record as a String, never read
// past the end of the field.
template <size_t N>
inline String QEL_recordText(const char (&field)[N])
{
    return String(field, static_cast<Uint32>(strnlen(field, N)));
}

PEGASUS_NAMESPACE_END

#endif
