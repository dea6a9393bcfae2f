// The pulled enumerations of DSP0200 1.4. An open pages one of the enumeration operations:
// it checks its own parameters and the paged operation's target, starts that operation on
// a worker into a new enumeration context (EnumerationContexts), and answers with the
// first objects; pulls answer the next ones, CloseEnumeration ends the context early.
// The providers are called as for the operation paged.
//
// An open's errors come in the order DSP0200 lists them: namespace, OperationTimeout,
// ContinueOnError, other parameters, class, filter. Each description names the parameter.
#include "DispatcherCalls.h"
#include "EnumerationContexts.h"

#include <Server/repository/ClassRepository.h>

namespace Pegasus
{

namespace
{

typedef CIMOperationType Op;
typedef CIMOperationParameter P;

String number(Uint32 n)
{
    return String(std::to_string(n).c_str());
}

String userOf(const OperationContext& context)
{
    if (!context.contains(IdentityContainer::NAME))
        return String();
    return IdentityContainer(context.get(IdentityContainer::NAME)).getUserName();
}

EnumerationContext::Kind kindOf(Op operation)
{
    switch (operation)
    {
        case Op::OpenEnumerateInstances:
        case Op::OpenReferenceInstances:
        case Op::OpenAssociatorInstances:
        case Op::PullInstancesWithPath:
            return EnumerationContext::Kind::Instances;
        default:
            return EnumerationContext::Kind::Paths;
    }
}

// The enumeration an open pages, with the open's parameters. The open operations have
// neither LocalOnly nor IncludeQualifiers: both are false.
CIMOperationRequest pagedOperation(const CIMOperationRequest& r)
{
    switch (r.operation)
    {
        case Op::OpenEnumerateInstances:
            return CIMOperationRequest::enumerateInstances(
                r.nameSpace, r.className, r.deepInheritance, false, false, r.includeClassOrigin,
                r.propertyList);
        case Op::OpenEnumerateInstancePaths:
            return CIMOperationRequest::enumerateInstanceNames(r.nameSpace, r.className);
        case Op::OpenReferenceInstances:
            return CIMOperationRequest::references(
                r.nameSpace, r.objectName, r.resultClass, r.role, false, r.includeClassOrigin,
                r.propertyList);
        case Op::OpenReferenceInstancePaths:
            return CIMOperationRequest::referenceNames(
                r.nameSpace, r.objectName, r.resultClass, r.role);
        case Op::OpenAssociatorInstances:
            return CIMOperationRequest::associators(
                r.nameSpace, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole, false,
                r.includeClassOrigin, r.propertyList);
        default:
            return CIMOperationRequest::associatorNames(
                r.nameSpace, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole);
    }
}

// OperationTimeout in seconds: the server's default when NULL. Zero (never expire) would
// let a vanished client hold a context for ever: refused, as DSP0200 allows.
Uint32 checkedTimeout(const CIMOperationRequest& r, const EnumerationLimits& limits)
{
    if (!r.has(P::OperationTimeout))
        return limits.defaultTimeout;
    if (r.operationTimeout == 0)
        throw CIMException(
            CIM_ERR_INVALID_OPERATION_TIMEOUT,
            "OperationTimeout 0 (never expire) is not allowed: give 1 to " +
                number(limits.maxTimeout) + " seconds, or NULL for the server's " +
                number(limits.defaultTimeout) + ".");
    if (r.operationTimeout > limits.maxTimeout)
        throw CIMException(
            CIM_ERR_INVALID_OPERATION_TIMEOUT, "OperationTimeout " + number(r.operationTimeout) +
                                                   " is past this server's maximum of " +
                                                   number(limits.maxTimeout) + " seconds.");
    return r.operationTimeout;
}

void checkMaxObjectCount(const CIMOperationRequest& r, const EnumerationLimits& limits)
{
    if (r.maxObjectCount > limits.maxObjectCount)
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "MaxObjectCount " + number(r.maxObjectCount) +
                                           " is past this server's maximum of " +
                                           number(limits.maxObjectCount) + ".");
}

void checkOpenParameters(const CIMOperationRequest& r, const EnumerationLimits& limits)
{
    if (r.continueOnError)
        throw CIMException(
            CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED,
            "ContinueOnError: this server ends an enumeration at its first error; give FALSE.");
    checkMaxObjectCount(r, limits);
    const bool onInstance =
        r.operation != Op::OpenEnumerateInstances && r.operation != Op::OpenEnumerateInstancePaths;
    if (onInstance && r.objectName.getKeyBindings().size() == 0)
        throw CIMException(
            CIM_ERR_INVALID_PARAMETER, "InstanceName " + r.objectName.getClassName().getString() +
                                           " has no keys: the open operations start from an "
                                           "instance, not a class.");
}

void checkFilter(const CIMOperationRequest& r)
{
    if (r.has(P::FilterQueryLanguage) || r.has(P::FilterQuery))
        throw CIMException(
            CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED,
            "FilterQueryLanguage and FilterQuery: this server does not filter enumerations; "
            "leave both NULL.");
}

// A context used in another namespace, or by the pull of the other kind, stays open.
void checkContextFits(const EnumerationContext& context, const CIMOperationRequest& r)
{
    const EnumerationContext::Identity& id = context.identity();
    if (!(id.nameSpace == r.nameSpace))
        throw CIMException(
            CIM_ERR_INVALID_ENUMERATION_CONTEXT,
            "EnumerationContext \"" + id.id + "\" was opened in namespace " +
                id.nameSpace.getString() + ", not " + r.nameSpace.getString() + ".");
    if (r.operation == Op::CloseEnumeration || r.operation == Op::EnumerationCount ||
        kindOf(r.operation) == id.kind)
        return;
    const bool instances = id.kind == EnumerationContext::Kind::Instances;
    throw CIMException(
        CIM_ERR_INVALID_ENUMERATION_CONTEXT,
        "EnumerationContext \"" + id.id + "\" enumerates " +
            (instances ? "instances: pull it with PullInstancesWithPath"
                       : "instance paths: pull it with PullInstancePaths") +
            ", not " + r.methodName + ".");
}

}  // namespace

