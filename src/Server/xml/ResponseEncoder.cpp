#include "ResponseEncoder.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <algorithm>
#include <exception>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{

ResponseEncoder::ResponseEncoder(
    const CimRequest& request, const String& host, AnswerOutput& output, size_t pieceBytes)
    : _document(request, host), _output(output), _pieceBytes(pieceBytes ? pieceBytes : 1)
{
    _out.reserve(std::min<size_t>(_pieceBytes, 1 << 16) + 1024);
    _document.writeHead(_out);
    _headBytes = _out.size();
    _document.writeResultStart(_out);
}

void ResponseEncoder::objectWritten()
{
    if (_out.size() < _pieceBytes)
        return;
    _written += _out.size();
    _headBytes = 0;
    std::string piece;
    piece.reserve(_out.capacity());
    piece.swap(_out);
    _output.write(std::move(piece));
}

void ResponseEncoder::deliverClass(const CIMClass& cimClass)
{
    _document.addClass(_out, cimClass);
    objectWritten();
}

void ResponseEncoder::deliverClassName(const CIMName& className)
{
    _document.addClassName(_out, className);
    objectWritten();
}

void ResponseEncoder::deliverInstance(const CIMInstance& instance)
{
    _document.addInstance(_out, instance);
    objectWritten();
}

void ResponseEncoder::deliverPath(const CIMObjectPath& path)
{
    _document.addPath(_out, path);
    objectWritten();
}

void ResponseEncoder::deliverObject(const CIMObject& object)
{
    _document.addObject(_out, object);
    objectWritten();
}

void ResponseEncoder::complete(
    const CIMValue& returnValue, const Array<CIMParamValue>& outParameters)
{
    if (_ended)
        return;
    try
    {
        _document.writeResultEnd(_out, returnValue, outParameters);
        _document.writeTail(_out);
    }
    catch (const CIMException& e)
    {
        // A value the writer refuses: the answer fails instead.
        fail(e);
        return;
    }
    catch (const std::exception& e)
    {
        fail(CIMException(CIM_ERR_FAILED, String(e.what())));
        return;
    }
    _ended = true;
    _output.finish(std::move(_out));
}

void ResponseEncoder::fail(const CIMException& error)
{
    if (_ended)
        return;
    _ended = true;
    _failed = true;
    _error = error;
    std::string document;
    if (_written == 0)
    {
        // Nothing has left: the answer becomes an ordinary error response (or, should even
        // that fail to be written, none: the output then answers at the HTTP level).
        try
        {
            document.assign(_out, 0, _headBytes);
            _document.writeError(document, error);
            _document.writeTail(document);
        }
        catch (...)
        {
            document.clear();
        }
    }
    _out.clear();
    _output.fail(error, std::move(document), _written);
}

}  // namespace cimxml
}  // namespace qel
