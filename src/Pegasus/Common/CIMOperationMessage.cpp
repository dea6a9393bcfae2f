#include <Pegasus/Common/CIMOperationMessage.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <cerrno>
#include <cstdlib>

PEGASUS_NAMESPACE_BEGIN

namespace
{

typedef CIMOperationParameter P;

const char* const operationNames[] = {
    "GetClass",
    "EnumerateClasses",
    "EnumerateClassNames",
    "CreateClass",
    "ModifyClass",
    "DeleteClass",
    "GetInstance",
    "EnumerateInstances",
    "EnumerateInstanceNames",
    "CreateInstance",
    "ModifyInstance",
    "DeleteInstance",
    "Associators",
    "AssociatorNames",
    "References",
    "ReferenceNames",
    "GetProperty",
    "SetProperty",
    "ExecQuery",
    "OpenEnumerateInstances",
    "OpenEnumerateInstancePaths",
    "OpenReferenceInstances",
    "OpenReferenceInstancePaths",
    "OpenAssociatorInstances",
    "OpenAssociatorInstancePaths",
    "PullInstancesWithPath",
    "PullInstancePaths",
    "CloseEnumeration",
    "EnumerationCount",
    "InvokeMethod",
};
static_assert(
    PEGASUS_ARRAY_SIZE(operationNames) == static_cast<size_t>(CIMOperationType::InvokeMethod) + 1,
    "one name per operation");

CIMOperationRequest intrinsic(CIMOperationType operation, const CIMNamespaceName& nameSpace)
{
    CIMOperationRequest r;
    r.operation = operation;
    r.methodName = String(cimOperationName(operation));
    r.nameSpace = nameSpace;
    return r;
}

void setClassName(CIMOperationRequest& r, const CIMName& className)
{
    r.className = className;
    r.give(P::ClassName);
}

// Optional class names are left out when null.
void setOptionalClassName(CIMOperationRequest& r, const CIMName& className)
{
    if (!className.isNull())
        setClassName(r, className);
}

void setObjectName(CIMOperationRequest& r, P param, const CIMObjectPath& path)
{
    r.objectName = path;
    r.give(param);
}

void setFlag(CIMOperationRequest& r, P param, Boolean value)
{
    switch (param)
    {
        case P::LocalOnly:
            r.localOnly = value;
            break;
        case P::DeepInheritance:
            r.deepInheritance = value;
            break;
        case P::IncludeQualifiers:
            r.includeQualifiers = value;
            break;
        default:
            r.includeClassOrigin = value;
            break;
    }
    r.give(param);
}

void setQualifierFlags(
    CIMOperationRequest& r, Boolean includeQualifiers, Boolean includeClassOrigin)
{
    setFlag(r, P::IncludeQualifiers, includeQualifiers);
    setFlag(r, P::IncludeClassOrigin, includeClassOrigin);
}

// A NULL property list (all properties) is left out.
void setPropertyList(CIMOperationRequest& r, const CIMPropertyList& list)
{
    if (list.isNull())
        return;
    r.propertyList = list;
    r.give(P::PropertyList);
}

void setAssociationFilters(
    CIMOperationRequest& r, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole)
{
    if (!assocClass.isNull())
    {
        r.assocClass = assocClass;
        r.give(P::AssocClass);
    }
    if (!resultClass.isNull())
    {
        r.resultClass = resultClass;
        r.give(P::ResultClass);
    }
    if (role.size() != 0)
    {
        r.role = role;
        r.give(P::Role);
    }
    if (resultRole.size() != 0)
    {
        r.resultRole = resultRole;
        r.give(P::ResultRole);
    }
}

// The parameters every open shares; what is NULL or the default is left out, but the
// two flags a client states explicitly.
void setOpenParameters(CIMOperationRequest& r, const CIMOpenParameters& open)
{
    if (open.filterQueryLanguage.size() != 0)
    {
        r.filterQueryLanguage = open.filterQueryLanguage;
        r.give(P::FilterQueryLanguage);
    }
    if (open.filterQuery.size() != 0)
    {
        r.filterQuery = open.filterQuery;
        r.give(P::FilterQuery);
    }
    if (!open.operationTimeout.isNull())
    {
        r.operationTimeout = open.operationTimeout.getValue();
        r.give(P::OperationTimeout);
    }
    r.continueOnError = open.continueOnError;
    r.give(P::ContinueOnError);
    r.maxObjectCount = open.maxObjectCount;
    r.give(P::MaxObjectCount);
}

void setInstanceFlags(
    CIMOperationRequest& r, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    setFlag(r, P::IncludeClassOrigin, includeClassOrigin);
    setPropertyList(r, propertyList);
}

CIMOperationRequest onContext(
    CIMOperationType operation, const CIMNamespaceName& nameSpace, const String& enumerationContext)
{
    CIMOperationRequest r = intrinsic(operation, nameSpace);
    r.enumerationContext = enumerationContext;
    r.give(P::EnumerationContext);
    return r;
}

CIMOperationRequest pull(
    CIMOperationType operation, const CIMNamespaceName& nameSpace, const String& enumerationContext,
    Uint32 maxObjectCount)
{
    CIMOperationRequest r = onContext(operation, nameSpace, enumerationContext);
    r.maxObjectCount = maxObjectCount;
    r.give(P::MaxObjectCount);
    return r;
}

const char* const endOfSequenceName = "EndOfSequence";
const char* const enumerationContextName = "EnumerationContext";

// A parameter of the answer by name (case-insensitive); nullptr when absent.
const CIMParamValue* outParameter(const CIMOperationResponse& r, const char* name)
{
    for (Uint32 i = 0; i < r.outParameters.size(); ++i)
        if (String::equalNoCase(r.outParameters[i].getParameterName(), name))
            return &r.outParameters[i];
    return nullptr;
}

[[noreturn]] void malformedAnswer(const CIMOperationResponse& r, const char* what)
{
    throw CIMException(CIM_ERR_FAILED, r.methodName + " answered " + what);
}

}  // namespace

