// CIM-XML response documents: encoding on the server, decoding on the client.
#ifndef QEL_SERVER_XML_RESPONSECODEC_H
#define QEL_SERVER_XML_RESPONSECODEC_H

#include "Messages.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace qel
{
namespace cimxml
{

// One response document written in pieces: the head, the objects of the result one at a
// time, then the end of the result and the tail; or the head, the error and the tail. A
// whole answer (encodeResponse), one streamed while it is made (ResponseEncoder.h) and a
// pull operation's batch are all written with these, so they are byte for byte alike:
//
//   head          <?xml ...?><CIM ...><MESSAGE ID=".." ...><SIMPLERSP><IMETHODRESPONSE NAME="..">
//   resultStart   <IRETURNVALUE>                  (intrinsic operations with a result)
//   add...        one object of the result each
//   resultEnd     GetProperty's value, </IRETURNVALUE>, output parameters as PARAMVALUE;
//                 or an extrinsic call's RETURNVALUE and PARAMVALUEs
//   error         ERROR (after the head, instead of the result)
//   tail          </IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>
//
// Paths of association and query results that lack a host or namespace are completed with
// `host` and `nameSpace` (the request's namespace). An object of a kind the operation's
// result does not hold is not written. Holds no state besides the names; any thread.
class ResponseDocument
{
public:
    ResponseDocument(
        std::string messageId, Operation operation, Pegasus::String methodName,
        Pegasus::String host, Pegasus::CIMNamespaceName nameSpace);
    // The answer to `request`.
    ResponseDocument(const CimRequest& request, const Pegasus::String& host);

    void writeHead(std::string& out) const;
    void writeResultStart(std::string& out) const;
    void addClass(std::string& out, const Pegasus::CIMClass& cimClass) const;
    void addClassName(std::string& out, const Pegasus::CIMName& className) const;
    void addInstance(std::string& out, const Pegasus::CIMInstance& instance) const;
    void addPath(std::string& out, const Pegasus::CIMObjectPath& path) const;
    void addObject(std::string& out, const Pegasus::CIMObject& object) const;
    void writeResultEnd(
        std::string& out, const Pegasus::CIMValue& value,
        const Pegasus::Array<Pegasus::CIMParamValue>& outParameters) const;
    void writeError(std::string& out, const Pegasus::CIMException& error) const;
    void writeTail(std::string& out) const;

private:
    bool hasResultElement() const;

    std::string _messageId;
    Operation _operation;
    Pegasus::String _methodName;
    Pegasus::String _host;
    Pegasus::CIMNamespaceName _nameSpace;
    ResultKind _kind;
};

// Writes the whole response document (see ResponseDocument).
std::string encodeResponse(
    const CimResponse& response, const Pegasus::String& host,
    const Pegasus::CIMNamespaceName& nameSpace);

// A response document the client cannot use (malformed, or not the answer to its request).
class ResponseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Reads the response to `request` (see ResponseDecoder.h, which reads one as it arrives).
// A CIM ERROR comes back as response.failed/error.
CimResponse decodeResponse(const char* body, size_t size, const CimRequest& request);

}  // namespace cimxml
}  // namespace qel

#endif
