// Extrinsic methods: input parameters typed by the method's declaration,
// then the class's method provider.
#include "DeclaredValues.h"
#include "DispatcherCalls.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

namespace Pegasus
{

Array<CIMParamValue> Dispatcher::_typedParameters(
    const CIMClass& cimClass, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters) const
{
    Uint32 methodPos = cimClass.findMethod(methodName);
    CIMConstMethod method = cimClass.getMethod(methodPos);
    Array<CIMParamValue> typed;
    for (Uint32 i = 0; i < inParameters.size(); ++i)
    {
        const CIMParamValue& given = inParameters[i];
        if (given.isUninitialized())
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "An input parameter is uninitialized.");
        String name = given.getParameterName();
        Uint32 pos = CIMName::legal(name) ? method.findParameter(CIMName(name)) : PEG_NOT_FOUND;
        if (pos == PEG_NOT_FOUND)
            throw CIMException(
                CIM_ERR_INVALID_PARAMETER,
                "Method " + methodName.getString() + " has no parameter " + name + ".");
        CIMConstParameter declared = method.getParameter(pos);
        CIMType type = declared.getType();
        Boolean isArray = declared.isArray();
        CIMValue value = given.getValue();

        CIMValue result;
        if (value.isNull())
        {
            result.setNullValue(type, isArray);
        }
        else if (value.isArray() != isArray)
        {
            throw CIMException(
                CIM_ERR_TYPE_MISMATCH, "Parameter " + name + " is declared " +
                                           describeType(type, isArray) + ", not " +
                                           describeType(value.getType(), value.isArray()) + ".");
        }
        else if (value.getType() == type)
        {
            result = value;
        }
        else if (!given.isTyped() && value.getType() == CIMTYPE_STRING)
        {
            result = valueFromText(
                value, type,
                "parameter " + toStd(name) + " of method " + toStd(methodName.getString()));
        }
        else
        {
            throw CIMException(
                CIM_ERR_TYPE_MISMATCH, "Parameter " + name + " is declared " +
                                           describeType(type, isArray) + ", not " +
                                           describeType(value.getType(), value.isArray()) + ".");
        }
        typed.append(CIMParamValue(name, result, true));
    }
    return typed;
}

void Dispatcher::_invokeMethod(
    const OperationContext& context, const CIMOperationRequest& r, Answer& answer)
{
    const CIMNamespaceName& nameSpace = r.nameSpace;
    _checkNamespace(nameSpace);
    const CIMName className = r.target.getClassName();
    if (className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no object.");
    // OpenPegasus answers an unknown class of an extrinsic call with NOT_FOUND.
    if (!_repository.classExists(nameSpace, className))
        throw CIMException(CIM_ERR_NOT_FOUND, className.getString());
    // The request names the method as text; none at all is a null name.
    const CIMName methodName = r.methodName.size() == 0 ? CIMName() : CIMName(r.methodName);
    if (methodName.isNull())
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, String());
    CIMClass cimClass =
        _repository.getClass(nameSpace, className, false, false, false, CIMPropertyList());
    if (cimClass.findMethod(methodName) == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, methodName.getString());

    Array<CIMParamValue> parameters = _typedParameters(cimClass, methodName, r.inParameters);

    const ProviderId* provider = _registry.methodProvider(nameSpace, className, methodName);
    if (provider == nullptr)
        throw CIMException(CIM_ERR_METHOD_NOT_AVAILABLE, methodName.getString());

    CIMObjectPath path = _providerPath(r.target, nameSpace);
    MethodResultHandler handler;
    OperationContext providerContext = _providerContext(context);
    _call<CIMMethodProvider>(
        *provider, handler.protocol(),
        [&](CIMMethodProvider& p)
        { p.invokeMethod(providerContext, path, methodName, parameters, handler); });
    answer.outParameters = handler.outParameters();
    answer.returnValue = handler.returnValue();
}

}  // namespace Pegasus
