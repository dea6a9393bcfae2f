//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortList: serialised FC port list reads and their release.
//%/////////////////////////////////////////////////////////////////////////////

#include "QEL_FCPortList.h"
#include "QEL_ProviderFrame.h"

#include <cstring>

PEGASUS_NAMESPACE_BEGIN

// The detail level the FC port readers ask for; what the library does with
// it is its own business, the value is passed as it stands.
static const int FC_PORT_DETAIL = 3;

QEL_FCPortList::QEL_FCPortList() : _released(false)
{
    std::memset(&_list, 0, sizeof(_list));
}

QEL_FCPortList::~QEL_FCPortList()
{
    release();
}

int QEL_FCPortList::readFCPorts(Uint64 filter, int sfpFlag)
{
    return QEL_ProviderFrame::serialized(
        [&] { return api_getFCPorts(filter, FC_PORT_DETAIL, sfpFlag, &_list); });
}

int QEL_FCPortList::readFCALPorts(Uint64 filter)
{
    return QEL_ProviderFrame::serialized([&] { return api_getFCALPorts(filter, &_list); });
}

void QEL_FCPortList::release()
{
    if (!_released)
    {
        _released = true;
        api_freeFCPorts(&_list);
    }
}

bool QEL_FCPortList::isPort(const api_FCPort_t& port)
{
    return port.portWwn != 0 && port.portWwn != QEL_ALL_PORTS;
}

PEGASUS_NAMESPACE_END
