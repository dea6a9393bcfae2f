// Writes object-model values as CIM-XML elements (one function per element family).
// Every function appends to `out`; nothing here knows about messages or HTTP.
#ifndef QEL_SERVER_XML_CIMXMLWRITER_H
#define QEL_SERVER_XML_CIMXMLWRITER_H

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include "XmlBuffer.h"

#include <string>

namespace qel
{
namespace cimxml
{

void writeLocalNamespacePath(std::string& out, const Pegasus::CIMNamespaceName& ns);
void writeNamespacePath(
    std::string& out, const Pegasus::String& host, const Pegasus::CIMNamespaceName& ns);
void writeClassName(std::string& out, const Pegasus::CIMName& name);
// KEYBINDINGs of the path (host and namespace are not written).
void writeInstanceName(std::string& out, const Pegasus::CIMObjectPath& path);
// INSTANCEPATH or CLASSPATH (chosen by the presence of keys); host and namespace required.
void writeObjectPathBody(std::string& out, const Pegasus::CIMObjectPath& path);
// OBJECTPATH wrapping the above.
void writeObjectPath(std::string& out, const Pegasus::CIMObjectPath& path);
// LOCALINSTANCEPATH or LOCALCLASSPATH.
void writeLocalObjectPath(std::string& out, const Pegasus::CIMObjectPath& path);
// VALUE.REFERENCE with the most complete path form the path allows.
void writeValueReference(std::string& out, const Pegasus::CIMObjectPath& path);

// VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for a null value.
void writeValue(std::string& out, const Pegasus::CIMValue& value);

void writeInstance(std::string& out, const Pegasus::CIMConstInstance& instance);
void writeClass(std::string& out, const Pegasus::CIMConstClass& cimClass);
// VALUE.NAMEDINSTANCE: the instance's path as INSTANCENAME followed by the INSTANCE.
void writeNamedInstance(std::string& out, const Pegasus::CIMConstInstance& instance);
// INSTANCEPATH of `path`, which must carry host and namespace.
void writeInstancePath(std::string& out, const Pegasus::CIMObjectPath& path);
// VALUE.INSTANCEWITHPATH of `instance` named by `path` (as writeInstancePath).
void writeInstanceWithPath(
    std::string& out, const Pegasus::CIMConstInstance& instance,
    const Pegasus::CIMObjectPath& path);
// VALUE.OBJECTWITHPATH of `object` named by `path`, which must carry host and namespace.
void writeObjectWithPath(
    std::string& out, const Pegasus::CIMObject& object, const Pegasus::CIMObjectPath& path);

// PARAMVALUE with PARAMTYPE (and EmbeddedObject for embedded values).
void writeParamValue(std::string& out, const Pegasus::CIMParamValue& param);
// RETURNVALUE of an extrinsic call; nothing for a null value.
void writeReturnValue(std::string& out, const Pegasus::CIMValue& value);
// ERROR with CODE and DESCRIPTION "<CIM_ERR_NAME>: <message>" (name alone when empty).
void writeError(std::string& out, const Pegasus::CIMException& error);

// The same, written through a buffer the caller holds (see XmlBuffer.h).
void writeLocalNamespacePath(XmlBuffer& out, const Pegasus::CIMNamespaceName& ns);
void writeNamespacePath(
    XmlBuffer& out, const Pegasus::String& host, const Pegasus::CIMNamespaceName& ns);
void writeClassName(XmlBuffer& out, const Pegasus::CIMName& name);
void writeInstanceName(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeObjectPathBody(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeObjectPath(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeLocalObjectPath(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeValueReference(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeValue(XmlBuffer& out, const Pegasus::CIMValue& value);
void writeInstance(XmlBuffer& out, const Pegasus::CIMConstInstance& instance);
void writeClass(XmlBuffer& out, const Pegasus::CIMConstClass& cimClass);
void writeNamedInstance(XmlBuffer& out, const Pegasus::CIMConstInstance& instance);
void writeInstancePath(XmlBuffer& out, const Pegasus::CIMObjectPath& path);
void writeInstanceWithPath(
    XmlBuffer& out, const Pegasus::CIMConstInstance& instance, const Pegasus::CIMObjectPath& path);
void writeObjectWithPath(
    XmlBuffer& out, const Pegasus::CIMObject& object, const Pegasus::CIMObjectPath& path);
void writeParamValue(XmlBuffer& out, const Pegasus::CIMParamValue& param);
void writeReturnValue(XmlBuffer& out, const Pegasus::CIMValue& value);
void writeError(XmlBuffer& out, const Pegasus::CIMException& error);

}  // namespace cimxml
}  // namespace qel

#endif