const char* cimOperationName(CIMOperationType operation)
{
    return operationNames[static_cast<size_t>(operation)];
}

String cimOperationFunctionName(CIMOperationType operation)
{
    std::string name(cimOperationName(operation));
    // Every operation name starts with an ASCII capital.
    name[0] = static_cast<char>(name[0] - 'A' + 'a');
    return String(name.c_str());
}

CIMOperationRequest CIMOperationRequest::getClass(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::GetClass, nameSpace);
    setClassName(r, className);
    setFlag(r, P::LocalOnly, localOnly);
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::enumerateClasses(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::EnumerateClasses, nameSpace);
    setOptionalClassName(r, className);
    setFlag(r, P::DeepInheritance, deepInheritance);
    setFlag(r, P::LocalOnly, localOnly);
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    return r;
}

CIMOperationRequest CIMOperationRequest::enumerateClassNames(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::EnumerateClassNames, nameSpace);
    setOptionalClassName(r, className);
    setFlag(r, P::DeepInheritance, deepInheritance);
    return r;
}

CIMOperationRequest
CIMOperationRequest::createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::CreateClass, nameSpace);
    r.cimClass = newClass;
    r.give(P::NewClass);
    return r;
}

CIMOperationRequest
CIMOperationRequest::modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::ModifyClass, nameSpace);
    r.cimClass = modifiedClass;
    r.give(P::ModifiedClass);
    return r;
}

CIMOperationRequest
CIMOperationRequest::deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::DeleteClass, nameSpace);
    setClassName(r, className);
    return r;
}

CIMOperationRequest CIMOperationRequest::getInstance(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::GetInstance, nameSpace);
    setObjectName(r, P::InstanceName, instanceName);
    setFlag(r, P::LocalOnly, localOnly);
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::enumerateInstances(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::EnumerateInstances, nameSpace);
    setClassName(r, className);
    setFlag(r, P::DeepInheritance, deepInheritance);
    setFlag(r, P::LocalOnly, localOnly);
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::enumerateInstanceNames(
    const CIMNamespaceName& nameSpace, const CIMName& className)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::EnumerateInstanceNames, nameSpace);
    setClassName(r, className);
    return r;
}

