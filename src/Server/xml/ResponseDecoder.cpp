#include "ResponseDecoder.h"

#include "ProtocolError.h"
#include "ResponseCodec.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <cstring>
#include <strings.h>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

// CIM, MESSAGE, SIMPLERSP, IMETHODRESPONSE, then IRETURNVALUE: its objects start here.
constexpr long kObjectDepth = 5;
const char* const kResultPath[] = {"CIM", "MESSAGE", "SIMPLERSP", "IMETHODRESPONSE"};
// Enough of a start tag's name to tell the elements above the result apart.
constexpr size_t kNameBytes = 16;

bool is(pugi::xml_node node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

[[noreturn]] void bad(const std::string& what)
{
    throw ResponseError("malformed CIM-XML response: " + what);
}

bool isNameEnd(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>';
}

}  // namespace

ResponseDecoder::ResponseDecoder(const CimRequest& request)
    : _request(request), _kind(entryOf(request.operation).result)
{
    _response.operation = request.operation;
    _response.methodName = request.methodName;
}

void ResponseDecoder::feed(const char* data, size_t size)
{
    size_t run = 0;  // the first byte not yet passed to sink()
    auto flush = [&](size_t end)
    {
        if (end > run)
            sink().append(data + run, end - run);
        run = end;
    };
    size_t i = 0;
    while (i < size)
    {
        const char c = data[i];
        switch (_state)
        {
            case State::Text:
            {
                const void* open = std::memchr(data + i, '<', size - i);
                if (open == nullptr)
                {
                    i = size;
                    break;
                }
                i = static_cast<size_t>(static_cast<const char*>(open) - data);
                flush(i);
                // The '<' goes where its kind of markup says, once that is known.
                run = ++i;
                _state = State::Open;
                break;
            }
            case State::Open:
                if (c == '/')
                {
                    _state = State::EndTag;
                }
                else if (c == '!')
                {
                    _state = State::Bang;
                    _probe.clear();
                }
                else if (c == '?')
                {
                    _state = State::Special;
                    _special = true;
                    _last = 0;
                }
                else
                {
                    if (_inResult && _depth == kObjectDepth && !_inObject)
                    {
                        _inObject = true;
                        _objectStart = _fed + i - 1;
                    }
                    _state = State::StartTag;
                    _inName = true;
                    _name.clear();
                    _quote = 0;
                    _last = 0;
                }
                sink().push_back('<');
                if (_state != State::StartTag)
                    ++i;
                break;
            case State::StartTag:
                if (_quote != 0)
                {
                    const void* close = std::memchr(data + i, _quote, size - i);
                    if (close == nullptr)
                    {
                        i = size;
                        break;
                    }
                    i = static_cast<size_t>(static_cast<const char*>(close) - data) + 1;
                    _quote = 0;
                    _last = 0;
                    break;
                }
                if (_inName && isNameEnd(c))
                    _inName = false;
                if (_inName)
                {
                    if (_name.size() < kNameBytes)
                        _name.push_back(c);
                }
                else if (c == '"' || c == '\'')
                {
                    _quote = c;
                }
                else if (c == '>')
                {
                    _state = State::Text;
                    const bool selfClosing = _last == '/';
                    if (selfClosing && _inObject && _depth == kObjectDepth)
                    {
                        flush(i + 1);
                        objectEnded();
                    }
                    else if (!selfClosing)
                    {
                        startTagEnded();
                    }
                }
                _last = c;
                ++i;
                break;
            case State::EndTag:
            {
                const void* close = std::memchr(data + i, '>', size - i);
                if (close == nullptr)
                {
                    i = size;
                    break;
                }
                i = static_cast<size_t>(static_cast<const char*>(close) - data) + 1;
                _state = State::Text;
                --_depth;
                if (_inObject && _depth == kObjectDepth)
                {
                    flush(i);
                    objectEnded();
                }
                else if (_inResult && _depth == kObjectDepth - 1)
                {
                    _inResult = false;
                }
                break;
            }
            case State::Bang:
                _probe.push_back(c);
                ++i;
                if (_probe == "--")
                {
                    _state = State::Comment;
                    _probe.clear();
                }
                else if (_probe == "[CDATA[")
                {
                    _state = State::CData;
                    _probe.clear();
                }
                else if (
                    std::strncmp("--", _probe.c_str(), _probe.size()) != 0 &&
                    std::strncmp("[CDATA[", _probe.c_str(), _probe.size()) != 0)
                {
                    _state = State::Special;
                    _special = false;
                    _last = 0;
                    --i;  // read again as part of the declaration
                }
                break;
            case State::Comment:
            case State::CData:
            {
                // The end is "-->" or "]]>": the two bytes before '>' are kept in _probe.
                const char mark = _state == State::Comment ? '-' : ']';
                if (c == '>' && _probe.size() == 2 && _probe[0] == mark && _probe[1] == mark)
                    _state = State::Text;
                _probe.push_back(c);
                if (_probe.size() > 2)
                    _probe.erase(0, _probe.size() - 2);
                ++i;
                break;
            }
            case State::Special:
                if (c == '>' && (!_special || _last == '?'))
                    _state = State::Text;
                _last = c;
                ++i;
                break;
        }
    }
    flush(size);
    _fed += size;
}

void ResponseDecoder::startTagEnded()
{
    if (_depth >= 0 && _depth < 4)  // an end tag too many makes it negative
        _path[_depth] = _name;
    if (_depth == kObjectDepth - 1 && !_resultSeen && _name == "IRETURNVALUE")
    {
        bool under = true;
        for (long d = 0; d < 4; ++d)
            under = under && _path[d] == kResultPath[d];
        _inResult = _resultSeen = under;
    }
    ++_depth;
}

