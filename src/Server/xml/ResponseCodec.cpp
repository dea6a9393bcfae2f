#include "ResponseCodec.h"

#include "CimXmlReader.h"
#include "CimXmlWriter.h"
#include "ProtocolError.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <algorithm>
#include <cstring>
#include <strings.h>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

bool is(pugi::xml_node node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

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

void writeResult(
    std::string& out, const CimResponse& r, ResultKind kind, const String& host,
    const CIMNamespaceName& ns)
{
    switch (kind)
    {
        case ResultKind::Nothing:
        case ResultKind::MethodResult:
            return;
        case ResultKind::Class:
            writeClass(out, r.cimClass);
            break;
        case ResultKind::Classes:
            writeItems(out, r.classes.size(), [&](Uint32 i) { writeClass(out, r.classes[i]); });
            break;
        case ResultKind::ClassNames:
            for (Uint32 i = 0; i < r.classNames.size(); ++i)
                writeClassName(out, r.classNames[i]);
            break;
        case ResultKind::Instance:
            writeInstance(out, r.instance);
            break;
        case ResultKind::NamedInstances:
            writeItems(
                out, r.instances.size(),
                [&](Uint32 i) { writeNamedInstance(out, r.instances[i]); });
            break;
        case ResultKind::InstanceNames:
            writeItems(out, r.paths.size(), [&](Uint32 i) { writeInstanceName(out, r.paths[i]); });
            break;
        case ResultKind::CreatedName:
            if (r.paths.size() != 0)
                writeInstanceName(out, r.paths[0]);
            break;
        case ResultKind::ObjectsWithPath:
            writeItems(
                out, r.objects.size(),
                [&](Uint32 i) {
                    writeObjectWithPath(
                        out, r.objects[i], completed(r.objects[i].getPath(), host, ns));
                });
            break;
        case ResultKind::ObjectPaths:
            writeItems(
                out, r.paths.size(),
                [&](Uint32 i) { writeObjectPath(out, completed(r.paths[i], host, ns)); });
            break;
        case ResultKind::PropertyValue:
            writeValue(out, r.value);
            break;
        case ResultKind::InstancesWithPath:
            writeItems(
                out, r.instances.size(),
                [&](Uint32 i) {
                    writeInstanceWithPath(
                        out, r.instances[i], completed(r.instances[i].getPath(), host, ns));
                });
            break;
        case ResultKind::InstancePaths:
            writeItems(
                out, r.paths.size(),
                [&](Uint32 i) { writeInstancePath(out, completed(r.paths[i], host, ns)); });
            break;
    }
}

[[noreturn]] void bad(const std::string& what)
{
    throw ResponseError("malformed CIM-XML response: " + what);
}

void readResult(
    CimResponse& r, ResultKind kind, const std::vector<pugi::xml_node>& items, CimXmlReader& reader,
    const CimRequest& request)
{
    auto single = [&]() -> pugi::xml_node
    {
        if (items.size() != 1)
            bad("expected one result element, found " + std::to_string(items.size()));
        return items[0];
    };
    switch (kind)
    {
        case ResultKind::Nothing:
        case ResultKind::MethodResult:
            break;
        case ResultKind::Class:
            r.cimClass = reader.cimClass(single());
            break;
        case ResultKind::Classes:
            for (pugi::xml_node n : items)
                r.classes.append(reader.cimClass(n));
            break;
        case ResultKind::ClassNames:
            for (pugi::xml_node n : items)
                r.classNames.append(reader.className(n));
            break;
        case ResultKind::Instance:
        {
            r.instance = reader.instance(single());
            CIMObjectPath path = request.objectName;
            path.setNameSpace(request.nameSpace);
            try
            {
                r.instance.setPath(path);
            }
            catch (const Exception&)
            {
                bad("the instance returned is not of the requested class");
            }
            break;
        }
        case ResultKind::NamedInstances:
            for (pugi::xml_node n : items)
                r.instances.append(reader.namedInstance(n));
            break;
        case ResultKind::InstanceNames:
        case ResultKind::CreatedName:
            for (pugi::xml_node n : items)
                r.paths.append(reader.instanceName(n));
            if (kind == ResultKind::CreatedName)
                single();
            break;
        case ResultKind::ObjectsWithPath:
            for (pugi::xml_node n : items)
                r.objects.append(reader.objectWithPath(n));
            break;
        case ResultKind::ObjectPaths:
            for (pugi::xml_node n : items)
                r.paths.append(reader.objectPath(n));
            break;
        case ResultKind::PropertyValue:
            if (items.size() > 1)
                bad("more than one property value");
            r.value = items.empty() ? CIMValue() : reader.untypedValue(items[0]);
            break;
        case ResultKind::InstancesWithPath:
            for (pugi::xml_node n : items)
                r.instances.append(reader.instanceWithPath(n));
            break;
        case ResultKind::InstancePaths:
            for (pugi::xml_node n : items)
                r.paths.append(reader.instancePath(n));
            break;
    }
}

}  // namespace

