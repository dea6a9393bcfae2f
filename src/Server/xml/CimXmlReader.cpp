#include "CimXmlReader.h"

#include "ProtocolError.h"
#include "ValueText.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <cstdlib>
#include <cstring>
#include <strings.h>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

bool isWhiteSpace(const char* s)
{
    for (; *s; ++s)
        if (*s != ' ' && *s != '\t' && *s != '\r' && *s != '\n')
            return false;
    return true;
}

std::string describe(pugi::xml_node node)
{
    return std::string(node.name()) + " element at byte " + std::to_string(node.offset_debug());
}

bool is(pugi::xml_node node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

// Distinct names a reader remembers (a class has a few dozen).
constexpr size_t kMaxKnownNames = 1024;

// The element as error messages name it, described only if one is thrown.
TextOrigin originOf(pugi::xml_node node)
{
    return TextOrigin([node] { return describe(node); });
}

// The attribute helpers come in two forms: given the attribute `a` named `name` of `node`
// when the caller has found it already, or looking it up.
const char* requiredAttribute(pugi::xml_node node, pugi::xml_attribute a, const char* name)
{
    if (!a)
        invalidElement(node, std::string("missing attribute ") + name);
    return a.value();
}

const char* requiredAttribute(pugi::xml_node node, const char* name)
{
    return requiredAttribute(node, node.attribute(name), name);
}

// Boolean attribute with its default when absent.
bool booleanAttribute(pugi::xml_node node, pugi::xml_attribute a, const char* name, bool dflt)
{
    if (!a)
        return dflt;
    bool b;
    if (!parseBooleanText(a.value(), b))
        invalidElement(
            node,
            std::string("attribute ") + name + " must be true or false, not \"" + a.value() + "\"");
    return b;
}

bool booleanAttribute(pugi::xml_node node, const char* name, bool dflt)
{
    return booleanAttribute(node, node.attribute(name), name, dflt);
}

Uint32 arraySizeAttribute(pugi::xml_node node, pugi::xml_attribute a)
{
    if (!a)
        return 0;
    const char* s = a.value();
    char* end = nullptr;
    const unsigned long n = std::strtoul(s, &end, 10);
    if (*s < '0' || *s > '9' || *end != '\0' || n > 0xFFFFFFFFul)
        invalidElement(
            node, std::string("ARRAYSIZE must be a non-negative integer, not \"") + s + "\"");
    return static_cast<Uint32>(n);
}

Uint32 arraySizeAttribute(pugi::xml_node node)
{
    return arraySizeAttribute(node, node.attribute("ARRAYSIZE"));
}

CIMType typeAttributeOf(pugi::xml_node node, pugi::xml_attribute a, const char* attribute)
{
    const char* text = requiredAttribute(node, a, attribute);
    CIMType t;
    if (!parseTypeAttribute(text, t))
        invalidElement(node, std::string("unknown CIM type \"") + text + "\"");
    return t;
}

CIMType typeAttributeOf(pugi::xml_node node, const char* attribute)
{
    return typeAttributeOf(node, node.attribute(attribute), attribute);
}

// EmbeddedObject (or the older upper-case spelling, asked only when the first is absent):
// "", "object" or "instance".
std::string embeddedAttribute(pugi::xml_node node, pugi::xml_attribute a, pugi::xml_attribute upper)
{
    if (!a)
        a = upper;
    if (!a)
        return std::string();
    if (std::strcmp(a.value(), "object") != 0 && std::strcmp(a.value(), "instance") != 0)
        invalidElement(
            node,
            std::string("EmbeddedObject must be object or instance, not \"") + a.value() + "\"");
    return a.value();
}

std::string embeddedAttribute(pugi::xml_node node)
{
    const pugi::xml_attribute a = node.attribute("EmbeddedObject");
    return embeddedAttribute(node, a, a ? pugi::xml_attribute() : node.attribute("EMBEDDEDOBJECT"));
}

// The attributes a PROPERTY element may carry, found in one walk over them:
// xml_node::attribute walks them all again for every name asked, and properties are read
// by the thousand. Of two attributes of the same name the first counts, as
// xml_node::attribute finds it.
struct PropertyAttributes
{
    explicit PropertyAttributes(pugi::xml_node node)
    {
        for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
        {
            pugi::xml_attribute* slot = slotFor(a.name());
            if (slot && !*slot)
                *slot = a;
        }
    }

    pugi::xml_attribute name, type, embedded, embeddedUpper, arraySize, referenceClass, classOrigin,
        propagated;

private:
    pugi::xml_attribute* slotFor(const char* n)
    {
        auto named = [n](const char* wanted, pugi::xml_attribute* slot)
        { return std::strcmp(n, wanted) == 0 ? slot : nullptr; };
        switch (n[0])
        {
            case 'N':
                return named("NAME", &name);
            case 'T':
                return named("TYPE", &type);
            case 'E':
                return n[1] == 'm' ? named("EmbeddedObject", &embedded)
                                   : named("EMBEDDEDOBJECT", &embeddedUpper);
            case 'A':
                return named("ARRAYSIZE", &arraySize);
            case 'R':
                return named("REFERENCECLASS", &referenceClass);
            case 'C':
                return named("CLASSORIGIN", &classOrigin);
            case 'P':
                return named("PROPAGATED", &propagated);
            default:
                return nullptr;
        }
    }
};

// Only a string-typed element may carry embedded objects.
CIMType embeddedType(pugi::xml_node node, CIMType declared, const std::string& embedded)
{
    if (embedded.empty())
        return declared;
    if (declared != CIMTYPE_STRING)
        invalidElement(node, "EmbeddedObject is only allowed with TYPE string");
    return embedded == "object" ? CIMTYPE_OBJECT : CIMTYPE_INSTANCE;
}

std::string textOf(pugi::xml_node node)
{
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            invalidElement(node, std::string("unexpected child element ") + c.name());
    std::string text;
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        text += c.value();
    return text;
}

void expectChildCount(
    pugi::xml_node node,
    const std::vector<pugi::xml_node>& children,
    size_t lo,
    size_t hi)
{
    if (children.size() < lo || children.size() > hi)
    {
        std::string what = "expected ";
        what += lo == hi ? std::to_string(lo) : std::to_string(lo) + " to " + std::to_string(hi);
        what += " child element(s), found " + std::to_string(children.size());
        invalidElement(node, what);
    }
}

void expectName(pugi::xml_node node, const char* name)
{
    if (!is(node, name))
        invalidElement(node, std::string("expected ") + name);
}

// Runs `f`, turning object-model exceptions (bad names, type mismatches, duplicates) into
// an invalid-parameter error that names the element.
template <class F>
auto guarded(pugi::xml_node node, F f) -> decltype(f())
{
    try
    {
        return f();
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        invalidElement(node, toUtf8(e.getMessage()));
    }
}

void validateKeyText(pugi::xml_node node, CIMKeyBinding::Type type, const std::string& text)
{
    if (type == CIMKeyBinding::BOOLEAN)
    {
        bool b;
        if (!parseBooleanText(text, b))
            invalidElement(node, "boolean key value must be TRUE or FALSE, not \"" + text + "\"");
    }
    else if (type == CIMKeyBinding::NUMERIC)
    {
        // Integer keys in decimal or hexadecimal, or real numbers.
        try
        {
            if (!text.empty() && text[0] == '-')
                parseScalar(CIMTYPE_SINT64, text, originOf(node));
            else
                parseScalar(CIMTYPE_UINT64, text, originOf(node));
        }
        catch (const CIMException&)
        {
            parseScalar(CIMTYPE_REAL64, text, originOf(node));
        }
    }
}

}  // namespace

