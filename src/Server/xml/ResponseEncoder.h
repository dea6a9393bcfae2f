// An answer encoded while it is made: a CIMResponseSink that takes the objects as the
// providers deliver them (the dispatcher has filtered them already), appends each to the
// response document and hands the document on in pieces as it grows, so that the server
// holds one piece of the encoded answer rather than all of it. The bytes are those
// encodeResponse writes for the same answer (both use ResponseDocument).
#ifndef QEL_SERVER_XML_RESPONSEENCODER_H
#define QEL_SERVER_XML_RESPONSEENCODER_H

#include "ResponseCodec.h"

#include <Pegasus/Common/CIMResponseSink.h>

#include <cstddef>
#include <string>

namespace qel
{
namespace cimxml
{

// Where an encoded answer goes, piece by piece and in order; exactly one of finish() and
// fail() ends it. Called on the threads the sink is called on, one at a time.
class AnswerOutput
{
public:
    virtual ~AnswerOutput() = default;
    // The next piece of the document (it ends where an object ends); taken over by the
    // output. May wait while the client catches up; throws Pegasus::CIMException to end
    // the request (the client went away or stopped reading).
    virtual void write(std::string&& piece) = 0;
    // The last piece: the document is complete. Must not throw.
    virtual void finish(std::string&& piece) = 0;
    // The answer failed after `written` bytes were handed to write() (0: none were). An
    // output that has sent nothing answers with `document`, the whole error response;
    // one that has sent part of the document reports `error` some other way. Must not
    // throw.
    virtual void
    fail(const Pegasus::CIMException& error, std::string&& document, size_t written) = 0;
};

class ResponseEncoder : public Pegasus::CIMResponseSink
{
public:
    // The answer to `request` (the host completes association paths); a piece goes to
    // `output` once it holds `pieceBytes` (or more: pieces end with objects).
    ResponseEncoder(
        const CimRequest& request, const Pegasus::String& host, AnswerOutput& output,
        size_t pieceBytes);

    Delivery delivery() const override { return Delivery::AsDelivered; }

    void deliverClass(const Pegasus::CIMClass& cimClass) override;
    void deliverClassName(const Pegasus::CIMName& className) override;
    void deliverInstance(const Pegasus::CIMInstance& instance) override;
    void deliverPath(const Pegasus::CIMObjectPath& path) override;
    void deliverObject(const Pegasus::CIMObject& object) override;
    void complete(
        const Pegasus::CIMValue& returnValue,
        const Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
    void fail(const Pegasus::CIMException& error) override;

    // How the answer ended, once it has (for the access log).
    bool failed() const { return _failed; }
    const Pegasus::CIMException& error() const { return _error; }

private:
    // Hands the document so far on once it is a piece's worth.
    void objectWritten();

    ResponseDocument _document;
    AnswerOutput& _output;
    size_t _pieceBytes;
    std::string _out;       // the document not yet handed on
    size_t _headBytes = 0;  // the head's length, while it is still in _out
    size_t _written = 0;    // bytes handed to the output
    bool _ended = false;
    bool _failed = false;
    Pegasus::CIMException _error;
};

}  // namespace cimxml
}  // namespace qel

#endif
