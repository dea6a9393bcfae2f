// Project extension (not part of the OpenPegasus API): one CIM operation request and its
// response as plain values, whatever carries them.
//
// CIMClient and CIMOMHandle turn the arguments of each of their operations into a request
// with the builders below and read the answer with the response's unpackers, so both build
// and unpack the same way. A host plugs in behind them with one function each
// (ClientTransport::execute, CIMOMHandleRep::execute); the server's dispatcher runs any
// request, and the CIM-XML codec reads and writes the same values.
//
// Values only: no locking, one thread at a time per object; copies share the CIM objects
// they hold, as the objects' own handles do.
#ifndef Pegasus_CIMOperationMessage_h
#define Pegasus_CIMOperationMessage_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/UintArgs.h>

#include <bitset>
#include <cstddef>
#include <string>

PEGASUS_NAMESPACE_BEGIN

// The CIM operations: the intrinsic ones (the pulled enumerations of DSP0200 1.4 after the
// others), then the extrinsic method call.
enum class CIMOperationType
{
    GetClass,
    EnumerateClasses,
    EnumerateClassNames,
    CreateClass,
    ModifyClass,
    DeleteClass,
    GetInstance,
    EnumerateInstances,
    EnumerateInstanceNames,
    CreateInstance,
    ModifyInstance,
    DeleteInstance,
    Associators,
    AssociatorNames,
    References,
    ReferenceNames,
    GetProperty,
    SetProperty,
    ExecQuery,
    OpenEnumerateInstances,
    OpenEnumerateInstancePaths,
    OpenReferenceInstances,
    OpenReferenceInstancePaths,
    OpenAssociatorInstances,
    OpenAssociatorInstancePaths,
    PullInstancesWithPath,
    PullInstancePaths,
    CloseEnumeration,
    EnumerationCount,
    InvokeMethod,
};

// "GetClass", "EnumerateInstances", ..., "InvokeMethod": the operation's name as DMTF's
// CIM operations name it.
PEGASUS_COMMON_LINKAGE const char* cimOperationName(CIMOperationType operation);
// "getClass", ..., "invokeMethod": the CIMClient and CIMOMHandle function that sends it.
PEGASUS_COMMON_LINKAGE String cimOperationFunctionName(CIMOperationType operation);

// The intrinsic operations' parameters, by their DMTF names.
enum class CIMOperationParameter
{
    ClassName,
    InstanceName,
    ObjectName,
    LocalOnly,
    DeepInheritance,
    IncludeQualifiers,
    IncludeClassOrigin,
    PropertyList,
    AssocClass,
    ResultClass,
    Role,
    ResultRole,
    NewInstance,
    ModifiedInstance,
    NewClass,
    ModifiedClass,
    PropertyName,
    NewValue,
    QueryLanguage,
    Query,
    FilterQueryLanguage,
    FilterQuery,
    OperationTimeout,
    ContinueOnError,
    MaxObjectCount,
    EnumerationContext,
    Count_
};
constexpr size_t cimOperationParameterCount = static_cast<size_t>(CIMOperationParameter::Count_);

// What every Open operation takes besides its target, with DSP0200's defaults: no filter
// (NULL), the server's timeout (NULL), no continuation on error, no object in the answer
// to the open itself.
struct PEGASUS_COMMON_LINKAGE CIMOpenParameters
{
    String filterQueryLanguage;  // "" is NULL
    String filterQuery;          // "" is NULL
    Uint32Arg operationTimeout;  // seconds
    Boolean continueOnError = false;
    Uint32 maxObjectCount = 0;
};

struct PEGASUS_COMMON_LINKAGE CIMOperationRequest
{
    typedef CIMOperationParameter Param;

    std::string messageId;  // the wire's message ID; "" elsewhere
    CIMOperationType operation = CIMOperationType::GetInstance;
    // The intrinsic operation's name (cimOperationName), or the extrinsic method's.
    String methodName;
    CIMNamespaceName nameSpace;

    // Intrinsic parameters; `present` tells which ones were given (a wire form writes only
    // those). Booleans not given hold the operation's default.
    std::bitset<cimOperationParameterCount> present;
    CIMName className;
    CIMName assocClass;
    CIMName resultClass;
    CIMObjectPath objectName;  // InstanceName or ObjectName
    CIMInstance instance;      // NewInstance, or ModifiedInstance with its path
    CIMClass cimClass;         // NewClass / ModifiedClass
    bool localOnly = false;
    bool deepInheritance = false;
    bool includeQualifiers = false;
    bool includeClassOrigin = false;
    CIMPropertyList propertyList;  // NULL unless given
    String role;
    String resultRole;
    CIMName propertyName;
    CIMValue newValue;
    String queryLanguage;
    String query;
    // Pulled enumerations. The filter and the timeout are NULL unless given.
    String filterQueryLanguage;
    String filterQuery;
    Uint32 operationTimeout = 0;
    bool continueOnError = false;
    Uint32 maxObjectCount = 0;
    String enumerationContext;