CIMOperationRequest CIMOperationRequest::createInstance(
    const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::CreateInstance, nameSpace);
    r.instance = newInstance;
    r.give(P::NewInstance);
    return r;
}

CIMOperationRequest CIMOperationRequest::modifyInstance(
    const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
    Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::ModifyInstance, nameSpace);
    r.instance = modifiedInstance;
    r.give(P::ModifiedInstance);
    setFlag(r, P::IncludeQualifiers, includeQualifiers);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::deleteInstance(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::DeleteInstance, nameSpace);
    setObjectName(r, P::InstanceName, instanceName);
    return r;
}

CIMOperationRequest CIMOperationRequest::execQuery(
    const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::ExecQuery, nameSpace);
    r.queryLanguage = queryLanguage;
    r.give(P::QueryLanguage);
    r.query = query;
    r.give(P::Query);
    return r;
}

CIMOperationRequest CIMOperationRequest::associators(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::Associators, nameSpace);
    setObjectName(r, P::ObjectName, objectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::associatorNames(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::AssociatorNames, nameSpace);
    setObjectName(r, P::ObjectName, objectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    return r;
}

CIMOperationRequest CIMOperationRequest::references(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::References, nameSpace);
    setObjectName(r, P::ObjectName, objectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    setQualifierFlags(r, includeQualifiers, includeClassOrigin);
    setPropertyList(r, propertyList);
    return r;
}

CIMOperationRequest CIMOperationRequest::referenceNames(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::ReferenceNames, nameSpace);
    setObjectName(r, P::ObjectName, objectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    return r;
}

CIMOperationRequest CIMOperationRequest::getProperty(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& propertyName)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::GetProperty, nameSpace);
    setObjectName(r, P::InstanceName, instanceName);
    r.propertyName = propertyName;
    r.give(P::PropertyName);
    return r;
}

CIMOperationRequest CIMOperationRequest::setProperty(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& propertyName, const CIMValue& newValue)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::SetProperty, nameSpace);
    setObjectName(r, P::InstanceName, instanceName);
    r.propertyName = propertyName;
    r.give(P::PropertyName);
    r.newValue = newValue;
    // A null value is the parameter left out.
    if (!newValue.isNull())
        r.give(P::NewValue);
    return r;
}

CIMOperationRequest CIMOperationRequest::invokeMethod(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters)
{
    CIMOperationRequest r;
    r.operation = CIMOperationType::InvokeMethod;
    r.methodName = methodName.getString();
    r.nameSpace = nameSpace;
    r.target = instanceName;
    r.inParameters = inParameters;
    return r;
}