std::string elementText(pugi::xml_node node)
{
    return textOf(node);
}

void invalidElement(pugi::xml_node node, const std::string& what)
{
    const std::string msg = describe(node) + ": " + what;
    throw CIMException(CIM_ERR_INVALID_PARAMETER, String(msg.c_str()));
}

void parseDocument(pugi::xml_document& doc, const char* data, size_t size)
{
    const unsigned options =
        pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata_single;
    pugi::xml_parse_result r = doc.load_buffer(data, size, options, pugi::encoding_utf8);
    if (!r)
        throw ProtocolError(
            400, "request-not-well-formed",
            std::string("XML is not well-formed: ") + r.description() + " at byte " +
                std::to_string(r.offset));
    for (pugi::xml_node n = doc.first_child(); n; n = n.next_sibling())
        if (n.type() == pugi::node_doctype)
            throw ProtocolError(
                400, "request-not-well-formed", "document type declarations are not accepted");
}

namespace
{

// Whether child `c` of `node` is an element; text other than white space is an error.
bool isElementChild(pugi::xml_node node, pugi::xml_node c)
{
    switch (c.type())
    {
        case pugi::node_element:
            return true;
        case pugi::node_pcdata:
        case pugi::node_cdata:
            if (!isWhiteSpace(c.value()))
                invalidElement(node, "text is not allowed here");
            return false;
        default:
            return false;
    }
}

// Visits the children elementChildren() returns, in order, without collecting them: all
// the text is checked before the first element is visited, as elementChildren() does.
template <class Visit>
void forEachElementChild(pugi::xml_node node, Visit visit)
{
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        isElementChild(node, c);
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            visit(c);
}

}  // namespace

