#include "CimXmlWriter.h"

#include "ElementHeads.h"
#include "ValueText.h"
#include "XmlBuffer.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/ObjectReader.h>

#include <cstring>
#include <string_view>
#include <vector>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

void attr(XmlBuffer& out, std::string_view name, const String& value)
{
    appendAttribute(out, name, value);
}

void attr(XmlBuffer& out, std::string_view name, const char* value)
{
    appendAttribute(out, name, value);
}

bool isEmbedded(CIMType t)
{
    return t == CIMTYPE_OBJECT || t == CIMTYPE_INSTANCE;
}

std::string embeddedText(const CIMObject& object)
{
    std::string xml;
    if (object.isInstance())
        writeInstance(xml, CIMInstance(object));
    else
        writeClass(xml, CIMClass(object));
    return xml;
}

void writeTextValue(XmlBuffer& out, const std::string& text)
{
    out += "<VALUE>";
    appendEscaped(out, text.data(), text.size());
    out += "</VALUE>";
}

std::vector<std::string> embeddedTexts(const CIMValue& value)
{
    std::vector<std::string> texts;
    if (value.getType() == CIMTYPE_OBJECT)
    {
        Array<CIMObject> a;
        value.get(a);
        for (Uint32 i = 0; i < a.size(); ++i)
            texts.push_back(embeddedText(a[i]));
    }
    else
    {
        Array<CIMInstance> a;
        value.get(a);
        for (Uint32 i = 0; i < a.size(); ++i)
            texts.push_back(embeddedText(CIMObject(a[i])));
    }
    return texts;
}

std::string scalarEmbeddedText(const CIMValue& value)
{
    if (value.getType() == CIMTYPE_OBJECT)
    {
        CIMObject o;
        value.get(o);
        return embeddedText(o);
    }
    CIMInstance i;
    value.get(i);
    return embeddedText(CIMObject(i));
}

void writeFlavor(XmlBuffer& out, const CIMFlavor& f)
{
    // Defaults are OVERRIDABLE and TOSUBCLASS true, TOINSTANCE and TRANSLATABLE false.
    if (!f.hasFlavor(CIMFlavor::OVERRIDABLE))
        attr(out, "OVERRIDABLE", "false");
    if (!f.hasFlavor(CIMFlavor::TOSUBCLASS))
        attr(out, "TOSUBCLASS", "false");
    if (f.hasFlavor(CIMFlavor::TOINSTANCE))
        attr(out, "TOINSTANCE", "true");
    if (f.hasFlavor(CIMFlavor::TRANSLATABLE))
        attr(out, "TRANSLATABLE", "true");
}

template <class Q>
void writeQualifier(XmlBuffer& out, const Q& q)
{
    const CIMValue& v = q.getValue();
    out += "<QUALIFIER";
    attr(out, "NAME", q.getName().getString());
    appendTypeAttributes(out, v.getType());
    if (q.getPropagated())
        attr(out, "PROPAGATED", "true");
    writeFlavor(out, q.getFlavor());
    out += '>';
    writeValue(out, v);
    out += "</QUALIFIER>";
}

template <class T>
void writeQualifiers(XmlBuffer& out, const T& owner)
{
    for (Uint32 i = 0, n = owner.getQualifierCount(); i < n; ++i)
        writeQualifier(out, owner.getQualifier(i));
}

// A property from its parts: start tag, qualifiers (an owner with getQualifierCount() and
// getQualifier(i)), value, end tag.
template <class Qualifiers>
void writeProperty(
    XmlBuffer& out, const PropertyShape& shape, const CIMValue& v, const Qualifiers& qualifiers,
    Uint32 position = kNoPosition)
{
    appendPropertyHead(out, shape, position);
    writeQualifiers(out, qualifiers);
    writeValue(out, v);
    out += shape.type == CIMTYPE_REFERENCE ? std::string_view("</PROPERTY.REFERENCE>")
           : shape.isArray                 ? std::string_view("</PROPERTY.ARRAY>")
                                           : std::string_view("</PROPERTY>");
}

// A class's property, through its handle.
void writeProperty(XmlBuffer& out, const CIMConstProperty& p)
{
    const CIMValue& v = p.getValue();
    writeProperty(
        out,
        PropertyShape{
            p.getName().getString(), v.getType(), v.isArray(), p.getArraySize(),
            p.getReferenceClassName().getString(), p.getClassOrigin().getString(),
            p.getPropagated()},
        v, p);
}

