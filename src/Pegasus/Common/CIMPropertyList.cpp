#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

// Immutable once shared; every change builds a new rep.
class CIMPropertyListRep
{
public:
    CIMPropertyListRep() = default;
    explicit CIMPropertyListRep(const Array<CIMName>& names_)
        : isNull(false), names(names_)
    {
        for (Uint32 i = 0; i < names.size(); i++)
        {
            if (names[i].isNull())
                throw UninitializedObjectException();
        }
    }

    Boolean isNull = true;
    Array<CIMName> names;
};

namespace
{
const std::shared_ptr<const CIMPropertyListRep>& nullRep()
{
    static const std::shared_ptr<const CIMPropertyListRep> rep =
        std::make_shared<CIMPropertyListRep>();
    return rep;
}
}

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
    for (Uint32 i = 0; i < names.size(); i++)
    {
        if (names[i].equal(name))
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
