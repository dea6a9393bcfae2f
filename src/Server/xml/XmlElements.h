// The element rules of CIM-XML that every part of the reader applies: element-only and
// text-only content, names, attributes, and the bounded length of a list of elements.
// XmlElements.cpp also defines the document-level functions CimXmlReader.h declares
// (parseDocument, parseBoundedDocument, elementChildren, elementText, invalidElement,
// checkCount). Whatever breaks a rule throws CIMException(CIM_ERR_INVALID_PARAMETER)
// naming the element, its byte offset and what was wrong.
#ifndef QEL_SERVER_XML_XMLELEMENTS_H
#define QEL_SERVER_XML_XMLELEMENTS_H

#include "CimXmlReader.h"

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/Exception.h>

#include <pugixml.hpp>

#include <cstring>
#include <string>
#include <vector>

namespace qel
{
namespace cimxml
{

// "PROPERTY element at byte 312", as errors name an element.
std::string describe(pugi::xml_node node);

inline bool is(pugi::xml_node node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

// Counts elements of one kind while a list that mixes kinds is read (the QUALIFIERs and
// PROPERTYs of an INSTANCE): add() refuses the first one past the limit, with checkCount's
// error.
class ElementCount
{
public:
    ElementCount(pugi::xml_node owner, const char* element, size_t limit)
        : _owner(owner), _element(element), _limit(limit)
    {
    }

    void add()
    {
        if (++_count > _limit)
            checkCount(_owner, _element, _count, _limit);
    }

private:
    pugi::xml_node _owner;
    const char* _element;
    size_t _limit;
    size_t _count = 0;
};

// Whether child `c` of `node` is an element; text other than white space is an error.
bool isElementChild(pugi::xml_node node, pugi::xml_node c);

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

void expectName(pugi::xml_node node, const char* name);
void expectChildCount(
    pugi::xml_node node, const std::vector<pugi::xml_node>& children, size_t lo, size_t hi);

// The attribute helpers come in two forms: given the attribute `a` named `name` of `node`
// when the caller has found it already, or looking it up.
const char* requiredAttribute(pugi::xml_node node, pugi::xml_attribute a, const char* name);
const char* requiredAttribute(pugi::xml_node node, const char* name);
// Boolean attribute with its default when absent.
bool booleanAttribute(pugi::xml_node node, pugi::xml_attribute a, const char* name, bool dflt);
bool booleanAttribute(pugi::xml_node node, const char* name, bool dflt);
Pegasus::Uint32 arraySizeAttribute(pugi::xml_node node, pugi::xml_attribute a);
Pegasus::Uint32 arraySizeAttribute(pugi::xml_node node);
Pegasus::CIMType typeAttributeOf(pugi::xml_node node, pugi::xml_attribute a, const char* attribute);
Pegasus::CIMType typeAttributeOf(pugi::xml_node node, const char* attribute);
// EmbeddedObject (or the older upper-case spelling, asked only when the first is absent):
// "", "object" or "instance".
std::string
embeddedAttribute(pugi::xml_node node, pugi::xml_attribute a, pugi::xml_attribute upper);
std::string embeddedAttribute(pugi::xml_node node);
// The type an element with this EmbeddedObject value holds: only a string-typed element
// may carry embedded objects.
Pegasus::CIMType
embeddedType(pugi::xml_node node, Pegasus::CIMType declared, const std::string& embedded);

// Runs `f`, turning object-model exceptions (bad names, type mismatches, duplicates) into
// an invalid-parameter error that names the element.
[[noreturn]] void invalidElementFrom(pugi::xml_node node, const Pegasus::Exception& e);
template <class F>
auto guarded(pugi::xml_node node, F f) -> decltype(f())
{
    try
    {
        return f();
    }
    catch (const Pegasus::CIMException&)
    {
        throw;
    }
    catch (const Pegasus::Exception& e)
    {
        invalidElementFrom(node, e);
    }
}

}  // namespace cimxml
}  // namespace qel

#endif
