#include "AssociationLinks.h"

#include "InstanceBuilder.h"

#include <Server/core/CoreText.h>

using namespace Pegasus;

namespace qel
{
namespace interop
{

namespace
{

bool plays(const String& wanted, const CIMName& role)
{
    return wanted.size() == 0 || String::equalNoCase(wanted, role.getString());
}

}  // namespace

bool sameObject(const CIMObjectPath& a, const CIMObjectPath& b)
{
    if (!a.getNameSpace().isNull() && !b.getNameSpace().isNull() &&
        a.getNameSpace() != b.getNameSpace())
        return false;
    CIMObjectPath x(a), y(b);
    for (CIMObjectPath* p : {&x, &y})
    {
        p->setHost(String());
        p->setNameSpace(CIMNamespaceName());
    }
    return x.identical(y);
}

std::string objectKey(const CIMObjectPath& path)
{
    std::string key = nameKey(path.getClassName());
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        key += "\n" + nameKey(keys[i].getName()) + "=" + toStd(keys[i].getValue());
    return key;
}

std::vector<Hop> hopsFrom(
    const std::vector<Link>& links, const CIMObjectPath& object, const String& role,
    const String& resultRole)
{
    std::vector<Hop> hops;
    for (const Link& link : links)
    {
        if (plays(role, link.firstRole) && plays(resultRole, link.secondRole) &&
            sameObject(object, link.first))
            hops.push_back(Hop{&link, &link.second});
        if (plays(role, link.secondRole) && plays(resultRole, link.firstRole) &&
            sameObject(object, link.second))
            hops.push_back(Hop{&link, &link.first});
    }
    return hops;
}

CIMInstance linkInstance(
    const Link& link, ClassCache& classes, const String& host, const CIMNamespaceName& nameSpace,
    Boolean includeQualifiers, Boolean includeClassOrigin)
{
    return InstanceBuilder(
               classes.get(nameSpace, link.assocClass), includeQualifiers, includeClassOrigin)
        .set(link.firstRole, CIMValue(link.first))
        .set(link.secondRole, CIMValue(link.second))
        .finish(host, nameSpace);
}

}  // namespace interop
}  // namespace qel