CIMOperationRequest CIMOperationRequest::openEnumerateInstances(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenEnumerateInstances, nameSpace);
    setClassName(r, className);
    setFlag(r, P::DeepInheritance, deepInheritance);
    setInstanceFlags(r, includeClassOrigin, propertyList);
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::openEnumerateInstancePaths(
    const CIMNamespaceName& nameSpace, const CIMName& className, const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenEnumerateInstancePaths, nameSpace);
    setClassName(r, className);
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::openReferenceInstances(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenReferenceInstances, nameSpace);
    setObjectName(r, P::InstanceName, objectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    setInstanceFlags(r, includeClassOrigin, propertyList);
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::openReferenceInstancePaths(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenReferenceInstancePaths, nameSpace);
    setObjectName(r, P::InstanceName, objectName);
    setAssociationFilters(r, CIMName(), resultClass, role, String());
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::openAssociatorInstances(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenAssociatorInstances, nameSpace);
    setObjectName(r, P::InstanceName, objectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    setInstanceFlags(r, includeClassOrigin, propertyList);
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::openAssociatorInstancePaths(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    const CIMOpenParameters& open)
{
    CIMOperationRequest r = intrinsic(CIMOperationType::OpenAssociatorInstancePaths, nameSpace);
    setObjectName(r, P::InstanceName, objectName);
    setAssociationFilters(r, assocClass, resultClass, role, resultRole);
    setOpenParameters(r, open);
    return r;
}

CIMOperationRequest CIMOperationRequest::pullInstancesWithPath(
    const CIMNamespaceName& nameSpace, const String& enumerationContext, Uint32 maxObjectCount)
{
    return pull(
        CIMOperationType::PullInstancesWithPath, nameSpace, enumerationContext, maxObjectCount);
}

CIMOperationRequest CIMOperationRequest::pullInstancePaths(
    const CIMNamespaceName& nameSpace, const String& enumerationContext, Uint32 maxObjectCount)
{
    return pull(CIMOperationType::PullInstancePaths, nameSpace, enumerationContext, maxObjectCount);
}

CIMOperationRequest CIMOperationRequest::closeEnumeration(
    const CIMNamespaceName& nameSpace, const String& enumerationContext)
{
    return onContext(CIMOperationType::CloseEnumeration, nameSpace, enumerationContext);
}

CIMOperationRequest CIMOperationRequest::enumerationCount(
    const CIMNamespaceName& nameSpace, const String& enumerationContext)
{
    return onContext(CIMOperationType::EnumerationCount, nameSpace, enumerationContext);
}

const CIMOperationResponse& CIMOperationResponse::checked() const
{
    if (failed)
        throw error;
    return *this;
}

CIMObjectPath CIMOperationResponse::createdName() const
{
    if (checked().paths.size() != 1)
        throw CIMException(CIM_ERR_FAILED, "CreateInstance answered without a name");
    return paths[0];
}

CIMValue CIMOperationResponse::methodResult(Array<CIMParamValue>& out) const
{
    out = checked().outParameters;
    return value;
}

Array<CIMParamValue>
CIMOperationResponse::enumerationState(Boolean endOfSequence, const String& enumerationContext)
{
    Array<CIMParamValue> state;
    state.append(CIMParamValue(endOfSequenceName, CIMValue(endOfSequence)));
    state.append(CIMParamValue(
        enumerationContextName,
        endOfSequence ? CIMValue(CIMTYPE_STRING, false) : CIMValue(enumerationContext)));
    return state;
}

String CIMOperationResponse::enumerationContext(Boolean& endOfSequence) const
{
    checked();
    // Servers that leave PARAMTYPE out send the flag as text.
    const CIMParamValue* eos = outParameter(*this, endOfSequenceName);
    const CIMValue flag = eos ? eos->getValue() : CIMValue();
    if (flag.isNull() || flag.isArray())
        malformedAnswer(*this, "without EndOfSequence");
    if (flag.getType() == CIMTYPE_BOOLEAN)
    {
        flag.get(endOfSequence);
    }
    else if (flag.getType() == CIMTYPE_STRING)
    {
        String text;
        flag.get(text);
        if (!String::equalNoCase(text, "TRUE") && !String::equalNoCase(text, "FALSE"))
            malformedAnswer(*this, "with an EndOfSequence that is not TRUE or FALSE");
        endOfSequence = String::equalNoCase(text, "TRUE");
    }
    else
    {
        malformedAnswer(*this, "with an EndOfSequence that is not a boolean");
    }
    if (endOfSequence)
        return String();
    const CIMParamValue* context = outParameter(*this, enumerationContextName);
    String id;
    if (context && !context->getValue().isNull() && !context->getValue().isArray() &&
        context->getValue().getType() == CIMTYPE_STRING)
        context->getValue().get(id);
    if (id.size() == 0)
        malformedAnswer(*this, "without EnumerationContext");
    return id;
}

Uint64Arg CIMOperationResponse::enumerationCount() const
{
    checked();
    if (value.isNull())
        return Uint64Arg();
    if (!value.isArray() && value.getType() == CIMTYPE_UINT64)
    {
        Uint64 n = 0;
        value.get(n);
        return Uint64Arg(n);
    }
    // Untyped over CIM-XML: decimal text.
    String text;
    if (!value.isArray() && value.getType() == CIMTYPE_STRING)
        value.get(text);
    const CString digits = text.getCString();
    const char* begin = digits;
    char* end = nullptr;
    errno = 0;
    const unsigned long long n = std::strtoull(begin, &end, 10);
    if (*begin < '0' || *begin > '9' || *end != '\0' || errno != 0)
        malformedAnswer(*this, "with a count that is not an unsigned number");
    return Uint64Arg(n);
}

PEGASUS_NAMESPACE_END
