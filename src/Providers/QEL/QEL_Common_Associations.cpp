// QEL_Common: object-path matching, the association filters and the
// builders of association paths and instances.
#include "QEL_Common.h"
#include "QEL_Common_Internal.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMProperty.h>

#include <netinet/in.h>

#include <cstring>

PEGASUS_NAMESPACE_BEGIN

using namespace QEL_CommonInternal;

namespace
{

// One level of normalisation: a string or reference key whose text parses as
// an object path becomes a reference to that path without its host.
Array<CIMKeyBinding> _normaliseKeys(const Array<CIMKeyBinding>& keys)
{
    Array<CIMKeyBinding> result = keys;
    for (Uint32 i = 0; i < result.size(); i++)
    {
        CIMKeyBinding& kb = result[i];
        if (kb.getType() != CIMKeyBinding::STRING && kb.getType() != CIMKeyBinding::REFERENCE)
        {
            continue;
        }
        if (kb.getValue().size() == 0)
        {
            continue;
        }
        try
        {
            CIMObjectPath parsed(kb.getValue());
            CIMObjectPath hostless(
                String(), parsed.getNameSpace(), parsed.getClassName(), parsed.getKeyBindings());
            kb.setValue(hostless.toString());
            kb.setType(CIMKeyBinding::REFERENCE);
        }
        catch (...)
        {
            // Not an object path (a WWN text, say): compared as it stands.
        }
    }
    return result;
}

CIMObjectPath _comparisonPath(const CIMObjectPath& path)
{
    try
    {
        return CIMObjectPath(
            String(), path.getNameSpace(), path.getClassName(),
            _normaliseKeys(path.getKeyBindings()));
    }
    catch (...)
    {
        // The path's own bindings were accepted once; compare them unchanged.
        return CIMObjectPath(
            String(), path.getNameSpace(), path.getClassName(), path.getKeyBindings());
    }
}

// The path a reference property names, without host and namespace.
CIMObjectPath _bareReference(const CIMObjectPath& ref)
{
    return CIMObjectPath(String(), CIMNamespaceName(), ref.getClassName(), ref.getKeyBindings());
}

Boolean _roleMatches(const String& role, const CIMName& propertyName)
{
    return role.size() == 0 || String::equalNoCase(role, propertyName.getString());
}

CIMObjectPath _rehost(const CIMObjectPath& path, const String& host)
{
    CIMObjectPath copy = path;
    copy.setHost(host);
    return copy;
}

// The ends of one association: its reference property names and the paths
// they hold, in key order (two or three ends; count says how many).
struct _AssocEnds
{
    CIMName names[3];
    CIMObjectPath ends[3];
    Uint32 count;
};

CIMObjectPath _assocPath(
    const String& host, const CIMNamespaceName& nameSpace, const CIMName& assocClass,
    const _AssocEnds& e)
{
    Array<CIMKeyBinding> keys;
    for (Uint32 i = 0; i < e.count; i++)
    {
        keys.append(CIMKeyBinding(e.names[i], e.ends[i].toString(), CIMKeyBinding::REFERENCE));
    }
    return CIMObjectPath(host, nameSpace, assocClass, keys);
}

CIMInstance
_assocInstance(const CIMClass& classSkeleton, const _AssocEnds& e, const CIMObjectPath& path)
{
    CIMClass cls = classSkeleton;
    CIMInstance instance = QEL_Common::buildInstanceSkeleton(cls);
    for (Uint32 i = 0; i < e.count; i++)
    {
        QEL_Common::setPropertyValue(instance, e.names[i], e.ends[i]);
    }
    instance.setPath(path);
    return instance;
}

// True when some entry of list satisfies matches; the membership tests'
// one walk.
template <class T, class Matches>
Boolean _anyOf(const Array<T>& list, Matches matches)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (matches(list[i]))
        {
            return true;
        }
    }
    return false;
}

// Calls found(property name, referenced path) for the reference properties
// of the instance in order, until it answers true; true then. Null values
// and arrays of references name no object and are skipped: a choice, the
// helpers that walk them must not throw.
template <class Found>
Boolean _findReference(const CIMInstance& instance, Found found)
{
    for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
    {
        CIMConstProperty prop = instance.getProperty(i);
        if (prop.getType() != CIMTYPE_REFERENCE || prop.isArray())
        {
            continue;
        }
        CIMValue v = prop.getValue();
        if (v.isNull())
        {
            continue;
        }
        CIMObjectPath value;
        v.get(value);
        if (found(prop.getName(), value))
        {
            return true;
        }
    }
    return false;
}

// Calls visit(property name, referenced path) for every reference of the
// association instance that does not name the source end.
template <class Visit>
void _forEachFarEnd(
    const CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath, Visit visit)
{
    _findReference(
        assocInstance,
        [&](const CIMName& name, const CIMObjectPath& value)
        {
            if (!QEL_Common::matchObjectPath(targetObjectPath, value))
            {
                visit(name, value);
            }
            return false;
        });
}

