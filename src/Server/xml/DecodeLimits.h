// The most elements of each kind a CIM-XML document may hold where the reader builds a list
// of them, and how deep elements and objects may nest. Each bound is far above what a real
// client sends (the reason is given with it) and keeps what a peer can make the server do
// in proportion to what it sends: lists are decoded in time linear in their length (names
// are checked for duplicates through a hash), and the work done with a list afterwards
// (filtering every instance of an enumeration by a property list, say) stays bounded too.
//
// A list past its bound is refused with CIM_ERR_INVALID_PARAMETER naming the element and
// the bound ("more than 256 PARAMVALUE elements in METHODCALL SetOffline (limit 256)");
// a document nested past kMaxElementDepth with HTTP 400. docs/security.md has the table.
#ifndef QEL_SERVER_XML_DECODELIMITS_H
#define QEL_SERVER_XML_DECODELIMITS_H

#include <cstddef>

namespace qel
{
namespace cimxml
{
namespace limits
{

// PARAMVALUE elements of a METHODCALL and PARAMETER elements of a METHOD: a method's
// parameters are declared in its class, and the widest methods of the DMTF schema take
// about twenty.
constexpr size_t kMaxMethodParameters = 256;

// IPARAMVALUE elements of an IMETHODCALL: there is no constant, the bound is the number of
// parameters the operation defines (1 to 8, from the operation table), since each may be
// given once.

// KEYBINDING elements of an INSTANCENAME: the widest keys of the DMTF schema have six
// properties.
constexpr size_t kMaxKeyBindings = 64;

// NAMESPACE elements of a LOCALNAMESPACEPATH: namespace names have two or three segments.
constexpr size_t kMaxNamespaceSegments = 32;

// VALUE elements of a PropertyList: every property of the largest DMTF class (about 150,
// inherited ones included) several times over. Each instance of an enumeration is filtered
// against the whole list, so the bound also bounds that work.
constexpr size_t kMaxPropertyListNames = 1024;

// PROPERTY, PROPERTY.ARRAY and PROPERTY.REFERENCE elements of an INSTANCE or a CLASS: the
// same bound as a property list, which names them.
constexpr size_t kMaxProperties = 1024;

// QUALIFIER elements of one class, instance, property, method or parameter: the DMTF
// schema declares about 70 qualifiers in all.
constexpr size_t kMaxQualifiers = 256;

// METHOD elements of a CLASS: DMTF classes declare a few dozen at most.
constexpr size_t kMaxMethods = 256;

// VALUE elements of a VALUE.ARRAY and VALUE.REFERENCE elements of a VALUE.REFARRAY: an
// array property may list every port of a 10,000-port array several times, or hold a
// certificate as octets.
constexpr size_t kMaxArrayElements = 65536;

// INSTANCE elements of an ERROR: a server sends one CIM_Error, rarely a few.
constexpr size_t kMaxErrorInstances = 64;

// References within references (each VALUE.REFERENCE and each INSTANCENAME inside one
// counts) and objects embedded in values: key references and embedded instances of the
// DMTF schema nest two or three deep.
constexpr unsigned kMaxNestedObjects = 16;

// Tags of a whole document, counted as its '<' characters before it is parsed (an element
// has one or two, a comment one): the parsed tree costs about 75 bytes per element, so
// this keeps it under 20 MB whatever the body's size (16 MiB of empty elements took 300
// MB). A request holding four arrays at their limit fits.
constexpr size_t kMaxTags = 524288;

// Nesting of the elements of a whole document (the document element is at depth 1): the
// deepest request the reader accepts, references nested kMaxNestedObjects deep, reaches
// about 45. Deeper documents up to this bound are read until the reader's own limits
// refuse them with a CIM error naming the element; beyond it they are refused as a whole
// before anything walks them.
constexpr size_t kMaxElementDepth = 256;

}  // namespace limits
}  // namespace cimxml
}  // namespace qel

#endif