// The qualifiers of a property read in place.
struct RepQualifiers
{
    const CIMPropertyRep& rep;
    Uint32 getQualifierCount() const { return rep.qualifiers.size(); }
    const CIMQualifier& getQualifier(Uint32 i) const { return rep.qualifiers.at(i); }
};

// An instance's property at `position`, read in place (instances are written by the
// thousand).
void writeProperty(XmlBuffer& out, const CIMPropertyRep& p, Uint32 position)
{
    writeProperty(
        out,
        PropertyShape{
            p.name.getString(), p.value.getType(), p.value.isArray(), p.arraySize,
            p.referenceClassName.getString(), p.classOrigin.getString(), p.propagated},
        p.value, RepQualifiers{p}, position);
}

template <class P>
void writeParameter(XmlBuffer& out, const P& p)
{
    const CIMType t = p.getType();
    std::string_view element;
    if (t == CIMTYPE_REFERENCE)
        element = p.isArray() ? "PARAMETER.REFARRAY" : "PARAMETER.REFERENCE";
    else
        element = p.isArray() ? "PARAMETER.ARRAY" : "PARAMETER";
    out += '<';
    out += element;
    attr(out, "NAME", p.getName().getString());
    if (t == CIMTYPE_REFERENCE)
    {
        if (!p.getReferenceClassName().isNull())
            attr(out, "REFERENCECLASS", p.getReferenceClassName().getString());
    }
    else
    {
        appendTypeAttributes(out, t);
    }
    if (p.isArray() && p.getArraySize() != 0)
        attr(out, "ARRAYSIZE", String(std::to_string(p.getArraySize()).c_str()));
    out += '>';
    writeQualifiers(out, p);
    out += "</";
    out += element;
    out += '>';
}

template <class M>
void writeMethod(XmlBuffer& out, const M& m)
{
    out += "<METHOD";
    attr(out, "NAME", m.getName().getString());
    appendTypeAttributes(out, m.getType());
    if (!m.getClassOrigin().isNull())
        attr(out, "CLASSORIGIN", m.getClassOrigin().getString());
    if (m.getPropagated())
        attr(out, "PROPAGATED", "true");
    out += '>';
    writeQualifiers(out, m);
    for (Uint32 i = 0, n = m.getParameterCount(); i < n; ++i)
        writeParameter(out, m.getParameter(i));
    out += "</METHOD>";
}

// The KEYBINDING of one key.
void writeKeyBinding(XmlBuffer& out, const CIMKeyBinding& kb)
{
    if (kb.getType() == CIMKeyBinding::REFERENCE)
    {
        out += "<KEYBINDING";
        attr(out, "NAME", kb.getName().getString());
        out += '>';
        writeValueReference(out, CIMObjectPath(kb.getValue()));
        out += "</KEYBINDING>";
        return;
    }
    appendKeyHead(out, kb.getName().getString(), kb.getType());
    appendEscaped(out, kb.getValue());
    out += "</KEYVALUE></KEYBINDING>";
}

}  // namespace

void writeLocalNamespacePath(XmlBuffer& out, const CIMNamespaceName& ns)
{
    out += "<LOCALNAMESPACEPATH>";
    const std::string text = toUtf8(ns.getString());
    size_t start = 0;
    while (start <= text.size())
    {
        size_t slash = text.find('/', start);
        if (slash == std::string::npos)
            slash = text.size();
        out += "<NAMESPACE NAME=\"";
        appendEscaped(out, text.data() + start, slash - start);
        out += "\"/>";
        start = slash + 1;
    }
    out += "</LOCALNAMESPACEPATH>";
}

void writeNamespacePath(XmlBuffer& out, const String& host, const CIMNamespaceName& ns)
{
    out += "<NAMESPACEPATH><HOST>";
    appendEscaped(out, host);
    out += "</HOST>";
    writeLocalNamespacePath(out, ns);
    out += "</NAMESPACEPATH>";
}

void writeClassName(XmlBuffer& out, const CIMName& name)
{
    out += "<CLASSNAME";
    attr(out, "NAME", name.getString());
    out += "/>";
}

void writeInstanceName(XmlBuffer& out, const CIMObjectPath& path)
{
    out += "<INSTANCENAME";
    attr(out, "CLASSNAME", path.getClassName().getString());
    out += '>';
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        writeKeyBinding(out, keys[i]);
    out += "</INSTANCENAME>";
}

