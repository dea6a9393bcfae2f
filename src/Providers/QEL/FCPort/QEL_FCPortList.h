//%/////////////////////////////////////////////////////////////////////////////
// QEL_FCPortList: one list of FC port records read from the array library.
//
// The list starts zeroed, is filled by one serialised read (a failed read or a
// failed semaphore wait leaves it empty: reads are not judged) and is handed
// back with api_freeFCPorts exactly once, by release() or when the object
// goes, also after a failed read. Records whose portWwn is 0 or the
// every-port selector are not ports; isPort() tells them apart.
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_FCPortList_h
#define QEL_FCPortList_h

#include <Pegasus/Common/Config.h>

#include <qelapi.h>

PEGASUS_NAMESPACE_BEGIN

class QEL_FCPortList
{
public:
    QEL_FCPortList();
    ~QEL_FCPortList();

    QEL_FCPortList(const QEL_FCPortList&) = delete;
    QEL_FCPortList& operator=(const QEL_FCPortList&) = delete;

    // api_getFCPorts(filter, 3, sfpFlag, &list) inside the semaphore bracket.
    int readFCPorts(Uint64 filter, int sfpFlag);

    // api_getFCALPorts(filter, &list) inside the semaphore bracket.
    int readFCALPorts(Uint64 filter);

    Uint32 size() const { return _list.count; }
    const api_FCPort_t& operator[](Uint32 i) const { return _list.ports[i]; }

    // api_freeFCPorts(&list); later calls do nothing.
    void release();

    static bool isPort(const api_FCPort_t& port);

private:
    api_FCPortList_t _list;
    bool _released;
};

PEGASUS_NAMESPACE_END

#endif
