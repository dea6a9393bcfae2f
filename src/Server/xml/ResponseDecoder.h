// Reads a CIM-XML response document as it arrives. The objects of an intrinsic
// operation's result (the elements of IRETURNVALUE) are decoded one at a time as soon as
// each has come whole, and their bytes let go; the rest of the document (head, error,
// tail, an extrinsic call's result) is kept and read at the end. A client thus holds the
// decoded answer and one object's text, never the whole document and its parse tree.
//
// Splitting needs only the markup's outline: tags, their quoted attribute values,
// comments, CDATA sections, processing instructions. Each object and the rest are then
// parsed as XML documents of their own, with the same rules and reader as a whole one.
// One thread at a time.
#ifndef QEL_SERVER_XML_RESPONSEDECODER_H
#define QEL_SERVER_XML_RESPONSEDECODER_H

#include "CimXmlReader.h"
#include "Messages.h"

#include <cstddef>
#include <string>

namespace qel
{
namespace cimxml
{

class ResponseDecoder
{
public:
    explicit ResponseDecoder(const CimRequest& request);

    // The next bytes of the body, in any pieces. Throws ResponseError as soon as an object
    // of the result is malformed.
    void feed(const char* data, size_t size);
    // The answer, once the whole body was fed: a CIM ERROR as response.failed/error.
    // Throws ResponseError when the document is malformed, incomplete or not the answer to
    // the request.
    CimResponse finish();

    // Objects of the result decoded so far.
    size_t objectsDecoded() const { return _objects; }

private:
    enum class State
    {
        Text,
        Open,      // after '<'
        StartTag,  // in a start tag (its name while _inName)
        EndTag,    // in an end tag
        Bang,      // after "<!": comment, CDATA section or declaration
        Comment,   // until "-->"
        CData,     // until "]]>"
        Special,   // processing instruction until "?>", declaration until '>'
    };

    // Where the bytes scanned go: the document outline, or the object being read.
    std::string& sink() { return _inObject ? _object : _outline; }
    // A start tag (not self-closing) ended: one level deeper.
    void startTagEnded();
    // The object being read has come whole: decode it.
    void objectEnded();
    void readObject(pugi::xml_node node);

    CimRequest _request;
    ResultKind _kind;
    CimResponse _response;
    CimXmlReader _reader;

    State _state = State::Text;
    char _quote = 0;     // the quote of the attribute value a tag is in, or 0
    char _last = 0;      // the byte before, inside a tag
    std::string _probe;  // the first bytes after "<!", or the last ones of a comment/CDATA
    std::string _name;   // the start tag's name (its first bytes)
    bool _inName = false;
    bool _special = false;  // a processing instruction (else a declaration)
    long _depth = 0;
    // Names of the open elements above the result (CIM, MESSAGE, SIMPLERSP, IMETHODRESPONSE).
    std::string _path[4];
    bool _inResult = false;  // inside the IRETURNVALUE of the answer
    bool _resultSeen = false;
    bool _inObject = false;
    std::string _outline;
    std::string _object;
    size_t _objects = 0;
    size_t _fed = 0;          // bytes fed so far
    size_t _objectStart = 0;  // where the object being read began in the body
};

}  // namespace cimxml
}  // namespace qel

#endif