void writeObjectPathBody(XmlBuffer& out, const CIMObjectPath& path)
{
    if (path.getKeyBindings().size() == 0)
    {
        out += "<CLASSPATH>";
        writeNamespacePath(out, path.getHost(), path.getNameSpace());
        writeClassName(out, path.getClassName());
        out += "</CLASSPATH>";
    }
    else
    {
        writeInstancePath(out, path);
    }
}

void writeInstancePath(XmlBuffer& out, const CIMObjectPath& path)
{
    out += "<INSTANCEPATH>";
    writeNamespacePath(out, path.getHost(), path.getNameSpace());
    writeInstanceName(out, path);
    out += "</INSTANCEPATH>";
}

void writeInstanceWithPath(
    XmlBuffer& out, const CIMConstInstance& instance, const CIMObjectPath& path)
{
    out += "<VALUE.INSTANCEWITHPATH>";
    writeInstancePath(out, path);
    writeInstance(out, instance);
    out += "</VALUE.INSTANCEWITHPATH>";
}

void writeObjectPath(XmlBuffer& out, const CIMObjectPath& path)
{
    out += "<OBJECTPATH>";
    writeObjectPathBody(out, path);
    out += "</OBJECTPATH>";
}

void writeLocalObjectPath(XmlBuffer& out, const CIMObjectPath& path)
{
    if (path.getKeyBindings().size() == 0)
    {
        out += "<LOCALCLASSPATH>";
        writeLocalNamespacePath(out, path.getNameSpace());
        writeClassName(out, path.getClassName());
        out += "</LOCALCLASSPATH>";
    }
    else
    {
        out += "<LOCALINSTANCEPATH>";
        writeLocalNamespacePath(out, path.getNameSpace());
        writeInstanceName(out, path);
        out += "</LOCALINSTANCEPATH>";
    }
}

void writeValueReference(XmlBuffer& out, const CIMObjectPath& path)
{
    out += "<VALUE.REFERENCE>";
    const bool hasNamespace = !path.getNameSpace().isNull();
    if (hasNamespace && path.getHost().size() != 0)
        writeObjectPathBody(out, path);
    else if (hasNamespace)
        writeLocalObjectPath(out, path);
    else if (path.getKeyBindings().size() == 0)
        writeClassName(out, path.getClassName());
    else
        writeInstanceName(out, path);
    out += "</VALUE.REFERENCE>";
}

void writeValue(XmlBuffer& out, const CIMValue& value)
{
    if (value.isNull())
        return;
    const CIMType t = value.getType();
    if (t == CIMTYPE_REFERENCE)
    {
        if (value.isArray())
        {
            Array<CIMObjectPath> a;
            value.get(a);
            out += "<VALUE.REFARRAY>";
            for (Uint32 i = 0; i < a.size(); ++i)
                writeValueReference(out, a[i]);
            out += "</VALUE.REFARRAY>";
        }
        else
        {
            CIMObjectPath p;
            value.get(p);
            writeValueReference(out, p);
        }
        return;
    }
    if (!isEmbedded(t))
    {
        appendValueElements(out, value);
        return;
    }
    if (!value.isArray())
    {
        writeTextValue(out, scalarEmbeddedText(value));
        return;
    }
    out += "<VALUE.ARRAY>";
    for (const std::string& s : embeddedTexts(value))
        writeTextValue(out, s);
    out += "</VALUE.ARRAY>";
}

void writeInstance(XmlBuffer& out, const CIMConstInstance& instance)
{
    out += "<INSTANCE";
    attr(out, "CLASSNAME", instance.getClassName().getString());
    out += '>';
    writeQualifiers(out, instance);
    const NamedElementList<CIMProperty>& properties = ObjectReader::properties(instance);
    for (Uint32 i = 0, n = properties.size(); i < n; ++i)
        writeProperty(out, ObjectReader::rep(properties.at(i)), i);
    out += "</INSTANCE>";
}

void writeClass(XmlBuffer& out, const CIMConstClass& cimClass)
{
    out += "<CLASS";
    attr(out, "NAME", cimClass.getClassName().getString());
    if (!cimClass.getSuperClassName().isNull())
        attr(out, "SUPERCLASS", cimClass.getSuperClassName().getString());
    out += '>';
    writeQualifiers(out, cimClass);
    for (Uint32 i = 0, n = cimClass.getPropertyCount(); i < n; ++i)
        writeProperty(out, cimClass.getProperty(i));
    for (Uint32 i = 0, n = cimClass.getMethodCount(); i < n; ++i)
        writeMethod(out, cimClass.getMethod(i));
    out += "</CLASS>";
}