std::vector<pugi::xml_node> elementChildren(pugi::xml_node node)
{
    std::vector<pugi::xml_node> out;
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        if (isElementChild(node, c))
            out.push_back(c);
    return out;
}

CimXmlReader::Depth::Depth(CimXmlReader& r, pugi::xml_node node) : reader(r)
{
    if (++reader._depth > reader._maxDepth)
    {
        --reader._depth;
        invalidElement(node, "nested too deeply");
    }
}

CIMName CimXmlReader::name(pugi::xml_node node, const char* attribute)
{
    return name(node, attribute, node.attribute(attribute));
}

CIMName CimXmlReader::name(pugi::xml_node node, const char* attribute, pugi::xml_attribute found)
{
    const char* text = requiredAttribute(node, found, attribute);
    const auto known = _names.find(std::string_view(text));
    if (known != _names.end())
        return known->second;
    String decoded;
    try
    {
        decoded = String(text);
    }
    catch (const Exception&)
    {
        throwNotUtf8(describe(node).c_str());
    }
    if (!CIMName::legal(decoded))
        invalidElement(node, std::string(attribute) + " \"" + text + "\" is not a valid CIM name");
    const CIMName result(decoded);
    if (_names.size() < kMaxKnownNames)
    {
        _nameTexts.emplace_back(text);
        _names.emplace(_nameTexts.back(), result);
    }
    return result;
}

