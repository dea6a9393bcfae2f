// One CIM operation request and its response, independent of the wire form.
#ifndef QEL_SERVER_XML_MESSAGES_H
#define QEL_SERVER_XML_MESSAGES_H

#include "Operations.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <bitset>
#include <string>

namespace qel
{
namespace cimxml
{

struct CimRequest
{
    std::string messageId;
    Operation operation = Operation::GetInstance;
    // Name as sent: the intrinsic operation or the extrinsic method; echoed in the response.
    Pegasus::String methodName;
    Pegasus::CIMNamespaceName nameSpace;

    // Intrinsic parameters; `present` tells which IPARAMVALUEs were sent. Booleans hold the
    // operation's default when absent.
    std::bitset<kParamCount> present;
    Pegasus::CIMName className;
    Pegasus::CIMName assocClass;
    Pegasus::CIMName resultClass;
    Pegasus::CIMObjectPath objectName;  // InstanceName or ObjectName (no host or namespace)
    Pegasus::CIMInstance instance;      // NewInstance, or ModifiedInstance with its path
    Pegasus::CIMClass cimClass;         // NewClass / ModifiedClass
    bool localOnly = false;
    bool deepInheritance = false;
    bool includeQualifiers = false;
    bool includeClassOrigin = false;
    Pegasus::CIMPropertyList propertyList;  // NULL unless sent
    Pegasus::String role;
    Pegasus::String resultRole;
    Pegasus::CIMName propertyName;
    Pegasus::CIMValue newValue;
    Pegasus::String queryLanguage;
    Pegasus::String query;

    // Extrinsic call: target path (class or instance, namespace in `nameSpace`) and inputs.
    Pegasus::CIMObjectPath target;
    Pegasus::Array<Pegasus::CIMParamValue> inParameters;

    bool has(Param p) const { return present.test(static_cast<size_t>(p)); }
    // Sets every boolean parameter to the operation's default.
    void applyDefaults();
};

struct CimResponse
{
    std::string messageId;
    Operation operation = Operation::GetInstance;
    Pegasus::String methodName;

    bool failed = false;
    Pegasus::CIMException error;

    Pegasus::CIMClass cimClass;                      // GetClass
    Pegasus::CIMInstance instance;                   // GetInstance
    Pegasus::Array<Pegasus::CIMClass> classes;       // EnumerateClasses
    Pegasus::Array<Pegasus::CIMName> classNames;     // EnumerateClassNames
    Pegasus::Array<Pegasus::CIMInstance> instances;  // EnumerateInstances (paths set)
    Pegasus::Array<Pegasus::CIMObjectPath> paths;    // names, object paths, created name [0]
    Pegasus::Array<Pegasus::CIMObject> objects;      // Associators, References, ExecQuery
    Pegasus::CIMValue value;                         // GetProperty, extrinsic return value
    Pegasus::Array<Pegasus::CIMParamValue> outParameters;

    void setError(const Pegasus::CIMException& e)
    {
        failed = true;
        error = e;
    }
};

}  // namespace cimxml
}  // namespace qel

#endif
