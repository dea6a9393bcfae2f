#include <Pegasus/Common/CIMResponseCollector.h>

PEGASUS_NAMESPACE_BEGIN

CIMResponseCollector::CIMResponseCollector(
    CIMOperationType operation, CIMOperationResponse& response)
    : _operation(operation), _response(response)
{
}

void CIMResponseCollector::deliverClass(const CIMClass& cimClass)
{
    if (_operation == CIMOperationType::GetClass)
        _response.cimClass = cimClass;
    else
        _response.classes.append(cimClass);
}

void CIMResponseCollector::deliverClassName(const CIMName& className)
{
    _response.classNames.append(className);
}

void CIMResponseCollector::deliverInstance(const CIMInstance& instance)
{
    if (_operation == CIMOperationType::GetInstance)
        _response.instance = instance;
    else
        _response.instances.append(instance);
}

void CIMResponseCollector::deliverPath(const CIMObjectPath& path)
{
    _response.paths.append(path);
}

void CIMResponseCollector::deliverObject(const CIMObject& object)
{
    _response.objects.append(object);
}

void CIMResponseCollector::complete(
    const CIMValue& returnValue, const Array<CIMParamValue>& outParameters)
{
    _response.value = returnValue;
    _response.outParameters = outParameters;
}

void CIMResponseCollector::fail(const CIMException& error)
{
    _response.cimClass = CIMClass();
    _response.instance = CIMInstance();
    _response.classes.clear();
    _response.classNames.clear();
    _response.instances.clear();
    _response.paths.clear();
    _response.objects.clear();
    _response.value = CIMValue();
    _response.outParameters.clear();
    _response.setError(error);
}

PEGASUS_NAMESPACE_END
