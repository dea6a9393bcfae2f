//%/////////////////////////////////////////////////////////////////////////////
// QEL_LESBList: one read of LESB records from the array library.
//
// The descriptor starts zeroed, is filled by one serialised api_getPortLESB
// call, and its record array goes back with free() when the object goes,
// also after a failed read or an empty answer (the library allocates it with
// malloc; unlike the FC port lists, intended).
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_LESBList_h
#define QEL_LESBList_h

#include "QEL_ProviderFrame.h"

#include <qelapi.h>

#include <cstdlib>
#include <cstring>

PEGASUS_NAMESPACE_BEGIN

class QEL_LESBList
{
public:
    QEL_LESBList() { std::memset(&_list, 0, sizeof(_list)); }
    ~QEL_LESBList() { std::free(_list.lesb); }

    QEL_LESBList(const QEL_LESBList&) = delete;
    QEL_LESBList& operator=(const QEL_LESBList&) = delete;

    // The records of the port wwn (QEL_ALL_PORTS: of every port); the call's
    // status, or the failed wait's.
    int read(Uint64 wwn)
    {
        return QEL_ProviderFrame::serialized([&] { return api_getPortLESB(wwn, &_list); });
    }

    Uint32 size() const { return _list.lesb != 0 ? _list.count : 0; }
    const api_portLESB_t& operator[](Uint32 i) const { return _list.lesb[i]; }

private:
    api_portLESBList_t _list;
};

PEGASUS_NAMESPACE_END

#endif
