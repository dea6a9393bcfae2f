#include "XmlElements.h"

#include "DecodeLimits.h"
#include "ProtocolError.h"
#include "ValueText.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMStatusCode.h>

#include <cstdlib>
#include <cstring>

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

// Counts the '<' of the text: an element has one or two, text and attribute values none
// (they are escaped; CDATA sections may hold some, which only makes the count larger), so
// this bounds the tree before it is built.
void refuseTooManyTags(const char* data, size_t size)
{
    const char* const end = data + size;
    size_t tags = 0;
    for (const char* p = data; p < end; ++p)
    {
        p = static_cast<const char*>(std::memchr(p, '<', static_cast<size_t>(end - p)));
        if (!p)
            break;
        if (++tags > limits::kMaxTags)
            throw ProtocolError(
                400, "request-not-valid",
                "more than " + std::to_string(limits::kMaxTags) + " tags in the document (limit " +
                    std::to_string(limits::kMaxTags) + ")");
    }
}

void refuseDeepNesting(const pugi::xml_document& doc)
{
    // Walked without recursion, before anything recurses over the tree.
    size_t depth = 1;  // of n
    pugi::xml_node n = doc.first_child();
    while (n)
    {
        if (depth > limits::kMaxElementDepth && n.type() == pugi::node_element)
            throw ProtocolError(
                400, "request-not-valid",
                "elements nested more than " + std::to_string(limits::kMaxElementDepth) +
                    " deep: " + describe(n) + " (limit " +
                    std::to_string(limits::kMaxElementDepth) + ")");
        if (pugi::xml_node child = n.first_child())
        {
            n = child;
            ++depth;
            continue;
        }
        while (!n.next_sibling())
        {
            n = n.parent();
            if (--depth == 0)
                return;  // back at the document
        }
        n = n.next_sibling();
    }
}

}  // namespace

std::string describe(pugi::xml_node node)
{
    return std::string(node.name()) + " element at byte " + std::to_string(node.offset_debug());
}

void invalidElement(pugi::xml_node node, const std::string& what)
{
    // The parser does not check UTF-8: a bad name or text is quoted byte by byte.
    throw CIMException(
        CIM_ERR_INVALID_PARAMETER, ValueText::messageText(describe(node) + ": " + what));
}

void invalidElementFrom(pugi::xml_node node, const Exception& e)
{
    invalidElement(node, toUtf8(e.getMessage()));
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

void parseBoundedDocument(pugi::xml_document& doc, const char* data, size_t size)
{
    refuseTooManyTags(data, size);
    parseDocument(doc, data, size);
    refuseDeepNesting(doc);
}

void checkCount(pugi::xml_node owner, const char* element, size_t count, size_t limit)
{
    if (count <= limit)
        return;
    std::string where = owner.name();
    pugi::xml_attribute name = owner.attribute("NAME");
    if (!name)
        name = owner.attribute("CLASSNAME");
    if (name)
        where += std::string(" ") + name.value();
    else
        where += " at byte " + std::to_string(owner.offset_debug());
    const std::string bound = std::to_string(limit);
    const std::string msg =
        "more than " + bound + " " + element + " elements in " + where + " (limit " + bound + ")";
    throw CIMException(CIM_ERR_INVALID_PARAMETER, String(msg.c_str()));
}

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

std::vector<pugi::xml_node> elementChildren(pugi::xml_node node)
{
    std::vector<pugi::xml_node> out;
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
        if (isElementChild(node, c))
            out.push_back(c);
    return out;
}

std::string elementText(pugi::xml_node node)
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
    pugi::xml_node node, const std::vector<pugi::xml_node>& children, size_t lo, size_t hi)
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

CIMType embeddedType(pugi::xml_node node, CIMType declared, const std::string& embedded)
{
    if (embedded.empty())
        return declared;
    if (declared != CIMTYPE_STRING)
        invalidElement(node, "EmbeddedObject is only allowed with TYPE string");
    return embedded == "object" ? CIMTYPE_OBJECT : CIMTYPE_INSTANCE;
}

}  // namespace cimxml
}  // namespace qel
