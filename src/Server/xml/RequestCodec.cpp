#include "RequestCodec.h"

#include "CimXmlReader.h"
#include "CimXmlWriter.h"
#include "DecodeLimits.h"
#include "ProtocolError.h"
#include "ValueText.h"
#include "XmlElements.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/NameIndex.h>

#include <bitset>
#include <vector>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

// How many of children[from...] are named `name`: counted before any is read, so that a
// list past its limit costs no more than this.
size_t countNamed(const std::vector<pugi::xml_node>& children, size_t from, const char* name)
{
    size_t n = 0;
    for (size_t i = from; i < children.size(); ++i)
        n += is(children[i], name) ? 1 : 0;
    return n;
}

[[noreturn]] void notValid(const std::string& what)
{
    throw ProtocolError(400, "request-not-valid", what);
}

// Major version "2.x" of CIMVERSION/DTDVERSION, "1.x" of PROTOCOLVERSION.
bool majorVersionIs(const char* version, char major)
{
    return version[0] == major && (version[1] == '\0' || version[1] == '.');
}

void requireVersion(pugi::xml_node node, const char* attribute, char major, const char* cimError)
{
    pugi::xml_attribute a = node.attribute(attribute);
    if (!a)
        notValid(std::string(node.name()) + " has no " + attribute + " attribute");
    if (!majorVersionIs(a.value(), major))
        throw ProtocolError(
            501, cimError, std::string(attribute) + " \"" + a.value() + "\" is not supported");
}

// The request's field of each boolean, text and number parameter: the one place that
// maps those parameters to fields. nullptr for a parameter of another kind.
template <class Request>
auto flagField(Request& r, Param p) -> decltype(&r.localOnly)
{
    switch (p)
    {
        case Param::LocalOnly:
            return &r.localOnly;
        case Param::DeepInheritance:
            return &r.deepInheritance;
        case Param::IncludeQualifiers:
            return &r.includeQualifiers;
        case Param::IncludeClassOrigin:
            return &r.includeClassOrigin;
        case Param::ContinueOnError:
            return &r.continueOnError;
        default:
            return nullptr;
    }
}

template <class Request>
auto textField(Request& r, Param p) -> decltype(&r.role)
{
    switch (p)
    {
        case Param::Role:
            return &r.role;
        case Param::ResultRole:
            return &r.resultRole;
        case Param::QueryLanguage:
            return &r.queryLanguage;
        case Param::Query:
            return &r.query;
        case Param::FilterQueryLanguage:
            return &r.filterQueryLanguage;
        case Param::FilterQuery:
            return &r.filterQuery;
        case Param::EnumerationContext:
            return &r.enumerationContext;
        default:
            return nullptr;
    }
}

template <class Request>
auto numberField(Request& r, Param p) -> decltype(&r.maxObjectCount)
{
    return p == Param::OperationTimeout ? &r.operationTimeout
           : p == Param::MaxObjectCount ? &r.maxObjectCount
                                        : nullptr;
}

// A uint32 in decimal, white space around it allowed.
bool parseUint32Text(const std::string& text, Uint32& value)
{
    const size_t b = text.find_first_not_of(" \t\r\n");
    const size_t e = text.find_last_not_of(" \t\r\n");
    if (b == std::string::npos || e - b + 1 > 10)
        return false;
    unsigned long long n = 0;
    for (size_t i = b; i <= e; ++i)
    {
        if (text[i] < '0' || text[i] > '9')
            return false;
        n = n * 10 + static_cast<unsigned>(text[i] - '0');
    }
    if (n > 0xFFFFFFFFull)
        return false;
    value = static_cast<Uint32>(n);
    return true;
}

