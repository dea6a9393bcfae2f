#include <Pegasus/Provider/CIMOMHandleRep.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
[[noreturn]] void notSupported(const char* operation)
{
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, String(operation) + " is not supported through this CIMOMHandle");
}
}  // namespace

CIMOMHandleRep::~CIMOMHandleRep() = default;

Array<CIMClass> CIMOMHandleRep::enumerateClasses(
    const OperationContext&,
    const CIMNamespaceName&,
    const CIMName&,
    Boolean,
    Boolean,
    Boolean,
    Boolean)
{
    notSupported("enumerateClasses");
}

Array<CIMName> CIMOMHandleRep::enumerateClassNames(
    const OperationContext&,
    const CIMNamespaceName&,
    const CIMName&,
    Boolean)
{
    notSupported("enumerateClassNames");
}

void CIMOMHandleRep::createClass(const OperationContext&, const CIMNamespaceName&, const CIMClass&)
{
    notSupported("createClass");
}

void CIMOMHandleRep::modifyClass(const OperationContext&, const CIMNamespaceName&, const CIMClass&)
{
    notSupported("modifyClass");
}

void CIMOMHandleRep::deleteClass(const OperationContext&, const CIMNamespaceName&, const CIMName&)
{
    notSupported("deleteClass");
}

CIMObjectPath
CIMOMHandleRep::createInstance(const OperationContext&, const CIMNamespaceName&, const CIMInstance&)
{
    notSupported("createInstance");
}

void CIMOMHandleRep::deleteInstance(
    const OperationContext&,
    const CIMNamespaceName&,
    const CIMObjectPath&)
{
    notSupported("deleteInstance");
}

Array<CIMObject> CIMOMHandleRep::execQuery(
    const OperationContext&,
    const CIMNamespaceName&,
    const String&,
    const String&)
{
    notSupported("execQuery");
}

CIMValue CIMOMHandleRep::getProperty(
    const OperationContext&,
    const CIMNamespaceName&,
    const CIMObjectPath&,
    const CIMName&)
{
    notSupported("getProperty");
}

void CIMOMHandleRep::setProperty(
    const OperationContext&,
    const CIMNamespaceName&,
    const CIMObjectPath&,
    const CIMName&,
    const CIMValue&)
{
    notSupported("setProperty");
}

void CIMOMHandleRep::disallowProviderUnload()
{
}

void CIMOMHandleRep::allowProviderUnload()
{
}

OperationContext CIMOMHandleRep::getResponseContext()
{
    return OperationContext();
}

PEGASUS_NAMESPACE_END
