#include "ResponseCodec.h"

#include "CimXmlWriter.h"
#include "ResponseDecoder.h"
#include "XmlText.h"

#include <algorithm>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

CIMObjectPath completed(const CIMObjectPath& path, const String& host, const CIMNamespaceName& ns)
{
    CIMObjectPath p = path;
    if (p.getHost().size() == 0)
        p.setHost(host);
    if (p.getNameSpace().isNull())
        p.setNameSpace(ns);
    return p;
}

// Writes n items; after the first, makes room for the rest at its size (and a margin), so
// that a large answer is grown once rather than doubled up through ever larger copies.
// Beyond the cap, growth is left to the string.
template <class Write>
void writeItems(std::string& out, Uint32 n, Write write)
{
    constexpr size_t kMaxReserved = size_t(1) << 28;
    for (Uint32 i = 0; i < n; ++i)
    {
        const size_t before = out.size();
        write(i);
        if (i == 0 && n > 1)
        {
            const size_t rest = (out.size() - before) * (n - 1) / 8 * 9 + 1024;
            out.reserve(out.size() + std::min(rest, kMaxReserved));
        }
    }
}

// The objects of a whole answer, in the order the operation's result holds them.
void writeResult(
    std::string& out, const ResponseDocument& doc, const CimResponse& r, ResultKind kind)
{
    switch (kind)
    {
        case ResultKind::Nothing:
        case ResultKind::MethodResult:
        case ResultKind::PropertyValue:  // written with the end of the result
            return;
        case ResultKind::Class:
            doc.addClass(out, r.cimClass);
            break;
        case ResultKind::Classes:
            writeItems(out, r.classes.size(), [&](Uint32 i) { doc.addClass(out, r.classes[i]); });
            break;
        case ResultKind::ClassNames:
            for (Uint32 i = 0; i < r.classNames.size(); ++i)
                doc.addClassName(out, r.classNames[i]);
            break;
        case ResultKind::Instance:
            doc.addInstance(out, r.instance);
            break;
        case ResultKind::NamedInstances:
            writeItems(
                out, r.instances.size(), [&](Uint32 i) { doc.addInstance(out, r.instances[i]); });
            break;
        case ResultKind::InstanceNames:
        case ResultKind::ObjectPaths:
            writeItems(out, r.paths.size(), [&](Uint32 i) { doc.addPath(out, r.paths[i]); });
            break;
        case ResultKind::CreatedName:
            if (r.paths.size() != 0)
                doc.addPath(out, r.paths[0]);
            break;
        case ResultKind::ObjectsWithPath:
            writeItems(out, r.objects.size(), [&](Uint32 i) { doc.addObject(out, r.objects[i]); });
            break;
        case ResultKind::InstancesWithPath:
            writeItems(
                out, r.instances.size(), [&](Uint32 i) { doc.addInstance(out, r.instances[i]); });
            break;
        case ResultKind::InstancePaths:
            writeItems(out, r.paths.size(), [&](Uint32 i) { doc.addPath(out, r.paths[i]); });
            break;
    }
}

}  // namespace

ResponseDocument::ResponseDocument(
    std::string messageId, Operation operation, String methodName, String host,
    CIMNamespaceName nameSpace)
    : _messageId(std::move(messageId)),
      _operation(operation),
      _methodName(std::move(methodName)),
      _host(std::move(host)),
      _nameSpace(std::move(nameSpace)),
      _kind(entryOf(operation).result)
{
}

ResponseDocument::ResponseDocument(const CimRequest& request, const String& host)
    : ResponseDocument(
          request.messageId, request.operation, request.methodName, host, request.nameSpace)
{
}

bool ResponseDocument::hasResultElement() const
{
    return _kind != ResultKind::Nothing && _kind != ResultKind::MethodResult;
}

void ResponseDocument::writeHead(std::string& out) const
{
    out += "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
    out += "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"";
    appendEscaped(out, _messageId);
    out += "\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP>";
    out += _operation == Operation::InvokeMethod ? "<METHODRESPONSE NAME=\""
                                                 : "<IMETHODRESPONSE NAME=\"";
    appendEscaped(out, _methodName);
    out += "\">";
}

void ResponseDocument::writeResultStart(std::string& out) const
{
    if (hasResultElement())
        out += "<IRETURNVALUE>";
}

void ResponseDocument::addClass(std::string& out, const CIMClass& cimClass) const
{
    if (_kind == ResultKind::Class || _kind == ResultKind::Classes)
        writeClass(out, cimClass);
}

void ResponseDocument::addClassName(std::string& out, const CIMName& className) const
{
    if (_kind == ResultKind::ClassNames)
        writeClassName(out, className);
}

void ResponseDocument::addInstance(std::string& out, const CIMInstance& instance) const
{
    if (_kind == ResultKind::Instance)
        writeInstance(out, instance);
    else if (_kind == ResultKind::NamedInstances)
        writeNamedInstance(out, instance);
    else if (_kind == ResultKind::InstancesWithPath)
        writeInstanceWithPath(out, instance, completed(instance.getPath(), _host, _nameSpace));
}

void ResponseDocument::addPath(std::string& out, const CIMObjectPath& path) const
{
    if (_kind == ResultKind::InstanceNames || _kind == ResultKind::CreatedName)
        writeInstanceName(out, path);
    else if (_kind == ResultKind::ObjectPaths)
        writeObjectPath(out, completed(path, _host, _nameSpace));
    else if (_kind == ResultKind::InstancePaths)
        writeInstancePath(out, completed(path, _host, _nameSpace));
}

void ResponseDocument::addObject(std::string& out, const CIMObject& object) const
{
    if (_kind == ResultKind::ObjectsWithPath)
        writeObjectWithPath(out, object, completed(object.getPath(), _host, _nameSpace));
}

void ResponseDocument::writeResultEnd(
    std::string& out, const CIMValue& value, const Array<CIMParamValue>& outParameters) const
{
    if (_kind == ResultKind::MethodResult)
        writeReturnValue(out, value);
    if (_kind == ResultKind::PropertyValue)
        writeValue(out, value);
    if (hasResultElement())
        out += "</IRETURNVALUE>";
    for (Uint32 i = 0; i < outParameters.size(); ++i)
        writeParamValue(out, outParameters[i]);
}

void ResponseDocument::writeError(std::string& out, const CIMException& error) const
{
    cimxml::writeError(out, error);
}

void ResponseDocument::writeTail(std::string& out) const
{
    out += _operation == Operation::InvokeMethod ? "</METHODRESPONSE>" : "</IMETHODRESPONSE>";
    out += "</SIMPLERSP></MESSAGE></CIM>\n";
}

std::string encodeResponse(const CimResponse& r, const String& host, const CIMNamespaceName& ns)
{
    const ResponseDocument doc(r.messageId, r.operation, r.methodName, host, ns);
    std::string out;
    out.reserve(1024);
    doc.writeHead(out);
    if (r.failed)
    {
        doc.writeError(out, r.error);
    }
    else
    {
        doc.writeResultStart(out);
        writeResult(out, doc, r, entryOf(r.operation).result);
        doc.writeResultEnd(out, r.value, r.outParameters);
    }
    doc.writeTail(out);
    return out;
}

CimResponse decodeResponse(const char* body, size_t size, const CimRequest& request)
{
    ResponseDecoder decoder(request);
    decoder.feed(body, size);
    return decoder.finish();
}

}  // namespace cimxml
}  // namespace qel