void ResponseDecoder::objectEnded()
{
    _inObject = false;
    const size_t number = ++_objects;
    try
    {
        pugi::xml_document doc;
        parseDocument(doc, _object.data(), _object.size());
        readObject(doc.document_element());
    }
    catch (const ProtocolError& e)
    {
        bad("object " + std::to_string(number) + " of the result (at byte " +
            std::to_string(_objectStart) + "): " + e.what());
    }
    catch (const Exception& e)  // CIMException, or text that is not UTF-8
    {
        bad("object " + std::to_string(number) + " of the result (at byte " +
            std::to_string(_objectStart) + "): " + toUtf8(e.getMessage()));
    }
    _object.clear();
}

void ResponseDecoder::readObject(pugi::xml_node node)
{
    CimResponse& r = _response;
    switch (_kind)
    {
        case ResultKind::Nothing:
        case ResultKind::MethodResult:
            break;  // no result to read
        case ResultKind::Class:
        case ResultKind::Classes:
            r.classes.append(_reader.cimClass(node));
            break;
        case ResultKind::ClassNames:
            r.classNames.append(_reader.className(node));
            break;
        case ResultKind::Instance:
            r.instance = _reader.instance(node);
            break;
        case ResultKind::NamedInstances:
            r.instances.append(_reader.namedInstance(node));
            break;
        case ResultKind::InstanceNames:
        case ResultKind::CreatedName:
            r.paths.append(_reader.instanceName(node));
            break;
        case ResultKind::ObjectsWithPath:
            r.objects.append(_reader.objectWithPath(node));
            break;
        case ResultKind::ObjectPaths:
            r.paths.append(_reader.objectPath(node));
            break;
        case ResultKind::PropertyValue:
            r.value = _reader.untypedValue(node);
            break;
        case ResultKind::InstancesWithPath:
            r.instances.append(_reader.instanceWithPath(node));
            break;
        case ResultKind::InstancePaths:
            r.paths.append(_reader.instancePath(node));
            break;
    }
}

CimResponse ResponseDecoder::finish()
{
    if (_state != State::Text || _inObject || _fed == 0)
        bad(_inObject ? "the document ends inside object " + std::to_string(_objects + 1) +
                            " of the result"
                      : std::string("the document ends inside its markup"));
    pugi::xml_document doc;
    try
    {
        parseDocument(doc, _outline.data(), _outline.size());
    }
    catch (const ProtocolError& e)
    {
        bad(e.what());
    }
    CimResponse& r = _response;
    try
    {
        pugi::xml_node message = doc.child("CIM").child("MESSAGE");
        if (!message)
            bad("no CIM/MESSAGE element");
        r.messageId = message.attribute("ID").value();
        if (r.messageId != _request.messageId)
            bad("message ID \"" + r.messageId + "\" does not answer request \"" +
                _request.messageId + "\"");
        const bool extrinsic = _request.operation == Operation::InvokeMethod;
        pugi::xml_node resp =
            message.child("SIMPLERSP").child(extrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE");
        if (!resp)
            bad(std::string("no SIMPLERSP/") + (extrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE") +
                " element");
        if (strcasecmp(resp.attribute("NAME").value(), toUtf8(_request.methodName).c_str()) != 0)
            bad(std::string("response is for \"") + resp.attribute("NAME").value() + "\"");
        const std::vector<pugi::xml_node> children = elementChildren(resp);
        if (!children.empty() && is(children[0], "ERROR"))
        {
            if (children.size() != 1)
                bad("ERROR must stand alone");
            r.setError(_reader.error(children[0]));
            return r;
        }
        size_t i = 0;
        if (extrinsic)
        {
            if (i < children.size() && is(children[i], "RETURNVALUE"))
                r.value = _reader.returnValue(children[i++]);
            for (; i < children.size(); ++i)
            {
                if (!is(children[i], "PARAMVALUE"))
                    bad(std::string("unexpected ") + children[i].name());
                r.outParameters.append(_reader.paramValue(children[i]));
            }
            return r;
        }
        if (i < children.size() && is(children[i], "IRETURNVALUE"))
        {
            // Objects left in the outline (none, when the result was where it belongs).
            for (pugi::xml_node n : elementChildren(children[i++]))
            {
                ++_objects;
                readObject(n);
            }
        }
        // A pull's enumeration state follows its result.
        for (; i < children.size() && is(children[i], "PARAMVALUE"); ++i)
            r.outParameters.append(_reader.paramValue(children[i]));
        if (i != children.size())
            bad(std::string("unexpected ") + children[i].name());
    }
    catch (const Exception& e)
    {
        bad(toUtf8(e.getMessage()));
    }
    switch (_kind)
    {
        case ResultKind::Class:
        case ResultKind::Instance:
        case ResultKind::CreatedName:
            if (_objects != 1)
                bad("expected one result element, found " + std::to_string(_objects));
            break;
        case ResultKind::PropertyValue:
            if (_objects > 1)
                bad("more than one property value");
            break;
        default:
            break;
    }
    if (_kind == ResultKind::Class)
    {
        r.cimClass = r.classes[0];
        r.classes.clear();
    }
    if (_kind == ResultKind::Instance)
    {
        CIMObjectPath path = _request.objectName;
        path.setNameSpace(_request.nameSpace);
        try
        {
            r.instance.setPath(path);
        }
        catch (const Exception&)
        {
            bad("the instance returned is not of the requested class");
        }
    }
    return r;
}

}  // namespace cimxml
}  // namespace qel
