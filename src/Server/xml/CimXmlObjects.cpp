// The reader's objects: qualifiers, properties, instances, classes with their methods and
// parameters, and the parameter values and errors of method calls and answers.
#include "CimXmlReader.h"

#include "ValueText.h"
#include "XmlElements.h"
#include "XmlText.h"

#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <cstdlib>
#include <cstring>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

// The attributes a PROPERTY element may carry, found in one walk over them:
// xml_node::attribute walks them all again for every name asked, and properties are read
// by the thousand. Of two attributes of the same name the first counts, as
// xml_node::attribute finds it.
struct PropertyAttributes
{
    explicit PropertyAttributes(pugi::xml_node node)
    {
        for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
        {
            pugi::xml_attribute* slot = slotFor(a.name());
            if (slot && !*slot)
                *slot = a;
        }
    }

    pugi::xml_attribute name, type, embedded, embeddedUpper, arraySize, referenceClass, classOrigin,
        propagated;

private:
    pugi::xml_attribute* slotFor(const char* n)
    {
        auto named = [n](const char* wanted, pugi::xml_attribute* slot)
        { return std::strcmp(n, wanted) == 0 ? slot : nullptr; };
        switch (n[0])
        {
            case 'N':
                return named("NAME", &name);
            case 'T':
                return named("TYPE", &type);
            case 'E':
                return n[1] == 'm' ? named("EmbeddedObject", &embedded)
                                   : named("EMBEDDEDOBJECT", &embeddedUpper);
            case 'A':
                return named("ARRAYSIZE", &arraySize);
            case 'R':
                return named("REFERENCECLASS", &referenceClass);
            case 'C':
                return named("CLASSORIGIN", &classOrigin);
            case 'P':
                return named("PROPAGATED", &propagated);
            default:
                return nullptr;
        }
    }
};

}  // namespace

CIMQualifier CimXmlReader::qualifier(pugi::xml_node node)
{
    expectName(node, "QUALIFIER");
    const CIMName qName = name(node, "NAME");
    const CIMType type = typeAttributeOf(node, "TYPE");
    const bool propagated = booleanAttribute(node, "PROPAGATED", false);
    CIMFlavor flavor;
    if (booleanAttribute(node, "OVERRIDABLE", true))
        flavor.addFlavor(CIMFlavor::OVERRIDABLE);
    if (booleanAttribute(node, "TOSUBCLASS", true))
        flavor.addFlavor(CIMFlavor::TOSUBCLASS);
    if (booleanAttribute(node, "TOINSTANCE", false))
        flavor.addFlavor(CIMFlavor::TOINSTANCE);
    if (booleanAttribute(node, "TRANSLATABLE", false))
        flavor.addFlavor(CIMFlavor::TRANSLATABLE);
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 0, 1);
    CIMValue value;
    if (children.empty())
    {
        value = CIMValue(type, false);
    }
    else
    {
        if (!is(children[0], "VALUE") && !is(children[0], "VALUE.ARRAY"))
            invalidElement(children[0], "expected VALUE or VALUE.ARRAY");
        value = typedValue(children[0], type, "");
    }
    return guarded(node, [&] { return CIMQualifier(qName, value, flavor, propagated); });
}

