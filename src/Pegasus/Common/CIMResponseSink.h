// Project extension (not part of the OpenPegasus API): where a host puts the answer to one
// CIM operation request, object by object, then its end. The server's dispatcher writes
// every answer into one (Dispatcher::execute); CIMResponseCollector turns it back into a
// CIMOperationResponse, and a streaming encoder or an enumeration context can take the
// objects as they come instead.
//
// What arrives, for one request:
//   - the objects of the answer, each once, in the answer's order, already as the client is
//     to see them (property list, qualifiers and class origins applied, host and namespace
//     filled in where the operation does so): deliverClass (GetClass, EnumerateClasses),
//     deliverClassName (EnumerateClassNames), deliverInstance (GetInstance,
//     EnumerateInstances), deliverPath (EnumerateInstanceNames, AssociatorNames,
//     ReferenceNames, CreateInstance's new name), deliverObject (Associators, References,
//     ExecQuery);
//   - then exactly one end, last: complete() with the return value (GetProperty's value,
//     InvokeMethod's return value; null otherwise) and InvokeMethod's output parameters,
//     or fail() with the CIMException the request ended in. An answer may fail after
//     objects were delivered (a later provider of a fan-out fails, or a provider fails
//     after delivering): what was delivered is then not part of the answer.
//
// Threading: the calls for one request never overlap, but they may come from different
// threads. complete() and fail() come on the thread that runs the request, before it
// returns. Objects come, depending on delivery(), either on that thread or, while a
// provider runs, on whatever thread the provider delivers from. A delivery call may block
// (back-pressure): the provider waits in its deliver() meanwhile, so a sink that blocks must
// give up by throwing a CIMException when its request is abandoned (the server's stop
// waits for provider calls under way). A CIMException thrown by a delivery call ends the
// request with that error (unless the provider catches it), and fail() follows; complete()
// and fail() must not throw. The sink may keep the objects it gets: nobody changes them
// after the call.
#ifndef Pegasus_CIMResponseSink_h
#define Pegasus_CIMResponseSink_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMResponseSink
{
public:
    // When the objects a provider delivers reach the sink. Single results (GetInstance,
    // CreateInstance) and answers the host makes itself (classes, class-level association
    // requests) come once they are known, either way.
    enum class Delivery
    {
        // A provider's objects once its call has returned, those of a provider whose call
        // fails never. The host can then filter objects the provider no longer holds in
        // place instead of copying them. For sinks that hold the whole answer anyway.
        PerProvider,
        // Each batch as it leaves the provider's response handler (every response-object
        // threshold's worth, and the rest at complete()), during the provider's call and on
        // its thread. Objects the provider still holds are filtered into copies. A provider
        // that fails with CIM_ERR_NOT_SUPPORTED while others of a fan-out answer is left
        // out of the answer; objects it had delivered before then have already come.
        AsDelivered,
    };

    virtual ~CIMResponseSink();

    virtual Delivery delivery() const { return Delivery::PerProvider; }

    virtual void deliverClass(const CIMClass& cimClass) = 0;
    virtual void deliverClassName(const CIMName& className) = 0;
    virtual void deliverInstance(const CIMInstance& instance) = 0;
    virtual void deliverPath(const CIMObjectPath& path) = 0;
    virtual void deliverObject(const CIMObject& object) = 0;

    virtual void
    complete(const CIMValue& returnValue, const Array<CIMParamValue>& outParameters) = 0;
    virtual void fail(const CIMException& error) = 0;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMResponseSink_h */