CIMNamespaceName CimXmlReader::localNamespacePath(pugi::xml_node node)
{
    expectName(node, "LOCALNAMESPACEPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    if (children.empty())
        invalidElement(node, "at least one NAMESPACE is required");
    std::string joined;
    for (pugi::xml_node c : children)
    {
        expectName(c, "NAMESPACE");
        if (!joined.empty())
            joined += '/';
        joined += requiredAttribute(c, "NAME");
    }
    const String ns = fromUtf8(joined.c_str(), describe(node).c_str());
    if (!CIMNamespaceName::legal(ns))
        invalidElement(node, "\"" + joined + "\" is not a valid namespace name");
    return CIMNamespaceName(ns);
}

void CimXmlReader::namespacePath(pugi::xml_node node, String& host, CIMNamespaceName& ns)
{
    expectName(node, "NAMESPACEPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    expectName(children[0], "HOST");
    host = fromUtf8(textOf(children[0]).c_str(), "HOST");
    ns = localNamespacePath(children[1]);
}

CIMName CimXmlReader::className(pugi::xml_node node)
{
    expectName(node, "CLASSNAME");
    if (!elementChildren(node).empty())
        invalidElement(node, "CLASSNAME must be empty");
    return name(node, "NAME");
}

CIMKeyBinding CimXmlReader::keyBinding(pugi::xml_node node)
{
    const CIMName keyName = name(node, "NAME");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 1, 1);
    pugi::xml_node v = children[0];
    if (is(v, "VALUE.REFERENCE"))
    {
        const CIMObjectPath ref = valueReference(v);
        return CIMKeyBinding(keyName, ref.toString(), CIMKeyBinding::REFERENCE);
    }
    expectName(v, "KEYVALUE");
    const char* valueType = v.attribute("VALUETYPE") ? v.attribute("VALUETYPE").value() : "string";
    CIMKeyBinding::Type type;
    if (std::strcmp(valueType, "string") == 0)
        type = CIMKeyBinding::STRING;
    else if (std::strcmp(valueType, "boolean") == 0)
        type = CIMKeyBinding::BOOLEAN;
    else if (std::strcmp(valueType, "numeric") == 0)
        type = CIMKeyBinding::NUMERIC;
    else
        invalidElement(
            v,
            std::string("VALUETYPE must be string, boolean or numeric, not \"") + valueType + "\"");
    const std::string text = textOf(v);
    validateKeyText(v, type, text);
    return CIMKeyBinding(keyName, fromUtf8(text.c_str(), "KEYVALUE"), type);
}

CIMObjectPath CimXmlReader::instanceName(pugi::xml_node node)
{
    expectName(node, "INSTANCENAME");
    Depth depth(*this, node);
    const CIMName cls = name(node, "CLASSNAME");
    Array<CIMKeyBinding> keys;
    for (pugi::xml_node c : elementChildren(node))
    {
        if (!is(c, "KEYBINDING"))
            invalidElement(c, "only KEYBINDING elements are supported in INSTANCENAME");
        keys.append(keyBinding(c));
    }
    return guarded(node, [&] { return CIMObjectPath(String(), CIMNamespaceName(), cls, keys); });
}

CIMObjectPath CimXmlReader::anyPath(pugi::xml_node node)
{
    const std::vector<pugi::xml_node> children = elementChildren(node);
    if (is(node, "INSTANCENAME"))
        return instanceName(node);
    if (is(node, "CLASSNAME"))
        return CIMObjectPath(String(), CIMNamespaceName(), className(node));
    String host;
    CIMNamespaceName ns;
    CIMObjectPath path;
    if (is(node, "INSTANCEPATH") || is(node, "CLASSPATH"))
    {
        expectChildCount(node, children, 2, 2);
        namespacePath(children[0], host, ns);
    }
    else if (is(node, "LOCALINSTANCEPATH") || is(node, "LOCALCLASSPATH"))
    {
        expectChildCount(node, children, 2, 2);
        ns = localNamespacePath(children[0]);
    }
    else
    {
        invalidElement(node, "expected a class or instance path");
    }
    const bool instance = is(node, "INSTANCEPATH") || is(node, "LOCALINSTANCEPATH");
    if (instance)
    {
        path = instanceName(children[1]);
    }
    else
    {
        path = CIMObjectPath(String(), CIMNamespaceName(), className(children[1]));
    }
    guarded(
        node,
        [&]
        {
            path.setNameSpace(ns);
            path.setHost(host);
            return 0;
        });
    return path;
}

CIMObjectPath CimXmlReader::valueReference(pugi::xml_node node)
{
    expectName(node, "VALUE.REFERENCE");
    Depth depth(*this, node);
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 1, 1);
    return anyPath(children[0]);
}