std::string encodeResponse(const CimResponse& r, const String& host, const CIMNamespaceName& ns)
{
    std::string out;
    out.reserve(1024);
    out += "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
    out += "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"";
    appendEscaped(out, r.messageId);
    out += "\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP>";
    const bool extrinsic = r.operation == Operation::InvokeMethod;
    const char* element = extrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE";
    out += '<';
    out += element;
    out += " NAME=\"";
    appendEscaped(out, r.methodName);
    out += "\">";
    if (r.failed)
    {
        writeError(out, r.error);
    }
    else if (extrinsic)
    {
        writeReturnValue(out, r.value);
        for (Uint32 i = 0; i < r.outParameters.size(); ++i)
            writeParamValue(out, r.outParameters[i]);
    }
    else
    {
        const ResultKind kind = entryOf(r.operation).result;
        if (kind != ResultKind::Nothing)
        {
            out += "<IRETURNVALUE>";
            writeResult(out, r, kind, host, ns);
            out += "</IRETURNVALUE>";
        }
        for (Uint32 i = 0; i < r.outParameters.size(); ++i)
            writeParamValue(out, r.outParameters[i]);
    }
    out += "</";
    out += element;
    out += "></SIMPLERSP></MESSAGE></CIM>\n";
    return out;
}

CimResponse decodeResponse(const char* body, size_t size, const CimRequest& request)
{
    pugi::xml_document doc;
    try
    {
        parseDocument(doc, body, size);
    }
    catch (const ProtocolError& e)
    {
        bad(e.what());
    }
    CimResponse r;
    r.operation = request.operation;
    r.methodName = request.methodName;
    try
    {
        pugi::xml_node message = doc.child("CIM").child("MESSAGE");
        if (!message)
            bad("no CIM/MESSAGE element");
        r.messageId = message.attribute("ID").value();
        if (r.messageId != request.messageId)
            bad("message ID \"" + r.messageId + "\" does not answer request \"" +
                request.messageId + "\"");
        const bool extrinsic = request.operation == Operation::InvokeMethod;
        pugi::xml_node resp =
            message.child("SIMPLERSP").child(extrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE");
        if (!resp)
            bad(std::string("no SIMPLERSP/") + (extrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE") +
                " element");
        if (strcasecmp(resp.attribute("NAME").value(), toUtf8(request.methodName).c_str()) != 0)
            bad(std::string("response is for \"") + resp.attribute("NAME").value() + "\"");
        CimXmlReader reader;
        const std::vector<pugi::xml_node> children = elementChildren(resp);
        if (!children.empty() && is(children[0], "ERROR"))
        {
            if (children.size() != 1)
                bad("ERROR must stand alone");
            r.setError(reader.error(children[0]));
            return r;
        }
        size_t i = 0;
        if (extrinsic)
        {
            if (i < children.size() && is(children[i], "RETURNVALUE"))
                r.value = reader.returnValue(children[i++]);
            for (; i < children.size(); ++i)
            {
                if (!is(children[i], "PARAMVALUE"))
                    bad(std::string("unexpected ") + children[i].name());
                r.outParameters.append(reader.paramValue(children[i]));
            }
            return r;
        }
        std::vector<pugi::xml_node> items;
        if (i < children.size() && is(children[i], "IRETURNVALUE"))
            items = elementChildren(children[i++]);
        for (; i < children.size() && is(children[i], "PARAMVALUE"); ++i)
            r.outParameters.append(reader.paramValue(children[i]));
        if (i != children.size())
            bad(std::string("unexpected ") + children[i].name());
        readResult(r, entryOf(request.operation).result, items, reader, request);
    }
    catch (const CIMException& e)
    {
        bad(toUtf8(e.getMessage()));
    }
    return r;
}

}  // namespace cimxml
}  // namespace qel
