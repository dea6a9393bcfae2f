// The reader's names, namespaces, object paths and values; CimXmlObjects.cpp reads the
// objects built from them, XmlElements.cpp holds the element rules both apply.
#include "CimXmlReader.h"

#include "ProtocolError.h"
#include "ValueText.h"
#include "XmlElements.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <algorithm>
#include <cstring>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

// Distinct names a reader remembers (a class has a few dozen).
constexpr size_t kMaxKnownNames = 1024;

// The element as error messages name it, described only if one is thrown.
TextOrigin originOf(pugi::xml_node node)
{
    return TextOrigin([node] { return describe(node); });
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

// The VALUE elements of a VALUE.ARRAY, checked for kind and number.
std::vector<pugi::xml_node> arrayItems(pugi::xml_node array)
{
    std::vector<pugi::xml_node> items = elementChildren(array);
    ElementCount count(array, "VALUE", limits::kMaxArrayElements);
    for (pugi::xml_node c : items)
    {
        if (is(c, "VALUE.NULL"))
            invalidElement(c, "null array elements are not supported");
        expectName(c, "VALUE");
        count.add();
    }
    return items;
}

// Room for a list of these elements, reserved before they are read: never more than the
// list's limit, whatever the document holds.
Uint32 listCapacity(const std::vector<pugi::xml_node>& items, size_t limit)
{
    return static_cast<Uint32>(std::min(items.size(), limit));
}

}  // namespace

CimXmlReader::Depth::Depth(CimXmlReader& r, pugi::xml_node node) : reader(r)
{
    if (++reader._depth > reader._maxDepth)
    {
        --reader._depth;
        invalidElement(
            node, "references or embedded objects nested too deeply (limit " +
                      std::to_string(reader._maxDepth) + ")");
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
    ElementCount segments(node, "NAMESPACE", limits::kMaxNamespaceSegments);
    std::string joined;
    for (pugi::xml_node c : children)
    {
        expectName(c, "NAMESPACE");
        segments.add();
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
    host = fromUtf8(elementText(children[0]).c_str(), "HOST");
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
    const std::string text = elementText(v);
    validateKeyText(v, type, text);
    return CIMKeyBinding(keyName, fromUtf8(text.c_str(), "KEYVALUE"), type);
}

CIMObjectPath CimXmlReader::instanceName(pugi::xml_node node)
{
    expectName(node, "INSTANCENAME");
    Depth depth(*this, node);
    const CIMName cls = name(node, "CLASSNAME");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    ElementCount count(node, "KEYBINDING", limits::kMaxKeyBindings);
    Array<CIMKeyBinding> keys;
    keys.reserveCapacity(listCapacity(children, limits::kMaxKeyBindings));
    for (pugi::xml_node c : children)
    {
        if (!is(c, "KEYBINDING"))
            invalidElement(c, "only KEYBINDING elements are supported in INSTANCENAME");
        count.add();
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
    const std::string text = elementText(valueNode);
    pugi::xml_document doc;
    try
    {
        parseBoundedDocument(doc, text.data(), text.size());
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
        const std::vector<pugi::xml_node> items = elementChildren(node);
        ElementCount count(node, "VALUE.REFERENCE", limits::kMaxArrayElements);
        Array<CIMObjectPath> refs;
        refs.reserveCapacity(listCapacity(items, limits::kMaxArrayElements));
        for (pugi::xml_node c : items)
        {
            if (is(c, "VALUE.NULL"))
                invalidElement(c, "null array elements are not supported");
            count.add();
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
        return parseScalar(type, elementText(node), where);
    }
    if (is(node, "VALUE.ARRAY"))
    {
        const std::vector<pugi::xml_node> items = arrayItems(node);
        if (type == CIMTYPE_OBJECT)
        {
            Array<CIMObject> a;
            a.reserveCapacity(listCapacity(items, limits::kMaxArrayElements));
            for (pugi::xml_node c : items)
                a.append(embeddedObject(c, "object"));
            return CIMValue(a);
        }
        if (type == CIMTYPE_INSTANCE)
        {
            Array<CIMInstance> a;
            a.reserveCapacity(listCapacity(items, limits::kMaxArrayElements));
            for (pugi::xml_node c : items)
                a.append(CIMInstance(embeddedObject(c, "instance")));
            return CIMValue(a);
        }
        std::vector<std::string> texts;
        texts.reserve(items.size());
        for (pugi::xml_node c : items)
            texts.push_back(elementText(c));
        return parseArray(type, texts, where);
    }
    invalidElement(node, "expected VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY");
}

CIMValue CimXmlReader::untypedValue(pugi::xml_node node)
{
    if (is(node, "VALUE"))
        return CIMValue(fromUtf8(elementText(node).c_str(), "VALUE"));
    if (is(node, "VALUE.ARRAY"))
    {
        const std::vector<pugi::xml_node> items = arrayItems(node);
        Array<String> a;
        a.reserveCapacity(listCapacity(items, limits::kMaxArrayElements));
        for (pugi::xml_node c : items)
            a.append(fromUtf8(elementText(c).c_str(), "VALUE"));
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
    // Named after the IPARAMVALUE that holds it when the list is too long.
    const pugi::xml_node owner = node.parent().type() == pugi::node_element ? node.parent() : node;
    const std::vector<pugi::xml_node> children = elementChildren(node);
    ElementCount count(owner, "VALUE", limits::kMaxPropertyListNames);
    Array<CIMName> names;
    names.reserveCapacity(listCapacity(children, limits::kMaxPropertyListNames));
    for (pugi::xml_node c : children)
    {
        expectName(c, "VALUE");
        count.add();
        const std::string text = elementText(c);
        const String s = fromUtf8(text.c_str(), "PropertyList");
        if (!CIMName::legal(s))
            invalidElement(c, "\"" + text + "\" is not a valid property name");
        names.append(CIMName(s));
    }
    return CIMPropertyList(names);
}

}  // namespace cimxml
}  // namespace qel
