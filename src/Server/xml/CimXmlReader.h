// Reads CIM-XML elements (as parsed by pugixml) into object-model values. Anything that
// breaks the element rules throws CIMException(CIM_ERR_INVALID_PARAMETER) whose message
// names the element, its byte offset and what was wrong.
#ifndef QEL_SERVER_XML_CIMXMLREADER_H
#define QEL_SERVER_XML_CIMXMLREADER_H

#include "DecodeLimits.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <pugixml.hpp>

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qel
{
namespace cimxml
{

// Parses a whole document. DOCTYPE declarations are refused (no entity can be declared,
// so none is expanded); malformed XML throws ProtocolError(400, "request-not-well-formed").
void parseDocument(pugi::xml_document& doc, const char* data, size_t size);

// As parseDocument, for what a peer sends: a request or an object embedded in one. A
// document with more than limits::kMaxTags tags is refused before it is parsed, one with
// elements nested deeper than limits::kMaxElementDepth after (ProtocolError(400,
// "request-not-valid") saying which). Answers, which come from the server the client
// chose, are read with parseDocument: walking them would add about 6% to decoding a large
// one.
void parseBoundedDocument(pugi::xml_document& doc, const char* data, size_t size);

// The element children of `node`, in order; text other than white space between them is
// an error (element-only content).
std::vector<pugi::xml_node> elementChildren(pugi::xml_node node);

// The text content of an element that must hold text only.
std::string elementText(pugi::xml_node node);

[[noreturn]] void invalidElement(pugi::xml_node node, const std::string& what);

// Refuses `count` elements named `element` in `owner` when that is more than `limit` (one
// of DecodeLimits.h): CIM_ERR_INVALID_PARAMETER "more than <limit> <element> elements in
// <owner> (limit <limit>)", the owner named by its NAME (or CLASSNAME) attribute, or else
// by its byte offset.
void checkCount(pugi::xml_node owner, const char* element, size_t count, size_t limit);

// The exception for a peer's status code `code` (1 and up): a code this runtime does not
// know cannot be held as a CIMStatusCode, so it arrives as CIM_ERR_FAILED with the number
// kept in front of the description.
Pegasus::CIMException statusException(
    long code, const Pegasus::String& description,
    const Pegasus::Array<Pegasus::CIMInstance>& instances = Pegasus::Array<Pegasus::CIMInstance>());

class CimXmlReader
{
public:
    // maxDepth bounds nested references and embedded objects.
    explicit CimXmlReader(unsigned maxDepth = limits::kMaxNestedObjects) : _maxDepth(maxDepth) {}

    Pegasus::CIMName name(pugi::xml_node node, const char* attribute);
    Pegasus::CIMNamespaceName localNamespacePath(pugi::xml_node node);
    // NAMESPACEPATH: host and namespace.
    void namespacePath(pugi::xml_node node, Pegasus::String& host, Pegasus::CIMNamespaceName& ns);
    Pegasus::CIMName className(pugi::xml_node node);           // CLASSNAME
    Pegasus::CIMObjectPath instanceName(pugi::xml_node node);  // INSTANCENAME
    // Any of CLASSPATH, LOCALCLASSPATH, CLASSNAME, INSTANCEPATH, LOCALINSTANCEPATH, INSTANCENAME.
    Pegasus::CIMObjectPath anyPath(pugi::xml_node node);
    Pegasus::CIMObjectPath valueReference(pugi::xml_node node);  // VALUE.REFERENCE
    Pegasus::CIMObjectPath objectPath(pugi::xml_node node);      // OBJECTPATH

    // VALUE / VALUE.ARRAY / VALUE.REFERENCE / VALUE.REFARRAY of a declared type. An
    // `embedded` of "object"/"instance" reads the VALUE text as an embedded CIM-XML object.
    Pegasus::CIMValue
    typedValue(pugi::xml_node node, Pegasus::CIMType type, const std::string& embedded);
    // A value without a declared type: strings (or references) as given.
    Pegasus::CIMValue untypedValue(pugi::xml_node node);
    // VALUE.ARRAY of property names (PropertyList).
    Pegasus::CIMPropertyList propertyList(pugi::xml_node node);

    Pegasus::CIMQualifier qualifier(pugi::xml_node node);
    Pegasus::CIMProperty property(pugi::xml_node node);
    Pegasus::CIMInstance instance(pugi::xml_node node);
    Pegasus::CIMClass cimClass(pugi::xml_node node);
    Pegasus::CIMInstance namedInstance(pugi::xml_node node);   // VALUE.NAMEDINSTANCE, path set
    Pegasus::CIMObject objectWithPath(pugi::xml_node node);    // VALUE.OBJECTWITHPATH, path set
    Pegasus::CIMObjectPath instancePath(pugi::xml_node node);  // INSTANCEPATH
    // VALUE.INSTANCEWITHPATH, path set.
    Pegasus::CIMInstance instanceWithPath(pugi::xml_node node);
    Pegasus::CIMParamValue paramValue(pugi::xml_node node);  // PARAMVALUE
    // RETURNVALUE of an extrinsic method.
    Pegasus::CIMValue returnValue(pugi::xml_node node);
    Pegasus::CIMException error(pugi::xml_node node);  // ERROR

private:
    struct Depth
    {
        explicit Depth(CimXmlReader& r, pugi::xml_node node);
        ~Depth() { --reader._depth; }
        CimXmlReader& reader;
    };
    Pegasus::CIMObject embeddedObject(pugi::xml_node valueNode, const std::string& kind);
    Pegasus::CIMValue valueOfParam(
        pugi::xml_node owner, const std::vector<pugi::xml_node>& children,
        const char* typeAttribute);
    Pegasus::CIMMethod method(pugi::xml_node node);
    Pegasus::CIMParameter parameter(pugi::xml_node node);
    Pegasus::CIMKeyBinding keyBinding(pugi::xml_node node);

    unsigned _depth = 0;
    unsigned _maxDepth;
    // As name(node, attribute), given the attribute when the caller has found it already.
    Pegasus::CIMName name(pugi::xml_node node, const char* attribute, pugi::xml_attribute found);

    // Names read so far, by their text: a response repeats the same property names for
    // every instance, and each is decoded and checked once. Bounded, since the text is
    // the peer's. _nameTexts owns the texts the keys view.
    std::deque<std::string> _nameTexts;
    std::unordered_map<std::string_view, Pegasus::CIMName> _names;
};

}  // namespace cimxml
}  // namespace qel

#endif