void Dispatcher::_checkEnumeration(const CIMOperationRequest& r) const
{
    switch (r.operation)
    {
        case Op::EnumerateInstances:
        case Op::EnumerateInstanceNames:
            _checkInstanceClass(r.nameSpace, r.className);
            _instanceTargets(r.nameSpace, r.className);
            break;
        case Op::References:
        case Op::ReferenceNames:
            _checkAssociationRequest(
                r.nameSpace, r.objectName, CIMName(), r.resultClass, r.role, String());
            break;
        default:
            _checkAssociationRequest(
                r.nameSpace, r.objectName, r.assocClass, r.resultClass, r.role, r.resultRole);
            break;
    }
}

void Dispatcher::_answerPage(
    const std::shared_ptr<EnumerationContext>& context, Uint32 maxObjectCount, Answer& answer)
{
    EnumerationContext::Page page;
    try
    {
        page = context->take(maxObjectCount, _enumerations.limits().pullWait);
        for (Uint32 i = 0; i < page.instances.size(); ++i)
            answer.sink.deliverInstance(page.instances[i]);
        for (Uint32 i = 0; i < page.paths.size(); ++i)
            answer.sink.deliverPath(page.paths[i]);
    }
    catch (...)
    {
        // Without continuation on error, an operation that fails ends the enumeration.
        _enumerations.release(*context, true);
        throw;
    }
    _enumerations.release(*context, page.endOfSequence);
    answer.outParameters =
        CIMOperationResponse::enumerationState(page.endOfSequence, context->identity().id);
}

void Dispatcher::_openEnumeration(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const EnumerationLimits& limits = _enumerations.limits();
    _checkNamespace(r.nameSpace);
    const Uint32 timeout = checkedTimeout(r, limits);
    checkOpenParameters(r, limits);
    const CIMOperationRequest paged = pagedOperation(r);
    _checkEnumeration(paged);
    checkFilter(r);

    const OperationContext requestContext(context);
    std::shared_ptr<EnumerationContext> enumeration = _enumerations.open(
        userOf(context), r.nameSpace, kindOf(r.operation), timeout, _hostName,
        [this, requestContext, paged](EnumerationContext& sink)
        { execute(requestContext, paged, sink); });
    _answerPage(enumeration, r.maxObjectCount, answer);
}

void Dispatcher::_pull(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    _checkNamespace(r.nameSpace);
    checkMaxObjectCount(r, _enumerations.limits());
    std::shared_ptr<EnumerationContext> enumeration =
        _enumerations.acquire(r.enumerationContext, userOf(context));
    try
    {
        checkContextFits(*enumeration, r);
    }
    catch (...)
    {
        _enumerations.release(*enumeration, false);
        throw;
    }
    _answerPage(enumeration, r.maxObjectCount, answer);
}

void Dispatcher::_closeEnumeration(
    const OperationContext& context, const CIMOperationRequest& r, Answer&)
{
    _checkNamespace(r.nameSpace);
    std::shared_ptr<EnumerationContext> enumeration =
        _enumerations.find(r.enumerationContext, userOf(context));
    checkContextFits(*enumeration, r);
    _enumerations.close(*enumeration);
}

void Dispatcher::_enumerationCount(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    _checkNamespace(r.nameSpace);
    std::shared_ptr<EnumerationContext> enumeration =
        _enumerations.acquire(r.enumerationContext, userOf(context));
    Uint64Arg left;
    try
    {
        checkContextFits(*enumeration, r);
        left = enumeration->remaining();
    }
    catch (...)
    {
        _enumerations.release(*enumeration, false);
        throw;
    }
    _enumerations.release(*enumeration, false);
    answer.returnValue =
        left.isNull() ? CIMValue(CIMTYPE_UINT64, false) : CIMValue(left.getValue());
}

}  // namespace Pegasus