CIMProperty CimXmlReader::property(pugi::xml_node node)
{
    const PropertyAttributes attributes(node);
    const CIMName pName = name(node, "NAME", attributes.name);
    const bool isRef = is(node, "PROPERTY.REFERENCE");
    const bool isArray = is(node, "PROPERTY.ARRAY");
    if (!isRef && !isArray && !is(node, "PROPERTY"))
        invalidElement(node, "expected PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE");
    CIMType type = CIMTYPE_REFERENCE;
    std::string embedded;  // read once for the type and the value
    if (!isRef)
        type = embeddedType(
            node, typeAttributeOf(node, attributes.type, "TYPE"),
            embedded = embeddedAttribute(node, attributes.embedded, attributes.embeddedUpper));
    const Uint32 arraySize = isArray ? arraySizeAttribute(node, attributes.arraySize) : 0;
    CIMName referenceClass;
    if (isRef && attributes.referenceClass)
        referenceClass = name(node, "REFERENCECLASS", attributes.referenceClass);
    CIMName classOrigin;
    if (attributes.classOrigin)
        classOrigin = name(node, "CLASSORIGIN", attributes.classOrigin);
    const bool propagated = booleanAttribute(node, attributes.propagated, "PROPAGATED", false);

    Array<CIMQualifier> qualifiers;
    ElementCount qualifierCount(node, "QUALIFIER", limits::kMaxQualifiers);
    CIMValue value;  // the typed null unless a value element follows
    bool seenValue = false;
    forEachElementChild(
        node,
        [&](pugi::xml_node c)
        {
            if (is(c, "QUALIFIER"))
            {
                if (seenValue)
                    invalidElement(c, "QUALIFIER must come before the value");
                qualifierCount.add();
                qualifiers.append(qualifier(c));
                return;
            }
            if (seenValue)
                invalidElement(c, "only one value is allowed");
            const char* expected = isRef ? "VALUE.REFERENCE" : isArray ? "VALUE.ARRAY" : "VALUE";
            expectName(c, expected);
            value = typedValue(
                c, type,
                isRef ? embeddedAttribute(node, attributes.embedded, attributes.embeddedUpper)
                      : embedded);
            seenValue = true;
        });
    if (!seenValue)
        value = CIMValue(type, isArray, arraySize);
    return guarded(
        node,
        [&]
        {
            CIMProperty p(pName, value, arraySize, referenceClass, classOrigin, propagated);
            for (Uint32 i = 0; i < qualifiers.size(); ++i)
                p.addQualifier(qualifiers[i]);
            return p;
        });
}

CIMInstance CimXmlReader::instance(pugi::xml_node node)
{
    expectName(node, "INSTANCE");
    const CIMName cls = name(node, "CLASSNAME");
    CIMInstance inst(cls);
    ElementCount qualifierCount(node, "QUALIFIER", limits::kMaxQualifiers);
    ElementCount propertyCount(node, "PROPERTY", limits::kMaxProperties);
    bool seenProperty = false;
    forEachElementChild(
        node,
        [&](pugi::xml_node c)
        {
            if (is(c, "QUALIFIER"))
            {
                if (seenProperty)
                    invalidElement(c, "QUALIFIER must come before the properties");
                qualifierCount.add();
                const CIMQualifier q = qualifier(c);
                guarded(c, [&] { inst.addQualifier(q); });
                return;
            }
            propertyCount.add();
            const CIMProperty p = property(c);
            seenProperty = true;
            guarded(c, [&] { inst.addProperty(p); });
        });
    return inst;
}

CIMParameter CimXmlReader::parameter(pugi::xml_node node)
{
    const CIMName pName = name(node, "NAME");
    const bool ref = is(node, "PARAMETER.REFERENCE") || is(node, "PARAMETER.REFARRAY");
    const bool array = is(node, "PARAMETER.ARRAY") || is(node, "PARAMETER.REFARRAY");
    if (!ref && !array && !is(node, "PARAMETER"))
        invalidElement(node, "expected a PARAMETER element");
    const CIMType type =
        ref ? CIMTYPE_REFERENCE
            : embeddedType(node, typeAttributeOf(node, "TYPE"), embeddedAttribute(node));
    CIMName referenceClass;
    if (ref && node.attribute("REFERENCECLASS"))
        referenceClass = name(node, "REFERENCECLASS");
    const Uint32 arraySize = array ? arraySizeAttribute(node) : 0;
    CIMParameter p =
        guarded(node, [&] { return CIMParameter(pName, type, array, arraySize, referenceClass); });
    ElementCount qualifierCount(node, "QUALIFIER", limits::kMaxQualifiers);
    for (pugi::xml_node c : elementChildren(node))
    {
        expectName(c, "QUALIFIER");
        qualifierCount.add();
        const CIMQualifier q = qualifier(c);
        guarded(c, [&] { p.addQualifier(q); });
    }
    return p;
}