CIMObjectPath CimXmlReader::objectPath(pugi::xml_node node)
{
    expectName(node, "OBJECTPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 1, 1);
    if (!is(children[0], "INSTANCEPATH") && !is(children[0], "CLASSPATH"))
        invalidElement(children[0], "expected INSTANCEPATH or CLASSPATH");
    return anyPath(children[0]);
}

CIMObject CimXmlReader::embeddedObject(pugi::xml_node valueNode, const std::string& kind)
{
    Depth depth(*this, valueNode);
    const std::string text = textOf(valueNode);
    pugi::xml_document doc;
    try
    {
        parseDocument(doc, text.data(), text.size());
    }
    catch (const ProtocolError& e)
    {
        invalidElement(valueNode, std::string("embedded object: ") + e.what());
    }
    const std::vector<pugi::xml_node> top = elementChildren(doc);
    if (top.size() != 1)
        invalidElement(valueNode, "embedded object must be one INSTANCE or CLASS");
    if (is(top[0], "INSTANCE"))
        return CIMObject(instance(top[0]));
    if (kind == "object" && is(top[0], "CLASS"))
        return CIMObject(cimClass(top[0]));
    invalidElement(
        valueNode, kind == "object" ? "embedded object must be one INSTANCE or CLASS"
                                    : "embedded instance must be an INSTANCE");
}

CIMValue CimXmlReader::typedValue(pugi::xml_node node, CIMType type, const std::string& embedded)
{
    const TextOrigin where = originOf(node);
    if (is(node, "VALUE.REFERENCE"))
    {
        if (type != CIMTYPE_REFERENCE)
            invalidElement(node, "a reference where a value of another type is declared");
        return CIMValue(valueReference(node));
    }
    if (is(node, "VALUE.REFARRAY"))
    {
        if (type != CIMTYPE_REFERENCE)
            invalidElement(node, "references where values of another type are declared");
        Array<CIMObjectPath> refs;
        for (pugi::xml_node c : elementChildren(node))
        {
            if (is(c, "VALUE.NULL"))
                invalidElement(c, "null array elements are not supported");
            refs.append(valueReference(c));
        }
        return CIMValue(refs);
    }
    if (type == CIMTYPE_REFERENCE)
        invalidElement(node, "a reference value must be a VALUE.REFERENCE");
    if (is(node, "VALUE"))
    {
        if (type == CIMTYPE_OBJECT)
            return CIMValue(embeddedObject(node, embedded.empty() ? "object" : embedded));
        if (type == CIMTYPE_INSTANCE)
            return CIMValue(CIMInstance(embeddedObject(node, "instance")));
        return parseScalar(type, textOf(node), where);
    }
    if (is(node, "VALUE.ARRAY"))
    {
        std::vector<pugi::xml_node> items = elementChildren(node);
        for (pugi::xml_node c : items)
        {
            if (is(c, "VALUE.NULL"))
                invalidElement(c, "null array elements are not supported");
            expectName(c, "VALUE");
        }
        if (type == CIMTYPE_OBJECT)
        {
            Array<CIMObject> a;
            for (pugi::xml_node c : items)
                a.append(embeddedObject(c, "object"));
            return CIMValue(a);
        }
        if (type == CIMTYPE_INSTANCE)
        {
            Array<CIMInstance> a;
            for (pugi::xml_node c : items)
                a.append(CIMInstance(embeddedObject(c, "instance")));
            return CIMValue(a);
        }
        std::vector<std::string> texts;
        for (pugi::xml_node c : items)
            texts.push_back(textOf(c));
        return parseArray(type, texts, where);
    }
    invalidElement(node, "expected VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY");
}

CIMValue CimXmlReader::untypedValue(pugi::xml_node node)
{
    if (is(node, "VALUE"))
        return CIMValue(fromUtf8(textOf(node).c_str(), "VALUE"));
    if (is(node, "VALUE.ARRAY"))
    {
        Array<String> a;
        for (pugi::xml_node c : elementChildren(node))
        {
            if (is(c, "VALUE.NULL"))
                invalidElement(c, "null array elements are not supported");
            expectName(c, "VALUE");
            a.append(fromUtf8(textOf(c).c_str(), "VALUE"));
        }
        return CIMValue(a);
    }
    if (is(node, "VALUE.REFERENCE") || is(node, "VALUE.REFARRAY"))
        return typedValue(node, CIMTYPE_REFERENCE, "");
    if (is(node, "INSTANCENAME") || is(node, "CLASSNAME"))
        return CIMValue(anyPath(node));
    if (is(node, "INSTANCE"))
        return CIMValue(instance(node));
    if (is(node, "VALUE.NAMEDINSTANCE"))
        return CIMValue(namedInstance(node));
    if (is(node, "CLASS"))
        return CIMValue(CIMObject(cimClass(node)));
    invalidElement(node, "not a value element");
}

CIMPropertyList CimXmlReader::propertyList(pugi::xml_node node)
{
    expectName(node, "VALUE.ARRAY");
    Array<CIMName> names;
    for (pugi::xml_node c : elementChildren(node))
    {
        expectName(c, "VALUE");
        const std::string text = textOf(c);
        const String s = fromUtf8(text.c_str(), "PropertyList");
        if (!CIMName::legal(s))
            invalidElement(c, "\"" + text + "\" is not a valid property name");
        names.append(CIMName(s));
    }
    return CIMPropertyList(names);
}

CIMQualifier CimXmlReader::qualifier(pugi::xml_node node)
{
    expectName(node, "QUALIFIER");
    const CIMName qName = name(node, "NAME");
    const CIMType type = typeAttributeOf(node, "TYPE");
    const bool propagated = booleanAttribute(node, "PROPAGATED", false);
    CIMFlavor flavor;
    if (booleanAttribute(node, "OVERRIDABLE", true))
        flavor.addFlavor(CIMFlavor::OVERRIDABLE);
    if (booleanAttribute(node, "TOSUBCLASS", true))
        flavor.addFlavor(CIMFlavor::TOSUBCLASS);
    if (booleanAttribute(node, "TOINSTANCE", false))
        flavor.addFlavor(CIMFlavor::TOINSTANCE);
    if (booleanAttribute(node, "TRANSLATABLE", false))
        flavor.addFlavor(CIMFlavor::TRANSLATABLE);
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 0, 1);
    CIMValue value;
    if (children.empty())
    {
        value = CIMValue(type, false);
    }
    else
    {
        if (!is(children[0], "VALUE") && !is(children[0], "VALUE.ARRAY"))
            invalidElement(children[0], "expected VALUE or VALUE.ARRAY");
        value = typedValue(children[0], type, "");
    }
    return guarded(node, [&] { return CIMQualifier(qName, value, flavor, propagated); });
}

