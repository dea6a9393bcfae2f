// Inside the dispatcher: values a client sent, held against what the schema
// declares. Type names for messages, the NO_SUCH_PROPERTY error, a class's
// own properties as a property list, and untyped text read as the declared
// type.
#ifndef QEL_Server_DeclaredValues_h
#define QEL_Server_DeclaredValues_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <string>

namespace Pegasus
{

// "uint16", "string[]": how error messages name a type.
String describeType(CIMType type, Boolean isArray);

// CIM_ERR_NO_SUCH_PROPERTY "Class <class> has no property <property>."
CIMException noSuchProperty(const CIMName& className, const CIMName& propertyName);

// The names of the properties the class has, in its order.
CIMPropertyList classPropertyList(const CIMClass& cimClass);

// A value sent as text without a type (a PARAMVALUE without PARAMTYPE,
// SetProperty's NewValue), read as the declared type; the caller has
// matched array against scalar. Malformed text: CIM_ERR_INVALID_PARAMETER
// naming `where`.
CIMValue valueFromText(const CIMValue& text, CIMType type, const std::string& where);

}  // namespace Pegasus

#endif