void writeNamedInstance(XmlBuffer& out, const CIMConstInstance& instance)
{
    out += "<VALUE.NAMEDINSTANCE>";
    writeInstanceName(out, instance.getPath());
    writeInstance(out, instance);
    out += "</VALUE.NAMEDINSTANCE>";
}

void writeObjectWithPath(XmlBuffer& out, const CIMObject& object, const CIMObjectPath& path)
{
    out += "<VALUE.OBJECTWITHPATH>";
    if (object.isInstance())
    {
        writeInstancePath(out, path);
        writeInstance(out, CIMInstance(object));
    }
    else
    {
        out += "<CLASSPATH>";
        writeNamespacePath(out, path.getHost(), path.getNameSpace());
        writeClassName(out, path.getClassName());
        out += "</CLASSPATH>";
        writeClass(out, CIMClass(object));
    }
    out += "</VALUE.OBJECTWITHPATH>";
}

void writeParamValue(XmlBuffer& out, const CIMParamValue& param)
{
    const CIMValue v = param.getValue();
    out += "<PARAMVALUE";
    attr(out, "NAME", param.getParameterName());
    appendTypeAttributes(out, v.getType(), "PARAMTYPE");
    out += '>';
    writeValue(out, v);
    out += "</PARAMVALUE>";
}

void writeReturnValue(XmlBuffer& out, const CIMValue& value)
{
    if (value.isNull())
        return;
    out += "<RETURNVALUE";
    appendTypeAttributes(out, value.getType(), "PARAMTYPE");
    out += '>';
    writeValue(out, value);
    out += "</RETURNVALUE>";
}

void writeError(XmlBuffer& out, const CIMException& error)
{
    String description = cimStatusCodeToString(error.getCode());
    if (error.getMessage().size() != 0)
        description = description + ": " + error.getMessage();
    out += "<ERROR";
    attr(out, "CODE", String(std::to_string(static_cast<int>(error.getCode())).c_str()));
    attr(out, "DESCRIPTION", description);
    out += '>';
    for (Uint32 i = 0, n = error.getErrorCount(); i < n; ++i)
        writeInstance(out, error.getError(i));
    out += "</ERROR>";
}

// The std::string forms: one buffer for the whole element, handed over at the end.

void writeLocalNamespacePath(std::string& out, const CIMNamespaceName& ns)
{
    XmlBuffer buffer(out);
    writeLocalNamespacePath(buffer, ns);
}

void writeNamespacePath(std::string& out, const String& host, const CIMNamespaceName& ns)
{
    XmlBuffer buffer(out);
    writeNamespacePath(buffer, host, ns);
}

void writeClassName(std::string& out, const CIMName& name)
{
    XmlBuffer buffer(out);
    writeClassName(buffer, name);
}

void writeInstanceName(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeInstanceName(buffer, path);
}

void writeObjectPathBody(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeObjectPathBody(buffer, path);
}

void writeInstancePath(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeInstancePath(buffer, path);
}

void writeInstanceWithPath(
    std::string& out, const CIMConstInstance& instance, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeInstanceWithPath(buffer, instance, path);
}

void writeObjectPath(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeObjectPath(buffer, path);
}

void writeLocalObjectPath(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeLocalObjectPath(buffer, path);
}

void writeValueReference(std::string& out, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeValueReference(buffer, path);
}

void writeValue(std::string& out, const CIMValue& value)
{
    XmlBuffer buffer(out);
    writeValue(buffer, value);
}

void writeInstance(std::string& out, const CIMConstInstance& instance)
{
    XmlBuffer buffer(out);
    writeInstance(buffer, instance);
}

void writeClass(std::string& out, const CIMConstClass& cimClass)
{
    XmlBuffer buffer(out);
    writeClass(buffer, cimClass);
}

void writeNamedInstance(std::string& out, const CIMConstInstance& instance)
{
    XmlBuffer buffer(out);
    writeNamedInstance(buffer, instance);
}

void writeObjectWithPath(std::string& out, const CIMObject& object, const CIMObjectPath& path)
{
    XmlBuffer buffer(out);
    writeObjectWithPath(buffer, object, path);
}

void writeParamValue(std::string& out, const CIMParamValue& param)
{
    XmlBuffer buffer(out);
    writeParamValue(buffer, param);
}

void writeReturnValue(std::string& out, const CIMValue& value)
{
    XmlBuffer buffer(out);
    writeReturnValue(buffer, value);
}

void writeError(std::string& out, const CIMException& error)
{
    XmlBuffer buffer(out);
    writeError(buffer, error);
}

}  // namespace cimxml
}  // namespace qel