CIMProperty CimXmlReader::property(pugi::xml_node node)
{
    const PropertyAttributes attributes(node);
    const CIMName pName = name(node, "NAME", attributes.name);
    const bool isRef = is(node, "PROPERTY.REFERENCE");
    const bool isArray = is(node, "PROPERTY.ARRAY");
    if (!isRef && !isArray && !is(node, "PROPERTY"))
        invalidElement(node, "expected PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE");
    CIMType type = CIMTYPE_REFERENCE;
    std::string embedded;  // read once for the type and the value
    if (!isRef)
        type = embeddedType(
            node, typeAttributeOf(node, attributes.type, "TYPE"),
            embedded = embeddedAttribute(node, attributes.embedded, attributes.embeddedUpper));
    const Uint32 arraySize = isArray ? arraySizeAttribute(node, attributes.arraySize) : 0;
    CIMName referenceClass;
    if (isRef && attributes.referenceClass)
        referenceClass = name(node, "REFERENCECLASS", attributes.referenceClass);
    CIMName classOrigin;
    if (attributes.classOrigin)
        classOrigin = name(node, "CLASSORIGIN", attributes.classOrigin);
    const bool propagated = booleanAttribute(node, attributes.propagated, "PROPAGATED", false);

    Array<CIMQualifier> qualifiers;
    CIMValue value;  // the typed null unless a value element follows
    bool seenValue = false;
    forEachElementChild(
        node,
        [&](pugi::xml_node c)
        {
            if (is(c, "QUALIFIER"))
            {
                if (seenValue)
                    invalidElement(c, "QUALIFIER must come before the value");
                qualifiers.append(qualifier(c));
                return;
            }
            if (seenValue)
                invalidElement(c, "only one value is allowed");
            const char* expected = isRef ? "VALUE.REFERENCE" : isArray ? "VALUE.ARRAY" : "VALUE";
            expectName(c, expected);
            value = typedValue(
                c, type,
                isRef ? embeddedAttribute(node, attributes.embedded, attributes.embeddedUpper)
                      : embedded);
            seenValue = true;
        });
    if (!seenValue)
        value = CIMValue(type, isArray, arraySize);
    return guarded(
        node,
        [&]
        {
            CIMProperty p(pName, value, arraySize, referenceClass, classOrigin, propagated);
            for (Uint32 i = 0; i < qualifiers.size(); ++i)
                p.addQualifier(qualifiers[i]);
            return p;
        });
}

CIMInstance CimXmlReader::instance(pugi::xml_node node)
{
    expectName(node, "INSTANCE");
    const CIMName cls = name(node, "CLASSNAME");
    CIMInstance inst(cls);
    bool seenProperty = false;
    forEachElementChild(
        node,
        [&](pugi::xml_node c)
        {
            if (is(c, "QUALIFIER"))
            {
                if (seenProperty)
                    invalidElement(c, "QUALIFIER must come before the properties");
                const CIMQualifier q = qualifier(c);
                guarded(
                    c,
                    [&]
                    {
                        inst.addQualifier(q);
                        return 0;
                    });
                return;
            }
            const CIMProperty p = property(c);
            seenProperty = true;
            guarded(
                c,
                [&]
                {
                    inst.addProperty(p);
                    return 0;
                });
        });
    return inst;
}

