#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/NameTag.h>

#include <vector>

PEGASUS_NAMESPACE_BEGIN

// Immutable once shared; every change builds a new rep.
class CIMPropertyListRep
{
public:
    CIMPropertyListRep() = default;
    explicit CIMPropertyListRep(const Array<CIMName>& names_) : isNull(false), names(names_)
    {
        const Array<CIMName>& given = names;  // reading must not unshare it
        tags.reserve(given.size());
        for (Uint32 i = 0; i < given.size(); i++)
        {
            if (given[i].isNull())
                throw UninitializedObjectException();
            tags.push_back(nameTag(given[i]));
        }
    }

    Boolean isNull = true;
    Array<CIMName> names;
    // nameTag() of each name: lists are searched once per property of
    // every instance filtered.
    std::vector<Uint32> tags;
};

namespace
{
const std::shared_ptr<const CIMPropertyListRep>& nullRep()
{
    static const std::shared_ptr<const CIMPropertyListRep> rep =
        std::make_shared<CIMPropertyListRep>();
    return rep;
}
}  // namespace

CIMPropertyList::CIMPropertyList() : _rep(nullRep())
{
}

CIMPropertyList::CIMPropertyList(const CIMPropertyList& x) = default;

CIMPropertyList::CIMPropertyList(const Array<CIMName>& propertyNames)
    : _rep(std::make_shared<CIMPropertyListRep>(propertyNames))
{
}

CIMPropertyList::~CIMPropertyList() = default;

void CIMPropertyList::set(const Array<CIMName>& propertyNames)
{
    _rep = std::make_shared<CIMPropertyListRep>(propertyNames);
}

CIMPropertyList& CIMPropertyList::operator=(const CIMPropertyList& x) = default;

void CIMPropertyList::clear()
{
    _rep = nullRep();
}

Boolean CIMPropertyList::isNull() const
{
    return _rep->isNull;
}

Uint32 CIMPropertyList::size() const
{
    return _rep->names.size();
}

const CIMName& CIMPropertyList::operator[](Uint32 index) const
{
    return _rep->names[index];
}

Array<CIMName> CIMPropertyList::getPropertyNameArray() const
{
    return _rep->names;
}

Boolean CIMPropertyList::contains(const CIMName& name) const
{
    const Array<CIMName>& names = _rep->names;
    const std::vector<Uint32>& tags = _rep->tags;
    const Uint32 tag = nameTag(name);
    for (Uint32 i = 0; i < names.size(); i++)
    {
        if (tags[i] == tag && names[i].equal(name))
            return true;
    }
    return false;
}

Boolean CIMPropertyList::useThisProperty(const CIMName& name) const
{
    return _rep->isNull || contains(name);
}

String CIMPropertyList::toString() const
{
    if (_rep->isNull)
        return String("NULL");
    const Array<CIMName>& names = _rep->names;
    if (names.size() == 0)
        return String("EMPTY");
    String text = names[0].getString();
    for (Uint32 i = 1; i < names.size(); i++)
    {
        text.append(String(", "));
        text.append(names[i].getString());
    }
    return text;
}

PEGASUS_NAMESPACE_END
