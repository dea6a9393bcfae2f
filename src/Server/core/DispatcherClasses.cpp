// Class operations, answered from the repository.
#include "Dispatcher.h"

#include <Server/repository/ClassRepository.h>

#include <Pegasus/Common/CIMStatusCode.h>

namespace Pegasus
{

void Dispatcher::_getClass(const OperationContext&, const CIMOperationRequest& r, Answer& answer)
{
    _checkNamespace(r.nameSpace);
    if (r.className.isNull())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "The request names no class.");
    answer.sink.deliverClass(_repository.getClass(
        r.nameSpace, r.className, r.localOnly, r.includeQualifiers, r.includeClassOrigin,
        r.propertyList));
}

void Dispatcher::_enumerateClassNames(
    const OperationContext&, const CIMOperationRequest& r, Answer& answer)
{
    _checkNamespace(r.nameSpace);
    if (!r.className.isNull() && !_repository.classExists(r.nameSpace, r.className))
        throw CIMException(CIM_ERR_INVALID_CLASS, r.className.getString());
    const Array<CIMName> names =
        _repository.enumerateClassNames(r.nameSpace, r.className, r.deepInheritance);
    for (Uint32 i = 0; i < names.size(); ++i)
        answer.sink.deliverClassName(names[i]);
}

void Dispatcher::_enumerateClasses(
    const OperationContext&, const CIMOperationRequest& r, Answer& answer)
{
    _checkNamespace(r.nameSpace);
    if (!r.className.isNull() && !_repository.classExists(r.nameSpace, r.className))
        throw CIMException(CIM_ERR_INVALID_CLASS, r.className.getString());
    const Array<CIMClass> classes = _repository.enumerateClasses(
        r.nameSpace, r.className, r.deepInheritance, r.localOnly, r.includeQualifiers,
        r.includeClassOrigin);
    for (Uint32 i = 0; i < classes.size(); ++i)
        answer.sink.deliverClass(classes[i]);
}

}  // namespace Pegasus