// Reads one parameter into the request; false when it was given as NULL (an empty
// IPARAMVALUE) and its kind tells NULL from a value.
bool setParam(CimRequest& r, const ParamSpec& def, pugi::xml_node ip, CimXmlReader& reader)
{
    const std::vector<pugi::xml_node> children = elementChildren(ip);
    if (children.size() > 1)
        invalidElement(ip, "an IPARAMVALUE holds at most one value");
    pugi::xml_node v = children.empty() ? pugi::xml_node() : children[0];
    auto expect = [&](const char* a, const char* b = nullptr)
    {
        if (!v)
            invalidElement(ip, std::string("parameter ") + def.name + " needs a value");
        if (!is(v, a) && !(b && is(v, b)))
            invalidElement(
                v, std::string("parameter ") + def.name + " expects " + a +
                       (b ? std::string(" or ") + b : ""));
    };
    switch (def.kind)
    {
        case ParamKind::Boolean:
        {
            expect("VALUE");
            bool b;
            if (!parseBooleanText(elementText(v), b))
                invalidElement(v, std::string("parameter ") + def.name + " must be TRUE or FALSE");
            if (bool* field = flagField(r, def.param))
                *field = b;
            break;
        }
        case ParamKind::String:
        {
            String s;
            if (v)
            {
                expect("VALUE");
                s = reader.untypedValue(v).toString();
            }
            if (String* field = textField(r, def.param))
                *field = s;
            break;
        }
        case ParamKind::NullableString:
            if (!v)
                return false;
            expect("VALUE");
            if (String* field = textField(r, def.param))
                *field = reader.untypedValue(v).toString();
            break;
        case ParamKind::Uint32:
        {
            if (!v)
                return false;
            expect("VALUE");
            const std::string text = elementText(v);
            Uint32 n = 0;
            if (!parseUint32Text(text, n))
                invalidElement(
                    v, std::string("parameter ") + def.name +
                           " must be a uint32 (0 to 4294967295), not \"" + text + "\"");
            if (Uint32* field = numberField(r, def.param))
                *field = n;
            break;
        }
        case ParamKind::ClassName:
        {
            CIMName name;
            if (v)
            {
                expect("CLASSNAME");
                name = reader.className(v);
            }
            else if (def.required)
            {
                invalidElement(ip, std::string("parameter ") + def.name + " must not be NULL");
            }
            if (def.param == Param::ClassName)
                r.className = name;
            else if (def.param == Param::AssocClass)
                r.assocClass = name;
            else if (def.param == Param::ResultClass)
                r.resultClass = name;
            break;
        }
        case ParamKind::InstanceName:
            expect("INSTANCENAME");
            r.objectName = reader.instanceName(v);
            break;
        case ParamKind::ObjectName:
            expect("INSTANCENAME", "CLASSNAME");
            r.objectName = reader.anyPath(v);
            break;
        case ParamKind::Instance:
            expect("INSTANCE");
            r.instance = reader.instance(v);
            break;
        case ParamKind::NamedInstance:
            expect("VALUE.NAMEDINSTANCE");
            r.instance = reader.namedInstance(v);
            break;
        case ParamKind::Class:
            expect("CLASS");
            r.cimClass = reader.cimClass(v);
            break;
        case ParamKind::PropertyList:
            if (v)
            {
                expect("VALUE.ARRAY");
                r.propertyList = reader.propertyList(v);
            }
            break;
        case ParamKind::PropertyName:
        {
            expect("VALUE");
            const std::string text = elementText(v);
            const String s = fromUtf8(text.c_str(), "PropertyName");
            if (!CIMName::legal(s))
                invalidElement(v, "PropertyName \"" + text + "\" is not a valid property name");
            r.propertyName = CIMName(s);
            break;
        }
        case ParamKind::Value:
            r.newValue = v ? reader.untypedValue(v) : CIMValue();
            break;
    }
    return true;
}

void decodeIntrinsic(pugi::xml_node call, DecodedRequest& d, CimXmlReader& reader)
{
    CimRequest& r = d.request;
    const OperationEntry* def = findIntrinsic(call.attribute("NAME").value());
    if (!def)
    {
        d.failed = true;
        d.error = CIMException(CIM_ERR_NOT_SUPPORTED, "unknown intrinsic method " + r.methodName);
        return;
    }
    r.operation = def->operation;
    applyDefaults(r);
    const std::vector<pugi::xml_node> children = elementChildren(call);
    size_t i = 0;
    while (i < children.size() && is(children[i], "CORRELATOR"))
        ++i;
    if (i == children.size() || !is(children[i], "LOCALNAMESPACEPATH"))
        invalidElement(call, "IMETHODCALL must name its namespace in LOCALNAMESPACEPATH");
    r.nameSpace = reader.localNamespacePath(children[i++]);
    // Each parameter may be given once, so the operation's parameters are the bound.
    checkCount(call, "IPARAMVALUE", countNamed(children, i, "IPARAMVALUE"), def->paramCount);
    // Parameters met so far, NULL ones included; `present` keeps those with a value.
    std::bitset<kParamCount> seen;
    for (; i < children.size(); ++i)
    {
        pugi::xml_node ip = children[i];
        if (!is(ip, "IPARAMVALUE"))
            invalidElement(ip, "expected IPARAMVALUE");
        const char* name = ip.attribute("NAME").value();
        if (!ip.attribute("NAME"))
            invalidElement(ip, "missing attribute NAME");
        const ParamSpec* p = findParam(*def, name);
        if (!p)
            invalidElement(ip, std::string("unknown parameter \"") + name + "\" for " + def->name);
        const size_t bit = static_cast<size_t>(p->param);
        if (seen.test(bit))
            invalidElement(ip, std::string("parameter ") + p->name + " given twice");
        seen.set(bit);
        if (setParam(r, *p, ip, reader))
            r.present.set(bit);
        else if (p->required)
            invalidElement(ip, std::string("parameter ") + p->name + " must not be NULL");
    }
    for (size_t k = 0; k < def->paramCount; ++k)
    {
        const ParamSpec& p = def->params[k];
        if (p.required && !r.has(p.param))
            invalidElement(
                call, std::string("missing required parameter ") + p.name + " for " + def->name);
    }
}