CIMParameter CimXmlReader::parameter(pugi::xml_node node)
{
    const CIMName pName = name(node, "NAME");
    const bool ref = is(node, "PARAMETER.REFERENCE") || is(node, "PARAMETER.REFARRAY");
    const bool array = is(node, "PARAMETER.ARRAY") || is(node, "PARAMETER.REFARRAY");
    if (!ref && !array && !is(node, "PARAMETER"))
        invalidElement(node, "expected a PARAMETER element");
    const CIMType type =
        ref ? CIMTYPE_REFERENCE
            : embeddedType(node, typeAttributeOf(node, "TYPE"), embeddedAttribute(node));
    CIMName referenceClass;
    if (ref && node.attribute("REFERENCECLASS"))
        referenceClass = name(node, "REFERENCECLASS");
    const Uint32 arraySize = array ? arraySizeAttribute(node) : 0;
    CIMParameter p =
        guarded(node, [&] { return CIMParameter(pName, type, array, arraySize, referenceClass); });
    for (pugi::xml_node c : elementChildren(node))
    {
        expectName(c, "QUALIFIER");
        const CIMQualifier q = qualifier(c);
        guarded(
            c,
            [&]
            {
                p.addQualifier(q);
                return 0;
            });
    }
    return p;
}

CIMMethod CimXmlReader::method(pugi::xml_node node)
{
    expectName(node, "METHOD");
    const CIMName mName = name(node, "NAME");
    const CIMType type = typeAttributeOf(node, "TYPE");
    CIMName classOrigin;
    if (node.attribute("CLASSORIGIN"))
        classOrigin = name(node, "CLASSORIGIN");
    const bool propagated = booleanAttribute(node, "PROPAGATED", false);
    CIMMethod m = guarded(node, [&] { return CIMMethod(mName, type, classOrigin, propagated); });
    bool seenParameter = false;
    for (pugi::xml_node c : elementChildren(node))
    {
        if (is(c, "QUALIFIER"))
        {
            if (seenParameter)
                invalidElement(c, "QUALIFIER must come before the parameters");
            const CIMQualifier q = qualifier(c);
            guarded(
                c,
                [&]
                {
                    m.addQualifier(q);
                    return 0;
                });
            continue;
        }
        const CIMParameter p = parameter(c);
        seenParameter = true;
        guarded(
            c,
            [&]
            {
                m.addParameter(p);
                return 0;
            });
    }
    return m;
}

CIMClass CimXmlReader::cimClass(pugi::xml_node node)
{
    expectName(node, "CLASS");
    const CIMName cls = name(node, "NAME");
    CIMName superClass;
    if (node.attribute("SUPERCLASS"))
        superClass = name(node, "SUPERCLASS");
    CIMClass c(cls, superClass);
    int stage = 0;  // 0 qualifiers, 1 properties, 2 methods
    for (pugi::xml_node child : elementChildren(node))
    {
        if (is(child, "QUALIFIER"))
        {
            if (stage > 0)
                invalidElement(child, "QUALIFIER must come before properties and methods");
            const CIMQualifier q = qualifier(child);
            guarded(
                child,
                [&]
                {
                    c.addQualifier(q);
                    return 0;
                });
        }
        else if (is(child, "METHOD"))
        {
            stage = 2;
            const CIMMethod m = method(child);
            guarded(
                child,
                [&]
                {
                    c.addMethod(m);
                    return 0;
                });
        }
        else
        {
            if (stage > 1)
                invalidElement(child, "properties must come before methods");
            stage = 1;
            const CIMProperty p = property(child);
            guarded(
                child,
                [&]
                {
                    c.addProperty(p);
                    return 0;
                });
        }
    }
    return c;
}

CIMInstance CimXmlReader::namedInstance(pugi::xml_node node)
{
    expectName(node, "VALUE.NAMEDINSTANCE");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    const CIMObjectPath path = instanceName(children[0]);
    CIMInstance inst = instance(children[1]);
    guarded(
        node,
        [&]
        {
            inst.setPath(path);
            return 0;
        });
    return inst;
}

