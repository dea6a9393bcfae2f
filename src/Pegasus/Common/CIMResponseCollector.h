// Project extension (not part of the OpenPegasus API): the CIMResponseSink that gathers an
// answer into a CIMOperationResponse, for those who hand answers on whole (the server's
// CIMOMHandle, the in-process client transport, the CIM-XML front-end).
//
// The response gets exactly what the answer holds: on fail(), only the error (objects
// delivered before are dropped). Used by one request at a time; see CIMResponseSink.h.
#ifndef Pegasus_CIMResponseCollector_h
#define Pegasus_CIMResponseCollector_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMOperationMessage.h>
#include <Pegasus/Common/CIMResponseSink.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMResponseCollector : public CIMResponseSink
{
public:
    // Fills `response`, which must outlive the collector, with the answer to a request of
    // `operation`: GetClass and GetInstance into cimClass and instance, other operations
    // into the lists.
    CIMResponseCollector(CIMOperationType operation, CIMOperationResponse& response);

    void deliverClass(const CIMClass& cimClass) override;
    void deliverClassName(const CIMName& className) override;
    void deliverInstance(const CIMInstance& instance) override;
    void deliverPath(const CIMObjectPath& path) override;
    void deliverObject(const CIMObject& object) override;

    void complete(const CIMValue& returnValue, const Array<CIMParamValue>& outParameters) override;
    void fail(const CIMException& error) override;

private:
    CIMOperationType _operation;
    CIMOperationResponse& _response;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMResponseCollector_h */