void decodeExtrinsic(pugi::xml_node call, DecodedRequest& d, CimXmlReader& reader)
{
    CimRequest& r = d.request;
    r.operation = Operation::InvokeMethod;
    if (!CIMName::legal(r.methodName))
        invalidElement(call, "method NAME is not a valid CIM name");
    const std::vector<pugi::xml_node> children = elementChildren(call);
    size_t i = 0;
    while (i < children.size() && is(children[i], "CORRELATOR"))
        ++i;
    if (i == children.size() ||
        (!is(children[i], "LOCALINSTANCEPATH") && !is(children[i], "LOCALCLASSPATH")))
        invalidElement(
            call, "METHODCALL must name its target in LOCALINSTANCEPATH or LOCALCLASSPATH");
    CIMObjectPath target = reader.anyPath(children[i++]);
    r.nameSpace = target.getNameSpace();
    target.setNameSpace(CIMNamespaceName());
    r.target = target;
    const size_t count = countNamed(children, i, "PARAMVALUE");
    checkCount(call, "PARAMVALUE", count, limits::kMaxMethodParameters);
    r.inParameters.reserveCapacity(static_cast<Uint32>(count));
    std::vector<String> names;  // of r.inParameters, for `seen`
    names.reserve(count);
    NameIndex seen;
    for (; i < children.size(); ++i)
    {
        if (!is(children[i], "PARAMVALUE"))
            invalidElement(children[i], "expected PARAMVALUE");
        const CIMParamValue pv = reader.paramValue(children[i]);
        const String name = pv.getParameterName();
        if (seen.find(name, [&](Uint32 k) -> const String& { return names[k]; }) != PEG_NOT_FOUND)
            invalidElement(children[i], "parameter " + toUtf8(name) + " given twice");
        seen.insert(name, static_cast<Uint32>(names.size()));
        names.push_back(name);
        r.inParameters.append(pv);
    }
}

void writeParam(std::string& out, const CimRequest& r, const ParamSpec& p)
{
    out += "<IPARAMVALUE NAME=\"";
    out += p.name;
    out += "\">";
    switch (p.kind)
    {
        case ParamKind::Boolean:
        {
            const bool* b = flagField(r, p.param);
            out += b && *b ? "<VALUE>TRUE</VALUE>" : "<VALUE>FALSE</VALUE>";
            break;
        }
        case ParamKind::String:
        case ParamKind::NullableString:
            out += "<VALUE>";
            if (const String* s = textField(r, p.param))
                appendEscaped(out, *s);
            out += "</VALUE>";
            break;
        case ParamKind::Uint32:
        {
            const Uint32* n = numberField(r, p.param);
            out += "<VALUE>";
            out += std::to_string(n ? *n : 0);
            out += "</VALUE>";
            break;
        }
        case ParamKind::ClassName:
        {
            const CIMName& n = p.param == Param::ClassName    ? r.className
                               : p.param == Param::AssocClass ? r.assocClass
                                                              : r.resultClass;
            if (!n.isNull())
                writeClassName(out, n);
            break;
        }
        case ParamKind::InstanceName:
            writeInstanceName(out, r.objectName);
            break;
        case ParamKind::ObjectName:
            if (r.objectName.getKeyBindings().size() == 0)
                writeClassName(out, r.objectName.getClassName());
            else
                writeInstanceName(out, r.objectName);
            break;
        case ParamKind::Instance:
            writeInstance(out, r.instance);
            break;
        case ParamKind::NamedInstance:
            writeNamedInstance(out, r.instance);
            break;
        case ParamKind::Class:
            writeClass(out, r.cimClass);
            break;
        case ParamKind::PropertyList:
            if (!r.propertyList.isNull())
            {
                out += "<VALUE.ARRAY>";
                for (Uint32 i = 0; i < r.propertyList.size(); ++i)
                {
                    out += "<VALUE>";
                    appendEscaped(out, r.propertyList[i].getString());
                    out += "</VALUE>";
                }
                out += "</VALUE.ARRAY>";
            }
            break;
        case ParamKind::PropertyName:
            out += "<VALUE>";
            appendEscaped(out, r.propertyName.getString());
            out += "</VALUE>";
            break;
        case ParamKind::Value:
            writeValue(out, r.newValue);
            break;
    }
    out += "</IPARAMVALUE>";
}

}  // namespace