// Appends, for one far end, once per entry of resultClass naming its class
// (or once when resultClass is empty) if the role allows it.
template <class Append>
void _selectFarEnd(
    const CIMName& propertyName, const CIMObjectPath& value, const Array<CIMName>& resultClass,
    const String& resultRole, Append append)
{
    if (resultClass.size() == 0)
    {
        if (_roleMatches(resultRole, propertyName))
        {
            append(value);
        }
        return;
    }
    // A class named twice yields the end twice; intended.
    for (Uint32 j = 0; j < resultClass.size(); j++)
    {
        if (resultClass[j].equal(value.getClassName()) && _roleMatches(resultRole, propertyName))
        {
            append(value);
        }
    }
}

}  // anonymous namespace

Boolean QEL_Common::matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2)
{
    return _comparisonPath(path1).identical(_comparisonPath(path2));
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress)
{
    if (ref.getNameSpace().isNull())
    {
        ref.setNameSpace(nameSpace);
    }
    else if (!ref.getNameSpace().equal(nameSpace))
    {
        log_message(
            2, "The ref param %s contains the wrong name space %s\n", QEL_CSTR(ref.toString()),
            QEL_CSTR(ref.getNameSpace().getString()));
        return false;
    }
    const String host = ref.getHost();
    if (host.size() == 0)
    {
        return true;
    }
    if (String::equalNoCase(host, systemAddress))
    {
        return true;
    }
    if (host == getSystemIPAddr(1))
    {
        return true;
    }
    // Object paths bracket an IPv6 host; the validator takes the bare address.
    String address = host;
    if (address.size() > 2 && address[0] == '[' && address[address.size() - 1] == ']')
    {
        address = address.subString(1, address.size() - 2);
    }
    char canonical[46];
    memset(canonical, 0, sizeof(canonical));
    if (validateConvertIP(QEL_CSTR(address), canonical) == AF_INET6)
    {
        canonical[sizeof(canonical) - 1] = '\0';
        if (String(canonical) == getSystemIPAddr(2))
        {
            return true;
        }
    }
    log_message(2, "The ref host [%s] does not match for this host!\n", QEL_CSTR(host));
    return false;
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress,
    const CIMName& expectedClass)
{
    if (!verifyRefMethodParam(ref, nameSpace, systemAddress))
    {
        return false;
    }
    return ref.getClassName().equal(expectedClass);
}

Boolean QEL_Common::verifyRefMethodParam(
    CIMObjectPath& ref, const CIMNamespaceName& nameSpace, const String& systemAddress,
    const Array<CIMName>& expectedClasses)
{
    if (!verifyRefMethodParam(ref, nameSpace, systemAddress))
    {
        return false;
    }
    return isPartOfArray(ref.getClassName(), expectedClasses);
}

Boolean QEL_Common::_isInstanceValidReference(
    const CIMObjectPath& target, const CIMInstance& instance, const String& role)
{
    if (role.size() != 0)
    {
        // A role that is no legal CIM name names no property of the instance:
        // the same invalid-parameter refusal as an absent one.
        Uint32 pos =
            CIMName::legal(role) ? instance.findProperty(CIMName(role)) : Uint32(PEG_NOT_FOUND);
        if (pos == PEG_NOT_FOUND || instance.getProperty(pos).getType() != CIMTYPE_REFERENCE)
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER, String());
        }
    }
    return _findReference(
        instance, [&](const CIMName& name, const CIMObjectPath& ref)
        { return _roleMatches(role, name) && matchObjectPath(target, _bareReference(ref)); });
}

Array<CIMInstance> QEL_Common::filterReferenceNames(
    const Array<CIMInstance>& targetAssociationInstanceList, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role)
{
    CIMObjectPath target = _bareReference(objectName);
    Array<CIMInstance> kept;
    for (Uint32 i = 0; i < targetAssociationInstanceList.size(); i++)
    {
        const CIMInstance& instance = targetAssociationInstanceList[i];
        if ((resultClass.isNull() || resultClass.equal(instance.getClassName())) &&
            _isInstanceValidReference(target, instance, role))
        {
            kept.append(instance);
        }
    }
    return kept;
}

Array<CIMObjectPath> QEL_Common::filterAssocInstanceToTargetPaths(
    const CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath,
    const Array<CIMName>& resultClass, const String& resultRole)
{
    Array<CIMObjectPath> result;
    _forEachFarEnd(
        assocInstance, targetObjectPath,
        [&](const CIMName& name, const CIMObjectPath& value)
        {
            _selectFarEnd(
                name, value, resultClass, resultRole,
                [&](const CIMObjectPath& v) { result.append(v); });
        });
    return result;
}

Array<CIMInstance> QEL_Common::filterAssocInstanceToTargetInstances(
    const CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath,
    const Array<CIMInstance>& resultInstanceList, const Array<CIMName>& resultClass,
    const String& resultRole)
{
    Array<CIMInstance> result;
    _forEachFarEnd(
        assocInstance, targetObjectPath,
        [&](const CIMName& name, const CIMObjectPath& value)
        {
            _selectFarEnd(
                name, value, resultClass, resultRole,
                [&](const CIMObjectPath& v)
                {
                    for (Uint32 k = 0; k < resultInstanceList.size(); k++)
                    {
                        if (matchObjectPath(v, resultInstanceList[k].getPath()))
                        {
                            result.append(resultInstanceList[k]);
                        }
                    }
                });
        });
    return result;
}

