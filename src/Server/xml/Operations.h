// The CIM operations carried over CIM-XML: their names, their intrinsic parameters with
// kinds and defaults, and the shape of their results. One table drives decoding,
// encoding and validation on both sides of the wire.
#ifndef QEL_SERVER_XML_OPERATIONS_H
#define QEL_SERVER_XML_OPERATIONS_H

#include <Pegasus/Common/CIMOperationMessage.h>

#include <cstddef>

namespace qel
{
namespace cimxml
{

// The operations and their intrinsic parameters are the runtime's (CIMOperationMessage.h).
using Operation = Pegasus::CIMOperationType;
using Param = Pegasus::CIMOperationParameter;
constexpr size_t kParamCount = Pegasus::cimOperationParameterCount;

// What an IPARAMVALUE carries.
enum class ParamKind
{
    Boolean,        // VALUE TRUE/FALSE
    String,         // VALUE text
    ClassName,      // CLASSNAME (may be absent = NULL)
    InstanceName,   // INSTANCENAME
    ObjectName,     // CLASSNAME or INSTANCENAME
    Instance,       // INSTANCE
    NamedInstance,  // VALUE.NAMEDINSTANCE
    Class,          // CLASS
    PropertyList,   // VALUE.ARRAY of VALUE, absent = NULL list
    PropertyName,   // VALUE holding a property name
    Value,          // VALUE / VALUE.ARRAY / VALUE.REFERENCE, untyped
    Uint32,         // VALUE holding a uint32 (absent = NULL)
    NullableString  // VALUE text (absent = NULL)
};

// What IRETURNVALUE holds. An intrinsic response's output parameters (those of the opens
// and pulls: EndOfSequence, EnumerationContext) follow it as PARAMVALUEs.
enum class ResultKind
{
    Nothing,          // no IRETURNVALUE
    Class,            // CLASS
    Classes,          // CLASS*
    ClassNames,       // CLASSNAME*
    Instance,         // INSTANCE
    NamedInstances,   // VALUE.NAMEDINSTANCE*
    InstanceNames,    // INSTANCENAME*
    CreatedName,      // INSTANCENAME
    ObjectsWithPath,  // VALUE.OBJECTWITHPATH*
    ObjectPaths,      // OBJECTPATH*
    // VALUE / VALUE.ARRAY / VALUE.REFERENCE, or nothing for NULL (GetProperty's value,
    // EnumerationCount's count)
    PropertyValue,
    MethodResult,       // extrinsic: RETURNVALUE + PARAMVALUE*
    InstancesWithPath,  // VALUE.INSTANCEWITHPATH*
    InstancePaths,      // INSTANCEPATH*
};

struct ParamSpec
{
    Param param;
    const char* name;
    ParamKind kind;
    bool required;
    bool booleanDefault;  // for Boolean parameters
};

struct OperationEntry
{
    Operation operation;
    const char* name;
    const ParamSpec* params;
    size_t paramCount;
    ResultKind result;
};

// Case-insensitive lookup of an intrinsic method name; nullptr when unknown.
const OperationEntry* findIntrinsic(const char* name);
const OperationEntry& entryOf(Operation op);
// Parameter of `op` by name (case-insensitive); nullptr when the operation has none such.
const ParamSpec* findParam(const OperationEntry& op, const char* name);
const ParamSpec* findParam(const OperationEntry& op, Param param);
const char* paramName(Param param);

}  // namespace cimxml
}  // namespace qel

#endif