CIMMethod CimXmlReader::method(pugi::xml_node node)
{
    expectName(node, "METHOD");
    const CIMName mName = name(node, "NAME");
    const CIMType type = typeAttributeOf(node, "TYPE");
    CIMName classOrigin;
    if (node.attribute("CLASSORIGIN"))
        classOrigin = name(node, "CLASSORIGIN");
    const bool propagated = booleanAttribute(node, "PROPAGATED", false);
    CIMMethod m = guarded(node, [&] { return CIMMethod(mName, type, classOrigin, propagated); });
    ElementCount qualifierCount(node, "QUALIFIER", limits::kMaxQualifiers);
    ElementCount parameterCount(node, "PARAMETER", limits::kMaxMethodParameters);
    bool seenParameter = false;
    for (pugi::xml_node c : elementChildren(node))
    {
        if (is(c, "QUALIFIER"))
        {
            if (seenParameter)
                invalidElement(c, "QUALIFIER must come before the parameters");
            qualifierCount.add();
            const CIMQualifier q = qualifier(c);
            guarded(c, [&] { m.addQualifier(q); });
            continue;
        }
        parameterCount.add();
        const CIMParameter p = parameter(c);
        seenParameter = true;
        guarded(c, [&] { m.addParameter(p); });
    }
    return m;
}

CIMClass CimXmlReader::cimClass(pugi::xml_node node)
{
    expectName(node, "CLASS");
    const CIMName cls = name(node, "NAME");
    CIMName superClass;
    if (node.attribute("SUPERCLASS"))
        superClass = name(node, "SUPERCLASS");
    CIMClass c(cls, superClass);
    ElementCount qualifierCount(node, "QUALIFIER", limits::kMaxQualifiers);
    ElementCount propertyCount(node, "PROPERTY", limits::kMaxProperties);
    ElementCount methodCount(node, "METHOD", limits::kMaxMethods);
    int stage = 0;  // 0 qualifiers, 1 properties, 2 methods
    for (pugi::xml_node child : elementChildren(node))
    {
        if (is(child, "QUALIFIER"))
        {
            if (stage > 0)
                invalidElement(child, "QUALIFIER must come before properties and methods");
            qualifierCount.add();
            const CIMQualifier q = qualifier(child);
            guarded(child, [&] { c.addQualifier(q); });
        }
        else if (is(child, "METHOD"))
        {
            stage = 2;
            methodCount.add();
            const CIMMethod m = method(child);
            guarded(child, [&] { c.addMethod(m); });
        }
        else
        {
            if (stage > 1)
                invalidElement(child, "properties must come before methods");
            stage = 1;
            propertyCount.add();
            const CIMProperty p = property(child);
            guarded(child, [&] { c.addProperty(p); });
        }
    }
    return c;
}

CIMInstance CimXmlReader::namedInstance(pugi::xml_node node)
{
    expectName(node, "VALUE.NAMEDINSTANCE");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    const CIMObjectPath path = instanceName(children[0]);
    CIMInstance inst = instance(children[1]);
    guarded(node, [&] { inst.setPath(path); });
    return inst;
}

