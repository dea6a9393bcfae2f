#include "Operations.h"

#include <strings.h>

namespace qel
{
namespace cimxml
{
namespace
{

using K = ParamKind;
using P = Param;

// Defaults follow the operation definitions of the CIM operations over HTTP.
#define REQ(p, k)                                                                                  \
    {                                                                                              \
        P::p, #p, K::k, true, false                                                                \
    }
#define OPT(p, k)                                                                                  \
    {                                                                                              \
        P::p, #p, K::k, false, false                                                               \
    }
#define FLAG(p, d)                                                                                 \
    {                                                                                              \
        P::p, #p, K::Boolean, false, d                                                             \
    }

const ParamSpec kGetClass[] = {
    REQ(ClassName, ClassName), FLAG(LocalOnly, true), FLAG(IncludeQualifiers, true),
    FLAG(IncludeClassOrigin, false), OPT(PropertyList, PropertyList)};
const ParamSpec kEnumerateClasses[] = {
    OPT(ClassName, ClassName), FLAG(DeepInheritance, false), FLAG(LocalOnly, true),
    FLAG(IncludeQualifiers, true), FLAG(IncludeClassOrigin, false)};
const ParamSpec kEnumerateClassNames[] = {OPT(ClassName, ClassName), FLAG(DeepInheritance, false)};
const ParamSpec kCreateClass[] = {REQ(NewClass, Class)};
const ParamSpec kModifyClass[] = {REQ(ModifiedClass, Class)};
const ParamSpec kDeleteClass[] = {REQ(ClassName, ClassName)};
const ParamSpec kGetInstance[] = {
    REQ(InstanceName, InstanceName), FLAG(LocalOnly, true), FLAG(IncludeQualifiers, false),
    FLAG(IncludeClassOrigin, false), OPT(PropertyList, PropertyList)};
const ParamSpec kEnumerateInstances[] = {
    REQ(ClassName, ClassName),       FLAG(LocalOnly, true),
    FLAG(DeepInheritance, true),     FLAG(IncludeQualifiers, false),
    FLAG(IncludeClassOrigin, false), OPT(PropertyList, PropertyList)};
const ParamSpec kEnumerateInstanceNames[] = {REQ(ClassName, ClassName)};
const ParamSpec kCreateInstance[] = {REQ(NewInstance, Instance)};
const ParamSpec kModifyInstance[] = {
    REQ(ModifiedInstance, NamedInstance), FLAG(IncludeQualifiers, true),
    OPT(PropertyList, PropertyList)};
const ParamSpec kDeleteInstance[] = {REQ(InstanceName, InstanceName)};
const ParamSpec kAssociators[] = {REQ(ObjectName, ObjectName),     OPT(AssocClass, ClassName),
                                  OPT(ResultClass, ClassName),     OPT(Role, String),
                                  OPT(ResultRole, String),         FLAG(IncludeQualifiers, false),
                                  FLAG(IncludeClassOrigin, false), OPT(PropertyList, PropertyList)};
const ParamSpec kAssociatorNames[] = {
    REQ(ObjectName, ObjectName), OPT(AssocClass, ClassName), OPT(ResultClass, ClassName),
    OPT(Role, String), OPT(ResultRole, String)};
const ParamSpec kReferences[] = {REQ(ObjectName, ObjectName),
                                 OPT(ResultClass, ClassName),
                                 OPT(Role, String),
                                 FLAG(IncludeQualifiers, false),
                                 FLAG(IncludeClassOrigin, false),
                                 OPT(PropertyList, PropertyList)};
const ParamSpec kReferenceNames[] = {
    REQ(ObjectName, ObjectName), OPT(ResultClass, ClassName), OPT(Role, String)};
const ParamSpec kGetProperty[] = {REQ(InstanceName, InstanceName), REQ(PropertyName, PropertyName)};
const ParamSpec kSetProperty[] = {
    REQ(InstanceName, InstanceName), REQ(PropertyName, PropertyName), OPT(NewValue, Value)};
const ParamSpec kExecQuery[] = {REQ(QueryLanguage, String), REQ(Query, String)};

// The pulled enumerations. Every open ends with the same five parameters.
#define OPEN_PARAMETERS                                                                            \
    OPT(FilterQueryLanguage, NullableString), OPT(FilterQuery, NullableString),                    \
        OPT(OperationTimeout, Uint32), FLAG(ContinueOnError, false), OPT(MaxObjectCount, Uint32)
const ParamSpec kOpenEnumerateInstances[] = {
    REQ(ClassName, ClassName), FLAG(DeepInheritance, true), FLAG(IncludeClassOrigin, false),
    OPT(PropertyList, PropertyList), OPEN_PARAMETERS};
const ParamSpec kOpenEnumerateInstancePaths[] = {REQ(ClassName, ClassName), OPEN_PARAMETERS};
const ParamSpec kOpenReferenceInstances[] = {
    REQ(InstanceName, InstanceName), OPT(ResultClass, ClassName),     OPT(Role, String),
    FLAG(IncludeClassOrigin, false), OPT(PropertyList, PropertyList), OPEN_PARAMETERS};
const ParamSpec kOpenReferenceInstancePaths[] = {
    REQ(InstanceName, InstanceName), OPT(ResultClass, ClassName), OPT(Role, String),
    OPEN_PARAMETERS};
const ParamSpec kOpenAssociatorInstances[] = {
    REQ(InstanceName, InstanceName), OPT(AssocClass, ClassName),
    OPT(ResultClass, ClassName),     OPT(Role, String),
    OPT(ResultRole, String),         FLAG(IncludeClassOrigin, false),
    OPT(PropertyList, PropertyList), OPEN_PARAMETERS};
const ParamSpec kOpenAssociatorInstancePaths[] = {
    REQ(InstanceName, InstanceName), OPT(AssocClass, ClassName),
    OPT(ResultClass, ClassName),     OPT(Role, String),
    OPT(ResultRole, String),         OPEN_PARAMETERS};
const ParamSpec kPullInstancesWithPath[] = {
    REQ(EnumerationContext, NullableString), REQ(MaxObjectCount, Uint32)};
const ParamSpec kPullInstancePaths[] = {
    REQ(EnumerationContext, NullableString), REQ(MaxObjectCount, Uint32)};
const ParamSpec kCloseEnumeration[] = {REQ(EnumerationContext, NullableString)};
const ParamSpec kEnumerationCount[] = {REQ(EnumerationContext, NullableString)};
#undef OPEN_PARAMETERS

#undef REQ
#undef OPT
#undef FLAG

#define OP(name, result)                                                                           \
    {                                                                                              \
        Operation::name, #name, k##name, sizeof(k##name) / sizeof(ParamSpec), ResultKind::result   \
    }
const OperationEntry kOperations[] = {
    OP(GetClass, Class),
    OP(EnumerateClasses, Classes),
    OP(EnumerateClassNames, ClassNames),
    OP(CreateClass, Nothing),
    OP(ModifyClass, Nothing),
    OP(DeleteClass, Nothing),
    OP(GetInstance, Instance),
    OP(EnumerateInstances, NamedInstances),
    OP(EnumerateInstanceNames, InstanceNames),
    OP(CreateInstance, CreatedName),
    OP(ModifyInstance, Nothing),
    OP(DeleteInstance, Nothing),
    OP(Associators, ObjectsWithPath),
    OP(AssociatorNames, ObjectPaths),
    OP(References, ObjectsWithPath),
    OP(ReferenceNames, ObjectPaths),
    OP(GetProperty, PropertyValue),
    OP(SetProperty, Nothing),
    OP(ExecQuery, ObjectsWithPath),
    OP(OpenEnumerateInstances, InstancesWithPath),
    OP(OpenEnumerateInstancePaths, InstancePaths),
    OP(OpenReferenceInstances, InstancesWithPath),
    OP(OpenReferenceInstancePaths, InstancePaths),
    OP(OpenAssociatorInstances, InstancesWithPath),
    OP(OpenAssociatorInstancePaths, InstancePaths),
    OP(PullInstancesWithPath, InstancesWithPath),
    OP(PullInstancePaths, InstancePaths),
    OP(CloseEnumeration, Nothing),
    OP(EnumerationCount, PropertyValue),
    {Operation::InvokeMethod, "InvokeMethod", nullptr, 0, ResultKind::MethodResult},
};
#undef OP
static_assert(
    sizeof(kOperations) / sizeof(kOperations[0]) ==
        static_cast<size_t>(Operation::InvokeMethod) + 1,
    "one entry per operation");

const char* const kParamNames[] = {
    "ClassName",
    "InstanceName",
    "ObjectName",
    "LocalOnly",
    "DeepInheritance",
    "IncludeQualifiers",
    "IncludeClassOrigin",
    "PropertyList",
    "AssocClass",
    "ResultClass",
    "Role",
    "ResultRole",
    "NewInstance",
    "ModifiedInstance",
    "NewClass",
    "ModifiedClass",
    "PropertyName",
    "NewValue",
    "QueryLanguage",
    "Query",
    "FilterQueryLanguage",
    "FilterQuery",
    "OperationTimeout",
    "ContinueOnError",
    "MaxObjectCount",
    "EnumerationContext",
};
static_assert(
    sizeof(kParamNames) / sizeof(kParamNames[0]) == kParamCount, "one name per parameter");

}  // namespace

const OperationEntry* findIntrinsic(const char* name)
{
    for (const OperationEntry& op : kOperations)
        if (op.operation != Operation::InvokeMethod && strcasecmp(op.name, name) == 0)
            return &op;
    return nullptr;
}

const OperationEntry& entryOf(Operation op)
{
    for (const OperationEntry& s : kOperations)
        if (s.operation == op)
            return s;
    return kOperations[sizeof(kOperations) / sizeof(kOperations[0]) - 1];
}

const ParamSpec* findParam(const OperationEntry& op, const char* name)
{
    for (size_t i = 0; i < op.paramCount; ++i)
        if (strcasecmp(op.params[i].name, name) == 0)
            return &op.params[i];
    return nullptr;
}

const ParamSpec* findParam(const OperationEntry& op, Param param)
{
    for (size_t i = 0; i < op.paramCount; ++i)
        if (op.params[i].param == param)
            return &op.params[i];
    return nullptr;
}

const char* paramName(Param param)
{
    return kParamNames[static_cast<size_t>(param)];
}

}  // namespace cimxml
}  // namespace qel