    // Extrinsic call: target path (class or instance; its namespace is `nameSpace`) and inputs.
    CIMObjectPath target;
    Array<CIMParamValue> inParameters;

    bool has(Param p) const { return present.test(static_cast<size_t>(p)); }
    void give(Param p) { present.set(static_cast<size_t>(p)); }

    // The request each CIMClient / CIMOMHandle operation sends, from its arguments. What is
    // optional (a null class name or property list, an empty role) is left out.
    static CIMOperationRequest getClass(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    static CIMOperationRequest enumerateClasses(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin);
    static CIMOperationRequest enumerateClassNames(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance);
    static CIMOperationRequest
    createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass);
    static CIMOperationRequest
    modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass);
    static CIMOperationRequest
    deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className);
    static CIMOperationRequest getInstance(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    static CIMOperationRequest enumerateInstances(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    static CIMOperationRequest
    enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className);
    static CIMOperationRequest
    createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);
    static CIMOperationRequest modifyInstance(
        const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList);
    static CIMOperationRequest
    deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName);
    static CIMOperationRequest
    execQuery(const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query);
    static CIMOperationRequest associators(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    static CIMOperationRequest associatorNames(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole);
    static CIMOperationRequest references(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    static CIMOperationRequest referenceNames(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role);
    static CIMOperationRequest getProperty(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName);
    static CIMOperationRequest setProperty(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue);
    static CIMOperationRequest invokeMethod(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters);

    // The pulled enumerations. The open operations' object name travels as InstanceName.
    static CIMOperationRequest openEnumerateInstances(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        const CIMOpenParameters& open);
    static CIMOperationRequest openEnumerateInstancePaths(
        const CIMNamespaceName& nameSpace, const CIMName& className, const CIMOpenParameters& open);
    static CIMOperationRequest openReferenceInstances(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, const CIMOpenParameters& open);
    static CIMOperationRequest openReferenceInstancePaths(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const CIMOpenParameters& open);
    static CIMOperationRequest openAssociatorInstances(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        const CIMOpenParameters& open);
    static CIMOperationRequest openAssociatorInstancePaths(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const CIMOpenParameters& open);
    static CIMOperationRequest pullInstancesWithPath(
        const CIMNamespaceName& nameSpace, const String& enumerationContext, Uint32 maxObjectCount);
    static CIMOperationRequest pullInstancePaths(
        const CIMNamespaceName& nameSpace, const String& enumerationContext, Uint32 maxObjectCount);
    static CIMOperationRequest
    closeEnumeration(const CIMNamespaceName& nameSpace, const String& enumerationContext);
    static CIMOperationRequest
    enumerationCount(const CIMNamespaceName& nameSpace, const String& enumerationContext);
};

struct PEGASUS_COMMON_LINKAGE CIMOperationResponse
{
    CIMOperationResponse() = default;
    // The answer to `request`, as yet empty: its message ID, operation and method name.
    explicit CIMOperationResponse(const CIMOperationRequest& request)
        : messageId(request.messageId), operation(request.operation), methodName(request.methodName)
    {
    }

    std::string messageId;
    CIMOperationType operation = CIMOperationType::GetInstance;
    String methodName;

    bool failed = false;
    CIMException error;

    CIMClass cimClass;                   // GetClass
    CIMInstance instance;                // GetInstance
    Array<CIMClass> classes;             // EnumerateClasses
    Array<CIMName> classNames;           // EnumerateClassNames
    Array<CIMInstance> instances;        // EnumerateInstances, Open/Pull...Instances (paths set)
    Array<CIMObjectPath> paths;          // names, object paths, created name [0]
    Array<CIMObject> objects;            // Associators, References, ExecQuery
    CIMValue value;                      // GetProperty, extrinsic return value, count
    Array<CIMParamValue> outParameters;  // extrinsic output parameters; the enumeration state

    void setError(const CIMException& e)
    {
        failed = true;
        error = e;
    }

    // Unpacking, as CIMClient and CIMOMHandle hand results to their callers: the response
    // itself, or its error thrown as the CIMException it is.
    const CIMOperationResponse& checked() const;
    // CreateInstance's new name; CIM_ERR_FAILED "CreateInstance answered without a name"
    // unless there is exactly one.
    CIMObjectPath createdName() const;
    // InvokeMethod's return value; the output parameters replace `outParameters`.
    CIMValue methodResult(Array<CIMParamValue>& outParameters) const;

    // The output parameters of an open or a pull: EndOfSequence, and EnumerationContext,
    // NULL once the sequence has ended.
    static Array<CIMParamValue>
    enumerationState(Boolean endOfSequence, const String& enumerationContext);
    // An open's or a pull's state, read back: whether the sequence ended, and the context
    // that continues it ("" once it ended). CIM_ERR_FAILED "<operation> answered without
    // EndOfSequence" or "... without EnumerationContext" when the answer lacks them.
    String enumerationContext(Boolean& endOfSequence) const;
    // EnumerationCount's answer: the count, or NULL when the server cannot tell.
    Uint64Arg enumerationCount() const;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_CIMOperationMessage_h */