CIMObject CimXmlReader::objectWithPath(pugi::xml_node node)
{
    expectName(node, "VALUE.OBJECTWITHPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    if (is(children[0], "INSTANCEPATH"))
    {
        const CIMObjectPath path = anyPath(children[0]);
        CIMInstance inst = instance(children[1]);
        guarded(
            node,
            [&]
            {
                inst.setPath(path);
                return 0;
            });
        return CIMObject(inst);
    }
    expectName(children[0], "CLASSPATH");
    const CIMObjectPath path = anyPath(children[0]);
    CIMClass cls = cimClass(children[1]);
    guarded(
        node,
        [&]
        {
            cls.setPath(path);
            return 0;
        });
    return CIMObject(cls);
}

CIMObjectPath CimXmlReader::instancePath(pugi::xml_node node)
{
    expectName(node, "INSTANCEPATH");
    return anyPath(node);
}

CIMInstance CimXmlReader::instanceWithPath(pugi::xml_node node)
{
    expectName(node, "VALUE.INSTANCEWITHPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    const CIMObjectPath path = instancePath(children[0]);
    CIMInstance inst = instance(children[1]);
    guarded(
        node,
        [&]
        {
            inst.setPath(path);
            return 0;
        });
    return inst;
}

CIMValue CimXmlReader::valueOfParam(
    pugi::xml_node owner,
    const std::vector<pugi::xml_node>& children,
    const char* typeAttribute)
{
    expectChildCount(owner, children, 0, 1);
    const std::string embedded = embeddedAttribute(owner);
    if (!owner.attribute(typeAttribute))
    {
        if (children.empty())
            return CIMValue(CIMTYPE_STRING, false);
        if (!embedded.empty())
            return typedValue(
                children[0], embedded == "object" ? CIMTYPE_OBJECT : CIMTYPE_INSTANCE, embedded);
        return untypedValue(children[0]);
    }
    const CIMType type = embeddedType(owner, typeAttributeOf(owner, typeAttribute), embedded);
    if (children.empty())
        return CIMValue(type, false);
    pugi::xml_node v = children[0];
    if (type == CIMTYPE_REFERENCE && (is(v, "INSTANCENAME") || is(v, "CLASSNAME")))
        return CIMValue(anyPath(v));
    if (type == CIMTYPE_INSTANCE && is(v, "INSTANCE"))
        return CIMValue(instance(v));
    if (type == CIMTYPE_OBJECT && (is(v, "INSTANCE") || is(v, "CLASS")))
        return untypedValue(v);
    return typedValue(v, type, embedded);
}

CIMParamValue CimXmlReader::paramValue(pugi::xml_node node)
{
    expectName(node, "PARAMVALUE");
    const char* pName = requiredAttribute(node, "NAME");
    if (!CIMName::legal(fromUtf8(pName, "PARAMVALUE NAME")))
        invalidElement(node, std::string("NAME \"") + pName + "\" is not a valid CIM name");
    const bool typed = node.attribute("PARAMTYPE") || !embeddedAttribute(node).empty();
    const CIMValue value = valueOfParam(node, elementChildren(node), "PARAMTYPE");
    return guarded(node, [&] { return CIMParamValue(String(pName), value, typed); });
}

CIMValue CimXmlReader::returnValue(pugi::xml_node node)
{
    expectName(node, "RETURNVALUE");
    return valueOfParam(node, elementChildren(node), "PARAMTYPE");
}

CIMException CimXmlReader::error(pugi::xml_node node)
{
    expectName(node, "ERROR");
    const char* code = requiredAttribute(node, "CODE");
    char* end = nullptr;
    const long n = std::strtol(code, &end, 10);
    if (*code == '\0' || *end != '\0' || n < 0 || n > 0xFFFF)
        invalidElement(node, std::string("CODE must be a status number, not \"") + code + "\"");
    const String description = fromUtf8(node.attribute("DESCRIPTION").value(), "ERROR DESCRIPTION");
    Array<CIMInstance> instances;
    for (pugi::xml_node c : elementChildren(node))
        instances.append(instance(c));
    return CIMException(static_cast<CIMStatusCode>(n), description, instances);
}

}  // namespace cimxml
}  // namespace qel
