// Start tags the writer repeats for every instance of a class, made once and then copied
// whole: a property's PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE tag with its NAME,
// TYPE, ARRAYSIZE, REFERENCECLASS, CLASSORIGIN and PROPAGATED attributes, and a key's
// KEYBINDING and KEYVALUE tags.
//
// Each thread remembers the tags it wrote last, keyed by the identity of the texts they
// name (the instances built from a class share their names' texts with it) and by the
// other attributes. An entry holds its texts, which keeps them alive and unchanged (a
// shared text is copied before it is changed): a text seen again at the same place is the
// same text.
#ifndef QEL_SERVER_XML_ELEMENTHEADS_H
#define QEL_SERVER_XML_ELEMENTHEADS_H

#include "XmlBuffer.h"

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/String.h>

#include <string>
#include <string_view>

namespace qel
{
namespace cimxml
{

// What a property's start tag says.
struct PropertyShape
{
    const Pegasus::String& name;
    Pegasus::CIMType type;
    bool isArray;
    Pegasus::Uint32 arraySize;
    const Pegasus::String& referenceClass;  // empty when none
    const Pegasus::String& classOrigin;     // empty when none
    bool propagated;
};

// `position`, the property's place in its instance, lets the tag written last at that place
// be tried first.
const Pegasus::Uint32 kNoPosition = 0xFFFFFFFFu;
void appendPropertyHead(
    XmlBuffer& out, const PropertyShape& shape, Pegasus::Uint32 position = kNoPosition);

// TYPE="..." (or PARAMTYPE, as named), and for embedded objects TYPE="string" with the
// EmbeddedObject marker.
void appendTypeAttributes(
    XmlBuffer& out, Pegasus::CIMType type, std::string_view attributeName = "TYPE");

// <KEYBINDING NAME="name"><KEYVALUE VALUETYPE="type"> for a key that is not a reference.
void appendKeyHead(XmlBuffer& out, const Pegasus::String& name, Pegasus::CIMKeyBinding::Type type);

}  // namespace cimxml
}  // namespace qel

#endif
