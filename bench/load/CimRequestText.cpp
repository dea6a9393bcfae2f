#include "CimRequestText.h"

#include <Server/xml/CimXmlWriter.h>
#include <Server/xml/XmlText.h>

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <stdexcept>

using namespace Pegasus;

namespace qel
{
namespace load
{
namespace
{

[[noreturn]] void fail(const std::string& what)
{
    throw std::invalid_argument(what);
}

std::string base64(const std::string& in)
{
    static const char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    size_t i = 0;
    for (; i + 2 < in.size(); i += 3)
    {
        const unsigned v = (static_cast<unsigned char>(in[i]) << 16) |
                           (static_cast<unsigned char>(in[i + 1]) << 8) |
                           static_cast<unsigned char>(in[i + 2]);
        out += kDigits[(v >> 18) & 63];
        out += kDigits[(v >> 12) & 63];
        out += kDigits[(v >> 6) & 63];
        out += kDigits[v & 63];
    }
    if (i < in.size())
    {
        const bool two = i + 1 < in.size();
        const unsigned v = (static_cast<unsigned char>(in[i]) << 16) |
                           (two ? static_cast<unsigned char>(in[i + 1]) << 8 : 0);
        out += kDigits[(v >> 18) & 63];
        out += kDigits[(v >> 12) & 63];
        out += two ? kDigits[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

// The namespace as the CIMObject header carries it: '/' as %2F, other specials escaped.
std::string uriEncoded(const std::string& text)
{
    std::string out;
    for (unsigned char c : text)
    {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
            c == '_' || c == '-' || c == '.')
        {
            out += static_cast<char>(c);
        }
        else
        {
            static const char kHex[] = "0123456789ABCDEF";
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

CIMName className(const std::string& text, const char* what)
{
    try
    {
        return CIMName(text.c_str());
    }
    catch (const Exception&)
    {
        fail(std::string(what) + " \"" + text + "\" is not a legal CIM class name");
    }
}

CIMObjectPath objectPath(const std::string& text)
{
    try
    {
        return CIMObjectPath(String(text.c_str()));
    }
    catch (const Exception& e)
    {
        fail("the TARGET is not an object path: " + cimxml::toUtf8(e.getMessage()));
    }
}

void openParam(std::string& out, const char* name)
{
    out += "<IPARAMVALUE NAME=\"";
    out += name;
    out += "\">";
}

void booleanParam(std::string& out, const char* name, bool value)
{
    openParam(out, name);
    out += value ? "<VALUE>TRUE</VALUE>" : "<VALUE>FALSE</VALUE>";
    out += "</IPARAMVALUE>";
}

void classParam(std::string& out, const char* name, const std::string& value, const char* what)
{
    if (value.empty())
        return;
    openParam(out, name);
    cimxml::writeClassName(out, className(value, what));
    out += "</IPARAMVALUE>";
}

void stringParam(std::string& out, const char* name, const std::string& value)
{
    if (value.empty())
        return;
    openParam(out, name);
    out += "<VALUE>";
    cimxml::appendEscaped(out, value);
    out += "</VALUE></IPARAMVALUE>";
}

void objectFlags(std::string& out, const LoadOptions& o)
{
    booleanParam(out, "IncludeQualifiers", o.includeQualifiers);
    booleanParam(out, "IncludeClassOrigin", o.includeClassOrigin);
    if (!o.hasPropertyList)
        return;
    openParam(out, "PropertyList");
    out += "<VALUE.ARRAY>";
    for (const std::string& name : o.propertyList)
    {
        out += "<VALUE>";
        cimxml::appendEscaped(out, name);
        out += "</VALUE>";
    }
    out += "</VALUE.ARRAY></IPARAMVALUE>";
}

// INSTANCENAME of the target, or CLASSNAME when `classAllowed` and it has no keys.
void pathParam(std::string& out, const char* name, const LoadOptions& o, bool classAllowed)
{
    const CIMObjectPath path = objectPath(o.target);
    if (path.getHost().size() != 0 || !path.getNameSpace().isNull())
        fail("the TARGET must be a local path (Class.Key=\"value\",...); the URL names the "
             "namespace");
    openParam(out, name);
    if (path.getKeyBindings().size() != 0)
        cimxml::writeInstanceName(out, path);
    else if (classAllowed)
        cimxml::writeClassName(out, path.getClassName());
    else
        fail("the TARGET of gi must be an instance path with keys");
    out += "</IPARAMVALUE>";
}

}  // namespace

std::string requestBody(const LoadOptions& o)
{
    std::string out = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
                      "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1001\" "
                      "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"";
    out += operationName(o.operation);
    out += "\">";
    try
    {
        cimxml::writeLocalNamespacePath(out, CIMNamespaceName(o.url.nameSpace.c_str()));
    }
    catch (const Exception&)
    {
        fail("the URL's namespace \"" + o.url.nameSpace + "\" is not a legal CIM namespace");
    }
    const bool associators =
        o.operation == LoadOperation::Associators || o.operation == LoadOperation::AssociatorNames;
    const bool references =
        o.operation == LoadOperation::References || o.operation == LoadOperation::ReferenceNames;
    switch (o.operation)
    {
        case LoadOperation::EnumerateInstances:
            classParam(out, "ClassName", o.target, "the TARGET");
            booleanParam(out, "DeepInheritance", o.deepInheritance);
            booleanParam(out, "LocalOnly", o.localOnly);
            objectFlags(out, o);
            break;
        case LoadOperation::EnumerateInstanceNames:
            classParam(out, "ClassName", o.target, "the TARGET");
            break;
        case LoadOperation::GetInstance:
            pathParam(out, "InstanceName", o, false);
            booleanParam(out, "LocalOnly", o.localOnly);
            objectFlags(out, o);
            break;
        case LoadOperation::Associators:
        case LoadOperation::AssociatorNames:
        case LoadOperation::References:
        case LoadOperation::ReferenceNames:
            pathParam(out, "ObjectName", o, true);
            if (associators)
                classParam(out, "AssocClass", o.assocClass, "--assoc-class");
            classParam(out, "ResultClass", o.resultClass, "--result-class");
            stringParam(out, "Role", o.role);
            if (associators)
                stringParam(out, "ResultRole", o.resultRole);
            if (o.operation == LoadOperation::Associators ||
                o.operation == LoadOperation::References)
            {
                objectFlags(out, o);
            }
            break;
    }
    if (!associators && (!o.assocClass.empty() || !o.resultRole.empty()))
        fail("--assoc-class and --result-role apply to ai and ain only");
    if (!associators && !references && (!o.resultClass.empty() || !o.role.empty()))
        fail("--result-class and --role apply to ai, ain, ri and rin only");
    out += "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>\n";
    return out;
}

std::string httpRequest(const LoadOptions& o, const std::string& body)
{
    std::string out = "POST /cimom HTTP/1.1\r\nHost: ";
    out += o.url.host.find(':') != std::string::npos ? "[" + o.url.host + "]" : o.url.host;
    out += ':' + std::to_string(o.url.port);
    out += "\r\nAuthorization: Basic " + base64(o.url.user + ':' + o.url.password);
    out += "\r\nContent-Type: application/xml; charset=\"utf-8\""
           "\r\nCIMProtocolVersion: 1.0\r\nCIMOperation: MethodCall\r\nCIMMethod: ";
    out += operationName(o.operation);
    out += "\r\nCIMObject: " + uriEncoded(o.url.nameSpace);
    out += "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    out += body;
    return out;
}

}  // namespace load
}  // namespace qel
