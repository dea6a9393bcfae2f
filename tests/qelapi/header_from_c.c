/* qelapi.h compiled as C: the header must be usable from C and give the same
 * record layout as in C++ (its static assertions run here too). */
#include "qelapi.h"

size_t qelapi_c_record_sizes(size_t out[6])
{
    out[0] = sizeof(api_FCPort_t);
    out[1] = sizeof(api_sfp_t);
    out[2] = sizeof(api_portLESB_t);
    out[3] = sizeof(api_iSCSIPort_t);
    out[4] = offsetof(api_FCPort_t, sfp);
    out[5] = offsetof(api_FCPort_t, connectedTo);
    return 6;
}