CIMObject CimXmlReader::objectWithPath(pugi::xml_node node)
{
    expectName(node, "VALUE.OBJECTWITHPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    if (is(children[0], "INSTANCEPATH"))
    {
        const CIMObjectPath path = anyPath(children[0]);
        CIMInstance inst = instance(children[1]);
        guarded(node, [&] { inst.setPath(path); });
        return CIMObject(inst);
    }
    expectName(children[0], "CLASSPATH");
    const CIMObjectPath path = anyPath(children[0]);
    CIMClass cls = cimClass(children[1]);
    guarded(node, [&] { cls.setPath(path); });
    return CIMObject(cls);
}

CIMObjectPath CimXmlReader::instancePath(pugi::xml_node node)
{
    expectName(node, "INSTANCEPATH");
    return anyPath(node);
}

CIMInstance CimXmlReader::instanceWithPath(pugi::xml_node node)
{
    expectName(node, "VALUE.INSTANCEWITHPATH");
    const std::vector<pugi::xml_node> children = elementChildren(node);
    expectChildCount(node, children, 2, 2);
    const CIMObjectPath path = instancePath(children[0]);
    CIMInstance inst = instance(children[1]);
    guarded(node, [&] { inst.setPath(path); });
    return inst;
}

CIMValue CimXmlReader::valueOfParam(
    pugi::xml_node owner, const std::vector<pugi::xml_node>& children, const char* typeAttribute)
{
    expectChildCount(owner, children, 0, 1);
    const std::string embedded = embeddedAttribute(owner);
    if (!owner.attribute(typeAttribute))
    {
        if (children.empty())
            return CIMValue(CIMTYPE_STRING, false);
        if (!embedded.empty())
            return typedValue(
                children[0], embedded == "object" ? CIMTYPE_OBJECT : CIMTYPE_INSTANCE, embedded);
        return untypedValue(children[0]);
    }
    const CIMType type = embeddedType(owner, typeAttributeOf(owner, typeAttribute), embedded);
    if (children.empty())
        return CIMValue(type, false);
    pugi::xml_node v = children[0];
    if (type == CIMTYPE_REFERENCE && (is(v, "INSTANCENAME") || is(v, "CLASSNAME")))
        return CIMValue(anyPath(v));
    if (type == CIMTYPE_INSTANCE && is(v, "INSTANCE"))
        return CIMValue(instance(v));
    if (type == CIMTYPE_OBJECT && (is(v, "INSTANCE") || is(v, "CLASS")))
        return untypedValue(v);
    return typedValue(v, type, embedded);
}

CIMParamValue CimXmlReader::paramValue(pugi::xml_node node)
{
    expectName(node, "PARAMVALUE");
    const char* pName = requiredAttribute(node, "NAME");
    if (!CIMName::legal(fromUtf8(pName, "PARAMVALUE NAME")))
        invalidElement(node, std::string("NAME \"") + pName + "\" is not a valid CIM name");
    const bool typed = node.attribute("PARAMTYPE") || !embeddedAttribute(node).empty();
    const CIMValue value = valueOfParam(node, elementChildren(node), "PARAMTYPE");
    return guarded(node, [&] { return CIMParamValue(String(pName), value, typed); });
}

CIMValue CimXmlReader::returnValue(pugi::xml_node node)
{
    expectName(node, "RETURNVALUE");
    return valueOfParam(node, elementChildren(node), "PARAMTYPE");
}

CIMException CimXmlReader::error(pugi::xml_node node)
{
    expectName(node, "ERROR");
    const char* code = requiredAttribute(node, "CODE");
    char* end = nullptr;
    const long n = std::strtol(code, &end, 10);
    if (*code == '\0' || *end != '\0' || n < 0 || n > 0xFFFF)
        invalidElement(node, std::string("CODE must be a status number, not \"") + code + "\"");
    const String description = fromUtf8(node.attribute("DESCRIPTION").value(), "ERROR DESCRIPTION");
    Array<CIMInstance> instances;
    ElementCount count(node, "INSTANCE", limits::kMaxErrorInstances);
    for (pugi::xml_node c : elementChildren(node))
    {
        count.add();
        instances.append(instance(c));
    }
    return statusException(n, description, instances);
}

CIMException
statusException(long code, const String& description, const Array<CIMInstance>& instances)
{
    if (code <= CIM_ERR_SERVER_IS_SHUTTING_DOWN)
        return CIMException(static_cast<CIMStatusCode>(code), description, instances);
    const std::string number = "CIM status code " + std::to_string(code);
    return CIMException(
        CIM_ERR_FAILED,
        description.size() == 0 ? String(number.c_str())
                                : String((number + ": ").c_str()) + description,
        instances);
}

}  // namespace cimxml
}  // namespace qel