Boolean QEL_Common::isPoolPath(const CIMObjectPath& objectName, const String& instanceID)
{
    return _anyOf(
        objectName.getKeyBindings(),
        [&](const CIMKeyBinding& key) { return String::equalNoCase(key.getValue(), instanceID); });
}

// Unlike buildAssocPath, the ends are used as given (no re-hosting) and the
// namespace is fixed; intended.
CIMObjectPath QEL_Common::buildDepAssocPath(
    const String& systemAddress, const CIMName& assocClass, const CIMObjectPath& antecedent,
    const CIMObjectPath& dependent)
{
    return _assocPath(
        systemAddress, ARRAY_NAMESPACE, assocClass,
        _AssocEnds{{"Antecedent", "Dependent"}, {antecedent, dependent}, 2});
}

CIMInstance QEL_Common::buildDepAssocInstance(
    const String& systemAddress, const CIMName& assocClass, const CIMObjectPath& antecedent,
    const CIMObjectPath& dependent, const CIMClass& classSkeleton)
{
    return _assocInstance(
        classSkeleton, _AssocEnds{{"Antecedent", "Dependent"}, {antecedent, dependent}, 2},
        buildDepAssocPath(systemAddress, assocClass, antecedent, dependent));
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2, const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    return buildAssocPath(
        assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress, hostAddress,
        hostAddress, nameSpace);
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2, const String& hostAddress1,
    const String& hostAddress2, const String& localAddress, const CIMNamespaceName& nameSpace)
{
    return _assocPath(
        localAddress, nameSpace, assocClass,
        _AssocEnds{
            {assocName1, assocName2},
            {_rehost(assocPath1, hostAddress1), _rehost(assocPath2, hostAddress2)},
            2});
}

CIMObjectPath QEL_Common::buildAssocPath(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMName& assocName3, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const CIMObjectPath& assocPath3, const String& hostAddress, const CIMNamespaceName& nameSpace)
{
    return _assocPath(
        hostAddress, nameSpace, assocClass,
        _AssocEnds{
            {assocName1, assocName2, assocName3},
            {_rehost(assocPath1, hostAddress), _rehost(assocPath2, hostAddress),
             _rehost(assocPath3, hostAddress)},
            3});
}

CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2, const CIMClass& classSkeleton,
    const String& hostAddress, const CIMNamespaceName& nameSpace)
{
    return buildAssocInstance(
        assocClass, assocName1, assocName2, assocPath1, assocPath2, classSkeleton, hostAddress,
        hostAddress, hostAddress, nameSpace);
}

// The instance's references and its path's keys are the same ends.
CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2, const CIMClass& classSkeleton,
    const String& hostAddress1, const String& hostAddress2, const String& localAddress,
    const CIMNamespaceName& nameSpace)
{
    const _AssocEnds ends = {
        {assocName1, assocName2},
        {_rehost(assocPath1, hostAddress1), _rehost(assocPath2, hostAddress2)},
        2};
    return _assocInstance(
        classSkeleton, ends, _assocPath(localAddress, nameSpace, assocClass, ends));
}

CIMInstance QEL_Common::buildAssocInstance(
    const CIMName& assocClass, const CIMName& assocName1, const CIMName& assocName2,
    const CIMName& assocName3, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const CIMObjectPath& assocPath3, const CIMClass& classSkeleton, const String& hostAddress,
    const CIMNamespaceName& nameSpace)
{
    const _AssocEnds ends = {
        {assocName1, assocName2, assocName3},
        {_rehost(assocPath1, hostAddress), _rehost(assocPath2, hostAddress),
         _rehost(assocPath3, hostAddress)},
        3};
    return _assocInstance(
        classSkeleton, ends, _assocPath(hostAddress, nameSpace, assocClass, ends));
}

Boolean QEL_Common::isPartOfArray(const String& key, const Array<String>& list)
{
    return _anyOf(list, [&](const String& entry) { return String::equal(key, entry); });
}

Boolean QEL_Common::isPartOfArray(const CIMObjectPath& path, const Array<CIMObjectPath>& list)
{
    return _anyOf(list, [&](const CIMObjectPath& entry) { return matchObjectPath(path, entry); });
}

Boolean QEL_Common::isPartOfArray(const CIMObjectPath& instPath, const Array<CIMInstance>& list)
{
    return _anyOf(
        list, [&](const CIMInstance& entry) { return matchObjectPath(instPath, entry.getPath()); });
}

Boolean QEL_Common::isPartOfArray(const CIMName& name, const Array<CIMName>& list)
{
    return _anyOf(list, [&](const CIMName& entry) { return entry.equal(name); });
}

PEGASUS_NAMESPACE_END