void applyDefaults(CimRequest& r)
{
    const OperationEntry& def = entryOf(r.operation);
    for (size_t i = 0; i < def.paramCount; ++i)
    {
        const ParamSpec& p = def.params[i];
        if (p.kind != ParamKind::Boolean)
            continue;
        if (bool* field = flagField(r, p.param))
            *field = p.booleanDefault;
    }
}

DecodedRequest decodeRequest(const char* body, size_t size)
{
    pugi::xml_document doc;
    parseBoundedDocument(doc, body, size);
    const std::vector<pugi::xml_node> top = [&]
    {
        try
        {
            return elementChildren(doc);
        }
        catch (const CIMException&)
        {
            notValid("text outside the CIM element");
        }
    }();
    if (top.size() != 1 || !is(top[0], "CIM"))
        notValid("the document element must be CIM");
    pugi::xml_node cim = top[0];
    requireVersion(cim, "CIMVERSION", '2', "unsupported-cim-version");
    requireVersion(cim, "DTDVERSION", '2', "unsupported-dtd-version");

    pugi::xml_node message = cim.child("MESSAGE");
    if (!message)
        notValid("CIM must hold a MESSAGE");
    if (!message.attribute("ID"))
        notValid("MESSAGE has no ID attribute");
    requireVersion(message, "PROTOCOLVERSION", '1', "unsupported-protocol-version");
    if (message.child("MULTIREQ"))
        throw ProtocolError(
            501, "multiple-requests-unsupported", "multiple requests are not supported");
    pugi::xml_node simple = message.child("SIMPLEREQ");
    if (!simple)
        notValid("MESSAGE must hold a SIMPLEREQ");

    pugi::xml_node call;
    for (pugi::xml_node c = simple.first_child(); c; c = c.next_sibling())
    {
        if (c.type() != pugi::node_element || is(c, "CORRELATOR"))
            continue;
        if (call)
            notValid("SIMPLEREQ holds more than one call");
        call = c;
    }
    if (!call || (!is(call, "IMETHODCALL") && !is(call, "METHODCALL")))
        notValid("SIMPLEREQ must hold an IMETHODCALL or a METHODCALL");
    if (!call.attribute("NAME") || !*call.attribute("NAME").value())
        notValid(std::string(call.name()) + " has no NAME attribute");

    DecodedRequest d;
    d.request.messageId = message.attribute("ID").value();
    if (is(call, "METHODCALL"))
        d.request.operation = Operation::InvokeMethod;
    CimXmlReader reader;
    try
    {
        d.request.methodName = fromUtf8(call.attribute("NAME").value(), "method NAME");
        if (is(call, "IMETHODCALL"))
            decodeIntrinsic(call, d, reader);
        else
            decodeExtrinsic(call, d, reader);
    }
    catch (const CIMException& e)
    {
        d.failed = true;
        d.error = e;
    }
    catch (const Exception& e)
    {
        d.failed = true;
        d.error = CIMException(CIM_ERR_INVALID_PARAMETER, e.getMessage());
    }
    return d;
}

std::string encodeRequest(const CimRequest& r)
{
    std::string out;
    out.reserve(512);
    out += "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
    out += "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"";
    appendEscaped(out, r.messageId);
    out += "\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>";
    if (r.operation == Operation::InvokeMethod)
    {
        out += "<METHODCALL NAME=\"";
        appendEscaped(out, r.methodName);
        out += "\">";
        CIMObjectPath target = r.target;
        target.setHost(String());
        target.setNameSpace(r.nameSpace);
        writeLocalObjectPath(out, target);
        for (Uint32 i = 0; i < r.inParameters.size(); ++i)
            writeParamValue(out, r.inParameters[i]);
        out += "</METHODCALL>";
    }
    else
    {
        const OperationEntry& def = entryOf(r.operation);
        out += "<IMETHODCALL NAME=\"";
        out += def.name;
        out += "\">";
        writeLocalNamespacePath(out, r.nameSpace);
        for (size_t i = 0; i < def.paramCount; ++i)
            if (r.has(def.params[i].param))
                writeParam(out, r, def.params[i]);
        out += "</IMETHODCALL>";
    }
    out += "</SIMPLEREQ></MESSAGE></CIM>\n";
    return out;
}

}  // namespace cimxml
}  // namespace qel
