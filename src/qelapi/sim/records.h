// Copies of the model in the library's C records, in fresh malloc'd memory.
#ifndef QELSIM_RECORDS_H
#define QELSIM_RECORDS_H

#include "model.h"

#include <vector>

namespace qelsim
{

// One block: the records, then the connectedTo texts they point to, so that
// api_freeFCPorts releases everything with one free(). Null when ports is empty
// (an empty list) or when memory runs out (*nomem set).
api_FCPort_t*
makeFcPortArray(const std::vector<const FcPort*>& ports, int detail, bool withSfp, bool* nomem);

api_iSCSIPort_t* makeIscsiArray(const std::vector<IscsiPort>& ports, bool* nomem);

struct LesbRef
{
    const FcPort* port;
    const Lesb* lesb;
};
api_portLESB_t* makeLesbArray(const std::vector<LesbRef>& records, bool* nomem);

api_VV_t* makeVvArray(const std::vector<const Volume*>& vvs, bool* nomem);

// Copies text into a fixed field, always terminated, cut to fit.
void copyText(char* dst, size_t size, const std::string& src);

void fillSfp(const Sfp& s, api_sfp_t* out);

}  // namespace qelsim

#endif
